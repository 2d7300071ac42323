// What happens to files on disk: targets, failures, what is left behind.
#include "Bitmaps.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>
#include <cstring>
#include <limits>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

int Save(const QString &path, const GFL_BITMAP &bitmap, const GFL_SAVE_PARAMS &params = SaveParams("tiff"))
{
    return gflSaveBitmapUTF8(path.toUtf8().constData(), &bitmap, &params);
}

void WriteBytes(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(bytes);
}

QByteArray ReadBytes(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

QStringList Everything(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

/// Files of this process can't grow beyond a size, as on a full disk, for as long as this lives.
class SizeLimit {
public:
    explicit SizeLimit(rlim_t bytes)
    {
        ::getrlimit(RLIMIT_FSIZE, &m_before);
        m_handler = std::signal(SIGXFSZ, SIG_IGN);
        const rlimit limit = {bytes, m_before.rlim_max};
        ::setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~SizeLimit()
    {
        ::setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }

private:
    rlimit m_before = {};
    void (*m_handler)(int) = SIG_DFL;
};

} // namespace

using Change = void (*)(GFL_BITMAP &);
Q_DECLARE_METATYPE(Change)

class tst_Saving : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { gflEnableLZW(1); }
    void targetsThatCantBe_data();
    void targetsThatCantBe();
    void fullDisk_data();
    void fullDisk();
    void permissions();
    void symbolicLinks();
    void longNames();
    void foldersWithoutRights();
    void badParameters();
    void badBitmaps_data();
    void badBitmaps();
    void paddedRows();
};

void tst_Saving::targetsThatCantBe_data()
{
    QTest::addColumn<QString>("path"); // below a fresh folder
    QTest::newRow("no such folder") << QStringLiteral("none/a.tif");
    QTest::newRow("a folder") << QStringLiteral("folder");
    QTest::newRow("a pipe") << QStringLiteral("pipe");
    QTest::newRow("a link to a device") << QStringLiteral("full");
    QTest::newRow("links in a circle") << QStringLiteral("circle");
    QTest::newRow("below a file") << QStringLiteral("file/a.tif");
    QTest::newRow("name too long") << QString(300, QLatin1Char('a'));
}

void tst_Saving::targetsThatCantBe()
{
    QFETCH(QString, path);
    QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("folder")));
    WriteBytes(folder.filePath(QStringLiteral("file")), "old");
    QVERIFY(::mkfifo(folder.filePath(QStringLiteral("pipe")).toUtf8().constData(), 0600) == 0);
    QVERIFY(QFile::link(QStringLiteral("/dev/full"), folder.filePath(QStringLiteral("full"))));
    QVERIFY(QFile::link(QStringLiteral("circle"), folder.filePath(QStringLiteral("circle"))));
    const QStringList before = Everything(folder.path());
    QCOMPARE(Save(folder.filePath(path), *RandomBitmap(10, 10, GFL_RGB, 8)), int(GFL_ERROR_FILE_CREATE));
    QVERIFY(QByteArray(gflLastErrorText()).startsWith("can't create"));
    QCOMPARE(Everything(folder.path()), before);
}

void tst_Saving::fullDisk_data()
{
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<int>("compression");
    QTest::addColumn<int>("limit");
    for (int limit : {0, 5, 20000, 200000}) {
        QTest::addRow("plain TIFF, %d", limit) << QByteArray("tiff") << 0 << limit;
        QTest::addRow("LZW TIFF, %d", limit) << QByteArray("tiff") << 2 << limit;
        QTest::addRow("deflate TIFF, %d", limit) << QByteArray("tiff") << 4 << limit;
        QTest::addRow("JPEG, %d", limit) << QByteArray("jpeg") << -1 << limit;
        for (const char *format : {"png", "psd", "hdri"})
            QTest::addRow("%s, %d", format, limit) << QByteArray(format) << -1 << limit;
    }
}

