// What the camera told about the shot: the record that an image's EXIF is read into.
#pragma once

#include <QString>

/// Bytes that a text holds on the heap: two a character of its capacity, 0 for one without storage.
inline qint64 TextBytes(const QString &text)
{
    return 2 * static_cast<qint64>(text.capacity());
}

/// A plain value. Fields stand in the order that hosts share; what is unknown keeps the value given here.
struct ShootingInformation {
    static constexpr double kUnknownPlace = -9999.0; // of the four gps numbers

    QString makerName;
    QString modelName;
    double focalRatio = 0.0;   // 35 mm focal length over real focal length; infinite where a file tells only the former
    double focal35mm = 0.0;    // 35 mm equivalent, in mm
    double distortionK1 = 0.0; // radial coefficients; only settings fill them
    double distortionK2 = 0.0;
    double distortionK3 = 0.0;
    double exposureTime = 0.0; // seconds
    double fNumber = 0.0;
    int isoSpeed = 0;
    int orientation = 0; // 1 to 8 as EXIF numbers them, 0: not told
    float exposureBias = 0.0F;
    double exposureValue = 0.0; // natural logarithm of fNumber^2 / exposureTime
    qint64 timestamp = 0;       // seconds since the epoch, the camera's clock taken as local time
    int validWidth = 0;         // pixels, as the camera told them
    int validHeight = 0;
    QString lensId;        // as the table of lenses has it: "10 22 235"
    double fovFirst = 0.0; // degrees, out of a comment "FOV: 73.7 x 53.1 ~ 84.0"
    double fovSecond = 0.0;
    double fovThird = 0.0;
    double gpsLatitude = kUnknownPlace; // degrees, without sign: see the Refs
    double gpsLongitude = kUnknownPlace;
    double gpsAltitude = kUnknownPlace;
    double gpsDirection = kUnknownPlace;
    QString gpsLatitudeRef = QStringLiteral("North");
    QString gpsLongitudeRef = QStringLiteral("East");
    QString gpsDirectionRef;
    double zenithSecond = 0.0; // of an entry "ZenithEs"
    double zenithFirst = 0.0;
    QString software; // empty without a private record
    // Of the private record, tag 65535.
    quint8 privateKind = 0; // 0: there is none
    quint8 privateSubKind = 0;
    quint8 privateData[32] = {};

    /// Bytes held: a fixed part and the texts, software left out.
    qint64 memSize() const;
};
