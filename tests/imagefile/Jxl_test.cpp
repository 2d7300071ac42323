// Tests of JPEG XL, with libjxl's encoder as the reference.
#include "Bitmaps.h"
#include "Blocks.h"
#include "Case.h"

#include <QtTest>

#include <cmath>
#include <jxl/encode.h>
#include <lcms2.h>
#include <tuple>

namespace {

constexpr int kWidth = 67, kHeight = 50;

struct Spec {
    int type = GFL_RGB, bits = 8;
    int storedBits = 8;
    int orientation = 1;
    bool lossless = true;
    bool inContainer = false;
    bool isPacked = false; // compressed metadata
    QByteArray icc = {};
    bool isAnimated = false;
    uint32_t extra = 0; // number of further channels
    JxlExtraChannelType extraType = JXL_CHANNEL_DEPTH;
};

/// Encodes a bitmap, whose samples are scaled to the stored depth; the blocks' ICC profile isn't used.
QByteArray Encode(const GFL_BITMAP &bitmap, const Spec &spec, const Blocks &blocks = {})
{
    const bool isGray = bitmap.Type == GFL_GREY, hasAlpha = bitmap.Type == GFL_RGBA,
               isFloat = bitmap.BitsPerComponent == 32;
    JxlEncoder *encoder = JxlEncoderCreate(nullptr);
    JxlEncoderUseContainer(encoder, spec.inContainer);
    JxlEncoderUseBoxes(encoder);
    if (spec.extra > 0)
        JxlEncoderSetCodestreamLevel(encoder, 10); // the usual level 5 allows 4 extra channels and no black
    JxlBasicInfo info;
    JxlEncoderInitBasicInfo(&info);
    info.xsize = uint32_t(bitmap.Width);
    info.ysize = uint32_t(bitmap.Height);
    info.bits_per_sample = uint32_t(spec.storedBits);
    info.exponent_bits_per_sample = isFloat ? 8 : 0;
    info.num_color_channels = isGray ? 1 : 3;
    info.num_extra_channels = hasAlpha + spec.extra;
    info.have_animation = spec.isAnimated;
    info.animation.tps_numerator = info.animation.tps_denominator = 1;
    info.alpha_bits = hasAlpha ? info.bits_per_sample : 0;
    info.alpha_exponent_bits = hasAlpha ? info.exponent_bits_per_sample : 0;
    info.orientation = JxlOrientation(spec.orientation);
    info.uses_original_profile = spec.lossless;
    JxlEncoderSetBasicInfo(encoder, &info);
    JxlColorEncoding colors;
    JxlColorEncodingSetToSRGB(&colors, isGray);
    if (spec.icc.isEmpty())
        JxlEncoderSetColorEncoding(encoder, &colors);
    else
        JxlEncoderSetICCProfile(encoder, reinterpret_cast<const uint8_t *>(spec.icc.constData()),
                                size_t(spec.icc.size()));
    for (uint32_t i = 0; i < spec.extra; ++i) {
        JxlExtraChannelInfo extra;
        JxlEncoderInitExtraChannelInfo(spec.extraType, &extra);
        JxlEncoderSetExtraChannelInfo(encoder, hasAlpha + i, &extra);
    }
    const auto addBox = [&](const char *name, const QByteArray &box) {
        JxlEncoderAddBox(encoder, name, reinterpret_cast<const uint8_t *>(box.constData()), size_t(box.size()),
                         spec.isPacked);
    };
    if (!blocks.exif.isEmpty())
        addBox("Exif", QByteArray(4, '\0') + blocks.exif); // before the picture
    JxlEncoderFrameSettings *settings = JxlEncoderFrameSettingsCreate(encoder, nullptr);
    JxlEncoderSetFrameLossless(settings, spec.lossless);
    const JxlPixelFormat format = {uint32_t(ChannelsOf(bitmap.Type)),
                                   isFloat                             ? JXL_TYPE_FLOAT
                                       : bitmap.BitsPerComponent == 16 ? JXL_TYPE_UINT16
                                                                       : JXL_TYPE_UINT8,
                                   JXL_LITTLE_ENDIAN, 0};
    const QByteArray pixels = PackedPixels(bitmap);
    for (int frame = 0; frame <= spec.isAnimated; ++frame)
        JxlEncoderAddImageFrame(settings, &format, pixels.constData(), size_t(pixels.size()));
    for (uint32_t i = 0; i < spec.extra; ++i)
        JxlEncoderSetExtraChannelBuffer(settings, &format, pixels.constData(),
                                        size_t(pixels.size() / ChannelsOf(bitmap.Type)), hasAlpha + i);
    if (!blocks.xmp.isEmpty())
        addBox("xml ", blocks.xmp); // after the picture
    JxlEncoderCloseInput(encoder);
    QByteArray file(1 << 20, '\0');
    auto *out = reinterpret_cast<uint8_t *>(file.data());
    size_t left = size_t(file.size());
    const bool done = JxlEncoderProcessOutput(encoder, &out, &left) == JXL_ENC_SUCCESS;
    JxlEncoderDestroy(encoder);
    return done ? file.left(file.size() - int(left)) : QByteArray();
}

} // namespace

