#include "FittedCorrection.h"

#include "FactLines.h"
#include "Fit.h"
#include "HostApplication.h"
#include "KException.h"

namespace {

struct CorrectionRow {
    const char *name; // in the record's "Done"
    bool Corrections::*member;
    Fact<bool> PictureFacts::*doneBefore;
    bool FitOptions::*wanted;
};

constexpr CorrectionRow kCorrections[] = {
    {"distortion", &Corrections::distortion, &PictureFacts::distortionDone, &FitOptions::distortion},
    {"lateral color", &Corrections::chromatic, &PictureFacts::chromaticDone, &FitOptions::chromatic},
    {"vignetting", &Corrections::vignetting, &PictureFacts::vignettingDone, &FitOptions::vignetting},
};

[[noreturn]] void Fail(const QString &why)
{
    throw KException(why, KPlace());
}

/// Returns whether @p all contains all of @p some.
bool Covers(const Corrections &all, const Corrections &some)
{
    return (all.distortion || !some.distortion) && (all.chromatic || !some.chromatic)
        && (all.vignetting || !some.vignetting);
}

/// Returns the corrections that count as already made: none if the user chose a profile or --again.
Corrections DoneBefore(const PictureFacts &facts, const FittedRequest &request)
{
    Corrections done;
    if (!ReadParameters(request.parameters).profile.isEmpty() || request.fit.again)
        return done;
    for (const CorrectionRow &row : kCorrections)
        done.*row.member = (facts.*row.doneBefore).value;
    return done;
}

/// Returns the options of a request, including the corrections and the profile of its parameters.
FitOptions OptionsOf(const FittedRequest &request)
{
    const PictureParameters parameters = ReadParameters(request.parameters);
    FitOptions options = request.fit;
    options.profile = parameters.profile;
    for (const CorrectionRow &row : kCorrections)
        options.*row.wanted = parameters.corrections.*row.member;
    return options;
}

/// Returns whether the required corrections were made, now or before: scripts must not mistake a picture without them
/// for a success.
bool AreMade(const FittedRequest &request, const Corrections &done, const QString &picture)
{
    if (Covers(done, request.required))
        return true;
    Corrections made = DoneBefore(ReadPictureFacts(picture, nullptr), request);
    for (const CorrectionRow &row : kCorrections)
        made.*row.member = made.*row.member || done.*row.member;
    return Covers(made, request.required);
}

} // namespace

QStringList NamesInRecord(const Corrections &corrections)
{
    QStringList names;
    for (const CorrectionRow &row : kCorrections) {
        if (corrections.*row.member)
            names << QLatin1String(row.name);
    }
    return names;
}

QString FittedCorrection::Result::ProfileLine(const QString &shown) const
{
    QString line = tr("profile \"%1\"").arg(shown);
    for (const auto &[label, text] :
         {std::pair(tr("entries"), entries), std::pair(tr("assumed"), assumed), std::pair(tr("left out"), why)}) {
        if (!text.isEmpty())
            line += QStringLiteral("; %1: %2").arg(label, text);
    }
    return line;
}

FittedCorrection::FittedCorrection(const QStringList &folders, HostApplication *application, InterruptGuard *guard)
    : m_application(application), m_guard(guard), m_fitter(folders)
{
}

FittedCorrection::Result FittedCorrection::Run(KIPluginOne2One *process, const PlannedPicture &planned,
                                               const FittedRequest &request, const OutputRules &rules)
{
    const ParameterRecord record(process, request.parameters);
    try {
        Report report; // read before the output is moved into place, because the picture must not fail after that
        const RunResult result = RunPicture(m_application, process, record, planned, rules, m_guard, [&] {
            report = ReportOf(process, record);
            RequireMade(report, planned.picture, request);
        });
        return {result == RunResult::Written ? Outcome::Written : Outcome::Kept,
                report.profile,
                report.entries,
                report.assumed,
                report.why,
                report.done};
    } catch (const KException &) {
        const Report report = ReportOf(process, record);
        if (!report.isThere || report.done.Any()) // a failure of the run, not of the fit
            throw;
        return NothingDone(report, planned.picture, request);
    }
}

FittedCorrection::Result FittedCorrection::Plan(const PlannedPicture &planned, const FittedRequest &request)
{
    FitResult fit = m_fitter.Fit(ReadPictureFacts(planned.picture, nullptr), OptionsOf(request));
    if (m_application->IsGray(planned.picture)) // as the plug-in does
        LeaveOutColor(&fit);
    const Report report = {true,        fit.profile,
                           fit.entries, fit.assumed.join(QStringLiteral("; ")),
                           fit.why,     {fit.distortion, fit.chromatic, fit.vignetting}};
    if (!report.done.Any())
        return NothingDone(report, planned.picture, request);
    RequireMade(report, planned.picture, request);
    return {Outcome::Planned, report.profile, report.entries, report.assumed, report.why, report.done};
}

/// Throws if the plug-in has not reported a fit, or if a required correction is missing.
void FittedCorrection::RequireMade(const Report &report, const QString &picture, const FittedRequest &request)
{
    if (!report.isThere)
        Fail(QStringLiteral(
            "the plug-in doesn't support fitted corrections; \"vitrelux correct --plain\" works without them"));
    if (!AreMade(request, report.done, picture))
        Fail(QStringLiteral("profile \"%1\": cannot make the requested corrections: %2")
                 .arg(report.profile, report.why));
}

FittedCorrection::Report FittedCorrection::ReportOf(KIPluginOne2One *process, const ParameterRecord &record)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const QDomElement element = process->GetXmlParameters(record.Get());
    Report report;
    report.isThere = element.hasAttribute(QStringLiteral("Done"));
    report.profile = element.attribute(QStringLiteral("Profile"));
    report.entries = element.attribute(QStringLiteral("Entries"));
    report.assumed = element.attribute(QStringLiteral("Assumed"));
    report.why = element.attribute(QStringLiteral("Why"));
    const QStringList done = element.attribute(QStringLiteral("Done")).split(QStringLiteral(", "));
    for (const CorrectionRow &row : kCorrections)
        report.done.*row.member = done.contains(QLatin1String(row.name));
    return report;
}

FittedCorrection::Result FittedCorrection::NothingDone(const Report &report, const QString &picture,
                                                       const FittedRequest &request)
{
    const PictureFacts facts = ReadPictureFacts(picture, nullptr);
    const FitOptions options = OptionsOf(request);
    if (options.profile.isEmpty() && WasDoneBefore(facts, options))
        return {Outcome::DoneBefore, QString(), QString(), QString(), DoneBeforeText(facts), Corrections()};
    if (!report.profile.isEmpty())
        Fail(tr("profile \"%1\"").arg(report.profile) + QLatin1String(": ") + report.why);
    if (!options.profile.isEmpty())
        Fail(tr("profile %1", "its name and what is wrong with it").arg(report.why));
    return {Outcome::NoProfile, QString(), QString(), QString(), WhyNoProfile(report, facts, request.fit),
            Corrections()};
}

QString FittedCorrection::WhyNoProfile(const Report &report, const PictureFacts &facts, const FitOptions &options)
{
    const FitResult fit = m_fitter.Fit(facts, options);
    if (fit.isAmbiguous || fit.nearest.isEmpty()) // the reason names the candidates
        return report.why;
    return QStringLiteral("%1; %2: %3")
        .arg(report.why, tr("nearest"), fit.nearest.mid(0, 3).join(QStringLiteral("; ")));
}
