#include "HostApplication.h"

#include "KImage.h"

#include <QDir>

namespace {

QString SettingPath(const QString &uid, const QString &key)
{
    return QStringLiteral("Plugins/%1/%2").arg(uid, key);
}

QtMessageHandler g_otherMessages;

/// Qt complains at every start about a session's run-time folder that is missing or another user's, as under cron and
/// sudo. Nothing here uses it.
void LeaveOutSessionWarnings(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (!text.startsWith(QLatin1String("QStandardPaths: ")))
        g_otherMessages(type, context, text);
}

} // namespace

void ChooseDisplayless()
{
    g_otherMessages = qInstallMessageHandler(LeaveOutSessionWarnings);
    // Set even where the session names a platform: that of a desktop aborts the program when no display can be reached,
    // as over a remote shell.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // Desktop themes, styles and input methods: slow to load, some connect to a display, none is of use here.
    for (const char *name : {"QT_QPA_PLATFORMTHEME", "QT_STYLE_OVERRIDE", "QT_IM_MODULE"})
        qunsetenv(name);
}

HostApplication::HostApplication(int &argc, char **argv)
    : QApplication(argc, argv),
      m_settings(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("Brelt"), QStringLiteral("vitrelux"))
{
    setOrganizationName(QStringLiteral("Brelt"));
    setApplicationName(QStringLiteral("vitrelux"));
    setApplicationVersion(QStringLiteral(VITRELUX_VERSION));
    KImage::init(nullptr);
}

HostApplication::~HostApplication()
{
    m_images.clear(); // pixels go back to the kernel's allocator before the kernel stops
    KImage::exit();
}

QVariant HostApplication::GetPluginSetting(QString uid, QString key, QVariant defaultValue)
{
    return m_settings.value(SettingPath(uid, key), defaultValue);
}

void HostApplication::SetPluginSetting(QString uid, QString key, QVariant value)
{
    m_settings.setValue(SettingPath(uid, key), value);
}

QLocale HostApplication::Locale()
{
    return QLocale();
}

void HostApplication::LoadTranslator(QString fileName)
{
    auto translator = std::make_unique<QTranslator>();
    if (!translator->load(QLatin1String(":/Translation/") + fileName))
        return;
    installTranslator(translator.get());
    m_translators.push_back(std::move(translator));
}

KImageInstances *HostApplication::ImageInstances()
{
    return &KImage::ms_instances;
}

HostImageDef *HostApplication::ImageOf(const QString &fileName)
{
    const QString path = QDir::cleanPath(QDir().absoluteFilePath(fileName));
    std::unique_ptr<HostImageDef> &image = m_images[path];
    if (!image)
        image = std::make_unique<HostImageDef>(path);
    return image.get();
}
