// Tests of the layer's internals: EXIF texts, lens IDs from maker notes, EXIF in BigTIFF, disk and memory failures in
// the middle of a file, the memory map of TIFF metadata, and pending rows.
#include "Bitmaps.h"
#include "BrokenSink.h"
#include "Case.h"
#include "Files.h"
#include "Table.h"
#include "core/byte_reader.h"
#include "core/codec.h"
#include "core/iso_boxes.h"
#include "core/pack_bits.h"
#include "core/pending_rows.h"
#include "core/source.h"
#include "core/tiff_directory.h"
#include "formats.h"
#include "metadata/exif_lists.h"
#include "metadata/iptc.h"
#include "metadata/metadata.h"
#include "metadata/metadata_map.h"
#include "metadata/note_offset.h"
#include "metadata/source_io.h"
#include "raw/raw_stream.h"
#include "tiff/tiff_codec.h"

#include <QDir>
#include <QScopeGuard>
#include <QtTest>

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <functional>
#include <limits>
#include <new>
#include <sys/syscall.h>
#include <tuple>
#include <unistd.h>
#include <utility>

using namespace imagefile;

namespace {

thread_local const char *failingCall = ""; // system call that fails once on this thread
thread_local int callsLeft = 0;            // such calls until one fails
thread_local int failure = 0;              // its errno
thread_local int allocationsLeft = 0;      // calls to operator new on this thread until one fails; 0: none fails

bool Fails(const char *call)
{
    if (qstrcmp(call, failingCall) != 0 || --callsLeft > 0)
        return false;
    failingCall = "";
    errno = failure;
    return true;
}

Bytes FromHex(const QByteArray &hex)
{
    const QByteArray bytes = QByteArray::fromHex(hex);
    return Bytes(bytes.begin(), bytes.end());
}

/// Makes each of a function's system calls @p call fail once: with @p number as errno or, for 0, by doing nothing and
/// returning 0. Returns an empty text if the function then always returns @p error with this text, otherwise its
/// result.
QByteArray BadFailure(const std::function<int()> &function, const QByteArray &call, int number, int error,
                      const QByteArray &text)
{
    for (int n = 1;; ++n) {
        failingCall = call;
        failure = number;
        callsLeft = n;
        const int got = function();
        const bool hasFailed = *std::exchange(failingCall, "") == '\0';
        if (!hasFailed && got == 0 && n > 1)
            return QByteArray();
        if (!hasFailed || got != error || (error != 0 && text != gflLastErrorText()))
            return call + ' ' + QByteArray::number(n) + ": " + QByteArray::number(got) + ' ' + gflLastErrorText();
    }
}

} // namespace

extern "C" {
int fchmod(int file, mode_t mode) noexcept
{
    return Fails("fchmod") ? -1 : int(::syscall(SYS_fchmod, file, mode));
}
int fsync(int file)
{
    return Fails("fsync") ? -1 : int(::syscall(SYS_fsync, file));
}
int close(int file)
{
    const int result = int(::syscall(SYS_close, file));
    return Fails("close") ? -1 : result;
}
ssize_t pread(int file, void *buffer, std::size_t size, off_t offset)
{
    return Fails("pread") ? -(failure != 0) : ::syscall(SYS_pread64, file, buffer, size, offset);
}
ssize_t pwrite(int file, const void *data, std::size_t size, off_t offset)
{
    return Fails("pwrite") ? -(failure != 0) : ::syscall(SYS_pwrite64, file, data, size, offset);
}
int rename(const char *from, const char *to) noexcept
{
    return Fails("rename") ? -1 : ::renameat(AT_FDCWD, from, AT_FDCWD, to);
}
}

void *operator new(std::size_t size, const std::nothrow_t &) noexcept
{
    if (allocationsLeft == 0 || --allocationsLeft > 0)
        return std::malloc(size);
    errno = ENOMEM; // as malloc() sets it
    return nullptr;
}
void *operator new(std::size_t size)
{
    for (;;) {
        if (void *block = operator new(size, std::nothrow))
            return block;
        const std::new_handler handler = std::get_new_handler();
        if (!handler)
            throw std::bad_alloc();
        handler();
    }
}
void operator delete(void *block) noexcept
{
    std::free(block);
}
void operator delete(void *block, std::size_t) noexcept
{
    std::free(block);
}

