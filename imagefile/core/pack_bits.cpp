#include "pack_bits.h"

#include <algorithm>

namespace imagefile {

namespace {

constexpr std::size_t kMaxCount = 128;
constexpr std::size_t kMinRun = 3; // shorter runs save nothing

std::size_t RunLength(const std::uint8_t *row, std::size_t at, std::size_t size)
{
    std::size_t end = at + 1;
    while (end < size && end - at < kMaxCount && row[end] == row[at])
        ++end;
    return end - at;
}

} // namespace

bool UnpackBits(const std::uint8_t *packed, std::size_t packedSize, std::uint8_t *out, std::size_t size)
{
    std::size_t at = 0;
    while (size > 0 && at < packedSize) {
        const unsigned code = packed[at++];
        if (code == 128)
            continue; // no operation
        const bool isRun = code > 128;
        const std::size_t count = isRun ? 257 - code : code + 1;
        if (count > size || (isRun ? 1 : count) > packedSize - at)
            return false;
        isRun ? std::fill_n(out, count, packed[at]) : std::copy_n(packed + at, count, out);
        at += isRun ? 1 : count;
        out += count;
        size -= count;
    }
    return size == 0;
}

void PackBits(const std::uint8_t *row, std::size_t size, std::vector<std::uint8_t> *out)
{
    for (std::size_t at = 0; at < size;) {
        const std::size_t run = RunLength(row, at, size);
        if (run >= kMinRun) {
            out->push_back(static_cast<std::uint8_t>(257 - run));
            out->push_back(row[at]);
            at += run;
            continue;
        }
        std::size_t end = at;
        while (end < size && end - at < kMaxCount && RunLength(row, end, size) < kMinRun)
            ++end;
        out->push_back(static_cast<std::uint8_t>(end - at - 1));
        out->insert(out->end(), row + at, row + end);
        at = end;
    }
}

} // namespace imagefile
