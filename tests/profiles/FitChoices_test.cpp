// Which entries, facts and options a fit uses, how it blends them, and what it reports about the rest.
#include "Case.h"
#include "Fit.h"

#include "InputLimits.h"
#include "KImage.h"
#include "LensfunFit.h"
#include "MadeProfiles.h"
#include "MapCheck.h"
#include "PictureLight.h"
#include "Table.h"

#include <QtTest>

#include <cmath>
#include <functional>

Q_DECLARE_METATYPE(ProfileEntry)
Q_DECLARE_METATYPE(PictureFacts)
Q_DECLARE_METATYPE(FitOptions)

using namespace made;

class tst_FitChoices : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase() { KImage::exit(); }
    void blending();
    void choices_data();
    void choices();
    void oddities();
    void leftOut_data();
    void leftOut();
    void useless_data();
    void useless();

private:
    QTemporaryDir m_folder;
};

void tst_FitChoices::initTestCase()
{
    KImage::init(nullptr);
    UseCameras(m_folder);
}

void tst_FitChoices::blending()
{
    // The first entry's weight is (1/25 - 1/40) / (1/20 - 1/40) = 0.6 at 25 mm between 20 and 40 mm, 0.5 at 1.5 m
    // between 1 and 3 m, and (1/8 - 1/16) / (1/4 - 1/16) = 1/3 at f/2.8284 between f/2 and f/4.
    QVector<ProfileEntry> entries;
    const double weights[] = {0.6, 0.4}, distances[] = {0.5, 0.5}, apertures[] = {1.0 / 3.0, 2.0 / 3.0};
    QVector<double> expected;
    for (int i = 0; i < 8; ++i) {
        ProfileEntry entry = Entry(i & 4 ? 40.0 : 20.0);
        entry.distanceM = i & 2 ? 3.0 : 1.0;
        entry.apertureApex = i & 1 ? 4.0 : 2.0;
        entry.green->focalLengthX = entry.geometry->focalLengthX = entry.focalMm / 24.0;
        entry.green->coefficients[0] = -0.02 * (i / 2 + 1);
        entry.green->tangential1 = 0.001 * (i / 2 + 1);
        entry.green->centerX = 0.5 + 0.001 * (i / 2);
        entry.vignette->coefficients = {-0.2 * (i + 1)};
        entries.append(entry);
        expected.append(weights[i >> 2] * distances[(i >> 1) & 1] * apertures[i & 1]);
    }
    PictureFacts facts = Facts({6000, 4000}, 25.0);
    facts.distanceM = Known(1.5);
    facts.aperture = Known(std::sqrt(8.0));
    FitOptions options;
    options.framing = Framing::Keep;
    const FitResult fit = Fit(Profile(entries), facts, options);
    QCOMPARE(fit.lightEntries.size(), 8);
    for (const EntryWeight &one : fit.lightEntries)
        QVERIFY2(std::abs(one.weight - expected[one.entry]) < 1e-12, qPrintable(QString::number(one.entry)));
    QCOMPARE(fit.geometryEntries.size(), 4);
    QCOMPARE(fit.assumed, QStringList());
    double factor = 0.0, tangential = 0.0, center = 0.0, stops = 0.0;
    const double radius = 2400.0;
    for (int i = 0; i < 8; ++i) {
        const auto x = [&](const ProfileModel &model) {
            const double u = radius / (model.focalLengthX * 6000.0);
            return u * u;
        };
        const ProfileModel &g = *entries[i].green;
        const double k = 1.0 + x(g) * (g.coefficients[0] + x(g) * (g.coefficients[1] + x(g) * g.coefficients[2]));
        factor += expected[i] * k;
        tangential += expected[i] * g.tangential1 / (g.focalLengthX * 6000.0);
        center += expected[i] * (g.centerX * 6000.0 - 0.5);
        stops += expected[i] * std::log2(1.0 + entries[i].vignette->coefficients[0] * x(*entries[i].vignette));
    }
    const RadialMap &map = *fit.correction.geometry;
    QVERIFY(std::abs(map.factor.AtSquared(radius * radius) - factor) * radius < 0.002);
    QVERIFY(std::abs(map.tangential1 - tangential) < 1e-12);
    QVERIFY(std::abs(map.centerX - center) < 1e-6);
    QVERIFY(std::abs(fit.correction.light->gain.AtSquared(radius * radius) * std::exp2(stops) - 1.0) < 1e-4);

    // Entries without a model for a color don't move it and don't affect its center.
    for (int i = 0; i < 4; ++i)
        entries[i].blueGreen.reset(); // at 20 mm, with a weight of 0.6
    const RadialMap blue = *Fit(Profile(entries), facts, options).correction.blue;
    const ProfileModel &one = *entries[4].blueGreen;
    QVERIFY(std::abs(blue.centerX - (one.centerX * 6000.0 - 0.5)) < 1e-6
            && std::abs(blue.centerY - (one.centerY * 4000.0 - 0.5)) < 1e-6);
    const double x2 = std::pow(radius / (one.focalLengthX * 6000.0), 2);
    QVERIFY(std::abs(blue.factor.AtSquared(radius * radius)
                     - (0.6 + 0.4 * one.scaleFactor * (1.0 + one.coefficients[0] * x2)))
                * radius
            < 0.002);

    // Half the amount gives half the displacement and half the gain in stops. Amounts are limited to 2.
    for (const auto &[amount, limited] : {std::pair(0.5, 0.5), {3.0, 2.0}}) {
        options.amountDistortion = options.amountChromatic = options.amountVignetting = amount;
        const Correction half = Fit(Profile(entries), facts, options).correction;
        const auto factorOf = [&](const std::optional<RadialMap> &shown) {
            return shown->factor.AtSquared(radius * radius);
        };
        QVERIFY(std::abs(factorOf(half.geometry) - 1.0 - limited * (factor - 1.0)) * radius < 0.002);
        QVERIFY(std::abs(factorOf(half.red) - 1.0 - limited * (factorOf(fit.correction.red) - 1.0)) * radius < 0.002);
        QVERIFY(std::abs(half.light->gain.AtSquared(radius * radius) * std::exp2(limited * stops) - 1.0) < 1e-4);
    }
}

