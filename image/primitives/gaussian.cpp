#include "gaussian.h"

#include "filter.h"
#include "memory.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <new>
#include <vector>

namespace primitives {

namespace {

constexpr float kPlainReach = 3.7f, kGridReach = 4.0f; // in sigmas
constexpr int kGridMargin = 2; // nodes before pixel 0: a node's B-spline reaches two steps to both sides

/// A plane of its own; empty where the memory can't be had.
struct Plane {
    explicit Plane(Size of) : size(of), block(AllocateImage<Ipp32f, 1>(of.width, of.height, &step)) { }

    Ipp32f *Row(std::int64_t y) { return RowAt(block.get(), step, y); }

    struct Release {
        void operator()(Ipp32f *pixels) const { Free(pixels); }
    };
    Size size;
    Step step = 0;
    std::unique_ptr<Ipp32f, Release> block;
};

/// Nodes stand at the pixels 0, k, 2k and so on, with a margin on both sides beyond which all are alike.
struct Grid {
    int pixels;
    int spacing; // k

    int Nodes() const { return (pixels - 1 + spacing - 1) / spacing + 1 + 2 * kGridMargin; }
    std::int64_t PixelOf(int node) const { return std::int64_t(node - kGridMargin) * spacing; }
};

/// The centred cubic B-spline.
double BSpline(double t)
{
    const double distance = std::fabs(t);
    if (distance >= 2)
        return 0;
    if (distance >= 1)
        return (2 - distance) * (2 - distance) * (2 - distance) / 6;
    return 2.0 / 3 - distance * distance * (1 - distance / 2);
}

/// The part of each pixel, from @p first on, in a node; the pixels beyond an edge count with the edge's.
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

void AddScaled(const Ipp32f *__restrict src, float weight, Ipp32f *__restrict sums, std::int64_t count)
{
    for (std::int64_t i = 0; i < count; ++i)
        sums[i] += weight * src[i];
}

/// The rows of a plane projected on a grid's nodes: each row is read once, and added to the nodes that it lies under.
void ProjectRows(const Ipp32f *src, Step srcStep, const Grid &grid, Plane &nodes)
{
    std::vector<NodeWeights> weightsOf;
    for (int node = 0; node < grid.Nodes(); ++node) {
        weightsOf.emplace_back(grid, node);
        std::fill_n(nodes.Row(node), nodes.size.width, 0.0f);
    }
    int open = 0; // the first node that still gets something
    for (std::int64_t y = 0; y < grid.pixels; ++y) {
        for (int node = open; node < grid.Nodes(); ++node) {
            const auto &[first, weights] = weightsOf[static_cast<std::size_t>(node)];
            const std::int64_t tap = y - first;
            if (tap < 0)
                break;
            if (tap < std::int64_t(weights.size()))
                AddScaled(RowAt(src, srcStep, y), weights[static_cast<std::size_t>(tap)], nodes.Row(node),
                          nodes.size.width);
            else if (node == open)
                ++open;
        }
    }
}

void Combine4(const Ipp32f *const rows[4], const float weights[4], Ipp32f *__restrict dst, std::int64_t count)
{
    const Ipp32f *a = rows[0], *b = rows[1], *c = rows[2], *d = rows[3];
    for (std::int64_t i = 0; i < count; ++i)
        dst[i] = weights[0] * a[i] + weights[1] * b[i] + weights[2] * c[i] + weights[3] * d[i];
}

/// The rows of a plane out of a grid's nodes.
void ReadOffRows(Plane &nodes, const Grid &grid, Ipp32f *dst, Step dstStep)
{
    for (int y = 0; y < grid.pixels; ++y) {
        const int before = y / grid.spacing + kGridMargin;
        const double phase = static_cast<double>(y % grid.spacing) / grid.spacing;
        const Ipp32f *rows[4];
        float weights[4];
        for (int i = 0; i < 4; ++i) {
            rows[i] = nodes.Row(before - 1 + i);
            weights[i] = static_cast<float>(BSpline(phase + 1 - i));
        }
        Combine4(rows, weights, RowAt(dst, dstStep, y), nodes.size.width);
    }
}

void Transpose(Plane &src, Plane &dst)
{
    constexpr int kBlock = 16; // pixels of a cache line
    for (int top = 0; top < src.size.height; top += kBlock) {
        const int bottom = std::min(top + kBlock, src.size.height);
        for (int x = 0; x < src.size.width; ++x) {
            Ipp32f *out = dst.Row(x);
            for (int y = top; y < bottom; ++y)
                out[y] = src.Row(y)[x];
        }
    }
}

Status BlurPlainly(const Ipp32f *src, Step srcStep, Ipp32f *dst, Step dstStep, Size size, float sigma, float reach)
{
    const int kernelSize = 2 * static_cast<int>(std::ceil(reach * sigma)) + 1;
    std::int64_t bytes = 0;
    FilterGaussGetBufferSize(size, kernelSize, &bytes);
    const std::unique_ptr<void, void (*)(void *)> buffer(Allocate(bytes), Free);
    return buffer
        ? FilterGaussBorder(src, srcStep, dst, dstStep, size, kernelSize, sigma, kBorderReplicate, buffer.get())
        : Status::NoMemory;
}

/// Rows first, then the columns as rows of the transposed plane: every loop runs along memory.
Status BlurOnGrid(const Ipp32f *src, Step srcStep, Ipp32f *dst, Step dstStep, Size size, float sigma)
{
    constexpr float kGridSigma2 = 14.0f / 3; // spacing is such that the variance on the grid comes to 4 or more
    const int spacing = std::max(2, static_cast<int>(sigma / std::sqrt(kGridSigma2)));
    const Grid rows = {size.height, spacing}, columns = {size.width, spacing};
    const float relative = sigma / static_cast<float>(spacing);

    Plane blurred({rows.Nodes(), columns.Nodes()}), both({rows.Nodes(), columns.Nodes()});
    Plane rowNodes({size.width, rows.Nodes()}), turned({rows.Nodes(), size.width});
    if (!blurred.block || !both.block || !rowNodes.block || !turned.block)
        return Status::NoMemory;
    ProjectRows(src, srcStep, rows, rowNodes);
    Transpose(rowNodes, turned);
    ProjectRows(turned.block.get(), turned.step, columns, both);
    const Status status = BlurPlainly(both.block.get(), both.step, blurred.block.get(), blurred.step, both.size,
                                      std::sqrt(relative * relative - 2.0f / 3), kGridReach);
    if (status != Status::Ok)
        return status;
    ReadOffRows(blurred, columns, turned.block.get(), turned.step);
    Transpose(turned, rowNodes);
    ReadOffRows(rowNodes, rows, dst, dstStep);
    return Status::Ok;
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
        return BlurPlainly(src, srcStep, dst, dstStep, size, sigma, kPlainReach);
    try {
        return BlurOnGrid(src, srcStep, dst, dstStep, size, std::min(sigma, kLargestSigma));
    } catch (const std::bad_alloc &) {
        return Status::NoMemory;
    }
}

} // namespace primitives
