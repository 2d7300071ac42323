// Profiles in all XML forms: each gives the same entries, and problems are reported with their line numbers.
#include "Case.h"
#include "InputLimits.h"
#include "LensProfile.h"
#include "SpelledProfile.h"
#include "Table.h"

#include <QTemporaryDir>
#include <QtTest>

#include <locale>

namespace {

QString Text(const char *name, const std::optional<ProfileModel> &model)
{
    if (!model)
        return QString();
    QStringList numbers;
    for (double value : {model->focalLengthX, model->centerX, model->centerY, model->scaleFactor, model->tangential1,
                         model->tangential2})
        numbers << QString::number(value, 'g', 12);
    for (double value : model->coefficients)
        numbers << QString::number(value, 'g', 12);
    return QStringLiteral(" %1(%2)").arg(QLatin1String(name), numbers.join(QLatin1Char(' ')));
}

/// Returns all values of the entries, without line numbers and notes.
QString Text(const LensProfile &profile)
{
    QString text;
    for (const ProfileEntry &e : profile.entries) {
        text += QStringList{e.make,   e.model,    e.uniqueModel, e.cameraName, e.lens,
                            e.lensId, e.lensName, e.lensInfo,    e.profileName}
                    .join(QLatin1Char('|'));
        for (double value : {e.focalMm, e.apertureApex, e.distanceM, e.width, e.height, e.sensorFormatFactor,
                             double(e.hasAperture), double(e.raw), double(e.kind == ProfileEntry::Kind::Fisheye)})
            text += QLatin1Char(' ') + QString::number(value, 'g', 12);
        text += Text("geometry", e.geometry) + Text("green", e.green) + Text("red", e.redGreen)
            + Text("blue", e.blueGreen) + Text("light", e.vignette) + QLatin1Char('\n');
    }
    return text;
}

SpelledNode Model(const char *name, const QByteArray &prefix, const QList<QByteArray> &coefficients)
{
    SpelledNode model{name, {}, {}};
    for (int i = 0; i < coefficients.size(); ++i)
        model.values.append(SpelledValue{prefix + QByteArray::number(i + 1), coefficients[i]});
    return model;
}

/// Returns a perspective entry with all models, one with inherited values, and a fisheye.
QList<SpelledNode> Entries()
{
    SpelledNode green = Model("ChromaticGreenModel", "RadialDistortParam", {"-0.27", "0.0912"});
    green.values += {{"FocalLengthX", "0.6776"}, {"ImageXCenter", "0.49"}, {"ImageYCenter", "0.515"}};
    SpelledNode red = Model("ChromaticRedGreenModel", "RadialDistortParam", {"0.000125", "-0.0003"});
    red.values.prepend(SpelledValue{"ScaleFactor", "1.00055"});
    SpelledNode blue = Model("ChromaticBlueGreenModel", "RadialDistortParam", {"-0.0004"});
    blue.values.append(SpelledValue{"TangentialDistortParam2", "0.00007"});
    SpelledNode lens = Model("PerspectiveModel", "RadialDistortParam", {"-0.2631", "0.0902", "0.0125"});
    lens.values += {{"Version", "2"},
                    {"FocalLengthX", "0.6775"},
                    {"FocalLengthY", "0.6775"},
                    {"ImageXCenter", "0.505"},
                    {"ImageYCenter", "0.4975"},
                    {"TangentialDistortParam1", "0.0011"},
                    {"ResidualMeanError", "0.1"}};
    lens.models = {green, red, blue, Model("VignetteModel", "VignetteModelParam", {"-0.75", "0.5", "-0.35"})};
    SpelledNode first{"",
                      {{"Make", "Maker"},
                       {"Model", "MODEL 7"},
                       {"UniqueCameraModel", "Unique"},
                       {"CameraPrettyName", "Pretty body"},
                       {"Lens", "Lens 24"},
                       {"LensInfo", "88/10 24 2 4"},
                       {"ProfileName", "Name"},
                       {"LensID", "0x10 text"},
                       {"ImageWidth", "5464"},
                       {"ImageLength", "3640"},
                       {"FocalLength", "8.8"},
                       {"ApertureValue", "2.97"},
                       {"FocusDistance", "0.32"},
                       {"SensorFormatFactor", "2.7"},
                       {"CameraRawProfile", "True"},
                       {"LensPrettyName", "24 mm"}},
                      {lens}};
    SpelledNode bare{"",
                     {{"ImageWidth", "6000"},
                      {"ImageLength", "4000"},
                      {"FocalLength", "24.5"},
                      {"FocusDistance", "10000"},
                      {"SensorFormatFactor", "1.5"},
                      {"CameraRawProfile", "False"}},
                     {Model("PerspectiveModel", "RadialDistortParam", {"-0.02"})}};
    bare.models[0].models = {Model("VignetteModel", "VignetteModelParam", {"-1.25"})};
    SpelledNode fisheye{"",
                        {{"FocalLength", "10.5"}, {"CameraRawProfile", "true"}},
                        {Model("FisheyeModel", "RadialDistortParam", {"0.01", "-0.02", "0.003"})}};
    fisheye.models[0].values.append(SpelledValue{"FocalLengthX", "0.45"});
    return {first, bare, fisheye};
}

const QByteArray kFrame = "<s:FocalLength>50</s:FocalLength><s:ImageWidth>6000</s:ImageWidth>\n"
                          "<s:ImageLength>4000</s:ImageLength><s:SensorFormatFactor>1</s:SensorFormatFactor>\n";
const QByteArray kRadial = "<s:RadialDistortParam1>-0.1</s:RadialDistortParam1>\n";

/// Returns a profile of one entry with these elements.
QByteArray Small(const QByteArray &elements = kFrame + "<s:PerspectiveModel>" + kRadial + "</s:PerspectiveModel>")
{
    return "<r:RDF xmlns:r='http://www.w3.org/1999/02/22-rdf-syntax-ns#'\n"
           " xmlns:s='http://ns.adobe.com/photoshop/1.0/camera-profile'><CameraProfiles><r:Seq>\n"
           "<r:li r:parseType='Resource'>\n"
        + elements + "</r:li></r:Seq></CameraProfiles></r:RDF>";
}

} // namespace

