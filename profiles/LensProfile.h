// A lens profile with all entries of its file, in any RDF form.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

/// One polynomial model of an entry, in the file's units: focal length as a fraction of the frame's long side, center
/// as fractions of width and height. Inherited values are filled in.
struct ProfileModel {
    double focalLengthX = 0.0; // 0: not given; computing it from focalMm requires the frame's size
    double centerX = 0.5, centerY = 0.5;
    double scaleFactor = 1.0;
    QVector<double> coefficients; // radial, fisheye or vignetting terms in the order of their numbers, at most three
    double tangential1 = 0.0, tangential2 = 0.0;
};

/// One calibration: the models at one setting of camera and lens.
struct ProfileEntry {
    enum class Kind { Perspective, Fisheye };

    // The setting. 0 or empty: not given.
    double focalMm = 0.0;
    double apertureApex = 0.0; // N = 2^(A/2)
    bool hasAperture = false;  // an APEX value of 0 is f/1
    double distanceM = 0.0;    // 10000 and more in the file: infinite
    // The frame.
    double width = 0.0, height = 0.0; // ImageWidth, ImageLength
    double sensorFormatFactor = 0.0;
    // Names.
    QString make, model, uniqueModel, cameraName; // cameraName: CameraPrettyName
    QString lens, lensId, lensName, lensInfo;     // lensName: LensPrettyName; lensInfo: as in the file
    QStringList alternateLensNames, alternateLensIds;
    QString profileName;
    bool raw = false; // CameraRawProfile

    Kind kind = Kind::Perspective;
    std::optional<ProfileModel> geometry, green, redGreen, blueGreen, vignette;
    qint64 line = 0; // line of the file at which the entry starts, from 1
};

/// A note about a problem in a profile, with its location.
struct ProfileNote {
    qint64 line = 0;
    int entry = -1; // index; -1: the file
    QString text;
    bool unusable = false; // the entry or model cannot be used
};

struct LensProfile {
    QString path;
    QVector<ProfileEntry> entries; // in the order of the file, including those without a usable model
    QVector<ProfileNote> notes;
};

/// Reads a profile in any RDF form: elements or attributes, any prefix, any order (see docs/fitting.md).
///
/// Leaves out unusable models, with a note. The limits of InputLimits.h apply.
///
/// @param error  filled if nothing is usable: what was read, expected and found. May be null.
/// @return the profile; without entries if nothing is usable.
LensProfile ReadLensProfile(const QString &path, QString *error);
/// Like ReadLensProfile, for content in memory. @p path is only stored.
LensProfile ParseLensProfile(const QByteArray &content, const QString &path, QString *error);
