// Facts about one picture, as lines for users and as a record for scripts.
#pragma once

#include <QJsonObject>
#include <QString>
#include <QVector>

class PictureHeader;

/// One fact. It is omitted from lines if it has no label, and from records if it has no key.
struct PictureFact {
    QString label;
    QString text;
    QString key;
    QJsonValue value;
};

using PictureSummary = QVector<PictureFact>;

/// Returns size, depth, channels and format from the file's header, and facts from its metadata.
/// @param path  absolute path of the picture.
/// @param header  of the picture, read without a problem.
PictureSummary SummaryOfPicture(const QString &path, const PictureHeader &header);

/// Returns all EXIF entries of the picture, one per line, or a line that says there are none.
QString ExifTable(const QString &path);