class tst_Jxl : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void readsWhatLibjxlWrites();
    void metadata();
    void damaged();
};

void tst_Jxl::readsWhatLibjxlWrites()
{
    const struct {
        const char *name;
        Spec spec;
        double tolerance;
    } rows[] = {{"gray", {GFL_GREY, 8, 8}, 0.0},
                {"RGB", {GFL_RGB, 8, 8}, 0.0},
                {"RGBA", {GFL_RGBA, 8, 8}, 0.0},
                {"10 bits", {GFL_RGB, 16, 10}, 0.51 / 1023}, // half a step of the stored depth
                {"16 bits, gray", {GFL_GREY, 16, 16}, 0.0},
                {"16 bits, RGBA, rotated", {GFL_RGBA, 16, 16, 6}, 0.0},
                {"float", {GFL_RGB, 32, 32}, 0.0},
                {"float, RGBA, in a container", {GFL_RGBA, 32, 32, 1, true, true}, 0.0},
                {"two frames", {GFL_RGB, 8, 8, 1, true, true, false, {}, true}, 0.0},
                {"16 extra channels", {GFL_RGB, 8, 8, 1, true, false, false, {}, false, 16}, 0.0},
                {"lossy", {GFL_RGB, 8, 8, 1, false}, 0.1},
                {"lossy with a profile", {GFL_RGB, 8, 8, 1, false, false, false, SomeBlocks().icc}, 0.1}};
    for (const auto &row : rows) {
        const Case named(row.name);
        const Spec &spec = row.spec;
        const BitmapPtr bitmap = spec.lossless ? RandomBitmap(kWidth, kHeight, spec.type, spec.bits)
                                               : SmoothBitmap(kWidth, kHeight, spec.type, spec.bits);
        const QByteArray info =
            InfoText("jxl", spec.isAnimated ? "JPEG XL animation" : "JPEG XL", {kWidth, kHeight}, ChannelsOf(spec.type),
                     spec.bits, spec.type == GFL_GREY ? GFL_CM_GREY : GFL_CM_RGB);
        QCOMPARE(BadRead(Encode(*bitmap, spec), info, *bitmap, row.tolerance), QString());
    }
    // Lossy pictures with a profile that libjxl can't name are converted to sRGB; here its light is a bent line.
    const cmsUInt16Number bend[] = {0, 16384, 65535};
    cmsToneCurve *curve = cmsBuildTabulatedToneCurve16(nullptr, 3, bend), *const curves[] = {curve, curve, curve};
    const cmsCIExyY white = {0.3127, 0.329, 1};
    const cmsCIExyYTRIPLE primaries = {{0.64, 0.33, 1}, {0.3, 0.6, 1}, {0.15, 0.06, 1}};
    for (const int type : {GFL_GREY, GFL_RGB}) {
        const Case named("unnamed colors, type", type);
        const BitmapPtr bitmap = SmoothBitmap(kWidth, kHeight, type, 8);
        const QByteArray icc = ProfileBytes(type == GFL_GREY ? cmsCreateGrayProfile(&white, curve)
                                                             : cmsCreateRGBProfile(&white, &primaries, curves));
        const BitmapPtr read = LoadFromMemory(Encode(*bitmap, {type, 8, 8, 1, false, false, false, icc}), nullptr,
                                              LoadParams(GFL_LOAD_METADATA));
        QVERIFY2(read && read->Type == type && BlocksOf(*read).icc.isEmpty(), gflLastErrorText());
        const auto expected = [&](int x, int y, int c) { // IEC 61966-2-1
            const double value = SampleAt(*bitmap, x, y, c), light = std::max(value / 2, 1.5 * value - 0.5);
            return light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
        };
        QCOMPARE(Difference(*read, expected, 0.05), QString());
    }
    cmsFreeToneCurve(curve);
}

