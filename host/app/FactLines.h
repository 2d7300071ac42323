// The facts on which a fit rests, as lines for people.
#pragma once

#include <QString>

struct PictureFacts;

/// One line per fact, with where it was read: "Lens          EF24-70mm f/4L IS USM (EXIF LensModel)".
QString FactLines(const PictureFacts &facts);
/// The corrections that were made before, with the reasons: "distortion, vignetting (XMP crs:LensProfileEnable)".
QString DoneBeforeText(const PictureFacts &facts);
