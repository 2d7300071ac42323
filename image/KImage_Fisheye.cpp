#include "KImage.h"

#include "CircleRefinement.h"
#include "KImage_p.h"
#include "KOmp.h"
#include "PixelSampler_p.h"
#include "RansacFisheye.h"
#include "ippi.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

namespace {

using primitives::Step;

constexpr int kRays = 360; // one per degree
constexpr int kMargin = 2; // the median reads this far beyond the region, on all sides
constexpr int kIterations = 500;
constexpr int kMinSupport = kRays / 8; // edges needed to confirm a circle; about 20 agree by chance
constexpr double kMinRadius = 0.25;    // relative to the smaller side, like kLargestOffset
constexpr double kLargestOffset = 0.2;
constexpr double kSmallerSideSteps = 1000; // larger frames are sampled in steps of several pixels
constexpr double kNominalTolerance = 0.2;  // largest relative difference from the nominal radius
/// Code for full brightness. Four times this, the edge filter's largest response, still fits in 16 bits.
constexpr float kFullCode = 8191;
constexpr Ipp16s kMinEdge = 650; // response to a step of 2 % of kFullCode

struct Ray {
    double x, y;
};

const std::vector<Ray> &RayTable()
{
    static const std::vector<Ray> table = [] {
        std::vector<Ray> rays;
        for (int degrees = 0; degrees < kRays; ++degrees)
            rays.push_back({std::cos(degrees * M_PI / 180), std::sin(degrees * M_PI / 180)});
        return rays;
    }();
    return table;
}

/// A plane of 360 columns, one per ray, and one row per step outward from the middle, with a margin on all sides.
class PolarPlane {
public:
    explicit PolarPlane(int rows)
        : m_rows(rows), m_block(ippiMalloc_16s_C1(kRays + 2 * kMargin, rows + 2 * kMargin, &m_step), ippiFree)
    {
        if (!m_block)
            KThrow(kNotEnoughMemory);
    }

    int Rows() const { return m_rows; }
    Step StepBytes() const { return m_step; }
    primitives::Size Size() const { return {kRays, m_rows}; }

    /// Returns the address of a sample. The margin has indices below 0 and beyond the last ray and row.
    Ipp16s *At(int ray, int row) const
    {
        return primitives::RowAt(m_block.get(), m_step, row + kMargin) + ray + kMargin;
    }

    /// Fills the margin: columns wrap around, the first and last rows are repeated.
    void Wrap() const
    {
        ippiCopy_16s_C1R(At(kRays - kMargin, 0), m_step, At(-kMargin, 0), m_step, {kMargin, m_rows});
        ippiCopy_16s_C1R(At(0, 0), m_step, At(kRays, 0), m_step, {kMargin, m_rows});
        for (int i = 1; i <= kMargin; ++i) {
            ippiCopy_16s_C1R(At(-kMargin, 0), m_step, At(-kMargin, -i), m_step, {kRays + 2 * kMargin, 1});
            ippiCopy_16s_C1R(At(-kMargin, m_rows - 1), m_step, At(-kMargin, m_rows - 1 + i), m_step,
                             {kRays + 2 * kMargin, 1});
        }
    }

private:
    int m_rows;
    Step m_step = 0;
    std::unique_ptr<Ipp16s, void (*)(void *)> m_block;
};

/// Sampling positions in the frame.
struct PolarGrid {
    explicit PolarGrid(const KImage &image)
        : middleX((image.width() - 1) / 2.0),
          middleY((image.height() - 1) / 2.0),
          smallerSide(qMin(image.width(), image.height())),
          stepPx(qMax(1.0, smallerSide / kSmallerSideSteps)),
          rows(static_cast<int>(std::hypot(middleX, middleY) / stepPx) + 1)
    {
    }

    /// Returns the last row of a ray within the frame.
    int LastRow(const Ray &ray) const
    {
        const double toSide = std::fabs(ray.x) > 1e-9 ? middleX / std::fabs(ray.x) : 1e18;
        const double toTop = std::fabs(ray.y) > 1e-9 ? middleY / std::fabs(ray.y) : 1e18;
        return qMin(rows - 1, static_cast<int>(qMin(toSide, toTop) / stepPx));
    }

