// The metadata functions of gfl.h: for bitmaps, for files, and for releasing blocks.
#include "gfl.h"

#include "core/allocator.h"
#include "core/codec.h"
#include "core/guard.h"
#include "formats.h"
#include "metadata/exif_carry.h"
#include "metadata/exif_lists.h"
#include "metadata/iptc.h"
#include "metadata/metadata.h"
#include "metadata/tone_curves.h"
#include "metadata/xmp_edit.h"
#include "metadata_list.h"

#include <algorithm>

using namespace imagefile;

namespace {

bool HasExif(const Metadata &metadata)
{
    return std::any_of(metadata.exif.begin(), metadata.exif.end(), IsCarried);
}

// Returns one of the two records that consist of bytes and their length.
template <class Block> Block *BytesBlock(const Bytes &bytes, void (*freeBlock)(Block *))
{
    if (bytes.empty())
        return nullptr;
    Owned<Block> block(NewZeroed<Block>(), freeBlock);
    block->Data = NewBytes(bytes.data(), bytes.size());
    block->Length = static_cast<std::uint32_t>(bytes.size());
    return block.release();
}

GFL_ICCPROFILE_DATA *IccBlock(const Metadata &metadata)
{
    return BytesBlock(metadata.icc, gflFreeICCProfile);
}

GFL_XMP_DATA *XmpBlock(const Metadata &metadata)
{
    return BytesBlock(metadata.xmp, gflFreeXMP);
}

GFL_IPTC_DATA *IptcBlock(const Metadata &metadata)
{
    return IptcEntries(metadata.iptc);
}

GFL_EXIF_DATA *ExifBlock(const Metadata &metadata)
{
    return HasExif(metadata) ? ExifTexts(metadata.exif) : nullptr;
}

GFL_EXIF_DATAEX *ExifRawBlock(const Metadata &metadata)
{
    return ExifRawList(metadata.exif);
}

/// Returns a block of a bitmap, using one of the functions above.
template <class Block> Block *BlockOfBitmap(const GFL_BITMAP *bitmap, Block *(*block)(const Metadata &))
{
    const Metadata *metadata = MetadataOf(bitmap);
    return metadata ? GuardedValue([&] { return block(*metadata); }) : nullptr;
}

/// Returns a block of a file, using one of the functions above. Reads only the file's metadata.
template <class Block> Block *BlockOfFile(const char *path, Block *(*block)(const Metadata &))
{
    Block *result = nullptr;
    static_cast<void>(Guarded([&] {
        Source source;
        if (!path)
            return Status::Fail(GFL_ERROR_BAD_PARAMETERS, "an argument is missing");
        if (Status status = source.Open(path); !status)
            return status;
        Metadata metadata;
        if (Status status = ReadMetadata(source, &metadata); !status)
            return status;
        result = block(metadata);
        return Status::Ok();
    }));
    return result;
}

template <class Block> bool FileHas(const char *path, Block *(*block)(const Metadata &), void (*freeBlock)(Block *))
{
    Block *found = BlockOfFile(path, block);
    freeBlock(found);
    return found != nullptr;
}

template <class Block> void FreeBytes(Block *block)
{
    if (block)
        Release(block->Data);
    Release(block);
}

// Frees one of the two records that are lists of names and values.
template <class Block> void FreeItems(Block *block)
{
    for (std::uint32_t i = 0; block && i < block->NumberOfItems; ++i) {
        Release(block->ItemsList[i].Name);
        Release(block->ItemsList[i].Value);
    }
    if (block)
        Release(block->ItemsList);
    Release(block);
}

} // namespace

bool gflBitmapHasICCProfile(const GFL_BITMAP *bitmap)
{
    const Metadata *metadata = MetadataOf(bitmap);
    return metadata && !metadata->icc.empty();
}

bool gflBitmapHasIPTC(const GFL_BITMAP *bitmap)
{
    const Metadata *metadata = MetadataOf(bitmap);
    return metadata && GuardedValue([&] { return HasIptcEntries(metadata->iptc); });
}

