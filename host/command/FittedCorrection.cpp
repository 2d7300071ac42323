#include "FittedCorrection.h"

#include "KException.h"
#include "app/FactLines.h"
#include "app/FileNames.h"
#include "app/PictureRun.h"

#include <QDomElement>

namespace {

struct CorrectionRow {
    const char *name; // in the record's "Done"
    bool Corrections::*member;
    Fact<bool> PictureFacts::*doneBefore;
};

constexpr CorrectionRow kCorrections[] = {
    {"distortion", &Corrections::distortion, &PictureFacts::distortionDone},
    {"lateral color", &Corrections::chromatic, &PictureFacts::chromaticDone},
    {"vignetting", &Corrections::vignetting, &PictureFacts::vignettingDone},
};

[[noreturn]] void Fail(const QString &why)
{
    throw KException(why, KPlace());
}

/// Whether all of @p some are in @p all.
bool Covers(const Corrections &all, const Corrections &some)
{
    return (all.distortion || !some.distortion) && (all.chromatic || !some.chromatic)
        && (all.vignetting || !some.vignetting);
}

QString Labeled(const char *label, const QString &text)
{
    return text.isEmpty() ? QString() : QStringLiteral("; %1: %2").arg(QLatin1String(label), text);
}

} // namespace

FittedCorrection::FittedCorrection(const CorrectOptions &options, const QStringList &folders,
                                   HostApplication *application, InterruptGuard *guard)
    : m_options(options),
      m_application(application),
      m_guard(guard),
      m_wanted(options.asked.Any() ? options.asked : Corrections{true, true, true}),
      m_fitter(folders)
{
}

FittedCorrection::Result FittedCorrection::Run(KIPluginOne2One *process, const PlannedPicture &planned)
{
    const QString profile = m_options.profile.isEmpty() ? QString() : AbsolutePath(m_options.profile);
    QDomElement element = DescribeParameters(process->Name(), {m_wanted, profile});
    for (const auto &[name, text] : m_options.fitted.attributes)
        element.setAttribute(name, text);
    const ParameterRecord record(process, element);
    try {
        QString note;
        const RunResult result = RunPicture(m_application, process, record, planned, m_options.existing, m_guard, [&] {
            const Report report = ReportOf(process, record);
            RequireAsked(report, planned.picture);
            note = QStringLiteral("profile \"%1\"").arg(report.profile) + Labeled("entries", report.entries)
                + Labeled("assumed", report.assumed) + Labeled("left out", report.why);
        });
        return {result == RunResult::Written ? Outcome::Written : Outcome::Kept, note};
    } catch (const KException &) {
        const Report report = ReportOf(process, record);
        if (!report.isThere || report.done.Any()) // no decision of the fit's
            throw;
        return NothingDone(report, planned.picture);
    }
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

/// A script that asks for a correction must not take a picture without it for done.
void FittedCorrection::RequireAsked(const Report &report, const QString &picture) const
{
    if (!report.isThere)
        Fail(QStringLiteral("the plug-in doesn't know fitted corrections; --plain corrects without them"));
    if (!m_options.asked.Any() || Covers(report.done, m_options.asked))
        return;
    Corrections there = DoneBefore(ReadPictureFacts(picture, nullptr));
    for (const CorrectionRow &row : kCorrections)
        there.*row.member = there.*row.member || report.done.*row.member;
    if (!Covers(there, m_options.asked))
        Fail(QStringLiteral("profile \"%1\": cannot make the requested corrections: %2")
                 .arg(report.profile, report.why));
}

/// The corrections that count as made before: a profile that the user chose, or --again, makes them again.
Corrections FittedCorrection::DoneBefore(const PictureFacts &facts) const
{
    Corrections done;
    if (!m_options.profile.isEmpty() || m_options.fitted.fit.again)
        return done;
    for (const CorrectionRow &row : kCorrections)
        done.*row.member = (facts.*row.doneBefore).value;
    return done;
}

FittedCorrection::Result FittedCorrection::NothingDone(const Report &report, const QString &picture)
{
    const PictureFacts facts = ReadPictureFacts(picture, nullptr);
    if (Covers(DoneBefore(facts), m_wanted)) {
        return {Outcome::DoneBefore,
                QStringLiteral("skipped, corrected before: %1; --again corrects it all the same")
                    .arg(DoneBeforeText(facts))};
    }
    if (!report.profile.isEmpty())
        Fail(QStringLiteral("profile \"%1\": %2").arg(report.profile, report.why));
    if (!m_options.profile.isEmpty())
        Fail(QStringLiteral("profile %1").arg(report.why)); // begins with its name
    Fail(WhyNoProfile(report, facts));
}

QString FittedCorrection::WhyNoProfile(const Report &report, const PictureFacts &facts)
{
    const FitResult fit = m_fitter.Fit(facts, m_options.fitted.fit);
    if (fit.isAmbiguous) // the reason names them
        return report.why;
    const QString nearest = fit.nearest.isEmpty()
        ? QString()
        : QStringLiteral("; nearest: ") + fit.nearest.mid(0, 3).join(QStringLiteral("; "));
    return QStringLiteral("has no lens profile, name one with --profile: %1").arg(report.why) + nearest;
}
