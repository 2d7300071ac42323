// Settings from a hash in memory.
#pragma once

#include "KernelSettingsReader.h"

#include <QHash>
#include <QVariant>

/// Reader of a hash. A value that isn't a valid number reads as the default number, but one that can't be converted to
/// bool or text reads as false or "". A text is true unless it is "", "0" or, ignoring case, "false".
class KSRFromQHash : public KernelSettingsReader {
public:
    /// @param hash  borrowed; must outlive the reader. Every read detaches a shared hash.
    explicit KSRFromQHash(QHash<QString, QVariant> *hash) : m_hash(hash) { }

    bool GetBool(const QString &key, bool defaultValue) override;
    int GetInt(const QString &key, int defaultValue) override;
    double GetDouble(const QString &key, double defaultValue) override;
    QString GetString(const QString &key, QString defaultValue) override;

private:
    QHash<QString, QVariant> *m_hash;
};
