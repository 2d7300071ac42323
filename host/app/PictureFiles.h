// The pictures of a run, from names, folders and lists of names.
#pragma once

#include <QString>
#include <QStringList>
#include <QVector>

/// One picture of a run.
struct NamedPicture {
    QString name;    // as typed, or as shown to the user
    QString subpath; // path from the walked folder to the picture's folder; empty: same folder, or named individually
};

/// Returns the patterns of file names of all known formats: "*.tif" and so on.
QStringList PictureNamePatterns();

/// Returns one picture per name, each named individually.
QVector<NamedPicture> Named(const QStringList &names);

/// Sources of a run's pictures, as requested by the user.
struct PictureSources {
    QStringList named; // pictures and, if recursive, folders
    bool recursive = false;
    QString listFile;          // names of more pictures; "-": standard input; empty: no list
    QStringList resultEndings; // walks omit files with these endings, such as "_corrected.tiff"
    QString outputFolder;      // walks omit it; empty: none
};

/// The pictures in the given order; those of a walked folder are sorted by name, files before subfolders. A walk takes
/// files with the suffix of a known format, omits hidden ones, and follows links to files but not to folders.
struct PictureFiles {
    QVector<NamedPicture> pictures;
    QStringList unreadable; // folders that cannot be read, including subfolders
};

/// Finds the pictures. Throws KException with a text for the user if the list cannot be read.
PictureFiles ListPictures(const PictureSources &sources);

/// Splits a list of names at NUL if it contains one, otherwise at LF or CR LF. Empty names are left out.
QStringList SplitNames(const QByteArray &list);
