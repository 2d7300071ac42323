#include "row_source.h"

#include <algorithm>

namespace imagefile {

namespace {

// Rows requested at once: the unit in which sharp sampling computes them.
constexpr int kBandRows = 64;

} // namespace

RowSource::RowSource(const GFL_BITMAP &bitmap, const RowMaker *maker)
    : m_bitmap(bitmap),
      m_maker(maker),
      m_rowBytes(maker ? static_cast<std::size_t>(bitmap.Width) * static_cast<std::size_t>(bitmap.BytesPerPixel)
                       : bitmap.BytesPerLine),
      m_bandRows(std::min(kBandRows, bitmap.Height)),
      m_band(maker ? m_rowBytes * static_cast<std::size_t>(m_bandRows) : 0)
{
}

Status RowSource::Next(const std::uint8_t **row)
{
    const int y = m_next++;
    if (!m_maker) {
        *row = m_bitmap.Data + static_cast<std::size_t>(y) * m_rowBytes;
        return Status::Ok();
    }
    const int inBand = y % m_bandRows;
    *row = m_band.data() + static_cast<std::size_t>(inBand) * m_rowBytes;
    if (inBand > 0)
        return Status::Ok();
    const int count = std::min(m_bandRows, m_bitmap.Height - y);
    return m_maker->Make(y, count, m_band.data(), static_cast<std::uint32_t>(m_rowBytes));
}

} // namespace imagefile
