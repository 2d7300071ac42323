<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr" sourcelanguage="en">
<context>
    <name>ImageDef</name>
    <message>
        <source>inch</source>
        <translation>pouces</translation>
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
        <translation>Fabricant</translation>
    </message>
    <message>
        <source>Model</source>
        <translation>Modèle</translation>
    </message>
    <message>
        <source>Real focal length</source>
        <translation>Focale réelle</translation>
    </message>
    <message>
        <source>35mm f.length</source>
        <translation>Focale (24×36)</translation>
    </message>
    <message>
        <source>Exposure time</source>
        <translation>Temps de pose</translation>
    </message>
    <message>
        <source>Shutter speed</source>
        <translation>Vitesse d&apos;obturation</translation>
    </message>
    <message>
        <source>F Number</source>
        <translation>Nombre d&apos;ouverture</translation>
    </message>
    <message>
        <source>Date Time</source>
        <translation>Date et heure</translation>
    </message>
    <message>
        <source>ISO</source>
        <translation>ISO</translation>
    </message>
    <message>
        <source>Exposure bias value</source>
        <translation>Correction d&apos;exposition</translation>
    </message>
    <message>
        <source>Width</source>
        <translation>Largeur</translation>
    </message>
    <message>
        <source>Height</source>
        <translation>Hauteur</translation>
    </message>
    <message>
        <source>Focal plane res X</source>
        <translation>Résolution X du plan focal</translation>
    </message>
    <message>
        <source>Focal plane res Y</source>
        <translation>Résolution Y du plan focal</translation>
    </message>
    <message>
        <source>Focal plan res. unit</source>
        <translation>Unité de résolution du plan focal</translation>
    </message>
    <message>
        <source>: gray pictures are not supported.</source>
        <translation>&#xa0;: les images en niveaux de gris ne sont pas prises en charge.</translation>
    </message>
</context>
<context>
    <name>KException</name>
    <message>
        <source>Error GFL : &quot;%1&quot;</source>
        <translation>Erreur GFL&#xa0;: «&#xa0;%1&#xa0;»</translation>
    </message>
    <message>
        <source>File : &quot;%1&quot;</source>
        <translation>Fichier&#xa0;: «&#xa0;%1&#xa0;»</translation>
    </message>
    <message>
        <source>Not enough free space on &quot;%1&quot; to finish operation</source>
        <translation>Espace libre insuffisant sur «&#xa0;%1&#xa0;» pour terminer l&apos;opération</translation>
    </message>
    <message>
        <source>Cannot write into file &quot;%1&quot;</source>
        <translation>Impossible d&apos;écrire dans le fichier «&#xa0;%1&#xa0;»</translation>
    </message>
    <message>
        <source>File &quot;%1&quot; is not found</source>
        <translation>Le fichier «&#xa0;%1&#xa0;» est introuvable</translation>
    </message>
    <message>
        <source>No more space in temporary folder</source>
        <translation>Plus d&apos;espace dans le dossier temporaire</translation>
    </message>
</context>
<context>
    <name>KLog</name>
    <message>
        <source>Critical error</source>
        <translation>Erreur critique</translation>
    </message>
    <message>
        <source>Can not open file %1</source>
        <translation>Impossible d&apos;ouvrir le fichier %1</translation>
    </message>
</context>
<context>
    <name>KSystemInfo</name>
    <message>
        <source>Bytes</source>
        <translation>octets</translation>
    </message>
    <message>
        <source>KB</source>
        <translation>Ko</translation>
    </message>
    <message>
        <source>MB</source>
        <translation>Mo</translation>
    </message>
    <message>
        <source>GB</source>
        <translation>Go</translation>
    </message>
    <message>
        <source>TB</source>
        <translation>To</translation>
    </message>
</context>
<context>
    <name>KVitreluxOne2One</name>
    <message>
        <source>Adobe(r) released a free tool to calibrate your lens called &apos;Lens Profile Creator&apos;. This plugin reuse these profiles to remove lens distortion, vignetting or chromatic aberration from your photos.</source>
        <translation>Adobe® propose un outil gratuit d&apos;étalonnage des objectifs, «&#xa0;Lens Profile Creator&#xa0;». Ce module réutilise ses profils pour supprimer la distorsion, le vignetage et l&apos;aberration chromatique de vos photos.</translation>
    </message>
</context>
<context>
    <name>Library</name>
    <message>
        <source>Comment</source>
        <translation>Commentaire</translation>
    </message>
</context>
<context>
    <name>QCoreApplication</name>
    <message>
        <source>File &quot;%1&quot; cannot be loaded</source>
        <translation>Le fichier «&#xa0;%1&#xa0;» ne peut pas être chargé</translation>
    </message>
    <message>
        <source>File &quot;%1&quot; is not found</source>
        <translation>Le fichier «&#xa0;%1&#xa0;» est introuvable</translation>
    </message>
</context>
<context>
    <name>UIImageDefListWizard</name>
    <message>
        <source>Prev</source>
        <translation>Précédente</translation>
    </message>
    <message>
        <source>Next</source>
        <translation>Suivante</translation>
    </message>
</context>
<context>
    <name>UIImageDefListWizardClass</name>
    <message>
        <source>WizardPage</source>
        <translation>Page de l&apos;assistant</translation>
    </message>
    <message>
        <source>Apply to all images</source>
        <translation>Appliquer à toutes les images</translation>
    </message>
</context>
<context>
    <name>UIVitreluxPreview</name>
    <message>
        <source>Select lens camera profiles Database directory</source>
        <translation>Sélectionner le dossier des profils d&apos;objectif</translation>
    </message>
    <message>
        <source>Select lens camera profile</source>
        <translation>Sélectionner un profil d&apos;objectif</translation>
    </message>
    <message>
        <source>Profile</source>
        <translation>Profil</translation>
    </message>
    <message>
        <source>Non supported file format</source>
        <translation>Format de fichier non pris en charge</translation>
    </message>
    <message>
        <source>Preview is uptodate</source>
        <translation>L&apos;aperçu est à jour</translation>
    </message>
    <message>
        <source>None found: %1</source>
        <translation>Aucun profil trouvé : %1</translation>
    </message>
    <message>
        <source>Found: %1</source>
        <translation>Trouvé : %1</translation>
    </message>
    <message>
        <source>Not corrected: %1</source>
        <translation>Non corrigé : %1</translation>
    </message>
    <message>
        <source>Find the profile automatically</source>
        <translation>Trouver le profil automatiquement</translation>
    </message>
</context>
<context>
    <name>UIVitreluxPreviewClass</name>
    <message>
        <source>Vitrelux correction</source>
        <translation>Correction Vitrelux</translation>
    </message>
    <message>
        <source>Lens database</source>
        <translation>Base de données d&apos;objectifs</translation>
    </message>
    <message>
        <source>...</source>
        <translation>...</translation>
    </message>
    <message>
        <source>Lens profile</source>
        <translation>Profil d&apos;objectif</translation>
    </message>
    <message>
        <source>Message</source>
        <translation>Message</translation>
    </message>
    <message>
        <source>Geometric distortion</source>
        <translation>Distorsion géométrique</translation>
    </message>
    <message>
        <source>Chromatic aberration</source>
        <translation>Aberration chromatique</translation>
    </message>
    <message>
        <source>Vignetting</source>
        <translation>Vignetage</translation>
    </message>
    <message>
        <source>Split preview</source>
        <translation>Aperçu scindé</translation>
    </message>
</context>
</TS>