void tst_FitChoices::choices_data()
{
    QTest::addColumn<QVector<ProfileEntry>>("entries");
    QTest::addColumn<PictureFacts>("facts");
    QTest::addColumn<QString>("expected"); // entries with weights, assumptions, and why something was left out
    const auto numbers = [](const QString &text) {
        QVector<double> values;
        for (const QString &one : text.split(QLatin1Char(' ')))
            values << one.toDouble();
        return values;
    };
    const auto entries = [&](const QString &text) {
        QVector<ProfileEntry> all;
        for (const QString &one : text.split(QLatin1Char(';'))) {
            const QVector<double> values = numbers(one);
            all << Entry(values[0]);
            all.last().distanceM = values[1];
            all.last().hasAperture = values[2] > -9.0;
            all.last().apertureApex = std::max(values[2], 0.0);
            all.last().kind = values.size() > 3 ? ProfileEntry::Kind::Fisheye : ProfileEntry::Kind::Perspective;
        }
        return all;
    };
    const auto shot = [&](const QString &text) {
        const QVector<double> values = numbers(text);
        const auto fact = [](double value) { return value > 0.0 ? Known(value) : Fact<double>(); };
        PictureFacts facts = Facts();
        facts.focalMm = fact(values[0]);
        facts.distanceM = fact(values[1]);
        facts.aperture = fact(values[2]);
        return facts;
    };
    for (const QStringList &row : ReadTable(QStringLiteral(CHOICES)))
        QTest::newRow(qPrintable(row[0])) << entries(row[1]) << shot(row[2]) << row[3];
    QVector<ProfileEntry> sideless = {Entry(20.0), Entry(40.0)}; // the picture's body gives the size instead
    sideless[0].width = sideless[1].height = 0.0;
    QTest::newRow("frames with one side")
        << sideless << shot(QStringLiteral("25 3 4")) << QStringLiteral("20 mm f/4 3 m 60 %, 40 mm f/4 3 m 40 %\n");
    // A frame for each body, size and crop factor. The longest sides are 18 mm in the picture, and in the entries:
    QVector<ProfileEntry> framed = entries(QStringLiteral("20 1 4;20 4 4;40 1 4;40 4 4"));
    framed[0].model = framed[1].model = framed[2].model = framed[3].model = QStringLiteral("X"); // 24 mm
    framed[1].sensorFormatFactor = 1.0;                                                          // 36 mm
    framed[2].height = 6000.0;                                                                   // 20.4 mm
    framed[3].make = QStringLiteral("Y");
    framed[3].sensorFormatFactor = 1.2; // 30 mm
    PictureFacts small = shot(QStringLiteral("25 2 4"));
    small.model = Known(QStringLiteral("SMALL"));
    small.raw = true;
    framed[0].raw = true;
    QTest::newRow("several frames")
        << framed << small
        << QStringLiteral("20 mm f/4 1 m 20 %, 20 mm f/4 4 m 40 %, 40 mm f/4 1 m 13 %, 40 mm f/4 4 m 27 %\n"
                          "made with another body, X: the picture's frame is 75 % of that body's\n"
                          "made with another body, X: the picture's frame is 50 % of that body's\n"
                          "made with another body, X: the picture's frame is 88 % of that body's\n"
                          "made with another body, X: the picture's frame is 60 % of that body's\n"
                          "the profile was measured on rendered pictures\n");
    framed[0].raw = true;
    QTest::newRow("raw data")
        << framed.mid(0, 1) << shot(QStringLiteral("20 1 4"))
        << QStringLiteral(
               "20 mm f/4 1 m 100 %\nmade with another body, X: the picture's frame is 100 % of that body's\n"
               "the profile was measured on raw data\n");
}

