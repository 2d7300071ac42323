#include "filter.h"

#include "wide_loops_p.h"

#include <algorithm>
#include <cmath>

namespace primitives {

/// Header of a block; the weights follow it in memory, from the center outward.
struct GaussianSpec {
    int radius;
    int padding; // keeps the weights aligned to 8 bytes

    float *Weights() { return reinterpret_cast<float *>(this + 1); }
    const float *Weights() const { return reinterpret_cast<const float *>(this + 1); }
};

namespace {

bool IsKernelSize(int kernelSize)
{
    return kernelSize >= 1 && kernelSize % 2 == 1;
}

/// Returns the size in bytes of a GaussianSpec with its weights, aligned so that a row of floats can follow.
std::int64_t SpecBytes(int kernelSize)
{
    return std::int64_t(sizeof(GaussianSpec)) + (kernelSize / 2 + 1) * std::int64_t(sizeof(float));
}

PRIMITIVES_WIDE void StartWith(const float *center, float weight, float *__restrict sums, std::int64_t count)
{
    for (std::int64_t i = 0; i < count; ++i)
        sums[i] = weight * center[i];
}

/// Two rows at the same distance from the center.
struct Pair {
    const float *before, *after;
};

PRIMITIVES_WIDE void AddPair(Pair pair, float weight, float *__restrict sums, std::int64_t samples)
{
    for (std::int64_t i = 0; i < samples; ++i)
        sums[i] += weight * (pair.before[i] + pair.after[i]);
}

/// Adds four pairs at once, so that the sums are read and written only once.
PRIMITIVES_WIDE void AddPairs4(const Pair pairs[4], const float weights[4], float *__restrict sums,
                               std::int64_t samples)
{
    const Pair a = pairs[0], b = pairs[1], c = pairs[2], d = pairs[3];
    for (std::int64_t i = 0; i < samples; ++i) {
        const float first = weights[0] * (a.before[i] + a.after[i]) + weights[1] * (b.before[i] + b.after[i]);
        const float second = weights[2] * (c.before[i] + c.after[i]) + weights[3] * (d.before[i] + d.after[i]);
        sums[i] += first + second;
    }
}

/// Fills @p sums with the weighted sum of the center and the pairs pairAt(1) to pairAt(radius), in parts that fit in
/// the first-level cache.
template <typename PairAt>
void SumUp(const float *center, PairAt pairAt, const GaussianSpec &spec, float *sums, std::int64_t count)
{
    constexpr std::int64_t kRunSamples = 1024;
    for (std::int64_t start = 0; start < count; start += kRunSamples) {
        const std::int64_t samples = std::min(kRunSamples, count - start);
        const auto runAt = [&](int d) {
            const Pair whole = pairAt(d);
            return Pair{whole.before + start, whole.after + start};
        };
        StartWith(center + start, spec.Weights()[0], sums + start, samples);
        int d = 1;
        for (; d + 3 <= spec.radius; d += 4) {
            const Pair pairs[] = {runAt(d), runAt(d + 1), runAt(d + 2), runAt(d + 3)};
            AddPairs4(pairs, spec.Weights() + d, sums + start, samples);
        }
        for (; d <= spec.radius; ++d)
            AddPair(runAt(d), spec.Weights()[d], sums + start, samples);
    }
}

/// Computes row @p y blurred along the columns, and repeats its first and last values radius times as padding.
void BlurColumns(const Ipp32f *src, Step srcStep, Size size, int y, const GaussianSpec &spec, float *padded)
{
    float *sums = padded + spec.radius;
    const auto pairAt = [&](std::int64_t d) {
        return Pair{RowAt(src, srcStep, std::max<std::int64_t>(y - d, 0)),
                    RowAt(src, srcStep, std::min<std::int64_t>(y + d, size.height - 1))};
    };
    SumUp(RowAt(src, srcStep, y), pairAt, spec, sums, size.width);
    std::fill_n(padded, spec.radius, sums[0]);
    std::fill_n(sums + size.width, spec.radius, sums[size.width - 1]);
}

void BlurRow(const float *padded, std::int64_t width, const GaussianSpec &spec, Ipp32f *dst)
{
    const float *center = padded + spec.radius;
    SumUp(
        center,
        [=](int d) {
            return Pair{center - d, center + d};
        },
        spec, dst, width);
}

} // namespace

Status FilterGaussianGetBufferSize(Size size, int kernelSize, std::int64_t *specBytes, std::int64_t *bufferBytes)
{
    if (!specBytes || !bufferBytes)
        return Status::NullPointer;
    if (CheckSize(size) != Status::Ok || !IsKernelSize(kernelSize))
        return Status::BadSize;
    *specBytes = SpecBytes(kernelSize);
    *bufferBytes = (std::int64_t(size.width) + 2 * (kernelSize / 2)) * std::int64_t(sizeof(float));
    return Status::Ok;
}

Status FilterGaussianInit(int kernelSize, float sigma, BorderMode border, GaussianSpec *spec)
{
    if (!spec)
        return Status::NullPointer;
    if (!IsKernelSize(kernelSize))
        return Status::BadSize;
    if (!(sigma > 0) || border != kBorderReplicate)
        return Status::BadArgument;
    spec->radius = kernelSize / 2;
    const auto weightAt = [sigma](int d) { return std::exp(-0.5 * d * d / (double(sigma) * double(sigma))); };
    double sum = 1;
    for (int d = 1; d <= spec->radius; ++d)
        sum += 2 * weightAt(d);
    for (int d = 0; d <= spec->radius; ++d)
        spec->Weights()[d] = static_cast<float>(weightAt(d) / sum);
    return Status::Ok;
}

Status FilterGaussianBorder(const Ipp32f *src, Step srcStep, Ipp32f *dst, Step dstStep, Size size,
                            const GaussianSpec *spec, void *buffer)
{
    if (!src || !dst || !spec || !buffer)
        return Status::NullPointer;
    if (CheckSize(size) != Status::Ok)
        return Status::BadSize;
    float *padded = static_cast<float *>(buffer);
    for (int y = 0; y < size.height; ++y) {
        BlurColumns(src, srcStep, size, y, *spec, padded);
        BlurRow(padded, size.width, *spec, RowAt(dst, dstStep, y));
    }
    return Status::Ok;
}

Status FilterGaussGetBufferSize(Size size, int kernelSize, std::int64_t *bytes)
{
    std::int64_t specBytes = 0, bufferBytes = 0;
    const Status status = FilterGaussianGetBufferSize(size, kernelSize, &specBytes, &bufferBytes);
    if (status == Status::Ok && bytes)
        *bytes = specBytes + bufferBytes;
    return bytes ? status : Status::NullPointer;
}

Status FilterGaussBorder(const Ipp32f *src, Step srcStep, Ipp32f *dst, Step dstStep, Size size, int kernelSize,
                         float sigma, BorderMode border, void *buffer)
{
    auto *spec = static_cast<GaussianSpec *>(buffer);
    const Status status = FilterGaussianInit(kernelSize, sigma, border, spec);
    if (status != Status::Ok)
        return status;
    return FilterGaussianBorder(src, srcStep, dst, dstStep, size, spec,
                                static_cast<unsigned char *>(buffer) + SpecBytes(kernelSize));
}

Status FilterMedianCross(const Ipp16s *src, Step srcStep, Ipp16s *dst, Step dstStep, Size size, MaskSize mask)
{
    if (mask != kMask3x3 && mask != kMask5x5)
        return Status::BadArgument;
    const int radius = mask / 2;
    return ForRows(src, srcStep, dst, dstStep, size, [=](const Ipp16s *srcRow, Ipp16s *dstRow) {
        for (std::int64_t x = 0; x < size.width; ++x) {
            Ipp16s values[9];
            Ipp16s *end = values;
            *end++ = srcRow[x];
            for (int d = 1; d <= radius; ++d) {
                *end++ = srcRow[x - d];
                *end++ = srcRow[x + d];
                *end++ = RowAt(srcRow, srcStep, -d)[x];
                *end++ = RowAt(srcRow, srcStep, d)[x];
            }
            Ipp16s *middle = values + (end - values) / 2;
            std::nth_element(values, middle, end);
            dstRow[x] = *middle;
        }
    });
}

Status FilterSobelHoriz(const Ipp16s *src, Step srcStep, Ipp16s *dst, Step dstStep, Size size)
{
    const auto smoothed = [](const Ipp16s *row, std::int64_t x) { return row[x - 1] + 2 * row[x] + row[x + 1]; };
    return ForRows(src, srcStep, dst, dstStep, size, [=](const Ipp16s *srcRow, Ipp16s *dstRow) {
        const Ipp16s *above = RowAt(srcRow, srcStep, -1), *below = RowAt(srcRow, srcStep, 1);
        for (std::int64_t x = 0; x < size.width; ++x)
            dstRow[x] = Saturate<Ipp16s>(smoothed(above, x) - smoothed(below, x));
    });
}

} // namespace primitives
