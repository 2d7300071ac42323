// The raster image that all kernels process; owns one bitmap record.
#pragma once

#include "KException.h"
#include "gfl.h"

#include <QPair>
#include <QString>
#include <QVector>

#include <functional>
#include <string>

class ImageDatas;
class KImage;
class KImageLoader;
class QColor;
class QImage;
class QPixmap;
struct ImageSt;
struct KToolsInstances;
template <typename Image, typename Loader> class ImageCache;

/// Objects that copies of the image module share. KImage::init and KImage::exit define who owns them.
struct KImageInstances {
    KToolsInstances *tools;
    ImageCache<KImage, KImageLoader> *cache;
    ImageDatas *settings;
};

/// A picture in memory, in one of nine working forms:
///
///   | type     | channels | 8 bits (8u)  | 16 bits (16u)   | 32 bits (32f)                      |
///   |----------|----------|--------------|-----------------|------------------------------------|
///   | GFL_GREY | 1        | 0 to 255     | 0 to 65,535     | IEEE float, 0 to 1 and above (HDR) |
///   | GFL_RGB  | 3: R G B | same         | same            | same                               |
///   | GFL_RGBA | 4: R G B A, straight alpha | same | same  | same                               |
///
/// Channels are interleaved, in native byte order. Rows start at multiples of 4 bytes, the top row first. An image is
/// empty (no record) or allocated. Copies are deep: images never share pixels, but one can wrap a caller's block.
/// Errors are KExceptions; arguments are checked in a fixed order. The messages are "Invalid Bitmap" (this image is
/// empty, or the operation doesn't support its form), "Invalid Parameter" and "Not enough memory". Either one thread
/// modifies an image, or several read it. Sizes in bytes are 64-bit; a row holds up to 4 GiB.
class KImage {
public:
    KImage();
    KImage(int width, int height, unsigned short type, int bitsPerComponent, bool clear, void *data, int bytesPerLine);
    KImage(const KImage &other);
    explicit KImage(const QImage &image);
    ~KImage();

    /// Makes a deep copy, without Comment and MetaData, that owns its pixels. Trap: self-assignment empties the image.
    KImage &operator=(const KImage &other);

    // --- Starting and stopping the module (KImage_Module.cpp), main thread ---

    /// Starts the module with a host's objects, which the host still owns. Null starts it standalone, with the
    /// image-file layer; a second standalone start does nothing.
    static void init(KImageInstances *instances);
    /// Reverts init. Objects of a host stay; the cache is deleted if this copy of the module created it.
    static void exit();

    // --- Memory ---

    /// Allocates the image, @p width by @p height of @p type at @p bitsPerComponent. With null @p data the image owns
    /// its pixels, and @p bytesPerLine is ignored; an image that already has this shape keeps its block. With @p data
    /// it wraps that block of height * bytesPerLine bytes, which the caller keeps alive and frees; pass the low 32 bits
    /// of a stride of 2 GiB or more. @p clear zeroes the pixels, even of a wrapped block; if false, new pixels are
    /// undefined. After a failure the old content is lost.
    void AllocBitmap(int width, int height, unsigned short type, int bitsPerComponent, bool clear, void *data,
                     int bytesPerLine);
    void FreeBitmap();
    /// Zeroes all bytes of the rows.
    void ClearBitmap();

    // --- Accessors: for allocated images only, unchecked ---

    int width() const { return m_bitmap->Width; }
    int height() const { return m_bitmap->Height; }
    unsigned short type() const { return m_bitmap->Type; }
    unsigned short bitsPerComponent() const { return m_bitmap->BitsPerComponent; }
    unsigned int bytesPerLine() const { return m_bitmap->BytesPerLine; }
    unsigned char *getData(int x, int y) const
    {
        return m_bitmap->Data + static_cast<qint64>(x) * m_bitmap->BytesPerPixel
            + static_cast<qint64>(y) * m_bitmap->BytesPerLine;
    }

    /// Sets both resolutions, in dots per inch, to the low 16 bits of @p dpi.
    void SetDPI(int dpi);
    /// Returns a code for the first faulty sample of a float image: 1 for a value above 1e9, -1 for a negative one, 2
    /// for NaN; 0 if there is none. The bytes of other depths are read as floats.
    int IntegrityValidation();

    /// Sets a callback for the module's log lines. Call SetLog once, at startup; until then, Log does nothing.
    static void SetLog(void (*log)(const std::string &, void *), void *data);
    static void Log(const std::string &text);

    // --- Files (KImage_File.cpp) ---

