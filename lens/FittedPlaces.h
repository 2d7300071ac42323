// Positions of a fitted correction, row by row: exact at the corners of cells, interpolated between them.
#pragma once

#include "CorrectionTwin.h"

#include <vector>

/// The side of a cell in pixels, 1, 2, 4 or 8: the largest that keeps interpolated positions within 0.003 pixels of the
/// exact ones and gains within 1/20,000, by second differences all over the picture.
int CellSide(const CorrectionTwin &twin);

/// Positions and gains at cell corners, for one row of pixels after the other. Values are floats: positions relative to
/// the output pixel, so that large pictures lose nothing. One thread at a time.
class FittedPlaces {
public:
    /// The planes of values; those of red and blue only where colors have places of their own.
    enum Plane { kGain, kGreenX, kGreenY, kRedX, kRedY, kBlueX, kBlueY, kPlanes };

    /// @p twin must outlive the object.
    FittedPlaces(const CorrectionTwin &twin, int cellSide);

    int CellSidePixels() const { return m_side; }
    int Planes() const { return m_planes; }
    /// Moves to the cells that hold row @p y of the result, cheapest row after row.
    void MoveTo(int y);
    /// Of plane @p plane at the upper or lower corners of the cells. There are at least 64 / side + 1 values from any
    /// pixel's cell on.
    const float *Above(int plane) const { return m_above.values.data() + plane * m_stride; }
    const float *Below(int plane) const { return m_below.values.data() + plane * m_stride; }
    int Stride() const { return m_stride; }
    /// Whether cells from @p first to before @p end have a corner near the end of a map: positions inside are then
    /// to be had from the twin alone.
    bool IsRough(int first, int end) const;

private:
    struct Corners {
        int row = -1; // of cells
        std::vector<float> values;
        std::vector<unsigned char> rough;
    };
    void Fill(Corners *corners, int row) const;

    const CorrectionTwin &m_twin;
    int m_side, m_planes, m_stride;
    Corners m_above, m_below;
};