class tst_Inside : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { StartExiv2(); }
    void texts();
    void lensId();
    void lists();
    void bigTiff();
    void bigTiffOfBothOrders();
    void brokenDisk();
    void noMemory();
    void foreignException();
    void metadataMap();
    void freedWhilePending();
    void readers();
    void packBits();
    void boxes();
};

void tst_Inside::texts()
{
    for (const QStringList &cells : ReadTable(QStringLiteral(VITRELUX_EXIF_TEXTS))) // key, type, "VALUE=TEXT|..."
        for (const QByteArray &pair : cells.value(2).toUtf8().split('|')) {
            const Case named(cells[0], pair);
            const Exiv2::ExifKey key("Exif." + cells[0].toStdString());
            const auto typed =
                Exiv2::Value::create(key.tag() == 37510 ? Exiv2::comment : Exiv2::TypeId(cells[1].toInt()));
            const std::string text = pair.mid(pair.lastIndexOf('=') + 1).toStdString();
            QCOMPARE(typed->read(pair.left(pair.lastIndexOf('=')).toStdString()), 0);
            QCOMPARE(ExifText(Exiv2::Exifdatum(key, typed.get())), text);
            // The same after conversion to the raw list and back.
            Exiv2::ExifData exif;
            exif.add(key, typed.get());
            GFL_EXIF_DATAEX *raw = ExifRawList(exif);
            QVERIFY(raw);
            const Exiv2::ExifData again = ExifOfRawList(*raw);
            gflFreeEXIF2(raw);
            QCOMPARE(again.count(), 1L);
            QCOMPARE(ExifText(*again.begin()), text);
        }
}

void tst_Inside::lensId()
{
    for (const char *group : {"Exif.NikonLd1.", "Exif.NikonLd2.", "Exif.NikonLd3."}) {
        const Case named(group);
        Exiv2::ExifData nikon;
        const std::pair<const char *, int> values[] = {{"LensIDNumber", 121},
                                                       {"MinFocalLength", 17},
                                                       {"MaxFocalLength", 72},
                                                       {"MaxApertureAtMinFocal", 44},
                                                       {"MaxApertureAtMaxFocal", 48}};
        for (const auto &[key, value] : values)
            nikon[std::string(group) + key] = uint16_t(value);
        QCOMPARE(LensId(nikon), std::string("8 40 121 3.6 4")); // from n: 5 * 2^(n / 24) mm; f-number 2^(n / 24)
        for (const auto &each : values) {
            Exiv2::ExifData incomplete = nikon;
            incomplete.erase(incomplete.findKey(Exiv2::ExifKey(std::string(group) + each.first)));
            QCOMPARE(LensId(incomplete), std::string());
        }
    }
    Exiv2::ExifData canon;
    canon["Exif.CanonCs.Lens"] = "44 20 2"; // longest, shortest, units per millimeter
    QCOMPARE(LensId(canon), std::string());
    canon["Exif.CanonCs.LensType"] = uint16_t(235);
    QCOMPARE(LensId(canon), std::string("10 22 235"));
    for (const char *unknown : {"44 20 0", "44 20"}) {
        Exiv2::ExifData other = canon;
        other["Exif.CanonCs.Lens"] = unknown;
        QCOMPARE(LensId(other), std::string());
    }
    canon["Exif.CanonCs.LensType"] = uint16_t(65535); // no lens
    QCOMPARE(LensId(canon), std::string());
}

