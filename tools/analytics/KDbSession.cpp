#include "KDbSession.h"

#include <QDebug>
#include <QFile>
#include <QSqlError>
#include <QSqlField>
#include <QSqlRecord>
#include <QThread>
#include <QVariant>

Q_LOGGING_CATEGORY(dbsession, "dbsession", QtWarningMsg)
Q_LOGGING_CATEGORY(dbsessionquery, "dbsessionquery", QtWarningMsg)
Q_LOGGING_CATEGORY(dbquery, "dbquery", QtWarningMsg)

namespace {

const QLatin1String kSqlite("QSQLITE");
const QLatin1String kInMemory(":memory:");

bool Run(QSqlQuery &query, const QString &text)
{
    return query.prepare(text) && query.exec();
}

/// Locks the file; returns false if another process has it locked. Two processes that open a file at the same time can
/// each get a shared lock, which in exclusive locking mode neither would ever release. So this is called in normal
/// mode, where the one that fails releases its lock and the other one gets the exclusive lock. Retries without pausing.
bool TakeLock(QSqlQuery &query)
{
    constexpr int kTries = 20;
    for (int i = 0; i < kTries; ++i) {
        if (Run(query, QStringLiteral("BEGIN EXCLUSIVE")))
            return true;
        QThread::yieldCurrentThread();
    }
    return false;
}

QSqlQuery Inactive()
{
    return QSqlQuery(QString(), QSqlDatabase());
}

/// Closes and removes the connection. No other handle to it may exist.
void Forget(QSqlDatabase *db)
{
    const QString name = db->connectionName();
    db->close();
    *db = QSqlDatabase();
    QSqlDatabase::removeDatabase(name);
}

/// Returns @p value as copyDbTo() stores it: texts in double quotes.
QVariant Copied(const QVariant &value)
{
    if (value.type() != QVariant::String)
        return value;
    return QString(QLatin1Char('"') + value.toString() + QLatin1Char('"'));
}

void CopyRow(const QString &table, const QSqlRecord &row, QSqlQuery *insert)
{
    QStringList names, places;
    for (int i = 0; i < row.count(); ++i) {
        names << row.fieldName(i);
        places << QLatin1Char(':') + row.fieldName(i);
    }
    const QString comma = QStringLiteral(", ");
    insert->prepare(QStringLiteral("INSERT INTO ") + table + QStringLiteral(" (") + names.join(comma)
                    + QStringLiteral(") ") + QStringLiteral(" VALUES (") + places.join(comma) + QStringLiteral(");"));
    for (int i = 0; i < row.count(); ++i)
        insert->addBindValue(Copied(row.value(i)), QSql::In);
    insert->exec();
}

} // namespace

bool KDbQuery::execute(QSqlQuery &sqlQuery) const
{
    if (!sqlQuery.prepare(query))
        return false; // keep the statement's error: trying to run it would replace it
    for (const KDbBind &bind : binds)
        sqlQuery.bindValue(QLatin1Char(':') + bind.name, bind.value, QSql::In);
    return sqlQuery.exec();
}

KDbSession::KDbSession(QString connectionName, QString driver, QObject *parent)
    : QObject(parent), m_connectionName(connectionName), m_driver(driver)
{
}

KDbSession::~KDbSession() = default;

QSqlDatabase KDbSession::fileDb(bool open)
{
    return QSqlDatabase::database(m_connectionName, open);
}

bool KDbSession::checkDb()
{
    return m_db.isValid() && m_db.isOpen();
}

QSqlDatabase KDbSession::openDb(QString connectionName, QString filePath)
{
    QSqlDatabase::database(connectionName, /*open=*/false).close();
    QSqlDatabase::removeDatabase(connectionName);
    if (filePath.isEmpty())
        return QSqlDatabase();
    QSqlDatabase db = QSqlDatabase::addDatabase(m_driver, connectionName);
    db.setDatabaseName(filePath);
    if (!db.isValid())
        return db;
    if (m_driver == kSqlite)
        db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=0")); // another process may hold its lock for hours
    if (!db.open())
        qCWarning(dbsession) << "[openDb]" << filePath << "Error while opening" << db.lastError().text();
    if (!db.isOpen())
        return db;
    const bool tuned = m_driver != kSqlite || Tune(db);
    buildTables(db);
    if (connectionName == m_connectionName)
        m_tuned = tuned;
    return db;
}

