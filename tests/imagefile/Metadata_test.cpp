// Tests of metadata, with Exiv2 as the reference for input and output.
#include "Bitmaps.h"
#include "Blocks.h"
#include "Case.h"
#include "DngFile.h"
#include "Files.h"
#include "MetadataFiles.h"
#include "NoteFile.h"
#include "Table.h"

#include <QMap>
#include <QScopeGuard>
#include <QtTest>

#include <exiv2/exiv2.hpp>
#include <locale>
#include <tiffio.h>

namespace {

using Values = QMap<QString, QByteArray>; // by key: type and bytes

Exiv2::ExifData ExifOf(const QString &path)
{
    const QByteArray file = ReadFile(path);
    if (file.startsWith("\x89PNG") && file.count("eXIf") != 1) // at most one is allowed
        return {};
    // Exiv2 ignores this chunk, whose content is a TIFF
    return OpenImage(file.startsWith("\x89PNG") ? file.mid(file.indexOf("eXIf") + 4) : file)->exifData();
}

QByteArray BytesOf(const Exiv2::Exifdatum &datum)
{
    QByteArray bytes(static_cast<int>(datum.size()), '\0');
    datum.copy(reinterpret_cast<Exiv2::byte *>(bytes.data()), Exiv2::littleEndian);
    return bytes;
}

QByteArray ValueBytes(const QString &path, const char *key)
{
    const Exiv2::ExifData exif = ExifOf(path);
    const auto found = exif.findKey(Exiv2::ExifKey(key));
    return found == exif.end() ? QByteArray() : BytesOf(*found);
}

/// Returns the EXIF values of a file that every copy must contain.
Values CarriedValues(const QString &path)
{
    Values values;
    for (const Exiv2::Exifdatum &datum : ExifOf(path)) {
        const bool isStructure =
            QByteArray(" ImageWidth ImageLength BitsPerSample Compression PhotometricInterpretation StripOffsets "
                       "SamplesPerPixel "
                       "RowsPerStrip StripByteCounts PlanarConfiguration Predictor SampleFormat ExifTag GPSTag "
                       "InteroperabilityTag YCbCrPositioning InterColorProfile IPTCNAA XMLPacket ExtraSamples ")
                .contains((' ' + datum.tagName() + ' ').c_str());
        const bool isSensorData = datum.groupName() == "Image"
            && (datum.tag() >= 50706 || datum.tag() == 33421 || datum.tag() == 33422 || datum.tag() == 254);
        const bool isMakerNote = datum.groupName() == "MakerNote" || datum.key() == "Exif.Photo.MakerNote";
        if (isStructure || isSensorData || isMakerNote || datum.groupName() == "Thumbnail")
            continue;
        values[QString::fromStdString(datum.key())] = QByteArray(datum.typeName()) + ' ' + BytesOf(datum).toHex();
    }
    return values;
}

/// Sets values given as "KEY=VALUE|...".
void SetValues(const QByteArray &values, Exiv2::ExifData *exif)
{
    for (const QByteArray &pair : values.split('|'))
        (*exif)["Exif." + pair.left(pair.indexOf('=')).toStdString()] = pair.mid(pair.indexOf('=') + 1).toStdString();
}

Exiv2::ExifData CommonExif(const char *make)
{
    Exiv2::ExifData exif;
    exif["Exif.Image.Make"] = make;
    // YCbCrPositioning isn't copied, so that everything else moves. FocalLength needs 32 bits.
    SetValues("Image.Model=Model 5|Image.Orientation=6|Image.XResolution=300/1|Image.YResolution=300/1|"
              "Image.ResolutionUnit=2|Image.YCbCrPositioning=1|Image.Artist=J\xC3\xBCrgen|Photo.ExposureTime=10/2500|"
              "Photo.FNumber=28/10|Photo.FocalLength=4294967295/85899346|Photo.ExposureBiasValue=-1/3|"
              "Photo.DateTimeOriginal=2021:03:04 05:06:07|Photo.LensModel=A lens of 50 mm|Photo.PixelXDimension=40|"
              "Photo.UserComment=charset=Ascii FOV: 73.7 x 53.1 ~ 84.0|Iop.InteroperabilityIndex=R98|"
              "GPSInfo.GPSLatitudeRef=S|GPSInfo.GPSLatitude=45/1 30/1 15/2|GPSInfo.GPSAltitude=1234567/1000",
              &exif);
    return exif;
}

enum Note { NoNote, CanonNote, NikonNote, UnknownNote };

Exiv2::ExifData ExifWith(Note note)
{
    const char *const makes[] = {"Acme", "Canon", "NIKON CORPORATION", "Acme"};
    Exiv2::ExifData exif = CommonExif(makes[note]);
    if (note == CanonNote) {
        SetValues("Canon.OwnerName=The owner of this camera|CanonCs.LensType=235|CanonCs.Lens=22 10 1|"
                  "Canon.SerialNumber=123456789",
                  &exif);
    } else if (note == NikonNote) {
        SetValues("Nikon3.Version=48 50 49 48|Nikon3.Quality=FINE|Nikon3.Lens=80/10 80/10 35/10 35/10|"
                  "Nikon3.SerialNumber=NO= 12345678",
                  &exif);
    } else if (note == UnknownNote) {
        QByteArray bytes("ACME\0\1\2\3", 8);
        for (int i = 0; i < 500; ++i)
            bytes.append(static_cast<char>(i * i));
        Exiv2::DataValue value(reinterpret_cast<const Exiv2::byte *>(bytes.constData()), bytes.size());
        exif.add(Exiv2::ExifKey("Exif.Photo.MakerNote"), &value);
    }
    return exif;
}

/// Returns an RGB profile with a header as in ICC.1:2010 and one tag of 3,000 bytes.
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

/// Returns data sets with text, bytes with zeros, repeated and empty ones, and one in the extended form.
QByteArray Iptc()
{
    QByteArray iptc;
    const auto add = [&iptc](int record, int set, const QByteArray &data) {
        const quint64 size = quint64(data.size());
        iptc += '\x1C' + BigEndian(quint64(record), 1) + BigEndian(quint64(set), 1);
        iptc += (size < 32768 ? BigEndian(size, 2) : BigEndian(0x8004, 2) + BigEndian(size, 4)) + data;
    };
    add(1, 90, "\x1B%G");
    add(2, 0, QByteArray("\0\4", 2));
    add(2, 25, "one");
    add(2, 25, "two");
    add(2, 60, "101112"); // a shorter time than Exiv2 would write
    add(2, 120, QByteArray());
    add(2, 202, QByteArray(32768, 'p')); // the shortest in the extended form; next, the longest in the standard form
    add(2, 202, QByteArray(32767, 'q'));
    return iptc;
}

constexpr char kXmp[] =
    "<?xpacket begin='\xEF\xBB\xBF' id='W5M0MpCehiHzreSzNTczkc9d'?><x:xmpmeta xmlns:x='adobe:ns:meta/'>"
    "<rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><rdf:Description rdf:about='' "
    "xmlns:dc='http://purl.org/dc/elements/1.1/' dc:format='image/jpeg' xmlns:a='http://ns.adobe.com/exif/1.0/aux/' "
    "a:Lens='EF50mm f/1.8 II'/></rdf:RDF></x:xmpmeta>"
    "<?xpacket end='w'?>";

/// Inserts APP13 segments with the IPTC resource after the start of a JPEG. Exiv2 would write its own form of IPTC.
QByteArray WithIptc(QByteArray jpeg, const QByteArray &iptc)
{
    const QByteArray resource = "8BIM" + BigEndian(0x04040000, 4) + BigEndian(quint64(iptc.size()), 4) + iptc
        + QByteArray(iptc.size() % 2, '\0');
    QByteArray segments;
    for (int at = 0; at < resource.size(); at += 30000) { // resources may span several segments
        const QByteArray payload = QByteArray("Photoshop 3.0\0", 14) + resource.mid(at, 30000);
        segments += BigEndian(0xFFFFFFED, 4) + // after two fill bytes
            BigEndian(quint64(payload.size() + 2), 2) + payload;
    }
    return jpeg.insert(2, segments);
}

/// Returns a raw file with all blocks. If there is EXIF, Exiv2 rewrites the other blocks in its own form.
QByteArray RawSource(const Exiv2::ExifData &exif)
{
    const QByteArray file =
        DngFile({40, 30}, {0.1, 0.2, 0.3}, QByteArray(), QSize(), {{34675, Profile()}, {33723, Iptc()}, {700, kXmp}});
    const auto image = OpenImage(file);
    for (const Exiv2::Exifdatum &datum : exif)
        image->exifData()[datum.key()] = datum.value();
    return exif.empty() ? file : WrittenBy(*image);
}

/// Returns a JPEG with all blocks and an embedded preview.
QByteArray JpegSource(Exiv2::ExifData exif, const QByteArray &profile = Profile())
{
    const QByteArray jpeg = SavedBytes(*SmoothBitmap(40, 30, GFL_RGB, 8), SaveParams("jpeg"));
    Exiv2::ExifThumb(exif).setJpegThumbnail(reinterpret_cast<const Exiv2::byte *>(jpeg.constData()), jpeg.size());
    const auto image = OpenImage(jpeg);
    image->setExifData(exif);
    Exiv2::DataBuf icc(reinterpret_cast<const Exiv2::byte *>(profile.constData()), profile.size());
    image->setIccProfile(icc);
    image->setXmpPacket(kXmp);
    image->writeXmpFromPacket(true);
    return WithIptc(WrittenBy(*image), Iptc());
}

/// Copies the metadata block by block, like the image kernel.
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

/// Returns a picture with the blocks of the file @p source.
BitmapPtr Picture(const QString &source, int type = GFL_RGB, int bits = 8)
{
    BitmapPtr bitmap = SmoothBitmap(40, 30, type, bits);
    CarryOver(LoadMetadata(source).get(), bitmap.get());
    return bitmap;
}

QByteArray IccOf(const QString &path)
{
    return TakeBytes(gflLoadICCProfileUTF8(path.toUtf8().constData()), gflFreeICCProfile);
}

QByteArray XmpOf(const QString &path)
{
    return TakeBytes(gflLoadXMPUTF8(path.toUtf8().constData()), gflFreeXMP);
}

} // namespace

