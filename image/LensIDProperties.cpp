#include "LensIDProperties.h"

#include "DataTable_p.h"

namespace {

/// Returns the number in a cell, truncated; 0 if it isn't a number.
int WholeNumber(const QStringRef &cell)
{
    const float number = cell.toFloat();
    return number > -1e9F && number < 1e9F ? static_cast<int>(number) : 0; // also false for NaN
}

} // namespace

LensIDProperties::LensIDProperties() = default;

LensIDProperties::LensIDProperties(const LensIDProperties &other)
    : QObject(), m_initialized(other.m_initialized.load(std::memory_order_acquire)), m_lenses(other.m_lenses)
{
}

void LensIDProperties::Initialize()
{
    ReadOnce(m_initialized, m_mutex, [this] {
        ForEachRow(QStringLiteral("Data:lensid.txt"), [this](const QVector<QStringRef> &cells) {
            if (cells.size() == 3 || cells.size() == 4)
                m_lenses.append({cells[0].toString(), cells[1].toString(), cells[2].toString(),
                                 cells.size() == 4 ? WholeNumber(cells[3]) : 0});
        });
    });
}

QVector<LensIDProperties::LensDefinition> LensIDProperties::findLenses(QString make, QString lensId)
{
    QVector<LensDefinition> found;
    for (const LensDefinition &lens : qAsConst(m_lenses)) {
        // The maker in a picture may be longer than the brand ("NIKON CORPORATION"), the lens identifier shorter.
        if (make.contains(lens.brand, Qt::CaseInsensitive) && lens.lensId.contains(lensId, Qt::CaseInsensitive))
            found.append(lens);
    }
    return found;
}

QStringList LensIDProperties::findLensList(QString make, QString lensId)
{
    QStringList names;
    const QVector<LensDefinition> lenses = findLenses(make, lensId);
    for (const LensDefinition &lens : lenses)
        names.append(lens.longName);
    return names;
}

int LensIDProperties::isFisheyLens(QString make, QString lensId)
{
    const QVector<LensDefinition> lenses = findLenses(make, lensId);
    return lenses.size() == 1 ? lenses.first().type : -1;
}