class tst_LensProfile : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void everySpellingReadsTheSame();
    void oddities_data();
    void oddities();
    void refused_data();
    void refused();
    void manyEntries();
    void files();
};

void tst_LensProfile::everySpellingReadsTheSame()
{
    // Sub-models inherit center and focal length from the distortion model, but no tangential terms. A missing
    // FocalLengthX is computed: 24.5 mm divided by 24 mm, the long side of a 3 : 2 frame with a crop factor of 1.5.
    const QString expected = QStringLiteral(
        "Maker|MODEL 7|Unique|Pretty body|Lens 24|0x10 text|24 mm|88/10 24 2 4|Name 8.8 2.97 0.32 5464 3640 2.7 1 1 0 "
        "geometry(0.6775 0.505 0.4975 1 0.0011 0 -0.2631 0.0902 0.0125) green(0.6776 0.49 0.515 1 0 0 -0.27 0.0912) "
        "red(0.6775 0.505 0.4975 1.00055 0 0 0.000125 -0.0003) blue(0.6775 0.505 0.4975 1 0 7e-05 -0.0004) "
        "light(0.6775 0.505 0.4975 1 0 0 -0.75 0.5 -0.35)\n"
        "|||||||| 24.5 0 inf 6000 4000 1.5 0 0 0 geometry(1.02083333333 0.5 0.5 1 0 0 -0.02) "
        "light(1.02083333333 0.5 0.5 1 0 0 -1.25)\n"
        "|||||||| 10.5 0 0 0 0 0 0 1 1 geometry(0.45 0.5 0.5 1 0 0 0.01 -0.02 0.003)\n");
    for (int i = 0; i < kSpellings; ++i) {
        const Case named("spelling", i);
        QString error;
        const LensProfile profile = ParseLensProfile(SpelledProfile(Entries(), Spelling(i)), QString(), &error);
        QVERIFY2(Text(profile) == expected, qPrintable(error + Text(profile)));
        const ProfileEntry &entry = profile.entries[0];
        QCOMPARE((entry.alternateLensNames + entry.alternateLensIds).join(QLatin1Char('|')),
                 Spelling(i) == Spelling::Decorated ? QStringLiteral("Other name|Third|12") : QString());
    }
    // The process's locale has no effect.
    struct Comma : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
    };
    const std::locale before = std::locale::global(std::locale(std::locale::classic(), new Comma));
    QLocale::setDefault(QLocale(QLocale::German));
    const QString german = Text(ParseLensProfile(SpelledProfile(Entries(), Spelling::Rationals), QString(), nullptr));
    QLocale::setDefault(QLocale::c());
    std::locale::global(before);
    QCOMPARE(german, expected);
}

void tst_LensProfile::oddities_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("expected"); // see the table
    const auto filled = [](QString cell) {
        return cell.replace(QLatin1String("FAR"), QString(81, QLatin1Char('9')))
            .replace(QLatin1String("SHOWN"), QString(80, QLatin1Char('9')))
            .replace(QLatin1String("FRAME"), QString::fromLatin1(kFrame))
            .replace(QLatin1String("RADIAL"), QString::fromLatin1(kRadial));
    };
    for (const QStringList &row : ReadTable(QStringLiteral(ODDITIES)))
        QTest::newRow(qPrintable(row[0])) << Small(filled(row[1]).toLatin1()) << filled(row[2]);
}

