// A TIFF file of many pages as if it had one, for Exiv2, which takes the second page for a thumbnail and copies its
// pixels.
#pragma once

#include "core/source.h"

namespace imagefile {

/// A file in the process's memory, of which only what is looked at is read. The first directory in it has no next one.
class FirstPageMap {
public:
    FirstPageMap() = default;
    ~FirstPageMap();
    FirstPageMap(const FirstPageMap &) = delete;
    FirstPageMap &operator=(const FirstPageMap &) = delete;

    /// Does nothing unless @p source is a classic TIFF file with a second directory that can be mapped.
    void Open(const Source &source);

    /// Null when there is no map.
    const std::uint8_t *Data() const { return m_data; }
    std::uint64_t Size() const { return m_size; }

private:
    std::uint8_t *m_data = nullptr;
    std::uint64_t m_size = 0;
};

} // namespace imagefile
