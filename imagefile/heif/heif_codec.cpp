// HEIF and AVIF codecs, using libheif. See heif_file.cpp for headers and metadata, heif_pixels.cpp for pixels.
#include "heif_codec.h"

#include "metadata/metadata.h"

#include <algorithm>
#include <cstring>

namespace imagefile {

namespace {

class Heif : public Codec {
public:
    Heif(const char *label, std::vector<const char *> brands) : m_label(label), m_brands(std::move(brands)) { }

    bool Probe(const std::uint8_t *head, const NameHint &) const override
    {
        return std::memcmp(head + 4, "ftyp", 4) == 0;
    }

    bool Recognizes(const Source &source, const NameHint &) const override
    {
        return std::any_of(m_brands.begin(), m_brands.end(),
                           [&source](const char *brand) { return HasHeifBrand(source, brand); });
    }

    Status ReadInfo(const Source &source, GFL_FILE_INFORMATION *info) const override
    {
        HeifFile file;
        if (Status status = file.Open(source); !status)
            return status;
        std::snprintf(info->Description, sizeof info->Description, "%s", m_label);
        file.Describe(info);
        return Status::Ok();
    }

    Status ReadPixels(const Source &source, const GFL_LOAD_PARAMS &, RowSink *rows) const override
    {
        HeifFile file;
        Status status = file.Open(source);
        return status ? file.ReadPixels(rows) : status;
    }

    Status ReadMetadata(const Source &source, Metadata *metadata) const override
    {
        HeifFile file;
        if (file.Open(source)) // a failure is reported when the pixels are read
            file.ReadMetadata(metadata);
        return source.Check();
    }

    Status Write(const GFL_BITMAP &, const SaveOptions &, Sink *) const override
    {
        return Status::Fail(GFL_ERROR_BAD_FORMAT_INDEX, Text("%s files can't be written", m_label));
    }

private:
    const char *m_label;
    const std::vector<const char *> m_brands;
};

} // namespace

const Codec &HeifCodec()
{
    // ISO/IEC 23008-12: brands of HEVC stills and sequences (annex B), then those of any codec
    static const Heif codec("HEIF", {"heic", "heix", "heim", "heis", "hevc", "hevx", "mif1", "msf1"});
    return codec;
}

const Codec &AvifCodec()
{
    static const Heif codec("AVIF", {"avif", "avis"});
    return codec;
}

} // namespace imagefile
