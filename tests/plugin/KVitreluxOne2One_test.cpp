// The process object: its records, and plain corrections of files and of pictures in memory.
#include "Case.h"
#include "KVitreluxOne2One.h"

#include "FakeHost.h"
#include "ProfileText.h"
#include "TestFiles.h"
#include "Thrown.h"

#include <QDomDocument>
#include <QRegularExpression>
#include <QSet>
#include <QTemporaryDir>
#include <QtTest>

#include <cstring>
#include <utility>
#include <vector>

namespace {

using Params = KVitreluxOne2One::Params;

const QString kUid = QStringLiteral("6E8A21D4-93B7-4C05-A1F6-70C3D2E95B18");

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

/// Image description that records the calls to its functions, in order.
class NotingDef : public FakeImageDef {
public:
    using FakeImageDef::FakeImageDef;
    QPixmap *GetThumbnail() const override { return Noted("thumbnail"), FakeImageDef::GetThumbnail(); }
    QString FileName() const override { return Noted("file"), FakeImageDef::FileName(); }
    QString ShortFileName() const override { return Noted("short"), FakeImageDef::ShortFileName(); }
    QString PathName() const override { return Noted("path"), FakeImageDef::PathName(); }
    int nRows() const override { return Noted("rows"), FakeImageDef::nRows(); }
    int nCols() const override { return Noted("columns"), FakeImageDef::nCols(); }
    int nBands() const override { return Noted("bands"), FakeImageDef::nBands(); }
    int nDepth() const override { return Noted("depth"), FakeImageDef::nDepth(); }
    bool HasExif() const override { return Noted("EXIF"), FakeImageDef::HasExif(); }
    bool HasICC() const override { return Noted("ICC"), FakeImageDef::HasICC(); }
    bool IsRaw() const override { return Noted("raw"), FakeImageDef::IsRaw(); }
    float GetFocal() const override { return Noted("focal"), FakeImageDef::GetFocal(); }
    int Model() const override { return Noted("model"), FakeImageDef::Model(); }
    qint64 GetTimestamp() const override { return Noted("time"), FakeImageDef::GetTimestamp(); }
    float GetEV() const override { return Noted("EV"), FakeImageDef::GetEV(); }
    KImage *Lock(int w, int h, bool depth) override { return Noted("lock"), FakeImageDef::Lock(w, h, depth); }
    void Unlock(int w, int h, bool depth) override { Noted("unlock"), FakeImageDef::Unlock(w, h, depth); }
    KImage *LockFullSize(bool depth) override { return Noted("lock full"), FakeImageDef::LockFullSize(depth); }
    void UnlockFullSize(bool depth) override { Noted("unlock full"), FakeImageDef::UnlockFullSize(depth); }

    mutable QString noted;

private:
    void Noted(const char *what) const { noted += QLatin1String(what) + QLatin1Char(';'); }
};

/// Returns the recorded calls to the host, and clears them.
QStringList Calls()
{
    return std::exchange(Host().calls, {});
}

QStringList Prefixed(const QString &prefix, QStringList texts)
{
    return texts.replaceInStrings(QRegularExpression("^"_s), prefix);
}

QSet<QString> AttributesOf(const QDomElement &element)
{
    QSet<QString> names;
    for (int i = 0; i < element.attributes().count(); ++i)
        names.insert(element.attributes().item(i).nodeName());
    return names;
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
    void fittedOption_data();
    void fittedOption();
    void xmlForm();
    void rightAngleFrames_data();
    void rightAngleFrames();
    void unreadableProfile_data();
    void unreadableProfile();
    void fileRunEqualsWholePicture_data();
    void fileRunEqualsWholePicture();
    void failedRunReleasesTheLock();

private:
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
        const char *name, *stored; // the setting "Disto"; empty: nothing is stored
        const char *attribute;     // "Disto" of the element; null: no element, empty: without the attribute
        bool disto;
    } rows[] = {{"nothing stored", "", nullptr, false},
                {"stored", "true", nullptr, true},
                {"element overrides setting", "true", "0", false},
                {"missing attribute overrides setting", "true", "", false},
                {"number above 1", "", "2", true},
                {"not a number", "", "true", false}};
    for (const auto &row : rows) {
        const Case named(row.name);
        Host().Clear();
        const bool isStored = *row.stored;
        if (isStored) {
            Host().settings.insert(kUid + "/Disto"_s, QLatin1String(row.stored));
            Host().settings.insert(kUid + "/LCPfilename"_s, "/stored.lcp"_s);
        }
        QDomDocument document;
        QDomElement element;
        if (row.attribute)
            element = document.createElement("any"_s);
        if (row.attribute && *row.attribute)
            element.setAttribute("Disto"_s, QLatin1String(row.attribute));
        KVitreluxOne2One process;
        auto *params = static_cast<Params *>(process.AllocParameters(element));
        QCOMPARE(params->disto, row.disto);
        QCOMPARE(params->lcpFilename, isStored && !row.attribute ? "/stored.lcp"_s : QString());
        QCOMPARE(params->scale, 1.0f);
        process.FreeParameters(params);
    }
}

