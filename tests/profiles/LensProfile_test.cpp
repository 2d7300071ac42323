// Profiles in all XML forms: each gives the same entries, and problems are reported with their line numbers.
#include "Case.h"
#include "InputLimits.h"
#include "LensProfile.h"
#include "SpelledProfile.h"

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

/// Returns a profile of one entry in element form, with @p elements, and with @p model inside its perspective model.
QByteArray Small(const QByteArray &elements, const QByteArray &model)
{
    return "<r:RDF xmlns:r='http://www.w3.org/1999/02/22-rdf-syntax-ns#'\n"
           " xmlns:s='http://ns.adobe.com/photoshop/1.0/camera-profile'><CameraProfiles><r:Seq>\n"
           "<r:li r:parseType='Resource'>\n<s:FocalLength>50</s:FocalLength><s:ImageWidth>6000</s:ImageWidth>\n"
           "<s:ImageLength>4000</s:ImageLength><s:SensorFormatFactor>1</s:SensorFormatFactor>\n"
        + elements + "<s:PerspectiveModel>" + model + "</s:PerspectiveModel></r:li></r:Seq></CameraProfiles></r:RDF>";
}

QByteArray Value(const char *name, const QByteArray &value)
{
    return QByteArray("<s:") + name + '>' + value + "</s:" + name + ">\n";
}

const QByteArray kRadial = Value("RadialDistortParam1", "-0.1");

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
    QTest::addColumn<QString>("expected"); // the models kept, and all notes: line, text, and "!" if a model is unusable
    const auto row = [](const QByteArray &name, const QByteArray &content, const QByteArray &expected) {
        QTest::newRow(name.constData()) << content << QString::fromLatin1(expected);
    };
    const auto light = [](const QByteArray &content) { return kRadial + "<s:VignetteModel" + content + "/>"; };
    const auto noNumber = [](const QByteArray &value) {
        return "distortion\n7: VignetteModelParam1 is \"" + value
            + "\", not a valid number: VignetteModel can't be used!";
    };
    const QByteArray far(81, '9'), shown = far.left(80); // notes show at most 80 characters
    row("raw data", Small(Value("CameraRawProfile", "1"), kRadial), "distortion, raw");
    row("duplicate field", Small(Value("Lens", "A" + far) + Value("Lens", far), kRadial),
        "distortion\n7: Lens is given twice, \"A" + shown.left(79) + "\" and \"" + shown + "\"; the last one is used");
    row("the same number twice", Small(Value("FocalLength", "100/2"), kRadial), "distortion");
    row("duplicate coefficient", Small("", kRadial + Value("RadialDistortParam1", "-0.2")),
        "distortion\n7: RadialDistortParam1 is given twice, \"-0.1\" and \"-0.2\"; the last one is used");
    row("duplicate model",
        Small("", "<s:VignetteModel s:VignetteModelParam1='-1'/>\n" + light(" s:VignetteModelParam1='-2'")),
        "distortion light\n8: a second VignetteModel in one entry; the last one is used");
    row("two lens models", Small("<s:FisheyeModel/>\n", kRadial),
        "distortion\n7: a second lens model in one entry; the last one is used");
    row("no frame", Small(Value("ImageWidth", far), kRadial),
        "distortion\n6: ImageWidth is given twice, \"6000\" and \"" + shown
            + "\"; the last one is used\n6: ImageWidth is \"" + shown
            + "\", not a number from 1 to 1e+07; it is ignored\n"
              "3: the size of the calibrated picture (ImageWidth, ImageLength) is missing");
    row("a frame too small to divide by", Small(Value("SensorFormatFactor", "1e-300"), kRadial),
        "distortion\n6: SensorFormatFactor is given twice, \"1\" and \"1e-300\"; the last one is used\n"
        "6: SensorFormatFactor is \"1e-300\", not a number from 0.05 to 100; it is ignored\n"
        "3: neither SensorFormatFactor nor a camera: the frame is unknown");
    row("no focal length", Small("", Value("FocalLengthX", "1") + kRadial).replace("FocalLength>", "Focal>"),
        "distortion\n3: no focal length");
    row("focal length 0", Small("", Value("FocalLengthX", "0") + kRadial),
        "distortion\n6: FocalLengthX is 0; it is ignored");
    for (const QByteArray &aperture : {far, QByteArray("-4"), QByteArray("20")})
        row("invalid aperture: " + aperture.left(3), Small(Value("ApertureValue", aperture), kRadial),
            "distortion\n6: ApertureValue is \"" + aperture.left(80) + "\", not an aperture; it is ignored");
    for (const char *value : {"nan", "1/0", "-0,5", "2e12", "-2e12", "1e999"})
        row(QByteArray("coefficient ") + value, Small("", light(" s:VignetteModelParam1='" + QByteArray(value) + "'")),
            noNumber(value));
    row("a long coefficient", Small("", light(" s:VignetteModelParam1='" + far + "'")), noNumber(shown));
    row("a center far outside", Small("", kRadial + "<s:ChromaticGreenModel s:ImageYCenter='2.1'/>"),
        "distortion\n7: ImageYCenter is \"2.1\", not a valid number: ChromaticGreenModel can't be used!");
    row("a fourth coefficient", Small("", "<s:ChromaticGreenModel s:RadialDistortParam4='1'/>" + kRadial),
        "distortion\n6: RadialDistortParam4 is unknown: ChromaticGreenModel can't be used!");
    row("a model without coefficients", Small("", light("")), "distortion\n7: VignetteModel has no coefficients!");
    row("vignetting given as points",
        Small("",
              kRadial
                  + "<s:VignetteModel s:VignetteModelParam1='-1'>\n<s:VignetteModelPiecewiseParam>"
                    "<r:Seq><r:li>0.5, 1</r:li><r:li>0.1, 2</r:li></r:Seq>"
                    "</s:VignetteModelPiecewiseParam></s:VignetteModel>"),
        "distortion\n8: vignetting as points is not supported; the entry's vignetting is left out!");
    row("scales", Small("", kRadial + Value("ScaleFactor", "1.1") + "<s:ChromaticRedGreenModel s:ScaleFactor='1.1'/>"),
        "distortion red\n3: the ScaleFactor of distortion isn't used\n3: a model for red but none for blue");
    row("only blue", Small("", kRadial + "<s:ChromaticBlueGreenModel s:ScaleFactor='1.1'/>"),
        "distortion blue\n3: a model for blue but none for red");
    // With f = 50 / 36 of 6000 px, the corner is at r^2 = 0.1872; 1 - 3 * 2 r^2 = 0 at 94 % of the corner's radius.
    row("a fold", Small("", Value("RadialDistortParam1", "-2")),
        "distortion\n3: distortion folds back within the frame, at 94 % of the way to the corner");
    row("folds of all colors", // 1 - 3 k r^2 = 0 at 84, 94 and 77 %
        Small("",
              kRadial
                  + "<s:ChromaticGreenModel s:RadialDistortParam1='-2.5'/>"
                    "<s:ChromaticRedGreenModel s:RadialDistortParam1='-2'/>"
                    "<s:ChromaticBlueGreenModel s:RadialDistortParam1='-3'/>"),
        "distortion green red blue\n3: green folds back within the frame, at 84 % of the way to the corner\n"
        "3: red folds back within the frame, at 94 % of the way to the corner\n"
        "3: blue folds back within the frame, at 77 % of the way to the corner");
    // A fisheye's angle a folds at 1 - 3 * 2 a^2 = 0, where its radius a (1 - 2 a^2) is 0.2722; the farthest corner
    // from the model's center, (3600 px, 2800 px) away, is at 0.5473.
    row("a fisheye's fold",
        Small("", Value("ImageXCenter", "0.4") + Value("ImageYCenter", "0.7") + Value("RadialDistortParam1", "-2"))
            .replace("PerspectiveModel", "FisheyeModel"),
        "distortion\n3: distortion folds back within the frame, at 50 % of the way to the corner");
    // 1 - 8 r^2 = 0 at 81.7 %, found in steps of 1/64.
    row("no light", Small("", light(" s:VignetteModelParam1='-8'")),
        "distortion light\n3: the light falls to 0 within the frame, at 83 % of the way to the corner");
}

