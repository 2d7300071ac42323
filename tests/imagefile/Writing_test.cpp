// Tests of writing: whether pictures read back in the closest form that the format supports, and what happens to files,
// even after failures.
#include "Bitmaps.h"
#include "Case.h"
#include "Files.h"
#include "Table.h"

#include <QDir>
#include <QFile>
#include <QtTest>

#include <atomic>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <limits>
#include <sys/resource.h>
#include <sys/stat.h>
#include <tuple>
#include <unistd.h>
#include <utility>

namespace {

QStringList Everything(const QString &folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

/// Limit on the size of the files that this process writes, while the object exists. It acts like a full disk.
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

/// Provides rows on demand from a bitmap without padding. They must be requested in order or, if `isFast`, in aligned
/// groups of up to GFL_FAST_ROWS in any order; never more than 1,000 rows at once, because the picture may not fit in
/// memory. Other requests fail, and so do rows from `end` on.
struct Maker {
    const std::uint8_t *pixels;
    int end;
    bool isFast;
    std::atomic<int> made;

    static int Make(int firstRow, int rows, std::uint8_t *data, std::uint32_t bytesPerLine, void *self)
    {
        Maker &maker = *static_cast<Maker *>(self);
        const int before = maker.made.fetch_add(rows);
        if ((maker.isFast ? firstRow % GFL_FAST_ROWS != 0 || rows > GFL_FAST_ROWS : firstRow != before) || rows > 1000
            || firstRow + rows > maker.end)
            return GFL_ERROR_NO_MEMORY;
        std::memcpy(data, maker.pixels + std::size_t(firstRow) * bytesPerLine, std::size_t(rows) * bytesPerLine);
        return GFL_NO_ERROR;
    }
};

} // namespace

class tst_Writing : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { gflEnableLZW(1); }
    void writeThenRead();
    void runs();
    void colorDepth();
    void invalidTargets();
    void fullDisk();
    void symbolicLinks();
    void longNames();
    void foldersWithoutRights();
    void badParameters();
    void generatedRows();
    void fastDeflate();

private:
    void WriteThenRead(const QStringList &format, int type, int bits);
};

void tst_Writing::writeThenRead()
{
    for (const QStringList &format : ReadTable(QStringLiteral(VITRELUX_WRITTEN_FORMS)))
        for (int type : {GFL_GREY, GFL_RGB, GFL_RGBA})
            for (int bits : {8, 16, 32})
                WriteThenRead(format, type, bits);
}

void tst_Writing::WriteThenRead(const QStringList &format, int type, int bits)
{
    const QByteArray name = format[0].toLatin1();
    const int compression = format[1].toInt();
    const auto holds = [&format](const char *what) { return format[2].contains(QLatin1String(what)); };
    const int heldBits = bits == 32 ? (holds("float") ? 32 : 16) : holds("integers") ? bits : 32;
    const int heldType = type == GFL_GREY ? (holds("gray") ? GFL_GREY : GFL_RGB) : holds("alpha") ? type : GFL_RGB;
    const double tolerance = heldBits == bits && holds("integers") ? 0.0 : format[3].toDouble() / 65536;
    for (const QSize size : {QSize(1, 1), QSize(1, 7), QSize(3, 1), QSize(31, 17), QSize(20011, 3)}) {
        const Case named(name, compression, type, bits, size);
        const BitmapPtr bitmap = RandomBitmap(size.width(), size.height(), type, bits);
        const QByteArray file = SavedBytes(*bitmap, SaveParams(name, compression));
        const BitmapPtr read = LoadFromMemory(file);
        QVERIFY2(read, gflLastErrorText());
        QCOMPARE(Difference(*read, *Converted(*bitmap, heldType, heldBits), tolerance), QString());
        // Supported content comes back unchanged.
        const BitmapPtr again = LoadFromMemory(SavedBytes(*read, SaveParams(name, compression)));
        QCOMPARE(Difference(*again, *read), QString());
    }
}

void tst_Writing::runs()
{
    // Runs of every length up to well above the limits of packing. Random samples never contain them.
    constexpr int kLongest = 240;
    const int width = kLongest * (kLongest + 1) / 2;
    const BitmapPtr bitmap = NewBitmap(width, 1, GFL_RGB, 8);
    std::uint8_t *pixel = bitmap->Data;
    for (int run = 1; run <= kLongest; ++run)
        for (int i = 0; i < run; ++i, pixel += 3) {
            pixel[0] = run % 2 != 0 ? 255 : 0;
            pixel[1] = pixel[2] = 255;
        }
    for (const char *format : {"hdri", "psd"}) {
        const Case named(format);
        const QByteArray file = SavedBytes(*bitmap, SaveParams(format));
        const BitmapPtr read = LoadFromMemory(file, nullptr, LoadParams());
        QVERIFY2(read, gflLastErrorText());
        QCOMPARE(Difference(*read, *bitmap), QString());
        QVERIFY(file.size() < width / 10);
    }
    const auto pngSize = [&](int level) { return SavedBytes(*bitmap, SaveParams("png", level)).size(); };
    QVERIFY(pngSize(0) > 3 * width && pngSize(1) < width / 10);
}

