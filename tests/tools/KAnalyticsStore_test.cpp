#include "analytics/KAnalyticsDb.h"
#include "analytics/KAnalyticsEvent.h"
#include "analytics/KAnalyticsFile.h"
#include "analytics/KAnalyticsProvider.h"

#include <QDateTime>
#include <QJsonDocument>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <limits>

namespace {

KAnalyticsEvent *Event(const char *name)
{
    auto *event = new KAnalyticsEvent(nullptr);
    event->setName(QString::fromLatin1(name));
    event->setTimestamp(1);
    return event;
}

/// Names of the events, which are deleted.
QStringList Names(const QList<KAnalyticsRawEvent *> &events)
{
    QStringList names;
    for (KAnalyticsRawEvent *raw : events) {
        KAnalyticsEvent event(nullptr);
        event.fromJson(raw->value());
        names << QStringLiteral("%1:%2").arg(raw->id()).arg(event.name());
    }
    qDeleteAll(events);
    return names;
}

void Write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size())
        qFatal("can't write %s", qPrintable(path));
}

QByteArray Read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// A file of the binary store with one event.
QByteArray StoreBytes()
{
    const QJsonObject event = {{QStringLiteral("name"), QStringLiteral("old")},
                               {QStringLiteral("type"), QStringLiteral("duration")}};
    return QJsonDocument(QJsonObject{{QStringLiteral("events"), QJsonArray{event}},
                                     {QStringLiteral("userId"), QStringLiteral("me")},
                                     {QStringLiteral("mine"), QJsonArray{1, 2}}})
        .toBinaryData();
}

class Recorder : public KAnalyticsProvider {
public:
    Recorder() : KAnalyticsProvider(nullptr) { }
    QStringList calls;

protected:
    void storageChanged(QObject *store) override { calls << QString::fromLatin1(store->metaObject()->className()); }
    void preFlush(QList<KAnalyticsRawEvent *> events) override { calls << QStringLiteral("pre %1").arg(events.size()); }
    void flushEvent(KAnalyticsRawEvent *event) override { calls << QString::number(event->id()); }
    void postFlush() override { calls << QStringLiteral("post"); }
};

} // namespace

class tst_KAnalyticsStore : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void cleanup() { m_db.reset(); }

    void databaseKeepsEvents();
    void databaseTakesOver();
    void userIds();
    void copyHoldsEventsOnly();
    void keptOutByALock();
    void databaseIsCorrupt();
    void fileWithoutPath();
    void fileIsMissing();
    void filePersistsNothing();
    void fileIsBad_data();
    void fileIsBad();
    void lockLeftBehind_data();
    void lockLeftBehind();
    void providerCalls();
    void tooOld_data();
    void tooOld();

private:
    QString Path() const { return m_dir->filePath(QStringLiteral("store")); }
    /// A fresh session on the same file.
    KAnalyticsDb &OpenAnew();

    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<KAnalyticsDb> m_db;
};

void tst_KAnalyticsStore::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    OpenAnew();
}

KAnalyticsDb &tst_KAnalyticsStore::OpenAnew()
{
    m_db.reset();
    m_db = std::make_unique<KAnalyticsDb>(QStringLiteral("test"), QStringLiteral("QSQLITE"), nullptr);
    m_db->setFilePath(Path());
    return *m_db;
}

void tst_KAnalyticsStore::databaseKeepsEvents()
{
    m_db->insertEvent(Event("a"));
    m_db->insertEvent(nullptr);
    m_db->insertEvent(Event("b"));
    QCOMPARE(Names(OpenAnew().allEvents()), QStringList({QStringLiteral("1:a"), QStringLiteral("2:b")}));
    QVERIFY(m_db->allEvents().isEmpty());
    QVERIFY(OpenAnew().allEvents().isEmpty());
}

void tst_KAnalyticsStore::databaseTakesOver()
{
    QPointer<KAnalyticsEvent> event(Event("a"));
    const QString json = event->toJson();
    m_db->insertEvent(event);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(event.isNull());
    const QList<KAnalyticsRawEvent *> raw = m_db->allEvents();
    QCOMPARE(raw.value(0)->value(), json);
    qDeleteAll(raw);
}

