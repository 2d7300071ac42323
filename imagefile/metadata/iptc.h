// Conversion of IPTC between the bytes of a file (IIM data sets) and the list of entries for callers.
#pragma once

#include "metadata.h"

namespace imagefile {

/// Returns the entries of IIM bytes in file order; null if there are none. The list ends at the first invalid data set.
/// The caller frees it with gflFreeIPTC. Throws std::bad_alloc.
GFL_IPTC_DATA *IptcEntries(const Bytes &iim);

/// Returns whether IptcEntries would return any entries.
bool HasIptcEntries(const Bytes &iim);

/// Returns the bytes of a list of entries. Entries whose ID doesn't give a record and a data set are left out with a
/// warning.
Bytes IptcBytes(const GFL_IPTC_DATA &data);

} // namespace imagefile
