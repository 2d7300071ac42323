#include "PictureRun.h"

#include "HostApplication.h"
#include "KException.h"
#include "PictureProblem.h"
#include "ReplacedFile.h"
#include "WorkFolder.h"
#include "gfl.h"

#include <QCoreApplication>
#include <QDomDocument>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>

#include <cerrno>
#include <exception>
#include <new>

#include <fcntl.h>
#include <sys/stat.h>

namespace {

struct FlagRow {
    QLatin1String attribute;
    bool Corrections::*member;
};

const FlagRow kFlags[] = {
    {QLatin1String("Disto"), &Corrections::distortion},
    {QLatin1String("CA"), &Corrections::chromatic},
    {QLatin1String("Falloff"), &Corrections::vignetting},
};
const QLatin1String kProfile("LCPfilename");

/// Moves the output into place according to the rule for existing outputs.
RunResult Publish(const WorkFolder &folder, const QString &result, const PlannedPicture &planned,
                  ExistingOutput existing)
{
    if (folder.Publish(result, planned.output))
        return RunResult::Written;
    if (existing == ExistingOutput::Skip)
        return RunResult::Kept;
    throw KException(WorkFolder::tr("cannot write \"%1\": %2").arg(planned.output, qt_error_string(EEXIST)), KPlace());
}

/// Copies the access and modification times of @p picture to @p result.
void CopyTime(const QString &picture, const QString &result)
{
    struct stat status;
    if (stat(QFile::encodeName(picture).constData(), &status) == 0) {
        const timespec times[] = {status.st_atim, status.st_mtim};
        if (utimensat(AT_FDCWD, QFile::encodeName(result).constData(), times, 0) == 0)
            return;
    }
    throw KException(WorkFolder::tr("cannot set the file time: %1").arg(qt_error_string(errno)), KPlace());
}

/// Runs the process object on @p admitted, the picture in @p folder. @return the output's path. Error messages contain
/// the user's file names, not those in the folder.
QString Process(KIPluginOne2One *process, const ParameterRecord &record, const PlannedPicture &planned,
                const WorkFolder &folder, const QString &admitted)
{
    const auto fail = [&](const QString &text) {
        throw KException(WithoutFileName(folder.WithKnownNames(text), planned.picture), KPlace());
    };
    QString result;
    try {
        process->Process(admitted, record.Get(), result);
    } catch (const KFileException &e) {
        fail(e.Reason());
    } catch (const KException &e) {
        fail(e.what());
    }
    return result;
}

} // namespace

QDomElement DescribeParameters(const QString &tag, const PictureParameters &parameters,
                               const QVector<QPair<QString, QString>> &options)
{
    QDomDocument document;
    QDomElement element = document.createElement(tag);
    for (const FlagRow &row : kFlags)
        element.setAttribute(row.attribute, int(parameters.corrections.*row.member));
    element.setAttribute(kProfile, parameters.profile);
    for (const auto &[name, text] : options)
        element.setAttribute(name, text);
    return element;
}

PictureParameters ReadParameters(const QDomElement &element)
{
    PictureParameters parameters;
    for (const FlagRow &row : kFlags)
        parameters.corrections.*row.member = element.attribute(row.attribute).toInt() != 0;
    parameters.profile = element.attribute(kProfile);
    return parameters;
}

bool IsThere(const QString &path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

RunResult RunPicture(HostApplication *application, KIPluginOne2One *process, const ParameterRecord &record,
                     const PlannedPicture &planned, const OutputRules &rules, InterruptGuard *guard,
                     const std::function<void()> &check)
{
    WorkFolder::MakeOutputFolder(planned.outputFolder);
    const bool replaces = rules.existing == ExistingOutput::Overwrite;
    const ReplacedFile target(planned.output);
    if (const QString problem = replaces ? target.Problem() : QString();
        !problem.isEmpty()) // check before doing the work
        throw KException(WorkFolder::tr("cannot write \"%1\": %2").arg(target.Path(), problem), KPlace());

    WorkFolder folder(replaces ? QFileInfo(target.Path()).path() : planned.outputFolder, guard);
    const QString admitted = folder.Admit(planned.picture);
    const QString result = [&] {
        const auto forget = qScopeGuard([&] { // this path is not used again: free its pixels early
            try {
                application->Forget(admitted);
            } catch (const std::bad_alloc &) { // the description stays until the program ends
            }
        });
        gflSetSyncedByCaller(replaces && IsThere(target.Path())); // see ReplacedFile
        const auto reset = qScopeGuard([] { gflSetSyncedByCaller(0); });
        return Process(process, record, planned, folder, admitted);
    }();
    if (check)
        check();
    if (rules.keepTime)
        CopyTime(planned.picture, result);
    if (!replaces)
        return Publish(folder, result, planned, rules.existing);
    folder.Publish(result, target);
    return RunResult::Written;
}

QString TextOfCurrentException()
{
    try {
        throw;
    } catch (const KException &e) {
        return e.what();
    } catch (const std::bad_alloc &) {
        return QCoreApplication::translate("PictureRun", "not enough memory");
    } catch (const std::exception &e) {
        return QString::fromUtf8(e.what());
    } catch (...) {
        return QCoreApplication::translate("PictureRun", "failed for an unknown reason");
    }
}
