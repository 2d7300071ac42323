#include "core/memory_check.h"
#include "jp2_codec.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <openjpeg.h>

namespace imagefile {

namespace {

/// Deleter that calls one of OpenJPEG's release functions.
template <auto Free> struct Jp2Deleter {
    template <class T> void operator()(T *object) const { Free(object); }
};
using Stream = std::unique_ptr<opj_stream_t, Jp2Deleter<opj_stream_destroy>>;
using Decoder = std::unique_ptr<opj_codec_t, Jp2Deleter<opj_destroy_codec>>;
using Image = std::unique_ptr<opj_image_t, Jp2Deleter<opj_image_destroy>>;

/// The file as an OpenJPEG stream, which returns -1 at the end.
struct Input {
    const Source &source;
    std::uint64_t at = 0;

    static OPJ_SIZE_T Read(void *buffer, OPJ_SIZE_T size, void *self)
    {
        auto &input = *static_cast<Input *>(self);
        const std::size_t count = input.source.ReadAt(input.at, buffer, size);
        input.at += count;
        return count > 0 ? count : static_cast<OPJ_SIZE_T>(-1);
    }
    static OPJ_OFF_T Skip(OPJ_OFF_T size, void *self)
    {
        auto &input = *static_cast<Input *>(self);
        if (size < 0 || static_cast<std::uint64_t>(size) > input.source.Size() - input.at)
            return -1;
        input.at += static_cast<std::uint64_t>(size);
        return size;
    }
    static OPJ_BOOL Seek(OPJ_OFF_T at, void *self)
    {
        auto &input = *static_cast<Input *>(self);
        if (at < 0 || static_cast<std::uint64_t>(at) > input.source.Size())
            return OPJ_FALSE;
        input.at = static_cast<std::uint64_t>(at);
        return OPJ_TRUE;
    }
};

Stream OpenStream(Input *input)
{
    Stream stream(opj_stream_default_create(/*isInput=*/OPJ_TRUE));
    if (!stream)
        throw std::bad_alloc();
    opj_stream_set_user_data(stream.get(), input, nullptr);
    opj_stream_set_user_data_length(stream.get(), input->source.Size());
    opj_stream_set_read_function(stream.get(), Input::Read);
    opj_stream_set_skip_function(stream.get(), Input::Skip);
    opj_stream_set_seek_function(stream.get(), Input::Seek);
    return stream;
}

/// Keeps a decoder's first message, without its line feed.
void KeepMessage(const char *message, void *text)
{
    auto &kept = *static_cast<std::string *>(text);
    if (kept.empty())
        kept.assign(message, std::strcspn(message, "\r\n"));
}

Status Decode(const Source &source, const Jp2Layout &layout, Image *image)
{
    Input input = {source};
    const Stream stream = OpenStream(&input);
    const Decoder decoder(opj_create_decompress(layout.isBoxed ? OPJ_CODEC_JP2 : OPJ_CODEC_J2K));
    std::string why;
    opj_dparameters_t parameters;
    opj_set_default_decoder_parameters(&parameters);
    opj_image_t *made = nullptr;
    const MemoryCheck memory;
    bool isGood = decoder && opj_set_error_handler(decoder.get(), KeepMessage, &why)
        && opj_setup_decoder(decoder.get(), &parameters) && opj_decoder_set_strict_mode(decoder.get(), OPJ_TRUE)
        && opj_read_header(stream.get(), decoder.get(), &made);
    image->reset(made);
    isGood = isGood && opj_decode(decoder.get(), stream.get(), made);
    memory.Require(); // OpenJPEG may continue without the parts that it had no memory for
    if (isGood)
        return Status::Ok();
    return Status::Fail(GFL_ERROR_FILE_READ, Text("JPEG 2000: %s", why.empty() ? "damaged" : why.c_str()));
}

bool MatchesLayout(const opj_image_t &image, const Jp2Layout &layout)
{
    if (image.numcomps != static_cast<OPJ_UINT32>(layout.components))
        return false;
    return std::all_of(image.comps, image.comps + image.numcomps, [&](const opj_image_comp_t &one) {
        return one.data && one.prec >= 1 && one.prec <= 16 && one.w == static_cast<OPJ_UINT32>(layout.width)
            && one.h == static_cast<OPJ_UINT32>(layout.height);
    });
}

/// Writes one row of a component, scaled to the full range of T.
template <class T>
void ScaleComponent(const opj_image_comp_t &component, std::size_t first, std::size_t width, T *dst, std::size_t step)
{
    const std::int32_t most = (std::int32_t(1) << component.prec) - 1; // <= 65,535
    const std::int32_t offset = component.sgnd ? std::int32_t(1) << (component.prec - 1) : 0;
    for (std::size_t x = 0; x < width; ++x) {
        const std::int64_t value = std::int64_t(component.data[first + x]) + offset;
        const std::int64_t inRange = std::clamp<std::int64_t>(value, 0, most);
        dst[x * step] = static_cast<T>((inRange * FullScale<T>() + most / 2) / most); // <= 2^32
    }
}

/// Fills a row; gray with opacity becomes three equal colors and opacity.
template <class T> void FillRow(const opj_image_t &image, const Jp2Layout &layout, std::size_t first, T *row)
{
    const auto width = static_cast<std::size_t>(layout.width);
    const auto channels = static_cast<std::size_t>(layout.Form().channels);
    const std::size_t colors = channels == 4 ? 3 : channels;
    const bool isGray = image.numcomps <= 2;
    for (std::size_t c = 0; c < colors; ++c)
        ScaleComponent(image.comps[isGray ? 0 : c], first, width, row + c, channels);
    if (layout.hasAlpha)
        ScaleComponent(image.comps[image.numcomps - 1], first, width, row + 3, channels);
}

} // namespace

Status ReadJp2Info(const Source &source, GFL_FILE_INFORMATION *info)
{
    Jp2Layout layout;
    if (Status status = ReadJp2Layout(source, &layout); !status)
        return status;
    std::snprintf(info->Description, sizeof info->Description, "%s",
                  layout.isBoxed ? "JPEG 2000" : "JPEG 2000 codestream");
    info->Width = layout.width;
    info->Height = layout.height;
    info->BitsPerComponent = static_cast<std::uint16_t>(layout.Form().bits);
    info->ComponentsPerPixel = static_cast<std::uint16_t>(layout.components);
    info->ColorModel = layout.components <= 2 ? GFL_CM_GREY : GFL_CM_RGB;
    return Status::Ok();
}

Status ReadJp2Pixels(const Source &source, RowSink *rows)
{
    Jp2Layout layout;
    if (Status status = ReadJp2Layout(source, &layout); !status)
        return status;
    Image image;
    if (Status status = Decode(source, layout, &image); !status)
        return status;
    if (!MatchesLayout(*image, layout))
        return Status::Fail(GFL_ERROR_FILE_READ, "JPEG 2000: the data doesn't match the header");
    if (Status status = rows->Start(layout.width, layout.height, layout.Form()); !status)
        return status;
    for (int y = 0; y < layout.height; ++y) {
        const std::size_t first = static_cast<std::size_t>(y) * static_cast<std::size_t>(layout.width);
        std::uint8_t *row = rows->Row(y);
        if (layout.Form().bits == 16)
            FillRow(*image, layout, first, reinterpret_cast<std::uint16_t *>(row));
        else
            FillRow(*image, layout, first, row);
        rows->Done(y);
    }
    return Status::Ok();
}

} // namespace imagefile
