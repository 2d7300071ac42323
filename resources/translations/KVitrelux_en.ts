<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name>ImageDef</name>
    <message>
        <source>inch</source>
        <translation>inch</translation>
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
        <translation>Maker</translation>
    </message>
    <message>
        <source>Model</source>
        <translation>Model</translation>
    </message>
    <message>
        <source>Real focal length</source>
        <translation>Real focal length</translation>
    </message>
    <message>
        <source>35mm f.length</source>
        <translation>35mm f.length</translation>
    </message>
    <message>
        <source>Exposure time</source>
        <translation>Exposure time</translation>
    </message>
    <message>
        <source>Shutter speed</source>
        <translation>Shutter speed</translation>
    </message>
    <message>
        <source>F Number</source>
        <translation>F Number</translation>
    </message>
    <message>
        <source>Date Time</source>
        <translation>Date Time</translation>
    </message>
    <message>
        <source>ISO</source>
        <translation>ISO</translation>
    </message>
    <message>
        <source>Exposure bias value</source>
        <translation>Exposure bias value</translation>
    </message>
    <message>
        <source>Width</source>
        <translation>Width</translation>
    </message>
    <message>
        <source>Height</source>
        <translation>Height</translation>
    </message>
    <message>
        <source>Focal plane res X</source>
        <translation>Focal plane res X</translation>
    </message>
    <message>
        <source>Focal plane res Y</source>
        <translation>Focal plane res Y</translation>
    </message>
    <message>
        <source>Focal plan res. unit</source>
        <translation>Focal plan res. unit</translation>
    </message>
    <message>
        <source>: gray pictures are not supported.</source>
        <translation>: gray pictures are not supported.</translation>
    </message>
</context>
<context>
    <name>KException</name>
    <message>
        <source>Error GFL : &quot;%1&quot;</source>
        <translation>Error GFL : &quot;%1&quot;</translation>
    </message>
    <message>
        <source>File : &quot;%1&quot;</source>
        <translation>File : &quot;%1&quot;</translation>
    </message>
    <message>
        <source>Not enough free space on &quot;%1&quot; to finish operation</source>
        <translation>Not enough free space on &quot;%1&quot; to finish operation</translation>
    </message>
    <message>
        <source>Cannot write into file &quot;%1&quot;</source>
        <translation>Cannot write into file &quot;%1&quot;</translation>
    </message>
    <message>
        <source>File &quot;%1&quot; is not found</source>
        <translation>File &quot;%1&quot; is not found</translation>
    </message>
    <message>
        <source>No more space in temporary folder</source>
        <translation>No more space in temporary folder</translation>
    </message>
</context>
<context>
    <name>KLog</name>
    <message>
        <source>Critical error</source>
        <translation>Critical error</translation>
    </message>
    <message>
        <source>Can not open file %1</source>
        <translation>Can not open file %1</translation>
    </message>
</context>
<context>
    <name>KSystemInfo</name>
    <message>
        <source>Bytes</source>
        <translation>Bytes</translation>
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
        <translation>Adobe(r) released a free tool to calibrate your lens called &apos;Lens Profile Creator&apos;. This plugin reuse these profiles to remove lens distortion, vignetting or chromatic aberration from your photos.</translation>
    </message>
</context>
<context>
    <name>Library</name>
    <message>
        <source>Comment</source>
        <translation>Comment</translation>
    </message>
</context>
<context>
    <name>QCoreApplication</name>
    <message>
        <source>File &quot;%1&quot; cannot be loaded</source>
        <translation>File &quot;%1&quot; cannot be loaded</translation>
    </message>
    <message>
        <source>File &quot;%1&quot; is not found</source>
        <translation>File &quot;%1&quot; is not found</translation>
    </message>
</context>
<context>
    <name>UIImageDefListWizard</name>
    <message>
        <source>Prev</source>
        <translation>Prev</translation>
    </message>
    <message>
        <source>Next</source>
        <translation>Next</translation>
    </message>
</context>
<context>
    <name>UIImageDefListWizardClass</name>
    <message>
        <source>WizardPage</source>
        <translation>WizardPage</translation>
    </message>
    <message>
        <source>Apply to all images</source>
        <translation>Apply to all images</translation>
    </message>
</context>
<context>
    <name>UIVitreluxPreview</name>
    <message>
        <source>Select lens camera profiles Database directory</source>
        <translation>Select lens camera profiles Database directory</translation>
    </message>
    <message>
        <source>Select lens camera profile</source>
        <translation>Select lens camera profile</translation>
    </message>
    <message>
        <source>Profile</source>
        <translation>Profile</translation>
    </message>
    <message>
        <source>Non supported file format</source>
        <translation>Non supported file format</translation>
    </message>
    <message>
        <source>Preview is uptodate</source>
        <translation>Preview is uptodate</translation>
    </message>
    <message>
        <source>None found: %1</source>
        <translation>None found: %1</translation>
    </message>
    <message>
        <source>Found: %1</source>
        <translation>Found: %1</translation>
    </message>
    <message>
        <source>Not corrected: %1</source>
        <translation>Not corrected: %1</translation>
    </message>
    <message>
        <source>Find the profile automatically</source>
        <translation>Find the profile automatically</translation>
    </message>
</context>
<context>
    <name>UIVitreluxPreviewClass</name>
    <message>
        <source>Vitrelux correction</source>
        <translation>Vitrelux correction</translation>
    </message>
    <message>
        <source>Lens database</source>
        <translation>Lens database</translation>
    </message>
    <message>
        <source>...</source>
        <translation>...</translation>
    </message>
    <message>
        <source>Lens profile</source>
        <translation>Lens profile</translation>
    </message>
    <message>
        <source>Message</source>
        <translation>Message</translation>
    </message>
    <message>
        <source>Geometric distortion</source>
        <translation>Geometric distortion</translation>
    </message>
    <message>
        <source>Chromatic aberration</source>
        <translation>Chromatic aberration</translation>
    </message>
    <message>
        <source>Vignetting</source>
        <translation>Vignetting</translation>
    </message>
    <message>
        <source>Split preview</source>
        <translation>Split preview</translation>
    </message>
</context>
</TS>
