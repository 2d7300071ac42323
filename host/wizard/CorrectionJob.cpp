#include "CorrectionJob.h"

#include "KException.h"
#include "app/HostApplication.h"
#include "app/ProfileUse.h"

#include <QCoreApplication>
#include <QHash>

namespace {

/// Checks whether pictures can be corrected, with texts for the user. One object reads each profile once.
class JobChecks {
    Q_DECLARE_TR_FUNCTIONS(CorrectionJob)
public:
    /// Returns why a picture cannot be corrected; empty if it can.
    QString PictureProblem(const PlannedPicture &planned, const QString &problem, const PictureParameters &parameters)
    {
        if (!planned.rival.isEmpty())
            return tr("The corrected picture would replace that of \"%1\"").arg(planned.rival);
        if (!problem.isEmpty())
            return tr("Not a readable picture: %1").arg(problem);
        if (!parameters.corrections.Any())
            return tr("No correction is switched on");
        return parameters.profile.isEmpty() ? QString() : ProfileProblem(parameters);
    }

    QString ProfileProblem(const PictureParameters &parameters)
    {
        const ProfileUse &use = UseOf(parameters.profile);
        QString why = use.problem;
        if (why.isEmpty())
            ChooseCorrections(use, parameters.corrections, &why);
        return why.isEmpty() ? QString() : tr("The lens profile \"%1\" can't be used: %2").arg(use.path, why);
    }

    QString SizeNote(const ImageDef &image, const PictureParameters &parameters)
    {
        if (parameters.profile.isEmpty())
            return QString(); // unknown until the lookup
        return SizeMismatch(UseOf(parameters.profile), image.nCols(), image.nRows());
    }

    /// Returns the note after the name of a profile that was found, not chosen: it is new to the user.
    static QString NoteWithProfile(const QString &note, const PictureParameters &parameters)
    {
        const QString profile = tr("profile \"%1\"").arg(parameters.profile);
        return note.isEmpty() ? profile : profile + QLatin1String("; ") + note;
    }

private:
    const ProfileUse &UseOf(const QString &profile)
    {
        auto found = m_profiles.find(profile);
        if (found == m_profiles.end())
            found = m_profiles.insert(profile, JudgeProfile(profile));
        return *found;
    }

    QHash<QString, ProfileUse> m_profiles;
};

} // namespace

std::vector<JobPicture> PrepareJob(HostApplication *application, KIPluginOne2One *process, const QStringList &files)
{
    std::vector<JobPicture> pictures;
    JobChecks checks;
    for (const PlannedPicture &planned : PlanOutputs(files, QString())) {
        const ImageDef &image = *application->ImageOf(planned.picture);
        const PictureParameters parameters = ReadParameters(process->GetFileXmlParams(planned.picture));
        JobPicture picture;
        picture.planned = planned;
        picture.pixels = qint64(image.nCols()) * image.nRows();
        picture.problem = checks.PictureProblem(planned, application->ProblemOf(planned.picture), parameters);
        picture.parameters = parameters;
        if (picture.problem.isEmpty())
            picture.note = checks.SizeNote(image, parameters);
        pictures.push_back(std::move(picture));
    }
    return pictures;
}

CorrectionJob::CorrectionJob(HostApplication *application, KIPluginOne2One *process, FindProfile findProfile,
                             std::vector<JobPicture> pictures, ExistingOutput existing, InterruptGuard *guard)
    : m_application(application),
      m_process(process),
      m_findProfile(std::move(findProfile)),
      m_pictures(std::move(pictures)),
      m_existing(existing),
      m_guard(guard)
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
        QString why;
        PictureOutcome outcome = PictureOutcome::LeftOut;
        if (!isInterruptionRequested()) {
            Q_EMIT Begins(i);
            outcome = CorrectOrReport(m_pictures[std::size_t(i)], &why);
        }
        Q_EMIT Ended(i, outcome, why);
    }
}

PictureOutcome CorrectionJob::CorrectOrReport(const JobPicture &picture, QString *why) const
{
    if (!picture.problem.isEmpty()) {
        *why = picture.problem;
        return PictureOutcome::Failed;
    }
    if (m_existing == ExistingOutput::Skip && IsThere(picture.planned.output))
        return PictureOutcome::Kept;
    try {
        return Correct(picture, why);
    } catch (...) {
        *why = TextOfCurrentException();
        return PictureOutcome::Failed;
    }
}

/// Corrects a picture. @param note receives a note on the result for the user. Throws the text of a failure.
PictureOutcome CorrectionJob::Correct(const JobPicture &picture, QString *note) const
{
    PictureParameters parameters = picture.parameters;
    *note = picture.note;
    if (parameters.profile.isEmpty()) {
        if (m_findProfile)
            parameters.profile = m_findProfile(picture.planned.picture);
        if (parameters.profile.isEmpty())
            throw KException(tr("No lens profile was chosen, and none was found for this picture"), KPlace());
        JobChecks checks;
        const QString problem = checks.ProfileProblem(parameters);
        if (!problem.isEmpty())
            throw KException(problem, KPlace());
        *note = JobChecks::NoteWithProfile(
            checks.SizeNote(*m_application->ImageOf(picture.planned.picture), parameters), parameters);
    }
    const ParameterRecord record(m_process, DescribeParameters(m_process->Name(), parameters));
    const RunResult result = RunPicture(m_application, m_process, record, picture.planned, m_existing, m_guard);
    if (result == RunResult::Written)
        return PictureOutcome::Corrected;
    note->clear(); // the output is not from this run
    return PictureOutcome::Kept;
}
