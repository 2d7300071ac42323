<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="ru" sourcelanguage="en">
<context>
    <name>ImageDef</name>
    <message>
        <source>inch</source>
        <translation>дюйм</translation>
    </message>
    <message>
        <source>cm</source>
        <translation>см</translation>
    </message>
    <message>
        <source>µm</source>
        <translation>мкм</translation>
    </message>
    <message>
        <source>Maker</source>
        <translation>Производитель</translation>
    </message>
    <message>
        <source>Model</source>
        <translation>Модель</translation>
    </message>
    <message>
        <source>Real focal length</source>
        <translation>Реальное фокусное расстояние</translation>
    </message>
    <message>
        <source>35mm f.length</source>
        <translation>Фокусное расстояние (35 мм)</translation>
    </message>
    <message>
        <source>Exposure time</source>
        <translation>Выдержка</translation>
    </message>
    <message>
        <source>Shutter speed</source>
        <translation>Скорость затвора</translation>
    </message>
    <message>
        <source>F Number</source>
        <translation>Число диафрагмы</translation>
    </message>
    <message>
        <source>Date Time</source>
        <translation>Дата и время</translation>
    </message>
    <message>
        <source>ISO</source>
        <translation>ISO</translation>
    </message>
    <message>
        <source>Exposure bias value</source>
        <translation>Экспокоррекция</translation>
    </message>
    <message>
        <source>Width</source>
        <translation>Ширина</translation>
    </message>
    <message>
        <source>Height</source>
        <translation>Высота</translation>
    </message>
    <message>
        <source>Focal plane res X</source>
        <translation>Разрешение по X в фокальной плоскости</translation>
    </message>
    <message>
        <source>Focal plane res Y</source>
        <translation>Разрешение по Y в фокальной плоскости</translation>
    </message>
    <message>
        <source>Focal plan res. unit</source>
        <translation>Единица разрешения в фокальной плоскости</translation>
    </message>
    <message>
        <source>: gray pictures are not supported.</source>
        <translation>: изображения в градациях серого не поддерживаются.</translation>
    </message>
</context>
<context>
    <name>KException</name>
    <message>
        <source>Error GFL : &quot;%1&quot;</source>
        <translation>Ошибка GFL: «%1»</translation>
    </message>
    <message>
        <source>File : &quot;%1&quot;</source>
        <translation>Файл: «%1»</translation>
    </message>
    <message>
        <source>Not enough free space on &quot;%1&quot; to finish operation</source>
        <translation>Недостаточно свободного места в «%1» для завершения операции</translation>
    </message>
    <message>
        <source>Cannot write into file &quot;%1&quot;</source>
        <translation>Не удаётся записать в файл «%1»</translation>
    </message>
    <message>
        <source>File &quot;%1&quot; is not found</source>
        <translation>Файл «%1» не найден</translation>
    </message>
    <message>
        <source>No more space in temporary folder</source>
        <translation>Во временной папке закончилось место</translation>
    </message>
</context>
<context>
    <name>KLog</name>
    <message>
        <source>Critical error</source>
        <translation>Критическая ошибка</translation>
    </message>
    <message>
        <source>Can not open file %1</source>
        <translation>Не удаётся открыть файл %1</translation>
    </message>
</context>
<context>
    <name>KSystemInfo</name>
    <message>
        <source>Bytes</source>
        <translation>байт</translation>
    </message>
    <message>
        <source>KB</source>
        <translation>КБ</translation>
    </message>
    <message>
        <source>MB</source>
        <translation>МБ</translation>
    </message>
    <message>
        <source>GB</source>
        <translation>ГБ</translation>
    </message>
    <message>
        <source>TB</source>
        <translation>ТБ</translation>
    </message>
</context>
<context>
    <name>KVitreluxOne2One</name>
    <message>
        <source>Adobe(r) released a free tool to calibrate your lens called &apos;Lens Profile Creator&apos;. This plugin reuse these profiles to remove lens distortion, vignetting or chromatic aberration from your photos.</source>
        <translation>Adobe® выпустила бесплатный инструмент калибровки объективов «Lens Profile Creator». Модуль по его профилям убирает с фотографий дисторсию, виньетирование и хроматические аберрации.</translation>
    </message>
</context>
<context>
    <name>Library</name>
    <message>
        <source>Comment</source>
        <translation>Комментарий</translation>
    </message>
</context>
<context>
    <name>QCoreApplication</name>
    <message>
        <source>File &quot;%1&quot; cannot be loaded</source>
        <translation>Не удаётся загрузить файл «%1»</translation>
    </message>
    <message>
        <source>File &quot;%1&quot; is not found</source>
        <translation>Файл «%1» не найден</translation>
    </message>
</context>
<context>
    <name>UIImageDefListWizard</name>
    <message>
        <source>Prev</source>
        <translation>Предыдущее</translation>
    </message>
    <message>
        <source>Next</source>
        <translation>Следующее</translation>
    </message>
</context>
<context>
    <name>UIImageDefListWizardClass</name>
    <message>
        <source>WizardPage</source>
        <translation>Страница мастера</translation>
    </message>
    <message>
        <source>Apply to all images</source>
        <translation>Применить ко всем изображениям</translation>
    </message>
</context>
<context>
    <name>UIVitreluxPreview</name>
    <message>
        <source>Select lens camera profiles Database directory</source>
        <translation>Выберите папку с профилями объективов</translation>
    </message>
    <message>
        <source>Select lens camera profile</source>
        <translation>Выберите профиль объектива</translation>
    </message>
    <message>
        <source>Profile</source>
        <translation>Профиль</translation>
    </message>
    <message>
        <source>Non supported file format</source>
        <translation>Неподдерживаемый формат файла</translation>
    </message>
    <message>
        <source>Preview is uptodate</source>
        <translation>Предпросмотр обновлён</translation>
    </message>
    <message>
        <source>None found: %1</source>
        <translation>Профиль не найден: %1</translation>
    </message>
    <message>
        <source>Found: %1</source>
        <translation>Найден: %1</translation>
    </message>
    <message>
        <source>Not corrected: %1</source>
        <translation>Не исправлено: %1</translation>
    </message>
    <message>
        <source>Find the profile automatically</source>
        <translation>Найти профиль автоматически</translation>
    </message>
</context>
<context>
    <name>UIVitreluxPreviewClass</name>
    <message>
        <source>Vitrelux correction</source>
        <translation>Коррекция Vitrelux</translation>
    </message>
    <message>
        <source>Lens database</source>
        <translation>База объективов</translation>
    </message>
    <message>
        <source>...</source>
        <translation>...</translation>
    </message>
    <message>
        <source>Lens profile</source>
        <translation>Профиль объектива</translation>
    </message>
    <message>
        <source>Message</source>
        <translation>Сообщение</translation>
    </message>
    <message>
        <source>Geometric distortion</source>
        <translation>Геометрические искажения</translation>
    </message>
    <message>
        <source>Chromatic aberration</source>
        <translation>Хроматические аберрации</translation>
    </message>
    <message>
        <source>Vignetting</source>
        <translation>Виньетирование</translation>
    </message>
    <message>
        <source>Split preview</source>
        <translation>Разделённый просмотр</translation>
    </message>
</context>
</TS>
