// Lookup of a picture's metadata by key.
#pragma once

#include <QHash>
#include <QString>
#include <QVector>

/// One metadata value. Its key is Exiv2's or, for values from LibRaw, begins with "LibRaw.".
struct MetadataText {
    QString raw, printed; // as stored; as English text
};

/// Metadata of one file, read once. Absent keys give empty strings.
class MetadataLookup {
public:
    /// Reads a file; the result is empty if nothing can be read.
    explicit MetadataLookup(const QString &path);

    bool Has(const char *key) const { return m_texts.contains(QLatin1String(key)); }
    MetadataText Text(const char *key) const { return m_texts.value(QLatin1String(key)); }
    /// Returns the numbers of a value: "24/1 70/1 0/0" gives 24, 70 and 0. Other text counts as 0.
    QVector<double> Numbers(const char *key) const;
    /// Returns the first number of a value; 0 if there is none.
    double Number(const char *key) const;
    bool IsTrue(const char *key) const;

private:
    QHash<QString, MetadataText> m_texts; // the first value of repeated keys
};
