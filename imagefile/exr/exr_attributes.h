// The attributes of OpenEXR headers, checked before OpenEXR reads them.
#pragma once

#include "core/source.h"

namespace imagefile {

/// Checks that all headers' attributes lie within the file and that each value has the length that the file states.
/// OpenEXR ignores the stated length of a type that it knows, and would continue at the wrong offset.
/// @param manyParts  the file has a list of headers instead of a single one.
Status CheckExrAttributes(const Source &source, bool manyParts);

} // namespace imagefile
