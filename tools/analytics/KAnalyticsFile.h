// Analytics events in one file of Qt's binary JSON.
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

/// Event store that does nothing until it has a path. Because saveJSonRoot() leaves the file unchanged, nothing is ever
/// written, so the store is only useful for files that another program creates. A file that can't be read or has
/// another format counts as empty.
///
/// A lock file next to the file guards each read and each write separately. A lock left by a process that has ended is
/// taken over at once, a lock without a readable owner after two seconds.
class KAnalyticsFile : public QObject {
    Q_OBJECT
public:
    explicit KAnalyticsFile(QObject *parent);
    ~KAnalyticsFile() override;

    /// Does not store the event, because saveJSonRoot() has no effect; the caller keeps it.
    void insertEvent(KAnalyticsEvent *event);
    /// Returns the events, numbered by position and owned by the caller. They remain in the file.
    QList<KAnalyticsRawEvent *> allEvents();
    QString userId();
    /// Does nothing.
    void setUserId(QString userId);
    /// Does not store the entries either.
    void addProviderArray(QString name, QJsonArray array);
    QJsonArray getProviderArray(QString name);

    /// Returns the whole content, or an empty event list if the file doesn't exist.
    QJsonObject currentJSonRoot();
    /// Writes a temporary file and discards it: the target keeps its content.
    void saveJSonRoot(QJsonObject &root);

public Q_SLOTS:
    virtual void setFilePath(QString filePath);

private:
    std::unique_ptr<QLockFile> m_lock;
    QString m_filePath;
};
