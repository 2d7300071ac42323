// newLCP: the values read from a profile, and files that are not profiles.
#include "newLCP.h"

#include "Case.h"
#include "Files.h"
#include "ProfileText.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace profiletext;

namespace {

using Coefficients = QVector<float>;

constexpr LensParam newLCP::*kModels[] = {&newLCP::distortionModel, &newLCP::greenModel, &newLCP::redGreenModel,
                                          &newLCP::blueGreenModel, &newLCP::vignetteModel};
constexpr const char *kTags[] = {"", "ChromaticGreenModel", "ChromaticRedGreenModel", "ChromaticBlueGreenModel",
                                 "VignetteModel"};

/// Returns a model's values: horizontal focal length in pixels, vertical focal length as stored, center in pixels,
/// scale factor, tangential terms, and coefficients after a slash.
QString Text(const LensParam &model)
{
    QString text = QLatin1String(model.found ? "found" : "none");
    for (double value : {double(model.focalPixels), model.focalLengthY, model.centerX, model.centerY,
                         double(model.scaleFactor), model.tangential1, model.tangential2})
        text += QStringLiteral(" %1").arg(value);
    text += QLatin1String(" /");
    for (float value : model.coefficients)
        text += QStringLiteral(" %1").arg(double(value));
    return text;
}

/// Returns all values of a profile.
QStringList Text(const newLCP &lcp)
{
    QStringList text(QStringLiteral("%1 x %2, factor %3, kind %4, scale %5")
                         .arg(lcp.imageWidth)
                         .arg(lcp.imageLength)
                         .arg(double(lcp.sensorFormatFactor))
                         .arg(lcp.modelKind)
                         .arg(double(lcp.scale)));
    for (const auto model : kModels)
        text << Text(lcp.*model);
    return text;
}

const QString kNoModel = QStringLiteral("none 0 0 0 0 1 0 0 /");

/// Returns all value elements of a model, each with a different number.
QByteArray EveryValue()
{
    QByteArray values = Value("ScaleFactor", "1.5") + Place("0.5", "0.25", "0.125", "0.75");
    for (int i = 1; i <= 3; ++i) {
        const QByteArray number = QByteArray::number(i);
        values += Value("RadialDistortParam" + number, "0." + number)
            + Value("VignetteModelParam" + number, "0.0" + number)
            + Value("TangentialDistortParam" + number, "0.00" + number);
    }
    return values;
}

} // namespace

class tst_newLCP : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void readsOnlyTheFirstEntry();
    void perspectiveValues();
    void subModelsReadTheirOwnValues();
    void reset();
    void ignoresMetadataAfterTheModel();
    void unusable();
    void truncatedAfterTheFirstEntry();

private:
    /// Reads a profile from a file with this content.
    newLCP Read(const QByteArray &content, bool *ok = nullptr);

    QTemporaryDir m_folder;
};

newLCP tst_newLCP::Read(const QByteArray &content, bool *ok)
{
    bool read = false;
    newLCP lcp(WriteFile(m_folder.filePath(QStringLiteral("profile.lcp")), content), read);
    if (ok)
        *ok = read;
    return lcp;
}

void tst_newLCP::readsOnlyTheFirstEntry()
{
    bool ok = false;
    // Hundreds of entries, one per focal length, aperture and distance, are normal.
    const newLCP lcp = Read(Profile(FullEntry(0) + FullEntry(0.3) + FullEntry(0.5).repeated(300)), &ok);
    QVERIFY(ok);
    // Positions are in units of the size minus one, focal lengths in units of the width minus one.
    QCOMPARE(Text(lcp),
             (QStringList{QStringLiteral("4001 x 3001, factor 1.5, kind 0, scale 0"),
                          QStringLiteral("found 3200 0.9 2040 1560 1 0.001 -0.002 / -0.011 0.012 -0.013"),
                          QStringLiteral("found 3240 0.82 2044 1563 1 0 0 / 0.021"),
                          QStringLiteral("found 3320 0.84 2048 1566 0.999 0 0 / 0.031 0.032"),
                          QStringLiteral("found 3400 0.86 2052 1569 1.001 0 0 / 0.041"),
                          QStringLiteral("found 3480 0.88 2056 1572 1 0 0 / -0.51 0.52 -0.53")}));
}

