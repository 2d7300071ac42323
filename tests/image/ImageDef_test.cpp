// Tests of file descriptions: refusals, settings, thumbnails, identity, and reloading.
#include "Case.h"
#include "DngFile.h"
#include "Table.h"
#include "Thrown.h"
#include "WrittenPictures.h"

#include <QFileInfo>
#include <QtTest>

#include <exiv2/exiv2.hpp>
#include <tiffio.h>

#include <cmath>
#include <cstring>

namespace {

void WriteTiff(const QString &path, int photometric, int channels, bool isTiled = false)
{
    TIFF *file = TIFFOpen(path.toUtf8().constData(), "w");
    const std::pair<unsigned, int> fields[] = {{TIFFTAG_IMAGEWIDTH, 16},
                                               {TIFFTAG_IMAGELENGTH, 16},
                                               {TIFFTAG_BITSPERSAMPLE, 8},
                                               {TIFFTAG_PLANARCONFIG, 1},
                                               {TIFFTAG_SAMPLESPERPIXEL, channels},
                                               {TIFFTAG_PHOTOMETRIC, photometric},
                                               {TIFFTAG_TILEWIDTH, 16},
                                               {TIFFTAG_TILELENGTH, 16}};
    for (int i = 0; i < (isTiled ? 8 : 6); ++i)
        TIFFSetField(file, fields[i].first, fields[i].second);
    QByteArray pixels(16 * 16 * channels, 'x');
    (isTiled ? TIFFWriteEncodedTile : TIFFWriteEncodedStrip)(file, 0, pixels.data(), pixels.size());
    TIFFClose(file);
}

/// Returns a Photoshop file of 2 x 2 pixels with 8 bits per channel; @p mode 1 is gray, 4 CMYK, 9 Lab.
QByteArray Photoshop(char mode, char channels)
{
    QByteArray file("8BPS\0\1\0\0\0\0\0\0\0", 13);
    file += channels;
    file += QByteArray("\0\0\0\2\0\0\0\2\0\10\0", 11);
    file += mode;
    return file + QByteArray(3 * 4 + 2, '\0') + QByteArray(4 * channels, '\x80');
}

/// Writes a JPEG of 6 x 4 pixels from a camera that isn't in the table. Its EXIF has focal lengths unless @p focal35mm
/// is 0.
QString WriteWithExif(const QString &path, int focal35mm, const char *make)
{
    WritePicture(path, "jpeg", 6, 4);
    const Exiv2::Image::AutoPtr image = Exiv2::ImageFactory::open(path.toStdString());
    Exiv2::ExifData &exif = image->exifData();
    exif["Exif.Image.Make"] = make;
    exif["Exif.Image.Model"] = "No camera";
    exif["Exif.Photo.DateTimeOriginal"] = "2010:05:03 18:30:00";
    if (focal35mm) {
        exif["Exif.Photo.FocalLength"] = Exiv2::URational(static_cast<uint32_t>(focal35mm), 2);
        exif["Exif.Photo.FocalLengthIn35mmFilm"] = static_cast<uint16_t>(focal35mm);
    }
    image->writeMetadata();
    return path;
}

/// Returns, as text, all fields that a copy must take over.
QString TextOf(const ImageDef &image)
{
    QString text;
    const ImageDef::UserGeometry &user = image.m_userGeometry;
    QDebug(&text) << image.FileName() << image.ShortFileName() << image.PathName() << image.nCols() << image.nRows()
                  << image.nBands() << image.nDepth() << image.HasExif() << image.HasICC() << image.m_hasIptc
                  << image.m_hasXmp << image.IsRaw() << image.m_isHdr << image.Model() << image.GetFocal()
                  << image.GetTimestamp() << image.GetEV() << image.m_exifSummary << image.m_shooting.makerName
                  << user.kind << user.values[0] << user.values[1] << user.values[2] << user.values[3]
                  << image.m_thumbnail.size() << image.m_highResReady
                  << (image.m_highResThumbnail ? image.m_highResThumbnail->width() : 0);
    return text;
}

/// Replaces the real lens table with one that lists one lens from each of two makers.
void ReadTestLensTable()
{
    const QTemporaryDir folder;
    WriteFile(folder.filePath(QStringLiteral("lensid.txt")),
              "1 2 3;Fishmaker;A fisheye;1\n1 2 3;Plainmaker;A lens;0\n");
    const QStringList before = QDir::searchPaths(QStringLiteral("Data"));
    QDir::setSearchPaths(QStringLiteral("Data"), {folder.path()});
    ImageDef::g_Lenses.Initialize();
    QDir::setSearchPaths(QStringLiteral("Data"), before);
}

} // namespace

