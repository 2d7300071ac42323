#include "KAnalyticsManager.h"

#include "KAnalyticsDb.h"
#include "KAnalyticsFile.h"
#include "KAnalyticsProvider.h"

#include <QCryptographicHash>
#include <QDir>
#include <QSettings>
#include <QStandardPaths>
#include <QUuid>

#include <mutex>
#include <utility>

Q_LOGGING_CATEGORY(kanalyticsmanager, "kanalyticsmanager", QtWarningMsg)

namespace {

/// Returns the name of the store's file. The name is not secret, but doesn't reveal the file's purpose.
QString StoreName()
{
    return QString::fromLatin1(
        QCryptographicHash::hash(QByteArrayLiteral("analytics"), QCryptographicHash::Md5).toHex());
}

std::mutex s_providersMutex; // guards the managers' lists: any thread may delete a provider

} // namespace

KAnalyticsManager *KAnalyticsManager::s_instance = nullptr;

KAnalyticsManager::KAnalyticsManager(bool useSettingsUserId, QObject *parent, bool useDb)
    : QObject(parent), m_useDb(useDb)
{
    qRegisterMetaType<KAnalyticsEvent::EventType>("KAnalyticsEvent::EventType");
    qRegisterMetaType<KAnalyticsEvent *>("KAnalyticsEvent*");
    if (!s_instance)
        s_instance = this;
    connect(this, &KAnalyticsManager::flushEventsAsked, this, &KAnalyticsManager::flushEventsSend,
            Qt::QueuedConnection);
    createDb(useSettingsUserId);
}

KAnalyticsManager::~KAnalyticsManager()
{
    while (KAnalyticsProvider *provider = Providers().value(0)) {
        Forget(provider); // removes all of the provider's entries, before they dangle
        delete provider;
    }
    qDeleteAll(m_timers);
    qDeleteAll(m_counters);
    delete m_db;
    delete m_file;
    s_instance = nullptr;
}

KAnalyticsManager *KAnalyticsManager::instance()
{
    if (!s_instance)
        s_instance = new KAnalyticsManager(/*useSettingsUserId=*/true, nullptr, /*useDb=*/true);
    return s_instance;
}

KAnalyticsManager *KAnalyticsManager::init(KAnalyticsManager *instance)
{
    if (instance)
        s_instance = instance;
    return KAnalyticsManager::instance();
}

void KAnalyticsManager::killInstance()
{
    delete s_instance; // the destructor resets the pointer
}

void KAnalyticsManager::createDb(bool useSettingsUserId)
{
    QDir dir(QStandardPaths::writableLocation(QStandardPaths::DataLocation));
    dir.mkpath(QStringLiteral("."));
    OpenStore(dir.absoluteFilePath(StoreName()));
    if (useSettingsUserId)
        AdoptSettingsUserId();
    else
        m_userId = StoredUserId();
}

QString KAnalyticsManager::StoredUserId()
{
    return m_db ? m_db->userId(/*create=*/true) : m_file->userId();
}

QString KAnalyticsManager::userId()
{
    if (m_userId.isEmpty())
        m_userId = StoredUserId();
    return m_userId;
}

void KAnalyticsManager::OpenStore(const QString &path)
{
    if (m_useDb) {
        m_db = new KAnalyticsDb(QStringLiteral("analytics"), QStringLiteral("QSQLITE"), nullptr);
        m_db->setFilePath(path);
    } else {
        m_file = new KAnalyticsFile(nullptr);
        m_file->setFilePath(path);
    }
}

void KAnalyticsManager::AdoptSettingsUserId()
{
    QSettings settings(QStringLiteral("Brelt"), QString());
    const QString key = QStringLiteral("platformDef");
    m_userId = settings.value(key, QString()).toString();
    if (m_userId.isEmpty()) {
        m_userId = QUuid::createUuid().toString();
        settings.setValue(key, m_userId);
    }
    if (m_db)
        m_db->setUserId(m_userId);
    else
        m_file->setUserId(m_userId);
}

void KAnalyticsManager::registerProvider(KAnalyticsProvider *provider)
{
    if (!provider)
        return;
    provider->setParent(this);
    if (m_useDb)
        provider->setDb(m_db);
    if (m_file)
        provider->setAnFile(m_file);
    {
        const std::lock_guard<std::mutex> locker(s_providersMutex);
        m_providers << provider;
    }
    // A direct connection: with a queued one, the list would have a dangling pointer until the call arrived.
    connect(
        provider, &QObject::destroyed, this, [this, provider] { Forget(provider); }, Qt::DirectConnection);
}

