// The functions of gfl.h that read and write pictures.
#include "gfl.h"

#include "core/allocator.h"
#include "core/codec.h"
#include "core/guard.h"
#include "core/image_limits.h"
#include "core/pending_rows.h"
#include "core/thread_count.h"
#include "formats.h"
#include "metadata/exif_carry.h"
#include "metadata/metadata.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <memory>

using namespace imagefile;

namespace {

constexpr Box kDefaultThumbnail = {256, 256};
constexpr std::uint16_t kDefaultQuality = 90; // lowest JPEG quality at which artifacts are hard to see

std::atomic<bool> lzwAllowed{false};
thread_local bool acceptsPendingRows = false;

// A recognized file: its codec and its headers.
struct OpenFile {
    const Codec *codec = nullptr;
    GFL_FILE_INFORMATION info = {};
};

/// Returns the result of reading a file whose codec returned @p status.
Status ResultOf(const Source &source, const Status &status)
{
    if (Status read = source.Check(); !read)
        return read;
    return status ? Status::Ok() : Status::Fail(status.Error(), source.Path() + ": " + status.Why());
}

Status ReadHeaders(const Source &source, OpenFile *file)
{
    if (Status status = FindCodec(source, &file->codec, &file->info.FormatIndex); !status)
        return status;
    std::snprintf(file->info.FormatName, sizeof file->info.FormatName, "%s", FormatAt(file->info.FormatIndex)->Name);
    return ResultOf(source, file->codec->ReadInfo(source, &file->info));
}

/// Fills in everything but the pixels.
Status CompleteRecord(const Source &source, const OpenFile &file, const GFL_LOAD_PARAMS &params, Owned<GFL_BITMAP> made,
                      GFL_BITMAP **bitmap, GFL_FILE_INFORMATION *info)
{
    made->Xdpi = file.info.Xdpi;
    made->Ydpi = file.info.Ydpi;
    if ((params.Flags & GFL_LOAD_METADATA) != 0)
        if (Status status = file.codec->ReadMetadata(source, MakeMetadata(made.get())); !status)
            return status;
    *bitmap = made.release();
    if (info)
        *info = file.info;
    return Status::Ok();
}

/// Returns whether a load may return while rows of the file are still being decoded.
bool MayBePending(const OpenFile &file, const GFL_LOAD_PARAMS &params)
{
    constexpr std::int64_t kWorthAThread = 1 << 20; // pixels
    return (params.Flags & GFL_LOAD_PENDING) != 0 && file.codec->StreamsRows() && ThreadCount() > 1
        && std::int64_t(file.info.Width) * file.info.Height >= kWorthAThread && file.info.ColorModel != GFL_CM_CMYK;
}

Status Load(const std::shared_ptr<const Source> &source, const GFL_LOAD_PARAMS &params, GFL_BITMAP **bitmap,
            GFL_FILE_INFORMATION *info)
{
    OpenFile file;
    if (Status status = ReadHeaders(*source, &file); !status)
        return status;
    const auto decode = [source, params, codec = file.codec](RowSink *rows) {
        return ResultOf(*source, codec->ReadPixels(*source, params, rows));
    };
    Owned<GFL_BITMAP> made(nullptr, gflFreeBitmap);
    if (MayBePending(file, params)) {
        if (Status status = StartPending(params, decode, &made); !status)
            return status;
    } else {
        BitmapRows rows(params);
        if (Status status = decode(&rows); !status)
            return status;
        made.reset(rows.Take());
    }
    return CompleteRecord(*source, file, params, std::move(made), bitmap, info);
}

Status LoadThumbnail(const Source &source, const Box &box, const GFL_LOAD_PARAMS &params, GFL_BITMAP **bitmap,
                     GFL_FILE_INFORMATION *info)
{
    OpenFile file;
    if (Status status = ReadHeaders(source, &file); !status)
        return status;
    ReducedRows rows(params, box);
    if (Status status = ResultOf(source, file.codec->ReadThumbnail(source, params, box, &rows)); !status)
        return status;
    return CompleteRecord(source, file, params, {rows.Take(), gflFreeBitmap}, bitmap, info);
}

Status LoadMetadata(const Source &source, GFL_BITMAP **bitmap)
{
    OpenFile file;
    if (Status status = ReadHeaders(source, &file); !status)
        return status;
    Owned<GFL_BITMAP> made(NewZeroed<GFL_BITMAP>(), gflFreeBitmap);
    made->Type = TypeOfChannels(file.info.ComponentsPerPixel >= 4 ? 4 : file.info.ComponentsPerPixel == 3 ? 3 : 1);
    made->Width = file.info.Width;
    made->Height = file.info.Height;
    made->BitsPerComponent = file.info.BitsPerComponent;
    made->ComponentsPerPixel = static_cast<std::uint16_t>(gflChannelsOfType(made->Type));
    made->BytesPerPixel = static_cast<std::uint16_t>(made->ComponentsPerPixel * made->BitsPerComponent / 8);
    made->TransparentIndex = -1;
    made->Xdpi = file.info.Xdpi;
    made->Ydpi = file.info.Ydpi;
    if (Status status = file.codec->ReadMetadata(source, MakeMetadata(made.get())); !status)
        return status;
    *bitmap = made.release();
    return Status::Ok();
}

/// Returns whether an ICC profile can belong to these pixels. CMYK and Lab are delivered as RGB, and gray may have been
/// expanded; with the source's profile, viewers would then show wrong colors or reject the file. The profile's color
/// space is in bytes 16 to 19 (ICC.1:2010, 7.2.6).
bool ProfileFits(const std::vector<std::uint8_t> &icc, const GFL_BITMAP &bitmap)
{
    constexpr std::size_t kAt = 16, kLength = 4;
    if (icc.size() < kAt + kLength)
        return true; // of unknown color space
    const std::string space(icc.begin() + kAt, icc.begin() + kAt + kLength);
    if (bitmap.Type == GFL_GREY)
        return space != "RGB " && space != "CMYK" && space != "Lab ";
    return space != "GRAY" && space != "CMYK" && space != "Lab ";
}

Status SaveTo(Sink *sink, const Codec &codec, const GFL_BITMAP &bitmap, const RowMaker *rows,
              const GFL_SAVE_PARAMS &params)
{
    Metadata metadata;
    if (const Metadata *carried = MetadataOf(&bitmap)) {
        metadata = *carried;
        metadata.exif = ExifToWrite(carried->exif);
        if ((params.Flags & GFL_SAVE_ICC_PROFILE) == 0 || !ProfileFits(carried->icc, bitmap))
            metadata.icc.clear();
    }
    SaveOptions options;
    options.compression = params.Compression;
    options.quality = params.Quality;
    options.metadata = &metadata;
    options.rows = rows;
    options.threads = ThreadCount();
    options.thumbnail = (params.Flags & GFL_SAVE_THUMBNAIL) != 0;
    options.halfFloats = (params.Flags & GFL_SAVE_HALF_FLOATS) != 0;
    options.fast = (params.Flags & GFL_SAVE_FAST) != 0;
    options.lzwAllowed = lzwAllowed.load(std::memory_order_relaxed);
    return codec.Write(bitmap, options, sink);
}

Status CheckSave(const GFL_BITMAP &bitmap, const RowMaker *rows, const GFL_SAVE_PARAMS &params)
{
    const Codec *codec = CodecAt(params.FormatIndex);
    if (!codec)
        return Status::Fail(GFL_ERROR_BAD_FORMAT_INDEX, Text("unknown format %d", params.FormatIndex));
    if (rows && !codec->WritesGeneratedRows())
        return Status::Fail(GFL_ERROR_BAD_PARAMETERS,
                            Text("%s can't be written row by row", FormatAt(params.FormatIndex)->Name));
    return rows ? CheckShape(bitmap) : CheckBitmap(bitmap);
}

/// @p rows generates the pixels; null if the bitmap has them.
Status Save(const char *path, const GFL_BITMAP &bitmap, const RowMaker *rows, const GFL_SAVE_PARAMS &params)
{
    if (Status status = CheckSave(bitmap, rows, params); !status)
        return status;
    FileSink sink;
    if (Status status = sink.Create(path); !status)
        return status;
    if (Status status = SaveTo(&sink, *CodecAt(params.FormatIndex), bitmap, rows, params); !status)
        return status;
    return sink.Commit();
}

Status BadParameters()
{
    return Status::Fail(GFL_ERROR_BAD_PARAMETERS, "an argument is missing");
}

} // namespace

