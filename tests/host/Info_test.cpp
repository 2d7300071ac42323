// What the program says of pictures, and the profiles that it finds for them.
#include "ProgramRun.h"
#include "TestFiles.h"

#include <QDir>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>

#include <exiv2/exiv2.hpp>

namespace {

constexpr char kProfile[] = "lenses/Canon/Canon EOS 40D (Canon EF-S 10-22mm).lcp";

/// A Canon EOS 40D with the lens "SHORTEST LONGEST NUMBER".
Exiv2::ExifData CanonExif(const char *longAndShort, uint16_t number)
{
    Exiv2::ExifData exif;
    exif["Exif.Image.Make"] = "Canon";
    exif["Exif.Image.Model"] = "Canon EOS 40D";
    exif["Exif.Image.Orientation"] = uint16_t(6);
    exif["Exif.Photo.FocalLength"] = Exiv2::Rational(20, 1);
    exif["Exif.Photo.ExposureTime"] = Exiv2::Rational(1, 160);
    exif["Exif.Photo.FNumber"] = Exiv2::Rational(71, 10);
    exif["Exif.Photo.ISOSpeedRatings"] = uint16_t(100);
    exif["Exif.Photo.DateTimeOriginal"] = "2008:07:30 15:56:01"; // summer time, where there is one
    exif["Exif.GPSInfo.GPSLatitude"] = "45/1 30/1 15/1";
    exif["Exif.GPSInfo.GPSLatitudeRef"] = "S";
    exif["Exif.GPSInfo.GPSLongitude"] = "11/1 15/1 0/1";
    exif["Exif.GPSInfo.GPSLongitudeRef"] = "E";
    exif["Exif.CanonCs.Lens"] = longAndShort;
    exif["Exif.CanonCs.LensType"] = number;
    return exif;
}

void GiveExif(const QString &path, const Exiv2::ExifData &exif)
{
    const auto image = Exiv2::ImageFactory::open(path.toStdString());
    image->setExifData(exif);
    image->writeMetadata();
}

} // namespace

class InfoTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void json();
    void text();
    void profile_data();
    void profile();
    void correctLooksUp();
    void storedFolder();
    void unreadableGoesOn();

private:
    QString Path(const char *name) const { return m_dir->filePath(QString::fromUtf8(name)); }
    ProgramResult Run(const QStringList &arguments);
    QJsonObject Json(const char *picture);

    QScopedPointer<QTemporaryDir> m_dir;
};

void InfoTest::init()
{
    m_dir.reset(new QTemporaryDir);
    for (const char *folder : {"lenses/Canon", "tmp", "config/Brelt"})
        QVERIFY(QDir().mkpath(Path(folder)));
    WriteJpeg(Path("canon.jpg"), 12, 8);
    GiveExif(Path("canon.jpg"), CanonExif("22 10 1", 235));
    WriteBytes(Path(kProfile), ProfileText({true, true, true}, 12, 8));
}

/// In a zone with summer time, and with a folder for temporary files, where none of the program's stays.
ProgramResult InfoTest::Run(const QStringList &arguments)
{
    ProgramRun run;
    run.Set("TMPDIR", Path("tmp"));
    run.Set("XDG_CONFIG_HOME", Path("config"));
    run.Set("TZ", QStringLiteral("CET-1CEST,M3.5.0,M10.5.0/3"));
    const ProgramResult result = run.Run(arguments);
    if (!Names(Path("tmp")).filter(QStringLiteral("vitrelux")).isEmpty())
        QTest::qFail("temporary files left", __FILE__, __LINE__);
    return result;
}

QJsonObject InfoTest::Json(const char *picture)
{
    const ProgramResult result = Run({QStringLiteral("info"), QStringLiteral("--json"), QStringLiteral("--lens-path"),
                                      Path("lenses"), Path(picture)});
    return result.exitCode == 0 ? QJsonDocument::fromJson(result.output).object() : QJsonObject();
}

