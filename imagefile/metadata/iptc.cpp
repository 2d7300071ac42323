#include "iptc.h"

#include "core/allocator.h"
#include "core/hexadecimal.h"

#include <algorithm>
#include <cstring>

namespace imagefile {

namespace {

constexpr std::uint8_t kMarker = 0x1C;
constexpr std::size_t kLongForm = 0x8000; // from this length on, extra bytes store the length

struct DataSet {
    std::uint8_t record, number;
    const std::uint8_t *data;
    std::size_t length;
};

// Reads the data set at *at and advances past it.
bool NextDataSet(const Bytes &iim, std::size_t *at, DataSet *set)
{
    const std::uint8_t *p = iim.data() + *at;
    std::size_t left = iim.size() - *at;
    if (left < 5 || p[0] != kMarker)
        return false;
    set->record = p[1];
    set->number = p[2];
    std::size_t length = p[3] * 256u + p[4], head = 5;
    if (length >= kLongForm) {
        const std::size_t count = length - kLongForm;
        if (count > 4 || left - head < count)
            return false;
        length = 0;
        for (std::size_t i = 0; i < count; ++i)
            length = length * 256 + p[head + i];
        head += count;
    }
    if (left - head < length)
        return false;
    set->data = p + head;
    set->length = length;
    *at += head + length;
    return true;
}

Bytes FromHexadecimal(const char *text)
{
    Bytes bytes;
    for (; HexDigit(text[0]) >= 0 && HexDigit(text[1]) >= 0; text += 2)
        bytes.push_back(static_cast<std::uint8_t>(HexDigit(text[0]) * 16 + HexDigit(text[1])));
    return bytes;
}

void FillEntry(const DataSet &set, GFL_IPTC_ENTRY *entry)
{
    entry->Id = set.record * 256u + set.number;
    entry->Name = NewText(Exiv2::IptcDataSets::dataSetName(set.number, set.record));
    if (std::find(set.data, set.data + set.length, 0) == set.data + set.length) {
        entry->Value = NewText(std::string(reinterpret_cast<const char *>(set.data), set.length));
    } else {
        entry->Id |= GFL_IPTC_HEXADECIMAL;
        entry->Value = NewText(Hexadecimal(set.data, set.length));
    }
}

void AppendLength(std::size_t length, Bytes *iim)
{
    const bool isLong = length >= kLongForm;
    if (isLong) {
        iim->push_back(0x80);
        iim->push_back(4);
    }
    for (int shift = isLong ? 24 : 8; shift >= 0; shift -= 8)
        iim->push_back(static_cast<std::uint8_t>(length >> shift));
}

} // namespace

GFL_IPTC_DATA *IptcEntries(const Bytes &iim)
{
    std::vector<DataSet> sets;
    DataSet set;
    for (std::size_t at = 0; NextDataSet(iim, &at, &set);)
        sets.push_back(set);
    if (sets.empty())
        return nullptr;
    Owned<GFL_IPTC_DATA> data(NewZeroed<GFL_IPTC_DATA>(), gflFreeIPTC);
    data->ItemsList = NewZeroed<GFL_IPTC_ENTRY>(sets.size());
    for (const DataSet &each : sets)
        FillEntry(each, &data->ItemsList[data->NumberOfItems++]);
    return data.release();
}

bool HasIptcEntries(const Bytes &iim)
{
    std::size_t at = 0;
    DataSet set;
    return NextDataSet(iim, &at, &set);
}

Bytes IptcBytes(const GFL_IPTC_DATA &data)
{
    Bytes iim;
    for (std::uint32_t i = 0; i < data.NumberOfItems; ++i) {
        const GFL_IPTC_ENTRY &entry = data.ItemsList[i];
        if ((entry.Id & ~GFL_IPTC_HEXADECIMAL) > 0xFFFF) {
            Warn(Text("metadata is left out: IPTC entry 0x%x, whose number is not a record and a data set", entry.Id)
                     .c_str());
            continue;
        }
        const char *text = entry.Value ? entry.Value : "";
        const Bytes bytes =
            (entry.Id & GFL_IPTC_HEXADECIMAL) != 0 ? FromHexadecimal(text) : Bytes(text, text + std::strlen(text));
        iim.insert(iim.end(), {kMarker, static_cast<std::uint8_t>(entry.Id >> 8), static_cast<std::uint8_t>(entry.Id)});
        AppendLength(bytes.size(), &iim);
        iim.insert(iim.end(), bytes.begin(), bytes.end());
    }
    return iim;
}

} // namespace imagefile
