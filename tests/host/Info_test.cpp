// Tests of `vitrelux info`: facts about pictures, and the profiles found for them.
#include "Case.h"
#include "ExpectedText.h"
#include "ProgramTest.h"

#include <QColorSpace>
#include <QDir>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <exiv2/exiv2.hpp>
#include <sys/stat.h>

namespace {

const QString kProfile = "lenses/Canon/Canon EOS 40D (Canon EF-S 10-22mm).lcp"_s;

/// Returns the EXIF data of a Canon EOS 40D. @p longAndShort is "LONGEST SHORTEST UNIT" (focal lengths of the lens, and
/// their units per mm), @p number the lens type.
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
    exif["Exif.Photo.DateTimeOriginal"] = "2008:07:30 15:56:01"; // daylight saving time must not shift it
    exif["Exif.GPSInfo.GPSLatitude"] = "45/1 30/1 15/1";
    exif["Exif.GPSInfo.GPSLatitudeRef"] = "S";
    exif["Exif.GPSInfo.GPSLongitude"] = "11/1 15/1 0/1";
    exif["Exif.GPSInfo.GPSLongitudeRef"] = "W";
    exif["Exif.GPSInfo.GPSImgDirection"] = "3705/20";
    exif["Exif.GPSInfo.GPSImgDirectionRef"] = "M";
    exif["Exif.Photo.ExposureBiasValue"] = "-3/4";
    exif["Exif.CanonCs.Lens"] = longAndShort;
    exif["Exif.CanonCs.LensType"] = number;
    return exif;
}

void SetExif(const QString &path, const Exiv2::ExifData &exif)
{
    const auto image = Exiv2::ImageFactory::open(path.toStdString());
    image->setExifData(exif);
    image->iptcData()["Iptc.Application2.City"] = "Sydney";
    image->xmpData()["Xmp.xmp.Rating"] = "4";
    const QByteArray srgb = QColorSpace(QColorSpace::SRgb).iccProfile();
    Exiv2::DataBuf icc(reinterpret_cast<const Exiv2::byte *>(srgb.constData()), srgb.size());
    image->setIccProfile(icc, false);
    image->writeMetadata();
}

} // namespace

class InfoTest : public ProgramTest {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup() { QCOMPARE(Names(Path("tmp"_s)).filter("vitrelux"_s), QStringList()); }
    void json();
    void text();
    void incompleteExif();
    void profile();
    void correctLooksUp();
    void storedFolder();
    void continuesAfterUnreadable();

private:
    QJsonObject Json(const QString &picture)
    {
        return QJsonDocument::fromJson(Run("info --plain --json --lens-path lenses "_s + picture).output).object();
    }
};

/// Creates a picture with a matching profile, and sets a time zone with daylight saving time.
void InfoTest::init()
{
    ProgramTest::init();
    for (const QString &folder : {"lenses/Canon"_s, "tmp"_s, "config/Brelt"_s})
        QVERIFY2(QDir().mkpath(Path(folder)), qPrintable(folder));
    SetExif(Path("a.jpg"_s), CanonExif("22 10 1", 235));
    QVERIFY(QFile::copy(Path("p.lcp"_s), Path(kProfile)));
    m_run->Set("TMPDIR", Path("tmp"_s));
    m_run->Set("XDG_CONFIG_HOME", Path("config"_s));
    m_run->Set("TZ", "CET-1CEST,M3.5.0,M10.5.0/3"_s);
}

void InfoTest::json()
{
    const QByteArray expected = ExpectedText("vitrelux info --json a.jpg").replace("%1", Path(kProfile).toUtf8());
    QCOMPARE(QJsonDocument(Json("a.jpg"_s)), QJsonDocument::fromJson(expected));
}

void InfoTest::text()
{
    const QByteArray profile = Path(kProfile).toUtf8();
    const ProgramResult result = Run("info --plain --lens-path lenses --exif a.jpg"_s);
    QCOMPARE(result.exitCode, 0);
    QVERIFY2(result.output.startsWith(ExpectedText("vitrelux info a.jpg").replace("%1", profile) + "  (  Tag  ) ---"),
             result.output);
    for (const char *line : {"  (02_9003) \"2008:07:30 15:56:01\"", "  (0032_0000) \"Binary Value\""})
        QVERIFY2(result.output.contains(line), line + result.output);
}

