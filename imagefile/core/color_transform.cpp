#include "color_transform.h"

#include "color_engine.h"
#include "memory_check.h"
#include "pixel_form.h"

#include <cmath>

namespace imagefile {

namespace {

constexpr double kSameWhite = 0.0005; // tolerance for chromaticities: files give D50 with three or four digits

// Returns null unless the bytes are a CMYK profile.
ProfilePtr InkProfile(const Bytes &bytes)
{
    if (bytes.empty())
        return nullptr;
    ProfilePtr profile = OpenProfile(bytes.data(), bytes.size());
    return profile && cmsGetColorSpace(profile.get()) == cmsSigCmykData ? std::move(profile) : nullptr;
}

cmsUInt32Number Format(cmsUInt32Number space, int colors, int bits, bool hasAlpha)
{
    const auto bytes = static_cast<cmsUInt32Number>(bits / 8);
    return COLORSPACE_SH(space) | CHANNELS_SH(static_cast<cmsUInt32Number>(colors)) | EXTRA_SH(hasAlpha ? 1u : 0u)
        | BYTES_SH(bytes) | FLOAT_SH(bits == 32 ? 1u : 0u);
}

} // namespace

struct ColorTransform::Engine {
    static std::unique_ptr<Engine> Make(cmsHPROFILE from, cmsUInt32Number in, cmsUInt32Number out,
                                        cmsUInt32Number flags)
    {
        const MemoryCheck memory;
        const ProfilePtr to(cmsCreate_sRGBProfileTHR(ColorContext()));
        const bool keepsAlpha = T_EXTRA(in) != 0;
        const cmsHTRANSFORM transform = from && to
            ? cmsCreateTransformTHR(ColorContext(), from, in, to.get(), out, INTENT_RELATIVE_COLORIMETRIC,
                                    cmsFLAGS_BLACKPOINTCOMPENSATION | (keepsAlpha ? cmsFLAGS_COPY_ALPHA : 0u) | flags)
            : nullptr;
        if (!transform)
            memory.Require();
        return transform ? std::make_unique<Engine>(transform) : nullptr;
    }

    explicit Engine(cmsHTRANSFORM made) : transform(made) { }
    ~Engine() { cmsDeleteTransform(transform); }
    Engine(const Engine &) = delete;
    Engine &operator=(const Engine &) = delete;

    cmsHTRANSFORM transform;
};

ColorTransform::ColorTransform() = default;
ColorTransform::~ColorTransform() = default;

Status ColorTransform::StartInks(const Bytes &profile, int bits, bool hasAlpha)
{
    m_bits = bits;
    m_hasAlpha = hasAlpha;
    const ProfilePtr from = InkProfile(profile);
    if (from)
        m_engine = Engine::Make(from.get(), Format(PT_CMYK, 4, bits, hasAlpha), Format(PT_RGB, 3, bits, hasAlpha), 0);
    return Status::Ok();
}

Status ColorTransform::StartLab(Chromaticity white, int bits, bool hasAlpha)
{
    m_bits = bits;
    m_hasAlpha = hasAlpha;
    const bool isAdapted = std::hypot(white.x - kD50.x, white.y - kD50.y) > kSameWhite && white.y > kSameWhite;
    if (isAdapted) {
        const cmsCIEXYZ from = {white.x / white.y, 1.0, (1.0 - white.x - white.y) / white.y};
        m_white = {from.X, from.Y, from.Z};
        for (std::size_t i = 0; i < 3; ++i) { // the columns of a matrix are the images of the unit vectors
            const cmsCIEXYZ unit = {i == 0 ? 1.0 : 0.0, i == 1 ? 1.0 : 0.0, i == 2 ? 1.0 : 0.0};
            cmsCIEXYZ adapted = {};
            if (!cmsAdaptToIlluminant(&adapted, &from, cmsD50_XYZ(), &unit))
                return Status::Fail(GFL_ERROR_FILE_READ, Text("invalid white point: x %g, y %g", white.x, white.y));
            m_toD50[i] = {adapted.X, adapted.Y, adapted.Z};
        }
        m_lab.resize(3);
    }
    const ProfilePtr from(cmsCreateLab4ProfileTHR(ColorContext(), nullptr));
    const cmsUInt32Number in = isAdapted ? TYPE_Lab_DBL : Format(PT_Lab, 3, bits, hasAlpha);
    // Keep lcms2 from replacing Lab's formula with a table, whose errors would show in shadows, where sRGB is steep.
    m_engine = Engine::Make(from.get(), in, Format(PT_RGB, 3, bits, hasAlpha), cmsFLAGS_NOOPTIMIZE);
    return m_engine ? Status::Ok() : Status::Fail(GFL_ERROR_NO_MEMORY, "no memory for the color conversion");
}

template <class T> void ColorTransform::MixInks(const T *src, T *dst, std::size_t width) const
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

// Converts a row of Lab relative to a white other than D50: to XYZ, which is adapted to D50, back to Lab, then to RGB.
template <class T> void ColorTransform::AdaptRow(const T *src, T *dst, std::size_t width)
{
    const std::size_t step = m_hasAlpha ? 4 : 3;
    const cmsCIEXYZ white = {m_white[0], m_white[1], m_white[2]};
    m_lab.resize(3 * width);
    for (std::size_t x = 0; x < width; ++x) {
        const T *pixel = src + x * step;
        const auto range = [](T value, double full) { return value * full / FullScale<T>(); };
        const cmsCIELab lab = {range(pixel[0], 100.0), range(pixel[1], 255.0) - 128.0, range(pixel[2], 255.0) - 128.0};
        cmsCIEXYZ xyz = {};
        cmsLab2XYZ(&white, &xyz, &lab);
        const auto component = [&](std::size_t i) {
            return m_toD50[0][i] * xyz.X + m_toD50[1][i] * xyz.Y + m_toD50[2][i] * xyz.Z;
        };
        const cmsCIEXYZ adapted = {component(0), component(1), component(2)};
        cmsXYZ2Lab(cmsD50_XYZ(), reinterpret_cast<cmsCIELab *>(&m_lab[3 * x]), &adapted);
    }
    cmsDoTransform(m_engine->transform, m_lab.data(), dst, static_cast<cmsUInt32Number>(width));
    for (std::size_t x = 0; m_hasAlpha && x < width; ++x)
        dst[4 * x + 3] = src[4 * x + 3];
}

void ColorTransform::Row(const void *src, void *dst, std::size_t width)
{
    if (!m_lab.empty() && m_bits == 8)
        return AdaptRow(static_cast<const std::uint8_t *>(src), static_cast<std::uint8_t *>(dst), width);
    if (!m_lab.empty())
        return AdaptRow(static_cast<const std::uint16_t *>(src), static_cast<std::uint16_t *>(dst), width);
    if (!m_engine && m_bits == 8)
        return MixInks(static_cast<const std::uint8_t *>(src), static_cast<std::uint8_t *>(dst), width);
    if (!m_engine && m_bits == 16)
        return MixInks(static_cast<const std::uint16_t *>(src), static_cast<std::uint16_t *>(dst), width);
    if (!m_engine)
        return MixInks(static_cast<const float *>(src), static_cast<float *>(dst), width);
    if (m_bits == 32) { // lcms2 expects float CMYK in percent, and opacity unchanged
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
