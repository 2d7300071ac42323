// Tests of all formats: pixel types and depths, thumbnails, formats by name, errors, limits, memory.
#include "Bitmaps.h"
#include "Case.h"
#include "DngFile.h"
#include "Files.h"
#include "MetadataFiles.h"
#include "Table.h"

#include <QtTest>

#include <exiv2/exiv2.hpp>
#include <tiffio.h>

#include <atomic>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

namespace {

std::atomic<long> blocksAlive{0};
std::atomic<unsigned long> largestBlock{0}, blockLimit{~0ul};
int marker = 0; // the callbacks receive its address

void *CountingAlloc(unsigned long size, void *userData)
{
    if (userData != &marker || size > blockLimit)
        return nullptr;
    ++blocksAlive;
    if (size > largestBlock)
        largestBlock = size;
    return std::malloc(size);
}

void *CountingRealloc(void *pointer, unsigned long size, void *)
{
    if (!pointer)
        ++blocksAlive;
    return std::realloc(pointer, size);
}

void CountingFree(void *pointer, void *)
{
    --blocksAlive;
    std::free(pointer);
}

/// Returns a TIFF with one strip of 100 bytes, whatever its fields claim; @p more replaces or adds fields.
QByteArray TiffOf(quint32 width, quint32 height, quint32 compression, const QMap<int, quint32> &more = {})
{
    QMap<int, quint32> fields = {{256, width}, {257, height}, {258, 8},      {259, compression}, {262, 2},
                                 {273, 8},     {277, 3},      {278, height}, {279, 100}};
    for (const int tag : more.keys())
        fields[tag] = more[tag];
    return PlainTiff(fields, QByteArray(100, '\x55'));
}

BitmapPtr PlainBitmap(QSize size, double value)
{
    return FilledBitmap(size.width(), size.height(), GFL_RGB, 8, [=](int, int, int) { return value; });
}

void AddPage(TIFF *tiff, QSize size, int value, std::uint32_t kind, bool isDamaged = false)
{
    TIFFSetField(tiff, TIFFTAG_SUBFILETYPE, kind);
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, size.width());
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, size.height());
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, 8);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, 1);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, size.height() / 2);
    QByteArray half(size.width() * size.height() / 2, static_cast<char>(value));
    TIFFWriteEncodedStrip(tiff, 0, half.data(), half.size());
    TIFFWriteRawStrip(tiff, 1, half.data(), isDamaged ? 1 : half.size());
    TIFFWriteDirectory(tiff);
}

enum Embedding { InRaw, InRawAsPixels, InExif, AsPage, BeforePage, BelowPage, AsPageOfTheSecond, Damaged, Between };

} // namespace

class tst_Loading : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { gflEnableLZW(1); }
    void deliveredForms();
    void depths();
    void thumbnails();
    void embeddedPreviews();
    void missingFiles();
    void signatures();
    void truncatedTiff();
    void refusedFiles();
    void hugeFloatPicture();
    void allocator();
    void formats();

private:
    Folder m_folder;
};

void tst_Loading::deliveredForms()
{
    const int forms[] = {GFL_GREY, GFL_RGB, GFL_RGBA}, depths[] = {8, 16, 32};
    for (int i = 0; i < 27; ++i) {
        const Case named("row", i);
        const int stored = forms[i / 9], wanted = forms[i / 3 % 3], bits = depths[i % 3];
        const BitmapPtr bitmap = RandomBitmap(13, 7, stored, bits);
        GFL_LOAD_PARAMS params = LoadParams(GFL_LOAD_ORIGINAL_DEPTH, wanted);
        if (bits == 16)
            params.DefaultAlpha = 100;
        const BitmapPtr got = LoadFromMemory(SavedBytes(*bitmap, SaveParams("tiff")), nullptr, params);
        QVERIFY2(got, gflLastErrorText());
        QCOMPARE(int(got->Type), wanted);
        QCOMPARE(int(got->BitsPerComponent), bits);
        const auto expected = [&](int x, int y, int c) {
            const auto sample = [&](int from) { return SampleAt(*bitmap, x, y, stored == GFL_GREY ? 0 : from); };
            if (c == 3)
                return stored == GFL_RGBA ? sample(3) : bits == 16 ? 100 / 255.0 : 1.0;
            if (wanted == GFL_GREY && stored != GFL_GREY) // ITU-R BT.601
                return 0.299 * sample(0) + 0.587 * sample(1) + 0.114 * sample(2);
            return sample(c);
        };
        QCOMPARE(Difference(*got, expected, bits == 8 ? 0.51 / 255 : 1e-5), QString());
    }
}

