#include "ImageDef.h"

#include "ImageDatas.h"
#include "KImageLoader.h"
#include "KImage_p.h"

#include <QCryptographicHash>
#include <QFileInfo>

#include <memory>

namespace {

constexpr int kThumbnailScaleMax = 32; // the larger thumbnail has at least 1/32 of the picture's width and height

enum ExifMode { kExifOfFile = 0, kExifDefaults = 1, kExifForced = 2 };

const ImageDatas &Settings()
{
    static const ImageDatas defaults; // for a module that was never started
    return ImageDatas::settings ? *ImageDatas::settings : defaults;
}

bool EndsWithOneOf(const QString &path, const QStringList &endings)
{
    return std::any_of(endings.cbegin(), endings.cend(),
                       [&path](const QString &ending) { return path.endsWith(ending, Qt::CaseInsensitive); });
}

void AppendErrorMessage(const QString &message)
{
    static QMutex mutex;
    const CacheLocker locker(mutex);
    ImageDef::g_ErrorMessages += message;
}

/// Returns why pixels of this kind aren't supported, or None. Photoshop files with three or more channels are always
/// supported, because the image-file layer returns them as RGB.
RefusalReason::Kind KindOfRefusal(const QString &path, const GFL_FILE_INFORMATION &information)
{
    const QString description = QString::fromLatin1(information.Description);
    const auto isDescribedAs = [&](const char *kind) {
        return description.contains(QLatin1String(kind), Qt::CaseInsensitive);
    };
    const int channels = information.ComponentsPerPixel;
    const bool isPhotoshop = EndsWithOneOf(path, {QStringLiteral("psb"), QStringLiteral("psd")});
    const std::pair<bool, RefusalReason::Kind> suspicions[] = {
        {information.ColorModel == GFL_CM_LAB || isDescribedAs("LAB"), RefusalReason::Lab},
        {information.ColorModel == GFL_CM_CMYK || isDescribedAs("CMYK"), RefusalReason::Cmyk},
        {channels != 3 && channels != 4 && !isPhotoshop, RefusalReason::OtherChannels},
        {description == QLatin1String("TIFF tiled"), RefusalReason::Tiled},
    };
    const auto suspicion =
        std::find_if(std::begin(suspicions), std::end(suspicions), [](auto &row) { return row.first; });
    if (suspicion == std::end(suspicions))
        return RefusalReason::None;
    if (channels == 1)
        return RefusalReason::Gray;
    return isPhotoshop && channels >= 3 ? RefusalReason::None : suspicion->second;
}

/// Reads the parts of a file that a description needs: the header, and a record with the metadata. The record has
/// pixels only if a thumbnail is requested. @p bitmap may stay null if there is no metadata.
bool ReadHead(const QString &path, bool withThumbnail, GFL_FILE_INFORMATION *information, GFL_BITMAP **bitmap)
{
    const QByteArray name = path.toUtf8();
    if (withThumbnail) {
        GFL_LOAD_PARAMS params;
        ImageDatas::GetDefaultLoadParams(&params);
        params.Flags |= GFL_LOAD_METADATA | GFL_LOAD_FORCE_COLOR_MODEL;
        params.ColorModel = GFL_RGBA;
        params.DefaultAlpha = 255;
        const QSize box = Settings().thumbnailSize;
        return gflLoadThumbnailUTF8(name.constData(), box.width(), box.height(), bitmap, &params, information)
            == GFL_NO_ERROR;
    }
    constexpr std::int32_t kAnyFormat = -1;
    constexpr std::uint32_t kFlags = 4; // the customary value; it has no effect
    if (gflGetFileInformationExUTF8(name.constData(), kAnyFormat, information, kFlags) != GFL_NO_ERROR)
        return false;
    gflLoadMetadataUTF8(name.constData(), bitmap); // one read for all metadata blocks
    return true;
}

/// Returns the largest power of two, at most 32, by which a picture can be reduced and still cover the box in width or
/// height.
int ScaleThatCovers(int width, int height, const QSize &box)
{
    int scale = kThumbnailScaleMax;
    while (box.width() > width / scale && box.height() > height / scale && scale > 1)
        scale /= 2;
    return scale;
}

/// Returns the smallest power of two, at most 32, that reduces a picture so that it fits the box in width or height.
int ScaleThatFits(int width, int height, const QSize &box)
{
    int scale = 1;
    while (width / scale > box.width() && height / scale > box.height() && scale < kThumbnailScaleMax)
        scale *= 2;
    return scale;
}

KException FileException(const char *text, const QString &fileName)
{
    return KException(QCoreApplication::translate("QCoreApplication", text).arg(QFileInfo(fileName).absoluteFilePath()),
                      QString());
}

/// Wraps a block from the image-file layer so that it is freed at the end of the scope.
template <typename Data> std::unique_ptr<Data, void (*)(Data *)> Block(Data *data, void (*free)(Data *))
{
    return {data, free};
}

/// Returns the suffixes by which hosts recognize raw images (m_isRaw). The image-file layer reads more raw formats.
const QStringList &RawSuffixes()
{
    static const QStringList suffixes =
        QStringLiteral(".ARW .CRW .CR2 .RAF .NEF .DNG .SRF .SR2 .ORF .MRW .PEF .MEF .MOS").split(QLatin1Char(' '));
    return suffixes;
}

} // namespace

