// The image-file layer at 24 megapixels compared with the libraries that it uses: CPU time, bytes read and memory.
#include "CopyRatio.h"
#include "PeakMemory.h"

#include "gfl.h"

#include <chrono>
#include <cstdio> // before jpeglib.h, which needs FILE
#include <cstdlib>
#include <filesystem>
#include <jpeglib.h>
#include <memory>
#include <random>
#include <string>
#include <tiffio.h>

namespace {

constexpr int kWidth = 6000, kHeight = 4000;
constexpr std::int64_t kPixels = std::int64_t(kWidth) * kHeight;
constexpr double kMiB = 1 << 20;

using BitmapPtr = std::unique_ptr<GFL_BITMAP, void (*)(GFL_BITMAP *)>;

std::string TemporaryFile(const char *name)
{
    return (std::filesystem::temp_directory_path() / (std::string("vitrelux_bench_") + name)).string();
}

/// Returns smooth gradients with a few levels of noise, like a photograph at base ISO.
BitmapPtr Photo(int width, int height, GflType type, int bits)
{
    BitmapPtr photo(static_cast<GFL_BITMAP *>(gflMemoryAlloc(sizeof(GFL_BITMAP))), gflFreeBitmap);
    *photo = GFL_BITMAP();
    photo->Type = type;
    photo->Width = width;
    photo->Height = height;
    photo->BitsPerComponent = static_cast<std::uint16_t>(bits);
    photo->ComponentsPerPixel = type == GFL_RGB ? 3 : 4;
    photo->BytesPerPixel = static_cast<std::uint16_t>(bits / 8 * photo->ComponentsPerPixel);
    photo->BytesPerLine = static_cast<std::uint32_t>(width) * photo->BytesPerPixel;
    photo->Data = static_cast<std::uint8_t *>(gflMemoryAlloc(photo->BytesPerLine * static_cast<std::uint32_t>(height)));
    std::minstd_rand random(1);
    for (int y = 0; y < height; ++y)
        for (int i = 0; i < width * photo->ComponentsPerPixel; ++i) {
            std::uint8_t *row = photo->Data + std::size_t(y) * photo->BytesPerLine;
            const unsigned value = 40u
                + static_cast<unsigned>(i + 3 * y) * 180u / static_cast<unsigned>(3 * (width + height))
                + static_cast<unsigned>(random() % 5);
            if (bits == 8)
                row[i] = static_cast<std::uint8_t>(value);
            else
                reinterpret_cast<std::uint16_t *>(row)[i] = static_cast<std::uint16_t>(value * 257 + random() % 64);
        }
    return photo;
}

GFL_SAVE_PARAMS SaveParams(const char *format, int compression)
{
    GFL_SAVE_PARAMS params;
    gflGetDefaultSaveParams(&params);
    params.FormatIndex = gflGetFormatIndexByName(format);
    params.Compression = static_cast<std::uint16_t>(compression);
    return params;
}

/// Adds EXIF with a maker note of 30,000 bytes, like those of cameras.
void AddExif(GFL_BITMAP *bitmap)
{
    std::vector<std::uint8_t> note(30000, 'n');
    char maker[] = "Acme";
    GFL_EXIF_ENTRYEX last = {37500, 7, GFL_EXIF_CAMERA, 0, 0, 30000, note.data(), nullptr};
    GFL_EXIF_ENTRYEX first = {271, 2, GFL_EXIF_MAIN, 0, 0, 5, reinterpret_cast<std::uint8_t *>(maker), &last};
    const GFL_EXIF_DATAEX exif = {&first, 0};
    gflBitmapSetEXIF2(bitmap, &exif);
}

/// Writes a photo as a JPEG and returns its path.
std::string JpegFile(int width, int height)
{
    const std::string path = TemporaryFile((std::to_string(width) + ".jpg").c_str());
    const BitmapPtr photo = Photo(width, height, GFL_RGB, 8);
    AddExif(photo.get());
    const GFL_SAVE_PARAMS params = SaveParams("jpeg", 0);
    gflSaveBitmapUTF8(path.c_str(), photo.get(), &params);
    return path;
}

BitmapPtr Load(const std::string &path)
{
    GFL_LOAD_PARAMS params;
    gflGetDefaultLoadParams(&params);
    params.Flags = GFL_LOAD_ORIGINAL_DEPTH;
    GFL_BITMAP *bitmap = nullptr;
    gflLoadBitmapUTF8(path.c_str(), &bitmap, &params, nullptr);
    return BitmapPtr(bitmap, gflFreeBitmap);
}

/// Decodes a file directly with libjpeg-turbo, into one block.
void DecodeByLibrary(const std::string &path)
{
    std::FILE *file = std::fopen(path.c_str(), "rb");
    jpeg_decompress_struct decoder = {};
    jpeg_error_mgr errors;
    decoder.err = jpeg_std_error(&errors);
    jpeg_create_decompress(&decoder);
    jpeg_stdio_src(&decoder, file);
    jpeg_read_header(&decoder, TRUE);
    jpeg_start_decompress(&decoder);
    const std::size_t stride = std::size_t(decoder.output_width) * 3;
    std::unique_ptr<JSAMPLE[]> pixels(new JSAMPLE[stride * decoder.output_height]);
    while (decoder.output_scanline < decoder.output_height) {
        JSAMPROW row = pixels.get() + decoder.output_scanline * stride;
        jpeg_read_scanlines(&decoder, &row, 1);
    }
    jpeg_finish_decompress(&decoder);
    jpeg_destroy_decompress(&decoder);
    std::fclose(file);
}

/// Returns the CPU time of all threads.
double ProcessSeconds()
{
    timespec time = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

double WallSeconds()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/// Times @p operation and @p other alternately with @p clock; "ratio" is the shortest time of @p operation divided by
/// that of @p other.
template <typename Operation, typename Other>
void Compare(benchmark::State &state, double (*clock)(), Operation operation, Other other)
{
    double bestOperation = 1e9, bestOther = 1e9;
    for (auto _ : state) {
        const double start = clock();
        other();
        const double middle = clock();
        operation();
        const double taken = clock() - middle;
        bestOther = std::min(bestOther, middle - start);
        bestOperation = std::min(bestOperation, taken);
        state.SetIterationTime(taken);
    }
    state.counters["ratio"] = bestOperation / bestOther;
}

/// ratio: CPU time divided by that of libjpeg-turbo alone. extra_MiB: memory in addition to the picture.
void BM_ReadJpeg(benchmark::State &state)
{
    const std::string path = JpegFile(kWidth, kHeight);
    Compare(
        state, ThreadSeconds, [&] { Load(path); }, [&] { DecodeByLibrary(path); });
    const std::int64_t peak = PeakBytes([&] { Load(path); });
    state.counters["extra_MiB"] = static_cast<double>(peak - kPixels * 3) / kMiB;
    std::filesystem::remove(path);
}
BENCHMARK(BM_ReadJpeg)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);

/// bytes: bytes read from the file; must be the same for 24 megapixels and for 1.
void BM_DescribeJpeg(benchmark::State &state)
{
    const auto side = static_cast<int>(state.range(0));
    const std::string path = JpegFile(side, side * 2 / 3);
    double best = 1e9;
    std::int64_t bytes = 0;
    for (auto _ : state) {
        const std::int64_t before = ProcessNumber("io", "rchar:");
        const double start = ThreadSeconds();
        GFL_FILE_INFORMATION info = {};
        gflGetFileInformationExUTF8(path.c_str(), -1, &info, 4);
        GFL_BITMAP *bitmap = nullptr;
        gflLoadMetadataUTF8(path.c_str(), &bitmap);
        gflFreeEXIF(gflBitmapGetEXIF(bitmap, 1));
        gflFreeBitmap(bitmap);
        gflFreeFileInformation(&info);
        const double taken = ThreadSeconds() - start;
        bytes = ProcessNumber("io", "rchar:") - before;
        best = std::min(best, taken);
        state.SetIterationTime(taken);
    }
    state.counters["best_ms"] = best * 1e3;
    state.counters["bytes"] = static_cast<double>(bytes);
    std::filesystem::remove(path);
}
BENCHMARK(BM_DescribeJpeg)->Arg(1200)->Arg(kWidth)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(20);

/// Returns the size of the file that libtiff writes with deflate, at the level and with the predictor that the
/// image-file layer uses.
std::uintmax_t SizeByLibrary(const GFL_BITMAP &photo, const std::string &path)
{
    TIFF *tiff = TIFFOpen(path.c_str(), "w");
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, photo.Width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, photo.Height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, int(photo.BitsPerComponent));
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, int(photo.ComponentsPerPixel));
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
    TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    TIFFSetField(tiff, TIFFTAG_ZIPQUALITY, 1);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, 64);
    std::vector<std::uint8_t> row(photo.BytesPerLine); // the predictor works in place
    for (int y = 0; y < photo.Height; ++y) {
        std::copy_n(photo.Data + std::size_t(y) * photo.BytesPerLine, row.size(), row.begin());
        TIFFWriteScanline(tiff, row.data(), static_cast<std::uint32_t>(y), 0);
    }
    TIFFClose(tiff);
    return std::filesystem::file_size(path);
}

