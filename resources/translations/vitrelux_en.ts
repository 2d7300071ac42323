<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<context>
    <name>CompareDialog</name>
    <message>
        <source>%1: before and after</source>
        <translation>%1: before and after</translation>
    </message>
    <message>
        <source>Before</source>
        <translation>Before</translation>
    </message>
    <message>
        <source>After</source>
        <translation>After</translation>
    </message>
    <message>
        <source>Reading the picture…</source>
        <translation>Reading the picture…</translation>
    </message>
    <message>
        <source>Zoom &amp;in</source>
        <translation>Zoom &amp;in</translation>
    </message>
    <message>
        <source>Zoom &amp;out</source>
        <translation>Zoom &amp;out</translation>
    </message>
    <message>
        <source>&amp;Whole picture</source>
        <translation>&amp;Whole picture</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>&amp;Close</translation>
    </message>
    <message>
        <source>The picture cannot be read: %1</source>
        <translation>The picture cannot be read: %1</translation>
    </message>
</context>
<context>
    <name>CorrectionJob</name>
    <message>
        <source>The corrected picture would replace that of &quot;%1&quot;</source>
        <translation>The corrected picture would replace that of &quot;%1&quot;</translation>
    </message>
    <message>
        <source>No correction is switched on</source>
        <translation>No correction is switched on</translation>
    </message>
    <message>
        <source>Not a readable picture: %1</source>
        <translation>Not a readable picture: %1</translation>
    </message>
    <message>
        <source>No lens profile was chosen, and none was found for this picture: %1</source>
        <translation>No lens profile was chosen, and none was found for this picture: %1</translation>
    </message>
</context>
<context>
    <name>CorrectionWizard</name>
    <message>
        <source>Vitrelux: lens correction</source>
        <translation>Vitrelux: lens correction</translation>
    </message>
    <message>
        <source>&amp;Back</source>
        <translation>&amp;Back</translation>
    </message>
    <message>
        <source>&amp;Next</source>
        <translation>&amp;Next</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>&amp;Close</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Cancel</translation>
    </message>
</context>
<context>
    <name>FittedCorrection</name>
    <message>
        <source>profile &quot;%1&quot;</source>
        <translation>profile &quot;%1&quot;</translation>
    </message>
    <message>
        <source>entries</source>
        <translation>entries</translation>
    </message>
    <message>
        <source>assumed</source>
        <translation>assumed</translation>
    </message>
    <message>
        <source>left out</source>
        <translation>left out</translation>
    </message>
    <message>
        <source>profile %1</source>
        <comment>its name and what is wrong with it</comment>
        <translation>profile %1</translation>
    </message>
    <message>
        <source>nearest</source>
        <translation>nearest</translation>
    </message>
</context>
<context>
    <name>PictureProblem</name>
    <message>
        <source>is a link to a file that does not exist</source>
        <translation>is a link to a file that does not exist</translation>
    </message>
    <message>
        <source>no such file; names must be in UTF-8</source>
        <translation>no such file; names must be in UTF-8</translation>
    </message>
    <message>
        <source>no such file</source>
        <translation>no such file</translation>
    </message>
    <message>
        <source>is a folder, expected a picture file</source>
        <translation>is a folder, expected a picture file</translation>
    </message>
    <message>
        <source>is not a regular file, expected a picture file</source>
        <translation>is not a regular file, expected a picture file</translation>
    </message>
    <message>
        <source>is empty (0 bytes), expected a picture file</source>
        <translation>is empty (0 bytes), expected a picture file</translation>
    </message>
    <message>
        <source>cannot be read: %1</source>
        <translation>cannot be read: %1</translation>
    </message>
    <message>
        <source>gray pictures are not supported</source>
        <translation>gray pictures are not supported</translation>
    </message>
    <message>
        <source>%1 pictures are not supported</source>
        <translation>%1 pictures are not supported</translation>
    </message>
    <message>
        <source>pictures of %1 channels are not supported</source>
        <translation>pictures of %1 channels are not supported</translation>
    </message>
    <message>
        <source>tiled TIFF files are not supported</source>
        <translation>tiled TIFF files are not supported</translation>
    </message>
    <message>
        <source>is not recognized as a picture: a companion file, or damaged</source>
        <translation>is not recognized as a picture: a companion file, or damaged</translation>
    </message>
