#include "FittedWarp.h"

#include "FittedWarpBlocks_p.h"
#include "KImage.h"

#include <algorithm>
#include <cmath>

namespace {

// One struct per instruction set; code inlined into its function is compiled for that set.

struct Plain {
    template <typename Kind> static bool Rows(const FittedWarp::Band &band) { return RenderRows<Kind>(band); }
};

struct Avx2 {
    template <typename Kind> [[gnu::target("avx2")]] static bool Rows(const FittedWarp::Band &band)
    {
        return RenderRows<Kind>(band);
    }
};

struct Avx512 {
    template <typename Kind> [[gnu::target("arch=x86-64-v4")]] static bool Rows(const FittedWarp::Band &band)
    {
        return RenderRows<Kind>(band);
    }
};

using Rows = bool (*)(const FittedWarp::Band &);

/// The loops by alpha and split colors.
template <typename Set>
constexpr Rows kRows[] = {Set::template Rows<Bilinear<false, false>>, Set::template Rows<Bilinear<false, true>>,
                          Set::template Rows<Bilinear<true, false>>, Set::template Rows<Bilinear<true, true>>};

constexpr const Rows *kRowsOf[] = {kRows<Plain>, kRows<Avx2>, kRows<Avx512>};

} // namespace

FittedWarp::FittedWarp(const Correction &correction, Sampling sampling, const TransferCurve &light, Source source)
    : m_twin(correction),
      m_sampling(sampling),
      m_light(light),
      m_source(source),
      m_cellSide(CellSide(m_twin)),
      m_leavesEmpty(m_twin.LeavesEmpty())
{
}

FittedWarp::RowRange FittedWarp::RowsFor(int firstRow, int rows) const
{
    constexpr int kProbes = 64;
    const Correction &maps = m_twin.Maps();
    const auto last = static_cast<double>(maps.height - 1);
    double least = std::min<double>(firstRow, last), greatest = std::min<double>(firstRow + rows - 1, last);
    for (const int y : {firstRow, firstRow + rows - 1}) {
        for (int i = 0; i <= kProbes; ++i) {
            const SourcePlaces at = m_twin.At((maps.width - 1) * double(i) / kProbes, y);
            for (const double row : {at.red.y, at.green.y, at.blue.y}) {
                if (!at.folded && row < least) // not what is not a number
                    least = std::max(row, 0.0);
                if (!at.folded && row > greatest)
                    greatest = std::min(row, last);
            }
        }
    }
    constexpr int kReach = 3; // neighbors to either side of a place
    const int margin = kReach + 2 + static_cast<int>(greatest - least) / 32;
    return {std::max(0, static_cast<int>(least) - margin),
            std::min(maps.height, static_cast<int>(greatest) + 1 + margin)};
}

bool FittedWarp::Render(const KImage &window, int windowRow, KImage &rows, int firstRow,
                        Instructions instructions) const
{
    const Correction &maps = m_twin.Maps();
    Q_ASSERT(window.width() == maps.width && rows.width() <= maps.width);
    if (rows.width() < 1 || rows.height() < 1)
        return true;
    FittedPlaces places(m_twin, m_cellSide);
    const Band band = {m_twin,
                       places,
                       m_light,
                       m_source,
                       m_leavesEmpty,
                       window.getData(0, -windowRow),
                       window.bytesPerLine(),
                       windowRow,
                       windowRow + window.height(),
                       rows.getData(0, 0),
                       rows.bytesPerLine(),
                       maps.width,
                       maps.height,
                       rows.width(),
                       rows.height(),
                       firstRow};
    const int kind = (m_source.hasAlpha ? 2 : 0) + (m_twin.SplitsColors() ? 1 : 0);
    return kRowsOf[static_cast<int>(instructions)][kind](band);
}
