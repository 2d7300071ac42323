// Files for tests of fitted runs: lens profiles, and metadata of pictures taken with the lens.
#pragma once

#include "TestFiles.h"

inline const char *const kLens = "EF24-105mm f/4L IS USM";

/// Returns a profile with one entry in attribute form, for a Canon EOS 40D at 50 mm and f/8. Its frame is larger than
/// the pictures.
QByteArray Profile(const char *lens, bool hasVignetting = true);

struct PictureMetadata {
    const char *lens = nullptr; // EXIF LensModel
    const char *focal = nullptr, *aperture = nullptr;
    bool wasCorrected = false;
};

void WriteMetadata(const QString &path, const PictureMetadata &metadata);
