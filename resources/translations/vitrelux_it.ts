<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="it" sourcelanguage="en">
<context>
    <name>CompareDialog</name>
    <message>
        <source>%1: before and after</source>
        <translation>%1: prima e dopo</translation>
    </message>
    <message>
        <source>Before</source>
        <translation>Prima</translation>
    </message>
    <message>
        <source>After</source>
        <translation>Dopo</translation>
    </message>
    <message>
        <source>Reading the picture…</source>
        <translation>Lettura dell&apos;immagine…</translation>
    </message>
    <message>
        <source>Zoom &amp;in</source>
        <translation>&amp;Ingrandisci</translation>
    </message>
    <message>
        <source>Zoom &amp;out</source>
        <translation>&amp;Riduci</translation>
    </message>
    <message>
        <source>&amp;Whole picture</source>
        <translation>Immagine i&amp;ntera</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>&amp;Chiudi</translation>
    </message>
    <message>
        <source>The picture cannot be read: %1</source>
        <translation>Impossibile leggere l&apos;immagine: %1</translation>
    </message>
</context>
<context>
    <name>CorrectionJob</name>
    <message>
        <source>The corrected picture would replace that of &quot;%1&quot;</source>
        <translation>L&apos;immagine corretta sostituirebbe quella di &quot;%1&quot;</translation>
    </message>
    <message>
        <source>No correction is switched on</source>
        <translation>Nessuna correzione è attivata</translation>
    </message>
    <message>
        <source>Not a readable picture: %1</source>
        <translation>Non è un&apos;immagine leggibile: %1</translation>
    </message>
    <message>
        <source>No lens profile was chosen, and none was found for this picture: %1</source>
        <translation>Nessun profilo obiettivo è stato scelto e non ne è stato trovato uno per questa immagine: %1</translation>
    </message>
</context>
<context>
    <name>CorrectionWizard</name>
    <message>
        <source>Vitrelux: lens correction</source>
        <translation>Vitrelux: correzione dell&apos;obiettivo</translation>
    </message>
    <message>
        <source>&amp;Back</source>
        <translation>&amp;Indietro</translation>
    </message>
    <message>
        <source>&amp;Next</source>
        <translation>&amp;Avanti</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>&amp;Chiudi</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annulla</translation>
    </message>
</context>
<context>
    <name>FittedCorrection</name>
    <message>
        <source>profile &quot;%1&quot;</source>
        <translation>profilo &quot;%1&quot;</translation>
    </message>
    <message>
        <source>entries</source>
        <translation>voci</translation>
    </message>
    <message>
        <source>assumed</source>
        <translation>presupposto</translation>
    </message>
    <message>
        <source>left out</source>
        <translation>omesso</translation>
    </message>
    <message>
        <source>profile %1</source>
        <comment>its name and what is wrong with it</comment>
        <translation>profilo %1</translation>
    </message>
    <message>
        <source>nearest</source>
        <translation>i più vicini</translation>
    </message>
</context>
<context>
    <name>PictureProblem</name>
    <message>
        <source>is a link to a file that does not exist</source>
        <translation>è un collegamento a un file che non esiste</translation>
    </message>
    <message>
        <source>no such file; names must be in UTF-8</source>
        <translation>file inesistente; i nomi devono essere in UTF-8</translation>
    </message>
    <message>
        <source>no such file</source>
        <translation>file inesistente</translation>
    </message>
    <message>
        <source>is a folder, expected a picture file</source>
        <translation>è una cartella, è atteso un file immagine</translation>
    </message>
    <message>
        <source>is not a regular file, expected a picture file</source>
        <translation>non è un file normale, è atteso un file immagine</translation>
    </message>
    <message>
        <source>is empty (0 bytes), expected a picture file</source>
        <translation>è vuoto (0 byte), è atteso un file immagine</translation>
    </message>
    <message>
        <source>cannot be read: %1</source>
        <translation>impossibile leggere: %1</translation>
    </message>
    <message>
        <source>gray pictures are not supported</source>
        <translation>le immagini in scala di grigi non sono supportate</translation>
    </message>
    <message>
        <source>%1 pictures are not supported</source>
        <translation>le immagini %1 non sono supportate</translation>
    </message>
    <message>
        <source>pictures of %1 channels are not supported</source>
        <translation>le immagini a %1 canali non sono supportate</translation>
    </message>
    <message>
        <source>tiled TIFF files are not supported</source>
        <translation>i file TIFF a riquadri non sono supportati</translation>
    </message>
    <message>
        <source>is not recognized as a picture: a companion file, or damaged</source>
        <translation>non è riconosciuto come immagine: è un file accessorio o danneggiato</translation>
    </message>
