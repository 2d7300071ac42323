// Plan of the output files, made before anything is written.
#pragma once

#include "PictureFiles.h"

#include <QString>
#include <QStringList>
#include <QVector>

/// Action for a picture whose output file already exists.
enum class ExistingOutput { Refuse, Overwrite, Skip };

/// Rules for writing outputs.
struct OutputRules {
    ExistingOutput existing = ExistingOutput::Refuse;
    bool keepTime = false; // outputs get the file time of their picture
};

/// One picture of a run. Paths are absolute.
struct PlannedPicture {
    QString asNamed; // as on the command line, for messages
    QString picture;
    QString outputFolder;
    QString output;
    QString rival;         // an earlier picture, as named, with the same output; empty: none
    bool repeated = false; // the rival is the same file, listed twice
    QString lost;          // the picture of the run, as named, that the output would replace; empty: none
};

/// Folder and names of outputs.
struct OutputNaming {
    QString folder; // empty: the folder of each picture. The subfolders of a walked folder are mirrored in it
    /// {name}: the picture's name without its last suffix; {ext}: that suffix; {folder}: the name of the picture's
    /// folder. The default is the plug-in's own name for its output.
    QString pattern = QStringLiteral("{name}_corrected.tiff");
    QString ending{}; // appended unchanged, even if it contains braces
};

/// Returns the file suffixes, without dots, of @p format, a value of a record's attribute "Format". The default suffix
/// is the first one. Empty if the format is unknown.
QStringList SuffixesOfFormat(const QString &format);

/// Returns the text appended to a picture's name: @p ending, by default the plug-in's, and the format's suffix.
QString OutputEnding(const QString &format, const QString &ending = QStringLiteral("_corrected"));

/// Returns the output endings of all formats, to recognize results of earlier runs.
QStringList OutputEndings(const QString &ending = QStringLiteral("_corrected"));

/// Returns what is wrong with a pattern and ending typed by the user; empty if they are valid. The pattern
/// must contain {name} and no unknown field; the file name must have no slash and end in one of the format's
/// @p suffixes, ignoring case.
QString FaultOfOutputNames(const OutputNaming &naming, const QStringList &suffixes);

/// Plans the outputs. If two pictures have the same output, such as a.jpg and a.png in one folder, or two files named
/// a.jpg with one output folder, the first one gets it, even if it fails. An output whose base name differs from its
/// picture's, such as a_corrected.tiff, may replace another picture of the run, which is usually an earlier result.
QVector<PlannedPicture> PlanOutputs(const QVector<NamedPicture> &pictures, const OutputNaming &naming);
