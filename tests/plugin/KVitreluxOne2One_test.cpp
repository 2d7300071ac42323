#include "KVitreluxOne2One.h"

#include "FakeHost.h"
#include "Files.h"
#include "ProfileText.h"
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
    using namespace profiletext;
    return Profile(
        Entry(Size(QByteArray::number(width), QByteArray::number(height))
              + Resource("PerspectiveModel",
                         Place("1", "1", "0.5", "0.25") + Value("RadialDistortParam1", QByteArray::number(k)))));
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

    void recordFromElement();
    void xmlForm();
    void rightAngleFrames();
    void unreadableProfile();
    void fileRunIsTheWholePicture();
    void failedRunGivesTheLockBack();

private:
    void CheckFrame(QSize size, int reduction);
    void CheckFileRun(QSize size, int type, int depth);
    QString WriteProfile(int width, int height, double k)
    {
        return WriteFile(m_dir.filePath(QStringLiteral("%1x%2_%3.lcp").arg(width).arg(height).arg(k)),
                         ProfileText(width, height, k));
    }
    void CorrectDistortion(KImage &image, const QString &profile, float scale = 1)
    {
        Params params;
        params.disto = true;
        params.scale = scale;
        params.lcpFilename = profile;
        KVitreluxOne2One process;
        process.Process(qMakePair(static_cast<KIImageDef *>(Host().Def(QStringLiteral("/a"))), &image), &params);
    }

    QTemporaryDir m_dir;
};

void tst_KVitreluxOne2One::recordFromElement()
{
    const struct {
        const char *stored; // of the setting "Disto"; empty: nothing stored
        bool hasElement;
        const char *attribute; // "Disto" of the element; empty: no such attribute
        bool disto;
    } rows[] = {{"", false, "", false},    {"true", false, "", true}, {"true", true, "0", false},
                {"true", true, "", false}, {"", true, "2", true},     {"", true, "true", false}}; // no number
    for (const auto &row : rows) {
        Host().Clear();
        const bool isStored = *row.stored;
        if (isStored) {
            Host().settings.insert(kUid + QStringLiteral("/Disto"), QString::fromLatin1(row.stored));
            Host().settings.insert(kUid + QStringLiteral("/LCPfilename"), QStringLiteral("/stored.lcp"));
        }
        QDomDocument document;
        QDomElement element;
        if (row.hasElement)
            element = document.createElement(QStringLiteral("any"));
        if (*row.attribute)
            element.setAttribute(QStringLiteral("Disto"), QString::fromLatin1(row.attribute));
        KVitreluxOne2One process;
        auto *params = static_cast<Params *>(process.AllocParameters(element));
        QCOMPARE(params->disto, row.disto);
        QCOMPARE(params->lcpFilename, isStored && !row.hasElement ? QStringLiteral("/stored.lcp") : QString());
        QCOMPARE(params->scale, 1.0f);
        process.FreeParameters(params);
    }
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
    QCOMPARE(element.attribute(QStringLiteral("CA")), QStringLiteral("1"));
    auto *back = static_cast<Params *>(process.AllocParameters(element));
    QVERIFY(!back->disto && back->ca && !back->falloff);
    QCOMPARE(back->lcpFilename, params.lcpFilename);
    process.FreeParameters(back);
}

// A profile describes a landscape frame with its centre at (0.5, 0.25) of it. An upright picture lies on its side while
// it is warped: turned to the left, so that its right edge is the frame's top. A radial model then moves pixels toward
// or away from that centre, wherever it stands in the upright picture.

void tst_KVitreluxOne2One::rightAngleFrames()
{
    const std::pair<QSize, int> rows[] = {{{41, 21}, 1}, {{21, 41}, 1}, {{31, 31}, 1}, {{80, 60}, 4}};
    for (const auto &[size, reduction] : rows) // a preview is smaller than the profile's frame
        CheckFrame(size, reduction);
}

