// EXIF in a TIFF that is being written, exactly as Exiv2 makes it: rationals as they are, maker notes that still
// decode.
//
// libtiff has no maker notes and rounds rationals; Exiv2 afterwards would write the whole file a second time. So Exiv2
// makes a small TIFF of nothing but metadata, whose bytes stand at the head of the file, where all offsets in it stay
// right. The picture follows. At last the first directory is written again, with the fields of both: libtiff's for the
// picture, Exiv2's for everything else, EXIF and GPS directories included.
#pragma once

#include "core/sink.h"
#include "core/tiff_directory.h"
#include "metadata/metadata.h"

namespace imagefile {

class TiffExif {
public:
    /// @p exif holds only what is to be carried; none makes the calls below do nothing.
    Status Encode(const Exiv2::ExifData &exif);

    /// What the EXIF takes at most in a file: itself, and its directories once more, perhaps widened.
    std::uint64_t BytesBound() const { return 3 * std::uint64_t(m_classic.size()); }
    /// Of the file; before the calls below.
    void SetVariant(TiffVariant variant) { m_variant = variant; }

    /// Writes the head behind the file's header, before any other byte.
    Status WriteHead(Sink *sink) const;
    /// Joins the fields to the first directory, which has been written. Fields that the directory has already win.
    Status JoinFirstDirectory(Sink *sink) const;

private:
    Status WidenDirectory(TiffFields *fields, Sink *sink) const;

    TiffVariant m_variant = {false};
    std::vector<std::uint8_t> m_classic; // a little-endian classic TIFF
};

} // namespace imagefile
