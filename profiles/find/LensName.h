// Parsing and comparing lens names.
#pragma once

#include <QSet>
#include <QString>
#include <QVector>

/// A parsed lens name. Cameras, makers and databases spell the name of a lens in many ways; the spellings share the
/// numbers, the marks that distinguish versions, and most of the words.
struct LensName {
    QString text;             // as written
    double minFocalMm = 0.0;  // 0: not given
    double maxFocalMm = 0.0;  // equal to minFocalMm for a prime
    double maxAperture = 0.0; // f-number at minFocalMm; 0: not given
    double maxApertureAtTele = 0.0;
    QString maker;              // "nikon", from the maker's name or a lens family ("Nikkor"); empty: not given
    QSet<QString> marks;        // "is", "ii", "usm": each belongs to a group; see LensWords_p.h
    QSet<QString> words;        // the rest, case folded
    QSet<QString> codes;        // the maker's model codes, "b028"
    QString converter;          // factor of the teleconverter ("1.4") or, if not given, its text; empty: none
    QString maybeGeneration;    // "ii" from "[II]": the camera can't tell two versions apart
    bool isAlternative = false; // one of several in a text, "A or B"

    bool HasFocal() const { return minFocalMm > 0.0; }
    bool HasAperture() const { return maxAperture > 0.0; }
    /// Returns whether the name has only numbers, a maker, and the hints that cameras add ("G VR").
    bool IsBare() const;
};

/// Returns the lenses that a text may refer to: one, or several if a camera writes "A or B".
QVector<LensName> ParseLensNames(const QString &text);

/// The result of comparing two names.
struct NameMatch {
    bool fits = false;      // no number, mark or word conflicts
    bool sameFocal = false; // both give the same focal lengths, and their apertures don't conflict
    double score = 0;       // weighted count of shared parts minus those in only one name
    QString why;            // if the names don't fit: the first contradiction, as text for the user
};

/// Compares the lens name of a picture with that of a profile or database.
NameMatch CompareLensNames(const LensName &wanted, const LensName &offered);

/// Returns whether a word is the name of a maker of lenses or cameras, ignoring case.
bool IsMakerName(const QString &word);