    /// Reads a file, as @p type at the file's depth; with @p thumbnail, reduced to fit into 256 by 256 pixels.
    void Read(QString fileName, unsigned short type, bool thumbnail);
    /// Reads a file into an empty image, as gray, RGB or RGBA like the file, at the file's depth or reduced to 8 bits.
    void ID_Read(QString fileName, bool nativeDepth);
    /// Like ID_Read, but may return while rows are still being decoded: call WaitForRows before reading any.
    void ID_ReadPending(QString fileName, bool nativeDepth);
    /// Waits for the first @p rows rows; returns how many are decoded. Throws the read's error, naming @p fileName.
    int WaitForRows(int rows, const QString &fileName) const;
    /// Like ID_Read, then resizes to @p width by @p height.
    void ID_ReadReduced(QString fileName, bool nativeDepth, int width, int height);
    /// Reads a file of @p size bytes in memory, at 8 bits. Camera raw files are developed with the layer's defaults.
    void ReadFromMemory(unsigned char *data, unsigned int size);
    /// Writes the image. @p format is a case-insensitive name such as "tiff" or its short form "tif"; @p compression as
    /// in TranscodeCompression. Copies ICC profile, IPTC and EXIF from the file @p metadataSource unless the name is
    /// empty. A failed write leaves an existing file unchanged and creates no new one.
    void Write(QString fileName, QString format, int compression, QString metadataSource);
    /// A picture that is generated from the top down while it is written, so that it is never completely in memory.
    struct RowsToWrite {
        int width, height;
        unsigned short type;
        int bitsPerComponent;
        std::function<void(KImage &rows, int firstRow)> fill; // fills a block of rows; may throw, which ends the write
        bool fast = false; // GFL_SAVE_FAST: several threads call fill, roughly in order
    };
    /// XMP properties that describe an edit: keys as Exiv2 spells them ("Xmp.crs.AlreadyApplied") and their texts.
    using EditRecord = QVector<QPair<QString, QString>>;
    struct FileForm {
        QString format;                     // "tiff", "jpeg", "png" or "exr"
        int compression = -1, quality = -1; // as in TranscodeCompression; JPEG quality, 1 to 100
        bool halfFloats = false;            // OpenEXR: 16-bit floats
    };
    /// Writes the file that Write would. With a @p record, also copies the XMP of @p metadataSource, adds the record's
    /// properties, adapts the metadata to the edited picture (gflBitmapMarkEdited), and gives a JPEG a new thumbnail.
    static void WriteRows(const RowsToWrite &rows, const QString &fileName, const FileForm &form,
                          const QString &metadataSource, const EditRecord &record = {});
    /// Like Write, but into a block that the caller owns and releases with free.
    void WriteIntoMemory(unsigned char **data, unsigned int *size, QString format, int compression);
    /// Writes an uncompressed TIFF in the image's form; ID_Read at native depth restores it exactly.
    void ID_WriteToCache(QString fileName);
    /// Write 8-bit PNG files for debugging: the picture with alpha, the picture without alpha, and the alpha alone.
    void Output_PNG_RGBA(QString fileName) const;
    void Output_PNG_RGB(QString fileName) const;
    void Output_PNG_A(QString fileName) const;
    /// Changes form or colors of an 8-bit image in place; @p mode is a GflColorDepth, which defines the meaning of @p
    /// parameters. A wrapped block stays unchanged: the image then gets a separate block.
    void Convert(unsigned short mode, unsigned short parameters);
    /// Converts a compression number to the layer's fields; @p format is lowercase. -1 keeps the layer's defaults.
    ///
    ///   | format    | number                                                          |
    ///   |-----------|-----------------------------------------------------------------|
    ///   | jpeg      | 0 to 12: quality 4 to 100                                       |
    ///   | tiff      | 2 LZW, 3 deflate, 50000 Zstandard, others none                  |
    ///   | exr       | 1 to 4 and 6 to 8: OpenEXR's method number + 1; others PIZ      |
    ///   | png, hdri, psd | passed on unchanged                                        |
    void TranscodeCompression(QString format, int compression, GFL_SAVE_PARAMS &params);
    /// Throws a KException for an error number of the layer; returns for 0. The message omits an empty @p fileName.
    void CheckIfGFLError(int error, QString fileName, QString where);

    // --- Copying and conversion (KImage_Copy.cpp) ---

    /// Copies a rectangle to (targetX, targetY) in @p target, where it must fit, and converts form and depth.
    void CropCopyTo(int x, int y, int width, int height, KImage &target, int targetX, int targetY) const;
    /// Copies the whole image into @p target at (x, y), which must be inside, clipped to the target.
    void CopyTo(KImage &target, int x, int y) const;
    /// Converts to another form in @p target. A target of the right shape keeps its block, even a wrapped one.
    void Convert(KImage &target, unsigned short type, int bitsPerComponent) const;

