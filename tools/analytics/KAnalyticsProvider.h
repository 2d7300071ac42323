// What carries events of analytics away: the face that a host implements.
#pragma once

#include <QList>
#include <QObject>

class KAnalyticsDb;
class KAnalyticsEvent;
class KAnalyticsFile;
class KAnalyticsRawEvent;

/// Owned by the manager once it is registered there. All of it runs on the manager's thread.
class KAnalyticsProvider : public QObject {
    Q_OBJECT
public:
    explicit KAnalyticsProvider(QObject *parent);
    ~KAnalyticsProvider() override;

    /// preFlush(), flushEvent() for each, postFlush(). The events belong to the providers from here on; all providers
    /// are handed the same ones.
    void flushEvents(QList<KAnalyticsRawEvent *> events);
    /// The store stays the manager's. storageChanged() hears of it unless it is null.
    void setDb(KAnalyticsDb *db);
    void setAnFile(KAnalyticsFile *file);
    /// Whether an event is at most ten days old; older ones aren't worth sending.
    bool eventTimeCheck(KAnalyticsEvent &event);

public Q_SLOTS:
    /// Blocks until all that was taken has left. Nothing to wait for here.
    virtual void waitBeforeExit();

protected:
    /// The store is known: a KAnalyticsDb or a KAnalyticsFile.
    virtual void storageChanged(QObject *store) = 0;
    virtual void preFlush(QList<KAnalyticsRawEvent *> events);
    /// Carries one event away.
    virtual void flushEvent(KAnalyticsRawEvent *event) = 0;
    virtual void postFlush();

    KAnalyticsDb *m_db = nullptr;
    KAnalyticsFile *m_anFile = nullptr;
};
