#include "ProfileCommand.h"

#include "Console.h"
#include "LensProfile.h"
#include "MapCheck.h"
#include "PlainProfileText.h"
#include "ProfileGridText.h"
#include "ProfileJson.h"
#include "ProfilePlot.h"
#include "ProfileReport.h"
#include "app/FileNames.h"
#include "app/HostApplication.h"
#include "app/PictureHeader.h"

#include <QBuffer>
#include <QFileInfo>
#include <QJsonDocument>
#include <QSaveFile>

namespace {

constexpr double kPlotScale = 2.0; // PNG pixels per unit of the scene

/// Printer of profiles, one after the other.
class ProfilePrinter {
public:
    ProfilePrinter(const ProfileOptions &options, Console *console) : m_options(options), m_console(console) { }

    /// Reads the picture of --for. @return false if it can't be read.
    bool ReadPicture()
    {
        const QString path = AbsolutePath(m_options.picture);
        QString problem = PictureHeader(path).Problem();
        if (problem.isEmpty())
            m_facts = ReadPictureFacts(path, &problem);
        if (!problem.isEmpty())
            m_console->Failure(m_options.picture, problem);
        return problem.isEmpty();
    }

    void Show(const QString &file)
    {
        const QString problem = m_options.plain ? ShowPlain(file) : ShowGrid(file);
        if (problem.isEmpty())
            return;
        m_console->Failure(file, problem);
        m_result = kSomeFailed;
    }

    ExitCode Result() const { return m_result; }

private:
    /// Prints a profile's lines, after an empty line unless it is the first profile.
    void PrintApart(const QString &text)
    {
        m_console->Print(m_gap + text);
        m_gap = QStringLiteral("\n");
    }

    // Each returns why the profile can't be used; empty if it can.
    QString ShowPlain(const QString &file)
    {
        const ProfileReport report = ReadProfileReport(AbsolutePath(file));
        if (report.usable)
            PrintApart(PlainProfileText(file, report));
        return WhyNoPlainCorrection(file, report);
    }

    QString ShowGrid(const QString &file)
    {
        QString problem;
        LensProfile profile = ReadLensProfile(AbsolutePath(file), &problem);
        if (problem.isEmpty() && m_options.picture.isEmpty() && m_options.plot.isEmpty())
            problem = CheckMaps(&profile);
        if (m_options.json)
            return PrintJson(file, profile, problem);
        if (m_options.check)
            m_console->Print(ProfileNotesText(file, profile));
        if (profile.entries.isEmpty() || m_options.check)
            return problem;
        if (m_options.picture.isEmpty()) {
            if (!m_options.plot.isEmpty())
                return WritePlot(file, profile, nullptr);
            PrintApart(ProfileGridText(file, profile));
            return problem;
        }
        return ShowFit(file, profile);
    }

    QString ShowFit(const QString &file, const LensProfile &profile)
    {
        const ProfileFit fit = FitTo(profile, m_options.picture, m_facts);
        if (!m_options.plot.isEmpty())
            return fit.DoesAnything() ? WritePlot(file, profile, &fit) : WhyNothing(fit);
        PrintApart(ProfileGridText(file, profile) + QLatin1Char('\n') + ProfileFitText(profile, fit));
        return WhyNothing(fit);
    }

    QString WhyNothing(const ProfileFit &fit) const
    {
        return fit.DoesAnything() ? QString()
                                  : QStringLiteral("has no effect on \"%1\": %2").arg(fit.picture, fit.result.why);
    }

    QString PrintJson(const QString &file, const LensProfile &profile, QString problem)
    {
        QJsonObject json = ProfileJson(profile);
        json.insert(QStringLiteral("path"), file);
        if (!problem.isEmpty())
            json.insert(QStringLiteral("problem"), problem);
        if (!m_options.picture.isEmpty() && !profile.entries.isEmpty()) {
            const ProfileFit fit = FitTo(profile, m_options.picture, m_facts);
            json.insert(QStringLiteral("fit"), ProfileFitJson(profile, fit));
            problem = WhyNothing(fit);
        }
        m_console->Print(QString::fromUtf8(QJsonDocument(json).toJson(QJsonDocument::Compact)) + QLatin1Char('\n'));
        return problem;
    }

    QString WritePlot(const QString &file, const LensProfile &profile, const ProfileFit *fit)
    {
        const QVector<ProfileCurves> entries = CurvesOfEntries(profile, fit);
        if (entries.isEmpty())
            return QStringLiteral("nothing to plot: no entry has both a model and a known frame");
        ProfileCurves blend;
        if (fit)
            blend = CurvesOfBlend(profile, *fit);
        const PlotScene scene = PlotOf(TitleOf(file, profile, entries.size(), fit), entries, fit ? &blend : nullptr);
        const QString problem = Write(scene);
        if (problem.isEmpty())
            m_console->PrintName(m_options.plot);
        return problem.isEmpty() ? QString() : QStringLiteral("plot \"%1\": %2").arg(m_options.plot, problem);
    }

    static QString TitleOf(const QString &file, const LensProfile &profile, int plotted, const ProfileFit *fit)
    {
        const QString count = plotted == profile.entries.size()
            ? QString()
            : QStringLiteral(", %1 of %2 entries").arg(plotted).arg(profile.entries.size());
        return QStringLiteral("%1%2, in pixels of the %3")
            .arg(QFileInfo(file).fileName(), count, QLatin1String(fit ? "picture" : "profile's frame"));
    }

    QString Write(const PlotScene &scene) const
    {
        const QString path = AbsolutePath(m_options.plot);
        if (!m_options.overwrite && QFileInfo::exists(path))
            return QStringLiteral("already exists; --overwrite replaces it");
        QSaveFile target(path);
        if (!target.open(QIODevice::WriteOnly))
            return target.errorString();
        if (path.endsWith(QLatin1String(".svg"), Qt::CaseInsensitive))
            target.write(ToSvg(scene));
        else
            ToImage(scene, kPlotScale).save(&target, "PNG");
        return target.commit() ? QString() : target.errorString();
    }

    const ProfileOptions &m_options;
    Console *m_console;
    PictureFacts m_facts; // of the picture of --for
    QString m_gap;
    ExitCode m_result = kAllDone;
};

ExitCode ShowAll(const ProfileOptions &options, ProfilePrinter *printer)
{
    for (const QString &file : options.files)
        printer->Show(file);
    return printer->Result();
}

} // namespace

ExitCode RunProfile(const ProfileOptions &options, Console *console)
{
    ProfilePrinter printer(options, console);
    if (options.picture.isEmpty() && options.plot.isEmpty())
        return ShowAll(options, &printer);
    ChooseDisplayless();
    ProgramName name;
    HostApplication application(name.argc, name.argv); // needed for metadata, the table of cameras, and fonts
    if (!options.picture.isEmpty() && !printer.ReadPicture())
        return kSomeFailed;
    return ShowAll(options, &printer);
}
