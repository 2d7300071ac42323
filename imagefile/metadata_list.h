// All metadata of a picture as one flat list, in which callers look up values by name.
#pragma once

#include "metadata/metadata.h"

namespace imagefile {

/// Returns the list described in gfl.h; never null. The caller frees it with gflFreeMetadataList. Throws
/// std::bad_alloc.
GFL_METADATA_LIST *MetadataList(const Source &source);

} // namespace imagefile
