// Analytics: events and their text, the two stores, providers, and the manager.
#include "Case.h"
#include "OwnFolders.h"
#include "TestFiles.h"
#include "Threads.h"
#include "analytics/BinaryJson.h"
#include "analytics/KAnalyticsDb.h"
#include "analytics/KAnalyticsFile.h"
#include "analytics/KAnalyticsManager.h"
#include "analytics/KAnalyticsProvider.h"

#include <QJsonDocument>
#include <QLockFile>
#include <QPointer>
#include <QSettings>
#include <QSignalSpy>
#include <QtTest>

namespace {

const QString kApplication = "Analytics_test"_s, kSqlite = "QSQLITE"_s;
const QString kCategory = "c"_s, kName = "n"_s;

/// Provider that records each event as "category/name=value of type N", and the other calls.
class Sender : public KAnalyticsProvider {
public:
    explicit Sender(QStringList *log) : KAnalyticsProvider(nullptr), m_log(log) { }
    ~Sender() override { *m_log << "deleted"_s; }
    void waitBeforeExit() override { *m_log << "waited"_s; }

protected:
    void storageChanged(QObject *store) override
    {
        if (store == m_db || store == m_anFile)
            *m_log << QString::fromLatin1(store->metaObject()->className());
    }
    void preFlush(QList<KAnalyticsRawEvent *> events) override { *m_log << "pre%1"_s.arg(events.size()); }
    void flushEvent(KAnalyticsRawEvent *raw) override
    {
        KAnalyticsEvent event(nullptr);
        event.fromJson(raw->value());
        const QString name = event.category() + QLatin1Char('/') + event.name(), value = event.value().toString();
        *m_log << "%1=%2 of type %3"_s.arg(name, value).arg(event.type());
        delete raw;
    }
    void postFlush() override { *m_log << "post"_s; }

private:
    QStringList *m_log;
};

KAnalyticsEvent *Event(const char *name)
{
    auto *event = new KAnalyticsEvent(nullptr);
    event->setName(QString::fromLatin1(name));
    return event;
}

/// Returns "id:name" of the events and deletes them.
QString Names(const QList<KAnalyticsRawEvent *> &events)
{
    QStringList names;
    for (KAnalyticsRawEvent *raw : events) {
        KAnalyticsEvent event(nullptr);
        event.fromJson(raw->value());
        names << "%1:%2"_s.arg(raw->id()).arg(event.name());
    }
    qDeleteAll(events);
    return names.join(QLatin1Char(' '));
}

/// Returns the content of a binary store's file with one event.
QByteArray StoreBytes()
{
    const QJsonObject event = {{"name"_s, "old"_s}};
    return QJsonDocument(QJsonObject{{"events"_s, QJsonArray{event}},
                                     {"userId"_s, "me"_s},
                                     {"mine"_s, QJsonArray{1, 2}},
                                     {"wide"_s, QString(QChar(0x9375))}})
        .toBinaryData();
}

void RunLoop()
{
    QCoreApplication::sendPostedEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

} // namespace

class tst_Analytics : public QObject {
    Q_OBJECT
public:
    explicit tst_Analytics(const OwnFolders *folders) : m_folders(folders) { }

private Q_SLOTS:
    void init();
    void cleanup();

    void eventsAsText();
    void propertiesNotify();
    void databaseKeepsEvents();
    void damagedDatabase();
    void binaryForms();
    void binaryFile();
    void storeAndIdentifier();
    void managerOfAFile();
    void duplicateAndDeletedProviders();
    void countersAndTimers();
    void switchedOff();

private:
    QString Path() const { return m_dir->filePath("store"_s); }
    /// Opens a new session on the same file.
    KAnalyticsDb &OpenAnew();

    const OwnFolders *m_folders;
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<KAnalyticsDb> m_db;
    QStringList m_log;
    KAnalyticsManager *m_manager = nullptr;
};

void tst_Analytics::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QFile::remove(m_folders->Store(kApplication));
    m_manager = KAnalyticsManager::instance();
    m_log.clear();
}

void tst_Analytics::cleanup()
{
    m_db.reset();
    KAnalyticsManager::killInstance();
    RunLoop();
}

KAnalyticsDb &tst_Analytics::OpenAnew()
{
    m_db.reset();
    m_db = std::make_unique<KAnalyticsDb>("test"_s, kSqlite, nullptr);
    m_db->setFilePath(Path());
    return *m_db;
}

