#include "png_metadata.h"

#include "core/byte_reader.h"
#include "core/hexadecimal.h"
#include "core/image_limits.h"
#include "photoshop_resources.h"

#include <algorithm>
#include <zlib.h>

namespace imagefile {

namespace {

constexpr std::size_t kChunkFrame = 12; // length, name, checksum

// Decompresses a zlib stream to at most @p budget bytes and reduces the budget; empty if the stream is damaged or
// exceeds it. All chunks of a file share one budget, which bounds the total time.
Bytes Inflate(const std::uint8_t *data, std::size_t size, std::size_t *budget)
{
    Bytes out;
    z_stream stream = {};
    stream.next_in = const_cast<std::uint8_t *>(data);
    stream.avail_in = static_cast<uInt>(size); // <= kMaxMetadataBytes
    if (inflateInit(&stream) != Z_OK)
        return out;
    int result = Z_OK;
    std::uint8_t piece[16384];
    while (result == Z_OK && out.size() < *budget) {
        stream.next_out = piece;
        stream.avail_out = sizeof piece;
        result = inflate(&stream, Z_NO_FLUSH);
        out.insert(out.end(), piece, stream.next_out);
    }
    inflateEnd(&stream);
    *budget -= std::min(*budget, out.size());
    return result == Z_STREAM_END ? out : Bytes();
}

// Returns the block in a "Raw profile type" text, which consists of a line feed, a line each for the type and the
// decimal length, and the block's bytes in hexadecimal.
Bytes RawProfile(const Bytes &text)
{
    auto at = std::find_if(text.begin(), text.end(), [](std::uint8_t c) { return c != '\n'; });
    for (int line = 0; line < 2; ++line) {
        at = std::find(at, text.end(), '\n');
        at += at != text.end() ? 1 : 0;
    }
    Bytes block;
    int high = -1;
    for (; at != text.end(); ++at) {
        const int digit = HexDigit(static_cast<char>(*at));
        if (digit < 0)
            continue;
        if (high >= 0)
            block.push_back(static_cast<std::uint8_t>(high << 4 | digit));
        high = high >= 0 ? -1 : digit;
    }
    return block;
}

// Returns the IPTC in a profile. Some programs store IPTC directly; older ones and this layer wrap it in a
// Photoshop resource.
Bytes IptcOf(const Bytes &profile)
{
    constexpr std::uint8_t kDataSet = 0x1C;
    return !profile.empty() && profile[0] == kDataSet ? profile : FindResource(profile, PhotoshopResource::Iptc);
}

/// Reader for the chunks of one file.
class ChunkReader {
public:
    explicit ChunkReader(Metadata *metadata) : m_metadata(*metadata) { }

    void Take(const std::string &name, const Bytes &chunk);

private:
    Bytes RestOf(const Bytes &chunk, std::size_t at, bool isPacked);
    Bytes InternationalText(const Bytes &chunk, std::size_t keyEnd);
    void TakeText(const std::string &key, const Bytes &text);
    void DecodeExif(const Bytes &bytes);

    Metadata &m_metadata;
    std::size_t m_budget = kMaxMetadataBytes; // remaining unpacked bytes
};

void ChunkReader::DecodeExif(const Bytes &bytes)
{
    if (m_metadata.exif.empty())
        DecodeExifBlock(bytes, &m_metadata.exif);
}

void ChunkReader::TakeText(const std::string &key, const Bytes &text)
{
    if (key == kPngXmpKey)
        m_metadata.xmp = text;
    else if (key == kPngIptcKey || (key == "Raw profile type 8bim" && m_metadata.iptc.empty()))
        m_metadata.iptc = IptcOf(RawProfile(text));
    else if (key == "Raw profile type exif" || key == "Raw profile type APP1")
        DecodeExif(RawProfile(text));
    else if (key == "Raw profile type xmp" && m_metadata.xmp.empty())
        m_metadata.xmp = RawProfile(text);
}

// Returns the end of a zero-terminated text that begins at @p at, or the end of the chunk.
std::size_t TextEnd(const Bytes &chunk, std::size_t at)
{
    const auto begin = chunk.begin() + static_cast<std::ptrdiff_t>(std::min(at, chunk.size()));
    return static_cast<std::size_t>(std::find(begin, chunk.end(), 0) - chunk.begin());
}

// Returns the rest of a chunk from @p at on, decompressed if necessary.
Bytes ChunkReader::RestOf(const Bytes &chunk, std::size_t at, bool isPacked)
{
    if (at >= chunk.size())
        return Bytes();
    if (!isPacked)
        return Bytes(chunk.begin() + static_cast<std::ptrdiff_t>(at), chunk.end());
    Bytes unpacked = Inflate(chunk.data() + at, chunk.size() - at, &m_budget);
    if (unpacked.empty())
        Warn("damaged metadata is left out: can't unpack a chunk");
    return unpacked;
}

// Reads an iTXt chunk (ISO 15948, 11.3.3.4): keyword, compression flag and method, language, translated keyword, text.
Bytes ChunkReader::InternationalText(const Bytes &chunk, std::size_t keyEnd)
{
    const std::size_t flag = keyEnd + 1;
    if (chunk.size() < flag + 2)
        return Bytes();
    const std::size_t translated = TextEnd(chunk, flag + 2) + 1;
    return RestOf(chunk, TextEnd(chunk, translated) + 1, chunk[flag] != 0);
}

void ChunkReader::Take(const std::string &name, const Bytes &chunk)
{
    const std::size_t keyEnd = TextEnd(chunk, 0);
    const std::string key(chunk.begin(), chunk.begin() + static_cast<std::ptrdiff_t>(keyEnd));
    if (name == "eXIf")
        DecodeExif(chunk);
    else if (name == "iCCP")
        m_metadata.icc = RestOf(chunk, keyEnd + 2, /*isPacked=*/true);
    else if (name == "tEXt")
        TakeText(key, RestOf(chunk, keyEnd + 1, /*isPacked=*/false));
    else if (name == "zTXt")
        TakeText(key, RestOf(chunk, keyEnd + 2, /*isPacked=*/true));
    else
        TakeText(key, InternationalText(chunk, keyEnd));
}

bool IsMetadataChunk(const std::string &name)
{
    return name == "eXIf" || name == "iCCP" || name == "tEXt" || name == "zTXt" || name == "iTXt";
}

} // namespace

Status ReadPngMetadata(const Source &source, Metadata *metadata)
{
    constexpr std::uint64_t kSignatureBytes = 8;
    ChunkReader reader(metadata);
    std::uint8_t head[8]; // length and name
    std::uint64_t at = kSignatureBytes;
    for (std::size_t i = 0; i < kMaxChunks && source.ReadAt(at, head, sizeof head) == sizeof head; ++i) {
        const std::uint32_t length = BigEndian32(head);
        const std::string name(head + 4, head + 8);
        if (name == "IEND" || source.Size() - at < sizeof head + length)
            break;
        if (IsMetadataChunk(name)) {
            const Bytes chunk = ReadMetadataBlock(source, at + sizeof head, length);
            if (chunk.size() == length)
                reader.Take(name, chunk);
        }
        at += length + kChunkFrame;
    }
    return source.Check();
}

std::string RawProfileText(const char *type, const Bytes &block)
{
    constexpr std::size_t kBytesPerLine = 36;
    std::string text = Text("\n%s\n%8zu", type, block.size());
    for (std::size_t at = 0; at < block.size(); at += kBytesPerLine)
        text += '\n' + Hexadecimal(block.data() + at, std::min(kBytesPerLine, block.size() - at));
    return text + '\n';
}

} // namespace imagefile