void tst_Writing::colorDepth()
{
    const auto typeOf = [](const QByteArray &pixel) {
        return pixel.size() == 1 ? GFL_GREY : pixel.size() == 3 ? GFL_RGB : GFL_RGBA;
    };
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_COLOR_DEPTHS))) {
        const Case named(row[0]);
        const QByteArray pixel = QByteArray::fromHex(row[1].toLatin1()),
                         expected = QByteArray::fromHex(row[4].toLatin1());
        const BitmapPtr bitmap = NewBitmap(5, 3, typeOf(pixel), 8, 32);
        for (int y = 0; y < 3; ++y)
            std::copy_n(pixel.repeated(5).constData(), 5 * pixel.size(), bitmap->Data + y * int(bitmap->BytesPerLine));
        const int error = gflChangeColorDepth(bitmap.get(), nullptr, row[2].toUShort(), row[3].toUShort());
        QCOMPARE(error, int(expected.isEmpty() ? GFL_ERROR_BAD_PARAMETERS : GFL_NO_ERROR));
        if (expected.isEmpty())
            continue;
        QVERIFY(bitmap->Type == typeOf(expected) && bitmap->BytesPerPixel == expected.size());
        QCOMPARE(PackedPixels(*bitmap), expected.repeated(15));
    }
    const BitmapPtr deep = RandomBitmap(3, 3, GFL_RGB, 16), bitmap = RandomBitmap(3, 3, GFL_RGB, 8);
    QCOMPARE(gflChangeColorDepth(deep.get(), nullptr, GFL_DEPTH_GREY, 0), int(GFL_ERROR_BAD_BITMAP));
    GFL_BITMAP *other = nullptr;
    QCOMPARE(gflChangeColorDepth(bitmap.get(), &other, GFL_DEPTH_GREY, 0), int(GFL_ERROR_BAD_PARAMETERS));
}

void tst_Writing::invalidTargets()
{
    const Folder folder;
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("folder")));
    WriteFile(folder("file"), "old");
    QVERIFY(::mkfifo(folder("pipe").toUtf8().constData(), 0600) == 0);
    QVERIFY(QFile::link(QStringLiteral("/dev/full"), folder("device")));
    QVERIFY(QFile::link(QStringLiteral("circle"), folder("circle")));
    const QStringList before = Everything(folder.path());
    const QByteArray tooLong(300, 'a');
    for (const char *name : {"none/a.tif", "folder", "pipe", "device", "circle", "file/a.tif", tooLong.constData()}) {
        const Case named(name);
        const int error = Save(folder(name), *RandomBitmap(10, 10, GFL_RGB, 8));
        QVERIFY2(error == GFL_ERROR_FILE_CREATE, name);
        QVERIFY(QByteArray(gflLastErrorText()).startsWith("can't create"));
        QCOMPARE(Everything(folder.path()), before);
    }
}

void tst_Writing::fullDisk()
{
    const Folder folder;
    const BitmapPtr bitmap = RandomBitmap(400, 900, GFL_RGBA, 8);
    const QString path = folder("a.out");
    const QPair<const char *, int> kinds[] = {{"tiff", 0}, {"tiff", 2}, {"tiff", 4},  {"jpeg", -1},
                                              {"png", -1}, {"psd", -1}, {"hdri", -1}, {"exr", -1}};
    for (const auto &[format, compression] : kinds) {
        const Case named(format, compression);
        const GFL_SAVE_PARAMS params = SaveParams(format, compression, 100);
        WriteFile(path, "the old file");
        for (rlim_t limit : {0, 5, 20000, 200000}) {
            const Case namedInside("limit", limit);
            int error = 0;
            {
                const SizeLimit full(limit);
                error = Save(path, *bitmap, params);
            }
            QVERIFY2(error == GFL_ERROR_FILE_WRITE, format);
            QVERIFY2(QByteArray(gflLastErrorText()).contains(path.toUtf8()), gflLastErrorText());
            QCOMPARE(ReadFile(path), QByteArray("the old file"));
            QCOMPARE(Everything(folder.path()).size(), 1);
        }
        QCOMPARE(Save(path, *bitmap, params), int(GFL_NO_ERROR)); // succeeds with enough room
        QCOMPARE(ReadFile(path), SavedBytes(*bitmap, params));
    }
}

