// From inside the layer: EXIF values as callers read them, lens names out of maker notes, EXIF in BigTIFF, a disk that
// fails in the midst of a file, TIFF of many pages.
#include "Bitmaps.h"
#include "core/codec.h"
#include "core/source.h"
#include "metadata/exif_lists.h"
#include "metadata/first_page_map.h"
#include "metadata/metadata.h"

#include <QFileInfo>
#include <QtTest>

#include <fcntl.h>
#include <unistd.h>

using namespace imagefile;

namespace {

/// Puts a folder in the place of an open file: reading it fails with an error, as a disk does.
bool Break(const QString &path)
{
    for (int fd = 3; fd < 100; ++fd) {
        if (QFile::symLinkTarget(QStringLiteral("/proc/self/fd/%1").arg(fd)) != path)
            continue;
        const int folder = ::open("/", O_RDONLY);
        return ::dup2(folder, fd) == fd && ::close(folder) == 0;
    }
    return false;
}

} // namespace

class tst_Inside : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { StartExiv2(); }
    void texts();
    void lensId();
    void lists();
    void bigTiff();
    void brokenDisk();
    void firstPage();
};

void tst_Inside::texts()
{
    const struct {
        const char *key;
        int type;                 // TIFF field type
        const char *value, *text; // in Exiv2's words; what is told
    } rows[] = {
        {"Image.Model", 2, "E-M1      ", "E-M1"},
        {"Image.Orientation", 3, "1", "Top-left (1)"},
        {"Image.Orientation", 10, "-2147483648/-1", "2147483648"},
        {"Photo.ExposureTime", 5, "10/2500", "1/250"},
        {"Photo.ExposureTime", 5, "25/10", "2.5"},
        {"Photo.ExposureTime", 5, "0/0", "0"},
        {"Photo.FNumber", 5, "28/10", "2.8"},
        {"Photo.ExposureBiasValue", 10, "-2/6", "-1/3"},
        {"Photo.FocalPlaneXResolution", 5, "3888000/877", "4433.29532"},
        {"Photo.FocalPlaneResolutionUnit", 3, "5", "um"},
        {"Photo.ExifVersion", 7, "48 50 51 49", "0231"},
        {"Photo.UserComment", 7, "charset=Ascii FOV: 73.7 x 53.1 ~ 84.0", "FOV: 73.7 x 53.1 ~ 84.0"},
        {"GPSInfo.GPSLatitudeRef", 2, "S", "South"},
        {"GPSInfo.GPSLatitude", 5, "45/1 30/1 15/2", "45° 30' 7.5\""},
        {"GPSInfo.GPSLatitude", 5, "45/1 303/10 0/1", "45° 30.3' 0\""},
        {"GPSInfo.GPSLatitude", 5, "45/1 30/1 36/1000000", "45° 30' 0.000036\""},
        {"GPSInfo.GPSLongitude", 5, "7/1 0/1 1/4000000000", "7° 0' 0\""},
        {"GPSInfo.GPSLatitude", 5, "45/1", "45"},
    };
    for (const auto &row : rows) {
        const Exiv2::ExifKey key(std::string("Exif.") + row.key);
        const auto typed = Exiv2::Value::create(key.tag() == 37510 ? Exiv2::comment : Exiv2::TypeId(row.type));
        QCOMPARE(typed->read(row.value), 0);
        QCOMPARE(ExifText(Exiv2::Exifdatum(key, typed.get())), std::string(row.text));
        // And again once it has been through the raw list.
        Exiv2::ExifData exif;
        exif.add(key, typed.get());
        GFL_EXIF_DATAEX *raw = ExifRawList(exif);
        QVERIFY(raw);
        const Exiv2::ExifData again = ExifOfRawList(*raw);
        gflFreeEXIF2(raw);
        QCOMPARE(again.count(), 1L);
        QCOMPARE(ExifText(*again.begin()), std::string(row.text));
    }
}

