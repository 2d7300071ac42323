#include "PictureCorrector.h"

#include "KException.h"
#include "app/FactLines.h"
#include "app/FileNames.h"
#include "app/FittedCorrection.h"
#include "app/HostApplication.h"
#include "app/PictureRun.h"
#include "app/ProfileLookup.h"
#include "app/SearchedFolders.h"
#include "gfl.h"

namespace {

[[noreturn]] void Fail(const QString &why)
{
    throw KException(why, KPlace());
}

/// Fills in the report, or throws if there is no profile.
void TakeResult(const FittedCorrection::Result &result, PictureReport *report)
{
    using Outcome = FittedCorrection::Outcome;
    report->why = result.why;
    switch (result.outcome) {
    case Outcome::NoProfile:
        Fail(QStringLiteral("has no lens profile: %1; to choose one, use --profile").arg(result.why));
    case Outcome::DoneBefore:
        report->outcome = PictureReport::Outcome::CorrectedBefore;
        report->notes << QStringLiteral("skipped, corrected before: %1; --again corrects it anyway").arg(result.why);
        return;
    case Outcome::Written:
        report->outcome = PictureReport::Outcome::Corrected;
        break;
    case Outcome::Planned:
        report->outcome = PictureReport::Outcome::Planned;
        break;
    case Outcome::Kept:
        break;
    }
    report->profile = result.profile;
    report->entries = result.entries;
    report->assumed = result.assumed.split(QStringLiteral("; "), Qt::SkipEmptyParts);
    report->corrections = NamesInRecord(result.made);
    report->notes << result.ProfileLine(result.profile);
}

} // namespace

PictureCorrector::PictureCorrector(const CorrectOptions &options, HostApplication *application, ProfileLookup *lookup,
                                   const SearchedFolders *folders, InterruptGuard *guard)
    : m_options(options),
      m_application(application),
      m_lookup(lookup),
      m_folders(folders),
      m_guard(guard),
      m_memory(options.jobs > 0 ? 0 : AvailableBytes())
{
}

PictureCorrector::~PictureCorrector() = default;

void PictureCorrector::Begin(KIPluginOne2One *lookupProcess)
{
    m_lookupProcess = lookupProcess;
    if (m_folders)
        m_fitted = std::make_unique<FittedCorrection>(m_folders->Folders(), m_application, m_guard);
}

void PictureCorrector::Correct(KIPluginOne2One *process, const PlannedPicture &planned, PictureReport *report)
{
    report->outcome = PictureReport::Outcome::Skipped;
    if (planned.repeated) {
        report->why = QStringLiteral("same file as \"%1\"").arg(planned.rival);
        return;
    }
    report->output = planned.output;
    if (m_options.rules.existing != ExistingOutput::Overwrite && IsThere(planned.output)) {
        report->why = QStringLiteral("output \"%1\" exists").arg(planned.output);
        if (m_options.rules.existing == ExistingOutput::Skip)
            return;
        Fail(report->why + QLatin1String("; --overwrite replaces it"));
    }
    const QString problem = m_application->ProblemOf(planned.picture);
    if (!problem.isEmpty())
        Fail(problem);
    gflClearWarningText();
    if (m_fitted)
        CorrectFitted(process, planned, report);
    else
        CorrectPlain(process, planned, report);
    const QString warning = QString::fromUtf8(gflLastWarningText());
    if (report->outcome == PictureReport::Outcome::Corrected && !warning.isEmpty())
        report->notes << warning;
}