void tst_KAnalyticsStore::userIds()
{
    QCOMPARE(m_db->userId(/*create=*/false), QString());
    const QString made = m_db->userId(/*create=*/true);
    QVERIFY(!QUuid(made).isNull());
    QVERIFY(!made.contains(QLatin1Char('{')));
    QCOMPARE(m_db->userId(/*create=*/false), made);
    QCOMPARE(OpenAnew().userId(/*create=*/false), QStringLiteral("{%1}").arg(made)); // as the table has it

    m_db->eraseDb();
    OpenAnew();
    m_db->setUserId(QStringLiteral("a"));
    m_db->setUserId(QStringLiteral("b"));
    QCOMPARE(m_db->userId(/*create=*/true), QStringLiteral("a"));
    QCOMPARE(OpenAnew().userId(/*create=*/false), QStringLiteral("a"));
}

void tst_KAnalyticsStore::copyHoldsEventsOnly()
{
    m_db->insertEvent(Event("a"));
    m_db->setUserId(QStringLiteral("me"));
    const QString copyPath = m_dir->filePath(QStringLiteral("copy"));
    m_db->copyDbTo(copyPath);
    KAnalyticsDb copy(QStringLiteral("copy"), QStringLiteral("QSQLITE"), nullptr);
    copy.setFilePath(copyPath);
    QCOMPARE(copy.userId(/*create=*/false), QString());
    const QList<KAnalyticsRawEvent *> raw = copy.allEvents();
    QCOMPARE(raw.size(), 1);
    QVERIFY(raw[0]->value().startsWith(QStringLiteral("\"{")));
    qDeleteAll(raw);
}

void tst_KAnalyticsStore::keptOutByALock()
{
    m_db->insertEvent(Event("a"));
    KAnalyticsDb second(QStringLiteral("second"), QStringLiteral("QSQLITE"), nullptr);
    second.setFilePath(Path()); // as another process would: SQLite's locks are by connection
    second.insertEvent(Event("b"));
    QCOMPARE(Names(second.allEvents()), QStringList{QStringLiteral("0:b")});
    second.insertEvent(Event("c"));
    m_db->close();
    second.insertEvent(Event("d"));
    QCOMPARE(Names(second.allEvents()),
             QStringList({QStringLiteral("1:a"), QStringLiteral("2:c"), QStringLiteral("3:d")}));
}

void tst_KAnalyticsStore::databaseIsCorrupt()
{
    m_db->close();
    Write(Path(), QByteArray(8192, 'x'));
    OpenAnew();
    m_db->insertEvent(Event("a"));
    QVERIFY(m_db->allEvents().isEmpty());
    QVERIFY(!m_db->userId(/*create=*/true).isEmpty()); // for this run
    QCOMPARE(Read(Path()), QByteArray(8192, 'x'));
}

void tst_KAnalyticsStore::fileWithoutPath()
{
    KAnalyticsFile file(nullptr);
    QVERIFY(file.currentJSonRoot().isEmpty());
    const std::unique_ptr<KAnalyticsEvent> event(Event("a"));
    file.insertEvent(event.get());
    QJsonObject root;
    file.saveJSonRoot(root);
    QVERIFY(file.allEvents().isEmpty());
    QCOMPARE(file.userId(), QString());
}

void tst_KAnalyticsStore::fileIsMissing()
{
    const QString path = m_dir->filePath(QStringLiteral("absent"));
    KAnalyticsFile file(nullptr);
    file.setFilePath(path);
    QCOMPARE(file.currentJSonRoot().keys(), QStringList{QStringLiteral("events")});
    QPointer<KAnalyticsEvent> event(Event("a"));
    file.insertEvent(event);
    file.insertEvent(nullptr);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(!event.isNull()); // still the caller's
    delete event;
    QVERIFY(file.allEvents().isEmpty());
    QVERIFY(!QFile::exists(path));
    QCOMPARE(QDir(m_dir->path()).entryList({QStringLiteral("absent*")}), QStringList()); // no lock, no temporary
}

void tst_KAnalyticsStore::filePersistsNothing()
{
    const QString path = m_dir->filePath(QStringLiteral("binary"));
    Write(path, StoreBytes());
    KAnalyticsFile file(nullptr);
    file.setFilePath(path);
    QCOMPARE(file.userId(), QStringLiteral("me"));
    QCOMPARE(file.getProviderArray(QStringLiteral("mine")), QJsonArray({1, 2}));
    QCOMPARE(file.getProviderArray(QStringLiteral("yours")), QJsonArray());
    const std::unique_ptr<KAnalyticsEvent> event(Event("new"));
    file.insertEvent(event.get());
    file.addProviderArray(QStringLiteral("yours"), QJsonArray{3});
    file.setUserId(QStringLiteral("you"));
    for (int i = 0; i < 2; ++i)
        QCOMPARE(Names(file.allEvents()), QStringList{QStringLiteral("0:old")});
    QCOMPARE(Read(path), StoreBytes());
}

