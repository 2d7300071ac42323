// Tests of HEIF and AVIF, with libheif's encoders as the reference. H.273's identity matrix makes RGB lossless.
#include "Bitmaps.h"
#include "Blocks.h"
#include "Case.h"
#include "Files.h"

#include <QtTest>

#include <libheif/heif.h>

namespace {

struct Spec {
    heif_compression_format coder = heif_compression_AV1;
    int bits = 8, channels = 3;
    QSize size = {64, 48};
    int orientation = 1;
    bool isFullRange = true;
    bool isBlended = false; // colors multiplied by opacity
    int primaries = 1, curve = 13;
    bool inGrid = false; // stored as a grid of one tile instead of with a crop

    int Greatest() const { return (1 << bits) - 1; }
    /// Returns an arbitrary sample for the position. Opacity is a multiple of 1/4; blended colors never exceed it.
    int Sample(int x, int y, int c) const
    {
        const int value = (x * 7919 + y * 104729 + c * 3571) % (Greatest() + 1);
        const int opacity = (x + y) % 5 * Greatest() / 4;
        return c == 3 ? opacity : isBlended ? std::min(value, opacity) : value;
    }
};

/// Returns the picture as encoders receive it: green, blue and red in the planes of Y, Cb and Cr.
heif_image *Picture(const Spec &spec)
{
    const bool isGray = spec.channels == 1, isWide = spec.bits > 8;
    const int width = spec.size.width(), height = spec.size.height();
    heif_image *image = nullptr;
    heif_image_create(width, height, isGray ? heif_colorspace_monochrome : heif_colorspace_YCbCr,
                      isGray ? heif_chroma_monochrome : heif_chroma_444, &image);
    for (int c = 0; c < spec.channels; ++c) {
        const heif_channel kPlanes[] = {heif_channel_Cr, heif_channel_Y, heif_channel_Cb, heif_channel_Alpha};
        const heif_channel channel = isGray ? heif_channel_Y : kPlanes[c];
        heif_image_add_plane(image, channel, width, height, spec.bits);
        int stride = 0;
        uint8_t *plane = heif_image_get_plane(image, channel, &stride);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const int value = spec.Sample(x, y, c);
                if (isWide)
                    plane[y * stride + 2 * x + 1] = uint8_t(value >> 8);
                plane[y * stride + x * (isWide ? 2 : 1)] = uint8_t(value);
            }
    }
    heif_image_set_premultiplied_alpha(image, spec.isBlended);
    return image;
}

QByteArray Encode(const Spec &spec, const Blocks &blocks = {})
{
    heif_context *context = heif_context_alloc();
    heif_image *image = Picture(spec);
    if (!blocks.icc.isEmpty())
        heif_image_set_raw_color_profile(image, "prof", blocks.icc.constData(), size_t(blocks.icc.size()));
    heif_encoder *encoder = nullptr;
    heif_context_get_encoder_for_format(context, spec.coder, &encoder);
    heif_encoder_set_lossless(encoder, 1);
    heif_encoder_set_parameter_string(encoder, "chroma", "444");
    heif_color_profile_nclx *colors = heif_nclx_color_profile_alloc();
    heif_nclx_color_profile_set_color_primaries(colors, uint16_t(spec.primaries));
    heif_nclx_color_profile_set_transfer_characteristics(colors, uint16_t(spec.curve));
    heif_nclx_color_profile_set_matrix_coefficients(colors, heif_matrix_coefficients_RGB_GBR);
    colors->full_range_flag = spec.isFullRange;
    heif_image_set_nclx_color_profile(image, colors);
    heif_encoding_options *options = heif_encoding_options_alloc();
    options->macOS_compatibility_workaround = spec.inGrid;
    options->image_orientation = heif_orientation(spec.orientation);
    heif_image_handle *handle = nullptr;
    const heif_error error = heif_context_encode_image(context, image, encoder, options, &handle);
    if (!blocks.exif.isEmpty())
        heif_context_add_exif_metadata(context, handle, blocks.exif.constData(), blocks.exif.size());
    if (!blocks.xmp.isEmpty())
        heif_context_add_XMP_metadata(context, handle, blocks.xmp.constData(), blocks.xmp.size());
    if (error.code != heif_error_Ok)
        qFatal("libheif: %s", error.message);
    const Folder folder;
    heif_context_write_to_file(context, folder("a").toUtf8().constData());
    heif_image_handle_release(handle);
    heif_encoding_options_free(options);
    heif_nclx_color_profile_free(colors);
    heif_encoder_release(encoder);
    heif_image_release(image);
    heif_context_free(context);
    return ReadFile(folder("a"));
}

