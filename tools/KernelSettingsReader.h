// The reading side of settings: typed reads, independent of where settings are stored.
#pragma once

#include <QString>

/// Each read returns the value of a key, or the default if the key is missing or its value can't be parsed; errors are
/// never reported. Keys are paths such as "image/exifMode".
///
/// This class itself reads an empty source. Use a reader on one thread at a time.
class KernelSettingsReader {
public:
    // The order is that of the virtual table, which hosts share.
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