bool gflBitmapHasEXIF(const GFL_BITMAP *bitmap)
{
    const Metadata *metadata = MetadataOf(bitmap);
    return metadata && GuardedValue([&] { return HasExif(*metadata); });
}

bool gflBitmapHasXMP(const GFL_BITMAP *bitmap)
{
    const Metadata *metadata = MetadataOf(bitmap);
    return metadata && !metadata->xmp.empty();
}

GFL_ICCPROFILE_DATA *gflBitmapGetICCProfileEx(const GFL_BITMAP *bitmap)
{
    return BlockOfBitmap(bitmap, IccBlock);
}

GFL_IPTC_DATA *gflBitmapGetIPTC(const GFL_BITMAP *bitmap)
{
    return BlockOfBitmap(bitmap, IptcBlock);
}

GFL_EXIF_DATA *gflBitmapGetEXIF(const GFL_BITMAP *bitmap, std::uint32_t)
{
    return BlockOfBitmap(bitmap, ExifBlock);
}

GFL_EXIF_DATAEX *gflBitmapGetEXIF2(const GFL_BITMAP *bitmap)
{
    return BlockOfBitmap(bitmap, ExifRawBlock);
}

GFL_XMP_DATA *gflBitmapGetXMPEx(const GFL_BITMAP *bitmap)
{
    return BlockOfBitmap(bitmap, XmpBlock);
}

int gflBitmapCopyICCProfile(const GFL_BITMAP *source, GFL_BITMAP *target)
{
    return Guarded([&] {
        if (!source || !target)
            return Status::Fail(GFL_ERROR_BAD_PARAMETERS, "an argument is missing");
        const Metadata *metadata = MetadataOf(source);
        MakeMetadata(target)->icc = metadata ? metadata->icc : Bytes();
        return Status::Ok();
    });
}

int gflBitmapCopyMetadata(const GFL_BITMAP *source, GFL_BITMAP *target)
{
    return Guarded([&] {
        if (!source || !target)
            return Status::Fail(GFL_ERROR_BAD_PARAMETERS, "an argument is missing");
        const Metadata *metadata = MetadataOf(source);
        if (!metadata)
            return Status::Ok();
        StartExiv2();
        Metadata *copy = MakeMetadata(target);
        if (!metadata->icc.empty())
            copy->icc = metadata->icc;
        if (const Owned<GFL_IPTC_DATA> iptc(IptcBlock(*metadata), gflFreeIPTC); iptc)
            copy->iptc = IptcBytes(*iptc);
        if (const Owned<GFL_EXIF_DATAEX> exif(HasExif(*metadata) ? ExifRawBlock(*metadata) : nullptr, gflFreeEXIF2);
            exif)
            copy->exif = ExifOfRawList(*exif);
        return Status::Ok();
    });
}

int gflBitmapMarkEdited(GFL_BITMAP *target, const GFL_BITMAP *source, const GFL_XMP_ITEM *items, std::uint32_t count)
{
    return Guarded([&] {
        if (!target || !source || (!items && count > 0))
            return Status::Fail(GFL_ERROR_BAD_PARAMETERS, "an argument is missing");
        StartExiv2();
        Exiv2::XmpData record;
        try {
            for (std::uint32_t i = 0; i < count; ++i)
                record[items[i].Key] = Exiv2::XmpTextValue(items[i].Value);
        } catch (const Exiv2::AnyError &error) {
            return Status::Fail(GFL_ERROR_BAD_PARAMETERS, error.what());
        }
        const Metadata *metadata = MetadataOf(source);
        Metadata *edited = MakeMetadata(target);
        const PictureSize size = {target->Width, target->Height};
        UpdateExif(size, &edited->exif);
        edited->xmp = EditedXmp(metadata ? metadata->xmp : Bytes(), record, size, edited->exif);
        return Status::Ok();
    });
}

int gflBitmapSetIPTC(GFL_BITMAP *target, const GFL_IPTC_DATA *data)
{
    return Guarded([&] {
        if (!target)
            return Status::Fail(GFL_ERROR_BAD_PARAMETERS, "an argument is missing");
        MakeMetadata(target)->iptc = data ? IptcBytes(*data) : Bytes();
        return Status::Ok();
    });
}

