<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="pl" sourcelanguage="en">
<context>
    <name>CompareDialog</name>
    <message>
        <source>%1: before and after</source>
        <translation>%1: przed i po</translation>
    </message>
    <message>
        <source>Before</source>
        <translation>Przed</translation>
    </message>
    <message>
        <source>After</source>
        <translation>Po</translation>
    </message>
    <message>
        <source>Reading the picture…</source>
        <translation>Wczytywanie obrazu…</translation>
    </message>
    <message>
        <source>Zoom &amp;in</source>
        <translation>Po&amp;większ</translation>
    </message>
    <message>
        <source>Zoom &amp;out</source>
        <translation>Po&amp;mniejsz</translation>
    </message>
    <message>
        <source>&amp;Whole picture</source>
        <translation>&amp;Cały obraz</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>&amp;Zamknij</translation>
    </message>
    <message>
        <source>The picture cannot be read: %1</source>
        <translation>Nie można odczytać obrazu: %1</translation>
    </message>
</context>
<context>
    <name>CorrectionJob</name>
    <message>
        <source>The corrected picture would replace that of &quot;%1&quot;</source>
        <translation>Poprawiony obraz zastąpiłby ten z „%1”</translation>
    </message>
    <message>
        <source>No correction is switched on</source>
        <translation>Nie włączono żadnej korekcji</translation>
    </message>
    <message>
        <source>Not a readable picture: %1</source>
        <translation>Nie jest czytelnym obrazem: %1</translation>
    </message>
    <message>
        <source>No lens profile was chosen, and none was found for this picture: %1</source>
        <translation>Nie wybrano profilu obiektywu i nie znaleziono żadnego dla tego obrazu: %1</translation>
    </message>
</context>
<context>
    <name>CorrectionWizard</name>
    <message>
        <source>Vitrelux: lens correction</source>
        <translation>Vitrelux: korekcja obiektywu</translation>
    </message>
    <message>
        <source>&amp;Back</source>
        <translation>&amp;Wstecz</translation>
    </message>
    <message>
        <source>&amp;Next</source>
        <translation>&amp;Dalej</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>&amp;Zamknij</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Anuluj</translation>
    </message>
</context>
<context>
    <name>FittedCorrection</name>
    <message>
        <source>profile &quot;%1&quot;</source>
        <translation>profil „%1”</translation>
    </message>
    <message>
        <source>entries</source>
        <translation>wpisy</translation>
    </message>
    <message>
        <source>assumed</source>
        <translation>założono</translation>
    </message>
    <message>
        <source>left out</source>
        <translation>pominięto</translation>
    </message>
    <message>
        <source>profile %1</source>
        <comment>its name and what is wrong with it</comment>
        <translation>profil %1</translation>
    </message>
    <message>
        <source>nearest</source>
        <translation>najbliższe</translation>
    </message>
</context>
<context>
    <name>PictureProblem</name>
    <message>
        <source>is a link to a file that does not exist</source>
        <translation>jest dowiązaniem do pliku, który nie istnieje</translation>
    </message>
    <message>
        <source>no such file; names must be in UTF-8</source>
        <translation>nie ma takiego pliku; nazwy powinny być w UTF-8</translation>
    </message>
    <message>
        <source>no such file</source>
        <translation>nie ma takiego pliku</translation>
    </message>
    <message>
        <source>is a folder, expected a picture file</source>
        <translation>jest folderem, oczekiwano pliku obrazu</translation>
    </message>
    <message>
        <source>is not a regular file, expected a picture file</source>
        <translation>nie jest zwykłym plikiem, oczekiwano pliku obrazu</translation>
    </message>
    <message>
        <source>is empty (0 bytes), expected a picture file</source>
        <translation>jest pusty (0 bajtów), oczekiwano pliku obrazu</translation>
    </message>
    <message>
        <source>cannot be read: %1</source>
        <translation>nie można odczytać: %1</translation>
    </message>
    <message>
        <source>gray pictures are not supported</source>
        <translation>obrazy w skali szarości nie są obsługiwane</translation>
    </message>
    <message>
        <source>%1 pictures are not supported</source>
        <translation>obrazy %1 nie są obsługiwane</translation>
    </message>
    <message>
        <source>pictures of %1 channels are not supported</source>
        <translation>obrazy o liczbie kanałów %1 nie są obsługiwane</translation>
    </message>
    <message>
        <source>tiled TIFF files are not supported</source>
        <translation>kafelkowe pliki TIFF nie są obsługiwane</translation>
    </message>
    <message>
        <source>is not recognized as a picture: a companion file, or damaged</source>
        <translation>nie jest rozpoznawany jako obraz: plik towarzyszący lub uszkodzony</translation>
    </message>
