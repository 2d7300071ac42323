// The name of a lens as its parts, and whether two names mean the same lens.
#pragma once

#include <QSet>
#include <QString>
#include <QVector>

/// A lens name taken apart. Cameras, makers and databases spell one lens in many ways; what stays the same are the
/// numbers, the marks that tell one version from another, and most of the words.
struct LensName {
    QString text;             // as written
    double minFocalMm = 0.0;  // 0: not given
    double maxFocalMm = 0.0;  // equal to minFocalMm for a prime
    double maxAperture = 0.0; // f-number at minFocalMm; 0: not given
    double maxApertureAtTele = 0.0;
    QString maker;              // "nikon", from its name or from a family of its lenses ("Nikkor"); empty: not given
    QSet<QString> marks;        // "is", "ii", "usm": each belongs to a group, see LensName.cpp
    QSet<QString> words;        // the rest, case folded
    QSet<QString> codes;        // the maker's own number of the lens, "b028"
    bool converter = false;     // with a tele converter
    bool anyGeneration = false; // "[II]": the camera doesn't know which

    bool HasFocal() const { return minFocalMm > 0.0; }
    bool HasAperture() const { return maxAperture > 0.0; }
    /// Says no more than numbers, a maker, and the hints that cameras add to them ("G VR").
    bool IsBare() const;
};

/// The lenses that a text may mean: one, or several where a camera writes "A or B".
QVector<LensName> ParseLensNames(const QString &text);

/// What comes of comparing two names.
struct NameMatch {
    bool fits = false;      // no number and no mark contradicts
    bool sameFocal = false; // both name the same focal lengths and apertures
    double score = 0;       // what is shared less what only one of them has
    QString why;            // if it doesn't fit: the first contradiction, for people
};

/// Compares what a picture says of its lens with what a profile or database says.
NameMatch CompareLensNames(const LensName &wanted, const LensName &offered);