QList<KAnalyticsProvider *> KAnalyticsManager::Providers() const
{
    const std::lock_guard<std::mutex> locker(s_providersMutex);
    return m_providers;
}

void KAnalyticsManager::Forget(KAnalyticsProvider *provider)
{
    const std::lock_guard<std::mutex> locker(s_providersMutex);
    m_providers.removeAll(provider);
}

void KAnalyticsManager::sendEvent(KAnalyticsEvent::EventType type, QString category, QString name, QVariant value)
{
    if (!m_isActive)
        return;
    auto *event = new KAnalyticsEvent(nullptr);
    event->setType(type);
    event->setCategory(category);
    event->setName(name);
    event->setValue(value);
    sendEvent(event, /*flush=*/true);
}

void KAnalyticsManager::sendEventAction(QString category, QString name, QVariant value)
{
    sendEvent(KAnalyticsEvent::EventAction, category, name, value);
}

void KAnalyticsManager::sendEvent(KAnalyticsEvent *event, bool flush)
{
    if (!m_isActive) {
        if (event)
            event->deleteLater();
        return;
    }
    if (m_useDb) {
        m_db->insertEvent(event);
        m_db->commitAll();
    } else {
        m_file->insertEvent(event);
        if (event)
            event->deleteLater(); // the file store doesn't take ownership
    }
    ++m_nbEvents;
    if (m_nbEvents >= m_maxEventsBufferised && flush)
        flushEvents(/*delayed=*/true);
}

void KAnalyticsManager::startTimerEvent(QString category, QString name)
{
    if (!m_isActive)
        return;
    KAnalyticsEventTimer *&timer = m_timers[category + name];
    if (!timer) {
        timer = new KAnalyticsEventTimer(nullptr);
        timer->setCategory(category);
        timer->setName(name);
    }
    timer->start();
}

void KAnalyticsManager::stopTimerEvent(QString category, QString name)
{
    if (!m_isActive)
        return;
    KAnalyticsEventTimer *timer = m_timers.take(category + name);
    if (!timer)
        return;
    timer->stop();
    sendEvent(timer, /*flush=*/true);
}

KAnalyticsEventCounter *KAnalyticsManager::Counter(const QString &category, const QString &name)
{
    KAnalyticsEventCounter *&counter = m_counters[category + name];
    if (!counter) {
        counter = new KAnalyticsEventCounter(nullptr);
        counter->setCategory(category);
        counter->setName(name);
    }
    return counter;
}

void KAnalyticsManager::increaseCounterEvent(QString category, QString name)
{
    if (m_isActive)
        Counter(category, name)->increase();
}

void KAnalyticsManager::decreaseCounterEvent(QString category, QString name)
{
    if (m_isActive)
        Counter(category, name)->decrease();
}

void KAnalyticsManager::setMaxEventsBufferised(int maxEventsBufferised)
{
    if (m_maxEventsBufferised == maxEventsBufferised)
        return;
    m_maxEventsBufferised = maxEventsBufferised;
    Q_EMIT maxEventsBufferisedChanged(maxEventsBufferised);
}

void KAnalyticsManager::setVersion(QString version)
{
    if (m_version == version)
        return;
    m_version = version;
    Q_EMIT versionChanged(version);
}

void KAnalyticsManager::setIsActive(bool isActive)
{
    if (m_isActive == isActive)
        return;
    m_isActive = isActive;
    Q_EMIT isActiveChanged(isActive);
}

void KAnalyticsManager::flushEvents(bool delayed)
{
    if (delayed)
        Q_EMIT flushEventsAsked();
    else
        flushEventsSend();
}

void KAnalyticsManager::flushEventsSend()
{
    const QHash<QString, KAnalyticsEventCounter *> counters = std::exchange(m_counters, {});
    for (KAnalyticsEventCounter *counter : counters)
        sendEvent(counter, /*flush=*/false);
    const QList<KAnalyticsRawEvent *> raw = m_useDb ? m_db->allEvents() : m_file->allEvents();
    const QList<KAnalyticsProvider *> providers = Providers();
    for (KAnalyticsProvider *provider : providers)
        provider->flushEvents(raw);
    if (providers.isEmpty())
        qDeleteAll(raw); // no provider takes ownership
}

void KAnalyticsManager::waitBeforeExit()
{
    flushEvents(/*delayed=*/false);
    const QList<KAnalyticsProvider *> providers = Providers();
    for (KAnalyticsProvider *provider : providers)
        provider->waitBeforeExit();
}
