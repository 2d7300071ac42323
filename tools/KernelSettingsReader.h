// The reading side of settings: typed reads for code that doesn't care where its settings come from.
#pragma once

#include <QString>

/// Each read gives the value of a key, or the default where the source lacks it or holds something that can't be
/// understood; nothing is ever reported. Keys are paths such as "image/exifMode".
///
/// This class itself is the reader of an empty source. A reader is used by one thread at a time.
class KernelSettingsReader {
public:
    // The order is the order of the virtual table, which hosts share.
    virtual ~KernelSettingsReader() = default;
    virtual bool GetBool(const QString &key, bool defaultValue);
    virtual int GetInt(const QString &key, int defaultValue);
    virtual double GetDouble(const QString &key, double defaultValue);
    virtual QString GetString(const QString &key, QString defaultValue);
};

inline bool KernelSettingsReader::GetBool(const QString & /*key*/, bool defaultValue)
{
    return defaultValue;
}

inline int KernelSettingsReader::GetInt(const QString & /*key*/, int defaultValue)
{
    return defaultValue;
}

inline double KernelSettingsReader::GetDouble(const QString & /*key*/, double defaultValue)
{
    return defaultValue;
}

inline QString KernelSettingsReader::GetString(const QString & /*key*/, QString defaultValue)
{
    return defaultValue;
}
