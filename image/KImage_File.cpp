// Image files: reading into the bitmap record and writing from it, through the image-file layer.
#include "KImage.h"

#include "DiskChecks.h"
#include "ImageDatas.h"
#include "KImage_p.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <cctype>
#include <exception>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace {

struct BitmapDeleter {
    void operator()(GFL_BITMAP *bitmap) const { gflFreeBitmap(bitmap); }
};
using Bitmap = std::unique_ptr<GFL_BITMAP, BitmapDeleter>;

/// Copies ICC profile, IPTC and EXIF, if @p source has them, to the bitmap about to be written. XMP is not copied: it
/// describes the editing of the source.
/// @return the layer's error
int CopyMetadata(GFL_BITMAP *source, GFL_BITMAP *target, GFL_SAVE_PARAMS &params)
{
    if (gflBitmapHasICCProfile(source))
        params.Flags |= GFL_SAVE_ICC_PROFILE;
    return gflBitmapCopyMetadata(source, target);
}

/// Marks the bitmap about to be written as edited, unless the record is empty. @return the layer's error
int MarkEdited(GFL_BITMAP *source, GFL_BITMAP *target, const KImage::EditRecord &record)
{
    if (record.isEmpty())
        return GFL_NO_ERROR;
    std::vector<std::pair<QByteArray, QByteArray>> texts;
    for (const auto &[key, value] : record)
        texts.emplace_back(key.toUtf8(), value.toUtf8());
    std::vector<GFL_XMP_ITEM> items;
    for (const auto &[key, value] : texts)
        items.push_back({key.constData(), value.constData()});
    return gflBitmapMarkEdited(target, source, items.data(), static_cast<std::uint32_t>(items.size()));
}

QString FormatName(const QString &format)
{
    const QString name = format.toLower();
    if (name == QLatin1String("jpg"))
        return QStringLiteral("jpeg");
    if (name == QLatin1String("tif"))
        return QStringLiteral("tiff");
    if (name == QLatin1String("hdr"))
        return QStringLiteral("hdri");
    return name;
}

/// Throws if a save failed because of the disk; call it right after the failure. Returns if the disk is not the cause.
/// If there was no file, the check creates an empty one, which is then removed.
void BlameDisk(const QString &fileName, const GFL_BITMAP &bitmap, const QString &where)
{
    const QString reason = QString::fromUtf8(gflLastErrorText());
    const bool existed = QFile::exists(fileName);
    const qint64 bytes = static_cast<qint64>(bitmap.Width) * bitmap.Height * bitmap.BytesPerPixel;
    try {
        CheckAndThrowForDiskSpace(fileName, bytes, where);
    } catch (const KException &e) {
        throw KFileException(e.what(), where, e.what() + QLatin1String(": ") + reason);
    }
    if (!existed && QFileInfo(fileName).size() == 0) // keep a file that another program has created in the meantime
        QFile::remove(fileName);
}

struct ErrorName {
    int error;
    const char *name;
};

constexpr ErrorName kErrorNames[] = {
    {GFL_ERROR_FILE_OPEN, "GFL_ERROR_FILE_OPEN"},           {GFL_ERROR_FILE_READ, "GFL_ERROR_FILE_READ"},
    {GFL_ERROR_FILE_CREATE, "GFL_ERROR_FILE_CREATE"},       {GFL_ERROR_FILE_WRITE, "GFL_ERROR_FILE_WRITE"},
    {GFL_ERROR_NO_MEMORY, "GFL_ERROR_NO_MEMORY"},           {GFL_ERROR_UNKNOWN_FORMAT, "GFL_ERROR_UNKNOWN_FORMAT"},
    {GFL_ERROR_BAD_BITMAP, "GFL_ERROR_BAD_BITMAP"},         {GFL_ERROR_BAD_FORMAT_INDEX, "GFL_ERROR_BAD_FORMAT_INDEX"},
    {GFL_ERROR_BAD_PARAMETERS, "GFL_ERROR_BAD_PARAMETERS"},
};

const char *NameOfError(int error)
{
    for (const ErrorName &entry : kErrorNames) {
        if (entry.error == error)
            return entry.name;
    }
    return "GFL_UNKNOWN_ERROR";
}

