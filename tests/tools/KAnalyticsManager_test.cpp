#include "analytics/KAnalyticsManager.h"

#include "OwnFolders.h"
#include "analytics/KAnalyticsDb.h"
#include "analytics/KAnalyticsProvider.h"

#include <QPointer>
#include <QSettings>
#include <QSignalSpy>
#include <QtTest>

namespace {

const QString kApplication = QStringLiteral("analytics_manager_test");
const QString kCategory = QStringLiteral("c"), kName = QStringLiteral("n");

/// Takes what it is given and notes "category/name=value".
class Sender : public KAnalyticsProvider {
public:
    explicit Sender(QStringList *log) : KAnalyticsProvider(nullptr), m_log(log) { }
    ~Sender() override { *m_log << QStringLiteral("deleted"); }
    void waitBeforeExit() override { *m_log << QStringLiteral("waited"); }

protected:
    void storageChanged(QObject *store) override { *m_log << QString::fromLatin1(store->metaObject()->className()); }
    void flushEvent(KAnalyticsRawEvent *raw) override
    {
        KAnalyticsEvent event(nullptr);
        event.fromJson(raw->value());
        *m_log << QStringLiteral("%1/%2=%3").arg(event.category(), event.name(), event.value().toString());
        delete raw;
    }

private:
    QStringList *m_log;
};

int Asked(KAnalyticsManager *manager, int events, bool flush)
{
    QSignalSpy asked(manager, &KAnalyticsManager::flushEventsAsked);
    for (int i = 0; i < events; ++i)
        manager->sendEvent(new KAnalyticsEvent(nullptr), flush);
    return asked.size();
}

void RunLoop()
{
    QCoreApplication::sendPostedEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace

class tst_KAnalyticsManager : public QObject {
    Q_OBJECT
public:
    explicit tst_KAnalyticsManager(const OwnFolders *folders) : m_folders(folders) { }

private Q_SLOTS:
    void init();
    void cleanup();

    void storeAndIdentifier();
    void ownIdentifier();
    void threshold();
    void delayedFlush();
    void providers();
    void providersTwiceOrGone();
    void countersAndTimers();
    void keysWithoutSeparator();
    void switchedOff();
    void fileStore();
    void singleton();
    void queuedFromAnotherThread();

private:
    const OwnFolders *m_folders;
    QStringList m_log;
    KAnalyticsManager *m_manager = nullptr;
};

void tst_KAnalyticsManager::init()
{
    QFile::remove(m_folders->Store(kApplication));
    m_log.clear();
    m_manager = KAnalyticsManager::instance();
}

void tst_KAnalyticsManager::cleanup()
{
    KAnalyticsManager::killInstance();
    RunLoop();
}

void tst_KAnalyticsManager::storeAndIdentifier()
{
    QVERIFY(QFile::exists(m_folders->Store(kApplication)));
    const QString id = m_manager->userId();
    QVERIFY(id.startsWith(QLatin1Char('{')) && !QUuid(id).isNull());
    QCOMPARE(QSettings(QStringLiteral("Brelt"), QString()).value(QStringLiteral("platformDef")).toString(), id);
    KAnalyticsManager::killInstance();
    QCOMPARE(KAnalyticsManager::instance()->userId(), id);
}

void tst_KAnalyticsManager::ownIdentifier()
{
    KAnalyticsManager::killInstance();
    QFile::remove(m_folders->Store(kApplication));
    auto *own = new KAnalyticsManager(/*useSettingsUserId=*/false, nullptr, /*useDb=*/true);
    QCOMPARE(KAnalyticsManager::instance(), own); // the first becomes the process's
    QVERIFY(!own->userId().isEmpty() && !own->userId().startsWith(QLatin1Char('{')));
}

void tst_KAnalyticsManager::threshold()
{
    QCOMPARE(Asked(m_manager, 9, /*flush=*/true), 0);
    QCOMPARE(Asked(m_manager, 1, /*flush=*/true), 1);
    RunLoop();
    QCOMPARE(Asked(m_manager, 1, /*flush=*/true), 1); // once reached, for each
    QCOMPARE(Asked(m_manager, 5, /*flush=*/false), 0);
    QSignalSpy changed(m_manager, &KAnalyticsManager::maxEventsBufferisedChanged);
    m_manager->setMaxEventsBufferised(100);
    m_manager->setMaxEventsBufferised(100);
    QCOMPARE(changed.size(), 1);
    QCOMPARE(Asked(m_manager, 1, /*flush=*/true), 0);
}

void tst_KAnalyticsManager::delayedFlush()
{
    m_manager->registerProvider(new Sender(&m_log));
    m_manager->registerProvider(nullptr);
    m_manager->sendEventAction(kCategory, kName, QStringLiteral("v"));
    m_log.clear();
    m_manager->flushEvents(/*delayed=*/true);
    QVERIFY(m_log.isEmpty());
    RunLoop();
    QCOMPARE(m_log, QStringList{QStringLiteral("c/n=v")});
    m_manager->flushEvents(/*delayed=*/false);
    QCOMPARE(m_log.size(), 1); // the store is empty
}

void tst_KAnalyticsManager::providers()
{
    auto *provider = new Sender(&m_log);
    m_manager->registerProvider(provider);
    QCOMPARE(provider->parent(), m_manager);
    m_manager->sendEvent(KAnalyticsEvent::EventAction, kCategory, kName, 7);
    m_manager->waitBeforeExit();
    KAnalyticsManager::killInstance();
    QCOMPARE(m_log.join(QLatin1Char(' ')), QStringLiteral("KAnalyticsDb c/n=7 waited deleted"));
}

void tst_KAnalyticsManager::providersTwiceOrGone()
{
    auto *gone = new Sender(&m_log);
    m_manager->registerProvider(gone);
    delete gone; // as by a plug-in that goes before its host
    auto *twice = new Sender(&m_log);
    m_manager->registerProvider(twice);
    m_manager->registerProvider(twice);
    m_log.clear();
    m_manager->waitBeforeExit();
    KAnalyticsManager::killInstance();
    QCOMPARE(m_log.join(QLatin1Char(' ')), QStringLiteral("waited waited deleted"));
}

void tst_KAnalyticsManager::countersAndTimers()
{
    m_manager->registerProvider(new Sender(&m_log));
    m_log.clear();
    m_manager->stopTimerEvent(kCategory, kName); // unknown
    for (int i = 0; i < 3; ++i)
        m_manager->increaseCounterEvent(kCategory, kName);
    m_manager->decreaseCounterEvent(kCategory, kName);
    m_manager->flushEvents(/*delayed=*/false);
    m_manager->increaseCounterEvent(kCategory, kName);
    m_manager->startTimerEvent(kCategory, QStringLiteral("t"));
    m_manager->startTimerEvent(kCategory, QStringLiteral("left running"));
    m_manager->startTimerEvent(kCategory, QStringLiteral("t"));
    m_manager->stopTimerEvent(kCategory, QStringLiteral("t"));
    m_manager->stopTimerEvent(kCategory, QStringLiteral("t"));
    m_manager->flushEvents(/*delayed=*/false);
    QCOMPARE(m_log.size(), 3);
    QCOMPARE(m_log[0], QStringLiteral("c/n=2"));
    QVERIFY(m_log[1].startsWith(QStringLiteral("c/t=")));
    QCOMPARE(m_log[2], QStringLiteral("c/n=1")); // began anew, and was stored at the flush
    m_manager->increaseCounterEvent(kCategory, QStringLiteral("never flushed"));
}

void tst_KAnalyticsManager::keysWithoutSeparator()
{
    m_manager->registerProvider(new Sender(&m_log));
    m_log.clear();
    m_manager->increaseCounterEvent(QStringLiteral("ab"), QStringLiteral("c"));
    m_manager->increaseCounterEvent(QStringLiteral("a"), QStringLiteral("bc"));
    m_manager->flushEvents(/*delayed=*/false);
    QCOMPARE(m_log, QStringList{QStringLiteral("ab/c=2")});
}

void tst_KAnalyticsManager::switchedOff()
{
    m_manager->registerProvider(new Sender(&m_log));
    m_log.clear();
    m_manager->increaseCounterEvent(kCategory, QStringLiteral("before"));
    m_manager->startTimerEvent(kCategory, QStringLiteral("before"));
    QSignalSpy changed(m_manager, &KAnalyticsManager::isActiveChanged);
    m_manager->setIsActive(false);
    m_manager->setIsActive(false);
    QCOMPARE(changed.size(), 1);
    QPointer<KAnalyticsEvent> event(new KAnalyticsEvent(nullptr));
    m_manager->sendEvent(event, /*flush=*/true);
    m_manager->sendEvent(nullptr, /*flush=*/true);
    m_manager->sendEventAction(kCategory, kName, 1);
    m_manager->stopTimerEvent(kCategory, QStringLiteral("before"));
    m_manager->increaseCounterEvent(kCategory, kName);
    m_manager->flushEvents(/*delayed=*/false);
    RunLoop();
    QVERIFY(event.isNull());
    QVERIFY(m_log.isEmpty());
    m_manager->setIsActive(true);
    m_manager->stopTimerEvent(kCategory, QStringLiteral("before")); // it stayed
    m_manager->flushEvents(/*delayed=*/false);
    QCOMPARE(m_log.size(), 1);
}

void tst_KAnalyticsManager::fileStore()
{
    KAnalyticsManager::killInstance();
    QFile::remove(m_folders->Store(kApplication));
    KAnalyticsManager manager(/*useSettingsUserId=*/false, nullptr, /*useDb=*/false);
    manager.registerProvider(new Sender(&m_log));
    QCOMPARE(m_log, QStringList{QStringLiteral("KAnalyticsFile")});
    QPointer<KAnalyticsEvent> event(new KAnalyticsEvent(nullptr));
    manager.sendEvent(event, /*flush=*/true);
    manager.waitBeforeExit();
    RunLoop();
    QVERIFY(event.isNull());
    QCOMPARE(m_log.size(), 2); // this store keeps nothing
    QVERIFY(!QFile::exists(m_folders->Store(kApplication)));
    QCOMPARE(manager.userId(), QString());
}

void tst_KAnalyticsManager::singleton()
{
    QCOMPARE(KAnalyticsManager::instance(), m_manager);
    QCOMPARE(KAnalyticsManager::init(nullptr), m_manager);
    auto *other = new KAnalyticsManager(/*useSettingsUserId=*/true, nullptr, /*useDb=*/false);
    QCOMPARE(KAnalyticsManager::instance(), m_manager);
    QPointer<KAnalyticsManager> old(m_manager);
    QCOMPARE(KAnalyticsManager::init(other), other);
    QVERIFY(!old.isNull());
    KAnalyticsManager::killInstance();
    delete old;
}

void tst_KAnalyticsManager::queuedFromAnotherThread()
{
    m_manager->registerProvider(new Sender(&m_log));
    m_log.clear();
    QScopedPointer<QThread> thread(QThread::create([this] {
        QMetaObject::invokeMethod(m_manager, "sendEvent", Qt::QueuedConnection,
                                  Q_ARG(KAnalyticsEvent::EventType, KAnalyticsEvent::EventAction),
                                  Q_ARG(QString, kCategory), Q_ARG(QString, kName), Q_ARG(QVariant, QVariant(3)));
    }));
    thread->start();
    QVERIFY(thread->wait());
    RunLoop();
    m_manager->flushEvents(/*delayed=*/false);
    QCOMPARE(m_log, QStringList{QStringLiteral("c/n=3")});
}

int main(int argc, char **argv)
{
    const OwnFolders folders;
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(kApplication);
    tst_KAnalyticsManager test(&folders);
    return QTest::qExec(&test, argc, argv);
}

#include "KAnalyticsManager_test.moc"
