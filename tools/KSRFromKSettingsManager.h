// Settings from the persistent store of a settings manager.
#pragma once

#include "KernelSettingsReader.h"

class KSettingsManager;

/// Reader of stored values. For a key without one, it returns the caller's default and ignores the manager's table of
/// defaults.
class KSRFromKSettingsManager : public KernelSettingsReader {
public:
    /// @param manager  borrowed; must outlive the reader.
    explicit KSRFromKSettingsManager(KSettingsManager *manager) : m_manager(manager) { }

    bool GetBool(const QString &key, bool defaultValue) override;
    int GetInt(const QString &key, int defaultValue) override;
    double GetDouble(const QString &key, double defaultValue) override;
    QString GetString(const QString &key, QString defaultValue) override;

private:
    KSettingsManager *m_manager;
};
