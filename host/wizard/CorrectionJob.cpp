#include "CorrectionJob.h"

#include "app/HostApplication.h"
#include "gfl.h"

#include <QCoreApplication>

namespace {

/// Checks what is known before the run, with texts for the user.
class JobCheck {
    Q_DECLARE_TR_FUNCTIONS(CorrectionJob)
public:
    /// Returns why a picture cannot be corrected; empty if no problem is known.
    static QString Problem(const PlannedPicture &planned, const QString &problem, const Corrections &corrections)
    {
        if (!planned.rival.isEmpty())
            return tr("The corrected picture would replace that of \"%1\"").arg(planned.rival);
        if (!problem.isEmpty())
            return tr("Not a readable picture: %1").arg(problem);
        return corrections.Any() ? QString() : tr("No correction is switched on");
    }
};

} // namespace

std::vector<JobPicture> PrepareJob(HostApplication *application, KIPluginOne2One *process, const QStringList &files)
{
    std::vector<JobPicture> pictures;
    for (const PlannedPicture &planned : PlanOutputs(Named(files), {})) {
        const ImageDef &image = *application->ImageOf(planned.picture);
        JobPicture picture;
        picture.planned = planned;
        picture.pixels = qint64(image.nCols()) * image.nRows();
        picture.parameters = process->GetFileXmlParams(planned.picture);
        picture.problem = JobCheck::Problem(planned, application->ProblemOf(planned.picture),
                                            ReadParameters(picture.parameters).corrections);
        pictures.push_back(std::move(picture));
    }
    return pictures;
}

CorrectionJob::CorrectionJob(FittedCorrection *correction, KIPluginOne2One *process, std::vector<JobPicture> pictures,
                             ExistingOutput existing)
    : m_correction(correction), m_process(process), m_pictures(std::move(pictures)), m_existing(existing)
{
    qRegisterMetaType<PictureOutcome>("PictureOutcome");
}

CorrectionJob::~CorrectionJob()
{
    Cancel();
    wait();
}

void CorrectionJob::run()
{
    for (int i = 0; i < int(m_pictures.size()); ++i) {
        Result result;
        if (!isInterruptionRequested()) {
            Q_EMIT Begins(i);
            result = CorrectOrReport(m_pictures[std::size_t(i)]);
        }
        Q_EMIT Ended(i, result.outcome, result.why, result.profile);
    }
}

CorrectionJob::Result CorrectionJob::CorrectOrReport(const JobPicture &picture) const
{
    if (!picture.problem.isEmpty())
        return {PictureOutcome::Failed, picture.problem, QString()};
    if (m_existing == ExistingOutput::Skip && IsThere(picture.planned.output))
        return {PictureOutcome::Kept, QString(), QString()};
    try {
        return Correct(picture);
    } catch (...) {
        return {PictureOutcome::Failed, TextOfCurrentException(), QString()};
    }
}

/// Corrects a picture. Which of the chosen corrections are made depends on the profile; the result names the others.
CorrectionJob::Result CorrectionJob::Correct(const JobPicture &picture) const
{
    gflClearWarningText();
    const FittedCorrection::Result result =
        m_correction->Run(m_process, picture.planned, {picture.parameters, Corrections(), FitOptions()}, {m_existing});
    switch (result.outcome) {
    case FittedCorrection::Outcome::Kept: // the output is not from this run
        return {PictureOutcome::Kept, QString(), QString()};
    case FittedCorrection::Outcome::DoneBefore:
        return {PictureOutcome::DoneBefore, result.why, QString()};
    case FittedCorrection::Outcome::NoProfile:
        return {PictureOutcome::Failed,
                tr("No lens profile was chosen, and none was found for this picture: %1").arg(result.why), QString()};
    default:
        break;
    }
    QString why = result.ProfileLine(ShownProfileName(result.profile));
    if (const QString damage = QString::fromUtf8(gflLastWarningText()); !damage.isEmpty())
        why += QLatin1String("; ") + damage;
    return {PictureOutcome::Corrected, why, result.profile};
}
