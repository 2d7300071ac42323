#include "CorrectRun.h"

#include "Console.h"
#include "KOmp.h"
#include "app/HostApplication.h"
#include "app/InterruptGuard.h"
#include "app/PictureRun.h"
#include "app/PictureThreads.h"
#include "app/PluginLoader.h"
#include "gfl.h"

#include <QFileInfo>
#include <QJsonDocument>
#include <QProcess>

#include <malloc.h>

namespace {

/// Makes malloc keep freed memory for the next picture: page faults would otherwise take a fifth of a run. All threads
/// share one heap, because each heap would keep the memory of its largest picture.
void KeepFreedMemory()
{
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, -1);
    mallopt(M_ARENA_MAX, 1);
}

} // namespace

CorrectRun::CorrectRun(const CorrectOptions &options, const QVector<PlannedPicture> &plan, HostApplication *application,
                       PictureCorrector *corrector, InterruptGuard *guard, Console *console)
    : m_options(options),
      m_plan(plan),
      m_application(application),
      m_corrector(corrector),
      m_guard(guard),
      m_console(console)
{
}

int CorrectRun::ShareProcessors() const
{
    const int wanted = m_options.jobs > 0 ? m_options.jobs : komp_num_threads;
    const int threads = qBound(1, wanted, qMax(1, m_plan.size()));
    komp_num_threads = qMax(1, komp_num_threads / threads);
    gflSetThreads(komp_num_threads);
    return threads;
}

ExitCode CorrectRun::CorrectAll(const PluginLoader &plugin, int threads)
{
    RefuseConflicts(); // prints, so the interrupt handler must not do so yet
    if (m_plan.size() > 1) {
        KeepFreedMemory();
        m_guard->FinishOnInterrupt([this] {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_console->Failure(QString(),
                               QStringLiteral("finishing the pictures in progress; interrupt again to end at once"));
        });
    }
    const ThreadProcesses processes(plugin, plugin.Process(), threads);
    m_corrector->Begin(processes.All().back());
    const int begun = CorrectInTurn(
        processes.All(), m_plan.size(), [this] { return m_guard->IsAskedToStop(); },
        [this](KIPluginOne2One *process, int index) { CorrectNext(process, index + 1); });
    m_guard->FinishOnInterrupt(nullptr);
    if (begun < m_plan.size())
        m_console->Failure(QString(),
                           QStringLiteral("interrupted: %1 of %2 pictures left; --skip-existing continues with them")
                               .arg(m_plan.size() - begun)
                               .arg(m_plan.size()));
    if (m_plan.size() != 1 && !m_options.quiet)
        m_console->Summary(m_counts);
    if (m_options.notify)
        Notify();
    return m_counts[PictureReport::Outcome::Failed] > 0 ? kSomeFailed : kAllDone;
}

/// Returns why the output conflicts with other pictures of the run; empty if it doesn't.
QString CorrectRun::ConflictOf(const PlannedPicture &planned) const
{
    if (planned.repeated)
        return QString();
    if (!planned.rival.isEmpty())
        return QStringLiteral("its output \"%1\" is also the output of \"%2\"").arg(planned.output, planned.rival);
    if (planned.lost.isEmpty() || m_options.rules.existing == ExistingOutput::Skip)
        return QString();
    return QStringLiteral("its output \"%1\" would replace the picture \"%2\"; choose another name or folder")
        .arg(planned.output, planned.lost);
}

/// Reports pictures whose output conflicts with other pictures, before any work is done.
void CorrectRun::RefuseConflicts()
{
    for (const PlannedPicture &planned : m_plan) {
        PictureReport report;
        report.picture = planned.asNamed;
        report.why = ConflictOf(planned);
        if (!report.why.isEmpty())
            Report(planned, report);
    }
}

/// Corrects one picture unless its output conflicts with others. @param number  of the picture, from 1.
void CorrectRun::CorrectNext(KIPluginOne2One *process, int number)
{
    const PlannedPicture &planned = m_plan[number - 1];
    if (!ConflictOf(planned).isEmpty())
        return;
    CorrectAndReport(process, number);
    if (!planned.repeated) // the same file, listed earlier, may still be in progress
        m_application->Forget(planned.picture);
}

