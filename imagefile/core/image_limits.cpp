#include "image_limits.h"

#include <algorithm>
#include <atomic>

namespace imagefile {

namespace {

std::atomic<std::int64_t> maxPixels{0};

constexpr double kPixelsPerMegapixel = 1e6;

Status CheckPixels(std::int64_t width, std::int64_t height)
{
    const std::int64_t most = maxPixels.load(std::memory_order_relaxed), pixels = width * height; // <= 2^40
    if (most <= 0 || pixels <= most)
        return Status::Ok();
    return Status::Fail(GFL_ERROR_NO_MEMORY,
                        Text("%lld x %lld pixels are %.12g megapixels; at most %.12g are allowed",
                             static_cast<long long>(width), static_cast<long long>(height),
                             static_cast<double>(pixels) / kPixelsPerMegapixel,
                             static_cast<double>(most) / kPixelsPerMegapixel));
}

} // namespace

void SetMaxPixels(std::int64_t pixels)
{
    maxPixels.store(pixels, std::memory_order_relaxed);
}

Status CheckImageSize(std::int64_t width, std::int64_t height, int channels, int bits)
{
    if (width < 1 || width > kMaxSidePixels || height < 1 || height > kMaxSidePixels)
        return Status::Fail(GFL_ERROR_FILE_READ,
                            Text("the file claims %lld x %lld pixels; sides of 1 to %lld are supported",
                                 static_cast<long long>(width), static_cast<long long>(height),
                                 static_cast<long long>(kMaxSidePixels)));
    if (Status status = CheckPixels(width, height); !status)
        return status;
    const std::int64_t bytes = width * height * channels * (bits / 8); // <= 2^20 * 2^20 * 4 * 4 = 2^44
    if (bytes > kMaxImageBytes)
        return Status::Fail(GFL_ERROR_NO_MEMORY,
                            Text("%lld x %lld pixels take %lld bytes; pictures up to %lld bytes are supported",
                                 static_cast<long long>(width), static_cast<long long>(height),
                                 static_cast<long long>(bytes), static_cast<long long>(kMaxImageBytes)));
    return Status::Ok();
}

Status CheckClaim(std::int64_t storedBytes, std::int64_t deliveredBytes, std::uint64_t fileBytes, std::int64_t maxRatio)
{
    if (std::max(storedBytes, deliveredBytes) <= kHarmlessBytes
        || static_cast<std::uint64_t>(storedBytes / maxRatio) <= fileBytes)
        return Status::Ok();
    return Status::Fail(GFL_ERROR_FILE_READ,
                        Text("the file claims %lld bytes of pixels but holds only %llu bytes",
                             static_cast<long long>(storedBytes), static_cast<unsigned long long>(fileBytes)));
}

} // namespace imagefile
