#include "KMetaData.h"

#include "InputLimits.h"
#include "XmlDocument.h"

#include <cstring>
#include <limits>

namespace {

/// Allocates a zeroed array in the image-file layer's memory; null if that fails or the size doesn't fit in 32 bits.
template <typename T> T *NewCleared(quint64 count = 1)
{
    const quint64 bytes = count * sizeof(T); // cannot overflow: only 1-byte elements have counts above 32 bits
    if (bytes > std::numeric_limits<quint32>::max())
        return nullptr;
    void *block = gflMemoryAlloc(static_cast<quint32>(qMax(bytes, quint64(1))));
    return block ? static_cast<T *>(std::memset(block, 0, static_cast<size_t>(bytes))) : nullptr;
}

quint8 *CopyOfBytes(const void *bytes, quint32 length)
{
    auto *copy = NewCleared<quint8>(length);
    if (copy && length > 0)
        std::memcpy(copy, bytes, length);
    return copy;
}

/// Copies a record that consists only of bytes and their length.
template <typename Record> Record *CopyOfBlock(const Record *source, void (*release)(Record *))
{
    auto *copy = NewCleared<Record>();
    if (!copy)
        return nullptr;
    const quint32 length = source->Data ? source->Length : 0;
    copy->Data = CopyOfBytes(source->Data, length);
    copy->Length = length;
    if (copy->Data)
        return copy;
    release(copy);
    return nullptr;
}

GFL_ICCPROFILE_DATA *Copy(const GFL_ICCPROFILE_DATA *source)
{
    return CopyOfBlock(source, gflFreeICCProfile);
}

GFL_XMP_DATA *Copy(const GFL_XMP_DATA *source)
{
    return CopyOfBlock(source, gflFreeXMP);
}

GFL_IPTC_DATA *Copy(const GFL_IPTC_DATA *source)
{
    auto *copy = NewCleared<GFL_IPTC_DATA>();
    if (!copy)
        return nullptr;
    const quint32 count = source->ItemsList ? source->NumberOfItems : 0;
    copy->ItemsList = NewCleared<GFL_IPTC_ENTRY>(count);
    if (!copy->ItemsList) {
        gflFreeIPTC(copy);
        return nullptr;
    }
    copy->NumberOfItems = count;
    for (quint32 i = 0; i < count; ++i) {
        const GFL_IPTC_ENTRY &entry = source->ItemsList[i];
        copy->ItemsList[i] = {entry.Id, KMetaData::StrDup(entry.Name), KMetaData::StrDup(entry.Value)};
    }
    return copy;
}

GFL_EXIF_ENTRYEX *Copy(const GFL_EXIF_ENTRYEX *source)
{
    auto *copy = NewCleared<GFL_EXIF_ENTRYEX>();
    if (!copy)
        return nullptr;
    *copy = *source;
    copy->Next = nullptr;
    copy->Data = source->Length > 0 && source->Data ? CopyOfBytes(source->Data, source->Length) : nullptr;
    copy->Length = copy->Data ? source->Length : 0;
    return copy;
}

GFL_EXIF_DATAEX *Copy(const GFL_EXIF_DATAEX *source)
{
    auto *copy = NewCleared<GFL_EXIF_DATAEX>();
    if (!copy)
        return nullptr;
    copy->Flags = source->Flags;
    GFL_EXIF_ENTRYEX **end = &copy->Root;
    for (const GFL_EXIF_ENTRYEX *node = source->Root; node && (*end = Copy(node)); node = node->Next)
        end = &(*end)->Next;
    return copy;
}

/// Copies before it frees, because the source may be the block to be replaced.
template <typename Block> void Replace(Block *&held, const Block *source, void (*release)(Block *))
{
    Block *copy = source ? Copy(source) : nullptr;
    if (held)
        release(held);
    held = copy;
}

} // namespace

KMetaData::KMetaData() = default;

KMetaData::KMetaData(const KMetaData &other)
{
    *this = other;
}

KMetaData &KMetaData::operator=(const KMetaData &other) // NOLINT(bugprone-unhandled-self-assignment): every step copies
{
    SetIccProfile(other.IccProfile());
    SetIptc(other.Iptc());
    SetExifex(other.Exifex());
    SetXmp(other.Xmp());
    return *this;
}

KMetaData::~KMetaData()
{
    SetIccProfile(nullptr);
    SetIptc(nullptr);
    SetExifex(nullptr);
    SetXmp(nullptr);
}

void KMetaData::SetIccProfile(GFL_ICCPROFILE_DATA *data)
{
    Replace(m_iccProfile, data, gflFreeICCProfile);
}

void KMetaData::SetIptc(GFL_IPTC_DATA *data)
{
    Replace(m_iptc, data, gflFreeIPTC);
}

void KMetaData::SetExifex(GFL_EXIF_DATAEX *data)
{
    Replace(m_exifData, data, gflFreeEXIF2);
}

void KMetaData::SetXmp(GFL_XMP_DATA *data)
{
    Replace(m_xmp, data, gflFreeXMP);
}

QDomElement KMetaData::DomXmp() const
{
    if (!m_xmp || m_xmp->Length > kMaxXmlBytes)
        return QDomElement();
    const XmlDocument xml =
        ReadXml(QByteArray::fromRawData(reinterpret_cast<const char *>(m_xmp->Data), static_cast<int>(m_xmp->Length)));
    return xml.isWellFormed ? xml.document.documentElement() : QDomElement();
}

char *KMetaData::StrDup(const char *text)
{
    if (!text)
        return nullptr;
    const size_t bytes = std::strlen(text) + 1;
    char *copy = NewCleared<char>(bytes);
    return copy ? static_cast<char *>(std::memcpy(copy, text, bytes)) : nullptr;
}
