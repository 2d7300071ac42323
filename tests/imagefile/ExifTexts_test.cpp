// EXIF values as callers read them, lens names out of maker notes, and EXIF in BigTIFF. From inside the layer.
#include "Bitmaps.h"
#include "codec.h"
#include "exif_lists.h"
#include "metadata.h"

#include <QtTest>

using namespace imagefile;

class tst_ExifTexts : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { StartExiv2(); }
    void texts_data();
    void texts();
    void lensId_data();
    void lensId();
    void listsAreInOrder();
    void rawListIsComplete();
    void brokenLists();
    void bigTiff_data();
    void bigTiff();
};

void tst_ExifTexts::texts_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::addColumn<int>("type");         // TIFF field type
    QTest::addColumn<QByteArray>("value"); // in Exiv2's words
    QTest::addColumn<QByteArray>("text");
    const auto row = [](const char *name, const char *key, int type, const char *value, const char *text) {
        QTest::newRow(name) << QByteArray(key) << type << QByteArray(value) << QByteArray(text);
    };
    row("maker", "Exif.Image.Make", 2, "NIKON CORPORATION", "NIKON CORPORATION");
    row("padded model", "Exif.Image.Model", 2, "E-M1      ", "E-M1");
    row("orientation 1", "Exif.Image.Orientation", 3, "1", "Top-left (1)");
    row("orientation 8", "Exif.Image.Orientation", 3, "8", "Left-bottom (8)");
    row("orientation 9", "Exif.Image.Orientation", 3, "9", "9");
    row("exposure time", "Exif.Photo.ExposureTime", 5, "10/2500", "1/250");
    row("exposure of a third", "Exif.Photo.ExposureTime", 5, "3/10", "3/10");
    row("long exposure", "Exif.Photo.ExposureTime", 5, "25/10", "2.5");
    row("exposure of a second", "Exif.Photo.ExposureTime", 5, "1/1", "1");
    row("no exposure", "Exif.Photo.ExposureTime", 5, "0/0", "0");
    row("f-number", "Exif.Photo.FNumber", 5, "28/10", "2.8");
    row("focal length", "Exif.Photo.FocalLength", 5, "500/10", "50");
    row("large focal length", "Exif.Photo.FocalLength", 5, "4294967295/85899345", "50.0000005");
    row("35 mm focal length", "Exif.Photo.FocalLengthIn35mmFilm", 3, "75", "75");
    row("shutter speed", "Exif.Photo.ShutterSpeedValue", 10, "8/1", "8");
    row("bias", "Exif.Photo.ExposureBiasValue", 10, "-2/6", "-1/3");
    row("bias above one", "Exif.Photo.ExposureBiasValue", 10, "-4/3", "-1.33333333");
    row("smallest bias", "Exif.Photo.ExposureBiasValue", 10, "-2147483648/-1", "2.14748365e+09");
    row("ISO", "Exif.Photo.ISOSpeedRatings", 3, "800", "800");
    row("plane resolution", "Exif.Photo.FocalPlaneXResolution", 5, "3888000/877", "4433.29532");
    row("plane unit inch", "Exif.Photo.FocalPlaneResolutionUnit", 3, "2", "Inch");
    row("plane unit centimetre", "Exif.Photo.FocalPlaneResolutionUnit", 3, "3", "cm");
    row("plane unit micrometre", "Exif.Photo.FocalPlaneResolutionUnit", 3, "5", "um");
    row("date", "Exif.Photo.DateTimeOriginal", 2, "2021:03:04 05:06:07", "2021:03:04 05:06:07");
    row("version", "Exif.Photo.ExifVersion", 7, "48 50 51 49", "0231");
    row("comment", "Exif.Photo.UserComment", 7, "charset=Ascii FOV: 73.7 x 53.1 ~ 84.0", "FOV: 73.7 x 53.1 ~ 84.0");
    row("latitude reference", "Exif.GPSInfo.GPSLatitudeRef", 2, "S", "South");
    row("latitude", "Exif.GPSInfo.GPSLatitude", 5, "45/1 30/1 15/2", "45° 30' 7.5\"");
    row("latitude in minutes", "Exif.GPSInfo.GPSLatitude", 5, "45/1 303/10 0/1", "45° 30.3' 0\"");
    row("latitude in degrees", "Exif.GPSInfo.GPSLatitude", 5, "91/2 0/1 0/1", "45° 30' 0\"");
    row("no latitude", "Exif.GPSInfo.GPSLatitude", 5, "45/1", "45");
    row("direction", "Exif.GPSInfo.GPSImgDirection", 5, "12345/100", "123.45");
    row("direction reference", "Exif.GPSInfo.GPSImgDirectionRef", 2, "M", "Magnetic");
    row("orientation as fraction", "Exif.Image.Orientation", 10, "-2147483648/-1", "2147483648");
}

