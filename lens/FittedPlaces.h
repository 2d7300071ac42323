// Sampling positions of a fitted correction, row by row: exact at the corners of cells, interpolated between them.
#pragma once

#include "CorrectionTwin.h"
#include "TransferCurve.h"

#include <vector>

/// Returns the side of a cell in pixels, 1, 2, 4 or 8: the largest that keeps interpolated positions within 0.003
/// pixels of the exact ones and gains within 1/20,000, estimated from second differences across the picture.
int CellSide(const CorrectionTwin &twin);

/// Positions and gains at cell corners, for some rows of pixels. Values are floats; positions are relative to the
/// output pixel, so that large pictures lose no precision. One thread at a time.
class FittedPlaces {
public:
    /// Planes of values. Red and blue have planes only if they are sampled at separate positions, the gain's root only
    /// if light is computed by a formula.
    enum Plane { kGain, kGainRoot, kGreenX, kGreenY, kRedX, kRedY, kBlueX, kBlueY, kPlanes };

    /// Maximum distance of a position from its pixel along each axis, in pixels.
    static constexpr float kFar = 1048576.0F;
    /// Clamps a relative position to -kFar..kFar; NaN becomes -kFar.
    static float Near(double relative)
    {
        const double limited = relative > -double(kFar) ? relative : -double(kFar);
        return static_cast<float>(limited < double(kFar) ? limited : double(kFar));
    }

    /// Number of readable but meaningless values after each row.
    static constexpr int kPadding = 16;

    /// @p twin and @p roots must outlive the object. @p roots is TransferCurve::RootTable, or null for no plane of
    /// roots.
    FittedPlaces(const CorrectionTwin &twin, int cellSide, const TransferCurve::Table *roots);

    int CellSidePixels() const { return m_side; }
    int Planes() const { return m_planes; }
    bool HasRoots() const { return m_roots; }
    float RootOf(double gain) const { return m_roots ? m_roots->At(static_cast<float>(gain)) : 1.0F; }
    /// Computes the corners of the cells that contain rows [firstRow, firstRow + rows) of the result. Cheapest if
    /// successive calls proceed down the picture.
    void Hold(int firstRow, int rows);
    /// Returns the values of plane @p plane at the upper corners of the cells that contain row @p y; the lower corners
    /// are those of row @p y + side. At least 64 / side + 1 values can be read, starting at any pixel's cell.
    const float *Corners(int plane, int y) const { return At(y).values.data() + plane * m_stride; }
    /// Returns whether cells [first, end) of row @p y have a corner near the end of a map, so that positions inside
    /// them must come from the twin.
    bool IsRough(int y, int first, int end) const;

private:
    struct CornerRow {
        std::vector<float> values;
        std::vector<unsigned char> rough;
    };
    const CornerRow &At(int y) const { return m_rows[static_cast<size_t>(y / m_side - m_first)]; }
    void Fill(CornerRow *corners, int row) const;

    const CorrectionTwin &m_twin;
    const TransferCurve::Table *m_roots;
    int m_side, m_planes, m_stride;
    int m_first = 0, m_end = 0; // rows of corners
    std::vector<CornerRow> m_rows;
};
