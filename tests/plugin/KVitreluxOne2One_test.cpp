// The process object: its records, and plain corrections of files and of pictures in memory.
#include "Case.h"
#include "KVitreluxOne2One.h"

#include "FakeHost.h"
#include "ProfileText.h"
#include "Table.h"
#include "TestFiles.h"
#include "Thrown.h"

#include <QDomDocument>
#include <QTemporaryDir>
#include <QtTest>

#include <cstring>
#include <utility>
#include <vector>

namespace {

using Params = KVitreluxOne2One::Params;

const QString kUid = "6E8A21D4-93B7-4C05-A1F6-70C3D2E95B18"_s;

/// Returns a profile for a frame of @p width x @p height. Each model has a different coefficient, the distortion model
/// @p k; centers are at (0.5, 0.25) of the frame, and focal lengths are 1.
QByteArray ProfileText(int width, int height, double k)
{
    using namespace profiletext;
    const auto model = [](const char *tag, const char *term, double value) {
        return Resource(tag, Place("1", "1", "0.5", "0.25") + Value(term, QByteArray::number(value)));
    };
    const char *const radial = "RadialDistortParam1";
    const QByteArray subModels = model("ChromaticGreenModel", radial, k / 2)
        + model("ChromaticRedGreenModel", radial, 0.03) + model("ChromaticBlueGreenModel", radial, -0.03)
        + model("VignetteModel", "VignetteModelParam1", -0.5);
    return Profile(
        Entry(Size(QByteArray::number(width), QByteArray::number(height))
              + Resource("PerspectiveModel",
                         Place("1", "1", "0.5", "0.25") + Value(radial, QByteArray::number(k)) + subModels)));
}

/// Fills four float channels: red = x / width, green = y / height, blue = 0.25, alpha = 0.5.
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

/// Image description that records, in order, the calls to the functions that fitted runs use.
class NotingDef : public FakeImageDef {
public:
    using FakeImageDef::FakeImageDef;
    QString FileName() const override { return Noted("file"), FakeImageDef::FileName(); }
    int nRows() const override { return Noted("rows"), FakeImageDef::nRows(); }
    int nCols() const override { return Noted("columns"), FakeImageDef::nCols(); }
    int nBands() const override { return Noted("bands"), FakeImageDef::nBands(); }
    int nDepth() const override { return Noted("depth"), FakeImageDef::nDepth(); }
    bool HasExif() const override { return Noted("EXIF"), FakeImageDef::HasExif(); }
    KImage *Lock(int w, int h, bool depth) override { return Noted("lock"), FakeImageDef::Lock(w, h, depth); }
    void Unlock(int w, int h, bool depth) override { Noted("unlock"), FakeImageDef::Unlock(w, h, depth); }
    KImage *LockFullSize(bool depth) override { return Noted("lock full"), FakeImageDef::LockFullSize(depth); }
    void UnlockFullSize(bool depth) override { Noted("unlock full"), FakeImageDef::UnlockFullSize(depth); }

    mutable QString noted;

private:
    void Noted(const char *what) const { noted += QLatin1String(what) + QLatin1Char(';'); }
};

/// Returns the recorded calls to the host, and clears them.
QString Calls()
{
    return std::exchange(Host().calls, {}).join(QLatin1Char(' '));
}

QString TextOf(const QDomElement &element)
{
    QStringList texts;
    for (int i = 0; i < element.attributes().count(); ++i)
        texts << element.attributes().item(i).nodeName() + QLatin1Char('=') + element.attributes().item(i).nodeValue();
    texts.sort();
    return texts.join(QLatin1Char(' '));
}

} // namespace

class tst_KVitreluxOne2One : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init() { Host().Clear(); }

    void recordFromElement();
    void plainRecordsIgnoreFittedOptions();
    void plainRunsIgnoreFittedOptions();
    void fittedOption();
    void xmlForm();
    void rightAngleFrames();
    void unreadableProfile();
    void fileRunEqualsWholePicture();
    void failedRunReleasesTheLock();
    void optionalFunctions();

private:
    QString WriteProfile(int width, int height, double k)
    {
        return WriteFile(m_dir.filePath("%1x%2_%3.lcp"_s.arg(width).arg(height).arg(k)), ProfileText(width, height, k));
    }
    void CorrectDistortion(KImage &image, const QString &profile, float scale = 1)
    {
        Params params;
        params.disto = true;
        params.scale = scale;
        params.lcpFilename = profile;
        KVitreluxOne2One process;
        process.Process(qMakePair(static_cast<KIImageDef *>(Host().Def("/a"_s)), &image), &params);
    }

    QTemporaryDir m_dir;
};

