// What is known of one picture, as lines for people and as a record for scripts.
#pragma once

#include <QJsonObject>
#include <QString>
#include <QVector>

class ImageDef;

/// One thing known. Lines without a label and records without a key leave it out.
struct PictureFact {
    QString label;
    QString text;
    QString key;
    QJsonValue value;
};

using PictureSummary = QVector<PictureFact>;

/// Size, depth, channels and format, out of the file's head, and what its metadata tell.
/// @param path  absolute, of a picture that can be read.
PictureSummary SummaryOfPicture(const QString &path);

/// All of the picture's EXIF, a line an entry; a text that says so if there is none.
QString ExifTable(const QString &path);
