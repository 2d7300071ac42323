// Tests of JPEG, with libjpeg as the reference.
#include "Bitmaps.h"
#include "Case.h"
#include "Files.h"
#include "MetadataFiles.h"

#include <QScopeGuard>
#include <QtTest>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <jpeglib.h>

namespace {

/// Settings with which libjpeg writes a file.
struct Spec {
    int width = 67;
    int height = 41;
    J_COLOR_SPACE in = JCS_RGB;
    J_COLOR_SPACE stored = JCS_YCbCr;
    bool progressive = false;
    bool arithmetic = false;
    int restart = 0;      // MCUs between restart markers
    int lumaSampling = 2; // 2: color at half the resolution
    bool hasInkProfile = false;
};

constexpr int kCyan = 204; // the only ink in a file with a profile

template <class Change> Spec With(Change change)
{
    Spec spec;
    change(spec);
    return spec;
}

int ComponentsOf(J_COLOR_SPACE space)
{
    return space == JCS_GRAYSCALE ? 1 : space == JCS_CMYK || space == JCS_YCCK ? 4 : 3;
}

JSAMPLE Sample(const Spec &spec, int x, int y, int c)
{
    if (spec.hasInkProfile) // Adobe's form: 255 is no ink
        return static_cast<JSAMPLE>(c == 0 ? 255 - kCyan : 255);
    return static_cast<JSAMPLE>(30 + 2 * x + y + 15 * c);
}

QByteArray Encode(const Spec &spec)
{
    jpeg_compress_struct cinfo;
    jpeg_error_mgr errors;
    cinfo.err = jpeg_std_error(&errors);
    jpeg_create_compress(&cinfo);
    unsigned char *data = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&cinfo, &data, &size);
    cinfo.image_width = static_cast<JDIMENSION>(spec.width);
    cinfo.image_height = static_cast<JDIMENSION>(spec.height);
    cinfo.input_components = ComponentsOf(spec.in);
    cinfo.in_color_space = spec.in;
    jpeg_set_defaults(&cinfo);
    jpeg_set_colorspace(&cinfo, spec.stored);
    jpeg_set_quality(&cinfo, 90, TRUE);
    cinfo.comp_info[0].h_samp_factor = cinfo.comp_info[0].v_samp_factor = spec.lumaSampling;
    cinfo.restart_interval = static_cast<unsigned>(spec.restart);
    cinfo.arith_code = spec.arithmetic;
    if (spec.progressive)
        jpeg_simple_progression(&cinfo);
    jpeg_start_compress(&cinfo, TRUE);
    if (spec.hasInkProfile)
        jpeg_write_icc_profile(&cinfo, reinterpret_cast<const JOCTET *>(InkProfile().constData()),
                               static_cast<unsigned>(InkProfile().size()));
    QByteArray row(spec.width * cinfo.input_components, '\0');
    for (int y = 0; y < spec.height; ++y) {
        for (int i = 0; i < row.size(); ++i)
            row[i] = static_cast<char>(Sample(spec, i / cinfo.input_components, y, i % cinfo.input_components));
        JSAMPROW pointer = reinterpret_cast<JSAMPROW>(row.data());
        jpeg_write_scanlines(&cinfo, &pointer, 1);
    }
    jpeg_finish_compress(&cinfo);
    jpeg_destroy_compress(&cinfo);
    QByteArray file(reinterpret_cast<char *>(data), static_cast<int>(size));
    std::free(data);
    return file;
}

} // namespace

class tst_Jpeg : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void readsWhatLibjpegDecodes();
    void bytesAfterEnd();
    void damaged();
    void pendingRows();
    void writes();
};

