#include "Case.h"
#include "KImage_p.h"

#include "Bitmaps.h"
#include "Files.h"
#include "Table.h"
#include "Thrown.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QtTest>

#include <cstdlib>
#include <cstring>

namespace {

KImage RandomImage(int width, int height)
{
    KImage image;
    image.m_bitmap = RandomBitmap(width, height, GFL_RGB, 8).release();
    return image;
}

} // namespace

class tst_KImageFile : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { KImage::init(nullptr); }
    void cleanupTestCase() { KImage::exit(); }

    void compressionNumbers();
    void errorTexts();
    void guards();
    void readsWhatItWrote();
    void cacheFilesKeepTypeAndDepth();
    void dumps();
    void colorReduction();
    void readsAtRequestedDepth();
    void thumbnailIsSmall();
    void failedWriteChangesNothing();

private:
    QString File(const char *name) { return m_dir.filePath(QString::fromUtf8(name)); }

    QTemporaryDir m_dir;
};

void tst_KImageFile::compressionNumbers()
{
    GFL_SAVE_PARAMS defaults;
    gflGetDefaultSaveParams(&defaults);
    for (const QStringList &row : ReadTable(QStringLiteral(COMPRESSIONS))) {
        const Case named(row);
        GFL_SAVE_PARAMS params = defaults;
        KImage().TranscodeCompression(row[0], row[1].toInt(), params);
        QCOMPARE(int(params.Compression), row[2] == QLatin1String("-1") ? int(defaults.Compression) : row[2].toInt());
        QCOMPARE(int(params.Quality), row[3] == QLatin1String("-1") ? int(defaults.Quality) : row[3].toInt());
    }
}

void tst_KImageFile::errorTexts()
{
    const auto thrown = [](int error, const char *file) {
        return Thrown([&] { KImage().CheckIfGFLError(error, QString::fromLatin1(file), QStringLiteral("place")); });
    };
    for (const int success : {0, 0x10000}) // only the low 16 bits count
        QCOMPARE(thrown(success, "/x"), QStringLiteral("none"));
    QCOMPARE(thrown(6, "/a/b.jpg"), QStringLiteral("Error GFL : \"GFL_ERROR_UNKNOWN_FORMAT\"\nFile : \"/a/b.jpg\""));
    const std::pair<int, const char *> names[] = {
        {1, "GFL_ERROR_FILE_OPEN"},       {2, "GFL_ERROR_FILE_READ"},       {3, "GFL_ERROR_FILE_CREATE"},
        {4, "GFL_ERROR_FILE_WRITE"},      {5, "GFL_ERROR_NO_MEMORY"},       {6, "GFL_ERROR_UNKNOWN_FORMAT"},
        {7, "GFL_ERROR_BAD_BITMAP"},      {8, "GFL_UNKNOWN_ERROR"},         {10, "GFL_ERROR_BAD_FORMAT_INDEX"},
        {50, "GFL_ERROR_BAD_PARAMETERS"}, {0x10004, "GFL_ERROR_FILE_WRITE"}};
    for (const auto &[error, name] : names)
        QCOMPARE(thrown(error, ""), QStringLiteral("Error GFL : \"%1\"").arg(QLatin1String(name)));
}

void tst_KImageFile::guards()
{
    const QString invalidBitmap = QStringLiteral("Invalid Bitmap");
    const QString invalidParameter = QStringLiteral("Invalid Parameter");
    const QString tiff = QStringLiteral("tiff");
    KImage empty, image(1, 1, GFL_RGB, 8, /*clear=*/true, nullptr, 0);
    KImage odd(1, 1, GFL_RGB, 24, /*clear=*/true, nullptr, 0);
    QCOMPARE(Thrown([&] { empty.Write(QString(), QString(), 0, QString()); }), invalidBitmap);
    QCOMPARE(Thrown([&] { odd.Write(File("x"), tiff, 0, QString()); }), invalidBitmap);
    QCOMPARE(Thrown([&] { image.Write(QString(), tiff, 0, QString()); }), invalidParameter);
    QCOMPARE(Thrown([&] { image.Write(File("x"), QString(), 0, QString()); }), invalidParameter);
    QCOMPARE(Thrown([&] { image.ID_Read(File("x"), true); }), invalidBitmap);
    QCOMPARE(Thrown([&] { empty.ID_Read(QString(), true); }), invalidParameter);
    QCOMPARE(Thrown([&] { empty.ID_Read(File("absent"), true); }),
             QStringLiteral("\nFile \"%1\" is not found").arg(File("absent")));
    unsigned char *data = nullptr;
    unsigned int size = 0;
    QCOMPARE(Thrown([&] { empty.WriteIntoMemory(&data, &size, QString(), 0); }), invalidBitmap);
    QCOMPARE(Thrown([&] { odd.WriteIntoMemory(&data, &size, tiff, 0); }), invalidBitmap);
    QCOMPARE(Thrown([&] { image.WriteIntoMemory(&data, &size, QString(), 0); }), invalidParameter);
    QCOMPARE(Thrown([&] { image.WriteIntoMemory(&data, &size, QStringLiteral("raw"), 0); }),
             QStringLiteral("Error GFL : \"GFL_ERROR_BAD_FORMAT_INDEX\""));
    QCOMPARE(Thrown([&] { empty.ID_WriteToCache(QString()); }), invalidBitmap);
    QCOMPARE(Thrown([&] { image.ID_WriteToCache(QString()); }), invalidParameter);
    QCOMPARE(Thrown([&] { image.ID_WriteToCache(m_dir.path()); }),
             QStringLiteral("Cannot write into file \"%1\"").arg(m_dir.path()));
    QCOMPARE(Thrown([&] { image.ID_ReadReduced(File("x"), true, 1, 1); }), invalidBitmap);
    QCOMPARE(Thrown([&] { empty.ID_ReadReduced(QString(), true, 1, 1); }), invalidParameter);
    for (const int bits : {8, 24})
        QCOMPARE(Thrown([&] {
                     KImage::WriteRows({1, 1, bits == 8 ? GFL_COLORS : GFL_RGB, bits, {}}, File("x"), {tiff}, {});
                 }),
                 invalidParameter);
    QVERIFY(!QFile::exists(File("x")));
    const std::tuple<const char *, bool, bool> endings[] = {
        {"a.JPG", true, false}, {"a.jpg", true, true}, {"jpg", false, false}, {"b.jpgx", false, false}};
    for (const auto &[name, anyCase, sameCase] : endings)
        QVERIFY2(IsExtention(name, ".jpg", false) == anyCase && IsExtention(name, ".jpg", true) == sameCase, name);
}

