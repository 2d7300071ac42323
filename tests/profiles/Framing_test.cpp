// Checks the zoom of each framing, and that a filled picture has no empty pixels.
#include "Framing.h"

#include "CorrectionTwin.h"
#include "KImage.h"
#include "MadeProfiles.h"

#include <QtTest>

#include <cmath>
#include <random>

using namespace made;

class tst_Framing : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { KImage::init(nullptr); }
    void cleanupTestCase() { KImage::exit(); }
    void fillLeavesNothingEmpty();
    void framings();
};

void tst_Framing::fillLeavesNothingEmpty()
{
    std::mt19937 random(7);
    const auto between = [&random](double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random);
    };
    int bounded = 0;
    for (int i = 0; i < 200; ++i) {
        ProfileEntry entry = Entry();
        for (auto *model : {&entry.green, &entry.redGreen, &entry.blueGreen}) {
            const double strength = model == &entry.green ? 1.0 : 0.01;
            (*model)->centerX = between(0.45, 0.55);
            (*model)->centerY = between(0.45, 0.55);
            (*model)->coefficients = {strength * between(-0.3, 0.3), strength * between(-0.3, 0.3),
                                      strength * between(-0.3, 0.3)};
            (*model)->tangential1 = strength * between(-0.01, 0.01);
            (*model)->tangential2 = strength * between(-0.01, 0.01);
        }
        const QSize size(int(between(20, 3000)), int(between(20, 3000)));
        const FitResult fit = Fit(Profile({entry}), Facts(size), {});
        QVERIFY2(fit.distortion, qPrintable(fit.why));
        const QByteArray name = QByteArray::number(i);
        Correction correction = fit.correction;
        if (fit.zoom == kMinZoom || fit.zoom == kMaxZoom) {
            ++bounded;
            continue;
        }
        QVERIFY2(!fit.leavesEmpty && !CorrectionTwin(correction).LeavesEmpty(), name);
        correction.zoom = fit.zoom * (1.0 - 1e-3);
        QVERIFY2(CorrectionTwin(correction).LeavesEmpty(), name);
    }
    QVERIFY2(bounded < 60, qPrintable(QString::number(bounded)));
}

