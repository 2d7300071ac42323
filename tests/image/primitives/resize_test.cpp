#include "ippi.h"

#include "Case.h"
#include "Plane.h"

#include <memory>

using namespace primitives;

/// Cases that the tests of KImage::Resize don't cover: parts of a target, rejected arguments, and reductions by large
/// factors.
class tst_Resize : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void partsMakeUpTheWhole();
    void flatStaysFlat();
    void refused();
};

namespace {

struct Prepared {
    std::vector<unsigned char> specBlock;
    std::vector<unsigned char> buffer;
    ResizeSpec *spec() { return reinterpret_cast<ResizeSpec *>(specBlock.data()); }
};

Prepared Prepare(Size from, Size to, ResizeMethod method, int channels)
{
    Prepared prepared;
    std::int64_t specBytes = 0, initBytes = 0, bufferBytes = 0;
    ippiResizeGetSize_32f(from, to, method, 0, &specBytes, &initBytes);
    prepared.specBlock.resize(static_cast<std::size_t>(specBytes));
    if (method == kResizeSuper)
        ippiResizeSuperInit_32f(from, to, prepared.spec());
    else
        ippiResizeLinearInit_32f(from, to, prepared.spec(), nullptr);
    ippiResizeGetBufferSize_32f(prepared.spec(), to, channels, &bufferBytes);
    prepared.buffer.resize(static_cast<std::size_t>(bufferBytes));
    return prepared;
}

} // namespace

void tst_Resize::partsMakeUpTheWhole()
{
    Plane<Ipp16u, 3> image(53, 29, 1), whole(71, 11, 2), parts = whole;
    const auto before = whole;
    Prepared prepared = Prepare(image.Size(), whole.Size(), kResizeLinear, 3);
    const auto compute = [&](Plane<Ipp16u, 3> &target, int x, int y, Size size) {
        ippiResizeLinear_16u_C3R(image.Data(), image.StepBytes(), &target.At(x, y), target.StepBytes(), {x, y}, size,
                                 kBorderReplicate, nullptr, prepared.spec(), prepared.buffer.data());
    };
    compute(whole, 0, 0, whole.Size());
    QVERIFY(whole.HasGapsOf(before));
    for (int y : {0, 4})
        for (int x : {0, 1, 9})
            compute(parts, x, y, {(x == 0 ? 1 : x == 1 ? 9 : 71) - x, (y == 0 ? 4 : 11) - y});
    CompareSamples(whole.Size(), 3, Reader(parts), Reader(whole), 0);
}

void tst_Resize::flatStaysFlat()
{
    for (const primitives::Size size : {primitives::Size{60013, 1}, {1, 60013}, {1511, 1021}}) {
        const Case named(size.width, size.height);
        // Sums of thousands of small numbers: in single precision alone they would be off by several counts.
        Plane<Ipp16u, 1> image(size.width, size.height), target(1, 1);
        for (int i = 0; i < size.width * size.height; ++i)
            image.At(i % size.width, i / size.width) = 65001;
        Prepared prepared = Prepare(size, {1, 1}, kResizeSuper, 1);
        ippiResizeSuper_16u_C1R(image.Data(), image.StepBytes(), target.Data(), target.StepBytes(), {0, 0}, {1, 1},
                                prepared.spec(), prepared.buffer.data());
        QCOMPARE(int(target.At(0, 0)), 65001);
    }
}

void tst_Resize::refused()
{
    const struct {
        int width, height, method, antialiasing;
        Status status;
    } rows[] = {{10, 10, 8, 0, Status::Ok},         {10, 11, 8, 0, Status::BadArgument}, // area weighting can't enlarge
                {11, 11, 2, 0, Status::Ok},         {0, 10, 8, 0, Status::BadSize},
                {10, -1, 2, 0, Status::BadSize},    {10, 10, 6, 0, Status::BadArgument}, // cubic
                {10, 10, 2, 1, Status::BadArgument}};                                    // antialiased
    for (const auto &row : rows) {
        const Case named("row", &row - &*std::begin(rows));
        std::int64_t specBytes = 0, initBytes = 0;
        const Size size = {row.width, row.height};
        const auto method = ResizeMethod(row.method);
        QVERIFY(ippiResizeGetSize_8u({10, 10}, size, method, row.antialiasing, &specBytes, &initBytes) == row.status);
        QCOMPARE(specBytes > 0, row.status == Status::Ok);
        if (row.status != Status::Ok)
            continue;
        // A prepared resize rejects parts outside its target.
        Plane<Ipp8u, 1> image(10, 10, 1), target(11, 11, 2), before = target;
        Prepared prepared = Prepare({10, 10}, size, method, 1);
        QVERIFY(ippiResizeSuper_8u_C1R(image.Data(), image.StepBytes(), target.Data(), target.StepBytes(), {1, 0}, size,
                                       prepared.spec(), prepared.buffer.data())
                == Status::BadSize);
        QVERIFY(target.HasGapsOf(before));
    }
}

QTEST_APPLESS_MAIN(tst_Resize)
#include "resize_test.moc"