/// Maps OpenEXR compression numbers to the layer's; any other number gives 4 (PIZ).
unsigned short ExrCompression(int compression)
{
    if (compression >= 1 && compression <= 4)
        return static_cast<unsigned short>(compression - 1);
    if (compression >= 6 && compression <= 8)
        return static_cast<unsigned short>(compression - 1);
    return 4;
}

unsigned short TiffCompression(int compression)
{
    constexpr unsigned short kNone = 0, kLzw = 2, kDeflate = 4, kZstandard = 50000;
    return compression == 2 ? kLzw : compression == 3 ? kDeflate : compression == kZstandard ? kZstandard : kNone;
}

int FormatIndex(const QString &formatName)
{
    return gflGetFormatIndexByName(formatName.toLocal8Bit().constData());
}

/// Runs the steps common to Write and WriteRows. Doesn't access the pixels of @p image; @p save(path, params) writes
/// the file and returns the layer's error.
template <typename Save>
void WriteBy(KImage &image, const QString &fileName, const KImage::FileForm &form, const QString &metadataSource,
             const KImage::EditRecord &record, Save save)
{
    if (!image.m_bitmap)
        KThrow(kInvalidBitmap);
    if (!IsWorkingDepth(image.bitsPerComponent()))
        KThrow(kInvalidBitmap);
    if (fileName.isEmpty())
        KThrow(kInvalidParameter);
    if (form.format.isEmpty())
        KThrow(kInvalidParameter);

    const QString formatName = FormatName(form.format);
    GFL_SAVE_PARAMS params;
    gflGetDefaultSaveParams(&params);
    image.TranscodeCompression(formatName, form.compression, params);
    if (form.quality >= 0)
        params.Quality = static_cast<unsigned short>(form.quality);
    if (form.halfFloats)
        params.Flags |= GFL_SAVE_HALF_FLOATS;
    if (!record.isEmpty())
        params.Flags |= GFL_SAVE_THUMBNAIL;

    if (!metadataSource.isEmpty()) {
        GFL_BITMAP *loaded = nullptr;
        const int error = gflLoadMetadataUTF8(metadataSource.toUtf8().constData(), &loaded);
        const Bitmap source(loaded);
        image.CheckIfGFLError(error, metadataSource, KPlace());
        image.CheckIfGFLError(CopyMetadata(source.get(), image.m_bitmap, params), metadataSource, KPlace());
        image.CheckIfGFLError(MarkEdited(source.get(), image.m_bitmap, record), metadataSource, KPlace());
    }

    params.FormatIndex = FormatIndex(formatName);
    const int error = save(fileName.toUtf8().constData(), params);
    if (error != GFL_NO_ERROR)
        BlameDisk(fileName, *image.m_bitmap, KPlace());
    image.CheckIfGFLError(error, fileName, KPlace());
}

/// Context of a WriteRows call, passed through the layer, which no exception may cross.
struct RowsRequest {
    const KImage::RowsToWrite &rows;
    std::mutex mutex;
    std::exception_ptr failure; // the first; guarded by the mutex
};

int MakeRows(int firstRow, int count, std::uint8_t *data, std::uint32_t bytesPerLine, void *userData) noexcept
{
    auto &request = *static_cast<RowsRequest *>(userData);
    try {
        KImage band;
        band.AllocBitmap(request.rows.width, count, request.rows.type, request.rows.bitsPerComponent, /*clear=*/false,
                         data, static_cast<int>(bytesPerLine));
        request.rows.fill(band, firstRow);
        return GFL_NO_ERROR;
    } catch (...) {
        const std::lock_guard<std::mutex> lock(request.mutex);
        if (!request.failure)
            request.failure = std::current_exception();
        return GFL_ERROR_BAD_BITMAP;
    }
}

bool IsSameByte(char a, char b)
{
    return a == b;
}

bool IsSameLetter(char a, char b)
{
    return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
}

} // namespace

bool IsExtention(const std::string &name, const std::string &extension, bool caseSensitive)
{
    return name.size() >= extension.size()
        && std::equal(extension.rbegin(), extension.rend(), name.rbegin(), caseSensitive ? IsSameByte : IsSameLetter);
}

