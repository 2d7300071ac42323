// Front of analytics: takes events from the application, keeps them, hands them in batches to providers.
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

/// KTools::init makes the process's manager or takes a host's; KTools::exit ends it. Nothing is sent by itself: what
/// leaves the machine, leaves through a provider that a host registers. The store is a file in the application's data
/// folder; where that can't be used, events are lost without a word.
///
/// One thread with a running event loop; others reach it by queued calls of its slots. Timers and counters are known by
/// category and name joined without a separator, so ("ab", "c") and ("a", "bc") are the same one.
class KAnalyticsManager : public QObject {
    Q_OBJECT
    Q_PROPERTY(
        int maxEventsBufferised READ maxEventsBufferised WRITE setMaxEventsBufferised NOTIFY maxEventsBufferisedChanged)
    Q_PROPERTY(QString version READ version WRITE setVersion NOTIFY versionChanged)
    Q_PROPERTY(bool isActive READ isActive WRITE setIsActive NOTIFY isActiveChanged)
    Q_PROPERTY(QString userId READ userId)
public:
    /// @param useSettingsUserId  the user's identifier is the one that all applications of the organization share in
    ///                           their settings, made there if it is missing; else the store's own.
    /// @param useDb              events go to a KAnalyticsDb, else to a KAnalyticsFile.
    /// Becomes the process's manager if there is none.
    KAnalyticsManager(bool useSettingsUserId, QObject *parent, bool useDb);
    /// Doesn't flush, see waitBeforeExit(). Afterwards the process has no manager.
    ~KAnalyticsManager() override;

    /// The process's manager, made with shared identifier and database if there is none.
    static KAnalyticsManager *instance();
    /// Makes @p instance the process's manager unless it is null; the one before stays whose it was.
    static KAnalyticsManager *init(KAnalyticsManager *instance);
    static void killInstance();

    /// Takes the provider over and tells it the store. Providers are served in the order of registration; one that
    /// someone else deletes, on any thread, is forgotten.
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
    // --- All of these do nothing while analytics is switched off ---
    void sendEvent(KAnalyticsEvent::EventType type, QString category, QString name, QVariant value);
    void sendEventAction(QString category, QString name, QVariant value);
    /// Takes the event over. With @p flush, and once as many events as maxEventsBufferised have come since the start,
    /// each one asks for a flush.
    void sendEvent(KAnalyticsEvent *event, bool flush = true);
    /// Starts a timer, or starts it anew.
    void startTimerEvent(QString category, QString name);
    /// Sends the timer's duration.
    void stopTimerEvent(QString category, QString name);
    /// A counter reaches the store at the next flush; then it begins anew.
    void increaseCounterEvent(QString category, QString name);
    void decreaseCounterEvent(QString category, QString name);

    void setMaxEventsBufferised(int maxEventsBufferised);
    /// At once, or when the event loop next runs. Also while analytics is switched off.
    void flushEvents(bool delayed);
    /// Flushes at once and waits for the providers.
    void waitBeforeExit();
    /// The user's identifier. Empty while another process holds the store that has it.
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
    int m_nbEvents = 0;                      // since the start: never set back
    int m_maxEventsBufferised = 10;
    QHash<QString, KAnalyticsEventTimer *> m_timers;
    QHash<QString, KAnalyticsEventCounter *> m_counters;
    QString m_userId = QStringLiteral("");
    QString m_version;
    bool m_isActive = true;
    bool m_useDb;
};
