// The metadata of a TIFF file at its own offsets in memory, for Exiv2, which wants such files mapped.
#pragma once

#include "core/source.h"
#include "core/tiff_directory.h"

namespace imagefile {

/// As much memory as the file is long, into which those parts are read that can hold metadata; the rest stays zero and
/// takes no memory. Mapping the file itself would end the process when another program truncates it meanwhile.
///
/// Read are the begin of the file, and the directories, values and maker notes that its first directory leads to. The
/// first directory has no next one in the copy: Exiv2 takes the second page for a thumbnail and copies its pixels.
/// Files that are no TIFF are read whole.
class MetadataMap {
public:
    MetadataMap() = default;
    ~MetadataMap();
    MetadataMap(const MetadataMap &) = delete;
    MetadataMap &operator=(const MetadataMap &) = delete;

    /// False when there is no memory. What can't be read is for Source::Check to report.
    bool Open(const Source &source);

    /// Null before Open.
    std::uint8_t *Data() const { return m_data; }

private:
    void Read(const Source &source, std::uint64_t offset, std::uint64_t length);
    void ReadDirectoryTree(const Source &source, std::uint64_t offset);
    void ReadField(const Source &source, const TiffField &field);
    void CutNextDirectory(std::uint64_t first);

    std::uint8_t *m_data = nullptr;
    std::uint64_t m_size = 0;
    TiffVariant m_variant = {};
    std::uint64_t m_budget = 0; // bytes that may still be read
    int m_left = 0;             // directories that may still be read, because they can lead in circles
};

} // namespace imagefile
