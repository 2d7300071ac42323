<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de" sourcelanguage="en">
<context>
    <name>ImageDef</name>
    <message>
        <source>inch</source>
        <translation>Zoll</translation>
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
        <translation>Hersteller</translation>
    </message>
    <message>
        <source>Model</source>
        <translation>Modell</translation>
    </message>
    <message>
        <source>Real focal length</source>
        <translation>Tatsächliche Brennweite</translation>
    </message>
    <message>
        <source>35mm f.length</source>
        <translation>Brennweite (35 mm)</translation>
    </message>
    <message>
        <source>Exposure time</source>
        <translation>Belichtungszeit</translation>
    </message>
    <message>
        <source>Shutter speed</source>
        <translation>Verschlusszeit</translation>
    </message>
    <message>
        <source>F Number</source>
        <translation>Blendenzahl</translation>
    </message>
    <message>
        <source>Date Time</source>
        <translation>Datum und Uhrzeit</translation>
    </message>
    <message>
        <source>ISO</source>
        <translation>ISO</translation>
    </message>
    <message>
        <source>Exposure bias value</source>
        <translation>Belichtungskorrektur</translation>
    </message>
    <message>
        <source>Width</source>
        <translation>Breite</translation>
    </message>
    <message>
        <source>Height</source>
        <translation>Höhe</translation>
    </message>
    <message>
        <source>Focal plane res X</source>
        <translation>Sensorauflösung X</translation>
    </message>
    <message>
        <source>Focal plane res Y</source>
        <translation>Sensorauflösung Y</translation>
    </message>
    <message>
        <source>Focal plan res. unit</source>
        <translation>Einheit der Sensorauflösung</translation>
    </message>
    <message>
        <source>: gray pictures are not supported.</source>
        <translation>: Graustufenbilder werden nicht unterstützt.</translation>
    </message>
</context>
<context>
    <name>KException</name>
    <message>
        <source>Error GFL : &quot;%1&quot;</source>
        <translation>GFL-Fehler: „%1“</translation>
    </message>
    <message>
        <source>File : &quot;%1&quot;</source>
        <translation>Datei: „%1“</translation>
    </message>
    <message>
        <source>Not enough free space on &quot;%1&quot; to finish operation</source>
        <translation>Zu wenig freier Speicherplatz in „%1“, um den Vorgang abzuschließen</translation>
    </message>
    <message>
        <source>Cannot write into file &quot;%1&quot;</source>
        <translation>In die Datei „%1“ kann nicht geschrieben werden</translation>
    </message>
    <message>
        <source>File &quot;%1&quot; is not found</source>
        <translation>Die Datei „%1“ wurde nicht gefunden</translation>
    </message>
    <message>
        <source>No more space in temporary folder</source>
        <translation>Kein Platz mehr im Ordner für temporäre Dateien</translation>
    </message>
</context>
<context>
    <name>KLog</name>
    <message>
        <source>Critical error</source>
        <translation>Schwerer Fehler</translation>
    </message>
    <message>
        <source>Can not open file %1</source>
        <translation>Die Datei %1 kann nicht geöffnet werden</translation>
    </message>
</context>
<context>
    <name>KSystemInfo</name>
    <message>
        <source>Bytes</source>
        <translation>Byte</translation>
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
        <translation>Mit dem kostenlosen „Lens Profile Creator“ von Adobe® lassen sich Objektive vermessen. Dieses Plug-in entfernt mit solchen Profilen Verzeichnung, Vignettierung und chromatische Aberration aus Ihren Fotos.</translation>
    </message>
</context>
<context>
    <name>Library</name>
    <message>
        <source>Comment</source>
        <translation>Kommentar</translation>
    </message>
</context>
<context>
    <name>QCoreApplication</name>
    <message>
        <source>File &quot;%1&quot; cannot be loaded</source>
        <translation>Die Datei „%1“ kann nicht geladen werden</translation>
    </message>
    <message>
        <source>File &quot;%1&quot; is not found</source>
        <translation>Die Datei „%1“ wurde nicht gefunden</translation>
    </message>
</context>
<context>
    <name>UIImageDefListWizard</name>
    <message>
        <source>Prev</source>
        <translation>Vorheriges Bild</translation>
    </message>
    <message>
        <source>Next</source>
        <translation>Nächstes Bild</translation>
    </message>
</context>
<context>
    <name>UIImageDefListWizardClass</name>
    <message>
        <source>WizardPage</source>
        <translation>Assistentenseite</translation>
    </message>
    <message>
        <source>Apply to all images</source>
        <translation>Auf alle Bilder anwenden</translation>
    </message>
</context>
<context>
    <name>UIVitreluxPreview</name>
    <message>
        <source>Select lens camera profiles Database directory</source>
        <translation>Ordner mit den Objektivprofilen auswählen</translation>
    </message>
    <message>
        <source>Select lens camera profile</source>
        <translation>Objektivprofil auswählen</translation>
    </message>
    <message>
        <source>Profile</source>
        <translation>Profil</translation>
    </message>
    <message>
        <source>Non supported file format</source>
        <translation>Nicht unterstütztes Dateiformat</translation>
    </message>
    <message>
        <source>Preview is uptodate</source>
        <translation>Die Vorschau ist aktuell</translation>
    </message>
    <message>
        <source>None found: %1</source>
        <translation>Kein Profil gefunden: %1</translation>
    </message>
    <message>
        <source>Found: %1</source>
        <translation>Gefunden: %1</translation>
    </message>
    <message>
        <source>Not corrected: %1</source>
        <translation>Nicht korrigiert: %1</translation>
    </message>
    <message>
        <source>Find the profile automatically</source>
        <translation>Profil automatisch finden</translation>
    </message>
</context>
<context>
    <name>UIVitreluxPreviewClass</name>
    <message>
        <source>Vitrelux correction</source>
        <translation>Vitrelux-Korrektur</translation>
    </message>
    <message>
        <source>Lens database</source>
        <translation>Objektivdatenbank</translation>
    </message>
    <message>
        <source>...</source>
        <translation>...</translation>
    </message>
    <message>
        <source>Lens profile</source>
        <translation>Objektivprofil</translation>
    </message>
    <message>
        <source>Message</source>
        <translation>Meldung</translation>
    </message>
    <message>
        <source>Geometric distortion</source>
        <translation>Verzeichnung</translation>
    </message>
    <message>
        <source>Chromatic aberration</source>
        <translation>Chromatische Aberration</translation>
    </message>
    <message>
        <source>Vignetting</source>
        <translation>Vignettierung</translation>
    </message>
    <message>
        <source>Split preview</source>
        <translation>Geteilte Vorschau</translation>
    </message>
</context>
</TS>