class tst_ImageDef : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase()
    {
        KImage::init(nullptr);
        ReadTestLensTable();
    }
    void cleanupTestCase() { KImage::exit(); }
    void init()
    {
        *ImageDatas::settings = ImageDatas();
        m_dir.reset(new QTemporaryDir);
    }

    void suffixes();
    void metadataBlocks();
    void rawFiles();
    void refusals();
    void exifModes();
    void thumbnails();
    void identity();
    void reload();
    void missingFiles();
    void sizeInMemory();

private:
    QString Path(const char *name) const { return m_dir->filePath(QString::fromUtf8(name)); }
    std::unique_ptr<ImageDef> Describe(const QString &path, bool withThumbnail = false)
    {
        ImageDef *image;
        ImageDef::CreateAPicture(path, image, withThumbnail);
        return std::unique_ptr<ImageDef>(image);
    }

    QScopedPointer<QTemporaryDir> m_dir;
};

void tst_ImageDef::suffixes()
{
    const struct {
        const char *name;
        bool isPicture, isRaw, isHdr;
    } rows[] = {{"a.JPG", true, false, false}, {"a.neF", true, true, false},   {"a.mos", true, true, false},
                {"a.EXR", true, false, true},  {"a.txt", false, false, false}, {"jpg", false, false, false}};
    for (const auto &row : rows) {
        const Case named(row.name);
        const QString path = Path(row.name);
        QVERIFY(!ImageDef::IsAPicture(path)); // doesn't exist yet
        WritePicture(path, "png", 4, 4);      // regardless of its name
        QVERIFY2(ImageDef::IsAPicture(path) == row.isPicture, row.name);
        const auto image = Describe(path);
        QVERIFY2(image && image->IsRaw() == row.isRaw && image->m_isHdr == row.isHdr, row.name);
    }
    for (const char *suffix :
         {"arw", "crw", "cr2", "raf", "nef", "dng", "srf", "sr2", "orf", "mrw", "pef", "mef", "mos", "tif"}) {
        const auto image = Describe(WritePicture(Path("b.") + QLatin1String(suffix), "png", 4, 4));
        QVERIFY2(image && image->IsRaw() == (qstrcmp(suffix, "tif") != 0), suffix);
    }
    ImageDatas::settings->thumbnailExtensions = QStringList{QStringLiteral("a.jpg")};
    QVERIFY(!Describe(Path("a.JPG")) && Describe(WritePicture(Path("a.THM"), "jpeg", 4, 4)));
}

void tst_ImageDef::metadataBlocks()
{
    const char *const all = "ICC, IPTC, XMP";
    for (const char *block : {"ICC", "IPTC", "XMP", "", all}) {
        const Case named(block, "blocks");
        const auto has = [block](const char *name) { return std::strstr(block, name) != nullptr; };
        const QString path = WritePicture(Path("blocks.jpg"), "jpeg", 6, 4);
        const Exiv2::Image::AutoPtr file = Exiv2::ImageFactory::open(path.toStdString());
        const QByteArray icc = QByteArray(128, 'i').replace(0, 4, QByteArray("\0\0\0\x80", 4)); // its length
        Exiv2::DataBuf profile(reinterpret_cast<const Exiv2::byte *>(icc.constData()), icc.size());
        if (has("ICC"))
            file->setIccProfile(profile, /*bTestValid=*/false);
        if (has("IPTC"))
            file->iptcData()["Iptc.Application2.Caption"] = "Sea";
        if (has("XMP"))
            file->xmpData()["Xmp.dc.source"] = "here";
        file->writeMetadata();
        for (const bool withThumbnail : {false, true}) {
            const auto image = Describe(path, withThumbnail);
            const KMetaData &data = image->m_metaData;
            QVERIFY2(image->HasICC() == has("ICC") && image->m_hasIptc == has("IPTC") && image->m_hasXmp == has("XMP"),
                     block);
            QVERIFY2(!data.IccProfile() == !has("ICC") && !data.Iptc() == !has("IPTC") && !data.Xmp() == !has("XMP"),
                     block);
            if (block != all)
                continue;
            QCOMPARE(QByteArray(reinterpret_cast<char *>(data.IccProfile()->Data), int(data.IccProfile()->Length)),
                     icc);
            QCOMPARE(data.Iptc()->ItemsList[data.Iptc()->NumberOfItems - 1].Value, "Sea");
            QVERIFY(QByteArray(reinterpret_cast<char *>(data.Xmp()->Data), int(data.Xmp()->Length)).contains("here"));
        }
    }
}

