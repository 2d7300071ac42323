#include "metadata_list.h"

#include "core/allocator.h"
#include "core/english_thread.h"
#include "core/memory_check.h"
#include "formats.h"
#include "metadata/xmp_namespaces.h"
#include "raw/raw_codec.h"
#include "raw/raw_facts.h"

#include <algorithm>
#include <sstream>

namespace imagefile {

namespace {

// Longer values, such as tables and blocks, are listed as their length.
constexpr long kMaxListedBytes = 1024;

struct Item {
    std::string key, raw, printed;
};

// Returns the length of the UTF-8 sequence at @p at; 0 if it is invalid (RFC 3629, section 4).
std::size_t Utf8Length(const std::string &text, std::size_t at)
{
    const auto byte = [&](std::size_t i) -> unsigned {
        return at + i < text.size() ? static_cast<unsigned char>(text[at + i]) : 0;
    };
    const unsigned first = byte(0);
    if (first < 0x80)
        return 1;
    const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4)
        return 0;
    const unsigned lowest = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    const unsigned highest = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    if (byte(1) < lowest || byte(1) > highest)
        return 0;
    for (std::size_t i = 2; i < length; ++i)
        if ((byte(i) & 0xC0) != 0x80)
            return 0;
    return length;
}

// Converts to UTF-8; interprets invalid bytes as ISO 8859-1 and stops at a zero byte.
std::string ToUtf8(const std::string &text)
{
    std::string result;
    for (std::size_t at = 0; at < text.size() && text[at] != '\0';) {
        const std::size_t length = Utf8Length(text, at);
        if (length > 0) {
            result.append(text, at, length);
        } else {
            const auto byte = static_cast<unsigned char>(text[at]);
            result += {static_cast<char>(0xC0 | (byte >> 6)), static_cast<char>(0x80 | (byte & 0x3F))};
        }
        at += std::max<std::size_t>(length, 1);
    }
    return result;
}

// Returns the text that @p write writes to the stream passed to it. Sets the classic locale, because a host may have
// changed the default.
template <class Write> std::string TextOf(Write write)
{
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    const MemoryCheck memory;
    write(stream);
    memory.Require(); // if memory runs out, a stream silently truncates its text
    return ToUtf8(stream.str());
}

// Appends one entry with its raw and printed value. Exiv2's print functions may throw on unexpected values.
template <class Print>
void AddItem(const std::string &key, const Exiv2::Value &value, Print print, std::vector<Item> *to)
{
    Item item = {key, {}, {}};
    if (value.size() > kMaxListedBytes) {
        item.raw = item.printed = '(' + std::to_string(value.size()) + " bytes)";
    } else {
        item.raw = TextOf([&](std::ostream &stream) { value.write(stream); });
        try {
            item.printed = TextOf(print);
        } catch (const std::bad_alloc &) {
            throw;
        } catch (const std::exception &) {
            item.printed = item.raw;
        }
    }
    to->push_back(std::move(item));
}

void AddExif(const Exiv2::ExifData &exif, std::vector<Item> *to)
{
    for (const Exiv2::Exifdatum &datum : exif)
        if (datum.count() > 0)
            AddItem(
                datum.key(), datum.value(), [&](std::ostream &stream) { datum.write(stream, &exif); }, to);
}

void AddXmp(const Bytes &packet, std::vector<Item> *to)
{
    Exiv2::XmpData xmp;
    try {
        ReadXmp([&] {
            const XmpReading use;
            Exiv2::XmpParser::decode(xmp, std::string(packet.begin(), packet.end()));
        });
    } catch (const std::bad_alloc &) {
        throw;
    } catch (const std::exception &) { // damaged: keep what was read before
    }
    for (const Exiv2::Xmpdatum &datum : xmp)
        AddItem(
            ToUtf8(datum.key()), datum.value(), [&](std::ostream &stream) { datum.write(stream); }, to);
}

bool IsRaw(const Source &source)
{
    const Codec *codec = nullptr;
    std::int32_t index = 0;
    return FindCodec(source, &codec, &index) && codec == &RawCodec();
}

} // namespace

GFL_METADATA_LIST *MetadataList(const Source &source)
{
    const EnglishThread english;
    Metadata metadata;
    (void)ReadMetadata(source, &metadata); // keep what was read before an error
    std::vector<Item> items;
    AddExif(metadata.exif, &items);
    if (!metadata.xmp.empty())
        AddXmp(metadata.xmp, &items);
    if (IsRaw(source))
        for (const auto &[key, text] : ReadRawFacts(source).fields)
            items.push_back({key, ToUtf8(text), ToUtf8(text)});

    Owned<GFL_METADATA_LIST> list(NewZeroed<GFL_METADATA_LIST>(), gflFreeMetadataList);
    list->ItemsList = NewZeroed<GFL_METADATA_ITEM>(items.size() + 1);
    for (const Item &item : items) {
        GFL_METADATA_ITEM &to = list->ItemsList[list->NumberOfItems++];
        to.Key = NewText(item.key);
        to.Raw = NewText(item.raw);
        to.Printed = NewText(item.printed);
    }
    return list.release();
}

} // namespace imagefile
