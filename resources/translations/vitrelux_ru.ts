<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ru" sourcelanguage="en">
<context>
    <name>CompareDialog</name>
    <message>
        <source>%1: before and after</source>
        <translation>%1: до и после</translation>
    </message>
    <message>
        <source>Before</source>
        <translation>До</translation>
    </message>
    <message>
        <source>After</source>
        <translation>После</translation>
    </message>
    <message>
        <source>Reading the picture…</source>
        <translation>Чтение снимка…</translation>
    </message>
    <message>
        <source>Zoom &amp;in</source>
        <translation>У&amp;величить</translation>
    </message>
    <message>
        <source>Zoom &amp;out</source>
        <translation>У&amp;меньшить</translation>
    </message>
    <message>
        <source>&amp;Whole picture</source>
        <translation>Весь &amp;снимок</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>&amp;Закрыть</translation>
    </message>
    <message>
        <source>The picture cannot be read: %1</source>
        <translation>Не удаётся прочитать снимок: %1</translation>
    </message>
</context>
<context>
    <name>CorrectionJob</name>
    <message>
        <source>The corrected picture would replace that of &quot;%1&quot;</source>
        <translation>Исправленный снимок заменил бы результат для «%1»</translation>
    </message>
    <message>
        <source>No correction is switched on</source>
        <translation>Ни одна коррекция не включена</translation>
    </message>
    <message>
        <source>Not a readable picture: %1</source>
        <translation>Изображение не читается: %1</translation>
    </message>
    <message>
        <source>No lens profile was chosen, and none was found for this picture: %1</source>
        <translation>Профиль объектива не выбран, и для этого снимка он не найден: %1</translation>
    </message>
</context>
<context>
    <name>CorrectionWizard</name>
    <message>
        <source>Vitrelux: lens correction</source>
        <translation>Vitrelux: коррекция объектива</translation>
    </message>
    <message>
        <source>&amp;Back</source>
        <translation>&amp;Назад</translation>
    </message>
    <message>
        <source>&amp;Next</source>
        <translation>&amp;Далее</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>&amp;Закрыть</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Отмена</translation>
    </message>
</context>
<context>
    <name>FittedCorrection</name>
    <message>
        <source>profile &quot;%1&quot;</source>
        <translation>профиль «%1»</translation>
    </message>
    <message>
        <source>entries</source>
        <translation>записи</translation>
    </message>
    <message>
        <source>assumed</source>
        <translation>принято</translation>
    </message>
    <message>
        <source>left out</source>
        <translation>пропущено</translation>
    </message>
    <message>
        <source>profile %1</source>
        <comment>its name and what is wrong with it</comment>
        <translation>профиль %1</translation>
    </message>
    <message>
        <source>nearest</source>
        <translation>ближайшие</translation>
    </message>
</context>
<context>
    <name>PictureProblem</name>
    <message>
        <source>is a link to a file that does not exist</source>
        <translation>ссылка на несуществующий файл</translation>
    </message>
    <message>
        <source>no such file; names must be in UTF-8</source>
        <translation>нет такого файла; имена ожидаются в UTF-8</translation>
    </message>
    <message>
        <source>no such file</source>
        <translation>нет такого файла</translation>
    </message>
    <message>
        <source>is a folder, expected a picture file</source>
        <translation>это папка, ожидается файл изображения</translation>
    </message>
    <message>
        <source>is not a regular file, expected a picture file</source>
        <translation>не обычный файл, ожидается файл изображения</translation>
    </message>
    <message>
        <source>is empty (0 bytes), expected a picture file</source>
        <translation>пуст (0 байт), ожидается файл изображения</translation>
    </message>
    <message>
        <source>cannot be read: %1</source>
        <translation>не удаётся прочитать: %1</translation>
    </message>
    <message>
        <source>gray pictures are not supported</source>
        <translation>изображения в градациях серого не поддерживаются</translation>
    </message>
    <message>
        <source>%1 pictures are not supported</source>
        <translation>изображения %1 не поддерживаются</translation>
    </message>
    <message>
        <source>pictures of %1 channels are not supported</source>
        <translation>изображения с числом каналов %1 не поддерживаются</translation>
    </message>
    <message>
        <source>tiled TIFF files are not supported</source>
        <translation>файлы TIFF с плитками не поддерживаются</translation>
    </message>
    <message>
        <source>is not recognized as a picture: a companion file, or damaged</source>
        <translation>не распознан как изображение: сопутствующий или повреждённый файл</translation>
    </message>
