#include "KSRFromKSettingsManager.h"

#include "KSettingsManager.h"

bool KSRFromKSettingsManager::GetBool(const QString &key, bool defaultValue)
{
    return m_manager->GetBool(key, defaultValue);
}

int KSRFromKSettingsManager::GetInt(const QString &key, int defaultValue)
{
    return m_manager->GetInt(key, defaultValue);
}

double KSRFromKSettingsManager::GetDouble(const QString &key, double defaultValue)
{
    return m_manager->GetDouble(key, defaultValue);
}

QString KSRFromKSettingsManager::GetString(const QString &key, QString defaultValue)
{
    return m_manager->GetString(key, defaultValue);
}