/// If only some EXIF values are present, they are shown unchanged, and nothing is invented.
void InfoTest::incompleteExif()
{
    const struct {
        const char *tag, *value, *key; // key: name of the fact
        double number;                 // NaN: the fact is missing
        const char *line = "";         // of the text
    } rows[] = {
        {"Exif.Photo.ShutterSpeedValue", "740/100", "exposureTime", 0.00592077}, // 2^-7.4 s
        {"Exif.Photo.ShutterSpeedValue", "-1/1", "exposureTime", 2, "Exposure      2 s"},
        {"Exif.Photo.ExposureTime", "3/10", "exposureTime", 0.3, "Exposure      0.3 s"},
        {"Exif.Photo.ExposureTime", "1/4", "exposureTime", 0.25, "Exposure      1/4 s"},
        {"Exif.Photo.ExposureTime", "0/1", "exposureTime", qQNaN()},
        {"Exif.Photo.ExposureBiasValue", "0/3", "exposureBias", qQNaN()},
        {"Exif.Photo.FocalLength", "34/1", "focalLength", 34, "Focal length  34 mm"}, // of an unknown camera
        {"Exif.Photo.FocalLength", "1/3", "focalLength", 0.333333, "Focal length  0.333333 mm"},
        {"Exif.Photo.FocalLength", "0/1", "focalLength", qQNaN()},
        {"Exif.Photo.ISOSpeedRatings", "1", "iso", 1, "Exposure      ISO 1"},
        {"Exif.Photo.ISOSpeedRatings", "0", "iso", qQNaN()},
        {"Exif.Photo.FNumber", "4/1", "focalLength", qQNaN()}, // no default of 50 mm
        {"Exif.Photo.FNumber", "4/1", "fNumber", 4, "Exposure      f/4"},
        {"Exif.Image.Model", "Canon", "maker", qQNaN(), "Camera        Canon"},
        {"Exif.Image.Orientation", "1", "orientation", 1, "Orientation   upright (1)"},
        {"Exif.Image.Orientation", "8", "orientation", 8,
         "Orientation   to be rotated by 90\u00b0 counterclockwise (8)"},
        {"Exif.Image.Orientation", "9", "orientation", qQNaN()},
        {"Exif.GPSInfo.GPSImgDirection", "0/1", "direction", 0, "Direction     0\u00b0"},
        {"Exif.GPSInfo.GPSLatitude", "0/0 0/0 0/0", "latitude", qQNaN()},
        {"Exif.GPSInfo.GPSLatitude", "0/1 0/1 0/1", "latitude", 0, "Place         0\u00b0 North, 0\u00b0 East"},
        {"Exif.GPSInfo.GPSLatitude", "45/1 0/1 0/1", "latitude", 45, "Place         45\u00b0 North, 0\u00b0 East"},
    };
    for (const auto &row : rows) {
        const Case named(row.tag, row.value);
        Exiv2::ExifData exif;
        exif[row.tag].setValue(row.value);
        exif["Exif.GPSInfo.GPSLatitudeRef"] = "N";
        exif["Exif.GPSInfo.GPSLongitude"] = "0/1 0/1 0/1";
        SetExif(Path("b.jpg"_s), exif);
        const QJsonValue fact = Json("b.jpg"_s).value(QLatin1String(row.key));
        QCOMPARE(fact.isUndefined(), qIsNaN(row.number));
        QVERIFY(fact.isUndefined() || qFuzzyCompare(1.0 + fact.toDouble(), 1.0 + row.number)); // six digits
        const QByteArray text = *row.line ? Run("info --plain b.jpg"_s).output : QByteArray();
        QVERIFY2(!*row.line || text.contains("\n  " + QByteArray(row.line) + '\n'), text);
    }
}

void InfoTest::profile()
{
    const struct {
        const char *why, *maker, *lens;
        uint16_t number;
    } rows[] = {{"neither its metadata nor the table of cameras", "", "", 0},
                {"no profile of the camera \"Canon EOS 40D\"", "Canon", "85 15 1", 488},
                {"the lens \"7 7 9999\" isn't in the table", "Canon", "7 7 1", 9999},
                {"several lenses identify themselves as \"24 70 137\"", "Canon", "70 24 1", 137},
                {"doesn't name the lens", "Canon", "22 10 1", 65535},
                {"only for Nikon and Canon", "SONY", "22 10 1", 235}};
    for (const auto &row : rows) {
        const Case named(row.why);
        if (*row.maker) {
            Exiv2::ExifData exif = CanonExif(row.lens, row.number);
            exif["Exif.Image.Make"] = row.maker;
            exif["Exif.Photo.FocalLengthIn35mmFilm"] = uint16_t(32);
            SetExif(Path("b.jpg"_s), exif);
        }
        const QString reason = Json("b.jpg"_s).value("noProfile"_s).toString();
        QVERIFY2(reason.contains(QLatin1String(row.why)), qPrintable(reason));
        const ProgramResult corrected = Run("correct --plain --overwrite --lens-path lenses b.jpg a.jpg"_s);
        QCOMPARE(corrected.exitCode, 1);
        QVERIFY2(corrected.error.contains(row.why), corrected.error);
        QCOMPARE(corrected.output, Path("a_corrected.tiff\n"_s).toUtf8()); // the other one is still corrected
    }
}

