// Source: Adobe, "Photoshop File Formats".
#include "psd_metadata.h"

#include "core/byte_reader.h"
#include "photoshop_resources.h"

namespace imagefile {

Bytes ReadPsdResources(const Source &source)
{
    constexpr std::uint64_t kHeaderBytes = 26;
    ByteReader reader(source, kHeaderBytes);
    reader.Skip(reader.Number(4)); // color mode data
    const std::uint64_t length = reader.Number(4);
    return reader.Failed() ? Bytes() : ReadMetadataBlock(source, reader.Position(), length);
}

Status ReadPsdMetadata(const Source &source, Metadata *metadata)
{
    const Bytes resources = ReadPsdResources(source);
    metadata->icc = FindResource(resources, PhotoshopResource::Icc);
    metadata->iptc = FindResource(resources, PhotoshopResource::Iptc);
    metadata->xmp = FindResource(resources, PhotoshopResource::Xmp);
    const Bytes exif = FindResource(resources, PhotoshopResource::Exif);
    if (!exif.empty())
        DecodeExifTiff(exif.data(), exif.size(), &metadata->exif);
    return source.Check();
}

} // namespace imagefile
