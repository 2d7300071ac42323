// Sliding window of source rows as float RGBA.
#pragma once

#include "KImage.h"

/// Sliding window of source rows as float RGBA, which the warp reads. A whole float copy spent most of its time on page
/// faults. One thread at a time.
class FloatRows {
public:
    /// @p picture has a form that KImage::Convert accepts, and must outlive the object.
    explicit FloatRows(const KImage &picture) : m_picture(picture) { }

    /// Ensures that rows [first, end), which must exist, are in the window, perhaps with others. Cheap if calls proceed
    /// down the picture. May throw a KException.
    void Hold(int first, int end);

    /// The rows in the window, as KImage::Convert of the picture gives them; the first is row FirstRow() of the
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
