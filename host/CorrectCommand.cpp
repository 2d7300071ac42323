#include "CorrectCommand.h"

#include "Console.h"
#include "HostApplication.h"
#include "InterruptGuard.h"
#include "KException.h"
#include "PictureRun.h"
#include "PluginLoader.h"
#include "ProfileLookup.h"
#include "ProfileUse.h"

#include <QHash>

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
    CorrectRun(const CorrectOptions &options, HostApplication *application, ProfileLookup *lookup,
               KIPluginOne2One *process, InterruptGuard *guard, Console *console)
        : m_options(options),
          m_application(application),
          m_lookup(lookup),
          m_process(process),
          m_guard(guard),
          m_console(console)
    {
    }

    ExitCode All();

private:
    Outcome One(const PlannedPicture &planned);
    QString ProfileOf(const PlannedPicture &planned);
    const ProfileUse &UseOf(const QString &profile);
    Corrections UsableCorrections(const QString &name, const ProfileUse &profile) const;
    void TellMismatch(const PlannedPicture &planned, const QString &name, const ProfileUse &profile);

    const CorrectOptions &m_options;
    QHash<QString, ProfileUse> m_profiles; // by name: each is read once
    HostApplication *m_application;
    ProfileLookup *m_lookup; // null: the profile is named
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
        m_application->ForgetImages(); // each has its turn once
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
    const QString problem = m_application->ProblemOf(planned.picture);
    if (!problem.isEmpty())
        Fail(problem);
    const QString name = ProfileOf(planned);
    const ProfileUse &profile = UseOf(name);
    const Corrections corrections = UsableCorrections(name, profile);
    TellMismatch(planned, name, profile);

    const ParameterRecord record(m_process, DescribeParameters(m_process->Name(), {corrections, profile.path}));
    RunPicture(m_application, m_process, record, planned, m_options.existing, m_guard);
    return Outcome::Corrected;
}

/// The profile as named, or the one that is found for the picture, which is told.
QString CorrectRun::ProfileOf(const PlannedPicture &planned)
{
    if (!m_options.profile.isEmpty())
        return m_options.profile;
    const ProfileLookup::Answer answer = m_lookup->Find(m_process, planned.picture);
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
    ProgramName name;
    HostApplication application(name.argc, name.argv);
    std::unique_ptr<ProfileLookup> lookup;
    if (options.profile.isEmpty())
        lookup = std::make_unique<ProfileLookup>(&application, options.lensPath, &guard);
    const PluginLoader plugin(options.plugin);
    if (!plugin.Process()) {
        console->Failure(QString(), plugin.Problem());
        return kSomeFailed;
    }
    return CorrectRun(options, &application, lookup.get(), plugin.Process(), &guard, console).All();
}
