#include "PictureRun.h"

#include "HostApplication.h"
#include "KException.h"
#include "PictureProblem.h"
#include "WorkFolder.h"
#include "gfl.h"

#include <QCoreApplication>
#include <QDomDocument>
#include <QFileInfo>
#include <QScopeGuard>

#include <exception>
#include <new>

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

/// The image-file layer's own words where an exception only names its error number. They are of this very call: a
/// failed call of the layer is what such an exception comes from.
QString WithReason(const QString &message)
{
    return message.contains(QLatin1String("\"GFL_")) ? QString::fromUtf8(gflLastErrorText()) : message;
}

} // namespace

QDomElement DescribeParameters(const QString &tag, const PictureParameters &parameters)
{
    QDomDocument document;
    QDomElement element = document.createElement(tag);
    for (const FlagRow &row : kFlags)
        element.setAttribute(row.attribute, int(parameters.corrections.*row.member));
    element.setAttribute(kProfile, parameters.profile);
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

void RunPicture(HostApplication *application, KIPluginOne2One *process, const ParameterRecord &record,
                const PlannedPicture &planned, ExistingOutput existing, InterruptGuard *guard)
{
    WorkFolder folder(planned.outputFolder, guard);
    const QString admitted = folder.Admit(planned.picture);
    const auto forget = qScopeGuard([&] { application->Forget(admitted); }); // nobody asks for this name again
    QString result;
    try {
        process->Process(admitted, record.Get(), result);
    } catch (const KException &e) {
        throw KException(WithoutFileName(folder.WithKnownNames(WithReason(e.what())), planned.picture), KPlace());
    }
    folder.Publish(result, planned.output, existing);
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
        return QCoreApplication::translate("PictureRun", "failed without telling a reason");
    }
}
