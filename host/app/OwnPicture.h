// Pictures that the image kernel refuses, described and read by the program.
#pragma once

#include "ImageDef.h"

#include <memory>

/// The kinds of pictures accepted; each value includes those before it.
enum class AcceptedPictures {
    OfKernel,
    GrayAndTiled,
    Converted // CMYK and Lab, whose pixels the image-file layer delivers as sRGB
};

/// Returns the description of a picture that the kernel refused for @p reason; null if its kind isn't accepted or its
/// header cannot be read. The description provides pixels only at full size and native depth, without the image cache,
/// to one thread at a time.
std::shared_ptr<ImageDef> DescribeRefused(const QString &path, const RefusalReason &reason, AcceptedPictures accepted);
