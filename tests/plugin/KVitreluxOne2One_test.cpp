#include "KVitreluxOne2One.h"

#include "FakeHost.h"
#include "Thrown.h"

#include <QDomDocument>
#include <QTemporaryDir>
#include <QtTest>

#include <cstring>
#include <vector>

namespace {

using Params = KVitreluxOne2One::Params;

const QString kUid = QStringLiteral("6E8A21D4-93B7-4C05-A1F6-70C3D2E95B18");

/// A profile for a width by height frame: one radial term k, centre at (0.5, 0.25) of the frame, focal length 1.
QByteArray ProfileText(int width, int height, double k)
{
    return QStringLiteral("<x><rdf:li rdf:parseType=\"Resource\">"
                          "<stCamera:ImageWidth>%1</stCamera:ImageWidth>"
                          "<stCamera:ImageLength>%2</stCamera:ImageLength>"
                          "<stCamera:PerspectiveModel rdf:parseType=\"Resource\">"
                          "<stCamera:FocalLengthX>1</stCamera:FocalLengthX>"
                          "<stCamera:FocalLengthY>1</stCamera:FocalLengthY>"
                          "<stCamera:ImageXCenter>0.5</stCamera:ImageXCenter>"
                          "<stCamera:ImageYCenter>0.25</stCamera:ImageYCenter>"
                          "<stCamera:RadialDistortParam1>%3</stCamera:RadialDistortParam1>"
                          "</stCamera:PerspectiveModel></rdf:li></x>")
        .arg(width)
        .arg(height)
        .arg(k)
        .toUtf8();
}

/// Four float channels: red = x, green = y, blue = 0.25, alpha = 0.5.
void FillWithCoordinates(KImage &image, int width, int height)
{
    image.AllocBitmap(width, height, GFL_RGBA, 32, /*clear=*/true, nullptr, 0);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            auto *pixel = reinterpret_cast<float *>(image.getData(x, y));
            pixel[0] = float(x) / float(width);
            pixel[1] = float(y) / float(height);
            pixel[2] = 0.25f;
            pixel[3] = 0.5f;
        }
    }
}

const float *Pixel(const KImage &image, int x, int y)
{
    return reinterpret_cast<const float *>(image.getData(x, y));
}

FakeHost &Host()
{
    return *static_cast<FakeHost *>(QCoreApplication::instance());
}

} // namespace

class tst_KVitreluxOne2One : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() { Host().Clear(); }

    void castsByName();
    void recordFromElement_data();
    void recordFromElement();
    void xmlForm();
    void jobKeepsOneRecordAnImage();
    void validatedPageStoresDefaults();
    void emptyProfileLeavesPixels();
    void rightAngleFrames_data();
    void rightAngleFrames();
    void reducedPicture();
    void unreadableProfile_data();
    void unreadableProfile();
    void fileRun_data();
    void fileRun();
    void failedRunGivesTheLockBack();

private:
    QString WriteProfile(int width, int height, double k);

    QTemporaryDir m_dir;
};

QString tst_KVitreluxOne2One::WriteProfile(int width, int height, double k)
{
    const QString name = m_dir.filePath(QStringLiteral("%1x%2_%3.lcp").arg(width).arg(height).arg(k));
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly) || file.write(ProfileText(width, height, k)) < 0)
        qFatal("can't write %s", qPrintable(name));
    return name;
}

void tst_KVitreluxOne2One::castsByName()
{
    KVitreluxOne2One process;
    KIPluginOne2One *one2one = &process;
    QCOMPARE(process.qt_metacast("KVitreluxOne2One"), static_cast<void *>(&process));
    for (const char *name : {"KIPluginOne2One", "KIPluginProcess", "KIAbout"})
        QCOMPARE(process.qt_metacast(name), static_cast<void *>(one2one));
    QCOMPARE(process.qt_metacast("QObject"), static_cast<void *>(static_cast<QObject *>(&process)));
    QCOMPARE(process.qt_metacast("KIPluginLibrary"), nullptr);
    QScopedPointer<QObject> made(KVitreluxOne2One::staticMetaObject.newInstance(Q_ARG(QObject *, nullptr)));
    QVERIFY(qobject_cast<KVitreluxOne2One *>(made.data()));
}