void KDbSession::CatchUp()
{
    if (m_tuned)
        return;
    {
        QSqlQuery query(m_db);
        if (!Run(query, QStringLiteral("BEGIN EXCLUSIVE")))
            return;
        Run(query, QStringLiteral("COMMIT"));
    }
    m_tuned = true; // so that statements of buildTables() don't run CatchUp() again
    const bool tuned = Tune(m_db);
    buildTables(m_db);
    m_tuned = tuned;
    Begin();
}

void KDbSession::Begin()
{
    if (m_useRollBack && m_tuned) // otherwise the savepoint's transaction would keep CatchUp() from getting the lock
        executeQueries(QStringList{QStringLiteral("SAVEPOINT load;")});
}

bool KDbSession::Tune(QSqlDatabase &db)
{
    QSqlQuery query(db);
    for (const char *statement : {"PRAGMA page_size = 4096", "PRAGMA cache_size = 16384", "PRAGMA temp_store = MEMORY",
                                  "PRAGMA journal_mode = OFF"})
        Run(query, QString::fromLatin1(statement));
    const bool locked = TakeLock(query);
    if (locked) { // without the lock, exclusive mode would keep read locks, which block other processes
        Run(query, QStringLiteral("PRAGMA locking_mode = EXCLUSIVE"));
        Run(query, QStringLiteral("COMMIT")); // exclusive mode keeps the lock
    }
    Run(query, QStringLiteral("PRAGMA synchronous = OFF"));
    if (m_useRollBack) {
        Run(query, QStringLiteral("RELEASE SAVEPOINT load;"));
        Run(query, QStringLiteral("PRAGMA journal_mode = MEMORY")); // without a journal SQLite can't roll back
    }
    return locked;
}

void KDbSession::setFilePath(QString filePath)
{
    close();
    m_filePath = filePath;
    if (m_filePath.isEmpty())
        return;
    m_db = QSqlDatabase(); // a handle that failed to open would keep its connection from being replaced
    m_db = openDb(m_connectionName, m_filePath);
    Begin();
}

void KDbSession::close()
{
    if (!checkDb())
        return;
    cancelAll();
    Forget(&m_db);
}

void KDbSession::commitAll()
{
    if (!m_useRollBack)
        return;
    executeQueries(QStringList{QStringLiteral("RELEASE SAVEPOINT load;")});
    Begin();
}

void KDbSession::cancelAll()
{
    if (m_useRollBack)
        executeQueries(QStringList{QStringLiteral("ROLLBACK TO SAVEPOINT load;")});
}

void KDbSession::eraseDb()
{
    close();
    if (m_filePath == kInMemory)
        return;
    if (QFile::exists(m_filePath))
        QFile::remove(m_filePath);
}

QSqlQuery KDbSession::executeQuery(QString query)
{
    return executeQueries(QStringList{query});
}

QSqlQuery KDbSession::executeQuery(KDbQuery query)
{
    return executeQueries(QList<KDbQuery>{query});
}

QSqlQuery KDbSession::executeQueries(QStringList queries)
{
    if (!checkDb())
        return Inactive();
    CatchUp();
    QSqlQuery sqlQuery(m_db);
    for (const QString &query : queries)
        Run(sqlQuery, query);
    return sqlQuery;
}

QSqlQuery KDbSession::executeQueries(QList<KDbQuery> queries)
{
    if (!checkDb())
        return Inactive();
    CatchUp();
    QSqlQuery sqlQuery(m_db);
    for (const KDbQuery &query : queries)
        query.execute(sqlQuery);
    return sqlQuery;
}

void KDbSession::copyDbTo(QString filePath)
{
    if (filePath == m_filePath)
        return;
    QSqlDatabase target = openDb(m_connectionName + QStringLiteral("_copy"), filePath);
    if (checkDb() && target.isOpen()) {
        for (const QString &table : allTables())
            CopyTable(table, target);
    }
    Forget(&target);
}

void KDbSession::CopyTable(const QString &table, QSqlDatabase &target)
{
    QSqlQuery source(m_db), insert(target);
    if (!source.exec(QStringLiteral("SELECT * FROM %1").arg(table)))
        return;
    while (source.next())
        CopyRow(table, source.record(), &insert);
}
