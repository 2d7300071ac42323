#include "CorrectCommand.h"

#include "Console.h"
#include "FittedCorrection.h"
#include "KException.h"
#include "KOmp.h"
#include "app/FactLines.h"
#include "app/HostApplication.h"
#include "app/InterruptGuard.h"
#include "app/MemoryBudget.h"
#include "app/PictureRun.h"
#include "app/PluginLoader.h"
#include "app/ProfileLookup.h"
#include "app/ProfileUse.h"
#include "app/SearchedFolders.h"
#include "gfl.h"

#include <QHash>

#include <malloc.h>

#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace {

enum class Outcome { Corrected, Skipped, DoneBefore };

[[noreturn]] void Fail(const QString &why)
{
    throw KException(why, KPlace());
}

/// One run over all pictures. No wizard page is shown, so the record of each picture is all that the process gets:
/// SetFiles and OnValidatePage belong to the page.
///
/// Pictures are corrected on several threads, each with a process of its own; whichever is free takes the next one.
class CorrectRun {
public:
    CorrectRun(const CorrectOptions &options, HostApplication *application, ProfileLookup *lookup,
               const SearchedFolders *folders, InterruptGuard *guard, Console *console)
        : m_options(options),
          m_application(application),
          m_lookup(lookup),
          m_folders(folders),
          m_guard(guard),
          m_console(console),
          m_plan(PlanOutputs(options.files, options.outputFolder)),
          m_memory(options.jobs > 0 ? 0 : AvailableBytes())
    {
    }

    /// Threads to work on. Their own threads share the processors, so the plug-in is to be loaded after this.
    int ShareProcessors() const;
    ExitCode All(const PluginLoader &plugin, int threads);

private:
    void Work(KIPluginOne2One *process);
    void WorkOn(KIPluginOne2One *process, int number);
    Outcome One(KIPluginOne2One *process, const PlannedPicture &planned, QString *note);
    Outcome Plain(KIPluginOne2One *process, const PlannedPicture &planned);
    Outcome Fitted(KIPluginOne2One *process, const PlannedPicture &planned, QString *note);
    QString ProfileOf(const PlannedPicture &planned);
    const ProfileUse &UseOf(const QString &profile);
    Corrections UsableCorrections(const QString &name, const ProfileUse &profile) const;
    void TellMismatch(const PlannedPicture &planned, const QString &name, const ProfileUse &profile);

    const CorrectOptions &m_options;
    HostApplication *m_application;
    ProfileLookup *m_lookup;                    // null: the profile is named, or fitted
    const SearchedFolders *m_folders;           // null: plain
    std::unique_ptr<FittedCorrection> m_fitted; // null: plain
    InterruptGuard *m_guard;
    Console *m_console;
    const QVector<PlannedPicture> m_plan;
    MemoryBudget m_memory;
    std::mutex m_mutex;                         // of what follows, of the lookup and of the console
    KIPluginOne2One *m_lookupProcess = nullptr; // the last one made: its folder of profiles is the one that stands
    QHash<QString, ProfileUse> m_profiles;      // by name: each is read once
    int m_begun = 0;
    int m_corrected = 0, m_skipped = 0, m_correctedBefore = 0, m_failed = 0;
};

int CorrectRun::ShareProcessors() const
{
    const int wanted = m_options.jobs > 0 ? m_options.jobs : komp_num_threads;
    const int threads = qBound(1, wanted, qMax(1, m_plan.size()));
    komp_num_threads = qMax(1, komp_num_threads / threads);
    gflSetThreads(komp_num_threads);
    return threads;
}

/// Memory that is freed is kept for the next picture: its pages cost a fifth of a run when the system has to make them
/// anew. They stay in one heap, since threads with heaps of their own would each keep their share.
void KeepFreedMemory()
{
    mallopt(M_MMAP_MAX, 0);
    mallopt(M_TRIM_THRESHOLD, -1);
    mallopt(M_ARENA_MAX, 1);
}

