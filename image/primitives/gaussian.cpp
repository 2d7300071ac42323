#include "gaussian.h"

#include "filter.h"
#include "memory.h"
#include "vectors.h"
#include "wide_loops_p.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>
#include <vector>

#if VITRELUX_VECTORS
#include <xmmintrin.h>
#endif

namespace primitives {

namespace {

constexpr float kReach = 3.5f; // of kernels, in sigmas; one part in 2,000 of the weight lies beyond
constexpr int kGridMargin = 2; // nodes before pixel 0: a node's B-spline extends two steps to both sides

/// A plane that owns its memory or wraps another owner's; empty if the allocation fails.
struct Plane {
    explicit Plane(Size of) : size(of), block(AllocateImage<Ipp32f, 1>(of.width, of.height, &step), Free) { }
    /// Wraps memory of another owner.
    Plane(Size of, Ipp32f *pixels, Step stepBytes) : size(of), step(stepBytes), block(pixels, [](void *) {}) { }

    Ipp32f *Row(std::int64_t y) { return RowAt(block.get(), step, y); }

    Size size;
    Step step = 0;
    std::unique_ptr<Ipp32f, void (*)(void *)> block;
};

/// Nodes of one axis: at the pixels 0, k, 2k and so on, plus a margin on both sides. Nodes farther out would
/// equal the outermost one, because the edge repeats, so the blur on the grid repeats the outermost node.
struct Grid {
    int pixels;
    int spacing; // k

    int Nodes() const { return static_cast<int>((std::int64_t(pixels) + spacing - 2) / spacing) + 1 + 2 * kGridMargin; }
    std::int64_t PixelOf(int node) const { return std::int64_t(node - kGridMargin) * spacing; }
};

/// Returns the centered cubic B-spline.
double BSpline(double t)
{
    const double distance = std::fabs(t);
    if (distance >= 2)
        return 0;
    if (distance >= 1)
        return (2 - distance) * (2 - distance) * (2 - distance) / 6;
    return 2.0 / 3 - distance * distance * (1 - distance / 2);
}

/// Weights of pixels in a node, starting with pixel @c first. The weight of an edge pixel includes the weights of the
/// pixels beyond the edge, which repeat it.
struct NodeWeights {
    NodeWeights(const Grid &grid, int node)
    {
        const std::int64_t center = grid.PixelOf(node), reach = 2 * std::int64_t(grid.spacing) - 1;
        const auto within = [&](std::int64_t pixel) { return std::clamp<std::int64_t>(pixel, 0, grid.pixels - 1); };
        first = within(center - reach);
        std::vector<double> sums(static_cast<std::size_t>(within(center + reach) - first + 1));
        for (std::int64_t d = -reach; d <= reach; ++d)
            sums[static_cast<std::size_t>(within(center + d) - first)] +=
                BSpline(static_cast<double>(d) / grid.spacing) / grid.spacing;
        weights.assign(sums.begin(), sums.end());
    }

