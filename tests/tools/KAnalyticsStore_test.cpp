#include "Files.h"
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
    void userIds();
    void keptOutByALock();
    void databaseIsCorrupt();
    void fileIsMissing();
    void filePersistsNothing();
    void fileIsBad();
    void lockLeftBehind();
    void providerCalls();
    void tooOld();
    void toJson();
    void fromJson();
    void timer();

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
    QPointer<KAnalyticsEvent> event(Event("a"));
    m_db->insertEvent(event);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(event.isNull());
    m_db->insertEvent(nullptr);
    m_db->insertEvent(Event("b"));
    QCOMPARE(Names(OpenAnew().allEvents()), QStringList({QStringLiteral("1:a"), QStringLiteral("2:b")}));
    QVERIFY(m_db->allEvents().isEmpty());
    QVERIFY(OpenAnew().allEvents().isEmpty());
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
    WriteFile(Path(), QByteArray(8192, 'x'));
    OpenAnew();
    m_db->insertEvent(Event("a"));
    QVERIFY(m_db->allEvents().isEmpty());
    QVERIFY(!m_db->userId(/*create=*/true).isEmpty()); // for this run
    QCOMPARE(ReadFile(Path()), QByteArray(8192, 'x'));
}

void tst_KAnalyticsStore::fileIsMissing()
{
    for (const QString &path : {m_dir->filePath(QStringLiteral("absent")), QString()}) {
        KAnalyticsFile file(nullptr);
        if (!path.isEmpty())
            file.setFilePath(path);
        QCOMPARE(file.currentJSonRoot().isEmpty(), path.isEmpty());
        QPointer<KAnalyticsEvent> event(Event("a"));
        file.insertEvent(event);
        file.insertEvent(nullptr);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QVERIFY(!event.isNull()); // still the caller's
        delete event;
        QVERIFY(file.allEvents().isEmpty());
    }
    QCOMPARE(QDir(m_dir->path()).entryList({QStringLiteral("absent*")}), QStringList()); // no lock, no temporary
}

void tst_KAnalyticsStore::filePersistsNothing()
{
    const QString path = m_dir->filePath(QStringLiteral("binary"));
    WriteFile(path, StoreBytes());
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
    QCOMPARE(ReadFile(path), StoreBytes());
}

void tst_KAnalyticsStore::fileIsBad()
{
    const QByteArray whole = StoreBytes();
    QByteArray sizes = whole;
    sizes.replace(8, 12, QByteArray(12, '\xff'));
    for (const QByteArray &bytes :
         {QByteArray(), QByteArray("{\"events\":[]}"), whole.left(12), whole.left(whole.size() / 2), sizes}) {
        const QString path = WriteFile(m_dir->filePath(QStringLiteral("binary")), bytes);
        KAnalyticsFile file(nullptr);
        file.setFilePath(path);
        QVERIFY(file.currentJSonRoot().isEmpty());
        const std::unique_ptr<KAnalyticsEvent> event(Event("new"));
        file.insertEvent(event.get());
        file.addProviderArray(QStringLiteral("mine"), {});
        QVERIFY(file.allEvents().isEmpty());
        QCOMPARE(file.userId(), QString());
        QCOMPARE(ReadFile(path), bytes);
    }
}

