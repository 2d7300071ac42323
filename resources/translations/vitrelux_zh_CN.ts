<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_CN" sourcelanguage="en">
<context>
    <name>CompareDialog</name>
    <message>
        <source>%1: before and after</source>
        <translation>%1：校正前后</translation>
    </message>
    <message>
        <source>Before</source>
        <translation>校正前</translation>
    </message>
    <message>
        <source>After</source>
        <translation>校正后</translation>
    </message>
    <message>
        <source>Reading the picture…</source>
        <translation>正在读取图片…</translation>
    </message>
    <message>
        <source>Zoom &amp;in</source>
        <translation>放大(&amp;I)</translation>
    </message>
    <message>
        <source>Zoom &amp;out</source>
        <translation>缩小(&amp;O)</translation>
    </message>
    <message>
        <source>&amp;Whole picture</source>
        <translation>整张图片(&amp;W)</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>关闭(&amp;C)</translation>
    </message>
    <message>
        <source>The picture cannot be read: %1</source>
        <translation>无法读取图片：%1</translation>
    </message>
</context>
<context>
    <name>CorrectionJob</name>
    <message>
        <source>The corrected picture would replace that of &quot;%1&quot;</source>
        <translation>校正后的图片会替换“%1”的结果</translation>
    </message>
    <message>
        <source>No correction is switched on</source>
        <translation>未启用任何校正</translation>
    </message>
    <message>
        <source>Not a readable picture: %1</source>
        <translation>不是可读取的图片：%1</translation>
    </message>
    <message>
        <source>No lens profile was chosen, and none was found for this picture: %1</source>
        <translation>未选择镜头配置文件，也未找到适合此图片的配置文件：%1</translation>
    </message>
</context>
<context>
    <name>CorrectionWizard</name>
    <message>
        <source>Vitrelux: lens correction</source>
        <translation>Vitrelux：镜头校正</translation>
    </message>
    <message>
        <source>&amp;Back</source>
        <translation>上一步(&amp;B)</translation>
    </message>
    <message>
        <source>&amp;Next</source>
        <translation>下一步(&amp;N)</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>关闭(&amp;C)</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>取消</translation>
    </message>
</context>
<context>
    <name>FittedCorrection</name>
    <message>
        <source>profile &quot;%1&quot;</source>
        <translation>配置文件“%1”</translation>
    </message>
    <message>
        <source>entries</source>
        <translation>条目</translation>
    </message>
    <message>
        <source>assumed</source>
        <translation>假定</translation>
    </message>
    <message>
        <source>left out</source>
        <translation>未应用</translation>
    </message>
    <message>
        <source>profile %1</source>
        <comment>its name and what is wrong with it</comment>
        <translation>配置文件 %1</translation>
    </message>
    <message>
        <source>nearest</source>
        <translation>最接近</translation>
    </message>
</context>
<context>
    <name>PictureProblem</name>
    <message>
        <source>is a link to a file that does not exist</source>
        <translation>是指向不存在的文件的链接</translation>
    </message>
    <message>
        <source>no such file; names must be in UTF-8</source>
        <translation>没有此文件；文件名应为 UTF-8</translation>
    </message>
    <message>
        <source>no such file</source>
        <translation>没有此文件</translation>
    </message>
    <message>
        <source>is a folder, expected a picture file</source>
        <translation>是文件夹，应为图片文件</translation>
    </message>
    <message>
        <source>is not a regular file, expected a picture file</source>
        <translation>不是普通文件，应为图片文件</translation>
    </message>
    <message>
        <source>is empty (0 bytes), expected a picture file</source>
        <translation>为空（0 字节），应为图片文件</translation>
    </message>
    <message>
        <source>cannot be read: %1</source>
        <translation>无法读取：%1</translation>
    </message>
    <message>
        <source>gray pictures are not supported</source>
        <translation>不支持灰度图片</translation>
    </message>
    <message>
        <source>%1 pictures are not supported</source>
        <translation>不支持 %1 图片</translation>
    </message>
    <message>
        <source>pictures of %1 channels are not supported</source>
        <translation>不支持 %1 通道的图片</translation>
    </message>
    <message>
        <source>tiled TIFF files are not supported</source>
        <translation>不支持分块存储的 TIFF 文件</translation>
    </message>
    <message>
        <source>is not recognized as a picture: a companion file, or damaged</source>
        <translation>无法识别为图片：是附属文件或已损坏</translation>
    </message>