void InfoTest::json()
{
    const QJsonObject facts = Json("canon.jpg");
    const QJsonObject expected{
        {QStringLiteral("path"), Path("canon.jpg")},
        {QStringLiteral("width"), 12},
        {QStringLiteral("height"), 8},
        {QStringLiteral("depth"), 8},
        {QStringLiteral("channels"), 3},
        {QStringLiteral("format"), QStringLiteral("JPEG")},
        {QStringLiteral("maker"), QStringLiteral("Canon")},
        {QStringLiteral("model"), QStringLiteral("Canon EOS 40D")},
        {QStringLiteral("lensId"), QStringLiteral("10 22 235")},
        {QStringLiteral("lenses"), QJsonArray{QStringLiteral("Canon EF-S 10-22mm f/3.5-4.5 USM")}},
        {QStringLiteral("lensKind"), QStringLiteral("standard")},
        {QStringLiteral("exposureTime"), 0.00625},
        {QStringLiteral("fNumber"), 7.1},
        {QStringLiteral("exposureValue"), 12.9776}, // log2(7.1^2 * 160)
        {QStringLiteral("iso"), 100},
        {QStringLiteral("date"), QStringLiteral("2008-07-30T15:56:01")},
        {QStringLiteral("latitude"), -(45 + 30 / 60.0 + 15 / 3600.0)},
        {QStringLiteral("longitude"), 11.25},
        {QStringLiteral("orientation"), 6},
        {QStringLiteral("metadata"), QJsonArray{QStringLiteral("EXIF")}},
        {QStringLiteral("profile"), Path(kProfile)},
    };
    QJsonObject rest = facts;
    for (auto fact = expected.begin(); fact != expected.end(); ++fact) {
        const QJsonValue got = rest.take(fact.key());
        if (fact->isDouble())
            QVERIFY2(qAbs(got.toDouble() - fact->toDouble()) < 5e-5, qPrintable(fact.key()));
        else
            QCOMPARE(got, *fact);
    }
    QVERIFY(qAbs(rest.take(QStringLiteral("focalLength")).toDouble() - 20) < 0.01);
    QVERIFY(qAbs(rest.take(QStringLiteral("focalLength35mm")).toDouble() - 32.4) < 0.2); // a sensor of 22.2 x 14.8 mm
    QCOMPARE(rest.keys(), QStringList());
}

void InfoTest::text()
{
    const ProgramResult result = Run({QStringLiteral("info"), QStringLiteral("--exif"), Path("canon.jpg")});
    QCOMPARE(result.exitCode, 0);
    for (const char *line : {"  Size          12 x 8 pixels\n", "  Camera        Canon, Canon EOS 40D\n",
                             "  Exposure      1/160 s, f/7.1, ISO 100\n", "  Taken         2008-07-30 15:56:01\n",
                             "  (02_9003) \"2008:07:30 15:56:01\"", "  (0032_0000) \"Binary Value\""})
        QVERIFY2(result.output.contains(line), line + result.output);
}

void InfoTest::profile_data()
{
    QTest::addColumn<QString>("maker");
    QTest::addColumn<QString>("lens");
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("why");
    const auto row = [](const char *name, const char *maker, const char *lens, int number, const char *why) {
        QTest::newRow(name) << QString::fromLatin1(maker) << QString::fromLatin1(lens) << number
                            << QString::fromLatin1(why);
    };
    row("no file for the lens", "Canon", "85 15 1", 488, "no profile of the camera \"Canon EOS 40D\"");
    row("lens that isn't known", "Canon", "7 7 1", 9999, "the lens \"7 7 9999\" isn't in the table");
    row("several lenses", "Canon", "70 24 1", 137, "several lenses call themselves \"24 70 137\"");
    row("no lens told", "Canon", "22 10 1", 65535, "doesn't tell the lens");
    row("another maker", "SONY", "22 10 1", 235, "Nikon and Canon only");
    row("no metadata", "", "", 0, "neither its metadata nor the table of cameras");
}

