// The rows of a picture that is being written.
#pragma once

#include "codec.h"

#include <vector>

namespace imagefile {

/// Gives the rows of a picture from the top down: a bitmap's own, or rows made some at a time.
class RowSource {
public:
    /// Both must outlive the object. @p maker is null if the bitmap holds the pixels.
    RowSource(const GFL_BITMAP &bitmap, const RowMaker *maker);

    /// Sets @p row to the next row, valid until the next call. Requests at most as many rows as there are.
    Status Next(const std::uint8_t **row);

private:
    const GFL_BITMAP &m_bitmap;
    const RowMaker *const m_maker;
    const std::size_t m_rowBytes;
    const int m_bandRows;
    std::vector<std::uint8_t> m_band; // allocated here, so that nothing throws between an encoder's jumps
    int m_next = 0;
};

} // namespace imagefile
