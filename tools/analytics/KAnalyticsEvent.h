// One analytics event: what happened, when, and a value.
#pragma once

#include <QElapsedTimer>
#include <QJsonObject>
#include <QObject>
#include <QString>
#include <QVariant>

/// An event with the time of its creation. Create it on the heap, without a parent; the store that receives it deletes
/// it later. Use it on the manager's thread. Setters emit a signal only on a change.
class KAnalyticsEvent : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString name READ name WRITE setName NOTIFY nameChanged)
    Q_PROPERTY(QString category READ category WRITE setCategory NOTIFY categoryChanged)
    Q_PROPERTY(qint64 timestamp READ timestamp WRITE setTimestamp NOTIFY timestampChanged)
    Q_PROPERTY(EventType type READ type WRITE setType NOTIFY typeChanged)
    Q_PROPERTY(QVariant value READ value WRITE setValue NOTIFY valueChanged)
public:
    enum EventType : int { EventAction = 0, EventDuration = 1, EventCounter = 2 }; // hosts may use other numbers
    Q_ENUM(EventType)

    explicit KAnalyticsEvent(QObject *parent);

    QString name() const { return m_name; }
    QString category() const { return m_category; }
    /// Returns milliseconds since the epoch.
    qint64 timestamp() const { return m_timestamp; }
    EventType type() const { return m_type; }
    QVariant value() const { return m_value; }

    /// Returns toJsonObject() as compact JSON.
    QString toJson();
    /// Reads the output of toJson(). Leaves the event unchanged if the text is not JSON.
    void fromJson(QString json);
    /// Returns five keys: "timestamp", "name", "category", "type" ("action", "duration", "counter", "unknow") and
    /// "value".
    QJsonObject toJsonObject();
    /// Reads the five keys; missing ones are read as 0, an empty string, an action and no value.
    void fromJsonObject(QJsonObject object);
    /// Returns a plain event with the same fields, owned by the caller.
    KAnalyticsEvent *clone();

public Q_SLOTS:
    void setName(QString name);
    void setCategory(QString category);
    void setTimestamp(qint64 timestamp);
    void setType(EventType type);
    void setValue(QVariant value);

Q_SIGNALS:
    void nameChanged(QString name);
    void categoryChanged(QString category);
    void timestampChanged(qint64 timestamp);
    void typeChanged(EventType type);
    void valueChanged(QVariant value);

private:
    QString m_name;
    QString m_category;
    EventType m_type = EventAction;
    qint64 m_timestamp;
    QVariant m_value;
};

/// A duration in milliseconds. Its timestamp is the time of its creation, no matter how often it is started.
class KAnalyticsEventTimer : public KAnalyticsEvent {
    Q_OBJECT
public:
    explicit KAnalyticsEventTimer(QObject *parent);

    void start();
    void stop();

private:
    QElapsedTimer m_timer;
};

/// A count, which may be negative; no value before the first step.
class KAnalyticsEventCounter : public KAnalyticsEvent {
    Q_OBJECT
public:
    explicit KAnalyticsEventCounter(QObject *parent);

    void increase() { Count(+1); }
    void decrease() { Count(-1); }

private:
    void Count(int step);

    int m_count = 0;
};

/// An event as stored: a number and its unparsed JSON text.
class KAnalyticsRawEvent : public QObject {
    Q_OBJECT
    Q_PROPERTY(int id READ id WRITE setId NOTIFY idChanged)
    Q_PROPERTY(QString value READ value WRITE setValue NOTIFY valueChanged)
public:
    KAnalyticsRawEvent(int id, QString value, QObject *parent);

    int id() const { return m_id; }
    QString value() const { return m_value; }

public Q_SLOTS:
    void setId(int id);
    void setValue(QString value);

Q_SIGNALS:
    void idChanged(int id);
    void valueChanged(QString value);

private:
    int m_id;
    QString m_value;
};

Q_DECLARE_METATYPE(KAnalyticsEvent *)
