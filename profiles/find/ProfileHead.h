// The data of a profile that the search needs: names, frame and flags of its first entry.
#pragma once

#include <QString>
#include <QStringList>

class QIODevice;

struct ProfileHead {
    QString make, model;     // of the camera
    QStringList lensNames;   // Lens, LensPrettyName and alternate names; none empty, no duplicates
    QStringList lensIds;     // LensID and alternate IDs, as text
    double minFocalMm = 0.0; // from LensInfo or a name; 0: not given
    double maxFocalMm = 0.0;
    double minAperture = 0.0; // f-number wide open, at the shortest and the longest focal length; 0: not given
    double maxAperture = 0.0;
    double sensorFormatFactor = 0.0;
    bool raw = false;
};

/// Reads the first entry of a profile in any RDF form and stops there.
/// @return false, with the reason in @p error, if there is no entry, or if the entry names neither camera nor lens.
bool ReadProfileHead(QIODevice *device, ProfileHead *head, QString *error);
