#include "vector_rows.h"

#include <QtTest>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <vector>

/// Compares vector versions with plain ones: the same bits at every length and offset, nothing written past the end.
class tst_VectorRows : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void sameAsPlain();
};

namespace {

constexpr int kMaxOffset = 3;

/// Returns special and extreme values, values halfway between 8-bit levels, then noise from -0.5 to 1.5.
std::vector<float> AwkwardFloats(int count)
{
    const float inf = std::numeric_limits<float>::infinity(), nan = std::numeric_limits<float>::quiet_NaN();
    std::vector<float> values = {nan,  -nan,  inf,    -inf,   0.0f,       -0.0f,
                                 1.0f, 1e30f, -1e30f, 1e-40f, 0.5f / 255, 1.5f / 255};
    std::mt19937 random(7);
    while (values.size() < static_cast<std::size_t>(count))
        values.push_back(static_cast<float>(random()) * 0x1p-31f - 0.5f);
    return values;
}

template <typename T> std::vector<T> Noise(int count)
{
    std::mt19937 random(8);
    std::vector<T> values(static_cast<std::size_t>(count));
    for (T &value : values)
        value = static_cast<T>(random());
    return values;
}

/// Runs both versions on the same source, into targets with the same initial content.
template <typename S, typename D, typename Plain, typename Fast>
void Compare(const std::vector<S> &source, int offset, int targetSamples, Plain plain, Fast fast)
{
    std::vector<D> want(static_cast<std::size_t>(targetSamples + 2 * kMaxOffset), D(91)), got = want;
    plain(source.data() + offset, want.data() + offset);
    fast(source.data() + offset, got.data() + offset);
    QVERIFY(std::memcmp(want.data(), got.data(), want.size() * sizeof(D)) == 0);
}

} // namespace

void tst_VectorRows::sameAsPlain()
{
    using namespace primitives;
    for (const int count : {0, 1, 2, 7, 8, 9, 15, 16, 17, 18, 19, 33, 34, 35, 1000}) {
        for (int offset = 0; offset <= kMaxOffset; ++offset) {
            // Sources end with the last sample that may be read, so that sanitizers detect reads beyond it.
            const auto floats = AwkwardFloats(offset + 3 * count + 12);
            const std::vector<float> row(floats.begin(), floats.begin() + offset + count);
            Compare<float, Ipp8u>(
                row, offset, count, [=](auto s, auto d) { plain::FloatToInteger(s, d, count, 0.0f, 255.0f); },
                [=](auto s, auto d) { FloatToInteger(s, d, count, 0.0f, 255.0f); });
            Compare<float, Ipp16u>(
                row, offset, count, [=](auto s, auto d) { plain::FloatToInteger(s, d, count, -0.25f, 5e4f); },
                [=](auto s, auto d) { FloatToInteger(s, d, count, -0.25f, 5e4f); });
            const std::vector<float> colors(floats.begin(), floats.begin() + offset + 3 * count);
            Compare<float, float>(
                colors, offset, 4 * count, [=](auto s, auto d) { plain::CopyOpaque<float, 3>(s, d, count, 0.75f); },
                [=](auto s, auto d) { CopyOpaqueFloat3(s, d, count, 0.75f); });
            const auto opaque = [=](auto s, auto d) { plain::OpaqueFloats(s, d, count); };
            const auto fastOpaque = [=](auto s, auto d) { OpaqueFloats(s, d, count); };
            Compare<Ipp8u, float>(Noise<Ipp8u>(offset + 3 * count), offset, 4 * count, opaque, fastOpaque);
            Compare<Ipp16u, float>(Noise<Ipp16u>(offset + 3 * count), offset, 4 * count, opaque, fastOpaque);
            Compare<Ipp8u, Ipp8u>(
                Noise<Ipp8u>(offset + 3 * count), offset, count,
                [=](auto s, auto d) { plain::RgbToGray<Ipp8u, 3>(s, d, count); },
                [=](auto s, auto d) { Rgb8ToGray(s, d, count); });
        }
    }
}

QTEST_APPLESS_MAIN(tst_VectorRows)
#include "vector_rows_test.moc"