void tst_KVitreluxOne2One::recordFromElement()
{
    for (const QStringList &row : ReadTable(QStringLiteral(RECORDS))) {
        const Case named(row);
        Host().Clear();
        if (!row[1].isEmpty()) {
            Host().settings.insert(kUid + "/Disto"_s, row[1]);
            Host().settings.insert(kUid + "/LCPfilename"_s, "/stored.lcp"_s);
        }
        QDomDocument document;
        QDomElement element;
        const bool hasElement = row[2] != "no element"_s;
        if (hasElement)
            element = document.createElement("any"_s);
        if (hasElement && !row[2].isEmpty())
            element.setAttribute("Disto"_s, row[2]);
        KVitreluxOne2One process;
        auto *params = static_cast<Params *>(process.AllocParameters(element));
        QCOMPARE(params->disto, row[3] == "yes"_s);
        QCOMPARE(params->lcpFilename, row[1].isEmpty() || hasElement ? QString() : "/stored.lcp"_s);
        QCOMPARE(params->scale, 1.0f);
        process.FreeParameters(params);
    }
}

/// Fitted options change nothing that a host can observe of plain records: neither calls nor attributes.
void tst_KVitreluxOne2One::plainRecordsIgnoreFittedOptions()
{
    const QString plain = "CA=0 Disto=0 Falloff=0 LCPfilename="_s;
    const QString gets = "get Disto get CA get Falloff get LCPfilename"_s;
    QDomDocument document;
    QDomElement element = document.createElement("any"_s);
    for (const QString &name : {"Framing"_s, "Lens"_s, "Again"_s, "Profile"_s}) {
        Host().settings.insert(kUid + QLatin1Char('/') + name, "1"_s);
        element.setAttribute(name, "1"_s);
    }
    FillWithCoordinates(Host().Def("/nowhere/a.tif"_s)->pixels, 4, 3);
    KVitreluxOne2One process;
    QCOMPARE(Calls(), gets + " get LensPath"_s);
    process.SetFiles({"/nowhere/a.tif"_s, "/b"_s});
    QCOMPARE(Calls(), gets + " image /nowhere/a.tif "_s + gets + " image /b"_s);
    auto *params = static_cast<Params *>(process.AllocParameters(element));
    QCOMPARE(Calls(), gets);
    QCOMPARE(TextOf(process.GetXmlParameters(params)), plain);
    QCOMPARE(TextOf(process.GetFileXmlParams("/c"_s)), plain);
    QCOMPARE(Calls(), "image /c "_s + gets);
    process.setProperty("Correction", "fitted"_s); // too late for this record
    auto *fitted = static_cast<Params *>(process.AllocParameters(element));
    Calls();
    process.CopyParameters(params, fitted);
    QVERIFY(!params->fitted && fitted->fitted);
    QCOMPARE(TextOf(process.GetXmlParameters(params)), plain);
    process.SaveDefaultSettings(params);
    process.OnValidatePage();
    QCOMPARE(Calls(), "set Disto set CA set Falloff set LCPfilename"_s); // no "LensPath" without a page
    QString output;
    QVERIFY_EXCEPTION_THROWN(process.Process("/nowhere/a.tif"_s, params, output), KException);
    QCOMPARE(Calls(), "image /nowhere/a.tif"_s);
    process.FreeParameters(fitted);
    process.FreeParameters(params);
}

