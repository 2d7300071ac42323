<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="pl" sourcelanguage="en">
<context>
    <name>ImageDef</name>
    <message>
        <source>inch</source>
        <translation>cal</translation>
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
        <translation>Producent</translation>
    </message>
    <message>
        <source>Model</source>
        <translation>Model</translation>
    </message>
    <message>
        <source>Real focal length</source>
        <translation>Rzeczywista ogniskowa</translation>
    </message>
    <message>
        <source>35mm f.length</source>
        <translation>Ogniskowa (35 mm)</translation>
    </message>
    <message>
        <source>Exposure time</source>
        <translation>Czas ekspozycji</translation>
    </message>
    <message>
        <source>Shutter speed</source>
        <translation>Czas otwarcia migawki</translation>
    </message>
    <message>
        <source>F Number</source>
        <translation>Liczba przysłony</translation>
    </message>
    <message>
        <source>Date Time</source>
        <translation>Data i godzina</translation>
    </message>
    <message>
        <source>ISO</source>
        <translation>ISO</translation>
    </message>
    <message>
        <source>Exposure bias value</source>
        <translation>Kompensacja ekspozycji</translation>
    </message>
    <message>
        <source>Width</source>
        <translation>Szerokość</translation>
    </message>
    <message>
        <source>Height</source>
        <translation>Wysokość</translation>
    </message>
    <message>
        <source>Focal plane res X</source>
        <translation>Rozdzielczość X w płaszczyźnie ogniskowej</translation>
    </message>
    <message>
        <source>Focal plane res Y</source>
        <translation>Rozdzielczość Y w płaszczyźnie ogniskowej</translation>
    </message>
    <message>
        <source>Focal plan res. unit</source>
        <translation>Jednostka rozdzielczości w płaszczyźnie ogniskowej</translation>
    </message>
    <message>
        <source>: gray pictures are not supported.</source>
        <translation>: obrazy w skali szarości nie są obsługiwane.</translation>
    </message>
</context>
<context>
    <name>KException</name>
    <message>
        <source>Error GFL : &quot;%1&quot;</source>
        <translation>Błąd GFL: „%1”</translation>
    </message>
    <message>
        <source>File : &quot;%1&quot;</source>
        <translation>Plik: „%1”</translation>
    </message>
    <message>
        <source>Not enough free space on &quot;%1&quot; to finish operation</source>
        <translation>Za mało wolnego miejsca w „%1”, aby dokończyć operację</translation>
    </message>
    <message>
        <source>Cannot write into file &quot;%1&quot;</source>
        <translation>Nie można zapisać do pliku „%1”</translation>
    </message>
    <message>
        <source>File &quot;%1&quot; is not found</source>
        <translation>Nie znaleziono pliku „%1”</translation>
    </message>
    <message>
        <source>No more space in temporary folder</source>
        <translation>Brak miejsca w folderze tymczasowym</translation>
    </message>
</context>
<context>
    <name>KLog</name>
    <message>
        <source>Critical error</source>
        <translation>Błąd krytyczny</translation>
    </message>
    <message>
        <source>Can not open file %1</source>
        <translation>Nie można otworzyć pliku %1</translation>
    </message>
</context>
<context>
    <name>KSystemInfo</name>
    <message>
        <source>Bytes</source>
        <translation>bajtów</translation>
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
        <translation>Adobe® udostępnia bezpłatne narzędzie do kalibracji obiektywów „Lens Profile Creator”. Ta wtyczka za pomocą jego profili usuwa ze zdjęć dystorsję, winietowanie i aberrację chromatyczną.</translation>
    </message>
</context>
<context>
    <name>Library</name>
    <message>
        <source>Comment</source>
        <translation>Komentarz</translation>
    </message>
</context>
<context>
    <name>QCoreApplication</name>
    <message>
        <source>File &quot;%1&quot; cannot be loaded</source>
        <translation>Nie można wczytać pliku „%1”</translation>
    </message>
    <message>
        <source>File &quot;%1&quot; is not found</source>
        <translation>Nie znaleziono pliku „%1”</translation>
    </message>
</context>
<context>
    <name>UIImageDefListWizard</name>
    <message>
        <source>Prev</source>
        <translation>Poprzedni</translation>
    </message>
    <message>
        <source>Next</source>
        <translation>Następny</translation>
    </message>
</context>
<context>
    <name>UIImageDefListWizardClass</name>
    <message>
        <source>WizardPage</source>
        <translation>Strona kreatora</translation>
    </message>
    <message>
        <source>Apply to all images</source>
        <translation>Zastosuj do wszystkich obrazów</translation>
    </message>
</context>
<context>
    <name>UIVitreluxPreview</name>
    <message>
        <source>Select lens camera profiles Database directory</source>
        <translation>Wybierz folder z profilami obiektywów</translation>
    </message>
    <message>
        <source>Select lens camera profile</source>
        <translation>Wybierz profil obiektywu</translation>
    </message>
    <message>
        <source>Profile</source>
        <translation>Profil</translation>
    </message>
    <message>
        <source>Non supported file format</source>
        <translation>Nieobsługiwany format pliku</translation>
    </message>
    <message>
        <source>Preview is uptodate</source>
        <translation>Podgląd jest aktualny</translation>
    </message>
    <message>
        <source>None found: %1</source>
        <translation>Nie znaleziono profilu: %1</translation>
    </message>
    <message>
        <source>Found: %1</source>
        <translation>Znaleziono: %1</translation>
    </message>
    <message>
        <source>Not corrected: %1</source>
        <translation>Nie skorygowano: %1</translation>
    </message>
    <message>
        <source>Find the profile automatically</source>
        <translation>Znajdź profil automatycznie</translation>
    </message>
</context>
<context>
    <name>UIVitreluxPreviewClass</name>
    <message>
        <source>Vitrelux correction</source>
        <translation>Korekcja Vitrelux</translation>
    </message>
    <message>
        <source>Lens database</source>
        <translation>Baza obiektywów</translation>
    </message>
    <message>
        <source>...</source>
        <translation>...</translation>
    </message>
    <message>
        <source>Lens profile</source>
        <translation>Profil obiektywu</translation>
    </message>
    <message>
        <source>Message</source>
        <translation>Komunikat</translation>
    </message>
    <message>
        <source>Geometric distortion</source>
        <translation>Dystorsja geometryczna</translation>
    </message>
    <message>
        <source>Chromatic aberration</source>
        <translation>Aberracja chromatyczna</translation>
    </message>
    <message>
        <source>Vignetting</source>
        <translation>Winietowanie</translation>
    </message>
    <message>
        <source>Split preview</source>
        <translation>Podzielony podgląd</translation>
    </message>
</context>
</TS>