void tst_Saving::fullDisk()
{
    QFETCH(QByteArray, format);
    QFETCH(int, compression);
    QFETCH(int, limit);
    QTemporaryDir folder;
    const BitmapPtr bitmap = RandomBitmap(400, 900, GFL_RGBA, 8);
    const GFL_SAVE_PARAMS params = SaveParams(format.constData(), compression, 100);
    const QString path = folder.filePath(QStringLiteral("a.out"));
    WriteBytes(path, "the old file");
    int error = 0;
    {
        const SizeLimit full(static_cast<rlim_t>(limit));
        error = Save(path, *bitmap, params);
    }
    QCOMPARE(error, int(GFL_ERROR_FILE_WRITE));
    QVERIFY2(QByteArray(gflLastErrorText()).contains(path.toUtf8()), gflLastErrorText());
    QCOMPARE(ReadBytes(path), QByteArray("the old file"));
    QCOMPARE(Everything(folder.path()).size(), 1);
    QCOMPARE(Save(path, *bitmap, params), int(GFL_NO_ERROR)); // with room it goes
    QCOMPARE(ReadBytes(path), SavedBytes(*bitmap, params));
}

void tst_Saving::permissions()
{
    QTemporaryDir folder;
    const auto modeOf = [](const QString &path) {
        struct stat status = {};
        ::stat(path.toUtf8().constData(), &status);
        return int(status.st_mode & 07777);
    };
    const QString fresh = folder.filePath(QStringLiteral("new.tif")), old = folder.filePath(QStringLiteral("old.tif"));
    WriteBytes(old, "old");
    ::chmod(old.toUtf8().constData(), 0604);
    const mode_t mask = ::umask(027);
    const int errors = Save(fresh, *RandomBitmap(3, 3, GFL_RGB, 8)) + Save(old, *RandomBitmap(3, 3, GFL_RGB, 8));
    ::umask(mask);
    QCOMPARE(errors, 0);
    QCOMPARE(modeOf(fresh), 0640);
    QCOMPARE(modeOf(old), 0604);
}

void tst_Saving::symbolicLinks()
{
    QTemporaryDir folder;
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("real")));
    const QString real = folder.filePath(QStringLiteral("real/a.tif")),
                  link = folder.filePath(QStringLiteral("link.tif"));
    QVERIFY(::symlink("real/a.tif", link.toUtf8().constData()) == 0);
    for (int seed : {1, 2}) { // to a file that isn't there, then to one that is
        const BitmapPtr bitmap = RandomBitmap(3, 3, GFL_RGB, 8, static_cast<unsigned>(seed));
        QCOMPARE(Save(link, *bitmap), int(GFL_NO_ERROR));
        QVERIFY(QFileInfo(link).isSymLink());
        QCOMPARE(ReadBytes(real), SavedBytes(*bitmap, SaveParams("tiff")));
    }
    QCOMPARE(Everything(folder.filePath(QStringLiteral("real"))), QStringList(QStringLiteral("a.tif")));
}

void tst_Saving::longNames()
{
    QTemporaryDir folder;
    const QString path =
        folder.filePath(QString(251, QLatin1Char('n')) + QStringLiteral(".tif")); // the longest there is
    QCOMPARE(Save(path, *RandomBitmap(3, 3, GFL_RGB, 8)), int(GFL_NO_ERROR));
    const QString umlauts = folder.filePath(QStringLiteral("data: b\u00FCro \u5199\u771F.jpg"));
    QCOMPARE(Save(umlauts, *RandomBitmap(3, 3, GFL_RGB, 8), SaveParams("jpeg")), int(GFL_NO_ERROR));
    QVERIFY(QFile::exists(umlauts));
    int error = 0;
    QVERIFY(Load(umlauts, &error, LoadParams(GFL_LOAD_METADATA)));
    // A name without a folder, which Exiv2 must not take for an address.
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(folder.path()));
    error = Save(QStringLiteral("http:a.jpg"), *RandomBitmap(3, 3, GFL_RGB, 8), SaveParams("jpeg"));
    const bool read = Load(QStringLiteral("http:a.jpg"), &error, LoadParams(GFL_LOAD_METADATA)) != nullptr;
    QDir::setCurrent(before);
    QVERIFY2(read, gflLastErrorText());
}

