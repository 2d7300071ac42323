<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>CompareDialog</name>
    <message>
        <source>%1: before and after</source>
        <translation>%1: vorher und nachher</translation>
    </message>
    <message>
        <source>Before</source>
        <translation>Vorher</translation>
    </message>
    <message>
        <source>After</source>
        <translation>Nachher</translation>
    </message>
    <message>
        <source>Reading the picture…</source>
        <translation>Bild wird gelesen …</translation>
    </message>
    <message>
        <source>Zoom &amp;in</source>
        <translation>Ver&amp;größern</translation>
    </message>
    <message>
        <source>Zoom &amp;out</source>
        <translation>Ver&amp;kleinern</translation>
    </message>
    <message>
        <source>&amp;Whole picture</source>
        <translation>Ganzes &amp;Bild</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>&amp;Schließen</translation>
    </message>
    <message>
        <source>The picture cannot be read: %1</source>
        <translation>Das Bild kann nicht gelesen werden: %1</translation>
    </message>
</context>
<context>
    <name>CorrectionJob</name>
    <message>
        <source>The corrected picture would replace that of &quot;%1&quot;</source>
        <translation>Das korrigierte Bild würde das von „%1“ ersetzen</translation>
    </message>
    <message>
        <source>No correction is switched on</source>
        <translation>Keine Korrektur ist eingeschaltet</translation>
    </message>
    <message>
        <source>Not a readable picture: %1</source>
        <translation>Kein lesbares Bild: %1</translation>
    </message>
    <message>
        <source>No lens profile was chosen, and none was found for this picture: %1</source>
        <translation>Kein Objektivprofil ist gewählt, und für dieses Bild wurde keines gefunden: %1</translation>
    </message>
</context>
<context>
    <name>CorrectionWizard</name>
    <message>
        <source>Vitrelux: lens correction</source>
        <translation>Vitrelux: Objektivkorrektur</translation>
    </message>
    <message>
        <source>&amp;Back</source>
        <translation>&amp;Zurück</translation>
    </message>
    <message>
        <source>&amp;Next</source>
        <translation>&amp;Weiter</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>&amp;Schließen</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Abbrechen</translation>
    </message>
</context>
<context>
    <name>FittedCorrection</name>
    <message>
        <source>profile &quot;%1&quot;</source>
        <translation>Profil „%1“</translation>
    </message>
    <message>
        <source>entries</source>
        <translation>Einträge</translation>
    </message>
    <message>
        <source>assumed</source>
        <translation>angenommen</translation>
    </message>
    <message>
        <source>left out</source>
        <translation>ausgelassen</translation>
    </message>
    <message>
        <source>profile %1</source>
        <comment>its name and what is wrong with it</comment>
        <translation>Profil %1</translation>
    </message>
    <message>
        <source>nearest</source>
        <translation>am nächsten</translation>
    </message>
</context>
<context>
    <name>PictureProblem</name>
    <message>
        <source>is a link to a file that does not exist</source>
        <translation>ist ein Verweis auf eine Datei, die es nicht gibt</translation>
    </message>
    <message>
        <source>no such file; names must be in UTF-8</source>
        <translation>keine solche Datei; Namen werden in UTF-8 erwartet</translation>
    </message>
    <message>
        <source>no such file</source>
        <translation>keine solche Datei</translation>
    </message>
    <message>
        <source>is a folder, expected a picture file</source>
        <translation>ist ein Ordner, erwartet wird eine Bilddatei</translation>
    </message>
    <message>
        <source>is not a regular file, expected a picture file</source>
        <translation>ist keine gewöhnliche Datei, erwartet wird eine Bilddatei</translation>
    </message>
    <message>
        <source>is empty (0 bytes), expected a picture file</source>
        <translation>ist leer (0 Byte), erwartet wird eine Bilddatei</translation>
    </message>
    <message>
        <source>cannot be read: %1</source>
        <translation>kann nicht gelesen werden: %1</translation>
    </message>
    <message>
        <source>gray pictures are not supported</source>
        <translation>Graustufenbilder werden nicht unterstützt</translation>
    </message>
    <message>
        <source>%1 pictures are not supported</source>
        <translation>%1-Bilder werden nicht unterstützt</translation>
    </message>
    <message>
        <source>pictures of %1 channels are not supported</source>
        <translation>Bilder mit %1 Kanälen werden nicht unterstützt</translation>
    </message>
    <message>
        <source>tiled TIFF files are not supported</source>
        <translation>gekachelte TIFF-Dateien werden nicht unterstützt</translation>
    </message>
    <message>
        <source>is not recognized as a picture: a companion file, or damaged</source>
        <translation>wird nicht als Bild erkannt: eine Begleitdatei oder beschädigt</translation>
    </message>