void tst_Analytics::eventsAsText()
{
    const struct {
        int type;
        QVariant value;
        QByteArray typeText, valueText;
    } written[] = {{0, "a \"b\" \u00e9"_s, "action", "\"a \\\"b\\\" \xc3\xa9\""},
                   {1, qint64(1500), "duration", "1500"},
                   {7, 0.5, "unknow", "0.5"}};
    for (const auto &row : written) {
        const Case named(row.typeText);
        KAnalyticsEvent event(nullptr), back(nullptr);
        event.setName(kName);
        event.setCategory(kCategory);
        event.setTimestamp(1700000000123);
        event.setType(KAnalyticsEvent::EventType(row.type));
        event.setValue(row.value);
        QCOMPARE(event.toJson().toUtf8(),
                 "{\"category\":\"c\",\"name\":\"n\",\"timestamp\":1700000000123,\"type\":\"" + row.typeText
                     + "\",\"value\":" + row.valueText + "}");
        QCOMPARE(std::unique_ptr<KAnalyticsEvent>(event.clone())->toJson(), event.toJson());
        back.fromJson(event.toJson());
        QCOMPARE(back.timestamp(), qint64(1700000000123));
        QCOMPARE(int(back.type()), row.type % 7);
        QCOMPARE(back.value(), QJsonValue::fromVariant(row.value).toVariant());
    }
    const struct {
        const char *json;
        qint64 timestamp;
        const char *name;
        int type;
    } read[] = {{"not json", 5, "before", 2}, // unchanged
                {R"({"timestamp":"soon","name":7,"type":["duration"]})", 0, "", 0},
                {R"({"timestamp":"77","type":"Duration"})", 77, "", 0}};
    for (const auto &row : read) {
        const std::unique_ptr<KAnalyticsEvent> event(Event("before"));
        event->setTimestamp(5);
        event->setType(KAnalyticsEvent::EventCounter);
        event->fromJson(QString::fromLatin1(row.json));
        QVERIFY2(event->timestamp() == row.timestamp && event->name() == QLatin1String(row.name)
                     && int(event->type()) == row.type,
                 row.json);
    }
}

/// Setting a property notifies once, with the value; setting the same value again doesn't notify.
void tst_Analytics::propertiesNotify()
{
    for (const char *type : {"KAnalyticsEvent::EventType", "KAnalyticsEvent*"})
        QVERIFY2(QMetaType::isRegistered(QMetaType::type(type)), type);
    qRegisterMetaType<KAnalyticsEvent::EventType>("EventType"); // for the spy
    KAnalyticsEvent event(nullptr);
    KAnalyticsRawEvent raw(1, QString(), nullptr);
    const std::tuple<QObject *, const char *, QVariant> rows[] = {
        {&event, "name", kName},       {&event, "category", kCategory},
        {&event, "timestamp", 5LL},    {&event, "type", 1},
        {&event, "value", 0.5},        {&raw, "id", 2},
        {&raw, "value", kName},        {m_manager, "maxEventsBufferised", 3},
        {m_manager, "version", kName}, {m_manager, "isActive", false}};
    for (const auto &[object, name, value] : rows) {
        const Case named(name);
        const QMetaProperty property = object->metaObject()->property(object->metaObject()->indexOfProperty(name));
        QSignalSpy spy(object, property.notifySignal());
        for (int i = 0; i < 2; ++i)
            QVERIFY(property.write(object, value) && property.read(object) == value);
        QVERIFY(spy.size() == 1 && spy[0].size() == 1 && spy[0][0] == value);
    }
}

void tst_Analytics::databaseKeepsEvents()
{
    const QString made = OpenAnew().userId(/*create=*/true);
    QVERIFY(!QUuid(made).isNull() && !made.contains(QLatin1Char('{')));
    QCOMPARE(m_db->userId(/*create=*/false), made); // the same for this session
    QPointer<KAnalyticsEvent> event(Event("a"));
    m_db->insertEvent(event);
    RunLoop();
    QVERIFY(event.isNull());
    m_db->insertEvent(nullptr);
    m_db->insertEvent(Event("b"));
    QCOMPARE(Names(OpenAnew().allEvents()), "1:a 2:b"_s);
    QVERIFY(OpenAnew().allEvents().isEmpty());
    QCOMPARE(m_db->allTables(), QStringList("events"_s));
    QCOMPARE(m_db->userId(/*create=*/false), "{%1}"_s.arg(made)); // as stored in the table

    KAnalyticsDb second("second"_s, kSqlite, nullptr);
    second.setFilePath(Path()); // simulates another process: SQLite's locks are per connection
    m_db->insertEvent(Event("a"));
    second.insertEvent(Event("lost")); // the oldest of more than 1,000 that wait
    for (int i = 0; i < 1000; ++i)
        second.insertEvent(Event(i ? "more" : "kept out"));
    QCOMPARE(Names(second.allEvents()), "0:kept out"_s + " 0:more"_s.repeated(999));
    QCOMPARE(second.userId(/*create=*/true), QString()); // one exists, but can't be read yet
    m_db->close();
    second.insertEvent(Event("b"));
    QCOMPARE(Names(second.allEvents()), "1:a 2:b"_s);
    QCOMPARE(second.userId(/*create=*/true), "{%1}"_s.arg(made));
}