void tst_newLCP::perspectiveValues()
{
    const auto radial = [](const char *number, const char *value) {
        return Value(("RadialDistortParam" + QByteArray(number)).constData(), value);
    };
    const QByteArray focal = Value("FocalLengthX", "0.5");
    const struct {
        QByteArray values;
        Coefficients coefficients;
        float focalPixels;
    } rows[] = {
        {focal + radial("2", "0.2") + radial("1", "0.1"), {0.2F, 0.1F}, 50},
        {radial("1", "0.1") + focal + radial("1", "0.1") + radial("1", "0.3"), {0.1F, 0.1F, 0.3F}, 50},
        {focal + radial("4", "1"), {}, 50}, // not a known parameter
        {radial("1", "abc") + radial("2", "0,5") + Value("FocalLengthX", ""), {0, 0}, 0},
        {Value("FocalLengthX", "\n 5e-1 ") + radial("1", " -1E-2\t"), {-0.01F}, 50},
        {"<crs:FocalLengthX>0.5</crs:FocalLengthX>" + radial("1", "0.1"), {0.1F}, 0},
        {"<!-- 0.7 -->" + Value("Unknown", "3") + focal + radial("1", "0<!-- -->.5"), {0.5F}, 50},
        {focal + Value("ScaleFactor", "3") + Value("VignetteModelParam1", "1"), {}, 50}}; // not used by this model
    for (const auto &row : rows) {
        const Case named("row", &row - &*std::begin(rows));
        bool ok = false;
        const newLCP lcp = Read(Profile(Entry(Size("101", "51") + Resource("PerspectiveModel", row.values))), &ok);
        QVERIFY(ok);
        QCOMPARE(lcp.distortionModel.coefficients, row.coefficients);
        QCOMPARE(lcp.distortionModel.focalPixels, row.focalPixels);
        QCOMPARE(lcp.distortionModel.scaleFactor, 1.0F);
    }
}

void tst_newLCP::subModelsReadTheirOwnValues()
{
    const char *const values[] = {
        "found 50 0.25 12.5 37.5 1 0.001 0.002 / 0.1 0.2 0.3", "found 50 0.25 12.5 37.5 1 0 0 / 0.1 0.2 0.3",
        "found 50 0.25 12.5 37.5 1.5 0 0 / 0.1 0.2 0.3", "found 50 0.25 12.5 37.5 1.5 0 0 / 0.1 0.2 0.3",
        "found 50 0.25 12.5 37.5 1 0 0 / 0.01 0.02 0.03"};
    for (int i = 1; i < 5; ++i) {
        const Case named("i", i);
        const QByteArray model = Resource("PerspectiveModel", Resource(kTags[i], EveryValue()));
        QStringList expected{QStringLiteral("101 x 51, factor 1, kind 0, scale 0"),
                             QStringLiteral("found 0 0 0 0 1 0 0 /"),
                             kNoModel,
                             kNoModel,
                             kNoModel,
                             kNoModel};
        expected[1 + i] = QLatin1String(values[i]);
        QCOMPARE(Text(Read(Profile(Entry(Size("101", "51") + model)))), expected);
    }
    const std::pair<const char *, int> kinds[] = {{"PerspectiveModel", 0}, {"FisheyeModel", 1}, {"GeometricModel", 0}};
    for (const auto &[tag, kind] : kinds) { // an unknown tag is still read
        const newLCP lcp = Read(Profile(Entry(Size("101", "51") + Resource(tag, EveryValue()))));
        QCOMPARE(Text(lcp),
                 (QStringList{QStringLiteral("101 x 51, factor 1, kind %1, scale 0").arg(kind),
                              QLatin1String(values[0]), kNoModel, kNoModel, kNoModel, kNoModel}));
    }
}

