// LensParam compared with its formulas in double precision.
#include "LensParam.h"

#include <QtTest>

#include <cmath>

namespace {

using Coefficients = QVector<float>;

/// Returns a model in the pixels of a 6000 x 4000 picture.
LensParam Model(const Coefficients &coefficients)
{
    LensParam model;
    model.centerX = 3050.25;
    model.centerY = 1960.75;
    model.focalPixels = 5000.5F;
    model.coefficients = coefficients;
    model.Found();
    return model;
}

/// Maps a position with a model in double precision. @p radial returns the factor for a squared radius, in squared
/// focal lengths.
template <typename Radial> QPointF Warped(const LensParam &model, QPointF at, double scale, Radial radial)
{
    const double s = scale * double(model.scaleFactor);
    const double f = s * double(model.focalPixels);
    const QPointF center(model.centerX * s, model.centerY * s);
    const QPointF uv = (at - center) / f;
    const double r2 = QPointF::dotProduct(uv, uv);
    const double t1 = model.tangential1;
    const double t2 = model.tangential2;
    const double cross = 2 * uv.x() * uv.y();
    const QPointF shift((2 * uv.x() * uv.x() + r2) * t2 + cross * t1, (2 * uv.y() * uv.y() + r2) * t1 + cross * t2);
    return center + f * (radial(r2) * uv + shift);
}

/// Returns the power series of 1 / (1 + ax + bx^2 + dx^3) up to x^4, by its recurrence: each coefficient from the
/// previous three.
double ReciprocalSeries(double a, double b, double d, double x)
{
    double g[5] = {1};
    double sum = 1;
    for (int n = 1; n < 5; ++n) {
        g[n] = -a * g[n - 1] - (n > 1 ? b * g[n - 2] : 0) - (n > 2 ? d * g[n - 3] : 0);
        sum += g[n] * std::pow(x, n);
    }
    return sum;
}

/// Corners, points near the model's center, and others in a 6000 x 4000 picture.
const QPointF kPlaces[] = {{0, 0},       {5999, 0},    {0, 3999},  {5999, 3999},
                           {3050, 1961}, {3051, 1961}, {17, 2500}, {4321, 1234}};

/// A few rounding errors: floats near 6000 are 0.0005 apart.
constexpr double kTolerancePx = 0.004;

/// Compares a mapping with wanted(position) at all places, in a picture reduced to @p scale.
template <typename Wanted> void CompareAtPlaces(const LensParam &model, LensModel kind, float scale, Wanted wanted)
{
    for (QPointF place : kPlaces) {
        const float x = float(place.x()) * scale, y = float(place.y()) * scale;
        float gotX, gotY;
        model.Warp(kind, x, y, gotX, gotY, scale);
        const QPointF error = QPointF(gotX, gotY) - wanted(QPointF(x, y));
        QVERIFY2(std::abs(error.x()) <= kTolerancePx && std::abs(error.y()) <= kTolerancePx,
                 qPrintable(QString::asprintf("at %g, %g, %d coefficients: off by %g, %g", double(x), double(y),
                                              model.coefficients.size(), error.x(), error.y())));
    }
}

} // namespace

class tst_LensParam : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void perspective();
    void sumsTermsInDouble();
    void fisheye();
    void fisheyeCenterIsNaN();
    void vignettingGain();
};

void tst_LensParam::perspective()
{
    const Coefficients all = {-0.11F, 0.07F, -0.03F, 0.5F};
    const struct {
        int count; // of coefficients; if there are more than three, none is applied
        QPointF tangential;
        float scaleFactor, scale;
    } rows[] = {{0, {}, 1, 1}, {1, {}, 1.013F, 0.25F}, {2, {}, 0.97F, 1},      {3, {}, 1, 0.1706F},
                {4, {}, 1, 1}, {2, {0.004, 0}, 1, 1},  {2, {0, -0.003}, 1, 1}, {0, {-0.002, 0.005}, 1.02F, 0.5F}};
    for (const auto &row : rows) {
        const Coefficients coefficients = all.mid(0, row.count);
        const float scale = row.scale;
        LensParam model = Model(coefficients);
        model.tangential1 = row.tangential.x();
        model.tangential2 = row.tangential.y();
        model.scaleFactor = row.scaleFactor;

        const auto radial = [&](double r2) {
            double sum = 1;
            for (int i = 0; row.count < 4 && i < row.count; ++i)
                sum += double(coefficients[i]) * std::pow(r2, i + 1);
            return sum;
        };
        CompareAtPlaces(model, LensModel::Perspective, scale,
                        [&](QPointF at) { return Warped(model, at, double(scale), radial); });
    }
}

