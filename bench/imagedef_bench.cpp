// Describing 24-megapixel pictures, locking in the image cache, and memory while iterating over many pictures.
#include "CopyRatio.h"
#include "ImageDatas.h"
#include "KImageLoader.h"
#include "PeakMemory.h"

#include <QGuiApplication>
#include <QTemporaryDir>

#include <random>

namespace {

constexpr int kWidth = 6000, kHeight = 4000;
constexpr double kMiB = 1 << 20;

/// 24-megapixel JPEGs under many names: one file and links to it.
class Photos {
public:
    /// @p metadataSource is the file that provides the EXIF and the ICC profile; empty for none.
    explicit Photos(const QString &metadataSource)
    {
        KImage photo(kWidth, kHeight, GFL_RGB, 8, /*clear=*/false, nullptr, 0);
        std::minstd_rand random(1); // gradual changes with noise of a few levels, like a photograph
        for (int y = 0; y < kHeight; ++y) {
            for (int i = 0; i < 3 * kWidth; ++i)
                photo.getData(0, y)[i] = static_cast<unsigned char>(40 + (i + 3 * y) / 200 + int(random() % 5));
        }
        constexpr int kQuality = 10;
        photo.Write(Path(0), QStringLiteral("jpeg"), kQuality, metadataSource);
    }
    QString Path(int number)
    {
        const QString path = m_dir.filePath(QStringLiteral("%1.jpg").arg(number));
        if (number > 0)
            QFile::link(m_dir.filePath(QStringLiteral("0.jpg")), path);
        return path;
    }

private:
    QTemporaryDir m_dir;
};

/// best_ms: CPU time per picture; target: at most 3 ms without thumbnail.
void BM_Describe(benchmark::State &state, bool withThumbnail)
{
    Photos photos(QStringLiteral(VITRELUX_SAMPLE));
    double best = 1e9;
    for (auto _ : state) {
        const double start = ThreadSeconds();
        ImageDef *image = nullptr;
        if (!ImageDef::CreateAPicture(photos.Path(0), image, withThumbnail))
            state.SkipWithError("not described");
        const double taken = ThreadSeconds() - start;
        delete image;
        best = std::min(best, taken);
        state.SetIterationTime(taken);
    }
    state.counters["best_ms"] = best * 1e3;
}
BENCHMARK_CAPTURE(BM_Describe, without_thumbnail, false)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(50);
BENCHMARK_CAPTURE(BM_Describe, decoded_thumbnail, true)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);

/// Locks and unlocks a version in memory, in a cache of a thousand images.
void BM_LockInMemory(benchmark::State &state)
{
    Photos photos{QString()};
    for (int i = 0; i < 1000; ++i) {
        ImageDef *image = nullptr;
        ImageDef::IsAPicture(photos.Path(i), image, /*withThumbnail=*/false);
    }
    ImageDef *const image = ImageDef::Find(photos.Path(0));
    image->LockFullSize(true);
    for (auto _ : state) {
        image->LockFullSize(true);
        image->UnlockFullSize(true);
    }
    image->UnlockFullSize(true);
    for (int i = 0; i < 1000; ++i)
        ImageDef::Delete(photos.Path(i));
}
BENCHMARK(BM_LockInMemory)->Unit(benchmark::kMicrosecond);

/// ratio: time to make a version about 1,024 pixels wide from the full one in memory, divided by that of resizing
/// alone. bytes: bytes read from files, including /proc/self/io, which reports this number.
void BM_SmallerVersion(benchmark::State &state)
{
    Photos photos{QString()};
    ImageDef *image = nullptr;
    ImageDef::IsAPicture(photos.Path(0), image, /*withThumbnail=*/false);
    KImage *const full = image->LockFullSize(true);
    double bestLock = 1e9, bestResize = 1e9;
    std::int64_t bytes = 0;
    int width = 1024;
    for (auto _ : state) {
        const std::int64_t before = ProcessNumber("io", "rchar:");
        const double start = ThreadSeconds();
        image->Lock(width, 683, true);
        const double locked = ThreadSeconds();
        KImage alone;
        full->Resize(alone, width, 683);
        bestResize = std::min(bestResize, ThreadSeconds() - locked);
        bestLock = std::min(bestLock, locked - start);
        bytes = ProcessNumber("io", "rchar:") - before;
        image->Unlock(width++, 683, true); // the next iteration locks a different version
    }
    state.counters["ratio"] = bestLock / bestResize;
    state.counters["bytes"] = static_cast<double>(bytes);
    ImageDef::Delete(image);
}
BENCHMARK(BM_SmallerVersion)->Unit(benchmark::kMillisecond)->Iterations(10);

/// peak_MiB: memory while iterating over a hundred pictures with a limit of 256 MB; must stay below the limit plus one
/// picture.
void BM_Walk(benchmark::State &state)
{
    Photos photos{QString()};
    for (auto _ : state) {
        const std::int64_t peak = PeakBytes([&] {
            for (int i = 0; i < 100; ++i) {
                ImageDef *image = nullptr;
                ImageDef::IsAPicture(photos.Path(i), image, /*withThumbnail=*/false);
                image->LockFullSize(true);
                image->UnlockFullSize(true);
            }
        });
        state.counters["peak_MiB"] = static_cast<double>(peak) / kMiB;
        state.counters["picture_MiB"] = kWidth * kHeight * 3.0 / kMiB;
    }
}
BENCHMARK(BM_Walk)->Unit(benchmark::kSecond)->Iterations(1);

} // namespace

int main(int argc, char **argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    benchmark::Initialize(&argc, argv);
    KImage::init(nullptr);
    benchmark::RunSpecifiedBenchmarks();
    KImage::exit();
}
