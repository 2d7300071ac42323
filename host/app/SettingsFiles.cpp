#include "SettingsFiles.h"
#include "InputLimits.h"

#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>

namespace {

QString ProblemOf(const QString &file)
{
    const QFileInfo info(file);
    if (!info.exists())
        return QString();
    if (!info.isFile())
        return QStringLiteral("not a regular file");
    if (info.size() > kMaxSettingsBytes)
        return QStringLiteral("%1 bytes, expected %2 at most").arg(info.size()).arg(kMaxSettingsBytes);
    return QString();
}

} // namespace

QString SettingsProblem(const QString &organization, const QString &application)
{
    // The files that QSettings reads; the system's are fallbacks for the user's.
    const QStringList folders = QStandardPaths::standardLocations(QStandardPaths::GenericConfigLocation);
    for (const QString &folder : folders) {
        for (const QString &name : {organization + QLatin1Char('/') + application, organization}) {
            const QString file = folder + QLatin1Char('/') + name + QLatin1String(".ini");
            const QString problem = ProblemOf(file);
            if (!problem.isEmpty())
                return QStringLiteral("settings file \"%1\" is ignored: %2").arg(file, problem);
        }
    }
    return QString();
}

void IgnoreSettingsFiles()
{
    const QString nowhere = QStringLiteral("/dev/null"); // no folder can be created below it
    QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, nowhere);
    QSettings::setPath(QSettings::IniFormat, QSettings::SystemScope, nowhere);
}
