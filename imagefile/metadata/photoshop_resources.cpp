#include "photoshop_resources.h"

namespace imagefile {

Bytes FindResource(const Bytes &resources, PhotoshopResource id)
{
    const Exiv2::byte *record = nullptr;
    std::uint32_t headerSize = 0, dataSize = 0;
    if (resources.empty()
        || Exiv2::Photoshop::locateIrb(resources.data(), static_cast<long>(resources.size()),
                                       static_cast<std::uint16_t>(id), &record, &headerSize, &dataSize)
            != 0)
        return Bytes();
    return Bytes(record + headerSize, record + headerSize + dataSize);
}

void AppendResource(PhotoshopResource id, const Bytes &data, Bytes *resources)
{
    if (data.empty())
        return;
    const auto number = static_cast<unsigned>(id);
    resources->insert(resources->end(), {'8', 'B', 'I', 'M'});
    for (const unsigned byte : {number >> 8, number & 255u, 0u, 0u}) // ID and an empty name
        resources->push_back(static_cast<std::uint8_t>(byte));
    for (int shift = 24; shift >= 0; shift -= 8)
        resources->push_back(static_cast<std::uint8_t>(data.size() >> shift));
    resources->insert(resources->end(), data.begin(), data.end());
    if (data.size() % 2 != 0)
        resources->push_back(0);
}

Bytes IptcResource(const Bytes &iptc)
{
    Bytes resources;
    AppendResource(PhotoshopResource::Iptc, iptc, &resources);
    return resources;
}

} // namespace imagefile