    std::int64_t first;
    std::vector<float> weights;
};

/// Sets @p sums to the weighted sum of four rows; Add4 adds that sum to @p sums.
PRIMITIVES_WIDE void SumOf4(const Ipp32f *const rows[4], const float weights[4], Ipp32f *__restrict sums,
                            std::int64_t count)
{
    const Ipp32f *a = rows[0], *b = rows[1], *c = rows[2], *d = rows[3];
    for (std::int64_t i = 0; i < count; ++i)
        sums[i] = weights[0] * a[i] + weights[1] * b[i] + weights[2] * c[i] + weights[3] * d[i];
}

PRIMITIVES_WIDE void Add4(const Ipp32f *const rows[4], const float weights[4], Ipp32f *__restrict sums,
                          std::int64_t count)
{
    const Ipp32f *a = rows[0], *b = rows[1], *c = rows[2], *d = rows[3];
    for (std::int64_t i = 0; i < count; ++i)
        sums[i] += weights[0] * a[i] + weights[1] * b[i] + weights[2] * c[i] + weights[3] * d[i];
}

/// Computes one node's row: the weighted sum of the rows that the node covers.
void ProjectOnNode(const Ipp32f *src, Step srcStep, const NodeWeights &node, Ipp32f *sums, std::int64_t width)
{
    constexpr std::int64_t kRunSamples = 1024; // the sums stay in the first-level cache
    const std::int64_t last = static_cast<std::int64_t>(node.weights.size()) - 1;
    for (std::int64_t start = 0; start < width; start += kRunSamples) {
        const std::int64_t samples = std::min(kRunSamples, width - start);
        for (std::int64_t tap = 0; tap <= last; tap += 4) {
            const Ipp32f *rows[4];
            float weights[4];
            for (int i = 0; i < 4; ++i) { // if fewer than four are left, repeat the last row with weight 0
                rows[i] = RowAt(src, srcStep, node.first + std::min(tap + i, last)) + start;
                weights[i] = tap + i <= last ? node.weights[static_cast<std::size_t>(tap + i)] : 0.0f;
            }
            (tap == 0 ? SumOf4 : Add4)(rows, weights, sums + start, samples);
        }
    }
}

/// Evaluates pixel @p pixel of an axis for @p width samples at once. The first row of @p nodes is that of node @p
/// firstNode.
void ReadOff(const Ipp32f *nodes, Step step, int firstNode, const Grid &grid, int pixel, Ipp32f *dst,
             std::int64_t width)
{
    const int before = pixel / grid.spacing + kGridMargin - firstNode;
    const double phase = static_cast<double>(pixel % grid.spacing) / grid.spacing;
    const Ipp32f *rows[4];
    float weights[4];
    for (int i = 0; i < 4; ++i) {
        rows[i] = RowAt(nodes, step, before - 1 + i);
        weights[i] = static_cast<float>(BSpline(phase + 1 - i));
    }
    SumOf4(rows, weights, dst, width);
}

/// Transposes 4 by 4 pixels.
void TransposeBlock(const Ipp32f *src, Step srcStep, Ipp32f *dst, Step dstStep)
{
#if VITRELUX_VECTORS
    __m128 rows[4];
    for (int y = 0; y < 4; ++y)
        rows[y] = _mm_loadu_ps(RowAt(src, srcStep, y));
    _MM_TRANSPOSE4_PS(rows[0], rows[1], rows[2], rows[3]);
    for (int x = 0; x < 4; ++x)
        _mm_storeu_ps(RowAt(dst, dstStep, x), rows[x]);
#else
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 4; ++x)
            RowAt(dst, dstStep, x)[y] = RowAt(src, srcStep, y)[x];
    }
#endif
}

/// Transposes the first @p size of @p src into @p dst.
void Transpose(Plane &src, Size size, Plane &dst)
{
    constexpr int kTile = 32; // both tiles fit in the first-level cache
    const int wholeWidth = size.width / 4 * 4, wholeHeight = size.height / 4 * 4;
    for (int top = 0; top < wholeHeight; top += kTile) {
        for (int left = 0; left < wholeWidth; left += kTile) {
            for (int y = top; y < std::min(top + kTile, wholeHeight); y += 4) {
                for (int x = left; x < std::min(left + kTile, wholeWidth); x += 4)
                    TransposeBlock(src.Row(y) + x, src.step, dst.Row(x) + y, dst.step);
            }
        }
    }
    for (int y = 0; y < size.height; ++y) { // the remainder at the right and bottom
        for (int x = y < wholeHeight ? wholeWidth : 0; x < size.width; ++x)
            dst.Row(x)[y] = src.Row(y)[x];
    }
}

Status BlurPlainly(const Ipp32f *src, Step srcStep, Ipp32f *dst, Step dstStep, Size size, float sigma)
{
    const int kernelSize = 2 * static_cast<int>(std::ceil(kReach * sigma)) + 1;
    std::int64_t bytes = 0;
    FilterGaussGetBufferSize(size, kernelSize, &bytes);
    const std::unique_ptr<void, void (*)(void *)> buffer(Allocate(bytes), Free);
    return buffer
        ? FilterGaussBorder(src, srcStep, dst, dstStep, size, kernelSize, sigma, kBorderReplicate, buffer.get())
        : Status::NoMemory;
}

/// The grids of a plane's rows and columns, with projection and evaluation. Works in blocks of node rows, which are
/// transposed for the columns so that every loop accesses memory sequentially; planes on the grid are stored
/// transposed.
class GridBlur {
public:
    GridBlur(Size size, int spacing)
        : m_rows({size.height, spacing}),
          m_columns({size.width, spacing}),
          m_block({size.width, kBlock + kOverlap}),
          m_transposed({kBlock + kOverlap, size.width})
    {
    }