void tst_KVitreluxOne2One::recordFromElement_data()
{
    QTest::addColumn<QString>("stored"); // of the setting "Disto"; empty: nothing stored
    QTest::addColumn<bool>("hasElement");
    QTest::addColumn<QString>("attribute"); // "Disto" of the element; empty: no such attribute
    QTest::addColumn<bool>("disto");
    QTest::newRow("nothing stored") << QString() << false << QString() << false;
    QTest::newRow("stored") << QStringLiteral("true") << false << QString() << true;
    QTest::newRow("element beats setting") << QStringLiteral("true") << true << QStringLiteral("0") << false;
    QTest::newRow("missing attribute clears") << QStringLiteral("true") << true << QString() << false;
    QTest::newRow("two counts as true") << QString() << true << QStringLiteral("2") << true;
    QTest::newRow("the word true is no number") << QString() << true << QStringLiteral("true") << false;
}

void tst_KVitreluxOne2One::recordFromElement()
{
    QFETCH(QString, stored);
    QFETCH(bool, hasElement);
    QFETCH(QString, attribute);
    if (!stored.isEmpty()) {
        Host().settings.insert(kUid + QStringLiteral("/Disto"), stored);
        Host().settings.insert(kUid + QStringLiteral("/LCPfilename"), QStringLiteral("/stored.lcp"));
    }
    QDomDocument document;
    QDomElement element;
    if (hasElement) {
        element = document.createElement(QStringLiteral("any"));
        if (!attribute.isEmpty())
            element.setAttribute(QStringLiteral("Disto"), attribute);
    }
    KVitreluxOne2One process;
    auto *params = static_cast<Params *>(process.AllocParameters(element));
    QTEST(params->disto, "disto");
    QCOMPARE(params->lcpFilename, !stored.isEmpty() && !hasElement ? QStringLiteral("/stored.lcp") : QString());
    QCOMPARE(params->scale, 1.0f);
    process.FreeParameters(params);
}

void tst_KVitreluxOne2One::xmlForm()
{
    KVitreluxOne2One process;
    Params params;
    params.ca = true;
    params.lcpFilename = QStringLiteral("/lens & \"body\".lcp");
    const QDomElement element = process.GetXmlParameters(&params);
    QCOMPARE(element.tagName(), QStringLiteral("Lens correction"));
    std::vector<QByteArray> noise; // takes the place of whatever was freed
    for (int bytes = 8; bytes <= 256; bytes += 8)
        noise.emplace_back(bytes, 'A');
    QCOMPARE(element.ownerDocument().doctype().name(), QStringLiteral("Lens correction"));
    QCOMPARE(element.attributes().count(), 4);
    QCOMPARE(element.attribute(QStringLiteral("Disto")), QStringLiteral("0"));
    QCOMPARE(element.attribute(QStringLiteral("CA")), QStringLiteral("1"));
    QCOMPARE(element.attribute(QStringLiteral("Falloff")), QStringLiteral("0"));
    auto *back = static_cast<Params *>(process.AllocParameters(element));
    QVERIFY(!back->disto && back->ca && !back->falloff);
    QCOMPARE(back->lcpFilename, params.lcpFilename);
    process.FreeParameters(back);
}

void tst_KVitreluxOne2One::jobKeepsOneRecordAnImage()
{
    KVitreluxOne2One process;
    Host().settings.insert(kUid + QStringLiteral("/CA"), QStringLiteral("true"));
    process.SetFiles({QStringLiteral("/a.jpg"), QStringLiteral("/b.jpg"), QStringLiteral("/a.jpg")});
    Host().settings.clear(); // records of the job were made before, others are made now
    const auto ca = [&](const char *file) {
        return process.GetFileXmlParams(QString::fromLatin1(file)).attribute(QStringLiteral("CA"));
    };
    QCOMPARE(ca("/a.jpg"), QStringLiteral("1"));
    QCOMPARE(ca("/b.jpg"), QStringLiteral("1"));
    QCOMPARE(ca("/other.jpg"), QStringLiteral("0"));
    Host().settings.insert(kUid + QStringLiteral("/CA"), QStringLiteral("true"));
    QCOMPARE(ca("/other.jpg"), QStringLiteral("1")); // the first asking left no record behind
    process.SetFiles({});
    Host().settings.clear();
    QCOMPARE(ca("/a.jpg"), QStringLiteral("0"));
}

void tst_KVitreluxOne2One::validatedPageStoresDefaults()
{
    KVitreluxOne2One process;
    Params params;
    params.falloff = true;
    params.lcpFilename = QStringLiteral("/p.lcp");
    process.SaveDefaultSettings(&params);
    process.OnValidatePage();
    QCOMPARE(Host().stored.join(QLatin1Char(' ')), QStringLiteral("Disto CA Falloff LCPfilename"));
    auto *defaults = static_cast<Params *>(process.AllocParameters(QDomElement()));
    QVERIFY(!defaults->disto && !defaults->ca && defaults->falloff);
    QCOMPARE(defaults->lcpFilename, params.lcpFilename);
    process.FreeParameters(defaults);
}

