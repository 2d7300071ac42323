// Facts about the picture from the layers of a Photoshop file.
#pragma once

#include "psd_layout.h"

namespace imagefile {

class ByteReader;

/// Reads the layer section at @p reader and advances past it. Determines whether the merged picture has opacity, and,
/// if a single plain layer is the whole picture, the places of its channels: they are exact, while the merged picture
/// is blended with white. GFL_ERROR_FILE_READ if the section extends past the end of the file.
Status ReadPsdLayers(const Source &source, ByteReader *reader, PsdLayout *layout);

} // namespace imagefile
