// Tests of JPEG 2000, with OpenJPEG's encoder as the reference.
#include "Bitmaps.h"
#include "Case.h"
#include "Files.h"
#include "MetadataFiles.h"

#include <QtTest>

#include <openjpeg.h>

namespace {

struct Kind {
    const char *name;
    int channels, bits; // as stored in the file
    bool isSigned = false;
    bool isBoxed = true;
    int precinct = 0; // side in pixels; 0: the maximum
    int tileRows = 0; // height of tiles; 0: one tile
    int step = 1;     // sampling step of the first component
    OPJ_COLOR_SPACE space = OPJ_CLRSPC_SRGB;
};

/// Returns an arbitrary sample for the position, from 0 to 2^bits - 1.
int Sample(const Kind &kind, int x, int y, int c)
{
    return (x * 7919 + y * 104729 + c * 3571) % (1 << kind.bits);
}

QByteArray Encode(const Kind &kind, QSize size = {16, 16})
{
    opj_image_cmptparm_t shapes[5] = {};
    for (int c = 0; c < kind.channels; ++c) {
        const auto step = OPJ_UINT32(c == 0 ? kind.step : 1);
        shapes[c].dx = shapes[c].dy = step;
        shapes[c].w = OPJ_UINT32(size.width()) / step;
        shapes[c].h = OPJ_UINT32(size.height()) / step;
        shapes[c].prec = OPJ_UINT32(kind.bits);
        shapes[c].sgnd = kind.isSigned;
    }
    const OPJ_COLOR_SPACE space = kind.channels <= 2 ? OPJ_CLRSPC_GRAY : kind.space;
    opj_image_t *image = opj_image_create(OPJ_UINT32(kind.channels), shapes, space);
    image->x1 = OPJ_UINT32(size.width());
    image->y1 = OPJ_UINT32(size.height());
    const int offset = kind.isSigned ? 1 << (kind.bits - 1) : 0;
    for (int i = 0; i < size.width() * size.height() && kind.step == 1; ++i)
        for (int c = 0; c < kind.channels; ++c)
            image->comps[c].data[i] = Sample(kind, i % size.width(), i / size.width(), c) - offset;
    if (kind.channels % 2 == 0)
        image->comps[kind.channels - 1].alpha = 1;
    opj_cparameters_t parameters;
    opj_set_default_encoder_parameters(&parameters);
    parameters.numresolution = 2;
    parameters.tcp_mct = kind.channels >= 3 && kind.step == 1 ? 1 : 0;
    if (kind.precinct > 0) {
        parameters.csty |= 1;
        parameters.res_spec = 1;
        parameters.prcw_init[0] = parameters.prch_init[0] = kind.precinct;
    }
    if (kind.tileRows > 0) {
        parameters.tile_size_on = OPJ_TRUE;
        parameters.cp_tdx = size.width();
        parameters.cp_tdy = kind.tileRows;
    }
    opj_codec_t *encoder = opj_create_compress(kind.isBoxed ? OPJ_CODEC_JP2 : OPJ_CODEC_J2K);
    const Folder folder;
    const QString path = folder("a");
    opj_stream_t *stream = opj_stream_create_default_file_stream(path.toUtf8().constData(), OPJ_FALSE);
    const bool isDone = opj_setup_encoder(encoder, &parameters, image) && opj_start_compress(encoder, image, stream)
        && opj_encode(encoder, stream) && opj_end_compress(encoder, stream);
    opj_stream_destroy(stream);
    opj_destroy_codec(encoder);
    opj_image_destroy(image);
    return isDone ? ReadFile(path) : QByteArray();
}

} // namespace

class tst_Jp2 : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void readsWhatOpenJpegWrites();
    void refuses();
    void damaged();
    void metadata();
};