// Checks that stored fitted options change no call or attribute of plain records that a host can observe.

void tst_KVitreluxOne2One::plainRecordsIgnoreFittedOptions()
{
    const QStringList names = {"Disto"_s, "CA"_s, "Falloff"_s, "LCPfilename"_s}, gets = Prefixed("get "_s, names);
    const QStringList options = {"Framing"_s, "Lens"_s, "Again"_s, "Profile"_s};
    QDomDocument document;
    QDomElement element = document.createElement("any"_s);
    for (const QString &name : options) {
        Host().settings.insert(kUid + QLatin1Char('/') + name, "1"_s);
        element.setAttribute(name, "1"_s);
    }
    FillWithCoordinates(Host().Def("/nowhere/a.tif"_s)->pixels, 4, 3);
    KVitreluxOne2One process;
    QCOMPARE(Calls(), gets + QStringList("get LensPath"_s));
    process.SetFiles({"/nowhere/a.tif"_s, "/b"_s});
    QCOMPARE(Calls(), gets + QStringList("image /nowhere/a.tif"_s) + gets + QStringList("image /b"_s));
    auto *params = static_cast<Params *>(process.AllocParameters(element));
    QCOMPARE(Calls(), gets);
    QCOMPARE(AttributesOf(process.GetXmlParameters(params)), names.toSet());
    QCOMPARE(AttributesOf(process.GetFileXmlParams("/c"_s)), names.toSet());
    QCOMPARE(Calls(), QStringList("image /c"_s) + gets);
    process.setProperty("Correction", "fitted"_s); // too late for this record
    auto *fitted = static_cast<Params *>(process.AllocParameters(element));
    Calls();
    process.CopyParameters(params, fitted);
    QVERIFY(!params->fitted && fitted->fitted);
    QCOMPARE(AttributesOf(process.GetXmlParameters(params)), names.toSet());
    process.SaveDefaultSettings(params);
    process.OnValidatePage();
    QCOMPARE(Calls(), Prefixed("set "_s, names)); // no "LensPath" without a page
    QString output;
    QVERIFY_EXCEPTION_THROWN(process.Process("/nowhere/a.tif"_s, params, output), KException);
    QCOMPARE(Calls(), QStringList("image /nowhere/a.tif"_s));
    process.FreeParameters(fitted);
    process.FreeParameters(params);
}

// Checks what a host can observe of plain runs: calls to the picture's description, the output, and the unchanged
// record.

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
        QCOMPARE(Calls(), QStringList("image "_s + source));
        QCOMPARE(std::exchange(def->noted, QString()), "lock full;unlock full;depth;"_s);
        files[hasOptions] = ReadFile(output);
        pattern.Convert(pictures[hasOptions], GFL_RGBA, 32);
        process.Process(qMakePair(static_cast<KIImageDef *>(def), &pictures[hasOptions]), params);
        QCOMPARE(Calls(), QStringList());
        QCOMPARE(def->noted, QString());
        QCOMPARE(TextOf(process.GetXmlParameters(params)), before);
        process.FreeParameters(params);
    }
    QVERIFY(files[0] == files[1]);
    QVERIFY(std::memcmp(pictures[0].getData(0, 0), pictures[1].getData(0, 0), size_t(40) * 30 * 16) == 0);
    QVERIFY(std::memcmp(pictures[0].getData(0, 0), pattern.getData(0, 0), size_t(40) * 30 * 16) != 0);
}

