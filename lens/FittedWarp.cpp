#include "FittedWarp.h"

#include "FittedWarpSharp_p.h"
#include "KImage.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

// One struct per instruction set; code inlined into its function is compiled for that set. Floats is as wide as the
// vectors in loops that the compiler vectorizes, because a load that spans two stores is slow. Taps holds values of one
// kernel row.

struct Baseline {
    using Floats = float __attribute__((vector_size(16)));
    using Taps = Floats;
    using Bilinear = PixelByPixel;
    using Shorts = std::int16_t __attribute__((vector_size(16)));
#if VITRELUX_FITTED_VECTORS
    using Codes = CodesBySse2;
    using Together = TogetherBySse2;
#else
    using Codes = CodesPlainly<1>;
    using Together = CodesPlainly<kTogether>;
#endif
    template <typename Kind> static bool Rows(const FittedWarp::Band &band)
    {
        return RenderRows<Kind>(band);
    }
};

#if VITRELUX_FITTED_VECTORS

struct Avx2 {
    using Floats = float __attribute__((vector_size(32)));
    using Taps = Floats;
    using Bilinear = PixelByPixel;
    using Shorts = std::int16_t __attribute__((vector_size(32)));
    using Codes = CodesByAvx2;
    using Together = TogetherByAvx2;
    template <typename Kind> [[gnu::target("avx2")]] static bool Rows(const FittedWarp::Band &band)
    {
        return RenderRows<Kind>(band);
    }
};

struct Avx512 {
    using Floats = float __attribute__((vector_size(64)));
    using Taps = Avx2::Taps;
    using Bilinear = FourByAvx512;
    using Shorts = Avx2::Shorts;
    using Codes = CodesByAvx2;
    using Together = TogetherByAvx2;
    template <typename Kind> [[gnu::target("arch=x86-64-v4")]] static bool Rows(const FittedWarp::Band &band)
    {
        return RenderRows<Kind>(band);
    }
};

#endif

using Rows = bool (*)(const FittedWarp::Band &);

struct Kinds {
    Rows bilinear[2][2]; // indexed by alpha and split colors
    Rows sharpFloats[2][2];
    Rows sharpCodes[2]; // indexed by split colors
};

template <typename Set>
constexpr Kinds kKindsOf = {
    {{Set::template Rows<BilinearBlocks<Set, false, false>>, Set::template Rows<BilinearBlocks<Set, false, true>>},
     {Set::template Rows<BilinearBlocks<Set, true, false>>, Set::template Rows<BilinearBlocks<Set, true, true>>}},
    {{Set::template Rows<Sharp<SharpFloats<Set, false, false>>>,
      Set::template Rows<Sharp<SharpFloats<Set, false, true>>>},
     {Set::template Rows<Sharp<SharpFloats<Set, true, false>>>,
      Set::template Rows<Sharp<SharpFloats<Set, true, true>>>}},
    {Set::template Rows<Sharp<SharpCodes<Set, false>>>, Set::template Rows<Sharp<SharpCodes<Set, true>>>}};

#if VITRELUX_FITTED_VECTORS
constexpr const Kinds *kKinds[] = {&kKindsOf<Baseline>, &kKindsOf<Avx2>, &kKindsOf<Avx512>};
#else
constexpr const Kinds *kKinds[] = {&kKindsOf<Baseline>};
#endif

} // namespace

FittedWarp::FittedWarp(const Correction &correction, Sampling sampling, const TransferCurve &light, Source source)
    : m_twin(correction),
      m_sampling(sampling),
      m_light(correction.light ? light : TransferCurve::Linear()),
      m_source(source),
      m_cellSide(CellSide(m_twin)),
      m_leavesEmpty(m_twin.LeavesEmpty()),
      m_idleMemory(std::make_shared<IdleMemory>())
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
                if (!at.folded && row < least) // false for NaN
                    least = std::max(row, 0.0);
                if (!at.folded && row > greatest)
                    greatest = std::min(row, last);
            }
        }
    }
    constexpr int kReach = 3; // neighbors on either side of a sampling position
    const int margin = kReach + 2 + static_cast<int>(greatest - least) / 32;
    return {std::max(0, static_cast<int>(least) - margin),
            std::min(maps.height, static_cast<int>(greatest) + 1 + margin)};
}

bool FittedWarp::ReadsStored(const KImage &picture) const
{
    return m_sampling == Sampling::Sharp && !m_source.hasAlpha && !m_source.isFloat && picture.m_bitmap
        && picture.type() == GFL_RGB && picture.bitsPerComponent() <= 16;
}

bool FittedWarp::Render(const KImage &window, int windowRow, KImage &rows, int firstRow,
                        Instructions instructions) const
{
    const Correction &maps = m_twin.Maps();
    Q_ASSERT(window.width() == maps.width && rows.width() <= maps.width);
    if (rows.width() < 1 || rows.height() < 1)
        return true;
    FittedPlaces places(m_twin, m_cellSide, m_source.isFloat ? nullptr : m_light.RootTable());
    const Band band = {m_twin,
                       places,
                       *m_idleMemory,
                       m_light,
                       m_source,
                       m_leavesEmpty,
                       window.getData(0, -windowRow),
                       window.bytesPerLine(),
                       window.m_bitmap->BytesPerPixel,
                       windowRow,
                       windowRow + window.height(),
                       rows.getData(0, 0),
                       rows.bytesPerLine(),
                       maps.width,
                       maps.height,
                       rows.width(),
                       rows.height(),
                       firstRow};
    const Kinds &kinds = *kKinds[std::min(static_cast<size_t>(instructions), std::size(kKinds) - 1)];
    const bool alpha = m_source.hasAlpha, split = m_twin.SplitsColors();
    const Rows render = m_sampling == Sampling::Bilinear ? kinds.bilinear[alpha][split]
        : alpha || m_source.isFloat                      ? kinds.sharpFloats[alpha][split]
                                                         : kinds.sharpCodes[split];
    return render(band);
}
