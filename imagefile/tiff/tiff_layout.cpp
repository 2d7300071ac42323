#include "tiff_layout.h"

#include "core/image_limits.h"
#include "core/tiff_directory.h"

#include <algorithm>

namespace imagefile {

namespace {

Status Unknown(const std::string &why)
{
    return Status::Fail(GFL_ERROR_UNKNOWN_FORMAT, "TIFF: " + why);
}

Status Damaged(const std::string &why)
{
    return Status::Fail(GFL_ERROR_FILE_READ, "TIFF: " + why);
}

bool IsReduced(const TiffHandle &handle)
{
    return (handle.Field<std::uint32_t>(TIFFTAG_SUBFILETYPE, 0) & FILETYPE_REDUCEDIMAGE) != 0;
}

Status FindPicture(const TiffHandle &handle)
{
    for (int i = 0; IsReduced(handle); ++i)
        if (i == kMaxTiffDirectories || !handle.OpenNext())
            return Unknown("the file only contains reduced pictures");
    return Status::Ok();
}

Status ReadSize(const TiffHandle &handle, TiffLayout *layout)
{
    const auto width = handle.Field<std::uint32_t>(TIFFTAG_IMAGEWIDTH, 0);
    const auto height = handle.Field<std::uint32_t>(TIFFTAG_IMAGELENGTH, 0);
    if (Status status = CheckImageSize(width, height, 1, 8); !status)
        return status;
    layout->width = static_cast<int>(width);
    layout->height = static_cast<int>(height);
    return Status::Ok();
}

bool IsReadable(int bits, std::uint16_t sampleFormat)
{
    if (sampleFormat == SAMPLEFORMAT_IEEEFP)
        return bits == 16 || bits == 32 || bits == 64;
    return (sampleFormat == SAMPLEFORMAT_UINT || sampleFormat == SAMPLEFORMAT_VOID)
        && ((bits >= 1 && bits <= 16) || bits == 24 || bits == 32);
}

Status ReadSampleForm(const TiffHandle &handle, TiffLayout *layout)
{
    layout->bits = handle.Field<std::uint16_t>(TIFFTAG_BITSPERSAMPLE, 1);
    layout->samples = handle.Field<std::uint16_t>(TIFFTAG_SAMPLESPERPIXEL, 1);
    layout->compression = handle.Field<std::uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    layout->isPlanar = handle.Field<std::uint16_t>(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == PLANARCONFIG_SEPARATE
        && layout->samples > 1;
    layout->isTiled = TIFFIsTiled(handle.Get()) != 0;
    if (layout->samples < 1 || layout->samples > kMaxTiffSamples)
        return Unknown(Text("%d samples per pixel; 1 to %d are supported", layout->samples, kMaxTiffSamples));
    if (!TIFFIsCODECConfigured(layout->compression))
        return Unknown(Text("unknown compression %d", layout->compression));
    return Status::Ok();
}

// Guesses the color model from the number of samples if the file doesn't specify it, as in files from old scanners.
std::uint16_t Photometric(const TiffHandle &handle, const TiffLayout &layout)
{
    std::uint16_t photometric = 0;
    if (TIFFGetField(handle.Get(), TIFFTAG_PHOTOMETRIC, &photometric))
        return photometric;
    return layout.samples < 3 ? PHOTOMETRIC_MINISBLACK : PHOTOMETRIC_RGB;
}

Status ReadColor(const TiffHandle &handle, TiffLayout *layout)
{
    layout->photometric = Photometric(handle, *layout);
    switch (layout->photometric) {
    case PHOTOMETRIC_MINISWHITE:
    case PHOTOMETRIC_MINISBLACK:
    case PHOTOMETRIC_MASK:
        layout->minIsWhite = layout->photometric == PHOTOMETRIC_MINISWHITE;
        layout->color = TiffColor::Gray;
        return Status::Ok();
    case PHOTOMETRIC_RGB:
        layout->color = TiffColor::Rgb;
        return Status::Ok();
    case PHOTOMETRIC_PALETTE:
        layout->color = TiffColor::Palette;
        return Status::Ok();
    case PHOTOMETRIC_SEPARATED:
        layout->color = TiffColor::Cmyk;
        if (handle.Field<std::uint16_t>(TIFFTAG_INKSET, INKSET_CMYK) != INKSET_CMYK)
            return Unknown("ink sets other than CMYK are not supported");
        return Status::Ok();
    case PHOTOMETRIC_YCBCR:
        layout->color = TiffColor::Other;
        if (layout->compression == COMPRESSION_JPEG && !layout->isPlanar) {
            TIFFSetField(handle.Get(), TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
            layout->color = TiffColor::Rgb;
        }
        return Status::Ok();
    case PHOTOMETRIC_CIELAB:
    case PHOTOMETRIC_ICCLAB:
        layout->color = TiffColor::Lab;
        if ((layout->bits != 8 && layout->bits != 16) || layout->samples < 3)
            return Unknown(Text("Lab of %d bits and %d samples is not supported", layout->bits, layout->samples));
        return Status::Ok();
    case PHOTOMETRIC_ITULAB:
    case PHOTOMETRIC_LOGL:
    case PHOTOMETRIC_LOGLUV:
        layout->color = TiffColor::Other;
        return Status::Ok();
    default:
        return Unknown(Text("photometric interpretation %d is not supported", layout->photometric));
    }
}

// Reads the photometric interpretation from the file, because libtiff reports gray or RGB if it can't read the color
// map.
std::uint16_t StoredPhotometric(const Source &source, const TiffHandle &handle, std::uint16_t missing)
{
    constexpr std::size_t kDirectoryBytes = 65536;
    std::uint8_t head[4] = {};
    TiffVariant variant = {};
    TiffFields fields;
    Bytes directory(kDirectoryBytes);
    directory.resize(source.ReadAt(TIFFCurrentDirOffset(handle.Get()), directory.data(), directory.size()));
    if (source.ReadAt(0, head, sizeof head) != sizeof head || !TiffVariantOf(head, &variant)
        || !ReadDirectory(directory, 0, variant, &fields))
        return missing;
    for (const TiffField &field : fields)
        if (field.tag == TIFFTAG_PHOTOMETRIC && TiffValueBytes(field) == 2)
            return static_cast<std::uint16_t>(variant.Number(field.value.data(), 2));
    return missing;
}

Status CheckPalette(const Source &source, const TiffHandle &handle, const TiffLayout &layout)
{
    const bool isPalette = layout.photometric == PHOTOMETRIC_PALETTE;
    return !isPalette && StoredPhotometric(source, handle, layout.photometric) == PHOTOMETRIC_PALETTE
        ? Damaged("the color map is damaged")
        : Status::Ok();
}

// Reads the white point, stored as its chromaticity coordinates x and y (TIFF 6.0, section 20).
void ReadWhite(const TiffHandle &handle, TiffLayout *layout)
{
    const float *white = nullptr;
    if (layout->photometric != PHOTOMETRIC_CIELAB || !TIFFGetField(handle.Get(), TIFFTAG_WHITEPOINT, &white))
        return; // ICC Lab is relative to D50
    const bool isValid = white[0] > 0.0f && white[1] > 0.0f && white[0] + white[1] < 1.0f;
    if (isValid)
        layout->white = {double(white[0]), double(white[1])};
}

int ColorSamples(TiffColor color)
{
    return color == TiffColor::Rgb || color == TiffColor::Lab ? 3 : color == TiffColor::Cmyk ? 4 : 1;
}

// Returns the index of the opacity sample, or -1.
int FindOpacity(const TiffHandle &handle, int colors, TiffLayout *layout)
{
    std::uint16_t count = 0;
    std::uint16_t *kinds = nullptr;
    TIFFGetFieldDefaulted(handle.Get(), TIFFTAG_EXTRASAMPLES, &count, &kinds);
    const int extras = layout->samples - colors;
    for (int i = 0; i < std::min<int>(count, extras); ++i) {
        if (kinds[i] == EXTRASAMPLE_ASSOCALPHA || kinds[i] == EXTRASAMPLE_UNASSALPHA) {
            layout->premultiplied = kinds[i] == EXTRASAMPLE_ASSOCALPHA;
            return colors + i;
        }
    }
    const bool isOpacity = extras == 1 && (layout->color == TiffColor::Gray || layout->color == TiffColor::Rgb);
    return isOpacity ? colors : -1;
}

int UnpackedBits(const TiffLayout &layout)
{
    return layout.isFloat || layout.bits > 16 ? 32 : layout.bits > 8 ? 16 : 8;
}

Status ReadPalette(const TiffHandle &handle, TiffLayout *layout)
{
    std::uint16_t *red = nullptr, *green = nullptr, *blue = nullptr;
    if (layout->isFloat || layout->bits > 16 || !TIFFGetField(handle.Get(), TIFFTAG_COLORMAP, &red, &green, &blue))
        return Damaged("the color map is missing");
    layout->palette[0] = red;
    layout->palette[1] = green;
    layout->palette[2] = blue;
    return Status::Ok();
}

Status ChooseForm(const TiffHandle &handle, TiffLayout *layout)
{
    const auto sampleFormat = handle.Field<std::uint16_t>(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
    if (!IsReadable(layout->bits, sampleFormat))
        return Unknown(
            Text("samples of %d bits in format %d; supported are unsigned integers (format 1) of up to 16, 24 "
                 "and 32 bits, and floating point (3) of 16, 32 and 64",
                 layout->bits, sampleFormat));
    const int colors = ColorSamples(layout->color);
    if (layout->samples < colors)
        return Damaged(Text("%d samples per pixel where %d are needed", layout->samples, colors));
    layout->isFloat = sampleFormat == SAMPLEFORMAT_IEEEFP;
    if (layout->isFloat && layout->color == TiffColor::Lab)
        return Unknown("Lab in floating point is not supported");
    for (int i = 0; i < colors; ++i)
        layout->used.push_back(i);
    const int opacity = layout->color == TiffColor::Palette ? -1 : FindOpacity(handle, colors, layout);
    if (opacity >= 0)
        layout->used.push_back(opacity);
    layout->unpacked = {UnpackedBits(*layout), static_cast<int>(layout->used.size())};
    const bool isGray = layout->color == TiffColor::Gray && layout->bits > 1;
    layout->form = {layout->color == TiffColor::Palette ? 8 : layout->unpacked.bits, opacity >= 0 ? 4 : isGray ? 1 : 3};
    return layout->color == TiffColor::Palette ? ReadPalette(handle, layout) : Status::Ok();
}

Status ChooseConvertedForm(const TiffHandle &handle, TiffLayout *layout)
{
    char why[1024] = "";
    if (!TIFFRGBAImageOK(handle.Get(), why))
        return Unknown(why);
    layout->form = {8, 3};
    return Status::Ok();
}

/// Returns the maximum number of bytes of pixels per byte of the file.
std::int64_t MaxRatio(const TiffLayout &layout)
{
    switch (layout.compression) {
    case COMPRESSION_NONE:
        return layout.photometric == PHOTOMETRIC_YCBCR ? 3 : 1; // chroma subsampled 4 x 4: 18 samples for 48
    case COMPRESSION_PACKBITS:
        return 64; // 128 bytes for 2
    case COMPRESSION_LZW:
        return 1400; // 3,838 codes of at most 12 bits encode 1 + 2 + ... + 3,838 bytes
    case COMPRESSION_DEFLATE:
    case COMPRESSION_ADOBE_DEFLATE:
        return kDeflateRatio;
    case COMPRESSION_JPEG:
    case COMPRESSION_OJPEG:
        return kJpegPixelsPerByte * layout.samples;
    default:
        return kUnboundedRatio; // fax, Zstandard, LZMA, WebP, LERC
    }
}

Status CheckBytes(const Source &source, const TiffHandle &handle, const TiffLayout &layout)
{
    if (Status status = CheckImageSize(layout.width, layout.height, layout.form.channels, layout.form.bits); !status)
        return status;
    // Tiles are stored whole, even those that extend past the edge.
    const std::uint64_t tileBytes = layout.isTiled ? TIFFTileSize64(handle.Get()) : 0;
    if (layout.isTiled && (tileBytes == 0 || tileBytes > static_cast<std::uint64_t>(kMaxCodecAllocation)))
        return Damaged(Text("tiles of %llu bytes", static_cast<unsigned long long>(tileBytes)));
    const std::int64_t rowBits = std::int64_t(layout.width) * layout.samples * layout.bits; // <= 2^20 * 2^6 * 2^6
    const std::int64_t bytes = layout.isTiled
        ? static_cast<std::int64_t>(tileBytes) * TIFFNumberOfTiles(handle.Get()) // <= 2^30 * 2^32
        : (rowBits + 7) / 8 * layout.height;
    const std::int64_t delivered = std::int64_t(layout.width) * layout.height * layout.form.BytesPerPixel(); // <= 2^44
    return CheckClaim(bytes, delivered, source.Size(), MaxRatio(layout));
}

/// Reads and checks everything in the current directory.
Status ReadLayout(const Source &source, const TiffHandle &handle, TiffLayout *layout)
{
    if (Status status = ReadSize(handle, layout); !status)
        return status;
    if (Status status = ReadSampleForm(handle, layout); !status)
        return status;
    if (Status status = ReadColor(handle, layout); !status)
        return status;
    if (Status status = CheckPalette(source, handle, *layout); !status)
        return status;
    ReadWhite(handle, layout);
    Status status =
        layout->color == TiffColor::Other ? ChooseConvertedForm(handle, layout) : ChooseForm(handle, layout);
    return status ? CheckBytes(source, handle, *layout) : status;
}

std::vector<std::uint64_t> SubDirectories(const TiffHandle &handle)
{
    std::uint16_t count = 0;
    const std::uint64_t *offsets = nullptr;
    if (!TIFFGetField(handle.Get(), TIFFTAG_SUBIFD, &count, &offsets))
        return {};
    return std::vector<std::uint64_t>(offsets, offsets + std::min<int>(count, kMaxTiffDirectories));
}

// Search for the smallest suitable reduced version; BestOffset() is 0 if there is none.
class ReducedSearch {
public:
    ReducedSearch(const TiffLayout &picture, const Box &box) : m_picture{picture.width, picture.height}, m_box(box) { }

    void Consider(const TiffHandle &handle)
    {
        const auto width = handle.Field<std::uint32_t>(TIFFTAG_IMAGEWIDTH, 0);
        const auto height = handle.Field<std::uint32_t>(TIFFTAG_IMAGELENGTH, 0);
        if (!IsReduced(handle) || width >= m_bestWidth || height > static_cast<std::uint32_t>(m_picture.height))
            return;
        if (!CanReplace(m_picture, {static_cast<int>(width), static_cast<int>(height)}, m_box))
            return;
        m_bestWidth = width;
        m_bestOffset = TIFFCurrentDirOffset(handle.Get());
    }
    std::uint64_t BestOffset() const { return m_bestOffset; }

private:
    const Box m_picture, m_box;
    std::uint32_t m_bestWidth = kMaxSidePixels;
    std::uint64_t m_bestOffset = 0;
};

} // namespace

Status OpenTiffPicture(const Source &source, TiffHandle *handle, TiffLayout *layout)
{
    if (Status status = handle->OpenForReading(source); !status)
        return status;
    Status status = FindPicture(*handle);
    return status ? ReadLayout(source, *handle, layout) : status;
}

Status OpenTiffReduced(const Source &source, const Box &box, TiffHandle *handle, TiffLayout *layout)
{
    TiffLayout picture;
    if (Status status = OpenTiffPicture(source, handle, &picture); !status)
        return status;
    ReducedSearch search(picture, box);
    for (const std::uint64_t offset : SubDirectories(*handle))
        if (handle->OpenAt(offset))
            search.Consider(*handle);
    // Stop at the second page: the reduced versions after it belong to other pages.
    bool more = handle->OpenFirst();
    for (int i = 0, pages = 0; more && i < kMaxTiffDirectories; ++i, more = handle->OpenNext()) {
        pages += IsReduced(*handle) ? 0 : 1;
        if (pages > 1)
            break;
        search.Consider(*handle);
    }
    if (search.BestOffset() == 0 || !handle->OpenAt(search.BestOffset()))
        return Unknown("no reduced version of the requested size");
    return ReadLayout(source, *handle, layout);
}

} // namespace imagefile