void tst_Saving::foldersWithoutRights()
{
    if (::geteuid() == 0)
        QSKIP("the superuser has all rights");
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("a.tif"));
    WriteBytes(path, "old");
    ::chmod(path.toUtf8().constData(), 0400);
    QCOMPARE(Save(path, *RandomBitmap(3, 3, GFL_RGB, 8)), int(GFL_ERROR_FILE_CREATE));
    ::chmod(path.toUtf8().constData(), 0600);
    ::chmod(folder.path().toUtf8().constData(), 0500);
    const int error = Save(path, *RandomBitmap(3, 3, GFL_RGB, 8));
    ::chmod(folder.path().toUtf8().constData(), 0700);
    QCOMPARE(error, int(GFL_ERROR_FILE_CREATE));
    QCOMPARE(ReadBytes(path), QByteArray("old"));
}

void tst_Saving::badParameters()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("a.tif"));
    const BitmapPtr bitmap = RandomBitmap(3, 3, GFL_RGB, 8);
    QCOMPARE(Save(path, *bitmap, SaveParams("no such format")), int(GFL_ERROR_BAD_FORMAT_INDEX));
    QCOMPARE(Save(path, *bitmap, SaveParams("tiff", 3)), int(GFL_ERROR_BAD_PARAMETERS));
    gflEnableLZW(0);
    const int refused = Save(path, *bitmap, SaveParams("tiff", 2));
    gflEnableLZW(1);
    QCOMPARE(refused, int(GFL_ERROR_BAD_PARAMETERS));
    QCOMPARE(gflSaveBitmapUTF8(path.toUtf8().constData(), nullptr, nullptr), int(GFL_ERROR_BAD_PARAMETERS));
    QVERIFY(Everything(folder.path()).isEmpty());
    QCOMPARE(Save(path, *bitmap, SaveParams("tiff", 2)), int(GFL_NO_ERROR));
}

void tst_Saving::badBitmaps_data()
{
    QTest::addColumn<Change>("change");
    QTest::newRow("type") << Change([](GFL_BITMAP &b) { b.Type = GFL_COLORS; });
    QTest::newRow("12 bits") << Change([](GFL_BITMAP &b) { b.BitsPerComponent = 12; });
    QTest::newRow("no width") << Change([](GFL_BITMAP &b) { b.Width = 0; });
    QTest::newRow("negative height") << Change([](GFL_BITMAP &b) { b.Height = -1; });
    QTest::newRow("rows too short") << Change([](GFL_BITMAP &b) { b.BytesPerLine = 29; });
    QTest::newRow("rows from the bottom") << Change([](GFL_BITMAP &b) { b.Origin = 1; });
    QTest::newRow("width beyond the rows") << Change([](GFL_BITMAP &b) { b.Width = std::numeric_limits<int>::max(); });
}

void tst_Saving::badBitmaps()
{
    QFETCH(Change, change);
    QTemporaryDir folder;
    const BitmapPtr bitmap = RandomBitmap(10, 10, GFL_RGB, 8);
    change(*bitmap);
    for (const char *format : {"tiff", "jpeg", "png", "psd", "hdri"})
        QCOMPARE(Save(folder.filePath(QStringLiteral("a")), *bitmap, SaveParams(format)), int(GFL_ERROR_BAD_BITMAP));
    QVERIFY(Everything(folder.path()).isEmpty());
}

void tst_Saving::paddedRows()
{
    // Rows of any stride, also one that isn't a multiple of the samples' size.
    const BitmapPtr tight = RandomBitmap(7, 5, GFL_RGB, 16);
    const BitmapPtr loose = NewBitmap(7, 5, GFL_RGB, 16, 100);
    for (int y = 0; y < 5; ++y)
        std::memcpy(loose->Data + y * int(loose->BytesPerLine), tight->Data + y * int(tight->BytesPerLine), 42);
    for (int compression : {0, 2, 4})
        QCOMPARE(SavedBytes(*loose, SaveParams("tiff", compression)),
                 SavedBytes(*tight, SaveParams("tiff", compression)));
}

QTEST_GUILESS_MAIN(tst_Saving)
#include "Saving_test.moc"
