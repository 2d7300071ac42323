// Part of a parameter record that only fitted corrections have, and its text form.
#pragma once

#include "FitOptions.h"
#include "ResultFile.h"

#include <QDomElement>

#include <functional>
#include <optional>

/// Report of the last run, for users and hosts.
struct FitReport {
    QString profile; // path, or "lensfun:MAKER/LENS"
    QString entries; // the entries used, with their weights
    QString assumed; // assumptions made because the picture's data is incomplete
    QString done;    // corrections made; empty: none
    QString why;     // why not all requested corrections were made; empty if all were
};

/// Fitted part of a record; a record without it is plain. Corrections and profile are fields of the record itself.
struct FittedRecord {
    FitOptions options;
    ResultFile file;                 // belongs to one picture: neither stored as a default nor copied
    std::optional<FitReport> report; // nullopt before the first run
};

/// Option names in the XML form of a record, which are also the keys in the stored settings.
///
/// | name                                       | text                                                            |
/// |--------------------------------------------|-----------------------------------------------------------------|
/// | "Framing"                                  | "fill", "keep", "all", or a zoom factor of 0.5 to 2             |
/// | "Sampling"                                 | "sharp", "bilinear"                                             |
/// | "Projection"                               | "rectilinear", "equidistant", "stereographic", "equisolid"      |
/// | "AmountDisto", "AmountCA", "AmountFalloff" | a factor of 0 to 2                                              |
/// | "Source"                                   | "auto", "lcp", "lensfun"                                        |
/// | "Again"                                    | "1" for yes; anything else means no                             |
/// | "Lens", "Body"                             | a name                                                          |
/// | "Focal", "Aperture", "Distance"            | mm, f-number, m, above 0; the distance may be "inf"             |
///
/// The decimal separator is a period in every locale. Numbers are clamped to their range. Options get their defaults if
/// their text is missing, empty or invalid.
namespace fitted {

/// Lasting options are stored as defaults for later jobs and copied from picture to picture. The others, which are
/// facts typed by the user and "Again", belong to one picture.
enum class Options { Lasting, All };

/// Reads options from the texts that @p textOf returns; an empty text means that the option is missing.
FitOptions Read(Options which, const std::function<QString(const QString &name)> &textOf);
/// Calls @p write for each lasting option and, with Options::All, for each other option that has a value.
void Write(Options which, const FitOptions &options,
           const std::function<void(const QString &name, const QString &text)> &write);
/// Sets the attributes "Profile", "Entries", "Assumed", "Done" and "Why".
void Write(const FitReport &report, QDomElement *element);

/// Copies the lasting options of @p source to @p destination and leaves the rest unchanged.
void CopyLasting(FittedRecord *destination, const FittedRecord &source);

} // namespace fitted