void tst_Inside::lensId()
{
    for (const char *group : {"Exif.NikonLd1.", "Exif.NikonLd2.", "Exif.NikonLd3."}) {
        Exiv2::ExifData nikon;
        nikon[group + std::string("LensIDNumber")] = uint16_t(121);
        QCOMPARE(LensId(nikon), std::string()); // incomplete
        for (const char *tag : {"MinFocalLength", "MaxFocalLength"})
            nikon[std::string(group) + tag] = uint16_t(17);
        for (const char *tag : {"MaxApertureAtMinFocal", "MaxApertureAtMaxFocal"})
            nikon[std::string(group) + tag] = uint16_t(44);
        QCOMPARE(LensId(nikon), std::string("8 8 121 3.6 3.6"));
    }
    Exiv2::ExifData canon;
    canon["Exif.CanonCs.Lens"] = "44 20 2"; // longest, shortest, units a millimetre
    QCOMPARE(LensId(canon), std::string());
    canon["Exif.CanonCs.LensType"] = uint16_t(235);
    QCOMPARE(LensId(canon), std::string("10 22 235"));
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
    exif["Exif.Image.ExifTag"] = uint32_t(100); // an offset says nothing
    exif["Exif.Thumbnail.Make"] = "t";
    exif["Exif.CanonCs.Lens"] = "22 10 1";
    exif["Exif.CanonCs.LensType"] = uint16_t(235);
    GFL_EXIF_DATA *list = ExifTexts(exif);
    QCOMPARE(list->NumberOfItems, 5u);
    const unsigned flags[] = {GFL_EXIF_MAIN, GFL_EXIF_MAIN, GFL_EXIF_CAMERA, GFL_EXIF_GPS, GFL_EXIF_OWN};
    const char *names[] = {"Make", "Model", "FNumber", "GPSAltitude", "LensID"};
    for (unsigned i = 0; i < 5; ++i) {
        QCOMPARE(list->ItemsList[i].Flag, flags[i]);
        QCOMPARE(list->ItemsList[i].Name, names[i]);
    }
    gflFreeEXIF(list);

    GFL_EXIF_DATAEX *raw = ExifRawList(exif);
    const Exiv2::ExifData again = ExifOfRawList(*raw);
    gflFreeEXIF2(raw);
    QCOMPARE(again.count(), 6L); // all but the offset and the thumbnail's
    for (const Exiv2::Exifdatum &datum : again)
        QCOMPARE(datum.toString(), exif[datum.key()].toString());

    GFL_EXIF_ENTRYEX last = {271, 2, 12345, 0, 0, 0, nullptr, nullptr};               // no such block
    GFL_EXIF_ENTRYEX middle = {33434, 999, GFL_EXIF_CAMERA, 0, 0, 0, nullptr, &last}; // no such format, no data
    GFL_EXIF_ENTRYEX first = {271, 2, GFL_EXIF_MAIN, 0, 0, 0, nullptr, &middle};
    QCOMPARE(ExifOfRawList({&first, 0}).begin()->key(), std::string("Exif.Image.Make"));
    QVERIFY(ExifOfRawList({nullptr, 0}).empty());
}