void tst_KAnalyticsStore::fileIsBad_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("text") << QByteArray("{\"events\":[]}");
    QTest::newRow("head only") << StoreBytes().left(12);
    QTest::newRow("cut in the middle") << StoreBytes().left(StoreBytes().size() / 2);
    QTest::newRow("sizes overwritten") << StoreBytes().replace(8, 12, QByteArray(12, '\xff'));
}

void tst_KAnalyticsStore::fileIsBad()
{
    QFETCH(QByteArray, bytes);
    const QString path = m_dir->filePath(QStringLiteral("binary"));
    Write(path, bytes);
    KAnalyticsFile file(nullptr);
    file.setFilePath(path);
    QVERIFY(file.currentJSonRoot().isEmpty());
    const std::unique_ptr<KAnalyticsEvent> event(Event("new"));
    file.insertEvent(event.get());
    file.addProviderArray(QStringLiteral("mine"), {});
    QVERIFY(file.allEvents().isEmpty());
    QCOMPARE(file.userId(), QString());
    QCOMPARE(Read(path), bytes);
}

void tst_KAnalyticsStore::lockLeftBehind_data()
{
    QTest::addColumn<bool>("readable");
    QTest::newRow("of a process that ended") << true;
    QTest::newRow("garbage") << false;
}

void tst_KAnalyticsStore::lockLeftBehind()
{
    QFETCH(bool, readable);
    QProcess ended;
    ended.start(QStringLiteral("sh"), {QStringLiteral("-c"), QStringLiteral("echo $$")});
    QVERIFY(ended.waitForFinished());
    const QByteArray owner =
        ended.readAll().trimmed() + "\nsome-program\n" + QSysInfo::machineHostName().toUtf8() + "\n";
    const QString path = m_dir->filePath(QStringLiteral("binary"));
    Write(path, StoreBytes());
    Write(path + QStringLiteral(".lock"), readable ? owner : QByteArray("garbage"));
    KAnalyticsFile file(nullptr);
    file.setFilePath(path);
    QCOMPARE(file.userId(), QStringLiteral("me")); // ends, and reads
    QVERIFY(!QFile::exists(path + QStringLiteral(".lock")));
}

void tst_KAnalyticsStore::providerCalls()
{
    Recorder provider;
    provider.setDb(nullptr);
    provider.setDb(m_db.get());
    KAnalyticsFile file(nullptr);
    provider.setAnFile(&file);
    KAnalyticsRawEvent a(7, QString(), nullptr), b(9, QString(), nullptr);
    provider.flushEvents({&a, &b});
    provider.flushEvents({});
    QCOMPARE(provider.calls.join(QLatin1Char(' ')),
             QStringLiteral("KAnalyticsDb KAnalyticsFile pre 2 7 9 post pre 0 post"));
}

void tst_KAnalyticsStore::tooOld_data()
{
    QTest::addColumn<qint64>("ageMs");
    QTest::addColumn<bool>("passes");
    QTest::newRow("ten days") << qint64(864000000) << true;
    QTest::newRow("one millisecond more") << qint64(864000001) << false;
    QTest::newRow("from the future") << qint64(-5000) << true;
    QTest::newRow("the epoch") << QDateTime::currentMSecsSinceEpoch() << false;
    QTest::newRow("older than 64 bits hold") << std::numeric_limits<qint64>::max() << false;
}

void tst_KAnalyticsStore::tooOld()
{
    QFETCH(qint64, ageMs);
    Recorder provider;
    KAnalyticsEvent event(nullptr);
    bool passes;
    qint64 now;
    do { // both within one millisecond
        now = QDateTime::currentMSecsSinceEpoch();
        const bool tooFar = ageMs == std::numeric_limits<qint64>::max();
        event.setTimestamp(tooFar ? std::numeric_limits<qint64>::min() : now - ageMs);
        passes = provider.eventTimeCheck(event);
    } while (QDateTime::currentMSecsSinceEpoch() != now);
    QTEST(passes, "passes");
}

QTEST_GUILESS_MAIN(tst_KAnalyticsStore)
#include "KAnalyticsStore_test.moc"
