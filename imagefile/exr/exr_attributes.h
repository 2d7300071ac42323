// The attributes of OpenEXR headers, checked before OpenEXR reads them.
#pragma once

#include "core/source.h"

namespace imagefile {

/// Checks that all headers' attributes lie within the file and that the stated length of each value matches its type.
/// OpenEXR ignores the stated length for types that it knows, so it would continue at a wrong offset.
/// @param manyParts  Whether the file has a list of headers instead of a single one.
Status CheckExrAttributes(const Source &source, bool manyParts);

} // namespace imagefile