void tst_ExifTexts::texts()
{
    QFETCH(QByteArray, key);
    QFETCH(int, type);
    QFETCH(QByteArray, value);
    QFETCH(QByteArray, text);
    const Exiv2::ExifKey exifKey(key.toStdString());
    const Exiv2::Value::AutoPtr typed =
        exifKey.tag() == 37510 ? Exiv2::Value::create(Exiv2::comment) : Exiv2::Value::create(Exiv2::TypeId(type));
    QCOMPARE(typed->read(value.toStdString()), 0);
    QCOMPARE(QByteArray::fromStdString(ExifText(Exiv2::Exifdatum(exifKey, typed.get()))), text);

    // And again once it has been through the raw list.
    Exiv2::ExifData exif;
    exif.add(exifKey, typed.get());
    GFL_EXIF_DATAEX *raw = ExifRawList(exif);
    QVERIFY(raw);
    const Exiv2::ExifData again = ExifOfRawList(*raw);
    gflFreeEXIF2(raw);
    QCOMPARE(again.count(), 1L);
    QCOMPARE(QByteArray::fromStdString(ExifText(*again.begin())), text);
}

void tst_ExifTexts::lensId_data()
{
    using Values = QVector<QPair<QByteArray, int>>;
    QTest::addColumn<Values>("values");
    QTest::addColumn<QByteArray>("id");
    const Values nikon = {{"LensIDNumber", 121},
                          {"MinFocalLength", 17},
                          {"MaxFocalLength", 17},
                          {"MaxApertureAtMinFocal", 44},
                          {"MaxApertureAtMaxFocal", 44}};
    for (const char *group : {"NikonLd1", "NikonLd2", "NikonLd3"}) {
        Values values;
        for (const auto &[tag, raw] : nikon)
            values.append({QByteArray("Exif.") + group + '.' + tag, raw});
        QTest::newRow(group) << values << QByteArray("8 8 121 3.6 3.6");
    }
    QTest::newRow("incomplete") << Values{{"Exif.NikonLd1.LensIDNumber", 121}} << QByteArray();
    QTest::newRow("none") << Values() << QByteArray();
}

void tst_ExifTexts::lensId()
{
    using Values = QVector<QPair<QByteArray, int>>;
    QFETCH(Values, values);
    QFETCH(QByteArray, id);
    Exiv2::ExifData exif;
    for (const auto &[key, raw] : values)
        exif[key.toStdString()] = uint16_t(raw);
    QCOMPARE(QByteArray::fromStdString(LensId(exif)), id);

    Exiv2::ExifData canon;
    canon["Exif.CanonCs.Lens"] = "44 20 2"; // longest, shortest, units a millimetre
    QCOMPARE(LensId(canon), std::string());
    canon["Exif.CanonCs.LensType"] = uint16_t(235);
    QCOMPARE(LensId(canon), std::string("10 22 235"));
    canon["Exif.CanonCs.LensType"] = uint16_t(65535); // no lens
    QCOMPARE(LensId(canon), std::string());
}

void tst_ExifTexts::listsAreInOrder()
{
    Exiv2::ExifData exif;
    exif["Exif.GPSInfo.GPSAltitude"] = Exiv2::URational(5, 1);
    exif["Exif.Photo.FNumber"] = Exiv2::URational(28, 10);
    exif["Exif.Image.Model"] = "b";
    exif["Exif.Image.Make"] = "a";
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
}

void tst_ExifTexts::rawListIsComplete()
{
    Exiv2::ExifData exif;
    exif["Exif.Image.Make"] = "Canon";
    exif["Exif.Image.ImageWidth"] = uint32_t(100); // not carried
    exif["Exif.Photo.FNumber"] = Exiv2::URational(28, 10);
    exif["Exif.CanonCs.Lens"] = "22 10 1";
    exif["Exif.Canon.OwnerName"] = "";
    GFL_EXIF_DATAEX *raw = ExifRawList(exif);
    QCOMPARE(raw->Root->Tag, quint16(271));
    QCOMPARE(raw->Root->Block, quint32(GFL_EXIF_MAIN));
    QCOMPARE(QByteArray(reinterpret_cast<char *>(raw->Root->Data), int(raw->Root->Length)), QByteArray("Canon", 6));
    const GFL_EXIF_ENTRYEX *second = raw->Root->Next;
    QCOMPARE(second->Format, quint16(5));
    QCOMPARE(QByteArray(reinterpret_cast<char *>(second->Data), int(second->Length)),
             QByteArray("\x1C\0\0\0\x0A\0\0\0", 8));
    const Exiv2::ExifData again = ExifOfRawList(*raw);
    gflFreeEXIF2(raw);
    QCOMPARE(again.count(), 4L);
    for (const char *key : {"Exif.Image.Make", "Exif.Photo.FNumber", "Exif.CanonCs.Lens", "Exif.Canon.OwnerName"}) {
        const auto found = again.findKey(Exiv2::ExifKey(key));
        QVERIFY2(found != again.end(), key);
        QCOMPARE(found->toString(), exif[key].toString());
    }
}