CameraProperties ImageDef::g_Cameras;
LensIDProperties ImageDef::g_Lenses;
QString ImageDef::g_ErrorMessages;

// --- Construction and assignment ---

ImageDef::ImageDef()
{
    Init();
}

ImageDef::ImageDef(const ImageDef &other) : ImageDef()
{
    *this = other;
}

ImageDef &ImageDef::operator=(const ImageDef &other)
{
    if (this == &other)
        return *this;
    Init();
    m_fileName = other.m_fileName;
    m_rows = other.m_rows;
    m_cols = other.m_cols;
    m_bands = other.m_bands;
    m_depth = other.m_depth;
    m_hasExif = other.m_hasExif;
    m_shooting = other.m_shooting;
    m_exifSummary = other.m_exifSummary;
    m_hasIcc = other.m_hasIcc;
    m_hasIptc = other.m_hasIptc;
    m_hasXmp = other.m_hasXmp;
    m_isRaw = other.m_isRaw;
    m_isHdr = other.m_isHdr;
    m_model = other.m_model;
    m_userGeometry = other.m_userGeometry;
    m_thumbnail = other.m_thumbnail;
    if (other.m_highResThumbnail)
        m_highResThumbnail = new KImage(*other.m_highResThumbnail);
    m_highResReady = other.m_highResReady.load();
    return *this;
}

ImageDef::~ImageDef()
{
    delete m_highResThumbnail;
    delete m_thumbnailPixmap;
}

void ImageDef::Init()
{
    m_fileName.clear();
    m_rows = m_cols = m_bands = m_depth = 0;
    m_hasIcc = m_hasIptc = m_hasXmp = m_isRaw = m_isHdr = false;
    m_userGeometry = UserGeometry();
    delete m_thumbnailPixmap;
    m_thumbnailPixmap = nullptr;
    m_highResReady = false;
    delete m_highResThumbnail;
    m_highResThumbnail = nullptr;
    m_hasExif = false;
    m_model = 0;
    ApplyExifMode();
}

/// Applies the camera data of the settings if exifMode requires it. Returns whether it did.
bool ImageDef::ApplyExifMode()
{
    const ImageDatas &settings = Settings();
    if (settings.exifMode == kExifDefaults && !m_hasExif) {
        m_shooting.focal35mm = static_cast<double>(settings.exifDefaultFocal35mm);
        m_model = settings.exifDefaultLensModel;
    } else if (settings.exifMode == kExifForced) {
        m_shooting.focal35mm = static_cast<double>(settings.exifForcedFocal35mm);
        m_shooting.distortionK1 = static_cast<double>(settings.exifForcedK1);
        m_shooting.distortionK2 = static_cast<double>(settings.exifForcedK2);
        m_shooting.distortionK3 = static_cast<double>(settings.exifForcedK3);
        m_model = settings.exifForcedLensModel;
    } else {
        return false;
    }
    m_hasExif = true;
    return true;
}

// --- Description ---

