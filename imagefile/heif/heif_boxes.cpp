// Based on ISO/IEC 23008-12 (irot: 6.5.10, imir: 6.5.12, ipma: 9.3).
#include "heif_boxes.h"

#include "core/byte_reader.h"
#include "core/iso_boxes.h"
#include "core/limits.h"

#include <algorithm>
#include <cstring>

namespace imagefile {

namespace {

constexpr std::uint64_t kVersionBytes = 4;

std::uint64_t PrimaryItem(const Source &source, const IsoBox &pitm)
{
    ByteReader reader(source, pitm.begin);
    const bool isLong = reader.Number(kVersionBytes) >> 24 != 0;
    return reader.Number(isLong ? 4 : 2);
}

/// Returns the numbers of an item's properties, in the order to apply them. Number 1 is the first property in ipco.
std::vector<std::size_t> PropertiesOf(std::uint64_t item, const Source &source, const IsoBox &ipma)
{
    std::vector<std::size_t> numbers;
    ByteReader reader(source, ipma.begin);
    const std::uint64_t version = reader.Number(kVersionBytes);
    const bool hasLongItems = version >> 24 != 0, hasLongNumbers = (version & 1) != 0;
    std::uint64_t items = reader.Number(4);
    for (; items > 0 && !reader.Failed() && reader.Position() < ipma.end; --items) {
        const bool isWanted = reader.Number(hasLongItems ? 4 : 2) == item;
        for (int left = reader.Byte(); left > 0; --left) {
            const std::uint64_t number = reader.Number(hasLongNumbers ? 2 : 1) & (hasLongNumbers ? 0x7FFF : 0x7F);
            if (isWanted && !reader.Failed())
                numbers.push_back(number);
        }
        if (isWanted) // there is one entry per item
            break;
    }
    return numbers;
}

constexpr HeifTurn kQuarterLeft = {0, 1, -1, 0}, kTopToBottom = {1, 0, 0, -1}, kLeftToRight = {-1, 0, 0, 1};

bool IsGray(const Source &source, const IsoBox &box)
{
    ByteReader reader(source, box.begin);
    if (box.Is("pixi")) { // number of channels
        reader.Skip(kVersionBytes);
        return reader.Byte() == 1;
    }
    if (box.Is("av1C")) { // AV1 in ISOBMFF 2.3.3
        reader.Skip(2);
        return (reader.Byte() & 0x10) != 0;
    }
    reader.Skip(16); // hvcC, ISO/IEC 14496-15 8.3.3.1: the chroma format
    return (reader.Byte() & 3) == 0 && !reader.Failed();
}

} // namespace

HeifTurn HeifTurn::Then(const HeifTurn &next) const
{
    return {next.xx * xx + next.xy * yx, next.xx * xy + next.xy * yy, next.yx * xx + next.yy * yx,
            next.yx * xy + next.yy * yy};
}

std::uint16_t HeifTurn::Orientation() const
{
    constexpr HeifTurn kOrientations[] = {{1, 0, 0, 1}, {-1, 0, 0, 1}, {-1, 0, 0, -1}, {1, 0, 0, -1},
                                          {0, 1, 1, 0}, {0, -1, 1, 0}, {0, -1, -1, 0}, {0, 1, -1, 0}};
    const auto found = std::find(std::begin(kOrientations), std::end(kOrientations), *this);
    return static_cast<std::uint16_t>(found - std::begin(kOrientations) + 1);
}

HeifProperties ReadHeifProperties(const Source &source)
{
    HeifProperties properties;
    const IsoBox meta = FindIsoBox(IsoBoxesIn(source, 0, source.Size()), "meta");
    const std::vector<IsoBox> parts = IsoBoxesIn(source, meta.begin + kVersionBytes, meta.end);
    const IsoBox iprp = FindIsoBox(parts, "iprp");
    const std::vector<IsoBox> lists = IsoBoxesIn(source, iprp.begin, iprp.end);
    const IsoBox ipco = FindIsoBox(lists, "ipco");
    const std::vector<IsoBox> all = IsoBoxesIn(source, ipco.begin, ipco.end);
    for (const std::size_t number :
         PropertiesOf(PrimaryItem(source, FindIsoBox(parts, "pitm")), source, FindIsoBox(lists, "ipma"))) {
        const IsoBox box = number >= 1 && number <= all.size() ? all[number - 1] : IsoBox();
        const int first = ByteReader(source, box.begin).Byte();
        if (box.Is("irot"))
            for (int quarter = first & 3; quarter > 0; --quarter)
                properties.turn = properties.turn.Then(kQuarterLeft);
        else if (box.Is("imir"))
            properties.turn = properties.turn.Then((first & 1) != 0 ? kLeftToRight : kTopToBottom);
        else if (box.Is("clap"))
            properties.isCropped = true;
        else if (box.Is("pixi") || box.Is("av1C") || box.Is("hvcC"))
            properties.isGray = properties.isGray || IsGray(source, box);
    }
    return properties;
}

bool HasHeifBrand(const Source &source, const char *brand)
{
    const std::vector<IsoBox> boxes = IsoBoxesIn(source, 0, std::min(source.Size(), kMaxBrandBytes));
    if (boxes.empty() || !boxes[0].Is("ftyp"))
        return false;
    ByteReader reader(source, boxes[0].begin);
    char name[4]; // the second entry is a version number, which equals no brand
    while (reader.Position() < boxes[0].end && reader.Read(name, sizeof name))
        if (std::memcmp(name, brand, sizeof name) == 0)
            return true;
    return false;
}

} // namespace imagefile
