#include "MetadataLookup_p.h"

#include "Rational_p.h"
#include "gfl.h"

#include <QStringList>

MetadataLookup::MetadataLookup(const QString &path)
{
    GFL_METADATA_LIST *list = nullptr;
    if (gflLoadMetadataListUTF8(path.toUtf8().constData(), &list) != GFL_NO_ERROR)
        return;
    for (std::uint32_t i = 0; i < list->NumberOfItems; ++i) {
        const GFL_METADATA_ITEM &item = list->ItemsList[i];
        const QString key = QString::fromUtf8(item.Key);
        if (!m_texts.contains(key))
            m_texts.insert(key, {QString::fromUtf8(item.Raw).trimmed(), QString::fromUtf8(item.Printed).trimmed()});
    }
    gflFreeMetadataList(list);
}

QVector<double> MetadataLookup::Numbers(const char *key) const
{
    QVector<double> numbers;
    for (const QString &part : Text(key).raw.split(QLatin1Char(' '), Qt::SkipEmptyParts))
        numbers.append(ParseRational(part).value_or(0.0));
    return numbers;
}

double MetadataLookup::Number(const char *key) const
{
    return Numbers(key).value(0);
}

bool MetadataLookup::IsTrue(const char *key) const
{
    const QString text = Text(key).raw;
    return text.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0 || text.toDouble() > 0.0;
}
