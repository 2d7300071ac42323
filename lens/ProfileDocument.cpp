#include "ProfileDocument_p.h"

#include "InputLimits.h"
#include "XmlDocument.h"

#include <QFile>
#include <QFileInfo>

ProfileDocument ReadProfileDocument(const QString &fileName)
{
    ProfileDocument result;
    const auto fail = [&result](ProfileFault fault, const QString &why) {
        result.fault = fault;
        result.why = why;
        return result;
    };
    const QFileInfo info(fileName);
    if (info.exists() && !info.isFile() && !info.isDir()) // a pipe without a writer would block forever
        return fail(ProfileFault::NotOpened, QStringLiteral("not a regular file"));
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return fail(ProfileFault::NotOpened, file.errorString());
    const QByteArray content = ReadXmlBytes(&file);
    if (file.error() != QFileDevice::NoError)
        return fail(ProfileFault::NotOpened, file.errorString());
    file.close();
    result.bytes = content.size();
    if (content.size() > kMaxXmlBytes)
        return fail(ProfileFault::Refused, QStringLiteral("the file is larger than %1 MiB").arg(kMaxXmlBytes >> 20));

    const XmlDocument xml = ReadXml(content);
    if (!xml.whyRefused.isEmpty())
        return fail(ProfileFault::Refused, xml.whyRefused);
    result.document = xml.document;
    result.line = xml.line;
    result.column = xml.column;
    return xml.isWellFormed ? result : fail(ProfileFault::NotWellFormed, xml.error);
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