void tst_Loading::depths()
{
    // 16 to 8 bits is v * 255 / 65535, rounded; 128 / 257 is just below a half.
    const QVector<quint16> deep = {0, 128, 129, 32768, 65407, 65535};
    const QVector<float> real = {-1, 0, 0.5f, 1, 7, std::nanf("")};
    const BitmapPtr sixteen = NewBitmap(6, 1, GFL_GREY, 16), floats = NewBitmap(6, 1, GFL_GREY, 32);
    std::copy(deep.begin(), deep.end(), reinterpret_cast<quint16 *>(sixteen->Data));
    std::copy(real.begin(), real.end(), reinterpret_cast<float *>(floats->Data));
    const QByteArray tiffs[] = {SavedBytes(*sixteen, SaveParams("tiff")), SavedBytes(*floats, SaveParams("tiff"))};
    QCOMPARE(PackedPixels(*LoadFromMemory(tiffs[0], nullptr, LoadParams())), QByteArray("\0\0\1\x80\xFF\xFF", 6));
    QCOMPARE(PackedPixels(*LoadFromMemory(tiffs[1], nullptr, LoadParams())), QByteArray("\0\0\x80\xFF\xFF\0", 6));
}

void tst_Loading::thumbnails()
{
    const struct {
        const char *name;
        QSize size, box, expected;
    } rows[] = {
        {"landscape", {600, 400}, {128, 128}, {128, 85}},   {"portrait", {400, 600}, {128, 128}, {85, 128}},
        {"box of 0 by 0", {1024, 512}, {0, 0}, {256, 128}}, {"smaller than the box", {60, 40}, {128, 128}, {60, 40}},
        {"one column", {1, 1000}, {10, 10}, {1, 10}},       {"flat box", {601, 401}, {300, 20}, {30, 20}}};
    for (int i = 0; i < 18; ++i) {
        const char *format = i % 3 == 0 ? "tiff" : i % 3 == 1 ? "jpeg" : "png";
        const auto &[name, size, box, expected] = rows[i / 3];
        const Case named(name, format);
        const QString path = m_folder(format);
        const int bits = i % 3 != 0 ? 8 : i % 2 != 0 ? 16 : 32; // of TIFFs
        const BitmapPtr bitmap = SmoothBitmap(size.width(), size.height(), GFL_RGB, bits);
        QCOMPARE(Save(path, *bitmap, SaveParams(format, -1, 95)), int(GFL_NO_ERROR));
        GFL_FILE_INFORMATION info;
        const BitmapPtr got = LoadThumbnail(path, box, LoadParams(GFL_LOAD_ORIGINAL_DEPTH, GFL_RGBA), &info);
        QVERIFY2(got, name);
        QCOMPARE(QSize(info.Width, info.Height), size);
        QCOMPARE(QSize(got->Width, got->Height), expected);
        QCOMPARE(int(got->Type), int(GFL_RGBA));
        // Each pixel is the mean of whole pixels of the picture. JPEG averages other pixels, which hardly matters in a
        // ramp.
        const auto mean = [&, whole = size](int x, int y, int c) {
            const int w = got->Width, h = got->Height, endX = (x + 1) * whole.width() / w,
                      endY = (y + 1) * whole.height() / h, beginX = x * whole.width() / w,
                      beginY = y * whole.height() / h;
            double sum = 0.0;
            for (int row = beginY; row < endY; ++row)
                for (int column = beginX; column < endX; ++column)
                    sum += c == 3 ? 1.0 : SampleAt(*bitmap, column, row, c);
            return sum / (endX - beginX) / (endY - beginY);
        };
        QCOMPARE(Difference(*got, mean, i % 3 == 1 ? 0.03 : bits == 8 ? 0.501 / 255 : 1e-5), QString());
    }
}

