<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="zh_TW" sourcelanguage="en">
<context>
    <name>CompareDialog</name>
    <message>
        <source>%1: before and after</source>
        <translation>%1：校正前後</translation>
    </message>
    <message>
        <source>Before</source>
        <translation>校正前</translation>
    </message>
    <message>
        <source>After</source>
        <translation>校正後</translation>
    </message>
    <message>
        <source>Reading the picture…</source>
        <translation>正在讀取圖片…</translation>
    </message>
    <message>
        <source>Zoom &amp;in</source>
        <translation>放大(&amp;I)</translation>
    </message>
    <message>
        <source>Zoom &amp;out</source>
        <translation>縮小(&amp;O)</translation>
    </message>
    <message>
        <source>&amp;Whole picture</source>
        <translation>整張圖片(&amp;W)</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>關閉(&amp;C)</translation>
    </message>
    <message>
        <source>The picture cannot be read: %1</source>
        <translation>無法讀取圖片：%1</translation>
    </message>
</context>
<context>
    <name>CorrectionJob</name>
    <message>
        <source>The corrected picture would replace that of &quot;%1&quot;</source>
        <translation>校正後的圖片會取代「%1」的結果</translation>
    </message>
    <message>
        <source>No correction is switched on</source>
        <translation>未啟用任何校正</translation>
    </message>
    <message>
        <source>Not a readable picture: %1</source>
        <translation>不是可讀取的圖片：%1</translation>
    </message>
    <message>
        <source>No lens profile was chosen, and none was found for this picture: %1</source>
        <translation>未選取鏡頭描述檔，也找不到適合此圖片的描述檔：%1</translation>
    </message>
</context>
<context>
    <name>CorrectionWizard</name>
    <message>
        <source>Vitrelux: lens correction</source>
        <translation>Vitrelux：鏡頭校正</translation>
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
        <translation>關閉(&amp;C)</translation>
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
        <translation>描述檔「%1」</translation>
    </message>
    <message>
        <source>entries</source>
        <translation>項目</translation>
    </message>
    <message>
        <source>assumed</source>
        <translation>假設</translation>
    </message>
    <message>
        <source>left out</source>
        <translation>未套用</translation>
    </message>
    <message>
        <source>profile %1</source>
        <comment>its name and what is wrong with it</comment>
        <translation>描述檔 %1</translation>
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
        <translation>是指向不存在之檔案的連結</translation>
    </message>
    <message>
        <source>no such file; names must be in UTF-8</source>
        <translation>沒有此檔案；檔名應為 UTF-8</translation>
    </message>
    <message>
        <source>no such file</source>
        <translation>沒有此檔案</translation>
    </message>
    <message>
        <source>is a folder, expected a picture file</source>
        <translation>是資料夾，應為圖片檔案</translation>
    </message>
    <message>
        <source>is not a regular file, expected a picture file</source>
        <translation>不是一般檔案，應為圖片檔案</translation>
    </message>
    <message>
        <source>is empty (0 bytes), expected a picture file</source>
        <translation>是空的（0 位元組），應為圖片檔案</translation>
    </message>
    <message>
        <source>cannot be read: %1</source>
        <translation>無法讀取：%1</translation>
    </message>
    <message>
        <source>gray pictures are not supported</source>
        <translation>不支援灰階圖片</translation>
    </message>
    <message>
        <source>%1 pictures are not supported</source>
        <translation>不支援 %1 圖片</translation>
    </message>
    <message>
        <source>pictures of %1 channels are not supported</source>
        <translation>不支援 %1 通道的圖片</translation>
    </message>
    <message>
        <source>tiled TIFF files are not supported</source>
        <translation>不支援分塊儲存的 TIFF 檔案</translation>
    </message>
    <message>
        <source>is not recognized as a picture: a companion file, or damaged</source>
        <translation>無法識別為圖片：是附屬檔案或已損壞</translation>
    </message>
