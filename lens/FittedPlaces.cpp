#include "FittedPlaces.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace {

constexpr int kLargestSide = 8;
constexpr int kBlockPixels = 64;          // whole blocks are read, even beyond the last pixel
constexpr double kPlaceTolerance = 0.003; // pixels
constexpr double kGainTolerance = 5e-5;

using Values = std::array<double, FittedPlaces::kPlanes>;

/// Returns the values of all planes at a pixel, except the root; positions are relative to the pixel.
Values ValuesOf(const SourcePlaces &places, double x, double y)
{
    return {places.gain,        0.0,
            places.green.x - x, places.green.y - y,
            places.red.x - x,   places.red.y - y,
            places.blue.x - x,  places.blue.y - y};
}

/// Returns whether a cell may contain a step or a bend because a map ends nearby. Maps stretch by less than a factor of
/// 4.
bool IsNearEnd(const SourcePlaces &places, int side)
{
    return !(places.toEnd > 4.0 * side);
}

/// Returns the interpolation error in the cells of @p side around a pixel, as a multiple of the tolerance.
double Excess(const CorrectionTwin &twin, double x, double y, int side)
{
    const SourcePlaces middle = twin.At(x, y);
    if (IsNearEnd(middle, 2 * side))
        return 0.0;
    const Values m = ValuesOf(middle, x, y);
    Values bend = {};
    for (const auto &[stepX, stepY] : {std::pair{side, 0}, {0, side}}) {
        const Values before = ValuesOf(twin.At(x - stepX, y - stepY), x - stepX, y - stepY);
        const Values after = ValuesOf(twin.At(x + stepX, y + stepY), x + stepX, y + stepY);
        for (size_t i = 0; i < bend.size(); ++i)
            bend[i] += std::abs(before[i] - 2.0 * m[i] + after[i]);
    }
    // Linear interpolation between exact values is off by at most an eighth of the second difference.
    double excess = bend[FittedPlaces::kGain] / 8.0 / (kGainTolerance * middle.gain);
    for (size_t i = FittedPlaces::kGreenX; i < bend.size(); i += 2)
        excess = std::max(excess, std::hypot(bend[i], bend[i + 1]) / 8.0 / kPlaceTolerance);
    return excess;
}

} // namespace

int CellSide(const CorrectionTwin &twin)
{
    constexpr int kProbes = 32; // along each side
    const Correction &maps = twin.Maps();
    double excess = 0.0;
    for (int i = 0; i <= kProbes; ++i)
        for (int j = 0; j <= kProbes; ++j)
            excess = std::max(excess,
                              Excess(twin, (maps.width - 1) * double(i) / kProbes,
                                     (maps.height - 1) * double(j) / kProbes, kLargestSide));
    int side = kLargestSide;
    for (; side > 1 && excess > 1.0; side /= 2)
        excess /= 4.0;
    return side;
}

FittedPlaces::FittedPlaces(const CorrectionTwin &twin, int cellSide, const TransferCurve::Table *roots)
    : m_twin(twin),
      m_roots(roots),
      m_side(cellSide),
      m_planes(twin.SplitsColors() ? kPlanes : kRedX),
      m_stride((twin.Maps().width / kBlockPixels + 1) * (kBlockPixels / cellSide) + 1)
{
}

void FittedPlaces::Fill(CornerRow *corners, int row) const
{
    corners->values.resize(static_cast<size_t>(m_planes) * m_stride + kPadding);
    corners->rough.resize(m_stride);
    const double y = double(row) * m_side;
    const int needed = std::min(m_stride, (m_twin.Maps().width - 1) / m_side + 2);
    for (int i = 0; i < needed; ++i) {
        const double x = double(i) * m_side;
        const SourcePlaces places = m_twin.At(x, y);
        const Values values = ValuesOf(places, x, y);
        corners->rough[i] = IsNearEnd(places, m_side);
        for (int plane = 0; plane < m_planes; ++plane)
            corners->values[size_t(plane) * m_stride + i] = Near(values[plane]);
        corners->values[size_t(kGainRoot) * m_stride + i] = RootOf(places.gain);
    }
}

void FittedPlaces::Hold(int firstRow, int rows)
{
    const int first = firstRow / m_side, end = (firstRow + rows - 1) / m_side + 2;
    if (m_rows.size() < static_cast<size_t>(end - first))
        m_rows.resize(end - first);
    int made = first;
    for (; made < m_end && made >= m_first; ++made) // keep corners from the previous call
        std::swap(m_rows[made - first], m_rows[made - m_first]);
    for (; made < end; ++made)
        Fill(&m_rows[made - first], made);
    m_first = first;
    m_end = end;
}

bool FittedPlaces::IsRough(int y, int first, int end) const
{
    const auto any = [&](const CornerRow &corners) {
        return std::any_of(corners.rough.begin() + first, corners.rough.begin() + end + 1, [](auto b) { return b; });
    };
    return any(At(y)) || any(At(y + m_side));
}
