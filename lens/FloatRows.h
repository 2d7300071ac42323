// Sliding window of source rows as float RGBA.
#pragma once

#include "KImage.h"

/// Sliding window of source rows as float RGBA, which the warp reads. A whole float copy spent most of its time on page
/// faults. One thread at a time.
class FloatRows {
public:
    /// @param picture      has a form that KImage::Convert accepts, and must outlive the object.
    /// @param timesNeeded  room, as a multiple of the rows that a call needs. With 3 rows rarely move to the top of the
    ///                     block, yet fit the caches. 1 if successive calls share few rows.
    explicit FloatRows(const KImage &picture, int timesNeeded = 3) : m_picture(picture), m_timesNeeded(timesNeeded) { }

    /// Ensures that rows [first, end), which must exist, are in the window; others may be too. Cheap if calls proceed
    /// down the picture. May throw a KException.
    void Hold(int first, int end);

    /// The rows in the window, as KImage::Convert of the picture gives them; the first is row FirstRow() of the
    /// picture. Valid until the next Hold.
    const KImage &Image() const { return m_rows; }
    int FirstRow() const { return m_first; }

private:
    void Grow(int rows);

    const KImage &m_picture;
    const int m_timesNeeded;
    KImage m_block;
    KImage m_rows;              // wraps the rows of m_block from m_start on
    int m_start = 0;            // row of m_block
    int m_first = 0, m_end = 0; // rows of the picture
};
