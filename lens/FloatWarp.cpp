#include "FloatWarp.h"

#include "FloatWarpBlocks_p.h"
#include "KImage.h"
#include "newLCP.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace {

// One struct per instruction set; code inlined into its functions is compiled for that set.

struct Baseline {
    static void Warp(const FloatWarp::Radial &model, const Positions &in, Positions *out) { WarpBlock(model, in, out); }
    static void Rows(const FloatWarp::Band &band) { RenderRows<Baseline>(band); }
};

#if VITRELUX_VECTORS

struct Avx2 {
    [[gnu::target("avx2")]] static void Warp(const FloatWarp::Radial &model, const Positions &in, Positions *out)
    {
        WarpBlock(model, in, out);
    }
    [[gnu::target("avx2")]] static void Rows(const FloatWarp::Band &band) { RenderRows<Avx2>(band); }
};

struct Avx512 {
    [[gnu::target("arch=x86-64-v4")]] static void Warp(const FloatWarp::Radial &model, const Positions &in,
                                                       Positions *out)
    {
        WarpBlock(model, in, out);
    }
    [[gnu::target("arch=x86-64-v4")]] static void Rows(const FloatWarp::Band &band) { RenderRows<Avx512>(band); }
};

constexpr void (*kRows[])(const FloatWarp::Band &) = {Baseline::Rows, Avx2::Rows, Avx512::Rows};
#else
constexpr void (*kRows[])(const FloatWarp::Band &) = {Baseline::Rows};
#endif

FloatWarp::Path PathOf(const newLCP &lcp, Corrections corrections)
{
    using Path = FloatWarp::Path;
    if (corrections.chromatic) {
        const Path path = corrections.distortion ? Path::ThreeWarps : Path::RedAndBlue;
        return lcp.greenModel.found ? path : Path::Nothing;
    }
    if (corrections.distortion)
        return lcp.distortionModel.found ? Path::OneWarp : Path::Nothing;
    return corrections.vignetting && lcp.vignetteModel.found ? Path::GainOnly : Path::Nothing;
}

/// One side of the picture in the models' frame: @p length pixels, of which [first, end) are in memory.
struct Side {
    Side(int length, int first, int end)
        : between(length > 1 ? static_cast<float>(length - 1) : -1.0F), // a single column has no neighbors: empty range
          from(first == 0 ? -1.0F : std::nextafter(static_cast<float>(first), -1.0F)), // otherwise include `first`
          to(std::min(between, static_cast<float>(end - 1)))
    {
    }

    float between, from, to; // exact, because sides are below 2^24
};

/// Returns the pixels of @p source in the models' frame. @p window contains its rows starting at @p windowRow.
/// Addresses are relative to the picture's first pixel, as if it were in memory.
FloatWarp::Pixels PixelsIn(FloatWarp::Frame frame, const KImage &source, const KImage &window, int windowRow)
{
    const bool turned = frame == FloatWarp::Frame::Turned;
    const Side inRow(source.width(), 0, source.width());
    const Side inColumn(source.height(), windowRow, windowRow + window.height());
    const Side &x = turned ? inColumn : inRow, &y = turned ? inRow : inColumn;
    FloatWarp::Pixels pixels = {};
    pixels.base = window.getData(turned ? source.width() - 1 : 0, -windowRow);
    pixels.stepX = turned ? std::int64_t(window.bytesPerLine()) : kPixelBytes;
    pixels.stepY = turned ? -kPixelBytes : std::int64_t(window.bytesPerLine());
    pixels.rowBytes = window.bytesPerLine();
    pixels.width = static_cast<float>(turned ? source.height() : source.width());
    pixels.height = static_cast<float>(turned ? source.width() : source.height());
    pixels.betweenX = x.between;
    pixels.betweenY = y.between;
    pixels.fromX = x.from;
    pixels.fromY = y.from;
    pixels.toX = x.to;
    pixels.toY = y.to;
    return pixels;
}

} // namespace

FloatWarp::Radial::Radial(const LensParam &model, LensModel kind, float scale)
    : terms(model.coefficients.size()), c(), t1(model.tangential1), t2(model.tangential2)
{
    const bool fisheye = kind == LensModel::Fisheye;
    form = fisheye ? Form::Fisheye : t1 == 0.0 && t2 == 0.0 ? Form::Perspective : Form::Tangential;
    if (terms > (fisheye ? 2 : 3))
        terms = 0;
    std::copy_n(model.coefficients.constData(), terms, c);
    const float s = scale * model.scaleFactor;
    f = fisheye ? scale * model.focalPixels * model.scaleFactor : s * model.focalPixels;
    cx = static_cast<float>(model.centerX * s);
    cy = static_cast<float>(model.centerY * s);
}

FloatWarp::Vignette::Vignette(const LensParam &model, bool isFound, float scale, int longSide)
    : found(isFound),
      cx(static_cast<float>(scale * model.centerX)),
      cy(static_cast<float>(scale * model.centerY)),
      fx(static_cast<float>(longSide * model.focalLengthX)),
      fy(static_cast<float>(longSide * model.focalLengthY))
{
    float c[3] = {};
    std::copy_n(model.coefficients.constData(), std::min(model.coefficients.size(), 3), c);
    const float a = c[0], b = c[1], d = c[2], square = a * a;
    a1 = a;
    a2 = square - b;
    a3 = square * a - 2.0F * a * b + d;
    a4 = square * square - 3.0F * square * b + 2.0F * a * d + b * b;
}

