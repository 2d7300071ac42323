// Metadata of Photoshop files: their image resources.
#pragma once

#include "metadata.h"

namespace imagefile {

/// Reads all four parts from the image resources. Otherwise like ReadExiv2Metadata.
Status ReadPsdMetadata(const Source &source, Metadata *metadata);

/// Returns the image resources of a Photoshop file; empty if the file ends early or if they are larger than
/// kMaxMetadataBytes.
Bytes ReadPsdResources(const Source &source);

} // namespace imagefile
