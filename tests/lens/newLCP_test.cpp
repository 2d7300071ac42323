// newLCP: the values read from a profile, and files that are not profiles.
#include "newLCP.h"

#include "Case.h"
#include "Files.h"
#include "ProfileText.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace profiletext;

namespace {

struct SubModel {
    const char *tag;
    LensParam newLCP::*model;
};
const SubModel kModels[] = {{"ChromaticGreenModel", &newLCP::greenModel},
                            {"ChromaticRedGreenModel", &newLCP::redGreenModel},
                            {"ChromaticBlueGreenModel", &newLCP::blueGreenModel},
                            {"VignetteModel", &newLCP::vignetteModel},
                            {"PerspectiveModel", &newLCP::distortionModel}};

/// Returns a model as text: radial and tangential coefficients, scale factor, focal length in pixels, vertical focal
/// length as a fraction, and center; "missing" if it was not found.
QString Text(const LensParam &model)
{
    QString text;
    QDebug(&text) << model.coefficients << QPointF(model.tangential1, model.tangential2) << model.scaleFactor
                  << model.focalPixels << model.focalLengthY << QPointF(model.centerX, model.centerY);
    return model.found ? text.remove(QLatin1String("QVector")).remove(QLatin1String("QPointF")).trimmed()
                       : QStringLiteral("missing");
}

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
    newLCP Read(const QByteArray &content)
    {
        return newLCP(WriteFile(m_folder.filePath(QStringLiteral("profile.lcp")), content), m_ok);
    }

    QTemporaryDir m_folder;
    bool m_ok = false; // of the last read
};

void tst_newLCP::readsOnlyTheFirstEntry()
{
    // Hundreds of entries, one per focal length, aperture and distance, are normal.
    const newLCP lcp = Read(Profile(FullEntry(0) + FullEntry(0.3) + FullEntry(0.5).repeated(300)));
    QVERIFY(m_ok);
    QCOMPARE(lcp.imageWidth, 4001.0);
    QCOMPARE(lcp.imageLength, 3001.0);
    QCOMPARE(lcp.sensorFormatFactor, 1.5F);
    QCOMPARE(lcp.modelKind, 0);
    // Positions are in units of the size minus one, focal lengths in units of the width minus one.
    const char *const texts[] = {
        "(0.021) (0,0) 1 3240 0.82 (2044,1563)", "(0.031, 0.032) (0,0) 0.999 3320 0.84 (2048,1566)",
        "(0.041) (0,0) 1.001 3400 0.86 (2052,1569)", "(-0.51, 0.52, -0.53) (0,0) 1 3480 0.88 (2056,1572)",
        "(-0.011, 0.012, -0.013) (0.001,-0.002) 1 3200 0.9 (2040,1560)"};
    for (int i = 0; i < 5; ++i)
        QCOMPARE(Text(lcp.*kModels[i].model), QLatin1String(texts[i]));
}

void tst_newLCP::perspectiveValues()
{
    const auto radial = [](const char *number, const char *value) {
        return Value(("RadialDistortParam" + QByteArray(number)).constData(), value);
    };
    const QByteArray focal = Value("FocalLengthX", "0.5");
    const struct {
        QByteArray values;
        const char *coefficients, *focalPixels;
    } rows[] = {
        {focal + radial("2", "0.2") + radial("1", "0.1"), "0.2, 0.1", "50"},
        {radial("1", "0.1") + focal + radial("1", "0.1") + radial("1", "0.3"), "0.1, 0.1, 0.3", "50"},
        {focal + radial("4", "1"), "", "50"}, // not a known parameter
        {radial("1", "abc") + radial("2", "0,5") + Value("FocalLengthX", ""), "0, 0", "0"},
        {Value("FocalLengthX", "\n 5e-1 ") + radial("1", " -1E-2\t"), "-0.01", "50"},
        {"<crs:FocalLengthX>0.5</crs:FocalLengthX>" + radial("1", "0.1"), "0.1", "0"},
        {"<!-- 0.7 -->" + Value("Unknown", "3") + focal + radial("1", "0<!-- -->.5"), "0.5", "50"},
        {focal + Value("ScaleFactor", "3") + Value("VignetteModelParam1", "1"), "", "50"}}; // not used by this model
    for (const auto &row : rows) {
        const newLCP lcp = Read(Profile(Entry(Size("101", "51") + Resource("PerspectiveModel", row.values))));
        QVERIFY2(m_ok, row.values);
        QCOMPARE(Text(lcp.distortionModel),
                 QString::asprintf("(%s) (0,0) 1 %s 0 (0,0)", row.coefficients, row.focalPixels));
    }
}

