// Which picture goes to which output file, settled before anything is written.
#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

/// What to do with a picture whose output file already exists.
enum class ExistingOutput { Refuse, Overwrite, Skip };

/// One picture of a run. Paths are absolute.
struct PlannedPicture {
    QString asNamed; // as on the command line, for messages
    QString picture;
    QString outputFolder;
    QString output;
    QString rival;         // an earlier picture, as named, that has the same output; empty: none
    bool repeated = false; // the rival is this very file, named twice
};

/// The plug-in names its output after the picture, NAME_corrected.tiff, so that a.jpg and a.png of one folder, or two
/// a.jpg with one output folder, want the same file: the first one named gets it, whatever comes of it.
///
/// @param outputFolder  empty: beside each picture.
QVector<PlannedPicture> PlanOutputs(const QStringList &files, const QString &outputFolder);
