// newLCP::Render: chooses the InterpolatorKim for the depths of two images.
#include "newLCP.h"

#include "Corrections.h"
#include "InterpolatorKim.h"
#include "KImage.h"

namespace {

/// Arguments of Render.
struct RenderJob {
    newLCP *lcp;
    KImage *source;
    KImage *destination;
    Corrections corrections;
    bool bilinear;
    float inScale;
};

template <typename S, typename D> bool Run(const RenderJob &job, float outScale)
{
    using Interpolator = InterpolatorKim<S, D>;
    Interpolator run;
    run.sample = job.bilinear ? &Interpolator::InterpolateN : &Interpolator::Interpolate0;
    run.sampleChannel = job.bilinear ? &Interpolator::InterpolateNc : &Interpolator::Interpolate0c;
    run.order = job.bilinear ? 2 : 0;
    run.source = job.source;
    run.lcp = job.lcp;
    run.distortion = job.corrections.distortion;
    run.chromatic = job.corrections.chromatic;
    run.falloff = job.corrections.vignetting;
    run.destination = job.destination;
    run.inScale = job.inScale;
    run.outScale = outScale;
    run.width = job.source->width();
    run.height = job.source->height();
    run.channels = job.source->m_bitmap->ComponentsPerPixel;
    return run.Do();
}

/// Runs the interpolator for the destination's depth.
template <typename S> bool RunFrom(const RenderJob &job)
{
    switch (job.destination->bitsPerComponent()) {
    case 8:
        return Run<S, unsigned char>(job, 255.0F);
    case 16:
        return Run<S, unsigned short>(job, 65535.0F);
    case 32:
        return Run<S, float>(job, 1.0F);
    default:
        return false;
    }
}

} // namespace

bool newLCP::Render(KImage &source, KImage &destination, bool distortion, bool chromatic, bool falloff, int mode)
{
    if (!source.m_bitmap || !destination.m_bitmap)
        return false;
    RenderJob job{this, &source, &destination, {distortion, chromatic, falloff}, mode != 0, 1.0F};
    const int bits = source.bitsPerComponent();
    if (bits == 8) {
        job.inScale = 1.0F / 255.0F;
        return RunFrom<unsigned char>(job);
    }
    if (bits >= 9 && bits <= 16) {
        job.inScale = 1.0F / static_cast<float>((1 << bits) - 1);
        return RunFrom<unsigned short>(job);
    }
    if (bits >= 17 && bits <= 32)
        return RunFrom<float>(job);
    return false;
}