class tst_Metadata : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void blocksAreCopied();
    void iptcEntries();
    void profileOfTheRightKind();
    void notesOfCameras();
    void unreadableEntries();
    void xmp();
    void metadataList();
    void resolution();
    void damagedMetadata();
    void blocksThatAreTooLarge();
    void exifTooLargeForJpeg();
    void structureIsNotCopied();

private:
    void CarryBlocks(Note note, const QByteArray &kind);

    Folder m_folder;
};

void tst_Metadata::initTestCase()
{
    gflEnableLZW(1);
    Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
    WriteFile(m_folder("source.jpg"), JpegSource(CommonExif("Acme")));
}

void tst_Metadata::blocksAreCopied()
{
    const char *const formats[] = {"raw", "tiff", "jpeg", "png", "psd"}; // the first copies from a raw file to TIFF
    for (int i = 0; i < 20; ++i)
        CarryBlocks(Note(i / 5), formats[i % 5]);
}

void tst_Metadata::CarryBlocks(Note note, const QByteArray &kind)
{
    const bool isRaw = kind == "raw";
    const QByteArray format = isRaw ? "tiff" : kind;
    const bool hasExif = !isRaw || note != NoNote, hasBlocks = !isRaw || note == NoNote;
    const Exiv2::ExifData exif = hasExif ? ExifWith(note) : Exiv2::ExifData();
    const QString source = m_folder(isRaw ? "a.dng" : "a.jpg");
    WriteFile(source, isRaw ? RawSource(exif) : JpegSource(exif));
    const Values before = CarriedValues(source);
    QCOMPARE(before.contains(QStringLiteral("Exif.GPSInfo.GPSLatitude")), hasExif);
    QCOMPARE(before.contains(QStringLiteral("Exif.CanonCs.LensType")), note == CanonNote);
    QCOMPARE(before.contains(QStringLiteral("Exif.Nikon3.Lens")), note == NikonNote);
    QCOMPARE(ValueBytes(source, "Exif.Thumbnail.JPEGInterchangeFormat").isEmpty(), isRaw);
    QCOMPARE(ValueBytes(source, "Exif.Photo.MakerNote").isEmpty(), note == NoNote);

    QString from = source; // to a file, and from that file to another one
    for (const char *name : {"first", "second"}) {
        const Case named(name);
        const QString to = m_folder(name);
        const BitmapPtr bitmap = Picture(from, GFL_RGBA, 16);
        QVERIFY2(Save(to, *bitmap, SaveParams(format.constData())) == GFL_NO_ERROR, gflLastErrorText());
        const Values after = CarriedValues(to);
        for (auto value = before.begin(); value != before.end(); ++value)
            QVERIFY2(after.value(value.key()) == value.value(),
                     qPrintable(value.key() + QLatin1Char(' ') + QString::fromLatin1(after.value(value.key()))));
        QCOMPARE(after.size(), before.size());
        QVERIFY(ValueBytes(to, "Exif.Thumbnail.JPEGInterchangeFormat").isEmpty());
        if (format == "tiff" && !isRaw && note != CanonNote) // a Canon note's offsets are relative to the file
            QCOMPARE(ValueBytes(to, "Exif.Photo.MakerNote"), ValueBytes(source, "Exif.Photo.MakerNote"));
        const BitmapPtr read = Load(to);
        QVERIFY2(read, gflLastErrorText());
        if (format != "jpeg")
            QCOMPARE(Difference(*read, *bitmap), QString());
        from = to;
        if (!hasBlocks)
            continue;
        QCOMPARE(IccOf(to), Profile());
        // The bytes of IPTC, read independently of the layer.
        QByteArray bytes = ReadFile(to);
        if (format == "jpeg") // remove the headers of further segments
            for (int at = bytes.indexOf("Photoshop 3.0", 100); at > 0; at = bytes.indexOf("Photoshop 3.0", at))
                bytes.remove(at - 4, 18);
        if (format == "png") { // hexadecimal, after a key and the compression method; qUncompress requires a length
            const int text = bytes.indexOf("Raw profile type iptc") + 23;
            bytes = QByteArray::fromHex(qUncompress(QByteArray("\0\2\0\0", 4) + bytes.mid(text)).mid(14));
        }
        const QByteArray header = "8BIM" + BigEndian(0x04040000, 4) + BigEndian(quint64(Iptc().size()), 4),
                         iptc = (format == "tiff" ? QByteArray() : header) + Iptc();
        QCOMPARE(bytes.mid(bytes.indexOf(iptc.left(40)), iptc.size()),
                 iptc); // searching for the whole block takes too long
    }
}

