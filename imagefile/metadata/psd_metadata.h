// Metadata of Photoshop files: their image resources.
#pragma once

#include "metadata.h"

namespace imagefile {

/// All four parts out of the image resources. Otherwise as ReadExiv2Metadata.
Status ReadPsdMetadata(const Source &source, Metadata *metadata);

/// The image resources of a Photoshop file, as far as they can be read.
Bytes ReadPsdResources(const Source &source);

} // namespace imagefile
