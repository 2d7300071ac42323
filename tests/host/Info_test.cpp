// Tests of `vitrelux info`: facts about pictures, and the profiles found for them.
#include "Case.h"
#include "ExpectedText.h"
#include "ProgramTest.h"
#include "Table.h"

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
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_TABLES "/canon-exif.tsv")))
        exif[row[0].toStdString()] = row[1].toStdString();
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
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_TABLES "/incomplete-exif.tsv"))) {
        const Case named(row);
        Exiv2::ExifData exif;
        exif[row[0].toStdString()].setValue(row[1].toStdString());
        exif["Exif.GPSInfo.GPSLatitudeRef"] = "N";
        exif["Exif.GPSInfo.GPSLongitude"] = "0/1 0/1 0/1";
        SetExif(Path("b.jpg"_s), exif);
        const QJsonValue fact = Json("b.jpg"_s).value(row[2]);
        QCOMPARE(fact.isUndefined(), row[3] == "missing"_s);
        QVERIFY(fact.isUndefined() || qFuzzyCompare(1.0 + fact.toDouble(), 1.0 + row[3].toDouble())); // six digits
        const QByteArray text = Run("info --plain b.jpg"_s).output;
        QVERIFY2(row[4].isEmpty() || text.contains("\n  " + row[4].toUtf8() + '\n'), text);
    }
}

void InfoTest::profile()
{
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_TABLES "/no-profile.tsv"))) {
        const Case named(row);
        const QString why = QString(row[0]).replace("%1"_s, Path("lenses"_s));
        if (!row[1].isEmpty()) {
            Exiv2::ExifData exif = CanonExif(qPrintable(row[2]), row[3].toUShort());
            exif["Exif.Image.Make"] = row[1].toStdString();
            exif["Exif.Photo.FocalLengthIn35mmFilm"] = uint16_t(32);
            SetExif(Path("b.jpg"_s), exif);
        }
        const QString reason = Json("b.jpg"_s).value("noProfile"_s).toString();
        QCOMPARE(reason, why);
        const ProgramResult corrected = Run("correct --plain --overwrite --lens-path lenses b.jpg a.jpg"_s);
        QCOMPARE(corrected.exitCode, 1);
        QVERIFY2(corrected.error.contains("b.jpg: has no lens profile: " + why.toUtf8() + "; to choose one, "),
                 corrected.error);
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
