// newLCP: what is read of a profile, and what becomes of files that are none.
#include "newLCP.h"

#include "Files.h"
#include "ProfileText.h"

#include <QTemporaryDir>
#include <QtTest>

#include <sys/stat.h>

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

/// All the value elements that a model may hold, each with a number of its own.
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
    void firstOfManyEntries();
    void perspectiveValues_data();
    void perspectiveValues();
    void subModelsReadTheirOwnValues();
    void missingSubModelsStayAbsent();
    void metadataBehindTheModelIsNotRead();
    void unusable_data();
    void unusable();
    void brokenOffBehindTheFirstEntry();

private:
    /// The profile in a file of that content.
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

void tst_newLCP::firstOfManyEntries()
{
    bool ok = false;
    // Hundreds of entries, one for each focal length, aperture and distance, are no excess.
    const newLCP lcp = Read(Profile(FullEntry(0) + FullEntry(0.3) + FullEntry(0.5).repeated(300)), &ok);
    QVERIFY(ok);
    QCOMPARE(lcp.imageWidth, 4001.0);
    QCOMPARE(lcp.imageLength, 3001.0);
    QCOMPARE(lcp.sensorFormatFactor, 1.5F);
    QCOMPARE(lcp.modelKind, 0);

    const LensParam &main = lcp.distortionModel;
    QCOMPARE(main.coefficients, (Coefficients{-0.011F, 0.012F, -0.013F}));
    QCOMPARE(float(main.tangential1), 0.001F);
    QCOMPARE(float(main.tangential2), -0.002F);
    QCOMPARE(main.focalLengthY, double(0.9F));
    // Pixels of the size minus one; the focal length by the width.
    QCOMPARE(main.centerX, double(0.51F) * 4000);
    QCOMPARE(main.centerY, double(0.52F) * 3000);
    QCOMPARE(main.focalPixels, float(double(0.8F) * 4000));

    QCOMPARE(lcp.greenModel.coefficients, Coefficients{0.021F});
    QCOMPARE(lcp.greenModel.centerX, double(0.511F) * 4000);
    QCOMPARE(lcp.redGreenModel.coefficients, (Coefficients{0.031F, 0.032F}));
    QCOMPARE(lcp.redGreenModel.scaleFactor, 0.999F);
    QCOMPARE(lcp.redGreenModel.focalPixels, float(double(0.83F) * 4000));
    QCOMPARE(lcp.blueGreenModel.coefficients, Coefficients{0.041F});
    QCOMPARE(lcp.blueGreenModel.scaleFactor, 1.001F);
    QCOMPARE(lcp.blueGreenModel.centerY, double(0.523F) * 3000);
    QCOMPARE(lcp.vignetteModel.coefficients, (Coefficients{-0.51F, 0.52F, -0.53F}));
    QCOMPARE(lcp.vignetteModel.focalLengthX, double(0.87F));
    QCOMPARE(lcp.vignetteModel.focalLengthY, double(0.88F));
    for (const SubModel &subModel : kSubModels)
        QVERIFY((lcp.*subModel.model).found);
}

