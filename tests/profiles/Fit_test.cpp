// Fitted corrections in any frame and orientation, compared with the models, which are computed independently.
#include "Case.h"
#include "Fit.h"

#include "CorrectionTwin.h"
#include "KImage.h"
#include "LensfunFit.h"
#include "MadeProfiles.h"
#include "ModelOracle.h"
#include "Table.h"

#include <QtTest>

#include <cmath>

Q_DECLARE_METATYPE(ProfileEntry)
Q_DECLARE_METATYPE(PictureFacts)
Q_DECLARE_METATYPE(FitOptions)
Q_DECLARE_METATYPE(Projection)

namespace {

using namespace made;

double Distance(const SourcePlaces::Point &a, const OraclePoint &b)
{
    return double(std::hypot(a.x - b.x, a.y - b.y));
}

/// Largest position error and largest relative gain error of a fit, compared with the models of one entry.
struct Worst {
    double px = 0.0, gain = 0.0;
};

Worst WorstOf(const FitResult &fit, const ProfileEntry &entry, const OraclePicture &picture, Projection projection)
{
    const CorrectionTwin twin(fit.correction);
    const int width = fit.correction.width, height = fit.correction.height;
    Worst worst;
    for (int i = 0; i <= 40; ++i) {
        for (int j = 0; j <= 40; ++j) {
            const double x = i * (width - 1) / 40.0, y = j * (height - 1) / 40.0;
            const SourcePlaces places = twin.At(x, y);
            if (twin.IsEmpty(places))
                continue;
            const OraclePlaces want = OracleAt({{entry, 1.0L}}, picture, projection, fit.zoom, x, y);
            worst.px = std::max({worst.px, Distance(places.red, want.red), Distance(places.green, want.green),
                                 Distance(places.blue, want.blue)});
            const double gain = std::clamp(double(want.gain), 1.0, 16.0);
            worst.gain = std::max(worst.gain, std::abs(places.gain / gain - 1.0));
        }
    }
    return worst;
}

ProfileEntry Fisheye(const QVector<double> &coefficients)
{
    ProfileEntry entry = Entry(10.0);
    entry.kind = ProfileEntry::Kind::Fisheye;
    entry.green->coefficients = coefficients;
    entry.green->focalLengthX = 0.5;
    entry.green->tangential1 = entry.green->tangential2 = 0.0;
    entry.redGreen->focalLengthX = entry.blueGreen->focalLengthX = entry.vignette->focalLengthX = 0.5;
    entry.redGreen->coefficients = {0.0003};
    entry.vignette->coefficients = {-0.3, 0.05};
    return entry;
}

/// Returns an uncropped picture of the profile's frame.
OraclePicture Whole(int width, int height)
{
    return {width, height, 0.0L, 0.0L, (long double)width, (long double)height, 1.0L, true, 1};
}

} // namespace

class tst_Fit : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase() { KImage::exit(); }
    void atAnEntry_data();
    void atAnEntry();
    void frames_data();
    void frames();
    void unknownRotation();
    void unknownFrames();
    void parts();
    void lensfunFrames();

private:
    QTemporaryDir m_folder;
};

void tst_Fit::initTestCase()
{
    KImage::init(nullptr);
    UseCameras(m_folder);
}

void tst_Fit::atAnEntry_data()
{
    QTest::addColumn<ProfileEntry>("entry");
    QTest::addColumn<Projection>("projection");
    QTest::addColumn<QSize>("size"); // in the sensor's orientation
    QTest::addColumn<int>("turn");
    const auto row = [](const char *name, const ProfileEntry &entry, const QSize &size, int turn = 1,
                        Projection projection = Projection::Rectilinear) {
        QTest::newRow(name) << entry << projection << size << turn;
    };
    row("the profile's size", Entry(), {6000, 4000});
    row("a fifth of the size", Entry(), {1200, 800});
    row("twice the size", Entry(), {12000, 8000});
    ProfileEntry scaled = Entry();
    scaled.redGreen->scaleFactor = 1.005;
    scaled.blueGreen->scaleFactor = 0.995;
    row("strong scale factors", scaled, {6000, 4000});
    ProfileEntry strong = Entry();
    strong.green->coefficients = {-0.4, 0.5, -0.4};
    strong.vignette->coefficients = {-3.4, 5.0, -3.0}; // light falls to 0.29 in a corner
    row("strong models", strong, {4000, 2667});
    for (int turn = 2; turn <= 8; ++turn)
        row(qPrintable(QStringLiteral("orientation %1").arg(turn)), Entry(), {1500, 1000}, turn);
    const Projection projections[] = {Projection::Rectilinear, Projection::Equidistant, Projection::Stereographic,
                                      Projection::Equisolid};
    for (int coefficients = 1; coefficients <= 3; ++coefficients)
        for (Projection projection : projections)
            row(qPrintable(
                    QStringLiteral("fisheye, coefficients: %1, projection: %2").arg(coefficients).arg(int(projection))),
                Fisheye(QVector<double>{-0.03, 0.004, -0.0008}.mid(0, coefficients)), {6000, 4000}, 1 + coefficients,
                projection);
}

