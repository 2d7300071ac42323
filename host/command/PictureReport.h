// The result for one picture of a run, as a record for scripts.
#pragma once

#include <QJsonObject>
#include <QMap>
#include <QString>
#include <QStringList>

struct PictureReport {
    /// The result for the picture. A dry run gives Planned instead of Corrected.
    enum class Outcome { Corrected, Planned, Skipped, CorrectedBefore, Failed };

    QString picture; // as the user named it
    Outcome outcome = Outcome::Failed;
    QString output;          // absolute path; empty if the picture was listed before or its output conflicts
    QString why;             // why it was skipped or failed, or what was left out; may be empty
    QString camera, lens;    // from the metadata; empty: not named, or a plain run
    QString profile;         // path, or "lensfun:MAKER/LENS"; empty: none
    QString entries;         // of the profile, with weights
    QStringList assumed;     // one line each
    QStringList corrections; // made, or planned: "distortion", "lateral color", "vignetting"
    QStringList notes;       // lines printed about this picture, except failures
    QString facts;           // for --verbose, several lines; not in the record
    double seconds = 0.0;
};

/// Returns the outcome's name in records and summaries: "corrected", "planned", "skipped", "corrected before",
/// "failed".
QString NameOf(PictureReport::Outcome outcome);

/// Returns counts as "3 corrected, 1 failed".
QString TextOf(const QMap<PictureReport::Outcome, int> &counts);

/// Returns the report as in docs/correct.schema.json. Empty texts and lists are left out.
QJsonObject ToJson(const PictureReport &report);

/// Reads a record. @return false if @p object is not such a record; unknown keys are ignored.
bool FromJson(const QJsonObject &object, PictureReport *report);