    double middleX, middleY;
    int smallerSide;
    double stepPx;
    int rows;
};

/// Returns brightness as a code. Codes are proportional to the square root of brightness, so that the step from a dim
/// picture to black outweighs steps between bright objects. Transparent pixels and NaN are black.
template <typename T> Ipp16s CodeOf(const float *pixel, int channels)
{
    const float visible = channels == 4 && !(pixel[3] > 0) ? 0.0f : Luma(pixel, channels) / kFullValue<T>;
    return static_cast<Ipp16s>(kFullCode * std::sqrt(visible > 0 ? qMin(visible, 1.0f) : 0.0f) + 0.5f);
}

float BrightnessOf(Ipp16s code)
{
    return static_cast<float>(code) * static_cast<float>(code);
}

/// Samples the frame along its rays; a step of several pixels averages one sample per pixel.
template <typename T> void SampleRays(const PixelSampler<T> &sampler, const PolarGrid &grid, const PolarPlane &polar)
{
    const int samples = qMax(1, static_cast<int>(grid.stepPx + 0.5)), channels = sampler.Channels();
    for (int i = 0; i < kRays; ++i) {
        const Ray &ray = RayTable()[static_cast<size_t>(i)];
        const int last = grid.LastRow(ray);
        for (int row = 0; row <= last; ++row) {
            float sum[4] = {}, pixel[4];
            for (int k = 0; k < samples; ++k) {
                const double distance = (row + (k + 0.5) / samples - 0.5) * grid.stepPx;
                sampler.Read(static_cast<float>(grid.middleX + distance * ray.x),
                             static_cast<float>(grid.middleY + distance * ray.y), 0, channels, pixel);
                for (int c = 0; c < channels; ++c)
                    sum[c] += pixel[c] / static_cast<float>(samples);
            }
            *polar.At(i, row) = CodeOf<T>(sum, channels);
        }
        for (int row = last + 1; row < polar.Rows(); ++row)
            *polar.At(i, row) = *polar.At(i, last);
    }
}

/// Denoised frame in polar form, and its edge response, which is positive where brightness falls outward.
struct PolarFrame {
    explicit PolarFrame(const KImage &image) : grid(image), codes(grid.rows), edges(grid.rows)
    {
        PolarPlane &sampled = edges; // borrowed until the edge filter fills it
        WithSampler(image, [&](const auto &sampler) { SampleRays(sampler, grid, sampled); });
        sampled.Wrap();
        ippiFilterMedianCross_16s_C1R(sampled.At(0, 0), sampled.StepBytes(), codes.At(0, 0), codes.StepBytes(),
                                      codes.Size(), primitives::kMask5x5);
        codes.Wrap();
        ippiFilterSobelHoriz_16s_C1R(codes.At(0, 0), codes.StepBytes(), edges.At(0, 0), edges.StepBytes(),
                                     edges.Size());
    }

    /// Returns the mean brightness of the rows [first, first + count) of a ray.
    float Brightness(int ray, int first, int count) const
    {
        float sum = 0;
        for (int i = 0; i < count; ++i)
            sum += BrightnessOf(*codes.At(ray, qBound(0, first + i, grid.rows - 1)));
        return sum / static_cast<float>(count);
    }

