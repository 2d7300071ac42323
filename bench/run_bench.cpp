// Whole runs of the program, from the start of the process to its end: JPEG to deflate TIFF, all three corrections.
//
// "ratio" is relative to the sum of the unavoidable work: decoding the file with libjpeg-turbo, one copy of the float
// picture, libdeflate at level 1 with predictor on two threads, writing and syncing those bytes. Each is timed
// alternately with the run; the shortest time of all rounds is used. Memory is the peak of the process.
#include "CopyRatio.h"
#include "Photograph.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <jpeglib.h>
#include <libdeflate.h>

#include <array>
#include <chrono>
#include <limits>
#include <memory>
#include <thread>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

double Now()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

[[noreturn]] void Die(const QString &why)
{
    qFatal("run_bench: %s", qPrintable(why));
}

/// A folder with a picture and a profile made for its size.
class Job {
public:
    explicit Job(double megapixels) : m_folder(QDir::tempPath() + QLatin1String("/vitrelux-bench-XXXXXX"))
    {
        MakePhotograph(&m_photograph, megapixels);
        constexpr int kQualityOfCameras = 11;
        m_photograph.Write(Picture(), QStringLiteral("jpeg"), kQualityOfCameras, QString());
        QFile sample(QStringLiteral(VITRELUX_SAMPLES "/facade.lcp")), profile(Profile());
        if (!sample.open(QIODevice::ReadOnly) || !profile.open(QIODevice::WriteOnly))
            Die(QStringLiteral("no profile"));
        QString text = QString::fromUtf8(sample.readAll());
        const auto set = [&text](const char *tag, int value) {
            text.replace(QRegularExpression(QStringLiteral("(:%1>)\\d+").arg(QLatin1String(tag))),
                         QStringLiteral("\\1%1").arg(value));
        };
        set("ImageWidth", m_photograph.width());
        set("ImageLength", m_photograph.height());
        profile.write(text.toUtf8());
    }

    QString Picture() const { return m_folder.filePath(QStringLiteral("photograph.jpg")); }
    QString Profile() const { return m_folder.filePath(QStringLiteral("lens.lcp")); }
    QString File(const char *name) const { return m_folder.filePath(QLatin1String(name)); }
    const KImage &Photograph() const { return m_photograph; }
    std::int64_t PixelCount() const { return std::int64_t(m_photograph.width()) * m_photograph.height(); }

private:
    QTemporaryDir m_folder;
    KImage m_photograph;
};

/// Seconds and peak bytes of one run of the program.
struct Run {
    double seconds;
    double peakBytes;
};

/// Starts runs from a small process, because the peak of a child process includes the memory of its parent at the fork.
class Starter {
public:
    /// Call it before this process uses much memory.
    Starter();
    Run Correct(const Job &job);

private:
    struct Names {
        char picture[512];
        char profile[512];
    };
    [[noreturn]] static void Serve(const QByteArray &program, int requests, int answers);

    int m_requests[2], m_answers[2];
};

Starter::Starter()
{
    const QByteArray program =
        QFile::encodeName(QCoreApplication::applicationDirPath() + QLatin1String("/../bin/vitrelux"));
    if (pipe(m_requests) != 0 || pipe(m_answers) != 0)
        Die(QStringLiteral("no pipes"));
    if (fork() == 0) {
        close(m_requests[1]); // so that the starter gets an end of file when this process ends
        Serve(program, m_requests[0], m_answers[1]);
    }
}

void Starter::Serve(const QByteArray &program, int requests, int answers)
{
    Names names;
    while (read(requests, &names, sizeof names) == sizeof names) {
        const double start = Now();
        const pid_t child = fork();
        if (child == 0) {
            dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
            execl(program.constData(), program.constData(), "correct", "--plain", "--overwrite", "--profile",
                  names.profile, names.picture, static_cast<char *>(nullptr));
            _exit(127);
        }
        int status = -1;
        rusage usage = {};
        const bool good = child > 0 && wait4(child, &status, 0, &usage) == child && status == 0;
        const Run run = {good ? Now() - start : -1.0, static_cast<double>(usage.ru_maxrss) * 1024.0};
        if (write(answers, &run, sizeof run) != sizeof run)
            break;
    }
    _exit(0);
}

Run Starter::Correct(const Job &job)
{
    Names names = {};
    qstrncpy(names.picture, QFile::encodeName(job.Picture()).constData(), sizeof names.picture);
    qstrncpy(names.profile, QFile::encodeName(job.Profile()).constData(), sizeof names.profile);
    Run run;
    if (write(m_requests[1], &names, sizeof names) != sizeof names || read(m_answers[0], &run, sizeof run) != sizeof run
        || run.seconds < 0)
        Die(QStringLiteral("the program failed"));
    return run;
}

Starter *s_starter = nullptr;

// --- Unavoidable work ---

