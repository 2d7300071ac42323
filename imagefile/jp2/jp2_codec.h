// Declarations shared by the JPEG 2000 codec's source files, such as the layout of a file.
#pragma once

#include "core/codec.h"

namespace imagefile {

/// Layout of a JPEG 2000 file: a bare codestream, or one in the boxes of a JP2 file (ITU-T T.800, annexes A and I).
/// Gray or RGB, optionally with opacity as the last component; other colors, palettes and subsampled components are
/// refused.
struct Jp2Layout {
    std::uint64_t streamAt = 0; // offset of the codestream
    bool isBoxed = false;
    int width = 0, height = 0;
    int bits = 8;       // highest precision of any component, 1 to 16
    int components = 0; // 1 to 4
    bool hasAlpha = false;

    /// Gray with opacity is delivered as RGBA.
    PixelForm Form() const { return {bits > 8 ? 16 : 8, hasAlpha ? 4 : components}; }
};

/// Reads all headers, including those of tiles, and checks sizes before OpenJPEG allocates memory for them.
Status ReadJp2Layout(const Source &source, Jp2Layout *layout);

Status ReadJp2Info(const Source &source, GFL_FILE_INFORMATION *info);
Status ReadJp2Pixels(const Source &source, RowSink *rows);

const Codec &Jp2Codec();

} // namespace imagefile
