#include "resize.h"

#include <algorithm>
#include <new>

namespace primitives {

namespace {

/// Source positions that contribute to one target position: @p count, starting at @p first, and their weights.
struct Taps {
    std::int32_t first;
    std::int32_t count;
    std::int64_t weights; // index of the first weight
};

/// Number of products summed in single precision before the sum is added to a double: keeps a flat picture flat when
/// reduced by factors of thousands.
constexpr int kTapsInFloat = 32;

constexpr int kRowsAtOnce = 3;

/// Samples of a row processed at a time: sums and their source rows stay in the first-level cache.
constexpr std::int64_t kRunSamples = 256;

/// Returns the maximum number of weights of an axis: with area weighting a source position contributes to one target
/// position, or to two if the edge between them cuts it.
std::int64_t MaxWeights(int src, int dst, ResizeMethod method)
{
    return method == kResizeSuper ? std::int64_t(src) + dst : 2 * std::int64_t(dst);
}

} // namespace

/// Header of a block that continues with the taps of the target's columns, those of its rows, and all weights.
struct ResizeSpec {
    Size src;
    Size dst;

    Taps *Columns() { return reinterpret_cast<Taps *>(this + 1); }
    Taps *Rows() { return Columns() + dst.width; }
    float *Weights() { return reinterpret_cast<float *>(Rows() + dst.height); }
    const Taps *Columns() const { return const_cast<ResizeSpec *>(this)->Columns(); }
    const Taps *Rows() const { return const_cast<ResizeSpec *>(this)->Rows(); }
    const float *Weights() const { return const_cast<ResizeSpec *>(this)->Weights(); }
};
static_assert(sizeof(ResizeSpec) % alignof(Taps) == 0);

namespace {

/// Fills the taps of one axis, computed in integer multiples of 1 / dst source pixels. Returns the index of the next
/// free weight.
std::int64_t FillSuperTaps(int src, int dst, Taps *taps, float *weights, std::int64_t next)
{
    for (std::int64_t i = 0; i < dst; ++i) {
        const std::int64_t start = i * src, end = start + src;
        const std::int64_t first = start / dst, last = (end - 1) / dst;
        taps[i] = {static_cast<std::int32_t>(first), static_cast<std::int32_t>(last - first + 1), next};
        for (std::int64_t k = first; k <= last; ++k) {
            const std::int64_t covered = std::min(end, (k + 1) * dst) - std::max(start, k * dst);
            weights[next++] = static_cast<float>(static_cast<double>(covered) / src);
        }
    }
    return next;
}

/// Like FillSuperTaps, but for bilinear interpolation and in multiples of 1 / (2 dst) source pixels.
std::int64_t FillLinearTaps(int src, int dst, Taps *taps, float *weights, std::int64_t next)
{
    const std::int64_t unit = 2 * std::int64_t(dst);
    for (std::int64_t i = 0; i < dst; ++i) {
        const std::int64_t position = std::clamp<std::int64_t>((2 * i + 1) * src - dst, 0, (src - 1) * unit);
        const double fraction = static_cast<double>(position % unit) / static_cast<double>(unit);
        taps[i] = {static_cast<std::int32_t>(position / unit), fraction > 0 ? 2 : 1, next};
        weights[next++] = static_cast<float>(1 - fraction);
        if (fraction > 0)
            weights[next++] = static_cast<float>(fraction);
    }
    return next;
}

template <typename FillTaps> Status Init(Size src, Size dst, ResizeSpec *spec, FillTaps fill)
{
    if (!spec)
        return Status::NullPointer;
    if (CheckSize(src) != Status::Ok || CheckSize(dst) != Status::Ok)
        return Status::BadSize;
    new (spec) ResizeSpec{src, dst};
    const std::int64_t next = fill(src.width, dst.width, spec->Columns(), spec->Weights(), 0);
    fill(src.height, dst.height, spec->Rows(), spec->Weights(), next);
    return Status::Ok;
}

/// Adds the weighted sum of @p Rows rows, the first at @p src, to @p sums. Takes several rows at a time, because each
/// call reads and writes the sums in memory.
template <int Rows, typename T>
void AddRows(const T *src, Step srcStep, const float *weights, float *sums, std::int64_t count)
{
    const T *rows[Rows];
    float w[Rows];
    for (int k = 0; k < Rows; ++k) {
        rows[k] = RowAt(src, srcStep, k);
        w[k] = weights[k];
    }
    for (std::int64_t i = 0; i < count; ++i) {
        float sum = sums[i];
        for (int k = 0; k < Rows; ++k)
            sum += w[k] * static_cast<float>(rows[k][i]);
        sums[i] = sum;
    }
}

/// Computes @p count samples, at most kRunSamples, of the weighted sum of the rows of @p taps.
template <typename T>
void SumRows(const T *src, Step srcStep, const Taps &taps, const float *weights, float *sums, std::int64_t count)
{
    const auto sumGroup = [=](int from, int to) {
        std::fill_n(sums, count, 0.0f);
        int k = from;
        for (; k + kRowsAtOnce <= to; k += kRowsAtOnce)
            AddRows<kRowsAtOnce>(RowAt(src, srcStep, std::int64_t(taps.first) + k), srcStep, weights + k, sums, count);
        for (; k < to; ++k)
            AddRows<1>(RowAt(src, srcStep, std::int64_t(taps.first) + k), srcStep, weights + k, sums, count);
    };
    if (taps.count <= kTapsInFloat) {
        sumGroup(0, taps.count);
        return;
    }
    double totals[kRunSamples] = {};
    for (int from = 0; from < taps.count; from += kTapsInFloat) {
        sumGroup(from, std::min(from + kTapsInFloat, taps.count));
        for (std::int64_t i = 0; i < count; ++i)
            totals[i] += static_cast<double>(sums[i]);
    }
    for (std::int64_t i = 0; i < count; ++i)
        sums[i] = static_cast<float>(totals[i]);
}

/// Computes one pixel of @p C channels from a row of sums.
template <typename T, int C> void SumColumns(const float *row, const Taps &taps, const float *weights, T *pixel)
{
    const float *from = row + std::int64_t(taps.first) * C;
    double totals[C] = {};
    for (int start = 0; start < taps.count; start += kTapsInFloat) {
        float sums[C] = {};
        for (int k = start; k < std::min(start + kTapsInFloat, taps.count); ++k) {
            for (int c = 0; c < C; ++c)
                sums[c] += weights[k] * from[std::int64_t(k) * C + c];
        }
        for (int c = 0; c < C; ++c)
            totals[c] += static_cast<double>(sums[c]);
    }
    for (int c = 0; c < C; ++c)
        pixel[c] = Saturate<T>(static_cast<float>(totals[c]));
}

template <typename T, int C>
Status Resample(const T *src, Step srcStep, T *dst, Step dstStep, Point dstOffset, Size dstSize, const ResizeSpec *spec,
                void *buffer)
{
    if (!src || !dst || !spec || !buffer)
        return Status::NullPointer;
    if (CheckSize(dstSize) != Status::Ok || dstOffset.x < 0 || dstOffset.y < 0
        || dstSize.width > spec->dst.width - dstOffset.x || dstSize.height > spec->dst.height - dstOffset.y)
        return Status::BadSize;
    const Taps *columns = spec->Columns() + dstOffset.x;
    const Taps &lastColumn = columns[dstSize.width - 1];
    const std::int64_t firstSample = std::int64_t(columns[0].first) * C;
    const std::int64_t endSample = (std::int64_t(lastColumn.first) + lastColumn.count) * C;
    float *sums = static_cast<float *>(buffer);

    for (int y = 0; y < dstSize.height; ++y) {
        const Taps &rows = spec->Rows()[dstOffset.y + y];
        for (std::int64_t i = firstSample; i < endSample; i += kRunSamples)
            SumRows(src + i, srcStep, rows, spec->Weights() + rows.weights, sums + i,
                    std::min(kRunSamples, endSample - i));
        T *dstRow = RowAt(dst, dstStep, y);
        for (int x = 0; x < dstSize.width; ++x)
            SumColumns<T, C>(sums, columns[x], spec->Weights() + columns[x].weights, dstRow + std::int64_t(x) * C);
    }
    return Status::Ok;
}

} // namespace

Status ResizeGetSize(Size src, Size dst, ResizeMethod method, int antialiasing, std::int64_t *specBytes,
                     std::int64_t *initBytes)
{
    if (!specBytes || !initBytes)
        return Status::NullPointer;
    if (CheckSize(src) != Status::Ok || CheckSize(dst) != Status::Ok)
        return Status::BadSize;
    if (antialiasing || (method != kResizeSuper && method != kResizeLinear)
        || (method == kResizeSuper && (dst.width > src.width || dst.height > src.height)))
        return Status::BadArgument;
    const std::int64_t weights = MaxWeights(src.width, dst.width, method) + MaxWeights(src.height, dst.height, method);
    const std::int64_t taps = std::int64_t(dst.width) + dst.height;
    *specBytes = static_cast<std::int64_t>(sizeof(ResizeSpec) + sizeof(Taps) * static_cast<std::size_t>(taps)
                                           + sizeof(float) * static_cast<std::size_t>(weights));
    *initBytes = 0;
    return Status::Ok;
}

Status ResizeSuperInit(Size src, Size dst, ResizeSpec *spec)
{
    if (dst.width > src.width || dst.height > src.height)
        return Status::BadArgument;
    return Init(src, dst, spec, FillSuperTaps);
}

Status ResizeLinearInit(Size src, Size dst, ResizeSpec *spec, void *)
{
    return Init(src, dst, spec, FillLinearTaps);
}

Status ResizeGetBufferSize(const ResizeSpec *spec, Size dst, int channels, std::int64_t *bytes)
{
    if (!spec || !bytes)
        return Status::NullPointer;
    if (CheckSize(dst) != Status::Ok || channels < 1)
        return Status::BadSize;
    *bytes = std::int64_t(spec->src.width) * channels * std::int64_t(sizeof(float));
    return Status::Ok;
}

template <typename T, int C>
Status ResizeSuper(const T *src, Step srcStep, T *dst, Step dstStep, Point dstOffset, Size dstSize,
                   const ResizeSpec *spec, void *buffer)
{
    return Resample<T, C>(src, srcStep, dst, dstStep, dstOffset, dstSize, spec, buffer);
}

template <typename T, int C>
Status ResizeLinear(const T *src, Step srcStep, T *dst, Step dstStep, Point dstOffset, Size dstSize, BorderMode border,
                    const T *, const ResizeSpec *spec, void *buffer)
{
    if (border != kBorderReplicate)
        return Status::BadArgument;
    return Resample<T, C>(src, srcStep, dst, dstStep, dstOffset, dstSize, spec, buffer);
}

#define INSTANTIATE(T, C)                                                                                              \
    template Status ResizeSuper<T, C>(const T *, Step, T *, Step, Point, Size, const ResizeSpec *, void *);            \
    template Status ResizeLinear<T, C>(const T *, Step, T *, Step, Point, Size, BorderMode, const T *,                 \
                                       const ResizeSpec *, void *);
INSTANTIATE(Ipp8u, 1)
INSTANTIATE(Ipp8u, 3)
INSTANTIATE(Ipp8u, 4)
INSTANTIATE(Ipp16u, 1)
INSTANTIATE(Ipp16u, 3)
INSTANTIATE(Ipp16u, 4)
INSTANTIATE(Ipp32f, 1)
INSTANTIATE(Ipp32f, 3)
INSTANTIATE(Ipp32f, 4)
#undef INSTANTIATE

} // namespace primitives
