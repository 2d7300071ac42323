// A lens profile with every entry as it stands in the file, whatever the spelling.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

/// One polynomial model of an entry, in the file's units: focal length as a share of the frame's long side, center as
/// shares of width and height. What the file leaves out and inherits is filled in.
struct ProfileModel {
    double focalLengthX = 0.0; // 0: not given, and the entry has no frame to tell it from focalMm
    double centerX = 0.5, centerY = 0.5;
    double scaleFactor = 1.0;
    QVector<double> coefficients; // radial, fisheye or vignette terms in the order of their numbers, at most three
    double tangential1 = 0.0, tangential2 = 0.0;
};

/// One calibration: a setting of camera and lens, and its models.
struct ProfileEntry {
    enum class Kind { Perspective, Fisheye };

    // The setting. 0 or empty: not given.
    double focalMm = 0.0;
    double apertureApex = 0.0; // N = 2^(A/2)
    bool hasAperture = false;  // an APEX value of 0 is f/1
    double distanceM = 0.0;    // infinite from 10000 on
    // The frame.
    double width = 0.0, height = 0.0; // ImageWidth, ImageLength
    double sensorFormatFactor = 0.0;
    // Names.
    QString make, model, uniqueModel, cameraName; // cameraName: CameraPrettyName
    QString lens, lensId, lensName, lensInfo;     // lensName: LensPrettyName; lensInfo as written
    QStringList alternateLensNames, alternateLensIds;
    QString profileName;
    bool raw = false; // CameraRawProfile

    Kind kind = Kind::Perspective;
    std::optional<ProfileModel> geometry, green, redGreen, blueGreen, vignette;
    qint64 line = 0; // of the file, where the entry begins; 1 is the first
};

/// Something in a profile that is odd, with its place.
struct ProfileNote {
    qint64 line = 0;
    int entry = -1; // index; -1: the file
    QString text;
    bool unusable = false; // what it is said of can't be used
};

struct LensProfile {
    QString path;
    QVector<ProfileEntry> entries; // in the order of the file, those without a usable model too
    QVector<ProfileNote> notes;
};

/// Reads a profile of any spelling: elements or attributes, any prefix, any order (see docs/fitting.md).
///
/// Models that can't be used are left out, with an unusable note. The limits of XmlLimits.h hold.
///
/// @param error  filled if nothing is usable: what was read, expected and found. Null if not wanted.
/// @return no entries then.
LensProfile ReadLensProfile(const QString &path, QString *error);
/// The same of bytes at hand. @p path is only kept.
LensProfile ParseLensProfile(const QByteArray &content, const QString &path, QString *error);