/// All functions that read pixels apply the raw development settings, and none applies the EXIF orientation.
void tst_ImageDef::rawFiles()
{
    const QString path = Path("raw.dng");
    QByteArray upright = DngFile(QSize(64, 48), {0.1, 0.25, 0.15});
    const QByteArray topLeft("\x12\x01\x03\0\1\0\0\0\1", 9); // orientation 1
    QVERIFY(upright.contains(topLeft));
    WriteFile(path, upright.replace(topLeft, QByteArray("\x12\x01\x03\0\1\0\0\0\6", 9)));
    for (const float redScaling : {1.0F, 0.5F}) {
        const Case named("red scaling", redScaling);
        ImageDatas::settings->rawRedScaling = redScaling;
        GFL_LOAD_PARAMS params;
        gflGetDefaultLoadParams(&params);
        params.Flags |= GFL_LOAD_FULL | GFL_LOAD_ORIGINAL_DEPTH;
        params.RawUseCameraBalance = ImageDatas::settings->rawUseCameraBalance;
        params.RawGamma = ImageDatas::settings->rawGamma;
        params.RawBrightness = ImageDatas::settings->rawBrightness;
        params.RawRedScaling = redScaling;
        GFL_BITMAP *wanted = nullptr;
        QCOMPARE(gflLoadBitmapUTF8(path.toUtf8().constData(), &wanted, &params, nullptr), int(GFL_NO_ERROR));
        const BitmapPtr owner(wanted);
        KImage toWork, whole;
        toWork.ID_Read(path, /*nativeDepth=*/true);
        whole.Read(path, GFL_RGB, /*thumbnail=*/false);
        for (const KImage *image : {&toWork, &whole})
            QCOMPARE(Difference(*image->m_bitmap, *wanted), QString());
        QCOMPARE(QSize(toWork.width(), toWork.height()), QSize(64, 48));
        const auto described = Describe(path, /*withThumbnail=*/true);
        const QRgb middle = described->m_thumbnail.pixel(64, 64);
        QVERIFY(std::abs(qRed(middle) - 255 * SampleAt(*wanted, 30, 20, 0)) < 2);
        QCOMPARE(described->nCols(), 64);
    }
}

void tst_ImageDef::refusals()
{
    for (const char *name : {"thumb.THM", "thumb2.thm", "rgb.jpg"})
        WritePicture(Path(name), "jpeg", 9, 7);
    WritePicture(Path("gray.PSD.jpg"), "jpeg", 9, 7, GFL_GREY);
    WritePicture(Path("rgba.png"), "png", 9, 7, GFL_RGBA, 16);
    WriteTiff(Path("rgb.tif"), PHOTOMETRIC_RGB, 3);
    WriteTiff(Path("tiled.tif"), PHOTOMETRIC_RGB, 3, true);
    WriteTiff(Path("tiled-cmyk.tif"), PHOTOMETRIC_SEPARATED, 4, true);
    WriteTiff(Path("tiled-lab.tif"), PHOTOMETRIC_CIELAB, 3, true);
    WriteTiff(Path("gray.tif"), PHOTOMETRIC_MINISBLACK, 1);
    WriteTiff(Path("gray-alpha.tif"), PHOTOMETRIC_MINISBLACK, 2);
    WriteTiff(Path("cmyk.tif"), PHOTOMETRIC_SEPARATED, 4);
    WriteTiff(Path("lab.tif"), PHOTOMETRIC_CIELAB, 3);
    WriteFile(Path("text.jpg"), "no picture");
    WriteFile(Path("gray.psd"), Photoshop(1, 1));
    WriteFile(Path("cmyk.PSD"), Photoshop(4, 4));
    WriteFile(Path("lab.psd"), Photoshop(9, 3));
    // Names, kinds of refusal and channels.
    const QString expected =
        QStringLiteral("cmyk.PSD 0 4; cmyk.tif 5 4; gray-alpha.tif 6 2; gray.psd 0 1; gray.PSD.jpg 3 1; "
                       "gray.tif 3 1; lab.psd 0 3; lab.tif 4 3; rgb.jpg 0 3; rgb.tif 0 3; rgba.png 0 4; text.jpg 1 0; "
                       "thumb.THM 2 0; thumb2.thm 2 0; tiled-cmyk.tif 5 4; tiled-lab.tif 4 3; tiled.tif 7 3; ");
    ImageDef *image;
    RefusalReason reason;
    for (bool withThumbnail : {false, true}) {
        const Case named("thumbnail", withThumbnail);
        ImageDef::g_ErrorMessages.clear();
        QString found;
        for (const QString &name : QDir(m_dir->path()).entryList(QDir::Files, QDir::Name | QDir::IgnoreCase)) {
            const bool isServed = ImageDef::IsAPicture(m_dir->filePath(name), image, withThumbnail, &reason);
            ImageDef::Delete(image);
            found += QStringLiteral("%1 %2 %3; ").arg(name).arg(reason.kind).arg(reason.channels);
            QVERIFY2(isServed == (reason.kind == RefusalReason::None), qPrintable(name));
            QVERIFY2(reason.text.isEmpty() == (reason.kind != RefusalReason::Unread), qPrintable(name));
        }
        QCOMPARE(found, expected);
        QCOMPARE(ImageDef::g_ErrorMessages,
                 QStringLiteral("gray.PSD.jpg: gray pictures are not supported.\n"
                                "gray.tif: gray pictures are not supported.\n"));
    }
    ImageDatas::settings->thumbnailSize = QSize(0x40000001, 1); // rows over 4 GiB
    QVERIFY(!ImageDef::IsAPicture(Path("rgb.jpg"), image, true, &reason) && !image);
    QCOMPARE(int(reason.kind), int(RefusalReason::Failed));
    QCOMPARE(reason.text, QStringLiteral("Not enough memory"));
}