void tst_Analytics::damagedDatabase()
{
    const struct {
        const char *name;
        int from, bytes;
        bool isDamaged;
    } rows[] = {{"header", 0, 100, true},
                {"root page of a table", 4096, 4096, true},
                {"nothing", 0, 0, false},
                {"unused end of the first page", 2000, 8, false}};
    for (const auto &[name, from, bytes, isDamaged] : rows) {
        const Case named(name);
        init(); // with a new folder
        OpenAnew().insertEvent(Event("old"));
        m_db->close();
        QByteArray file = ReadFile(Path());
        WriteFile(Path(), file.replace(from, bytes, QByteArray(bytes, 'x')));
        const QString aside = WriteFile(Path() + ".damaged"_s, "of last time");
        OpenAnew().insertEvent(Event("new"));
        QCOMPARE(ReadFile(aside), isDamaged ? file : QByteArray("of last time"));
        const QString id = m_db->userId(/*create=*/true);
        QCOMPARE(Names(OpenAnew().allEvents()), isDamaged ? "1:new"_s : "1:old 2:new"_s);
        QCOMPARE(m_db->userId(/*create=*/false), "{%1}"_s.arg(id));
    }
    m_db.reset();
    WriteFile(Path(), "damaged");
    QLockFile replacing(Path() + ".lock"_s); // as another process does
    QVERIFY(replacing.lock());
    OpenAnew();
    QCOMPARE(ReadFile(Path()), QByteArray("damaged"));
}

// Data from Qt's writer is read completely; truncated and self-referencing data is rejected.
void tst_Analytics::binaryForms()
{
    const QJsonObject inner = {{QString::fromUtf8("Schl\xC3\xBCssel"), QJsonValue::Null},
                               {QString::fromUtf8("\xE9\x8D\xB5"), QString::fromUtf8("\xE5\x80\xA4")}};
    const QJsonArray numbers = {0, -1, 67108863, -67108864, 67108864, 1e300, -0.1};
    const QJsonObject root = {{"array"_s, QJsonArray{numbers, QJsonArray(), QJsonObject(), true, false}},
                              {"object"_s, inner},
                              {"long"_s, QString(40000, QLatin1Char('l'))},
                              {QString(), QString()}};
    QCOMPARE(ObjectOfBinaryJson(QJsonDocument(root).toBinaryData()), root);
    QCOMPARE(ObjectOfBinaryJson(QJsonDocument(numbers).toBinaryData()), QJsonObject());

    QJsonObject nested = {{"value"_s, 1}};
    for (int depth = 1; depth <= 101; ++depth) {
        nested = {{"in"_s, nested}};
        if (depth >= 100) // 100 levels below the first are read
            QVERIFY(ObjectOfBinaryJson(QJsonDocument(nested).toBinaryData()).isEmpty() == (depth == 101));
    }
    QByteArray bytes = StoreBytes();
    for (int length = 0; length < bytes.size(); ++length)
        QVERIFY2(ObjectOfBinaryJson(bytes.left(length)).isEmpty(), qPrintable(QString::number(length)));
    const auto objectOfOne = [&](const char *type) { // with an empty key
        return ObjectOfBinaryJson(bytes.left(8)
                                  + QByteArray::fromHex("16000000030000000C00000010000000")
                                        .append(QByteArray::fromHex(type) + QByteArray(5, '\0')));
    };
    QCOMPARE(objectOfOne("10"), QJsonObject({{QString(), QJsonValue::Null}}));
    for (const char *refused : {"15", "16", "17"}) // an object that contains itself, and unknown types
        QVERIFY2(objectOfOne(refused).isEmpty(), refused);
}

