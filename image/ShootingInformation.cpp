#include "ShootingInformation.h"

qint64 ShootingInformation::memSize() const
{
    constexpr qint64 kFixedBytes = 264; // what hosts count for the record itself
    return kFixedBytes + TextBytes(makerName) + TextBytes(modelName) + TextBytes(lensId) + TextBytes(gpsLatitudeRef)
        + TextBytes(gpsLongitudeRef) + TextBytes(gpsDirectionRef);
}
