// Metadata through the layer, with Exiv2 as witness of what went in and came out.
#include "Bitmaps.h"
#include "DngFile.h"

#include <QFile>
#include <QMap>
#include <QTemporaryDir>
#include <QtTest>

#include <exiv2/exiv2.hpp>

namespace {

using Values = QMap<QString, QByteArray>; // by key: type and bytes

/// What of a file's EXIF is to be found in every file made of it.
Values CarriedValues(const QString &path)
{
    Values values;
    QFile file(path);
    const QByteArray content = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    if (content.startsWith("\x89PNG") && content.count("eXIf") != 1) // there may be one at most
        return values;
    const int exifChunk =
        content.startsWith("\x89PNG") ? content.indexOf("eXIf") : -1; // a TIFF, which Exiv2 passes over
    const int begin = exifChunk < 0 ? 0 : exifChunk + 4;
    Exiv2::Image::AutoPtr image = Exiv2::ImageFactory::open(
        reinterpret_cast<const Exiv2::byte *>(content.constData()) + begin, content.size() - begin);
    image->readMetadata();
    for (const Exiv2::Exifdatum &datum : image->exifData()) {
        static const char *const kStructure[] = {
            "ImageWidth",       "ImageLength",       "BitsPerSample", "Compression",     "PhotometricInterpretation",
            "StripOffsets",     "SamplesPerPixel",   "RowsPerStrip",  "StripByteCounts", "PlanarConfiguration",
            "Predictor",        "SampleFormat",      "ExifTag",       "GPSTag",          "InteroperabilityTag",
            "YCbCrPositioning", "InterColorProfile", "IPTCNAA",       "XMLPacket",       "ExtraSamples"};
        const bool isStructure = std::any_of(std::begin(kStructure), std::end(kStructure),
                                             [&](const char *name) { return datum.tagName() == name; });
        const bool isOfSensor = datum.groupName() == "Image"
            && (datum.tag() >= 50706 || datum.tag() == 33421 || datum.tag() == 33422 || datum.tag() == 254);
        const bool isPlace = datum.key() == "Exif.MakerNote.Offset" || datum.key() == "Exif.Photo.MakerNote";
        if (isStructure || isOfSensor || isPlace || datum.groupName() == "Thumbnail")
            continue;
        QByteArray bytes(static_cast<int>(datum.size()), '\0');
        datum.copy(reinterpret_cast<Exiv2::byte *>(bytes.data()), Exiv2::littleEndian);
        values[QString::fromStdString(datum.key())] = QByteArray(datum.typeName()) + ' ' + bytes.toHex();
    }
    return values;
}

QByteArray ValueBytes(const QString &path, const char *key)
{
    Exiv2::Image::AutoPtr image = Exiv2::ImageFactory::open(path.toStdString());
    image->readMetadata();
    const auto found = image->exifData().findKey(Exiv2::ExifKey(key));
    if (found == image->exifData().end())
        return QByteArray();
    QByteArray bytes(static_cast<int>(found->size()), '\0');
    found->copy(reinterpret_cast<Exiv2::byte *>(bytes.data()), image->byteOrder());
    return bytes;
}

Exiv2::ExifData CommonExif(const char *make)
{
    Exiv2::ExifData exif;
    exif["Exif.Image.Make"] = make;
    exif["Exif.Image.Model"] = "Model 5";
    exif["Exif.Image.Orientation"] = uint16_t(6);
    exif["Exif.Image.XResolution"] = Exiv2::URational(300, 1);
    exif["Exif.Image.YResolution"] = Exiv2::URational(300, 1);
    exif["Exif.Image.ResolutionUnit"] = uint16_t(2);
    exif["Exif.Image.YCbCrPositioning"] = uint16_t(1); // isn't carried, so that all else moves
    exif["Exif.Image.Artist"] = "J\xC3\xBCrgen";
    exif["Exif.Photo.ExposureTime"] = Exiv2::URational(10, 2500);
    exif["Exif.Photo.FNumber"] = Exiv2::URational(28, 10);
    exif["Exif.Photo.FocalLength"] = Exiv2::URational(4294967295u, 85899346u); // needs 32 bits
    exif["Exif.Photo.ExposureBiasValue"] = Exiv2::Rational(-1, 3);
    exif["Exif.Photo.DateTimeOriginal"] = "2021:03:04 05:06:07";
    exif["Exif.Photo.UserComment"] = "charset=Ascii FOV: 73.7 x 53.1 ~ 84.0";
    exif["Exif.Photo.LensModel"] = "A lens of 50 mm";
    exif["Exif.Photo.PixelXDimension"] = uint32_t(40);
    exif["Exif.Iop.InteroperabilityIndex"] = "R98";
    exif["Exif.GPSInfo.GPSLatitudeRef"] = "S";
    exif["Exif.GPSInfo.GPSLatitude"] = "45/1 30/1 15/2";
    exif["Exif.GPSInfo.GPSAltitude"] = Exiv2::URational(1234567, 1000);
    return exif;
}

void AddCanonNote(Exiv2::ExifData &exif)
{
    exif["Exif.Canon.OwnerName"] = "The owner of this camera";
    exif["Exif.CanonCs.LensType"] = uint16_t(235);
    exif["Exif.CanonCs.Lens"] = "22 10 1";
    exif["Exif.Canon.SerialNumber"] = uint32_t(123456789);
}

void AddNikonNote(Exiv2::ExifData &exif)
{
    exif["Exif.Nikon3.Version"] = "48 50 49 48";
    exif["Exif.Nikon3.Quality"] = "FINE";
    exif["Exif.Nikon3.Lens"] = "80/10 80/10 35/10 35/10";
    exif["Exif.Nikon3.SerialNumber"] = "NO= 12345678";
}

void AddUnknownNote(Exiv2::ExifData &exif)
{
    QByteArray note("ACME\0\1\2\3", 8);
    for (int i = 0; i < 500; ++i)
        note.append(static_cast<char>(i * i));
    Exiv2::DataValue value(reinterpret_cast<const Exiv2::byte *>(note.constData()), note.size());
    exif.add(Exiv2::ExifKey("Exif.Photo.MakerNote"), &value);
}

/// An RGB profile as ICC.1:2010 wants its header, with one tag of 3,000 bytes.
QByteArray Profile()
{
    QByteArray profile(3144, '\0');
    for (int i = 144; i < profile.size(); ++i)
        profile[i] = static_cast<char>(i * 31 + i / 256);
    profile.replace(0, 4, QByteArray("\0\0\x0C\x48", 4)).replace(8, 4, QByteArray("\2\x10\0\0", 4));
    profile.replace(12, 12, "mntrRGB XYZ ").replace(36, 4, "acsp");
    profile.replace(68, 12, QByteArray("\0\0\xF6\xD6\0\1\0\0\0\0\xD3\x2D", 12)); // D50
    return profile.replace(128, 16, QByteArray("\0\0\0\1cprt\0\0\0\x90\0\0\x0B\xB8", 16));
}

/// Data sets of text, of bytes with zeroes, repeated, empty, and one in the long form.
QByteArray Iptc()
{
    QByteArray iptc;
    const auto add = [&iptc](int record, int set, const QByteArray &data) {
        iptc.append('\x1C').append(static_cast<char>(record)).append(static_cast<char>(set));
        if (data.size() >= 32768)
            iptc.append(QByteArray("\x80\x04\0", 3)).append(static_cast<char>(data.size() >> 16));
        iptc.append(static_cast<char>(data.size() >> 8)).append(static_cast<char>(data.size()));
        iptc.append(data);
    };
    add(1, 90, "\x1B%G");
    add(2, 0, QByteArray("\0\4", 2));
    add(2, 25, "one");
    add(2, 25, "two");
    add(2, 60, "101112"); // shorter than Exiv2 would write a time
    add(2, 120, QByteArray());
    add(2, 202, QByteArray(40000, 'p'));
    return iptc;
}

constexpr char kXmp[] =
    "<?xpacket begin='\xEF\xBB\xBF' id='W5M0MpCehiHzreSzNTczkc9d'?><x:xmpmeta xmlns:x='adobe:ns:meta/'>"
    "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><rdf:Description rdf:about='' "
    "xmlns:dc='http://purl.org/dc/elements/1.1/' dc:format='image/jpeg'/></rdf:RDF></x:xmpmeta>"
    "<?xpacket end='w'?>";

/// Puts APP13 segments with the IPTC resource behind the start of a JPEG. Exiv2 would write its own form of IPTC.
QByteArray WithIptc(QByteArray jpeg, const QByteArray &iptc)
{
    QByteArray resource("8BIM\4\4\0\0", 8);
    for (int shift = 24; shift >= 0; shift -= 8)
        resource.append(static_cast<char>(iptc.size() >> shift));
    resource += iptc + QByteArray(iptc.size() % 2, '\0');
    QByteArray segments;
    for (int at = 0; at < resource.size(); at += 30000) { // resources may go over several segments
        const QByteArray payload = QByteArray("Photoshop 3.0\0", 14) + resource.mid(at, 30000);
        segments.append('\xFF').append('\xED');
        segments.append(static_cast<char>((payload.size() + 2) >> 8)).append(static_cast<char>(payload.size() + 2));
        segments += payload;
    }
    return jpeg.insert(2, segments);
}

/// A raw file with all blocks, and EXIF of Exiv2's if there is any: Exiv2 would write the other blocks in its own form.
void WriteRawSource(const QString &path, const Exiv2::ExifData &exif)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(
        DngFile({40, 30}, {0.1, 0.2, 0.3}, QByteArray(), QSize(), {{34675, Profile()}, {33723, Iptc()}, {700, kXmp}}));
    file.close();
    if (exif.empty())
        return;
    Exiv2::Image::AutoPtr image = Exiv2::ImageFactory::open(path.toStdString());
    image->readMetadata();
    for (const Exiv2::Exifdatum &datum : exif)
        image->exifData()[datum.key()] = datum.value();
    image->writeMetadata();
}