    PolarGrid grid;
    PolarPlane codes;
    PolarPlane edges;
};

constexpr int kLevelRows = 4; // averaged on each side of an edge to measure the brightness there

/// Returns a quarter of the median brightness at the minimum radius, but at least 1 % of full brightness; brighter
/// samples lie inside the circle.
float InsideLevel(const PolarFrame &frame)
{
    const int row = static_cast<int>(kMinRadius * frame.grid.smallerSide / frame.grid.stepPx);
    std::vector<float> levels;
    for (int ray = 0; ray < kRays; ++ray)
        levels.push_back(frame.Brightness(ray, row, kLevelRows));
    std::nth_element(levels.begin(), levels.begin() + kRays / 2, levels.end());
    return qMax(levels[kRays / 2] / 4, kFullCode * kFullCode / 100);
}

/// Returns the fractional row at which a ray's brightness crosses the midpoint between the levels on both sides of an
/// edge.
double CrossingRow(const PolarFrame &frame, int ray, int edgeRow)
{
    const float inside = frame.Brightness(ray, edgeRow - 2 - kLevelRows, kLevelRows);
    const float middle = (inside + frame.Brightness(ray, edgeRow + 3, kLevelRows)) / 2;
    for (int row = edgeRow - 2; row <= edgeRow + 2; ++row) {
        const float here = frame.Brightness(ray, row, 1), next = frame.Brightness(ray, row + 1, 1);
        if (here >= middle && next < middle)
            return row + static_cast<double>((here - middle) / (here - next));
    }
    return edgeRow;
}

/// Range along the rays in which to look for an edge, in pixels.
struct Reach {
    double first, last;
};

/// Returns the strongest edge of each ray or, for a ray that leaves the frame inside the circle, an inside point at the
/// frame's edge. Rays without a clear edge are left out.
QVector<RansacFisheye::Data> MeasureRays(const PolarFrame &frame, Reach reach)
{
    const float insideLevel = InsideLevel(frame);
    const double stepPx = frame.grid.stepPx;
    const int first = qMax(1, static_cast<int>(qMin(reach.first / stepPx, 1e9)));
    QVector<RansacFisheye::Data> measurements;
    for (int i = 0; i < kRays; ++i) {
        const Ray &ray = RayTable()[static_cast<size_t>(i)];
        const int last = frame.grid.LastRow(ray);
        if (frame.Brightness(i, last - kLevelRows, kLevelRows) > insideLevel) {
            measurements.append({last * stepPx, ray.x, ray.y, /*inside=*/true});
            continue;
        }
        int best = first;
        for (int row = first; row <= qMin(last, static_cast<int>(qMin(reach.last / stepPx, 1e9))); ++row)
            best = *frame.edges.At(i, row) > *frame.edges.At(i, best) ? row : best;
        if (best <= last && *frame.edges.At(i, best) >= kMinEdge)
            measurements.append({CrossingRow(frame, i, best) * stepPx, ray.x, ray.y, /*inside=*/false});
    }
    return measurements;
}

RansacFisheye::Model FindCircle(const KImage &image, double nominalRadius)
{
    constexpr RansacFisheye::Model kNone = {0, 0, 0};
    constexpr int kMinSide = 32; // smallest side at which edges can be distinguished
    CheckWorkingPixels(image);
    if (!std::isfinite(nominalRadius) || nominalRadius < 0)
        KThrow(kInvalidParameter);
    if (qMin(image.width(), image.height()) < kMinSide)
        return kNone;

    const PolarFrame frame(image);
    const double smallerSide = frame.grid.smallerSide, freedom = kLargestOffset * smallerSide;
    const Reach reach = nominalRadius > 0
        ? Reach{(1 - kNominalTolerance) * nominalRadius - freedom, (1 + kNominalTolerance) * nominalRadius + freedom}
        : Reach{kMinRadius * smallerSide, INFINITY};
    RansacFisheye fit;
    fit.data = MeasureRays(frame, reach);
    fit.iterations = kIterations;
    fit.maxCenterOffset2 = freedom * freedom;
    fit.width = image.width();
    fit.height = image.height();
    qsrand(0); // so that the same frame gives the same circle
    fit.process();
    if (!(fit.bestScore > 0))
        return kNone;
    const RefinedCircle circle = RefineCircle(fit);
    const bool isNominal =
        nominalRadius == 0 || std::fabs(circle.model.radius / nominalRadius - 1) <= kNominalTolerance;
    return circle.support >= kMinSupport && isNominal ? circle.model : kNone;
}

} // namespace

void KImage::GetFisheyeRadiusOffset(double &radius, double &offsetX, double &offsetY) const
{
    GetCateyeRadiusOffset(radius, offsetX, offsetY, /*nominalRadius=*/0);
}

void KImage::GetCateyeRadiusOffset(double &radius, double &offsetX, double &offsetY, double nominalRadius) const
{
    const RansacFisheye::Model circle = FindCircle(*this, nominalRadius);
    radius = circle.radius;
    offsetX = circle.centerX;
    offsetY = circle.centerY;
}

void KImage::CleanFisheyeData(double radius, double offsetX, double offsetY)
{
    CheckWorkingPixels(*this);
    if (!(radius > 0) || !std::isfinite(radius) || !std::isfinite(offsetX) || !std::isfinite(offsetY))
        KThrow(kInvalidParameter); // without a circle the whole picture would be erased
    const double centerX = (width() - 1) / 2.0 + offsetX, centerY = (height() - 1) / 2.0 + offsetY;
    const size_t pixelBytes = m_bitmap->BytesPerPixel;
#pragma omp parallel for schedule(static) num_threads(komp_num_threads)
    for (int y = 0; y < height(); ++y) {
        const double dy = y - centerY;
        for (int x = 0; x < width(); ++x) {
            if (std::sqrt((x - centerX) * (x - centerX) + dy * dy) > radius)
                std::memset(getData(x, y), 0, pixelBytes);
        }
    }
}