void KImage::Read(QString fileName, unsigned short type, bool thumbnail)
{
    FreeBitmap();
    GFL_LOAD_PARAMS params;
    ImageDatas::GetDefaultLoadParams(&params);
    params.Flags |= GFL_LOAD_FULL | GFL_LOAD_METADATA | GFL_LOAD_ORIGINAL_DEPTH | GFL_LOAD_FORCE_COLOR_MODEL;
    params.ColorModel = type;
    CheckIfFileExists(fileName, QStringLiteral("Read"));
    const QByteArray path = fileName.toUtf8();
    FileInformation information;
    const int error = thumbnail ? gflLoadThumbnailUTF8(path.constData(), 0, 0, &m_bitmap, &params, &information)
                                : gflLoadBitmapUTF8(path.constData(), &m_bitmap, &params, &information);
    CheckIfGFLError(error, fileName, KPlace());
}

void KImage::ID_Read(QString fileName, bool nativeDepth)
{
    ReadAsStored(fileName, nativeDepth, 0);
}

void KImage::ID_ReadPending(QString fileName, bool nativeDepth)
{
    ReadAsStored(fileName, nativeDepth, GFL_LOAD_PENDING);
}

void KImage::ReadAsStored(const QString &fileName, bool nativeDepth, unsigned int flags)
{
    const QString where = QStringLiteral("ID_Read");
    if (m_bitmap)
        KThrow(kInvalidBitmap);
    if (fileName.isEmpty())
        KThrow(kInvalidParameter);
    GFL_LOAD_PARAMS params;
    ImageDatas::GetDefaultLoadParams(&params);
    params.Flags |= GFL_LOAD_FULL | flags;
    if (nativeDepth)
        params.Flags |= GFL_LOAD_ORIGINAL_DEPTH;
    CheckIfFileExists(fileName, where);
    FileInformation information;
    const int error = gflLoadBitmapUTF8(fileName.toUtf8().constData(), &m_bitmap, &params, &information);
    CheckIfGFLError(error, fileName, where);
}

int KImage::WaitForRows(int rows, const QString &fileName) const
{
    int ready = 0;
    const int error = gflWaitForRows(m_bitmap, rows, &ready);
    KImage().CheckIfGFLError(error, fileName, QStringLiteral("ID_Read"));
    return ready;
}

void KImage::ID_ReadReduced(QString fileName, bool nativeDepth, int width, int height)
{
    if (m_bitmap)
        KThrow(kInvalidBitmap);
    if (fileName.isEmpty())
        KThrow(kInvalidParameter);
    KImage whole;
    whole.ID_Read(fileName, nativeDepth);
    whole.Resize(*this, width, height);
}

void KImage::ReadFromMemory(unsigned char *data, unsigned int size)
{
    FreeBitmap();
    GFL_LOAD_PARAMS params;
    gflGetDefaultLoadParams(&params);
    FileInformation information;
    const int error = gflLoadBitmapFromMemory(data, size, &m_bitmap, &params, &information);
    CheckIfGFLError(error, QString(), KPlace());
}

void KImage::Write(QString fileName, QString format, int compression, QString metadataSource)
{
    WriteBy(
        *this, fileName, {format, compression}, metadataSource, {},
        [this](const char *path, const GFL_SAVE_PARAMS &params) { return gflSaveBitmapUTF8(path, m_bitmap, &params); });
}

void KImage::WriteRows(const RowsToWrite &rows, const QString &fileName, const FileForm &form,
                       const QString &metadataSource, const EditRecord &record)
{
    if (!IsWorkingType(rows.type) || !IsWorkingDepth(rows.bitsPerComponent))
        KThrow(kInvalidParameter);
    KImage shape(rows.width, /*height=*/1, rows.type, rows.bitsPerComponent, /*clear=*/false, nullptr, 0);
    shape.m_bitmap->Height = rows.height; // like the record of the whole picture; its pixels are never accessed
    RowsRequest request = {rows, {}, nullptr};
    const auto save = [&](const char *path, GFL_SAVE_PARAMS params) {
        if (rows.fast)
            params.Flags |= GFL_SAVE_FAST;
        const int error = gflSaveRowsUTF8(path, shape.m_bitmap, MakeRows, &request, &params);
        if (request.failure)
            std::rethrow_exception(request.failure);
        return error;
    };
    WriteBy(shape, fileName, form, metadataSource, record, save);
}