void WriteSource(const QString &path, const Exiv2::ExifData &exif, const QByteArray &profile = Profile())
{
    QByteArray jpeg = SavedBytes(*SmoothBitmap(40, 30, GFL_RGB, 8), SaveParams("jpeg"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(jpeg);
    file.close();
    Exiv2::Image::AutoPtr image = Exiv2::ImageFactory::open(path.toStdString());
    image->readMetadata();
    image->setExifData(exif);
    Exiv2::DataBuf icc(reinterpret_cast<const Exiv2::byte *>(profile.constData()), profile.size());
    image->setIccProfile(icc);
    image->setXmpPacket(kXmp);
    image->writeXmpFromPacket(true);
    image->writeMetadata();
    QVERIFY(file.open(QIODevice::ReadOnly));
    jpeg = file.readAll();
    file.close();
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(WithIptc(jpeg, Iptc()));
}

BitmapPtr LoadMetadata(const QString &path)
{
    GFL_BITMAP *bitmap = nullptr;
    if (gflLoadMetadataUTF8(path.toUtf8().constData(), &bitmap) != GFL_NO_ERROR)
        qWarning("%s", gflLastErrorText());
    return BitmapPtr(bitmap);
}

/// As the image kernel carries metadata over: block by block.
void CarryOver(const GFL_BITMAP *source, GFL_BITMAP *target)
{
    if (gflBitmapHasICCProfile(source))
        QCOMPARE(gflBitmapCopyICCProfile(source, target), int(GFL_NO_ERROR));
    if (gflBitmapHasIPTC(source)) {
        GFL_IPTC_DATA *iptc = gflBitmapGetIPTC(source);
        QCOMPARE(gflBitmapSetIPTC(target, iptc), int(GFL_NO_ERROR));
        gflFreeIPTC(iptc);
    }
    if (gflBitmapHasEXIF(source)) {
        GFL_EXIF_DATAEX *exif = gflBitmapGetEXIF2(source);
        QCOMPARE(gflBitmapSetEXIF2(target, exif), int(GFL_NO_ERROR));
        gflFreeEXIF2(exif);
    }
}

QByteArray IccOf(const QString &path)
{
    GFL_ICCPROFILE_DATA *data = gflLoadICCProfileUTF8(path.toUtf8().constData());
    QByteArray bytes = data ? QByteArray(reinterpret_cast<char *>(data->Data), int(data->Length)) : QByteArray();
    gflFreeICCProfile(data);
    return bytes;
}

QByteArray XmpOf(const QString &path)
{
    GFL_XMP_DATA *data = gflLoadXMPUTF8(path.toUtf8().constData());
    QByteArray bytes = data ? QByteArray(reinterpret_cast<char *>(data->Data), int(data->Length)) : QByteArray();
    gflFreeXMP(data);
    return bytes;
}

} // namespace

class tst_Metadata : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void exifIsCarried_data();
    void exifIsCarried();
    void noteKeepsItsBytes_data();
    void noteKeepsItsBytes();
    void blocksAreCarried_data();
    void blocksAreCarried();
    void iptcEntries();
    void thumbnailsAreLeftOut();
    void profileOnlyWhenAsked();
    void profileOfTheRightKind_data();
    void profileOfTheRightKind();
    void xmp();
    void resolution();
    void filesWithout();
    void damagedMetadata();
    void metadataWithoutPixels();
    void exifTooLargeForJpeg();
};