void tst_Writing::symbolicLinks()
{
    // A link's target is written and keeps its permissions; a new file gets those allowed by the umask.
    const Folder folder;
    QVERIFY(QDir(folder.path()).mkdir(QStringLiteral("real")));
    const QString real = folder("real/a.tif"), link = folder("link.tif");
    QVERIFY(::symlink("real/hop", link.toUtf8().constData()) == 0); // relative, then absolute
    QVERIFY(::symlink("h", folder("real/hop").toUtf8().constData()) == 0);
    QVERIFY(::symlink(real.toUtf8().constData(), folder("real/h").toUtf8().constData()) == 0);
    for (const int rights : {0x6040, 0x6004}) {
        const Case named("permissions", rights);
        const BitmapPtr bitmap = RandomBitmap(3, 3, GFL_RGB, 8, static_cast<unsigned>(rights));
        const mode_t mask = ::umask(027);
        const int error = Save(link, *bitmap);
        ::umask(mask);
        QCOMPARE(error, int(GFL_NO_ERROR));
        QVERIFY(QFileInfo(link).isSymLink());
        QCOMPARE(ReadFile(real), SavedBytes(*bitmap, SaveParams("tiff")));
        QCOMPARE(QFile::permissions(real) & 0x7077, QFile::Permissions(rights));
        ::chmod(real.toUtf8().constData(), 0604);
    }
    QCOMPARE(Everything(folder("real")).join(QLatin1Char(' ')), QStringLiteral("a.tif h hop"));
}

void tst_Writing::longNames()
{
    const Folder folder;
    const QString path =
        folder.filePath(QString(251, QLatin1Char('n')) + QStringLiteral(".tif")); // the longest possible name
    QCOMPARE(Save(path, *RandomBitmap(3, 3, GFL_RGB, 8)), int(GFL_NO_ERROR));
    // A name without a folder, which Exiv2 must not mistake for a web address.
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(folder.path()));
    const QString address = QString::fromUtf8(u8"http:b\u00FCro \u5199\u771F.jpg");
    const bool read = Save(address, *RandomBitmap(3, 3, GFL_RGB, 8), SaveParams("jpeg")) == GFL_NO_ERROR
        && Load(address, nullptr, LoadParams(GFL_LOAD_METADATA));
    QDir::setCurrent(before);
    QVERIFY2(read && QFile::exists(folder.filePath(address)), gflLastErrorText());
    // A crashed process with the same ID may have left files. Without standard input, files get descriptor 0.
    for (int i = 0; i < 4000; i += 2)
        WriteFile(folder.filePath(QString::asprintf(".%x-%x.part", unsigned(::getpid()), i)));
    const int input = ::dup(0);
    for (int i = 0; i < 2; ++i) {
        ::close(0);
        const bool isSaved = Save(path, *RandomBitmap(3, 3, GFL_RGB, 8)) == GFL_NO_ERROR,
                   isRead = Load(path) != nullptr, isClosed = ::fcntl(0, F_GETFD) == -1;
        ::dup2(input, 0);
        QVERIFY2(isSaved && isRead && isClosed, gflLastErrorText());
    }
    ::close(input);
}

void tst_Writing::foldersWithoutRights()
{
    if (::geteuid() == 0)
        QSKIP("the superuser has all rights");
    const Folder folder;
    const QString path = folder("a.tif");
    WriteFile(path, "old");
    ::chmod(path.toUtf8().constData(), 0400);
    QCOMPARE(Save(path, *RandomBitmap(3, 3, GFL_RGB, 8)), int(GFL_ERROR_FILE_CREATE));
    ::chmod(path.toUtf8().constData(), 0600);
    ::chmod(folder.path().toUtf8().constData(), 0500);
    const int error = Save(path, *RandomBitmap(3, 3, GFL_RGB, 8));
    ::chmod(folder.path().toUtf8().constData(), 0700);
    QCOMPARE(error, int(GFL_ERROR_FILE_CREATE));
    QCOMPARE(ReadFile(path), QByteArray("old"));
}

void tst_Writing::badParameters()
{
    const Folder folder;
    const QString path = folder("a.tif");
    const BitmapPtr bitmap = RandomBitmap(3, 3, GFL_RGB, 8);
    QCOMPARE(Save(path, *bitmap, SaveParams("no such format")), int(GFL_ERROR_BAD_FORMAT_INDEX));
    QCOMPARE(Save(path, *bitmap, SaveParams("tiff", 3)), int(GFL_ERROR_BAD_PARAMETERS));
    QCOMPARE(Save(path, *bitmap, SaveParams("exr", 10)), int(GFL_ERROR_BAD_PARAMETERS));
    gflEnableLZW(0);
    const int refused = Save(path, *bitmap, SaveParams("tiff", 2));
    gflEnableLZW(1);
    QCOMPARE(refused, int(GFL_ERROR_BAD_PARAMETERS));
    void (*const changes[])(GFL_BITMAP &) = {[](GFL_BITMAP &b) { b.Type = GFL_COLORS; },
                                             [](GFL_BITMAP &b) { b.Width = 0; }, [](GFL_BITMAP &b) { b.Height = -1; },
                                             [](GFL_BITMAP &b) { b.BytesPerLine = 8; },
                                             [](GFL_BITMAP &b) { b.Width = std::numeric_limits<int>::max(); }};
    for (const auto change : changes) {
        const BitmapPtr bad = RandomBitmap(3, 3, GFL_RGB, 8);
        change(*bad);
        for (const char *format : {"tiff", "jpeg", "png", "psd", "hdri"}) {
            const Case named(format);
            QCOMPARE(Save(path, *bad, SaveParams(format)), int(GFL_ERROR_BAD_BITMAP));
        }
    }
    QVERIFY(Everything(folder.path()).isEmpty());
}

