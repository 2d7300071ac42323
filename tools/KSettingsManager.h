// The user's preferences: one QSettings store, and beside it a table of defaults in memory.
#pragma once

#include "KernelSettingsWriter.h"

#include <QByteArray>
#include <QColor>
#include <QDateTime>
#include <QHash>
#include <QRect>
#include <QSettings>
#include <QStringList>

/// Two families of getters that know nothing of each other:
///
///   | family                     | where the store lacks the key                                                   |
///   |----------------------------|---------------------------------------------------------------------------------|
///   | Get...(key)                | the entry of the table of defaults; a missing one is made, with a null value    |
///   | Get...(key, defaultValue)  | the caller's default; the table is not asked                                    |
///
/// What is stored but can't be converted gives false, 0, an empty or an invalid value, except that GetInt and GetDouble
/// with a caller's default give that. Keys are paths such as "image/exifMode"; nothing reports a failure.
///
/// Made by whoever owns the preferences. One thread only: even the getters with one argument change the table. Trap:
/// not to be deleted through a KernelSettingsWriter, which has no virtual destructor.
class KSettingsManager : public KernelSettingsWriter {
public:
    /// On the application's default store, for defaults only: the getters with one argument never look into the store,
    /// even where Set has written to it.
    KSettingsManager();
    /// On the store of that scope, organization and application.
    KSettingsManager(QSettings::Scope scope, const QString &organization, const QString &application);

    bool GetBool(const QString &key);
    int GetInt(const QString &key);
    double GetDouble(const QString &key);
    QString GetString(const QString &key);
    QStringList GetStringList(const QString &key);
    QColor GetColor(const QString &key);
    QByteArray GetByteArray(const QString &key);
    QRect GetRect(const QString &key);
    QDateTime GetDateTime(const QString &key);

    bool GetBool(const QString &key, bool defaultValue);
    int GetInt(const QString &key, int defaultValue);
    double GetDouble(const QString &key, double defaultValue);
    QString GetString(const QString &key, QString defaultValue);
    QStringList GetStringList(const QString &key, QStringList defaultValue);
    QColor GetColor(const QString &key, QColor defaultValue);
    QByteArray GetByteArray(const QString &key, QByteArray defaultValue);
    QRect GetRect(const QString &key, QRect defaultValue);
    QDateTime GetDateTime(const QString &key, QDateTime defaultValue);

    /// Writes to the store, which QSettings takes to disk in its own time.
    void Set(const QString &key, const QVariant &value) override;
    /// Enters a default. Without @p overwrite the first one given stays, the null one of an earlier read too.
    void SetDefault(const QString &key, const QVariant &value, bool overwrite);
    /// Enters a default unless the key has one, then reads the store; where that lacks the key, @p defaultValue.
    QVariant Get(const QString &key, const QVariant &defaultValue);

private:
    QVariant Stored(const QString &key);
    template <typename T> QVariant StoredOr(const QString &key, const T &defaultValue) const;

    QSettings m_settings;
    bool m_defaultsOnly; // the getters with one argument skip m_settings
    QHash<QString, QVariant> m_defaults;
};
