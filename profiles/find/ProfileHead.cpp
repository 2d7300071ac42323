#include "ProfileHead.h"
#include "InputLimits.h"
#include "ProfileXml_p.h"
#include "Rational_p.h"

#include <QRegularExpression>
#include <QVector>
#include <QXmlStreamReader>

namespace {

void AddOnce(const QString &text, QStringList *list)
{
    const QString clean = text.simplified();
    if (!clean.isEmpty() && !list->contains(clean) && list->size() < kMaxHeadAlternates)
        list->append(clean);
}

/// Returns 0 for "0/0" and for other text.
double NumberOrZero(const QString &text)
{
    return ParseRational(text).value_or(0.0);
}

void SetLensInfo(const QString &text, ProfileHead *head)
{
    const QStringList parts = text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    if (parts.size() != 4)
        return;
    head->minFocalMm = NumberOrZero(parts[0]);
    head->maxFocalMm = NumberOrZero(parts[1]);
    head->minAperture = NumberOrZero(parts[2]);
    head->maxAperture = NumberOrZero(parts[3]);
}

/// Reader of the first entry. Fields are attributes or element texts; models have no fields with the names used here.
class HeadReader {
public:
    HeadReader(QIODevice *device, ProfileHead *head) : m_xml(device), m_head(head) { }

    bool Read(QString *error)
    {
        while (!m_xml.atEnd() && !m_done)
            Next();
        if (m_xml.hasError() && !m_done)
            *error = QStringLiteral("line %1: %2").arg(m_xml.lineNumber()).arg(m_xml.errorString());
        else if (m_tooDeep)
            *error = QStringLiteral("elements nested more than %1 deep").arg(kMaxHeadDepth);
        else if (m_entryDepth < 0)
            *error = QStringLiteral("no profile entry: expected rdf:li in photoshop:CameraProfiles");
        else if (m_head->model.isEmpty() && m_head->lensNames.isEmpty())
            *error = QStringLiteral("its first entry names neither camera nor lens");
        else
            return true;
        return false;
    }

private:
    void Next()
    {
        switch (m_xml.readNext()) {
        case QXmlStreamReader::StartElement:
            return Start();
        case QXmlStreamReader::EndElement:
            return End();
        case QXmlStreamReader::Characters:
            if (m_entryDepth >= 0 && m_text.size() < kMaxHeadText)
                m_text += m_xml.text();
            return;
        default:
            return;
        }
    }

    void Start()
    {
        m_path.append(m_xml.name().toString());
        m_text.clear();
        m_tooDeep = m_done = m_path.size() > kMaxHeadDepth;
        const bool isItem = m_xml.name() == QLatin1String("li") && m_xml.namespaceUri() == QLatin1String(kRdfNamespace);
        if (m_entryDepth < 0) {
            if (!isItem || !m_path.contains(QStringLiteral("CameraProfiles")))
                return;
            m_entryDepth = m_path.size();
        }
        const QXmlStreamAttributes attributes = m_xml.attributes();
        for (const QXmlStreamAttribute &attribute : attributes)
            if (attribute.namespaceUri() == QLatin1String(kCameraNamespace))
                Take(attribute.name().toString(), attribute.value().toString());
    }

    void End()
    {
        if (m_path.size() == m_entryDepth)
            m_done = true;
        const QString field = m_path.isEmpty() ? QString() : m_path.takeLast();
        if (m_entryDepth < 0)
            return;
        if (field == QLatin1String("li"))
            TakeAlternate(m_text);
        else if (m_xml.namespaceUri() == QLatin1String(kCameraNamespace))
            Take(field, m_text);
        m_text.clear();
    }

    void TakeAlternate(const QString &text)
    {
        if (m_path.contains(QStringLiteral("AlternateLensNames")))
            AddOnce(text, &m_head->lensNames);
        else if (m_path.contains(QStringLiteral("AlternateLensIDs")))
            AddOnce(text, &m_head->lensIds);
    }

    void Take(const QString &field, const QString &text)
    {
        const QString value = text.simplified();
        if (value.isEmpty())
            return;
        if (field == QLatin1String("Make"))
            m_head->make = value;
        else if (field == QLatin1String("Model")
                 || (field == QLatin1String("UniqueCameraModel") && m_head->model.isEmpty()))
            m_head->model = value;
        else if (field == QLatin1String("Lens") || field == QLatin1String("LensPrettyName"))
            AddOnce(value, &m_head->lensNames);
        else if (field == QLatin1String("LensID"))
            AddOnce(value, &m_head->lensIds);
        else if (field == QLatin1String("LensInfo"))
            SetLensInfo(value, m_head);
        else if (field == QLatin1String("SensorFormatFactor"))
            m_head->sensorFormatFactor = NumberOrZero(value);
        else if (field == QLatin1String("CameraRawProfile"))
            m_head->raw = value == QLatin1String("1") || value.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0;
    }

    QXmlStreamReader m_xml;
    ProfileHead *m_head;
    QStringList m_path;    // names of the open elements
    QString m_text;        // text since the last tag
    int m_entryDepth = -1; // size of m_path inside the entry's element; -1: not reached yet
    bool m_done = false, m_tooDeep = false;
};

} // namespace

bool ReadProfileHead(QIODevice *device, ProfileHead *head, QString *error)
{
    return HeadReader(device, head).Read(error);
}