ExitCode CorrectRun::All(const PluginLoader &plugin, int threads)
{
    if (m_plan.size() > 1)
        KeepFreedMemory();
    m_lookupProcess = plugin.Process();
    if (m_folders)
        m_fitted = std::make_unique<FittedCorrection>(m_options, m_folders->All(), m_application, m_guard);
    std::vector<std::unique_ptr<QObject>> made;
    std::vector<KIPluginOne2One *> processes;
    for (int i = 1; i < threads; ++i) {
        made.push_back(plugin.MakeProcess());
        if (auto *process = qobject_cast<KIPluginOne2One *>(made.back().get()))
            processes.push_back(m_lookupProcess = process);
    }
    std::vector<std::thread> others;
    try {
        for (KIPluginOne2One *process : processes)
            others.emplace_back(&CorrectRun::Work, this, process);
    } catch (const std::system_error &) {
        // As many as the system grants; this one works in any case.
    }
    Work(plugin.Process());
    for (std::thread &other : others)
        other.join();
    m_console->Summary(m_corrected, m_skipped, m_correctedBefore, m_failed);
    return m_failed ? kSomeFailed : kAllDone;
}

void CorrectRun::Work(KIPluginOne2One *process)
{
    for (;;) {
        int number = 0;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            if (m_begun == m_plan.size())
                return;
            number = ++m_begun;
        }
        WorkOn(process, number);
        if (!m_plan[number - 1].repeated) // the first of that name may still need it
            m_application->Forget(m_plan[number - 1].picture);
    }
}

/// @param number  of the picture, from 1.
void CorrectRun::WorkOn(KIPluginOne2One *process, int number)
{
    const PlannedPicture &planned = m_plan[number - 1];
    bool isCorrected = false; // what is left is to tell it
    try {
        gflClearWarningText();
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_console->BeginProgress(number, m_plan.size(), planned.asNamed);
        }
        QString note;
        const Outcome outcome = One(process, planned, &note);
        isCorrected = outcome == Outcome::Corrected;
        const QString warning = QString::fromUtf8(gflLastWarningText());
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!note.isEmpty())
            m_console->Note(planned.asNamed, note);
        m_console->EndProgress(number);
        if (outcome == Outcome::Corrected)
            m_console->PrintName(planned.output);
        if (outcome == Outcome::Corrected && !warning.isEmpty())
            m_console->Note(planned.asNamed, warning);
        ++(outcome == Outcome::Corrected ? m_corrected : outcome == Outcome::Skipped ? m_skipped : m_correctedBefore);
    } catch (...) {
        const QString why = TextOfCurrentException();
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_console->EndProgress(number);
        m_console->Failure(isCorrected ? QString() : planned.asNamed, why);
        ++m_failed;
    }
}

/// @param note  receives one to tell with the outcome.
Outcome CorrectRun::One(KIPluginOne2One *process, const PlannedPicture &planned, QString *note)
{
    if (planned.repeated)
        return Outcome::Skipped;
    if (!planned.rival.isEmpty())
        Fail(QStringLiteral("its output \"%1\" is that of \"%2\" already").arg(planned.output, planned.rival));
    if (m_options.existing != ExistingOutput::Overwrite && IsThere(planned.output)) {
        if (m_options.existing == ExistingOutput::Skip)
            return Outcome::Skipped;
        Fail(QStringLiteral("output \"%1\" exists; --overwrite replaces it").arg(planned.output));
    }
    const QString problem = m_application->ProblemOf(planned.picture);
    if (!problem.isEmpty())
        Fail(problem);
    return m_fitted ? Fitted(process, planned, note) : Plain(process, planned);
}

Outcome CorrectRun::Plain(KIPluginOne2One *process, const PlannedPicture &planned)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    const QString name = ProfileOf(planned);
    const ProfileUse profile = UseOf(name);
    const Corrections corrections = UsableCorrections(name, profile);
    TellMismatch(planned, name, profile);
    lock.unlock();

    const ImageDef *image = m_application->ImageOf(planned.picture);
    const MemoryBudget::Share share(&m_memory, BytesToCorrect(image->nCols(), image->nRows()));
    const ParameterRecord record(process, DescribeParameters(process->Name(), {corrections, profile.path}));
    const RunResult result = RunPicture(m_application, process, record, planned, m_options.existing, m_guard);
    return result == RunResult::Written ? Outcome::Corrected : Outcome::Skipped;
}