void tst_Jpeg::readsWhatLibjpegDecodes()
{
    const std::pair<const char *, Spec> rows[] = {
        {"YCbCr", Spec()},
        {"RGB", With([](Spec &s) { s.stored = JCS_RGB, s.lumaSampling = 1; })},
        {"gray", With([](Spec &s) { s.in = s.stored = JCS_GRAYSCALE; })},
        {"progressive", With([](Spec &s) { s.progressive = true; })},
        {"arithmetic", With([](Spec &s) { s.arithmetic = true; })},
        {"restarts", With([](Spec &s) { s.restart = 2; })},
        // libjpeg writes the Adobe marker into the files below. It means inverted CMYK: 255 is no ink.
        {"CMYK", With([](Spec &s) { s.in = s.stored = JCS_CMYK, s.lumaSampling = 1; })},
        {"YCCK", With([](Spec &s) { s.in = JCS_CMYK, s.stored = JCS_YCCK, s.lumaSampling = 1; })},
        {"CMYK with a profile", With([](Spec &s) { s.in = s.stored = JCS_CMYK, s.hasInkProfile = true; })}};
    for (const auto &[name, how] : rows) {
        const Case named(name);
        const Spec &spec = how;
        const bool isInk = spec.in == JCS_CMYK, isGray = spec.in == JCS_GRAYSCALE;
        const char *form = spec.progressive ? "JPEG progressive" : isInk ? "JPEG CMYK" : "JPEG";
        const QByteArray info = InfoText("jpeg", form, {spec.width, spec.height}, ComponentsOf(spec.in), 8,
                                         isInk        ? GFL_CM_CMYK
                                             : isGray ? GFL_CM_GREY
                                                      : GFL_CM_RGB);
        const auto expected = [&](int x, int y, int c) {
            const double light = isInk ? Sample(spec, x, y, 3) / 255.0 : 1.0;
            return spec.hasInkProfile ? GrayOfCyan(kCyan / 255.0) : Sample(spec, x, y, c) / 255.0 * light;
        };
        QCOMPARE(BadRead(Encode(spec), info, isGray ? GFL_GREY : GFL_RGB, expected, 0.02), QString());
    }
}

void tst_Jpeg::bytesAfterEnd()
{
    QByteArray metric = Encode(Spec()); // JFIF: unit and densities follow the version
    GFL_FILE_INFORMATION info;
    LoadFromMemory(metric.replace(metric.indexOf("JFIF") + 7, 5, QByteArray("\2\0\3\xFF\xFF", 5)), nullptr,
                   LoadParams(), &info);
    QCOMPARE(QSize(info.Xdpi, info.Ydpi), QSize(8, 65535)); // from 3 and 65,535 per centimeter; dpi have 16 bits
    const Folder folder;
    const BitmapPtr record = LoadMetadata(WriteFile(folder("a.jpg"), metric));
    QVERIFY(record && QSize(record->Xdpi, record->Ydpi) == QSize(8, 65535));
    const QByteArray file = Encode(Spec()), body = file.left(file.size() - 2), end = file.right(2);
    const QByteArray comment = QByteArray("\xFF\xFE\xFF\xFF", 4) + QByteArray("\xFF\xD9").repeated(32766) + ' ';
    const BitmapPtr whole = LoadFromMemory(file);
    const std::pair<const char *, QByteArray> rows[] = {
        {"bytes after the end", file + QByteArray(1000, 'x')},
        {"junk before the end", body + QByteArray(50, '\x11') + end},
        {"no end marker", body},
        {"long comments", QByteArray(file).insert(2, comment + comment)},
        {"the file twice", file + file}};
    for (const auto &[name, odd] : rows) {
        const Case named(name);
        const BitmapPtr bitmap = LoadFromMemory(odd);
        QVERIFY2(bitmap, gflLastErrorText());
        QCOMPARE(Difference(*bitmap, *whole), QString());
    }
}

void tst_Jpeg::damaged()
{
    const QByteArray restarts = Encode(With([](Spec &s) { s.restart = 1; })),
                     scans = Encode(With([](Spec &s) { s.progressive = true; })),
                     arithmetic = Encode(With([](Spec &s) { s.arithmetic = true; })),
                     last = scans.mid(scans.lastIndexOf("\xFF\xDA")).chopped(2);
    const std::pair<const char *, QByteArray> rows[] = {{"baseline", Encode(Spec())},
                                                        {"progressive", scans},
                                                        {"restart markers", restarts},
                                                        {"arithmetic", arithmetic}};
    for (const auto &[name, whole] : rows) {
        const Case named(name);
        QCOMPARE(BadCut(whole, whole.size() - 2), QString()); // the end marker is not needed
    }
    QCOMPARE(BadFault("jpeg", restarts), QString());
    QCOMPARE(BadFault("jpeg scans", scans.chopped(2) + last.repeated(99)), QString());
}

