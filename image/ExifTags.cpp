#include "ExifTags.h"

#include "CNumbers_p.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

struct TagRow {
    int tag;
    const char *meaning;
};

constexpr TagRow kTags[] = {
    // sorted by tag for binary search
    {254, "A general indication of the kind of data contained in this subfile"},
    {256, "Image width"},
    {257, "Image height"},
    {258, "Number of bits per component"},
    {259, "Compression scheme"},
    {262, "Pixel composition"},
    {266, "The logical order of bits within a byte"},
    {269, "The name of the document from which this image was scanned"},
    {270, "Image title"},
    {271, "Manufacturer of image input equipment"},
    {272, "Model of image input equipment"},
    {273, "Image data location"},
    {274, "Orientation of image"},
    {277, "Number of components"},
    {278, "Number of rows per strip"},
    {279, "Bytes per compressed strip"},
    {282, "Image resolution in width direction"},
    {283, "Image resolution in height direction"},
    {284, "Image data arrangement"},
    {296, "Unit of X and Y resolution"},
    {301, "Transfer function"},
    {305, "Software used"},
    {306, "File change date and time"},
    {315, "Person who created the image"},
    {318, "White point chromaticity"},
    {319, "Chromaticities of primaries"},
    {330, "defined by Adobe Corporation to enable TIFF Trees within a TIFF file."},
    {342, "Expands the range of the TransferFunction"},
    {512, "this field indicates the process used to produce the compressed data"},
    {513, "Offset to JPEG SOI"},
    {514, "Bytes of JPEG data"},
    {529, "Color space transformation matrix coefficients"},
    {530, "YSubsampling ratio of Y to C"},
    {531, "Y and C positioning"},
    {532, "ReferenceBlackWhite Rational Pair of black and white reference values"},
    {700, "XMLPacket Byte XMP Metadata (Adobe technote 9-14-02)"},
    {33421,
     "Contains two values representing the minimum rows and columns to define the repeating patterns of the color "
     "filter array"},
    {33422,
     "Indicates the color filter array (CFA) geometric pattern of the image sensor when a one-chip color area sensor "
     "is used. It does not apply to all sensing methods"},
    {33423, "Contains a value of the battery level as a fraction or string"},
    {33432, "Copyright holder"},
    {33434, "Exposure time"},
    {33437, "F number"},
    {33723, "Contains an IPTC/NAA record"},
    {34377, "Contains information embedded by the Adobe Photoshop application"},
    {34665, "Exif IFD Pointer"},
    {34675, "Contains an InterColor Consortium (ICC) format color space characterization/profile"},
    {34850, "Exposure program"},
    {34852, "Spectral sensitivity"},
    {34853, "GPSInfo IFD Pointer"},
    {34855, "ISO speed ratings"},
    {34856, "Optoelectric coefficient"},
    {36864, "Exif Version"},
    {36867, "Date and time original image was generated"},
    {36868, "Date and time image was made digital data"},
    {37121, "Meaning of each component"},
    {37122, "Image compression mode"},
    {37377, "Shutter speed"},
    {37378, "Aperture"},
    {37379, "Brightness"},
    {37380, "Exposure bias"},
    {37381, "Maximum lens aperture"},
    {37382, "Subject distance"},
    {37383, "Metering mode"},
    {37384, "Light source"},
    {37385, "Flash"},
    {37386, "Lens focal length"},
    {37396, "Subject area"},
    {37398, "Contains four ASCII characters representing the TIFF/EP standard version of a TIFF/EP file"},
    {37500, "Manufacturer notes"},
    {37510, "User comments"},
    {37520, "DateTime subseconds"},
    {37521, "DateTimeOriginal subseconds"},
    {37522, "DateTimeDigitized subseconds"},
    {40960, "Supported Flashpix version"},
    {40961, "Color space information"},
    {40962, "Valid image width"},
    {40963, "Valid image height"},
    {40964, "Related audio file"},
    {40965, "Interoperability IFD Pointer"},
    {41483, "Flash energy"},
    {41484, "Spatial frequency response"},
    {41486, "Focal plane X resolution"},
    {41487, "Focal plane Y resolution"},
    {41488, "Focal plane resolution unit"},
    {41492, "Subject location"},
    {41493, "Exposure index"},
    {41495, "Sensing method"},
    {41728, "File source"},
    {41729, "Scene type"},
    {41730, "CFA pattern"},
    {41985, "Custom image processing"},
    {41986, "Exposure mode"},
    {41987, "White balance"},
    {41988, "Digital zoom ratio"},
    {41989, "Focal length in 35 mm film"},
    {41990, "Scene capture type"},
    {41991, "Gain control"},
    {41992, "Contrast"},
    {41993, "Saturation"},
    {41994, "Sharpness"},
    {41995, "Device settings description"},
    {41996, "Subject distance range"},
    {42016, "Unique image ID"},
};

/// Returns the quotient; 0 if either number is 0.
template <typename Number> float Quotient(Number numerator, Number denominator)
{
    return numerator != 0 && denominator != 0 ? static_cast<float>(numerator) / static_cast<float>(denominator) : 0.0F;
}

float ParseFraction(const char *text)
{
    long long numerator = 0, denominator = 0;
    std::sscanf(text, "%18lld/%18lld", &numerator, &denominator); // 18 digits: cannot overflow
    const float quotient = Quotient(numerator, denominator);
    if (quotient != 0)
        return quotient;
    float decimalNumerator = 0.0F, decimalDenominator = 0.0F;
    std::sscanf(text, "%f/%f", &decimalNumerator, &decimalDenominator);
    return Quotient(decimalNumerator, decimalDenominator);
}

float ParseDecimal(const char *text)
{
    float number = 0.0F;
    std::sscanf(text, "%f", &number);
    return number;
}

float ParseInteger(const char *text)
{
    long long number = 0;
    std::sscanf(text, "%18lld", &number);
    return static_cast<float>(number);
}

} // namespace

float ExifParseString(const char *text)
{
    const CNumbers cNumbers;
    float number = 0.0F;
    if (std::strchr(text, '/'))
        number = ParseFraction(text);
    if (number == 0.0F && std::strpbrk(text, ".,"))
        number = ParseDecimal(text);
    if (number == 0.0F)
        number = ParseInteger(text);
    return FiniteOr(number, 0.0F);
}

QString DecodeExifTag(int tag)
{
    const auto *found = std::lower_bound(std::begin(kTags), std::end(kTags), tag,
                                         [](const TagRow &row, int wanted) { return row.tag < wanted; });
    return QLatin1String(found != std::end(kTags) && found->tag == tag ? found->meaning : "NA");
}
