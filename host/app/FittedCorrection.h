// Fitted correction of one picture by the plug-in, for the command line and the wizard.
#pragma once

#include "FitOptions.h"
#include "PictureFit.h"
#include "PictureRun.h"

#include <QCoreApplication>
#include <QDomElement>

#include <mutex>

/// Returns the names of corrections in the plug-in's records: "distortion", "lateral color", "vignetting".
QStringList NamesInRecord(const Corrections &corrections);

/// A request for one picture.
struct FittedRequest {
    QDomElement parameters; // XML form of the record, with the options as further attributes
    Corrections required;   // without these the picture fails, unless they were made before; usually none
    FitOptions fit;         // the same options, for fits by the host: in Plan, and to find near misses
};

/// Corrector for the pictures of a run. Any thread may call it, each with a separate process object.
class FittedCorrection {
    Q_DECLARE_TR_FUNCTIONS(FittedCorrection)
public:
    enum class Outcome {
        Written,
        Planned,    // by Plan
        Kept,       // with ExistingOutput::Skip: another program wrote the output in the meantime
        DoneBefore, // skipped: the picture was corrected before
        NoProfile   // none chosen, none found
    };
    struct Result {
        Outcome outcome = Outcome::Written;
        QString profile; // path, or "lensfun:MAKER/LENS"
        QString entries, assumed;
        /// The reason why something was left out, what corrected the picture before, or why there is no profile, with
        /// the nearest misses.
        QString why;
        Corrections made;
        /// Returns profile, entries, assumptions and anything left out in one line, with @p shown as the profile's
        /// name.
        QString ProfileLine(const QString &shown) const;
    };

    /// @param folders  the folders that the plug-in searches.
    FittedCorrection(const QStringList &folders, HostApplication *application, InterruptGuard *guard);

    /// Corrects the picture like RunPicture. Throws KException with the reason, one line without the picture's name,
    /// if a profile cannot be used, or if a required correction is not made.
    Result Run(KIPluginOne2One *process, const PlannedPicture &planned, const FittedRequest &request,
               const OutputRules &rules);

    /// Returns what Run would do, and throws if the fit would make Run fail. Decodes no pixels and writes nothing.
    Result Plan(const PlannedPicture &planned, const FittedRequest &request);

private:
    /// Results read from the record after a run.
    struct Report {
        bool isThere = false; // false: the plug-in doesn't support fitted corrections, or failed before it fitted
        QString profile, entries, assumed, why;
        Corrections done;
    };

    Report ReportOf(KIPluginOne2One *process, const ParameterRecord &record);
    static void RequireMade(const Report &report, const QString &picture, const FittedRequest &request);
    Result NothingDone(const Report &report, const QString &picture, const FittedRequest &request);
    QString WhyNoProfile(const Report &report, const PictureFacts &facts, const FitOptions &options);

    HostApplication *m_application;
    InterruptGuard *m_guard;
    std::mutex m_mutex;     // guards the plug-in's XML document, which all its elements share
    PictureFitter m_fitter; // for Plan, and to find near misses, which the plug-in doesn't report
};
