<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ja" sourcelanguage="en">
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
        <translation>省略</translation>
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
        <translation>理由の報告なしに失敗しました</translation>
    </message>
</context>
<context>
    <name>PicturesPage</name>
    <message>
        <source>&amp;Remove</source>
        <translation>削除(&amp;R)</translation>
    </message>
    <message>
        <source>Replace existing corrected pictures</source>
        <translation>すでにある補正後の画像を置き換える</translation>
    </message>
    <message>
        <source>Pictures</source>
        <translation>画像</translation>
    </message>
    <message>
        <source>Which pictures do you want to correct? Each corrected picture is saved next to its original, which is not changed.</source>
        <translation>どの画像を補正しますか？補正後の画像は元の画像と同じ場所に保存され、元の画像は変更されません。</translation>
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
        <source>The pictures are corrected one after the other.</source>
        <translation>画像を 1 枚ずつ順番に補正します。</translation>
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
        <source>Stopping after the current picture…</source>
        <translation>処理中の画像が終わったら停止します…</translation>
    </message>
    <message>
        <source>Picture %1 of %2: %3</source>
        <translation>画像 %1 / %2：%3</translation>
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
        <translation>日時を維持できません: %1</translation>
    </message>
</context>
</TS>
