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
    void threshold();
    void providersTwiceOrGone();
    void countersAndTimers();
    void switchedOff();

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
    m_manager->setMaxEventsBufferised(100);
    QCOMPARE(Asked(m_manager, 1, /*flush=*/true), 0);
}

void tst_KAnalyticsManager::providersTwiceOrGone()
{
    auto *gone = new Sender(&m_log);
    m_manager->registerProvider(gone);
    m_manager->registerProvider(nullptr);
    delete gone; // as by a plug-in that goes before its host
    auto *twice = new Sender(&m_log);
    m_manager->registerProvider(twice);
    QCOMPARE(twice->parent(), m_manager);
    m_log.clear();
    m_manager->sendEvent(KAnalyticsEvent::EventAction, kCategory, kName, 7);
    m_manager->flushEvents(/*delayed=*/true);
    QVERIFY(m_log.isEmpty());
    RunLoop();
    QCOMPARE(m_log, QStringList{QStringLiteral("c/n=7")});
    m_manager->registerProvider(twice);
    m_manager->waitBeforeExit(); // the store is empty
    KAnalyticsManager::killInstance();
    QCOMPARE(m_log.join(QLatin1Char(' ')), QStringLiteral("c/n=7 KAnalyticsDb waited waited deleted"));
}

void tst_KAnalyticsManager::countersAndTimers()
{
    m_manager->registerProvider(new Sender(&m_log));
    m_log.clear();
    m_manager->stopTimerEvent(kCategory, kName);   // unknown
    for (const char *category : {"ab", "a", "ab"}) // keys have no separator
        m_manager->increaseCounterEvent(QString::fromLatin1(category), QLatin1String(category[1] ? "c" : "bc"));
    m_manager->decreaseCounterEvent(QStringLiteral("ab"), QStringLiteral("c"));
    m_manager->flushEvents(/*delayed=*/false);
    m_manager->increaseCounterEvent(QStringLiteral("ab"), QStringLiteral("c"));
    m_manager->startTimerEvent(kCategory, QStringLiteral("left running"));
    for (int i = 0; i < 2; ++i)
        m_manager->startTimerEvent(kCategory, QStringLiteral("t"));
    for (int i = 0; i < 2; ++i)
        m_manager->stopTimerEvent(kCategory, QStringLiteral("t"));
    m_manager->flushEvents(/*delayed=*/false);
    QCOMPARE(m_log.size(), 3);
    QCOMPARE(m_log[0], QStringLiteral("ab/c=2"));
    QVERIFY(m_log[1].startsWith(QStringLiteral("c/t=")));
    QCOMPARE(m_log[2], QStringLiteral("ab/c=1")); // began anew, and was stored at the flush
    m_manager->increaseCounterEvent(kCategory, QStringLiteral("never flushed"));
}

void tst_KAnalyticsManager::switchedOff()
{
    m_manager->registerProvider(new Sender(&m_log));
    m_log.clear();
    m_manager->increaseCounterEvent(kCategory, QStringLiteral("before"));
    m_manager->startTimerEvent(kCategory, QStringLiteral("before"));
    m_manager->setIsActive(false);
    QPointer<KAnalyticsEvent> event(new KAnalyticsEvent(nullptr));
    m_manager->sendEvent(event, /*flush=*/true);
    m_manager->sendEvent(nullptr, /*flush=*/true);
    m_manager->sendEventAction(kCategory, kName, 1);
    m_manager->stopTimerEvent(kCategory, QStringLiteral("before"));
    m_manager->increaseCounterEvent(kCategory, kName);
    m_manager->flushEvents(/*delayed=*/false);
    RunLoop();
    QVERIFY(event.isNull() && m_log.isEmpty());
    m_manager->setIsActive(true);
    m_manager->stopTimerEvent(kCategory, QStringLiteral("before")); // it stayed
    m_manager->flushEvents(/*delayed=*/false);
    QCOMPARE(m_log.size(), 1);
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