</context>
<context>
    <name>PictureRun</name>
    <message>
        <source>not enough memory</source>
        <translation>memoria insufficiente</translation>
    </message>
    <message>
        <source>failed for an unknown reason</source>
        <translation>non riuscita senza indicare un motivo</translation>
    </message>
</context>
<context>
    <name>PicturesPage</name>
    <message>
        <source>&amp;Remove</source>
        <translation>&amp;Rimuovi</translation>
    </message>
    <message>
        <source>Pictures</source>
        <translation>Immagini</translation>
    </message>
    <message>
        <source>Picture</source>
        <translation>Immagine</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Dimensioni</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>Cartella</translation>
    </message>
    <message>
        <source>Drop pictures or folders here</source>
        <translation>Trascini qui immagini o cartelle</translation>
    </message>
    <message>
        <source>&amp;Add pictures…</source>
        <translation>A&amp;ggiungi immagini…</translation>
    </message>
    <message>
        <source>All files</source>
        <translation>Tutti i file</translation>
    </message>
    <message>
        <source>Add pictures</source>
        <translation>Aggiungi immagini</translation>
    </message>
    <message>
        <source>Fill the frame: no empty borders</source>
        <translation>Riempi il fotogramma: nessun bordo vuoto</translation>
    </message>
    <message>
        <source>Keep the scale</source>
        <translation>Mantieni la scala</translation>
    </message>
    <message>
        <source>Show everything that was photographed</source>
        <translation>Mostra tutto ciò che è stato fotografato</translation>
    </message>
    <message>
        <source>&amp;Framing:</source>
        <translation>In&amp;quadratura:</translation>
    </message>
    <message>
        <source>TIFF: nothing is lost</source>
        <translation>TIFF: senza perdite</translation>
    </message>
    <message>
        <source>JPEG: small files, 8 bits</source>
        <translation>JPEG: file piccoli, 8 bit</translation>
    </message>
    <message>
        <source>PNG: lossless, up to 16 bits</source>
        <translation>PNG: senza perdite, fino a 16 bit</translation>
    </message>
    <message>
        <source>OpenEXR: linear light, for compositing</source>
        <translation>OpenEXR: luce lineare, per il compositing</translation>
    </message>
    <message>
        <source>C&amp;hoose…</source>
        <translation>Sc&amp;egli…</translation>
    </message>
    <message>
        <source>Replace e&amp;xisting corrected pictures</source>
        <translation>S&amp;ostituisci le immagini corrette già esistenti</translation>
    </message>
    <message>
        <source>Which pictures do you want to correct, and where are the results saved? The originals are not changed.</source>
        <translation>Quali immagini vuole correggere e dove si salvano i risultati? Gli originali restano invariati.</translation>
    </message>
    <message>
        <source>Add f&amp;older…</source>
        <translation>Aggiungi &amp;cartella…</translation>
    </message>
    <message>
        <source>The folder of each picture</source>
        <translation>La cartella di ogni immagine</translation>
    </message>
    <message>
        <source>&amp;Save in:</source>
        <translation>&amp;Salva in:</translation>
    </message>
    <message>
        <source>Forma&amp;t:</source>
        <translation>&amp;Formato:</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not a folder</source>
        <translation>«%1» non è una cartella</translation>
    </message>
    <message>
        <source>This folder cannot be read: %1</source>
        <translation>Impossibile leggere questa cartella: %1</translation>
    </message>
    <message>
        <source>No new pictures were found.</source>
        <translation>Nessuna nuova immagine trovata.</translation>
    </message>
    <message>
        <source>Add a folder</source>
        <translation>Aggiungi una cartella</translation>
    </message>
    <message>
        <source>Folder for corrected pictures</source>
        <translation>Cartella per le immagini corrette</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not an absolute path, which begins with &quot;/&quot;</source>
        <translation>«%1» non è un percorso completo, che inizia con «/»</translation>
    </message>
    <message>
        <source>%1 of %2 pictures read</source>
        <translation>%1 immagini lette su %2</translation>
    </message>