void tst_Metadata::initTestCase()
{
    gflEnableLZW(1);
    Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
}

void tst_Metadata::exifIsCarried_data()
{
    QTest::addColumn<int>("note"); // 0 none, 1 Canon, 2 Nikon, 3 unknown
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<int>("compression");
    for (int note = 0; note < 4; ++note) {
        QTest::addRow("note %d to TIFF", note) << note << QByteArray("tiff") << 4;
        QTest::addRow("note %d to TIFF without compression", note) << note << QByteArray("tiff") << 0;
        QTest::addRow("note %d to JPEG", note) << note << QByteArray("jpeg") << -1;
        QTest::addRow("note %d to PNG", note) << note << QByteArray("png") << -1;
        QTest::addRow("note %d to PSD", note) << note << QByteArray("psd") << -1;
        QTest::addRow("note %d of a raw file to TIFF", note) << note << QByteArray("tiff") << 4;
    }
}

void tst_Metadata::exifIsCarried()
{
    QFETCH(int, note);
    QFETCH(QByteArray, format);
    QFETCH(int, compression);
    QTemporaryDir folder;
    const bool isRaw = QByteArray(QTest::currentDataTag()).contains("raw");
    const QString source = folder.filePath(isRaw ? QStringLiteral("source.dng") : QStringLiteral("source.jpg"));
    Exiv2::ExifData exif = CommonExif(note == 1 ? "Canon" : note == 2 ? "NIKON CORPORATION" : "Acme");
    void (*const adders[])(Exiv2::ExifData &) = {[](Exiv2::ExifData &) {}, AddCanonNote, AddNikonNote, AddUnknownNote};
    adders[note](exif);
    isRaw ? WriteRawSource(source, exif) : WriteSource(source, exif);
    const Values before = CarriedValues(source);
    QVERIFY(before.contains(QStringLiteral("Exif.GPSInfo.GPSLatitude")));
    QVERIFY(note != 1 || before.contains(QStringLiteral("Exif.CanonCs.LensType")));
    QVERIFY(note != 2 || before.contains(QStringLiteral("Exif.Nikon3.Lens")));

    // To a file, and from that file to another one.
    QString from = source;
    for (const QString &name : {QStringLiteral("first"), QStringLiteral("second")}) {
        const QString to = folder.filePath(name);
        const BitmapPtr bitmap = SmoothBitmap(40, 30, GFL_RGBA, 16);
        CarryOver(LoadMetadata(from).get(), bitmap.get());
        const GFL_SAVE_PARAMS params = SaveParams(format.constData(), compression);
        QVERIFY2(gflSaveBitmapUTF8(to.toUtf8().constData(), bitmap.get(), &params) == GFL_NO_ERROR, gflLastErrorText());
        const Values after = CarriedValues(to);
        for (auto value = before.begin(); value != before.end(); ++value)
            QVERIFY2(after.value(value.key()) == value.value(),
                     qPrintable(value.key() + QLatin1Char(' ') + QString::fromLatin1(after.value(value.key()))));
        QCOMPARE(after.size(), before.size());
        int error = 0;
        const BitmapPtr read = Load(to, &error);
        QVERIFY2(error == GFL_NO_ERROR, gflLastErrorText());
        if (format != "jpeg")
            QCOMPARE(Difference(*read, *bitmap), QString());
        from = to;
    }
}