</context>
<context>
    <name>PictureRun</name>
    <message>
        <source>not enough memory</source>
        <translation>недостаточно памяти</translation>
    </message>
    <message>
        <source>failed for an unknown reason</source>
        <translation>сбой без указания причины</translation>
    </message>
</context>
<context>
    <name>PicturesPage</name>
    <message>
        <source>&amp;Remove</source>
        <translation>&amp;Убрать</translation>
    </message>
    <message>
        <source>Pictures</source>
        <translation>Снимки</translation>
    </message>
    <message>
        <source>Picture</source>
        <translation>Снимок</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Размер</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>Папка</translation>
    </message>
    <message>
        <source>Drop pictures or folders here</source>
        <translation>Перетащите сюда снимки или папки</translation>
    </message>
    <message>
        <source>&amp;Add pictures…</source>
        <translation>Доб&amp;авить снимки…</translation>
    </message>
    <message>
        <source>All files</source>
        <translation>Все файлы</translation>
    </message>
    <message>
        <source>Add pictures</source>
        <translation>Добавить снимки</translation>
    </message>
    <message>
        <source>Fill the frame: no empty borders</source>
        <translation>Заполнить кадр: без пустых краёв</translation>
    </message>
    <message>
        <source>Keep the scale</source>
        <translation>Сохранить масштаб</translation>
    </message>
    <message>
        <source>Show everything that was photographed</source>
        <translation>Показать всё снятое</translation>
    </message>
    <message>
        <source>&amp;Framing:</source>
        <translation>&amp;Кадр:</translation>
    </message>
    <message>
        <source>TIFF: nothing is lost</source>
        <translation>TIFF: без потерь</translation>
    </message>
    <message>
        <source>JPEG: small files, 8 bits</source>
        <translation>JPEG: небольшие файлы, 8 бит</translation>
    </message>
    <message>
        <source>PNG: lossless, up to 16 bits</source>
        <translation>PNG: без потерь, до 16 бит</translation>
    </message>
    <message>
        <source>OpenEXR: linear light, for compositing</source>
        <translation>OpenEXR: линейный свет, для композитинга</translation>
    </message>
    <message>
        <source>C&amp;hoose…</source>
        <translation>&amp;Выбрать…</translation>
    </message>
    <message>
        <source>Replace e&amp;xisting corrected pictures</source>
        <translation>&amp;Заменять уже существующие исправленные снимки</translation>
    </message>
    <message>
        <source>Which pictures do you want to correct, and where are the results saved? The originals are not changed.</source>
        <translation>Какие снимки исправить и где сохранить результаты? Оригиналы не меняются.</translation>
    </message>
    <message>
        <source>Add f&amp;older…</source>
        <translation>Добавить &amp;папку…</translation>
    </message>
    <message>
        <source>The folder of each picture</source>
        <translation>Папка каждого снимка</translation>
    </message>
    <message>
        <source>&amp;Save in:</source>
        <translation>&amp;Сохранять в:</translation>
    </message>
    <message>
        <source>Forma&amp;t:</source>
        <translation>&amp;Формат:</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not a folder</source>
        <translation>«%1» — не папка</translation>
    </message>
    <message>
        <source>This folder cannot be read: %1</source>
        <translation>Не удаётся прочитать эту папку: %1</translation>
    </message>
    <message>
        <source>No new pictures were found.</source>
        <translation>Новых снимков не найдено.</translation>
    </message>
    <message>
        <source>Add a folder</source>
        <translation>Добавить папку</translation>
    </message>
    <message>
        <source>Folder for corrected pictures</source>
        <translation>Папка для исправленных снимков</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not an absolute path, which begins with &quot;/&quot;</source>
        <translation>«%1» — не полный путь; полный путь начинается с «/»</translation>
    </message>
    <message>
        <source>%1 of %2 pictures read</source>
        <translation>Прочитано: %1 из %2</translation>
    </message>
