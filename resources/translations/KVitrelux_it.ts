<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="it" sourcelanguage="en">
<context>
    <name>ImageDef</name>
    <message>
        <source>inch</source>
        <translation>pollici</translation>
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
        <translation>Produttore</translation>
    </message>
    <message>
        <source>Model</source>
        <translation>Modello</translation>
    </message>
    <message>
        <source>Real focal length</source>
        <translation>Lunghezza focale reale</translation>
    </message>
    <message>
        <source>35mm f.length</source>
        <translation>Focale equiv. 35 mm</translation>
    </message>
    <message>
        <source>Exposure time</source>
        <translation>Tempo di esposizione</translation>
    </message>
    <message>
        <source>Shutter speed</source>
        <translation>Velocità dell&apos;otturatore</translation>
    </message>
    <message>
        <source>F Number</source>
        <translation>Numero f</translation>
    </message>
    <message>
        <source>Date Time</source>
        <translation>Data e ora</translation>
    </message>
    <message>
        <source>ISO</source>
        <translation>ISO</translation>
    </message>
    <message>
        <source>Exposure bias value</source>
        <translation>Compensazione dell&apos;esposizione</translation>
    </message>
    <message>
        <source>Width</source>
        <translation>Larghezza</translation>
    </message>
    <message>
        <source>Height</source>
        <translation>Altezza</translation>
    </message>
    <message>
        <source>Focal plane res X</source>
        <translation>Risoluzione X del piano focale</translation>
    </message>
    <message>
        <source>Focal plane res Y</source>
        <translation>Risoluzione Y del piano focale</translation>
    </message>
    <message>
        <source>Focal plan res. unit</source>
        <translation>Unità di risoluzione del piano focale</translation>
    </message>
    <message>
        <source>: gray pictures are not supported.</source>
        <translation>: le immagini in scala di grigi non sono supportate.</translation>
    </message>
</context>
<context>
    <name>KException</name>
    <message>
        <source>Error GFL : &quot;%1&quot;</source>
        <translation>Errore GFL: &quot;%1&quot;</translation>
    </message>
    <message>
        <source>File : &quot;%1&quot;</source>
        <translation>File: &quot;%1&quot;</translation>
    </message>
    <message>
        <source>Not enough free space on &quot;%1&quot; to finish operation</source>
        <translation>Spazio libero insufficiente in &quot;%1&quot; per completare l&apos;operazione</translation>
    </message>
    <message>
        <source>Cannot write into file &quot;%1&quot;</source>
        <translation>Impossibile scrivere nel file &quot;%1&quot;</translation>
    </message>
    <message>
        <source>File &quot;%1&quot; is not found</source>
        <translation>File &quot;%1&quot; non trovato</translation>
    </message>
    <message>
        <source>No more space in temporary folder</source>
        <translation>Spazio esaurito nella cartella temporanea</translation>
    </message>
</context>
<context>
    <name>KLog</name>
    <message>
        <source>Critical error</source>
        <translation>Errore critico</translation>
    </message>
    <message>
        <source>Can not open file %1</source>
        <translation>Impossibile aprire il file %1</translation>
    </message>
</context>
<context>
    <name>KSystemInfo</name>
    <message>
        <source>Bytes</source>
        <translation>byte</translation>
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
        <translation>Adobe® offre uno strumento gratuito per calibrare gli obiettivi, &quot;Lens Profile Creator&quot;. Questo plug-in ne usa i profili per eliminare dalle foto distorsione, vignettatura e aberrazione cromatica.</translation>
    </message>
</context>
<context>
    <name>Library</name>
    <message>
        <source>Comment</source>
        <translation>Commento</translation>
    </message>
</context>
<context>
    <name>QCoreApplication</name>
    <message>
        <source>File &quot;%1&quot; cannot be loaded</source>
        <translation>Impossibile caricare il file &quot;%1&quot;</translation>
    </message>
    <message>
        <source>File &quot;%1&quot; is not found</source>
        <translation>File &quot;%1&quot; non trovato</translation>
    </message>
</context>
<context>
    <name>UIImageDefListWizard</name>
    <message>
        <source>Prev</source>
        <translation>Precedente</translation>
    </message>
    <message>
        <source>Next</source>
        <translation>Successiva</translation>
    </message>
</context>
<context>
    <name>UIImageDefListWizardClass</name>
    <message>
        <source>WizardPage</source>
        <translation>Pagina della procedura guidata</translation>
    </message>
    <message>
        <source>Apply to all images</source>
        <translation>Applica a tutte le immagini</translation>
    </message>
</context>
<context>
    <name>UIVitreluxPreview</name>
    <message>
        <source>Select lens camera profiles Database directory</source>
        <translation>Seleziona la cartella dei profili obiettivo</translation>
    </message>
    <message>
        <source>Select lens camera profile</source>
        <translation>Seleziona un profilo obiettivo</translation>
    </message>
    <message>
        <source>Profile</source>
        <translation>Profilo</translation>
    </message>
    <message>
        <source>Non supported file format</source>
        <translation>Formato di file non supportato</translation>
    </message>
    <message>
        <source>Preview is uptodate</source>
        <translation>L&apos;anteprima è aggiornata</translation>
    </message>
    <message>
        <source>None found: %1</source>
        <translation>Nessun profilo trovato: %1</translation>
    </message>
    <message>
        <source>Found: %1</source>
        <translation>Trovato: %1</translation>
    </message>
    <message>
        <source>Not corrected: %1</source>
        <translation>Non corretto: %1</translation>
    </message>
    <message>
        <source>Find the profile automatically</source>
        <translation>Trova il profilo automaticamente</translation>
    </message>
</context>
<context>
    <name>UIVitreluxPreviewClass</name>
    <message>
        <source>Vitrelux correction</source>
        <translation>Correzione Vitrelux</translation>
    </message>
    <message>
        <source>Lens database</source>
        <translation>Database degli obiettivi</translation>
    </message>
    <message>
        <source>...</source>
        <translation>...</translation>
    </message>
    <message>
        <source>Lens profile</source>
        <translation>Profilo obiettivo</translation>
    </message>
    <message>
        <source>Message</source>
        <translation>Messaggio</translation>
    </message>
    <message>
        <source>Geometric distortion</source>
        <translation>Distorsione geometrica</translation>
    </message>
    <message>
        <source>Chromatic aberration</source>
        <translation>Aberrazione cromatica</translation>
    </message>
    <message>
        <source>Vignetting</source>
        <translation>Vignettatura</translation>
    </message>
    <message>
        <source>Split preview</source>
        <translation>Anteprima divisa</translation>
    </message>
</context>
</TS>