/// If a load returns early, rows are final once they are reported as ready, and the last wait reports damage.
void tst_Jpeg::pendingRows()
{
    const Folder folder;
    const QString path = folder.filePath(QStringLiteral("a.jpg"));
    const GFL_LOAD_PARAMS params = LoadParams(GFL_LOAD_ORIGINAL_DEPTH | GFL_LOAD_PENDING);
    const auto spec = [](auto change) {
        Spec large = With(change);
        large.width = 1203, large.height = 901;
        return large;
    };
    const std::pair<const char *, Spec> rows[] = {{"baseline", spec([](Spec &) {})},
                                                  {"gray", spec([](Spec &s) { s.in = s.stored = JCS_GRAYSCALE; })},
                                                  {"progressive", spec([](Spec &s) { s.progressive = true; })},
                                                  {"restart markers", spec([](Spec &s) { s.restart = 5; })},
                                                  {"too small for a thread", Spec()}};
    gflSetThreads(2);
    const auto reset = qScopeGuard([] { gflSetThreads(0); });
    for (const auto &[name, how] : rows) {
        const Case named(name);
        const QByteArray file = Encode(how);
        const BitmapPtr whole = LoadFromMemory(file);
        WriteFile(path, file);
        const BitmapPtr pending = Load(path, nullptr, params);
        QVERIFY2(whole && pending, gflLastErrorText());
        int ready = 0;
        const BitmapPtr direct = LoadFromMemory(file, nullptr, params); // complete: the caller may free the file
        QCOMPARE(gflWaitForRows(direct.get(), 0, &ready), int(GFL_NO_ERROR));
        QCOMPARE(ready, how.height);
        for (const int wanted : {1, how.height / 2, how.height}) {
            QCOMPARE(gflWaitForRows(pending.get(), wanted, &ready), int(GFL_NO_ERROR));
            QVERIFY(ready >= wanted
                    && std::memcmp(pending->Data, whole->Data, std::size_t(ready) * whole->BytesPerLine) == 0);
        }
        Load(path, nullptr, params); // freed while it is being decoded
        WriteFile(path, file.left(file.size() * 2 / 3));
        int error = 0;
        const BitmapPtr cut = Load(path, &error, params);
        if (cut)
            error = gflWaitForRows(cut.get(), how.height, nullptr);
        QCOMPARE(error, int(GFL_ERROR_FILE_READ));
        QVERIFY2(QByteArray(gflLastErrorText()).startsWith(path.toUtf8() + ": JPEG: "), gflLastErrorText());
    }
}

void tst_Jpeg::writes()
{
    for (int type : {GFL_GREY, GFL_RGB, GFL_RGBA})
        for (int bits : {8, 16, 32})
            for (const QSize size : {QSize(1, 1), QSize(67, 41), QSize(128, 16)}) {
                const Case named(type, bits, size);
                const BitmapPtr bitmap = SmoothBitmap(size.width(), size.height(), type, bits);
                bitmap->Xdpi = 300;
                bitmap->Ydpi = 150;
                const BitmapPtr read = LoadFromMemory(SavedBytes(*bitmap, SaveParams("jpeg", -1, 100)));
                QVERIFY2(read && read->Xdpi == 300 && read->Ydpi == 150, gflLastErrorText());
                const BitmapPtr held = Converted(*bitmap, type == GFL_GREY ? GFL_GREY : GFL_RGB, 8);
                QCOMPARE(Difference(*read, *held, 0.015), QString());
            }
    const BitmapPtr noise = RandomBitmap(64, 64, GFL_GREY, 8); // noise is hardest to compress
    for (int quality : {0, 50, 95}) {
        const Case named("quality", quality);
        QVERIFY(SavedBytes(*noise, SaveParams("jpeg", -1, quality)).size()
                < SavedBytes(*noise, SaveParams("jpeg", -1, quality + 5)).size());
    }
    for (const QSize size :
         {QSize(65500, 1), QSize(1, 65500), QSize(65501, 1), QSize(1, 65501)}) { // the format's limit
        const QByteArray file = SavedBytes(*RandomBitmap(size.width(), size.height(), GFL_GREY, 8), SaveParams("jpeg"));
        QVERIFY2(file.isEmpty() == (size.width() + size.height() > 65501), gflLastErrorText());
    }
}

QTEST_GUILESS_MAIN(tst_Jpeg)
#include "Jpeg_test.moc"
