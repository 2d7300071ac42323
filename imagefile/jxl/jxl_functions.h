// Functions of libjxl, which is loaded when the first one is called.
#pragma once

#include "core/late_function.h"

#include <jxl/decode.h>

namespace imagefile {

VITRELUX_LATE(JxlDecoderCreate);
VITRELUX_LATE(JxlDecoderDestroy);
VITRELUX_LATE(JxlDecoderGetBasicInfo);
VITRELUX_LATE(JxlDecoderGetColorAsEncodedProfile);
VITRELUX_LATE(JxlDecoderGetColorAsICCProfile);
VITRELUX_LATE(JxlDecoderGetExtraChannelInfo);
VITRELUX_LATE(JxlDecoderGetICCProfileSize);
VITRELUX_LATE(JxlDecoderProcessInput);
VITRELUX_LATE(JxlDecoderReleaseInput);
VITRELUX_LATE(JxlDecoderSetImageOutBuffer);
VITRELUX_LATE(JxlDecoderSetInput);
VITRELUX_LATE(JxlDecoderSetKeepOrientation);
VITRELUX_LATE(JxlDecoderSetPreferredColorProfile);
VITRELUX_LATE(JxlDecoderSetUnpremultiplyAlpha);
VITRELUX_LATE(JxlDecoderSubscribeEvents);

} // namespace imagefile