void tst_Jxl::metadata()
{
    const BitmapPtr bitmap = SmoothBitmap(kWidth, kHeight, GFL_RGB, 8);
    const struct {
        const char *name;
        Spec spec;
        Blocks blocks;
        int orientation; // 0: none
    } rows[] = {{"sRGB", {}, {}, 0},
                {"a profile", {GFL_RGB, 8, 8, 1, true, false, false, SomeBlocks().icc}, {}, 0},
                {"lossy with a profile", {GFL_RGB, 8, 8, 1, false, false, false, SomeBlocks().icc}, {}, 0},
                {"orientation", {GFL_RGB, 8, 8, 5}, {}, 5},
                {"EXIF with another orientation", {GFL_RGB, 8, 8, 3, true, true}, SomeBlocks(6), 3},
                {"packed", {GFL_RGB, 8, 8, 1, true, true, true}, SomeBlocks(6), 1}};
    gflClearWarningText();
    for (const auto &row : rows) {
        const Case named(row.name);
        const BitmapPtr read =
            LoadFromMemory(Encode(*bitmap, row.spec, row.blocks), nullptr, LoadParams(GFL_LOAD_METADATA));
        QVERIFY2(read, gflLastErrorText());
        const Blocks got = BlocksOf(*read);
        QVERIFY(got.xmp == row.blocks.xmp);
        QCOMPARE(got.icc, row.spec.lossless ? row.spec.icc : QByteArray()); // lossy pictures are delivered as sRGB
        QCOMPARE(QByteArray(gflLastWarningText()), QByteArray());
        QCOMPARE(got.exif, row.orientation > 0 ? SomeBlocks(row.orientation).exif : QByteArray());
    }
}

void tst_Jxl::damaged()
{
    const std::tuple<Spec, int, const char *> refused[] = {
        {{GFL_RGB, 8, 8, 1, true, false, false, {}, false, 17},
         GFL_ERROR_FILE_READ,
         ": 17 extra channels; up to 16 are supported"},
        {{GFL_RGB, 8, 8, 1, true, false, false, {}, false, 2, JXL_CHANNEL_BLACK},
         GFL_ERROR_UNKNOWN_FORMAT,
         ": CMYK; only gray and RGB are supported"}};
    for (const auto &[spec, expected, why] : refused) {
        const Case named(why);
        int error = 0;
        QVERIFY(!LoadFromMemory(Encode(*SmoothBitmap(13, 9, GFL_RGB, 8), spec), &error));
        QVERIFY2(error == expected && QByteArray(gflLastErrorText()).endsWith(why), gflLastErrorText());
    }
    const BitmapPtr bitmap = SmoothBitmap(13, 9, GFL_RGBA, 16);
    for (bool inContainer : {false, true}) {
        const Case named(inContainer ? "in a container" : "bare");
        const QByteArray file =
            Encode(*bitmap, {GFL_RGBA, 16, 16, 1, true, inContainer}, inContainer ? SomeBlocks() : Blocks());
        const int end = inContainer ? file.indexOf("xml ") - 4 : file.size();
        QCOMPARE(BadCut(file, end - 1), QString());
        QCOMPARE(BadFault("jxl", file.left(end)), QString());
        QCOMPARE(WarningOf(file.left(end + 40)).contains("metadata"), inContainer);
        if (!inContainer)
            continue;
        const int exif = file.indexOf("Exif"); // followed by an offset, usually 0
        QVERIFY(WarningOf(QByteArray(file).replace(exif + 4, 1, "\1")).contains("EXIF offset"));
        QVERIFY(WarningOf(QByteArray(file).replace(exif + 8, 2, "xx")).contains("damaged metadata"));
    }
}

QTEST_GUILESS_MAIN(tst_Jxl)
#include "Jxl_test.moc"
