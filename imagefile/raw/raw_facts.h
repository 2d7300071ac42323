// Metadata of a camera raw file, read by LibRaw.
#pragma once

#include "core/source.h"

#include <exiv2/exiv2.hpp>
#include <string>
#include <utility>
#include <vector>

namespace imagefile {

struct RawFacts {
    /// Maker, model, lens, focal length, exposure, date and position, for files in which Exiv2 finds no EXIF.
    Exiv2::ExifData exif;
    /// LibRaw's fields by name: "LibRaw.LensID", "61184". Unknown ones are absent.
    std::vector<std::pair<std::string, std::string>> fields;
};

/// Reads the headers of a file that the raw codec recognizes; returns empty facts if the file is damaged. Throws
/// std::bad_alloc and Exiv2::AnyError.
RawFacts ReadRawFacts(const Source &source);

} // namespace imagefile