</context>
<context>
    <name>PictureRun</name>
    <message>
        <source>not enough memory</source>
        <translation>zu wenig Arbeitsspeicher</translation>
    </message>
    <message>
        <source>failed for an unknown reason</source>
        <translation>aus unbekanntem Grund fehlgeschlagen</translation>
    </message>
</context>
<context>
    <name>PicturesPage</name>
    <message>
        <source>&amp;Remove</source>
        <translation>&amp;Entfernen</translation>
    </message>
    <message>
        <source>Pictures</source>
        <translation>Bilder</translation>
    </message>
    <message>
        <source>Picture</source>
        <translation>Bild</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Größe</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>Ordner</translation>
    </message>
    <message>
        <source>Drop pictures or folders here</source>
        <translation>Bilder oder Ordner hierher ziehen</translation>
    </message>
    <message>
        <source>&amp;Add pictures…</source>
        <translation>Bilder &amp;hinzufügen …</translation>
    </message>
    <message>
        <source>All files</source>
        <translation>Alle Dateien</translation>
    </message>
    <message>
        <source>Add pictures</source>
        <translation>Bilder hinzufügen</translation>
    </message>
    <message>
        <source>Fill the frame: no empty borders</source>
        <translation>Bild füllen: keine leeren Ränder</translation>
    </message>
    <message>
        <source>Keep the scale</source>
        <translation>Maßstab beibehalten</translation>
    </message>
    <message>
        <source>Show everything that was photographed</source>
        <translation>Alles zeigen, was fotografiert wurde</translation>
    </message>
    <message>
        <source>&amp;Framing:</source>
        <translation>Aus&amp;schnitt:</translation>
    </message>
    <message>
        <source>TIFF: nothing is lost</source>
        <translation>TIFF: ohne Verlust</translation>
    </message>
    <message>
        <source>JPEG: small files, 8 bits</source>
        <translation>JPEG: kleine Dateien, 8 Bit</translation>
    </message>
    <message>
        <source>PNG: lossless, up to 16 bits</source>
        <translation>PNG: ohne Verlust, bis 16 Bit</translation>
    </message>
    <message>
        <source>OpenEXR: linear light, for compositing</source>
        <translation>OpenEXR: lineares Licht, für Compositing</translation>
    </message>
    <message>
        <source>C&amp;hoose…</source>
        <translation>&amp;Auswählen …</translation>
    </message>
    <message>
        <source>Replace e&amp;xisting corrected pictures</source>
        <translation>&amp;Vorhandene korrigierte Bilder ersetzen</translation>
    </message>
    <message>
        <source>Which pictures do you want to correct, and where are the results saved? The originals are not changed.</source>
        <translation>Welche Bilder möchten Sie korrigieren, und wohin werden die Ergebnisse gespeichert? Die Originale bleiben unverändert.</translation>
    </message>
    <message>
        <source>Add f&amp;older…</source>
        <translation>&amp;Ordner hinzufügen …</translation>
    </message>
    <message>
        <source>The folder of each picture</source>
        <translation>Jeweils der Ordner des Bildes</translation>
    </message>
    <message>
        <source>&amp;Save in:</source>
        <translation>Speichern &amp;in:</translation>
    </message>
    <message>
        <source>Forma&amp;t:</source>
        <translation>&amp;Dateiformat:</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not a folder</source>
        <translation>„%1“ ist kein Ordner</translation>
    </message>
    <message>
        <source>This folder cannot be read: %1</source>
        <translation>Dieser Ordner kann nicht gelesen werden: %1</translation>
    </message>
    <message>
        <source>No new pictures were found.</source>
        <translation>Es wurden keine neuen Bilder gefunden.</translation>
    </message>
    <message>
        <source>Add a folder</source>
        <translation>Ordner hinzufügen</translation>
    </message>
    <message>
        <source>Folder for corrected pictures</source>
        <translation>Ordner für korrigierte Bilder</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not an absolute path, which begins with &quot;/&quot;</source>
        <translation>„%1“ ist kein vollständiger Pfad; ein solcher beginnt mit „/“</translation>
    </message>
    <message>
        <source>%1 of %2 pictures read</source>
        <translation>%1 von %2 Bildern gelesen</translation>
    </message>
