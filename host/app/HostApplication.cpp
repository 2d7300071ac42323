#include "HostApplication.h"

#include "FileNames.h"
#include "KException.h"
#include "KImage.h"
#include "PictureProblem.h"
#include "SettingsFiles.h"
#include "analytics/KAnalyticsManager.h"

#include <QDir>
#include <QLibraryInfo>

#include <unistd.h>

#include <atomic>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace {

/// Scope in which standard output is redirected to standard error.
class StdoutToStderr {
public:
    StdoutToStderr() : m_output((std::fflush(stdout), dup(STDOUT_FILENO)))
    {
        if (m_output != -1)
            dup2(STDERR_FILENO, STDOUT_FILENO);
    }
    ~StdoutToStderr()
    {
        std::fflush(stdout);
        if (m_output == -1)
            return;
        dup2(m_output, STDOUT_FILENO);
        close(m_output);
    }
    StdoutToStderr(const StdoutToStderr &) = delete;
    StdoutToStderr &operator=(const StdoutToStderr &) = delete;

private:
    int m_output;
};

void SetVariable(const char *name, const QByteArray &value)
{
    if (!qputenv(name, value))
        throw std::bad_alloc();
}

/// Creates an analytics manager that is switched off; the kernels use it and later delete it. XDG_DATA_HOME is
/// /dev/null while it is constructed, so no folder is created.
void SwitchAnalyticsOff()
{
    constexpr const char *kDataFolder = "XDG_DATA_HOME";
    const bool wasSet = qEnvironmentVariableIsSet(kDataFolder);
    const QByteArray before = qgetenv(kDataFolder);
    SetVariable(kDataFolder, "/dev/null");
    (new KAnalyticsManager(/*useSettingsUserId=*/false, nullptr, /*useDb=*/false))->setIsActive(false);
    if (wasSet)
        SetVariable(kDataFolder, before);
    else
        qunsetenv(kDataFolder);
}

void StartKernels()
{
    // The tool kernel prints messages about processors to standard output, which is for results.
    const StdoutToStderr redirection;
    SwitchAnalyticsOff();
    KImage::init(nullptr);
}

/// The description of a file that isn't a picture: it has size 0 and provides no pixels. The kernel's Lock would add it
/// to the image cache, and both the cache and HostApplication would delete it.
class StandIn : public ImageDef {
public:
    StandIn(const QString &path, const QString &problem) : m_problem(problem)
    {
        m_fileName = path;
        m_id = IdOf(path);
    }
    KImage *Lock(int, int, bool) override { throw KException(m_problem, KPlace()); }
    KImage *LockFullSize(bool) override { return Lock(0, 0, true); }
    void Unlock(int, int, bool) override { }
    void UnlockFullSize(bool) override { }

private:
    const QString m_problem;
};

QString HintFor(const RefusalReason &reason, AcceptedPictures accepted)
{
    const bool isConvertible = reason.kind == RefusalReason::Cmyk || reason.kind == RefusalReason::Lab;
    return isConvertible && accepted == AcceptedPictures::GrayAndTiled
        ? QStringLiteral("; \"vitrelux correct --convert\" corrects them as sRGB")
        : QString();
}

const QLatin1String kOrganization("Brelt");
const QLatin1String kApplication("vitrelux");

/// Returns the problem with the settings files, which are then ignored; empty if there is none.
QString CheckSettings()
{
    const QString problem = SettingsProblem(kOrganization, kApplication);
    if (!problem.isEmpty())
        IgnoreSettingsFiles();
    return problem;
}

QString SettingPath(const QString &uid, const QString &key)
{
    return QStringLiteral("Plugins/%1/%2").arg(uid, key);
}

QtMessageHandler g_previousHandler;

/// Filters Qt's messages. At each start Qt warns if the runtime folder is missing or belongs to another user, as under
/// cron and sudo; nothing here uses that folder. Only the first messages are printed, because a damaged file may cause
/// one per line.
void FilterMessages(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    constexpr int kMaxMessages = 20;
    static std::atomic<int> count{0};
    if (type == QtFatalMsg && text.contains(QLatin1String("platform plugin"))) {
        std::fputs("vitrelux: cannot start: Qt's platform plug-in \"offscreen\" cannot be loaded\n", stderr);
        std::_Exit(1);
    }
    if (qstrcmp(context.category, "qt.qpa.plugin") == 0 && type != QtFatalMsg)
        return; // a fatal message with the reason follows
    if (text.startsWith(QLatin1String("QStandardPaths: ")) || (type != QtFatalMsg && count >= kMaxMessages))
        return;
    if (++count == kMaxMessages)
        g_previousHandler(type, context, text + QLatin1String("\nvitrelux: further messages from Qt are omitted"));
    else
        g_previousHandler(type, context, text);
}

/// Ends the program with a message if Qt cannot reach the display, because Qt would then abort.
void EndWithoutDisplay(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (type != QtFatalMsg || !text.contains(QLatin1String("platform plugin")))
        return FilterMessages(type, context, text);
    std::fputs("vitrelux: cannot show a window: the display cannot be reached\n", stderr);
    std::_Exit(1);
}

} // namespace

void ChooseDisplayless()
{
    g_previousHandler = qInstallMessageHandler(FilterMessages);
    // Set even if the session names a platform: a desktop platform aborts the program if no display is reachable, as in
    // a remote shell.
    SetVariable("QT_QPA_PLATFORM", "offscreen");
    // GLib aborts the program if memory runs out; Qt's own event loop works without it.
    SetVariable("QT_NO_GLIB", "1");
    // Without this variable, Qt uses a folder named after the user, and the C library crashes if memory runs out while
    // it looks up the user's name.
    if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR"))
        SetVariable("XDG_RUNTIME_DIR",
                    QFile::encodeName(QStringLiteral("%1/runtime-%2").arg(QDir::tempPath()).arg(geteuid())));
    // Desktop themes, styles and input methods load slowly, may connect to a display, and aren't used here.
    for (const char *name : {"QT_QPA_PLATFORMTHEME", "QT_STYLE_OVERRIDE", "QT_IM_MODULE"})
        qunsetenv(name);
}

