#include "ShootingInformation.h"

qint64 ShootingInformation::memSize() const
{
    constexpr qint64 kFixedBytes = 264; // size that hosts expect for the record itself
    return kFixedBytes + TextBytes(makerName) + TextBytes(modelName) + TextBytes(lensId) + TextBytes(gpsLatitudeRef)
        + TextBytes(gpsLongitudeRef) + TextBytes(gpsDirectionRef);
}
