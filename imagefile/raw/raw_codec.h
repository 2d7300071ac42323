// Declarations shared by the camera raw codec's source files.
#pragma once

#include "core/codec.h"

#include <memory>

namespace imagefile {

class RawStream;

/// Returns whether a file that begins like a TIFF contains sensor values, as DNGs and other raw files do. Ignores the
/// file's name.
bool HoldsSensorValues(const Source &source);

/// Camera raw file opened by LibRaw for one purpose: to read its size, its preview or its pixels. Pictures are sRGB, in
/// sensor orientation: the orientation is not applied.
///
///   | setting           | effect                                                                              |
///   |-------------------|-------------------------------------------------------------------------------------|
///   | automatic balance | makes the mean of the picture gray; overrides the camera's balance                  |
///   | camera balance    | uses the camera's measurement; if both balances are off, daylight is used           |
///   | highlight         | 0 clips, 1 doesn't, 2 blends, 3 to 9 reconstruct: 3 favors white most, 9 color      |
///   | auto brightness   | brightens until 1 % of the pixels are white                                         |
///   | gamma             | raises values to the power of 1 / gamma; 1 is linear                                |
///   | brightness        | factor, applied before gamma                                                        |
///   | red, blue scaling | factors in addition to the balance, applied before highlights are treated           |
///
/// Gamma, brightness and scaling are clamped to 0.001 to 1,000; invalid numbers (not finite, 0 or less) count as 1.
class RawFile {
public:
    RawFile();
    ~RawFile();

    /// Reads the headers and checks sizes. @p source must outlive the object.
    Status Open(const Source &source);
    /// Fills all fields except FormatName and FormatIndex. The object can't be used afterward.
    Status Describe(GFL_FILE_INFORMATION *info);

    enum class Size { Full, Half };
    /// Develops the picture to 16 bits per sample or, without GFL_LOAD_ORIGINAL_DEPTH, to 8. Half size makes one pixel
    /// from 2 x 2 sensor values and takes a tenth of the time.
    Status Develop(const GFL_LOAD_PARAMS &params, Size size, RowSink *rows);
    /// Returns Half if half size still covers the picture fitted into @p box, otherwise Full.
    Size SizeFor(const Box &box) const;
    /// Delivers the camera's preview; fails unless it has the picture's proportions and covers the picture fitted into
    /// @p box.
    Status ReadPreview(const Box &box, RowSink *rows);

private:
    class Developer;

    void SetUp(const GFL_LOAD_PARAMS &params, Size size);
    Status DeliverPicture(RowSink *rows);
    Status DeliverPreviewBitmap(RowSink *rows);

    const Source *m_source = nullptr;
    std::unique_ptr<RawStream> m_stream; // must outlive the developer
    std::unique_ptr<Developer> m_raw;    // about 800 KB
};

const Codec &RawCodec();

} // namespace imagefile
