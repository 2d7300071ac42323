// Analyzes EXIF lists as a host might pass them: any tags, texts and lengths.
#include "ImageDef.h"
#include "Target.h"

#include <cmath>
#include <deque>

namespace {

constexpr quint16 kTags[] = {274,   271,   272,   37386, 41989, 33434, 37377, 33437, 36867, 34855, 37380, 40962, 40963,
                             41486, 41487, 41488, 305,   1,     2,     3,     4,     6,     16,    17,    37510, 65535};

quint16 AnyTag(Input &input)
{
    constexpr int kCount = sizeof kTags / sizeof *kTags;
    const int number = input.Below(kCount + 1);
    return number < kCount ? kTags[number] : input.Next<quint16>();
}

/// Both kinds of EXIF list, with one entry per line of the input.
struct Lists {
    explicit Lists(Input &input)
    {
        const char *const names[] = {"LensID", "ZenithEs", "FNumber", nullptr};
        const quint32 blocks[] = {GFL_EXIF_MAIN, GFL_EXIF_CAMERA, GFL_EXIF_GPS, GFL_EXIF_OWN};
        while (!input.IsEmpty() && entries.size() < 64) {
            const quint32 block = blocks[input.Below(4)];
            const quint16 tag = AnyTag(input);
            const char *name = names[input.Below(4)];
            texts.push_back(input.Line());
            QByteArray &text = texts.back();
            char *value = text.isEmpty() ? nullptr : text.data();
            entries.push_back({block, tag, const_cast<char *>(name), value});
            raw.push_back({tag, 2, block, 0, 0, quint32(text.size()), reinterpret_cast<quint8 *>(value), nullptr});
            if (raw.size() > 1)
                raw[raw.size() - 2].Next = &raw.back();
        }
        list = {quint32(entries.size()), entries.data()};
        extended = {raw.empty() ? nullptr : &raw.front(), 0};
    }

    std::deque<QByteArray> texts;
    std::vector<GFL_EXIF_ENTRY> entries;
    std::deque<GFL_EXIF_ENTRYEX> raw;
    GFL_EXIF_DATA list = {};
    GFL_EXIF_DATAEX extended = {};
};

} // namespace

FUZZ_TARGET(exif_lists)
{
    StartKernel();
    Input input(data, size);
    Lists lists(input);
    ImageDef image;
    image.AnalyseExif(&lists.list, &lists.extended);
    const ImageDef copy(image);
    Require(copy.m_exifSummary == image.m_exifSummary && copy.memSize() > 0);
    ImageDef::IsFisheyeLens(image.m_shooting.makerName, image.m_shooting.lensId);
    Require(std::isfinite(image.GetEV()));
}