Outcome CorrectRun::Fitted(KIPluginOne2One *process, const PlannedPicture &planned, QString *note)
{
    if (!m_folders->Problem().isEmpty())
        Fail(m_folders->Problem());
    if (m_options.verbose) {
        const QString facts = FactLines(ReadPictureFacts(planned.picture, nullptr));
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_console->PrintError(OneLine(planned.asNamed) + QLatin1String(":\n") + Indented(facts));
    }
    const ImageDef *image = m_application->ImageOf(planned.picture);
    const MemoryBudget::Share share(&m_memory, BytesToCorrect(image->nCols(), image->nRows()));
    const FittedCorrection::Result result = m_fitted->Run(process, planned);
    *note = result.note;
    switch (result.outcome) {
    case FittedCorrection::Outcome::Written:
        return Outcome::Corrected;
    case FittedCorrection::Outcome::Kept:
        return Outcome::Skipped;
    default:
        return Outcome::DoneBefore;
    }
}

/// The profile as named, or the one that is found for the picture, which is told.
QString CorrectRun::ProfileOf(const PlannedPicture &planned)
{
    if (!m_options.profile.isEmpty())
        return m_options.profile;
    const ProfileLookup::Answer answer = m_lookup->Find(m_lookupProcess, planned.picture);
    if (answer.profile.isEmpty())
        Fail(QStringLiteral("has no lens profile, name one with --profile: %1").arg(answer.why));
    m_console->Note(planned.asNamed, QStringLiteral("profile \"%1\"").arg(answer.profile));
    return answer.profile;
}

const ProfileUse &CorrectRun::UseOf(const QString &profile)
{
    auto found = m_profiles.find(profile);
    if (found == m_profiles.end())
        found = m_profiles.insert(profile, JudgeProfile(profile));
    return *found;
}

Corrections CorrectRun::UsableCorrections(const QString &name, const ProfileUse &profile) const
{
    QString why = profile.problem;
    const Corrections corrections = why.isEmpty() ? ChooseCorrections(profile, m_options.asked, &why) : Corrections();
    if (!why.isEmpty())
        Fail(QStringLiteral("profile \"%1\": %2").arg(name, why));
    return corrections;
}

void CorrectRun::TellMismatch(const PlannedPicture &planned, const QString &name, const ProfileUse &profile)
{
    const ImageDef *image = m_application->ImageOf(planned.picture);
    const QString mismatch = SizeMismatch(profile, image->nCols(), image->nRows());
    if (!mismatch.isEmpty())
        m_console->Note(planned.asNamed, mismatch);
    if (!m_options.asked.Any() && !profile.flaws.isEmpty()) {
        m_console->Note(
            planned.asNamed,
            QStringLiteral("profile \"%1\": not corrected: %2").arg(name, profile.flaws.join(QStringLiteral(", "))));
    }
}

} // namespace

ExitCode RunCorrect(const CorrectOptions &options, Console *console)
{
    InterruptGuard guard;
    ChooseDisplayless();
    const CommandApplication application;
    if (!application->SettingsProblem().isEmpty())
        console->Note(QString(), application->SettingsProblem());
    std::unique_ptr<ProfileLookup> lookup;
    if (options.plain && options.profile.isEmpty())
        lookup = std::make_unique<ProfileLookup>(application.Get(), options.lensPath, &guard);
    std::unique_ptr<SearchedFolders> folders;
    if (!options.plain)
        folders = std::make_unique<SearchedFolders>(application.Get(), options.lensPath);
    CorrectRun run(options, application.Get(), lookup.get(), folders.get(), &guard, console);
    const int threads = run.ShareProcessors();
    const PluginLoader plugin(options.plugin, options.plain ? CorrectionMode::Plain : CorrectionMode::Fitted);
    if (!plugin.Process()) {
        console->Failure(QString(), plugin.Problem());
        return kSomeFailed;
    }
    return run.All(plugin, threads);
}