</context>
<context>
    <name>RunPage</name>
    <message>
        <source>Corrected</source>
        <translation>Korrigiert</translation>
    </message>
    <message>
        <source>Left as it was: the corrected picture already exists</source>
        <translation>Unverändert: Das korrigierte Bild ist schon vorhanden</translation>
    </message>
    <message>
        <source>Failed</source>
        <translation>Fehlgeschlagen</translation>
    </message>
    <message>
        <source>Not corrected: the run was stopped</source>
        <translation>Nicht korrigiert: vorher angehalten</translation>
    </message>
    <message>
        <source>&amp;Stop</source>
        <translation>&amp;Anhalten</translation>
    </message>
    <message>
        <source>Show in &amp;folder</source>
        <translation>Im &amp;Ordner anzeigen</translation>
    </message>
    <message>
        <source>Correction</source>
        <translation>Korrektur</translation>
    </message>
    <message>
        <source>Picture</source>
        <translation>Bild</translation>
    </message>
    <message>
        <source>Result</source>
        <translation>Ergebnis</translation>
    </message>
    <message>
        <source>Correcting…</source>
        <translation>Wird korrigiert …</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <comment>result of a picture, and why</comment>
        <translation>%1: %2</translation>
    </message>
    <message numerus="yes">
        <source>%n picture(s) corrected</source>
        <translation>
            <numerusform>%n Bild korrigiert</numerusform>
            <numerusform>%n Bilder korrigiert</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n left as they were</source>
        <translation>
            <numerusform>%n unverändert</numerusform>
            <numerusform>%n unverändert</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n failed</source>
        <translation>
            <numerusform>%n fehlgeschlagen</numerusform>
            <numerusform>%n fehlgeschlagen</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n not reached</source>
        <translation>
            <numerusform>%n nicht erreicht</numerusform>
            <numerusform>%n nicht erreicht</numerusform>
        </translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message numerus="yes">
        <source>About %n second(s) left</source>
        <translation>
            <numerusform>Noch etwa %n Sekunde</numerusform>
            <numerusform>Noch etwa %n Sekunden</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>About %n minute(s) left</source>
        <translation>
            <numerusform>Noch etwa %n Minute</numerusform>
            <numerusform>Noch etwa %n Minuten</numerusform>
        </translation>
    </message>
    <message>
        <source>Skipped, corrected before</source>
        <translation>Ausgelassen, schon korrigiert</translation>
    </message>
    <message numerus="yes">
        <source>%n corrected before</source>
        <translation>
            <numerusform>%n schon korrigiert</numerusform>
            <numerusform>%n schon korrigiert</numerusform>
        </translation>
    </message>
    <message>
        <source>Before and &amp;after…</source>
        <translation>&amp;Vorher und nachher …</translation>
    </message>
    <message>
        <source>Open a row of the list to see the picture before and after the correction.</source>
        <translation>Öffnen Sie eine Zeile der Liste, um das Bild vor und nach der Korrektur zu sehen.</translation>
    </message>
    <message>
        <source>Stopping…</source>
        <translation>Wird angehalten …</translation>
    </message>
    <message>
        <source>%1 of %2 pictures finished</source>
        <translation>%1 von %2 Bildern fertig</translation>
    </message>
</context>
<context>
    <name>WorkFolder</name>
    <message>
        <source>cannot write into the folder &quot;%1&quot;: %2</source>
        <translation>in den Ordner „%1“ kann nicht geschrieben werden: %2</translation>
    </message>
    <message>
        <source>cannot create the folder &quot;%1&quot;: %2</source>
        <translation>der Ordner „%1“ kann nicht angelegt werden: %2</translation>
    </message>
    <message>
        <source>cannot write &quot;%1&quot;: %2</source>
        <translation>„%1“ kann nicht geschrieben werden: %2</translation>
    </message>
    <message>
        <source>it exists and is not a regular file</source>
        <translation>dort ist etwas, das keine gewöhnliche Datei ist</translation>
    </message>
    <message>
        <source>cannot set the file time: %1</source>
        <translation>die Dateizeit kann nicht gesetzt werden: %1</translation>
    </message>
</context>
</TS>