void tst_Loading::embeddedPreviews()
{
    const QByteArrayList places = {
        "raw",     "raw pixels", "EXIF", "page", "before the page", "below the page", "as a page of the second",
        "damaged", "between"};
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_PREVIEWS))) {
        const Case named(row);
        const auto embedding = Embedding(places.indexOf(row[0].toUtf8()));
        QVERIFY(places.contains(row[0].toUtf8()));
        const QSize preview(row[1].section(QLatin1Char(' '), 0, 0).toInt(),
                            row[1].section(QLatin1Char(' '), 1).toInt());
        const bool isUsed = row[2] == QLatin1String("used");
        const QString path = m_folder("a");
        const QByteArray jpeg = SavedBytes(*PlainBitmap(preview, 1), SaveParams("jpeg"));
        if (embedding == InRaw || embedding == InRawAsPixels) {
            const int half = 3 * preview.width() * preview.height() / 2;
            const QByteArray pixels = QByteArray(half, '\xFF') + QByteArray(half, '\xC0');
            WriteFile(path, DngFile({300, 200}, {0.01, 0.02, 0.01}, embedding == InRaw ? jpeg : pixels, preview));
        } else if (embedding == InExif) {
            QCOMPARE(Save(path, *PlainBitmap({300, 200}, 0), SaveParams("jpeg")), int(GFL_NO_ERROR));
            Exiv2::Image::AutoPtr image = Exiv2::ImageFactory::open(path.toStdString());
            Exiv2::ExifThumb(image->exifData())
                .setJpegThumbnail(reinterpret_cast<const Exiv2::byte *>(jpeg.constData()), jpeg.size());
            image->writeMetadata();
            image.reset();
            WriteFile(path, ReadFile(path).insert(2, QByteArray("\xFF\xFE\0\4ab", 6).repeated(row[3].toInt())));
        } else {
            TIFF *tiff = TIFFOpen(path.toUtf8().constData(), "w");
            const std::uint64_t none = 0; // filled in by libtiff
            if (embedding == BelowPage)
                TIFFSetField(tiff, TIFFTAG_SUBIFD, 1, &none);
            if (embedding == BeforePage)
                AddPage(tiff, preview, 255, FILETYPE_REDUCEDIMAGE);
            AddPage(tiff, {300, 200}, 0, 0);
            if (embedding == AsPageOfTheSecond)
                AddPage(tiff, {300, 200}, 0, 0);
            if (embedding == Between)
                AddPage(tiff, {150, 100}, 0, FILETYPE_REDUCEDIMAGE);
            AddPage(tiff, preview, 255, FILETYPE_REDUCEDIMAGE, embedding == Damaged);
            if (embedding == Between)
                AddPage(tiff, {180, 120}, 0, FILETYPE_REDUCEDIMAGE);
            TIFFClose(tiff);
        }
        const BitmapPtr got = LoadThumbnail(path, {90, 90}), whole = Load(path);
        const int height = isUsed ? qRound(90.0 * preview.height() / preview.width()) : 60;
        QVERIFY2(got && got->Width == 90 && got->Height == height, gflLastErrorText());
        for (int y = 0; y < height; ++y)
            QCOMPARE(SampleAt(*got, 45, y, 0) > 0.5, isUsed);
        QCOMPARE(SampleAt(*got, 45, 50, 0) < SampleAt(*got, 45, 10, 0) - 0.1, isUsed && embedding == InRawAsPixels);
        QVERIFY2(whole && whole->Width == 300 && SampleAt(*whole, 5, 5, 0) < 0.5, gflLastErrorText());
    }
}