int gflBitmapSetEXIF2(GFL_BITMAP *target, const GFL_EXIF_DATAEX *data)
{
    return Guarded([&] {
        if (!target)
            return Status::Fail(GFL_ERROR_BAD_PARAMETERS, "an argument is missing");
        StartExiv2();
        MakeMetadata(target)->exif = data ? ExifOfRawList(*data) : Exiv2::ExifData();
        return Status::Ok();
    });
}

bool gflHasICCProfileUTF8(const char *path)
{
    return FileHas(path, IccBlock, gflFreeICCProfile);
}

bool gflHasIPTCUTF8(const char *path)
{
    return FileHas(path, IptcBlock, gflFreeIPTC);
}

bool gflHasEXIFUTF8(const char *path)
{
    return FileHas(path, ExifRawBlock, gflFreeEXIF2);
}

bool gflHasXMPUTF8(const char *path)
{
    return FileHas(path, XmpBlock, gflFreeXMP);
}

GFL_ICCPROFILE_DATA *gflLoadICCProfileUTF8(const char *path)
{
    return BlockOfFile(path, IccBlock);
}

GFL_IPTC_DATA *gflLoadIPTCUTF8(const char *path)
{
    return BlockOfFile(path, IptcBlock);
}

GFL_EXIF_DATA *gflLoadEXIFUTF8(const char *path, std::uint32_t)
{
    return BlockOfFile(path, ExifBlock);
}

GFL_EXIF_DATAEX *gflLoadEXIF2UTF8(const char *path, std::uint32_t)
{
    return BlockOfFile(path, ExifRawBlock);
}

GFL_XMP_DATA *gflLoadXMPUTF8(const char *path)
{
    return BlockOfFile(path, XmpBlock);
}

int gflLoadMetadataListUTF8(const char *path, GFL_METADATA_LIST **list)
{
    return Guarded([&] {
        if (!path || !list)
            return Status::Fail(GFL_ERROR_BAD_PARAMETERS, "an argument is missing");
        *list = nullptr;
        Source source;
        const Codec *codec = nullptr;
        std::int32_t index = 0;
        if (Status status = source.Open(path); !status)
            return status;
        if (Status status = FindCodec(source, &codec, &index); !status)
            return status;
        Owned<GFL_METADATA_LIST> made(MetadataList(source), gflFreeMetadataList);
        if (Status status = source.Check(); !status)
            return status;
        *list = made.release();
        return Status::Ok();
    });
}

int gflToneCurves(const void *profile, std::uint32_t bytes, int points, double *light)
{
    if (!profile || !light || points < 2)
        return 0;
    int curves = 0;
    static_cast<void>(Guarded([&] {
        for (const std::vector<double> &curve : ToneCurves(profile, bytes, static_cast<std::size_t>(points))) {
            light = std::copy(curve.begin(), curve.end(), light);
            ++curves;
        }
        return Status::Ok();
    }));
    return curves;
}

void gflFreeICCProfile(GFL_ICCPROFILE_DATA *data)
{
    FreeBytes(data);
}

void gflFreeXMP(GFL_XMP_DATA *data)
{
    FreeBytes(data);
}

void gflFreeIPTC(GFL_IPTC_DATA *data)
{
    FreeItems(data);
}

void gflFreeEXIF(GFL_EXIF_DATA *data)
{
    FreeItems(data);
}

void gflFreeEXIF2(GFL_EXIF_DATAEX *data)
{
    for (GFL_EXIF_ENTRYEX *node = data ? data->Root : nullptr; node;) {
        GFL_EXIF_ENTRYEX *next = node->Next;
        Release(node->Data);
        Release(node);
        node = next;
    }
    Release(data);
}

void gflFreeMetadataList(GFL_METADATA_LIST *list)
{
    for (std::uint32_t i = 0; list && i < list->NumberOfItems; ++i) {
        Release(list->ItemsList[i].Key);
        Release(list->ItemsList[i].Raw);
        Release(list->ItemsList[i].Printed);
    }
    if (list)
        Release(list->ItemsList);
    Release(list);
}
