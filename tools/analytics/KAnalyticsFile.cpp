#include "KAnalyticsFile.h"

#include "BinaryJson.h"
#include "KAnalyticsEvent.h"

#include <QFile>
#include <QJsonDocument>
#include <QSaveFile>

Q_LOGGING_CATEGORY(kanalyticsproviderfile, "kanalyticsproviderfile", QtWarningMsg)

namespace {

const QString kEvents = QStringLiteral("events");
const QString kUserId = QStringLiteral("userId");
constexpr int kStaleLockMs = 2000; // a lock is held for one read or write of a small file

/// Holds the lock for a scope. If it is not available, as in a read-only folder, work continues without it.
class LockHolder {
public:
    explicit LockHolder(QLockFile *lock) : m_lock(lock) { m_lock->lock(); }
    ~LockHolder() { m_lock->unlock(); }
    LockHolder(const LockHolder &) = delete;
    LockHolder &operator=(const LockHolder &) = delete;

private:
    QLockFile *m_lock;
};

} // namespace

KAnalyticsFile::KAnalyticsFile(QObject *parent) : QObject(parent) { }

KAnalyticsFile::~KAnalyticsFile() = default;

void KAnalyticsFile::setFilePath(QString filePath)
{
    m_filePath = filePath;
    m_lock = std::make_unique<QLockFile>(filePath + QStringLiteral(".lock"));
    m_lock->setStaleLockTime(kStaleLockMs);
}

QJsonObject KAnalyticsFile::currentJSonRoot()
{
    if (!m_lock)
        return {};
    QFile file(m_filePath);
    if (!file.exists())
        return {{kEvents, QJsonArray()}};
    QByteArray bytes;
    {
        LockHolder holder(m_lock.get());
        if (!file.open(QIODevice::ReadOnly))
            return {};
        bytes = file.readAll();
    }
    return ObjectOfBinaryJson(bytes);
}

void KAnalyticsFile::saveJSonRoot(QJsonObject &root)
{
    if (!m_lock)
        return;
    LockHolder holder(m_lock.get());
    QSaveFile file(m_filePath);
    file.setDirectWriteFallback(true);
    if (file.open(QIODevice::WriteOnly))
        file.write(QJsonDocument(root).toBinaryData());
    // No commit(): the temporary file is deleted, and the target keeps its content.
}

void KAnalyticsFile::insertEvent(KAnalyticsEvent *event)
{
    QJsonObject root = currentJSonRoot();
    if (root.isEmpty() || !event)
        return;
    QJsonArray events = root.value(kEvents).toArray();
    events.append(event->toJsonObject());
    root.insert(kEvents, events);
    saveJSonRoot(root);
}

QList<KAnalyticsRawEvent *> KAnalyticsFile::allEvents()
{
    QJsonObject root = currentJSonRoot();
    if (root.isEmpty())
        return {};
    QList<KAnalyticsRawEvent *> raw;
    for (const QJsonValue value : root.value(kEvents).toArray()) {
        KAnalyticsEvent event(nullptr);
        event.fromJsonObject(value.toObject());
        raw << new KAnalyticsRawEvent(raw.size(), event.toJson(), nullptr);
    }
    root.insert(kEvents, QJsonArray());
    saveJSonRoot(root);
    return raw;
}

QString KAnalyticsFile::userId()
{
    return currentJSonRoot().value(kUserId).toString(QString());
}

void KAnalyticsFile::setUserId(QString userId)
{
    QJsonObject root = currentJSonRoot();
    if (!root.isEmpty())
        root.insert(kUserId, userId); // never saved; see the class
}

void KAnalyticsFile::addProviderArray(QString name, QJsonArray array)
{
    QJsonObject root = currentJSonRoot();
    if (root.isEmpty())
        return;
    root.insert(name, array);
    saveJSonRoot(root);
}

QJsonArray KAnalyticsFile::getProviderArray(QString name)
{
    return currentJSonRoot().value(name).toArray();
}