void tst_Writing::generatedRows()
{
    const Folder folder;
    const QString path = folder("a.tif");
    const BitmapPtr bitmap = RandomBitmap(400, 3001, GFL_RGBA, 8); // ten strips, more than the slots of two threads
    GFL_BITMAP shape = *bitmap;
    shape.Data = nullptr;
    const auto save = [&](int end, const GFL_SAVE_PARAMS &params) {
        Maker maker = {bitmap->Data, end, (params.Flags & GFL_SAVE_FAST) && params.Compression == 4, {0}};
        const int error = gflSaveRowsUTF8(path.toUtf8().constData(), &shape, Maker::Make, &maker, &params);
        return error == GFL_NO_ERROR && maker.made != shape.Height ? -1 : error; // each row must be requested once
    };
    const std::tuple<const char *, int, bool> forms[] = {
        {"tiff", 0, false}, {"tiff", 2, false}, {"tiff", 4, false}, {"tiff", 50000, false}, {"jpeg", -1, false},
        {"png", 1, false},  {"exr", 3, false},  {"tiff", 2, true},  {"tiff", 4, true}};
    for (const auto &[format, compression, isFast] : forms) {
        const Case named(format, compression, "fast", isFast);
        GFL_SAVE_PARAMS params = SaveParams(format, compression);
        params.Flags |= isFast ? unsigned(GFL_SAVE_FAST) : 0;
        gflSetThreads(1);
        const QByteArray alone = SavedBytes(*bitmap, params);
        for (int threads : {1, 2, 5}) {
            const Case namedInside("threads", threads);
            gflSetThreads(threads);
            WriteFile(path, "old");
            QCOMPARE(save(2000, params), int(GFL_ERROR_NO_MEMORY));
            QCOMPARE(ReadFile(path), QByteArray("old"));
            QCOMPARE(save(3001, params), int(GFL_NO_ERROR));
            QVERIFY(ReadFile(path) == alone
                    && SavedBytes(*bitmap, params) == alone); // no matter which thread compresses
        }
        gflSetThreads(0);
    }
    QCOMPARE(save(3001, SaveParams("psd")), int(GFL_ERROR_BAD_PARAMETERS));
    QCOMPARE(Everything(folder.path()).size(), 1);
}

/// Files of the fast compressor have the same content and are at most 6 % larger.
void tst_Writing::fastDeflate()
{
    constexpr int kWidth = 601, kHeight = GFL_FAST_ROWS, kNoise = 0, kGrain = 1, kRamp = 2, kFlat = 3;
    GFL_SAVE_PARAMS fast = SaveParams("tiff", 4);
    fast.Flags |= GFL_SAVE_FAST;
    for (const int content : {kNoise, kGrain, kRamp, kFlat})
        for (const int bits : {8, 16, 32}) {
            const Case named("content", content, "bits", bits);
            BitmapPtr bitmap = RandomBitmap(kWidth, kHeight, GFL_RGB, bits);
            if (content != kNoise) {
                const BitmapPtr noise = std::move(bitmap);
                bitmap = FilledBitmap(kWidth, kHeight, GFL_RGB, bits, [&](int x, int y, int c) {
                    return 0.3 + (content == kFlat ? 0.0 : 0.4 * (x + c * y) / (kWidth + 2 * kHeight))
                        + (content == kGrain ? 0.02 * SampleAt(*noise, x, y, c) : 0.0);
                });
            }
            const QByteArray file = SavedBytes(*bitmap, fast);
            QCOMPARE(Difference(*LoadFromMemory(file), *bitmap), QString());
            // Ramps and flat areas, as in drawings, are left to libdeflate.
            const QByteArray plain = SavedBytes(*bitmap, SaveParams("tiff", 4));
            QCOMPARE(file == plain, content == kRamp || content == kFlat);
            QVERIFY2(file.size() <= 1.06 * plain.size(), QByteArray::number(file.size()));
        }
}

QTEST_GUILESS_MAIN(tst_Writing)
#include "Writing_test.moc"
