// Profiles in all XML forms: each gives the same entries, and problems are reported with their line.
#include "Case.h"
#include "InputLimits.h"
#include "LensProfile.h"
#include "SpelledProfile.h"

#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <locale>

namespace {

QString Text(const char *name, const std::optional<ProfileModel> &model)
{
    if (!model)
        return QString();
    QStringList numbers;
    for (double value : {model->focalLengthX, model->centerX, model->centerY, model->scaleFactor, model->tangential1,
                         model->tangential2})
        numbers << QString::number(value, 'g', 17);
    for (double value : model->coefficients)
        numbers << QString::number(value, 'g', 17);
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
            text += QLatin1Char(' ') + QString::number(value, 'g', 17);
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
    SpelledNode fisheye{
        "", {{"FocalLength", "10.5"}}, {Model("FisheyeModel", "RadialDistortParam", {"0.01", "-0.02", "0.003"})}};
    fisheye.models[0].values.append(SpelledValue{"FocalLengthX", "0.45"});
    return {first, bare, fisheye};
}

/// Returns a profile of one entry in element form, with @p elements, and with @p model inside its perspective model.
QByteArray Small(const QByteArray &elements, const QByteArray &model)
{
    return "<r:RDF xmlns:r='http://www.w3.org/1999/02/22-rdf-syntax-ns#'\n"
           " xmlns:s='http://ns.adobe.com/photoshop/1.0/camera-profile'><CameraProfiles><r:Seq>\n"
           "<r:li r:parseType='Resource'>\n<s:FocalLength>50</s:FocalLength><s:ImageWidth>6000</s:ImageWidth>\n"
           "<s:ImageLength>4000</s:ImageLength><s:SensorFormatFactor>1</s:SensorFormatFactor>\n"
        + elements + "<s:PerspectiveModel>" + model + "</s:PerspectiveModel></r:li></r:Seq></CameraProfiles></r:RDF>";
}

QByteArray Value(const char *name, const char *value)
{
    return QByteArray("<s:") + name + '>' + value + "</s:" + name + ">\n";
}

const QByteArray kRadial = Value("RadialDistortParam1", "-0.1");

} // namespace

class tst_LensProfile : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void everySpellingReadsTheSame();
    void valuesAndInheritance();
    void oddities_data();
    void oddities();
    void refused_data();
    void refused();
    void manyEntries();
    void files();
};