void tst_KVitreluxOne2One::emptyProfileLeavesPixels()
{
    KVitreluxOne2One process;
    Params params;
    params.disto = true;
    KImage image;
    FillWithCoordinates(image, 8, 6);
    const KImage before(image);
    process.Process(qMakePair(static_cast<KIImageDef *>(Host().Def(QStringLiteral("/a"))), &image), &params);
    QVERIFY(params.lcpFilename.isEmpty());
    QCOMPARE(std::memcmp(image.getData(0, 0), before.getData(0, 0), 8 * 6 * 16), 0);
}

// A profile describes a landscape frame with its centre at (0.5, 0.25) of it. An upright picture lies on its side while
// it is warped: turned to the left, so that its right edge is the frame's top. A radial model then moves pixels toward
// or away from that centre, wherever it stands in the upright picture.
void tst_KVitreluxOne2One::rightAngleFrames_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::newRow("landscape") << 41 << 21;
    QTest::newRow("portrait") << 21 << 41;
    QTest::newRow("square") << 31 << 31;
}

void tst_KVitreluxOne2One::rightAngleFrames()
{
    QFETCH(int, width);
    QFETCH(int, height);
    const bool turned = width <= height;
    const int frameWidth = turned ? height : width;
    const int frameHeight = turned ? width : height;
    const double k = -0.2;
    Params params;
    params.disto = true;
    params.lcpFilename = WriteProfile(frameWidth, frameHeight, k);
    KImage image;
    FillWithCoordinates(image, width, height);
    KVitreluxOne2One process;
    process.Process(qMakePair(static_cast<KIImageDef *>(Host().Def(QStringLiteral("/a"))), &image), &params);

    const double focal = frameWidth - 1;
    const double centreX = 0.5 * (frameWidth - 1);
    const double centreY = 0.25 * (frameHeight - 1);
    int compared = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            // Position in the frame, the model there, and back into the picture.
            const double frameX = turned ? y : x;
            const double frameY = turned ? width - 1 - x : y;
            const double u = (frameX - centreX) / focal;
            const double v = (frameY - centreY) / focal;
            const double factor = 1 + k * (u * u + v * v);
            const double sourceX = centreX + focal * u * factor;
            const double sourceY = centreY + focal * v * factor;
            const bool inside = sourceX > 0 && sourceY > 0 && sourceX < frameWidth - 1 && sourceY < frameHeight - 1;
            if (!inside)
                continue;
            const double pictureX = turned ? width - 1 - sourceY : sourceX;
            const double pictureY = turned ? sourceX : sourceY;
            const float *pixel = Pixel(image, x, y);
            QVERIFY2(std::abs(pixel[0] - pictureX / width) < 1e-4 && std::abs(pixel[1] - pictureY / height) < 1e-4,
                     qPrintable(QStringLiteral("at (%1, %2): got (%3, %4), expected (%5, %6)")
                                    .arg(x)
                                    .arg(y)
                                    .arg(double(pixel[0]) * width)
                                    .arg(double(pixel[1]) * height)
                                    .arg(pictureX)
                                    .arg(pictureY)));
            QCOMPARE(pixel[3], 1.0f);
            ++compared;
        }
    }
    QVERIFY(compared > width * height * 3 / 4);
}

// As a preview sees it: a quarter of the profile's frame. Positions scale with it.
void tst_KVitreluxOne2One::reducedPicture()
{
    const int width = 80, height = 60;
    const double k = -0.2;
    Params params;
    params.disto = true;
    params.scale = 0.25f;
    params.lcpFilename = WriteProfile(4 * width + 1, 4 * height + 1, k);
    KImage image;
    FillWithCoordinates(image, width, height);
    KVitreluxOne2One process;
    process.Process(qMakePair(static_cast<KIImageDef *>(Host().Def(QStringLiteral("/a"))), &image), &params);
    // 24 to the right of the centre at (0.5, 0.25) of 80 x 60, of focal length 80: u = 0.3, moved to u (1 + k u^2).
    const double sourceX = 40 + 80 * 0.3 * (1 + k * 0.3 * 0.3);
    const float *pixel = Pixel(image, 64, 15);
    QVERIFY2(std::abs(double(pixel[0]) * width - sourceX) < 1e-3,
             qPrintable(QString::number(double(pixel[0]) * width)));
    QVERIFY(std::abs(double(pixel[1]) * height - 15) < 1e-3);
}

