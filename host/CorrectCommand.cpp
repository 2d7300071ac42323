#include "CorrectCommand.h"

#include "Console.h"
#include "HostApplication.h"
#include "InterruptGuard.h"
#include "KException.h"
#include "PictureRun.h"
#include "PluginLoader.h"
#include "ProfileUse.h"

namespace {

enum class Outcome { Corrected, Skipped };

[[noreturn]] void Fail(const QString &why)
{
    throw KException(why, KPlace());
}

/// One run over all pictures. No wizard page is shown, so the record of each picture is all that the process gets:
/// SetFiles and OnValidatePage belong to the page.
class CorrectRun {
public:
    CorrectRun(const CorrectOptions &options, HostApplication *application, KIPluginOne2One *process,
               InterruptGuard *guard, Console *console)
        : m_options(options),
          m_profile(options.profile.isEmpty() ? ProfileUse() : JudgeProfile(options.profile)),
          m_application(application),
          m_process(process),
          m_guard(guard),
          m_console(console)
    {
    }

    ExitCode All();

private:
    Outcome One(const PlannedPicture &planned);
    Corrections UsableCorrections() const;
    void CheckPicture(const PlannedPicture &planned);

    const CorrectOptions &m_options;
    const ProfileUse m_profile; // of all pictures alike
    HostApplication *m_application;
    KIPluginOne2One *m_process;
    InterruptGuard *m_guard;
    Console *m_console;
};

ExitCode CorrectRun::All()
{
    const QVector<PlannedPicture> plan = PlanOutputs(m_options.files, m_options.outputFolder);
    int corrected = 0, skipped = 0, failed = 0;
    for (const PlannedPicture &planned : plan) {
        m_console->BeginProgress(corrected + skipped + failed + 1, plan.size(), planned.asNamed);
        try {
            const Outcome outcome = One(planned);
            m_console->EndProgress();
            if (outcome == Outcome::Corrected)
                m_console->Print(planned.output + QLatin1Char('\n'));
            ++(outcome == Outcome::Corrected ? corrected : skipped);
        } catch (...) {
            m_console->EndProgress();
            m_console->Failure(planned.asNamed, TextOfCurrentException());
            ++failed;
        }
    }
    m_console->Summary(corrected, skipped, failed);
    return failed ? kSomeFailed : kAllDone;
}

Outcome CorrectRun::One(const PlannedPicture &planned)
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
    const Corrections corrections = UsableCorrections();
    CheckPicture(planned);

    const ParameterRecord record(m_process, DescribeParameters(m_process->Name(), {corrections, m_profile.path}));
    RunPicture(m_application, m_process, record, planned, m_options.existing, m_guard);
    return Outcome::Corrected;
}

Corrections CorrectRun::UsableCorrections() const
{
    if (m_options.profile.isEmpty())
        Fail(QStringLiteral("has no lens profile; name one with --profile"));
    QString why = m_profile.problem;
    const Corrections corrections = why.isEmpty() ? ChooseCorrections(m_profile, m_options.asked, &why) : Corrections();
    if (!why.isEmpty())
        Fail(QStringLiteral("profile \"%1\": %2").arg(m_options.profile, why));
    return corrections;
}

void CorrectRun::CheckPicture(const PlannedPicture &planned)
{
    const QString problem = m_application->ProblemOf(planned.picture);
    if (!problem.isEmpty())
        Fail(problem);
    const ImageDef *image = m_application->ImageOf(planned.picture);
    const QString mismatch = SizeMismatch(m_profile, image->nCols(), image->nRows());
    if (!mismatch.isEmpty())
        m_console->Note(planned.asNamed, mismatch);
    if (!m_options.asked.Any() && !m_profile.flaws.isEmpty()) {
        m_console->Note(planned.asNamed,
                        QStringLiteral("profile \"%1\": not corrected: %2")
                            .arg(m_options.profile, m_profile.flaws.join(QStringLiteral(", "))));
    }
}

} // namespace

ExitCode RunCorrect(const CorrectOptions &options, Console *console)
{
    InterruptGuard guard;
    ChooseDisplayless();
    char name[] = "vitrelux"; // and none of the user's arguments: they are ours to read
    char *argv[] = {name, nullptr};
    int argc = 1;
    HostApplication application(argc, argv);
    const PluginLoader plugin(options.plugin);
    if (!plugin.Process()) {
        console->Failure(QString(), plugin.Problem());
        return kSomeFailed;
    }
    return CorrectRun(options, &application, plugin.Process(), &guard, console).All();
}
