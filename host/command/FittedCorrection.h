// Fitted correction of one picture by the plug-in: the request, the result, and the line that reports it.
#pragma once

#include "CommandLine.h"
#include "PictureFit.h"

#include <mutex>

class HostApplication;
class InterruptGuard;
class KIPluginOne2One;
class ParameterRecord;
struct PlannedPicture;

/// Corrector for all pictures of a run. Any thread, each with a separate process object.
class FittedCorrection {
public:
    enum class Outcome { Written, Kept, DoneBefore };
    struct Result {
        Outcome outcome = Outcome::Written;
        QString note; // profile, entries, assumptions and anything left out; or why the picture was skipped
    };

    /// @param folders  the profile folders that the plug-in searches.
    FittedCorrection(const CorrectOptions &options, const QStringList &folders, HostApplication *application,
                     InterruptGuard *guard);

    /// Corrects the picture like RunPicture. Throws KException with the reason, one line without the picture's name, if
    /// nothing is corrected or if a correction that the user requested is not made.
    Result Run(KIPluginOne2One *process, const PlannedPicture &planned);

private:
    /// Results read from the record after a run.
    struct Report {
        bool isThere = false; // false: the plug-in has no fitted corrections, or failed before it decided
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
    const Corrections m_wanted; // the requested ones; all if none are
    std::mutex m_mutex;         // guards the plug-in's XML document, which all its elements share
    PictureFitter m_fitter;     // for details about a picture without a profile, which the record lacks
};
