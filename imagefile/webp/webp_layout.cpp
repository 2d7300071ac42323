// Source: "WebP Container Specification", https://developers.google.com/speed/webp/docs/riff_container.
#include "core/limits.h"
#include "webp_codec.h"

#include <algorithm>
#include <cstring>
#include <webp/decode.h>

namespace imagefile {

namespace {

constexpr std::uint64_t kRiffHeader = 12, kChunkHeader = 8;

Status Damaged(const char *why)
{
    return Status::Fail(GFL_ERROR_FILE_READ, Text("WebP: %s", why));
}

int LittleEndian24(const std::uint8_t *p)
{
    return p[0] | p[1] << 8 | p[2] << 16;
}

/// Iterator over the chunks in a range of a file.
class Chunks {
public:
    Chunks(const Source &source, std::uint64_t begin, std::uint64_t end)
        : m_source(source), m_next(begin), m_end(std::min(end, source.Size()))
    {
    }

    /// Moves to the next chunk; returns false after the last one.
    bool Next()
    {
        std::uint8_t size[4];
        m_at = m_next;
        if (m_at > m_end || m_end - m_at < kChunkHeader || m_source.ReadAt(m_at, m_name, 4) < 4
            || m_source.ReadAt(m_at + 4, size, 4) < 4)
            return false;
        m_size = static_cast<std::uint64_t>(LittleEndian24(size)) | std::uint64_t(size[3]) << 24;
        m_next = m_at + kChunkHeader + m_size + (m_size & 1);
        return ++m_count <= kMaxChunks;
    }

    bool Is(const char *name) const { return std::memcmp(m_name, name, 4) == 0; }
    std::uint64_t At() const { return m_at; }
    WebpRange Contents() const { return {m_at + kChunkHeader, m_size}; }
    bool IsComplete() const { return m_size <= m_end - m_at - kChunkHeader; }

private:
    const Source &m_source;
    std::uint64_t m_at = 0, m_size = 0, m_next, m_end;
    std::size_t m_count = 0;
    char m_name[4] = {};
};

/// Reads the frame whose first chunk is the current one of @p chunks.
Status ReadFrame(const Source &source, Chunks *chunks, WebpLayout *layout)
{
    const std::uint64_t begin = chunks->At();
    bool hasAlphaChunk = false;
    do {
        if (!chunks->IsComplete())
            return Damaged("the file ends early");
        hasAlphaChunk = hasAlphaChunk || chunks->Is("ALPH");
        if (!chunks->Is("VP8 ") && !chunks->Is("VP8L"))
            continue;
        std::uint8_t head[32]; // of the bitstream, with its chunk header
        WebPBitstreamFeatures features;
        if (WebPGetFeatures(head, source.ReadAt(chunks->At(), head, sizeof head), &features) != VP8_STATUS_OK)
            return Damaged("damaged picture header");
        layout->frameWidth = features.width;
        layout->frameHeight = features.height;
        layout->hasAlpha = features.has_alpha != 0 || hasAlphaChunk;
        layout->frame = {begin, chunks->Contents().at + chunks->Contents().size - begin};
        return Status::Ok();
    } while (chunks->Next());
    return Damaged("the file ends before its picture");
}

/// Reads a frame of an animation: position, size, duration, chunks.
Status ReadAnimationFrame(const Source &source, const WebpRange &range, WebpLayout *layout)
{
    std::uint8_t head[16];
    if (range.size < sizeof head || source.ReadAt(range.at, head, sizeof head) < sizeof head)
        return Damaged("the file ends early");
    layout->left = 2 * LittleEndian24(head);
    layout->top = 2 * LittleEndian24(head + 3);
    Chunks chunks(source, range.at + sizeof head, range.at + range.size);
    if (!chunks.Next())
        return Damaged("the first frame has no picture");
    if (Status status = ReadFrame(source, &chunks, layout); !status)
        return status;
    if (layout->frameWidth != LittleEndian24(head + 6) + 1 || layout->frameHeight != LittleEndian24(head + 9) + 1
        || layout->frameWidth > layout->width - layout->left || layout->frameHeight > layout->height - layout->top)
        return Damaged("the first frame has a wrong size");
    layout->hasAlpha = layout->hasAlpha || !layout->CoversCanvas();
    return Status::Ok();
}

Status ReadCanvas(const Source &source, const WebpRange &range, WebpLayout *layout)
{
    constexpr int kAnimation = 2;
    std::uint8_t head[10];
    if (range.size < sizeof head || source.ReadAt(range.at, head, sizeof head) < sizeof head)
        return Damaged("the file ends early");
    layout->isAnimated = (head[0] & kAnimation) != 0;
    layout->width = LittleEndian24(head + 4) + 1;
    layout->height = LittleEndian24(head + 7) + 1;
    return Status::Ok();
}

bool BeginsPicture(const Chunks &chunks)
{
    return chunks.Is("ALPH") || chunks.Is("VP8 ") || chunks.Is("VP8L");
}

Status ReadStillPicture(const Source &source, Chunks *chunks, WebpLayout *layout)
{
    if (Status status = ReadFrame(source, chunks, layout); !status)
        return status;
    if (layout->width == 0) { // there is no VP8X chunk
        layout->width = layout->frameWidth;
        layout->height = layout->frameHeight;
    }
    return layout->CoversCanvas() ? Status::Ok() : Damaged("picture and canvas differ in size");
}

Status TakeChunk(const Source &source, Chunks *chunks, WebpLayout *layout)
{
    if (chunks->Is("VP8X") && layout->width == 0)
        return ReadCanvas(source, chunks->Contents(), layout);
    const bool hasFrame = layout->frame.size > 0;
    if (chunks->Is("ANMF") && layout->isAnimated && !hasFrame)
        return ReadAnimationFrame(source, chunks->Contents(), layout);
    if (BeginsPicture(*chunks) && !layout->isAnimated && !hasFrame)
        return ReadStillPicture(source, chunks, layout);
    const std::pair<const char *, WebpRange *> blocks[] = {
        {"ICCP", &layout->icc}, {"EXIF", &layout->exif}, {"XMP ", &layout->xmp}};
    for (const auto &[name, range] : blocks)
        if (chunks->Is(name) && range->size == 0)
            *range = chunks->Contents();
    return Status::Ok();
}

} // namespace

Status ReadWebpLayout(const Source &source, WebpLayout *layout)
{
    Chunks chunks(source, kRiffHeader, source.Size());
    while (chunks.Next())
        if (Status status = TakeChunk(source, &chunks, layout); !status)
            return status;
    if (layout->frame.size == 0)
        return Damaged("the file ends before its picture");
    const int channels = layout->hasAlpha ? 4 : 3;
    if (Status status = CheckImageSize(layout->width, layout->height, channels, 8); !status)
        return status;
    const std::int64_t bytes = std::int64_t(layout->width) * layout->height * channels;
    return CheckClaim(bytes, bytes, layout->frame.size, kUnboundedRatio);
}

} // namespace imagefile