/// Fitted options change nothing that a host can observe of plain runs: calls to the picture's description, the output,
/// and the unchanged record.
void tst_KVitreluxOne2One::plainRunsIgnoreFittedOptions()
{
    const QString source = m_dir.filePath("plain.tif"_s), profile = WriteProfile(40, 30, -0.4);
    KImage pattern;
    FillWithCoordinates(pattern, 40, 30);
    auto *def = Host().Describe(std::make_unique<NotingDef>(source));
    pattern.Convert(def->pixels, GFL_RGB, 16);
    def->pixels.Write(source, "tiff"_s, 0, QString());
    QDomDocument document;
    QDomElement element = document.createElement("any"_s);
    element.setAttribute("LCPfilename"_s, profile);
    for (const char *name : {"Disto", "CA", "Falloff"})
        element.setAttribute(QLatin1String(name), 1);
    QByteArray files[2];
    KImage pictures[2];
    for (bool hasOptions : {false, true}) {
        const Case named("options", hasOptions);
        for (const char *name : {"Framing", "Sampling", "AmountDisto", "Source", "Focal"})
            if (hasOptions)
                element.setAttribute(QLatin1String(name), "1"_s);
        KVitreluxOne2One process;
        void *params = process.AllocParameters(element);
        if (hasOptions)
            process.setProperty("Correction", "fitted"_s); // too late for this record
        const QString before = TextOf(process.GetXmlParameters(params));
        Calls();
        def->noted.clear();
        QString output;
        process.Process(source, params, output);
        QCOMPARE(Calls(), "image "_s + source);
        QCOMPARE(std::exchange(def->noted, QString()), "lock full;unlock full;depth;"_s);
        files[hasOptions] = ReadFile(output);
        pattern.Convert(pictures[hasOptions], GFL_RGBA, 32);
        process.Process(qMakePair(static_cast<KIImageDef *>(def), &pictures[hasOptions]), params);
        QCOMPARE(Calls() + def->noted, QString());
        QCOMPARE(TextOf(process.GetXmlParameters(params)), before);
        process.FreeParameters(params);
    }
    QVERIFY(files[0] == files[1]);
    QVERIFY(std::memcmp(pictures[0].getData(0, 0), pictures[1].getData(0, 0), size_t(40) * 30 * 16) == 0);
    QVERIFY(std::memcmp(pictures[0].getData(0, 0), pattern.getData(0, 0), size_t(40) * 30 * 16) != 0);
}

void tst_KVitreluxOne2One::fittedOption()
{
    for (const QStringList &row : ReadTable(QStringLiteral(FITTED_OPTIONS))) {
        const Case named(row);
        Host().Clear();
        const QString name = row[0], kept = row[2];
        const bool isLasting = row[3] == "yes"_s;
        QDomDocument document;
        QDomElement element = document.createElement("any"_s);
        KVitreluxOne2One process;
        process.setProperty("Correction", "fitted"_s);
        auto *untouched = static_cast<Params *>(process.AllocParameters(element));
        element.setAttribute(name, row[1]);
        auto *params = static_cast<Params *>(process.AllocParameters(element));
        const auto optionOf = [&](void *record) { return process.GetXmlParameters(record).attribute(name); };
        const QString byDefault = optionOf(untouched);
        QCOMPARE(optionOf(params), kept);
        params->fitted->report = FitReport{"/found.lcp"_s, "24 mm"_s, "sRGB"_s, QString(), "why"_s};
        const QString all = TextOf(process.GetXmlParameters(params)); // nothing was done
        for (const char *part : {"Profile=/found.lcp", "Entries=24 mm", "Assumed=sRGB", "Done=", "Why=why"})
            QVERIFY2((all + QLatin1Char(' ')).contains(QLatin1String(part) + QLatin1Char(' ')), part);

        process.SaveDefaultSettings(params);
        process.OnValidatePage();
        void *ofNextJob = process.AllocParameters(QDomElement());
        process.CopyParameters(untouched, params);
        QCOMPARE(optionOf(untouched), isLasting ? kept : byDefault);
        QCOMPARE(optionOf(ofNextJob), isLasting ? kept : byDefault);
        QVERIFY(!untouched->fitted->report);
        for (void *record : {static_cast<void *>(untouched), static_cast<void *>(params), ofNextJob})
            process.FreeParameters(record);
    }
}

void tst_KVitreluxOne2One::xmlForm()
{
    KVitreluxOne2One process;
    Params params;
    params.ca = true;
    params.lcpFilename = "/lens & \"body\".lcp"_s;
    const QDomElement element = process.GetXmlParameters(&params);
    QCOMPARE(element.tagName(), "Lens correction"_s);
    std::vector<QByteArray> noise; // overwrites freed memory, which the element must not use
    for (int bytes = 8; bytes <= 256; bytes += 8)
        noise.emplace_back(bytes, 'A');
    QCOMPARE(element.ownerDocument().doctype().name(), "Lens correction"_s);
    QCOMPARE(TextOf(element), "CA=1 Disto=0 Falloff=0 LCPfilename="_s + params.lcpFilename);
    Params copy;
    params.falloff = params.disto = true;
    params.scale = 0.5F;
    process.CopyParameters(&copy, &params);
    QCOMPARE(TextOf(process.GetXmlParameters(&copy)), "CA=1 Disto=1 Falloff=1 LCPfilename="_s + params.lcpFilename);
    QCOMPARE(copy.scale, 0.5F);
    auto *back = static_cast<Params *>(process.AllocParameters(element));
    QVERIFY(!back->disto && back->ca && !back->falloff);
    QCOMPARE(back->lcpFilename, params.lcpFilename);
    process.FreeParameters(back);
}

