// The lens of a picture in lensfun's database, by our own name rules.
#pragma once

#include "PictureFacts.h"

#include <QStringList>

struct lfLens;

/// A lens for a camera.
struct LensfunMatch {
    const lfLens *lens = nullptr; // owned by the database, which stays; null: none
    QString title;                // "MAKER/LENS" as the database writes it
    double cropFactor = 0.0;      // of the camera: 36 x 24 mm over its sensor
    QString reason;               // why this one, or why none; one line for people
    QStringList notes;            // what was assumed
    QStringList nearest;          // up to three that came close
};

/// Cameras and lenses that lensfun's contributors have measured, as Debian's liblensfun-data-v1 brings them.
///
/// The library's own search answers a lens that it doesn't know with a similar one, so only its tables are used: mounts
/// and what fits them, crop factors, calibrations. A lens measured on a smaller sensor than the camera's is left out.
class LensfunDatabase {
public:
    /// Loaded by the first call, in 0.1 s, and kept until the process ends; any thread.
    static const LensfunDatabase &Instance();

    /// Lenses in it; 0 if no data are installed.
    int LensCount() const { return m_lensCount; }
    LensfunMatch Find(const PictureFacts &facts) const;
    /// Titles of the lenses whose names hold all of @p words, in any case.
    QStringList Search(const QStringList &words) const;

private:
    LensfunDatabase();
    ~LensfunDatabase();
    LensfunDatabase(const LensfunDatabase &) = delete;
    LensfunDatabase &operator=(const LensfunDatabase &) = delete;

    struct Tables;
    Tables *m_tables; // lensfun's, and names taken apart
    int m_lensCount = 0;
};
