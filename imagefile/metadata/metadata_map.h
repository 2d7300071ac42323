// Copies a TIFF's metadata into memory at the offsets that it has in the file, because Exiv2 expects TIFFs to be
// mapped.
#pragma once

#include "core/source.h"
#include "core/tiff_directory.h"

namespace imagefile {

/// Address space as long as the file, into which the parts that can contain metadata are read; the rest is zero and
/// uses no memory. If the file itself were mapped, the process would crash if another program truncated it.
///
/// Reads the beginning of the file, and the directories, values and maker notes reachable from its first directory. In
/// the copy, the first directory has no successor, because Exiv2 would mistake a second page for a thumbnail and copy
/// its pixels. Files that are not TIFFs are read completely, up to kMaxMappedBytes.
class MetadataMap {
public:
    MetadataMap() = default;
    ~MetadataMap();
    MetadataMap(const MetadataMap &) = delete;
    MetadataMap &operator=(const MetadataMap &) = delete;

    /// Returns false if there is not enough memory. Source::Check reports unreadable parts.
    bool Open(const Source &source);

    /// Returns null before Open.
    std::uint8_t *Data() const { return m_data; }

private:
    void Read(const Source &source, std::uint64_t offset, std::uint64_t length);
    void ReadDirectoryTree(const Source &source, std::uint64_t offset);
    void ReadField(const Source &source, const TiffField &field);
    void CutNextDirectory(std::uint64_t first);

    std::uint8_t *m_data = nullptr;
    std::uint64_t m_size = 0;
    TiffVariant m_variant = {};
    std::uint64_t m_budget = 0; // remaining bytes to read
    int m_left = 0;             // remaining directories to read; limited, because they can form a cycle
};

} // namespace imagefile