void tst_Fit::atAnEntry()
{
    QFETCH(ProfileEntry, entry);
    QFETCH(Projection, projection);
    QFETCH(QSize, size);
    QFETCH(int, turn);
    PictureFacts facts = Facts(turn >= 5 ? size.transposed() : size, entry.focalMm);
    facts.readerTurn = turn;
    OraclePicture picture = Whole(size.width(), size.height());
    picture.turn = turn;
    for (Framing framing : {Framing::Fill, Framing::Keep, Framing::Factor}) {
        FitOptions options;
        options.projection = projection;
        options.framing = framing;
        options.framingFactor = 0.8;
        const FitResult fit = Fit(Profile({entry}), facts, options);
        QVERIFY2(fit.distortion && fit.chromatic && fit.vignetting, qPrintable(fit.why));
        const Worst worst = WorstOf(fit, entry, picture, projection);
        QVERIFY2(
            worst.px < 0.002 && worst.gain < 1e-4,
            qPrintable(QStringLiteral("framing %1: %2 px, gain %3").arg(int(framing)).arg(worst.px).arg(worst.gain)));
    }
}

void tst_Fit::frames_data()
{
    QTest::addColumn<PictureFacts>("facts");
    QTest::addColumn<double>("longPx"); // long side of the picture's whole frame; 0: refused
    QTest::addColumn<double>("ratio");  // q
    QTest::addColumn<bool>("ownCenter");
    QTest::addColumn<QString>("text"); // `assumed` and `why`
    for (const QStringList &row : ReadTable(QStringLiteral(FRAMES))) {
        PictureFacts facts =
            Facts(QSize(row[1].section(QLatin1Char(' '), 0, 0).toInt(), row[1].section(QLatin1Char(' '), 1).toInt()));
        const std::pair<const char *, Fact<double> PictureFacts::*> numbers[] = {
            {"focal=", &PictureFacts::focalMm},
            {"focal35=", &PictureFacts::focal35Mm},
            {"zoom=", &PictureFacts::digitalZoom},
            {"plane=", &PictureFacts::focalPlaneWidthMm}};
        for (const QString &fact : row[2].split(QLatin1Char(';'))) {
            const QString value = fact.section(QLatin1Char('='), 1);
            facts.cropTurned |= fact.startsWith(QLatin1String("turned"));
            facts.cropLost |= fact.startsWith(QLatin1String("lost"));
            if (fact.startsWith(QLatin1String("model=")))
                facts.model = value.isEmpty() ? Fact<QString>() : Known(value);
            for (const auto &[name, number] : numbers)
                if (fact.startsWith(QLatin1String(name)))
                    facts.*number = Known(value.toDouble());
        }
        QTest::newRow(qPrintable(row[0]))
            << facts << row[3].toDouble() << row[4].toDouble() << (row[5] == QLatin1String("1")) << row[6];
    }
}

void tst_Fit::frames()
{
    QFETCH(PictureFacts, facts);
    QFETCH(double, longPx);
    QFETCH(double, ratio);
    QFETCH(bool, ownCenter);
    QFETCH(QString, text);
    FitOptions options;
    options.framing = Framing::Keep;
    const ProfileEntry entry = Entry();
    const FitResult fit = Fit(Profile({entry}), facts, options);
    QCOMPARE(fit.assumed.join(QLatin1Char('\n')) + fit.why, text);
    QCOMPARE(fit.distortion, longPx > 0.0);
    if (!fit.distortion)
        return;
    OraclePicture picture = Whole(facts.pixels.width(), facts.pixels.height());
    picture.ownCenter = ownCenter;
    // The oracle's ratio refers to the longest side.
    picture.ratio = ratio * double(std::max(picture.wholeWidth, picture.wholeHeight)) / longPx;
    const Worst worst = WorstOf(fit, entry, picture, Projection::Rectilinear);
    // If the aspect ratio differs slightly from the frame's, the fit takes centers as fractions of the frame's sides,
    // but the oracle as fractions of the picture's.
    const double tolerance = text.isEmpty() && facts.pixels.height() == 1970 ? 0.02 : 0.002;
    QVERIFY2(worst.px < tolerance && worst.gain < 1e-3,
             qPrintable(QStringLiteral("%1 px, gain %2").arg(worst.px).arg(worst.gain)));
}