// BigTIFF is written from 4 GiB on; here from one byte on.
void tst_Inside::bigTiff()
{
    Metadata metadata;
    metadata.exif["Exif.Image.Make"] = "Canon";
    metadata.exif["Exif.Image.Software"] = "12345"; // 6 bytes: inside the field here, outside in the classic form
    metadata.exif["Exif.Image.XPComment"] = "1 2 3";
    metadata.exif["Exif.Photo.FNumber"] = Exiv2::URational(28, 10); // 8 bytes
    metadata.exif["Exif.Iop.InteroperabilityIndex"] = "R98";
    metadata.exif["Exif.GPSInfo.GPSLatitude"] = "45/1 30/1 15/2";
    metadata.exif["Exif.Canon.OwnerName"] = "the owner";
    metadata.icc = Bytes(3000, 7);
    metadata.iptc = {0x1C, 2, 25, 0, 3, 'o', 'n', 'e'};
    const BitmapPtr bitmap = RandomBitmap(301, 507, GFL_RGBA, 16);
    for (int compression : {0, 2, 4}) {
        SaveOptions options;
        options.compression = static_cast<std::uint16_t>(compression);
        options.metadata = &metadata;
        options.lzwAllowed = true;
        options.bigTiffFromBytes = 1;
        MemorySink sink;
        const Status status = TiffCodec().Write(*bitmap, options, &sink);
        QVERIFY2(bool(status), status.Why().c_str());

        QByteArray file(int(sink.Size()), '\0');
        QCOMPARE(sink.ReadAt(0, file.data(), sink.Size()), sink.Size());
        QCOMPARE(int(file[2]), 43);
        const BitmapPtr read = LoadFromMemory(file);
        QVERIFY2(read, gflLastErrorText());
        QCOMPARE(Difference(*read, *bitmap), QString());
        const Metadata again = ReadMetadata(Source(file.constData(), sink.Size()));
        for (const Exiv2::Exifdatum &datum : metadata.exif) {
            const auto found = again.exif.findKey(Exiv2::ExifKey(datum.key()));
            QVERIFY2(found != again.exif.end(), datum.key().c_str());
            QCOMPARE(found->toString(), datum.toString());
        }
        QVERIFY(again.icc == metadata.icc && again.iptc == metadata.iptc);
    }
}

void tst_Inside::brokenDisk()
{
    const Folder folder;
    QVERIFY(WriteBytes(folder("a"), QByteArray(1000, 'x')));
    const QString path = QFileInfo(folder("a")).canonicalFilePath();
    Source source;
    QVERIFY(bool(source.Open(path.toStdString())));
    char bytes[100];
    QCOMPARE(source.ReadAt(950, bytes, sizeof bytes), std::size_t(50));
    QVERIFY(bool(source.Check())); // the end is no failure
    QVERIFY(Break(path));
    QCOMPARE(source.ReadAt(0, bytes, sizeof bytes), std::size_t(0));
    QCOMPARE(int(source.Check().Error()), int(GFL_ERROR_FILE_READ));
    QVERIFY(QByteArray::fromStdString(source.Check().Why()).contains(path.toUtf8()));
}

void tst_Inside::firstPage()
{
    const QByteArray field(12, 'f');
    const QByteArray little = QByteArray("II*\0\x0A\0\0\0..\2\0", 12) + field + field;
    const struct {
        QByteArray bytes;
        int pointerAt; // to the second page; 0: there is no map
    } files[] = {{little + QByteArray("\0\1\0\0more", 8), 36},
                 {QByteArray("MM\0*\0\0\0\x08\0\1", 10) + field + QByteArray("\0\0\1\0", 4), 22},
                 {little + QByteArray(4, '\0'), 0},                    // one page
                 {little + QByteArray("\1\0\0", 3), 0},                // cut inside the pointer
                 {QByteArray("II*\0\xFF\xFF\xFF\xFF", 8), 0},          // directory behind the end
                 {QByteArray(little).replace(2, 1, "+") + "next", 0}}; // BigTIFF
    for (const auto &[bytes, pointerAt] : files) {
        const Folder folder;
        QVERIFY(WriteBytes(folder("a"), bytes));
        Source source;
        QVERIFY(bool(source.Open(folder("a").toStdString())));
        FirstPageMap map;
        map.Open(source);
        QCOMPARE(map.Data() != nullptr, pointerAt != 0);
        const QByteArray seen(reinterpret_cast<const char *>(map.Data()), int(map.Size()));
        QVERIFY(!map.Data() || seen == QByteArray(bytes).replace(pointerAt, 4, QByteArray(4, '\0')));
        QCOMPARE(ReadBytes(folder("a")), bytes); // nothing was written
    }
}

QTEST_GUILESS_MAIN(tst_Inside)
#include "Inside_test.moc"
