// Reader of Qt's binary JSON, the format of the event file.
#pragma once

#include <QJsonObject>

/// Parses what QJsonDocument::toBinaryData has written. Qt 5.15's own reader crashes on some damaged data, although it
/// validates it.
/// @return the object; empty if the data is damaged, or is an array.
QJsonObject ObjectOfBinaryJson(const QByteArray &data);
