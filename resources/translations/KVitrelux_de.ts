<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>ImageDef</name>
    <message>
        <source>inch</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>cm</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>µm</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Maker</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Model</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Real focal length</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>35mm f.length</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Exposure time</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Shutter speed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>F Number</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Date Time</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>ISO</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Exposure bias value</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Width</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Height</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Focal plane res X</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Focal plane res Y</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Focal plan res. unit</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>KException</name>
    <message>
        <source>Error GFL : &quot;%1&quot;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>File : &quot;%1&quot;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not enough free space on &quot;%1&quot; to finish operation</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cannot write into file &quot;%1&quot;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>File &quot;%1&quot; is not found</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>KLog</name>
    <message>
        <source>Critical error</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Can not open file %1</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>KSystemInfo</name>
    <message>
        <source>Bytes</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>KB</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>MB</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>GB</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>TB</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>KVitreluxOne2One</name>
    <message>
        <source>Adobe(r) released a free tool to calibrate your lens called &apos;Lens Profile Creator&apos;. This plugin reuse these profiles to remove lens distortion, vignetting or chromatic aberration from your photos.</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>Library</name>
    <message>
        <source>Comment</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>QCoreApplication</name>
    <message>
        <source>File &quot;%1&quot; cannot be loaded</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>UIImageDefListWizard</name>
    <message>
        <source>Prev</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Next</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>UIImageDefListWizardClass</name>
    <message>
        <source>WizardPage</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Apply to all images</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>UIVitreluxPreview</name>
    <message>
        <source>Select lens camera profiles Database directory</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Select lens camera profile</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Profile</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Non supported file format</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Preview is uptodate</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>UIVitreluxPreviewClass</name>
    <message>
        <source>Vitrelux correction</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Lens database</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>...</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Lens profile</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Message</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Geometric distortion</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Chromatic aberration</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Vignetting</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Split preview</source>
        <translation type="unfinished"></translation>
    </message>
</context>
</TS>