</context>
<context>
    <name>PictureRun</name>
    <message>
        <source>not enough memory</source>
        <translation>za mało pamięci</translation>
    </message>
    <message>
        <source>failed for an unknown reason</source>
        <translation>nie powiodło się bez podania przyczyny</translation>
    </message>
</context>
<context>
    <name>PicturesPage</name>
    <message>
        <source>&amp;Remove</source>
        <translation>&amp;Usuń</translation>
    </message>
    <message>
        <source>Pictures</source>
        <translation>Obrazy</translation>
    </message>
    <message>
        <source>Picture</source>
        <translation>Obraz</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Rozmiar</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>Folder</translation>
    </message>
    <message>
        <source>Drop pictures or folders here</source>
        <translation>Upuść tutaj obrazy lub foldery</translation>
    </message>
    <message>
        <source>&amp;Add pictures…</source>
        <translation>Doda&amp;j obrazy…</translation>
    </message>
    <message>
        <source>All files</source>
        <translation>Wszystkie pliki</translation>
    </message>
    <message>
        <source>Add pictures</source>
        <translation>Dodaj obrazy</translation>
    </message>
    <message>
        <source>Fill the frame: no empty borders</source>
        <translation>Wypełnij kadr: bez pustych brzegów</translation>
    </message>
    <message>
        <source>Keep the scale</source>
        <translation>Zachowaj skalę</translation>
    </message>
    <message>
        <source>Show everything that was photographed</source>
        <translation>Pokaż wszystko, co sfotografowano</translation>
    </message>
    <message>
        <source>&amp;Framing:</source>
        <translation>&amp;Kadr:</translation>
    </message>
    <message>
        <source>TIFF: nothing is lost</source>
        <translation>TIFF: bez strat</translation>
    </message>
    <message>
        <source>JPEG: small files, 8 bits</source>
        <translation>JPEG: małe pliki, 8 bitów</translation>
    </message>
    <message>
        <source>PNG: lossless, up to 16 bits</source>
        <translation>PNG: bez strat, do 16 bitów</translation>
    </message>
    <message>
        <source>OpenEXR: linear light, for compositing</source>
        <translation>OpenEXR: światło liniowe, do kompozycji</translation>
    </message>
    <message>
        <source>C&amp;hoose…</source>
        <translation>Wy&amp;bierz…</translation>
    </message>
    <message>
        <source>Replace e&amp;xisting corrected pictures</source>
        <translation>Za&amp;stąp istniejące już poprawione obrazy</translation>
    </message>
    <message>
        <source>Which pictures do you want to correct, and where are the results saved? The originals are not changed.</source>
        <translation>Które obrazy chcesz poprawić i gdzie zapisać wyniki? Oryginały pozostają bez zmian.</translation>
    </message>
    <message>
        <source>Add f&amp;older…</source>
        <translation>Dodaj &amp;folder…</translation>
    </message>
    <message>
        <source>The folder of each picture</source>
        <translation>Folder każdego obrazu</translation>
    </message>
    <message>
        <source>&amp;Save in:</source>
        <translation>&amp;Zapisz w:</translation>
    </message>
    <message>
        <source>Forma&amp;t:</source>
        <translation>For&amp;mat:</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not a folder</source>
        <translation>„%1” nie jest folderem</translation>
    </message>
    <message>
        <source>This folder cannot be read: %1</source>
        <translation>Nie można odczytać tego folderu: %1</translation>
    </message>
    <message>
        <source>No new pictures were found.</source>
        <translation>Nie znaleziono nowych obrazów.</translation>
    </message>
    <message>
        <source>Add a folder</source>
        <translation>Dodaj folder</translation>
    </message>
    <message>
        <source>Folder for corrected pictures</source>
        <translation>Folder poprawionych obrazów</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not an absolute path, which begins with &quot;/&quot;</source>
        <translation>„%1” nie jest pełną ścieżką; pełna ścieżka zaczyna się od „/”</translation>
    </message>
    <message>
        <source>%1 of %2 pictures read</source>
        <translation>Wczytano: %1 z %2</translation>
    </message>
