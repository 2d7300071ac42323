// The functions of libheif, which is loaded when the first one is called.
#pragma once

#include "core/late_function.h"

#include <libheif/heif.h>

namespace imagefile {

#define VITRELUX_LATE(name)                                                                                            \
    inline const LateFunction<decltype(::name)> name                                                                   \
    {                                                                                                                  \
#name                                                                                                          \
    }

VITRELUX_LATE(heif_context_alloc);
VITRELUX_LATE(heif_context_free);
VITRELUX_LATE(heif_context_get_primary_image_handle);
VITRELUX_LATE(heif_context_read_from_reader);
VITRELUX_LATE(heif_context_set_maximum_image_size_limit);
VITRELUX_LATE(heif_decode_image);
VITRELUX_LATE(heif_decoding_options_alloc);
VITRELUX_LATE(heif_decoding_options_free);
VITRELUX_LATE(heif_image_get_bits_per_pixel_range);
VITRELUX_LATE(heif_image_get_height);
VITRELUX_LATE(heif_image_get_nclx_color_profile);
VITRELUX_LATE(heif_image_get_plane_readonly);
VITRELUX_LATE(heif_image_get_width);
VITRELUX_LATE(heif_image_handle_free_auxiliary_types);
VITRELUX_LATE(heif_image_handle_get_auxiliary_image_handle);
VITRELUX_LATE(heif_image_handle_get_auxiliary_type);
VITRELUX_LATE(heif_image_handle_get_height);
VITRELUX_LATE(heif_image_handle_get_list_of_auxiliary_image_IDs);
VITRELUX_LATE(heif_image_handle_get_list_of_metadata_block_IDs);
VITRELUX_LATE(heif_image_handle_get_luma_bits_per_pixel);
VITRELUX_LATE(heif_image_handle_get_metadata);
VITRELUX_LATE(heif_image_handle_get_metadata_content_type);
VITRELUX_LATE(heif_image_handle_get_metadata_size);
VITRELUX_LATE(heif_image_handle_get_metadata_type);
VITRELUX_LATE(heif_image_handle_get_nclx_color_profile);
VITRELUX_LATE(heif_image_handle_get_number_of_metadata_blocks);
VITRELUX_LATE(heif_image_handle_get_raw_color_profile);
VITRELUX_LATE(heif_image_handle_get_raw_color_profile_size);
VITRELUX_LATE(heif_image_handle_get_width);
VITRELUX_LATE(heif_image_handle_has_alpha_channel);
VITRELUX_LATE(heif_image_handle_is_premultiplied_alpha);
VITRELUX_LATE(heif_image_handle_release);
VITRELUX_LATE(heif_image_release);
VITRELUX_LATE(heif_nclx_color_profile_free);

#undef VITRELUX_LATE

} // namespace imagefile
