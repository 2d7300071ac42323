#include "KSRFromKSRs.h"

namespace {

template <typename T, typename Get> T Chained(const KSRFromKSRs &chain, const QString &key, T value, Get get)
{
    for (std::size_t i = 0; i < chain.m_readers.size(); ++i) { // by index, because a reader may append to the list
        if (KernelSettingsReader *reader = chain.m_readers[i])
            value = (reader->*get)(key, value);
    }
    return value;
}

} // namespace

KSRFromKSRs::~KSRFromKSRs()
{
    for (KernelSettingsReader *reader : m_readers)
        delete reader;
}

bool KSRFromKSRs::GetBool(const QString &key, bool defaultValue)
{
    return Chained(*this, key, defaultValue, &KernelSettingsReader::GetBool);
}

int KSRFromKSRs::GetInt(const QString &key, int defaultValue)
{
    return Chained(*this, key, defaultValue, &KernelSettingsReader::GetInt);
}

double KSRFromKSRs::GetDouble(const QString &key, double defaultValue)
{
    return Chained(*this, key, defaultValue, &KernelSettingsReader::GetDouble);
}

QString KSRFromKSRs::GetString(const QString &key, QString defaultValue)
{
    return Chained(*this, key, defaultValue, &KernelSettingsReader::GetString);
}
