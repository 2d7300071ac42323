// The user's preferences: one QSettings store and an in-memory table of defaults.
#pragma once

#include "KernelSettingsWriter.h"

#include <QByteArray>
#include <QColor>
#include <QDateTime>
#include <QHash>
#include <QRect>
#include <QSettings>
#include <QStringList>

/// The preferences, with two independent families of getters:
///
///   | family                     | result if the store lacks the key                                               |
///   |----------------------------|---------------------------------------------------------------------------------|
///   | Get...(key)                | the entry of the table of defaults; a missing one is added with a null value    |
///   | Get...(key, defaultValue)  | the caller's default; the table is not used                                     |
///
/// A stored value that can't be converted reads as false, 0, or an empty or invalid value, but GetInt and GetDouble
/// return the caller's default if there is one. Keys are paths such as "image/exifMode"; failures are never reported.
///
/// Created by the owner of the preferences. For one thread only, because even the getters with one argument modify the
/// table. Never delete it through a KernelSettingsWriter, which has no virtual destructor.
class KSettingsManager : public KernelSettingsWriter {
public:
    /// Uses the application's default store, but the getters with one argument read only the table of defaults, even
    /// after Set has written to the store.
    KSettingsManager();
    /// Uses the store of that scope, organization and application.
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

    /// Writes to the store; QSettings decides when to write it to disk.
    void Set(const QString &key, const QVariant &value) override;
    /// Adds a default. Without @p overwrite, an existing one stays, even the null one that an earlier read added.
    void SetDefault(const QString &key, const QVariant &value, bool overwrite);
    /// Adds a default unless the key has one, then reads the store; if that lacks the key, returns @p defaultValue.
    QVariant Get(const QString &key, const QVariant &defaultValue);

private:
    QVariant Stored(const QString &key);
    template <typename T> QVariant StoredOr(const QString &key, const T &defaultValue) const;

    QSettings m_settings;
    bool m_defaultsOnly; // the getters with one argument skip m_settings
    QHash<QString, QVariant> m_defaults;
};