void tst_Analytics::binaryFile()
{
    const QByteArray whole = StoreBytes();
    const std::pair<QByteArray, QByteArray> rows[] = {{whole, ""},
                                                      {whole, "garbage"}, // a lock file without an owner
                                                      {"", ""},
                                                      {whole.left(whole.size() / 2), ""},
                                                      {QByteArray(whole).replace(8, 12, QByteArray(12, '\xff')), ""}};
    for (const auto &[bytes, lock] : rows) {
        const Case named("bytes", bytes.size(), "lock", lock);
        const bool isGood = bytes == whole;
        const QString path = WriteFile(Path(), bytes);
        if (!lock.isEmpty())
            WriteFile(path + ".lock"_s, lock);
        KAnalyticsFile file(nullptr);
        file.setFilePath(path);
        QCOMPARE(file.userId(), isGood ? "me"_s : QString()); // doesn't wait forever for the lock
        QVERIFY(!QFile::exists(path + ".lock"_s));
        QCOMPARE(file.getProviderArray("mine"_s), isGood ? QJsonArray({1, 2}) : QJsonArray());
        const std::unique_ptr<KAnalyticsEvent> event(Event("new")); // the caller keeps ownership
        file.insertEvent(event.get());
        file.addProviderArray("mine"_s, QJsonArray{3});
        file.setUserId("you"_s);
        QCOMPARE(Names(file.allEvents()), isGood ? "0:old"_s : QString());
        QCOMPARE(ReadFile(path), bytes); // nothing is ever written
    }
    KAnalyticsFile absent(nullptr);
    absent.setFilePath(m_dir->filePath("absent"_s));
    QCOMPARE(absent.currentJSonRoot(), (QJsonObject{{"events"_s, QJsonArray()}}));
    QVERIFY(absent.allEvents().isEmpty());
    QCOMPARE(QDir(m_dir->path()).entryList(QDir::Files), QStringList("store"_s)); // no lock file is left
}

void tst_Analytics::storeAndIdentifier()
{
    QVERIFY(QFile::exists(m_folders->Store(kApplication)));
    const QString id = m_manager->userId();
    QVERIFY(id.startsWith(QLatin1Char('{')) && !QUuid(id).isNull());
    QCOMPARE(QSettings("Brelt"_s, QString()).value("platformDef"_s).toString(), id);
    KAnalyticsManager::killInstance();
    QCOMPARE(KAnalyticsManager::instance()->userId(), id);
    KAnalyticsManager::killInstance();
    QSqlDatabase::removeDatabase("analytics"_s); // a deleted session leaves its connection open
    KAnalyticsDb other("other"_s, kSqlite, nullptr);
    other.setFilePath(m_folders->Store(kApplication));
    KAnalyticsManager keptOut(/*useSettingsUserId=*/false, nullptr, /*useDb=*/true);
    QCOMPARE(keptOut.userId(), QString());
    other.close();
    QCOMPARE(keptOut.userId(), id); // from the copy in the store
}

/// With the binary file as its store, the manager sends what the file contains; new events are lost.
void tst_Analytics::managerOfAFile()
{
    KAnalyticsManager::killInstance();
    WriteFile(m_folders->Store(kApplication), StoreBytes());
    for (const bool useSettingsUserId : {false, true}) {
        const Case named(useSettingsUserId);
        KAnalyticsManager manager(useSettingsUserId, nullptr, /*useDb=*/false);
        QCOMPARE(manager.userId(),
                 useSettingsUserId ? QSettings("Brelt"_s, QString()).value("platformDef"_s).toString() : "me"_s);
        m_log.clear();
        manager.registerProvider(new Sender(&m_log));
        QPointer<KAnalyticsEvent> event(Event("new"));
        manager.sendEvent(event, /*flush=*/false);
        manager.sendEvent(nullptr, /*flush=*/false);
        RunLoop();
        QVERIFY(event.isNull());
        manager.waitBeforeExit();
        QCOMPARE(m_log.join(QLatin1Char(' ')), "KAnalyticsFile pre1 /old= of type 0 post waited"_s);
    }
}