void tst_Inside::lists()
{
    Exiv2::ExifData exif;
    exif["Exif.GPSInfo.GPSAltitude"] = Exiv2::URational(5, 1);
    exif["Exif.Photo.FNumber"] = Exiv2::URational(28, 10);
    exif["Exif.Image.Model"] = "b";
    exif["Exif.Image.Make"] = "Canon";
    exif["Exif.Image.ExifTag"] = uint32_t(100); // an offset is not metadata
    exif["Exif.Thumbnail.Make"] = "t";
    exif["Exif.CanonCs.Lens"] = "22 10 1";
    exif["Exif.CanonCs.LensType"] = uint16_t(235);
    GFL_EXIF_DATA *list = ExifTexts(exif);
    std::string texts;
    for (const GFL_EXIF_ENTRY *each = list->ItemsList; each < list->ItemsList + list->NumberOfItems; ++each)
        texts += Text("%u %u %s=%s; ", each->Flag, each->Tag, each->Name, each->Value);
    gflFreeEXIF(list);
    QCOMPARE(texts,
             std::string("1 271 Make=Canon; 1 272 Model=b; 2 33437 FNumber=2.8; 16 6 GPSAltitude=5; "
                         "32 0 LensID=10 22 235; "));

    GFL_EXIF_DATAEX *raw = ExifRawList(exif);
    const Exiv2::ExifData again = ExifOfRawList(*raw);
    gflFreeEXIF2(raw);
    QCOMPARE(again.count(), 6L); // all but the offset and the thumbnail's
    for (const Exiv2::Exifdatum &datum : again) {
        const Case named(datum.key().c_str());
        QCOMPARE(datum.toString(), exif[datum.key()].toString());
    }

    // IPTC: short and extended lengths, the latter with up to 4 bytes; 1C begins each data set.
    for (const char *hex : {"1c02190000", "1c0219000161", "1c0219800400000001ff", "1c0219800101ff"})
        QVERIFY2(HasIptcEntries(FromHex(hex)) && !HasIptcEntries(FromHex(QByteArray(hex).chopped(2))), hex);
    QVERIFY(!HasIptcEntries(FromHex("1d02190000")) && !HasIptcEntries(FromHex("1c0219800500000000000161")));
    GFL_EXIF_ENTRYEX last = {271, 2, 12345, 0, 0, 0, nullptr, nullptr};               // unknown block
    GFL_EXIF_ENTRYEX middle = {33434, 999, GFL_EXIF_CAMERA, 0, 0, 0, nullptr, &last}; // unknown format, no data
    GFL_EXIF_ENTRYEX first = {271, 2, GFL_EXIF_MAIN, 0, 0, 0, nullptr, &middle};
    QCOMPARE(ExifOfRawList({&first, 0}).begin()->key(), std::string("Exif.Image.Make"));
    QVERIFY(ExifOfRawList({nullptr, 0}).empty());
}

/// Writes each TIFF again and again, so that every call to the sink fails once, and then reads the complete file.
/// BigTIFF is normally used from 4 GiB on; here it is also used from one byte on.
void tst_Inside::bigTiff()
{
    Metadata metadata;
    metadata.exif["Exif.Image.Make"] = "Canon";
    metadata.exif["Exif.Image.Software"] = "12345"; // 6 bytes: inside the field, unlike in classic TIFF
    metadata.exif["Exif.Image.XPComment"] = "1 2 3";
    metadata.exif["Exif.Photo.FNumber"] = Exiv2::URational(28, 10); // 8 bytes
    metadata.exif["Exif.Iop.InteroperabilityIndex"] = "R98";
    metadata.exif["Exif.GPSInfo.GPSLatitude"] = "45/1 30/1 15/2";
    metadata.exif["Exif.Canon.OwnerName"] = "the owner";
    metadata.icc = Bytes(3000, 7);
    metadata.iptc = {0x1C, 2, 25, 0, 3, 'o', 'n', 'e'};
    const BitmapPtr bitmap = RandomBitmap(301, 507, GFL_RGBA, 16);
    for (int i = 0; i < 8; ++i) {
        SaveOptions options;
        options.compression = std::array<std::uint16_t, 4>{0, 2, 4, 50000}[std::size_t(i) / 2];
        options.metadata = &metadata;
        options.lzwAllowed = true;
        options.bigTiffFromBytes = i % 2 ? 1 : kBigTiffFromBytes;
        const Case named("compression", options.compression, "BigTIFF from", options.bigTiffFromBytes);
        const QByteArray file = Written(TiffCodec(), *bitmap, options);
        std::size_t count = 0;
        char version = 0;
        QCOMPARE(int(file.leftJustified(3)[2]), i % 2 ? 43 : 42);
        QVERIFY(file.contains(i % 2 ? QByteArray("\x69\x87\x10\0\1\0\0\0\0\0\0\0", 12) // EXIF: LONG8, one value
                                    : QByteArray("\x69\x87\4\0\1\0\0\0", 8)));         // EXIF: LONG
        for (const unsigned times : {1, 2}) { // the size is never underestimated, nor by a factor of 2 overestimated
            MemorySink other;
            options.bigTiffFromBytes = i % 2 ? kBigTiffFromBytes : unsigned(file.size()) * times;
            QVERIFY(bool(TiffCodec().Write(*bitmap, options, &other)) && other.ReadAt(2, &version, 1, &count));
            QCOMPARE(int(version), i % 2 || times == 2 ? 42 : 43);
        }
        const BitmapPtr read = LoadFromMemory(file);
        QVERIFY2(read, gflLastErrorText());
        QCOMPARE(Difference(*read, *bitmap), QString());
        Metadata again;
        QVERIFY(bool(ReadMetadata(Source(file.constData(), std::size_t(file.size())), &again)));
        for (const Exiv2::Exifdatum &datum : metadata.exif) {
            const Case namedInside(datum.key().c_str());
            const auto found = again.exif.findKey(Exiv2::ExifKey(datum.key()));
            QVERIFY2(found != again.exif.end(), datum.key().c_str());
            QCOMPARE(found->toString(), datum.toString());
        }
        QVERIFY(again.icc == metadata.icc && again.iptc == metadata.iptc);
    }
}