void tst_Metadata::iptcEntries()
{
    GFL_IPTC_DATA *iptc = gflLoadIPTCUTF8(m_folder("source.jpg").toUtf8().constData());
    QVERIFY(iptc);
    QByteArray entries;
    for (unsigned i = 0; i < iptc->NumberOfItems; ++i)
        entries +=
            QString::asprintf("%x %s=%s; ", iptc->ItemsList[i].Id, iptc->ItemsList[i].Name, iptc->ItemsList[i].Value)
                .toUtf8();
    QCOMPARE(entries,
             "15a CharacterSet=\x1B%G; 80000200 RecordVersion=0004; 219 Keywords=one; 219 Keywords=two; "
             "23c TimeCreated=101112; 278 Caption=; 2ca Preview="
                 + QByteArray(32768, 'p') + "; 2ca Preview=" + QByteArray(32767, 'q') + "; ");
    iptc->ItemsList[3].Id += 0x10000;  // too large for a record and a data set
    iptc->ItemsList[1].Value[3] = 'x'; // hexadecimal up to here
    const BitmapPtr target = SmoothBitmap(4, 3, GFL_RGB, 8);
    gflClearWarningText();
    QCOMPARE(gflBitmapSetIPTC(target.get(), iptc), int(GFL_NO_ERROR));
    QVERIFY(QByteArray(gflLastWarningText()).contains("0x10219"));
    gflFreeIPTC(iptc);
    iptc = gflBitmapGetIPTC(target.get());
    QCOMPARE(iptc->NumberOfItems, 7u);
    QCOMPARE(iptc->ItemsList[1].Value, "00");
    gflFreeIPTC(iptc);
}