void tst_ImageDef::exifModes()
{
    ImageDatas &settings = *ImageDatas::settings;
    settings.exifDefaultFocal35mm = 70;
    settings.exifForcedFocal35mm = 80;
    settings.exifForcedK1 = 0.5F;
    settings.exifForcedK2 = 0.25F;
    settings.exifForcedK3 = 0.125F;
    settings.exifDefaultLensModel = settings.exifForcedLensModel = 1;
    for (const QStringList &row : ReadTable(QStringLiteral(EXIF_MODES))) {
        const Case named(row);
        settings.exifMode = row[0].toInt();
        const QString path = Path("mode.jpg");
        const bool hasExif = !row[1].isEmpty();
        const auto image = Describe(hasExif ? WriteWithExif(path, row[2].toInt(), qPrintable(row[1]))
                                            : WritePicture(path, "jpeg", 6, 4));
        const ShootingInformation &shooting = image->m_shooting;
        const QString found =
            QStringLiteral("%1 %2 %3 %4,%5,%6 %7 %8").arg(image->HasExif()).arg(double(image->GetFocal()));
        QCOMPARE(found.arg(shooting.focalRatio)
                     .arg(shooting.distortionK1)
                     .arg(shooting.distortionK2)
                     .arg(shooting.distortionK3)
                     .arg(image->Model())
                     .arg(image->GetTimestamp() != 0),
                 row[3]);
        if (!hasExif)
            QCOMPARE(image->DumpExif(), QStringLiteral("No Exif\n"));
        QCOMPARE(image->m_metaData.Exifex() != nullptr, hasExif);
    }
    const QString dumped = WriteWithExif(Path("dump.jpg"), 60, "Canon");
    const Exiv2::Image::AutoPtr file = Exiv2::ImageFactory::open(dumped.toStdString());
    file->readMetadata();
    file->exifData()["Exif.CanonCs.Lens"] = "22 10 1";
    file->exifData()["Exif.CanonCs.LensType"] = uint16_t(235);
    file->writeMetadata();
    const auto image = Describe(dumped, true);
    const char *const lines[][3] = {{"01_010f", "Canon", "Make"},
                                    {"01_0110", "No camera", "Model"},
                                    {"02_9003", "2010:05:03 18:30:00", "DateTimeOriginal"},
                                    {"02_920a", "30", "FocalLength"},
                                    {"02_927c", "(70 bytes)", "MakerNote"}, // one field with 26 numbers
                                    {"02_a405", "60", "FocalLengthIn35mmFilm"},
                                    {"0032_0000", "Binary Value", "LensID"}};
    QString table = QStringLiteral("(  Tag  ) ------------------------Value----------------------|"
                                   "-------------------Description-------------------\n");
    for (const auto &line : lines)
        table += QString::asprintf("(%s) %-50s | %-50s\n", line[0], ('"' + QByteArray(line[1]) + '"').constData(),
                                   ('"' + QByteArray(line[2]) + '"').constData());
    QCOMPARE(image->DumpExif(), table);
    image->m_hasIcc = image->m_hasIptc = image->m_hasXmp = image->m_isRaw = image->m_isHdr = image->m_highResReady =
        true;
    image->m_model = 7;
    image->m_userGeometry = {{11, 12, 13, 14}, 15};
    QCOMPARE(TextOf(ImageDef(*image)), TextOf(*image));
    const QString before = TextOf(*image);
    const ImageDef &itself = *image;
    QCOMPARE(TextOf(*image = itself), before);
    QFile::remove(image->FileName());
    QCOMPARE(image->DumpExif(), QStringLiteral("ImageDef::DumpExif() Error\n"));
}