void KImage::WriteIntoMemory(unsigned char **data, unsigned int *size, QString format, int compression)
{
    if (!m_bitmap)
        KThrow(kInvalidBitmap);
    if (!IsWorkingDepth(bitsPerComponent()))
        KThrow(kInvalidBitmap);
    if (format.isEmpty())
        KThrow(kInvalidParameter);
    const QString formatName = FormatName(format);
    GFL_SAVE_PARAMS params;
    gflGetDefaultSaveParams(&params);
    TranscodeCompression(formatName, compression, params);
    params.FormatIndex = FormatIndex(formatName);
    CheckIfGFLError(gflSaveBitmapIntoMemory(data, size, m_bitmap, &params), QString(), KPlace());
}

void KImage::ID_WriteToCache(QString fileName)
{
    const QString where = QStringLiteral("ID_WriteToCache");
    if (!m_bitmap)
        KThrow(kInvalidBitmap);
    if (fileName.isEmpty())
        KThrow(kInvalidParameter);
    GFL_SAVE_PARAMS params;
    gflGetDefaultSaveParams(&params);
    params.FormatIndex = FormatIndex(QStringLiteral("tiff"));
    const int error = gflSaveBitmapUTF8(fileName.toUtf8().constData(), m_bitmap, &params);
    if (error != GFL_NO_ERROR)
        BlameDisk(fileName, *m_bitmap, where);
    CheckIfGFLError(error, fileName, where);
}

void KImage::Output_PNG_RGBA(QString fileName) const
{
    KImage image;
    Convert(image, GFL_RGBA, 8);
    image.Write(fileName, QStringLiteral("png"), -1, QString());
}

void KImage::Output_PNG_RGB(QString fileName) const
{
    KImage image;
    Convert(image, GFL_RGB, 8);
    image.Write(fileName, QStringLiteral("png"), -1, QString());
}

void KImage::Output_PNG_A(QString fileName) const
{
    KImage alpha;
    ExtractAlpha(alpha, 8);
    alpha.Write(fileName, QStringLiteral("png"), -1, QString());
}

void KImage::Convert(unsigned short mode, unsigned short parameters)
{
    if (!m_bitmap || m_bitmap->BitsPerComponent != 8)
        KThrow(kInvalidBitmap);
    if (!m_ownsData) { // the layer may replace the pixels
        KImage own(*this);
        std::swap(m_bitmap, own.m_bitmap);
        std::swap(m_ownsData, own.m_ownsData);
    }
    CheckIfGFLError(gflChangeColorDepth(m_bitmap, nullptr, mode, parameters), QString(), QStringLiteral("Convert"));
}

void KImage::TranscodeCompression(QString format, int compression, GFL_SAVE_PARAMS &params)
{
    if (compression == -1)
        return;
    if (format == QLatin1String("jpeg"))
        params.Quality = static_cast<unsigned short>(compression * 8 + 4);
    else if (format == QLatin1String("tiff"))
        params.Compression = TiffCompression(compression);
    else if (format == QLatin1String("exr"))
        params.Compression = ExrCompression(compression);
    else if (format == QLatin1String("png") || format == QLatin1String("hdri") || format == QLatin1String("psd"))
        params.Compression = static_cast<unsigned short>(compression);
}

void KImage::CheckIfGFLError(int error, QString fileName, QString where)
{
    const int number = error & 0xFFFF;
    if (number == GFL_NO_ERROR)
        return;
    QString message =
        QCoreApplication::translate("KException", "Error GFL : \"%1\"").arg(QLatin1String(NameOfError(number)));
    if (!fileName.isEmpty()) {
        message += QLatin1Char('\n')
            + QCoreApplication::translate("KException", "File : \"%1\"").arg(QFileInfo(fileName).absoluteFilePath());
    }
    throw KFileException(message, where, QString::fromUtf8(gflLastErrorText()));
}