void tst_LensProfile::oddities()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, expected);
    QString error;
    const LensProfile profile = ParseLensProfile(content, QString(), &error);
    QCOMPARE(error, QString());
    const ProfileEntry &entry = profile.entries[0];
    QString text = QLatin1String(entry.geometry ? "distortion" : "") + QLatin1String(entry.green ? " green" : "")
        + QLatin1String(entry.redGreen ? " red" : "") + QLatin1String(entry.blueGreen ? " blue" : "")
        + QLatin1String(entry.vignette ? " light" : "") + QLatin1String(entry.raw ? ", raw" : "");
    for (const ProfileNote &one : profile.notes)
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
    const QByteArray whole = Small("", kRadial);
    const char *const noEntry = "no entry (rdf:li in photoshop:CameraProfiles) in the file";
    const char *const noFocal = "none of its 1 entries can be used: line 6: neither FocalLengthX nor FocalLength: "
                                "PerspectiveModel can't be used";
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
    row("no focal length", QByteArray(whole).replace("<s:FocalLength>50</s:FocalLength>", ""), noFocal);
    row("an invalid focal length", QByteArray(whole).replace("Length>50<", "Length>1e308<"), noFocal);
    row("a focal length that isn't a number", Small("", Value("FocalLengthX", "x") + kRadial),
        "none of its 1 entries can be used: line 6: FocalLengthX is \"x\", not a valid number: PerspectiveModel can't "
        "be "
        "used");
    row("only coefficient invalid", Small("", Value("RadialDistortParam1", "inf")),
        "none of its 1 entries can be used: line 6: RadialDistortParam1 is \"inf\", not a valid number: "
        "PerspectiveModel can't be used");
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
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(Small("", kRadial)) > 0);
    file.close();
    QCOMPARE(ReadLensProfile(path, &error).path, path);
    QVERIFY(file.open(QIODevice::Append) && file.write(QByteArray(int(kMaxXmlBytes), ' ')) > 0);
    file.close();
    QVERIFY(ReadLensProfile(path, &error).entries.isEmpty());
    QCOMPARE(error, QStringLiteral("the file is larger than 16 MiB"));
}

QTEST_APPLESS_MAIN(tst_LensProfile)
#include "LensProfile_test.moc"
