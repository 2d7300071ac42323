// Tests of the XMP of edited pictures: which of the source's properties are kept, changed or dropped.
#include "Blocks.h"
#include "Case.h"
#include "Files.h"
#include "MetadataFiles.h"

#include <QtTest>

#include <tuple>

namespace {

/// Returns a packet with one description that has these attributes and elements.
QByteArray Packet(const QByteArray &attributes, const QByteArray &elements)
{
    QByteArray names;
    for (const char *name :
         {"crs='http://ns.adobe.com/camera-raw-settings/1.0/'", "xmp='http://ns.adobe.com/xap/1.0/'",
          "g='http://ns.adobe.com/xap/1.0/g/img/'", "tiff='http://ns.adobe.com/tiff/1.0/'",
          "exif='http://ns.adobe.com/exif/1.0/'", "mine='urn:example:mine#'", "xmpNote='http://ns.adobe.com/xmp/note/'",
          "dc='http://purl.org/dc/elements/1.1/'", "old='urn:vitrelux:correction:1.0#'"})
        names += QByteArray(" xmlns:") + name;
    return "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
           "<rdf:Description rdf:about=''"
        + names + ' ' + attributes + '>' + elements + "</rdf:Description></rdf:RDF></x:xmpmeta>";
}

/// Returns a bitmap's XMP as Exiv2 reads it: "NAME=VALUE" per property, sorted by name.
QStringList XmpTexts(const GFL_BITMAP *bitmap)
{
    QStringList texts;
    const QByteArray packet = TakeBytes(gflBitmapGetXMPEx(bitmap), gflFreeXMP);
    Exiv2::XmpData xmp;
    if (!packet.isEmpty())
        Exiv2::XmpParser::decode(xmp, packet.toStdString());
    for (const Exiv2::Xmpdatum &datum : xmp)
        texts << QString::fromStdString(datum.key().substr(4) + '=' + datum.toString());
    texts.sort();
    return texts;
}

/// Returns "TYPE VALUE" for one EXIF value of a file.
std::string ExifText(const QString &path, const char *key)
{
    const QByteArray file = ReadFile(path); // must outlive the image
    const Exiv2::Exifdatum datum = OpenImage(file)->exifData()[key];
    return std::string(datum.typeName()) + ' ' + datum.toString();
}

} // namespace

class tst_EditedXmp : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void edited();

private:
    Folder m_folder;
};

void tst_EditedXmp::edited()
{
    for (const QByteArray &line : ReadFile(QStringLiteral(VITRELUX_EDITED_XMP)).split('\n')) {
        if (line.startsWith('#') || line.isEmpty())
            continue;
        const Case named(line);
        const QByteArrayList cells = line.split('\t');
        QCOMPARE(cells.size(), 4);
        const QByteArray packet = cells[1] == "-" ? QByteArray()
            : cells[1] == "damaged"               ? QByteArray("<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF")
                                                  : Packet(cells[1], cells[2]);
        const QByteArray blank =
            SavedBytes(*SmoothBitmap(8, 6, GFL_RGB, 8), SaveParams("jpeg")); // must outlive the image
        const auto image = OpenImage(blank);
        Exiv2::ExifData exif;
        exif["Exif.Image.Orientation"] = uint16_t(6);
        exif["Exif.Photo.PixelXDimension"] = uint32_t(9);
        exif["Exif.Iop.RelatedImageWidth"] = uint32_t(9);
        image->setExifData(exif);
        const QByteArray payload = QByteArray("http://ns.adobe.com/xap/1.0/\0", 29) + packet;
        QByteArray jpeg = WrittenBy(*image); // without XMP: Exiv2 refuses to write a damaged packet
        jpeg.insert(2, BigEndian(0xFFE1, 2) + BigEndian(quint64(payload.size() + 2), 2) + payload);
        WriteFile(m_folder("edit.jpg"), jpeg);
        const GFL_XMP_ITEM record[] = {{"Xmp.crs.LensProfileName", "now"},
                                       {"Xmp.crs.LensProfileDigest", ""}, // removed
                                       {"Xmp.vitrelux.Zoom", "1"}};
        const BitmapPtr first = SmoothBitmap(4, 3, GFL_RGB, 8); // works even if no XMP was read before
        QCOMPARE(gflBitmapMarkEdited(first.get(), first.get(), record, 3), int(GFL_NO_ERROR));
        const BitmapPtr source = LoadMetadata(m_folder("edit.jpg")), picture = SmoothBitmap(40, 30, GFL_RGB, 8);
        QCOMPARE(gflBitmapCopyMetadata(source.get(), picture.get()), int(GFL_NO_ERROR));
        gflClearWarningText();
        QCOMPARE(gflBitmapMarkEdited(picture.get(), source.get(), record, 3), int(GFL_NO_ERROR));
        QCOMPARE(QByteArray(gflLastWarningText()).contains("XMP"),
                 packet.endsWith("RDF") || packet.contains("HasExtended"));
        QStringList expected = QString::fromUtf8(cells[3] + "; crs.LensProfileName=now; vitrelux.Zoom=1")
                                   .split(QLatin1String("; "), Qt::SkipEmptyParts);
        expected.sort();
        QCOMPARE(XmpTexts(picture.get()), expected);
        QCOMPARE(Save(m_folder("edited.tif"), *picture), int(GFL_NO_ERROR));
        for (const char *key : {"Exif.Photo.PixelXDimension", "Exif.Iop.RelatedImageWidth"})
            QVERIFY2(ExifText(m_folder("edited.tif"), key) == "Long 40", key);
        QCOMPARE(ExifText(m_folder("edited.tif"), "Exif.Photo.PixelYDimension"), std::string("Long 30"));
        const GFL_XMP_ITEM unknown = {"Xmp.nobody.Knows", "1"};
        QCOMPARE(gflBitmapMarkEdited(picture.get(), source.get(), &unknown, 1), int(GFL_ERROR_BAD_PARAMETERS));
    }
}

QTEST_GUILESS_MAIN(tst_EditedXmp)
#include "EditedXmp_test.moc"
