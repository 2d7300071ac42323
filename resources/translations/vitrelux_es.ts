<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="es" sourcelanguage="en">
<context>
    <name>CompareDialog</name>
    <message>
        <source>%1: before and after</source>
        <translation>%1: antes y después</translation>
    </message>
    <message>
        <source>Before</source>
        <translation>Antes</translation>
    </message>
    <message>
        <source>After</source>
        <translation>Después</translation>
    </message>
    <message>
        <source>Reading the picture…</source>
        <translation>Leyendo la imagen…</translation>
    </message>
    <message>
        <source>Zoom &amp;in</source>
        <translation>&amp;Ampliar</translation>
    </message>
    <message>
        <source>Zoom &amp;out</source>
        <translation>&amp;Reducir</translation>
    </message>
    <message>
        <source>&amp;Whole picture</source>
        <translation>&amp;Imagen completa</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>&amp;Cerrar</translation>
    </message>
    <message>
        <source>The picture cannot be read: %1</source>
        <translation>No se puede leer la imagen: %1</translation>
    </message>
</context>
<context>
    <name>CorrectionJob</name>
    <message>
        <source>The corrected picture would replace that of &quot;%1&quot;</source>
        <translation>La imagen corregida reemplazaría a la de «%1»</translation>
    </message>
    <message>
        <source>No correction is switched on</source>
        <translation>No hay ninguna corrección activada</translation>
    </message>
    <message>
        <source>Not a readable picture: %1</source>
        <translation>No es una imagen legible: %1</translation>
    </message>
    <message>
        <source>No lens profile was chosen, and none was found for this picture: %1</source>
        <translation>No se ha elegido ningún perfil de objetivo ni se ha encontrado uno para esta imagen: %1</translation>
    </message>
</context>
<context>
    <name>CorrectionWizard</name>
    <message>
        <source>Vitrelux: lens correction</source>
        <translation>Vitrelux: corrección de objetivo</translation>
    </message>
    <message>
        <source>&amp;Back</source>
        <translation>&amp;Atrás</translation>
    </message>
    <message>
        <source>&amp;Next</source>
        <translation>&amp;Siguiente</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>&amp;Cerrar</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Cancelar</translation>
    </message>
</context>
<context>
    <name>FittedCorrection</name>
    <message>
        <source>profile &quot;%1&quot;</source>
        <translation>perfil «%1»</translation>
    </message>
    <message>
        <source>entries</source>
        <translation>entradas</translation>
    </message>
    <message>
        <source>assumed</source>
        <translation>supuesto</translation>
    </message>
    <message>
        <source>left out</source>
        <translation>omitido</translation>
    </message>
    <message>
        <source>profile %1</source>
        <comment>its name and what is wrong with it</comment>
        <translation>perfil %1</translation>
    </message>
    <message>
        <source>nearest</source>
        <translation>más cercanos</translation>
    </message>
</context>
<context>
    <name>PictureProblem</name>
    <message>
        <source>is a link to a file that does not exist</source>
        <translation>es un enlace a un archivo que no existe</translation>
    </message>
    <message>
        <source>no such file; names must be in UTF-8</source>
        <translation>no existe ese archivo; los nombres deben estar en UTF-8</translation>
    </message>
    <message>
        <source>no such file</source>
        <translation>no existe ese archivo</translation>
    </message>
    <message>
        <source>is a folder, expected a picture file</source>
        <translation>es una carpeta, se espera un archivo de imagen</translation>
    </message>
    <message>
        <source>is not a regular file, expected a picture file</source>
        <translation>no es un archivo normal, se espera un archivo de imagen</translation>
    </message>
    <message>
        <source>is empty (0 bytes), expected a picture file</source>
        <translation>está vacío (0 bytes), se espera un archivo de imagen</translation>
    </message>
    <message>
        <source>cannot be read: %1</source>
        <translation>no se puede leer: %1</translation>
    </message>
    <message>
        <source>gray pictures are not supported</source>
        <translation>no se admiten imágenes en escala de grises</translation>
    </message>
    <message>
        <source>%1 pictures are not supported</source>
        <translation>no se admiten imágenes %1</translation>
    </message>
    <message>
        <source>pictures of %1 channels are not supported</source>
        <translation>no se admiten imágenes de %1 canales</translation>
    </message>
    <message>
        <source>tiled TIFF files are not supported</source>
        <translation>no se admiten archivos TIFF en mosaico</translation>
    </message>
    <message>
        <source>is not recognized as a picture: a companion file, or damaged</source>
        <translation>no se reconoce como imagen: es un archivo auxiliar o está dañado</translation>
    </message>