void tst_Metadata::notesOfCameras()
{
    const QByteArray jpeg = SavedBytes(*SmoothBitmap(40, 30, GFL_RGB, 8), SaveParams("jpeg"));
    for (const NoteKind &kind : NoteKinds()) {
        quint32 place = 0;
        const QByteArray exif = ExifWithNote(kind, &place), note = NoteOf(kind, place);
        QVERIFY2(exif.mid(int(place), note.size()) == note, kind.name);
        WriteFile(m_folder("a.jpg"), JpegWithExif(jpeg, exif));
        const Values before = CarriedValues(m_folder("a.jpg"));
        for (const char *format : {"tiff", "jpeg", "png", "psd"}) {
            const QByteArray which = QByteArray(kind.name) + ' ' + format;
            const QString to = m_folder(which.constData());
            QVERIFY2(Save(to, *Picture(m_folder("a.jpg")), SaveParams(format)) == GFL_NO_ERROR, which);
            const QByteArray file = ReadFile(to);
            const int block = format[0] == 't' ? 0 : file.indexOf("II*", format[1] == 'p' ? 6 : 1);
            const int found = file.indexOf(note, block);
            QVERIFY2(kind.result == NoteKind::Moves ? found > 0
                                                    : (found == block + int(place)) == (kind.result == NoteKind::Stays),
                     which);
            // Exiv2 reads wrong bytes if the offsets are wrong or the byte order has changed.
            const bool isMisread = kind.result == NoteKind::Stays && (kind.shift != 0 || kind.isBigEndian);
            QVERIFY2(isMisread || CarriedValues(to) == before, which);
        }
    }
}

