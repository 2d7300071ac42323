// Session on a local SQL database.
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

/// A session that owns its database. It starts closed; setFilePath() opens it and creates the subclass's tables. SQLite
/// runs without a journal on disk and without waiting for the disk, and locks out other processes while the session is
/// open: fast, but not safe against a system crash. While another process has the database locked, every statement
/// fails at once.
///
/// With setUseRollBack(), an open session is always inside a savepoint: commitAll() keeps the changes made since the
/// previous commitAll(); cancelAll() and close() undo them. There is no savepoint while another process has the file
/// locked. Without setUseRollBack(), each statement takes effect immediately.
///
/// Use it only on the thread that opened it. The returned queries report failures; only a failure to open is logged.
class KDbSession : public QObject {
    Q_OBJECT
public:
    /// Creates a closed session. @p driver is the name of a Qt driver, such as "QSQLITE".
    KDbSession(QString connectionName, QString driver, QObject *parent);
    /// Releases the connection without closing it: QSqlDatabase keeps it, and with it the lock on the file, until a
    /// connection of that name is opened again.
    ~KDbSession() override;

    QSqlDatabase database() { return m_db; }
    QSqlDatabase fileDb(bool open);
    /// Switches savepoints on or off. Call it only on a closed session: an open one keeps its journal mode and any
    /// savepoint.
    void setUseRollBack(bool use) { m_useRollBack = use; }
    bool checkDb();

    // On a closed session, these run nothing and return an inactive query. A failed statement doesn't stop a list; the
    // returned query holds the result of the last statement.
    QSqlQuery executeQuery(QString query);
    QSqlQuery executeQuery(KDbQuery query);
    QSqlQuery executeQueries(QStringList queries);
    QSqlQuery executeQueries(QList<KDbQuery> queries);

    /// Opens another file as setFilePath() does, creates missing tables, and replaces any connection of that name. The
    /// caller closes and removes the connection. Returns an invalid database for an empty path.
    QSqlDatabase openDb(QString connectionName, QString filePath);

public Q_SLOTS:
    void commitAll();
    void cancelAll();
    /// Closes, then opens the file unless the path is empty.
    virtual void setFilePath(QString filePath);
    /// Adds the rows of allTables() to the tables of another file. Copied texts are enclosed in double quotes.
    void copyDbTo(QString filePath);
    /// Closes and removes the file.
    void eraseDb();
    /// Undoes uncommitted changes and closes.
    void close();

public:
    /// Creates the tables that are missing.
    virtual void buildTables(QSqlDatabase &db) = 0;
    /// Returns the tables that copyDbTo() copies.
    virtual QStringList allTables() = 0;

private:
    /// Applies the SQLite settings. Returns false if another process has the file locked: SQLite then accepts no
    /// settings.
    bool Tune(QSqlDatabase &db);
    /// Applies the SQLite settings and creates the missing tables once the other process has unlocked the file.
    void CatchUp();
    /// Sets the savepoint, if savepoints are on and the session has the file locked.
    void Begin();
    void CopyTable(const QString &table, QSqlDatabase &target);

    bool m_useRollBack = false;
    bool m_tuned = false;
    QString m_connectionName;
    QString m_filePath;
    QString m_driver;
    QSqlDatabase m_db;
};
