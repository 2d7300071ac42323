<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ja" sourcelanguage="en">
<context>
    <name>CompareDialog</name>
    <message>
        <source>%1: before and after</source>
        <translation>%1：補正前と補正後</translation>
    </message>
    <message>
        <source>Before</source>
        <translation>補正前</translation>
    </message>
    <message>
        <source>After</source>
        <translation>補正後</translation>
    </message>
    <message>
        <source>Reading the picture…</source>
        <translation>画像を読み込んでいます…</translation>
    </message>
    <message>
        <source>Zoom &amp;in</source>
        <translation>拡大(&amp;I)</translation>
    </message>
    <message>
        <source>Zoom &amp;out</source>
        <translation>縮小(&amp;O)</translation>
    </message>
    <message>
        <source>&amp;Whole picture</source>
        <translation>画像全体(&amp;W)</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>閉じる(&amp;C)</translation>
    </message>
    <message>
        <source>The picture cannot be read: %1</source>
        <translation>画像を読み込めません：%1</translation>
    </message>
</context>
<context>
    <name>CorrectionJob</name>
    <message>
        <source>The corrected picture would replace that of &quot;%1&quot;</source>
        <translation>補正後の画像が「%1」のものを置き換えてしまいます</translation>
    </message>
    <message>
        <source>No correction is switched on</source>
        <translation>補正が 1 つもオンになっていません</translation>
    </message>
    <message>
        <source>Not a readable picture: %1</source>
        <translation>読み取れる画像ではありません：%1</translation>
    </message>
    <message>
        <source>No lens profile was chosen, and none was found for this picture: %1</source>
        <translation>レンズプロファイルが選択されておらず、この画像に合うものも見つかりません：%1</translation>
    </message>
</context>
<context>
    <name>CorrectionWizard</name>
    <message>
        <source>Vitrelux: lens correction</source>
        <translation>Vitrelux：レンズ補正</translation>
    </message>
    <message>
        <source>&amp;Back</source>
        <translation>戻る(&amp;B)</translation>
    </message>
    <message>
        <source>&amp;Next</source>
        <translation>次へ(&amp;N)</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>閉じる(&amp;C)</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>キャンセル</translation>
    </message>
</context>
<context>
    <name>FittedCorrection</name>
    <message>
        <source>profile &quot;%1&quot;</source>
        <translation>プロファイル &quot;%1&quot;</translation>
    </message>
    <message>
        <source>entries</source>
        <translation>エントリ</translation>
    </message>
    <message>
        <source>assumed</source>
        <translation>仮定</translation>
    </message>
    <message>
        <source>left out</source>
        <translation>未適用</translation>
    </message>
    <message>
        <source>profile %1</source>
        <comment>its name and what is wrong with it</comment>
        <translation>プロファイル %1</translation>
    </message>
    <message>
        <source>nearest</source>
        <translation>近いもの</translation>
    </message>
</context>
<context>
    <name>PictureProblem</name>
    <message>
        <source>is a link to a file that does not exist</source>
        <translation>存在しないファイルへのリンクです</translation>
    </message>
    <message>
        <source>no such file; names must be in UTF-8</source>
        <translation>そのようなファイルはありません。名前は UTF-8 である必要があります</translation>
    </message>
    <message>
        <source>no such file</source>
        <translation>そのようなファイルはありません</translation>
    </message>
    <message>
        <source>is a folder, expected a picture file</source>
        <translation>フォルダーです。画像ファイルが必要です</translation>
    </message>
    <message>
        <source>is not a regular file, expected a picture file</source>
        <translation>通常のファイルではありません。画像ファイルが必要です</translation>
    </message>
    <message>
        <source>is empty (0 bytes), expected a picture file</source>
        <translation>空です（0 バイト）。画像ファイルが必要です</translation>
    </message>
    <message>
        <source>cannot be read: %1</source>
        <translation>読み取れません：%1</translation>
    </message>
    <message>
        <source>gray pictures are not supported</source>
        <translation>グレースケール画像には対応していません</translation>
    </message>
    <message>
        <source>%1 pictures are not supported</source>
        <translation>%1 画像には対応していません</translation>
    </message>
    <message>
        <source>pictures of %1 channels are not supported</source>
        <translation>%1 チャンネルの画像には対応していません</translation>
    </message>
    <message>
        <source>tiled TIFF files are not supported</source>
        <translation>タイル形式の TIFF ファイルには対応していません</translation>
    </message>
    <message>
        <source>is not recognized as a picture: a companion file, or damaged</source>
        <translation>画像として認識できません。付属ファイルか、破損しています</translation>
    </message>
