#include "PluginLoader.h"

#include "FileNames.h"
#include "KIPluginLibrary.h"

#include <QCoreApplication>
#include <QDir>
#include <QJsonObject>

namespace {

/// Returns the plug-in of this program's installation; the build tree has the same layout.
QString InstalledPlugin()
{
    return QDir::cleanPath(QCoreApplication::applicationDirPath() + QLatin1String("/../" VITRELUX_PLUGIN_FILE));
}

} // namespace

PluginLoader::PluginLoader(const QString &file, CorrectionMode mode) : m_mode(mode)
{
    const QString path = file.isEmpty() ? InstalledPlugin() : AbsolutePath(file);
    m_loader.setFileName(path);
    const QString why = Load();
    if (!m_process)
        m_problem = QStringLiteral("plug-in \"%1\": %2").arg(path, why);
}

PluginLoader::~PluginLoader()
{
    if (m_loader.isLoaded())
        m_loader.unload(); // deletes the library object, which deletes its process objects
}

std::unique_ptr<QObject> PluginLoader::MakeProcess() const
{
    QObject *made = m_object ? m_object->metaObject()->newInstance(Q_ARG(QObject *, nullptr)) : nullptr;
    SetMode(made);
    return std::unique_ptr<QObject>(made);
}

void PluginLoader::SetMode(QObject *process) const
{
    if (process && m_mode == CorrectionMode::Fitted)
        process->setProperty("Correction", QStringLiteral("fitted"));
}

/// Loads the plug-in. @return why there is no process; meaningless if there is one.
QString PluginLoader::Load()
{
    // Check the file first, because loading would run its code.
    const QString identifier = m_loader.metaData().value(QLatin1String("IID")).toString();
    if (!identifier.isEmpty() && identifier != QLatin1String("com.brelt.vitrelux"))
        return QStringLiteral("identifies itself as \"%1\", expected \"com.brelt.vitrelux\"").arg(identifier);

    QObject *root = m_loader.instance();
    if (!root)
        return m_loader.errorString();
    auto *library = qobject_cast<KIPluginLibrary *>(root);
    if (!library)
        return QStringLiteral("has no library object \"KIPluginLibrary\"");
    const QList<QPointer<QObject>> made = library->Plugins(KIPluginLibrary::All);
    for (const QPointer<QObject> &object : made) {
        if ((m_process = qobject_cast<KIPluginOne2One *>(object.data()))) {
            m_object = object;
            SetMode(object);
            return QString();
        }
    }
    return QStringLiteral("offers no process \"KIPluginOne2One\"");
}
