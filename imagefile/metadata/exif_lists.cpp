#include "exif_lists.h"

#include "core/allocator.h"
#include "core/tiff_directory.h"
#include "exif_carry.h"

#include <algorithm>
#include <cstring>

namespace imagefile {

namespace {

struct BlockOfGroup {
    const char *group;
    std::uint32_t block;
};
constexpr BlockOfGroup kBlocks[] = {{"Image", GFL_EXIF_MAIN},
                                    {"Photo", GFL_EXIF_CAMERA},
                                    {"Iop", GFL_EXIF_INTEROPERABILITY},
                                    {"GPSInfo", GFL_EXIF_GPS}};

std::uint32_t BlockOf(const Exiv2::Exifdatum &datum)
{
    const std::string group = datum.groupName();
    for (const BlockOfGroup &each : kBlocks)
        if (group == each.group)
            return each.block;
    return GFL_EXIF_OTHER + static_cast<std::uint32_t>(datum.ifdId());
}

// Returns null for an unknown block number.
const char *GroupOf(std::uint32_t block)
{
    for (const BlockOfGroup &each : kBlocks)
        if (block == each.block)
            return each.group;
    for (const Exiv2::GroupInfo *group = Exiv2::ExifTags::groupList(); group->tagList_ || group->ifdName_; ++group) {
        if (block >= GFL_EXIF_OTHER && static_cast<std::uint32_t>(group->ifdId_) == block - GFL_EXIF_OTHER)
            return group->groupName_;
    }
    return nullptr;
}

void FillEntry(std::uint32_t flag, std::uint32_t tag, const std::string &name, const std::string &value,
               GFL_EXIF_ENTRY *entry)
{
    entry->Flag = flag;
    entry->Tag = tag;
    entry->Name = NewText(name);
    entry->Value = NewText(value);
}

void FillNode(const Exiv2::Exifdatum &datum, GFL_EXIF_ENTRYEX *node)
{
    const Bytes bytes = ValueBytes(datum);
    node->Tag = datum.tag();
    node->Format = static_cast<std::uint16_t>(datum.typeId());
    node->Block = BlockOf(datum);
    node->Data = NewBytes(bytes.data(), bytes.size());
    node->Length = static_cast<std::uint32_t>(bytes.size());
}

// Returns the values that pass the filter, sorted by block and tag. The sort is stable, because some cameras write a
// tag twice.
template <class Filter> std::vector<const Exiv2::Exifdatum *> SelectSorted(const Exiv2::ExifData &exif, Filter filter)
{
    std::vector<const Exiv2::Exifdatum *> sorted;
    for (const Exiv2::Exifdatum &datum : exif)
        if (filter(datum))
            sorted.push_back(&datum);
    std::stable_sort(sorted.begin(), sorted.end(), [](const Exiv2::Exifdatum *a, const Exiv2::Exifdatum *b) {
        return std::make_pair(BlockOf(*a), a->tag()) < std::make_pair(BlockOf(*b), b->tag());
    });
    return sorted;
}

} // namespace

GFL_EXIF_DATA *ExifTexts(const Exiv2::ExifData &exif)
{
    const auto values = SelectSorted(exif, [](const Exiv2::Exifdatum &datum) {
        return BlockOf(datum) < GFL_EXIF_OTHER && !IsDirectoryPointer(datum.tag());
    });
    const std::string lensId = LensId(exif);
    if (values.empty() && lensId.empty())
        return nullptr;
    Owned<GFL_EXIF_DATA> data(NewZeroed<GFL_EXIF_DATA>(), gflFreeEXIF);
    data->ItemsList = NewZeroed<GFL_EXIF_ENTRY>(values.size() + 1);
    for (const Exiv2::Exifdatum *datum : values)
        FillEntry(BlockOf(*datum), datum->tag(), datum->tagName(), ExifText(*datum),
                  &data->ItemsList[data->NumberOfItems++]);
    if (!lensId.empty())
        FillEntry(GFL_EXIF_OWN, 0, "LensID", lensId, &data->ItemsList[data->NumberOfItems++]);
    return data.release();
}

GFL_EXIF_DATAEX *ExifRawList(const Exiv2::ExifData &exif)
{
    const auto values = SelectSorted(exif, [](const Exiv2::Exifdatum &datum) {
        return IsCarried(datum) && datum.typeId() <= 0xFFFF; // Exiv2's own types beyond that never come from a file
    });
    if (values.empty())
        return nullptr;
    Owned<GFL_EXIF_DATAEX> list(NewZeroed<GFL_EXIF_DATAEX>(), gflFreeEXIF2);
    GFL_EXIF_ENTRYEX **end = &list->Root;
    for (const Exiv2::Exifdatum *datum : values) {
        *end = NewZeroed<GFL_EXIF_ENTRYEX>();
        FillNode(*datum, *end);
        end = &(*end)->Next;
    }
    return list.release();
}

Exiv2::ExifData ExifOfRawList(const GFL_EXIF_DATAEX &list)
{
    Exiv2::ExifData exif;
    for (const GFL_EXIF_ENTRYEX *node = list.Root; node; node = node->Next) {
        const char *group = GroupOf(node->Block);
        if (!group)
            continue;
        const Exiv2::Value::AutoPtr value = Exiv2::Value::create(static_cast<Exiv2::TypeId>(node->Format));
        try {
            value->read(node->Data, static_cast<long>(node->Length), Exiv2::littleEndian);
            exif.add(Exiv2::ExifKey(node->Tag, group), value.get());
        } catch (const Exiv2::AnyError &) { // no such key
        }
    }
    return exif;
}

} // namespace imagefile
