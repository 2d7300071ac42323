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

struct SubModel {
    const char *tag;
    LensParam newLCP::*model;
};
const SubModel kSubModels[] = {{"ChromaticGreenModel", &newLCP::greenModel},
                               {"ChromaticRedGreenModel", &newLCP::redGreenModel},
                               {"ChromaticBlueGreenModel", &newLCP::blueGreenModel},
                               {"VignetteModel", &newLCP::vignetteModel}};

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
    QCOMPARE(lcp.imageWidth, 4001.0);
    QCOMPARE(lcp.imageLength, 3001.0);
    QCOMPARE(lcp.sensorFormatFactor, 1.5F);
    QCOMPARE(lcp.modelKind, 0);

    const LensParam &main = lcp.distortionModel;
    QCOMPARE(QPointF(main.tangential1, main.tangential2), QPointF(0.001F, -0.002F));
    QCOMPARE(main.focalLengthY, double(0.9F));
    const LensParam *models[] = {&main, &lcp.greenModel, &lcp.redGreenModel, &lcp.blueGreenModel, &lcp.vignetteModel};
    const Coefficients coefficients[] = {
        {-0.011F, 0.012F, -0.013F}, {0.021F}, {0.031F, 0.032F}, {0.041F}, {-0.51F, 0.52F, -0.53F}};
    const float focalLengths[] = {0.8F, 0.81F, 0.83F, 0.85F, 0.87F}, scaleFactors[] = {1, 1, 0.999F, 1.001F, 1};
    const float centers[][2] = {{0.51F, 0.52F}, {0.511F, 0.521F}, {0.512F, 0.522F}, {0.513F, 0.523F}, {0.514F, 0.524F}};
    for (int i = 0; i < 5; ++i) {
        const Case named("i", i);
        QVERIFY(models[i]->found);
        QCOMPARE(models[i]->coefficients, coefficients[i]);
        QCOMPARE(models[i]->scaleFactor, scaleFactors[i]);
        // Positions are in units of the size minus one, focal lengths in units of the width minus one.
        QCOMPARE(models[i]->focalPixels, float(double(focalLengths[i]) * 4000));
        QCOMPARE(models[i]->centerX, double(centers[i][0]) * 4000);
        QCOMPARE(models[i]->centerY, double(centers[i][1]) * 3000);
    }
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
    const Coefficients radial{0.1F, 0.2F, 0.3F}, vignette{0.01F, 0.02F, 0.03F};
    const float scaleFactors[] = {1.0F, 1.5F, 1.5F, 1.0F}; // green and vignette models have no scale factor
    for (int i = 0; i < 4; ++i) {
        const Case named("i", i);
        const QByteArray model = Resource("PerspectiveModel", Resource(kSubModels[i].tag, EveryValue()));
        const newLCP lcp = Read(Profile(Entry(Size("101", "51") + model)));
        const LensParam &read = lcp.*kSubModels[i].model;
        QVERIFY(read.found);
        QCOMPARE(read.coefficients, i == 3 ? vignette : radial);
        QCOMPARE(read.scaleFactor, scaleFactors[i]);
        QVERIFY(read.tangential1 == 0 && read.tangential2 == 0);
        QCOMPARE(read.focalPixels, 50.0F);
        QCOMPARE(read.focalLengthY, 0.25);
        QCOMPARE(QPointF(read.centerX, read.centerY), QPointF(12.5, 37.5));
        QCOMPARE(lcp.distortionModel.focalPixels, 0.0F); // the outer model is unaffected
        QVERIFY(lcp.distortionModel.coefficients.isEmpty());
    }
    const std::pair<const char *, int> kinds[] = {{"PerspectiveModel", 0}, {"FisheyeModel", 1}, {"GeometricModel", 0}};
    for (const auto &[tag, kind] : kinds) { // an unknown tag is still read
        const Case named(tag, kind);
        const newLCP lcp = Read(Profile(Entry(Size("101", "51") + Resource(tag, EveryValue()))));
        QVERIFY(lcp.distortionModel.found);
        QCOMPARE(lcp.modelKind, kind);
        QCOMPARE(lcp.distortionModel.coefficients, radial);
    }
}

void tst_newLCP::reset()
{
    newLCP lcp =
        Read(Profile(Entry(Size("101", "51") + Metadata("24", "4", "1.5") + Resource("FisheyeModel", EveryValue()))));
    lcp.scale = 0.5F;
    for (const SubModel &subModel : kSubModels) {
        (lcp.*subModel.model).scaleFactor = 2.0F;
        (lcp.*subModel.model).Found();
    }
    lcp.Reset();
    QVERIFY(lcp.sensorFormatFactor == 1.0F && lcp.scale == 0.0F && lcp.modelKind == 0);
    QVERIFY(lcp.imageWidth == 0.0 && lcp.imageLength == 0.0);
    const LensParam &distortion = lcp.distortionModel;
    QVERIFY(!distortion.found && distortion.scaleFactor == 1.0F && distortion.focalPixels == 0.0F);
    for (const SubModel &subModel : kSubModels) {
        const LensParam &model = lcp.*subModel.model;
        QVERIFY2(!model.found && model.scaleFactor == 1.0F && model.focalPixels == 0.0F, subModel.tag);
    }
    QCOMPARE(distortion.coefficients.size(), 3); // kept; reading again would append to them
}

void tst_newLCP::ignoresMetadataAfterTheModel()
{
    const QByteArray model = Resource("PerspectiveModel", Place("0.5", "0.5", "0.5", "0.25"));
    bool ok = false;
    const newLCP lcp = Read(Profile(Entry(Value("ImageLength", "51") + model + Value("ImageWidth", "101"))), &ok);
    QVERIFY(ok);
    QCOMPARE(lcp.imageWidth, 0.0);
    QCOMPARE(lcp.imageLength, 51.0);
    QCOMPARE(lcp.distortionModel.focalPixels, -0.5F); // the width minus one is -1
    QCOMPARE(QPointF(lcp.distortionModel.centerX, lcp.distortionModel.centerY), QPointF(-0.5, 12.5));
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
            QVERIFY(!lcp.distortionModel.found && lcp.modelKind == 0);
            for (const SubModel &subModel : kSubModels)
                QVERIFY(!(lcp.*subModel.model).found);
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