void tst_ImageDef::thumbnails()
{
    const struct {
        QSize picture;
        QSize standIn; // divided by the largest power of 2, up to 32, that leaves one side >= 128
        QSize real;    // divided by the smallest power of 2, up to 32, that leaves one side <= 128
        QRect filled;  // part of the thumbnail that the picture fills
    } rows[] = {{{6000, 4000}, {187, 125}, {187, 125}, {0, 21, 128, 85}},
                {{300, 600}, {75, 150}, {75, 150}, {32, 0, 64, 128}},
                {{60, 40}, {60, 40}, {60, 40}, {34, 44, 60, 40}},
                {{4800, 20}, {150, 1}, {4800, 20}, {0, 63, 128, 1}},
                {{1, 1}, {1, 1}, {1, 1}, {63, 63, 1, 1}}};
    ImageDatas::settings->thumbnailSize = QSize(60, 40);
    QCOMPARE(Describe(WritePicture(Path("own.jpg"), "jpeg", 200, 100), true)->m_thumbnail.size(), QSize(60, 40));
    ImageDatas::settings->thumbnailSize = QSize(128, 128);
    const auto sizeOf = [](const KImage *image) { return QSize(image->width(), image->height()); };
    for (const auto &row : rows) {
        const Case named(row.picture);
        const auto image =
            Describe(WritePicture(Path("t.jpg"), "jpeg", row.picture.width(), row.picture.height()), true);
        QVERIFY(image);
        QCOMPARE(sizeOf(image->m_highResThumbnail), row.standIn);
        const QImage small = image->m_thumbnail;
        QCOMPARE(small.size(), QSize(128, 128));
        QRect found;
        for (int i = 0; i < 128 * 128; ++i)
            found |= qAlpha(small.pixel(i % 128, i / 128)) ? QRect(i % 128, i / 128, 1, 1) : QRect();
        QCOMPARE(found, row.filled);
        QCOMPARE(image->GetThumbnail()->toImage().convertToFormat(small.format()), small);
        QCOMPARE(image->GetThumbnail(), image->GetThumbnail());
        QCOMPARE(sizeOf(image->GetHighResThumbnail32()), row.real);
        QVERIFY(image->m_highResReady && ImageDef(*image).m_highResReady);
    }
}

void tst_ImageDef::identity()
{
    // MD5 of the text "/a/b.jpg", by md5sum
    QCOMPARE(ImageDef::IdOf(QStringLiteral("/a/b.jpg")), QStringLiteral("13b7cf79c88a1e69c00837221ab2ea93"));
    QCOMPARE(ImageDef::IdOf(QStringLiteral("/a/b.jpg") + QChar(0) + QStringLiteral("c")),
             ImageDef::IdOf(QStringLiteral("/a/b.jpg")));
    const QString path = WritePicture(Path("id.jpg"), "jpeg", 8, 6);
    QVERIFY(!ImageDef::Find(path));
    ImageDef *const image = Picture(path);
    QCOMPARE(ImageDef::Find(path), image);
    QCOMPARE(Picture(path), image);
    QVERIFY(!ImageDef::Find(m_dir->path() + QStringLiteral("/./id.jpg")));
    QCOMPARE(image->PathName() + image->ShortFileName(), m_dir->path() + QStringLiteral("id.jpg"));
    QVERIFY(!Picture(Path("none.jpg")));

    // Copies return the pixels of the file that they describe, even without an ID or after describing another file.
    ImageDef *const other = Picture(WritePicture(Path("other.jpg"), "jpeg", 5, 4));
    ImageDef copy(*image), ofOther(*other);
    QVERIFY(copy.nCols() == 8 && copy.m_id.isEmpty());
    const std::unique_ptr<ImageDef> assigned = Describe(path);
    *assigned = *other;
    KImage *const lent = other->LockFullSize(true);
    for (ImageDef *one : {&ofOther, assigned.get()}) {
        QVERIFY(copy.Lock(5, 4, true) != lent);
        QCOMPARE(one->Lock(5, 4, true), lent);
        one->UnlockFullSize(true);
        copy.Unlock(5, 4, true);
    }
    for (const QString &file : {path, other->FileName()}) {
        ImageDef::Delete(file);
        QVERIFY(!ImageDef::Find(file));
    }
}

