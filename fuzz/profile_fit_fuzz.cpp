// Reads arbitrary bytes as a lens profile of any spelling and fits it to a few pictures.
#include "CorrectionTwin.h"
#include "Fit.h"
#include "FittedWarp.h"
#include "KImage.h"

#include <cmath>
#include <cstddef>
#include <cstdint>

namespace {

void Require(bool condition)
{
    if (!condition)
        __builtin_trap();
}

/// Checks invariants of every fit, for any profile.
void Check(const FitResult &fit, const LensProfile &profile)
{
    Require(fit.zoom >= 0.5 && fit.zoom <= 2.0 && fit.fieldShare >= 0.0 && fit.fieldShare <= 1.0);
    Require(!fit.why.contains(QLatin1Char('\n')));
    Require(fit.distortion != fit.geometryEntries.isEmpty() && fit.vignetting != fit.lightEntries.isEmpty());
    for (const auto *weights : {&fit.geometryEntries, &fit.colorEntries, &fit.lightEntries}) {
        double sum = 0.0;
        for (const EntryWeight &one : *weights) {
            Require(one.entry >= 0 && one.entry < profile.entries.size());
            sum += one.weight;
        }
        Require(weights->isEmpty() || std::abs(sum - 1.0) < 1e-9);
    }
    const CorrectionTwin twin(fit.correction);
    for (int i = 0; i < 12; ++i) {
        const SourcePlaces places = twin.At(i * 5.0, i * 3.0);
        Require(places.gain >= 1.0 && places.gain <= 16.0);
        if (!twin.IsEmpty(places))
            Require(std::isfinite(places.red.x + places.green.x + places.blue.x));
    }
}

/// Renders the correction of a picture that is wider than the units of the sharp sampling.
void RenderSharp(const FitResult &fit, bool isFloat)
{
    const Correction &correction = fit.correction;
    const KImage source(correction.width, correction.height, GFL_RGBA, 32, /*clear=*/true, nullptr, 0);
    KImage result(correction.width, correction.height, GFL_RGBA, 32, /*clear=*/true, nullptr, 0);
    const FittedWarp warp(correction, FittedWarp::Sampling::Sharp, TransferCurve::Srgb(), {isFloat, false});
    Require(warp.Render(source, 0, result, 0));
}

PictureFacts FactsFor(const ProfileEntry &entry)
{
    const QString source = QStringLiteral("made");
    PictureFacts facts;
    facts.make = {entry.make, source};
    facts.model = {entry.model.isEmpty() ? QStringLiteral("BODY") : entry.model, source};
    facts.pixels = QSize(60, 40);
    facts.focalMm = {entry.focalMm > 0.0 ? entry.focalMm * 1.1 : 50.0, source};
    facts.aperture = {4.5, source};
    facts.distanceM = {2.0, source};
    facts.focalPlaneWidthMm = {23.5, source};
    return facts;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    QString error;
    const LensProfile profile = ParseLensProfile(
        QByteArray::fromRawData(reinterpret_cast<const char *>(data), static_cast<int>(size)), QString(), &error);
    Require(profile.entries.isEmpty() == !error.isEmpty());
    Require(!error.contains(QLatin1Char('\n')));
    if (profile.entries.isEmpty())
        return 0;
    FitOptions options;
    for (int i = 0; i < 4; ++i) {
        PictureFacts facts = FactsFor(profile.entries[0]);
        facts.readerTurn = 1 + 2 * i;
        facts.pixels = i % 2 ? QSize(1, 70) : facts.pixels;
        options.framing = static_cast<Framing>(i);
        options.projection = static_cast<Projection>(i);
        options.profile = QString::fromLatin1(i < 2 ? "" : "chosen");
        const FitResult fit = Fit(profile, facts, options);
        Check(fit, profile);
        facts.pixels = QSize(540, 40);
        if (const FitResult wide = Fit(profile, facts, options);
            (i == 0 || i == 3) && wide.correction.ChangesAnything())
            RenderSharp(wide, i == 3);
    }
    return 0;
}
