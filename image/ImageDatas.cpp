#include "ImageDatas.h"

ImageDatas *ImageDatas::settings = nullptr;

void ImageDatas::GetDefaultLoadParams(GFL_LOAD_PARAMS *params)
{
    gflGetDefaultLoadParams(params);
    if (!settings)
        return; // a module that was never started reads with the layer's own defaults
    params->RawUseAutomaticBalance = settings->rawUseAutomaticBalance;
    params->RawUseCameraBalance = settings->rawUseCameraBalance;
    params->RawHighlight = static_cast<unsigned char>(settings->rawHighlight & 0xFF);
    params->RawAutoBright = settings->rawAutoBright;
    params->RawGamma = settings->rawGamma;
    params->RawBrightness = settings->rawBrightness;
    params->RawRedScaling = settings->rawRedScaling;
    params->RawBlueScaling = settings->rawBlueScaling;
}