void tst_FitChoices::choices()
{
    QFETCH(QVector<ProfileEntry>, entries);
    QFETCH(PictureFacts, facts);
    QFETCH(QString, expected);
    const FitResult fit = Fit(Profile(entries), facts, {});
    QCOMPARE((QStringList(fit.entries) + fit.assumed + QStringList(fit.why)).join(QLatin1Char('\n')), expected);
}

/// Notes on the entries that are used reach the user; those on other entries don't. An invalid gamma is ignored.
void tst_FitChoices::oddities()
{
    LensProfile profile = Profile({Entry(20.0), Entry(40.0), Entry(80.0)});
    profile.notes = {{7, 0, QStringLiteral("of a used entry")}, {9, 2, QStringLiteral("of another entry")}};
    profile.entries[0].profileName = QStringLiteral("wide");
    const FitResult used = Fit(profile, Facts({6000, 4000}, 30.0), {});
    QCOMPARE(used.assumed, QStringList{QStringLiteral("problem in the profile: of a used entry")});
    QCOMPARE(used.profileName, QStringLiteral("wide"));
    // The last of the notes allowed is followed by one that says so, if a further entry can't be used.
    LensProfile full = Profile({Entry(20.0), Entry(40.0)});
    full.notes.resize(kMaxProfileNotes);
    full.entries[1].green->tangential1 = 1e9; // moves everything outside
    QVERIFY(CheckMaps(&full).isEmpty() && full.notes.size() == kMaxProfileNotes + 1);
    QCOMPARE(full.notes.last().entry, -1);
    QCOMPARE(full.notes.last().text, QStringLiteral("more than 1000 notes; the rest are left out"));
    PictureFacts raw;
    raw.raw = true;
    // A stored value of 0.25 is a light of 0.25^gamma; an invalid gamma has no effect.
    for (const auto &[gamma, light] : {std::pair(0.5, 0.5), {2.0, 0.0625}, {0.0, 0.25}, {qQNaN(), 0.25}})
        QVERIFY(std::abs(LightOf(raw, false, gamma).curve.Light(0, 0.25) - light) < 1e-9);
    // The light of a stored 0.5: sRGB's formula, 0.5^(563/256), and 0.5 itself for linear floats.
    PictureFacts rendered;
    const QString note = QStringLiteral("no color profile with curves: treated as sRGB");
    for (const auto &[encoding, isFloat, light, text] :
         {std::tuple(ColorEncoding::Srgb, false, std::pow(0.555 / 1.055, 2.4), QString()),
          {ColorEncoding::AdobeRgb, false, std::pow(0.5, 563.0 / 256.0), QString()},
          {ColorEncoding::Unknown, false, std::pow(0.555 / 1.055, 2.4), note},
          {ColorEncoding::Srgb, true, 0.5, QString()}}) {
        rendered.encoding.value = encoding;
        const PictureLight found = LightOf(rendered, isFloat, 2.0);
        QVERIFY(std::abs(found.curve.Light(0, 0.5) - light) < 1e-9);
        QCOMPARE(found.assumed, text);
    }
}

