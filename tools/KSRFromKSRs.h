// Settings from several readers, the later ones stronger.
#pragma once

#include "KernelSettingsReader.h"

#include <vector>

/// What one reader gives is the default of the next. So the last reader that holds a key wins, and the caller's default
/// stands if none does. Null pointers are passed over.
class KSRFromKSRs : public KernelSettingsReader {
public:
    KSRFromKSRs() = default;
    ~KSRFromKSRs() override;
    KSRFromKSRs(const KSRFromKSRs &) = delete;
    KSRFromKSRs &operator=(const KSRFromKSRs &) = delete;

    bool GetBool(const QString &key, bool defaultValue) override;
    int GetInt(const QString &key, int defaultValue) override;
    double GetDouble(const QString &key, double defaultValue) override;
    QString GetString(const QString &key, QString defaultValue) override;

    /// Filled by whoever makes the chain; the readers in it, made with new, belong to it and are deleted with it.
    std::vector<KernelSettingsReader *> m_readers;
};