bool ImageDef::CreateAPicture(const QString &path, ImageDef *&out, bool withThumbnail)
{
    RefusalReason reason;
    out = TryToDescribe(path, withThumbnail, &reason).release();
    return out != nullptr;
}

/// @return null, with @p reason filled, for a file that can't be read or isn't supported.
std::unique_ptr<ImageDef> ImageDef::TryToDescribe(const QString &path, bool withThumbnail, RefusalReason *reason)
{
    try {
        return Describe(path, withThumbnail, reason);
    } catch (const KException &e) {
        reason->text = e.what();
    } catch (const std::bad_alloc &) {
        reason->text = QStringLiteral("Not enough memory");
    } catch (const std::exception &e) {
        reason->text = QString::fromUtf8(e.what());
    }
    reason->kind = RefusalReason::Failed;
    return nullptr;
}

std::unique_ptr<ImageDef> ImageDef::Describe(const QString &path, bool withThumbnail, RefusalReason *reason)
{
    g_Cameras.Initialize();
    g_Lenses.Initialize();
    if (EndsWithOneOf(path, Settings().thumbnailExtensions)) {
        reason->kind = RefusalReason::Companion;
        return nullptr;
    }
    FileInformation information;
    KImage loaded; // owns the record
    if (!ReadHead(path, withThumbnail, &information, &loaded.m_bitmap)) {
        reason->kind = RefusalReason::Unread;
        reason->text = QString::fromUtf8(gflLastErrorText());
        return nullptr;
    }
    reason->channels = information.ComponentsPerPixel;
    reason->kind = KindOfRefusal(path, information);
    if (reason->kind == RefusalReason::Gray)
        AppendErrorMessage(QFileInfo(path).fileName() + tr(": gray pictures are not supported.") + QLatin1Char('\n'));
    if (reason->kind != RefusalReason::None)
        return nullptr;

    auto image = std::make_unique<ImageDef>();
    image->m_fileName = path;
    image->m_cols = information.Width;
    image->m_rows = information.Height;
    image->m_bands = information.ComponentsPerPixel;
    image->m_depth = information.BitsPerComponent;
    image->m_id = IdOf(path);
    if (withThumbnail)
        image->SetThumbnails(loaded);
    image->m_isRaw = EndsWithOneOf(path, RawSuffixes());
    image->m_isHdr = EndsWithOneOf(path, {QStringLiteral(".HDR"), QStringLiteral(".EXR")});
    if (loaded.m_bitmap)
        image->SetMetadata(loaded.m_bitmap);
    if (image->ApplyExifMode())
        image->m_shooting.focalRatio = 1.0;
    return image;
}

void ImageDef::SetThumbnails(KImage &loaded)
{
    const QSize box = Settings().thumbnailSize;
    const int scale = ScaleThatCovers(m_cols, m_rows, box);
    m_highResThumbnail = new KImage; // enlarged from the small thumbnail; a placeholder until real pixels arrive
    loaded.Resize(*m_highResThumbnail, std::max(1, m_cols / scale), std::max(1, m_rows / scale));

    KImage centered(box.width(), box.height(), loaded.type(), loaded.bitsPerComponent(), /*clear=*/true, nullptr, 0);
    loaded.CopyTo(centered, (box.width() - loaded.width()) / 2, (box.height() - loaded.height()) / 2);
    centered.ToQImage(m_thumbnail);
}

void ImageDef::SetMetadata(GFL_BITMAP *bitmap)
{
    m_hasIcc = gflBitmapHasICCProfile(bitmap);
    m_hasIptc = gflBitmapHasIPTC(bitmap);
    m_hasXmp = gflBitmapHasXMP(bitmap);
    if (m_hasIcc)
        m_metaData.SetIccProfile(Block(gflBitmapGetICCProfileEx(bitmap), gflFreeICCProfile).get());
    if (m_hasIptc)
        m_metaData.SetIptc(Block(gflBitmapGetIPTC(bitmap), gflFreeIPTC).get());
    if (m_hasXmp)
        m_metaData.SetXmp(Block(gflBitmapGetXMPEx(bitmap), gflFreeXMP).get());

    if (!gflBitmapHasEXIF(bitmap))
        return;
    const auto texts = Block(gflBitmapGetEXIF(bitmap, 1), gflFreeEXIF);
    const auto raw = Block(gflBitmapGetEXIF2(bitmap), gflFreeEXIF2);
    if (!texts)
        return;
    m_metaData.SetExifex(raw.get());
    AnalyseExif(texts.get(), raw.get());
    if (m_hasExif)
        SetLensKind();
}