/// Reads the metadata of files built by hand, without a picture.
void tst_Inside::bigTiffOfBothOrders()
{
    for (const bool isBigEndian : {true, false}) {
        const Case named("big-endian", isBigEndian);
        const auto number = [isBigEndian](quint64 value, int bytes) {
            QByteArray text = BigEndian(value, bytes);
            if (!isBigEndian)
                std::reverse(text.begin(), text.end());
            return text;
        };
        const auto field = [&](int tag, int type, int count, const QByteArray &value) {
            return number(quint64(tag), 2) + number(quint64(type), 2) + number(quint64(count), 8)
                + value.leftJustified(8, '\0');
        };
        const auto directory = [&](const QByteArrayList &fields) {
            return number(quint64(fields.size()), 8) + fields.join() + number(0, 8);
        };
        const QByteArray make("The maker of it\0", 16);
        const QByteArray exif = directory({field(33437, 5, 1, number(28, 4) + number(10, 4))});
        const QByteArrayList fields = {field(271, 2, make.size(), number(16, 8)), field(34665, 18, 1, number(32, 8))};
        const QByteArray file = QByteArray(isBigEndian ? "MM" : "II") + number(43, 2) + number(8, 2) + number(0, 2)
            + number(32 + quint64(exif.size()), 8) + make + exif + directory(fields);
        Metadata metadata;
        QVERIFY(bool(ReadMetadata(Source(file.constData(), std::size_t(file.size())), &metadata)));
        QCOMPARE(metadata.exif["Exif.Image.Make"].toString(), std::string("The maker of it"));
        QCOMPARE(metadata.exif["Exif.Photo.FNumber"].toString(), std::string("28/10"));
        for (int size = 0; size < file.size() - 8; ++size) { // the first directory comes last, before 8 unused bytes
            Metadata cut;
            static_cast<void>(ReadMetadata(Source(file.constData(), std::size_t(size)), &cut));
            QVERIFY2(cut.exif.empty(), QByteArray::number(size));
        }
    }
}

void tst_Inside::brokenDisk()
{
    const Folder folder;
    const QString path = folder("a");
    const BitmapPtr picture = SmoothBitmap(9, 9, GFL_RGB, 8);
    MakeMetadata(picture.get())->exif["Exif.Photo.LensModel"] = "A lens";
    const QByteArray name = path.toUtf8();
    int error = 0;
    GFL_BITMAP *bitmap = nullptr;
    GFL_METADATA_LIST *list = nullptr;
    GFL_FILE_INFORMATION info;
    const std::function<int()> functions[] = {
        [&] {
            WriteFile(path, "old");
            error = Save(path, *picture); // a failure leaves the old file and no other
            const bool isAlone = QDir(folder.path()).entryList(QDir::Files | QDir::Hidden).size() == 1;
            return isAlone && (ReadFile(path) == "old") == (error != 0) ? error : -1;
        },
        [&] { return Load(path, &error, LoadParams(GFL_LOAD_METADATA)) ? 0 : error; },
        [&] {
            return LoadThumbnail(path, {5, 5}) ? 0 : int(GFL_ERROR_FILE_READ);
        },
        [&] { return Describe(path, &info); },
        [&] { return gflHasEXIFUTF8(name) ? 0 : int(GFL_ERROR_FILE_READ); },
        [&] {
            error = gflLoadMetadataUTF8(name, &bitmap);
            return gflFreeBitmap(bitmap), error;
        },
        [&] {
            error = gflLoadMetadataListUTF8(name, &list);
            return gflFreeMetadataList(list), error;
        }};
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_FAILING_CALLS)))
        for (const char *format : {"tiff", "jpeg", "png", "psd"}) {
            QCOMPARE(Save(path, *picture, SaveParams(format)), 0);
            for (const auto &function : functions) {
                const Case named(row, format, "function", &function - functions);
                if ((row.value(0) == QLatin1String("save")) != (&function == functions))
                    continue;
                const int number = row.value(2).toInt();
                const QByteArray why = std::strerror(number != 0 ? number : ENOSPC);
                const QByteArray text = row.value(4).toUtf8().replace("PATH", name).replace("WHY", why);
                QCOMPARE(BadFailure(function, row.value(1).toUtf8(), number, row.value(3).toInt(), text), QByteArray());
            }
        }
}

