// What the files of the camera raw codec share: one raw file in LibRaw.
#pragma once

#include "core/codec.h"

#include <memory>

namespace imagefile {

class RawStream;

/// Whether a file that begins like a TIFF holds the values of a sensor: a DNG or a camera's own file, under whatever
/// name.
bool HoldsSensorValues(const Source &source);

/// A camera raw file by LibRaw, once for one purpose: its size, its preview, or its pixels. Pictures are sRGB, as the
/// sensor lies: the orientation is not applied.
///
///   | setting           | effect                                                                              |
///   |-------------------|-------------------------------------------------------------------------------------|
///   | automatic balance | grey is what the mean of the picture is; goes before the camera's balance           |
///   | camera balance    | as the camera found it; without either: daylight                                    |
///   | highlight         | 0 clips, 1 leaves as they are, 2 blends, 3 to 9 rebuild, from white to colour       |
///   | auto brightness   | brightened until one pixel in a hundred is white                                    |
///   | gamma             | values are raised to the power of 1 / gamma; 1 is linear                            |
///   | brightness        | factor, before gamma                                                                |
///   | red, blue scaling | factors beside the balance, before highlights are treated                           |
///
/// Numbers that make no sense (not finite, 0 or less) count as 1.
class RawFile {
public:
    RawFile();
    ~RawFile();

    /// Reads the headers and checks sizes. @p source must outlive the object.
    Status Open(const Source &source);
    /// Fills all but the format. The object is then good for nothing else.
    Status Describe(GFL_FILE_INFORMATION *info);

    enum class Size { Full, Half };
    /// Develops into 16 or, without GFL_LOAD_ORIGINAL_DEPTH, 8 bits. Half size: a pixel of 2 x 2 sensor values each, a
    /// tenth of the work.
    Status Develop(const GFL_LOAD_PARAMS &params, Size size, RowSink *rows);
    /// Half, when that still covers the picture fitted into @p box.
    Size SizeFor(const Box &box) const;
    /// Hands over the preview that the camera made; a failure when there is none that covers the picture fitted into
    /// @p box and has its proportions.
    Status ReadPreview(const Box &box, RowSink *rows);

private:
    class Developer;

    void SetUp(const GFL_LOAD_PARAMS &params, Size size);
    Status HandOver(RowSink *rows);
    Status HandOverBitmap(RowSink *rows);

    const Source *m_source = nullptr;
    std::unique_ptr<RawStream> m_stream; // goes after the developer
    std::unique_ptr<Developer> m_raw;    // some 800 KB
};

const Codec &RawCodec();

} // namespace imagefile