void tst_Loading::missingFiles()
{
    GFL_BITMAP former = {}, *bitmap = &former;
    const GFL_LOAD_PARAMS params = LoadParams();
    GFL_FILE_INFORMATION info;
    GFL_METADATA_LIST *list = nullptr;
    using Path = const char *;
    const std::function<int(Path, bool hasAll)> functions[] = {
        [&](Path path, bool hasAll) { return gflLoadBitmapUTF8(path, hasAll ? &bitmap : nullptr, &params, nullptr); },
        [&](Path path, bool hasAll) { return gflLoadThumbnailUTF8(path, 9, 9, &bitmap, hasAll ? &params : 0, &info); },
        [&](Path path, bool hasAll) { return gflLoadMetadataUTF8(path, hasAll ? &bitmap : nullptr); },
        [&](Path path, bool hasAll) { return gflGetFileInformationExUTF8(path, -1, hasAll ? &info : nullptr, 4); },
        [&](Path path, bool hasAll) { return gflLoadMetadataListUTF8(path, hasAll ? &list : nullptr); }};
    QVERIFY(::mkfifo(m_folder("pipe.jpg").toUtf8().constData(), 0600) == 0);
    for (const QString &path :
         {m_folder("none.jpg"), m_folder.path(), m_folder("pipe.jpg"), QStringLiteral("/dev/zero")})
        for (const auto &read : functions) {
            const Case named(path, "function", &read - functions);
            QCOMPARE(read(path.toUtf8().constData(), false), int(GFL_ERROR_BAD_PARAMETERS));
            QCOMPARE(read(nullptr, true), int(GFL_ERROR_BAD_PARAMETERS));
            QCOMPARE(read(path.toUtf8().constData(), true), int(GFL_ERROR_FILE_OPEN));
            QVERIFY(QByteArray(gflLastErrorText()).contains(path.toUtf8()) && !bitmap);
        }
    QVERIFY(!gflHasXMPUTF8(nullptr) && !gflHasEXIFUTF8("/dev/zero"));
    QCOMPARE(gflBitmapCopyMetadata(&former, &former), int(GFL_NO_ERROR)); // there is none
    const GFL_SAVE_PARAMS save = SaveParams("tiff");
    std::uint8_t byte = 0, *data = &byte;
    std::uint32_t size = 0;
    for (const int error : {gflLoadThumbnailUTF8("a", -1, 5, &bitmap, &params, nullptr),
                            gflLoadThumbnailUTF8("a", 5, -1, &bitmap, &params, nullptr),
                            gflLoadThumbnailUTF8("a", 0, 5, &bitmap, &params, nullptr),
                            gflLoadThumbnailUTF8("a", 5, 0, &bitmap, &params, nullptr),
                            gflLoadBitmapUTF8("a", &bitmap, nullptr, &info),
                            gflLoadBitmapFromMemory(nullptr, 1, &bitmap, &params, &info),
                            gflLoadBitmapFromMemory(&byte, 1, nullptr, &params, &info),
                            gflLoadBitmapFromMemory(&byte, 1, &bitmap, nullptr, &info),
                            gflSaveBitmapUTF8(nullptr, &former, &save),
                            gflSaveBitmapUTF8("a", nullptr, &save),
                            gflSaveBitmapUTF8("a", &former, nullptr),
                            gflSaveBitmapIntoMemory(nullptr, &size, &former, &save),
                            gflSaveBitmapIntoMemory(&data, nullptr, &former, &save),
                            gflSaveBitmapIntoMemory(&data, &size, nullptr, &save),
                            gflSaveBitmapIntoMemory(&data, &size, &former, nullptr),
                            gflWaitForRows(nullptr, 1, nullptr),
                            gflSaveRowsUTF8("a", &former, nullptr, nullptr, &save),
                            gflBitmapCopyICCProfile(nullptr, &former),
                            gflBitmapCopyICCProfile(&former, nullptr),
                            gflBitmapCopyMetadata(nullptr, &former),
                            gflBitmapCopyMetadata(&former, nullptr),
                            gflBitmapMarkEdited(nullptr, &former, nullptr, 0),
                            gflBitmapMarkEdited(&former, nullptr, nullptr, 0),
                            gflBitmapMarkEdited(&former, &former, nullptr, 1),
                            gflBitmapSetIPTC(nullptr, nullptr),
                            gflBitmapSetEXIF2(nullptr, nullptr)})
        QCOMPARE(error, int(GFL_ERROR_BAD_PARAMETERS));
}