/// Makes each call to operator new or to the host's allocator fail once. The load or save must then either report the
/// lack of memory or succeed with all metadata; it must never crash or hang.
void tst_Inside::noMemory()
{
    gflLibraryInitEx([](unsigned long size, void *) { return operator new(size, std::nothrow); },
                     [](void *block, unsigned long size, void *) -> void * {
                         return allocationsLeft == 0 || --allocationsLeft > 0 ? std::realloc(block, size) : nullptr;
                     },
                     [](void *block, void *) { std::free(block); }, nullptr);
    const auto reset = qScopeGuard([] { gflLibraryExit(); });
    for (const char *format : {"tiff", "jpeg", "png", "psd"}) {
        const Case named(format);
        const Folder folder;
        const QByteArray path = folder("a").toUtf8(), out = folder("b").toUtf8();
        BitmapPtr made = SmoothBitmap(9, 9, GFL_RGB, 8);
        MakeMetadata(made.get())->exif["Exif.Photo.LensModel"] = "A lens";
        const std::string packet = "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/"
                                   "22-rdf-syntax-ns#'><rdf:Description rdf:about='' xmlns:crs='http://ns.adobe.com/"
                                   "camera-raw-settings/1.0/' crs:RawFileName='longer than a string without memory'/>"
                                   "</rdf:RDF></x:xmpmeta>";
        MakeMetadata(made.get())->xmp.assign(packet.begin(), packet.end());
        GFL_SAVE_PARAMS save = SaveParams(format);
        save.Flags |= GFL_SAVE_THUMBNAIL;
        QCOMPARE(Save(folder("a"), *made, save), int(GFL_NO_ERROR));
        const GFL_LOAD_PARAMS params = LoadParams(GFL_LOAD_METADATA);
        bool fails = true; // until there are fewer than n calls
        for (int n = 1; fails; ++n) {
            GFL_BITMAP *bitmap = nullptr;
            allocationsLeft = n;
            const int error = gflLoadBitmapUTF8(path.constData(), &bitmap, &params, nullptr);
            fails = std::exchange(allocationsLeft, 0) == 0;
            const BitmapPtr owner(bitmap);
            const std::string what = Text("%s, allocation %d: %d %s", format, n, error, gflLastErrorText());
            QVERIFY2(error == GFL_NO_ERROR || (fails && error == GFL_ERROR_NO_MEMORY), what.c_str());
            QVERIFY2(error || (gflBitmapHasEXIF(bitmap) && !MetadataOf(bitmap)->xmp.empty()), what.c_str());
        }
        fails = true;
        for (int n = 1; fails; ++n) {
            allocationsLeft = n;
            const int error = gflSaveBitmapUTF8(out.constData(), made.get(), &save);
            fails = std::exchange(allocationsLeft, 0) == 0;
            const std::string what = Text("%s, allocation %d: %d %s", format, n, error, gflLastErrorText());
            QVERIFY2(error == GFL_NO_ERROR || (fails && error == GFL_ERROR_NO_MEMORY), what.c_str());
            QVERIFY2(QFile::exists(folder("b")) == (error == GFL_NO_ERROR), what.c_str());
            QVERIFY2(error || ReadFile(folder("a")) == ReadFile(folder("b")), what.c_str());
            QFile::remove(folder("b"));
        }
    }
}

