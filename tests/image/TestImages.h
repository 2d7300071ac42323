// Images of any form, stride and alignment for tests, with access to samples as numbers.
#pragma once

#include "KImage.h"
#include "Thrown.h"

#include <QString>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>
#include <vector>

struct TestForm {
    const char *name;
    unsigned short type;
    int bits;
    int channels;

    double Full() const { return bits == 8 ? 255 : bits == 16 ? 65535 : 1; }
    bool IsFloat() const { return bits == 32; }
};

constexpr TestForm kForms[] = {
    {"8u gray", GFL_GREY, 8, 1},   {"8u RGB", GFL_RGB, 8, 3},   {"8u RGBA", GFL_RGBA, 8, 4},
    {"16u gray", GFL_GREY, 16, 1}, {"16u RGB", GFL_RGB, 16, 3}, {"16u RGBA", GFL_RGBA, 16, 4},
    {"32f gray", GFL_GREY, 32, 1}, {"32f RGB", GFL_RGB, 32, 3}, {"32f RGBA", GFL_RGBA, 32, 4},
};
constexpr int kFormCount = 9;
enum FormIndex { k8uGray, k8uRgb, k8uRgba, k16uGray, k16uRgb, k16uRgba, k32fGray, k32fRgb, k32fRgba };

/// Image that wraps a memory block owned by this object, with @p paddingBytes after each row.
class TestImage {
public:
    TestImage(const TestForm &form, int width, int height, int paddingBytes = 0)
        : m_form(form),
          m_strideBytes(width * form.channels * form.bits / 8 + paddingBytes),
          m_bytes(static_cast<size_t>(m_strideBytes) * static_cast<size_t>(height) + kGuardBytes),
          image(width, height, form.type, form.bits, /*clear=*/false, m_bytes.data(), m_strideBytes)
    {
        std::fill_n(m_bytes.end() - kGuardBytes, kGuardBytes, kGuard);
    }
    /// Copies @p of, converted to @p form.
    TestImage(const TestForm &form, const KImage &of) : TestImage(form, of.width(), of.height())
    {
        of.CopyTo(image, 0, 0);
    }
    TestImage(const TestImage &) = delete;
    TestImage &operator=(const TestImage &) = delete;

    double Sample(int x, int y, int channel) const
    {
        const unsigned char *at = image.getData(x, y) + channel * m_form.bits / 8;
        if (m_form.bits == 8)
            return *at;
        return m_form.bits == 16 ? Load<quint16>(at) : static_cast<double>(Load<float>(at));
    }

    void SetSample(int x, int y, int channel, double value)
    {
        unsigned char *at = image.getData(x, y) + channel * m_form.bits / 8;
        if (m_form.bits == 8)
            Store(at, static_cast<quint8>(value));
        else if (m_form.bits == 16)
            Store(at, static_cast<quint16>(value));
        else
            Store(at, static_cast<float>(value));
    }

    /// Fills with noise: full range for integers, @p low to @p high for floats. The gaps between rows
    /// are also filled.
    void FillWithNoise(unsigned seed, double low = -0.25, double high = 1.5)
    {
        std::mt19937 random(seed);
        for (size_t i = 0; i < m_bytes.size() - kGuardBytes; ++i)
            m_bytes[i] = static_cast<unsigned char>(random());
        std::uniform_real_distribution<double> value(low, high);
        if (m_form.IsFloat())
            Fill([&](int, int, int) { return value(random); });
    }

    /// Sets each sample to value(x, y, channel).
    template <typename Value> void Fill(Value value)
    {
        for (int i = 0; i < image.width() * image.height() * m_form.channels; ++i) {
            const int x = i / m_form.channels % image.width(), y = i / m_form.channels / image.width();
            SetSample(x, y, i % m_form.channels, value(x, y, i % m_form.channels));
        }
    }

    /// Returns whether the bytes outside the pixels equal those of @p other. Overwrites @p other's pixels.
    bool HasGapsOf(TestImage &other) const
    {
        other.Fill([this](int x, int y, int c) { return Sample(x, y, c); });
        return m_bytes == other.m_bytes;
    }

    /// Returns the rows with the gaps between them, followed by a guard area.
    const std::vector<unsigned char> &Bytes() const { return m_bytes; }
    const TestForm &Form() const { return m_form; }

private:
    template <typename T> static T Load(const unsigned char *at)
    {
        T value;
        std::memcpy(&value, at, sizeof(T));
        return value;
    }
    template <typename T> static void Store(unsigned char *at, T value) { std::memcpy(at, &value, sizeof(T)); }

    static constexpr size_t kGuardBytes = 64;
    static constexpr unsigned char kGuard = 0xA7;

    TestForm m_form;
    int m_strideBytes;
    std::vector<unsigned char> m_bytes;

public:
    KImage image;
};

/// Returns a function that reads samples, for Difference.
inline auto Reader(const TestImage &image)
{
    return [&image](int x, int y, int c) { return image.Sample(x, y, c); };
}

/// Describes the first sample that differs from wanted(x, y, channel) by more than @p tolerance; empty if none does.
template <typename Wanted> QString Difference(const TestImage &got, Wanted wanted, double tolerance = 0)
{
    const int channels = got.Form().channels, width = got.image.width();
    for (int i = 0; i < width * got.image.height() * channels; ++i) {
        const int x = i / channels % width, y = i / channels / width, c = i % channels;
        const double actual = got.Sample(x, y, c), expected = wanted(x, y, c);
        if (!(std::abs(actual - expected) <= tolerance))
            return QStringLiteral("(%1, %2), channel %3: %4 instead of %5")
                .arg(x)
                .arg(y)
                .arg(c)
                .arg(actual)
                .arg(expected);
    }
    return QString();
}

/// Interpolates the source between its pixel centers, with edge pixels repeated.
inline double Bilinear(const TestImage &source, double x, double y, int channel)
{
    const int width = source.image.width(), height = source.image.height();
    x = std::clamp(x, 0.0, width - 1.0);
    y = std::clamp(y, 0.0, height - 1.0);
    const int left = int(x), top = int(y);
    const auto between = [&](int row) {
        const double first = source.Sample(left, row, channel),
                     second = source.Sample(std::min(left + 1, width - 1), row, channel);
        return first + (second - first) * (x - left);
    };
    const double above = between(top);
    return above + (between(std::min(top + 1, height - 1)) - above) * (y - top);
}
