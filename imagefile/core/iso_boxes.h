// Boxes of ISO base media files (ISO/IEC 14496-12, 4.2), on which HEIF, AVIF and JPEG XL are based.
#pragma once

#include "source.h"

#include <vector>

namespace imagefile {

/// A box. In the file it consists of its length (header included), a name of four letters, and its contents.
struct IsoBox {
    std::uint64_t begin = 0, end = 0; // of the contents present in the file
    char name[5] = "";
    bool isComplete = false;

    bool Is(const char *other) const;
};

/// Returns the boxes in a range of a file, up to the first invalid one; the last may be incomplete.
std::vector<IsoBox> IsoBoxesIn(const Source &source, std::uint64_t begin, std::uint64_t end);

/// Returns the first box with the given name, or an empty box.
IsoBox FindIsoBox(const std::vector<IsoBox> &boxes, const char *name);

} // namespace imagefile
