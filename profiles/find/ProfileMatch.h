// Chooses the profile made for the lens of a picture. A wrong profile is worse than none, so nothing is guessed.
#pragma once

#include "LensName.h"
#include "PictureFacts.h"
#include "ProfileIndex.h"

#include <QHash>
#include <QStringList>

#include <functional>

/// Callbacks for the data needed in addition to names.
struct MatchHelp {
    /// Returns the crop factor of a camera relative to 36 x 24 mm; 0 if unknown.
    std::function<double(const QString &make, const QString &model)> cropFactor;
    /// Returns whether two profiles give nearly the same correction of the picture.
    std::function<bool(const QString &path, const QString &otherPath)> correctAlike;
};

struct ProfileMatch {
    QString path;             // the profile; empty: none
    QString reason;           // why this one was chosen, or why none was; one line for the user
    QStringList notes;        // assumptions: another body, a raw profile for a JPEG
    bool isAmbiguous = false; // several fit equally well
    QStringList nearest;      // up to three near matches, each with its contradiction; if ambiguous, two candidates
};

/// Finder of profiles for any number of pictures, with a cache of parsed names. One thread at a time.
class ProfileMatcher {
public:
    explicit ProfileMatcher(MatchHelp help) : m_help(std::move(help)) { }

    ProfileMatch Match(const QVector<IndexedProfile> &profiles, const PictureFacts &facts);

private:
    const QVector<LensName> &Parsed(const QString &text);

    MatchHelp m_help;
    QHash<QString, QVector<LensName>> m_parsed;
};

/// Returns the parsed lens names of the picture: the most specific ones, with numbers completed from EXIF
/// LensSpecification. Empty if the picture names no lens.
QVector<LensName> WantedLenses(const PictureFacts &facts);

/// Returns a lens of @p wanted other than @p found that the picture's focal length allows: a camera may use one ID
/// for several lenses. Null if there is none.
const LensName *OtherLens(const QVector<LensName> &wanted, const LensName &found, const PictureFacts &facts);

/// Returns the maker under whose name a camera maker's lenses are sold, spelled as in LensName::maker: "pentax" for
/// RICOH.
QString LensMakerOf(const QString &make);

/// Returns whether two names mean the same model, with or without one of the makers: "NIKON D70" and "D70". The makers
/// may differ, because profiles may name the brand instead of the maker.
bool IsSameModel(const QString &make, const QString &model, const QString &otherMake, const QString &otherModel);

/// Returns whether the models are the same and the makers, if both are known, don't differ. Ricoh and Pentax, for
/// example, count as one maker.
bool IsSameCamera(const QString &make, const QString &model, const QString &otherMake, const QString &otherModel);
