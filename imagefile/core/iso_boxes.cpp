#include "iso_boxes.h"

#include "byte_reader.h"
#include "limits.h"

#include <algorithm>
#include <cstring>

namespace imagefile {

bool IsoBox::Is(const char *other) const
{
    return std::strcmp(name, other) == 0;
}

std::vector<IsoBox> IsoBoxesIn(const Source &source, std::uint64_t begin, std::uint64_t end)
{
    std::vector<IsoBox> boxes;
    end = std::min(end, source.Size());
    while (begin < end && end - begin >= 8 && boxes.size() < kMaxIsoBoxes) {
        ByteReader reader(source, begin);
        IsoBox box;
        std::uint64_t size = reader.Number(4);
        reader.Read(box.name, 4);
        if (size == 1)
            size = reader.Number(8);
        else if (size == 0) // the box extends to the end
            size = end - begin;
        box.begin = reader.Position();
        box.isComplete = size <= end - begin;
        box.end = box.isComplete ? begin + size : end;
        if (reader.Failed() || box.end < box.begin)
            break;
        begin = box.end;
        boxes.push_back(box);
    }
    return boxes;
}

IsoBox FindIsoBox(const std::vector<IsoBox> &boxes, const char *name)
{
    const auto found = std::find_if(boxes.begin(), boxes.end(), [name](const IsoBox &box) { return box.Is(name); });
    return found != boxes.end() ? *found : IsoBox();
}

} // namespace imagefile
