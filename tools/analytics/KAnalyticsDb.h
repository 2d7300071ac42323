// Analytics events in a local SQLite file.
#pragma once

#include "KDbSession.h"

class KAnalyticsEvent;
class KAnalyticsRawEvent;

Q_DECLARE_LOGGING_CATEGORY(kanalyticsdb)

/// Event store in a SQLite file. A damaged file, for example after the disk was full, is renamed to "….damaged" when it
/// is opened, and a new one is created, without the events and the user identifier. Only the newest damaged file is
/// kept.
///
/// Uses no savepoint: each statement takes effect immediately. Use it on its connection's thread, with an event loop,
/// which deletes the inserted events. A store that can't be opened discards events. While another process has the file
/// locked, the last 1,000 events stay in memory, and no call waits.
class KAnalyticsDb : public KDbSession {
    Q_OBJECT
public:
    KAnalyticsDb(QString connectionName, QString driver, QObject *parent);

    /// Stores the events that waited for a lock, if the lock has been released.
    ~KAnalyticsDb() override;

    /// Inserts the event and takes ownership.
    void insertEvent(KAnalyticsEvent *event);
    /// Returns all events and empties the store, even if sending fails later. The caller owns the events. Those that
    /// still wait for another process's lock come last, with the id 0.
    QList<KAnalyticsRawEvent *> allEvents();
    /// Returns the user identifier; empty if there is none and @p create is false, or while another process has the
    /// file locked. A newly created identifier has no braces; in later sessions it has them, because the stored text
    /// does.
    QString userId(const bool &create);
    /// Stores an identifier unless there is one.
    void setUserId(QString userId);

    /// Creates the table if it is missing. A null @p db means the session's connection.
    void createTable(QString table, QString columns, QSqlDatabase *db);

public Q_SLOTS:
    void setFilePath(QString filePath) override;

public:
    void buildTables(QSqlDatabase &db) override;
    QStringList allTables() override;

private:
    void StoreWaiting();
    bool IsDamaged();

    QStringList m_waiting; // JSON of events that wait for a lock, oldest first
    QString m_userId;
};