void tst_LensProfile::oddities()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, expected);
    QString error;
    const LensProfile profile = ParseLensProfile(content, QString(), &error);
    const ProfileEntry entry = profile.entries.value(0);
    QString text = error + QLatin1String(entry.geometry ? "distortion" : "")
        + QLatin1String(entry.green ? " green" : "") + QLatin1String(entry.redGreen ? " red" : "")
        + QLatin1String(entry.blueGreen ? " blue" : "") + QLatin1String(entry.vignette ? " light" : "")
        + QLatin1String(entry.raw ? ", raw" : "");
    for (const ProfileNote &one : error.isEmpty() ? profile.notes : QVector<ProfileNote>())
        text += QStringLiteral("\n%1: %2").arg(one.line).arg(one.text) + QLatin1String(one.unusable ? "!" : "");
    QCOMPARE(text, expected);
}

void tst_LensProfile::refused_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("error");
    const auto row = [](const char *name, const QByteArray &content, const char *error) {
        QTest::newRow(name) << content << QString::fromLatin1(error);
    };
    const QByteArray whole = Small();
    const char *const noEntry = "no entry (rdf:li in photoshop:CameraProfiles) in the file";
    row("empty", "", "not a complete XML document: line 1: Premature end of document.");
    row("cut off", whole.left(whole.size() - 20), "not a complete XML document: line 7: Premature end of document.");
    row("no entries", "<r:RDF xmlns:r='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><r:Seq/></r:RDF>", noEntry);
    row("outside the profiles",
        QByteArray(whole).replace("<CameraProfiles>", "<CameraProfiles/><a>").replace("</CameraProfiles>", "</a>"),
        noEntry);
    row("another namespace", QByteArray(whole).replace("camera-profile", "camera-profile2"),
        "none of its 1 entries can be used: line 3: no perspective or fisheye model");
    row("an unknown prefix", QByteArray(whole).replace("xmlns:s=", "xmlns:z="),
        "not a complete XML document: line 4: Namespace prefix 's' not declared");
    row("not a complete XML document: line 1: the document declares entities", "<!DOCTYPE a [<!ENTITY b 'c'>]>" + whole,
        "not a complete XML document: line 1: the document declares entities");
    row("nested too deeply", QByteArray("<a>").repeated(kMaxXmlDepth + 1),
        "not a complete XML document: line 1: elements nest deeper than 256 levels");
    row("many elements", "<a>" + QByteArray("<b/>").repeated(kMaxXmlNodes) + "</a>",
        "not a complete XML document: line 1: more than 500000 elements, attributes and comments");
    row("as deep as allowed", QByteArray("<a>").repeated(kMaxXmlDepth),
        "not a complete XML document: line 1: Premature end of document.");
    row("as many elements as allowed", "<a>" + QByteArray("<b/>").repeated(kMaxXmlNodes - 1) + "</a>", noEntry);
}

void tst_LensProfile::refused()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, error);
    QString why;
    const LensProfile profile = ParseLensProfile(content, QString(), &why);
    QVERIFY(profile.entries.isEmpty());
    QCOMPARE(why, error);
}

void tst_LensProfile::manyEntries()
{
    QList<SpelledNode> entries;
    for (int i = 0; i < 600; ++i) {
        SpelledNode entry = Entries().at(1);
        entry.values[2].second = QByteArray::number(20 + i % 40); // each focal length 15 times
        entries.append(entry);
    }
    const LensProfile profile = ParseLensProfile(SpelledProfile(entries, Spelling::Attributes), QString(), nullptr);
    QCOMPARE(profile.entries.size(), 600);
    QCOMPARE(profile.notes.size(), 600 - 40);
    const ProfileNote &last = profile.notes.last();
    QCOMPARE(QStringLiteral("%1 %2 %3").arg(last.entry).arg(last.line).arg(last.text),
             QStringLiteral("559 %1 the same focal length, distance and aperture as entry 600, line %2, which is used")
                 .arg(profile.entries[559].line)
                 .arg(profile.entries[599].line));
}

void tst_LensProfile::files()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("a.lcp"));
    QString error;
    const QPair<QString, const char *> unread[] = {{path, "No such file or directory"},
                                                   {folder.path(), "file to open is a directory"},
                                                   {QStringLiteral("/dev/null"), "not a regular file"},
                                                   {QStringLiteral("/proc/self/mem"), "Input/output error"}};
    for (const auto &[name, why] : unread) {
        QVERIFY(ReadLensProfile(name, &error).entries.isEmpty());
        QCOMPARE(error, QString::fromLatin1(why));
    }
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(Small()) > 0);
    file.close();
    QCOMPARE(ReadLensProfile(path, &error).path, path);
    QVERIFY(file.open(QIODevice::Append) && file.write(QByteArray(int(kMaxXmlBytes), ' ')) > 0);
    file.close();
    QVERIFY(ReadLensProfile(path, &error).entries.isEmpty());
    QCOMPARE(error, QStringLiteral("the file is larger than 16 MiB"));
}

QTEST_APPLESS_MAIN(tst_LensProfile)
#include "LensProfile_test.moc"
