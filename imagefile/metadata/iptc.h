// IPTC between the bytes of a file (IIM data sets) and the list of entries that callers see.
#pragma once

#include "metadata.h"

namespace imagefile {

/// The entries of IIM bytes, in their order; null when there is none. What doesn't look like a data set ends the list.
/// The caller frees it by gflFreeIPTC. Throws std::bad_alloc.
GFL_IPTC_DATA *IptcEntries(const Bytes &iim);

/// Whether IptcEntries would give anything.
bool HasIptcEntries(const Bytes &iim);

/// The bytes of a list of entries.
Bytes IptcBytes(const GFL_IPTC_DATA &data);

} // namespace imagefile
