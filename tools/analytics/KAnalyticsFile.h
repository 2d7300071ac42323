// Events of analytics in one file of Qt's binary JSON.
#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QLockFile>
#include <QLoggingCategory>
#include <QObject>

#include <memory>

class KAnalyticsEvent;
class KAnalyticsRawEvent;

Q_DECLARE_LOGGING_CATEGORY(kanalyticsproviderfile)

/// Does nothing before it has a path. Trap: nothing that is written persists. saveJSonRoot() leaves the file as it was,
/// so this store serves files that someone else makes. A file that can't be read or isn't of this form counts as empty,
/// and then nothing is entered either.
///
/// A lock file beside the file guards each read and each write, not both together. One left behind by a process that
/// ended is taken over at once, one without a readable owner after two seconds.
class KAnalyticsFile : public QObject {
    Q_OBJECT
public:
    explicit KAnalyticsFile(QObject *parent);
    ~KAnalyticsFile() override;

    /// Enters a copy; the event stays the caller's.
    void insertEvent(KAnalyticsEvent *event);
    /// The events, numbered by their place, as the caller's own; the store is asked to forget them.
    QList<KAnalyticsRawEvent *> allEvents();
    QString userId();
    /// Keeps nothing.
    void setUserId(QString userId);
    /// Entries of a provider's own.
    void addProviderArray(QString name, QJsonArray array);
    QJsonArray getProviderArray(QString name);

    /// The whole content; with no events in it if the file doesn't exist.
    QJsonObject currentJSonRoot();
    void saveJSonRoot(QJsonObject &root);

public Q_SLOTS:
    virtual void setFilePath(QString filePath);

private:
    std::unique_ptr<QLockFile> m_lock;
    QString m_filePath;
};
