// What the layers of a Photoshop file say of its picture.
#pragma once

#include "psd_layout.h"

namespace imagefile {

class ByteReader;

/// Reads the section of layers at @p reader and goes on behind it. Takes from it whether the merged picture has
/// opacity, and, where a single plain layer is the whole picture, the places of its channels: they are exact, while the
/// merged picture is blended with white. GFL_ERROR_FILE_READ when the section hangs over the end of the file.
Status ReadPsdLayers(const Source &source, ByteReader *reader, PsdLayout *layout);

} // namespace imagefile
