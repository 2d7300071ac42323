// Events of analytics in a local SQLite file.
#pragma once

#include "KDbSession.h"

class KAnalyticsEvent;
class KAnalyticsRawEvent;

Q_DECLARE_LOGGING_CATEGORY(kanalyticsdb)

/// A damaged file, as a full disk leaves it, is renamed to "….damaged" when it is opened, and a new one begun: its
/// events are lost to the program, the user's identifier too. One damaged file is kept, the newest.
///
/// Without savepoint: each statement stands when it has run. On the thread of its connection, with an event loop, which
/// deletes the events it has taken. A store that can't be opened swallows events and holds none. While another process
/// has the file locked, the events of this one stay in memory, the last 1,000: none of its run is lost, nothing waits.
class KAnalyticsDb : public KDbSession {
    Q_OBJECT
public:
    KAnalyticsDb(QString connectionName, QString driver, QObject *parent);

    /// Stores what waited for a lock, if it is gone.
    ~KAnalyticsDb() override;

    /// Takes the event over.
    void insertEvent(KAnalyticsEvent *event);
    /// Empties the store: nothing is kept in case that sending fails. The events are the caller's;
    /// those that waited for another process's lock come last, with the id 0.
    QList<KAnalyticsRawEvent *> allEvents();
    /// The user's identifier, empty if there is none and @p create is false, and while another process holds the
    /// file. Trap: one made here comes without braces,
    /// and with them from the next session on, since the stored text has them.
    QString userId(const bool &create);
    /// Stores an identifier unless there is one.
    void setUserId(QString userId);

    /// Creates the table if it is missing; on the session's own connection for null.
    void createTable(QString table, QString columns, QSqlDatabase *db);

public Q_SLOTS:
    void setFilePath(QString filePath) override;

public:
    void buildTables(QSqlDatabase &db) override;
    QStringList allTables() override;

private:
    void StoreWaiting();
    bool IsDamaged();

    QStringList m_waiting; // JSON of the events that a lock has kept out, oldest first
    QString m_userId;
};
