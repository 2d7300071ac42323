#include "exr_attributes.h"

#include "core/byte_reader.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace imagefile {

namespace {

constexpr std::uint64_t kHeadersAt = 8; // after magic number and version
constexpr int kLongestName = 255;
constexpr std::uint64_t kLongestValue = 0x7FFFFFFF; // OpenEXR reads a signed length

/// Types of fixed length; see "OpenEXR File Layout", predefined attribute types.
constexpr struct {
    const char *type;
    std::uint64_t bytes;
} kFixedTypes[] = {
    {"box2f", 16},
    {"box2i", 16},
    {"chromaticities", 32},
    {"compression", 1},
    {"deepImageState", 1},
    {"double", 8},
    {"envmap", 1},
    {"float", 4},
    {"int", 4},
    {"keycode", 28},
    {"lineOrder", 1},
    {"m33d", 72},
    {"m33f", 36},
    {"m44d", 128},
    {"m44f", 64},
    {"rational", 8},
    {"tiledesc", 9},
    {"timecode", 8},
    {"v2d", 16},
    {"v2f", 8},
    {"v2i", 8},
    {"v3d", 24},
    {"v3f", 12},
    {"v3i", 12},
};

/// Reads a 32-bit little-endian number.
std::uint64_t Number(ByteReader *in)
{
    std::uint64_t number = 0;
    for (int shift = 0; shift < 32; shift += 8)
        number |= std::uint64_t(in->Byte()) << shift;
    return number;
}

/// Reads a zero-terminated text. Returns false if it is incomplete or exceeds the limit for names.
bool ReadName(ByteReader *in, char (&name)[kLongestName + 1])
{
    for (char &letter : name) {
        letter = static_cast<char>(in->Byte());
        if (letter == '\0')
            return !in->Failed();
    }
    return false;
}

/// Returns whether a channel list ends at @p end. A channel is a name and 16 bytes; an empty name ends the list.
bool IsCompleteChannelList(ByteReader in, std::uint64_t end)
{
    constexpr int kChannelBytes = 16;
    char name[kLongestName + 1];
    while (in.Position() < end && ReadName(&in, name)) {
        if (name[0] == '\0')
            return in.Position() == end;
        in.Skip(kChannelBytes);
    }
    return false;
}

/// Returns whether a list of texts, each preceded by its length, ends at @p end.
bool IsCompleteTextList(ByteReader in, std::uint64_t end)
{
    while (!in.Failed() && in.Position() < end)
        in.Skip(Number(&in));
    return !in.Failed() && in.Position() == end;
}

/// Returns whether a preview ends at @p end. It consists of width, height and 4 bytes per pixel.
bool IsCompletePreview(ByteReader in, std::uint64_t end)
{
    const std::uint64_t width = Number(&in), height = Number(&in);
    return !in.Failed() && in.Position() <= end && width < (1U << 31) && height < (1U << 31)
        && width * height == (end - in.Position()) / 4 && (end - in.Position()) % 4 == 0;
}

/// Returns whether the value from @p in's position to @p end has the length that its type requires.
bool HasValidLength(const ByteReader &in, const char *type, std::uint64_t end)
{
    const auto fixed = std::find_if(std::begin(kFixedTypes), std::end(kFixedTypes),
                                    [&](const auto &row) { return std::strcmp(row.type, type) == 0; });
    if (fixed != std::end(kFixedTypes))
        return end - in.Position() == fixed->bytes;
    if (std::strcmp(type, "floatvector") == 0)
        return (end - in.Position()) % 4 == 0;
    if (std::strcmp(type, "chlist") == 0)
        return IsCompleteChannelList(in, end);
    if (std::strcmp(type, "stringvector") == 0)
        return IsCompleteTextList(in, end);
    return std::strcmp(type, "preview") != 0 || IsCompletePreview(in, end);
}

Status Damaged(const char *why)
{
    return Status::Fail(GFL_ERROR_FILE_READ, Text("OpenEXR: %s", why));
}

} // namespace

Status CheckExrAttributes(const Source &source, bool manyParts)
{
    char name[kLongestName + 1], type[kLongestName + 1];
    bool afterEnd = false; // a header has just ended; a second end mark would end the list of headers
    for (ByteReader in(source, kHeadersAt);;) {
        const bool isNamed = ReadName(&in, name);
        if (isNamed && name[0] == '\0') {
            if (afterEnd || !manyParts)
                return Status::Ok();
            afterEnd = true;
            continue;
        }
        afterEnd = false;
        const bool hasType = isNamed && ReadName(&in, type);
        const std::uint64_t size = hasType ? Number(&in) : 0;
        if (!hasType || in.Failed() || size > kLongestValue || size > in.Remaining())
            return Damaged("a header extends past the end of the file");
        if (!HasValidLength(in, type, in.Position() + size))
            return Damaged("an attribute's length doesn't match its type");
        in.Skip(size);
    }
}

} // namespace imagefile
