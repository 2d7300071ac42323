#include "ShootingInformation.h"

qint64 ShootingInformation::memSize() const
{
    constexpr qint64 kFixedBytes = 264; // hosts count this for the record itself
    return kFixedBytes + TextBytes(makerName) + TextBytes(modelName) + TextBytes(lensId) + TextBytes(gpsLatitudeRef)
        + TextBytes(gpsLongitudeRef) + TextBytes(gpsDirectionRef);
}
