// Facts read from pictures that Exiv2 wrote: values, units and sources.
#include "PictureFacts.h"

#include "KImage.h"
#include "TestFiles.h"

#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <exiv2/exiv2.hpp>

namespace {

using Values = QList<QPair<const char *, const char *>>;

/// Writes a 60 x 40 JPEG with EXIF and XMP values by key; values of maker notes are raw numbers.
void Write(const QString &path, const Values &values)
{
    WriteJpeg(path, 60, 40);
    const auto image = Exiv2::ImageFactory::open(path.toStdString());
    Exiv2::ExifData exif;
    Exiv2::XmpData xmp;
    for (const auto &value : values) {
        if (QByteArray(value.first).startsWith("Xmp"))
            xmp[value.first] = value.second;
        else
            exif[value.first].setValue(value.second);
    }
    image->setExifData(exif);
    image->setXmpData(xmp);
    image->writeMetadata();
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
    const PictureFacts facts = Facts({{"Exif.Image.Make", "Maker"},
                                      {"Exif.Image.Model", "BODY "},
                                      {"Exif.Image.Orientation", "6"},
                                      {"Exif.Photo.LensModel", "24-70mm F2.8"},
                                      {"Exif.Photo.LensMake", "Glass"},
                                      {"Exif.Photo.LensSpecification", "24/1 70/1 28/10 0/0"},
                                      {"Exif.Photo.FocalLength", "355/10"},
                                      {"Exif.Photo.FocalLengthIn35mmFilm", "53"},
                                      {"Exif.Photo.DigitalZoomRatio", "15/10"},
                                      {"Exif.Photo.ApertureValue", "4/1"},
                                      {"Exif.Photo.PixelXDimension", "6000"},
                                      {"Exif.Photo.PixelYDimension", "4000"},
                                      {"Exif.Photo.FocalPlaneXResolution", "6000/36"},
                                      {"Exif.Photo.FocalPlaneResolutionUnit", "4"}, // millimeters
                                      {"Xmp.aux.Lens", "24.0-70.0 mm f/2.8"}});
    QCOMPARE(facts.make.value + facts.make.source, QStringLiteral("MakerEXIF Make"));
    QCOMPARE(facts.model.value, QStringLiteral("BODY"));
    QCOMPARE(facts.orientation, 6);
    QCOMPARE(facts.readerTurn, 1);
    QCOMPARE(facts.pixels, QSize(60, 40));
    QCOMPARE(facts.original.value, QSize(6000, 4000));
    QCOMPARE(facts.lensNames.size(), 2);
    QCOMPARE(facts.lensNames[0].value + facts.lensNames[0].source, QStringLiteral("24-70mm F2.8EXIF LensModel"));
    QCOMPARE(facts.lensNames[1].source, QStringLiteral("XMP aux:Lens"));
    QCOMPARE(facts.lensMake.value, QStringLiteral("Glass"));
    QVERIFY(facts.lensMinFocalMm.value == 24.0 && facts.lensMaxFocalMm.value == 70.0
            && facts.lensMinApertureAtMin.value == 2.8 && !facts.lensMinApertureAtMax.Known());
    QVERIFY(facts.focalMm.value == 35.5 && facts.focal35Mm.value == 53.0 && facts.digitalZoom.value == 1.5);
    QCOMPARE(facts.aperture.value, 4.0); // 2^(4/2)
    QCOMPARE(facts.aperture.source, QStringLiteral("EXIF ApertureValue"));
    QCOMPARE(facts.focalPlaneWidthMm.value, 36.0);
    QVERIFY(!facts.raw && !facts.crop.Known() && !facts.distanceM.Known() && !facts.distortionDone.Known());
}

void tst_PictureFacts::makerNotes()
{
    // Version "0201": cameras scramble it with serial number and shutter count, which this file doesn't have.
    const PictureFacts nikon = Facts({{"Exif.Image.Make", "NIKON CORPORATION"},
                                      {"Exif.NikonLd2.Version", "48 50 48 49"},
                                      {"Exif.NikonLd2.LensIDNumber", "165"},
                                      {"Exif.NikonLd2.FocusDistance", "80"}});
    QVERIFY(nikon.lensIds.size() == 1 && nikon.lensIds[0].value == QLatin1String("165"));
    QCOMPARE(nikon.distanceM.value, 1.0); // 0.01 m * 10^(80 / 40)
    QCOMPARE(nikon.distanceM.source, QStringLiteral("maker note"));
    const PictureFacts canon = Facts({{"Exif.Image.Make", "Canon"}, {"Exif.CanonCs.LensType", "65535"}});
    QVERIFY(canon.lensIds.isEmpty() && canon.lensNames.isEmpty());
}

void tst_PictureFacts::distances()
{
    const struct {
        const char *value;
        double expected; // 0: unknown
    } rows[] = {
        {"25/10", 2.5}, {"0/1", 0.0}, {"0/0", 0.0}, {"4294967295/1", HUGE_VAL}, {"4294967295/4294967295", HUGE_VAL}};
    for (const auto &row : rows) {
        const PictureFacts facts = Facts({{"Exif.Photo.SubjectDistance", row.value}});
        QVERIFY2(facts.distanceM.value == row.expected && facts.distanceM.Known() == (row.expected > 0.0), row.value);
    }
}

void tst_PictureFacts::crop()
{
    const Values cropped = {{"Xmp.crs.HasCrop", "True"},
                            {"Xmp.crs.CropLeft", "0.25"},
                            {"Xmp.crs.CropTop", "0.125"},
                            {"Xmp.crs.CropRight", "0.75"},
                            {"Xmp.crs.CropBottom", "1"}};
    QVERIFY(!Facts(cropped).crop.Known()); // settings that are not applied yet
    const auto applied = cropped + Values{{"Xmp.crs.AlreadyApplied", "True"}};
    QCOMPARE(Facts(applied).crop.value, QRectF(0.25, 0.125, 0.5, 0.875));
    QVERIFY(!Facts(applied).cropTurned);
    QVERIFY(!Facts(applied).cropLost);
    QVERIFY(Facts(applied + Values{{"Xmp.crs.CropAngle", "-1.5"}}).cropTurned);
    for (const char *left : {"0.8", "0.75", "-0.1", "x", "nan"}) { // CropRight is 0.75
        const PictureFacts lost = Facts(applied + Values{{"Xmp.crs.CropLeft", left}});
        QVERIFY2(lost.cropLost && !lost.crop.Known(), left);
    }
}

void tst_PictureFacts::doneBefore()
{
    const struct {
        const char *name;
        Values values;
        const char *done; // letters of the corrections already made
    } rows[] = {
        {"a raw converter's profile", {{"Xmp.crs.AlreadyApplied", "True"}, {"Xmp.crs.LensProfileEnable", "1"}}, "dv"},
        {"only its distortion",
         {{"Xmp.crs.AlreadyApplied", "True"},
          {"Xmp.crs.LensProfileEnable", "1"},
          {"Xmp.crs.LensProfileVignettingScale", "0"}},
         "d"},
        {"lateral color", {{"Xmp.crs.AlreadyApplied", "True"}, {"Xmp.crs.AutoLateralCA", "1"}}, "c"},
        {"not applied yet", {{"Xmp.crs.AlreadyApplied", "False"}, {"Xmp.crs.LensProfileEnable", "1"}}, ""},
        {"our own record", {{"Xmp.vitrelux.Corrections", "distortion, lateral color"}}, "dc"},
        {"a phone", {{"Exif.Image.Make", "Apple"}, {"Exif.Image.Model", "iPhone 12"}}, "dcv"},
        {"an old drone", {{"Exif.Image.Make", "DJI"}, {"Exif.Image.Model", "FC6310"}}, ""},
        {"a newer drone", {{"Exif.Image.Make", "DJI"}, {"Exif.Image.Model", "FC7303"}}, "dcv"},
        {"a switch that is on", {{"Exif.Image.Make", "NIKON"}, {"Exif.Nikon3.VignetteControl", "3"}}, "v"},
        {"a switch that is off", {{"Exif.Image.Make", "NIKON"}, {"Exif.Nikon3.VignetteControl", "0"}}, ""},
        {"three switches on",
         {{"Exif.Image.Make", "Canon"}, {"Exif.Canon.VignettingCorr2", "32 0 0 0 0 1 1 1"}},
         "dcv"},
        {"one of three switches on",
         {{"Exif.Image.Make", "Canon"}, {"Exif.Canon.VignettingCorr2", "32 0 0 0 0 1 0 0"}},
         "v"},
    };
    for (const auto &row : rows) {
        const PictureFacts facts = Facts(row.values);
        const QByteArray done = QByteArray(facts.distortionDone.value ? "d" : "")
            + (facts.chromaticDone.value ? "c" : "") + (facts.vignettingDone.value ? "v" : "");
        QVERIFY2(done == row.done, QByteArray(row.name) + ": " + done);
        QVERIFY2(facts.vignettingDone.value == facts.vignettingDone.Known(), row.name);
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