/// A file is recognized by its first bytes, all of which matter.
void tst_Loading::signatures()
{
    QByteArray signatures = // dots may be any bytes, underscores are zeros
        "FUJIFILMCCD-RAW,......HEAPCCDR,....ftypcrx ,IIRO,IIRS,MMOR,FOVb,_MRM,IIU_,II*_,MM_*,#?RADIANCE,#?RGBE,8BPS,"
        "RIFF....WEBP,\xFF\xD8\xFF,\x89PNG\r\n\x1A\n,\x76\x2F\x31\1,\xFF\x0A,___\x0CJXL \r\n\x87\n,\xFF\x4F\xFF\x51,"
        "___\x0CjP  \r\n\x87\n";
    QByteArrayList names;
    for (std::int32_t index = 0; const GFL_FORMAT *format = gflGetFormat(index); ++index)
        names += format->Name;
    const QByteArray unknown = " has an unknown format; known formats: " + names.join(", ");
    for (const char *brand : {"avif", "avis", "heic", "heix", "heim", "heis", "hevc", "hevx", "mif1", "msf1"})
        signatures += ",....ftyp" + QByteArray(20, '.') + brand; // as the last compatible brand
    for (const QByteArray &signature : signatures.replace('_', '\0').split(','))
        for (int at = -1; at < signature.size(); ++at) {
            const Case named(signature, "changed at", at);
            QByteArray head = signature.leftJustified(64, '\x55');
            if (at >= 0)
                head[at] = char(head[at] ^ 0x80);
            QVERIFY(!LoadFromMemory(head));
            QCOMPARE(gflLastErrorText() == unknown, at >= 0 && signature[at] != '.');
        }
}

void tst_Loading::truncatedTiff()
{
    for (int compression : {0, 2, 4}) { // libtiff doesn't need the offset of the next directory, the last 4 bytes
        const QByteArray file = SavedBytes(*RandomBitmap(20, 15, GFL_RGB, 16), SaveParams("tiff", compression));
        QCOMPARE(BadCut(file, file.size() - 4), QString());
    }
}