</context>
<context>
    <name>PictureRun</name>
    <message>
        <source>not enough memory</source>
        <translation>not enough memory</translation>
    </message>
    <message>
        <source>failed for an unknown reason</source>
        <translation>failed for an unknown reason</translation>
    </message>
</context>
<context>
    <name>PicturesPage</name>
    <message>
        <source>&amp;Remove</source>
        <translation>&amp;Remove</translation>
    </message>
    <message>
        <source>Pictures</source>
        <translation>Pictures</translation>
    </message>
    <message>
        <source>Picture</source>
        <translation>Picture</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Size</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>Folder</translation>
    </message>
    <message>
        <source>Drop pictures or folders here</source>
        <translation>Drop pictures or folders here</translation>
    </message>
    <message>
        <source>&amp;Add pictures…</source>
        <translation>&amp;Add pictures…</translation>
    </message>
    <message>
        <source>All files</source>
        <translation>All files</translation>
    </message>
    <message>
        <source>Add pictures</source>
        <translation>Add pictures</translation>
    </message>
    <message>
        <source>Fill the frame: no empty borders</source>
        <translation>Fill the frame: no empty borders</translation>
    </message>
    <message>
        <source>Keep the scale</source>
        <translation>Keep the scale</translation>
    </message>
    <message>
        <source>Show everything that was photographed</source>
        <translation>Show everything that was photographed</translation>
    </message>
    <message>
        <source>&amp;Framing:</source>
        <translation>&amp;Framing:</translation>
    </message>
    <message>
        <source>TIFF: nothing is lost</source>
        <translation>TIFF: nothing is lost</translation>
    </message>
    <message>
        <source>JPEG: small files, 8 bits</source>
        <translation>JPEG: small files, 8 bits</translation>
    </message>
    <message>
        <source>PNG: lossless, up to 16 bits</source>
        <translation>PNG: lossless, up to 16 bits</translation>
    </message>
    <message>
        <source>OpenEXR: linear light, for compositing</source>
        <translation>OpenEXR: linear light, for compositing</translation>
    </message>
    <message>
        <source>C&amp;hoose…</source>
        <translation>C&amp;hoose…</translation>
    </message>
    <message>
        <source>Replace e&amp;xisting corrected pictures</source>
        <translation>Replace e&amp;xisting corrected pictures</translation>
    </message>
    <message>
        <source>Which pictures do you want to correct, and where are the results saved? The originals are not changed.</source>
        <translation>Which pictures do you want to correct, and where are the results saved? The originals are not changed.</translation>
    </message>
    <message>
        <source>Add f&amp;older…</source>
        <translation>Add f&amp;older…</translation>
    </message>
    <message>
        <source>The folder of each picture</source>
        <translation>The folder of each picture</translation>
    </message>
    <message>
        <source>&amp;Save in:</source>
        <translation>&amp;Save in:</translation>
    </message>
    <message>
        <source>Forma&amp;t:</source>
        <translation>Forma&amp;t:</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not a folder</source>
        <translation>&quot;%1&quot; is not a folder</translation>
    </message>
    <message>
        <source>This folder cannot be read: %1</source>
        <translation>This folder cannot be read: %1</translation>
    </message>
    <message>
        <source>No new pictures were found.</source>
        <translation>No new pictures were found.</translation>
    </message>
    <message>
        <source>Add a folder</source>
        <translation>Add a folder</translation>
    </message>
    <message>
        <source>Folder for corrected pictures</source>
        <translation>Folder for corrected pictures</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not an absolute path, which begins with &quot;/&quot;</source>
        <translation>&quot;%1&quot; is not an absolute path, which begins with &quot;/&quot;</translation>
    </message>
    <message>
        <source>%1 of %2 pictures read</source>
        <translation>%1 of %2 pictures read</translation>
    </message>
