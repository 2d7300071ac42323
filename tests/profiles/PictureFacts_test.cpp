// Facts read from pictures that Exiv2 wrote: values, units and sources.
#include "FitOptions.h"
#include "PictureFacts.h"

#include "Case.h"
#include "KImage.h"
#include "Table.h"
#include "TestFiles.h"

#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <exiv2/exiv2.hpp>

namespace {

using Values = QByteArray; // "KEY=VALUE|KEY=VALUE|"; values of maker notes are raw numbers

/// Writes a 60 x 40 JPEG with EXIF and XMP values.
void Write(const QString &path, const Values &values)
{
    WriteJpeg(path, 60, 40);
    const auto image = Exiv2::ImageFactory::open(path.toStdString());
    Exiv2::ExifData exif;
    Exiv2::XmpData xmp;
    for (const QByteArray &pair : values.split('|')) {
        const std::string key = pair.left(pair.indexOf('=')).toStdString(),
                          value = pair.mid(pair.indexOf('=') + 1).toStdString();
        if (pair.startsWith("Xmp"))
            xmp[key] = value;
        else if (!pair.isEmpty())
            exif[key].setValue(value);
    }
    image->setExifData(exif);
    image->setXmpData(xmp);
    image->writeMetadata();
}

/// Returns all facts of a rendered picture that wasn't cropped or corrected before; "-" for unknown ones.
QString Text(const PictureFacts &facts)
{
    QStringList text;
    const auto add = [&text](const QString &value, const QString &source) {
        text << (source.isEmpty() ? QStringLiteral("-") : QStringLiteral("%1: %2").arg(value, source));
    };
    for (const auto &one :
         QVector<Fact<QString>>{facts.make, facts.model, facts.lensMake} + facts.lensNames + facts.lensIds)
        add(one.value, one.source);
    for (const auto &one :
         {facts.lensMinFocalMm, facts.lensMaxFocalMm, facts.lensMinApertureAtMin, facts.lensMinApertureAtMax,
          facts.focalMm, facts.focal35Mm, facts.digitalZoom, facts.aperture, facts.distanceM, facts.focalPlaneWidthMm})
        add(QString::number(one.value), one.source);
    const QSize size = facts.original.value;
    add(QStringLiteral("%1 x %2").arg(size.width()).arg(size.height()), facts.original.source);
    add(QStringLiteral("encoding %1").arg(int(facts.encoding.value)), facts.encoding.source);
    text << QStringLiteral("orientation %1, turn %2").arg(facts.orientation).arg(facts.readerTurn);
    return text.join(QLatin1Char('|'));
}

} // namespace

class tst_PictureFacts : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { KImage::init(nullptr); }
    void cleanupTestCase() { KImage::exit(); }
    void plainExif();
    void makerNotes();
    void distances();
    void crop();
    void doneBefore();
    void notAPicture();

private:
    PictureFacts Facts(const Values &values)
    {
        const QString path = m_folder.filePath(QStringLiteral("a.jpg"));
        Write(path, values);
        return ReadPictureFacts(path, nullptr);
    }

    QTemporaryDir m_folder;
};

void tst_PictureFacts::plainExif()
{
    const PictureFacts facts =
        Facts("Exif.Image.Make=Maker|Exif.Image.Model=BODY |Exif.Image.Orientation=6|"
              "Exif.Photo.LensModel=24-70mm F2.8|Exif.Photo.LensMake=Glass|"
              "Exif.Photo.LensSpecification=24/1 70/1 28/10 0/0|Exif.Photo.FocalLength=355/10|"
              "Exif.Photo.FocalLengthIn35mmFilm=53|Exif.Photo.DigitalZoomRatio=15/10|"
              "Exif.Photo.ApertureValue=4/1|Exif.Photo.SubjectDistance=25/10|Exif.Photo.ColorSpace=1|"
              "Exif.Photo.PixelXDimension=6000|Exif.Photo.PixelYDimension=4000|"
              "Exif.Photo.FocalPlaneXResolution=6000/36|Exif.Photo.FocalPlaneResolutionUnit=4|"
              "Xmp.aux.Lens=24.0-70.0 mm f/2.8|");
    QCOMPARE(Text(facts),
             QStringLiteral("Maker: EXIF Make|BODY: EXIF Model|Glass: EXIF LensMake|24-70mm F2.8: EXIF LensModel|"
                            "24.0-70.0 mm f/2.8: XMP aux:Lens|24: EXIF LensSpecification|70: EXIF LensSpecification|"
                            "2.8: EXIF LensSpecification|-|35.5: EXIF FocalLength|53: EXIF FocalLengthIn35mmFilm|"
                            "1.5: EXIF DigitalZoomRatio|4: EXIF ApertureValue|2.5: EXIF SubjectDistance|"
                            "36: EXIF FocalPlaneXResolution|6000 x 4000: EXIF PixelXDimension|"
                            "encoding 1: EXIF ColorSpace|orientation 6, turn 1"));
    QCOMPARE(facts.pixels, QSize(60, 40));
    QVERIFY(!facts.raw && !facts.crop.Known());
}

