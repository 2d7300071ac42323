// EXIF in a TIFF that is being written, exactly as Exiv2 makes it: rationals unchanged, maker notes that still decode.
//
// libtiff doesn't support maker notes and rounds rationals; Exiv2 would afterwards write the whole file a second time.
// So Exiv2 makes a small TIFF that holds only metadata, whose bytes go to the head of the file, where all its offsets
// stay valid. The picture follows. Finally the first directory is written again, with the fields of both: libtiff's for
// the picture, Exiv2's for everything else, including the EXIF and GPS directories.
#pragma once

#include "core/sink.h"
#include "core/tiff_directory.h"
#include "metadata/metadata.h"

namespace imagefile {

class TiffExif {
public:
    /// Encodes @p exif, which only holds values to be carried; if there are none, the calls below do nothing.
    Status Encode(const Exiv2::ExifData &exif);

    /// Returns the maximum bytes that the EXIF takes in a file: itself, and its directories again, perhaps widened.
    std::uint64_t BytesBound() const { return 3 * std::uint64_t(m_classic.size()); }
    /// Sets the variant of the file; before the calls below.
    void SetVariant(TiffVariant variant) { m_variant = variant; }

    /// Writes the head after the file's header, before any other byte.
    Status WriteHead(Sink *sink) const;
    /// Joins the fields to the first directory, which has been written. Fields already in the directory take
    /// precedence.
    Status JoinFirstDirectory(Sink *sink) const;

private:
    Status WidenDirectory(TiffFields *fields, Sink *sink) const;

    TiffVariant m_variant = {false};
    std::vector<std::uint8_t> m_classic; // a little-endian classic TIFF
};

} // namespace imagefile