void tst_Framing::framings()
{
    // Barrel distortion alone, around the center: k = 1 - 0.1 r^2; at the corner, r is 0.6009 of the long side.
    ProfileEntry entry = Entry();
    entry.geometry = Model(1.0, 0.5, 0.5, {-0.1});
    entry.green.reset();
    FitOptions options;
    options.chromatic = options.vignetting = false;
    const auto fit = [&](Framing framing) {
        options.framing = framing;
        return Fit(Profile({entry}), Facts({3000, 2000}), options);
    };
    QCOMPARE(fit(Framing::Keep).zoom, 1.0);
    // All: the source's corner, 1802.776 px or 0.60093 focal lengths from the center, appears where r - 0.1 r^3 =
    // 0.60093, at r = 0.62539.
    const FitResult all = fit(Framing::All);
    QVERIFY2(std::abs(all.zoom - 0.60093 / 0.62539) < 3e-4, qPrintable(QString::number(all.zoom)));
    QVERIFY(all.leavesEmpty && all.fieldShare > 0.998);
    double mirrored[4]; // the zoom must not depend on which corner is the farthest
    for (int i = 0; i < 4; ++i) {
        entry.geometry->centerX = i & 1 ? 0.52 : 0.48, entry.geometry->centerY = i & 2 ? 0.52 : 0.48;
        mirrored[i] = fit(Framing::All).zoom;
        QVERIFY(mirrored[i] < all.zoom && std::abs(mirrored[i] - mirrored[0]) < 1e-6);
    }
    entry.geometry->centerX = entry.geometry->centerY = 0.5;
    // Fill: the midpoint of a long edge, 999.5 px from the picture's center, is sampled at 1,000 px, where the source
    // ends: 1011.5 - 0.1 * 1011.5^3 / 3000^2 = 1000.
    const FitResult fill = fit(Framing::Fill);
    QVERIFY2(std::abs(fill.zoom - 999.5 / 1011.5) < 3e-5, qPrintable(QString::number(fill.zoom, 'g', 9)));
    QVERIFY(!fill.leavesEmpty && fill.fieldShare < all.fieldShare);
    options.framingFactor = 5.0;
    QCOMPARE(fit(Framing::Factor).zoom, 2.0);
    // Pincushion distortion: the middle of a long edge, at 999.5 px or 0.33317 focal lengths, appears where
    // r + 0.1 r^3 = 0.33317, at r = 0.329587.
    entry.geometry->coefficients = {0.1};
    options.framing = Framing::All;
    for (const QSize &size : {QSize(3000, 2000), QSize(2000, 3000)})
        QVERIFY(std::abs(Fit(Profile({entry}), Facts(size), options).zoom - 0.3331667 / 0.3295865) < 1e-5);
    entry.geometry->coefficients = {0.0}; // a quarter of the field at a zoom of 2, all at 1
    for (double zoom : {2.0, 1.0}) {
        options.framingFactor = zoom;
        QVERIFY(std::abs(fit(Framing::Factor).fieldShare - 1.0 / (zoom * zoom)) < 1e-9);
    }
    // A model that folds inside the picture: the area beyond the fold is empty, and the zoom stays within its bounds.
    entry.geometry->coefficients = {-9.0};
    const FitResult folded = fit(Framing::Fill);
    QCOMPARE(folded.zoom, 2.0);
    QVERIFY(folded.leavesEmpty && folded.assumed.join(QLatin1Char(' ')).contains(QLatin1String("framing limited")));
    // r (1 - 9 r^2) grows up to r = 1 / sqrt(27).
    QVERIFY(std::abs(folded.correction.geometry->endRadius - 3000.0 / std::sqrt(27.0)) < 0.01);
    // A circular fisheye: even at the smallest zoom, where the corner is 3606 px from the center, no pixel is empty.
    entry.kind = ProfileEntry::Kind::Fisheye;
    entry.geometry = Model(0.25, 0.5, 0.5, {});
    const FitResult filled = fit(Framing::Fill);
    QVERIFY(filled.zoom == 0.5 && !filled.leavesEmpty);
    QVERIFY(filled.assumed.join(QLatin1Char(' ')).contains(QLatin1String("framing limited to a zoom of 0.5")));
    // A smaller circle: 85 degrees are 445 px from the center of the photograph and 3429 px from that of the result.
    entry.geometry = Model(0.1, 0.5, 0.5, {});
    const FitResult ended = fit(Framing::Fill);
    QVERIFY(std::abs(ended.correction.geometry->endRadius - 3429.0) < 0.1);
    QVERIFY(ended.assumed.join(QLatin1Char(' ')).contains(QLatin1String("85 degrees")));
    // The radius a (1 - 0.1 a^2) folds back at the angle 1 / sqrt(0.3), which each projection shows at another radius.
    entry.geometry->coefficients = {-0.1};
    const double fold = 1.0 / std::sqrt(0.3);
    for (const auto &[projection, radius] : {std::pair(Projection::Equidistant, fold),
                                             {Projection::Stereographic, 2.0 * std::tan(fold / 2.0)},
                                             {Projection::Equisolid, 2.0 * std::sin(fold / 2.0)}}) {
        options.projection = projection;
        QVERIFY(std::abs(fit(Framing::Fill).correction.geometry->endRadius - 300.0 * radius) < 0.01);
    }
    QVERIFY(!fit(Framing::Fill).assumed.join(QLatin1Char(' ')).contains(QLatin1String("85 degrees")));
}

QTEST_GUILESS_MAIN(tst_Framing)
#include "Framing_test.moc"