void tst_Metadata::unreadableEntries()
{
    // A first directory with an empty text, an unknown type, and an orientation.
    const QByteArray exif("II*\0\x08\0\0\0\3\0"
                          "\x0E\1\2\0\0\0\0\0\0\0\0\0"
                          "\x0F\1\0\0\4\0\0\0Acme"
                          "\x12\1\3\0\1\0\0\0\6\0\0\0\0\0\0\0",
                          50);
    const QByteArray jpeg = SavedBytes(*SmoothBitmap(40, 30, GFL_RGB, 8), SaveParams("jpeg"));
    WriteFile(m_folder("a.jpg"), JpegWithExif(jpeg, exif));
    const BitmapPtr bitmap = Picture(m_folder("a.jpg"));
    QCOMPARE(Save(m_folder("a.tif"), *bitmap), int(GFL_NO_ERROR));
    QCOMPARE(ValueBytes(m_folder("a.tif"), "Exif.Image.Orientation"), QByteArray("\6\0", 2));
    const Values after = CarriedValues(m_folder("a.tif"));
    QVERIFY(!after.contains(QStringLiteral("Exif.Image.Make")));
    QVERIFY(!after.contains(QStringLiteral("Exif.Image.ImageDescription")));
    // An orientation outside 1 to 8 is removed from edited pictures, because libtiff would refuse the whole TIFF.
    for (const char orientation : {'\0', '\x9', '\x7F', '\1', '\x8'}) {
        const Case named("orientation", int(orientation));
        WriteFile(m_folder("a.jpg"), JpegWithExif(jpeg, QByteArray(exif).replace(42, 1, &orientation, 1)));
        const BitmapPtr edited = Picture(m_folder("a.jpg"));
        QCOMPARE(gflBitmapMarkEdited(edited.get(), edited.get(), nullptr, 0), int(GFL_NO_ERROR));
        QCOMPARE(Save(m_folder("a.tif"), *edited), int(GFL_NO_ERROR));
        const bool isValid = orientation >= 1 && orientation <= 8;
        const QByteArray expected = isValid ? QByteArray(1, orientation) + '\0' : QByteArray();
        QCOMPARE(ValueBytes(m_folder("a.tif"), "Exif.Image.Orientation"), expected);
    }
}

void tst_Metadata::profileOfTheRightKind()
{
    const struct {
        const char *space; // bytes 16 to 19 of the profile
        int type;
        bool isKept;
    } profiles[] = {
        {"RGB ", GFL_RGBA, true}, {"CMYK", GFL_RGBA, false}, {"GRAY", GFL_GREY, true}, {"RGB ", GFL_GREY, false}};
    for (const auto &profile : profiles) {
        const Case named(profile.space, profile.type);
        WriteFile(m_folder("a.jpg"), JpegSource(CommonExif("Acme"), Profile().replace(16, 4, profile.space)));
        const BitmapPtr bitmap = Picture(m_folder("a.jpg"), profile.type);
        GFL_SAVE_PARAMS params = SaveParams("tiff");
        QCOMPARE(Save(m_folder("a.tif"), *bitmap, params), int(GFL_NO_ERROR));
        QVERIFY2(IccOf(m_folder("a.tif")).isEmpty() != profile.isKept, profile.space);
        params.Flags = 0; // the profile is only written on request
        QCOMPARE(Save(m_folder("a.tif"), *bitmap, params), int(GFL_NO_ERROR));
        QVERIFY(IccOf(m_folder("a.tif")).isEmpty());
    }
    for (const int orientation : {6, 1}) { // OpenEXR stores neither an orientation nor a profile without primaries
        Exiv2::ExifData exif = CommonExif("Acme");
        exif["Exif.Image.Orientation"] = std::uint16_t(orientation);
        WriteFile(m_folder("a.jpg"), JpegSource(exif));
        gflClearWarningText();
        QCOMPARE(Save(m_folder("a.exr"), *Picture(m_folder("a.jpg")), SaveParams("exr")), int(GFL_NO_ERROR));
        QVERIFY(QByteArray(gflLastWarningText()).contains(orientation == 6 ? "the orientation," : "the ICC profile,"));
    }
}

void tst_Metadata::xmp()
{
    const QString source = m_folder("source.jpg");
    QVERIFY(XmpOf(source).contains("dc:format=\"image/jpeg\"") || XmpOf(source).contains("dc:format='image/jpeg'"));
    // A picture loaded with its metadata keeps it.
    const BitmapPtr bitmap = Load(source, nullptr, LoadParams(GFL_LOAD_METADATA));
    QVERIFY(bitmap && gflBitmapHasXMP(bitmap.get()) && gflBitmapHasEXIF(bitmap.get()));
    for (const char *format : {"tiff", "jpeg", "png", "psd"}) {
        const Case named(format);
        QCOMPARE(Save(m_folder(format), *bitmap, SaveParams(format)), int(GFL_NO_ERROR));
        QCOMPARE(XmpOf(m_folder(format)), XmpOf(source));
    }
    QCOMPARE(Save(m_folder("none"), *SmoothBitmap(4, 3, GFL_RGB, 8)), int(GFL_NO_ERROR));
    const BitmapPtr none = LoadMetadata(m_folder("none"));
    QVERIFY(!gflBitmapHasXMP(none.get()) && !gflBitmapHasEXIF(none.get()) && !gflBitmapHasIPTC(none.get()));
    // Metadata alone has no pixels and can't be saved as a picture.
    const BitmapPtr metadata = LoadMetadata(source);
    QVERIFY(metadata && !metadata->Data && SavedBytes(*metadata, SaveParams("tiff")).isEmpty());
    QCOMPARE(QSize(metadata->Width, metadata->Height), QSize(40, 30));
}

