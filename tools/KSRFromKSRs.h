// Settings from several readers; later ones take precedence.
#pragma once

#include "KernelSettingsReader.h"

#include <vector>

/// Chain of readers. Each reader's value is the default for the next one, so the last reader that has a key wins, and
/// the caller's default applies if none has it. Null pointers are skipped.
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

    /// Readers made with new, added by the creator of the chain. The chain owns and deletes them.
    std::vector<KernelSettingsReader *> m_readers;
};
