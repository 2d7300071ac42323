// Lookup of a picture's lens in lensfun's database, using our rules for lens names.
#pragma once

#include "PictureFacts.h"

#include <QStringList>

struct lfLens;

/// The lens found for a picture.
struct LensfunMatch {
    const lfLens *lens = nullptr; // owned by the database, valid until the process ends; null: none
    QString title;                // "MAKER/LENS", spelled as in the database
    QString name;                 // name of an interchangeable lens, with its maker; empty for a fixed lens
    double cropFactor = 0.0;      // of the camera: diagonal of 36 x 24 mm divided by that of its sensor
    QString reason;               // why this one was chosen, or why none was; one line for the user
    QStringList notes;            // assumptions
    QStringList nearest;          // up to three near matches
};

/// Cameras and lenses that lensfun's contributors have measured, as installed by Debian's liblensfun-data-v1.
///
/// The library's search returns a similar lens for an unknown one, so only its tables are used: compatible mounts, crop
/// factors, calibrations. A lens measured on a smaller sensor than the camera's is left out.
class LensfunDatabase {
public:
    /// Returns the database, loaded by the first call (0.1 s) and kept until the process ends. Thread-safe.
    static const LensfunDatabase &Instance();

    /// Returns the number of lenses; 0 if no data is installed.
    int LensCount() const { return m_lensCount; }
    LensfunMatch Find(const PictureFacts &facts) const;
    /// Returns the titles of the lenses whose names contain all of @p words, ignoring case.
    QStringList Search(const QStringList &words) const;

private:
    LensfunDatabase();
    ~LensfunDatabase();
    LensfunDatabase(const LensfunDatabase &) = delete;
    LensfunDatabase &operator=(const LensfunDatabase &) = delete;

    struct Tables;
    Tables *m_tables; // lensfun's tables, and parsed names
    int m_lensCount = 0;
};

/// Returns the facts, with the full name of the lens added if the picture gives only its numbers and exactly one lens
/// in the database for the camera's mount has them.
PictureFacts WithFullLensName(PictureFacts facts);