void gflEnableLZW(int enable)
{
    lzwAllowed.store(enable != 0, std::memory_order_relaxed);
}

void gflSetThreads(int threads)
{
    SetThreadCount(threads);
}

void gflSetMaxPixels(std::int64_t pixels)
{
    SetMaxPixels(pixels);
}

std::int32_t gflGetFormatIndexByName(const char *name)
{
    for (std::int32_t index = 0; name && FormatAt(index); ++index)
        if (std::strcmp(FormatAt(index)->Name, name) == 0)
            return index;
    return -1;
}

const GFL_FORMAT *gflGetFormat(std::int32_t index)
{
    return FormatAt(index);
}

bool gflHasGoodExtension(const char *suffix)
{
    return GuardedValue([&] {
        const std::string wanted = suffix ? LowerCaseSuffix(suffix) : std::string();
        for (std::int32_t index = 0; FormatAt(index); ++index)
            if (HasSuffix(*FormatAt(index), wanted))
                return true;
        return false;
    });
}

void gflGetDefaultLoadParams(GFL_LOAD_PARAMS *params)
{
    if (!params)
        return;
    *params = GFL_LOAD_PARAMS();
    params->ColorModel = GFL_RGB;
    params->DefaultAlpha = 255;
    params->RawUseCameraBalance = 1;
    params->RawGamma = 2.2f; // typical for screens
    params->RawBrightness = params->RawRedScaling = params->RawBlueScaling = 1.0f;
}

