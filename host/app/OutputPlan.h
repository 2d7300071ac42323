// The output file of each picture, decided before anything is written.
#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

/// The action for a picture whose output file already exists.
enum class ExistingOutput { Refuse, Overwrite, Skip };

/// One picture of a run. Paths are absolute.
struct PlannedPicture {
    QString asNamed; // as on the command line, for messages
    QString picture;
    QString outputFolder;
    QString output;
    QString rival;         // an earlier picture, as named, with the same output; empty: none
    bool repeated = false; // the rival is the same file, named twice
};

/// The plug-in names its output after the picture, NAME_corrected.tiff, so a.jpg and a.png of one folder, or two a.jpg
/// with one output folder, have the same output: the first one named gets it, even if it fails.
///
/// @param outputFolder  empty: the folder of each picture.
QVector<PlannedPicture> PlanOutputs(const QStringList &files, const QString &outputFolder);
