#include "KSettingsManager.h"

KSettingsManager::KSettingsManager() : m_defaultsOnly(true) { }

KSettingsManager::KSettingsManager(QSettings::Scope scope, const QString &organization, const QString &application)
    : m_settings(scope, organization, application), m_defaultsOnly(false)
{
}

QVariant KSettingsManager::Stored(const QString &key)
{
    if (!m_defaultsOnly && m_settings.contains(key))
        return m_settings.value(key);
    return m_defaults[key]; // inserts a null value for an unknown key
}

template <typename T> QVariant KSettingsManager::StoredOr(const QString &key, const T &defaultValue) const
{
    return m_settings.value(key, QVariant::fromValue(defaultValue));
}

bool KSettingsManager::GetBool(const QString &key)
{
    return Stored(key).toBool();
}

int KSettingsManager::GetInt(const QString &key)
{
    return Stored(key).toInt();
}

double KSettingsManager::GetDouble(const QString &key)
{
    return Stored(key).toDouble();
}

QString KSettingsManager::GetString(const QString &key)
{
    return Stored(key).toString();
}

QStringList KSettingsManager::GetStringList(const QString &key)
{
    return Stored(key).toStringList();
}

QColor KSettingsManager::GetColor(const QString &key)
{
    return Stored(key).value<QColor>();
}

QByteArray KSettingsManager::GetByteArray(const QString &key)
{
    return Stored(key).toByteArray();
}

QRect KSettingsManager::GetRect(const QString &key)
{
    return Stored(key).toRect();
}

QDateTime KSettingsManager::GetDateTime(const QString &key)
{
    return Stored(key).toDateTime();
}

bool KSettingsManager::GetBool(const QString &key, bool defaultValue)
{
    return StoredOr(key, defaultValue).toBool();
}

int KSettingsManager::GetInt(const QString &key, int defaultValue)
{
    bool isNumber = false;
    const int number = StoredOr(key, defaultValue).toInt(&isNumber);
    return isNumber ? number : defaultValue;
}

double KSettingsManager::GetDouble(const QString &key, double defaultValue)
{
    bool isNumber = false;
    const double number = StoredOr(key, defaultValue).toDouble(&isNumber);
    return isNumber ? number : defaultValue;
}

QString KSettingsManager::GetString(const QString &key, QString defaultValue)
{
    return StoredOr(key, defaultValue).toString();
}

QStringList KSettingsManager::GetStringList(const QString &key, QStringList defaultValue)
{
    return StoredOr(key, defaultValue).toStringList();
}

QColor KSettingsManager::GetColor(const QString &key, QColor defaultValue)
{
    return StoredOr(key, defaultValue).value<QColor>();
}

QByteArray KSettingsManager::GetByteArray(const QString &key, QByteArray defaultValue)
{
    return StoredOr(key, defaultValue).toByteArray();
}

QRect KSettingsManager::GetRect(const QString &key, QRect defaultValue)
{
    return StoredOr(key, defaultValue).toRect();
}

QDateTime KSettingsManager::GetDateTime(const QString &key, QDateTime defaultValue)
{
    return StoredOr(key, defaultValue).toDateTime();
}

void KSettingsManager::Set(const QString &key, const QVariant &value)
{
    m_settings.setValue(key, value);
}

void KSettingsManager::SetDefault(const QString &key, const QVariant &value, bool overwrite)
{
    if (overwrite || !m_defaults.contains(key))
        m_defaults[key] = value;
}

QVariant KSettingsManager::Get(const QString &key, const QVariant &defaultValue)
{
    SetDefault(key, defaultValue, /*overwrite=*/false);
    return m_settings.value(key, defaultValue);
}