void tst_KVitreluxOne2One::fittedOption_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("kept"); // the value in the record
    QTest::addColumn<bool>("lasting"); // stored as a default and copied to other records
    const auto row = [](const char *name, const char *text, const char *kept, bool lasting = true) {
        QTest::addRow("%s=%s", name, text)
            << QString::fromLatin1(name) << QString::fromLatin1(text) << QString::fromLatin1(kept) << lasting;
    };
    row("Framing", "keep", "keep");
    row("Framing", "all", "all");
    row("Framing", "1.05", "1.05");
    row("Framing", "3", "2"); // clamped
    row("Framing", "1,05", "fill");
    row("Framing", "nan", "fill");
    row("Sampling", "bilinear", "bilinear");
    row("Sampling", "", "sharp");
    row("Projection", "equisolid", "equisolid");
    row("Projection", "Equisolid", "rectilinear");
    row("AmountDisto", "0.1", "0.1");
    row("AmountCA", "-1", "0");
    row("AmountFalloff", "half", "1");
    row("Source", "lensfun", "lensfun");
    row("Again", "1", "1", false);
    row("Again", "0", "", false);
    row("Lens", "Kit & 18-55mm", "Kit & 18-55mm", false);
    row("Body", "X1", "X1", false);
    row("Focal", "23.5", "23.5", false);
    row("Focal", "inf", "", false);
    row("Aperture", "0", "", false);
    row("Distance", "inf", "inf", false);
}

void tst_KVitreluxOne2One::fittedOption()
{
    QFETCH(QString, name);
    QFETCH(QString, text);
    QFETCH(QString, kept);
    QFETCH(bool, lasting);
    QDomDocument document;
    QDomElement element = document.createElement("any"_s);
    KVitreluxOne2One process;
    process.setProperty("Correction", "fitted"_s);
    auto *untouched = static_cast<Params *>(process.AllocParameters(element));
    element.setAttribute(name, text);
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
    QCOMPARE(optionOf(untouched), lasting ? kept : byDefault);
    QCOMPARE(optionOf(ofNextJob), lasting ? kept : byDefault);
    QVERIFY(!untouched->fitted->report);
    for (void *record : {static_cast<void *>(untouched), static_cast<void *>(params), ofNextJob})
        process.FreeParameters(record);
}

void tst_KVitreluxOne2One::xmlForm()
{
    KVitreluxOne2One process;
    Params params;
    params.ca = true;
    params.lcpFilename = QStringLiteral("/lens & \"body\".lcp");
    const QDomElement element = process.GetXmlParameters(&params);
    QCOMPARE(element.tagName(), QStringLiteral("Lens correction"));
    std::vector<QByteArray> noise; // overwrites freed memory, which the element must not use
    for (int bytes = 8; bytes <= 256; bytes += 8)
        noise.emplace_back(bytes, 'A');
    QCOMPARE(element.ownerDocument().doctype().name(), QStringLiteral("Lens correction"));
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

// The profile describes a landscape frame with its center at (0.5, 0.25). For the warp, an upright picture is rotated
// counterclockwise, so that its right edge becomes the frame's top edge. A radial model then moves pixels toward or
// away from that center, wherever it is in the upright picture.

void tst_KVitreluxOne2One::rightAngleFrames_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("reduction");
    QTest::newRow("landscape") << QSize(41, 21) << 1;
    QTest::newRow("portrait") << QSize(21, 41) << 1;
    QTest::newRow("square") << QSize(31, 31) << 1;
    QTest::newRow("preview, smaller than the profile's frame") << QSize(80, 60) << 4;
}

void tst_KVitreluxOne2One::rightAngleFrames()
{
    QFETCH(QSize, size);
    QFETCH(int, reduction);
    const int width = size.width(), height = size.height();
    const bool turned = width <= height;
    const int frameWidth = turned ? height : width, frameHeight = turned ? width : height;
    const double k = -0.2;
    KImage image;
    FillWithCoordinates(image, width, height);
    // Profiles count in units of the size minus one; with one more pixel, that is a multiple of the reduction.
    const int atWhole = reduction > 1;
    CorrectDistortion(image, WriteProfile(frameWidth * reduction + atWhole, frameHeight * reduction + atWhole, k),
                      1.0f / float(reduction));
    const double focal = frameWidth - 1 + atWhole;
    const double centerX = 0.5 * focal;
    const double centerY = 0.25 * (frameHeight - 1 + atWhole);
    int compared = 0;
    for (int y = 0; y < height; ++y) {
        const Case named("row", y);
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
                     qPrintable(QStringLiteral("at (%1, %2): off by %3, %4").arg(x).arg(y).arg(off.x()).arg(off.y())));
            QCOMPARE(pixel[3], 1.0f);
            ++compared;
        }
    }
    QVERIFY(compared > width * height * 3 / 4);
}

