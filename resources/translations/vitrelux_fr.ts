<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="fr" sourcelanguage="en">
<context>
    <name>CompareDialog</name>
    <message>
        <source>%1: before and after</source>
        <translation>%1&#xa0;: avant et après</translation>
    </message>
    <message>
        <source>Before</source>
        <translation>Avant</translation>
    </message>
    <message>
        <source>After</source>
        <translation>Après</translation>
    </message>
    <message>
        <source>Reading the picture…</source>
        <translation>Lecture de l&apos;image…</translation>
    </message>
    <message>
        <source>Zoom &amp;in</source>
        <translation>&amp;Agrandir</translation>
    </message>
    <message>
        <source>Zoom &amp;out</source>
        <translation>&amp;Réduire</translation>
    </message>
    <message>
        <source>&amp;Whole picture</source>
        <translation>Image &amp;entière</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>&amp;Fermer</translation>
    </message>
    <message>
        <source>The picture cannot be read: %1</source>
        <translation>L&apos;image ne peut pas être lue&#xa0;: %1</translation>
    </message>
</context>
<context>
    <name>CorrectionJob</name>
    <message>
        <source>The corrected picture would replace that of &quot;%1&quot;</source>
        <translation>L&apos;image corrigée remplacerait celle de «&#xa0;%1&#xa0;»</translation>
    </message>
    <message>
        <source>No correction is switched on</source>
        <translation>Aucune correction n&apos;est activée</translation>
    </message>
    <message>
        <source>Not a readable picture: %1</source>
        <translation>Pas une image lisible&#xa0;: %1</translation>
    </message>
    <message>
        <source>No lens profile was chosen, and none was found for this picture: %1</source>
        <translation>Aucun profil d&apos;objectif n&apos;est choisi, et aucun n&apos;a été trouvé pour cette image : %1</translation>
    </message>
</context>
<context>
    <name>CorrectionWizard</name>
    <message>
        <source>Vitrelux: lens correction</source>
        <translation>Vitrelux&#xa0;: correction d&apos;objectif</translation>
    </message>
    <message>
        <source>&amp;Back</source>
        <translation>&amp;Précédent</translation>
    </message>
    <message>
        <source>&amp;Next</source>
        <translation>&amp;Suivant</translation>
    </message>
    <message>
        <source>&amp;Close</source>
        <translation>&amp;Fermer</translation>
    </message>
    <message>
        <source>Cancel</source>
        <translation>Annuler</translation>
    </message>
</context>
<context>
    <name>FittedCorrection</name>
    <message>
        <source>profile &quot;%1&quot;</source>
        <translation>profil « %1 »</translation>
    </message>
    <message>
        <source>entries</source>
        <translation>entrées</translation>
    </message>
    <message>
        <source>assumed</source>
        <translation>supposé</translation>
    </message>
    <message>
        <source>left out</source>
        <translation>omis</translation>
    </message>
    <message>
        <source>profile %1</source>
        <comment>its name and what is wrong with it</comment>
        <translation>profil %1</translation>
    </message>
    <message>
        <source>nearest</source>
        <translation>les plus proches</translation>
    </message>
</context>
<context>
    <name>PictureProblem</name>
    <message>
        <source>is a link to a file that does not exist</source>
        <translation>est un lien vers un fichier qui n&apos;existe pas</translation>
    </message>
    <message>
        <source>no such file; names must be in UTF-8</source>
        <translation>fichier inexistant&#xa0;; les noms sont attendus en UTF-8</translation>
    </message>
    <message>
        <source>no such file</source>
        <translation>fichier inexistant</translation>
    </message>
    <message>
        <source>is a folder, expected a picture file</source>
        <translation>est un dossier, un fichier image est attendu</translation>
    </message>
    <message>
        <source>is not a regular file, expected a picture file</source>
        <translation>n&apos;est pas un fichier ordinaire, un fichier image est attendu</translation>
    </message>
    <message>
        <source>is empty (0 bytes), expected a picture file</source>
        <translation>est vide (0 octet), un fichier image est attendu</translation>
    </message>
    <message>
        <source>cannot be read: %1</source>
        <translation>ne peut pas être lu&#xa0;: %1</translation>
    </message>
    <message>
        <source>gray pictures are not supported</source>
        <translation>les images en niveaux de gris ne sont pas prises en charge</translation>
    </message>
    <message>
        <source>%1 pictures are not supported</source>
        <translation>les images %1 ne sont pas prises en charge</translation>
    </message>
    <message>
        <source>pictures of %1 channels are not supported</source>
        <translation>les images à %1 canaux ne sont pas prises en charge</translation>
    </message>
    <message>
        <source>tiled TIFF files are not supported</source>
        <translation>les fichiers TIFF en tuiles ne sont pas pris en charge</translation>
    </message>
    <message>
        <source>is not recognized as a picture: a companion file, or damaged</source>
        <translation>n&apos;est pas reconnu comme image&#xa0;: fichier annexe ou endommagé</translation>
    </message>