/// ratio: time on two threads divided by time on one (needs two idle processors); processor_ratio: the same for
/// CPU time; calling_thread: the share of CPU time on the calling thread, which writes. size: file size divided by that
/// of libtiff's file. extra: additional memory for writing, divided by the size of the picture; read_extra_MiB: memory
/// for reading the file in addition to the picture.
void BM_WriteTiffDeflate(benchmark::State &state, int bits)
{
    const BitmapPtr photo = Photo(kWidth, kHeight, GFL_RGBA, bits);
    const std::string path = TemporaryFile("deflate.tif");
    const GFL_SAVE_PARAMS params = SaveParams("tiff", 4);
    const auto write = [&](int threads) {
        gflSetThreads(threads);
        gflSaveBitmapUTF8(path.c_str(), photo.get(), &params);
    };
    Compare(
        state, WallSeconds, [&] { write(2); }, [&] { write(1); });
    const double start = ProcessSeconds();
    write(1);
    const double middle = ProcessSeconds(), callingStart = ThreadSeconds();
    write(2);
    const double onTwo = ProcessSeconds() - middle;
    state.counters["processor_ratio"] = onTwo / (middle - start);
    state.counters["calling_thread"] = (ThreadSeconds() - callingStart) / onTwo;
    const double size = static_cast<double>(std::filesystem::file_size(path));
    const double picture = static_cast<double>(kPixels) * photo->BytesPerPixel;
    state.counters["extra"] = static_cast<double>(PeakBytes([&] { write(2); })) / picture;
    state.counters["read_extra_MiB"] = (static_cast<double>(PeakBytes([&] { Load(path); })) - picture) / kMiB;
    state.counters["size"] = size / static_cast<double>(SizeByLibrary(*photo, path));
    gflSetThreads(0);
    std::filesystem::remove(path);
}
BENCHMARK_CAPTURE(BM_WriteTiffDeflate, 8uRgba, 8)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK_CAPTURE(BM_WriteTiffDeflate, 16uRgba, 16)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);