void tst_LensProfile::everySpellingReadsTheSame()
{
    QString first;
    for (int i = 0; i < kSpellings; ++i) {
        const Case named("spelling", i);
        QString error;
        const LensProfile profile = ParseLensProfile(SpelledProfile(Entries(), Spelling(i)), QString(), &error);
        QVERIFY2(profile.entries.size() == 3, qPrintable(QStringLiteral("spelling %1: %2").arg(i).arg(error)));
        if (i == 0)
            first = Text(profile);
        QVERIFY2(Text(profile) == first,
                 qPrintable(QStringLiteral("spelling %1:\n%2%3").arg(i).arg(Text(profile), first)));
        const QStringList others = {QStringLiteral("Other name"), QStringLiteral("Third")};
        QCOMPARE(profile.entries[0].alternateLensNames, Spelling(i) == Spelling::Decorated ? others : QStringList());
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
    QCOMPARE(german, first);
}

void tst_LensProfile::valuesAndInheritance()
{
    const LensProfile profile = ParseLensProfile(SpelledProfile(Entries(), Spelling::Attributes), QString(), nullptr);
    const ProfileEntry &first = profile.entries[0], &bare = profile.entries[1], &fisheye = profile.entries[2];
    QVERIFY(first.raw && !bare.raw && first.hasAperture && !bare.hasAperture);
    QVERIFY(std::isinf(bare.distanceM) && fisheye.kind == ProfileEntry::Kind::Fisheye);
    QCOMPARE(first.lensId, QStringLiteral("0x10 text"));
    QCOMPARE(first.geometry->coefficients, (QVector<double>{-0.2631, 0.0902, 0.0125}));
    QCOMPARE(first.geometry->tangential1, 0.0011);
    QCOMPARE(first.geometry->scaleFactor, 1.0);
    // Red inherits center and focal length from the distortion model, not from green's, and no tangential terms.
    QCOMPARE(first.redGreen->focalLengthX, 0.6775);
    QCOMPARE(first.redGreen->centerX, 0.505);
    QCOMPARE(first.redGreen->tangential1, 0.0);
    QCOMPARE(first.redGreen->scaleFactor, 1.00055);
    QCOMPARE(first.blueGreen->tangential2, 0.00007);
    QCOMPARE(first.green->centerY, 0.515);
    // 24.5 mm divided by the long side of a 3 : 2 frame with a diagonal of 43.2666 / 1.5 mm.
    const double longSideMm = std::sqrt(36.0 * 36.0 + 24.0 * 24.0) / 1.5 * 3.0 / std::sqrt(13.0);
    QVERIFY(std::abs(bare.geometry->focalLengthX - 24.5 / longSideMm) < 1e-12);
    QCOMPARE(bare.vignette->focalLengthX, bare.geometry->focalLengthX);
    QCOMPARE(bare.vignette->centerX, 0.5);
    QCOMPARE(fisheye.geometry->coefficients.size(), 3);
}

void tst_LensProfile::oddities_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("line");
    QTest::addColumn<QString>("note"); // part of it
    QTest::addColumn<bool>("unusable");
    const auto row = [](const char *name, const QByteArray &content, int line, const char *note,
                        bool unusable = false) {
        QTest::newRow(name) << content << line << QString::fromLatin1(note) << unusable;
    };
    row("duplicate field", Small(Value("Lens", "A") + Value("Lens", "B"), kRadial), 7, "Lens is given twice");
    row("duplicate coefficient", Small("", kRadial + Value("RadialDistortParam1", "-0.2")), 7, "given twice");
    row("duplicate model",
        Small("",
              "<s:VignetteModel s:VignetteModelParam1='-1'/>\n<s:VignetteModel "
              "s:VignetteModelParam1='-2'/>"
                  + kRadial),
        7, "second VignetteModel");
    row("no frame", Small(Value("ImageWidth", "0"), kRadial), 6, "ImageWidth is \"0\"");
    row("a frame too small to divide by", Small(Value("SensorFormatFactor", "1e-300"), kRadial), 6,
        "not a number from");
    row("focal length 0", Small("", Value("FocalLengthX", "0") + kRadial), 6, "FocalLengthX is 0");
    row("invalid aperture", Small(Value("ApertureValue", "wide"), kRadial), 6, "ApertureValue");
    row("not a number", Small("", kRadial + "<s:VignetteModel s:VignetteModelParam1='nan'/>"), 7, "valid number", true);
    row("infinite coefficient",
        Small("", "<s:VignetteModel>" + Value("VignetteModelParam1", "1e999") + "</s:VignetteModel>" + kRadial), 6,
        "valid number", true);
    row("a division by 0", Small("", kRadial + "<s:VignetteModel s:VignetteModelParam1='1/0'/>"), 7, "valid number",
        true);
    row("decimal comma", Small("", kRadial + "<s:VignetteModel s:VignetteModelParam1='-0,5'/>"), 7, "valid number",
        true);
    row("a fourth coefficient", Small("", "<s:ChromaticGreenModel s:RadialDistortParam4='1'/>" + kRadial), 6,
        "RadialDistortParam4", true);
    row("a model without coefficients", Small("", kRadial + "<s:VignetteModel/>"), 7, "no coefficients", true);
    row("vignetting given as points",
        Small("",
              kRadial
                  + "<s:VignetteModel s:VignetteModelParam1='-1'>\n<s:VignetteModelPiecewiseParam>"
                    "<r:Seq><r:li>0.5, 1</r:li><r:li>0.1, 2</r:li></r:Seq>"
                    "</s:VignetteModelPiecewiseParam></s:VignetteModel>"),
        8, "points", true);
    // With f = 50 / 36 of 6000 px, the corner is at r^2 = 0.1872; 1 - 3 * 2 r^2 = 0 at 94 % of the corner's radius.
    row("a fold", Small("", Value("RadialDistortParam1", "-2")), 3, "folds back within the frame, at 94 %");
    row("no light", Small("", "<s:VignetteModel s:VignetteModelParam1='-8'/>" + kRadial), 3, "light falls to 0");
}

