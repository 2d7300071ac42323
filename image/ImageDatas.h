// The settings that steer how image files are described and read.
#pragma once

#include "gfl.h"

/// One instance is process-wide: KImage::init makes it or takes the host's, KImage::exit deletes it if it was made.
/// Changed only while nothing loads; read by any thread.
class ImageDatas {
public:
    // Camera raw development; each value goes to the image-file layer as it stands.
    bool rawUseAutomaticBalance = false;
    bool rawUseCameraBalance = true;
    int rawHighlight = 0; // its low byte counts
    bool rawAutoBright = false;
    float rawGamma = 2.2f;
    float rawBrightness = 2.5f;
    float rawRedScaling = 1.0f;
    float rawBlueScaling = 1.0f;

    /// The layer's default load parameters with the raw settings of the process-wide instance; used by all loads from
    /// files, so that a camera raw file develops the same way everywhere.
    static void GetDefaultLoadParams(GFL_LOAD_PARAMS *params);

    static ImageDatas *settings;
};