void tst_Metadata::noteKeepsItsBytes_data()
{
    QTest::addColumn<bool>("nikon");
    QTest::newRow("unknown maker") << false;
    QTest::newRow("Nikon, counts from its own begin") << true;
}

void tst_Metadata::noteKeepsItsBytes()
{
    QFETCH(bool, nikon);
    QTemporaryDir folder;
    const QString source = folder.filePath(QStringLiteral("a.jpg")), target = folder.filePath(QStringLiteral("a.tif"));
    Exiv2::ExifData exif = CommonExif(nikon ? "NIKON CORPORATION" : "Acme");
    nikon ? AddNikonNote(exif) : AddUnknownNote(exif);
    WriteSource(source, exif);
    const BitmapPtr bitmap = SmoothBitmap(40, 30, GFL_RGB, 8);
    CarryOver(LoadMetadata(source).get(), bitmap.get());
    const GFL_SAVE_PARAMS params = SaveParams("tiff", 4);
    QCOMPARE(gflSaveBitmapUTF8(target.toUtf8().constData(), bitmap.get(), &params), int(GFL_NO_ERROR));
    const QByteArray before = ValueBytes(source, "Exif.Photo.MakerNote");
    QVERIFY(before.size() > 50);
    QCOMPARE(ValueBytes(target, "Exif.Photo.MakerNote"), before);
}

