#include "KSRFromQHash.h"

namespace {

template <typename T, typename Convert>
T Value(QHash<QString, QVariant> &hash, const QString &key, T defaultValue, Convert convert)
{
    const auto found = hash.find(key);
    if (found == hash.end())
        return defaultValue;
    bool understood = true;
    const T value = convert(found.value(), &understood);
    return understood ? value : defaultValue;
}

} // namespace

bool KSRFromQHash::GetBool(const QString &key, bool defaultValue)
{
    return Value(*m_hash, key, defaultValue, [](const QVariant &value, bool *) { return value.toBool(); });
}

int KSRFromQHash::GetInt(const QString &key, int defaultValue)
{
    return Value(*m_hash, key, defaultValue, [](const QVariant &value, bool *ok) { return value.toInt(ok); });
}

double KSRFromQHash::GetDouble(const QString &key, double defaultValue)
{
    return Value(*m_hash, key, defaultValue, [](const QVariant &value, bool *ok) { return value.toDouble(ok); });
}

QString KSRFromQHash::GetString(const QString &key, QString defaultValue)
{
    return Value(*m_hash, key, defaultValue, [](const QVariant &value, bool *) { return value.toString(); });
}
