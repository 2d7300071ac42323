#include "PictureRun.h"

#include "HostImageDef.h"
#include "WorkFolder.h"

#include <QDomDocument>
#include <QFileInfo>

#include <exception>
#include <new>

namespace {

/// The image-file layer's own words where an exception only names its error number. They are of this very call: a
/// failed call of the layer is what such an exception comes from.
QString WithReason(const QString &message)
{
    return message.contains(QLatin1String("\"GFL_")) ? QString::fromUtf8(gflLastErrorText()) : message;
}

} // namespace

QDomElement DescribeParameters(const QString &tag, const Corrections &corrections, const QString &profile)
{
    QDomDocument document;
    QDomElement element = document.createElement(tag);
    element.setAttribute(QStringLiteral("Disto"), int(corrections.distortion));
    element.setAttribute(QStringLiteral("CA"), int(corrections.chromatic));
    element.setAttribute(QStringLiteral("Falloff"), int(corrections.vignetting));
    element.setAttribute(QStringLiteral("LCPfilename"), profile);
    return element;
}

bool IsThere(const QString &path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

void RunPicture(KIPluginOne2One *process, const ParameterRecord &record, const PlannedPicture &planned,
                ExistingOutput existing, InterruptGuard *guard)
{
    WorkFolder folder(planned.outputFolder, guard);
    QString result;
    try {
        process->Process(folder.Admit(planned.picture), record.Get(), result);
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
        return QStringLiteral("not enough memory");
    } catch (const std::exception &e) {
        return QString::fromUtf8(e.what());
    } catch (...) {
        return QStringLiteral("failed without telling a reason");
    }
}