/// Each file is refused without using much memory. Files of which only the pixels are damaged can still be described.
void tst_Loading::refusedFiles()
{
    constexpr int kUnknown = GFL_ERROR_UNKNOWN_FORMAT, kRead = GFL_ERROR_FILE_READ;
    struct Row {
        int error;
        QByteArray text; // start of the error text, after the path
        QByteArray bytes;
        bool isDescribed = false;
    };
    QVector<Row> rows = {{kRead, " is empty", ""},
                         {kUnknown, " has an unknown format; known formats: raw, tiff, ", "hello, this is a letter"},
                         {kUnknown, " has an unknown format; known", "\xFF\xD8"},
                         {kRead, ": JPEG: ", "\xFF\xD8" + QByteArray(100000, '\xFF')}};
    for (const QStringList &cells : ReadTable(QStringLiteral(VITRELUX_REFUSED_TIFFS))) {
        QMap<int, quint32> fields = {{256, 4}, {257, 4}, {259, 1}};
        for (const QString &field : cells.value(4).split(QLatin1Char(' ')))
            fields[field.left(3).toInt()] = field.mid(4).toUInt();
        rows.append({cells[0].toInt(), cells[1].toUtf8(),
                     TiffOf(fields[256], fields[257], fields[259], fields) + QByteArray(cells[3].toInt(), '\0'),
                     cells[2] == QLatin1String("described")});
    }
    const QString path = m_folder("a.jpg");
    for (const auto &row : rows) {
        const Case named(row.text);
        WriteFile(path, row.bytes);
        largestBlock = 0;
        gflLibraryInitEx(CountingAlloc, CountingRealloc, CountingFree, &marker);
        int error = 0;
        const bool isRead = Load(path, &error) != nullptr;
        gflLibraryExit();
        QVERIFY(!isRead && (row.isDescribed || largestBlock < 1000000));
        QCOMPARE(error, row.error);
        QVERIFY2(QByteArray(gflLastErrorText()).startsWith(path.toUtf8() + row.text), gflLastErrorText());
        GFL_FILE_INFORMATION info;
        QCOMPARE(Describe(path, &info), row.isDescribed ? int(GFL_NO_ERROR) : row.error);
        QCOMPARE(info.Width, row.isDescribed ? 4 : 0);
        GFL_BITMAP *bitmap = nullptr;
        QCOMPARE(gflLoadMetadataUTF8(path.toUtf8().constData(), &bitmap),
                 row.isDescribed ? int(GFL_NO_ERROR) : row.error);
        QCOMPARE(bitmap != nullptr, row.isDescribed);
        gflFreeBitmap(bitmap);
    }
    largestBlock = 0;
    gflLibraryInitEx(CountingAlloc, CountingRealloc, CountingFree, &marker);
    const QString bad = BadFault("jpeg size", SavedBytes(*SmoothBitmap(16, 16, GFL_GREY, 8), SaveParams("jpeg")))
        + BadFault("png size", SavedBytes(*SmoothBitmap(16, 16, GFL_GREY, 8), SaveParams("png")));
    gflLibraryExit();
    QCOMPARE(bad, QString());
    QVERIFY(largestBlock < 1000000);
    const BitmapPtr longest = FilledBitmap(1 << 20, 1, GFL_GREY, 8, [](int x, int, int) { return x % 2; });
    const QByteArray file = SavedBytes(*longest, SaveParams("png"));
    for (const int most : {1048576, 1048575}) {
        gflSetMaxPixels(most);
        const BitmapPtr read = LoadFromMemory(file);
        gflSetMaxPixels(0);
        QVERIFY2(most == 1048576 ? read && Difference(*read, *longest).isEmpty() : !read, gflLastErrorText());
    }
    QCOMPARE(QByteArray(gflLastErrorText()),
             QByteArray(": 1048576 x 1 pixels are 1.048576 megapixels; at most 1.048575 are allowed"));
}

void tst_Loading::hugeFloatPicture()
{
    // 400 megapixels of float RGB, 4.8 GB, in a sparse file of that size.
    const QString path = m_folder("huge.tif");
    const QByteArray header = TiffOf(20000, 20000, 1, {{258, 32}, {339, 3}});
    WriteFile(path, header);
    if (::truncate(path.toUtf8().constData(), off_t(4800001000)) != 0)
        QSKIP("the temporary folder doesn't support sparse files of 5 GB");
    GFL_FILE_INFORMATION info;
    QVERIFY2(Describe(path, &info) == GFL_NO_ERROR, gflLastErrorText());
    QCOMPARE(QSize(info.Width, info.Height), QSize(20000, 20000));
    QCOMPARE(int(info.BitsPerComponent), 32);
    QVERIFY(::truncate(path.toUtf8().constData(), off_t(4799000000)) == 0);
    QCOMPARE(Describe(path, &info), int(GFL_ERROR_FILE_READ));
}