void PictureCorrector::CorrectPlain(KIPluginOne2One *process, const PlannedPicture &planned, PictureReport *report)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    report->profile = ProfileFor(planned, report);
    const ProfileUse profile = JudgedProfile(report->profile);
    const Corrections corrections = UsableCorrections(report->profile, profile);
    NoteMismatch(planned, report->profile, profile, report);
    lock.unlock();

    report->corrections = NamesInRecord(corrections);
    report->outcome = PictureReport::Outcome::Planned;
    if (m_options.dryRun)
        return;
    const ImageDef *image = m_application->ImageOf(planned.picture);
    const MemoryBudget::Share share(&m_memory, BytesToCorrect(*image, Corrector::Plain));
    const ParameterRecord record(process, DescribeParameters(process->Name(), {corrections, profile.path}));
    const RunResult result = RunPicture(m_application, process, record, planned, m_options.rules, m_guard);
    report->outcome =
        result == RunResult::Written ? PictureReport::Outcome::Corrected : PictureReport::Outcome::Skipped;
}

void PictureCorrector::CorrectFitted(KIPluginOne2One *process, const PlannedPicture &planned, PictureReport *report)
{
    if (!m_folders->Problem().isEmpty())
        Fail(m_folders->Problem());
    if (m_options.verbose || m_options.json) {
        const PictureFacts facts = ReadPictureFacts(planned.picture, nullptr);
        report->facts = m_options.verbose ? FactLines(facts) : QString();
        report->camera = facts.model.value;
        report->lens = facts.lensNames.isEmpty() ? QString() : facts.lensNames.first().value;
    }
    const FittedRequest request = RequestFor(process);
    FittedCorrection::Result result;
    if (m_options.dryRun) {
        result = m_fitted->Plan(planned, request);
    } else {
        const ImageDef *image = m_application->ImageOf(planned.picture);
        const MemoryBudget::Share share(&m_memory, BytesToCorrect(*image, CorrectorOf(request.parameters)));
        result = m_fitted->Run(process, planned, request, m_options.rules);
    }
    TakeResult(result, report);
}

FittedRequest PictureCorrector::RequestFor(KIPluginOne2One *process) const
{
    constexpr Corrections kAll = {true, true, true};
    const QString profile = m_options.profile.isEmpty() ? QString() : AbsolutePath(m_options.profile);
    FittedRequest request;
    request.parameters = DescribeParameters(process->Name(), {m_options.asked.Any() ? m_options.asked : kAll, profile},
                                            m_options.fitted.attributes);
    request.required = m_options.asked;
    request.fit = m_options.fitted.fit;
    return request;
}

/// Returns the profile named by the user; otherwise finds one for the picture and adds a note that names it.
QString PictureCorrector::ProfileFor(const PlannedPicture &planned, PictureReport *report)
{
    if (!m_options.profile.isEmpty())
        return m_options.profile;
    const ProfileLookup::Answer answer = m_lookup->Find(m_lookupProcess, planned.picture);
    if (answer.profile.isEmpty())
        Fail(QStringLiteral("has no lens profile: %1; to choose one, use --profile").arg(answer.why));
    report->notes << QStringLiteral("profile \"%1\"").arg(answer.profile);
    return answer.profile;
}

const ProfileUse &PictureCorrector::JudgedProfile(const QString &profile)
{
    auto found = m_profiles.find(profile);
    if (found == m_profiles.end())
        found = m_profiles.insert(profile, JudgeProfile(profile));
    return *found;
}

Corrections PictureCorrector::UsableCorrections(const QString &name, const ProfileUse &profile) const
{
    QString why = profile.problem;
    const Corrections corrections = why.isEmpty() ? ChooseCorrections(profile, m_options.asked, &why) : Corrections();
    if (!why.isEmpty())
        Fail(QStringLiteral("profile \"%1\": %2").arg(name, why));
    return corrections;
}

void PictureCorrector::NoteMismatch(const PlannedPicture &planned, const QString &name, const ProfileUse &profile,
                                    PictureReport *report) const
{
    const ImageDef *image = m_application->ImageOf(planned.picture);
    const QString mismatch = SizeMismatch(profile, image->nCols(), image->nRows());
    if (!mismatch.isEmpty())
        report->notes << mismatch;
    if (!m_options.asked.Any() && !profile.flaws.isEmpty()) {
        report->notes
            << QStringLiteral("profile \"%1\": not corrected: %2").arg(name, profile.flaws.join(QStringLiteral(", ")));
    }
}