void InfoTest::correctLooksUp()
{
    QCOMPARE(Run("correct --plain --profile p.lcp a.jpg -o named"_s).exitCode, 0);
    const ProgramResult found = Run("correct --plain --lens-path lenses a.jpg"_s);
    QCOMPARE(found.exitCode, 0);
    QVERIFY2(found.error.contains("profile \"" + Path(kProfile).toUtf8() + "\"\n"), found.error);
    QVERIFY(QFile::exists(Path("a_corrected.tiff"_s)));
    QCOMPARE(ReadFile(Path("a_corrected.tiff"_s)), ReadFile(Path("named/a_corrected.tiff"_s)));
}

void InfoTest::storedFolder()
{
    QVERIFY(Run("info --plain a.jpg"_s).output.contains("none: no profile folder is known"));
    const QString settings = Path("config/Brelt/vitrelux.ini"_s);
    WriteFile(settings,
              "[Plugins]\n6E8A21D4-93B7-4C05-A1F6-70C3D2E95B18\\LensPath=" + Path("lenses"_s).toUtf8() + '\n');
    const QByteArray before = ReadFile(settings);
    QVERIFY(Run("info --plain a.jpg"_s).output.contains(Path(kProfile).toUtf8()));
    QCOMPARE(ReadFile(settings), before);
    QVERIFY(Run("info --plain a.jpg --lens-path none"_s).output.contains("none: there is no profile folder"));
    const QByteArray none = "no profile folder; ";
    for (const auto &[stored, line] :
         {std::pair(Path("lenses"_s), Path("lenses\n"_s).toUtf8()), {"lenses"_s, none}, {Path("gone"_s), none}}) {
        WriteFile(settings, "[Plugins]\n6E8A21D4-93B7-4C05-A1F6-70C3D2E95B18\\LensPath=" + stored.toUtf8());
        QVERIFY2(Run("lenses"_s).output.startsWith(line), qPrintable(stored));
    }

    // The plug-in's default isn't an absolute path here; it must not select a folder next to the pictures.
    QVERIFY(QFile::remove(settings));
    QVERIFY(QDir().mkpath(Path("C:/ProgramData/Adobe/CameraRaw/LensProfiles/1.0"_s)));
    QVERIFY(QFile::rename(Path("lenses/Canon"_s), Path("C:/ProgramData/Adobe/CameraRaw/LensProfiles/1.0/Canon"_s)));
    QVERIFY(Run("info --plain a.jpg"_s).output.contains("none: no profile folder is known"));

    QCOMPARE(mkfifo(QFile::encodeName(settings), 0600), 0); // reading it would block forever
    m_run->Set("XDG_CONFIG_DIRS", Path("system"_s));        // ignored along with the user's file
    QVERIFY(QDir().mkpath(Path("system/Brelt"_s)));
    WriteFile(Path("system/Brelt/vitrelux.ini"_s), before);
    const ProgramResult ignored = Run("info --plain a.jpg"_s);
    QVERIFY2(ignored.output.contains("none: no profile folder is known"), ignored.output);
    QCOMPARE(ignored.errorLines,
             QStringList("vitrelux: note: settings file \"%1\" is ignored: not a regular file"_s.arg(settings)));
    QVERIFY(QFile::remove(settings));
    WriteFile(settings, QByteArray((1 << 20) + 1, '\n'));
    for (const char *line : {"info a.jpg", "lenses", "correct -n --plain --profile p.lcp a.jpg"}) {
        const QString reported = Run(QLatin1String(line)).errorLines.value(0);
        QCOMPARE(
            reported,
            "vitrelux: note: settings file \"%1\" is ignored: 1048577 bytes, expected 1048576 at most"_s.arg(settings));
    }
    m_run->Set("TMPDIR", "/proc"_s); // no folder can be created there
    QVERIFY(Run("info --plain a.jpg --lens-path config"_s).output.contains("none: profiles cannot be looked up"));
}

void InfoTest::continuesAfterUnreadable()
{
    QImage gray(4, 3, QImage::Format_Grayscale8);
    gray.fill(100);
    QVERIFY(gray.save(Path("gray.jpg"_s)));
    SetExif(Path("gray.jpg"_s), CanonExif("22 10 1", 235));
    WriteFile(Path("bad.jpg"_s), "no picture");
    const ProgramResult result = Run("info bad.jpg gone.jpg gray.jpg"_s);
    QCOMPARE(result.exitCode, 1);
    QCOMPARE(result.errorLines.size(), 2);
    for (const char *line : {"8 bits, 1 channel\n", "Canon EOS 40D", "lensfun:Canon/", " EXIF, ICC, IPTC, XMP\n"})
        QVERIFY2(result.output.contains(line), line + result.output); // still reported
}

QTEST_GUILESS_MAIN(InfoTest)
#include "Info_test.moc"
