#include "hdr_codec.h"

#include <algorithm>
#include <cmath>

namespace imagefile {

namespace {

constexpr std::size_t kMaxRun = 127;     // pixels that one count can repeat
constexpr std::size_t kMaxLiteral = 128; // bytes after one count
constexpr std::size_t kMinRun = 4;       // shorter runs save nothing

// Clamps values, including infinity, to the format's maximum, 255/256 * 2^127; negative numbers and NaN become 0.
float Clamp(float value)
{
    constexpr float kGreatest = 0.99609375f * 1.7014118346046923e38f;
    return value > 0.0f ? std::min(value, kGreatest) : 0.0f;
}

void ToRgbe(const float *rgb, std::uint8_t *rgbe)
{
    const float values[3] = {Clamp(rgb[0]), Clamp(rgb[1]), Clamp(rgb[2])};
    const float greatest = std::max({values[0], values[1], values[2]});
    int exponent = 0;
    if (std::lround(std::ldexp(std::frexp(greatest, &exponent), 8)) > 255)
        ++exponent; // rounded up to the next power of two
    const bool isBlack = exponent < -127 || !(greatest > 0.0f);
    for (int c = 0; c < 3; ++c)
        rgbe[c] = static_cast<std::uint8_t>(isBlack ? 0 : std::lround(std::ldexp(values[c], 8 - exponent)));
    rgbe[3] = static_cast<std::uint8_t>(isBlack ? 0 : exponent + 128);
}

// Returns the number of pixels from @p x on that are equal in one channel.
std::size_t RunLength(const std::uint8_t *channel, std::size_t x, std::size_t width)
{
    std::size_t end = x + 1;
    while (end < width && end - x < kMaxRun && channel[end * kRgbeBytes] == channel[x * kRgbeBytes])
        ++end;
    return end - x;
}

void PackChannel(const std::uint8_t *channel, std::size_t width, std::vector<std::uint8_t> *out)
{
    for (std::size_t x = 0; x < width;) {
        const std::size_t run = RunLength(channel, x, width);
        if (run >= kMinRun) {
            out->push_back(static_cast<std::uint8_t>(128 + run));
            out->push_back(channel[x * kRgbeBytes]);
            x += run;
            continue;
        }
        std::size_t end = x;
        while (end < width && end - x < kMaxLiteral && RunLength(channel, end, width) < kMinRun)
            ++end;
        out->push_back(static_cast<std::uint8_t>(end - x));
        for (; x < end; ++x)
            out->push_back(channel[x * kRgbeBytes]);
    }
}

void PackRow(const std::vector<std::uint8_t> &rgbe, std::size_t width, std::vector<std::uint8_t> *out)
{
    *out = {2, 2, static_cast<std::uint8_t>(width >> 8), static_cast<std::uint8_t>(width)};
    for (std::size_t c = 0; c < kRgbeBytes; ++c)
        PackChannel(rgbe.data() + c, width, out);
}

} // namespace

Status WriteHdr(const GFL_BITMAP &bitmap, const SaveOptions &options, Sink *sink)
{
    const std::string header = Text("#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y %d +X %d\n", bitmap.Height, bitmap.Width);
    if (Status status = sink->WriteAt(0, header.data(), header.size()); !status)
        return status;
    const bool isPacked =
        options.compression != 0 && bitmap.Width >= kMinPackedWidth && bitmap.Width <= kMaxPackedWidth;
    const RowConverter convert = ChooseConverter({bitmap.BitsPerComponent, gflChannelsOfType(bitmap.Type)}, {32, 3});
    const auto width = static_cast<std::size_t>(bitmap.Width);
    std::vector<float> row(width * 3);
    std::vector<std::uint8_t> rgbe(width * kRgbeBytes), packed;
    const std::uint8_t *src = bitmap.Data;
    for (int y = 0; y < bitmap.Height; ++y, src += bitmap.BytesPerLine) {
        convert(src, row.data(), width, 255);
        for (std::size_t x = 0; x < width; ++x)
            ToRgbe(row.data() + x * 3, rgbe.data() + x * kRgbeBytes);
        if (isPacked)
            PackRow(rgbe, width, &packed);
        const std::vector<std::uint8_t> &bytes = isPacked ? packed : rgbe;
        if (Status status = sink->WriteAt(sink->Size(), bytes.data(), bytes.size()); !status)
            return status;
    }
    return Status::Ok();
}

} // namespace imagefile