void tst_FitChoices::leftOut_data()
{
    QTest::addColumn<PictureFacts>("facts");
    QTest::addColumn<FitOptions>("options");
    QTest::addColumn<QString>("done"); // letters of the corrections made
    QTest::addColumn<QString>("said"); // assumptions, and why something was left out
    const auto row = [](const char *name, const std::function<void(PictureFacts &, FitOptions &)> &change,
                        const char *done, const char *why) {
        PictureFacts facts = Facts();
        FitOptions options;
        change(facts, options);
        QTest::newRow(name) << facts << options << QString::fromLatin1(done) << QString::fromLatin1(why);
    };
    const auto corrected = [](PictureFacts &f) { f.distortionDone = f.vignettingDone = {true, QStringLiteral("XMP")}; };
    row(
        "not requested", [](PictureFacts &, FitOptions &o) { o.distortion = false; }, "cv", "");
    row(
        "amount 0", [](PictureFacts &, FitOptions &o) { o.amountVignetting = 0.0; }, "dc",
        "vignetting: its amount is 0");
    row(
        "corrected before", [&](PictureFacts &f, FitOptions &) { corrected(f); }, "c",
        "distortion, vignetting: corrected before (XMP)");
    row(
        "corrected again", [&](PictureFacts &f, FitOptions &o) { corrected(f), o.again = true; }, "dcv",
        "distortion corrected again, although already corrected (XMP)\n"
        "vignetting corrected again, although already corrected (XMP)\n");
    row(
        "tried before",
        [](PictureFacts &f, FitOptions &) { f.distortionTried = f.chromaticTried = f.vignettingTried = true; }, "",
        "distortion, lateral color, vignetting: an earlier run couldn't correct it (XMP vitrelux:Requested)");
    row(
        "typed setting",
        [](PictureFacts &f, FitOptions &o) {
            f.focalMm = f.aperture = f.distanceM = Known(99.0);
            o.typed.focalMm = 24.0, o.typed.aperture = 4.0, o.typed.distanceM = 3.0;
        },
        "dcv", "");
    row(
        "invalid typed setting",
        [](PictureFacts &, FitOptions &o) { o.typed.focalMm = o.typed.aperture = kInfinity, o.typed.distanceM = -1; },
        "dcv",
        "focal length unknown: the profile's only one is used\nthe profile's vignetting at f/4, its only aperture\n");
    row(
        "typed body", [](PictureFacts &f, FitOptions &o) { f.model = {}, o.typed.body = QStringLiteral("BODY"); },
        "dcv", "");
    row(
        "typed body with its maker",
        [](PictureFacts &, FitOptions &o) { o.typed.body = QStringLiteral(" Nikon  D70 "); }, "dcv",
        "made with another body, BODY: the picture's frame is 90 % of that body's\n");
    row(
        "no size", [](PictureFacts &f, FitOptions &) { f.pixels = QSize(); }, "", "the picture's size is unknown");
    row(
        "chosen for a larger frame",
        [](PictureFacts &f, FitOptions &o) {
            f.model = Known(QStringLiteral("LARGE"));
            o.profile = QStringLiteral("made.lcp");
        },
        "dcv",
        "made with another body, BODY: the picture's frame is 150 % of that body's\n"
        "the profile was made from a smaller frame (the picture's is 150 % of it): its edges are extrapolated\n");
}