    /// Extracts one channel as a gray image at @p bitsPerComponent; alpha is channel 3. @p target may be this image.
    void ExtractChannel(KImage &target, int bitsPerComponent, int channel) const;
    void ExtractAlpha(KImage &target, int bitsPerComponent) const;
    /// Replaces a channel with a gray image of this image's size, at any depth.
    void SetChannel(KImage &source, int channel);
    void SetAlpha(KImage &source);
    /// Paints this image onto @p target at (x, y), like CopyTo. An RGBA image is blended by its alpha, and the target's
    /// alpha stays; any other image overwrites the target.
    void BlendTo(KImage &target, int x, int y);

    // --- Arithmetic (KImage_Arithmetic.cpp): all channels, including alpha ---

    /// Combine images of the same shape, 8 bits or float. Traps at 8 bits: sums and differences are halved (negative
    /// ones are 0), products divided by 256.
    KImage &operator-=(const KImage &other);
    KImage &operator+=(const KImage &other);
    KImage &operator*=(const KImage &other);
    /// Multiplies the colors by @p factor. Integer samples saturate, and those of all channels, even alpha, lose one
    /// part in 256 or 65,536.
    KImage &operator*=(float factor);

    // --- Bridges to Qt (KImage_Qt.cpp) ---

    /// Converts from Format_RGB32 or Format_ARGB32 to GFL_RGBA at 8 bits, with the fourth byte unchanged.
    void FromQImage(const QImage &image);
    /// Converts to Format_ARGB32, clipping floats above 1. Does nothing on an empty image.
    void ToQImage(QImage &image);
    void ToQPixmap(QPixmap &pixmap);

    // --- Geometry (KImage_Geometry.cpp) ---

    /// Changes the size, in place or into @p target: by area weighting, or bilinearly if either side grows. All
    /// channels use the same filter. The KException for an empty image has an empty message.
    void Resize(int width, int height);
    void Resize(KImage &target, int width, int height);
    /// Finds a rectangle, as large as possible, in the area of a float RGBA image where alpha isn't 0: from (left, top)
    /// to (right, bottom), exclusive, in pixels. All 0 if there is none; untouched for an empty image.
    void GetAutoCrop(float &left, float &right, float &top, float &bottom) const;

    // --- Alpha (KImage_Alpha.cpp) ---

    /// Multiplies the alpha of an RGBA image by a gray mask. Throws "Invalid Bitmap" if the depths are equal. A mask of
    /// lower depth is converted. Trap: samples of a mask of higher depth are reinterpreted in memory as numbers of this
    /// image's depth. Integers lose one part in 256 or 65,536.
    void CombineAlpha(const KImage &mask);
    /// Sets alpha below half of the full range, and NaN, to 0; any other alpha to opaque.
    void BinarizeAlpha();
    /// Converts premultiplied colors to straight ones, color * full / alpha, truncated and saturated, and makes the
    /// pixels opaque. Pixels with alpha 0 are unchanged.
    void ScaleByAlpha();

    // --- Tone (KImage_Tone.cpp): colors only, alpha stays ---

    /// Fills @p target at 8 bits. HistogramAuto stretches the common range of R, G and B to [0, 255] and truncates; a
    /// flat picture becomes black. Equalization maps each value v to 255 (n(v) - n(lowest)) / (n(all) - n(lowest)),
    /// where n(v) counts the samples up to v: the cumulative histogram of Gonzalez and Woods, Digital Image Processing,
    /// stretched to start at 0. Forms other than 8-bit RGB and RGBA are only converted.
    void HistogramAuto(KImage &target);
    void HistogramEqualization(KImage &target);

    /// Curves that map t = (v - minimum) / (maximum - minimum) to [0, 1]. Logarithmic: log(1 + v') / log(1 + max'),
    /// with v' and max' measured from the minimum (Drago et al. 2003, eq. 1). Reinhard: for the luminance L, scaled to
    /// a logarithmic mean of 0.18, L (1 + L / max^2) / (1 + L); colors keep their ratios (Reinhard et al. 2002, eq. 4).
    enum HdrMode { HDR_LINEAR = 0, HDR_LOGARITHMIC = 1, HDR_REINHARD = 2 };
    /// Finds the least and greatest finite color sample of a float image, everywhere or only where alpha isn't 0; both
    /// 0 if there is none.
    void HDR_GetMinMax(float &minimum, float &maximum, bool onlyVisible) const;
    /// Tone-maps a float image to [0, 1] by an HdrMode; clamps values outside the range, NaN becomes 0.
    void HDR_Normalize(float minimum, float maximum, int mode);
    /// Calls HDR_Normalize with the range of the visible pixels.
    void HDR_QuickToneMapper(int mode);