void tst_Fit::unknownRotation()
{
    const FitResult fit = Fit(Profile({Entry()}), Facts({2000, 3000}), {});
    for (const char *text : {"the lens's center is assumed to be in the middle", "tangential terms are left out"})
        QVERIFY2(fit.assumed.contains(QLatin1String("rotated in an unknown direction: ") + QLatin1String(text)), text);
    const RadialMap &map = *fit.correction.geometry;
    QCOMPARE(QPointF(map.centerX, map.centerY), QPointF(999.5, 1499.5));
    QVERIFY(map.tangential1 == 0.0 && map.tangential2 == 0.0 && fit.correction.red->tangential1 == 0.0);
    FitOptions lightOnly;
    lightOnly.distortion = lightOnly.chromatic = false;
    QCOMPARE(
        Fit(Profile({Entry()}), Facts({2000, 3000}), lightOnly).assumed.filter(QStringLiteral("tangential")).size(), 0);
    // The unit is the same as in landscape orientation: points at a radius of 1,000 px move by the same amount.
    FitOptions keep;
    keep.framing = Framing::Keep;
    const FitResult landscape = Fit(Profile({Entry()}), Facts({3000, 2000}), keep);
    QVERIFY(std::abs(map.factor.AtSquared(1e6) - landscape.correction.geometry->factor.AtSquared(1e6)) < 1e-7);
}

void tst_Fit::unknownFrames()
{
    ProfileEntry entry = Entry(), bare = Entry();
    entry.width = entry.sensorFormatFactor = 0.0;
    for (auto *model : {&bare.geometry, &bare.green, &bare.redGreen, &bare.blueGreen, &bare.vignette})
        (*model)->focalLengthX = 0.0; // to be computed from the focal length and the frame
    bare.model = QStringLiteral("THING");
    bare.sensorFormatFactor = 0.0;
    const std::pair<ProfileEntry, const char *> rows[] = {{entry, "SMALL"}, {bare, "SMALL"}, {bare, "THING"}};
    for (const auto &[one, model] : rows) {
        PictureFacts facts = Facts();
        facts.model = Known(QString::fromLatin1(model));
        const FitResult fit = Fit(Profile({one}), facts, {});
        QVERIFY2(fit.why.endsWith(QLatin1String("the frame that the profile was made from is unknown")),
                 qPrintable(fit.why));
        QVERIFY2(!fit.correction.ChangesAnything(), qPrintable(one.model));
    }
    // The frame of the table's camera is 24 mm wide. Entries of the same camera share it.
    ProfileEntry longer = bare;
    bare.model = longer.model = QStringLiteral("BODY");
    longer.focalMm = 40.0;
    LensProfile stated = Profile({bare, longer});
    for (ProfileEntry &one : stated.entries)
        for (auto *model : {&one.geometry, &one.green, &one.redGreen, &one.blueGreen, &one.vignette})
            (*model)->focalLengthX = one.focalMm / 24.0;
    const auto factor = [](const LensProfile &profile) {
        return Fit(profile, Facts({6000, 4000}, 30.0), {}).correction.geometry->factor.AtSquared(1e6);
    };
    QVERIFY(std::abs(factor(Profile({bare, longer})) - factor(stated)) < 1e-7);
}

void tst_Fit::parts()
{
    const ProfileEntry entry = Entry();
    FitOptions options;
    options.framing = Framing::Keep;
    for (int turn : {1, 3, 6, 8}) { // the right half of the upper two thirds, at half the size
        const Case named("turn", turn);
        const QSize size(1500, 1333);
        PictureFacts facts = Facts(turn >= 5 ? size.transposed() : size);
        facts.readerTurn = turn;
        facts.crop = Known(QRectF(0.5, 0.0, 0.5, 1333.0 / 2000.0));
        OraclePicture picture = Whole(1500, 1333);
        picture.wholeWidth = 3000.0L;
        picture.wholeHeight = 2000.0L;
        picture.left = 1500.0L;
        picture.turn = turn;
        const FitResult fit = Fit(Profile({entry}), facts, options);
        const Worst worst = WorstOf(fit, entry, picture, Projection::Rectilinear);
        QVERIFY2(worst.px < 0.002, qPrintable(QStringLiteral("turn %1: %2 px").arg(turn).arg(worst.px)));
        QVERIFY(fit.assumed.isEmpty());
    }
    // Stored rotated, and cropped off center: the position is unknown.
    PictureFacts lost = Facts({2000, 1500});
    lost.crop = Known(QRectF(0.5, 0.0, 0.5, 1.0)); // of 3000 x 2000 in landscape, then rotated
    const FitResult fit = Fit(Profile({entry}), lost, options);
    QVERIFY2(!fit.distortion && fit.why.contains(QLatin1String("its position there is unknown")), qPrintable(fit.why));
    // Around the center, it is cropped like a picture of the whole frame.
    lost = Facts({1600, 1500});
    lost.crop = Known(QRectF(0.25, 0.1, 0.5, 0.8));
    const auto factor = [&](const PictureFacts &facts) {
        return Fit(Profile({entry}), facts, options).correction.geometry->factor.AtSquared(2.5e5);
    };
    QVERIFY(std::abs(factor(lost) - factor(Facts({3000, 2000}))) < 1e-7);
}

