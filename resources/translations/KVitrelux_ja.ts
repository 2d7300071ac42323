<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ja" sourcelanguage="en">
<context>
    <name>ImageDef</name>
    <message>
        <source>inch</source>
        <translation>インチ</translation>
    </message>
    <message>
        <source>cm</source>
        <translation>cm</translation>
    </message>
    <message>
        <source>µm</source>
        <translation>µm</translation>
    </message>
    <message>
        <source>Maker</source>
        <translation>メーカー</translation>
    </message>
    <message>
        <source>Model</source>
        <translation>モデル</translation>
    </message>
    <message>
        <source>Real focal length</source>
        <translation>実焦点距離</translation>
    </message>
    <message>
        <source>35mm f.length</source>
        <translation>35mm換算焦点距離</translation>
    </message>
    <message>
        <source>Exposure time</source>
        <translation>露出時間</translation>
    </message>
    <message>
        <source>Shutter speed</source>
        <translation>シャッター速度</translation>
    </message>
    <message>
        <source>F Number</source>
        <translation>F値</translation>
    </message>
    <message>
        <source>Date Time</source>
        <translation>日時</translation>
    </message>
    <message>
        <source>ISO</source>
        <translation>ISO</translation>
    </message>
    <message>
        <source>Exposure bias value</source>
        <translation>露出補正値</translation>
    </message>
    <message>
        <source>Width</source>
        <translation>幅</translation>
    </message>
    <message>
        <source>Height</source>
        <translation>高さ</translation>
    </message>
    <message>
        <source>Focal plane res X</source>
        <translation>焦点面の解像度 X</translation>
    </message>
    <message>
        <source>Focal plane res Y</source>
        <translation>焦点面の解像度 Y</translation>
    </message>
    <message>
        <source>Focal plan res. unit</source>
        <translation>焦点面の解像度の単位</translation>
    </message>
    <message>
        <source>: gray pictures are not supported.</source>
        <translation>：グレースケール画像には対応していません。</translation>
    </message>
</context>
<context>
    <name>KException</name>
    <message>
        <source>Error GFL : &quot;%1&quot;</source>
        <translation>GFL エラー：&quot;%1&quot;</translation>
    </message>
    <message>
        <source>File : &quot;%1&quot;</source>
        <translation>ファイル：&quot;%1&quot;</translation>
    </message>
    <message>
        <source>Not enough free space on &quot;%1&quot; to finish operation</source>
        <translation>処理を完了するための空き容量が「%1」に足りません</translation>
    </message>
    <message>
        <source>Cannot write into file &quot;%1&quot;</source>
        <translation>ファイル「%1」に書き込めません</translation>
    </message>
    <message>
        <source>File &quot;%1&quot; is not found</source>
        <translation>ファイル「%1」が見つかりません</translation>
    </message>
    <message>
        <source>No more space in temporary folder</source>
        <translation>一時フォルダーに空き容量がありません</translation>
    </message>
</context>
<context>
    <name>KLog</name>
    <message>
        <source>Critical error</source>
        <translation>重大なエラー</translation>
    </message>
    <message>
        <source>Can not open file %1</source>
        <translation>ファイル %1 を開けません</translation>
    </message>
</context>
<context>
    <name>KSystemInfo</name>
    <message>
        <source>Bytes</source>
        <translation>バイト</translation>
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
        <translation>Adobe® は、レンズを測定する無料ツール「Lens Profile Creator」を公開しています。このプラグインはそのプロファイルを使って、写真から歪曲収差、周辺減光、色収差を取り除きます。</translation>
    </message>
</context>
<context>
    <name>Library</name>
    <message>
        <source>Comment</source>
        <translation>コメント</translation>
    </message>
</context>
<context>
    <name>QCoreApplication</name>
    <message>
        <source>File &quot;%1&quot; cannot be loaded</source>
        <translation>ファイル「%1」を読み込めません</translation>
    </message>
    <message>
        <source>File &quot;%1&quot; is not found</source>
        <translation>ファイル「%1」が見つかりません</translation>
    </message>
</context>
<context>
    <name>UIImageDefListWizard</name>
    <message>
        <source>Prev</source>
        <translation>前へ</translation>
    </message>
    <message>
        <source>Next</source>
        <translation>次へ</translation>
    </message>
</context>
<context>
    <name>UIImageDefListWizardClass</name>
    <message>
        <source>WizardPage</source>
        <translation>ウィザードのページ</translation>
    </message>
    <message>
        <source>Apply to all images</source>
        <translation>すべての画像に適用</translation>
    </message>
</context>
<context>
    <name>UIVitreluxPreview</name>
    <message>
        <source>Select lens camera profiles Database directory</source>
        <translation>レンズプロファイルのフォルダーを選択</translation>
    </message>
    <message>
        <source>Select lens camera profile</source>
        <translation>レンズプロファイルを選択</translation>
    </message>
    <message>
        <source>Profile</source>
        <translation>プロファイル</translation>
    </message>
    <message>
        <source>Non supported file format</source>
        <translation>対応していないファイル形式です</translation>
    </message>
    <message>
        <source>Preview is uptodate</source>
        <translation>プレビューは最新です</translation>
    </message>
    <message>
        <source>None found: %1</source>
        <translation>プロファイルが見つかりません：%1</translation>
    </message>
    <message>
        <source>Found: %1</source>
        <translation>検出：%1</translation>
    </message>
    <message>
        <source>Not corrected: %1</source>
        <translation>補正されていません：%1</translation>
    </message>
    <message>
        <source>Find the profile automatically</source>
        <translation>プロファイルを自動的に探す</translation>
    </message>
</context>
<context>
    <name>UIVitreluxPreviewClass</name>
    <message>
        <source>Vitrelux correction</source>
        <translation>Vitrelux 補正</translation>
    </message>
    <message>
        <source>Lens database</source>
        <translation>レンズデータベース</translation>
    </message>
    <message>
        <source>...</source>
        <translation>...</translation>
    </message>
    <message>
        <source>Lens profile</source>
        <translation>レンズプロファイル</translation>
    </message>
    <message>
        <source>Message</source>
        <translation>メッセージ</translation>
    </message>
    <message>
        <source>Geometric distortion</source>
        <translation>歪曲収差</translation>
    </message>
    <message>
        <source>Chromatic aberration</source>
        <translation>色収差</translation>
    </message>
    <message>
        <source>Vignetting</source>
        <translation>周辺減光</translation>
    </message>
    <message>
        <source>Split preview</source>
        <translation>分割プレビュー</translation>
    </message>
</context>
</TS>