void tst_LensProfile::oddities()
{
    QFETCH(QByteArray, content);
    QFETCH(int, line);
    QFETCH(QString, note);
    QFETCH(bool, unusable);
    QString error;
    const LensProfile profile = ParseLensProfile(content, QString(), &error);
    QCOMPARE(error, QString());
    QStringList texts;
    bool isFound = false;
    for (const ProfileNote &one : profile.notes) {
        texts << QStringLiteral("%1: %2").arg(one.line).arg(one.text);
        isFound |= one.line == line && one.text.contains(note) && one.unusable == unusable;
    }
    QVERIFY2(isFound, qPrintable(texts.join(QLatin1Char('\n'))));
    QVERIFY(profile.entries[0].geometry);
    QVERIFY(!unusable || (!profile.entries[0].vignette && !profile.entries[0].green));
}

void tst_LensProfile::refused_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("error");
    const auto row = [](const char *name, const QByteArray &content, const char *error) {
        QTest::newRow(name) << content << QString::fromLatin1(error);
    };
    const QByteArray whole = Small("", kRadial);
    row("empty", "", "not a complete XML document");
    row("cut off", whole.left(whole.size() - 20), "not a complete XML document: line 7");
    row("no entries", "<r:RDF xmlns:r='http://www.w3.org/1999/02/22-rdf-syntax-ns#'><r:Seq/></r:RDF>", "no entry");
    row("outside the profiles",
        QByteArray(whole).replace("<CameraProfiles>", "<CameraProfiles/><a>").replace("</CameraProfiles>", "</a>"),
        "no entry");
    row("another namespace", QByteArray(whole).replace("camera-profile", "camera-profile2"), "can be used");
    row("an unknown prefix", QByteArray(whole).replace("xmlns:s=", "xmlns:z="), "line 4");
    row("entities", "<!DOCTYPE a [<!ENTITY b 'c'>]>" + whole, "entities");
    row("nested too deeply", QByteArray("<a>").repeated(kMaxXmlDepth + 1), "deeper");
    row("many elements", "<a>" + QByteArray("<b/>").repeated(kMaxXmlNodes) + "</a>", "more than 500000");
    row("no focal length", QByteArray(whole).replace("<s:FocalLength>50</s:FocalLength>", ""), "FocalLength");
    row("an invalid focal length", QByteArray(whole).replace("Length>50<", "Length>1e308<"), "FocalLength");
    row("only coefficient invalid", Small("", Value("RadialDistortParam1", "inf")), "line 6");
}

void tst_LensProfile::refused()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, error);
    QString why;
    const LensProfile profile = ParseLensProfile(content, QString(), &why);
    QVERIFY2(profile.entries.isEmpty() && why.contains(error), qPrintable(why));
    QVERIFY(!why.contains(QLatin1Char('\n')));
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
    int replaced = 0;
    for (const ProfileNote &note : profile.notes)
        replaced += note.text.contains(QLatin1String("which is used"));
    QCOMPARE(replaced, 600 - 40);
}

void tst_LensProfile::files()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("a.lcp"));
    QString error;
    QVERIFY(ReadLensProfile(path, &error).entries.isEmpty() && !error.isEmpty());
    QVERIFY(ReadLensProfile(folder.path(), &error).entries.isEmpty() && !error.isEmpty());
    ReadLensProfile(QStringLiteral("/proc/self/mem"), &error); // reading at offset 0 fails
    QVERIFY2(!error.contains(QLatin1String("XML")), qPrintable(error));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(Small("", kRadial)) > 0);
    file.close();
    QCOMPARE(ReadLensProfile(path, &error).path, path);
    QVERIFY(file.open(QIODevice::Append) && file.write(QByteArray(int(kMaxXmlBytes), ' ')) > 0);
    file.close();
    QVERIFY(ReadLensProfile(path, &error).entries.isEmpty() && error.contains(QLatin1String("16 MiB")));
}

QTEST_APPLESS_MAIN(tst_LensProfile)
#include "LensProfile_test.moc"