bool FloatWarp::Serves(const KImage &image)
{
    if (!image.m_bitmap || !image.m_bitmap->Data)
        return false;
    const GFL_BITMAP &bitmap = *image.m_bitmap;
    return bitmap.ComponentsPerPixel == 4 && bitmap.BitsPerComponent == 32 && bitmap.BytesPerPixel == kPixelBytes
        && bitmap.BytesPerLine >= static_cast<qint64>(bitmap.Width) * kPixelBytes && bitmap.Width < 1 << 24
        && bitmap.Height < 1 << 24;
}

FloatWarp::Instructions FloatWarp::BestInstructions()
{
#if VITRELUX_VECTORS
    static const Instructions s_best = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512bw")
            && __builtin_cpu_supports("avx512cd") && __builtin_cpu_supports("avx512dq")
            && __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("fma")
        ? Instructions::Avx512
        : __builtin_cpu_supports("avx2") ? Instructions::Avx2
                                         : Instructions::Baseline;
    return s_best;
#else
    return Instructions::Baseline;
#endif
}

FloatWarp::FloatWarp(const newLCP &lcp, Corrections corrections, Frame frame, const KImage &source)
    : m_main(corrections.chromatic ? lcp.greenModel : lcp.distortionModel, lcp.Kind(), lcp.scale),
      m_red(lcp.redGreenModel, LensModel::Perspective, lcp.scale),
      m_blue(lcp.blueGreenModel, LensModel::Perspective, lcp.scale),
      m_vignette(lcp.vignetteModel, corrections.vignetting && lcp.vignetteModel.found, lcp.scale,
                 std::max(source.width(), source.height())),
      m_path(PathOf(lcp, corrections)),
      m_frame(frame),
      m_source(source)
{
}

FloatWarp::RowRange FloatWarp::RowRange::Widened(int height) const
{
    const int more = end - first;
    return {std::max(0, first - more), std::min(height, end + more)};
}

FloatWarp::RowRange FloatWarp::RowsFor(int firstRow, int rows) const
{
    const bool turned = m_frame == Frame::Turned;
    const auto width = static_cast<float>(m_source.width()), height = static_cast<float>(m_source.height());
    float least = static_cast<float>(firstRow), greatest = static_cast<float>(firstRow + rows - 1);
    const auto include = [&](const Positions &at) {
        for (float row : turned ? at.x : at.y) { // skips NaN
            if (row < least)
                least = row < 0.0F ? 0.0F : row;
            if (row > greatest)
                greatest = row > height ? height : row;
        }
    };
    for (const int y : {firstRow, firstRow + rows - 1}) {
        Positions at, main, moved;
        for (int i = 0; i < kBlockPixels; ++i) {
            const float x = static_cast<float>(i) / (kBlockPixels - 1) * (width - 1.0F);
            at.x[i] = turned ? static_cast<float>(y) : x;
            at.y[i] = turned ? width - 1.0F - x : static_cast<float>(y);
        }
        main = at;
        if (m_path == Path::OneWarp || m_path == Path::ThreeWarps) {
            WarpBlock(m_main, at, &main);
            include(main);
        }
        if (m_path == Path::RedAndBlue || m_path == Path::ThreeWarps) {
            WarpBlock(m_red, main, &moved);
            include(moved);
            WarpBlock(m_blue, main, &moved);
            include(moved);
        }
    }
    constexpr int kBelow = 2; // one for the lower neighbor, and one because the range is half-open
    const int margin = 2 + static_cast<int>(greatest - least) / 32;
    return {std::max(0, static_cast<int>(least) - margin),
            std::min(m_source.height(), static_cast<int>(greatest) + kBelow + margin)};
}

void FloatWarp::Render(KImage &rows, int firstRow, Unwritten unwritten, Instructions instructions) const
{
    (void)RenderFrom(m_source, 0, rows, firstRow, unwritten, instructions); // all rows are loaded
}

bool FloatWarp::RenderFrom(const KImage &window, int windowRow, KImage &rows, int firstRow, Unwritten unwritten,
                           Instructions instructions) const
{
    if (rows.width() < 1 || rows.height() < 1 || (m_path == Path::Nothing && unwritten == Unwritten::Stays))
        return true;
    bool missed = false;
    const Band band = {m_main,
                       m_red,
                       m_blue,
                       m_vignette,
                       m_path,
                       m_frame,
                       unwritten,
                       PixelsIn(m_frame, m_source, window, windowRow),
                       window.getData(0, firstRow - windowRow),
                       window.bytesPerLine(),
                       rows.getData(0, 0),
                       rows.bytesPerLine(),
                       rows.width(),
                       rows.height(),
                       firstRow,
                       &missed};
    kRows[std::min(static_cast<size_t>(instructions), std::size(kRows) - 1)](band);
    Q_ASSERT(!missed || window.height() < m_source.height());
    return !missed || window.height() >= m_source.height();
}
