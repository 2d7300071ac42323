#include "KAnalyticsProvider.h"

#include "KAnalyticsDb.h"
#include "KAnalyticsEvent.h"
#include "KAnalyticsFile.h"

#include <QDateTime>

namespace {

constexpr qint64 kOldestMs = 864000000; // ten days

} // namespace

KAnalyticsProvider::KAnalyticsProvider(QObject *parent) : QObject(parent) { }

KAnalyticsProvider::~KAnalyticsProvider() = default;

void KAnalyticsProvider::flushEvents(QList<KAnalyticsRawEvent *> events)
{
    preFlush(events);
    for (KAnalyticsRawEvent *event : events)
        flushEvent(event);
    postFlush();
}

void KAnalyticsProvider::setDb(KAnalyticsDb *db)
{
    m_db = db;
    if (db)
        storageChanged(db);
}

void KAnalyticsProvider::setAnFile(KAnalyticsFile *file)
{
    m_anFile = file;
    if (file)
        storageChanged(file);
}

bool KAnalyticsProvider::eventTimeCheck(KAnalyticsEvent &event)
{
    return event.timestamp()
        >= QDateTime::currentMSecsSinceEpoch() - kOldestMs; // subtracting a timestamp read from a file could overflow
}

void KAnalyticsProvider::waitBeforeExit() { }

void KAnalyticsProvider::preFlush(QList<KAnalyticsRawEvent *>) { }

void KAnalyticsProvider::postFlush() { }