</context>
<context>
    <name>PictureRun</name>
    <message>
        <source>not enough memory</source>
        <translation>mémoire insuffisante</translation>
    </message>
    <message>
        <source>failed for an unknown reason</source>
        <translation>échec sans motif indiqué</translation>
    </message>
</context>
<context>
    <name>PicturesPage</name>
    <message>
        <source>&amp;Remove</source>
        <translation>&amp;Retirer</translation>
    </message>
    <message>
        <source>Pictures</source>
        <translation>Images</translation>
    </message>
    <message>
        <source>Picture</source>
        <translation>Image</translation>
    </message>
    <message>
        <source>Size</source>
        <translation>Dimensions</translation>
    </message>
    <message>
        <source>Folder</source>
        <translation>Dossier</translation>
    </message>
    <message>
        <source>Drop pictures or folders here</source>
        <translation>Déposez ici des images ou des dossiers</translation>
    </message>
    <message>
        <source>&amp;Add pictures…</source>
        <translation>&amp;Ajouter des images…</translation>
    </message>
    <message>
        <source>All files</source>
        <translation>Tous les fichiers</translation>
    </message>
    <message>
        <source>Add pictures</source>
        <translation>Ajouter des images</translation>
    </message>
    <message>
        <source>Fill the frame: no empty borders</source>
        <translation>Remplir le cadre : aucun bord vide</translation>
    </message>
    <message>
        <source>Keep the scale</source>
        <translation>Garder l&apos;échelle</translation>
    </message>
    <message>
        <source>Show everything that was photographed</source>
        <translation>Montrer tout ce qui a été photographié</translation>
    </message>
    <message>
        <source>&amp;Framing:</source>
        <translation>&amp;Cadrage :</translation>
    </message>
    <message>
        <source>TIFF: nothing is lost</source>
        <translation>TIFF&#xa0;: sans perte</translation>
    </message>
    <message>
        <source>JPEG: small files, 8 bits</source>
        <translation>JPEG&#xa0;: petits fichiers, 8 bits</translation>
    </message>
    <message>
        <source>PNG: lossless, up to 16 bits</source>
        <translation>PNG&#xa0;: sans perte, jusqu&apos;à 16 bits</translation>
    </message>
    <message>
        <source>OpenEXR: linear light, for compositing</source>
        <translation>OpenEXR&#xa0;: lumière linéaire, pour le compositing</translation>
    </message>
    <message>
        <source>C&amp;hoose…</source>
        <translation>C&amp;hoisir…</translation>
    </message>
    <message>
        <source>Replace e&amp;xisting corrected pictures</source>
        <translation>Remplacer les &amp;images corrigées qui existent déjà</translation>
    </message>
    <message>
        <source>Which pictures do you want to correct, and where are the results saved? The originals are not changed.</source>
        <translation>Quelles images voulez-vous corriger, et où enregistrer les résultats&#xa0;? Les originaux restent inchangés.</translation>
    </message>
    <message>
        <source>Add f&amp;older…</source>
        <translation>Ajouter un &amp;dossier…</translation>
    </message>
    <message>
        <source>The folder of each picture</source>
        <translation>Le dossier de chaque image</translation>
    </message>
    <message>
        <source>&amp;Save in:</source>
        <translation>&amp;Enregistrer dans&#xa0;:</translation>
    </message>
    <message>
        <source>Forma&amp;t:</source>
        <translation>&amp;Format&#xa0;:</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not a folder</source>
        <translation>«&#xa0;%1&#xa0;» n&apos;est pas un dossier</translation>
    </message>
    <message>
        <source>This folder cannot be read: %1</source>
        <translation>Ce dossier ne peut pas être lu&#xa0;: %1</translation>
    </message>
    <message>
        <source>No new pictures were found.</source>
        <translation>Aucune nouvelle image trouvée.</translation>
    </message>
    <message>
        <source>Add a folder</source>
        <translation>Ajouter un dossier</translation>
    </message>
    <message>
        <source>Folder for corrected pictures</source>
        <translation>Dossier des images corrigées</translation>
    </message>
    <message>
        <source>&quot;%1&quot; is not an absolute path, which begins with &quot;/&quot;</source>
        <translation>«&#xa0;%1&#xa0;» n&apos;est pas un chemin complet, qui commence par «&#xa0;/&#xa0;»</translation>
    </message>
    <message>
        <source>%1 of %2 pictures read</source>
        <translation>%1 images lues sur %2</translation>
    </message>
