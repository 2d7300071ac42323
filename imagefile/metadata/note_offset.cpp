#include "note_offset.h"

#include "core/limits.h"
#include "core/tiff_directory.h"

#include <algorithm>
#include <cstring>
#include <string_view>

namespace imagefile {

namespace {

constexpr TiffVariant kClassic = {false};
constexpr std::size_t kHeaderBytes = 8;
constexpr std::uint16_t kMakerNote = 37500;

// The first bytes of notes and the offsets of their directories, according to the list at
// https://exiftool.org/makernote_types.html. All other notes begin with the directory.
struct NoteKind {
    std::string_view mark;
    std::size_t directoryAt;
    bool isMovable; // offsets are relative to the note
};
using namespace std::string_literals;
using namespace std::string_view_literals;
constexpr NoteKind kKinds[] = {
    {"Nikon\0\2"sv, 18, true},    {"OLYMPUS\0"sv, 12, true},    {"OM SYSTEM\0"sv, 16, true},
    {"FUJIFILM"sv, 12, true},     {"PENTAX \0"sv, 10, true},    {"Apple iOS\0"sv, 14, true},
    {"Nikon\0\1"sv, 8, false},    {"OLYMP\0"sv, 8, false},      {"EPSON\0"sv, 8, false},
    {"MINOL\0"sv, 8, false},      {"CAMER\0"sv, 8, false},      {"SANYO\0"sv, 8, false},
    {"Ricoh"sv, 8, false},        {"RICOH"sv, 8, false},        {"SONY DSC \0"sv, 12, false},
    {"SONY CAM \0"sv, 12, false}, {"Panasonic\0"sv, 12, false}, {"QVC\0"sv, 6, false},
    {"AOC\0"sv, 6, false},        {"SIGMA\0"sv, 10, false},     {"FOVEON\0"sv, 10, false},
};

const NoteKind *KindOf(const Bytes &note)
{
    const std::string_view text(reinterpret_cast<const char *>(note.data()), note.size());
    const auto kind = std::find_if(std::begin(kKinds), std::end(kKinds),
                                   [text](const NoteKind &k) { return text.substr(0, k.mark.size()) == k.mark; });
    return kind != std::end(kKinds) ? &*kind : nullptr;
}

void SetNumber(std::uint64_t number, std::size_t at, Bytes *bytes)
{
    for (std::size_t i = 0; i < 4; ++i)
        (*bytes)[at + i] = static_cast<std::uint8_t>(number >> (8 * i));
}

// A field of a directory in a block, and its position in the block.
struct PlacedField {
    TiffField field;
    std::size_t at;

    std::size_t CountAt() const { return at + 4; }
    std::size_t ValueAt() const { return at + 8; }
    bool IsOffset() const { return IsDirectoryPointer(field.tag) || TiffValueBytes(field) > 4; }
};

// Collects the fields of a directory and of its sub-directories.
bool CollectFields(const Bytes &block, std::uint64_t offset, int depth, std::vector<PlacedField> *placed)
{
    TiffFields fields;
    if (depth > 2 || !ReadDirectory(block, offset, kClassic, &fields))
        return false;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        placed->push_back({fields[i], offset + kClassic.CountBytes() + i * kClassic.FieldBytes()});
        if (IsDirectoryPointer(fields[i].tag)
            && !CollectFields(block, kClassic.Number(fields[i].value.data(), 4), depth + 1, placed))
            return false;
    }
    return true;
}

// Returns the block with @p bytes zeros inserted after its header, and its offsets adjusted.
Bytes WithRoom(const Bytes &block, const std::vector<PlacedField> &placed, std::uint64_t bytes)
{
    Bytes moved = block;
    SetNumber(kClassic.Number(block.data() + 4, 4) + bytes, 4, &moved);
    for (const PlacedField &each : placed)
        if (each.IsOffset())
            SetNumber(kClassic.Number(each.field.value.data(), 4) + bytes, each.ValueAt(), &moved);
    moved.insert(moved.begin() + kHeaderBytes, bytes, 0);
    return moved;
}

// A directory within a note, of either byte order.
class NoteDirectory {
public:
    NoteDirectory(const Bytes &note, std::size_t at, bool isBigEndian) : m_note(note), m_isBigEndian(isBigEndian)
    {
        const std::size_t count = at + 2 <= note.size() ? Unsigned(at, 2) : 0;
        m_end = count <= kMaxNoteFields ? at + 2 + count * kClassic.FieldBytes() : SIZE_MAX;
        for (std::size_t field = at + 2; IsComplete() && field < m_end; field += kClassic.FieldBytes())
            m_fields.push_back({static_cast<std::uint16_t>(Unsigned(field, 2)),
                                static_cast<std::uint16_t>(Unsigned(field + 2, 2)), Unsigned(field + 4, 4),
                                Unsigned(field + 8, 4)});
    }

    bool IsComplete() const { return m_end <= m_note.size(); }
    bool HasShiftedOffsets(std::int64_t offset) const;
    bool HasNestedDirectories(std::int64_t offset) const;

private:
    struct Field {
        std::uint16_t tag, type;
        std::uint32_t count, value;

        std::int64_t Bytes() const { return static_cast<std::int64_t>(TiffValueBytes({tag, type, count, {}})); }
    };

    std::uint32_t Unsigned(std::size_t at, std::size_t count) const
    {
        std::uint32_t number = 0;
        for (std::size_t i = 0; i < count; ++i)
            number = number << 8 | m_note[at + (m_isBigEndian ? i : count - 1 - i)];
        return number;
    }
    bool LooksValid() const;