void tst_KVitreluxOne2One::unreadableProfile_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QString>("profile");
    QTest::addColumn<float>("red"); // at (3, 2)
    const QString absent = m_dir.filePath(QStringLiteral("absent.lcp"));
    QTest::newRow("landscape is unchanged") << QSize(8, 6) << absent << 3.0f / 8.0f;
    QTest::newRow("portrait becomes black") << QSize(6, 8) << absent << 0.0f;
    QTest::newRow("portrait without a profile") << QSize(6, 8) << QString() << 3.0f / 6.0f;
}

void tst_KVitreluxOne2One::unreadableProfile()
{
    QFETCH(QSize, size);
    QFETCH(QString, profile);
    KImage image;
    FillWithCoordinates(image, size.width(), size.height());
    CorrectDistortion(image, profile);
    QTEST(Pixel(image, 3, 2)[0], "red");
    // If reading a regular file fails, the run must fail: the picture must not be mistaken for a corrected one.
    QVERIFY_EXCEPTION_THROWN(CorrectDistortion(image, QStringLiteral("/proc/self/mem")), KException);
}

// Files are corrected in bands; the result must equal that of the whole picture corrected in memory. All pictures but
// the last are large enough for several strips of 512 KiB.

void tst_KVitreluxOne2One::fileRunEqualsWholePicture_data()
{
    QTest::addColumn<QSize>("size");
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("depth");
    QTest::addColumn<int>("corrections"); // distortion 1, color 2, vignetting 4
    QTest::newRow("RGB, 8 bits, distortion") << QSize(1001, 300) << int(GFL_RGB) << 8 << 1;
    QTest::newRow("RGB, 8 bits, color") << QSize(1001, 300) << int(GFL_RGB) << 8 << 2;
    QTest::newRow("portrait RGBA, 16 bits, all") << QSize(299, 1001) << int(GFL_RGBA) << 16 << 7;
    QTest::newRow("gray, 16 bits, no correction") << QSize(401, 401) << int(GFL_GREY) << 16 << 0;
    QTest::newRow("RGBA, float, vignetting") << QSize(701, 201) << int(GFL_RGBA) << 32 << 4;
    QTest::newRow("one row, gray, 8 bits, no correction") << QSize(97, 1) << int(GFL_GREY) << 8 << 0;
}

void tst_KVitreluxOne2One::fileRunEqualsWholePicture()
{
    QFETCH(QSize, size);
    QFETCH(int, type);
    QFETCH(int, depth);
    QFETCH(int, corrections);
    const QString source = m_dir.filePath(QStringLiteral("a.b.tif"));
    FakeImageDef *def = Host().Def(source);
    KImage pattern, whole, result;
    FillWithCoordinates(pattern, size.width(), size.height());
    pattern.Convert(def->pixels, static_cast<unsigned short>(type), depth);
    def->pixels.Write(source, QStringLiteral("tiff"), 0, QString());
    Params params;
    params.disto = corrections & 1;
    params.ca = corrections & 2;
    params.falloff = corrections & 4;
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

void tst_KVitreluxOne2One::failedRunReleasesTheLock()
{
    const QString source = QStringLiteral("/nowhere/at/all.jpg");
    FakeImageDef *def = Host().Def(source);
    FillWithCoordinates(def->pixels, 4, 3);
    def->pixels.m_bitmap->Type = 0; // a type that no operation supports
    KVitreluxOne2One process;
    Params params;
    QString output;
    QVERIFY_EXCEPTION_THROWN(process.Process(source, &params, output), KException);
    QCOMPARE(def->locks, 0);
    QCOMPARE(output, QStringLiteral("/nowhere/at/all_corrected.tiff"));

    def->pixels.FreeBitmap(); // the host returns no pixels
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