/// Facet that makes streams group digits and write decimal commas, like a host in a German locale.
struct GermanNumbers : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

/// Returns the raw and the printed text of a file's last item with this key, separated by a vertical bar.
QByteArray ListItem(const QString &path, const QByteArray &key)
{
    GFL_METADATA_LIST *list = nullptr;
    if (gflLoadMetadataListUTF8(path.toUtf8().constData(), &list) != GFL_NO_ERROR)
        return gflLastErrorText();
    QByteArray found;
    for (std::uint32_t i = 0; i < list->NumberOfItems; ++i)
        if (key == list->ItemsList[i].Key)
            found = QByteArray(list->ItemsList[i].Raw).append("|").append(list->ItemsList[i].Printed);
    gflFreeMetadataList(list);
    return found;
}

void tst_Metadata::metadataList()
{
    Exiv2::ExifData exif = ExifWith(NikonNote);
    exif["Exif.Image.ImageDescription"] = std::string(1100, 'd');
    SetValues("Photo.LensModel=F\xFCnfziger|Photo.PixelXDimension=12000|Photo.FocalLength=455/10|Photo.MeteringMode=2|"
              "NikonLd2.Version=48 50 48 49|NikonLd2.LensIDNumber=165",
              &exif); // LensModel is in ISO 8859-1; the version is 0201
    // First and last characters of each row of RFC 3629, section 4; then bytes just outside, and incomplete sequences.
    const QByteArray utf8 = "\x7F\xC2\x80\xDF\xBF\xE0\xA0\x80\xED\x9F\xBF\xEE\x80\x80\xEF\xBF\xBF\xF0\x90\x80\x80"
                            "\xF4\x8F\xBF\xBF",
                     latin1 = "\xC1\xBF\xC2_\xDF\xC0\xE0\x9F\xBF\xED\xA0\x80\xE2\x82_\xEF\xC0\x80\xF0\x8F\xBF\xBF"
                              "\xF4\x90\x80\x80\xF5\x80\x80\x80\xF1\x80_\xF1\x80\x80_\xF1\x80\x80";
    const QByteArray artist = utf8 + QString::fromLatin1(latin1).toUtf8();
    exif["Exif.Image.Artist"] = (utf8 + latin1).toStdString();
    WriteFile(m_folder("a.jpg"), JpegSource(exif));
    WriteFile(m_folder("a.dng"), RawSource({}));
    // A CR3 consists of boxes; CMT1 and CMT2 hold the first directory and that of EXIF as separate TIFFs.
    const auto box = [](const QByteArray &kind, const QByteArray &content) {
        return BigEndian(quint64(content.size()) + 8, 4) + kind + content;
    };
    const QByteArray first = box("CMT1", PlainTiff({{274, 6}}, {})), second = box("CMT2", PlainTiff({{41989, 77}}, {})),
                     mark = QByteArray::fromHex("85c0b687820f11e08111f4ce462b6a48");
    WriteFile(m_folder("a.cr3"),
              box("ftyp", QByteArray("crx \0\0\0\1crx isom", 16)) + box("moov", box("uuid", mark + first + second))
                  + box("mdat", QByteArray(64, 'm')));
    // LibRaw recognizes this camera by the size of its files, which contain only pixels.
    WriteFile(m_folder("a.raw"), "II" + QByteArray(1024 * 768 - 2, '\0'));
    WriteFile(m_folder("a.txt"), "no picture at all");
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new GermanNumbers));
    const auto reset = qScopeGuard([before] { std::locale::global(before); });
    QCOMPARE(ListItem(m_folder("a.jpg"), "Exif.Image.Artist"), artist + '|' + artist);
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_METADATA_ITEMS))) {
        const Case named(row);
        QCOMPARE(ListItem(m_folder.filePath(row[0]), row[1].toLatin1()), row[2].toUtf8());
    }
    QVERIFY(ListItem(m_folder("a.txt"), "").contains("unknown format"));
}