</context>
<context>
    <name>RunPage</name>
    <message>
        <source>Corrected</source>
        <translation>Исправлен</translation>
    </message>
    <message>
        <source>Left as it was: the corrected picture already exists</source>
        <translation>Оставлен как есть: исправленный снимок уже существует</translation>
    </message>
    <message>
        <source>Failed</source>
        <translation>Ошибка</translation>
    </message>
    <message>
        <source>Not corrected: the run was stopped</source>
        <translation>Не исправлен: остановлено раньше</translation>
    </message>
    <message>
        <source>&amp;Stop</source>
        <translation>&amp;Остановить</translation>
    </message>
    <message>
        <source>Show in &amp;folder</source>
        <translation>Показать в &amp;папке</translation>
    </message>
    <message>
        <source>Correction</source>
        <translation>Коррекция</translation>
    </message>
    <message>
        <source>Picture</source>
        <translation>Снимок</translation>
    </message>
    <message>
        <source>Result</source>
        <translation>Результат</translation>
    </message>
    <message>
        <source>Correcting…</source>
        <translation>Исправляется…</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <comment>result of a picture, and why</comment>
        <translation>%1: %2</translation>
    </message>
    <message numerus="yes">
        <source>%n picture(s) corrected</source>
        <translation>
            <numerusform>Исправлен %n снимок</numerusform>
            <numerusform>Исправлено %n снимка</numerusform>
            <numerusform>Исправлено %n снимков</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n left as they were</source>
        <translation>
            <numerusform>%n оставлен как есть</numerusform>
            <numerusform>%n оставлено как есть</numerusform>
            <numerusform>%n оставлено как есть</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n failed</source>
        <translation>
            <numerusform>%n ошибка</numerusform>
            <numerusform>%n ошибки</numerusform>
            <numerusform>%n ошибок</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n not reached</source>
        <translation>
            <numerusform>%n не обработан</numerusform>
            <numerusform>%n не обработано</numerusform>
            <numerusform>%n не обработано</numerusform>
        </translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message numerus="yes">
        <source>About %n second(s) left</source>
        <translation>
            <numerusform>Осталась примерно %n секунда</numerusform>
            <numerusform>Осталось примерно %n секунды</numerusform>
            <numerusform>Осталось примерно %n секунд</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>About %n minute(s) left</source>
        <translation>
            <numerusform>Осталась примерно %n минута</numerusform>
            <numerusform>Осталось примерно %n минуты</numerusform>
            <numerusform>Осталось примерно %n минут</numerusform>
        </translation>
    </message>
    <message>
        <source>Skipped, corrected before</source>
        <translation>Пропущен, исправлен ранее</translation>
    </message>
    <message numerus="yes">
        <source>%n corrected before</source>
        <translation>
            <numerusform>%n исправлен ранее</numerusform>
            <numerusform>%n исправлено ранее</numerusform>
            <numerusform>%n исправлено ранее</numerusform>
        </translation>
    </message>
    <message>
        <source>Before and &amp;after…</source>
        <translation>&amp;До и после…</translation>
    </message>
    <message>
        <source>Open a row of the list to see the picture before and after the correction.</source>
        <translation>Откройте строку списка, чтобы увидеть снимок до и после исправления.</translation>
    </message>
    <message>
        <source>Stopping…</source>
        <translation>Остановка…</translation>
    </message>
    <message>
        <source>%1 of %2 pictures finished</source>
        <translation>Готово: %1 из %2</translation>
    </message>
</context>
<context>
    <name>WorkFolder</name>
    <message>
        <source>cannot write into the folder &quot;%1&quot;: %2</source>
        <translation>не удаётся записать в папку «%1»: %2</translation>
    </message>
    <message>
        <source>cannot create the folder &quot;%1&quot;: %2</source>
        <translation>не удаётся создать папку «%1»: %2</translation>
    </message>
    <message>
        <source>cannot write &quot;%1&quot;: %2</source>
        <translation>не удаётся записать «%1»: %2</translation>
    </message>
    <message>
        <source>it exists and is not a regular file</source>
        <translation>там находится не обычный файл</translation>
    </message>
    <message>
        <source>cannot set the file time: %1</source>
        <translation>не удаётся сохранить время: %1</translation>
    </message>
</context>
</TS>