void tst_ImageDef::reload()
{
    const QString path = WritePicture(Path("re.jpg"), "jpeg", 40, 30);
    ImageDef *const image = Picture(path);
    QVERIFY(image->GetThumbnail()->isNull()); // described without a thumbnail
    image->m_model = 1;
    image->m_userGeometry.values[2] = 5;
    const KImage *const lent = image->Lock(20, 15, true);
    WriteFile(path, "no picture");
    QVERIFY(!image->Reload());
    QVERIFY(image->IsCached(20, 15, true) && image->nCols() == 40);

    WritePicture(path, "jpeg", 80, 60);
    QVERIFY(image->Reload());
    QVERIFY(image->nCols() == 80 && image->Model() == 1 && image->m_userGeometry.values[2] == 5.0);
    QCOMPARE(image->GetThumbnail()->size(), QSize(128, 128));
    QVERIFY(!image->IsCached(20, 15, true));
    const KImage *const again = image->Lock(20, 15, true);
    QVERIFY(again != lent);
    image->Unlock(20, 15, true); // unlocks either version; both stay
    QCOMPARE(lent->width() + again->width(), 40);
    image->Unlock(20, 15, true);
    image->ReleaseFromMemory();
    QVERIFY(!image->IsCached(20, 15, true));
    ImageDef::Delete(image);
}

void tst_ImageDef::missingFiles()
{
    const QString path = WritePicture(Path("go.jpg"), "jpeg", 40, 30);
    ImageDef *const image = Picture(path);
    QFile::rename(path, path + QLatin1Char('x'));
    const auto lock = [image] { image->LockFullSize(true); };
    QCOMPARE(Thrown(lock), QStringLiteral("File \"%1\" is not found").arg(path));
    image->UnlockFullSize(true); // was never locked
    WriteFile(path, "no picture");
    QVERIFY(Thrown(lock).contains(QStringLiteral("GFL_ERROR_UNKNOWN_FORMAT")));
    QFile::remove(path);
    QFile::rename(path + QLatin1Char('x'), path);
    QCOMPARE(image->LockFullSize(true)->width(), 40); // nothing stayed locked
    image->UnlockFullSize(true);
    QCOMPARE(KImageCache::Instance().m_items.value(image->m_id)->m_versions.first()->m_lockCount, 0);
    ImageDef::Delete(image);
}

void tst_ImageDef::sizeInMemory()
{
    qint64 wanted = 216 + 264; // sizes that hosts expect of the two records; texts take 2 bytes per character
    ImageDef image;
    QCOMPARE(image.memSize(), wanted);
    ShootingInformation &shooting = image.m_shooting;
    for (QString *text :
         {&image.m_fileName, &image.m_exifSummary, &image.m_id, &shooting.makerName, &shooting.modelName,
          &shooting.lensId, &shooting.gpsLatitudeRef, &shooting.gpsLongitudeRef, &shooting.gpsDirectionRef}) {
        const Case named("bytes before", wanted);
        text->reserve(1000);
        QCOMPARE(image.memSize(), wanted += 2 * text->capacity());
    }
    image.m_thumbnail = QImage(30, 20, QImage::Format_ARGB32);
    QCOMPARE(image.memSize(), wanted += 30 * 20 * 4);
    image.GetThumbnail(); // replaces it with a pixmap
    image.m_highResThumbnail = new KImage(7, 5, GFL_RGB, 8, /*clear=*/true, nullptr, 0);
    QCOMPARE(image.memSize(), wanted + 7 * 5);
    shooting.exposureValue = 2.5;
    QCOMPARE(image.GetEV(), 0.0F); // without EXIF
    image.m_hasExif = true;
    QCOMPARE(image.GetEV(), 2.5F);
}

QTEST_MAIN(tst_ImageDef)
#include "ImageDef_test.moc"
