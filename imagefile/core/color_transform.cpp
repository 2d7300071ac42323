#include "color_transform.h"

#include "pixel_form.h"

#include <lcms2.h>

namespace imagefile {

namespace {

struct CloseProfile {
    void operator()(void *profile) const { cmsCloseProfile(profile); }
};
using ProfilePtr = std::unique_ptr<void, CloseProfile>;

// Null unless these are the bytes of a CMYK profile.
ProfilePtr InkProfile(const Bytes &bytes)
{
    if (bytes.empty())
        return nullptr;
    ProfilePtr profile(cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size())));
    return profile && cmsGetColorSpace(profile.get()) == cmsSigCmykData ? std::move(profile) : nullptr;
}

cmsUInt32Number Format(cmsUInt32Number space, int colours, int bits, bool hasAlpha)
{
    const auto bytes = static_cast<cmsUInt32Number>(bits / 8);
    return COLORSPACE_SH(space) | CHANNELS_SH(static_cast<cmsUInt32Number>(colours)) | EXTRA_SH(hasAlpha ? 1u : 0u)
        | BYTES_SH(bytes) | FLOAT_SH(bits == 32 ? 1u : 0u);
}

} // namespace

struct ColourTransform::Engine {
    explicit Engine(cmsHTRANSFORM made) : transform(made) { }
    ~Engine() { cmsDeleteTransform(transform); }
    Engine(const Engine &) = delete;
    Engine &operator=(const Engine &) = delete;

    cmsHTRANSFORM transform;
};

ColourTransform::ColourTransform() = default;
ColourTransform::~ColourTransform() = default;

Status ColourTransform::Start(ColourCoding coding, const Bytes &profile, int bits, bool hasAlpha)
{
    const bool isInk = coding == ColourCoding::Cmyk;
    m_bits = bits;
    m_hasAlpha = hasAlpha;
    const ProfilePtr from = isInk ? InkProfile(profile) : ProfilePtr(cmsCreateLab4Profile(nullptr));
    if (!from && isInk)
        return Status::Ok();
    const ProfilePtr to(cmsCreate_sRGBProfile());
    const cmsUInt32Number space = isInk ? PT_CMYK : PT_Lab;
    // A table instead of Lab's formula would show in the shadows, where sRGB is steep.
    const cmsHTRANSFORM transform = from && to
        ? cmsCreateTransform(from.get(), Format(space, isInk ? 4 : 3, bits, hasAlpha), to.get(),
                             Format(PT_RGB, 3, bits, hasAlpha), INTENT_RELATIVE_COLORIMETRIC,
                             cmsFLAGS_BLACKPOINTCOMPENSATION | cmsFLAGS_COPY_ALPHA | (isInk ? 0u : cmsFLAGS_NOOPTIMIZE))
        : nullptr;
    if (transform)
        m_engine = std::make_unique<Engine>(transform);
    return transform || isInk ? Status::Ok() : Status::Fail(GFL_ERROR_NO_MEMORY, "no memory for the change of colours");
}

template <class T> void ColourTransform::MixInks(const T *src, T *dst, std::size_t width) const
{
    constexpr auto kFull = static_cast<float>(FullScale<T>());
    const std::size_t srcStep = m_hasAlpha ? 5 : 4, dstStep = srcStep - 1;
    for (std::size_t x = 0; x < width; ++x, src += srcStep, dst += dstStep) {
        const float light = 1.0f - static_cast<float>(src[3]) / kFull;
        for (int c = 0; c < 3; ++c)
            dst[c] = ToSample<T>((kFull - static_cast<float>(src[c])) * light);
        if (m_hasAlpha)
            dst[3] = src[4];
    }
}

void ColourTransform::Row(const void *src, void *dst, std::size_t width)
{
    if (!m_engine && m_bits == 8)
        return MixInks(static_cast<const std::uint8_t *>(src), static_cast<std::uint8_t *>(dst), width);
    if (!m_engine && m_bits == 16)
        return MixInks(static_cast<const std::uint16_t *>(src), static_cast<std::uint16_t *>(dst), width);
    if (!m_engine)
        return MixInks(static_cast<const float *>(src), static_cast<float *>(dst), width);
    if (m_bits == 32) { // lcms2 takes inks as floats in percent, and opacity as it is
        const std::size_t step = m_hasAlpha ? 5 : 4;
        const auto *samples = static_cast<const float *>(src);
        m_percent.assign(samples, samples + width * step);
        for (std::size_t i = 0; i < m_percent.size(); ++i)
            m_percent[i] *= i % step < 4 ? 100.0f : 1.0f;
        src = m_percent.data();
    }
    cmsDoTransform(m_engine->transform, src, dst, static_cast<cmsUInt32Number>(width));
}

} // namespace imagefile