/// The profile describes a landscape frame with its center at (0.5, 0.25). For the warp, a portrait or square picture
/// is rotated counterclockwise, so that its right edge becomes the frame's top edge. A radial model then moves pixels
/// toward or away from that center.
void tst_KVitreluxOne2One::rightAngleFrames()
{
    // landscape, portrait, square, and a preview, which is smaller than the profile's frame
    const std::pair<QSize, int> rows[] = {{{41, 21}, 1}, {{21, 41}, 1}, {{31, 31}, 1}, {{80, 60}, 4}};
    for (const auto &[size, reduction] : rows) {
        const Case named(size, "reduction", reduction);
        const int width = size.width(), height = size.height();
        const bool turned = width <= height;
        const int frameWidth = turned ? height : width, frameHeight = turned ? width : height;
        const double k = -0.2;
        KImage image;
        FillWithCoordinates(image, width, height);
        // Profiles give fractions of the size minus one. One more pixel makes that a multiple of the reduction.
        const int atWhole = reduction > 1;
        CorrectDistortion(image, WriteProfile(frameWidth * reduction + atWhole, frameHeight * reduction + atWhole, k),
                          1.0f / float(reduction));
        const double focal = frameWidth - 1 + atWhole;
        const double centerX = 0.5 * focal;
        const double centerY = 0.25 * (frameHeight - 1 + atWhole);
        int compared = 0;
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) {
                // Map to the frame, apply the model, and map back to the picture.
                const double frameX = turned ? y : x;
                const double frameY = turned ? width - 1 - x : y;
                const double u = (frameX - centerX) / focal;
                const double v = (frameY - centerY) / focal;
                const double factor = 1 + k * (u * u + v * v);
                const double sourceX = centerX + focal * u * factor;
                const double sourceY = centerY + focal * v * factor;
                const bool inside = sourceX > 0 && sourceY > 0 && sourceX < frameWidth - 1 && sourceY < frameHeight - 1;
                if (!inside)
                    continue;
                const double pictureX = turned ? width - 1 - sourceY : sourceX;
                const double pictureY = turned ? sourceX : sourceY;
                const float *pixel = Pixel(image, x, y);
                const QPointF off(double(pixel[0]) * width - pictureX, double(pixel[1]) * height - pictureY);
                QVERIFY2(std::abs(off.x()) < 1e-4 * width && std::abs(off.y()) < 1e-4 * height,
                         qPrintable("at (%1, %2): off by %3, %4"_s.arg(x).arg(y).arg(off.x()).arg(off.y())));
                QCOMPARE(pixel[3], 1.0f);
                ++compared;
            }
        }
        QVERIFY(compared > width * height * 3 / 4);
    }
}

void tst_KVitreluxOne2One::unreadableProfile()
{
    const QString absent = m_dir.filePath("absent.lcp"_s);
    const std::tuple<QSize, QString, float> rows[] = {{{8, 6}, absent, 3.0f / 8.0f}, // unchanged
                                                      {{6, 8}, absent, 0.0f},        // portrait: becomes black
                                                      {{6, 8}, QString(), 3.0f / 6.0f}};
    for (const auto &[size, profile, red] : rows) {
        const Case named(size, profile);
        KImage image;
        FillWithCoordinates(image, size.width(), size.height());
        CorrectDistortion(image, profile);
        QCOMPARE(Pixel(image, 3, 2)[0], red);
        // If reading a regular file fails, the run must fail: the picture must not be mistaken for a corrected one.
        QVERIFY_EXCEPTION_THROWN(CorrectDistortion(image, "/proc/self/mem"_s), KException);
    }
}