void ImageDef::SetLensKind()
{
    constexpr float kWidestRectilinearMm = 16.0F; // 35 mm equivalent; unknown lenses below it count as fisheyes
    const int kind = IsFisheyeLens(m_shooting.makerName, m_shooting.lensId);
    if (kind < 0) {
        const auto focalMm = static_cast<float>(m_shooting.focal35mm);
        m_model = focalMm != 0.0F && focalMm < kWidestRectilinearMm;
    } else if (kind < 2) { // tilt/shift lenses leave m_model unchanged
        m_model = kind;
    }
}

bool ImageDef::IsAPicture(const QString &path)
{
    const QFileInfo file(path);
    if (!file.exists())
        return false;
    const QString suffix = QLatin1Char('.') + file.suffix().toLower();
    return suffix == QLatin1String(".mos") || gflHasGoodExtension(suffix.toLocal8Bit().constData());
}

int ImageDef::IsFisheyeLens(QString maker, QString lensId)
{
    return g_Lenses.isFisheyLens(maker, lensId);
}

// --- In the cache ---

QString ImageDef::IdOf(const QString &path)
{
    const QByteArray text = path.toLocal8Bit();
    const QByteArray hash = QCryptographicHash::hash(QByteArray(text.constData()), QCryptographicHash::Md5);
    return QString::fromLatin1(hash.toHex());
}

bool ImageDef::IsAPicture(const QString &path, ImageDef *&out, bool withThumbnail)
{
    RefusalReason reason;
    return IsAPicture(path, out, withThumbnail, &reason);
}

bool ImageDef::IsAPicture(const QString &path, ImageDef *&out, bool withThumbnail, RefusalReason *reason)
{
    KImageCache &cache = KImageCache::Instance();
    *reason = RefusalReason();
    out = Find(path);
    if (out)
        return true;
    out = TryToDescribe(path, withThumbnail, reason).release();
    if (!out)
        return false;
    std::unique_ptr<ImageDef> surplus; // set if another thread has described the same file in the meantime
    const CacheLocker locker(cache.m_mutex);
    ImageDef *const inCache = cache.FindOrMake(out)->m_def;
    if (inCache != out)
        surplus.reset(std::exchange(out, inCache));
    return true;
}

ImageDef *ImageDef::Find(const QString &path)
{
    KImageCache &cache = KImageCache::Instance();
    const CacheLocker locker(cache.m_mutex);
    return cache.Find(path);
}

void ImageDef::Delete(const QString &path)
{
    Delete(Find(path));
}

void ImageDef::Delete(ImageDef *image)
{
    if (!image)
        return;
    KImageCache::Instance().Remove(image);
    delete image;
}

bool ImageDef::Reload()
{
    ImageDef *made;
    if (!CreateAPicture(m_fileName, made, /*withThumbnail=*/true))
        return false;
    const std::unique_ptr<ImageDef> fresh(made);
    const int model = m_model;
    const UserGeometry userGeometry = m_userGeometry;
    *this = *fresh;
    m_model = model;
    m_userGeometry = userGeometry;

    KImageCache &cache = KImageCache::Instance();
    const CacheLocker locker(cache.m_mutex);
    if (auto *const item = cache.Find(this))
        item->Adopt(item->m_def ? item->m_def.data() : this);
    return true;
}

