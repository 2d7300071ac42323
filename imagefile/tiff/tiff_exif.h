// Writes EXIF into a new TIFF exactly as Exiv2 encodes it: rationals are unchanged and maker notes still decode.
//
// libtiff rounds rationals and doesn't support maker notes; Exiv2 can add EXIF only by rewriting the whole file.
// So Exiv2 makes a small TIFF with only metadata, whose bytes go to the head of the file, where all its offsets
// stay valid. The picture follows. Finally the first directory is written again, with libtiff's fields for the picture
// and Exiv2's for everything else, including the EXIF and GPS directories.
#pragma once

#include "core/sink.h"
#include "core/tiff_directory.h"
#include "metadata/metadata.h"

namespace imagefile {

class TiffExif {
public:
    /// Encodes @p exif, which contains only the values to keep; if it is empty, the calls below do nothing.
    Status Encode(const Exiv2::ExifData &exif);

    /// Returns the maximum size in bytes of the EXIF in a file: the EXIF itself and a second copy of its directories,
    /// which BigTIFF widens.
    std::uint64_t BytesBound() const { return 3 * std::uint64_t(m_classic.size()); }
    /// Sets the variant of the file. Must be called before the functions below.
    void SetVariant(TiffVariant variant) { m_variant = variant; }

    /// Writes Exiv2's small TIFF, except for its header, after the file's header. Call it right after
    /// TiffHandle::OpenForWriting.
    Status WriteHead(Sink *sink) const;
    /// Merges Exiv2's fields into the file's first directory, which must have been written. Fields already in the
    /// directory take precedence.
    Status JoinFirstDirectory(Sink *sink) const;

private:
    Status WidenDirectory(TiffFields *fields, Sink *sink) const;

    TiffVariant m_variant = {false};
    std::vector<std::uint8_t> m_classic; // a little-endian classic TIFF
};

} // namespace imagefile
