// What happens to files on disk: targets, failures, what is left behind.
#include "Bitmaps.h"

#include <QDir>
#include <QFile>
#include <QtTest>

#include <csignal>
#include <cstring>
#include <limits>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

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

class tst_Saving : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { gflEnableLZW(1); }
    void targetsThatCantBe();
    void fullDisk();
    void permissions();
    void symbolicLinks();
    void longNames();
    void foldersWithoutRights();
    void badParameters();
    void badBitmaps();
    void paddedRows();
};

void tst_Saving::targetsThatCantBe()
{
    const Folder folder;
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("folder")));
    QVERIFY(WriteBytes(folder("file"), "old"));
    QVERIFY(::mkfifo(folder("pipe").toUtf8().constData(), 0600) == 0);
    QVERIFY(QFile::link(QStringLiteral("/dev/full"), folder("device")));
    QVERIFY(QFile::link(QStringLiteral("circle"), folder("circle")));
    const QStringList before = Everything(folder.path());
    const QByteArray tooLong(300, 'a');
    for (const char *name : {"none/a.tif", "folder", "pipe", "device", "circle", "file/a.tif", tooLong.constData()}) {
        const int error = Save(folder(name), *RandomBitmap(10, 10, GFL_RGB, 8));
        QVERIFY2(error == GFL_ERROR_FILE_CREATE, name);
        QVERIFY(QByteArray(gflLastErrorText()).startsWith("can't create"));
        QCOMPARE(Everything(folder.path()), before);
    }
}

void tst_Saving::fullDisk()
{
    const Folder folder;
    const BitmapPtr bitmap = RandomBitmap(400, 900, GFL_RGBA, 8);
    const QString path = folder("a.out");
    const QPair<const char *, int> kinds[] = {{"tiff", 0}, {"tiff", 2}, {"tiff", 4}, {"jpeg", -1},
                                              {"png", -1}, {"psd", -1}, {"hdri", -1}};
    for (const auto &[format, compression] : kinds) {
        const GFL_SAVE_PARAMS params = SaveParams(format, compression, 100);
        QVERIFY(WriteBytes(path, "the old file"));
        for (rlim_t limit : {0, 5, 20000, 200000}) {
            int error = 0;
            {
                const SizeLimit full(limit);
                error = Save(path, *bitmap, params);
            }
            QVERIFY2(error == GFL_ERROR_FILE_WRITE, format);
            QVERIFY2(QByteArray(gflLastErrorText()).contains(path.toUtf8()), gflLastErrorText());
            QCOMPARE(ReadBytes(path), QByteArray("the old file"));
            QCOMPARE(Everything(folder.path()).size(), 1);
        }
        QCOMPARE(Save(path, *bitmap, params), int(GFL_NO_ERROR)); // with room it goes
        QCOMPARE(ReadBytes(path), SavedBytes(*bitmap, params));
    }
}

void tst_Saving::permissions()
{
    const Folder folder;
    const QString fresh = folder("new.tif"), old = folder("old.tif");
    QVERIFY(WriteBytes(old, "old"));
    ::chmod(old.toUtf8().constData(), 0604);
    const mode_t mask = ::umask(027);
    const int errors = Save(fresh, *RandomBitmap(3, 3, GFL_RGB, 8)) + Save(old, *RandomBitmap(3, 3, GFL_RGB, 8));
    ::umask(mask);
    QCOMPARE(errors, 0);
    QCOMPARE(QFile::permissions(fresh) & 0x7077, QFile::Permissions(0x6040));
    QCOMPARE(QFile::permissions(old) & 0x7077, QFile::Permissions(0x6004));
}

