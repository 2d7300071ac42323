#include "KImage.h"

#include "KImage_p.h"

#include <cmath>
#include <cstring>
#include <limits>

KImageInstances KImage::ms_instances = {};
void (*KImage::m_pfLog)(const std::string &, void *) = nullptr;
void *KImage::m_logData = nullptr;

namespace {

qint64 PixelBytes(const GFL_BITMAP &bitmap)
{
    return static_cast<qint64>(bitmap.Height) * bitmap.BytesPerLine;
}

/// Allocates a block with the module's allocator, or throws. Never returns null, even for 0 bytes.
void *AllocateBytes(qint64 bytes)
{
    void *block = alloc_callback(static_cast<unsigned long>(qMax<qint64>(bytes, 1)), nullptr);
    if (!block)
        KThrow(kNotEnoughMemory);
    return block;
}

template <typename T> T *CopyBlock(const T *source, qint64 bytes)
{
    void *copy = AllocateBytes(bytes);
    std::memcpy(copy, source, static_cast<size_t>(bytes));
    return static_cast<T *>(copy);
}

constexpr qint64 kColorMapBytes = 1024;

} // namespace

KImage::KImage()
{
    Ctor();
}

// The other constructors delegate to the default constructor, so that the destructor frees a partial result if they
// throw.

KImage::KImage(int width, int height, unsigned short type, int bitsPerComponent, bool clear, void *data,
               int bytesPerLine)
    : KImage()
{
    AllocBitmap(width, height, type, bitsPerComponent, clear, data, bytesPerLine);
}

KImage::KImage(const KImage &other) : KImage()
{
    *this = other;
}

KImage::~KImage()
{
    FreeBitmap();
}

void KImage::Ctor()
{
    m_bitmap = nullptr;
    m_ownsData = true;
    m_spareFlag = false;
}

void KImage::AllocBitmap(int width, int height, unsigned short type, int bitsPerComponent, bool clear, void *data,
                         int bytesPerLine)
{
    if (m_bitmap && !data && HasShape(*m_bitmap, width, height, type, bitsPerComponent)) {
        if (clear)
            ClearBitmap();
        return;
    }
    FreeBitmap();

    const int channels = gflChannelsOfType(type);
    if (channels == 0 || width < 0 || height < 0 || bitsPerComponent < 0 || bitsPerComponent > 32)
        KThrow(kInvalidParameter);
    const int bytesPerPixel = (bitsPerComponent >> 3) * channels;
    const qint64 ownStrideBytes = (static_cast<qint64>(width) * bytesPerPixel + 3) & ~qint64(3); // < 2^35
    if (!data && ownStrideBytes > std::numeric_limits<quint32>::max())
        KThrow(kNotEnoughMemory); // the record has 32-bit strides

    m_bitmap = static_cast<GFL_BITMAP *>(AllocateBytes(sizeof(GFL_BITMAP)));
    GFL_BITMAP &bitmap = *m_bitmap;
    bitmap = GFL_BITMAP();
    bitmap.Type = type;
    bitmap.Width = width;
    bitmap.Height = height;
    bitmap.BitsPerComponent = static_cast<quint16>(bitsPerComponent);
    bitmap.ComponentsPerPixel = static_cast<quint16>(channels);
    bitmap.BytesPerPixel = static_cast<quint16>(bytesPerPixel);
    bitmap.BytesPerLine = data ? static_cast<quint32>(bytesPerLine) : static_cast<quint32>(ownStrideBytes);
    bitmap.LinePadding = data && bytesPerLine % 4 != 0 ? 2 : 4;
    bitmap.TransparentIndex = -1;
    bitmap.ColorUsed = type == GFL_GREY || type == GFL_COLORS ? 256 : 0;
    m_ownsData = data == nullptr;
    bitmap.Data = static_cast<quint8 *>(data ? data : AllocateBytes(PixelBytes(bitmap)));
    if (type == GFL_COLORS) {
        bitmap.ColorMap = static_cast<quint8 *>(AllocateBytes(kColorMapBytes));
        std::memset(bitmap.ColorMap, 0, kColorMapBytes);
    }
    if (clear)
        ClearBitmap();
}

void KImage::FreeBitmap()
{
    if (!m_bitmap)
        return;
    if (!m_ownsData) {
        m_bitmap->Data = nullptr;
        m_ownsData = true;
    }
    gflFreeBitmap(m_bitmap);
    m_bitmap = nullptr;
}

void KImage::ClearBitmap()
{
    if (!m_bitmap)
        KThrow(kInvalidBitmap);
    if (m_bitmap->Data)
        std::memset(m_bitmap->Data, 0, static_cast<size_t>(PixelBytes(*m_bitmap)));
}

KImage &KImage::operator=(const KImage &other) // NOLINT(bugprone-unhandled-self-assignment): see the header
{
    FreeBitmap();
    if (!other.m_bitmap)
        return *this;
    const GFL_BITMAP &source = *other.m_bitmap;
    m_spareFlag = other.m_spareFlag;
    m_bitmap = CopyBlock(&source, sizeof(GFL_BITMAP));
    // Null until each block is copied, so that a failed allocation doesn't free the source's blocks.
    m_bitmap->Data = nullptr;
    m_bitmap->ColorMap = nullptr;
    m_bitmap->Comment = nullptr;
    m_bitmap->MetaData = nullptr;
    m_bitmap->Name = nullptr;
    if (source.Data)
        m_bitmap->Data = CopyBlock(source.Data, PixelBytes(source));
    if (source.ColorMap)
        m_bitmap->ColorMap = CopyBlock(source.ColorMap, kColorMapBytes);
    if (source.Name)
        m_bitmap->Name = CopyBlock(source.Name, static_cast<qint64>(std::strlen(source.Name)) + 1);
    return *this;
}

void KImage::SetDPI(int dpi)
{
    if (!m_bitmap)
        KThrow(kInvalidBitmap);
    m_bitmap->Xdpi = static_cast<quint16>(dpi & 0xFFFF);
    m_bitmap->Ydpi = m_bitmap->Xdpi;
}

int KImage::IntegrityValidation()
{
    if (IsEmpty(*this))
        KThrow(kInvalidBitmap);
    const qint64 componentsPerRow = static_cast<qint64>(m_bitmap->Width) * m_bitmap->ComponentsPerPixel;
    const qint64 floatsPerRow = qMin<qint64>(componentsPerRow, m_bitmap->BytesPerLine / qint64(sizeof(float)));
    for (int y = 0; y < m_bitmap->Height; ++y) {
        const unsigned char *row = getData(0, y);
        for (qint64 i = 0; i < floatsPerRow; ++i) {
            float value;
            std::memcpy(&value, row + i * qint64(sizeof(float)), sizeof(float)); // wrapped rows may be unaligned
            if (value > 1e9f)
                return 1;
            if (value < 0)
                return -1;
            if (std::isnan(value))
                return 2;
        }
    }
    return 0;
}

void KImage::SetLog(void (*log)(const std::string &, void *), void *data)
{
    m_pfLog = log;
    m_logData = data;
}

void KImage::Log(const std::string &text)
{
    if (m_pfLog)
        m_pfLog(text, m_logData);
}