void tst_newLCP::subModelsReadTheirOwnValues()
{
    const char *const texts[] = {"(0.1, 0.2, 0.3) (0,0) 1 50 0.25 (12.5,37.5)", // no scale factor
                                 "(0.1, 0.2, 0.3) (0,0) 1.5 50 0.25 (12.5,37.5)",
                                 "(0.1, 0.2, 0.3) (0,0) 1.5 50 0.25 (12.5,37.5)",
                                 "(0.01, 0.02, 0.03) (0,0) 1 50 0.25 (12.5,37.5)"};
    for (int i = 0; i < 4; ++i) {
        const QByteArray model = Resource("PerspectiveModel", Resource(kModels[i].tag, EveryValue()));
        const newLCP lcp = Read(Profile(Entry(Size("101", "51") + model)));
        for (int other = 0; other < 4; ++other)
            QCOMPARE(Text(lcp.*kModels[other].model), QLatin1String(other == i ? texts[i] : "missing"));
        QCOMPARE(Text(lcp.distortionModel), QStringLiteral("() (0,0) 1 0 0 (0,0)"));
    }
    const std::pair<const char *, int> kinds[] = {{"PerspectiveModel", 0}, {"FisheyeModel", 1}, {"GeometricModel", 0}};
    for (const auto &[tag, kind] : kinds) { // an unknown tag is still read
        const Case named(tag);
        const newLCP lcp = Read(Profile(Entry(Size("101", "51") + Resource(tag, EveryValue()))));
        QCOMPARE(lcp.modelKind, kind);
        QCOMPARE(Text(lcp.distortionModel), QStringLiteral("(0.1, 0.2, 0.3) (0.001,0.002) 1 50 0.25 (12.5,37.5)"));
    }
}

void tst_newLCP::reset()
{
    newLCP lcp =
        Read(Profile(Entry(Size("101", "51") + Metadata("24", "4", "1.5") + Resource("FisheyeModel", EveryValue()))));
    lcp.scale = 0.5F;
    for (const SubModel &subModel : kModels) {
        (lcp.*subModel.model).scaleFactor = 2.0F;
        (lcp.*subModel.model).Found();
    }
    lcp.Reset();
    QVERIFY(lcp.sensorFormatFactor == 1.0F && lcp.scale == 0.0F && lcp.modelKind == 0);
    QVERIFY(lcp.imageWidth == 0.0 && lcp.imageLength == 0.0);
    for (const SubModel &subModel : kModels) {
        const LensParam &model = lcp.*subModel.model;
        QVERIFY2(!model.found && model.scaleFactor == 1.0F && model.focalPixels == 0.0F, subModel.tag);
    }
    QCOMPARE(lcp.distortionModel.coefficients.size(), 3); // kept; reading again would append to them
}

void tst_newLCP::ignoresMetadataAfterTheModel()
{
    const QByteArray model = Resource("PerspectiveModel", Place("0.5", "0.5", "0.5", "0.25"));
    const newLCP lcp = Read(Profile(Entry(Value("ImageLength", "51") + model + Value("ImageWidth", "101"))));
    QVERIFY(m_ok);
    QCOMPARE(lcp.imageWidth, 0.0);
    QCOMPARE(lcp.imageLength, 51.0);
    QCOMPARE(Text(lcp.distortionModel), QStringLiteral("() (0,0) 1 -0.5 0.5 (-0.5,12.5)")); // width - 1 is -1
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
            QCOMPARE(lcp.modelKind, 0);
            for (const SubModel &subModel : kModels)
                QVERIFY(!(lcp.*subModel.model).found);
        }
    }
}

void tst_newLCP::truncatedAfterTheFirstEntry()
{
    const QByteArray whole = Profile(FullEntry(0) + FullEntry(0.3));
    const newLCP lcp = Read(whole.left(whole.lastIndexOf("</rdf:li>")));
    QVERIFY(m_ok);
    QCOMPARE(lcp.vignetteModel.coefficients, (QVector<float>{-0.51F, 0.52F, -0.53F}));
}

QTEST_APPLESS_MAIN(tst_newLCP)
#include "newLCP_test.moc"
