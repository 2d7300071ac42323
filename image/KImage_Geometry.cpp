#include "KImage.h"

#include "KImage_p.h"
#include "PixelRuns_p.h"
#include "ippi.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <new>
#include <numeric>
#include <utility>
#include <vector>

namespace {

using namespace primitives;

// --- Resize ---

struct IppFree {
    void operator()(Ipp8u *block) const { ippsFree(block); }
};
using IppBlock = std::unique_ptr<Ipp8u, IppFree>;

IppBlock AllocateIpp(std::int64_t bytes)
{
    IppBlock block(ippsMalloc_8u(bytes));
    if (!block)
        KThrow(kNotEnoughMemory);
    return block;
}

/// Fills the allocated @p target with the resized @p source; @p T is the type of their components.
template <typename T> void ResizeInto(const KImage &source, KImage &target)
{
    constexpr decltype(&ResizeSuper<T, 1>) kSuper[] = {ResizeSuper<T, 1>, ResizeSuper<T, 3>, ResizeSuper<T, 4>};
    constexpr decltype(&ResizeLinear<T, 1>) kLinear[] = {ResizeLinear<T, 1>, ResizeLinear<T, 3>, ResizeLinear<T, 4>};
    const Size from = {source.width(), source.height()}, to = {target.width(), target.height()};
    const bool grows = to.width > from.width || to.height > from.height;
    std::int64_t specBytes = 0, initBytes = 0, bufferBytes = 0;
    const Status status =
        ResizeGetSize(from, to, grows ? kResizeLinear : kResizeSuper, /*antialiasing=*/0, &specBytes, &initBytes);
    if (status != Status::Ok)
        return; // an image without pixels
    const IppBlock specBlock = AllocateIpp(specBytes);
    auto *spec = reinterpret_cast<ResizeSpec *>(specBlock.get());
    if (grows)
        ResizeLinearInit(from, to, spec, /*init=*/nullptr); // initBytes is 0
    else
        ResizeSuperInit(from, to, spec);
    const int channels = source.m_bitmap->ComponentsPerPixel;
    ResizeGetBufferSize(spec, to, channels, &bufferBytes);
    const IppBlock buffer = AllocateIpp(bufferBytes);

    const int layout = channels == 1 ? 0 : channels == 3 ? 1 : 2;
    const T *src = reinterpret_cast<const T *>(source.getData(0, 0));
    T *dst = reinterpret_cast<T *>(target.getData(0, 0));
    if (grows)
        kLinear[layout](src, source.bytesPerLine(), dst, target.bytesPerLine(), {0, 0}, to, kBorderReplicate, nullptr,
                        spec, buffer.get());
    else
        kSuper[layout](src, source.bytesPerLine(), dst, target.bytesPerLine(), {0, 0}, to, spec, buffer.get());
}

// --- Automatic crop ---

/// Bounds of the valid area: the first and last valid position of each row and of each column. The first is searched
/// only before the middle, and is the middle if there is none; the last is searched only from the middle on, and is the
/// position before the middle if there is none.
struct Outline {
    std::vector<int> leftOf, rightOf, topOf, bottomOf;
};

/// Returns whether a pixel's alpha isn't 0; NaN counts as valid. The stride of a wrapped block may leave floats
/// unaligned.
bool IsValid(const KImage &image, int x, int y)
{
    float alpha;
    std::memcpy(&alpha, image.getData(x, y) + 3 * sizeof(float), sizeof(alpha));
    return alpha != 0.0f;
}

void FindRowEnds(const KImage &image, int y, int &left, int &right)
{
    const int middle = image.width() / 2;
    for (left = 0; left < middle && !IsValid(image, left, y);)
        ++left;
    for (right = image.width() - 1; right >= middle && !IsValid(image, right, y);)
        --right;
}

/// Sets each column's entry in @p edgeOf to the first row, starting at @p y and before @p end, in which the column is
/// valid. Goes row by row with a list of the unresolved columns, because going column by column would fetch one cache
/// line per pixel.
void FindColumnEdges(const KImage &image, int y, int end, int step, std::vector<int> &edgeOf)
{
    std::vector<int> open(edgeOf.size());
    std::iota(open.begin(), open.end(), 0);
    for (; y != end && !open.empty(); y += step) {
        const auto isFound = [&](int x) {
            if (!IsValid(image, x, y))
                return false;
            edgeOf[static_cast<size_t>(x)] = y;
            return true;
        };
        open.erase(std::remove_if(open.begin(), open.end(), isFound), open.end());
    }
}

Outline FindOutline(const KImage &image)
{
    const int width = image.width(), height = image.height(), middle = height / 2;
    const auto rows = static_cast<size_t>(height), columns = static_cast<size_t>(width);
    Outline outline = {std::vector<int>(rows), std::vector<int>(rows), std::vector<int>(columns, middle),
                       std::vector<int>(columns, middle - 1)};
    for (int y = 0; y < height; ++y)
        FindRowEnds(image, y, outline.leftOf[static_cast<size_t>(y)], outline.rightOf[static_cast<size_t>(y)]);
    FindColumnEdges(image, 0, middle, 1, outline.topOf);
    FindColumnEdges(image, height - 1, middle - 1, -1, outline.bottomOf);
    return outline;
}

/// The range along an axis that remains between a pair of opposite sides.
struct Span {
    float first;
    float end;
};

/// Returns the innermost ends of all lines. Lines near the image's edges count less: at distance d from an edge, a line
/// can move an end inward by at most reach(d), because the other pair of sides may cut off the corners instead.
///
/// @param firstOf, lastOf  The ends of each line.
/// @param size             Length of a line.
template <typename Reach>
Span InnermostEnds(const std::vector<int> &firstOf, const std::vector<int> &lastOf, int size, Reach reach)
{
    const int lines = static_cast<int>(firstOf.size());
    const float length = static_cast<float>(size);
    Span span = {0.0f, length};
    for (int line = 0; line < lines; ++line) {
        const auto i = static_cast<size_t>(line);
        const float most = reach(static_cast<float>(line < lines / 2 ? line : lines - 1 - line));
        // A line that is valid up to its last pixel sets no limit.
        const float last = lastOf[i] == size - 1 ? length : static_cast<float>(lastOf[i]);
        span.first = qMax(span.first, qMin(static_cast<float>(firstOf[i]), most));
        span.end = qMin(span.end, qMax(last, length - most));
    }
    return span;
}

bool HasValidPixels(const Outline &outline, int width)
{
    const auto isInFirstHalf = [=](int left) { return left < width / 2; };
    const auto isInSecondHalf = [=](int right) { return right >= width / 2; };
    return std::any_of(outline.leftOf.begin(), outline.leftOf.end(), isInFirstHalf)
        || std::any_of(outline.rightOf.begin(), outline.rightOf.end(), isInSecondHalf);
}

} // namespace

