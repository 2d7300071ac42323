#include "ProfileDocument_p.h"

#include <QFile>
#include <QXmlDefaultHandler>
#include <QXmlInputSource>
#include <QXmlSimpleReader>

namespace {

constexpr qint64 kMaxBytes = qint64(16) << 20; // an entry takes some 5 KB, a profile has tens of them
constexpr int kMaxDepth = 256;                 // profiles have 8 levels
constexpr int kMaxNodes = 500000;              // an entry has some 70

/// Walks a document once without building anything, and stops where it goes beyond the limits.
class LimitCheck : public QXmlDefaultHandler {
public:
    QString Why() const { return m_why; }

    bool startElement(const QString &, const QString &, const QString &, const QXmlAttributes &attributes) override
    {
        if (++m_depth > kMaxDepth)
            return Stop(QStringLiteral("elements nest deeper than %1 levels").arg(kMaxDepth));
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
        m_nodes += nodes; // a file of kMaxBytes can't overflow it: the check follows each element
        return m_nodes <= kMaxNodes
            || Stop(QStringLiteral("more than %1 elements, attributes and comments").arg(kMaxNodes));
    }
    bool StopAtEntity(const QString &name)
    {
        return Stop(QStringLiteral("the document declares an entity (\"%1\"), which profiles don't").arg(name));
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

/// The reason not to build a tree of this document, empty if there is none.
QString WhyRefused(QXmlInputSource &source)
{
    LimitCheck check;
    QXmlSimpleReader reader;
    reader.setContentHandler(&check);
    reader.setLexicalHandler(&check);
    reader.setDeclHandler(&check);
    reader.parse(source); // faults of the XML itself are told by the second pass
    source.reset();
    return check.Why();
}

} // namespace

ProfileDocument ReadProfileDocument(const QString &fileName)
{
    ProfileDocument result;
    const auto fail = [&result](ProfileFault fault, const QString &why) {
        result.fault = fault;
        result.why = why;
        return result;
    };
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return fail(ProfileFault::NotOpened, file.errorString());
    const QByteArray content = file.read(kMaxBytes + 1); // never more, whatever the file says of its size
    file.close();
    result.bytes = content.size();
    if (content.size() > kMaxBytes)
        return fail(ProfileFault::Refused, QStringLiteral("the file is larger than %1 MiB").arg(kMaxBytes >> 20));

    QXmlInputSource source;
    source.setData(content);
    const QString whyRefused = WhyRefused(source);
    if (!whyRefused.isEmpty())
        return fail(ProfileFault::Refused, whyRefused);
    QString error;
    if (!result.document.setContent(&source, /*namespaceProcessing=*/false, &error, &result.line, &result.column))
        return fail(ProfileFault::NotWellFormed, error);
    return result;
}

QDomElement FirstEntry(const QDomElement &root)
{
    QDomElement element = root;
    while (!element.isNull() && element.tagName() != QLatin1String("rdf:li"))
        element = element.firstChildElement();
    return element;
}

bool IsResource(const QDomElement &element)
{
    return element.attribute(QStringLiteral("rdf:parseType")) == QLatin1String("Resource");
}

QDomElement ModelElement(const QDomElement &entry)
{
    QDomElement element = entry.firstChildElement();
    while (!element.isNull() && !IsResource(element))
        element = element.nextSiblingElement();
    return element;
}
