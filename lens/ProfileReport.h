// Readable report on a profile file: its content, and whether it can be used.
#pragma once

#include "LensParam.h"

#include <QString>
#include <QStringList>
#include <QVector>

#include <optional>

/// One model of the profile, with its values in pixels of a picture of the profile's size.
struct ProfileReportModel {
    QString name; ///< in plain English: "distortion", "green", "red against green", "blue against green", "vignette"
    LensParam values; ///< values.found: whether the profile has it
    QString flaw;     ///< why correcting with it would ruin the picture; empty if it wouldn't or there is no model
};

/// First entry of a profile, as far as it could be read. Plain data; texts are plain English without a final period.
///
/// A file is usable if newLCP reads a complete entry with a size from it. Single corrections may still do nothing or
/// ruin the picture: see `notes`.
struct ProfileReport {
    bool usable = false;
    QString problem; ///< one line: what was read and what was expected; empty if usable

    QString profileName; ///< this and the next four are empty if the profile doesn't give them
    QString make;        ///< of the camera
    QString model;       ///< of the camera, as in the picture's metadata
    QString camera;      ///< the name for display
    QString lens;
    std::optional<double> focalLengthMm; ///< of the first entry, like the next two
    std::optional<double> fNumber;
    std::optional<double> focusDistanceM;

    int entryCount = 0;      ///< number of rdf:li entries; only the first one is used
    double imageWidth = 0.0; ///< of the calibrated picture in pixels, 0 if not given before the model
    double imageLength = 0.0;
    bool fisheye = false;
    QVector<ProfileReportModel> models; ///< the five in the order above; empty unless a model element was found
    QStringList notes;                  ///< one line each: effects of this profile that users might not expect
};

/// Reads @p fileName, once. Throws nothing: if the file cannot be read, the report says so.
///
/// Unlike newLCP, which uses the readable part of a truncated file, the report treats such a file as unusable, because
/// it is unknown which values are lost.
ProfileReport ReadProfileReport(const QString &fileName);