void tst_newLCP::perspectiveValues_data()
{
    QTest::addColumn<QByteArray>("values");
    QTest::addColumn<Coefficients>("coefficients");
    QTest::addColumn<float>("focalPixels");
    const auto radial = [](const char *number, const char *value) {
        return "<stCamera:RadialDistortParam" + QByteArray(number) + ">" + value + "</stCamera:RadialDistortParam"
            + number + ">";
    };
    const QByteArray focal = Value("FocalLengthX", "0.5");

    QTest::newRow("second before first") << focal + radial("2", "0.2") + radial("1", "0.1") << Coefficients{0.2F, 0.1F}
                                         << 50.0F;
    QTest::newRow("repeated") << radial("1", "0.1") + focal + radial("1", "0.1") + radial("1", "0.3")
                              << Coefficients{0.1F, 0.1F, 0.3F} << 50.0F;
    QTest::newRow("third alone") << focal + radial("3", "-0.25") << Coefficients{-0.25F} << 50.0F;
    QTest::newRow("a fourth isn't known") << focal + radial("4", "1") << Coefficients() << 50.0F;
    QTest::newRow("not a number") << radial("1", "abc") + radial("2", "0,5") + Value("FocalLengthX", "")
                                  << Coefficients{0, 0} << 0.0F;
    QTest::newRow("blanks around, exponent")
        << Value("FocalLengthX", "\n 5e-1 ") + radial("1", " -1E-2\t") << Coefficients{-0.01F} << 50.0F;
    QTest::newRow("another prefix is another tag")
        << "<crs:FocalLengthX>0.5</crs:FocalLengthX>" + radial("1", "0.1") << Coefficients{0.1F} << 0.0F;
    QTest::newRow("comments and unknown elements between")
        << "<!-- 0.7 -->" + Value("Unknown", "3") + focal + "<!-- x -->" + radial("1", "0<!-- -->.5")
        << Coefficients{0.5F} << 50.0F;
    QTest::newRow("vignette and scale values are no part")
        << focal + Value("ScaleFactor", "3") + Value("VignetteModelParam1", "1") << Coefficients() << 50.0F;
}

void tst_newLCP::perspectiveValues()
{
    QFETCH(QByteArray, values);
    bool ok = false;
    const newLCP lcp = Read(Profile(Entry(Size("101", "51") + Resource("PerspectiveModel", values))), &ok);
    QVERIFY(ok);
    QTEST(lcp.distortionModel.coefficients, "coefficients");
    QTEST(lcp.distortionModel.focalPixels, "focalPixels");
    QCOMPARE(lcp.distortionModel.scaleFactor, 1.0F);
}

void tst_newLCP::subModelsReadTheirOwnValues()
{
    const Coefficients radial{0.1F, 0.2F, 0.3F}, vignette{0.01F, 0.02F, 0.03F};
    const float scaleFactors[] = {1.0F, 1.5F, 1.5F, 1.0F}; // green and vignette have none
    for (int i = 0; i < 4; ++i) {
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
        QCOMPARE(lcp.distortionModel.focalPixels, 0.0F); // none of it went to the model around
        QVERIFY(lcp.distortionModel.coefficients.isEmpty());
    }
    const std::pair<const char *, int> kinds[] = {{"PerspectiveModel", 0}, {"FisheyeModel", 1}, {"GeometricModel", 0}};
    for (const auto &[tag, kind] : kinds) { // an unknown tag is read all the same
        const newLCP lcp = Read(Profile(Entry(Size("101", "51") + Resource(tag, EveryValue()))));
        QVERIFY(lcp.distortionModel.found);
        QCOMPARE(lcp.modelKind, kind);
        QCOMPARE(lcp.distortionModel.coefficients, radial);
    }
}

void tst_newLCP::missingSubModelsStayAbsent()
{
    for (int kept = 0; kept < 4; ++kept) {
        // Present counts, whatever it holds, and with or without the attribute.
        const QByteArray tag = QByteArray("stCamera:") + kSubModels[kept].tag;
        const newLCP lcp = Read(Profile(Entry(Size("101", "51") + Resource("PerspectiveModel", "<" + tag + "/>"))));
        for (int i = 0; i < 4; ++i)
            QCOMPARE((lcp.*kSubModels[i].model).found, i == kept);
    }
}

void tst_newLCP::metadataBehindTheModelIsNotRead()
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