void tst_Metadata::blocksAreCarried_data()
{
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<QString>("sourceName");
    QTest::newRow("TIFF") << QByteArray("tiff") << QStringLiteral("a.jpg");
    QTest::newRow("JPEG") << QByteArray("jpeg") << QStringLiteral("a.jpg");
    QTest::newRow("PNG") << QByteArray("png") << QStringLiteral("a.jpg");
    QTest::newRow("PSD") << QByteArray("psd") << QStringLiteral("a.jpg");
    QTest::newRow("raw to TIFF") << QByteArray("tiff") << QStringLiteral("a.dng");
}

void tst_Metadata::blocksAreCarried()
{
    QFETCH(QByteArray, format);
    QTemporaryDir folder;
    QFETCH(QString, sourceName);
    const QString source = folder.filePath(sourceName), target = folder.filePath(QStringLiteral("a.out"));
    sourceName.endsWith(QLatin1String("dng")) ? WriteRawSource(source, {}) : WriteSource(source, CommonExif("Acme"));
    QCOMPARE(IccOf(source), Profile());
    const BitmapPtr bitmap = SmoothBitmap(40, 30, GFL_RGB, 8);
    CarryOver(LoadMetadata(source).get(), bitmap.get());
    const GFL_SAVE_PARAMS params = SaveParams(format.constData());
    QCOMPARE(gflSaveBitmapUTF8(target.toUtf8().constData(), bitmap.get(), &params), int(GFL_NO_ERROR));
    QCOMPARE(IccOf(target), Profile());
    QVERIFY(gflHasIPTCUTF8(target.toUtf8().constData()));
    QVERIFY(XmpOf(target).isEmpty()); // not carried by CarryOver

    // The bytes of IPTC, by other means than the layer's.
    QFile file(target);
    QVERIFY(file.open(QIODevice::ReadOnly));
    QByteArray bytes = file.readAll();
    if (format == "jpeg") // take the heads of further segments out
        for (int at = bytes.indexOf("Photoshop 3.0", 100); at > 0; at = bytes.indexOf("Photoshop 3.0", at))
            bytes.remove(at - 4, 18);
    if (format == "png") { // hexadecimals, behind a key and the method of compression; qUncompress wants a length
        const int text = bytes.indexOf("Raw profile type iptc") + 23;
        bytes = QByteArray::fromHex(qUncompress(QByteArray("\0\2\0\0", 4) + bytes.mid(text)).mid(14));
    }
    QVERIFY(bytes.contains(Iptc()));
}