</context>
<context>
    <name>RunPage</name>
    <message>
        <source>Corrected</source>
        <translation>Corrigée</translation>
    </message>
    <message>
        <source>Left as it was: the corrected picture already exists</source>
        <translation>Laissée telle quelle&#xa0;: l&apos;image corrigée existe déjà</translation>
    </message>
    <message>
        <source>Failed</source>
        <translation>Échec</translation>
    </message>
    <message>
        <source>Not corrected: the run was stopped</source>
        <translation>Non corrigée&#xa0;: arrêt avant</translation>
    </message>
    <message>
        <source>&amp;Stop</source>
        <translation>A&amp;rrêter</translation>
    </message>
    <message>
        <source>Show in &amp;folder</source>
        <translation>Afficher dans le &amp;dossier</translation>
    </message>
    <message>
        <source>Correction</source>
        <translation>Correction</translation>
    </message>
    <message>
        <source>Picture</source>
        <translation>Image</translation>
    </message>
    <message>
        <source>Result</source>
        <translation>Résultat</translation>
    </message>
    <message>
        <source>Correcting…</source>
        <translation>Correction en cours…</translation>
    </message>
    <message>
        <source>%1: %2</source>
        <comment>result of a picture, and why</comment>
        <translation>%1&#xa0;: %2</translation>
    </message>
    <message numerus="yes">
        <source>%n picture(s) corrected</source>
        <translation>
            <numerusform>%n image corrigée</numerusform>
            <numerusform>%n images corrigées</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n left as they were</source>
        <translation>
            <numerusform>%n laissée telle quelle</numerusform>
            <numerusform>%n laissées telles quelles</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n failed</source>
        <translation>
            <numerusform>%n échec</numerusform>
            <numerusform>%n échecs</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>%n not reached</source>
        <translation>
            <numerusform>%n non traitée</numerusform>
            <numerusform>%n non traitées</numerusform>
        </translation>
    </message>
    <message>
        <source>, </source>
        <translation>, </translation>
    </message>
    <message numerus="yes">
        <source>About %n second(s) left</source>
        <translation>
            <numerusform>Encore %n seconde environ</numerusform>
            <numerusform>Encore %n secondes environ</numerusform>
        </translation>
    </message>
    <message numerus="yes">
        <source>About %n minute(s) left</source>
        <translation>
            <numerusform>Encore %n minute environ</numerusform>
            <numerusform>Encore %n minutes environ</numerusform>
        </translation>
    </message>
    <message>
        <source>Skipped, corrected before</source>
        <translation>Ignorée, déjà corrigée</translation>
    </message>
    <message numerus="yes">
        <source>%n corrected before</source>
        <translation>
            <numerusform>%n déjà corrigée</numerusform>
            <numerusform>%n déjà corrigées</numerusform>
        </translation>
    </message>
    <message>
        <source>Before and &amp;after…</source>
        <translation>&amp;Avant et après…</translation>
    </message>
    <message>
        <source>Open a row of the list to see the picture before and after the correction.</source>
        <translation>Ouvrez une ligne de la liste pour voir l&apos;image avant et après la correction.</translation>
    </message>
    <message>
        <source>Stopping…</source>
        <translation>Arrêt en cours…</translation>
    </message>
    <message>
        <source>%1 of %2 pictures finished</source>
        <translation>%1 images terminées sur %2</translation>
    </message>
</context>
<context>
    <name>WorkFolder</name>
    <message>
        <source>cannot write into the folder &quot;%1&quot;: %2</source>
        <translation>impossible d&apos;écrire dans le dossier «&#xa0;%1&#xa0;»&#xa0;: %2</translation>
    </message>
    <message>
        <source>cannot create the folder &quot;%1&quot;: %2</source>
        <translation>impossible de créer le dossier «&#xa0;%1&#xa0;»&#xa0;: %2</translation>
    </message>
    <message>
        <source>cannot write &quot;%1&quot;: %2</source>
        <translation>impossible d&apos;écrire «&#xa0;%1&#xa0;»&#xa0;: %2</translation>
    </message>
    <message>
        <source>it exists and is not a regular file</source>
        <translation>il s’y trouve quelque chose qui n’est pas un fichier ordinaire</translation>
    </message>
    <message>
        <source>cannot set the file time: %1</source>
        <translation>impossible de conserver la date : %1</translation>
    </message>
</context>
</TS>
