/// The sample pictures, each with its scene, lens and file.
#pragma once

#include <memory>

#include "photograph.h"

namespace Samples {

struct Sample {
    std::string picture; ///< file name without its suffix
    std::string profile; ///< file name without its suffix; several samples may share one
    LensProfile lens;
    Hold hold;
    Caption caption;
    std::shared_ptr<const Scene> scene;
};

std::vector<Sample> AllSamples();

} // namespace Samples