/// Changes the order of the properties in an AVIF that is rotated by a right angle. Cameras write the size of the
/// stored picture, then the rotation; libheif writes the rotation, then the size of the rotated picture.
QByteArray SizeBeforeRotation(QByteArray file)
{
    const int size = file.indexOf("ispe") + 8,
              order = file.indexOf("\x81\x82\3\4\x85"); // colors, coder, rotation, size, depth
    file.replace(size, 8, file.mid(size + 4, 4) + file.mid(size, 4));
    return order > 0 ? file.replace(order, 5, "\x81\x82\4\3\x85") : QByteArray();
}

/// Returns channel @p c of a pixel as a fraction of the full range.
double Expected(const Spec &spec, int x, int y, int c)
{
    const double value = spec.Sample(x, y, c), opacity = spec.Sample(x, y, 3);
    if (!spec.isFullRange)
        return qBound(0.0, (value - (16 << (spec.bits - 8))) / (219 << (spec.bits - 8)), 1.0);
    if (spec.isBlended && c < 3)
        return opacity > 0.0 ? value / opacity : 0.0;
    return value / spec.Greatest();
}

} // namespace

class tst_Heif : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void readsWhatLibheifWrites();
    void orientations();
    void metadata();
    void unrotatedOpacity();
    void damaged();
};

void tst_Heif::readsWhatLibheifWrites()
{
    const struct {
        const char *name;
        Spec spec;
    } rows[] = {{"AVIF", {heif_compression_AV1, 8, 3}},
                {"AVIF, 12 bits", {heif_compression_AV1, 12, 3}}, // this version of libaom can't write 10 bits here
                {"AVIF, 12 bits, alpha", {heif_compression_AV1, 12, 4}},
                {"AVIF, alpha, odd", {heif_compression_AV1, 8, 4, {67, 51}}},
                {"AVIF, blended", {heif_compression_AV1, 8, 4, {64, 48}, 1, true, true}},
                {"AVIF, 12 bits, blended", {heif_compression_AV1, 12, 4, {64, 48}, 1, true, true}},
                {"AVIF, gray", {heif_compression_AV1, 8, 1}},
                {"HEIC, high, in a grid", {heif_compression_HEVC, 8, 3, {35, 301}, 1, true, false, 1, 13, true}},
                {"AVIF, gray, limited range", {heif_compression_AV1, 8, 1, {64, 48}, 1, false}},
                {"HEIC, gray, 10 bits, limited range", {heif_compression_HEVC, 10, 1, {64, 48}, 1, false}},
                {"HEIC", {heif_compression_HEVC, 8, 3}},
                {"HEIC, 10 bits", {heif_compression_HEVC, 10, 3}},
                {"HEIC, 12 bits", {heif_compression_HEVC, 12, 3}},
                {"HEIC, gray, 10 bits", {heif_compression_HEVC, 10, 1}},
                {"HEIC, alpha, odd", {heif_compression_HEVC, 8, 4, {67, 51}}}};
    for (const auto &row : rows) {
        const Case named(row.name);
        const Spec &spec = row.spec;
        const bool isAvif = spec.coder == heif_compression_AV1, isGray = spec.channels == 1;
        const int bits = spec.bits > 8 ? 16 : 8;
        const QByteArray info = InfoText(isAvif ? "avif" : "heif", isAvif ? "AVIF" : "HEIF", spec.size, spec.channels,
                                         bits, isGray ? GFL_CM_GREY : GFL_CM_YCBCR);
        const auto expected = [&](int x, int y, int c) { return Expected(spec, x, y, c); };
        QCOMPARE(BadRead(Encode(spec), info,
                         isGray                   ? GFL_GREY
                             : spec.channels == 3 ? GFL_RGB
                                                  : GFL_RGBA,
                         expected, 0.501 / (bits == 16 ? 65535 : 255)),
                 QString());
    }
}

