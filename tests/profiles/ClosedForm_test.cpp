// A zoom lens defined by formulas, sampled at 6 focal lengths x 3 distances x 4 apertures and fitted at settings in
// between. The errors must match the table in docs/fitting.md.
#include "CorrectionTwin.h"
#include "Files.h"
#include "Fit.h"
#include "KImage.h"
#include "MadeProfiles.h"

#include <QtTest>

#include <array>
#include <cmath>
#include <functional>

namespace {

using namespace made;

constexpr double kCornerMm = 21.633307652783937; // half the diagonal of 36 x 24 mm
constexpr double kLongMm = 36.0;

struct Shot {
    double focalMm, distanceM, aperture;
};

/// Returns the factor of barrel distortion that turns into pincushion distortion at the long end and depends slightly
/// on distance. It is not a polynomial.
double Factor(const Shot &shot, double mm)
{
    const double wide = 24.0 / shot.focalMm, rho2 = mm * mm / (kCornerMm * kCornerMm);
    const double strength = 0.02 - 0.06 * wide * wide + 0.003 * wide / shot.distanceM;
    return 1.0 + strength * rho2 / (1.0 + 0.3 * rho2);
}

/// Returns the relative light: cosine-fourth falloff, and mechanical vignetting that decreases as the lens
/// is stopped down.
double Light(const Shot &shot, double mm)
{
    const double tangent = mm / shot.focalMm, rho4 = std::pow(mm / kCornerMm, 4.0);
    const double shade = std::pow(2.8 / shot.aperture, 1.7) * std::pow(24.0 / shot.focalMm, 0.3);
    return (1.0 - 0.55 * shade * rho4 / (0.5 + rho4)) / ((1.0 + tangent * tangent) * (1.0 + tangent * tangent));
}

double RedScale(const Shot &shot)
{
    return 1.0 + 0.001 * (35.0 / shot.focalMm - 1.0);
}

/// Fits 1 + c0 x + c1 x^2 + c2 x^3 to @p value by least squares, with x the squared radius in focal lengths, as in
/// measured profiles.
QVector<double> Coefficients(const std::function<double(double mm)> &value, double focal)
{
    double m[3][4] = {};
    for (int i = 1; i <= 200; ++i) {
        const double mm = kCornerMm * i / 200.0, x = std::pow(mm / (focal * kLongMm), 2.0);
        const double powers[] = {x, x * x, x * x * x};
        for (int row = 0; row < 3; ++row) {
            for (int column = 0; column < 3; ++column)
                m[row][column] += powers[row] * powers[column];
            m[row][3] += powers[row] * (value(mm) - 1.0);
        }
    }
    for (int pivot = 0; pivot < 3; ++pivot) {
        for (int row = 0; row < 3; ++row) {
            const double share = m[row][pivot] / m[pivot][pivot];
            for (int column = 0; row != pivot && column < 4; ++column)
                m[row][column] -= share * m[pivot][column];
        }
    }
    return {m[0][3] / m[0][0], m[1][3] / m[1][1], m[2][3] / m[2][2]};
}

ProfileEntry Measured(const Shot &shot)
{
    ProfileEntry entry = Entry(shot.focalMm);
    entry.sensorFormatFactor = 1.0;
    entry.distanceM = shot.distanceM;
    entry.apertureApex = 2.0 * std::log2(shot.aperture);
    const double focal = shot.focalMm / kLongMm;
    const auto factor = [&](double mm) { return Factor(shot, mm); };
    entry.geometry = Model(focal, 0.5, 0.5, Coefficients(factor, focal));
    entry.green.reset();
    entry.blueGreen.reset();
    entry.redGreen = Model(focal, 0.5, 0.5, {0.0});
    entry.redGreen->scaleFactor = RedScale(shot);
    entry.vignette = Model(focal, 0.5, 0.5, Coefficients([&](double mm) { return Light(shot, mm); }, focal));
    return entry;
}

QVector<Shot> Grid(const QVector<double> &focals, const QVector<double> &distances, const QVector<double> &apertures)
{
    QVector<Shot> shots;
    for (double focal : focals)
        for (double distance : distances)
            for (double aperture : apertures)
                shots.append({focal, distance, aperture});
    return shots;
}

struct Error {
    double px = 0.0, stops = 0.0;
};

/// Returns the largest errors of the red position and of the light in the lower right quarter of a 6000 x 4000 picture.
Error ErrorOf(const LensProfile &profile, const Shot &shot)
{
    PictureFacts facts = Facts({6000, 4000}, shot.focalMm);
    facts.distanceM = Known(shot.distanceM);
    facts.aperture = Known(shot.aperture);
    FitOptions options;
    options.framing = Framing::Keep;
    const CorrectionTwin twin(Fit(profile, facts, options).correction);
    Error worst;
    for (int i = 0; i <= 30; ++i) {
        for (int j = 0; j <= 20; ++j) {
            const double x = i * 100.0 - 0.5, y = j * 100.0 - 0.5, mmPerPx = kLongMm / 6000.0;
            const SourcePlaces places = twin.At(2999.5 + x, 1999.5 + y);
            const double k = Factor(shot, std::hypot(x, y) * mmPerPx), red = k * RedScale(shot);
            worst.px = std::max(worst.px, std::hypot(places.red.x - 2999.5 - red * x, places.red.y - 1999.5 - red * y));
            const double light = Light(shot, std::hypot(x, y) * k * mmPerPx);
            worst.stops = std::max(worst.stops, std::abs(std::log2(places.gain * light)));
        }
    }
    return worst;
}

} // namespace

