#include "CorrectionJob.h"

#include "KOmp.h"
#include "app/HostApplication.h"
#include "app/PictureThreads.h"
#include "gfl.h"

#include <QCoreApplication>
#include <QScopeGuard>

#include <algorithm>

namespace {

/// Check of pictures before the run, with texts for the user.
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

/// Returns the record's XML form with the format of the output. It is a copy in a separate document, because threads
/// must not share the document of the process object.
QDomElement WithFormat(const QDomElement &parameters, const QString &format)
{
    QVector<QPair<QString, QString>> options;
    const QDomNamedNodeMap attributes = parameters.attributes();
    for (int i = 0; i < attributes.count(); ++i)
        options.append({attributes.item(i).nodeName(), attributes.item(i).nodeValue()});
    options.append({QStringLiteral("Format"), format});
    return DescribeParameters(parameters.tagName(), ReadParameters(parameters), options);
}

} // namespace

std::vector<JobPicture> PrepareJob(HostApplication *application, KIPluginOne2One *process,
                                   const QVector<NamedPicture> &named, const JobOutput &output)
{
    std::vector<JobPicture> pictures;
    for (const PlannedPicture &planned :
         PlanOutputs(named, {output.folder, QStringLiteral("{name}") + OutputEnding(output.format)})) {
        const ImageDef &image = *application->ImageOf(planned.picture);
        JobPicture picture;
        picture.planned = planned;
        picture.pixels = qint64(image.nCols()) * image.nRows();
        picture.parameters = WithFormat(process->GetFileXmlParams(planned.picture), output.format);
        picture.bytes = BytesToCorrect(image, CorrectorOf(picture.parameters));
        picture.problem = JobCheck::Problem(planned, application->ProblemOf(planned.picture),
                                            ReadParameters(picture.parameters).corrections);
        pictures.push_back(std::move(picture));
    }
    return pictures;
}

/// Scope in which Cancel() interrupts the thread that created the object.
class CorrectionJob::Interruptible {
public:
    explicit Interruptible(CorrectionJob *job) : m_job(job)
    {
        const std::lock_guard<std::mutex> lock(job->m_mutex);
        job->m_working.insert(QThread::currentThread());
    }
    ~Interruptible()
    {
        const std::lock_guard<std::mutex> lock(m_job->m_mutex);
        m_job->m_working.erase(QThread::currentThread());
    }
    Interruptible(const Interruptible &) = delete;
    Interruptible &operator=(const Interruptible &) = delete;

private:
    CorrectionJob *m_job;
};

CorrectionJob::CorrectionJob(FittedCorrection *correction, const std::vector<KIPluginOne2One *> &processes,
                             std::vector<JobPicture> pictures, ExistingOutput existing)
    : m_correction(correction),
      m_processes(processes),
      m_pictures(std::move(pictures)),
      m_existing(existing),
      m_memory(AvailableBytes())
{
    qRegisterMetaType<PictureOutcome>("PictureOutcome");
    m_processes.resize(std::min(m_processes.size(), std::max<std::size_t>(1, m_pictures.size())));
}

CorrectionJob::~CorrectionJob()
{
    Cancel();
    wait();
}

void CorrectionJob::Cancel()
{
    m_canceled = true;
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (QThread *thread : m_working)
        thread->requestInterruption();
}

void CorrectionJob::run()
{
    // The processors are divided among the pictures. Previews, which use all of them, are not rendered meanwhile.
    gflSetThreads(std::max(1, komp_num_threads / int(m_processes.size())));
    const auto restore = qScopeGuard([] { gflSetThreads(komp_num_threads); });
    const int count = int(m_pictures.size());
    const int begun = CorrectInTurn(
        m_processes, count, [this] { return m_canceled.load(); },
        [this](KIPluginOne2One *process, int index) {
            Q_EMIT Begins(index);
            const Result result = CorrectOrReport(process, m_pictures[std::size_t(index)]);
            Q_EMIT Ended(index, result.outcome, result.why, result.profile);
        });
    for (int i = begun; i < count; ++i)
        Q_EMIT Ended(i, PictureOutcome::LeftOut, QString(), QString());
}

CorrectionJob::Result CorrectionJob::CorrectOrReport(KIPluginOne2One *process, const JobPicture &picture)
{
    if (!picture.problem.isEmpty())
        return {PictureOutcome::Failed, picture.problem, QString()};
    if (m_existing == ExistingOutput::Skip && IsThere(picture.planned.output))
        return {PictureOutcome::Kept, QString(), QString()};
    try {
        const MemoryBudget::Share share(&m_memory, picture.bytes);
        const Interruptible interruptible(this);
        return m_canceled ? Result() : Correct(process, picture);
    } catch (...) {
        if (m_canceled)
            return {};
        return {PictureOutcome::Failed, TextOfCurrentException(), QString()};
    }
}

/// Corrects a picture. Which of the chosen corrections are made depends on the profile; the result names the others.
CorrectionJob::Result CorrectionJob::Correct(KIPluginOne2One *process, const JobPicture &picture)
{
    gflClearWarningText();
    const FittedCorrection::Result result =
        m_correction->Run(process, picture.planned, {picture.parameters, Corrections(), FitOptions()}, {m_existing});
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