void tst_KImageFile::readsWhatItWrote()
{
    KImage image = RandomImage(13, 7), back(1, 1, GFL_GREY, 16, true, nullptr, 0); // its content is replaced
    const QString name = File("Größe ✓.tif");                                      // paths are Unicode
    for (int compression : {2, 3}) { // LZW, which KImage::init() enables, and deflate
        const Case named("compression", compression);
        KImage read;
        image.Write(name, QStringLiteral("tiff"), compression, QString());
        read.ID_Read(name, /*nativeDepth=*/true);
        QCOMPARE(Difference(*read.m_bitmap, *image.m_bitmap), QString());
    }
    unsigned char *data = nullptr;
    unsigned int size = 0;
    image.WriteIntoMemory(&data, &size, QStringLiteral("TIF"), 3);
    back.ReadFromMemory(data, size);
    QCOMPARE(Difference(*back.m_bitmap, *image.m_bitmap), QString());
    QCOMPARE(Thrown([&] { back.ReadFromMemory(data, 5); }),
             QStringLiteral("Error GFL : \"GFL_ERROR_FILE_READ\"")); // no line with a file name
    QVERIFY(!back.m_bitmap);
    std::free(data);
    KImage floats;
    image.Convert(floats, GFL_RGB, 32);
    floats.Write(name, QStringLiteral("HDR"), -1, QString());
    QVERIFY(ReadFile(name).startsWith("#?RADIANCE"));
    WriteFile(name, "This is not a picture.");
    KImage none;
    QCOMPARE(Thrown([&] { none.ID_Read(name, true); }),
             QStringLiteral("Error GFL : \"GFL_ERROR_UNKNOWN_FORMAT\"\nFile : \"%1\"").arg(name));
    QVERIFY(!none.m_bitmap);
}

void tst_KImageFile::cacheFilesKeepTypeAndDepth()
{
    for (int type : {GFL_GREY, GFL_RGB, GFL_RGBA})
        for (int bits : {8, 16, 32}) {
            const Case named(type, bits);
            KImage image, back;
            RandomImage(9, 5).Convert(image, static_cast<unsigned short>(type), bits);
            image.ID_WriteToCache(File("cache.tmp"));
            back.ID_Read(File("cache.tmp"), /*nativeDepth=*/true);
            QCOMPARE(Difference(*back.m_bitmap, *image.m_bitmap), QString());
        }
}

void tst_KImageFile::dumps()
{
    KImage colors = RandomImage(9, 5), image, rgba, rgb, alpha;
    colors.Convert(image, GFL_RGBA, 8);
    image.getData(4, 2)[3] = 77;
    image.Output_PNG_RGBA(File("rgba"));
    image.Output_PNG_RGB(File("rgb"));
    image.Output_PNG_A(File("a"));
    rgba.ID_Read(File("rgba"), true);
    rgb.ID_Read(File("rgb"), true);
    alpha.ID_Read(File("a"), true);
    QCOMPARE(Difference(*rgba.m_bitmap, *image.m_bitmap), QString());
    QCOMPARE(Difference(*rgb.m_bitmap, *colors.m_bitmap), QString());
    QCOMPARE(int(alpha.type()), int(GFL_GREY));
    QCOMPARE(int(*alpha.getData(4, 2)), 77);
}