class tst_ClosedForm : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { KImage::init(nullptr); }
    void cleanupTestCase() { KImage::exit(); }
    void betweenEntries();
};

void tst_ClosedForm::betweenEntries()
{
    const QVector<Shot> grid = Grid({24.0, 28.0, 35.0, 45.0, 55.0, 70.0}, {0.5, 1.5, kInfinity}, {2.8, 4.0, 5.6, 11.0});
    QVector<ProfileEntry> entries;
    for (const Shot &shot : grid)
        entries.append(Measured(shot));
    const auto separation = [](const Shot &a, const Shot &b) {
        const auto difference = [](double one, double other) { return std::abs(1.0 / one - 1.0 / other); };
        return difference(a.focalMm, b.focalMm) * 24.0 + difference(a.distanceM, b.distanceM) * 0.5
            + difference(a.aperture * a.aperture, b.aperture * b.aperture) * 2.8 * 2.8;
    };
    std::array<QVector<double>, 6> errors; // of three methods: in pixels, then in EV
    for (const Shot &shot : Grid({26.0, 31.0, 40.0, 50.0, 62.0}, {0.8, 4.0}, {3.3, 4.8, 8.0})) {
        int nearest = 0;
        for (int i = 1; i < grid.size(); ++i)
            nearest = separation(grid[i], shot) < separation(grid[nearest], shot) ? i : nearest;
        const LensProfile ways[] = {Profile(entries), Profile({entries[nearest]}), Profile({entries[0]})};
        for (size_t way = 0; way < 3; ++way) {
            const Error error = ErrorOf(ways[way], shot);
            errors[way].append(error.px);
            errors[way + 3].append(error.stops);
        }
    }
    for (QVector<double> &one : errors)
        std::sort(one.begin(), one.end());
    const auto median = [&errors](size_t i) { return errors[i][errors[i].size() / 2]; };
    const char *const names[] = {"fitted", "nearest entry", "first entry"};
    const QByteArray documented = ReadFile(QStringLiteral(FITTING_MD));
    for (size_t way = 0; way < 3; ++way) {
        const QString row = QString::asprintf("| %s | %.2f px | %.2f px | %.3f EV | %.3f EV |", names[way], median(way),
                                              errors[way].last(), median(way + 3), errors[way + 3].last());
        QVERIFY2(documented.contains(row.toUtf8()), qPrintable(row));
    }
    // The settings are at least about a quarter of a step from any entry, so the remaining second-order error must be a
    // small fraction of the first-order one.
    QVERIFY(errors[0].last() < 0.2 * errors[1].last() && median(0) < 0.2 * median(1));
    QVERIFY(errors[3].last() < 0.3 * errors[4].last() && median(3) < 0.3 * median(4));
    QVERIFY(errors[2].last() > errors[1].last());
}

QTEST_GUILESS_MAIN(tst_ClosedForm)
#include "ClosedForm_test.moc"
