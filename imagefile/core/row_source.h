// Source of rows for writers.
#pragma once

#include "codec.h"

#include <vector>

namespace imagefile {

/// A picture's rows from top to bottom, from a bitmap or generated in bands.
class RowSource {
public:
    /// Both arguments must outlive the object. @p maker is null if the pixels are in the bitmap.
    RowSource(const GFL_BITMAP &bitmap, const RowMaker *maker);

    /// Sets @p row to the next row, valid until the next call. Never requests rows past the last one.
    Status Next(const std::uint8_t **row);

private:
    const GFL_BITMAP &m_bitmap;
    const RowMaker *const m_maker;
    const std::size_t m_rowBytes;
    const int m_bandRows;
    std::vector<std::uint8_t> m_band; // allocated in advance, so that nothing throws across an encoder's setjmp
    int m_next = 0;
};

} // namespace imagefile
