#include "XmlDocument.h"

#include "InputLimits.h"

#include <QXmlDefaultHandler>
#include <QXmlInputSource>
#include <QXmlSimpleReader>

#include <memory>

namespace {

/// Handler that builds nothing and stops the parser when the document exceeds the limits.
class LimitCheck : public QXmlDefaultHandler {
public:
    QString Why() const { return m_why; }

    bool startElement(const QString &, const QString &, const QString &, const QXmlAttributes &attributes) override
    {
        if (++m_depth > kMaxXmlDepth)
            return Stop(QStringLiteral("elements nest deeper than %1 levels").arg(kMaxXmlDepth));
        return Count(1 + attributes.count());
    }
    bool endElement(const QString &, const QString &, const QString &) override
    {
        --m_depth;
        return true;
    }
    bool comment(const QString &) override { return Count(1); }
    bool startCDATA() override { return Count(1); }
    bool processingInstruction(const QString &, const QString &) override { return Count(1); }

    bool internalEntityDecl(const QString &name, const QString &) override { return StopAtEntity(name); }
    bool externalEntityDecl(const QString &name, const QString &, const QString &) override
    {
        return StopAtEntity(name);
    }

private:
    bool Count(int nodes)
    {
        m_nodes += nodes; // can't overflow with a file of kMaxXmlBytes: the check follows each element
        return m_nodes <= kMaxXmlNodes
            || Stop(QStringLiteral("more than %1 elements, attributes and comments").arg(kMaxXmlNodes));
    }
    bool StopAtEntity(const QString &name)
    {
        return Stop(QStringLiteral("the document declares an entity (\"%1\")").arg(name));
    }
    bool Stop(const QString &why)
    {
        m_why = why;
        return false;
    }

    QString m_why;
    int m_depth = 0;
    int m_nodes = 0;
};

/// One parse and the objects that it needs.
class Parse {
public:
    template <class Text> void Run(const Text &text)
    {
        m_source.setData(text);
        m_result.whyRefused = WhyRefused();
        if (!m_result.whyRefused.isEmpty())
            return;
        m_source.reset();
        m_result.isWellFormed = m_result.document.setContent(&m_source, /*namespaceProcessing=*/false, &m_result.error,
                                                             &m_result.line, &m_result.column);
    }
    const XmlDocument &Result() const { return m_result; }

private:
    QString WhyRefused()
    {
        // Use the same features as QDomDocument, so that this parse stops at the same errors.
        m_reader.setFeature(QStringLiteral("http://xml.org/sax/features/namespaces"), false);
        m_reader.setFeature(QStringLiteral("http://xml.org/sax/features/namespace-prefixes"), true);
        m_reader.setContentHandler(&m_check);
        m_reader.setLexicalHandler(&m_check);
        m_reader.setDeclHandler(&m_check);
        m_reader.parse(m_source);
        return m_check.Why();
    }

    QXmlInputSource m_source;
    LimitCheck m_check;
    QXmlSimpleReader m_reader;
    XmlDocument m_result;
};

template <class Text> XmlDocument Read(const Text &text)
{
    // QtXml is built without exception handling: if memory runs out, it leaves half-built objects, and destroying
    // those would crash. So the parse is owned only once it has finished; an exception before that leaks its memory.
    auto *const parse = new Parse;
    parse->Run(text);
    const std::unique_ptr<const Parse> finished(parse);
    return finished->Result();
}

} // namespace

QByteArray ReadXmlBytes(QIODevice *device)
{
    char piece[16384];
    QByteArray content;
    qint64 count = 0;
    while (content.size() <= kMaxXmlBytes && (count = device->read(piece, sizeof piece)) > 0)
        content.append(piece, static_cast<int>(qMin(count, kMaxXmlBytes + 1 - content.size())));
    return content;
}

XmlDocument ReadXml(const QByteArray &text)
{
    return Read(text);
}

XmlDocument ReadXml(const QString &text)
{
    return Read(text);
}