/// Pixels stay as stored; the reported orientation is the one that libheif would apply, not EXIF's.
void tst_Heif::orientations()
{
    const Spec forms[] = {{heif_compression_AV1, 12, 3}, {heif_compression_AV1, 8, 4}, {heif_compression_HEVC, 8, 4}};
    for (Spec spec : forms)
        for (int orientation = 1; orientation <= 8; ++orientation) {
            spec.size = {67, 50};
            spec.orientation = orientation;
            for (bool hasExif : {false, true}) {
                const Case named("coder", spec.coder, spec.bits, "bits, orientation", orientation,
                                 hasExif ? "with EXIF" : "without");
                spec.inGrid = hasExif && spec.coder == heif_compression_HEVC;
                QByteArray file = Encode(spec, {{}, {}, hasExif ? SomeBlocks(5).exif : QByteArray()});
                if (hasExif && spec.channels == 3 && (orientation == 6 || orientation == 8))
                    file = SizeBeforeRotation(file);
                const BitmapPtr read =
                    LoadFromMemory(file, nullptr, LoadParams(GFL_LOAD_METADATA | GFL_LOAD_ORIGINAL_DEPTH));
                QVERIFY2(read, gflLastErrorText());
                const auto expected = [&](int x, int y, int c) { return Expected(spec, x, y, c); };
                QCOMPARE(Difference(*read, expected, 0.501 / 65535), QString());
                QCOMPARE(ChannelsOf(read->Type), spec.channels);
                const bool hasOrientation = hasExif || orientation != 1;
                QCOMPARE(BlocksOf(*read).exif, hasOrientation ? SomeBlocks(orientation).exif : QByteArray());
            }
        }
}

void tst_Heif::metadata()
{
    for (auto coder : {heif_compression_AV1, heif_compression_HEVC}) {
        const Case named("coder", coder);
        const BitmapPtr read = LoadFromMemory(Encode({coder}, SomeBlocks()), nullptr, LoadParams(GFL_LOAD_METADATA));
        QVERIFY2(read, gflLastErrorText());
        QCOMPARE(BlocksOf(*read).Text(), SomeBlocks(1).Text());
    }
    Blocks large;
    large.xmp = QByteArray((64 << 20) + 1, ' '); // one byte above the limit
    QVERIFY(WarningOf(Encode({}, large)).contains("a block that can't be read"));
    const struct {
        const char *name;
        int primaries, curve;
        bool isWarned;
    } rows[] = {{"sRGB", 1, 13, false}, {"unknown", 2, 2, false}, {"Display P3", 12, 13, true},
                {"PQ", 9, 16, true},    {"BT.709", 1, 1, false},  {"BT.601's curve", 1, 6, false},
                {"linear", 1, 8, true}};
    for (const auto &row : rows) {
        const Case named(row.name);
        const QByteArray file =
            Encode({heif_compression_AV1, 8, 3, {64, 48}, 1, true, false, row.primaries, row.curve});
        const QString warning =
            QString::asprintf("colors are treated as sRGB, but the file has no profile and gives "
                              "primaries %d and tone curve %d of ITU-T H.273 (0: not defined there)",
                              row.primaries, row.curve);
        QCOMPARE(QString::fromUtf8(WarningOf(file)), row.isWarned ? warning : QString());
    }
    std::swap(large.icc, large.xmp);
    QVERIFY(WarningOf(Encode({}, large)).contains("ICC profile"));
}

/// Reads a file like those of avifenc 0.11: the colors are rotated, the opacity isn't. libheif 1.15 then assumes a
/// wrong size for the opacity.
void tst_Heif::unrotatedOpacity()
{
    QByteArray file = Encode({heif_compression_AV1, 8, 4, {64, 48}, 6});
    const int size = file.indexOf("ispe") + 8,
              order = file.indexOf("\x82\3\4\x85\x86"); // of the opacity, which comes first
    QVERIFY(order > 0);
    file.replace(size, 8, BigEndian(64, 4) + BigEndian(48, 4)).replace(order + 1, 1, "\5"); // no rotation
    QVERIFY(WarningOf(file).contains("opacity"));
    QCOMPARE(int(LoadFromMemory(file)->Type), int(GFL_RGB));
    QCOMPARE(WarningOf(file.replace("auxiliary:alpha", "auxiliary:depth")), QByteArray()); // a depth map instead
}

void tst_Heif::damaged()
{
    for (auto coder : {heif_compression_AV1, heif_compression_HEVC}) {
        const Case named("coder", coder);
        const QByteArray file = Encode({coder});
        QCOMPARE(BadCut(file, file.size()), QString());
        QCOMPARE(BadFault("heif", Encode({coder, 8, 3, {256, 48}})), QString());
    }
}

QTEST_GUILESS_MAIN(tst_Heif)
#include "Heif_test.moc"
