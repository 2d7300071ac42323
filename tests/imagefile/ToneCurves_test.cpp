// Tests of tone curves of ICC profiles: formulas, tables, gray, and profiles without curves.
#include "Bitmaps.h"
#include "Case.h"
#include "gfl.h"

#include <QtTest>

#include <lcms2.h>

#include <cmath>
#include <functional>

namespace {

using Light = std::function<double(double)>;

constexpr int kPoints = 513;

cmsToneCurve *Table(const Light &light, int entries)
{
    std::vector<cmsUInt16Number> table;
    for (int i = 0; i < entries; ++i)
        table.push_back(cmsUInt16Number(std::lround(light(double(i) / (entries - 1)) * 65535.0)));
    return cmsBuildTabulatedToneCurve16(nullptr, cmsUInt32Number(entries), table.data());
}

QByteArray RgbProfile(cmsToneCurve *red, cmsToneCurve *green, cmsToneCurve *blue)
{
    const cmsCIExyY white = {0.3127, 0.3290, 1.0};
    const cmsCIExyYTRIPLE primaries = {{0.64, 0.33, 1.0}, {0.30, 0.60, 1.0}, {0.15, 0.06, 1.0}};
    cmsToneCurve *curves[] = {red, green, blue};
    const QByteArray bytes = ProfileBytes(cmsCreateRGBProfile(&white, &primaries, curves));
    for (cmsToneCurve *curve : curves)
        cmsFreeToneCurve(curve);
    return bytes;
}

QByteArray GrayProfile(double gamma)
{
    cmsToneCurve *curve = cmsBuildGamma(nullptr, gamma);
    const QByteArray bytes = ProfileBytes(cmsCreateGrayProfile(cmsD50_xyY(), curve));
    cmsFreeToneCurve(curve);
    return bytes;
}

double Srgb(double v)
{
    return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
}

Light Power(double exponent)
{
    return [=](double v) { return std::pow(v, exponent); };
}

} // namespace

class tst_ToneCurves : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void curvesMatchProfile();
    void profilesWithoutCurves();
};

void tst_ToneCurves::curvesMatchProfile()
{
    const struct {
        const char *name;
        QByteArray profile;
        QVector<Light> light;
        double tolerance; // formulas have 16 fractional bits, tables 16 bits in total
    } rows[] = {
        {"sRGB", ProfileBytes(cmsCreate_sRGBProfile()), {Srgb, Srgb, Srgb}, 3e-5},
        {"gamma 1.8, table, linear",
         RgbProfile(cmsBuildGamma(nullptr, 1.8), Table(Power(2.0), 257), cmsBuildGamma(nullptr, 1.0)),
         {Power(1.8), Power(2.0), Power(1.0)},
         1e-3},
        {"table of sRGB", RgbProfile(Table(Srgb, 1024), Table(Srgb, 4096), Table(Srgb, 513)), {Srgb, Srgb, Srgb}, 9e-6},
        {"gray", GrayProfile(2.0), {Power(2.0)}, 1e-6}};
    for (const auto &[name, profile, light, tolerance] : rows) {
        const Case named(name);
        std::vector<double> got(3 * kPoints, -1.0);
        QCOMPARE(gflToneCurves(profile.constData(), quint32(profile.size()), kPoints, got.data()), light.size());
        for (int curve = 0; curve < light.size(); ++curve)
            for (int i = 0; i < kPoints; ++i) {
                const double have = got[size_t(curve * kPoints + i)], want = light[curve](i / (kPoints - 1.0));
                QVERIFY2(std::abs(have - want) <= tolerance,
                         qPrintable(QString::asprintf("curve %d at %d: got %g, expected %g", curve, i, have, want)));
            }
        if (light.size() == 1)
            QCOMPARE(got[kPoints], -1.0);
    }
}

void tst_ToneCurves::profilesWithoutCurves()
{
    std::vector<double> light(6);
    const QByteArray whole = ProfileBytes(cmsCreate_sRGBProfile());
    const std::pair<const char *, QByteArray> rows[] = {{"CMYK", InkProfile()},
                                                        {"Lab", ProfileBytes(cmsCreateLab4Profile(nullptr))},
                                                        {"text", "no profile"},
                                                        {"empty", {}},
                                                        {"truncated", whole.left(200)}};
    for (const auto &[name, profile] : rows)
        QVERIFY2(gflToneCurves(profile.constData(), quint32(profile.size()), 2, light.data()) == 0, name);
    QCOMPARE(gflToneCurves(nullptr, 9, 2, light.data()), 0);
    QCOMPARE(gflToneCurves(whole.constData(), quint32(whole.size()), 1, light.data()), 0);
}

QTEST_GUILESS_MAIN(tst_ToneCurves)
#include "ToneCurves_test.moc"
