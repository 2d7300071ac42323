// Creates the EXIF thumbnail while a JPEG is written.
#pragma once

#include "core/bytes.h"
#include "core/row_sink.h"
#include "core/sink.h"

namespace imagefile {

/// A thumbnail made from a picture's rows while they are written.
class MadeThumbnail {
public:
    MadeThumbnail();
    /// @p channels  1 or 3, of 8 bits.
    Status Start(int width, int height, int channels);
    /// Adds the next row, without padding.
    void AddRow(const std::uint8_t *row);
    /// Encodes the thumbnail with the best quality that fits into @p maxBytes bytes. Call it after the last row. Leaves
    /// @p jpeg unchanged if no quality fits.
    Status Encode(std::size_t maxBytes, Bytes *jpeg);

private:
    GFL_LOAD_PARAMS m_params = {};
    ReducedRows m_rows;
    std::size_t m_rowBytes = 0;
    int m_next = 0;
};

/// Space reserved for a thumbnail at the end of an EXIF block. The thumbnail precedes the picture in the file but is
/// known only after the picture is written.
class ThumbnailRoom {
public:
    /// Appends zeros to @p tiff, a little-endian block without a second directory, as space for that directory and the
    /// thumbnail. Does nothing if the block is empty or would become longer than @p maxBytes bytes.
    void Append(std::size_t maxBytes, Bytes *tiff);
    bool IsReserved() const { return m_pointerAt != 0; }

    /// Writes the thumbnail into its space and links its directory; if no thumbnail fits, the space stays unused.
    /// @p exifAt  position of the EXIF segment's payload in the file.
    Status Fill(MadeThumbnail &thumbnail, std::uint64_t exifAt, Sink *sink) const;

private:
    std::size_t m_pointerAt = 0, m_directoryAt = 0; // in the block
};

} // namespace imagefile