void tst_Metadata::iptcEntries()
{
    QTemporaryDir folder;
    const QString source = folder.filePath(QStringLiteral("a.jpg"));
    WriteSource(source, CommonExif("Acme"));
    GFL_IPTC_DATA *iptc = gflLoadIPTCUTF8(source.toUtf8().constData());
    QVERIFY(iptc);
    QCOMPARE(iptc->NumberOfItems, 7u);
    QCOMPARE(iptc->ItemsList[1].Id, GFL_IPTC_HEXADECIMAL | 0x200u);
    QCOMPARE(QByteArray(iptc->ItemsList[1].Value), QByteArray("0004"));
    QCOMPARE(iptc->ItemsList[2].Id, 0x219u);
    QCOMPARE(QByteArray(iptc->ItemsList[2].Name), QByteArray("Keywords"));
    QCOMPARE(QByteArray(iptc->ItemsList[2].Value), QByteArray("one"));
    QCOMPARE(QByteArray(iptc->ItemsList[3].Value), QByteArray("two"));
    QCOMPARE(QByteArray(iptc->ItemsList[5].Value), QByteArray());
    gflFreeIPTC(iptc);
}

void tst_Metadata::thumbnailsAreLeftOut()
{
    QTemporaryDir folder;
    const QString source = folder.filePath(QStringLiteral("a.jpg"));
    Exiv2::ExifData exif = CommonExif("Acme");
    Exiv2::ExifThumb thumb(exif);
    const QByteArray small = SavedBytes(*SmoothBitmap(16, 12, GFL_RGB, 8), SaveParams("jpeg"));
    thumb.setJpegThumbnail(reinterpret_cast<const Exiv2::byte *>(small.constData()), small.size());
    WriteSource(source, exif);
    for (const char *format : {"tiff", "jpeg"}) {
        const BitmapPtr bitmap = SmoothBitmap(40, 30, GFL_RGB, 8);
        CarryOver(LoadMetadata(source).get(), bitmap.get());
        const QString target = folder.filePath(QString::fromLatin1(format));
        const GFL_SAVE_PARAMS params = SaveParams(format);
        QCOMPARE(gflSaveBitmapUTF8(target.toUtf8().constData(), bitmap.get(), &params), int(GFL_NO_ERROR));
        QVERIFY(!ValueBytes(source, "Exif.Thumbnail.JPEGInterchangeFormat").isEmpty());
        QVERIFY(ValueBytes(target, "Exif.Thumbnail.JPEGInterchangeFormat").isEmpty());
        QCOMPARE(ValueBytes(target, "Exif.Image.Orientation").at(0), '\x06');
    }
}

void tst_Metadata::profileOnlyWhenAsked()
{
    QTemporaryDir folder;
    const QString source = folder.filePath(QStringLiteral("a.jpg")), target = folder.filePath(QStringLiteral("b.tif"));
    WriteSource(source, CommonExif("Acme"));
    const BitmapPtr bitmap = SmoothBitmap(40, 30, GFL_RGB, 8);
    CarryOver(LoadMetadata(source).get(), bitmap.get());
    GFL_SAVE_PARAMS params = SaveParams("tiff");
    params.Flags = 0;
    QCOMPARE(gflSaveBitmapUTF8(target.toUtf8().constData(), bitmap.get(), &params), int(GFL_NO_ERROR));
    QVERIFY(!gflHasICCProfileUTF8(target.toUtf8().constData()));
    QCOMPARE(gflBitmapCopyICCProfile(target.isEmpty() ? nullptr : SmoothBitmap(1, 1, GFL_RGB, 8).get(), bitmap.get()),
             int(GFL_NO_ERROR));
    QVERIFY(!gflBitmapHasICCProfile(bitmap.get())); // replaced by none
}