</context>
<context>
    <name>PictureRun</name>
    <message>
        <source>not enough memory</source>
        <translation>メモリーが足りません</translation>
    </message>
    <message>
        <source>failed for an unknown reason</source>
        <translation>原因不明で失敗しました</translation>
    </message>
</context>
<context>
    <name>PicturesPage</name>
    <message>
        <source>&amp;Remove</source>
        <translation>削除(&amp;R)</translation>
    </message>
    <message>
        <source>Pictures</source>
        <translation>画像</translation>
    </message>
    <message>
        <source>Picture</source>
        <translation>画像</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>サイズ</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>フォルダー</translation>
    </message>
    <message>
        <source>Drop pictures or folders here</source>
        <translation>ここに画像やフォルダーをドロップ</translation>
    </message>
    <message>
        <source>&amp;Add pictures…</source>
        <translation>画像を追加(&amp;A)…</translation>
    </message>
    <message>
        <source>All files</source>
        <translation>すべてのファイル</translation>
    </message>
    <message>
        <source>Add pictures</source>
        <translation>画像を追加</translation>
    </message>
    <message>
        <source>Fill the frame: no empty borders</source>
        <translation>フレームを満たす：空白の縁なし</translation>
    </message>
    <message>
        <source>Keep the scale</source>
        <translation>倍率を維持</translation>
    </message>
    <message>
        <source>Show everything that was photographed</source>
        <translation>撮影された範囲をすべて表示</translation>
    </message>
    <message>
        <source>&amp;Framing:</source>
        <translation>フレーミング(&amp;F)：</translation>
    </message>
    <message>
        <source>TIFF: nothing is lost</source>
        <translation>TIFF：画質の劣化なし</translation>
    </message>
    <message>
        <source>JPEG: small files, 8 bits</source>
        <translation>JPEG：ファイルが小さい、8ビット</translation>
    </message>
    <message>
        <source>PNG: lossless, up to 16 bits</source>
        <translation>PNG：画質の劣化なし、16ビットまで</translation>
    </message>
    <message>
        <source>OpenEXR: linear light, for compositing</source>
        <translation>OpenEXR：リニアライト、合成用</translation>
    </message>
    <message>
        <source>C&amp;hoose…</source>
        <translation>選択(&amp;H)…</translation>
    </message>
    <message>
        <source>Replace e&amp;xisting corrected pictures</source>
        <translation>すでにある補正後の画像を置き換える(&amp;X)</translation>
    </message>
    <message>
        <source>Which pictures do you want to correct, and where are the results saved? The originals are not changed.</source>
        <translation>補正する画像と保存先を選んでください。元の画像は変更されません。</translation>
    </message>
    <message>
        <source>Add f&amp;older…</source>
        <translation>フォルダーを追加(&amp;O)…</translation>
    </message>
    <message>
        <source>The folder of each picture</source>
        <translation>それぞれの画像と同じフォルダー</translation>
    </message>
    <message>
        <source>&amp;Save in:</source>
        <translation>保存先(&amp;S)：</translation>
    </message>
    <message>
        <source>Forma&amp;t:</source>
        <translation>ファイル形式(&amp;T)：</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not a folder</source>
        <translation>「%1」はフォルダーではありません</translation>
    </message>
    <message>
        <source>This folder cannot be read: %1</source>
        <translation>このフォルダーは読み込めません：%1</translation>
    </message>
    <message>
        <source>No new pictures were found.</source>
        <translation>新しい画像は見つかりませんでした。</translation>
    </message>
    <message>
        <source>Add a folder</source>
        <translation>フォルダーを追加</translation>
    </message>
    <message>
        <source>Folder for corrected pictures</source>
        <translation>補正後の画像の保存先</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not an absolute path, which begins with &quot;/&quot;</source>
        <translation>「%1」は完全なパスではありません。完全なパスは「/」で始まります</translation>
    </message>
    <message>
        <source>%1 of %2 pictures read</source>
        <translation>%2 枚中 %1 枚を読み込みました</translation>
    </message>