void tst_ExifTexts::brokenLists()
{
    GFL_EXIF_ENTRYEX last = {271, 2, 12345, 0, 0, 0, nullptr, nullptr};               // no such block
    GFL_EXIF_ENTRYEX middle = {33434, 999, GFL_EXIF_CAMERA, 0, 0, 0, nullptr, &last}; // no such format, no data
    GFL_EXIF_ENTRYEX first = {271, 2, GFL_EXIF_MAIN, 0, 0, 0, nullptr, &middle};
    const GFL_EXIF_DATAEX list = {&first, 0};
    const Exiv2::ExifData exif = ExifOfRawList(list);
    QVERIFY(exif.findKey(Exiv2::ExifKey("Exif.Image.Make")) != exif.end());
    const GFL_EXIF_DATAEX empty = {nullptr, 0};
    QVERIFY(ExifOfRawList(empty).empty());
}

void tst_ExifTexts::bigTiff_data()
{
    QTest::addColumn<int>("compression");
    for (int compression : {0, 2, 4})
        QTest::addRow("compression %d", compression) << compression;
}

// BigTIFF is written from 4 GiB on; here from one byte on.
void tst_ExifTexts::bigTiff()
{
    QFETCH(int, compression);
    Metadata metadata;
    metadata.exif["Exif.Image.Make"] = "Canon";
    metadata.exif["Exif.Image.Software"] = "12345"; // 6 bytes: inside the field here, outside in the classic form
    metadata.exif["Exif.Image.XPComment"] = "1 2 3";
    metadata.exif["Exif.Photo.FNumber"] = Exiv2::URational(28, 10); // 8 bytes
    metadata.exif["Exif.Photo.LensModel"] = "a lens with a long name";
    metadata.exif["Exif.Iop.InteroperabilityIndex"] = "R98";
    metadata.exif["Exif.GPSInfo.GPSLatitude"] = "45/1 30/1 15/2";
    metadata.exif["Exif.CanonCs.Lens"] = "22 10 1";
    metadata.exif["Exif.Canon.OwnerName"] = "the owner";
    metadata.icc = Bytes(3000, 7);
    metadata.iptc = {0x1C, 2, 25, 0, 3, 'o', 'n', 'e'};
    SaveOptions options;
    options.compression = static_cast<std::uint16_t>(compression);
    options.metadata = &metadata;
    options.lzwAllowed = true;
    options.bigTiffFromBytes = 1;
    const BitmapPtr bitmap = RandomBitmap(301, 507, GFL_RGBA, 16);
    MemorySink sink;
    const Status status = TiffCodec().Write(*bitmap, options, &sink);
    QVERIFY2(bool(status), status.Why().c_str());

    std::vector<std::uint8_t> file(sink.Size());
    QCOMPARE(sink.ReadAt(0, file.data(), file.size()), file.size());
    QCOMPARE(int(file[2]), 43);
    int error = 0;
    const BitmapPtr read = LoadFromMemory(QByteArray(reinterpret_cast<char *>(file.data()), int(file.size())), &error);
    QVERIFY2(error == GFL_NO_ERROR, gflLastErrorText());
    QCOMPARE(Difference(*read, *bitmap), QString());

    const Metadata again = ReadMetadata(Source(file.data(), file.size()));
    for (const Exiv2::Exifdatum &datum : metadata.exif) {
        const auto found = again.exif.findKey(Exiv2::ExifKey(datum.key()));
        QVERIFY2(found != again.exif.end(), datum.key().c_str());
        QCOMPARE(found->toString(), datum.toString());
    }
    QVERIFY(again.icc == metadata.icc && again.iptc == metadata.iptc);
}

QTEST_GUILESS_MAIN(tst_ExifTexts)
#include "ExifTexts_test.moc"
