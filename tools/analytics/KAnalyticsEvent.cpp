#include "KAnalyticsEvent.h"

#include <QDateTime>
#include <QJsonDocument>

#include <iterator>

namespace {

const char *const kTypeNames[] = {"action", "duration", "counter"}; // by EventType

QString TypeName(KAnalyticsEvent::EventType type)
{
    const auto index = static_cast<size_t>(type);
    return QLatin1String(index < std::size(kTypeNames) ? kTypeNames[index] : "unknow");
}

KAnalyticsEvent::EventType TypeOf(const QString &name)
{
    for (auto type : {KAnalyticsEvent::EventDuration, KAnalyticsEvent::EventCounter}) {
        if (name == TypeName(type))
            return type;
    }
    return KAnalyticsEvent::EventAction;
}

} // namespace

KAnalyticsEvent::KAnalyticsEvent(QObject *parent)
    : QObject(parent), m_timestamp(QDateTime::currentMSecsSinceEpoch()) { }

void KAnalyticsEvent::setName(QString name)
{
    if (m_name == name)
        return;
    m_name = name;
    Q_EMIT nameChanged(name);
}

void KAnalyticsEvent::setCategory(QString category)
{
    if (m_category == category)
        return;
    m_category = category;
    Q_EMIT categoryChanged(category);
}

void KAnalyticsEvent::setTimestamp(qint64 timestamp)
{
    if (m_timestamp == timestamp)
        return;
    m_timestamp = timestamp;
    Q_EMIT timestampChanged(timestamp);
}

void KAnalyticsEvent::setType(EventType type)
{
    if (m_type == type)
        return;
    m_type = type;
    Q_EMIT typeChanged(type);
}

void KAnalyticsEvent::setValue(QVariant value)
{
    if (m_value == value)
        return;
    m_value = value;
    Q_EMIT valueChanged(value);
}

QString KAnalyticsEvent::toJson()
{
    return QString::fromUtf8(QJsonDocument(toJsonObject()).toJson(QJsonDocument::Compact));
}

void KAnalyticsEvent::fromJson(QString json)
{
    const QJsonDocument document = QJsonDocument::fromJson(json.toUtf8());
    if (!document.isNull())
        fromJsonObject(document.object());
}

QJsonObject KAnalyticsEvent::toJsonObject()
{
    return {{QStringLiteral("timestamp"), QJsonValue(m_timestamp)},
            {QStringLiteral("name"), m_name},
            {QStringLiteral("category"), m_category},
            {QStringLiteral("type"), TypeName(m_type)},
            {QStringLiteral("value"), QJsonValue::fromVariant(m_value)}};
}

void KAnalyticsEvent::fromJsonObject(QJsonObject object)
{
    setTimestamp(object.value(QLatin1String("timestamp")).toVariant().toLongLong());
    setName(object.value(QLatin1String("name")).toString(QString()));
    setCategory(object.value(QLatin1String("category")).toString(QString()));
    setType(TypeOf(object.value(QLatin1String("type")).toString()));
    setValue(object.value(QLatin1String("value")).toVariant());
}

KAnalyticsEvent *KAnalyticsEvent::clone()
{
    auto *copy = new KAnalyticsEvent(nullptr);
    copy->m_name = m_name;
    copy->m_category = m_category;
    copy->m_timestamp = m_timestamp;
    copy->m_type = m_type;
    copy->m_value = m_value;
    return copy;
}

KAnalyticsEventTimer::KAnalyticsEventTimer(QObject *parent) : KAnalyticsEvent(parent)
{
    setType(EventDuration);
    setValue(0);
}

void KAnalyticsEventTimer::start()
{
    setValue(0);
    m_timer.start();
}

void KAnalyticsEventTimer::stop()
{
    setValue(m_timer.elapsed());
}

KAnalyticsEventCounter::KAnalyticsEventCounter(QObject *parent) : KAnalyticsEvent(parent)
{
    setType(EventCounter);
}

void KAnalyticsEventCounter::Count(int step)
{
    m_count += step;
    setValue(m_count);
}

KAnalyticsRawEvent::KAnalyticsRawEvent(int id, QString value, QObject *parent)
    : QObject(parent), m_id(id), m_value(value)
{
}

void KAnalyticsRawEvent::setId(int id)
{
    if (m_id == id)
        return;
    m_id = id;
    Q_EMIT idChanged(id);
}

void KAnalyticsRawEvent::setValue(QString value)
{
    if (m_value == value)
        return;
    m_value = value;
    Q_EMIT valueChanged(value);
}
