#include "XmlLimits.h"

#include <QXmlDefaultHandler>
#include <QXmlInputSource>
#include <QXmlSimpleReader>

namespace {

/// Parses a document once without building anything, and stops when it exceeds the limits.
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

} // namespace

QString WhyXmlRefused(QXmlInputSource &source)
{
    LimitCheck check;
    QXmlSimpleReader reader; // QDomDocument's parser with the same features: it stops at the same errors
    reader.setFeature(QStringLiteral("http://xml.org/sax/features/namespaces"), false);
    reader.setFeature(QStringLiteral("http://xml.org/sax/features/namespace-prefixes"), true);
    reader.setContentHandler(&check);
    reader.setLexicalHandler(&check);
    reader.setDeclHandler(&check);
    reader.parse(source);
    source.reset();
    return check.Why();
}