void tst_newLCP::reset()
{
    newLCP lcp =
        Read(Profile(Entry(Size("101", "51") + Metadata("24", "4", "1.5") + Resource("FisheyeModel", EveryValue()))));
    lcp.scale = 0.5F;
    for (const auto model : kModels) {
        (lcp.*model).scaleFactor = 2.0F;
        (lcp.*model).Found();
    }
    lcp.Reset();
    // Some values are kept; reading again would append to the coefficients.
    QCOMPARE(Text(lcp),
             (QStringList{QStringLiteral("0 x 0, factor 1, kind 0, scale 0"),
                          QStringLiteral("none 0 0.25 12.5 37.5 1 0.001 0.002 / 0.1 0.2 0.3"), kNoModel, kNoModel,
                          kNoModel, kNoModel}));
}

void tst_newLCP::ignoresMetadataAfterTheModel()
{
    const QByteArray model = Resource("PerspectiveModel", Place("0.5", "0.5", "0.5", "0.25"));
    bool ok = false;
    const newLCP lcp = Read(Profile(Entry(Value("ImageLength", "51") + model + Value("ImageWidth", "101"))), &ok);
    QVERIFY(ok);
    QCOMPARE(Text(lcp), // the width minus one is -1
             (QStringList{QStringLiteral("0 x 51, factor 1, kind 0, scale 0"),
                          QStringLiteral("found -0.5 0.5 -0.5 12.5 1 0 0 /"), kNoModel, kNoModel, kNoModel, kNoModel}));
}

void tst_newLCP::unusable()
{
    const QByteArray whole = Profile(FullEntry(0)), model = Resource("PerspectiveModel", EveryValue());
    QByteArray attributes;
    for (int i = 0; i < 600000; ++i)
        attributes += "a" + QByteArray::number(i) + "='' ";
    const QByteArray contents[] = {
        QByteArray(), // the file doesn't exist
        "",
        "<svg><g/><rdf:li rdf:parseType=\"Resource\"/></svg>",
        whole.left(whole.indexOf("<rdf:li")),
        whole.left(whole.indexOf("<stCamera:FocalLength>")),
        Profile("<rdf:li>" + Size("9", "9") + model + "</rdf:li>"),
        Profile("<rdf:li rdf:parseType=\"resource\">" + model + "</rdf:li>"),
        Profile(Entry(Size("9", "9") + Metadata("24", "4", "1")) + Entry(model)),
        Profile(Entry("<stCamera:PerspectiveModel/>")),
        Profile("<rdf:x/>" + Entry(model)), // not on the path of first children
        "<!DOCTYPE r [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\">]>"
            + Profile(Entry(Value("Make", "&b;") + model)),
        Profile(Entry(QByteArray("<a>").repeated(2000000) + model)), // nested too deeply, and truncated
        Profile(Entry(model + QByteArray("<a/>").repeated(2000000))),
        Profile("<rdf:li rdf:parseType=\"Resource\"><a " + attributes + "/>" + model + "</rdf:li>"),
        Profile(Entry(model) + QByteArray(17 << 20, ' '))};
    for (const QByteArray &content : contents) {
        const Case named(content.left(100));
        for (bool preset : {true, false}) {
            bool ok = preset;
            const QString fileName = content.isNull()
                ? m_folder.filePath(QStringLiteral("missing.lcp"))
                : WriteFile(m_folder.filePath(QStringLiteral("bad.lcp")), content);
            const newLCP lcp(fileName, ok);
            QVERIFY2(ok == (content.isNull() && preset), content.left(200).constData());
            QVERIFY(!Text(lcp).join(QLatin1Char('\n')).contains(QLatin1String("found")) && lcp.modelKind == 0);
        }
    }
}

void tst_newLCP::truncatedAfterTheFirstEntry()
{
    bool ok = false;
    const QByteArray whole = Profile(FullEntry(0) + FullEntry(0.3));
    const newLCP lcp = Read(whole.left(whole.lastIndexOf("</rdf:li>")), &ok);
    QVERIFY(ok);
    QCOMPARE(lcp.vignetteModel.coefficients, (Coefficients{-0.51F, 0.52F, -0.53F}));
}

QTEST_APPLESS_MAIN(tst_newLCP)
#include "newLCP_test.moc"
