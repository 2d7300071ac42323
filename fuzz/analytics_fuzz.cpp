// Reads arbitrary bytes as an event in JSON or as a file of events in Qt's binary JSON.
#include "Target.h"
#include "analytics/KAnalyticsEvent.h"
#include "analytics/KAnalyticsFile.h"

#include <QFile>
#include <QTemporaryDir>

namespace {

void ReadEvent(const QByteArray &json)
{
    KAnalyticsEvent event(nullptr);
    event.fromJson(QString::fromUtf8(json));
    const QString text = event.toJson();
    KAnalyticsEvent again(nullptr);
    again.fromJson(text);
    Require(again.toJson() == text);
}

void ReadFile(const QByteArray &content)
{
    static const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("events"));
    QFile file(path);
    Require(file.open(QIODevice::WriteOnly) && file.write(content) == content.size());
    file.close();
    KAnalyticsFile store(nullptr);
    store.setFilePath(path);
    qDeleteAll(store.allEvents());
    store.userId();
    KAnalyticsEvent event(nullptr);
    store.insertEvent(&event);
    store.addProviderArray(QStringLiteral("provider"), store.getProviderArray(QStringLiteral("provider")));
}

} // namespace

FUZZ_TARGET(analytics)
{
    Input input(data, size);
    if (input.Below(2) == 0)
        ReadEvent(input.Rest());
    else
        ReadFile(input.Rest());
}