void tst_Metadata::resolution()
{
    // The bitmap's resolution takes precedence over that of its EXIF.
    const std::pair<const char *, int> rows[] = {{"tiff", 0}, {"tiff", 72}, {"jpeg", 72}, {"png", 72}, {"psd", 72}};
    for (const auto &[format, dpi] : rows) {
        const Case named(format, dpi);
        const BitmapPtr bitmap = Picture(m_folder("source.jpg"));
        bitmap->Xdpi = static_cast<std::uint16_t>(dpi);
        bitmap->Ydpi = static_cast<std::uint16_t>(2 * dpi);
        QCOMPARE(Save(m_folder("a"), *bitmap, SaveParams(format)), int(GFL_NO_ERROR));
        GFL_FILE_INFORMATION info;
        QCOMPARE(Describe(m_folder("a"), &info), int(GFL_NO_ERROR));
        QCOMPARE(QSize(info.Xdpi, info.Ydpi), dpi == 0 ? QSize(300, 300) : QSize(72, 144));
    }
    for (const char *format : {"jpeg", "png", "psd"}) // half a resolution is none
        for (const int dpi : {0, 72}) {
            const Case named(format, dpi);
            const BitmapPtr bitmap = SmoothBitmap(4, 3, GFL_RGB, 8);
            bitmap->Xdpi = static_cast<std::uint16_t>(dpi);
            bitmap->Ydpi = static_cast<std::uint16_t>(72 - dpi);
            const BitmapPtr read = LoadFromMemory(SavedBytes(*bitmap, SaveParams(format)));
            QVERIFY2(read && read->Xdpi == 0 && read->Ydpi == 0, gflLastErrorText());
        }
}

void tst_Metadata::damagedMetadata()
{
    const QByteArray good = JpegSource(ExifWith(CanonNote));
    const int exif = good.indexOf(QByteArray("Exif\0\0", 6)) + 6;
    gflClearWarningText();
    QVERIFY(LoadFromMemory(good, nullptr, LoadParams(GFL_LOAD_METADATA)));
    QCOMPARE(QByteArray(gflLastWarningText()), QByteArray());
    QVERIFY(LoadFromMemory(QByteArray(good).replace(exif, 4, "????"), nullptr, LoadParams(GFL_LOAD_METADATA)));
    QVERIFY(QByteArray(gflLastWarningText()).contains("damaged metadata"));
    for (int at = exif; at < exif + 300; ++at) { // pictures with damaged metadata still load
        const BitmapPtr bitmap = LoadFromMemory(QByteArray(good).replace(at, 1, QByteArray(1, char(~good[at]))),
                                                nullptr, LoadParams(GFL_LOAD_METADATA));
        QVERIFY2(bitmap, gflLastErrorText());
        gflFreeEXIF(gflBitmapGetEXIF(bitmap.get(), 1));
        QVERIFY2(!SavedBytes(*bitmap, SaveParams("tiff")).isEmpty(), gflLastErrorText());
    }
}

void tst_Metadata::blocksThatAreTooLarge()
{
    const QByteArray block((64 << 20) + 1, ' ');
    QByteArray png = SavedBytes(*SmoothBitmap(8, 8, GFL_RGB, 8), SaveParams("png"));
    png.insert(33, BigEndian(quint64(block.size()), 4) + "iCCP" + block + BigEndian(0, 4)); // after the header
    QByteArray psd = SavedBytes(*SmoothBitmap(8, 8, GFL_RGB, 8), SaveParams("psd"));
    const quint32 resources = qFromBigEndian<quint32>(psd.constData() + 30);
    psd.replace(30, 4, BigEndian(resources + quint64(block.size()), 4)).insert(34, block);
    TIFF *tiff = TIFFOpen(qPrintable(m_folder("big.tif")), "w8");
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, 1);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, 1);
    TIFFSetField(tiff, TIFFTAG_XMLPACKET, uint32_t(block.size() / 2), block.constData());
    TIFFWriteEncodedStrip(tiff, 0, const_cast<char *>("\1"), 1);
    TIFFClose(tiff);
    const struct {
        const char *name;
        QByteArray file;
    } rows[] = {{"PNG", png}, {"Photoshop", psd}, {"BigTIFF", ReadFile(m_folder("big.tif"))}};
    for (const auto &row : rows) {
        const Case named(row.name);
        gflClearWarningText();
        QVERIFY2(LoadFromMemory(row.file, nullptr, LoadParams(GFL_LOAD_METADATA)), gflLastErrorText());
        QVERIFY(QByteArray(gflLastWarningText()).contains("metadata is left out"));
    }
}

