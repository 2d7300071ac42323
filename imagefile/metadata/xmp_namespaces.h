// Keeps the prefixes in Exiv2's table of XMP namespaces.
#pragma once

#include "metadata.h"

namespace imagefile {

/// Adds the namespace of the correction record to Exiv2's table, and stores the table's prefixes. Called once, by
/// StartExiv2.
void DefineXmpPrefixes();

/// Exiv2's table belongs to the process, and its keys name a namespace by its prefix. So a packet that uses a known
/// prefix, such as crs, for another namespace would change where the properties of all later pictures are written. This
/// restores the known prefixes and gives the other namespaces new ones, such as crs_2.
///
/// @return how often the table was restored so far. Properties that were read before the last time may have wrong keys.
unsigned RestoreXmpPrefixes(const XmpWriting &use);

/// Calls @p read, which reads XMP, and calls it again if the table had to be restored meanwhile.
template <class Read> void ReadXmp(Read read)
{
    const auto restored = [] { return RestoreXmpPrefixes(XmpWriting()); };
    const unsigned before = restored();
    read();
    if (restored() != before)
        read();
}

} // namespace imagefile
