// Reader of Qt's binary JSON, the format of the event file.
#pragma once

#include <QJsonObject>

/// Parses the output of QJsonDocument::toBinaryData. Qt 5.15's reader crashes on some damaged data, although it
/// validates the data first.
/// @return the object; empty if the data is damaged or its root is an array.
QJsonObject ObjectOfBinaryJson(const QByteArray &data);