void tst_Analytics::duplicateAndDeletedProviders()
{
    auto *gone = new Sender(&m_log);
    m_manager->registerProvider(gone);
    m_manager->registerProvider(nullptr);
    delete gone; // like a plug-in that is unloaded before its host
    InThreads(1, [&](int) { gone = new Sender(&m_log); });
    m_manager->registerProvider(gone);
    InThreads(1, [&](int) { delete gone; });
    m_manager->flushEvents(/*delayed=*/false); // before an event loop can report the deletion
    auto *twice = new Sender(&m_log);
    m_manager->registerProvider(twice);
    m_log.clear();
    m_manager->sendEvent(KAnalyticsEvent::EventAction, kCategory, kName, 7);
    QSignalSpy asked(m_manager, &KAnalyticsManager::flushEventsAsked);
    for (int i = 0; i < 9; ++i)
        m_manager->sendEvent(Event("many"), /*flush=*/true);
    QCOMPARE(asked.size(), 1); // once ten are waiting
    m_manager->sendEvent(Event("many"), /*flush=*/false);
    QCOMPARE(asked.size(), 1);
    QVERIFY(m_log.isEmpty());
    RunLoop();
    m_log.removeAll("/many= of type 0"_s);
    m_manager->registerProvider(twice);
    m_manager->waitBeforeExit(); // the store is empty
    m_manager->sendEvent(Event("many"), /*flush=*/true);
    QCOMPARE(asked.size(), 2); // from the tenth on, each event requests a flush
    KAnalyticsManager::killInstance();
    QCOMPARE(m_log.join(QLatin1Char(' ')),
             "pre11 c/n=7 of type 0 post KAnalyticsDb pre0 post pre0 post waited waited deleted"_s);
    const qint64 now = QDateTime::currentMSecsSinceEpoch(), tenDays = 10 * 24 * 3600 * qint64(1000);
    const std::pair<qint64, bool> stamps[] = {
        {now - tenDays + 60000, true}, {now - tenDays - 1, false}, {std::numeric_limits<qint64>::min(), false}};
    for (const auto &[stamp, isWorthSending] : stamps) {
        KAnalyticsEvent event(nullptr);
        event.setTimestamp(stamp);
        QVERIFY2(Sender(&m_log).eventTimeCheck(event) == isWorthSending, qPrintable(QString::number(stamp)));
    }
}

void tst_Analytics::countersAndTimers()
{
    m_manager->registerProvider(new Sender(&m_log));
    m_manager->stopTimerEvent(kCategory, kName);   // unknown timer
    for (const char *category : {"ab", "a", "ab"}) // keys join category and name directly
        m_manager->increaseCounterEvent(QString::fromLatin1(category), QLatin1String(category[1] ? "c" : "bc"));
    m_manager->decreaseCounterEvent("ab"_s, "c"_s);
    m_manager->flushEvents(/*delayed=*/false);
    m_manager->increaseCounterEvent("ab"_s, "c"_s);
    for (int i = 0; i < 2; ++i)
        m_manager->startTimerEvent(kCategory, "t"_s);
    QTest::qSleep(3);
    for (int i = 0; i < 2; ++i)
        m_manager->stopTimerEvent(kCategory, "t"_s);
    m_manager->flushEvents(/*delayed=*/false);
    const QStringList sent = m_log.filter("/"_s);
    QCOMPARE(sent.size(), 3);
    QCOMPARE(sent[0], "ab/c=2 of type 2"_s);
    QVERIFY2(sent[1].startsWith("c/t="_s) && sent[1].endsWith(" of type 1"_s)
                 && sent[1].mid(4).section(QLatin1Char(' '), 0, 0).toInt() >= 3,
             qPrintable(sent[1]));
    QCOMPARE(sent[2], "ab/c=1 of type 2"_s); // restarted, and stored at the flush
}

void tst_Analytics::switchedOff()
{
    m_manager->registerProvider(new Sender(&m_log));
    m_manager->startTimerEvent(kCategory, "before"_s);
    m_manager->setIsActive(false);
    QPointer<KAnalyticsEvent> event(Event("a"));
    m_manager->sendEvent(event, /*flush=*/true);
    m_manager->sendEvent(nullptr, /*flush=*/true);
    m_manager->sendEventAction(kCategory, kName, 1);
    m_manager->stopTimerEvent(kCategory, "before"_s);
    m_manager->startTimerEvent(kCategory, "during"_s);
    m_manager->increaseCounterEvent(kCategory, kName);
    m_manager->decreaseCounterEvent(kCategory, kName);
    m_manager->flushEvents(/*delayed=*/false);
    RunLoop();
    QVERIFY(event.isNull() && m_log.filter("/"_s).isEmpty());
    m_manager->setIsActive(true);
    for (const QString &name : {"before"_s, "during"_s}) // the first timer still runs
        m_manager->stopTimerEvent(kCategory, name);
    m_manager->flushEvents(/*delayed=*/false);
    QCOMPARE(m_log.filter("/"_s).size(), 1);
}

int main(int argc, char **argv)
{
    const OwnFolders folders;
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(kApplication);
    tst_Analytics test(&folders);
    return QTest::qExec(&test, argc, argv);
}

#include "Analytics_test.moc"
