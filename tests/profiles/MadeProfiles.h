// Profiles and facts made for tests.
#pragma once

#include "Fit.h"

#include <QDir>
#include <QTemporaryDir>

#include <limits>

namespace made {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

inline ProfileModel Model(double focal, double centerX, double centerY, const QVector<double> &coefficients)
{
    ProfileModel model;
    model.focalLengthX = focal;
    model.centerX = centerX;
    model.centerY = centerY;
    model.coefficients = coefficients;
    return model;
}

/// Returns an entry for the body "Maker BODY", frame 6000 x 4000, crop factor 1.5, with all five models off center.
inline ProfileEntry Entry(double focalMm = 24.0)
{
    ProfileEntry entry;
    entry.make = QStringLiteral("Maker");
    entry.model = QStringLiteral("BODY");
    entry.width = 6000.0;
    entry.height = 4000.0;
    entry.sensorFormatFactor = 1.5;
    entry.focalMm = focalMm;
    entry.distanceM = 3.0;
    entry.apertureApex = 4.0;
    entry.hasAperture = true;
    entry.geometry = Model(1.02, 0.507, 0.494, {-0.11, 0.05, -0.01});
    entry.green = Model(1.03, 0.508, 0.493, {-0.105, 0.049, -0.012});
    entry.green->tangential1 = 0.0013;
    entry.green->tangential2 = -0.0021;
    entry.redGreen = Model(1.03, 0.51, 0.492, {0.0011, -0.0007});
    entry.redGreen->scaleFactor = 1.0008;
    entry.redGreen->tangential1 = 0.00006;
    entry.blueGreen = Model(1.03, 0.509, 0.49, {-0.0009});
    entry.blueGreen->scaleFactor = 0.9993;
    entry.vignette = Model(1.02, 0.495, 0.506, {-0.9, 0.4, -0.2});
    return entry;
}

inline LensProfile Profile(const QVector<ProfileEntry> &entries)
{
    LensProfile profile;
    profile.path = QStringLiteral("made.lcp");
    profile.entries = entries;
    return profile;
}

template <typename T> Fact<T> Known(const T &value)
{
    return {value, QStringLiteral("made")};
}

/// Returns the facts of a picture taken with the body of Entry(), at f/4 and 3 m.
inline PictureFacts Facts(const QSize &pixels = QSize(6000, 4000), double focalMm = 24.0)
{
    PictureFacts facts;
    facts.make = Known(QStringLiteral("Maker"));
    facts.model = Known(QStringLiteral("BODY"));
    facts.pixels = pixels;
    facts.focalMm = Known(focalMm);
    facts.aperture = Known(4.0);
    facts.distanceM = Known(3.0);
    return facts;
}

/// Writes a camera table to @p folder and puts it in use, because the real table changes over time.
inline void UseCameras(const QTemporaryDir &folder)
{
    QFile file(folder.filePath(QStringLiteral("cameras.txt")));
    if (file.open(QIODevice::WriteOnly))
        file.write("Maker;BODY;1.5\nMaker;SMALL;2\nMaker;LARGE;1\nMaker;NEAR;1.46\nNikon;Nikon D70;1.6666\n");
    file.close();
    QDir::setSearchPaths(QStringLiteral("Data"), {folder.path()});
}

} // namespace made
