// Owner of one local SQL database.
#pragma once

#include "KDbQuery.h"

#include <QLoggingCategory>
#include <QObject>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStringList>

Q_DECLARE_LOGGING_CATEGORY(dbsession)
Q_DECLARE_LOGGING_CATEGORY(dbsessionquery)
Q_DECLARE_LOGGING_CATEGORY(dbquery)

/// Closed at first; setFilePath() opens, with the subclass's tables. SQLite runs without journal and without waiting
/// for the disk, and keeps other processes out while it is open: fast, and not safe against a crash of the system. A
/// database that another process holds makes every statement fail at once; nothing waits.
///
/// With setUseRollBack(), an open session is always inside a savepoint: commitAll() keeps what was done since the last
/// one, cancelAll() and close() undo it; only while another process holds the file there is none. Without it each
/// statement stands when it has run.
///
/// Belongs to the thread that opened it. Failures show in the queries that are returned; only one to open is logged.
class KDbSession : public QObject {
    Q_OBJECT
public:
    /// Opens nothing. @p driver is the name of a Qt driver, such as "QSQLITE".
    KDbSession(QString connectionName, QString driver, QObject *parent);
    /// Lets go of the connection without closing it: it stays with QSqlDatabase until the name is opened again.
    ~KDbSession() override;

    QSqlDatabase database() { return m_db; }
    QSqlDatabase fileDb(bool open);
    /// For sessions that are closed; on an open one it counts from the next commit or cancel.
    void setUseRollBack(bool use) { m_useRollBack = use; }
    bool checkDb();

    // On a closed session these run nothing and give an inactive query. A failed statement doesn't stop a list; the
    // query holds the result of the last one.
    QSqlQuery executeQuery(QString query);
    QSqlQuery executeQuery(KDbQuery query);
    QSqlQuery executeQueries(QStringList queries);
    QSqlQuery executeQueries(QList<KDbQuery> queries);

    /// Opens another file in the same way, tables included, in place of any connection of that name. The caller closes
    /// and removes it. Invalid for an empty path.
    QSqlDatabase openDb(QString connectionName, QString filePath);

public Q_SLOTS:
    void commitAll();
    void cancelAll();
    /// Closes, then opens the file unless the path is empty.
    virtual void setFilePath(QString filePath);
    /// Adds the rows of allTables() to the tables of another file. Texts gain a pair of double quotes in the copy.
    void copyDbTo(QString filePath);
    /// Closes and removes the file.
    void eraseDb();
    /// Undoes what wasn't committed, and closes.
    void close();

public:
    /// Creates the tables that are missing.
    virtual void buildTables(QSqlDatabase &db) = 0;
    /// Tables that copyDbTo() copies.
    virtual QStringList allTables() = 0;

private:
    /// False if another process has the file: then SQLite takes no settings.
    bool Tune(QSqlDatabase &db);
    /// Makes up for settings and tables as soon as that process has left.
    void CatchUp();
    /// Begins a unit of work, once the file is this session's.
    void Begin();
    void CopyTable(const QString &table, QSqlDatabase &target);

    bool m_useRollBack = false;
    bool m_tuned = false;
    QString m_connectionName;
    QString m_filePath;
    QString m_driver;
    QSqlDatabase m_db;
};