void tst_newLCP::unusable_data()
{
    QTest::addColumn<QByteArray>("content"); // null: no file
    const QByteArray whole = Profile(FullEntry(0));
    const QByteArray model = Resource("PerspectiveModel", EveryValue());
    QTest::newRow("missing: ok stays as it was") << QByteArray();
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("text") << QByteArray("This is no profile.\n");
    QTest::newRow("picture") << QByteArray("\xFF\xD8\xFF\xE0\0\x10JFIF\0", 11);
    QTest::newRow("other XML") << QByteArray("<svg><g/><rdf:li rdf:parseType=\"Resource\"/></svg>");
    QTest::newRow("cut before the entry") << whole.left(whole.indexOf("<rdf:li"));
    QTest::newRow("cut inside the metadata") << whole.left(whole.indexOf("<stCamera:FocalLength>"));
    QTest::newRow("entry without the attribute") << Profile("<rdf:li>" + Size("9", "9") + model + "</rdf:li>");
    QTest::newRow("attribute in another case") << Profile("<rdf:li rdf:parseType=\"resource\">" + model + "</rdf:li>");
    QTest::newRow("attribute form") << Profile("<rdf:li><rdf:Description stCamera:Make=\"M\" stCamera:ImageWidth=\"9\">"
                                               "<stCamera:PerspectiveModel stCamera:FocalLengthX=\"1\"/>"
                                               "</rdf:Description></rdf:li>");
    QTest::newRow("empty entry") << Profile(Entry(""));
    QTest::newRow("entry without a model") << Profile(Entry(Size("9", "9") + Metadata("24", "4", "1")) + Entry(model));
    QTest::newRow("model without the attribute") << Profile(Entry("<stCamera:PerspectiveModel/>"));
    QTest::newRow("entry aside of the first children") << Profile("<rdf:x/>" + Entry(model));
    QTest::newRow("expanding entities")
        << QByteArray("<!DOCTYPE r [<!ENTITY a \"aaaaaaaaaa\"><!ENTITY b \"&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;\">]>")
            + Profile(Entry(Value("Make", "&b;") + model));
    QTest::newRow("elements nested beyond reason") << Profile(Entry(QByteArray("<a>").repeated(2000000) + model));
    QTest::newRow("elements without end") << Profile(Entry(model + QByteArray("<a/>").repeated(2000000)));
    QTest::newRow("attributes without end") << Profile("<rdf:li rdf:parseType=\"Resource\"><a " + [] {
        QByteArray attributes;
        for (int i = 0; i < 600000; ++i)
            attributes += "a" + QByteArray::number(i) + "='' ";
        return attributes;
    }() + "/>" + model + "</rdf:li>");
    QTest::newRow("too large") << Profile(Entry(model) + QByteArray(17 << 20, ' '));
}

void tst_newLCP::unusable()
{
    QFETCH(QByteArray, content);
    for (bool preset : {true, false}) {
        bool ok = preset;
        const QString fileName = content.isNull() ? m_folder.filePath(QStringLiteral("missing.lcp"))
                                                  : WriteFile(m_folder.filePath(QStringLiteral("bad.lcp")), content);
        const newLCP lcp(fileName, ok);
        QCOMPARE(ok, content.isNull() ? preset : false);
        QVERIFY(!lcp.distortionModel.found);
        QCOMPARE(lcp.modelKind, 0);
        for (const SubModel &subModel : kSubModels)
            QVERIFY(!(lcp.*subModel.model).found);
    }
    bool ok = true;
    const newLCP folder(m_folder.path(), ok);
    QVERIFY(ok && !folder.distortionModel.found); // can't be opened either
    const QString pipe = m_folder.filePath(QStringLiteral("pipe.lcp"));
    if (!QFile::exists(pipe))
        QCOMPARE(mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    const newLCP fromPipe(pipe, ok); // and doesn't wait for a writer
    QVERIFY(ok && !fromPipe.distortionModel.found);
}

void tst_newLCP::brokenOffBehindTheFirstEntry()
{
    bool ok = false;
    const QByteArray whole = Profile(FullEntry(0) + FullEntry(0.3));
    const newLCP lcp = Read(whole.left(whole.lastIndexOf("</rdf:li>")), &ok);
    QVERIFY(ok);
    QCOMPARE(lcp.vignetteModel.coefficients, (Coefficients{-0.51F, 0.52F, -0.53F}));
}

QTEST_APPLESS_MAIN(tst_newLCP)
#include "newLCP_test.moc"
