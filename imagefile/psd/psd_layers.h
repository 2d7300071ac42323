// Properties of the picture that follow from the layers of a Photoshop file.
#pragma once

#include "psd_layout.h"

namespace imagefile {

class ByteReader;

/// Reads the layer section at @p reader and advances past it. Determines whether the merged picture has opacity. If the
/// picture is a single plain layer, finds that layer's channels: they are exact, while the merged picture is blended
/// with white. Returns GFL_ERROR_FILE_READ if the section extends past the end of the file.
Status ReadPsdLayers(const Source &source, ByteReader *reader, PsdLayout *layout);

} // namespace imagefile