</context>
<context>
    <name>PictureRun</name>
    <message>
        <source>not enough memory</source>
        <translation>内存不足</translation>
    </message>
    <message>
        <source>failed for an unknown reason</source>
        <translation>因未知原因失败</translation>
    </message>
</context>
<context>
    <name>PicturesPage</name>
    <message>
        <source>&amp;Remove</source>
        <translation>移除(&amp;R)</translation>
    </message>
    <message>
        <source>Pictures</source>
        <translation>图片</translation>
    </message>
    <message>
        <source>Picture</source>
        <translation>图片</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>大小</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>文件夹</translation>
    </message>
    <message>
        <source>Drop pictures or folders here</source>
        <translation>将图片或文件夹拖放到此处</translation>
    </message>
    <message>
        <source>&amp;Add pictures…</source>
        <translation>添加图片(&amp;A)…</translation>
    </message>
    <message>
        <source>All files</source>
        <translation>所有文件</translation>
    </message>
    <message>
        <source>Add pictures</source>
        <translation>添加图片</translation>
    </message>
    <message>
        <source>Fill the frame: no empty borders</source>
        <translation>填满画面：无空白边缘</translation>
    </message>
    <message>
        <source>Keep the scale</source>
        <translation>保持缩放比例</translation>
    </message>
    <message>
        <source>Show everything that was photographed</source>
        <translation>显示拍摄到的全部内容</translation>
    </message>
    <message>
        <source>&amp;Framing:</source>
        <translation>构图(&amp;F)：</translation>
    </message>
    <message>
        <source>TIFF: nothing is lost</source>
        <translation>TIFF：无损</translation>
    </message>
    <message>
        <source>JPEG: small files, 8 bits</source>
        <translation>JPEG：文件小，8 位</translation>
    </message>
    <message>
        <source>PNG: lossless, up to 16 bits</source>
        <translation>PNG：无损，最高 16 位</translation>
    </message>
    <message>
        <source>OpenEXR: linear light, for compositing</source>
        <translation>OpenEXR：线性光，用于合成</translation>
    </message>
    <message>
        <source>C&amp;hoose…</source>
        <translation>选择(&amp;H)…</translation>
    </message>
    <message>
        <source>Replace e&amp;xisting corrected pictures</source>
        <translation>替换已存在的校正图片(&amp;X)</translation>
    </message>
    <message>
        <source>Which pictures do you want to correct, and where are the results saved? The originals are not changed.</source>
        <translation>要校正哪些图片，结果保存在哪里？原图保持不变。</translation>
    </message>
    <message>
        <source>Add f&amp;older…</source>
        <translation>添加文件夹(&amp;O)…</translation>
    </message>
    <message>
        <source>The folder of each picture</source>
        <translation>每张图片所在的文件夹</translation>
    </message>
    <message>
        <source>&amp;Save in:</source>
        <translation>保存到(&amp;S)：</translation>
    </message>
    <message>
        <source>Forma&amp;t:</source>
        <translation>格式(&amp;T)：</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not a folder</source>
        <translation>“%1”不是文件夹</translation>
    </message>
    <message>
        <source>This folder cannot be read: %1</source>
        <translation>无法读取此文件夹：%1</translation>
    </message>
    <message>
        <source>No new pictures were found.</source>
        <translation>没有找到新的图片。</translation>
    </message>
    <message>
        <source>Add a folder</source>
        <translation>添加文件夹</translation>
    </message>
    <message>
        <source>Folder for corrected pictures</source>
        <translation>校正图片的文件夹</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not an absolute path, which begins with &quot;/&quot;</source>
        <translation>“%1”不是完整路径，完整路径以“/”开头</translation>
    </message>
    <message>
        <source>%1 of %2 pictures read</source>
        <translation>已读取 %1 / %2 张图片</translation>
    </message>