void tst_Metadata::profileOfTheRightKind_data()
{
    QTest::addColumn<QByteArray>("space"); // bytes 16 to 19 of the profile
    QTest::addColumn<int>("type");
    QTest::addColumn<bool>("kept");
    QTest::newRow("RGB for RGBA") << QByteArray("RGB ") << int(GFL_RGBA) << true;
    QTest::newRow("inks for RGBA") << QByteArray("CMYK") << int(GFL_RGBA) << false;
    QTest::newRow("Lab for RGB") << QByteArray("Lab ") << int(GFL_RGB) << false;
    QTest::newRow("grey for RGB") << QByteArray("GRAY") << int(GFL_RGB) << false;
    QTest::newRow("grey for grey") << QByteArray("GRAY") << int(GFL_GREY) << true;
    QTest::newRow("RGB for grey") << QByteArray("RGB ") << int(GFL_GREY) << false;
}

void tst_Metadata::profileOfTheRightKind()
{
    QFETCH(QByteArray, space);
    QFETCH(int, type);
    QTemporaryDir folder;
    const QString source = folder.filePath(QStringLiteral("a.jpg")), target = folder.filePath(QStringLiteral("b.tif"));
    WriteSource(source, CommonExif("Acme"), Profile().replace(16, 4, space));
    const BitmapPtr bitmap = SmoothBitmap(40, 30, type, 8);
    CarryOver(LoadMetadata(source).get(), bitmap.get());
    const GFL_SAVE_PARAMS params = SaveParams("tiff");
    QCOMPARE(gflSaveBitmapUTF8(target.toUtf8().constData(), bitmap.get(), &params), int(GFL_NO_ERROR));
    QTEST(gflHasICCProfileUTF8(target.toUtf8().constData()), "kept");
}

void tst_Metadata::xmp()
{
    QTemporaryDir folder;
    const QString source = folder.filePath(QStringLiteral("a.jpg"));
    WriteSource(source, CommonExif("Acme"));
    QVERIFY(XmpOf(source).contains("dc:format=\"image/jpeg\"") || XmpOf(source).contains("dc:format='image/jpeg'"));
    // A picture that was loaded with its metadata takes it along.
    int error = 0;
    const BitmapPtr bitmap = Load(source, &error, LoadParams(GFL_LOAD_METADATA));
    QVERIFY(bitmap && gflBitmapHasXMP(bitmap.get()) && gflBitmapHasEXIF(bitmap.get()));
    for (const char *format : {"tiff", "jpeg", "png", "psd"}) {
        const QString target = folder.filePath(QString::fromLatin1(format));
        const GFL_SAVE_PARAMS params = SaveParams(format);
        QCOMPARE(gflSaveBitmapUTF8(target.toUtf8().constData(), bitmap.get(), &params), int(GFL_NO_ERROR));
        QCOMPARE(XmpOf(target), XmpOf(source));
    }
}

void tst_Metadata::resolution()
{
    // The bitmap's own resolution wins over that of the EXIF it was given.
    QTemporaryDir folder;
    const QString source = folder.filePath(QStringLiteral("a.jpg")), target = folder.filePath(QStringLiteral("b.tif"));
    WriteSource(source, CommonExif("Acme"));
    for (int dpi : {0, 72}) {
        const BitmapPtr bitmap = SmoothBitmap(40, 30, GFL_RGB, 8);
        bitmap->Xdpi = bitmap->Ydpi = static_cast<std::uint16_t>(dpi);
        CarryOver(LoadMetadata(source).get(), bitmap.get());
        const GFL_SAVE_PARAMS params = SaveParams("tiff");
        QCOMPARE(gflSaveBitmapUTF8(target.toUtf8().constData(), bitmap.get(), &params), int(GFL_NO_ERROR));
        GFL_FILE_INFORMATION info;
        QCOMPARE(gflGetFileInformationExUTF8(target.toUtf8().constData(), -1, &info, 4), int(GFL_NO_ERROR));
        QCOMPARE(int(info.Xdpi), dpi == 0 ? 300 : dpi);
        Exiv2::Image::AutoPtr image = Exiv2::ImageFactory::open(target.toStdString());
        image->readMetadata();
        QCOMPARE(std::count_if(image->exifData().begin(), image->exifData().end(),
                               [](const Exiv2::Exifdatum &datum) { return datum.tagName() == "XResolution"; }),
                 std::ptrdiff_t(1));
    }
}

