// The camera's data about the shot, read from an image's EXIF.
#pragma once

#include <QString>

/// Returns the number of bytes that a text occupies on the heap: two per character of its capacity.
inline qint64 TextBytes(const QString &text)
{
    return 2 * static_cast<qint64>(text.capacity());
}

/// A plain value. Hosts depend on the order of the fields; unknown fields keep these defaults.
struct ShootingInformation {
    static constexpr double kUnknownPlace = -9999.0; // for the four GPS numbers

    QString makerName;
    QString modelName;
    double focalRatio = 0.0;   // 35 mm focal length over real focal length; infinite if only the former is known
    double focal35mm = 0.0;    // 35 mm equivalent, in mm
    double distortionK1 = 0.0; // radial coefficients, filled only from settings
    double distortionK2 = 0.0;
    double distortionK3 = 0.0;
    double exposureTime = 0.0; // seconds; an unconverted APEX value if the file has only the shutter speed
    double fNumber = 0.0;
    int isoSpeed = 0;
    int orientation = 0; // 1 to 8 as in EXIF, 0: unknown
    float exposureBias = 0.0F;
    double exposureValue = 0.0; // natural logarithm of fNumber^2 / exposureTime
    qint64 timestamp = 0;       // seconds since the epoch, taking the camera's clock as local standard time
    int validWidth = 0;         // pixels, as given by the camera
    int validHeight = 0;
    QString lensId;        // as in the lens table: "10 22 235"
    double fovFirst = 0.0; // degrees, from a comment "FOV: 73.7 x 53.1 ~ 84.0"
    double fovSecond = 0.0;
    double fovThird = 0.0;
    double gpsLatitude = kUnknownPlace; // degrees, unsigned: the Refs give the hemisphere
    double gpsLongitude = kUnknownPlace;
    double gpsAltitude = kUnknownPlace; // 0 if the file has an altitude: the number is not read
    double gpsDirection = kUnknownPlace;
    QString gpsLatitudeRef = QStringLiteral("North");
    QString gpsLongitudeRef = QStringLiteral("East");
    QString gpsDirectionRef;
    double zenithSecond = 0.0; // from an entry "ZenithEs"
    double zenithFirst = 0.0;
    QString software; // empty without a private record
    // From the private record, tag 65535.
    quint8 privateKind = 0; // 0: none
    quint8 privateSubKind = 0;
    quint8 privateData[32] = {};

    /// Returns the number of bytes held: a fixed part and the texts, except software.
    qint64 memSize() const;
};
