// Settings from a hash in memory.
#pragma once

#include "KernelSettingsReader.h"

#include <QHash>
#include <QVariant>

/// Numbers that can't be parsed give the default. Any present value converts to a bool or a text: a text other than "",
/// "0" and "false" is true.
class KSRFromQHash : public KernelSettingsReader {
public:
    /// @param hash  borrowed; must outlive the reader. Trap: every read detaches a shared hash.
    explicit KSRFromQHash(QHash<QString, QVariant> *hash) : m_hash(hash) { }

    bool GetBool(const QString &key, bool defaultValue) override;
    int GetInt(const QString &key, int defaultValue) override;
    double GetDouble(const QString &key, double defaultValue) override;
    QString GetString(const QString &key, QString defaultValue) override;

private:
    QHash<QString, QVariant> *m_hash;
};
