#include "metadata.h"

#include "big_tiff_view.h"
#include "core/byte_reader.h"
#include "core/image_limits.h"
#include "core/memory_check.h"
#include "note_offset.h"
#include "photoshop_resources.h"
#include "source_io.h"
#include "xmp_namespaces.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <mutex>
#include <string_view>

namespace imagefile {

namespace {

std::mutex xmpMutex;

void LockXmp(void *, bool lock)
{
    lock ? xmpMutex.lock() : xmpMutex.unlock();
}

thread_local bool isReading = false; // this thread is reading metadata

/// Scope in which Exiv2's messages on this thread become warnings.
class LogScope {
public:
    LogScope() { isReading = true; }
    ~LogScope() { isReading = false; }
    LogScope(const LogScope &) = delete;
    LogScope &operator=(const LogScope &) = delete;
};

void WarnOfDamage(const char *what) noexcept
{
    char text[300];
    std::snprintf(text, sizeof text, "damaged metadata is left out: %.*s", static_cast<int>(std::strcspn(what, "\n")),
                  what);
    Warn(text);
}

// Called from an Exiv2 destructor, so it must not throw. Exiv2 logs lost values as errors. Its warnings are mostly
// about oddities found in many camera files, but one reports the loss of a whole block.
void TakeLog(int level, const char *text)
{
    if (isReading && (level >= Exiv2::LogMsg::error || std::strncmp(text, "Failed to decode", 16) == 0))
        WarnOfDamage(text);
}

Bytes RawTag(const Exiv2::Image &image, const char *key)
{
    const Exiv2::ExifData &exif = image.exifData();
    const auto found = exif.findKey(Exiv2::ExifKey(key));
    return found == exif.end() ? Bytes() : ValueBytes(*found, image.byteOrder());
}

// Returns a JPEG's Photoshop image resources, which may span several segments of at most 64 KiB. Exiv2 only provides
// parsed IPTC values, from which the original bytes can't always be restored.
Bytes JpegResources(const Source &source)
{
    constexpr std::string_view kSignature("Photoshop 3.0\0", 14);
    constexpr std::uint8_t kApp13 = 0xED, kStartOfScan = 0xDA;
    Bytes resources, payload;
    std::array<std::uint8_t, 4> head; // 0xFF, marker, length including its own two bytes
    std::uint64_t at = 2;
    for (int step = 0; step < kMaxJpegSteps && source.ReadAt(at, head.data(), 4) == 4; ++step) {
        if (head[0] != 0xFF || head[1] == kStartOfScan)
            break;
        const std::size_t length = head[2] * 256u + head[3];
        if (head[1] == 0xFF || length < 2) { // fill bytes may precede any marker
            at += head[1] == 0xFF ? 1 : 2;
            continue;
        }
        if (head[1] == kApp13 && length > kSignature.size() + 2) {
            payload.resize(length - 2);
            payload.resize(source.ReadAt(at + 4, payload.data(), payload.size()));
            if (payload.size() > kSignature.size() && std::equal(kSignature.begin(), kSignature.end(), payload.begin()))
                resources.insert(resources.end(), payload.begin() + kSignature.size(), payload.end());
        }
        at += 2 + length;
    }
    return resources;
}

Bytes ReadIptc(const Source &source, const Exiv2::Image &image)
{
    if (image.mimeType() == "image/jpeg")
        return FindResource(JpegResources(source), PhotoshopResource::Iptc);
    Bytes iptc = RawTag(image, "Exif.Image.IPTCNAA");
    if (iptc.empty())
        iptc = FindResource(RawTag(image, "Exif.Image.ImageResources"), PhotoshopResource::Iptc);
    return iptc;
}

Bytes XmpPacket(Exiv2::Image &image)
{
    const XmpWriting use; // Exiv2 writes the packet
    RestoreXmpPrefixes(use);
    const MemoryCheck memory;
    const std::string &packet = image.xmpPacket();
    memory.Require();
    return Bytes(packet.begin(), packet.end());
}

void TakeParts(const Source &source, Exiv2::Image &image, Metadata *metadata)
{
    if (image.iccProfileDefined())
        metadata->icc.assign(image.iccProfile()->pData_, image.iccProfile()->pData_ + image.iccProfile()->size_);
    metadata->iptc = ReadIptc(source, image);
    metadata->xmp = XmpPacket(image);
    if (metadata->xmp.empty())
        metadata->xmp = RawTag(image, "Exif.Image.XMLPacket");
    std::swap(metadata->exif, image.exifData());
}

// Constructs Exiv2's classes directly: its factory takes a path, and would interpret some as web addresses.
Exiv2::BasicIo::AutoPtr OpenIo(const Source &source, const Bytes &view)
{
    if (!view.empty())
        return Exiv2::BasicIo::AutoPtr(new Exiv2::MemIo(view.data(), static_cast<long>(view.size())));
    if (source.Data())
        return Exiv2::BasicIo::AutoPtr(new Exiv2::MemIo(source.Data(), static_cast<long>(source.Size())));
    return Exiv2::BasicIo::AutoPtr(new SourceIo(source));
}

} // namespace

void StartExiv2()
{
    static std::once_flag once;
    static bool started = false;
    std::call_once(once, [] {
        Exiv2::LogMsg::setHandler(TakeLog);
        Exiv2::LogMsg::setLevel(Exiv2::LogMsg::warn);
        Exiv2::enableBMFF(true); // Canon CR3
        try {
            const MemoryReserve reserve;
            const bool isRunning = Exiv2::XmpParser::initialize(LockXmp, nullptr);
            DefineXmpPrefixes();
            started = isRunning;
        } catch (...) { // don't retry: after a failed start, the XMP toolkit considers itself started and crashes
        }
    });
    if (!started)
        throw std::bad_alloc(); // too little memory is the only reason for a failed start
}

std::shared_mutex &XmpNamespaces()
{
    static std::shared_mutex mutex;
    return mutex;
}

void DecodeExifTiff(const std::uint8_t *data, std::size_t size, Exiv2::ExifData *exif)
{
    Exiv2::IptcData iptc;
    Exiv2::XmpData xmp;
    StartExiv2();
    const LogScope logScope;
    const XmpReading use;
    const MemoryCheck memory;
    try {
        const Exiv2::ByteOrder order =
            Exiv2::TiffParser::decode(*exif, iptc, xmp, data, static_cast<std::uint32_t>(size));
        if (order == Exiv2::invalidByteOrder)
            WarnOfDamage("the EXIF is not a TIFF");
    } catch (const std::bad_alloc &) {
        throw;
    } catch (const std::exception &error) { // damaged: keep what was read before
        memory.Require();
        WarnOfDamage(error.what());
    }
}

void DecodeExifBlock(const Bytes &block, Exiv2::ExifData *exif)
{
    constexpr std::string_view kPrefix("Exif\0\0", 6);
    const bool prefixed = block.size() > kPrefix.size() && std::equal(kPrefix.begin(), kPrefix.end(), block.begin());
    const std::size_t begin = prefixed ? kPrefix.size() : 0;
    if (block.size() > begin)
        DecodeExifTiff(block.data() + begin, block.size() - begin, exif);
}

void DecodeBoxedExif(const Bytes &box, Exiv2::ExifData *exif)
{
    constexpr std::size_t kOffsetBytes = 4;
    const std::size_t begin =
        box.size() < kOffsetBytes ? box.size() : kOffsetBytes + std::size_t(BigEndian32(box.data()));
    if (begin < box.size())
        DecodeExifBlock(Bytes(box.begin() + static_cast<std::ptrdiff_t>(begin), box.end()), exif);
    else if (!box.empty())
        WarnOfDamage("the EXIF offset points past the end of its box");
}

Bytes ReadMetadataBlock(const Source &source, std::uint64_t at, std::uint64_t size)
{
    if (size > kMaxMetadataBytes || at > source.Size() || size > source.Size() - at) {
        Warn("damaged metadata is left out: a block is too large or the file ends early");
        return Bytes();
    }
    Bytes block(size);
    block.resize(source.ReadAt(at, block.data(), block.size()));
    return block;
}

Status ReadExiv2Metadata(const Source &source, Metadata *metadata)
{
    StartExiv2();
    Bytes view; // must outlive the image that reads it
    Exiv2::Image::AutoPtr image;
    const LogScope logScope;
    const MemoryCheck memory;
    try {
        if (IsBigTiff(source))
            view = ClassicViewOfBigTiff(source);
        image = Exiv2::ImageFactory::open(OpenIo(source, view));
        if (image.get() != nullptr) { // null for formats that Exiv2 doesn't know, such as OpenEXR
            ReadXmp([&] {
                const XmpReading use;
                image->readMetadata();
                memory.Require(); // Exiv2 leaves out XMP that its toolkit had no memory for
            });
        }
    } catch (const std::bad_alloc &) {
        throw;
    } catch (const std::exception &error) { // damaged: the image has the values read so far
        memory.Require();
        WarnOfDamage(error.what());
    }
    if (image.get() != nullptr)
        TakeParts(source, *image, metadata);
    AddNoteOffset(source, &metadata->exif);
    return source.Check();
}

Bytes ValueBytes(const Exiv2::Exifdatum &datum, Exiv2::ByteOrder order)
{
    Bytes bytes(static_cast<std::size_t>(std::max(0L, datum.size())));
    if (!bytes.empty())
        datum.copy(bytes.data(), order);
    return bytes;
}

const Metadata *MetadataOf(const GFL_BITMAP *bitmap)
{
    return bitmap ? static_cast<const Metadata *>(bitmap->MetaData) : nullptr;
}

Metadata *MakeMetadata(GFL_BITMAP *bitmap)
{
    if (!bitmap->MetaData)
        bitmap->MetaData = new Metadata;
    return static_cast<Metadata *>(bitmap->MetaData);
}

} // namespace imagefile
