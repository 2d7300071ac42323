// gflChangeColorDepth: converts 8-bit bitmaps to another pixel form or to fewer colors.
#include "gfl.h"

#include "core/guard.h"
#include "core/row_sink.h"

#include <array>
#include <utility>

using namespace imagefile;

namespace {

constexpr int kMiddle = 128; // black and white: pixels of at least this luma become white

using Table = std::array<std::uint8_t, 256>; // new value by old one

/// Changes that a mode makes: first the form, then color values.
struct Change {
    int channels; // of the form
    bool usesTable;
    Table table;
};

Table BlackOrWhite(int whiteFrom)
{
    Table table = {};
    for (int i = whiteFrom; i < 256; ++i)
        table[static_cast<std::size_t>(i)] = 255;
    return table;
}

// Returns a table that maps each value to the nearest of @p count evenly spaced levels, which include 0 and 255.
Table Levels(int count)
{
    Table table = {};
    const int steps = count - 1;
    for (int i = 0; i < 256; ++i) {
        const int level = (i * steps + 127) / 255;
        table[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>((level * 255 + steps / 2) / steps);
    }
    return table;
}

Status ChooseChange(int channels, int mode, int parameters, Change *change)
{
    switch (mode) {
    case GFL_DEPTH_GREY:
        *change = {1, false, {}};
        return Status::Ok();
    case GFL_DEPTH_RGB:
        *change = {3, false, {}};
        return Status::Ok();
    case GFL_DEPTH_RGBA:
        *change = {4, false, {}};
        return Status::Ok();
    case GFL_DEPTH_BLACK_AND_WHITE:
        if (parameters > 255)
            break;
        *change = {1, true, BlackOrWhite(parameters == 0 ? kMiddle : parameters)};
        return Status::Ok();
    case GFL_DEPTH_LEVELS:
        if (parameters < 2 || parameters > 256)
            break;
        *change = {channels, true, Levels(parameters)};
        return Status::Ok();
    default:
        break;
    }
    return Status::Fail(GFL_ERROR_BAD_PARAMETERS, Text("no color conversion %d with parameter %d", mode, parameters));
}

/// Converts the bitmap's pixels to another form. Keeps everything else.
Status ChangeForm(GFL_BITMAP *bitmap, int channels)
{
    const PixelForm from = {8, gflChannelsOfType(bitmap->Type)}, to = {8, channels};
    Owned<GFL_BITMAP> made(nullptr, gflFreeBitmap);
    if (Status status = NewBitmap(bitmap->Width, bitmap->Height, to, &made); !status)
        return status;
    const RowConverter convert = ChooseConverter(from, to);
    for (int y = 0; y < bitmap->Height; ++y)
        convert(bitmap->Data + static_cast<std::size_t>(y) * bitmap->BytesPerLine,
                made->Data + static_cast<std::size_t>(y) * made->BytesPerLine, static_cast<std::size_t>(bitmap->Width),
                255);
    std::swap(bitmap->Data, made->Data);
    bitmap->Type = made->Type;
    bitmap->BytesPerLine = made->BytesPerLine;
    bitmap->LinePadding = made->LinePadding;
    bitmap->ComponentsPerPixel = made->ComponentsPerPixel;
    bitmap->BytesPerPixel = made->BytesPerPixel;
    bitmap->ColorUsed = made->ColorUsed;
    return Status::Ok();
}

void ChangeValues(const Table &table, GFL_BITMAP *bitmap)
{
    const int channels = gflChannelsOfType(bitmap->Type), colors = channels == 4 ? 3 : channels;
    for (int y = 0; y < bitmap->Height; ++y) {
        std::uint8_t *pixel = bitmap->Data + static_cast<std::size_t>(y) * bitmap->BytesPerLine;
        for (int x = 0; x < bitmap->Width; ++x, pixel += channels)
            for (int c = 0; c < colors; ++c)
                pixel[c] = table[pixel[c]];
    }
}

} // namespace

int gflChangeColorDepth(GFL_BITMAP *bitmap, GFL_BITMAP **result, std::uint16_t mode, std::uint16_t parameters)
{
    return Guarded([&] {
        if (!bitmap || result)
            return Status::Fail(GFL_ERROR_BAD_PARAMETERS, "a bitmap can only be changed in place");
        if (Status status = CheckBitmap(*bitmap); !status)
            return status;
        if (bitmap->BitsPerComponent != 8)
            return Status::Fail(GFL_ERROR_BAD_BITMAP,
                                Text("%d bits per color; only 8 are supported", bitmap->BitsPerComponent));
        const int channels = gflChannelsOfType(bitmap->Type);
        Change change = {};
        if (Status status = ChooseChange(channels, mode, parameters, &change); !status)
            return status;
        if (change.channels != channels)
            if (Status status = ChangeForm(bitmap, change.channels); !status)
                return status;
        if (change.usesTable)
            ChangeValues(change.table, bitmap);
        return Status::Ok();
    });
}