void tst_Jp2::readsWhatOpenJpegWrites()
{
    const Kind kinds[] = {{"gray", 1, 8},
                          {"gray with alpha", 2, 8},
                          {"RGB", 3, 8},
                          {"RGB, 12 bits, small precincts", 3, 12, false, true, 32},
                          {"RGBA, 16 bits", 4, 16},
                          {"signed", 3, 10, true},
                          {"codestream", 3, 8, false, false},
                          {"tiles", 3, 8, false, true, 0, 20},
                          {"1 bit", 1, 1, false, false}};
    for (const Kind &kind : kinds) {
        const Case named(kind.name);
        const QSize size(131, 67);
        const bool isGray = kind.channels <= 2;
        const auto expected = [&](int x, int y, int c) {
            const int channel = isGray && c < 3 ? 0 : isGray ? 1 : c;
            return Sample(kind, x, y, channel) / double((1 << kind.bits) - 1);
        };
        const QByteArray info = InfoText("jp2", kind.isBoxed ? "JPEG 2000" : "JPEG 2000 codestream", size,
                                         kind.channels, kind.bits > 8 ? 16 : 8, isGray ? GFL_CM_GREY : GFL_CM_RGB);
        const int type = kind.channels == 1 ? GFL_GREY : kind.channels == 3 ? GFL_RGB : GFL_RGBA;
        QCOMPARE(
            BadRead(Encode(kind, size), info, type, expected, kind.bits == 8 || kind.bits == 16 ? 0.0 : 1.0 / 65535),
            QString());
    }
}

void tst_Jp2::refuses()
{
    QByteArray profile = Encode({"RGB", 3, 8}); // method 2: an ICC profile
    profile.replace(profile.indexOf("colr") + 4, 7, QByteArray("\2\0\0\0\0\0\x12", 7));
    QVERIFY2(LoadFromMemory(profile), gflLastErrorText());
    QCOMPARE(BadFault("jp2 opacity", Encode({"RGBA", 4, 8})), QString());
    const std::pair<QByteArray, const char *> rows[] = {
        {Encode({"", 3, 8, false, true, 0, 0, 2}), "subsampled components are not supported"},
        {Encode({"", 3, 8, false, true, 0, 0, 1, OPJ_CLRSPC_SYCC}), "colors other than gray and RGB are not supported"},
        {Encode({"", 4, 8, false, false}), "components of unknown meaning are not supported"},
        {Encode({"", 2, 8, false, false}), "components of unknown meaning are not supported"},
        {Encode({"", 5, 8, false, false}), "pictures without 1 to 4 components are not supported"},
        {Encode({"", 1, 17, false, false}), "components of more than 16 bits are not supported"}};
    for (const auto &[bad, why] : rows) {
        const Case named(why);
        int error = 0;
        QVERIFY(!LoadFromMemory(bad, &error));
        QVERIFY2(QByteArray(gflLastErrorText()).contains(why), gflLastErrorText());
        QCOMPARE(error, int(GFL_ERROR_UNKNOWN_FORMAT));
    }
}

void tst_Jp2::damaged()
{
    const Kind kind = {"RGB", 3, 8};
    const QByteArray file = Encode(kind, {40, 30});
    QCOMPARE(BadCut(file, file.size()), QString());
    QCOMPARE(BadFault("jp2", file), QString());
    const Kind tiles = {"two tiles", 3, 8, false, true, 0, 15};
    QCOMPARE(BadFault("jp2 tiles", Encode(tiles, {40, 30})), QString());
}

void tst_Jp2::metadata()
{
    const QByteArray plain = Encode({"RGB", 3, 8});
    const auto image = OpenImage(plain);
    image->exifData()["Exif.Image.Orientation"] = uint16_t(6);
    image->xmpData()["Xmp.xmp.Rating"] = "4";
    image->iptcData()["Iptc.Application2.City"] = "Sydney";
    // Exiv2 would write this time with more characters.
    const QByteArray city = QByteArray("\x1C\2\x5A\0\6", 5) + "Sydney",
                     time = QByteArray("\x1C\2\x3C\0\6", 5) + "101112";
    const BitmapPtr read =
        LoadFromMemory(WrittenBy(*image).replace(city, time), nullptr, LoadParams(GFL_LOAD_METADATA));
    QVERIFY2(read, gflLastErrorText());
    QVERIFY(gflBitmapHasEXIF(read.get()) && gflBitmapHasXMP(read.get()) && gflBitmapHasIPTC(read.get()));
    QVERIFY(SavedBytes(*read, SaveParams("psd")).contains(time));
}

QTEST_GUILESS_MAIN(tst_Jp2)
#include "Jp2_test.moc"