void gflGetDefaultSaveParams(GFL_SAVE_PARAMS *params)
{
    if (!params)
        return;
    *params = GFL_SAVE_PARAMS();
    params->FormatIndex = -1;
    params->Compression = GFL_COMPRESSION_DEFAULT;
    params->Quality = kDefaultQuality;
}

int gflGetFileInformationExUTF8(const char *path, std::int32_t index, GFL_FILE_INFORMATION *info, std::uint32_t)
{
    if (info)
        *info = GFL_FILE_INFORMATION();
    return Guarded([&] {
        if (!path || !info)
            return BadParameters();
        Source source;
        OpenFile file;
        if (Status status = source.Open(path); !status)
            return status;
        if (Status status = ReadHeaders(source, &file); !status)
            return status;
        if (index >= 0 && index != file.info.FormatIndex)
            return Status::Fail(GFL_ERROR_UNKNOWN_FORMAT, Text("%s is of format %s", path, file.info.FormatName));
        *info = file.info;
        return Status::Ok();
    });
}

void gflFreeFileInformation(GFL_FILE_INFORMATION *info)
{
    if (info)
        *info = GFL_FILE_INFORMATION();
}

int gflLoadBitmapUTF8(const char *path, GFL_BITMAP **bitmap, const GFL_LOAD_PARAMS *params, GFL_FILE_INFORMATION *info)
{
    if (bitmap)
        *bitmap = nullptr;
    if (info)
        *info = GFL_FILE_INFORMATION();
    return Guarded([&] {
        if (!path || !bitmap || !params)
            return BadParameters();
        const auto source = std::make_shared<Source>();
        if (Status status = source->Open(path); !status)
            return status;
        return Load(source, *params, bitmap, info);
    });
}