</context>
<context>
    <name>RunPage</name>
    <message>
        <source>Corrected</source>
        <translation>Corrected</translation>
    </message>
    <message>
        <source>Left as it was: the corrected picture already exists</source>
        <translation>Left as it was: the corrected picture already exists</translation>
    </message>
    <message>
        <source>Failed</source>
        <translation>Failed</translation>
    </message>
    <message>
        <source>Not corrected: the run was stopped</source>
        <translation>Not corrected: the run was stopped</translation>
    </message>
    <message>
        <source>&amp;Stop</source>
        <translation>&amp;Stop</translation>
    </message>
    <message>
        <source>Show in &amp;folder</source>
        <translation>Show in &amp;folder</translation>
    </message>
    <message>
        <source>Correction</source>
        <translation>Correction</translation>
    </message>
    <message>
        <source>Picture</source>
        <translation>Picture</translation>
    </message>
    <message>
        <source>Result</source>
        <translation>Result</translation>
    </message>
    <message>
        <source>Correcting…</source>
        <translation>Correcting…</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <comment>result of a picture, and why</comment>
        <translation>%1: %2</translation>
    </message>
    <message numerus="yes">
        <source>%n picture(s) corrected</source>
        <translation>
            <numerusform>%n picture corrected</numerusform>
            <numerusform>%n pictures corrected</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n left as they were</source>
        <translation>
            <numerusform>%n left as it was</numerusform>
            <numerusform>%n left as they were</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n failed</source>
        <translation>
            <numerusform>%n failed</numerusform>
            <numerusform>%n failed</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n not reached</source>
        <translation>
            <numerusform>%n not reached</numerusform>
            <numerusform>%n not reached</numerusform>
        </translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message numerus="yes">
        <source>About %n second(s) left</source>
        <translation>
            <numerusform>About %n second left</numerusform>
            <numerusform>About %n seconds left</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>About %n minute(s) left</source>
        <translation>
            <numerusform>About %n minute left</numerusform>
            <numerusform>About %n minutes left</numerusform>
        </translation>
    </message>
    <message>
        <source>Skipped, corrected before</source>
        <translation>Skipped, corrected before</translation>
    </message>
    <message numerus="yes">
        <source>%n corrected before</source>
        <translation>
            <numerusform>%n corrected before</numerusform>
            <numerusform>%n corrected before</numerusform>
        </translation>
    </message>
    <message>
        <source>Before and &amp;after…</source>
        <translation>Before and &amp;after…</translation>
    </message>
    <message>
        <source>Open a row of the list to see the picture before and after the correction.</source>
        <translation>Open a row of the list to see the picture before and after the correction.</translation>
    </message>
    <message>
        <source>Stopping…</source>
        <translation>Stopping…</translation>
    </message>
    <message>
        <source>%1 of %2 pictures finished</source>
        <translation>%1 of %2 pictures finished</translation>
    </message>
</context>
<context>
    <name>WorkFolder</name>
    <message>
        <source>cannot write into the folder &quot;%1&quot;: %2</source>
        <translation>cannot write into the folder &quot;%1&quot;: %2</translation>
    </message>
    <message>
        <source>cannot create the folder &quot;%1&quot;: %2</source>
        <translation>cannot create the folder &quot;%1&quot;: %2</translation>
    </message>
    <message>
        <source>cannot write &quot;%1&quot;: %2</source>
        <translation>cannot write &quot;%1&quot;: %2</translation>
    </message>
    <message>
        <source>it exists and is not a regular file</source>
        <translation>it exists and is not a regular file</translation>
    </message>
    <message>
        <source>cannot set the file time: %1</source>
        <translation>cannot set the file time: %1</translation>
    </message>
</context>
</TS>