void InfoTest::profile()
{
    QFETCH(QString, maker);
    QFETCH(QString, lens);
    QFETCH(int, number);
    QFETCH(QString, why);
    WriteJpeg(Path("p.jpg"), 12, 8);
    if (!maker.isEmpty()) {
        Exiv2::ExifData exif = CanonExif(lens.toLatin1().constData(), static_cast<uint16_t>(number));
        exif["Exif.Image.Make"] = maker.toStdString();
        exif["Exif.Photo.FocalLengthIn35mmFilm"] = uint16_t(32);
        GiveExif(Path("p.jpg"), exif);
    }
    const QString told = Json("p.jpg").value(QStringLiteral("noProfile")).toString();
    QVERIFY2(told.contains(why), qPrintable(told));
    const ProgramResult corrected = Run(
        {QStringLiteral("correct"), QStringLiteral("--lens-path"), Path("lenses"), Path("p.jpg"), Path("canon.jpg")});
    QCOMPARE(corrected.exitCode, 1);
    QVERIFY2(corrected.error.contains(why.toUtf8()), corrected.error);
    QCOMPARE(corrected.output, Path("canon_corrected.tiff\n").toUtf8()); // the other one goes on
}

void InfoTest::correctLooksUp()
{
    QVERIFY(Run({QStringLiteral("correct"), QStringLiteral("--profile"), Path(kProfile), Path("canon.jpg"),
                 QStringLiteral("-o"), Path("named")})
                .exitCode
            == 0);
    const ProgramResult found =
        Run({QStringLiteral("correct"), QStringLiteral("--lens-path"), Path("lenses"), Path("canon.jpg")});
    QCOMPARE(found.exitCode, 0);
    QVERIFY2(found.error.contains("profile \"" + Path(kProfile).toUtf8() + "\"\n"), found.error);
    QVERIFY(!ReadBytes(Path("canon_corrected.tiff")).isEmpty());
    QCOMPARE(ReadBytes(Path("canon_corrected.tiff")), ReadBytes(Path("named/canon_corrected.tiff")));
}

void InfoTest::storedFolder()
{
    const QStringList info{QStringLiteral("info"), Path("canon.jpg")};
    QVERIFY(Run(info).output.contains("none: no folder of profiles is known"));
    WriteBytes(Path("config/Brelt/vitrelux.ini"),
               "[Plugins]\n6E8A21D4-93B7-4C05-A1F6-70C3D2E95B18\\LensPath=" + Path("lenses").toUtf8() + '\n');
    const QByteArray before = ReadBytes(Path("config/Brelt/vitrelux.ini"));
    QVERIFY(Run(info).output.contains(Path(kProfile).toUtf8()));
    QCOMPARE(ReadBytes(Path("config/Brelt/vitrelux.ini")), before);
    QVERIFY(Run(info + QStringList{QStringLiteral("--lens-path"), Path("none")})
                .output.contains("none: there is no folder"));
}

void InfoTest::unreadableGoesOn()
{
    QImage grey(4, 3, QImage::Format_Grayscale8);
    grey.fill(100);
    QVERIFY(grey.save(Path("grey.jpg")));
    GiveExif(Path("grey.jpg"), CanonExif("22 10 1", 235));
    WriteBytes(Path("bad.jpg"), "no picture");
    const ProgramResult result = Run({QStringLiteral("info"), Path("bad.jpg"), Path("gone.jpg"), Path("grey.jpg")});
    QCOMPARE(result.exitCode, 1);
    QCOMPARE(result.errorLines.size(), 2);
    for (const char *line : {"8 bits, 1 channel\n", "Canon EOS 40D", "gray pictures are not supported"})
        QVERIFY2(result.output.contains(line), line + result.output); // told all the same
}

QTEST_GUILESS_MAIN(InfoTest)
#include "Info_test.moc"
