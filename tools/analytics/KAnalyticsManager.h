// Entry point of analytics: stores the application's events and passes them to providers in batches.
#pragma once

#include "KAnalyticsEvent.h"

#include <QHash>
#include <QList>
#include <QLoggingCategory>

#include <memory>

class KAnalyticsDb;
class KAnalyticsFile;
class KAnalyticsProvider;

Q_DECLARE_LOGGING_CATEGORY(kanalyticsmanager)

/// The process's manager, which KTools::init creates or adopts from a host, and KTools::exit deletes. It sends nothing
/// itself: data leaves the machine only through a provider that a host registers. The store is a file in the
/// application's data folder; if that folder is not usable, events are silently lost.
///
/// Use it on one thread with a running event loop; other threads call its slots through queued connections. Timers and
/// counters are identified by category and name joined without a separator, so ("ab", "c") and ("a", "bc") are the
/// same.
class KAnalyticsManager : public QObject {
    Q_OBJECT
    Q_PROPERTY(
        int maxEventsBufferised READ maxEventsBufferised WRITE setMaxEventsBufferised NOTIFY maxEventsBufferisedChanged)
    Q_PROPERTY(QString version READ version WRITE setVersion NOTIFY versionChanged)
    Q_PROPERTY(bool isActive READ isActive WRITE setIsActive NOTIFY isActiveChanged)
    Q_PROPERTY(QString userId READ userId)
public:
    /// Creates a manager, which becomes the process's manager if there is none.
    ///
    /// @param useSettingsUserId  uses the identifier that all applications of the organization share in their settings,
    ///                           created if it is missing; otherwise the store's identifier.
    /// @param useDb              stores events in a KAnalyticsDb, otherwise in a KAnalyticsFile.
    KAnalyticsManager(bool useSettingsUserId, QObject *parent, bool useDb);
    /// Doesn't flush; see waitBeforeExit(). Afterward the process has no manager.
    ~KAnalyticsManager() override;

    /// Returns the process's manager; if there is none, creates one with the shared identifier and a database.
    static KAnalyticsManager *instance();
    /// Makes @p instance the process's manager, without deleting the previous one. With null, keeps the
    /// current manager, or creates one if there is none.
    static KAnalyticsManager *init(KAnalyticsManager *instance);
    static void killInstance();

    /// Takes ownership of the provider and gives it the store. Providers are called in the order of registration; one
    /// that is deleted elsewhere, on any thread, is unregistered.
    void registerProvider(KAnalyticsProvider *provider);

    int maxEventsBufferised() const { return m_maxEventsBufferised; }
    QString version() const { return m_version; }
    bool isActive() const { return m_isActive; }

Q_SIGNALS:
    void maxEventsBufferisedChanged(int maxEventsBufferised);
    void versionChanged(QString version);
    void isActiveChanged(bool isActive);
    void flushEventsAsked();

public Q_SLOTS:
    // --- Events, timers and counters. While analytics is off, these slots record nothing. ---
    void sendEvent(KAnalyticsEvent::EventType type, QString category, QString name, QVariant value);
    void sendEventAction(QString category, QString name, QVariant value);
    /// Takes ownership of the event. With @p flush, each event requests a flush once maxEventsBufferised events have
    /// been sent since the manager was created.
    void sendEvent(KAnalyticsEvent *event, bool flush = true);
    /// Starts or restarts a timer.
    void startTimerEvent(QString category, QString name);
    /// Sends the timer's duration.
    void stopTimerEvent(QString category, QString name);
    /// Increments a counter. It is stored at the next flush, and a new count begins.
    void increaseCounterEvent(QString category, QString name);
    void decreaseCounterEvent(QString category, QString name);

    // --- Settings and flushing, which work even while analytics is off ---
    void setMaxEventsBufferised(int maxEventsBufferised);
    /// Flushes at once or, if @p delayed, when the event loop next runs.
    void flushEvents(bool delayed);
    /// Flushes at once and waits for the providers.
    void waitBeforeExit();
    /// Returns the user's identifier; empty while another process has the store locked.
    QString userId();
    void setVersion(QString version);
    void setIsActive(bool isActive);
    void flushEventsSend();

private:
    void createDb(bool useSettingsUserId);
    void OpenStore(const QString &path);
    void AdoptSettingsUserId();
    QString StoredUserId();
    QList<KAnalyticsProvider *> Providers() const;
    void Forget(KAnalyticsProvider *provider);
    KAnalyticsEventCounter *Counter(const QString &category, const QString &name);

    static KAnalyticsManager *s_instance;

    KAnalyticsDb *m_db = nullptr;
    KAnalyticsFile *m_file = nullptr;
    QList<KAnalyticsProvider *> m_providers; // owned
    int m_nbEvents = 0;                      // since the manager was created: never reset
    int m_maxEventsBufferised = 10;
    QHash<QString, KAnalyticsEventTimer *> m_timers;
    QHash<QString, KAnalyticsEventCounter *> m_counters;
    QString m_userId = QStringLiteral("");
    QString m_version;
    bool m_isActive = true;
    bool m_useDb;
};