void tst_Saving::symbolicLinks()
{
    const Folder folder;
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("real")));
    const QString real = folder("real/a.tif"), link = folder("link.tif");
    QVERIFY(::symlink("real/a.tif", link.toUtf8().constData()) == 0);
    for (int seed : {1, 2}) { // to a file that isn't there, then to one that is
        const BitmapPtr bitmap = RandomBitmap(3, 3, GFL_RGB, 8, static_cast<unsigned>(seed));
        QCOMPARE(Save(link, *bitmap), int(GFL_NO_ERROR));
        QVERIFY(QFileInfo(link).isSymLink());
        QCOMPARE(ReadBytes(real), SavedBytes(*bitmap, SaveParams("tiff")));
    }
    QCOMPARE(Everything(folder("real")), QStringList(QStringLiteral("a.tif")));
}

void tst_Saving::longNames()
{
    const Folder folder;
    const QString path =
        folder.filePath(QString(251, QLatin1Char('n')) + QStringLiteral(".tif")); // the longest there is
    QCOMPARE(Save(path, *RandomBitmap(3, 3, GFL_RGB, 8)), int(GFL_NO_ERROR));
    const QString umlauts = folder(u8"data: b\u00FCro \u5199\u771F.jpg");
    QCOMPARE(Save(umlauts, *RandomBitmap(3, 3, GFL_RGB, 8), SaveParams("jpeg")), int(GFL_NO_ERROR));
    QVERIFY(QFile::exists(umlauts) && Load(umlauts, nullptr, LoadParams(GFL_LOAD_METADATA)));
    // A name without a folder, which Exiv2 must not take for an address.
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(folder.path()));
    const QString address = QStringLiteral("http:a.jpg");
    const bool read = Save(address, *RandomBitmap(3, 3, GFL_RGB, 8), SaveParams("jpeg")) == GFL_NO_ERROR
        && Load(address, nullptr, LoadParams(GFL_LOAD_METADATA));
    QDir::setCurrent(before);
    QVERIFY2(read, gflLastErrorText());
}

void tst_Saving::foldersWithoutRights()
{
    if (::geteuid() == 0)
        QSKIP("the superuser has all rights");
    const Folder folder;
    const QString path = folder("a.tif");
    QVERIFY(WriteBytes(path, "old"));
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
    const Folder folder;
    const QString path = folder("a.tif");
    const BitmapPtr bitmap = RandomBitmap(3, 3, GFL_RGB, 8);
    QCOMPARE(Save(path, *bitmap, SaveParams("no such format")), int(GFL_ERROR_BAD_FORMAT_INDEX));
    QCOMPARE(Save(path, *bitmap, SaveParams("tiff", 3)), int(GFL_ERROR_BAD_PARAMETERS));
    gflEnableLZW(0);
    const int refused = Save(path, *bitmap, SaveParams("tiff", 2));
    gflEnableLZW(1);
    QCOMPARE(refused, int(GFL_ERROR_BAD_PARAMETERS));
    QCOMPARE(gflSaveBitmapUTF8(path.toUtf8().constData(), nullptr, nullptr), int(GFL_ERROR_BAD_PARAMETERS));
    QVERIFY(Everything(folder.path()).isEmpty());
}

void tst_Saving::badBitmaps()
{
    const Folder folder;
    void (*const changes[])(GFL_BITMAP &) = {[](GFL_BITMAP &b) { b.Type = GFL_COLORS; },
                                             [](GFL_BITMAP &b) { b.BitsPerComponent = 12; },
                                             [](GFL_BITMAP &b) { b.Width = 0; },
                                             [](GFL_BITMAP &b) { b.Height = -1; },
                                             [](GFL_BITMAP &b) { b.BytesPerLine = 29; },
                                             [](GFL_BITMAP &b) { b.Origin = 1; },
                                             [](GFL_BITMAP &b) { b.Width = std::numeric_limits<int>::max(); }};
    for (const auto change : changes) {
        const BitmapPtr bitmap = RandomBitmap(10, 10, GFL_RGB, 8);
        change(*bitmap);
        for (const char *format : {"tiff", "jpeg", "png", "psd", "hdri"})
            QCOMPARE(Save(folder("a"), *bitmap, SaveParams(format)), int(GFL_ERROR_BAD_BITMAP));
    }
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
