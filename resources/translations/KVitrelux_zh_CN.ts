<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN" sourcelanguage="en">
<context>
    <name>ImageDef</name>
    <message>
        <source>inch</source>
        <translation>英寸</translation>
    </message>
    <message>
        <source>cm</source>
        <translation>厘米</translation>
    </message>
    <message>
        <source>µm</source>
        <translation>微米</translation>
    </message>
    <message>
        <source>Maker</source>
        <translation>制造商</translation>
    </message>
    <message>
        <source>Model</source>
        <translation>型号</translation>
    </message>
    <message>
        <source>Real focal length</source>
        <translation>实际焦距</translation>
    </message>
    <message>
        <source>35mm f.length</source>
        <translation>35mm 等效焦距</translation>
    </message>
    <message>
        <source>Exposure time</source>
        <translation>曝光时间</translation>
    </message>
    <message>
        <source>Shutter speed</source>
        <translation>快门速度</translation>
    </message>
    <message>
        <source>F Number</source>
        <translation>光圈值</translation>
    </message>
    <message>
        <source>Date Time</source>
        <translation>日期和时间</translation>
    </message>
    <message>
        <source>ISO</source>
        <translation>ISO</translation>
    </message>
    <message>
        <source>Exposure bias value</source>
        <translation>曝光补偿值</translation>
    </message>
    <message>
        <source>Width</source>
        <translation>宽度</translation>
    </message>
    <message>
        <source>Height</source>
        <translation>高度</translation>
    </message>
    <message>
        <source>Focal plane res X</source>
        <translation>焦平面 X 分辨率</translation>
    </message>
    <message>
        <source>Focal plane res Y</source>
        <translation>焦平面 Y 分辨率</translation>
    </message>
    <message>
        <source>Focal plan res. unit</source>
        <translation>焦平面分辨率单位</translation>
    </message>
    <message>
        <source>: gray pictures are not supported.</source>
        <translation>：不支持灰度图片。</translation>
    </message>
</context>
<context>
    <name>KException</name>
    <message>
        <source>Error GFL : &quot;%1&quot;</source>
        <translation>GFL 错误：“%1”</translation>
    </message>
    <message>
        <source>File : &quot;%1&quot;</source>
        <translation>文件：“%1”</translation>
    </message>
    <message>
        <source>Not enough free space on &quot;%1&quot; to finish operation</source>
        <translation>“%1”上的可用空间不足，无法完成操作</translation>
    </message>
    <message>
        <source>Cannot write into file &quot;%1&quot;</source>
        <translation>无法写入文件“%1”</translation>
    </message>
    <message>
        <source>File &quot;%1&quot; is not found</source>
        <translation>找不到文件“%1”</translation>
    </message>
    <message>
        <source>No more space in temporary folder</source>
        <translation>临时文件夹空间不足</translation>
    </message>
</context>
<context>
    <name>KLog</name>
    <message>
        <source>Critical error</source>
        <translation>严重错误</translation>
    </message>
    <message>
        <source>Can not open file %1</source>
        <translation>无法打开文件 %1</translation>
    </message>
</context>
<context>
    <name>KSystemInfo</name>
    <message>
        <source>Bytes</source>
        <translation>字节</translation>
    </message>
    <message>
        <source>KB</source>
        <translation>KB</translation>
    </message>
    <message>
        <source>MB</source>
        <translation>MB</translation>
    </message>
    <message>
        <source>GB</source>
        <translation>GB</translation>
    </message>
    <message>
        <source>TB</source>
        <translation>TB</translation>
    </message>
</context>
<context>
    <name>KVitreluxOne2One</name>
    <message>
        <source>Adobe(r) released a free tool to calibrate your lens called &apos;Lens Profile Creator&apos;. This plugin reuse these profiles to remove lens distortion, vignetting or chromatic aberration from your photos.</source>
        <translation>Adobe® 发布了用于校准镜头的免费工具“Lens Profile Creator”。本插件利用这些配置文件，消除照片中的镜头畸变、暗角和色差。</translation>
    </message>
</context>
<context>
    <name>Library</name>
    <message>
        <source>Comment</source>
        <translation>备注</translation>
    </message>
</context>
<context>
    <name>QCoreApplication</name>
    <message>
        <source>File &quot;%1&quot; cannot be loaded</source>
        <translation>无法加载文件“%1”</translation>
    </message>
    <message>
        <source>File &quot;%1&quot; is not found</source>
        <translation>找不到文件“%1”</translation>
    </message>
</context>
<context>
    <name>UIImageDefListWizard</name>
    <message>
        <source>Prev</source>
        <translation>上一张</translation>
    </message>
    <message>
        <source>Next</source>
        <translation>下一张</translation>
    </message>
</context>
<context>
    <name>UIImageDefListWizardClass</name>
    <message>
        <source>WizardPage</source>
        <translation>向导页</translation>
    </message>
    <message>
        <source>Apply to all images</source>
        <translation>应用到所有图像</translation>
    </message>
</context>
<context>
    <name>UIVitreluxPreview</name>
    <message>
        <source>Select lens camera profiles Database directory</source>
        <translation>选择镜头配置文件所在的文件夹</translation>
    </message>
    <message>
        <source>Select lens camera profile</source>
        <translation>选择镜头配置文件</translation>
    </message>
    <message>
        <source>Profile</source>
        <translation>配置文件</translation>
    </message>
    <message>
        <source>Non supported file format</source>
        <translation>不支持的文件格式</translation>
    </message>
    <message>
        <source>Preview is uptodate</source>
        <translation>预览已是最新</translation>
    </message>
    <message>
        <source>None found: %1</source>
        <translation>未找到配置文件：%1</translation>
    </message>
    <message>
        <source>Found: %1</source>
        <translation>已找到：%1</translation>
    </message>
    <message>
        <source>Not corrected: %1</source>
        <translation>未校正：%1</translation>
    </message>
    <message>
        <source>Find the profile automatically</source>
        <translation>自动查找配置文件</translation>
    </message>
</context>
<context>
    <name>UIVitreluxPreviewClass</name>
    <message>
        <source>Vitrelux correction</source>
        <translation>Vitrelux 校正</translation>
    </message>
    <message>
        <source>Lens database</source>
        <translation>镜头数据库</translation>
    </message>
    <message>
        <source>...</source>
        <translation>...</translation>
    </message>
    <message>
        <source>Lens profile</source>
        <translation>镜头配置文件</translation>
    </message>
    <message>
        <source>Message</source>
        <translation>消息</translation>
    </message>
    <message>
        <source>Geometric distortion</source>
        <translation>几何畸变</translation>
    </message>
    <message>
        <source>Chromatic aberration</source>
        <translation>色差</translation>
    </message>
    <message>
        <source>Vignetting</source>
        <translation>暗角</translation>
    </message>
    <message>
        <source>Split preview</source>
        <translation>分屏预览</translation>
    </message>
</context>
</TS>