</context>
<context>
    <name>RunPage</name>
    <message>
        <source>Corrected</source>
        <translation>Corretta</translation>
    </message>
    <message>
        <source>Left as it was: the corrected picture already exists</source>
        <translation>Lasciata com&apos;era: l&apos;immagine corretta esiste già</translation>
    </message>
    <message>
        <source>Failed</source>
        <translation>Non riuscita</translation>
    </message>
    <message>
        <source>Not corrected: the run was stopped</source>
        <translation>Non corretta: interrotto prima</translation>
    </message>
    <message>
        <source>&amp;Stop</source>
        <translation>&amp;Ferma</translation>
    </message>
    <message>
        <source>Show in &amp;folder</source>
        <translation>Mostra nella car&amp;tella</translation>
    </message>
    <message>
        <source>Correction</source>
        <translation>Correzione</translation>
    </message>
    <message>
        <source>Picture</source>
        <translation>Immagine</translation>
    </message>
    <message>
        <source>Result</source>
        <translation>Risultato</translation>
    </message>
    <message>
        <source>Correcting…</source>
        <translation>Correzione in corso…</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <comment>result of a picture, and why</comment>
        <translation>%1: %2</translation>
    </message>
    <message numerus="yes">
        <source>%n picture(s) corrected</source>
        <translation>
            <numerusform>%n immagine corretta</numerusform>
            <numerusform>%n immagini corrette</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n left as they were</source>
        <translation>
            <numerusform>%n lasciata com&apos;era</numerusform>
            <numerusform>%n lasciate com&apos;erano</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n failed</source>
        <translation>
            <numerusform>%n non riuscita</numerusform>
            <numerusform>%n non riuscite</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n not reached</source>
        <translation>
            <numerusform>%n non elaborata</numerusform>
            <numerusform>%n non elaborate</numerusform>
        </translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message numerus="yes">
        <source>About %n second(s) left</source>
        <translation>
            <numerusform>Circa %n secondo rimanente</numerusform>
            <numerusform>Circa %n secondi rimanenti</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>About %n minute(s) left</source>
        <translation>
            <numerusform>Circa %n minuto rimanente</numerusform>
            <numerusform>Circa %n minuti rimanenti</numerusform>
        </translation>
    </message>
    <message>
        <source>Skipped, corrected before</source>
        <translation>Saltata, già corretta</translation>
    </message>
    <message numerus="yes">
        <source>%n corrected before</source>
        <translation>
            <numerusform>%n già corretta</numerusform>
            <numerusform>%n già corrette</numerusform>
        </translation>
    </message>
    <message>
        <source>Before and &amp;after…</source>
        <translation>&amp;Prima e dopo…</translation>
    </message>
    <message>
        <source>Open a row of the list to see the picture before and after the correction.</source>
        <translation>Apra una riga dell&apos;elenco per vedere l&apos;immagine prima e dopo la correzione.</translation>
    </message>
    <message>
        <source>Stopping…</source>
        <translation>Arresto in corso…</translation>
    </message>
    <message>
        <source>%1 of %2 pictures finished</source>
        <translation>%1 immagini completate su %2</translation>
    </message>
</context>
<context>
    <name>WorkFolder</name>
    <message>
        <source>cannot write into the folder &quot;%1&quot;: %2</source>
        <translation>impossibile scrivere nella cartella &quot;%1&quot;: %2</translation>
    </message>
    <message>
        <source>cannot create the folder &quot;%1&quot;: %2</source>
        <translation>impossibile creare la cartella &quot;%1&quot;: %2</translation>
    </message>
    <message>
        <source>cannot write &quot;%1&quot;: %2</source>
        <translation>impossibile scrivere &quot;%1&quot;: %2</translation>
    </message>
    <message>
        <source>it exists and is not a regular file</source>
        <translation>lì c’è qualcosa che non è un file normale</translation>
    </message>
    <message>
        <source>cannot set the file time: %1</source>
        <translation>impossibile conservare la data: %1</translation>
    </message>
</context>
</TS>