void tst_KVitreluxOne2One::unreadableProfile_data()
{
    QTest::addColumn<int>("width");
    QTest::addColumn<int>("height");
    QTest::addColumn<float>("red");
    QTest::newRow("landscape stays as it was") << 8 << 6 << 3.0f / 8.0f;
    QTest::newRow("portrait comes out black") << 6 << 8 << 0.0f;
}

void tst_KVitreluxOne2One::unreadableProfile()
{
    QFETCH(int, width);
    QFETCH(int, height);
    Params params;
    params.disto = true;
    params.lcpFilename = m_dir.filePath(QStringLiteral("absent.lcp"));
    KImage image;
    FillWithCoordinates(image, width, height);
    KVitreluxOne2One process;
    process.Process(qMakePair(static_cast<KIImageDef *>(Host().Def(QStringLiteral("/a"))), &image), &params);
    QTEST(Pixel(image, 3, 2)[0], "red");
}

void tst_KVitreluxOne2One::fileRun_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("depth");
    QTest::addColumn<int>("writtenType");
    QTest::newRow("8 bits, three channels") << int(GFL_RGB) << 8 << int(GFL_RGBA);
    QTest::newRow("16 bits, grey") << int(GFL_GREY) << 16 << int(GFL_RGBA);
    QTest::newRow("float, four channels") << int(GFL_RGBA) << 32 << int(GFL_RGB);
}

void tst_KVitreluxOne2One::fileRun()
{
    QFETCH(int, type);
    QFETCH(int, depth);
    const QString source = m_dir.filePath(QStringLiteral("a.b.tif"));
    FakeImageDef *def = Host().Def(source);
    KImage pattern;
    FillWithCoordinates(pattern, 12, 9);
    pattern.Convert(def->pixels, static_cast<unsigned short>(type), depth);
    def->pixels.Write(source, QStringLiteral("tiff"), 0, QString());

    KVitreluxOne2One process;
    Params params; // all corrections off: a plain copy in the written form
    params.lcpFilename = WriteProfile(12, 9, 0);
    QString output;
    process.Process(source, &params, output);
    QCOMPARE(output, m_dir.filePath(QStringLiteral("a.b_corrected.tiff")));
    QCOMPARE(def->locks, 0);

    KImage written, expected;
    written.ID_Read(output, /*nativeDepth=*/true);
    QTEST(int(written.type()), "writtenType");
    QTEST(int(written.bitsPerComponent()), "depth");
    def->pixels.Convert(expected, written.type(), written.bitsPerComponent());
    for (int y = 0; y < 9; ++y)
        QCOMPARE(std::memcmp(written.getData(0, y), expected.getData(0, y), 12u * written.m_bitmap->BytesPerPixel), 0);
    if (type == GFL_GREY) { // whose alpha no step of the conversion fills
        quint16 alpha;
        std::memcpy(&alpha, written.getData(11, 8) + 6, sizeof alpha);
        QCOMPARE(int(alpha), 65535);
    }
}

void tst_KVitreluxOne2One::failedRunGivesTheLockBack()
{
    const QString source = QStringLiteral("/nowhere/at/all.jpg");
    FakeImageDef *def = Host().Def(source);
    FillWithCoordinates(def->pixels, 4, 3);
    def->pixels.m_bitmap->Type = 0; // a form that no operation serves
    KVitreluxOne2One process;
    Params params;
    QString output;
    QVERIFY_EXCEPTION_THROWN(process.Process(source, &params, output), KException);
    QCOMPARE(def->locks, 0);
    QCOMPARE(output, QStringLiteral("/nowhere/at/all_corrected.tiff"));

    def->pixels.FreeBitmap(); // the host lends nothing
    QCOMPARE(Thrown([&] { process.Process(source, &params, output); }),
             QStringLiteral("File \"/nowhere/at/all.jpg\" cannot be loaded"));
    QCOMPARE(def->locks, 0);
}

int main(int argc, char **argv)
{
    FakeHost host(argc, argv);
    KImage::init(nullptr);
    tst_KVitreluxOne2One test;
    const int failures = QTest::qExec(&test, argc, argv);
    host.Clear();
    KImage::exit();
    return failures;
}

#include "KVitreluxOne2One_test.moc"
