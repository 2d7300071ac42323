// Whole runs of the program, from process start to end, writing deflate TIFF with all three corrections.
//
// "ratio" is relative to the unavoidable work: decoding the file on one thread, one copy of the float picture,
// compressing on two threads with the library that the program uses, writing and syncing the compressed bytes. These
// steps and the run are timed alternately; each one's shortest time of all rounds is used. Memory is the peak of the
// process.
#include "CopyRatio.h"
#include "Photograph.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <isa-l/igzip_lib.h>
#include <jpeglib.h>
#include <libdeflate.h>
#include <tiffio.h>

#include <array>
#include <chrono>
#include <iterator>
#include <limits>
#include <memory>
#include <string>
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

/// Kind of run: the picture and how it is sampled.
struct Kind {
    const char *name;
    int bits; // 8: a JPEG; 16: an uncompressed TIFF
    bool portrait;
    const char *sampling; // null: plain corrections
};

constexpr Kind kKinds[] = {{"plain", 8, false, nullptr},
                           {"sharp", 8, false, "--sampling=sharp"},
                           {"bilinear", 8, false, "--sampling=bilinear"},
                           {"sharp16", 16, false, "--sampling=sharp"},
                           {"bilinear16", 16, false, "--sampling=bilinear"},
                           {"portraitSharp", 8, true, "--sampling=sharp"}};

/// A folder with a picture and a profile made for its size.
class Job {
public:
    Job(const Kind &kind, double megapixels)
        : m_kind(kind), m_folder(QDir::tempPath() + QLatin1String("/vitrelux-bench-XXXXXX"))
    {
        MakePhotograph(&m_photograph, megapixels, kind.bits, kind.portrait);
        constexpr int kQualityOfCameras = 11, kNone = 0;
        const bool isJpeg = kind.bits == 8;
        m_photograph.Write(Picture(), isJpeg ? QStringLiteral("jpeg") : QStringLiteral("tiff"),
                           isJpeg ? kQualityOfCameras : kNone, QString());
        QFile sample(QStringLiteral(VITRELUX_SAMPLES "/facade.lcp")), profile(Profile());
        if (!sample.open(QIODevice::ReadOnly) || !profile.open(QIODevice::WriteOnly))
            Die(QStringLiteral("no profile"));
        QString text = QString::fromUtf8(sample.readAll());
        const auto set = [&text](const char *tag, int value) {
            text.replace(QRegularExpression(QStringLiteral("(:%1>)\\d+").arg(QLatin1String(tag))),
                         QStringLiteral("\\1%1").arg(value));
        };
        set("ImageWidth", std::max(m_photograph.width(), m_photograph.height()));
        set("ImageLength", std::min(m_photograph.width(), m_photograph.height()));
        profile.write(text.toUtf8());
    }