/// If the EXIF doesn't fit into a segment, Exiv2 drops values over 20,000 bytes. If it still doesn't fit, the maker
/// note is dropped too.
void tst_Metadata::exifTooLargeForJpeg()
{
    for (int noteBytes : {70000, 19000}) {
        QByteArray maker("Acme", 5), note(noteBytes, 'n'), text(19000, 't');
        const auto entry = [](std::uint16_t tag, int type, std::uint32_t directory, QByteArray *value,
                              GFL_EXIF_ENTRYEX *next) {
            const auto size = std::uint32_t(value->size());
            auto *data = reinterpret_cast<std::uint8_t *>(value->data());
            return GFL_EXIF_ENTRYEX{tag, std::uint16_t(type), directory, 0, 0, size, data, next};
        };
        GFL_EXIF_ENTRYEX last = entry(37500, 7, GFL_EXIF_CAMERA, &note, nullptr),
                         third = entry(305, 2, GFL_EXIF_MAIN, &text, &last),
                         second = entry(270, 2, GFL_EXIF_MAIN, &text, &third),
                         artist = entry(315, 2, GFL_EXIF_MAIN, &text, &second),
                         first = entry(271, 2, GFL_EXIF_MAIN, &maker, &artist);
        const GFL_EXIF_DATAEX exif = {&first, 0};
        for (const char *format : {"tiff", "jpeg"}) {
            const Case named(format, "note", noteBytes);
            const bool isJpeg = format[0] == 'j';
            const BitmapPtr bitmap = SmoothBitmap(40, 30, GFL_RGB, 8);
            QCOMPARE(gflBitmapSetEXIF2(bitmap.get(), &exif), int(GFL_NO_ERROR));
            gflClearWarningText();
            QVERIFY2(Save(m_folder(format), *bitmap, SaveParams(format)) == GFL_NO_ERROR, gflLastErrorText());
            const char *what = noteBytes == 70000 ? "largest values of the EXIF" : "maker note";
            QCOMPARE(QByteArray(gflLastWarningText()),
                     !isJpeg ? QByteArray()
                             : "metadata is left out: the " + QByteArray(what) + ", which is too long for a JPEG");
            QCOMPARE(ValueBytes(m_folder(format), "Exif.Image.Make"), maker);
            QVERIFY(ValueBytes(m_folder(format), "Exif.Image.Artist").startsWith(text));
            QCOMPARE(ValueBytes(m_folder(format), "Exif.Photo.MakerNote"), isJpeg ? QByteArray() : note);
            const BitmapPtr other = SmoothBitmap(40, 30, GFL_RGB, 8);
            const QByteArray zoom(noteBytes, 'z'); // of XMP, which has one segment as well
            const GFL_XMP_ITEM item = {"Xmp.vitrelux.Zoom", zoom.constData()};
            QCOMPARE(gflBitmapMarkEdited(other.get(), other.get(), &item, 1), int(GFL_NO_ERROR));
            gflClearWarningText();
            QCOMPARE(Save(m_folder(format), *other, SaveParams(format)), int(GFL_NO_ERROR));
            const bool isTooLong = isJpeg && zoom.size() > 65535;
            QCOMPARE(gflLastWarningText(),
                     isTooLong ? "metadata is left out: the XMP, which is too long for a JPEG" : "");
            QCOMPARE(XmpOf(m_folder(format)).contains(zoom), !isTooLong);
        }
    }
}

/// Neither the tiles nor the color map of a source may be copied to a result in strips.
void tst_Metadata::structureIsNotCopied()
{
    const QString source = m_folder("tiles.tif"), result = m_folder("strips.tif");
    QMap<int, quint32> fields = {{258, 8}, {262, 1}, {274, 6}};
    for (const int tag : {256, 257, 320, 321, 322, 323, 324, 325})
        fields[tag] = 16;
    WriteFile(source, PlainTiff(fields, QByteArray(256, '\1')));
    QCOMPARE(Save(result, *Picture(source)), int(GFL_NO_ERROR));
    const Exiv2::ExifData before = ExifOf(source), after = ExifOf(result);
    const auto has = [](const Exiv2::ExifData &exif, const char *key) {
        return exif.findKey(Exiv2::ExifKey(std::string("Exif.Image.") + key)) != exif.end();
    };
    QVERIFY(has(after, "Orientation"));
    for (const char *key : {"ColorMap", "HalftoneHints", "TileWidth", "TileLength", "TileOffsets", "TileByteCounts"})
        QVERIFY2(has(before, key) && !has(after, key), key);
}

QTEST_GUILESS_MAIN(tst_Metadata)
#include "Metadata_test.moc"