void DecodeJpeg(const Job &job)
{
    std::unique_ptr<FILE, int (*)(FILE *)> file(std::fopen(QFile::encodeName(job.Picture()).constData(), "rb"),
                                                std::fclose);
    jpeg_decompress_struct decoder;
    jpeg_error_mgr errors;
    decoder.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&decoder);
    jpeg_stdio_src(&decoder, file.get());
    jpeg_read_header(&decoder, TRUE);
    jpeg_start_decompress(&decoder);
    std::vector<unsigned char> row(std::size_t(decoder.output_width) * 3);
    JSAMPROW rows[] = {row.data()};
    while (decoder.output_scanline < decoder.output_height)
        jpeg_read_scanlines(&decoder, rows, 1);
    jpeg_finish_decompress(&decoder);
    jpeg_destroy_decompress(&decoder);
}

/// Appends every other strip from @p first on, with the differences of neighbors, to @p packed.
void DeflateStrips(const KImage &rgba, int first, std::vector<unsigned char> *packed)
{
    constexpr int kLevel = 1, kThreads = 2, kStripRows = 16;
    const std::size_t rowBytes = std::size_t(rgba.width()) * 4, stripBytes = rowBytes * kStripRows;
    std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor *)> compressor(
        libdeflate_alloc_compressor(kLevel), libdeflate_free_compressor);
    std::vector<unsigned char> strip(stripBytes), bound(libdeflate_zlib_compress_bound(compressor.get(), stripBytes));
    for (int top = first * kStripRows; top < rgba.height(); top += kThreads * kStripRows) {
        const int rows = std::min(kStripRows, rgba.height() - top);
        for (int y = 0; y < rows; ++y) {
            const unsigned char *from = rgba.getData(0, top + y);
            unsigned char *to = strip.data() + std::size_t(y) * rowBytes;
            std::copy_n(from, 4, to);
            for (std::size_t i = 4; i < rowBytes; ++i)
                to[i] = static_cast<unsigned char>(from[i] - from[i - 4]);
        }
        const std::size_t bytes = libdeflate_zlib_compress(
            compressor.get(), strip.data(), rowBytes * static_cast<std::size_t>(rows), bound.data(), bound.size());
        packed->insert(packed->end(), bound.data(), bound.data() + bytes);
    }
}

class Floor {
public:
    explicit Floor(const Job &job) : m_job(job), m_floats(static_cast<std::size_t>(job.PixelCount()) * 32, 1)
    {
        job.Photograph().Convert(m_rgba, GFL_RGBA, 8);
    }

    /// Returns the seconds of the four steps: decoding, copying, deflating, writing.
    std::array<double, 4> Measure()
    {
        std::vector<unsigned char> packed[2];
        for (auto &part : packed)
            part.reserve(static_cast<std::size_t>(m_job.PixelCount()) * 4);
        const double start = Now();
        DecodeJpeg(m_job);
        const double decoded = Now();
        const std::size_t half = m_floats.size() / 2;
        CopyRows(m_floats.data() + half, m_floats.data(), half);
        const double copied = Now();
        std::thread other(DeflateStrips, std::cref(m_rgba), 1, &packed[1]);
        DeflateStrips(m_rgba, 0, &packed[0]);
        other.join();
        const double deflated = Now();
        const int file =
            open(QFile::encodeName(m_job.File("floor.bin")).constData(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        for (const auto &part : packed) {
            if (write(file, part.data(), part.size()) != static_cast<ssize_t>(part.size()))
                Die(QStringLiteral("the disk is full"));
        }
        fsync(file);
        close(file);
        return {decoded - start, copied - decoded, deflated - copied, Now() - deflated};
    }

private:
    const Job &m_job;
    KImage m_rgba;
    std::vector<unsigned char> m_floats; // two float pictures
};

void BM_Run(benchmark::State &state)
{
    const Job job(static_cast<double>(state.range(0)));
    double bestRun = std::numeric_limits<double>::max(), peakBytes = 0.0;
    std::array<double, 4> best;
    best.fill(std::numeric_limits<double>::max());
    Floor floor(job);
    for (auto _ : state) {
        const std::array<double, 4> steps = floor.Measure();
        for (std::size_t i = 0; i < steps.size(); ++i)
            best[i] = std::min(best[i], steps[i]);
        const Run run = s_starter->Correct(job);
        bestRun = std::min(bestRun, run.seconds);
        peakBytes = std::max(peakBytes, run.peakBytes);
        state.SetIterationTime(run.seconds);
    }
    const double pixels = static_cast<double>(job.PixelCount());
    state.counters["ratio"] = bestRun / (best[0] + best[1] + best[2] + best[3]);
    state.counters["Mpixel/s"] = pixels * 1e-6 / bestRun;
    state.counters["seconds"] = bestRun;
    state.counters["decode_s"] = best[0];
    state.counters["copy_s"] = best[1];
    state.counters["deflate_s"] = best[2];
    state.counters["write_s"] = best[3];
    state.counters["peak_MiB"] = peakBytes / (1 << 20);
    state.counters["bytes/pixel_over_80MiB"] = std::max(0.0, peakBytes - 80.0 * (1 << 20)) / pixels;
}
BENCHMARK(BM_Run)->Arg(1)->Arg(24)->Arg(100)->UseManualTime()->Iterations(5)->Unit(benchmark::kMillisecond);

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    Starter starter;
    s_starter = &starter;
    KImage::init(nullptr);
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    KImage::exit();
}