    const Kind &TheKind() const { return m_kind; }
    QString Picture() const { return File(m_kind.bits == 8 ? "a.jpg" : "a.tif"); }
    QString Profile() const { return m_folder.filePath(QStringLiteral("lens.lcp")); }
    QString File(const char *name) const { return m_folder.filePath(QLatin1String(name)); }
    const KImage &Photograph() const { return m_photograph; }
    std::int64_t PixelCount() const { return std::int64_t(m_photograph.width()) * m_photograph.height(); }

private:
    const Kind &m_kind;
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
    /// Forks, so construct the object before this process uses much memory.
    Starter();
    Run Correct(const Job &job);

private:
    struct Names {
        char picture[512];
        char profile[512];
        int kind; // index
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
        close(m_requests[1]); // so that the starter sees end of file when its parent ends
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
            const char *const sampling = kKinds[names.kind].sampling;
            execl(program.constData(), program.constData(), "correct", "--overwrite", "--profile", names.profile,
                  names.picture, sampling ? sampling : "--plain", sampling ? "--body=Halden M4" : nullptr, "--focal=24",
                  "--aperture=4", static_cast<char *>(nullptr));
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
    names.kind = static_cast<int>(&job.TheKind() - kKinds);
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

void DecodeTiff(const Job &job)
{
    TIFF *tiff = TIFFOpen(QFile::encodeName(job.Picture()).constData(), "r");
    std::vector<unsigned char> strip(static_cast<std::size_t>(TIFFStripSize(tiff)));
    for (std::uint32_t i = 0; i < TIFFNumberOfStrips(tiff); ++i)
        TIFFReadEncodedStrip(tiff, i, strip.data(), static_cast<tmsize_t>(strip.size()));
    TIFFClose(tiff);
}

using Bytes = std::vector<unsigned char>;

/// Compresses the first @p bytes of @p strip, as for fitted pictures, and returns the compressed size.
std::size_t PackByIsaL(const Bytes &strip, std::size_t bytes, Bytes *packed)
{
    thread_local Bytes buffer(ISAL_DEF_LVL1_DEFAULT);
    isal_zstream stream;
    isal_deflate_init(&stream);
    stream.level = 1;
    stream.level_buf = buffer.data();
    stream.level_buf_size = ISAL_DEF_LVL1_DEFAULT;
    stream.gzip_flag = IGZIP_ZLIB;
    stream.end_of_stream = 1;
    stream.next_in = const_cast<unsigned char *>(strip.data()); // only read
    stream.avail_in = static_cast<std::uint32_t>(bytes);
    stream.next_out = packed->data();
    stream.avail_out = static_cast<std::uint32_t>(packed->size());
    if (isal_deflate(&stream) != COMP_OK)
        Die(QStringLiteral("ISA-L failed"));
    return stream.total_out;
}

/// Does the same as PackByIsaL with libdeflate, as for plain pictures.
std::size_t PackByLibdeflate(const Bytes &strip, std::size_t bytes, Bytes *packed)
{
    constexpr int kLevel = 1;
    thread_local const std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor *)> compressor(
        libdeflate_alloc_compressor(kLevel), libdeflate_free_compressor);
    return libdeflate_zlib_compress(compressor.get(), strip.data(), bytes, packed->data(), packed->size());
}

template <typename Sample> void Differences(const unsigned char *from, unsigned char *to, int width, int channels)
{
    const auto *src = reinterpret_cast<const Sample *>(from);
    auto *dst = reinterpret_cast<Sample *>(to);
    std::copy_n(src, channels, dst);
    for (int i = channels; i < width * channels; ++i)
        dst[i] = static_cast<Sample>(src[i] - src[i - channels]);
}

/// Compresses every other strip from number @p first on, after horizontal prediction, and appends the result to
/// @p packed.
void DeflateStrips(const KImage &image, bool plain, int first, Bytes *packed)
{
    constexpr int kThreads = 2, kStripRows = 16;
    const int channels = plain ? 4 : 3;
    const bool is8 = image.bitsPerComponent() == 8;
    const std::size_t rowBytes = std::size_t(image.width()) * std::size_t(channels) * (is8 ? 1 : 2);
    Bytes strip(rowBytes * kStripRows), bound(strip.size() + strip.size() / 64 + 1024);
    for (int top = first * kStripRows; top < image.height(); top += kThreads * kStripRows) {
        const int rows = std::min(kStripRows, image.height() - top);
        for (int y = 0; y < rows; ++y)
            (is8 ? Differences<std::uint8_t> : Differences<std::uint16_t>)(image.getData(0, top + y),
                                                                           strip.data() + std::size_t(y) * rowBytes,
                                                                           image.width(), channels);
        const std::size_t bytes =
            (plain ? PackByLibdeflate : PackByIsaL)(strip, rowBytes * static_cast<std::size_t>(rows), &bound);
        packed->insert(packed->end(), bound.data(), bound.data() + bytes);
    }
}

/// Times the unavoidable work.
class Floor {
public:
    explicit Floor(const Job &job) : m_job(job), m_floats(static_cast<std::size_t>(job.PixelCount()) * 32, 1)
    {
        job.Photograph().Convert(m_result, job.TheKind().sampling ? GFL_RGB : GFL_RGBA, job.TheKind().bits);
    }

    /// Returns the seconds of the four steps: decoding, copying, deflating, writing.
    std::array<double, 4> Measure()
    {
        const bool plain = m_job.TheKind().sampling == nullptr;
        Bytes packed[2];
        for (auto &part : packed)
            part.reserve(static_cast<std::size_t>(m_job.PixelCount()) * 4); // only filled pages take memory
        const double start = Now();
        (m_job.TheKind().bits == 8 ? DecodeJpeg : DecodeTiff)(m_job);
        const double decoded = Now();
        const std::size_t half = m_floats.size() / 2;
        CopyRows(m_floats.data() + half, m_floats.data(), half);
        const double copied = Now();
        std::thread other(DeflateStrips, std::cref(m_result), plain, 1, &packed[1]);
        DeflateStrips(m_result, plain, 0, &packed[0]);
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
    KImage m_result;                     // uncorrected, in the pixel format of the file
    std::vector<unsigned char> m_floats; // two float pictures
};

void BM_Run(benchmark::State &state, int kind, double megapixels)
{
    const Job job(kKinds[kind], megapixels);
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

/// Registers all kinds at 24 megapixels, and plain and sharp runs also at 1 and 100, to show how they scale.
void RegisterRuns()
{
    for (int kind = 0; kind < static_cast<int>(std::size(kKinds)); ++kind)
        for (const int megapixels : {1, 24, 100}) {
            if (megapixels != 24 && kind > 1)
                continue;
            const std::string name = std::string("BM_Run/") + kKinds[kind].name + "/" + std::to_string(megapixels);
            benchmark::RegisterBenchmark(name.c_str(), BM_Run, kind, megapixels)
                ->UseManualTime()
                ->Iterations(5)
                ->Unit(benchmark::kMillisecond);
        }
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    Starter starter;
    s_starter = &starter;
    KImage::init(nullptr);
    RegisterRuns();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    KImage::exit();
}
