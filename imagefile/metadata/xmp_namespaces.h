// Preserves the prefixes in Exiv2's table of XMP namespaces.
#pragma once

#include "metadata.h"

namespace imagefile {

/// Adds the namespace of the correction record to Exiv2's table, and saves the table's prefixes. Called once, by
/// StartExiv2.
void DefineXmpPrefixes();

/// Restores the saved prefixes in Exiv2's table, and gives a new one, such as crs_2, to any other namespace that took
/// one of them. The whole process shares the table, and the keys of properties name a namespace by its prefix. So a
/// packet that uses a known prefix, such as crs, for another namespace would change the namespace of properties written
/// for all later pictures.
///
/// @return the number of calls so far that changed the table. Properties that were read before the last such call may
/// have wrong keys.
unsigned RestoreXmpPrefixes(const XmpWriting &use);

/// Calls @p read, which reads XMP, and calls it again if the table then had to be restored.
template <class Read> void ReadXmp(Read read)
{
    const auto restored = [] { return RestoreXmpPrefixes(XmpWriting()); };
    const unsigned before = restored();
    read();
    if (restored() != before)
        read();
}

} // namespace imagefile