/// A host's allocator throws something other than a std::exception.
void tst_Inside::foreignException()
{
    const QByteArray file = SavedBytes(*SmoothBitmap(9, 9, GFL_RGB, 8), SaveParams("tiff"));
    gflLibraryInitEx([](unsigned long, void *) -> void * { throw 7; },
                     [](void *, unsigned long, void *) -> void * { throw 7; }, [](void *, void *) {}, nullptr);
    int error = GFL_NO_ERROR;
    const BitmapPtr read = LoadFromMemory(file, &error);
    gflLibraryExit();
    QVERIFY(!read);
    QCOMPARE(error, int(GFL_ERROR_FILE_READ));
    gflLibraryInitEx([](unsigned long, void *) -> void * { return nullptr; },
                     [](void *, unsigned long, void *) -> void * { return nullptr; }, [](void *, void *) {}, nullptr);
    const Status grown = MemorySink().WriteAt(0, "a", 1);
    gflLibraryExit();
    QCOMPARE(int(grown.Error()), int(GFL_ERROR_NO_MEMORY));
}

void tst_Inside::metadataMap()
{
    const QByteArray field(12, '\0');
    const QByteArray little = QByteArray("II*\0\x0A\0\0\0..\2\0", 12) + field + field;
    // 9 MiB, with the directory and its targets at the end; only these and the first few megabytes are read.
    const quint32 at = 9u << 20;
    const auto number = [](quint32 value) {
        QByteArray text = BigEndian(value, 4);
        std::reverse(text.begin(), text.end());
        return text;
    };
    const QByteArray text = QByteArray("\x0F\1\2\0", 4) + number(9) + number(at + 50);
    const QByteArray sub = QByteArray("\x69\x87\4\0\1\0\0\0", 8) + number(at + 60);
    const QByteArray first = QByteArray("\2\0", 2) + text + sub + QByteArray(4, '\0');
    const QByteArray exif = QByteArray("\1\0\x0F\1\2\0\7\0\0\0", 10) + number(at + 100) + QByteArray(4, '\0');
    const QByteArray end = first.leftJustified(50, '.') + "ninebytes." + exif.leftJustified(40, '.') + "seven..";
    const std::tuple<const char *, QByteArray, int> rows[] = {
        // name, file, position of the pointer to the second page (0: none)
        {"two pages", little + QByteArray("\0\1\0\0more", 8), 36},
        {"big-endian", QByteArray("MM\0*\0\0\0\x08\0\1", 10) + field + QByteArray("\0\0\1\0", 4), 22},
        {"one page", little + QByteArray(4, '\0'), 0},
        {"truncated inside the pointer", little + QByteArray("\1\0\0", 3), 0},
        {"directory after the end", QByteArray("II*\0\xFF\xFF\xFF\xFF", 8), 0},
        {"CIFF", QByteArray("II\x1A\0\0\0HEAPCCDR", 14) + QByteArray(5 << 20, 'c'), 0},
        {"not a TIFF", QByteArray(little).replace(2, 1, "U") + "next", 0},
        {"at the end", QByteArray("II*\0", 4) + number(at) + QByteArray(int(at) - 8, 'p') + end, 0}};
    for (const auto &[name, bytes, pointerAt] : rows) {
        const Case named(name);
        const Folder folder;
        WriteFile(folder("a"), bytes);
        Source source;
        MetadataMap map;
        QVERIFY(bool(source.Open(folder("a").toStdString())));
        QVERIFY(map.Open(source));
        QByteArray expected = pointerAt > 0 ? QByteArray(bytes).replace(pointerAt, 4, QByteArray(4, '\0')) : bytes;
        constexpr int kHead = 4 << 20, kEnd = 9 << 20;
        if (bytes.size() > kEnd)
            expected.replace(kHead, kEnd - kHead, QByteArray(kEnd - kHead, '\0'));
        QVERIFY(std::memcmp(map.Data(), expected.constData(), std::size_t(expected.size())) == 0);
        QCOMPARE(ReadFile(folder("a")), bytes); // nothing was written
    }
}