void tst_KAnalyticsStore::lockLeftBehind()
{
    QProcess ended;
    ended.start(QStringLiteral("sh"), {QStringLiteral("-c"), QStringLiteral("echo $$")});
    QVERIFY(ended.waitForFinished());
    const QByteArray owner =
        ended.readAll().trimmed() + "\nsome-program\n" + QSysInfo::machineHostName().toUtf8() + "\n";
    for (const QByteArray &lock : {owner, QByteArray("garbage")}) {
        const QString path = WriteFile(m_dir->filePath(QStringLiteral("binary")), StoreBytes());
        WriteFile(path + QStringLiteral(".lock"), lock);
        KAnalyticsFile file(nullptr);
        file.setFilePath(path);
        QCOMPARE(file.userId(), QStringLiteral("me")); // ends, and reads
        QVERIFY(!QFile::exists(path + QStringLiteral(".lock")));
    }
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

void tst_KAnalyticsStore::tooOld()
{
    constexpr qint64 kTenDays = 864000000, kFar = std::numeric_limits<qint64>::max();
    const std::pair<qint64, bool> rows[] = {{kTenDays, true}, {kTenDays + 1, false}, {-5000, true}, {kFar, false}};
    for (const auto &[ageMs, expected] : rows) {
        Recorder provider;
        KAnalyticsEvent event(nullptr);
        bool passes;
        qint64 now;
        do { // both within one millisecond
            now = QDateTime::currentMSecsSinceEpoch();
            event.setTimestamp(ageMs == kFar ? std::numeric_limits<qint64>::min() : now - ageMs);
            passes = provider.eventTimeCheck(event);
        } while (QDateTime::currentMSecsSinceEpoch() != now);
        QCOMPARE(passes, expected);
    }
}

void tst_KAnalyticsStore::toJson()
{
    const struct {
        int type;
        QVariant value;
        QByteArray typeText, valueText;
    } rows[] = {{0, QStringLiteral("a \"b\" \u00e9"), "action", "\"a \\\"b\\\" \xc3\xa9\""},
                {1, qint64(1500), "duration", "1500"},
                {2, QVariant(), "counter", "null"},
                {7, true, "unknow", "true"},
                {-1, 0.5, "unknow", "0.5"}};
    for (const auto &row : rows) {
        KAnalyticsEvent event(nullptr);
        event.setName(QStringLiteral("n"));
        event.setCategory(QStringLiteral("c"));
        event.setTimestamp(1700000000123);
        event.setType(KAnalyticsEvent::EventType(row.type));
        event.setValue(row.value);
        const QByteArray text = "{\"category\":\"c\",\"name\":\"n\",\"timestamp\":1700000000123,\"type\":\""
            + row.typeText + "\",\"value\":" + row.valueText + "}";
        QCOMPARE(event.toJson().toUtf8(), text);

        KAnalyticsEvent back(nullptr);
        back.fromJson(QString::fromUtf8(text));
        QCOMPARE(back.timestamp(), qint64(1700000000123));
        QCOMPARE(back.name(), event.name());
        QCOMPARE(int(back.type()), row.typeText == "unknow" ? 0 : row.type);
        QCOMPARE(back.value(), QJsonValue::fromVariant(row.value).toVariant());
    }
}

void tst_KAnalyticsStore::fromJson()
{
    const struct {
        const char *json;
        qint64 timestamp;
        const char *name;
        int type;
    } rows[] = {{"not json", 5, "before", 2}, // as before
                {"", 5, "before", 2},
                {"{}", 0, "", 0},
                {"[1]", 0, "", 0},
                {R"({"timestamp":"soon","name":7,"type":["duration"]})", 0, "", 0},
                {R"({"timestamp":"77"})", 77, "", 0},
                {R"({"timestamp":1700000000123,"type":"duration"})", 1700000000123, "", 1},
                {R"({"type":"Duration"})", 0, "", 0}};
    for (const auto &row : rows) {
        KAnalyticsEvent event(nullptr);
        event.setTimestamp(5);
        event.setName(QStringLiteral("before"));
        event.setType(KAnalyticsEvent::EventCounter);
        event.fromJson(QString::fromLatin1(row.json));
        QVERIFY2(event.timestamp() == row.timestamp && event.name() == QLatin1String(row.name)
                     && int(event.type()) == row.type,
                 row.json);
    }
}

void tst_KAnalyticsStore::timer()
{
    const qint64 before = QDateTime::currentMSecsSinceEpoch();
    KAnalyticsEventTimer timer(nullptr);
    QVERIFY(timer.timestamp() >= before && timer.timestamp() <= QDateTime::currentMSecsSinceEpoch());
    QCOMPARE(timer.type(), KAnalyticsEvent::EventDuration);
    timer.setTimestamp(1);
    timer.start();
    QTest::qSleep(3);
    timer.stop();
    QVERIFY(timer.value().toLongLong() >= 3);
    const std::unique_ptr<KAnalyticsEvent> copy(timer.clone());
    QCOMPARE(copy->toJson(), timer.toJson());
    QCOMPARE(copy->metaObject(), &KAnalyticsEvent::staticMetaObject); // the plain class
    timer.start();
    QCOMPARE(timer.value(), QVariant(0));
    QCOMPARE(timer.timestamp(), qint64(1));
}

QTEST_GUILESS_MAIN(tst_KAnalyticsStore)
#include "KAnalyticsStore_test.moc"
