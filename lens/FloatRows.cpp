#include "FloatRows.h"

#include "ippi.h"

#include <algorithm>
#include <cstring>

void FloatRows::Grow(int rows)
{
    const int height = static_cast<int>(std::min<qint64>(m_picture.height(), qint64(rows) * m_timesNeeded));
    m_rows.FreeBitmap();
    m_block.AllocBitmap(m_picture.width(), height, GFL_RGBA, 32, /*clear=*/false, nullptr, 0);
    // Conversion of 16-bit gray does not write alpha.
    constexpr Ipp32f kOpaque[] = {0, 0, 0, 1};
    ippiSet_32f_C4R(kOpaque, reinterpret_cast<Ipp32f *>(m_block.getData(0, 0)), m_block.bytesPerLine(),
                    {m_block.width(), m_block.height()});
    m_start = m_first = m_end = 0;
}

void FloatRows::Hold(int first, int end)
{
    if (!m_block.m_bitmap || end - first > m_block.height())
        Grow(end - first);
    if (first < m_first || first > m_end) { // the held rows are useless
        m_first = m_end = first;
        m_start = 0;
    }
    if (m_start + (end - m_first) > m_block.height()) {
        m_start += first - m_first;
        m_first = first;
        std::memmove(m_block.getData(0, 0), m_block.getData(0, m_start),
                     static_cast<size_t>(m_end - m_first) * m_block.bytesPerLine());
        m_start = 0;
    }
    if (end > m_end) {
        m_picture.CropCopyTo(0, m_end, m_picture.width(), end - m_end, m_block, 0, m_start + m_end - m_first);
        m_end = end;
    }
    m_rows.AllocBitmap(m_picture.width(), m_end - m_first, GFL_RGBA, 32, /*clear=*/false, m_block.getData(0, m_start),
                       static_cast<int>(m_block.bytesPerLine()));
}