    const Bytes &m_note;
    bool m_isBigEndian;
    std::size_t m_end = 0; // after the last field
    std::vector<Field> m_fields;
};

bool NoteDirectory::HasShiftedOffsets(std::int64_t offset) const
{
    const auto size = static_cast<std::int64_t>(m_note.size()), lowest = static_cast<std::int64_t>(m_end);
    std::int64_t first = INT64_MAX, last = INT64_MIN; // extent of the values, relative to the note
    for (const Field &field : m_fields) {
        if (field.Bytes() <= 4 || field.Bytes() > size) // larger values, such as previews, are stored elsewhere
            continue;
        first = std::min(first, field.value - offset);
        last = std::max(last, field.value - offset + field.Bytes());
    }
    if (first > last || last - first > size - lowest) // there are no values, or they can't all be within the note
        return false;
    return first < lowest || last > size;
}

bool NoteDirectory::HasNestedDirectories(std::int64_t offset) const
{
    constexpr std::uint16_t kUndefined = 7;
    return std::any_of(m_fields.begin(), m_fields.end(), [&](const Field &field) {
        const std::int64_t at = field.value - offset;
        return field.type == kUndefined && field.Bytes() > 4 && at >= static_cast<std::int64_t>(m_end)
            && NoteDirectory(m_note, static_cast<std::size_t>(at), m_isBigEndian).LooksValid(); // false past the end
    });
}

// Returns whether the fields are sorted by tag and all have known types, unlike random bytes.
bool NoteDirectory::LooksValid() const
{
    const auto isWrong = [](const Field &a, const Field &b) { return a.tag >= b.tag; };
    return m_fields.size() >= 2 && std::adjacent_find(m_fields.begin(), m_fields.end(), isWrong) == m_fields.end()
        && std::all_of(m_fields.begin(), m_fields.end(), [](const Field &field) { return field.Bytes() > 0; });
}

// Returns the offset of the EXIF block in a JPEG, 0 for a TIFF, -1 if there is none.
std::int64_t FindBlock(const Bytes &head)
{
    const std::string_view text(reinterpret_cast<const char *>(head.data()), head.size());
    for (const std::string_view mark : {"II*\0"sv, "MM\0*"sv}) {
        if (text.substr(0, mark.size()) == mark)
            return 0;
        const std::size_t found = text.find("Exif\0\0"s + std::string(mark));
        if (text.substr(0, 2) == "\xFF\xD8"sv && found != std::string_view::npos)
            return static_cast<std::int64_t>(found) + 6;
    }
    return -1;
}

} // namespace

void AddNoteOffset(const Source &source, Exiv2::ExifData *exif)
{
    constexpr std::size_t kSearchedBytes = 131072; // two segments of a JPEG
    const auto value = exif->findKey(Exiv2::ExifKey("Exif.Photo.MakerNote"));
    if (value == exif->end() || value->size() < 16 || exif->findKey(Exiv2::ExifKey(kNoteOffsetKey)) != exif->end())
        return;
    Bytes note(static_cast<std::size_t>(value->size())), head(kSearchedBytes);
    value->copy(note.data(), Exiv2::littleEndian);
    head.resize(source.ReadAt(0, head.data(), head.size()));
    const std::int64_t block = FindBlock(head);
    if (block < 0)
        return;
    const auto length = head.size() - static_cast<std::size_t>(block);
    // std::search would take minutes on some malicious notes.
    if (const void *found = memmem(head.data() + block, length, note.data(), note.size()))
        (*exif)[kNoteOffsetKey] =
            static_cast<std::uint32_t>(static_cast<const std::uint8_t *>(found) - head.data() - block);
}

bool IsMovableNote(const Bytes &note)
{
    const NoteKind *kind = KindOf(note);
    return kind && kind->isMovable;
}

bool NeedsItsOffset(const Bytes &note, std::uint64_t offset, bool isBigEndian)
{
    const NoteKind *kind = KindOf(note);
    if (kind && kind->isMovable)
        return false;
    const NoteDirectory directory(note, kind ? kind->directoryAt : 0, isBigEndian);
    return directory.IsComplete()
        && (directory.HasShiftedOffsets(static_cast<std::int64_t>(offset))
            || directory.HasNestedDirectories(static_cast<std::int64_t>(offset)));
}

Bytes NotePlaceholder()
{
    return Bytes(4, 0);
}

Bytes WithNoteAt(const Bytes &block, const Bytes &note, std::uint32_t offset)
{
    std::vector<PlacedField> placed;
    if (block.size() < kHeaderBytes || offset < 16
        || !CollectFields(block, kClassic.Number(block.data() + 4, 4), 0, &placed))
        return {};
    const auto entry = std::find_if(placed.begin(), placed.end(),
                                    [](const PlacedField &each) { return each.field.tag == kMakerNote; });
    if (entry == placed.end() || entry->field.count != NotePlaceholder().size())
        return {};
    const std::uint64_t noteEnd = (offset + std::uint64_t(note.size()) + 1) & ~std::uint64_t(1);
    const std::uint64_t room = offset < block.size() ? noteEnd - kHeaderBytes : 0;
    Bytes result = WithRoom(block, placed, room);
    result.resize(std::max<std::uint64_t>(result.size(), noteEnd));
    std::copy(note.begin(), note.end(), result.begin() + offset);
    SetNumber(note.size(), entry->CountAt() + room, &result);
    SetNumber(offset, entry->ValueAt() + room, &result);
    return result;
}

} // namespace imagefile
