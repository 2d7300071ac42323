<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="es" sourcelanguage="en">
<context>
    <name>ImageDef</name>
    <message>
        <source>inch</source>
        <translation>pulgadas</translation>
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
        <translation>Fabricante</translation>
    </message>
    <message>
        <source>Model</source>
        <translation>Modelo</translation>
    </message>
    <message>
        <source>Real focal length</source>
        <translation>Distancia focal real</translation>
    </message>
    <message>
        <source>35mm f.length</source>
        <translation>Distancia focal (35 mm)</translation>
    </message>
    <message>
        <source>Exposure time</source>
        <translation>Tiempo de exposición</translation>
    </message>
    <message>
        <source>Shutter speed</source>
        <translation>Velocidad de obturación</translation>
    </message>
    <message>
        <source>F Number</source>
        <translation>Número f</translation>
    </message>
    <message>
        <source>Date Time</source>
        <translation>Fecha y hora</translation>
    </message>
    <message>
        <source>ISO</source>
        <translation>ISO</translation>
    </message>
    <message>
        <source>Exposure bias value</source>
        <translation>Compensación de exposición</translation>
    </message>
    <message>
        <source>Width</source>
        <translation>Anchura</translation>
    </message>
    <message>
        <source>Height</source>
        <translation>Altura</translation>
    </message>
    <message>
        <source>Focal plane res X</source>
        <translation>Resolución X del plano focal</translation>
    </message>
    <message>
        <source>Focal plane res Y</source>
        <translation>Resolución Y del plano focal</translation>
    </message>
    <message>
        <source>Focal plan res. unit</source>
        <translation>Unidad de resolución del plano focal</translation>
    </message>
    <message>
        <source>: gray pictures are not supported.</source>
        <translation>: no se admiten imágenes en escala de grises.</translation>
    </message>
</context>
<context>
    <name>KException</name>
    <message>
        <source>Error GFL : &quot;%1&quot;</source>
        <translation>Error de GFL: «%1»</translation>
    </message>
    <message>
        <source>File : &quot;%1&quot;</source>
        <translation>Archivo: «%1»</translation>
    </message>
    <message>
        <source>Not enough free space on &quot;%1&quot; to finish operation</source>
        <translation>No hay suficiente espacio libre en «%1» para terminar la operación</translation>
    </message>
    <message>
        <source>Cannot write into file &quot;%1&quot;</source>
        <translation>No se puede escribir en el archivo «%1»</translation>
    </message>
    <message>
        <source>File &quot;%1&quot; is not found</source>
        <translation>No se encuentra el archivo «%1»</translation>
    </message>
    <message>
        <source>No more space in temporary folder</source>
        <translation>No queda espacio en la carpeta temporal</translation>
    </message>
</context>
<context>
    <name>KLog</name>
    <message>
        <source>Critical error</source>
        <translation>Error crítico</translation>
    </message>
    <message>
        <source>Can not open file %1</source>
        <translation>No se puede abrir el archivo %1</translation>
    </message>
</context>
<context>
    <name>KSystemInfo</name>
    <message>
        <source>Bytes</source>
        <translation>bytes</translation>
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
        <translation>Adobe® ofrece una herramienta gratuita para calibrar objetivos, «Lens Profile Creator». Este complemento utiliza sus perfiles para eliminar la distorsión, el viñeteo y la aberración cromática de sus fotos.</translation>
    </message>
</context>
<context>
    <name>Library</name>
    <message>
        <source>Comment</source>
        <translation>Comentario</translation>
    </message>
</context>
<context>
    <name>QCoreApplication</name>
    <message>
        <source>File &quot;%1&quot; cannot be loaded</source>
        <translation>No se puede cargar el archivo «%1»</translation>
    </message>
    <message>
        <source>File &quot;%1&quot; is not found</source>
        <translation>No se encuentra el archivo «%1»</translation>
    </message>
</context>
<context>
    <name>UIImageDefListWizard</name>
    <message>
        <source>Prev</source>
        <translation>Anterior</translation>
    </message>
    <message>
        <source>Next</source>
        <translation>Siguiente</translation>
    </message>
</context>
<context>
    <name>UIImageDefListWizardClass</name>
    <message>
        <source>WizardPage</source>
        <translation>Página del asistente</translation>
    </message>
    <message>
        <source>Apply to all images</source>
        <translation>Aplicar a todas las imágenes</translation>
    </message>
</context>
<context>
    <name>UIVitreluxPreview</name>
    <message>
        <source>Select lens camera profiles Database directory</source>
        <translation>Seleccionar la carpeta de perfiles de objetivo</translation>
    </message>
    <message>
        <source>Select lens camera profile</source>
        <translation>Seleccionar un perfil de objetivo</translation>
    </message>
    <message>
        <source>Profile</source>
        <translation>Perfil</translation>
    </message>
    <message>
        <source>Non supported file format</source>
        <translation>Formato de archivo no admitido</translation>
    </message>
    <message>
        <source>Preview is uptodate</source>
        <translation>La vista previa está actualizada</translation>
    </message>
    <message>
        <source>None found: %1</source>
        <translation>No se encontró ningún perfil: %1</translation>
    </message>
    <message>
        <source>Found: %1</source>
        <translation>Encontrado: %1</translation>
    </message>
    <message>
        <source>Not corrected: %1</source>
        <translation>Sin corregir: %1</translation>
    </message>
    <message>
        <source>Find the profile automatically</source>
        <translation>Buscar el perfil automáticamente</translation>
    </message>
</context>
<context>
    <name>UIVitreluxPreviewClass</name>
    <message>
        <source>Vitrelux correction</source>
        <translation>Corrección Vitrelux</translation>
    </message>
    <message>
        <source>Lens database</source>
        <translation>Base de datos de objetivos</translation>
    </message>
    <message>
        <source>...</source>
        <translation>...</translation>
    </message>
    <message>
        <source>Lens profile</source>
        <translation>Perfil de objetivo</translation>
    </message>
    <message>
        <source>Message</source>
        <translation>Mensaje</translation>
    </message>
    <message>
        <source>Geometric distortion</source>
        <translation>Distorsión geométrica</translation>
    </message>
    <message>
        <source>Chromatic aberration</source>
        <translation>Aberración cromática</translation>
    </message>
    <message>
        <source>Vignetting</source>
        <translation>Viñeteo</translation>
    </message>
    <message>
        <source>Split preview</source>
        <translation>Vista previa dividida</translation>
    </message>
</context>
</TS>
