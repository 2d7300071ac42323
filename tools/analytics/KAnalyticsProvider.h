// Interface for sending analytics events, implemented by a host.
#pragma once

#include <QList>
#include <QObject>

class KAnalyticsDb;
class KAnalyticsEvent;
class KAnalyticsFile;
class KAnalyticsRawEvent;

/// Sender of events, owned by the manager once registered. Everything runs on the manager's thread.
class KAnalyticsProvider : public QObject {
    Q_OBJECT
public:
    explicit KAnalyticsProvider(QObject *parent);
    ~KAnalyticsProvider() override;

    /// Calls preFlush(), flushEvent() for each event, and postFlush(). The providers then own the events; all providers
    /// receive the same ones.
    void flushEvents(QList<KAnalyticsRawEvent *> events);
    /// Sets the store, which the manager still owns. Calls storageChanged() unless the store is null.
    void setDb(KAnalyticsDb *db);
    void setAnFile(KAnalyticsFile *file);
    /// Returns whether an event is at most ten days old. For providers that don't send older ones; not called here.
    bool eventTimeCheck(KAnalyticsEvent &event);

public Q_SLOTS:
    /// Blocks until everything has been sent. This default returns at once.
    virtual void waitBeforeExit();

protected:
    /// Receives the store: a KAnalyticsDb or a KAnalyticsFile.
    virtual void storageChanged(QObject *store) = 0;
    virtual void preFlush(QList<KAnalyticsRawEvent *> events);
    /// Sends one event.
    virtual void flushEvent(KAnalyticsRawEvent *event) = 0;
    virtual void postFlush();

    KAnalyticsDb *m_db = nullptr;
    KAnalyticsFile *m_anFile = nullptr;
};