</context>
<context>
    <name>PictureRun</name>
    <message>
        <source>not enough memory</source>
        <translation>記憶體不足</translation>
    </message>
    <message>
        <source>failed for an unknown reason</source>
        <translation>因未知原因失敗</translation>
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
        <translation>圖片</translation>
    </message>
    <message>
        <source>Picture</source>
        <translation>圖片</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>大小</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>資料夾</translation>
    </message>
    <message>
        <source>Drop pictures or folders here</source>
        <translation>將圖片或資料夾拖放到這裡</translation>
    </message>
    <message>
        <source>&amp;Add pictures…</source>
        <translation>加入圖片(&amp;A)…</translation>
    </message>
    <message>
        <source>All files</source>
        <translation>所有檔案</translation>
    </message>
    <message>
        <source>Add pictures</source>
        <translation>加入圖片</translation>
    </message>
    <message>
        <source>Fill the frame: no empty borders</source>
        <translation>填滿畫面：無空白邊緣</translation>
    </message>
    <message>
        <source>Keep the scale</source>
        <translation>維持縮放比例</translation>
    </message>
    <message>
        <source>Show everything that was photographed</source>
        <translation>顯示拍攝到的全部內容</translation>
    </message>
    <message>
        <source>&amp;Framing:</source>
        <translation>構圖(&amp;F)：</translation>
    </message>
    <message>
        <source>TIFF: nothing is lost</source>
        <translation>TIFF：無損</translation>
    </message>
    <message>
        <source>JPEG: small files, 8 bits</source>
        <translation>JPEG：檔案小，8 位元</translation>
    </message>
    <message>
        <source>PNG: lossless, up to 16 bits</source>
        <translation>PNG：無損，最高 16 位元</translation>
    </message>
    <message>
        <source>OpenEXR: linear light, for compositing</source>
        <translation>OpenEXR：線性光，用於合成</translation>
    </message>
    <message>
        <source>C&amp;hoose…</source>
        <translation>選擇(&amp;H)…</translation>
    </message>
    <message>
        <source>Replace e&amp;xisting corrected pictures</source>
        <translation>取代已存在的校正圖片(&amp;X)</translation>
    </message>
    <message>
        <source>Which pictures do you want to correct, and where are the results saved? The originals are not changed.</source>
        <translation>要校正哪些圖片，結果儲存在哪裡？原圖保持不變。</translation>
    </message>
    <message>
        <source>Add f&amp;older…</source>
        <translation>加入資料夾(&amp;O)…</translation>
    </message>
    <message>
        <source>The folder of each picture</source>
        <translation>每張圖片所在的資料夾</translation>
    </message>
    <message>
        <source>&amp;Save in:</source>
        <translation>儲存到(&amp;S)：</translation>
    </message>
    <message>
        <source>Forma&amp;t:</source>
        <translation>格式(&amp;T)：</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not a folder</source>
        <translation>「%1」不是資料夾</translation>
    </message>
    <message>
        <source>This folder cannot be read: %1</source>
        <translation>無法讀取此資料夾：%1</translation>
    </message>
    <message>
        <source>No new pictures were found.</source>
        <translation>找不到新的圖片。</translation>
    </message>
    <message>
        <source>Add a folder</source>
        <translation>加入資料夾</translation>
    </message>
    <message>
        <source>Folder for corrected pictures</source>
        <translation>校正圖片的資料夾</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not an absolute path, which begins with &quot;/&quot;</source>
        <translation>「%1」不是完整路徑，完整路徑以「/」開頭</translation>
    </message>
    <message>
        <source>%1 of %2 pictures read</source>
        <translation>已讀取 %1 / %2 張圖片</translation>
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
        <translation>保持不變：校正後的圖片已存在</translation>
    </message>
    <message>
        <source>Failed</source>
        <translation>失敗</translation>
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
        <translation>在資料夾中顯示(&amp;F)</translation>
    </message>
    <message>
        <source>Correction</source>
        <translation>校正</translation>
    </message>
    <message>
        <source>Picture</source>
        <translation>圖片</translation>
    </message>
    <message>
        <source>Result</source>
        <translation>結果</translation>
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
            <numerusform>已校正 %n 張圖片</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n left as they were</source>
        <translation>
            <numerusform>%n 張保持不變</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n failed</source>
        <translation>
            <numerusform>%n 張失敗</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n not reached</source>
        <translation>
            <numerusform>%n 張未處理</numerusform>
        </translation>
    </message>
    <message>
        <source>, </source>
        <translation>，</translation>
    </message>
    <message numerus="yes">
        <source>About %n second(s) left</source>
        <translation>
            <numerusform>大約還剩 %n 秒</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>About %n minute(s) left</source>
        <translation>
            <numerusform>大約還剩 %n 分鐘</numerusform>
        </translation>
    </message>
    <message>
        <source>Skipped, corrected before</source>
        <translation>已略過，先前已校正</translation>
    </message>
    <message numerus="yes">
        <source>%n corrected before</source>
        <translation>
            <numerusform>%n 張先前已校正</numerusform>
        </translation>
    </message>
    <message>
        <source>Before and &amp;after…</source>
        <translation>校正前後對照(&amp;A)…</translation>
    </message>
    <message>
        <source>Open a row of the list to see the picture before and after the correction.</source>
        <translation>開啟清單中的一列，可查看校正前後的圖片。</translation>
    </message>
    <message>
        <source>Stopping…</source>
        <translation>正在停止…</translation>
    </message>
    <message>
        <source>%1 of %2 pictures finished</source>
        <translation>已完成 %1 / %2 張圖片</translation>
    </message>
</context>
<context>
    <name>WorkFolder</name>
    <message>
        <source>cannot write into the folder &quot;%1&quot;: %2</source>
        <translation>無法寫入資料夾「%1」：%2</translation>
    </message>
    <message>
        <source>cannot create the folder &quot;%1&quot;: %2</source>
        <translation>無法建立資料夾「%1」：%2</translation>
    </message>
    <message>
        <source>cannot write &quot;%1&quot;: %2</source>
        <translation>無法寫入「%1」：%2</translation>
    </message>
    <message>
        <source>it exists and is not a regular file</source>
        <translation>那裡的不是一般檔案</translation>
    </message>
    <message>
        <source>cannot set the file time: %1</source>
        <translation>無法設定檔案時間：%1</translation>
    </message>
</context>
</TS>
