// All metadata of a picture as one flat list, for code that looks for facts by name.
#pragma once

#include "metadata/metadata.h"

namespace imagefile {

/// The list as gfl.h describes it; never null. The caller frees it by gflFreeMetadataList. Throws std::bad_alloc.
GFL_METADATA_LIST *MetadataList(const Source &source);

} // namespace imagefile
