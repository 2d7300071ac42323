// Compares our corrections from lensfun's database with lensfun's own, over many lenses and settings. Prints the worst
// differences; exits with 1 if they exceed the bounds.
#include "CorrectionTwin.h"
#include "LensfunCurves.h"
#include "LensfunDatabase.h"
#include "LensfunFit.h"
#include "MadeProfiles.h"

#include <lensfun/lensfun.h>

#include <QCoreApplication>
#include <QTextStream>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>

using made::Known;

namespace {

constexpr int kWidth = 6000, kHeight = 4000;
constexpr int kLenses = 200, kSettings = 5;
constexpr double kMaxPx = 0.002, kMaxEv = 0.001;

struct Worst {
    double px = 0.0, ev = 0.0;
    int compared = 0, missed = 0;
};

struct ModifierDeleter {
    void operator()(lfModifier *modifier) const { modifier->Destroy(); }
};

/// Returns a camera that takes the lens and whose frame is no larger than that of the calibration, or null.
const lfCamera *CameraFor(const lfDatabase &database, const lfLens &lens)
{
    for (const lfCamera *const *camera = database.GetCameras(); *camera; ++camera)
        for (char *const *mount = lens.Mounts; *mount; ++mount)
            if (qstricmp((*camera)->Mount, *mount) == 0 && (*camera)->CropFactor >= lens.CropFactor
                && (*camera)->CropFactor < 2.5F * lens.CropFactor)
                return *camera;
    return nullptr;
}

void Compare(const lfLens &lens, const lfCamera &camera, double focal, double aperture, double distance, Worst *worst)
{
    PictureFacts facts;
    facts.make = Known(QString::fromUtf8(camera.Maker));
    facts.model = Known(QString::fromUtf8(camera.Model));
    facts.lensNames = {Known(QString::fromUtf8(lens.Maker) + QLatin1Char(' ') + QString::fromUtf8(lens.Model))};
    facts.focalMm = Known(focal);
    facts.aperture = Known(aperture);
    facts.distanceM = Known(distance);
    facts.pixels = QSize(kWidth, kHeight);
    FitOptions options;
    options.framing = Framing::Keep;
    const FitResult fit = FitByLensfun(facts, options);
    if (fit.profile
        != QLatin1String("lensfun:") + QString::fromUtf8(lens.Maker) + QLatin1Char('/')
            + QString::fromUtf8(lens.Model)) {
        ++worst->missed;
        return;
    }
    ++worst->compared;
    const std::unique_ptr<lfModifier, ModifierDeleter> modifier(
        lfModifier::Create(&lens, camera.CropFactor, kWidth, kHeight));
    const int does =
        modifier->Initialize(&lens, LF_PF_F32, float(focal), float(aperture), float(distance), 1.0F, lens.Type,
                             LF_MODIFY_TCA | LF_MODIFY_VIGNETTING | LF_MODIFY_DISTORTION, false);
    const CorrectionTwin twin(fit.correction);
    const double before = worst->px, beforeEv = worst->ev;
    for (const double x : {0.0, 700.0, 2999.5, 5999.0})
        for (const double y : {0.0, 1300.0, 3999.0}) {
            const SourcePlaces ours = twin.At(x, y);
            if (twin.IsEmpty(ours)) // our maps end at the picture's edges
                continue;
            float theirs[6] = {float(x), float(y), float(x), float(y), float(x), float(y)};
            if (does & (LF_MODIFY_TCA | LF_MODIFY_DISTORTION))
                modifier->ApplySubpixelGeometryDistortion(float(x), float(y), 1, 1, theirs);
            const SourcePlaces::Point places[] = {ours.red, ours.green, ours.blue};
            for (int i = 0; i < 3; ++i)
                worst->px =
                    std::max(worst->px,
                             std::hypot(places[i].x - double(theirs[2 * i]), places[i].y - double(theirs[2 * i + 1])));
            float light[3] = {1.0F, 1.0F, 1.0F};
            if (!(does & LF_MODIFY_VIGNETTING))
                continue;
            // Vignetting depends on the position on the sensor, which is where green is sampled.
            modifier->ApplyColorModification(light, float(ours.green.x), float(ours.green.y), 1, 1,
                                             LF_CR_3(RED, GREEN, BLUE), 3 * sizeof(float));
            if (light[0] > 1.0F && light[0] < 16.0F)
                worst->ev = std::max(worst->ev, std::fabs(std::log2(ours.gain / double(light[0]))));
        }
    if ((worst->px > kMaxPx && worst->px > before) || (worst->ev > kMaxEv && worst->ev > beforeEv))
        QTextStream(stdout) << fit.profile << " on " << camera.Model << " at " << focal << " mm: " << worst->px
                            << " px, " << worst->ev << " EV\n";
}

/// Counts wrong curves of made lenses. In a frame of 6001 x 4001 pixels, the models' unit is 2000 pixels.
int WrongCurves()
{
    int wrong = 0;
    const auto expect = [&wrong](const char *what, double value, double expected) {
        if (std::abs(value - expected) > 1e-6 * std::abs(expected) && ++wrong)
            QTextStream(stdout) << what << ": " << value << ", expected " << expected << '\n';
    };
    const std::tuple<const char *, lfLensType, double> projections[] = {
        {"rectilinear", LF_RECTILINEAR, 0.0}, // image heights at 0.7 radians; 0: no fisheye
        {"panoramic", LF_PANORAMIC, 0.0},
        {"equidistant", LF_FISHEYE, 0.7},
        {"stereographic", LF_FISHEYE_STEREOGRAPHIC, 2.0 * std::tan(0.35)},
        {"equisolid", LF_FISHEYE_EQUISOLID, 2.0 * std::sin(0.35)},
        {"orthographic", LF_FISHEYE_ORTHOGRAPHIC, std::sin(0.7)},
        {"Thoby", LF_FISHEYE_THOBY, 1.47 * std::sin(0.713 * 0.7)},
    };
    const std::tuple<const char *, lfLensCalibDistortion, double> distortions[] = {
        {"poly3", {LF_DIST_MODEL_POLY3, 10.0F, {0.125F}}, 1.0 - 0.125 + 0.125 * 0.25},
        {"poly5", {LF_DIST_MODEL_POLY5, 10.0F, {0.125F, 0.25F}}, 1.0 + 0.125 * 0.25 + 0.25 * 0.0625},
        {"ptlens", {LF_DIST_MODEL_PTLENS, 10.0F, {0.125F, 0.25F, 0.5F}}, 0.125 + 0.015625 + 0.0625 + 0.25},
    };
    for (const auto &[projection, type, height] : projections)
        for (const auto &[model, distortion, factor] : distortions) {
            lfLens lens;
            lens.Type = type;
            lens.CropFactor = 1.0F;
            lens.AspectRatio = 1.5F;
            lens.CenterX = 0.25F;
            lens.CenterY = -0.125F;
            lens.AddCalibDistortion(&distortion);
            const LensfunFrame frame = {6001.0, 4001.0, 1.0};
            const LensfunCurves nominal = CurvesOf(lens, frame, {10.0});
            expect(model, (*nominal.distortion)(1000.0), factor);
            expect(projection, nominal.imageHeight ? (*nominal.imageHeight)(0.7) : 0.0, height);
            const lfLensCalibTCA linear = {LF_TCA_MODEL_LINEAR, 10.0F, {1.5F, 0.75F}};
            lens.AddCalibTCA(&linear);
            const LensfunCurves colored = CurvesOf(lens, frame, {10.0});
            expect("center x", colored.centerX, 0.25 * 2000.0);
            expect("center y", colored.centerY, -0.125 * 2000.0);
            expect("red", (*colored.red)(1000.0), 1.5);
            expect("blue", (*colored.blue)(1000.0), 0.75);
            const lfLensCalibRealFocal real = {10.0F, 12.0F};
            lens.AddCalibRealFocal(&real);
            const double pxPerMm = std::hypot(6001.0, 4001.0) / std::hypot(36.0, 24.0);
            expect("focal length", nominal.focalPx, height > 0.0 ? 10.0 * pxPerMm : 0.0);
            expect("real focal length", CurvesOf(lens, frame, {10.0}).focalPx, height > 0.0 ? 12.0 * pxPerMm : 0.0);
        }
    // A ray at 0.7 radians comes from the same position in every projection of the result.
    PictureFacts facts;
    facts.make = Known(QStringLiteral("Canon"));
    facts.model = Known(QStringLiteral("Canon EOS 5D Mark III"));
    facts.lensNames = {Known(QStringLiteral("EF8-15mm f/4L FISHEYE USM"))};
    facts.focalMm = Known(15.0);
    facts.pixels = QSize(kWidth, kHeight);
    FitOptions options;
    options.framing = Framing::Keep;
    const LensfunCurves curves =
        CurvesOf(*LensfunDatabase::Instance().Find(facts).lens, {double(kWidth), double(kHeight), 1.0}, {15.0});
    const double focal = 15.0 / 36.0 * kWidth, ideal = 2.0 * std::sin(0.35) * focal;
    for (const auto &[projection, height] : {std::pair(Projection::Equisolid, 2.0 * std::sin(0.35)),
                                             {Projection::Stereographic, 2.0 * std::tan(0.35)},
                                             {Projection::Equidistant, 0.7},
                                             {Projection::Rectilinear, std::tan(0.7)}}) {
        options.projection = projection;
        const FitResult fit = FitByLensfun(facts, options);
        const double radius = height * focal;
        const double source =
            fit.distortion ? radius * fit.correction.geometry->factor.AtSquared(radius * radius) : 0.0;
        expect("position in a fisheye", source, ideal * (*curves.distortion)(ideal));
    }
    return wrong;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    lfDatabase database;
    if (database.Load() != LF_NO_ERROR)
        return 1;
    QVector<const lfLens *> lenses;
    for (const lfLens *const *lens = database.GetLenses(); *lens; ++lens)
        if ((*lens)->Type == LF_RECTILINEAR && (*lens)->CalibDistortion) // fisheye projections differ by design
            lenses.append(*lens);
    // For a lens measured on two sensors, our lookup returns the better measurement, which need not be this one.
    const auto isRepeated = [all = lenses](const lfLens *lens) {
        return std::count_if(all.begin(), all.end(),
                             [lens](const lfLens *other) { return qstrcmp(lens->Model, other->Model) == 0; })
            > 1;
    };
    lenses.erase(std::remove_if(lenses.begin(), lenses.end(), isRepeated), lenses.end());
    std::mt19937 random(1);
    std::shuffle(lenses.begin(), lenses.end(), random);
    Worst worst;
    int used = 0;
    for (const lfLens *lens : qAsConst(lenses)) {
        const lfCamera *camera = CameraFor(database, *lens);
        if (!camera)
            continue;
        for (int i = 0; i < kSettings; ++i) {
            const double t = i / double(kSettings - 1);
            const double aperture = (lens->MinAperture > 0.0F ? double(lens->MinAperture) : 4.0) * (1.0 + t);
            Compare(*lens, *camera, double(lens->MinFocal) + t * double(lens->MaxFocal - lens->MinFocal), aperture,
                    0.5 + 20.0 * t, &worst);
        }
        if (++used == kLenses)
            break;
    }
    const int wrong = WrongCurves();
    QTextStream(stdout) << used << " lenses, " << worst.compared << " settings compared, " << worst.missed
                        << " not found under their own names; worst " << worst.px << " px, " << worst.ev << " EV\n";
    return worst.px <= kMaxPx && worst.ev <= kMaxEv && worst.compared > worst.missed && wrong == 0 ? 0 : 1;
}