void tst_Metadata::filesWithout()
{
    QTemporaryDir folder;
    for (const char *format : {"tiff", "jpeg", "png", "exr", "hdri", "psd"}) {
        const QByteArray path = folder.filePath(QString::fromLatin1(format)).toUtf8();
        const BitmapPtr bitmap = SmoothBitmap(40, 30, GFL_RGB, 8);
        const GFL_SAVE_PARAMS params = SaveParams(format);
        QCOMPARE(gflSaveBitmapUTF8(path.constData(), bitmap.get(), &params), int(GFL_NO_ERROR));
        QVERIFY(!gflHasEXIFUTF8(path.constData()) && !gflHasIPTCUTF8(path.constData()));
        QVERIFY(!gflHasICCProfileUTF8(path.constData()) && !gflHasXMPUTF8(path.constData()));
        QVERIFY(!gflLoadEXIFUTF8(path.constData(), 1) && !gflLoadEXIF2UTF8(path.constData(), 1));
    }
}

void tst_Metadata::damagedMetadata()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("a.jpg"));
    WriteSource(path, CommonExif("Canon"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray good = file.readAll();
    file.close();
    const int exif = good.indexOf(QByteArray("Exif\0\0", 6)) + 6;
    for (int at = exif; at < exif + 300; ++at) { // pictures with damaged metadata are pictures
        QByteArray bad = good;
        bad[at] = static_cast<char>(~bad[at]);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(bad);
        file.close();
        int error = 0;
        const BitmapPtr bitmap = Load(path, &error, LoadParams(GFL_LOAD_METADATA));
        QVERIFY2(bitmap, gflLastErrorText());
        gflFreeEXIF(gflBitmapGetEXIF(bitmap.get(), 1));
        QVERIFY2(!SavedBytes(*bitmap, SaveParams("tiff")).isEmpty(), gflLastErrorText());
    }
}

void tst_Metadata::metadataWithoutPixels()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("a.jpg"));
    WriteSource(path, CommonExif("Canon"));
    const BitmapPtr bitmap = LoadMetadata(path);
    QVERIFY(bitmap && !bitmap->Data);
    QCOMPARE(QSize(bitmap->Width, bitmap->Height), QSize(40, 30));
    QVERIFY(gflBitmapHasEXIF(bitmap.get()) && gflBitmapHasIPTC(bitmap.get()) && gflBitmapHasICCProfile(bitmap.get()));
    QVERIFY(SavedBytes(*bitmap, SaveParams("tiff")).isEmpty());
}

void tst_Metadata::exifTooLargeForJpeg()
{
    QByteArray note(70000, 'n'); // no segment of a JPEG holds that
    QByteArray maker("Acme", 5);
    GFL_EXIF_ENTRYEX second = {37500,  7, GFL_EXIF_CAMERA, 0, 0, 70000, reinterpret_cast<std::uint8_t *>(note.data()),
                               nullptr};
    GFL_EXIF_ENTRYEX first = {271, 2, GFL_EXIF_MAIN, 0, 0, 5, reinterpret_cast<std::uint8_t *>(maker.data()), &second};
    const GFL_EXIF_DATAEX exif = {&first, 0};
    QTemporaryDir folder;
    for (const char *format : {"tiff", "jpeg"}) {
        const BitmapPtr bitmap = SmoothBitmap(40, 30, GFL_RGB, 8);
        QCOMPARE(gflBitmapSetEXIF2(bitmap.get(), &exif), int(GFL_NO_ERROR));
        const QString path = folder.filePath(QString::fromLatin1(format));
        const GFL_SAVE_PARAMS params = SaveParams(format);
        QVERIFY2(gflSaveBitmapUTF8(path.toUtf8().constData(), bitmap.get(), &params) == GFL_NO_ERROR,
                 gflLastErrorText());
        QCOMPARE(ValueBytes(path, "Exif.Image.Make"), maker);
        QCOMPARE(ValueBytes(path, "Exif.Photo.MakerNote"), format[0] == 't' ? note : QByteArray());
    }
}

QTEST_GUILESS_MAIN(tst_Metadata)
#include "Metadata_test.moc"