void tst_Loading::allocator()
{
    const QByteArray plain = SavedBytes(*RandomBitmap(100, 100, GFL_RGB, 8), SaveParams("tiff"));
    const auto image = OpenImage(plain);
    image->exifData()["Exif.Image.Make"] = "Acme";
    image->xmpData()["Xmp.xmp.Rating"] = "4";
    image->iptcData()["Iptc.Application2.City"] = "Sydney";
    const QByteArray file = WrittenBy(*image);
    blocksAlive = 0;
    gflLibraryInitEx(CountingAlloc, CountingRealloc, CountingFree, &marker);
    {
        const BitmapPtr bitmap = LoadFromMemory(file, nullptr, LoadParams(GFL_LOAD_METADATA));
        QVERIFY(bitmap);
        QCOMPARE(blocksAlive.load(), 2L); // the bitmap and its pixels
        WriteFile(m_folder("a"), file);
        GFL_METADATA_LIST *list = nullptr;
        QCOMPARE(gflLoadMetadataListUTF8(m_folder("a").toUtf8().constData(), &list), int(GFL_NO_ERROR));
        GFL_EXIF_DATA *texts = gflBitmapGetEXIF(bitmap.get(), 1);
        QVERIFY(list && texts && gflBitmapHasIPTC(bitmap.get()) && gflBitmapHasXMP(bitmap.get()));
        gflFreeMetadataList(list);
        gflFreeEXIF(texts);
        gflFreeEXIF2(gflBitmapGetEXIF2(bitmap.get()));
        gflFreeIPTC(gflBitmapGetIPTC(bitmap.get()));
        gflFreeXMP(gflBitmapGetXMPEx(bitmap.get()));
        QVERIFY(!LoadFromMemory(file.left(file.size() - 100)));
    }
    QCOMPARE(blocksAlive.load(), 0L);
    blockLimit = 20000; // less than the pixels
    int error = 0;
    const bool read = LoadFromMemory(file, &error) != nullptr;
    blockLimit = ~0ul;
    gflLibraryExit();
    QVERIFY(!read);
    QCOMPARE(error, int(GFL_ERROR_NO_MEMORY));
}

/// The defaults; and the names, suffixes and MIME types of the formats agree with what the layer does and with the
/// desktop file.
void tst_Loading::formats()
{
    QByteArrayList types;
    for (std::int32_t index = 0; const GFL_FORMAT *format = gflGetFormat(index); ++index) {
        QCOMPARE(gflGetFormatIndexByName(format->Name), index);
        for (const QByteArray &suffix : QByteArray(format->Suffixes).split(' '))
            QVERIFY2(gflHasGoodExtension(suffix.constData()), suffix.constData());
        const QByteArray written = SavedBytes(*SmoothBitmap(4, 3, GFL_RGB, 8), SaveParams(format->Name));
        QVERIFY2(written.isEmpty() != format->CanBeWritten, format->Name);
        types += QByteArray(format->MimeTypes).split(' ');
    }
    GFL_LOAD_PARAMS load = {1, {2}, 3, 4, {5}, 6, 7, 8, 9, 1, 2, 3, 4},
                    plain = {0, {}, GFL_RGB, 255, {}, 0, 1, 0, 0, 2.2f, 1, 1, 1};
    GFL_SAVE_PARAMS save = {1, 2, 3, 4}, unset = {0, -1, GFL_COMPRESSION_DEFAULT, 90};
    gflGetDefaultLoadParams(&load); // among others, the camera's white balance
    gflGetDefaultSaveParams(&save);
    QVERIFY(std::memcmp(&load, &plain, sizeof load) == 0 && std::memcmp(&save, &unset, sizeof save) == 0);
    gflGetDefaultLoadParams(nullptr);
    gflGetDefaultSaveParams(nullptr);
    for (const char *suffix : {".jpeg", ".Cr3", ".TIF", "", "jpg", ".jpgx"}) {
        const Case named(suffix);
        QCOMPARE(gflHasGoodExtension(suffix) != 0, suffix[0] == '.' && qstrcmp(suffix, ".jpgx") != 0);
    }
    WriteFile(m_folder("a"), SavedBytes(*SmoothBitmap(4, 3, GFL_RGB, 8), SaveParams("png")));
    GFL_FILE_INFORMATION info;
    for (std::int32_t index = -1; index < 3; ++index) {
        const int error = gflGetFileInformationExUTF8(m_folder("a").toUtf8().constData(), index, &info, 0);
        QVERIFY((error == GFL_NO_ERROR && info.Width == 4)
                == (index < 0 || qstrcmp(gflGetFormat(index)->Name, "png") == 0));
    }
    QVERIFY(types.size() > 20 && !gflGetFormat(-1));
    const QByteArray desktop = ReadFile(QStringLiteral(VITRELUX_DESKTOP));
    QVERIFY(desktop.contains("\nMimeType=" + types.join(';') + ";\n"));
}

QTEST_GUILESS_MAIN(tst_Loading)
#include "Loading_test.moc"