</context>
<context>
    <name>RunPage</name>
    <message>
        <source>Corrected</source>
        <translation>Poprawiono</translation>
    </message>
    <message>
        <source>Left as it was: the corrected picture already exists</source>
        <translation>Pozostawiono: poprawiony obraz już istnieje</translation>
    </message>
    <message>
        <source>Failed</source>
        <translation>Niepowodzenie</translation>
    </message>
    <message>
        <source>Not corrected: the run was stopped</source>
        <translation>Nie poprawiono: zatrzymano wcześniej</translation>
    </message>
    <message>
        <source>&amp;Stop</source>
        <translation>Za&amp;trzymaj</translation>
    </message>
    <message>
        <source>Show in &amp;folder</source>
        <translation>Pokaż w &amp;folderze</translation>
    </message>
    <message>
        <source>Correction</source>
        <translation>Korekcja</translation>
    </message>
    <message>
        <source>Picture</source>
        <translation>Obraz</translation>
    </message>
    <message>
        <source>Result</source>
        <translation>Wynik</translation>
    </message>
    <message>
        <source>Correcting…</source>
        <translation>Poprawianie…</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <comment>result of a picture, and why</comment>
        <translation>%1: %2</translation>
    </message>
    <message numerus="yes">
        <source>%n picture(s) corrected</source>
        <translation>
            <numerusform>Poprawiono %n obraz</numerusform>
            <numerusform>Poprawiono %n obrazy</numerusform>
            <numerusform>Poprawiono %n obrazów</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n left as they were</source>
        <translation>
            <numerusform>%n pozostawiono</numerusform>
            <numerusform>%n pozostawiono</numerusform>
            <numerusform>%n pozostawiono</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n failed</source>
        <translation>
            <numerusform>%n niepowodzenie</numerusform>
            <numerusform>%n niepowodzenia</numerusform>
            <numerusform>%n niepowodzeń</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n not reached</source>
        <translation>
            <numerusform>%n nieprzetworzony</numerusform>
            <numerusform>%n nieprzetworzone</numerusform>
            <numerusform>%n nieprzetworzonych</numerusform>
        </translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message numerus="yes">
        <source>About %n second(s) left</source>
        <translation>
            <numerusform>Pozostała około %n sekunda</numerusform>
            <numerusform>Pozostały około %n sekundy</numerusform>
            <numerusform>Pozostało około %n sekund</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>About %n minute(s) left</source>
        <translation>
            <numerusform>Pozostała około %n minuta</numerusform>
            <numerusform>Pozostały około %n minuty</numerusform>
            <numerusform>Pozostało około %n minut</numerusform>
        </translation>
    </message>
    <message>
        <source>Skipped, corrected before</source>
        <translation>Pominięto: skorygowano wcześniej</translation>
    </message>
    <message numerus="yes">
        <source>%n corrected before</source>
        <translation>
            <numerusform>%n skorygowano wcześniej</numerusform>
            <numerusform>%n skorygowano wcześniej</numerusform>
            <numerusform>%n skorygowano wcześniej</numerusform>
        </translation>
    </message>
    <message>
        <source>Before and &amp;after…</source>
        <translation>&amp;Przed i po…</translation>
    </message>
    <message>
        <source>Open a row of the list to see the picture before and after the correction.</source>
        <translation>Otwórz wiersz listy, aby zobaczyć obraz przed korekcją i po niej.</translation>
    </message>
    <message>
        <source>Stopping…</source>
        <translation>Zatrzymywanie…</translation>
    </message>
    <message>
        <source>%1 of %2 pictures finished</source>
        <translation>Gotowe: %1 z %2</translation>
    </message>
</context>
<context>
    <name>WorkFolder</name>
    <message>
        <source>cannot write into the folder &quot;%1&quot;: %2</source>
        <translation>nie można zapisywać w folderze „%1”: %2</translation>
    </message>
    <message>
        <source>cannot create the folder &quot;%1&quot;: %2</source>
        <translation>nie można utworzyć folderu „%1”: %2</translation>
    </message>
    <message>
        <source>cannot write &quot;%1&quot;: %2</source>
        <translation>nie można zapisać „%1”: %2</translation>
    </message>
    <message>
        <source>it exists and is not a regular file</source>
        <translation>jest tam coś, co nie jest zwykłym plikiem</translation>
    </message>
    <message>
        <source>cannot set the file time: %1</source>
        <translation>nie można zachować czasu: %1</translation>
    </message>
</context>
</TS>
