#include "KAnalyticsDb.h"

#include "KAnalyticsEvent.h"

#include <QFile>
#include <QLockFile>
#include <QSqlError>
#include <QUuid>

Q_LOGGING_CATEGORY(kanalyticsdb, "kanalyticsdb", QtWarningMsg)

namespace {

const QString kEventsTable = QStringLiteral("events");

constexpr int kNoRow = 0;               // row ids start at 1
constexpr int kWaitingEventsMax = 1000; // about 200 bytes each

bool Failed(const QSqlQuery &query, int sqliteCode)
{
    return query.lastError().nativeErrorCode() == QString::number(sqliteCode);
}

bool IsLockedByAnother(const QSqlQuery &query)
{
    constexpr int kBusy = 5;
    return Failed(query, kBusy);
}

KDbBind UserIdName()
{
    return {QStringLiteral("name"), QStringLiteral("user_id")};
}

} // namespace

KAnalyticsDb::KAnalyticsDb(QString connectionName, QString driver, QObject *parent)
    : KDbSession(connectionName, driver, parent)
{
    setUseRollBack(false);
}

KAnalyticsDb::~KAnalyticsDb()
{
    StoreWaiting();
}

void KAnalyticsDb::insertEvent(KAnalyticsEvent *event)
{
    if (!event)
        return;
    m_waiting << event->toJson();
    event->deleteLater();
    StoreWaiting();
    if (m_waiting.size() > kWaitingEventsMax)
        m_waiting.removeFirst();
}

void KAnalyticsDb::StoreWaiting()
{
    while (!m_waiting.isEmpty()) {
        const KDbQuery insert(QStringLiteral("INSERT INTO events (value) VALUES(:value)"),
                              {{QStringLiteral("value"), m_waiting.first()}});
        if (IsLockedByAnother(executeQuery(insert)))
            return;
        m_waiting.removeFirst();
    }
}

QList<KAnalyticsRawEvent *> KAnalyticsDb::allEvents()
{
    StoreWaiting();
    QList<KAnalyticsRawEvent *> events;
    QSqlQuery rows = executeQuery(QStringLiteral("SELECT id,value FROM events"));
    const bool read = rows.isActive();
    while (rows.next())
        events << new KAnalyticsRawEvent(rows.value(0).toInt(), rows.value(1).toString(), nullptr);
    rows.finish();
    if (read)
        executeQuery(QStringLiteral("DELETE FROM events"));
    for (const QString &json : std::as_const(m_waiting))
        events << new KAnalyticsRawEvent(kNoRow, json, nullptr);
    m_waiting.clear();
    return events;
}

QString KAnalyticsDb::userId(const bool &create)
{
    if (!m_userId.isEmpty())
        return m_userId;
    QSqlQuery row =
        executeQuery(KDbQuery(QStringLiteral("SELECT value FROM metadata WHERE name=:name;"), {UserIdName()}));
    if (row.first()) {
        m_userId = row.value(0).toString();
    } else if (create && !IsLockedByAnother(row)) { // a locked store may already have one
        row.finish();
        const QString id = QUuid::createUuid().toString();
        setUserId(id);
        m_userId = id.mid(1, id.size() - 2);
    }
    return m_userId;
}

void KAnalyticsDb::setUserId(QString userId)
{
    if (!this->userId(/*create=*/false).isEmpty())
        return;
    executeQuery(KDbQuery(QStringLiteral("INSERT INTO metadata (name,value) VALUES(:name, :value)"),
                          {UserIdName(), {QStringLiteral("value"), userId}}));
}

void KAnalyticsDb::createTable(QString table, QString columns, QSqlDatabase *db)
{
    QSqlQuery query(db ? *db : database());
    query.prepare(QStringLiteral("CREATE TABLE IF NOT EXISTS %1( %2 );").arg(table, columns));
    query.exec();
}

void KAnalyticsDb::setFilePath(QString filePath)
{
    KDbSession::setFilePath(filePath);
    if (!IsDamaged())
        return;
    QLockFile lock(filePath + QStringLiteral(".lock"));
    if (!lock.tryLock(0))
        return; // another process is replacing the file
    KDbSession::setFilePath(filePath);
    if (!IsDamaged())
        return; // another process has already replaced the file that this session had opened
    close();
    const QString aside = filePath + QStringLiteral(".damaged");
    QFile::remove(aside);
    if (QFile::rename(filePath, aside))
        qCWarning(kanalyticsdb) << filePath << "is damaged: renamed to" << aside << "and replaced by a new one";
    KDbSession::setFilePath(filePath);
}

bool KAnalyticsDb::IsDamaged()
{
    constexpr int kCorrupt = 11, kNotADatabase = 26;
    QSqlQuery check = executeQuery(QStringLiteral("PRAGMA quick_check(1)"));
    return Failed(check, kCorrupt) || Failed(check, kNotADatabase)
        || (check.next() && check.value(0).toString() != QLatin1String("ok"));
}

void KAnalyticsDb::buildTables(QSqlDatabase &db)
{
    createTable(kEventsTable, QStringLiteral("id INTEGER PRIMARY KEY, value TEXT"), &db);
    createTable(QStringLiteral("metadata"), QStringLiteral("name TEXT  PRIMARY KEY, value TEXT"), &db);
}

QStringList KAnalyticsDb::allTables()
{
    return {kEventsTable};
}
