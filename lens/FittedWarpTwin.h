// Reference implementation of the fitted warp: one pixel at a time, in double precision.
#pragma once

#include "FittedWarp.h"

#include <array>

/// Plain twin of FittedWarp, for tests. Results differ slightly, because FittedWarp rounds and interpolates positions,
/// looks up light in tables, and computes in single precision.
class FittedWarpTwin {
public:
    FittedWarpTwin(const Correction &correction, FittedWarp::Sampling sampling, const TransferCurve &light,
                   FittedWarp::Source form)
        : m_twin(correction), m_sampling(sampling), m_light(light), m_form(form)
    {
    }

    using Pixel = std::array<double, 4>;

    /// Returns the result at (@p x, @p y), which may lie between pixels, as RGBA. @p source is the whole picture in
    /// float RGBA.
    Pixel At(const KImage &source, double x, double y) const;

    /// One color of the source at a position, with its alpha.
    struct Sampled {
        double value, alpha;
    };
    Sampled Sample(const KImage &source, SourcePlaces::Point place, int color) const;

private:
    CorrectionTwin m_twin;
    FittedWarp::Sampling m_sampling;
    TransferCurve m_light;
    FittedWarp::Source m_form;
};
