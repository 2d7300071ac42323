// The reading side of settings: typed reads, independent of where settings are stored.
#pragma once

#include <QString>

/// Reader of typed values. Each function returns the value of a key, or the default if the key is missing or its value
/// can't be parsed; errors are never reported. Keys are paths such as "image/exifMode".
///
/// This base class has no values. Use a reader on one thread at a time.
class KernelSettingsReader {
public:
    // Hosts rely on the order of functions in the virtual table.
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
