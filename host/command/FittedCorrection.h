// One picture through the plug-in's fitted way: what is asked for, what came of it, and the line that says so.
#pragma once

#include "CommandLine.h"
#include "PictureFit.h"

#include <mutex>

class HostApplication;
class InterruptGuard;
class KIPluginOne2One;
class ParameterRecord;
struct PlannedPicture;

/// For all pictures of a run. Any thread, each with a process of its own.
class FittedCorrection {
public:
    enum class Outcome { Written, Kept, DoneBefore };
    struct Result {
        Outcome outcome = Outcome::Written;
        QString note; // profile, entries, assumptions and what was left out; or why the picture was skipped
    };

    /// @param folders  that the plug-in searches.
    FittedCorrection(const CorrectOptions &options, const QStringList &folders, HostApplication *application,
                     InterruptGuard *guard);

    /// Corrects the picture as RunPicture does. Throws KException with the reason, one line without the picture's name,
    /// if nothing is corrected, or if a correction that the user asked for isn't.
    Result Run(KIPluginOne2One *process, const PlannedPicture &planned);

private:
    /// The record's results after a run.
    struct Report {
        bool isThere = false; // else the plug-in knows no fitted corrections, or failed before it had decided
        QString profile, entries, assumed, why;
        Corrections done;
    };

    Report ReportOf(KIPluginOne2One *process, const ParameterRecord &record);
    void RequireAsked(const Report &report, const QString &picture) const;
    Corrections DoneBefore(const PictureFacts &facts) const;
    Result NothingDone(const Report &report, const QString &picture);
    QString WhyNoProfile(const Report &report, const PictureFacts &facts);

    const CorrectOptions &m_options;
    HostApplication *m_application;
    InterruptGuard *m_guard;
    const Corrections m_wanted; // what is asked for; if nothing is, all
    std::mutex m_mutex;         // of the plug-in's XML document, which all its elements share
    PictureFitter m_fitter;     // for what the record doesn't tell of a picture without a profile
};