void tst_PictureFacts::makerNotes()
{
    // Version "0201": cameras scramble it with serial number and shutter count, which this file doesn't have.
    const PictureFacts nikon = Facts("Exif.Image.Make=NIKON CORPORATION|Exif.NikonLd2.Version=48 50 48 49|"
                                     "Exif.NikonLd2.LensIDNumber=165|Exif.NikonLd2.FocusDistance=80|");
    QVERIFY(nikon.lensIds.size() == 1 && nikon.lensIds[0].value == QLatin1String("165"));
    QCOMPARE(nikon.distanceM.value, 1.0); // 0.01 m * 10^(80 / 40)
    QCOMPARE(nikon.distanceM.source, QStringLiteral("maker note"));
    const PictureFacts canon =
        Facts("Exif.Image.Make=Canon|Exif.CanonCs.LensType=65535|Exif.CanonCs.Lens=700 240 10|"
              "Exif.CanonSi.SubjectDistance=250|Exif.Photo.FNumber=28/10|Exif.Photo.ApertureValue=4/1|"
              "Exif.Photo.PixelXDimension=4000|Exif.Photo.PixelYDimension=6000|"
              "Exif.Photo.FocalPlaneXResolution=6000/1|Exif.Photo.ColorSpace=65535|"
              "Exif.Iop.InteroperabilityIndex=R03|");
    QCOMPARE(Text(canon),
             QStringLiteral("Canon: EXIF Make|-|-|24: maker note|70: maker note|-|-|-|-|-|2.8: EXIF FNumber|"
                            "2.5: maker note|25.4: EXIF FocalPlaneXResolution|4000 x 6000: EXIF PixelXDimension|"
                            "encoding 2: EXIF InteroperabilityIndex|orientation 1, turn 1"));
}

void tst_PictureFacts::distances()
{
    const struct {
        const char *value;
        double expected; // 0: unknown
    } rows[] = {
        {"25/10", 2.5}, {"0/1", 0.0}, {"0/0", 0.0}, {"4294967295/1", HUGE_VAL}, {"4294967295/4294967295", HUGE_VAL}};
    for (const auto &row : rows) {
        const PictureFacts facts = Facts(QByteArray("Exif.Photo.SubjectDistance=") + row.value);
        QVERIFY2(facts.distanceM.value == row.expected && facts.distanceM.Known() == (row.expected > 0.0), row.value);
    }
}

void tst_PictureFacts::crop()
{
    const Values cropped = "Xmp.crs.HasCrop=True|Xmp.crs.CropLeft=0.25|Xmp.crs.CropTop=0.125|Xmp.crs.CropRight=0.75|"
                           "Xmp.crs.CropBottom=1|";
    QVERIFY(!Facts(cropped).crop.Known()); // settings that are not applied yet
    const Values applied = cropped + "Xmp.crs.AlreadyApplied=True|";
    QCOMPARE(Facts(applied).crop.value, QRectF(0.25, 0.125, 0.5, 0.875));
    QVERIFY(!Facts(applied).cropTurned);
    QVERIFY(!Facts(applied).cropLost);
    QVERIFY(Facts(applied + "Xmp.crs.CropAngle=-1.5|").cropTurned);
    // CropRight is 0.75. Rounded values up to 0.001 outside count as the edge.
    for (const char *value :
         {"Left=0.8", "Left=0.75", "Left=-0.1", "Left=x", "Left=nan", "Right=1.5", "Top=1", "Bottom=1.002"}) {
        const PictureFacts lost = Facts(applied + "Xmp.crs.Crop" + value);
        QVERIFY2(lost.cropLost && !lost.crop.Known(), value);
    }
    const Values rounded = applied + "Xmp.crs.CropLeft=-0.0009|Xmp.crs.CropBottom=1.0009|";
    QCOMPARE(Facts(rounded).crop.value, QRectF(0.0, 0.125, 0.75, 0.875));
}

void tst_PictureFacts::doneBefore()
{
    for (const QStringList &row : ReadTable(QStringLiteral(DONE_BEFORE))) {
        const Case named(row[0]);
        const PictureFacts facts = Facts(row[1].toUtf8());
        QString text;
        for (const auto &[done, name] :
             {std::pair(facts.distortionDone, "d"), {facts.chromaticDone, "c"}, {facts.vignettingDone, "v"}})
            text += done.value || done.Known() ? QStringLiteral("%1: %2; ").arg(QLatin1String(name), done.source)
                                               : QString();
        for (const auto &[tried, name] :
             {std::pair(facts.distortionTried, "D"), {facts.chromaticTried, "C"}, {facts.vignettingTried, "V"}})
            text += QLatin1String(tried ? name : "");
        FitOptions options;
        text += QLatin1String(WasDoneBefore(facts, options) ? "!" : "");
        options.chromatic = options.vignetting = false;
        text += QLatin1String(WasDoneBefore(facts, options) ? "+" : "");
        QCOMPARE(text.trimmed(), row[2]);
        options.distortion = false; // nothing is requested
        QVERIFY(WasDoneBefore(facts, options));
        options.again = true;
        QVERIFY(!WasDoneBefore(facts, options));
    }
}

void tst_PictureFacts::notAPicture()
{
    const QString path = m_folder.filePath(QStringLiteral("a.txt"));
    WriteFile(path, "text");
    QString error;
    QVERIFY(ReadPictureFacts(path, &error).pixels.isEmpty() && !error.isEmpty());
    QVERIFY(ReadPictureFacts(m_folder.filePath(QStringLiteral("none.jpg")), &error).pixels.isEmpty());
}

QTEST_GUILESS_MAIN(tst_PictureFacts)
#include "PictureFacts_test.moc"
