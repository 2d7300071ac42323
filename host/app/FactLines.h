// Facts used by a fit, as text.
#pragma once

#include <QString>

struct PictureFacts;

/// Returns one line per fact, with its source: "Lens EF24-70mm f/4L IS USM (EXIF LensModel)".
QString FactLines(const PictureFacts &facts);
/// Returns the corrections already made, with their sources: "distortion, vignetting (XMP crs:LensProfileEnable)".
QString DoneBeforeText(const PictureFacts &facts);
