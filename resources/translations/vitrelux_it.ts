<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="it" sourcelanguage="en">
<context>
    <name>CorrectionJob</name>
    <message>
        <source>The corrected picture would replace that of &quot;%1&quot;</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No correction is switched on</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>No lens profile is chosen</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Lens profile &quot;%1&quot;: %2</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>CorrectionWizard</name>
    <message>
        <source>Vitrelux: lens correction</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Back</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Next</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>PicturesPage</name>
    <message>
        <source>&amp;Remove</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Replace corrected pictures that exist already</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Pictures</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Which pictures do you want to correct? Each corrected picture is written beside its original, which stays as it is.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Picture</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Size</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Drop pictures or folders here</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Add pictures…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>All files</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Add pictures</source>
        <translation type="unfinished"></translation>
    </message>
</context>
<context>
    <name>RunPage</name>
    <message>
        <source>Corrected</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Left as it was: the corrected picture exists already</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Failed</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Not corrected: stopped before</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>&amp;Stop</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Show in &amp;folder</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Correction</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>The pictures are corrected one after the other.</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Picture</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Result</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Stops after the picture under way…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Picture %1 of %2: %3</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>Being corrected…</source>
        <translation type="unfinished"></translation>
    </message>
    <message>
        <source>%1: %2</source>
        <comment>result of a picture, and why</comment>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>%n picture(s) corrected</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n left as they were</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n failed</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n not reached</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message>
        <source>, </source>
        <translation type="unfinished"></translation>
    </message>
    <message numerus="yes">
        <source>About %n second(s) left</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>About %n minute(s) left</source>
        <translation type="unfinished">
            <numerusform></numerusform>
            <numerusform></numerusform>
        </translation>
    </message>
</context>
</TS>
