// The attributes of OpenEXR headers, checked before OpenEXR reads them.
#pragma once

#include "core/source.h"

namespace imagefile {

/// Checks that the attributes of all headers lie within the file and that each takes the bytes that its length claims.
/// OpenEXR trusts the lengths, except of the types that it knows, and would read on at another place.
/// @param manyParts  the file has a list of headers instead of a single one.
Status CheckExrAttributes(const Source &source, bool manyParts);

} // namespace imagefile
