<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
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
</context>
</TS>