void tst_KImageFile::colorReduction()
{
    quint8 pixels[] = {200, 100, 50, 0, 0, 0, 255, 255, 255, 7, 7, 7};
    const QByteArray before(reinterpret_cast<char *>(pixels), sizeof pixels);
    KImage image(4, 1, GFL_RGB, 8, false, pixels, 12);
    image.Convert(GFL_DEPTH_BLACK_AND_WHITE, 124); // the luma of the first pixel
    QCOMPARE(int(image.type()), int(GFL_GREY));
    QCOMPARE(QByteArray(reinterpret_cast<char *>(image.getData(0, 0)), 4), QByteArray("\xFF\0\xFF\0", 4));
    QCOMPARE(QByteArray(reinterpret_cast<char *>(pixels), sizeof pixels), before);
    QCOMPARE(Thrown([&] { image.Convert(99, 0); }), QStringLiteral("Error GFL : \"GFL_ERROR_BAD_PARAMETERS\""));
    KImage deep(4, 1, GFL_RGB, 16, true, nullptr, 0), empty;
    for (KImage *bad : {&deep, &empty}) {
        const Case named(bad == &deep ? "deep" : "empty");
        QCOMPARE(Thrown([&] { bad->Convert(GFL_DEPTH_GREY, 0); }), QStringLiteral("Invalid Bitmap"));
    }
}

void tst_KImageFile::readsAtRequestedDepth()
{
    KImage image(3, 2, GFL_GREY, 16, /*clear=*/true, nullptr, 0);
    const quint16 value = 0x1234;
    std::memcpy(image.getData(2, 1), &value, sizeof value);
    image.Write(File("deep.tif"), QStringLiteral("tiff"), 0, QString());
    KImage native, shallow, reduced, forced(1, 1, GFL_GREY, 8, /*clear=*/true, nullptr, 0);
    native.ID_Read(File("deep.tif"), /*nativeDepth=*/true);
    QCOMPARE(Difference(*native.m_bitmap, *image.m_bitmap), QString());
    shallow.ID_Read(File("deep.tif"), /*nativeDepth=*/false);
    QCOMPARE(int(shallow.bitsPerComponent()), 8);
    QCOMPARE(int(*shallow.getData(2, 1)), 0x12);
    reduced.ID_ReadReduced(File("deep.tif"), /*nativeDepth=*/true, 2, 1);
    QCOMPARE(QSize(reduced.width(), reduced.height()), QSize(2, 1));
    QCOMPARE(int(reduced.bitsPerComponent()), 16);
    forced.Read(File("deep.tif"), GFL_RGBA, /*thumbnail=*/false); // replaces the old content
    QCOMPARE(int(forced.bitsPerComponent()) * 10 + forced.m_bitmap->ComponentsPerPixel, 164);
    QCOMPARE(QByteArray(reinterpret_cast<char *>(forced.getData(2, 1)), 8),
             QByteArray("\x34\x12\x34\x12\x34\x12\xff\xff"));
}

void tst_KImageFile::thumbnailIsSmall()
{
    KImage image = RandomImage(1200, 600), small;
    image.Write(File("large"), QStringLiteral("JPG"), 12, QString());
    small.Read(File("large"), GFL_RGB, /*thumbnail=*/true);
    QVERIFY(small.width() < 600);
    QCOMPARE(small.width(), 2 * small.height());
}

void tst_KImageFile::failedWriteChangesNothing()
{
    const QString old = WriteFile(File("old.tif"), "a picture"), tiff = QStringLiteral("tiff");
    KImage image = RandomImage(3, 3);
    const auto entries = [this] { return QDir(m_dir.path()).entryList(QDir::AllEntries | QDir::Hidden); };
    const QStringList before = entries();
    const KImage::RowsToWrite rows = {900, 900, GFL_RGBA, 8, [](KImage &band, int firstRow) {
                                          if (firstRow > 400)
                                              throw KException(QStringLiteral("no more rows"), QString());
                                          band.ClearBitmap();
                                      }};
    for (const QString &target : {File("absent/out.tif"), m_dir.path()})
        QCOMPARE(Thrown([&] { image.Write(target, tiff, 3, QString()); }),
                 QStringLiteral("Cannot write into file \"%1\"").arg(target));
    QCOMPARE(Thrown([&] { image.Write(File("out.tif"), tiff, 0, File("absent.jpg")); }),
             QStringLiteral("Error GFL : \"GFL_ERROR_FILE_OPEN\"\nFile : \"%1\"").arg(File("absent.jpg")));
    for (const QString &target : {old, File("new.tif")})
        QCOMPARE(Thrown([&] { image.Write(target, QStringLiteral("nonsense"), 0, QString()); }),
                 QStringLiteral("Error GFL : \"GFL_ERROR_BAD_FORMAT_INDEX\"\nFile : \"%1\"").arg(target));
    QCOMPARE(Thrown([&] { KImage::WriteRows(rows, old, {tiff, 3}, QString()); }), QStringLiteral("no more rows"));
    QCOMPARE(entries(), before);
    QCOMPARE(ReadFile(old), QByteArray("a picture"));
}

QTEST_APPLESS_MAIN(tst_KImageFile)
#include "KImage_File_test.moc"
