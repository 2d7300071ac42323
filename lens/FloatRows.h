// Sliding window of source rows as float RGBA.
#pragma once

#include "KImage.h"

/// Source rows that the warp is reading. Converting the whole picture would spend most of its time on page faults. If
/// distortion is so strong that one Hold needs much of the picture, the window's memory has room for all rows, which
/// then never move. One thread at a time.
class FloatRows {
public:
    /// How requested ranges progress down the picture.
    enum class Walk {
        Steps, ///< ranges overlap: the memory has spare rows, so that rows rarely move, but still fits in the caches
        Leaps, ///< ranges barely overlap: each thread has a window, so rows are converted without OpenMP
    };

    /// @p picture must have a form that KImage::Convert accepts, and must outlive the object.
    explicit FloatRows(const KImage &picture, Walk walk = Walk::Steps) : m_picture(picture), m_walk(walk) { }

    /// Ensures that rows [first, end), which must exist, are in the window, possibly with others. Converts only the
    /// missing ones. May throw a KException.
    void Hold(int first, int end);

    /// Returns the rows in the window, as KImage::Convert would convert them; the first is row FirstRow() of the
    /// picture. Valid until the next Hold.
    const KImage &Image() const { return m_rows; }
    int FirstRow() const { return m_first; }

private:
    void Grow(int rows);
    void Place(int first, int end);
    void Convert(int first, int end);

    const KImage &m_picture;
    const Walk m_walk;
    KImage m_block;
    KImage m_rows; // a view of those rows of m_block that are in the window
    // Row numbers in the picture: the top of m_block, and the window's first and end.
    int m_top = 0, m_first = 0, m_end = 0;
};