KImage *ImageDef::Lock(int width, int height, bool nativeDepth)
{
    KImageCache &cache = KImageCache::Instance();
    if (!QFileInfo::exists(FileName()))
        throw FileException(QT_TRANSLATE_NOOP("QCoreApplication", "File \"%1\" is not found"), FileName());
    KImageCache::Item *item;
    {
        const CacheLocker locker(cache.m_mutex);
        ++cache.m_accessCount;
        item = cache.FindOrMake(this); // before loading, so that a second thread finds the item and waits
    }
    KImage *const image = item->Lock(width, height, nativeDepth);
    if (!image || IsEmpty(*image)) {
        Unlock(width, height, nativeDepth);
        item->ReleaseFromMemory();
        throw FileException(QT_TRANSLATE_NOOP("QCoreApplication", "File \"%1\" cannot be loaded"), FileName());
    }
    // The larger thumbnail would need all rows, so leave it to the next lock that doesn't accept pending rows.
    if (gflAcceptsPendingRows())
        return image;
    try {
        image->WaitForRows(image->height(), FileName());
        KImageLoader::LockPostProcess(this, image, cache.m_mutex);
    } catch (...) {
        Unlock(width, height, nativeDepth);
        throw;
    }
    return image;
}

void ImageDef::Unlock(int width, int height, bool nativeDepth)
{
    KImageCache::Instance().Unlock(this, width, height, nativeDepth ? nDepth() : 8);
}

bool ImageDef::IsCached(int width, int height, bool nativeDepth)
{
    KImageCache &cache = KImageCache::Instance();
    KImageCache::Item *item;
    {
        const CacheLocker locker(cache.m_mutex);
        ++cache.m_accessCount;
        item = cache.Find(this);
    }
    return item && item->IsInMemory(width, height, nativeDepth ? nDepth() : 8);
}

void ImageDef::ReleaseFromMemory()
{
    KImageCache &cache = KImageCache::Instance();
    KImageCache::Item *item;
    {
        const CacheLocker locker(cache.m_mutex);
        item = cache.Find(this);
    }
    if (item)
        item->ReleaseFromMemory();
}

// --- Thumbnails ---

QPixmap *ImageDef::GetThumbnail() const
{
    if (!m_thumbnailPixmap) {
        m_thumbnailPixmap = new QPixmap(QPixmap::fromImage(m_thumbnail));
        m_thumbnail = QImage();
    }
    return m_thumbnailPixmap;
}

KImage *ImageDef::GetHighResThumbnail32()
{
    if (!m_highResReady) {
        const int scale = ScaleThatFits(m_cols, m_rows, Settings().thumbnailSize);
        Lock(m_cols / scale, m_rows / scale, /*nativeDepth=*/true); // also creates the thumbnail
        Unlock(m_cols / scale, m_rows / scale, /*nativeDepth=*/true);
    }
    return m_highResThumbnail;
}

void ImageDef::GetThumbnailFromHighRes(KImage &image)
{
    const int scale = ScaleThatFits(image.width(), image.height(), Settings().thumbnailSize);
    auto made = std::make_unique<KImage>();
    image.Resize(*made, image.width() / scale, image.height() / scale);
    if (made->bitsPerComponent() != 8) {
        auto converted = std::make_unique<KImage>();
        made->Convert(*converted, made->type(), 8);
        made = std::move(converted);
    }
    delete m_highResThumbnail;
    m_highResThumbnail = made.release();
    m_highResReady = true;
}

// --- Facts from the file ---

QString ImageDef::ShortFileName() const
{
    return QFileInfo(m_fileName).fileName();
}

QString ImageDef::PathName() const
{
    return QFileInfo(m_fileName).path();
}

float ImageDef::GetFocal() const
{
    return HasExif() ? static_cast<float>(m_shooting.focal35mm) : 0.0F;
}

qint64 ImageDef::GetTimestamp() const
{
    return HasExif() ? m_shooting.timestamp : 0;
}

float ImageDef::GetEV() const
{
    return HasExif() ? static_cast<float>(m_shooting.exposureValue) : 0.0F;
}

qint64 ImageDef::memSize() const
{
    constexpr qint64 kFixedBytes = 216;
    qint64 bytes = kFixedBytes + TextBytes(m_fileName) + TextBytes(m_exifSummary) + TextBytes(m_id)
        + m_shooting.memSize() + m_thumbnail.sizeInBytes();
    if (m_thumbnailPixmap)
        bytes += static_cast<qint64>(m_thumbnailPixmap->width()) * m_thumbnailPixmap->height() * 4;
    if (m_highResThumbnail && m_highResThumbnail->m_bitmap)
        bytes += static_cast<qint64>(m_highResThumbnail->width()) * m_highResThumbnail->height();
    return bytes;
}