/// Freeing a picture stops its decoder, which would otherwise run forever here.
void tst_Inside::freedWhilePending()
{
    const auto decode = [](RowSink *rows) {
        Status status = rows->Start(4, 32, {8, 3});
        while (status)
            rows->Done(15);
        return status;
    };
    GFL_LOAD_PARAMS params;
    gflGetDefaultLoadParams(&params);
    Owned<GFL_BITMAP> bitmap(nullptr, gflFreeBitmap);
    int ready = 0;
    QVERIFY(bool(StartPending(params, decode, &bitmap)));
    QVERIFY(bool(WaitForRows(*bitmap, 16, &ready)));
    QCOMPARE(ready, 16);
}

/// Reads bytes at the end of a file, past it, and in pieces that are larger than the readers' buffers.
void tst_Inside::readers()
{
    QByteArray bytes(300000, '\0');
    for (int i = 0; i < bytes.size(); ++i)
        bytes[i] = static_cast<char>(i % 251);
    const Source source(bytes.constData(), std::size_t(bytes.size()));
    ByteReader reader(source, 2);
    char byte = 'x';
    QByteArray part(70000, '\0');
    QVERIFY(reader.Number(3) == 0x020304 && reader.Skip(65530) && reader.Position() == 65535);
    QVERIFY(reader.Read(part.data(), 70000) && part == bytes.mid(65535, 70000)
            && reader.Remaining() == 300000 - 135535);
    QVERIFY(!reader.Skip(300000) && !reader.Read(&byte, 1)); // after a failure nothing is read
    QVERIFY(byte == 'x' && reader.Number(2) == 0 && reader.Failed() && reader.Remaining() == 0);
    ByteReader far(source, 0);
    QVERIFY(far.Skip(70000) && far.Position() == 70000 && far.Number(1) == 70000 % 251 && far.Skip(229999));
    QVERIFY(far.Remaining() == 0 && !far.Failed() && far.Skip(0) && far.Number(1) == 0 && far.Failed());
    SourceIo io(source);
    QCOMPARE(io.seek(299990, Exiv2::BasicIo::beg), 0);
    const Exiv2::DataBuf end = io.read(20);
    QVERIFY(end.size_ == 10 && std::memcmp(end.pData_, bytes.constData() + 299990, 10) == 0 && io.eof());
    QVERIFY(io.getb() == EOF && io.seek(-300001, Exiv2::BasicIo::cur) == 1 && io.tell() == 300000);
    QVERIFY(io.seek(-9, Exiv2::BasicIo::end) == 0 && !io.eof() && io.getb() == quint8(bytes[299991]) && !io.eof());
    QVERIFY(io.seek(-299992, Exiv2::BasicIo::cur) == 0 && io.tell() == 0 && io.seek(9, Exiv2::BasicIo::end) == 0);
    QVERIFY(io.isopen() && io.size() == 300000 && io.path().empty() && io.close() == 0 && io.munmap() == 0);
    QVERIFY(io.write(nullptr, 1) == 0 && io.write(io) == 0 && io.putb(1) == EOF); // read-only
    QVERIFY(io.read(20).size_ == 0 && io.tell() == 300009 && io.error() == 0 && io.open() == 0 && io.tell() == 0);
    RawStream stream(source);
    QByteArray pieces(bytes.size(), '\0');
    int done = 0;
    for (const int size : {100, 200000, 70, 99830})
        done += stream.read(pieces.data() + done, 1, std::size_t(size));
    QCOMPARE(done, bytes.size());
    QVERIFY(pieces == bytes);
    const QByteArray text = " 12\n\nab\nabcdef";
    const Source textSource(text.constData(), std::size_t(text.size()));
    RawStream lines(textSource);
    int number = 0;
    char line[5] = "xxxx";
    QVERIFY(lines.scanf_one("%d", &number) == 1 && number == 12);
    for (const char *expected : {"\n", "ab\n", "abcd", "ef"})
        QCOMPARE(lines.gets(line, sizeof line), expected);
    QVERIFY(!lines.gets(line, sizeof line) && lines.get_char() == -1 && lines.scanf_one("%d", &number) == EOF);
    QVERIFY(lines.seek(-1, SEEK_SET) == 0 && lines.tell() == 0 && !lines.gets(line, 1) && lines.read(line, 0, 5) == 0);
    QVERIFY(lines.seek(3, SEEK_SET) == 0 && lines.seek(-2, SEEK_CUR) == 0 && lines.get_char() == '1');
    QVERIFY(lines.seek(-1, SEEK_END) == 0 && lines.get_char() == 'f' && lines.seek(1, SEEK_CUR) == 0 && lines.eof());
    QCOMPARE(lines.seek(std::numeric_limits<INT64>::max(), SEEK_CUR), -1);
}