void tst_LensParam::sumsTermsInDouble()
{
    // In float, 1 + 2^-25 and 1 + 2^-24 both round to 1, but the exact sum of all three terms rounds up.
    const LensParam model = Model({std::ldexp(1.0F, -25), std::ldexp(1.0F, -24)});
    QVERIFY(model.ComputeRadialDistortion(1.0F) == std::nextafter(1.0F, 2.0F)); // QCOMPARE would accept 1 too
}

void tst_LensParam::fisheye()
{
    // With no coefficients or with three, all positions map to the center.
    for (const Coefficients &coefficients :
         {Coefficients(), Coefficients{-0.06F}, Coefficients{-0.06F, 0.011F}, Coefficients{-0.06F, 0.011F, 0.001F}}) {
        const bool known = coefficients.size() == 1 || coefficients.size() == 2;
        for (float scale : {1.0F, 0.37F}) {
            LensParam model = Model(coefficients);
            model.scaleFactor = 1.01F;
            model.tangential1 = 0.01; // ignored by the fisheye model
            const double unit = double(scale) * double(model.scaleFactor);
            const QPointF center = QPointF(model.centerX, model.centerY) * unit;
            CompareAtPlaces(model, LensModel::Fisheye, scale, [&](QPointF at) {
                const double r =
                    std::hypot(at.x() - center.x(), at.y() - center.y()) / (unit * double(model.focalPixels));
                const double angleRad = std::atan(r);
                double mapped = known ? angleRad : 0; // radius in focal lengths
                for (int i = 0; known && i < coefficients.size(); ++i)
                    mapped += double(coefficients[i]) * std::pow(angleRad, 2 * i + 3);
                return center + (at - center) * (mapped / r);
            });
        }
    }
}

void tst_LensParam::fisheyeCenterIsNaN()
{
    LensParam model = Model({-0.06F});
    model.centerX = 3050;
    model.centerY = 1960;
    float x, y;
    model.WarpFisheye(3050, 1960, x, y, 1.0F);
    QVERIFY(std::isnan(x) && std::isnan(y));
    model.ComputeDistortion(3050, 1960, x, y, 1.0F);
    QCOMPARE(QPointF(x, y), QPointF(3050, 1960));
}

void tst_LensParam::vignettingGain()
{
    QVector<std::tuple<Coefficients, float, double>> rows = {
        {{-0.5F, 0.3F, 0.2F}, 0.0F, 1.0},
        {{0.5F, 0.0F, 0.0F}, 1.0F, 0.6875}, // a truncated series, not 1/1.5
        {{0.5F}, 1.0F, 0.6875},             // missing coefficients are 0
        {{}, 0.8F, 1.0}};
    for (float a : {-1.25F, 0.5F})
        for (float b : {-0.75F, 1.5F})
            for (float d : {-0.5F, 2.0F})
                rows.append({{a, b, d}, 0.75F, ReciprocalSeries(double(a), double(b), double(d), 0.75)});
    for (const auto &[coefficients, x, gain] : rows) {
        const double got = double(Model(coefficients).ComputeFalloff(x));
        QVERIFY2(std::abs(got - gain) < 1e-5, qPrintable(QStringLiteral("got %1, want %2").arg(got).arg(gain)));
    }
}

QTEST_APPLESS_MAIN(tst_LensParam)
#include "LensParam_test.moc"