void tst_KVitreluxOne2One::CheckFrame(QSize size, int reduction)
{
    const int width = size.width(), height = size.height();
    const bool turned = width <= height;
    const int frameWidth = turned ? height : width, frameHeight = turned ? width : height;
    const double k = -0.2;
    KImage image;
    FillWithCoordinates(image, width, height);
    // Of a frame of n pixels, the last stands at n - 1.
    const int atWhole = reduction > 1;
    CorrectDistortion(image, WriteProfile(frameWidth * reduction + atWhole, frameHeight * reduction + atWhole, k),
                      1.0f / float(reduction));
    const double focal = frameWidth - 1 + atWhole;
    const double centreX = 0.5 * focal;
    const double centreY = 0.25 * (frameHeight - 1 + atWhole);
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
            const QPointF off(double(pixel[0]) * width - pictureX, double(pixel[1]) * height - pictureY);
            QVERIFY2(std::abs(off.x()) < 1e-4 * width && std::abs(off.y()) < 1e-4 * height,
                     qPrintable(QStringLiteral("at (%1, %2): off by %3, %4").arg(x).arg(y).arg(off.x()).arg(off.y())));
            QCOMPARE(pixel[3], 1.0f);
            ++compared;
        }
    }
    QVERIFY(compared > width * height * 3 / 4);
}

void tst_KVitreluxOne2One::unreadableProfile()
{
    const struct {
        QSize size;
        QString profile;
        float red;                                                                   // at (3, 2)
    } rows[] = {{{8, 6}, m_dir.filePath(QStringLiteral("absent.lcp")), 3.0f / 8.0f}, // stays as it was
                {{6, 8}, m_dir.filePath(QStringLiteral("absent.lcp")), 0.0f},        // comes out black
                {{6, 8}, QString(), 3.0f / 6.0f}};
    for (const auto &row : rows) {
        KImage image;
        FillWithCoordinates(image, row.size.width(), row.size.height());
        CorrectDistortion(image, row.profile);
        QCOMPARE(Pixel(image, 3, 2)[0], row.red);
    }
}

// A run from a file goes in bands; what comes out is the file of the whole picture, corrected in memory. Strips of the
// file hold 512 KiB, so that these have several.

void tst_KVitreluxOne2One::fileRunIsTheWholePicture()
{
    CheckFileRun({1001, 300}, GFL_RGB, 8);
    CheckFileRun({299, 1001}, GFL_RGBA, 16);
    CheckFileRun({401, 401}, GFL_GREY, 16);
    CheckFileRun({701, 201}, GFL_RGBA, 32);
    CheckFileRun({97, 1}, GFL_GREY, 8);
}

void tst_KVitreluxOne2One::CheckFileRun(QSize size, int type, int depth)
{
    const QString source = m_dir.filePath(QStringLiteral("a.b.tif"));
    FakeImageDef *def = Host().Def(source);
    KImage pattern, whole, result;
    FillWithCoordinates(pattern, size.width(), size.height());
    pattern.Convert(def->pixels, static_cast<unsigned short>(type), depth);
    def->pixels.Write(source, QStringLiteral("tiff"), 0, QString());
    Params params;
    params.disto = type != GFL_GREY; // without corrections a copy in the written form
    params.lcpFilename = WriteProfile(qMax(size.width(), size.height()), qMin(size.width(), size.height()), -0.4);
    KVitreluxOne2One process;
    def->pixels.Convert(whole, GFL_RGBA, 32);
    process.Process(qMakePair(static_cast<KIImageDef *>(def), &whole), &params);
    whole.Convert(result, depth > 16 ? GFL_RGB : GFL_RGBA, depth);
    const QString expected = m_dir.filePath(QStringLiteral("expected.tiff"));
    result.Write(expected, QStringLiteral("tiff"), 3, source);

    QString output;
    process.Process(source, &params, output);
    QCOMPARE(output, m_dir.filePath(QStringLiteral("a.b_corrected.tiff")));
    QCOMPARE(def->locks, 0);
    QVERIFY2(ReadFile(output) == ReadFile(expected), qPrintable(QStringLiteral("%1 bits").arg(depth)));
    KImage written;
    written.ID_Read(output, /*nativeDepth=*/true);
    QCOMPARE(int(written.type()), depth > 16 ? int(GFL_RGB) : int(GFL_RGBA));
    QCOMPARE(int(written.bitsPerComponent()), depth);
    if (type == GFL_GREY && depth == 16) { // whose alpha no step of the conversion fills
        quint16 alpha;
        std::memcpy(&alpha, written.getData(400, 400) + 6, sizeof alpha);
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