/// The first row is from Apple's Technical Note TN1023; the others have runs of 2, 3 and 131, and 130 bytes without a
/// run.
void tst_Inside::packBits()
{
    const std::pair<QByteArray, QByteArray> rows[] = {
        // plain, packed
        {"aaaaaa80002aaaaaaaaa80002a22aaaaaaaaaaaaaaaaaaaa", "feaa0280002afdaa0380002a22f7aa"},
        {"010202", "02010202"},
        {"01020202", "0001fe02"},
        {QByteArray("42").repeated(131), "8142fe42"},
        {QByteArray("4142").repeated(65), "7f" + QByteArray("4142").repeated(64) + "014142"}};
    for (const auto &[plain, packed] : rows) {
        const Case named(plain);
        const QByteArray bytes = QByteArray::fromHex(plain);
        std::vector<std::uint8_t> out, row(bytes.begin(), bytes.end()), again(row.size());
        PackBits(row.data(), row.size(), &out);
        QCOMPARE(QByteArray(reinterpret_cast<char *>(out.data()), int(out.size())).toHex(), packed);
        out.insert(out.begin(), 128); // no operation
        out.push_back(5);             // surplus
        QVERIFY(UnpackBits(out.data(), out.size(), again.data(), row.size()) && again == row);
        QVERIFY(!UnpackBits(out.data(), out.size() - 2, again.data(), row.size())); // the last byte is missing
        QVERIFY(!UnpackBits(out.data(), out.size() - 1, again.data(), row.size() - 1));
    }
}

/// Finds boxes of ISO 14496-12 from byte 1 on: an empty one, one with a 64-bit length, and one that extends past the
/// end.
void tst_Inside::boxes()
{
    const char file[] = ".\0\0\0\x08"
                        "free\0\0\0\1long\0\0\0\0\0\0\0\x12..\0\0\0\x0Clast.."; // and the terminating zero
    std::string found;
    for (const IsoBox &box : IsoBoxesIn(Source(file, sizeof file), 1, 99))
        found += Text("%s %d %d %d; ", box.name, int(box.begin), int(box.end), int(box.isComplete));
    QCOMPARE(found, std::string("free 9 9 1; long 25 27 1; last 35 38 0; "));
    const std::vector<IsoBox> rest = IsoBoxesIn(Source("\0\0\0\0rest..", 10), 0, 10); // a length of 0: up to the end
    QVERIFY(rest.size() == 1 && rest[0].end == 10 && rest[0].isComplete);
    QVERIFY(IsoBoxesIn(Source("\0\0\0\7tiny", 8), 0, 8).empty());
    TiffField rational = {33434, 5, 1, {4}}; // 8 bytes at byte 4
    QVERIFY(!WidenField(Bytes(11), &rational) && WidenField(Bytes(12), &rational));
    // An EXIF block with a maker note's field. Before offset 16 there is no room for the note.
    const QByteArray head("II*\0", 4), entry("\1\0\x7C\x92\7\0\4\0\0\0", 10), end(4, '\0');
    const QByteArray block = head + QByteArray("\x08\0\0\0", 4) + entry + end + end;
    const auto withNote = [](const QByteArray &exif, unsigned offset) {
        const Bytes result = WithNoteAt(Bytes(exif.begin(), exif.end()), {'N', 'O', 'T', 'E'}, offset);
        return QByteArray(reinterpret_cast<const char *>(result.data()), int(result.size()));
    };
    QCOMPARE(withNote(block, 15) + withNote(block.left(7), 16) + withNote(block.left(20), 16), QByteArray());
    QCOMPARE(withNote(block, 30), QByteArray(block).replace(18, 1, "\x1E") + end + "NOTE");
    QCOMPARE(withNote(block, 16),
             head + QByteArray("\x14\0\0\0", 4) + end + end + "NOTE" + entry + QByteArray("\x10\0\0\0", 4) + end);
}

QTEST_GUILESS_MAIN(tst_Inside)
#include "Inside_test.moc"
