// The part of a parameter record that only fitted corrections have, and its form in text.
#pragma once

#include "FitOptions.h"

#include <QDomElement>

#include <functional>
#include <optional>

/// What the last run wrote of itself, for people and hosts.
struct FitReport {
    QString profile; // path, or "lensfun:MAKER/LENS"
    QString entries; // those that took part, with their weights
    QString assumed; // what the picture's data left open
    QString done;    // corrections that were applied; empty: none
    QString why;     // not everything that was asked for was done
};

/// A record without this part is plain. Corrections and profile are not repeated here: those of the record count.
struct FittedRecord {
    FitOptions options;
    std::optional<FitReport> report; // none before the first run
};

/// The names of options in the XML form of a record, which are their keys in the stored settings too.
///
/// | name                                     | text                                                            |
/// |------------------------------------------|-----------------------------------------------------------------|
/// | "Framing"                                | "fill", "keep", "all", or a zoom factor of 0.5 to 2             |
/// | "Sampling"                               | "sharp", "bilinear"                                             |
/// | "Projection"                             | "rectilinear", "equidistant", "stereographic", "equisolid"      |
/// | "AmountDisto", "AmountCA", "AmountFalloff" | a factor of 0 to 2                                            |
/// | "Source"                                 | "auto", "lcp", "lensfun"                                        |
/// | "Again"                                  | "1"; anything else is no                                        |
/// | "Lens", "Body"                           | a name                                                          |
/// | "Focal", "Aperture", "Distance"          | mm, f-number, m, above 0; the distance may be "inf"             |
///
/// Numbers have a point whatever the locale, and are limited to their range. An option whose text is missing, empty or
/// not understood has its default.
namespace fitted {

/// Lasting options are the defaults of later jobs and go from picture to picture; the others, typed facts and "Again",
/// are of one picture alone.
enum class Options { Lasting, All };

/// The options whose texts @p textOf returns, empty for those that are missing.
FitOptions Read(Options which, const std::function<QString(const QString &name)> &textOf);
/// Calls @p write for each lasting option, and for each of the others that is given.
void Write(Options which, const FitOptions &options,
           const std::function<void(const QString &name, const QString &text)> &write);
/// Adds "Profile", "Entries", "Assumed", "Done" and "Why".
void Write(const FitReport &report, QDomElement *element);

/// Gives @p destination the lasting options of @p source; the rest stays.
void CopyLasting(FittedRecord *destination, const FittedRecord &source);

} // namespace fitted