    bool HasMemory() const { return m_block.block && m_transposed.block; }
    Size GridSize() const { return {m_rows.Nodes(), m_columns.Nodes()}; }

    void Project(const Ipp32f *src, Step srcStep, Plane &onGrid)
    {
        std::vector<NodeWeights> columnWeights;
        for (int node = 0; node < m_columns.Nodes(); ++node)
            columnWeights.emplace_back(m_columns, node);
        for (int first = 0; first < m_rows.Nodes(); first += kBlock) {
            const int count = std::min(kBlock, m_rows.Nodes() - first);
            for (int i = 0; i < count; ++i)
                ProjectOnNode(src, srcStep, NodeWeights(m_rows, first + i), m_block.Row(i), m_columns.pixels);
            Transpose(m_block, {m_columns.pixels, count}, m_transposed);
            for (int node = 0; node < m_columns.Nodes(); ++node)
                ProjectOnNode(m_transposed.block.get(), m_transposed.step,
                              columnWeights[static_cast<std::size_t>(node)], onGrid.Row(node) + first, count);
        }
    }

    void ReadOffAll(Plane &onGrid, Ipp32f *dst, Step dstStep)
    {
        for (int first = 0, y = 0; y < m_rows.pixels; first += kBlock) {
            const int count = std::min(kBlock + kOverlap, m_rows.Nodes() - first);
            for (int x = 0; x < m_columns.pixels; ++x)
                ReadOff(onGrid.block.get() + first, onGrid.step, 0, m_columns, x, m_transposed.Row(x), count);
            Transpose(m_transposed, {count, m_columns.pixels}, m_block);
            // A row needs the node before it, its own node, and the next two.
            for (; y < m_rows.pixels && y / m_rows.spacing + kGridMargin + 2 < first + count; ++y)
                ReadOff(m_block.block.get(), m_block.step, first, m_rows, y, RowAt(dst, dstStep, y), m_columns.pixels);
        }
    }

private:
    static constexpr int kBlock = 125, kOverlap = 3; // node rows; together a multiple of the vector length

    Grid m_rows, m_columns;
    Plane m_block, m_transposed;
};

Status BlurOnGrid(const Ipp32f *src, Step srcStep, Ipp32f *dst, Step dstStep, Size size, float sigma)
{
    // The B-splines add 2 / 3 to the variance of the blur on the grid. The blur's variance is at least 2 unless the
    // grid has the smallest spacing.
    constexpr float kSplines = 2.0f / 3, kMinOnGrid = 2;
    const int spacing = std::max(2, static_cast<int>(sigma / std::sqrt(kMinOnGrid + kSplines)));
    const float relative = sigma / static_cast<float>(spacing);

    GridBlur grid(size, spacing);
    const Size onGridSize = grid.GridSize();
    // Keep the grid in the target until the result overwrites it: the first access to new memory takes longer than the
    // blur.
    const bool fits = onGridSize.width <= size.width && onGridSize.height <= size.height;
    Plane onGrid = fits ? Plane(onGridSize, dst, dstStep) : Plane(onGridSize);
    Plane blurred(onGridSize);
    if (!grid.HasMemory() || !onGrid.block || !blurred.block)
        return Status::NoMemory;
    grid.Project(src, srcStep, onGrid);
    const Status status = BlurPlainly(onGrid.block.get(), onGrid.step, blurred.block.get(), blurred.step, onGrid.size,
                                      std::sqrt(relative * relative - kSplines));
    if (status == Status::Ok)
        grid.ReadOffAll(blurred, dst, dstStep);
    return status;
}

} // namespace

Status GaussianBlur(const Ipp32f *src, Step srcStep, Ipp32f *dst, Step dstStep, Size size, float sigma)
{
    if (!src || !dst)
        return Status::NullPointer;
    if (CheckSize(size) != Status::Ok)
        return Status::BadSize;
    if (!(sigma > 0))
        return Status::BadArgument;
    if (sigma <= kLargestPlainSigma)
        return BlurPlainly(src, srcStep, dst, dstStep, size, sigma);
    try {
        return BlurOnGrid(src, srcStep, dst, dstStep, size, std::min(sigma, kLargestSigma));
    } catch (const std::bad_alloc &) {
        return Status::NoMemory;
    }
}

} // namespace primitives
