// Some rows of a picture as float RGBA, in a block that is used again as the rows move down.
#pragma once

#include "KImage.h"

/// What the warp reads, without a float picture of the whole: most of the time that one took was the making of fresh
/// pages of memory by the system. One thread at a time.
class FloatRows {
public:
    /// @p picture is of a form that KImage::Convert takes, and must outlive the object.
    explicit FloatRows(const KImage &picture) : m_picture(picture) { }

    /// Sees to it that rows @p first to before @p end of the picture are held, which has them. Others may be as well;
    /// cheap where the calls go down the picture. May throw a KException.
    void Hold(int first, int end);

    /// The rows that are held, as KImage::Convert of the picture makes them; the first is row FirstRow() of the
    /// picture. Valid until the next Hold.
    const KImage &Image() const { return m_rows; }
    int FirstRow() const { return m_first; }

private:
    void Grow(int rows);

    const KImage &m_picture;
    KImage m_block;
    KImage m_rows;              // wraps the rows of m_block from m_start on
    int m_start = 0;            // row of m_block
    int m_first = 0, m_end = 0; // rows of the picture
};
