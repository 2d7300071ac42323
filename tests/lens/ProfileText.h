// Profiles for tests, in the format of real ones.
#pragma once

#include <QByteArray>

namespace profiletext {

/// Returns "<stCamera:tag>value</stCamera:tag>".
QByteArray Value(const char *tag, const QByteArray &value);
/// Returns "<stCamera:tag rdf:parseType="Resource">content</stCamera:tag>".
QByteArray Resource(const char *tag, const QByteArray &content);
/// Returns one rdf:li in element form.
QByteArray Entry(const QByteArray &content);
/// Returns a complete file with these entries.
QByteArray Profile(const QByteArray &entries);

/// Returns ImageWidth and ImageLength.
QByteArray Size(const QByteArray &width, const QByteArray &length);
/// Returns the focal lengths and the center coordinates.
QByteArray Place(const QByteArray &focalX, const QByteArray &focalY, const QByteArray &centerX,
                 const QByteArray &centerY);
/// Returns names, lens and shooting data in the form that profile makers write, without the image size.
QByteArray Metadata(const QByteArray &focalLength, const QByteArray &aperture, const QByteArray &distance);
/// Returns an entry with all five models, each with different values. @p shift is added to all coefficients but the
/// tangential ones.
QByteArray FullEntry(double shift);

} // namespace profiletext
