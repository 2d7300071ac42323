#include "KSRFromXMLFile.h"

#include "InputLimits.h"
#include "XmlDocument.h"

#include <QDomDocument>
#include <QFile>
#include <QStringList>

namespace {

/// Returns the element of a key; null if there is none or more than one.
QDomElement ElementOf(const QDomDocument &document, const QString &key)
{
    QDomElement current = document.documentElement();
    for (const QString &part : key.split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
        const QDomNodeList list = current.elementsByTagName(part); // at any depth
        if (list.length() != 1)
            return QDomElement();
        current = list.item(0).toElement();
    }
    return current;
}

template <typename T> T Value(const QDomDocument &document, const QString &key, const T &defaultValue)
{
    const QDomElement element = ElementOf(document, key);
    return element.isNull() ? defaultValue : XmlValueBuilder<T>::Build(element, defaultValue);
}

} // namespace

template <> bool XmlValueBuilder<bool>::Build(const QDomElement &element, bool defaultValue)
{
    const QString text = element.text();
    if (text.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0)
        return true;
    if (text.compare(QLatin1String("false"), Qt::CaseInsensitive) == 0)
        return false;
    bool isNumber = false;
    const int number = text.toInt(&isNumber);
    return isNumber ? number != 0 : defaultValue;
}

template <> int XmlValueBuilder<int>::Build(const QDomElement &element, int defaultValue)
{
    bool isNumber = false;
    const int number = element.text().toInt(&isNumber);
    return isNumber ? number : defaultValue;
}

template <> double XmlValueBuilder<double>::Build(const QDomElement &element, double defaultValue)
{
    bool isNumber = false;
    const double number = element.text().toDouble(&isNumber);
    return isNumber ? number : defaultValue;
}

template <> QString XmlValueBuilder<QString>::Build(const QDomElement &element, QString /*defaultValue*/)
{
    return element.text();
}

KSRFromXMLFile::KSRFromXMLFile(const QString &fileName) : m_document(std::make_unique<QDomDocument>())
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return;
    const QByteArray content = ReadXmlBytes(&file);
    if (content.size() > kMaxXmlBytes)
        return;
    *m_document = ReadXml(QString::fromUtf8(content.constData())).document; // the text ends at the first zero byte
}

KSRFromXMLFile::~KSRFromXMLFile() = default;

bool KSRFromXMLFile::GetBool(const QString &key, bool defaultValue)
{
    return Value(*m_document, key, defaultValue);
}

int KSRFromXMLFile::GetInt(const QString &key, int defaultValue)
{
    return Value(*m_document, key, defaultValue);
}

double KSRFromXMLFile::GetDouble(const QString &key, double defaultValue)
{
    return Value(*m_document, key, defaultValue);
}

QString KSRFromXMLFile::GetString(const QString &key, QString defaultValue)
{
    return Value(*m_document, key, defaultValue);
}