/// ratio: time for a 256-pixel thumbnail divided by that for reading the whole picture.
void BM_Thumbnail(benchmark::State &state, const char *format)
{
    const BitmapPtr photo = Photo(kWidth, kHeight, GFL_RGB, 8);
    const std::string path = TemporaryFile("thumbnail");
    const GFL_SAVE_PARAMS save = SaveParams(format, 0);
    gflSaveBitmapUTF8(path.c_str(), photo.get(), &save);
    GFL_LOAD_PARAMS params;
    gflGetDefaultLoadParams(&params);
    const auto thumbnail = [&] {
        GFL_BITMAP *bitmap = nullptr;
        gflLoadThumbnailUTF8(path.c_str(), 0, 0, &bitmap, &params, nullptr);
        gflFreeBitmap(bitmap);
    };
    Compare(state, ThreadSeconds, thumbnail, [&] { Load(path); });
    state.counters["peak_MiB"] = static_cast<double>(PeakBytes(thumbnail)) / kMiB;
    std::filesystem::remove(path);
}
BENCHMARK_CAPTURE(BM_Thumbnail, jpeg, "jpeg")->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);
BENCHMARK_CAPTURE(BM_Thumbnail, tiff, "tiff")->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(5);

} // namespace

BENCHMARK_MAIN();