</context>
<context>
    <name>PictureRun</name>
    <message>
        <source>not enough memory</source>
        <translation>memoria insuficiente</translation>
    </message>
    <message>
        <source>failed for an unknown reason</source>
        <translation>falló sin indicar el motivo</translation>
    </message>
</context>
<context>
    <name>PicturesPage</name>
    <message>
        <source>&amp;Remove</source>
        <translation>&amp;Quitar</translation>
    </message>
    <message>
        <source>Pictures</source>
        <translation>Imágenes</translation>
    </message>
    <message>
        <source>Picture</source>
        <translation>Imagen</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Tamaño</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>Carpeta</translation>
    </message>
    <message>
        <source>Drop pictures or folders here</source>
        <translation>Arrastre aquí imágenes o carpetas</translation>
    </message>
    <message>
        <source>&amp;Add pictures…</source>
        <translation>A&amp;ñadir imágenes…</translation>
    </message>
    <message>
        <source>All files</source>
        <translation>Todos los archivos</translation>
    </message>
    <message>
        <source>Add pictures</source>
        <translation>Añadir imágenes</translation>
    </message>
    <message>
        <source>Fill the frame: no empty borders</source>
        <translation>Llenar el encuadre: sin bordes vacíos</translation>
    </message>
    <message>
        <source>Keep the scale</source>
        <translation>Mantener la escala</translation>
    </message>
    <message>
        <source>Show everything that was photographed</source>
        <translation>Mostrar todo lo fotografiado</translation>
    </message>
    <message>
        <source>&amp;Framing:</source>
        <translation>&amp;Encuadre:</translation>
    </message>
    <message>
        <source>TIFF: nothing is lost</source>
        <translation>TIFF: sin pérdidas</translation>
    </message>
    <message>
        <source>JPEG: small files, 8 bits</source>
        <translation>JPEG: archivos pequeños, 8 bits</translation>
    </message>
    <message>
        <source>PNG: lossless, up to 16 bits</source>
        <translation>PNG: sin pérdidas, hasta 16 bits</translation>
    </message>
    <message>
        <source>OpenEXR: linear light, for compositing</source>
        <translation>OpenEXR: luz lineal, para composición</translation>
    </message>
    <message>
        <source>C&amp;hoose…</source>
        <translation>E&amp;legir…</translation>
    </message>
    <message>
        <source>Replace e&amp;xisting corrected pictures</source>
        <translation>&amp;Reemplazar las imágenes corregidas que ya existan</translation>
    </message>
    <message>
        <source>Which pictures do you want to correct, and where are the results saved? The originals are not changed.</source>
        <translation>¿Qué imágenes desea corregir y dónde se guardan los resultados? Los originales no cambian.</translation>
    </message>
    <message>
        <source>Add f&amp;older…</source>
        <translation>Añadir &amp;carpeta…</translation>
    </message>
    <message>
        <source>The folder of each picture</source>
        <translation>La carpeta de cada imagen</translation>
    </message>
    <message>
        <source>&amp;Save in:</source>
        <translation>&amp;Guardar en:</translation>
    </message>
    <message>
        <source>Forma&amp;t:</source>
        <translation>&amp;Formato:</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not a folder</source>
        <translation>«%1» no es una carpeta</translation>
    </message>
    <message>
        <source>This folder cannot be read: %1</source>
        <translation>No se puede leer esta carpeta: %1</translation>
    </message>
    <message>
        <source>No new pictures were found.</source>
        <translation>No se encontraron imágenes nuevas.</translation>
    </message>
    <message>
        <source>Add a folder</source>
        <translation>Añadir una carpeta</translation>
    </message>
    <message>
        <source>Folder for corrected pictures</source>
        <translation>Carpeta para las imágenes corregidas</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not an absolute path, which begins with &quot;/&quot;</source>
        <translation>«%1» no es una ruta completa, que empieza por «/»</translation>
    </message>
    <message>
        <source>%1 of %2 pictures read</source>
        <translation>%1 de %2 imágenes leídas</translation>
    </message>