    /// Scales distances from black, from middle gray and from the pixel's luma, in this order (Haeberli and Voorhies
    /// 1994); a factor of 1 changes nothing. Integers saturate, floats stay at 0 or above.
    void adjustColor(float brightness, float contrast, float saturation);
    /// Makes @p target a two-tone version of this image, RGBA at 8 bits: each pixel keeps its value (HSV); its hue and
    /// saturation lie on the straight line across the color wheel from @p shadows, at value 0, to @p lights, at 255.
    void Colorize(KImage &target, QColor shadows, QColor lights);
    /// Computes the luma of each pixel, 0.299 R + 0.587 G + 0.114 B, with 1 for white.
    void GetGrey(ImageSt &gray);

    // --- Filters (KImage_Filter.cpp) ---

    /// Blurs all channels with a Gaussian, repeating the edges. @p sigma is in pixels; 0 copies. See
    /// primitives::GaussianBlur for the accuracy. @p target must not be this image.
    void ConvolveGaussian(float sigma, KImage &target) const;
    /// Sharpens by unsharp masking: v + amount (v - blurred v), with a Gaussian of sigma radius + 0.5 cut off at 3
    /// times the radius, in pixels. Transparent pixels don't bleed into others; they and pixels whose result isn't
    /// finite stay unchanged. Y: luminance only, in PhotoYCC. Full: three passes, with 0.75, 0.5 and 1 times the radius
    /// and 10, 0.4 and 0.2 times the amount. Not in place.
    void unsharp(float radius, float amount, KImage &target);
    void unsharpY(float radius, float amount, KImage &target);
    void unsharpFull(float radius, float amount, KImage &target);

    // --- Fisheye frames and lenses (KImage_Fisheye.cpp, KImage_Projection.cpp) ---

    /// Find the image circle: radius and center, in pixels from the frame's middle; all 0 if there is none. Both seed
    /// qrand(). The second is for circles cut off by the frame; @p nominalRadius is accurate to 20 %, or 0 if unknown.
    void GetFisheyeRadiusOffset(double &radius, double &offsetX, double &offsetY) const;
    void GetCateyeRadiusOffset(double &radius, double &offsetX, double &offsetY, double nominalRadius) const;
    /// Zeroes all bytes of the pixels outside a circle. @p radius is above 0.
    void CleanFisheyeData(double radius, double offsetX, double offsetY);
    /// Map an equidistant fisheye frame to a sphere, @p width by width / 2, RGBA at 8 bits or float: longitude -180 to
    /// 180 degrees from left to right, latitude 90 to -90 downward, with the lens pointing at the middle. Directions
    /// outside the lens's view are transparent. The first detects a circle of @p degrees ("Invalid Bitmap" if there is
    /// none); the second is given a circle of 180 degrees (for a lens of d degrees, pass radius * 180 / d).
    void CircularFiskeyeToSpherical(int width, float degrees, KImage &target) const;
    void CircularCateyeToSpherical(int width, double radius, double offsetX, double offsetY, KImage &target) const;

    /// Paints a disc, centered on pixel position (x, y), with a smooth edge; @p color is a QRgb with alpha.
    void PutPoint(float x, float y, float radius, int color);
    /// Applies Brown's radial model (1971): the pixel at radius r gets the bilinear sample at r (1 + k1 r^2 + k2 r^4 +
    /// k3 r^6), where r is in half diagonals from the center, which is @p offsetX, @p offsetY pixels from the middle; a
    /// nonzero @p direction applies the inverse. Positions outside give 0. Optical2 corrects lateral color: it samples
    /// one channel ('R', 'G', 'B', 'A') at @p scale times that radius, about the middle, and repeats the edges.
    void Optical(float k1, float k2, float k3, float offsetX, float offsetY, int direction);
    void Optical2(float k1, float k2, float k3, char channel, float scale, int direction);

    // Hosts depend on the order of the fields.
    GFL_BITMAP *m_bitmap; // null for an empty image
    bool m_ownsData;      // false: Data belongs to the caller of AllocBitmap
    bool m_spareFlag;     // copied, never read

    static KImageInstances ms_instances;

private:
    void Ctor();
    void ReadAsStored(const QString &fileName, bool nativeDepth, unsigned int flags);
    static void (*m_pfLog)(const std::string &, void *);
    static void *m_logData;
};

static_assert(sizeof(KImage) == 16, "layout shared with hosts");