QString ChooseDisplay()
{
    g_previousHandler = qInstallMessageHandler(EndWithoutDisplay);
    for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        if (qEnvironmentVariableIsEmpty(name))
            continue;
        QCoreApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
        QCoreApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
        return QString();
    }
    return QStringLiteral("cannot show a window: there is no display; \"vitrelux correct\" needs none");
}

HostApplication::HostApplication(int &argc, char **argv)
    : QApplication(argc, argv),
      m_settingsProblem(CheckSettings()),
      m_settings(QSettings::IniFormat, QSettings::UserScope, kOrganization, kApplication)
{
    std::setlocale(LC_MESSAGES, "C"); // keeps system error texts in English until windows are translated
    setOrganizationName(kOrganization);
    setApplicationName(kApplication);
    setApplicationVersion(QStringLiteral(VITRELUX_VERSION));
    Q_INIT_RESOURCE(vitreluxTranslations);
    StartKernels();
}

HostApplication::~HostApplication()
{
    Stop();
}

void HostApplication::Stop()
{
    m_settings.sync();
    m_pictures.clear(); // while the kernel is still running
    KImage::exit();
}

static HostApplication *MakeApplication()
{
    static ProgramName name; // outlives the application
    return new HostApplication(name.argc, name.argv);
}

CommandApplication::CommandApplication() : m_application(MakeApplication()) { }

QVariant HostApplication::GetPluginSetting(QString uid, QString key, QVariant defaultValue)
{
    // Worker threads create records too, so access is locked. Separate QSettings objects would read the file every
    // time, and Qt crashes if memory runs out while it creates one.
    const QVariant value = [&] {
        const std::lock_guard<std::mutex> lock(m_settingsMutex);
        return m_settings.value(SettingPath(uid, key), defaultValue);
    }();
    return m_adapt ? m_adapt(key, value) : value;
}

void HostApplication::SetPluginSetting(QString uid, QString key, QVariant value)
{
    const std::lock_guard<std::mutex> lock(m_settingsMutex);
    m_settings.setValue(SettingPath(uid, key), value);
}

QLocale HostApplication::Locale()
{
    return QLocale();
}

void HostApplication::LoadTranslator(QString fileName)
{
    if (m_speaksUsersLanguage)
        Install(QLatin1String(":/Translation/") + fileName);
}

void HostApplication::TranslateWindows()
{
    m_speaksUsersLanguage = true;
    std::setlocale(LC_MESSAGES, "");
    LoadTranslator(QStringLiteral("vitrelux_en.qm")); // English plurals, for texts missing from the next file
    LoadTranslator(QStringLiteral("vitrelux_%1.qm").arg(Locale().name()));
    Install(
        QStringLiteral("%1/qtbase_%2.qm").arg(QLibraryInfo::location(QLibraryInfo::TranslationsPath), Locale().name()));
}

void HostApplication::Install(const QString &translation)
{
    auto translator = std::make_unique<QTranslator>();
    if (!translator->load(translation))
        return;
    installTranslator(translator.get());
    m_translators.push_back(std::move(translator));
}

KImageInstances *HostApplication::ImageInstances()
{
    return &KImage::ms_instances;
}

KIImageDef *HostApplication::ImageDefOf(QString fileName)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_usedInstead.find(fileName);
        if (found != m_usedInstead.end())
            return found->second;
    }
    return ImageOf(fileName);
}

HostApplication::Picture HostApplication::Describe(const QString &fileName)
{
    const QString path = AbsolutePath(fileName);
    const std::lock_guard<std::mutex> lock(m_mutex);
    Picture &picture = m_pictures[path];
    if (picture.image)
        return picture;
    ImageDef *image = nullptr;
    picture.problem = FileProblem(path);
    RefusalReason reason;
    if (picture.problem.isEmpty() && !ImageDef::IsAPicture(path, image, m_makesThumbnails, &reason)) {
        picture.own = DescribeRefused(path, reason, m_accepted);
        if (!picture.own)
            picture.problem = TextOf(reason, path) + HintFor(reason, m_accepted);
    }
    if (!image && !picture.own)
        picture.own = std::make_shared<StandIn>(path, picture.problem);
    picture.image = image ? image : picture.own.get();
    return picture;
}

bool HostApplication::IsGray(const QString &fileName)
{
    constexpr int kColors = 3;
    const int bands = ImageOf(fileName)->nBands(); // 0: no picture
    return bands > 0 && bands < kColors;
}

void HostApplication::ForgetImages()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    for (const auto &[path, picture] : m_pictures) {
        if (!picture.own)
            ImageDef::Delete(picture.image);
    }
    m_pictures.clear();
}

void HostApplication::UseInstead(const QString &fileName, KIImageDef *image)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (image)
        m_usedInstead[fileName] = image;
    else
        m_usedInstead.erase(fileName);
}

HostApplication::SettingAdapter HostApplication::AdaptPluginSettings(SettingAdapter adapt)
{
    return std::exchange(m_adapt, std::move(adapt));
}

void HostApplication::Forget(const QString &fileName)
{
    const QString path = AbsolutePath(fileName);
    const std::lock_guard<std::mutex> lock(m_mutex);
    ImageDef::Delete(path);
    m_pictures.erase(path);
}