</context>
<context>
    <name>RunPage</name>
    <message>
        <source>Corrected</source>
        <translation>Corregida</translation>
    </message>
    <message>
        <source>Left as it was: the corrected picture already exists</source>
        <translation>Sin cambios: la imagen corregida ya existe</translation>
    </message>
    <message>
        <source>Failed</source>
        <translation>Error</translation>
    </message>
    <message>
        <source>Not corrected: the run was stopped</source>
        <translation>Sin corregir: se detuvo antes</translation>
    </message>
    <message>
        <source>&amp;Stop</source>
        <translation>&amp;Detener</translation>
    </message>
    <message>
        <source>Show in &amp;folder</source>
        <translation>Mostrar en la car&amp;peta</translation>
    </message>
    <message>
        <source>Correction</source>
        <translation>Corrección</translation>
    </message>
    <message>
        <source>Picture</source>
        <translation>Imagen</translation>
    </message>
    <message>
        <source>Result</source>
        <translation>Resultado</translation>
    </message>
    <message>
        <source>Correcting…</source>
        <translation>Corrigiendo…</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <comment>result of a picture, and why</comment>
        <translation>%1: %2</translation>
    </message>
    <message numerus="yes">
        <source>%n picture(s) corrected</source>
        <translation>
            <numerusform>%n imagen corregida</numerusform>
            <numerusform>%n imágenes corregidas</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n left as they were</source>
        <translation>
            <numerusform>%n sin cambios</numerusform>
            <numerusform>%n sin cambios</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n failed</source>
        <translation>
            <numerusform>%n con error</numerusform>
            <numerusform>%n con errores</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n not reached</source>
        <translation>
            <numerusform>%n sin procesar</numerusform>
            <numerusform>%n sin procesar</numerusform>
        </translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message numerus="yes">
        <source>About %n second(s) left</source>
        <translation>
            <numerusform>Queda %n segundo aproximadamente</numerusform>
            <numerusform>Quedan unos %n segundos</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>About %n minute(s) left</source>
        <translation>
            <numerusform>Queda %n minuto aproximadamente</numerusform>
            <numerusform>Quedan unos %n minutos</numerusform>
        </translation>
    </message>
    <message>
        <source>Skipped, corrected before</source>
        <translation>Omitida, ya estaba corregida</translation>
    </message>
    <message numerus="yes">
        <source>%n corrected before</source>
        <translation>
            <numerusform>%n ya corregida</numerusform>
            <numerusform>%n ya corregidas</numerusform>
        </translation>
    </message>
    <message>
        <source>Before and &amp;after…</source>
        <translation>A&amp;ntes y después…</translation>
    </message>
    <message>
        <source>Open a row of the list to see the picture before and after the correction.</source>
        <translation>Abra una fila de la lista para ver la imagen antes y después de la corrección.</translation>
    </message>
    <message>
        <source>Stopping…</source>
        <translation>Deteniendo…</translation>
    </message>
    <message>
        <source>%1 of %2 pictures finished</source>
        <translation>%1 de %2 imágenes terminadas</translation>
    </message>
</context>
<context>
    <name>WorkFolder</name>
    <message>
        <source>cannot write into the folder &quot;%1&quot;: %2</source>
        <translation>no se puede escribir en la carpeta «%1»: %2</translation>
    </message>
    <message>
        <source>cannot create the folder &quot;%1&quot;: %2</source>
        <translation>no se puede crear la carpeta «%1»: %2</translation>
    </message>
    <message>
        <source>cannot write &quot;%1&quot;: %2</source>
        <translation>no se puede escribir «%1»: %2</translation>
    </message>
    <message>
        <source>it exists and is not a regular file</source>
        <translation>allí hay algo que no es un archivo normal</translation>
    </message>
    <message>
        <source>cannot set the file time: %1</source>
        <translation>no se puede conservar la fecha: %1</translation>
    </message>
</context>
</TS>