/// A picture cropped around the center is corrected like the same part of the whole picture.
void tst_Fit::lensfunFrames()
{
    const auto fit = [](const QSize &size, const char *model = "Canon EOS 40D",
                        const char *lens = "EF-S18-55mm f/3.5-5.6 IS") {
        PictureFacts facts = Facts(size, 24.0);
        facts.make = Known(QStringLiteral("Canon"));
        facts.model = Known(QString::fromLatin1(model));
        facts.lensNames = {Known(QString::fromLatin1(lens))};
        facts.original = Known(QSize(6000, 4000));
        FitOptions options;
        options.framing = Framing::Keep;
        return FitByLensfun(facts, options);
    };
    const auto text = [](const FitResult &result) {
        return (QStringList{result.profile, result.entries, result.reason, result.why} + result.assumed)
            .join(QLatin1Char('\n'));
    };
    const QString found = QStringLiteral("lensfun:Canon/Canon EF-S 18-55mm f/3.5-5.6 IS\nat 24 mm\nlensfun's data for "
                                         "\"Canon EF-S 18-55mm f/3.5-5.6 IS\"\n");
    QCOMPARE(text(fit({6000, 4000})), found);
    QVERIFY(text(fit({6000, 4000}, "Canon EOS 40D", "EF24-105mm f/4L IS USM"))
                .endsWith(QLatin1String("\"\nlateral color, vignetting: lensfun has no model for it with this lens")));
    PictureFacts bare = Facts({6000, 4000});
    bare.make = Known(QStringLiteral("Canon"));
    bare.model = Known(QStringLiteral("Canon EOS 40D"));
    bare.lensNames = {Known(QStringLiteral("EF-S18-55mm f/3.5-5.6 IS"))};
    PictureFacts lost = bare;
    lost.pixels = QSize(2000, 1500);
    lost.crop = Known(QRectF(0.5, 0.0, 0.5, 1.0));
    QVERIFY(FitByLensfun(lost, {}).why.endsWith(QLatin1String("its position there is unknown")));
    bare.distanceM = {};
    QCOMPARE(text(FitByLensfun(bare, {})), found + QStringLiteral("\ndistant subject"));
    bare.aperture = {};
    QCOMPARE(text(FitByLensfun(bare, {})), found + QStringLiteral("vignetting: the picture's aperture is unknown"));
    bare.focalMm = {};
    QVERIFY(FitByLensfun(bare, {}).why == QLatin1String("the picture's focal length is unknown; give it with --focal"));
    const CorrectionTwin whole(fit({6000, 4000}).correction);
    for (const QSize &size : {QSize(6000, 3376), QSize(4000, 4000)}) {
        const Case named(size);
        const FitResult cut = fit(size);
        QVERIFY2(cut.assumed.contains(QStringLiteral("cropped from the center of a 1.50:1 frame")),
                 qPrintable(cut.assumed.join(QLatin1Char('\n')) + cut.why));
        const double left = (6000 - size.width()) / 2.0, top = (4000 - size.height()) / 2.0;
        const SourcePlaces part = CorrectionTwin(cut.correction).At(100.0, 200.0);
        const SourcePlaces same = whole.At(100.0 + left, 200.0 + top);
        QVERIFY(std::hypot(same.green.x - 100.0 - left, same.green.y - 200.0 - top) > 10.0);
        QVERIFY(std::hypot(part.green.x + left - same.green.x, part.green.y + top - same.green.y) < 0.01);
        QVERIFY(same.gain > 1.1 && std::abs(part.gain - same.gain) < 1e-3);
        QVERIFY(std::hypot(part.red.x + left - same.red.x, part.red.y + top - same.red.y) < 0.01
                && same.red.x != same.green.x);
    }
    QVERIFY(fit({4000, 6000}).assumed.join(QLatin1Char('\n')).contains(QLatin1String("rotated in an unknown")));
}

QTEST_GUILESS_MAIN(tst_Fit)
#include "Fit_test.moc"
