// Profiles for tests, in the format of real ones.
#pragma once

#include <QByteArray>

namespace profiletext {

/// <stCamera:tag>value</stCamera:tag>
QByteArray Value(const char *tag, const QByteArray &value);
/// <stCamera:tag rdf:parseType="Resource">content</stCamera:tag>
QByteArray Resource(const char *tag, const QByteArray &content);
/// One rdf:li in element form.
QByteArray Entry(const QByteArray &content);
/// A complete file with these entries.
QByteArray Profile(const QByteArray &entries);

/// ImageWidth and ImageLength.
QByteArray Size(const QByteArray &width, const QByteArray &length);
/// Both focal lengths and both centers.
QByteArray Place(const QByteArray &focalX, const QByteArray &focalY, const QByteArray &centerX,
                 const QByteArray &centerY);
/// Names, lens and shooting data as profile makers write them, without the image size.
QByteArray Metadata(const QByteArray &focalLength, const QByteArray &aperture, const QByteArray &distance);
/// An entry with all five models, each with different values. @p shift is added to the radial coefficients.
QByteArray FullEntry(double shift);

} // namespace profiletext