/// Files are corrected in bands; the result must equal the whole picture corrected in memory. All pictures but the last
/// are large enough for several strips of 512 KiB.
void tst_KVitreluxOne2One::fileRunEqualsWholePicture()
{
    const struct {
        QSize size;
        unsigned short type;
        int depth, corrections; // distortion 1, color 2, vignetting 4
    } rows[] = {{{1001, 300}, GFL_RGB, 8, 1},  {{1001, 300}, GFL_RGB, 8, 2},  {{299, 1001}, GFL_RGBA, 16, 7},
                {{401, 401}, GFL_GREY, 16, 0}, {{701, 201}, GFL_RGBA, 32, 4}, {{97, 1}, GFL_GREY, 8, 0}};
    for (const auto &[size, type, depth, corrections] : rows) {
        const Case named(size, "type", type, "depth", depth, "corrections", corrections);
        Host().Clear();
        const QString source = m_dir.filePath("a.b.tif"_s);
        FakeImageDef *def = Host().Def(source);
        KImage pattern, whole, result;
        FillWithCoordinates(pattern, size.width(), size.height());
        pattern.Convert(def->pixels, type, depth);
        def->pixels.Write(source, "tiff"_s, 0, QString());
        Params params;
        params.disto = corrections & 1;
        params.ca = corrections & 2;
        params.falloff = corrections & 4;
        params.lcpFilename = WriteProfile(qMax(size.width(), size.height()), qMin(size.width(), size.height()), -0.4);
        KVitreluxOne2One process;
        def->pixels.Convert(whole, GFL_RGBA, 32);
        process.Process(qMakePair(static_cast<KIImageDef *>(def), &whole), &params);
        whole.Convert(result, depth > 16 ? GFL_RGB : GFL_RGBA, depth);
        const QString expected = m_dir.filePath("expected.tiff"_s);
        result.Write(expected, "tiff"_s, 3, source);

        QString output;
        process.Process(source, &params, output);
        QCOMPARE(output, m_dir.filePath("a.b_corrected.tiff"_s));
        QVERIFY(def->locks == 0 && !def->acceptedPending);
        QVERIFY(ReadFile(output) == ReadFile(expected));
        KImage written;
        written.ID_Read(output, /*nativeDepth=*/true);
        QCOMPARE(int(written.type()), depth > 16 ? int(GFL_RGB) : int(GFL_RGBA));
        QCOMPARE(int(written.bitsPerComponent()), depth);
        if (type == GFL_GREY && depth == 16) { // no conversion step sets its alpha
            quint16 alpha;
            std::memcpy(&alpha, written.getData(400, 400) + 6, sizeof alpha);
            QCOMPARE(int(alpha), 65535);
        }
    }
}

void tst_KVitreluxOne2One::failedRunReleasesTheLock()
{
    const QString source = "/nowhere/at/all.jpg"_s;
    FakeImageDef *def = Host().Def(source);
    FillWithCoordinates(def->pixels, 4, 3);
    def->pixels.m_bitmap->Type = 0; // a type that no operation supports
    KImage bytes(3, 4, GFL_RGB, 8, /*clear=*/true, nullptr, 0);
    QCOMPARE(Thrown([&] { CorrectDistortion(bytes, WriteProfile(4, 3, 0)); }), "Invalid Parameter"_s); // only floats
    KVitreluxOne2One process;
    Params params;
    QString output;
    QVERIFY_EXCEPTION_THROWN(process.Process(source, &params, output), KException);
    QCOMPARE(def->locks, 0);
    QCOMPARE(output, "/nowhere/at/all_corrected.tiff"_s);

    def->pixels.FreeBitmap(); // the host returns no pixels
    QCOMPARE(Thrown([&] { process.Process(source, &params, output); }),
             "File \"/nowhere/at/all.jpg\" cannot be loaded"_s);
    QCOMPARE(def->locks, 0);
}

/// Functions that hosts and processes need not implement do nothing.
void tst_KVitreluxOne2One::optionalFunctions()
{
    KVitreluxOne2One process;
    Calls();
    Host().Reserved1(), Host().Reserved2(), Host().Reserved3(), Host().Reserved4();
    process.KIPluginProcess::OnValidatePage();
    process.KIPluginProcess::CopyParameters(nullptr, nullptr);
    process.KIPluginProcess::FreeParameters(nullptr);
    QVERIFY(!process.KIPluginProcess::AllocParameters({}));
    QCOMPARE(Calls(), QString());
}

int main(int argc, char **argv)
{
    const FakeHost host(argc, argv);
    tst_KVitreluxOne2One test;
    return QTest::qExec(&test, argc, argv);
}

#include "KVitreluxOne2One_test.moc"