</context>
<context>
    <name>RunPage</name>
    <message>
        <source>Corrected</source>
        <translation>補正しました</translation>
    </message>
    <message>
        <source>Left as it was: the corrected picture already exists</source>
        <translation>変更なし：補正後の画像がすでにあります</translation>
    </message>
    <message>
        <source>Failed</source>
        <translation>失敗</translation>
    </message>
    <message>
        <source>Not corrected: the run was stopped</source>
        <translation>未補正：その前に停止しました</translation>
    </message>
    <message>
        <source>&amp;Stop</source>
        <translation>停止(&amp;S)</translation>
    </message>
    <message>
        <source>Show in &amp;folder</source>
        <translation>フォルダーに表示(&amp;F)</translation>
    </message>
    <message>
        <source>Correction</source>
        <translation>補正</translation>
    </message>
    <message>
        <source>Picture</source>
        <translation>画像</translation>
    </message>
    <message>
        <source>Result</source>
        <translation>結果</translation>
    </message>
    <message>
        <source>Correcting…</source>
        <translation>補正中…</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <comment>result of a picture, and why</comment>
        <translation>%1：%2</translation>
    </message>
    <message numerus="yes">
        <source>%n picture(s) corrected</source>
        <translation>
            <numerusform>%n 枚の画像を補正</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n left as they were</source>
        <translation>
            <numerusform>%n 枚は変更なし</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n failed</source>
        <translation>
            <numerusform>%n 枚は失敗</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n not reached</source>
        <translation>
            <numerusform>%n 枚は未処理</numerusform>
        </translation>
    </message>
    <message>
        <source>, </source>
        <translation>、</translation>
    </message>
    <message numerus="yes">
        <source>About %n second(s) left</source>
        <translation>
            <numerusform>残り約 %n 秒</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>About %n minute(s) left</source>
        <translation>
            <numerusform>残り約 %n 分</numerusform>
        </translation>
    </message>
    <message>
        <source>Skipped, corrected before</source>
        <translation>補正済みのためスキップ</translation>
    </message>
    <message numerus="yes">
        <source>%n corrected before</source>
        <translation>
            <numerusform>%n 枚は補正済み</numerusform>
        </translation>
    </message>
    <message>
        <source>Before and &amp;after…</source>
        <translation>補正前後を比較(&amp;A)…</translation>
    </message>
    <message>
        <source>Open a row of the list to see the picture before and after the correction.</source>
        <translation>一覧の行を開くと、補正前と補正後の画像を比べられます。</translation>
    </message>
    <message>
        <source>Stopping…</source>
        <translation>停止しています…</translation>
    </message>
    <message>
        <source>%1 of %2 pictures finished</source>
        <translation>%2 枚中 %1 枚が完了</translation>
    </message>
</context>
<context>
    <name>WorkFolder</name>
    <message>
        <source>cannot write into the folder &quot;%1&quot;: %2</source>
        <translation>フォルダー「%1」に書き込めません：%2</translation>
    </message>
    <message>
        <source>cannot create the folder &quot;%1&quot;: %2</source>
        <translation>フォルダー「%1」を作成できません：%2</translation>
    </message>
    <message>
        <source>cannot write &quot;%1&quot;: %2</source>
        <translation>「%1」を書き込めません：%2</translation>
    </message>
    <message>
        <source>it exists and is not a regular file</source>
        <translation>通常のファイルではないものがあります</translation>
    </message>
    <message>
        <source>cannot set the file time: %1</source>
        <translation>ファイルの日時を設定できません：%1</translation>
    </message>
</context>
</TS>