void KImage::Resize(int width, int height)
{
    if (IsEmpty(*this))
        KThrow("");
    KImage resized;
    Resize(resized, width, height);
    std::swap(m_bitmap, resized.m_bitmap);
    std::swap(m_ownsData, resized.m_ownsData);
    m_spareFlag = resized.m_spareFlag;
}

void KImage::Resize(KImage &target, int width, int height)
{
    if (IsEmpty(*this))
        KThrow("");
    if (&target == this) {
        Resize(width, height);
        return;
    }
    if (width == this->width() && height == this->height()) {
        target = *this;
        return;
    }
    if (IsWorkingType(type()) && IsWorkingDepth(bitsPerComponent()) && !HasAlignedRows(*this)) {
        KImage aligned;
        Convert(aligned, type(), bitsPerComponent());
        aligned.Resize(target, width, height);
        return;
    }
    target.AllocBitmap(width, height, type(), bitsPerComponent(), /*clear=*/true, nullptr, 0);
    if (!IsWorkingType(type()))
        return;
    if (IsWorkingDepth(bitsPerComponent()) && !HasAlignedRows(target)) { // it wraps a block with an unaligned stride
        KImage aligned;
        Resize(aligned, width, height);
        aligned.CopyTo(target, 0, 0);
        return;
    }
    if (bitsPerComponent() == 8)
        ResizeInto<Ipp8u>(*this, target);
    else if (bitsPerComponent() == 16)
        ResizeInto<Ipp16u>(*this, target);
    else if (bitsPerComponent() == 32)
        ResizeInto<Ipp32f>(*this, target);
}

void KImage::GetAutoCrop(float &left, float &right, float &top, float &bottom) const
{
    if (IsEmpty(*this))
        return;
    if (bitsPerComponent() != 32 || m_bitmap->ComponentsPerPixel != 4)
        KThrow(kInvalidBitmap);

    Outline outline;
    try {
        outline = FindOutline(*this);
    } catch (const std::bad_alloc &) {
        KThrow(kNotEnoughMemory);
    }
    Span bestX = {0, 0}, bestY = {0, 0};
    float bestArea = 0;
    for (int degrees = 10; degrees < 80 && HasValidPixels(outline, width()); ++degrees) {
        const float radians = static_cast<float>(degrees) * 3.14159265f / 180.0f;
        const float tangent = std::sin(radians) / std::cos(radians);
        const Span x = InnermostEnds(outline.leftOf, outline.rightOf, width(), [=](float d) { return d * tangent; });
        const Span y = InnermostEnds(outline.topOf, outline.bottomOf, height(), [=](float d) { return d / tangent; });
        const float area = (x.end - x.first) * (y.end - y.first);
        if (x.end > x.first && area > bestArea) {
            bestX = x;
            bestY = y;
            bestArea = area;
        }
    }
    left = bestX.first;
    right = bestX.end;
    top = bestY.first;
    bottom = bestY.end;
}