int gflLoadBitmapFromMemory(const std::uint8_t *data, std::uint32_t size, GFL_BITMAP **bitmap,
                            const GFL_LOAD_PARAMS *params, GFL_FILE_INFORMATION *info)
{
    if (bitmap)
        *bitmap = nullptr;
    if (info)
        *info = GFL_FILE_INFORMATION();
    return Guarded([&] {
        if (!data || !bitmap || !params)
            return BadParameters();
        GFL_LOAD_PARAMS complete = *params;
        complete.Flags &= ~std::uint32_t(GFL_LOAD_PENDING); // the caller may free the block
        return Load(std::make_shared<Source>(data, size), complete, bitmap, info);
    });
}

void gflAcceptPendingRows(int accept)
{
    acceptsPendingRows = accept != 0;
}

bool gflAcceptsPendingRows()
{
    return acceptsPendingRows;
}

int gflWaitForRows(const GFL_BITMAP *bitmap, int rows, int *ready)
{
    int unused = 0;
    return Guarded([&] {
        return bitmap ? WaitForRows(*bitmap, std::clamp(rows, 0, bitmap->Height), ready ? ready : &unused)
                      : BadParameters();
    });
}

int gflLoadThumbnailUTF8(const char *path, int width, int height, GFL_BITMAP **bitmap, const GFL_LOAD_PARAMS *params,
                         GFL_FILE_INFORMATION *info)
{
    if (bitmap)
        *bitmap = nullptr;
    if (info)
        *info = GFL_FILE_INFORMATION();
    return Guarded([&] {
        if (!path || !bitmap || !params || width < 0 || height < 0 || (width == 0) != (height == 0))
            return BadParameters();
        Source source;
        if (Status status = source.Open(path); !status)
            return status;
        const Box box = width == 0 ? kDefaultThumbnail : Box{width, height};
        return LoadThumbnail(source, box, *params, bitmap, info);
    });
}

int gflLoadMetadataUTF8(const char *path, GFL_BITMAP **bitmap)
{
    if (bitmap)
        *bitmap = nullptr;
    return Guarded([&] {
        if (!path || !bitmap)
            return BadParameters();
        Source source;
        if (Status status = source.Open(path); !status)
            return status;
        return LoadMetadata(source, bitmap);
    });
}

void gflFreeBitmap(GFL_BITMAP *bitmap)
{
    if (!bitmap)
        return;
    ForgetPending(bitmap);
    Release(bitmap->Data);
    Release(bitmap->ColorMap);
    Release(bitmap->Comment);
    Release(bitmap->Name);
    delete static_cast<Metadata *>(bitmap->MetaData);
    Release(bitmap);
}

void gflSetSyncedByCaller(int isSynced)
{
    SetSyncedByCaller(isSynced != 0);
}

int gflSaveBitmapUTF8(const char *path, const GFL_BITMAP *bitmap, const GFL_SAVE_PARAMS *params)
{
    return Guarded([&] { return path && bitmap && params ? Save(path, *bitmap, nullptr, *params) : BadParameters(); });
}

int gflSaveRowsUTF8(const char *path, const GFL_BITMAP *bitmap, GFL_ROWS_CALLBACK rows, void *userData,
                    const GFL_SAVE_PARAMS *params)
{
    return Guarded([&] {
        if (!path || !bitmap || !rows || !params)
            return BadParameters();
        const RowMaker maker = {rows, userData};
        return Save(path, *bitmap, &maker, *params);
    });
}

int gflSaveBitmapIntoMemory(std::uint8_t **data, std::uint32_t *size, const GFL_BITMAP *bitmap,
                            const GFL_SAVE_PARAMS *params)
{
    if (data)
        *data = nullptr;
    return Guarded([&] {
        if (!data || !size || !bitmap || !params)
            return BadParameters();
        if (Status status = CheckSave(*bitmap, nullptr, *params); !status)
            return status;
        MemorySink sink;
        if (Status status = SaveTo(&sink, *CodecAt(params->FormatIndex), *bitmap, nullptr, *params); !status)
            return status;
        if (sink.Size() > UINT32_MAX)
            return Status::Fail(GFL_ERROR_FILE_WRITE, "the file is too large for a block of memory");
        *size = static_cast<std::uint32_t>(sink.Size());
        *data = sink.Take();
        return Status::Ok();
    });
}