void tst_FitChoices::leftOut()
{
    QFETCH(PictureFacts, facts);
    QFETCH(FitOptions, options);
    QFETCH(QString, done);
    QFETCH(QString, said);
    const FitResult fit = Fit(Profile({Entry()}), facts, options);
    const QString letters = QString::fromLatin1(fit.distortion ? "d" : "")
        + QString::fromLatin1(fit.chromatic ? "c" : "") + QString::fromLatin1(fit.vignetting ? "v" : "");
    QCOMPARE(letters, done);
    QCOMPARE((fit.assumed + QStringList(fit.why)).join(QLatin1Char('\n')), said);
    QCOMPARE(fit.correction.ChangesAnything(), !done.isEmpty());
    FitResult gray = fit;
    gray.correction.blue.reset(); // red alone is color too
    LeaveOutColor(&gray);
    QVERIFY(!gray.chromatic && !gray.correction.red);
    const QStringList note = QStringList(QStringLiteral("left out: lateral color: the picture is gray"));
    QCOMPARE(gray.assumed, fit.assumed + (fit.chromatic ? note : QStringList()));
    QCOMPARE(gray.why, done == QLatin1String("c") ? note.first() : fit.why);
    facts.make = Known(QStringLiteral("Canon"));
    facts.model = Known(QStringLiteral("Canon EOS 40D"));
    facts.lensNames = {Known(QStringLiteral("EF24-105mm f/4L IS USM"))};
    QCOMPARE(FitByLensfun(facts, options)
                 .assumed.contains(QStringLiteral("distortion corrected again, although already corrected (XMP)")),
             options.again);
}

void tst_FitChoices::useless_data()
{
    QTest::addColumn<ProfileEntry>("entry"); // the tele end of a zoom, at line 9
    QTest::addColumn<bool>("distortion");    // whether distortion is still corrected
    QTest::addColumn<bool>("color");
    QTest::addColumn<QString>("why");
    const auto row = [](const char *name, bool distortion, bool color, const char *why,
                        const std::function<void(ProfileEntry &)> &change) {
        ProfileEntry entry = Entry(50.0);
        entry.line = 9;
        change(entry);
        QTest::newRow(name) << entry << distortion << color << QString::fromLatin1(why);
    };
    // With r in focal lengths of 1.03 * 6000 px, r (1 - 5000 r^2) grows up to r = 1 / sqrt(15000): 50 px.
    row("a fold near the center", false, true,
        "distortion: 50 mm f/4 3 m (line 9) leaves 0 % of the picture: it folds back 50 px from the center",
        [](ProfileEntry &e) { e.green->coefficients = {-5000.0}; });
    // This one grows up to 519 px; 35 of 32 x 32 evenly spaced pixels, 3.4 %, are nearer to the center.
    row("a fold farther out", false, true,
        "distortion: 50 mm f/4 3 m (line 9) leaves 3 % of the picture: it folds back 519 px from the center",
        [](ProfileEntry &e) { e.green->coefficients = {-47.2}; });
    row("all positions outside", false, true,
        "distortion: 50 mm f/4 3 m (line 9) leaves 0 % of the picture: the rest lies outside the photograph",
        [](ProfileEntry &e) { e.green->coefficients = {1e6}; });
    row("tangential terms move everything outside", false, true,
        "distortion: 50 mm f/4 3 m (line 9) leaves 0 % of the picture: the rest lies outside the photograph",
        [](ProfileEntry &e) { e.green->tangential1 = 1e9; });
    row("both color models, reported once", true, false,
        "lateral color: 50 mm f/4 3 m (line 9): the model for red leaves 0 % of the picture: it folds back 0 px from "
        "the center",
        [](ProfileEntry &e) {
            e.redGreen->coefficients = {-1e12, 1e12, -1e12};
        });
    row("the color model of blue alone", true, false,
        "lateral color: 50 mm f/4 3 m (line 9): the model for blue leaves 0 % of the picture: it folds back 0 px from "
        "the center",
        [](ProfileEntry &e) {
            e.blueGreen->coefficients = {-1e12, 1e12, -1e12};
        });
    row("only one of two entries is a fisheye", true, true, "", [](ProfileEntry &e) {
        e.kind = ProfileEntry::Kind::Fisheye;
        e.green->coefficients = {-0.5};
    });
}

void tst_FitChoices::useless()
{
    QFETCH(ProfileEntry, entry);
    QFETCH(bool, distortion);
    QFETCH(bool, color);
    QFETCH(QString, why);
    const FitResult fit = Fit(Profile({Entry(20.0), entry}), Facts({6000, 4000}, 45.0), {});
    QCOMPARE(fit.why, why);
    QCOMPARE(fit.distortion, distortion);
    QCOMPARE(fit.chromatic, color);
    QCOMPARE(fit.correction.blue.has_value(), color);
    QCOMPARE(fit.geometryEntries.isEmpty(), !distortion);
    QVERIFY(fit.vignetting);
}

QTEST_GUILESS_MAIN(tst_FitChoices)
#include "FitChoices_test.moc"
