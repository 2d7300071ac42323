#include "tiff_exif.h"

#include "metadata/exif_carry.h"

#include <algorithm>

namespace imagefile {

namespace {

constexpr TiffVariant kClassic = {false};
constexpr std::uint16_t kTypeLong8 = 16;

Status Broken(const char *what)
{
    return Status::Fail(GFL_ERROR_FILE_WRITE, Text("TIFF: %s can't be read back", what));
}

// Appends at an even offset, as TIFF requires for directories.
Status Append(const std::vector<std::uint8_t> &bytes, Sink *sink, std::uint64_t *offset)
{
    *offset = (sink->Size() + 1) & ~std::uint64_t(1);
    return sink->WriteAt(*offset, bytes.data(), bytes.size());
}

Status ReadFirstDirectory(Sink *sink, TiffVariant variant, TiffFields *fields)
{
    std::uint8_t pointer[8] = {};
    std::size_t count = 0;
    if (Status status = sink->ReadAt(variant.FirstDirectoryAt(), pointer, variant.OffsetBytes(), &count); !status)
        return status;
    const std::uint64_t offset = variant.Number(pointer, variant.OffsetBytes());
    if (offset == 0 || offset >= sink->Size())
        return Broken("the first directory");
    std::vector<std::uint8_t> tail(std::min<std::uint64_t>(sink->Size() - offset, 65536)); // room for 3,276 fields
    if (Status status = sink->ReadAt(offset, tail.data(), tail.size(), &count); !status)
        return status;
    tail.resize(count);
    return ReadDirectory(tail, 0, variant, fields) ? Status::Ok() : Broken("the first directory");
}

void Join(const TiffFields &more, TiffFields *fields)
{
    const TiffFields own = *fields;
    for (const TiffField &field : more)
        if (std::none_of(own.begin(), own.end(), [&field](const TiffField &f) { return f.tag == field.tag; }))
            fields->push_back(field);
    std::sort(fields->begin(), fields->end(), [](const TiffField &a, const TiffField &b) { return a.tag < b.tag; });
}

} // namespace

Status TiffExif::Encode(const Exiv2::ExifData &exif)
{
    try {
        m_classic = EncodeExif(exif);
    } catch (const Exiv2::AnyError &error) {
        return Status::Fail(GFL_ERROR_FILE_WRITE, Text("TIFF: the EXIF can't be written: %s", error.what()));
    }
    m_classic.resize((m_classic.size() + 15) & ~std::size_t(15)); // aligns the samples of the strips that follow
    return Status::Ok();
}

Status TiffExif::WriteHead(Sink *sink) const
{
    // The file's header replaces that of the small TIFF. A BigTIFF header is longer and also overwrites the beginning
    // of the small TIFF's first directory, which readers never reach: JoinFirstDirectory merges its fields into the
    // file's.
    const std::size_t begin = m_variant.HeaderBytes();
    return m_classic.size() > begin ? sink->WriteAt(begin, m_classic.data() + begin, m_classic.size() - begin)
                                    : Status::Ok();
}

// Converts the fields of a classic directory to BigTIFF, together with the directories that they point to.
Status TiffExif::WidenDirectory(TiffFields *fields, Sink *sink) const
{
    for (TiffField &field : *fields) {
        if (!WidenField(m_classic, &field))
            return Broken("the EXIF");
        if (!IsDirectoryPointer(field.tag))
            continue;
        TiffFields below;
        if (!ReadDirectory(m_classic, kClassic.OffsetOf(field), kClassic, &below))
            return Broken("the EXIF");
        if (Status status = WidenDirectory(&below, sink); !status)
            return status;
        std::uint64_t offset = 0;
        if (Status status = Append(EncodeDirectory(below, m_variant), sink, &offset); !status)
            return status;
        field.type = kTypeLong8;
        for (std::size_t i = 0; i < field.value.size(); ++i)
            field.value[i] = static_cast<std::uint8_t>(offset >> (8 * i));
    }
    return Status::Ok();
}

Status TiffExif::JoinFirstDirectory(Sink *sink) const
{
    if (m_classic.empty())
        return Status::Ok();
    TiffFields fields, more;
    if (Status status = ReadFirstDirectory(sink, m_variant, &fields); !status)
        return status;
    if (!ReadDirectory(m_classic, kClassic.Number(m_classic.data() + 4, 4), kClassic, &more))
        return Broken("the EXIF");
    if (m_variant.isBig)
        if (Status status = WidenDirectory(&more, sink); !status)
            return status;
    Join(more, &fields);
    std::uint64_t offset = 0;
    if (Status status = Append(EncodeDirectory(fields, m_variant), sink, &offset); !status)
        return status;
    std::uint8_t pointer[8];
    for (std::size_t i = 0; i < sizeof pointer; ++i)
        pointer[i] = static_cast<std::uint8_t>(offset >> (8 * i));
    return sink->WriteAt(m_variant.FirstDirectoryAt(), pointer, m_variant.OffsetBytes());
}

} // namespace imagefile
