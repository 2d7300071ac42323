// Which of many profiles was made for the lens of a picture. A wrong one is worse than none: nothing is guessed.
#pragma once

#include "LensName.h"
#include "PictureFacts.h"
#include "ProfileIndex.h"

#include <QHash>
#include <QStringList>

#include <functional>

/// What the choice needs besides names.
struct MatchHelp {
    /// 36 x 24 mm over the sensor of a camera; 0 if unknown.
    std::function<double(const QString &make, const QString &model)> cropFactor;
    /// Whether two profiles correct the picture alike, to 3 pixels at the corners.
    std::function<bool(const QString &path, const QString &otherPath)> correctAlike;
};

struct ProfileMatch {
    QString path;             // the profile; empty: none
    QString reason;           // why this one, or why none; one line for people
    QStringList notes;        // what was assumed: another body, a raw profile for a JPEG
    bool isAmbiguous = false; // several stand equal
    QStringList nearest;      // up to three that came close, each with what spoke against it
};

/// Chooses profiles for pictures, one after another. Names that were taken apart once are kept for the next picture.
/// Not for several threads at once.
class ProfileMatcher {
public:
    explicit ProfileMatcher(MatchHelp help) : m_help(std::move(help)) { }

    ProfileMatch Match(const QVector<IndexedProfile> &profiles, const PictureFacts &facts);

private:
    const QVector<LensName> &Parsed(const QString &text);

    MatchHelp m_help;
    QHash<QString, QVector<LensName>> m_parsed;
};

/// The names that the picture gives its lens, taken apart: the most telling ones, numbers completed by EXIF's
/// LensSpecification. Empty if it names none.
QVector<LensName> WantedLenses(const PictureFacts &facts);

/// Whether two spellings mean the same camera: "NIKON D70" and "D70".
bool IsSameCamera(const QString &make, const QString &model, const QString &otherMake, const QString &otherModel);
