#include "ProfileXml_p.h"

#include "InputLimits.h"

#include <QXmlStreamReader>

#include <algorithm>

namespace {

/// Elements that contain values and aren't values themselves.
constexpr const char *kModels[] = {
    "PerspectiveModel",        "FisheyeModel",  "ChromaticGreenModel",         "ChromaticRedGreenModel",
    "ChromaticBlueGreenModel", "VignetteModel", "VignetteModelPiecewiseParam",
};
constexpr const char *kLists[] = {"AlternateLensNames", "AlternateLensIDs"};

template <size_t count> bool IsOneOf(const char *const (&names)[count], const QStringRef &name)
{
    return std::any_of(std::begin(names), std::end(names), [&](const char *one) { return name == QLatin1String(one); });
}

class Walk {
public:
    Walk(const QByteArray &content, const std::function<void(const ProfileNode &)> &take) : m_xml(content), m_take(take)
    {
    }

    QString Run()
    {
        // Other lists of the document, such as its authors, contain no entries; lists inside an entry are read as part
        // of it.
        int profiles = kMaxXmlDepth + 1; // depth of the outermost CameraProfiles; outside it, more than any depth
        while (Next()) {
            if (m_depth < profiles)
                profiles = kMaxXmlDepth + 1;
            if (!m_xml.isStartElement())
                continue;
            if (m_depth > profiles && Is(kRdfNamespace, "li"))
                ReadEntry();
            else if (m_xml.name() == QLatin1String("CameraProfiles"))
                profiles = std::min(profiles, m_depth);
        }
        return m_xml.hasError() ? QStringLiteral("line %1: %2").arg(m_xml.lineNumber()).arg(m_xml.errorString())
                                : QString();
    }

private:
    bool Is(const char *space, const char *name) const
    {
        return m_xml.namespaceUri() == QLatin1String(space) && m_xml.name() == QLatin1String(name);
    }

    /// Reads the next token. Returns false at the end and at the first error.
    bool Next()
    {
        m_line = m_xml.lineNumber(); // a tag starts where the previous token ends
        switch (m_xml.readNext()) {
        case QXmlStreamReader::StartElement:
            if (++m_depth > kMaxXmlDepth)
                m_xml.raiseError(QStringLiteral("elements nest deeper than %1 levels").arg(kMaxXmlDepth));
            m_nodes += 1 + m_xml.attributes().size();
            break;
        case QXmlStreamReader::EndElement:
            --m_depth;
            break;
        case QXmlStreamReader::DTD:
            if (!m_xml.entityDeclarations().isEmpty())
                m_xml.raiseError(QStringLiteral("the document declares entities"));
            break;
        case QXmlStreamReader::Comment:
        case QXmlStreamReader::ProcessingInstruction:
            ++m_nodes;
            break;
        default:
            break;
        }
        if (m_nodes > kMaxXmlNodes)
            m_xml.raiseError(QStringLiteral("more than %1 elements, attributes and comments").arg(kMaxXmlNodes));
        return !m_xml.hasError() && !m_xml.atEnd();
    }

    void ReadEntry()
    {
        ProfileNode entry;
        entry.line = m_line;
        ReadNode(entry);
        if (!m_xml.hasError())
            m_take(entry);
    }

    /// Reads an element to its end and adds its content to @p node. Next() limits the depth of the recursion.
    void ReadNode(ProfileNode &node)
    {
        for (const QXmlStreamAttribute &attribute : m_xml.attributes()) {
            if (attribute.namespaceUri() == QLatin1String(kCameraNamespace))
                node.fields.push_back({attribute.name().toString(), attribute.value().toString().trimmed(), m_line});
        }
        while (Next() && !m_xml.isEndElement()) {
            if (m_xml.isStartElement())
                ReadChild(node);
        }
    }

    void ReadChild(ProfileNode &node)
    {
        const QStringRef name = m_xml.name();
        if (Is(kRdfNamespace, "Description")) {
            ReadNode(node);
        } else if (m_xml.namespaceUri() != QLatin1String(kCameraNamespace)) {
            SkipElement();
        } else if (IsOneOf(kModels, name)) {
            node.models.emplace_back();
            node.models.back().name = name.toString();
            node.models.back().line = m_line;
            ReadNode(node.models.back());
        } else if (IsOneOf(kLists, name)) {
            ReadList(node);
        } else {
            ProfileField field{name.toString(), QString(), m_line};
            field.value = Text();
            node.fields.push_back(field);
        }
    }

    void ReadList(ProfileNode &node)
    {
        node.lists.emplace_back(m_xml.name().toString(), QStringList());
        QStringList &list = node.lists.back().second;
        const int outside = m_depth - 1;
        while (m_depth > outside && Next()) {
            if (m_xml.isStartElement() && Is(kRdfNamespace, "li"))
                list.append(Text());
        }
    }

    /// Reads an element to its end and returns its text; if it has several, such as translations, the first one.
    QString Text()
    {
        QString text;
        const int outside = m_depth - 1;
        bool isWhole = false;
        while (m_depth > outside && Next()) {
            if (m_xml.isCharacters() && !isWhole)
                text += m_xml.text();
            else if (m_xml.isEndElement() && !text.trimmed().isEmpty())
                isWhole = true;
        }
        return text.trimmed();
    }

    void SkipElement()
    {
        const int outside = m_depth - 1;
        while (m_depth > outside && Next()) { }
    }

    QXmlStreamReader m_xml;
    const std::function<void(const ProfileNode &)> &m_take;
    qint64 m_line = 1;
    int m_depth = 0;
    int m_nodes = 0; // can't overflow: each takes at least a byte of the file
};

} // namespace

QString ReadProfileXml(const QByteArray &content, const std::function<void(const ProfileNode &)> &take)
{
    return Walk(content, take).Run();
}
