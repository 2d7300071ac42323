<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_TW" sourcelanguage="en">
<context>
    <name>ImageDef</name>
    <message>
        <source>inch</source>
        <translation>英吋</translation>
    </message>
    <message>
        <source>cm</source>
        <translation>公分</translation>
    </message>
    <message>
        <source>µm</source>
        <translation>微米</translation>
    </message>
    <message>
        <source>Maker</source>
        <translation>製造商</translation>
    </message>
    <message>
        <source>Model</source>
        <translation>型號</translation>
    </message>
    <message>
        <source>Real focal length</source>
        <translation>實際焦距</translation>
    </message>
    <message>
        <source>35mm f.length</source>
        <translation>35mm 等效焦距</translation>
    </message>
    <message>
        <source>Exposure time</source>
        <translation>曝光時間</translation>
    </message>
    <message>
        <source>Shutter speed</source>
        <translation>快門速度</translation>
    </message>
    <message>
        <source>F Number</source>
        <translation>光圈值</translation>
    </message>
    <message>
        <source>Date Time</source>
        <translation>日期和時間</translation>
    </message>
    <message>
        <source>ISO</source>
        <translation>ISO</translation>
    </message>
    <message>
        <source>Exposure bias value</source>
        <translation>曝光補償值</translation>
    </message>
    <message>
        <source>Width</source>
        <translation>寬度</translation>
    </message>
    <message>
        <source>Height</source>
        <translation>高度</translation>
    </message>
    <message>
        <source>Focal plane res X</source>
        <translation>焦平面 X 解析度</translation>
    </message>
    <message>
        <source>Focal plane res Y</source>
        <translation>焦平面 Y 解析度</translation>
    </message>
    <message>
        <source>Focal plan res. unit</source>
        <translation>焦平面解析度單位</translation>
    </message>
    <message>
        <source>: gray pictures are not supported.</source>
        <translation>：不支援灰階圖片。</translation>
    </message>
</context>
<context>
    <name>KException</name>
    <message>
        <source>Error GFL : &quot;%1&quot;</source>
        <translation>GFL 錯誤：「%1」</translation>
    </message>
    <message>
        <source>File : &quot;%1&quot;</source>
        <translation>檔案：「%1」</translation>
    </message>
    <message>
        <source>Not enough free space on &quot;%1&quot; to finish operation</source>
        <translation>「%1」上的可用空間不足，無法完成操作</translation>
    </message>
    <message>
        <source>Cannot write into file &quot;%1&quot;</source>
        <translation>無法寫入檔案「%1」</translation>
    </message>
    <message>
        <source>File &quot;%1&quot; is not found</source>
        <translation>找不到檔案「%1」</translation>
    </message>
    <message>
        <source>No more space in temporary folder</source>
        <translation>暫存資料夾空間不足</translation>
    </message>
</context>
<context>
    <name>KLog</name>
    <message>
        <source>Critical error</source>
        <translation>嚴重錯誤</translation>
    </message>
    <message>
        <source>Can not open file %1</source>
        <translation>無法開啟檔案 %1</translation>
    </message>
</context>
<context>
    <name>KSystemInfo</name>
    <message>
        <source>Bytes</source>
        <translation>位元組</translation>
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
        <translation>Adobe® 推出了用來校準鏡頭的免費工具「Lens Profile Creator」。本外掛程式利用這些描述檔，消除相片中的鏡頭變形、暗角和色差。</translation>
    </message>
</context>
<context>
    <name>Library</name>
    <message>
        <source>Comment</source>
        <translation>備註</translation>
    </message>
</context>
<context>
    <name>QCoreApplication</name>
    <message>
        <source>File &quot;%1&quot; cannot be loaded</source>
        <translation>無法載入檔案「%1」</translation>
    </message>
    <message>
        <source>File &quot;%1&quot; is not found</source>
        <translation>找不到檔案「%1」</translation>
    </message>
</context>
<context>
    <name>UIImageDefListWizard</name>
    <message>
        <source>Prev</source>
        <translation>上一張</translation>
    </message>
    <message>
        <source>Next</source>
        <translation>下一張</translation>
    </message>
</context>
<context>
    <name>UIImageDefListWizardClass</name>
    <message>
        <source>WizardPage</source>
        <translation>精靈頁面</translation>
    </message>
    <message>
        <source>Apply to all images</source>
        <translation>套用至所有影像</translation>
    </message>
</context>
<context>
    <name>UIVitreluxPreview</name>
    <message>
        <source>Select lens camera profiles Database directory</source>
        <translation>選取鏡頭描述檔所在的資料夾</translation>
    </message>
    <message>
        <source>Select lens camera profile</source>
        <translation>選取鏡頭描述檔</translation>
    </message>
    <message>
        <source>Profile</source>
        <translation>描述檔</translation>
    </message>
    <message>
        <source>Non supported file format</source>
        <translation>不支援的檔案格式</translation>
    </message>
    <message>
        <source>Preview is uptodate</source>
        <translation>預覽已是最新</translation>
    </message>
    <message>
        <source>None found: %1</source>
        <translation>找不到描述檔：%1</translation>
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
        <translation>自動尋找描述檔</translation>
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
        <translation>鏡頭資料庫</translation>
    </message>
    <message>
        <source>...</source>
        <translation>...</translation>
    </message>
    <message>
        <source>Lens profile</source>
        <translation>鏡頭描述檔</translation>
    </message>
    <message>
        <source>Message</source>
        <translation>訊息</translation>
    </message>
    <message>
        <source>Geometric distortion</source>
        <translation>幾何變形</translation>
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
        <translation>分割預覽</translation>
    </message>
</context>
</TS>