</context>
<context>
    <name>RunPage</name>
    <message>
        <source>Corrected</source>
        <translation>已校正</translation>
    </message>
    <message>
        <source>Left as it was: the corrected picture already exists</source>
        <translation>保持不变：校正后的图片已存在</translation>
    </message>
    <message>
        <source>Failed</source>
        <translation>失败</translation>
    </message>
    <message>
        <source>Not corrected: the run was stopped</source>
        <translation>未校正：已提前停止</translation>
    </message>
    <message>
        <source>&amp;Stop</source>
        <translation>停止(&amp;S)</translation>
    </message>
    <message>
        <source>Show in &amp;folder</source>
        <translation>在文件夹中显示(&amp;F)</translation>
    </message>
    <message>
        <source>Correction</source>
        <translation>校正</translation>
    </message>
    <message>
        <source>Picture</source>
        <translation>图片</translation>
    </message>
    <message>
        <source>Result</source>
        <translation>结果</translation>
    </message>
    <message>
        <source>Correcting…</source>
        <translation>正在校正…</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <comment>result of a picture, and why</comment>
        <translation>%1：%2</translation>
    </message>
    <message numerus="yes">
        <source>%n picture(s) corrected</source>
        <translation>
            <numerusform>已校正 %n 张图片</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n left as they were</source>
        <translation>
            <numerusform>%n 张保持不变</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n failed</source>
        <translation>
            <numerusform>%n 张失败</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n not reached</source>
        <translation>
            <numerusform>%n 张未处理</numerusform>
        </translation>
    </message>
    <message>
        <source>, </source>
        <translation>，</translation>
    </message>
    <message numerus="yes">
        <source>About %n second(s) left</source>
        <translation>
            <numerusform>大约还剩 %n 秒</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>About %n minute(s) left</source>
        <translation>
            <numerusform>大约还剩 %n 分钟</numerusform>
        </translation>
    </message>
    <message>
        <source>Skipped, corrected before</source>
        <translation>已跳过，之前已校正</translation>
    </message>
    <message numerus="yes">
        <source>%n corrected before</source>
        <translation>
            <numerusform>%n 张之前已校正</numerusform>
        </translation>
    </message>
    <message>
        <source>Before and &amp;after…</source>
        <translation>校正前后对比(&amp;A)…</translation>
    </message>
    <message>
        <source>Open a row of the list to see the picture before and after the correction.</source>
        <translation>打开列表中的一行，可查看校正前后的图片。</translation>
    </message>
    <message>
        <source>Stopping…</source>
        <translation>正在停止…</translation>
    </message>
    <message>
        <source>%1 of %2 pictures finished</source>
        <translation>已完成 %1 / %2 张图片</translation>
    </message>
</context>
<context>
    <name>WorkFolder</name>
    <message>
        <source>cannot write into the folder &quot;%1&quot;: %2</source>
        <translation>无法写入文件夹“%1”：%2</translation>
    </message>
    <message>
        <source>cannot create the folder &quot;%1&quot;: %2</source>
        <translation>无法创建文件夹“%1”：%2</translation>
    </message>
    <message>
        <source>cannot write &quot;%1&quot;: %2</source>
        <translation>无法写入“%1”：%2</translation>
    </message>
    <message>
        <source>it exists and is not a regular file</source>
        <translation>那里的不是普通文件</translation>
    </message>
    <message>
        <source>cannot set the file time: %1</source>
        <translation>无法设置文件时间：%1</translation>
    </message>
</context>
</TS>
