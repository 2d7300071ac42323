#include "FloatRows.h"

#include "ippi.h"

#include <algorithm>
#include <cstring>

void FloatRows::Grow(int rows)
{
    const qint64 wanted = m_walk == Walk::Leaps ? rows + rows / 8 : qint64(rows) * 3;
    const int whole = m_picture.height();
    m_rows.FreeBitmap();
    m_block.AllocBitmap(m_picture.width(), wanted < whole / 2 ? static_cast<int>(wanted) : whole, GFL_RGBA, 32,
                        /*clear=*/false, nullptr, 0);
    m_top = m_first = m_end = 0;
}

void FloatRows::Place(int first, int end)
{
    const bool goesUp = first < m_first; // leave room for more rows in both directions
    const int top = std::max(0, goesUp ? first - (m_block.height() - (end - first)) / 2 : first);
    m_first = std::clamp(first, m_first, m_end);
    m_end = std::clamp(end, m_first, m_end);
    if (m_first < m_end)
        std::memmove(m_block.getData(0, m_first - top), m_block.getData(0, m_first - m_top),
                     static_cast<size_t>(m_end - m_first) * m_block.bytesPerLine());
    m_top = top;
}

void FloatRows::Convert(int first, int end)
{
    if (first >= end)
        return;
    if (m_picture.type() == GFL_GREY) { // needed for 16-bit gray, whose conversion doesn't write alpha
        constexpr Ipp32f kOpaque[] = {0, 0, 0, 1};
        ippiSet_32f_C4R(kOpaque, reinterpret_cast<Ipp32f *>(m_block.getData(0, first - m_top)), m_block.bytesPerLine(),
                        {m_block.width(), end - first});
    }
    const int atOnce = m_walk == Walk::Leaps ? 8 : end - first; // 8 rows are too few for CropCopyTo to use OpenMP
    for (int row = first; row < end; row += atOnce)
        m_picture.CropCopyTo(0, row, m_picture.width(), std::min(atOnce, end - row), m_block, 0, row - m_top);
}

void FloatRows::Hold(int first, int end)
{
    if (!m_block.m_bitmap || end - first > m_block.height())
        Grow(end - first);
    if (first < m_top || end > m_top + m_block.height())
        Place(first, end);
    if (first > m_end || end < m_first) // no row in the window can be reused
        m_first = m_end = first;
    Convert(first, m_first);
    m_first = std::min(first, m_first);
    Convert(m_end, end);
    m_end = std::max(end, m_end);
    m_rows.AllocBitmap(m_picture.width(), m_end - m_first, GFL_RGBA, 32, /*clear=*/false,
                       m_block.getData(0, m_first - m_top), static_cast<int>(m_block.bytesPerLine()));
}