void CorrectRun::CorrectAndReport(KIPluginOne2One *process, int number)
{
    const PlannedPicture &planned = m_plan[number - 1];
    PictureReport report;
    try {
        if (!m_options.quiet) {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_console->BeginProgress(number, m_plan.size(), planned.asNamed);
        }
        Correct(process, planned, &report);
        const bool tookWork =
            report.outcome == PictureReport::Outcome::Corrected || report.outcome == PictureReport::Outcome::Planned;
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_console->EndProgress(number, tookWork);
        Report(planned, report);
    } catch (...) { // usually out of memory
        const QString why = TextOfCurrentException();
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_console->EndProgress(number, /*tookWork=*/true);
        // The line doesn't name a corrected picture, because only its report failed. It still counts as a failure, so
        // that the exit code shows scripts that a report is missing.
        const bool isCorrected = report.outcome == PictureReport::Outcome::Corrected;
        m_console->Failure(isCorrected ? QString() : planned.asNamed, why);
        ++m_counts[PictureReport::Outcome::Failed];
    }
}

/// Fills in the report, even for a picture that fails.
void CorrectRun::Correct(KIPluginOne2One *process, const PlannedPicture &planned, PictureReport *report)
{
    QElapsedTimer timer;
    timer.start();
    try {
        report->picture = planned.asNamed;
        m_corrector->Correct(process, planned, report);
    } catch (...) {
        if (report->outcome == PictureReport::Outcome::Corrected)
            throw;
        report->outcome = PictureReport::Outcome::Failed;
        report->why = TextOfCurrentException();
    }
    report->seconds = static_cast<double>(timer.elapsed()) / 1000.0;
}

void CorrectRun::PrintNotes(const QString &picture, const PictureReport &report)
{
    for (const QString &note : report.notes)
        m_console->Note(picture, note);
    if (report.outcome == PictureReport::Outcome::Planned)
        m_console->Note(picture, QLatin1String("would correct ") + report.corrections.join(QLatin1String(", ")));
    if (report.outcome == PictureReport::Outcome::Skipped && m_options.dryRun)
        m_console->Note(picture, QLatin1String("would be skipped: ") + report.why);
}

/// Prints all lines about a picture together.
void CorrectRun::Report(const PlannedPicture &planned, const PictureReport &report)
{
    if (!report.facts.isEmpty())
        m_console->PrintError(OneLine(planned.asNamed) + QLatin1String(":\n") + Indented(report.facts));
    QString *const first = report.outcome == PictureReport::Outcome::Failed ? &m_firstFailure : &m_firstOtherReason;
    if (first->isEmpty() && !report.why.isEmpty())
        *first = QFileInfo(planned.asNamed).fileName() + QLatin1String(": ") + report.why;
    if (!m_options.quiet)
        PrintNotes(planned.asNamed, report);
    if (report.outcome == PictureReport::Outcome::Failed)
        m_console->Failure(planned.asNamed, report.why);
    if (m_options.json) {
        const QByteArray record = QJsonDocument(ToJson(report)).toJson(QJsonDocument::Compact);
        m_console->Print(QString::fromUtf8(record) + QLatin1Char('\n'));
    } else if (report.outcome == PictureReport::Outcome::Corrected
               || report.outcome == PictureReport::Outcome::Planned) {
        m_console->PrintName(planned.output);
    }
    ++m_counts[report.outcome];
}

/// Shows the counts with notify-send, if it is installed, because file managers don't show what the program prints.
void CorrectRun::Notify() const
{
    const QString title = m_counts.isEmpty() ? QStringLiteral("no pictures") : TextOf(m_counts);
    const QString reason = m_firstFailure.isEmpty() ? m_firstOtherReason : m_firstFailure;
    const QString body = OneLine(reason).toHtmlEscaped(); // notification texts may contain markup
    QProcess::startDetached(QStringLiteral("notify-send"),
                            {QStringLiteral("--icon=vitrelux"), QStringLiteral("--app-name=Vitrelux"),
                             QStringLiteral("--"), QStringLiteral("Vitrelux: ") + title, body});
}
