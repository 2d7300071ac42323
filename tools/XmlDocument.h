// XML as a tree, without namespace processing and within the limits of InputLimits.h.
#pragma once

#include <QDomDocument>
#include <QString>

/// Result of parsing a text.
struct XmlDocument {
    QString whyRefused; ///< in English, without a period: an exceeded limit, or declared entities; empty if accepted
    bool isWellFormed = false;
    QString error; ///< the parser's, if the text is not well-formed
    int line = 0;  ///< of the error, from 1
    int column = 0;
    QDomDocument document; ///< empty for a refused text; the part before the error for a malformed one
};

/// Reads the rest of a file, but at most one byte more than kMaxXmlBytes, regardless of the size that the file reports.
/// A single QIODevice::read would allocate the requested number of bytes at once.
QByteArray ReadXmlBytes(QIODevice *device);

/// Parses a text that the caller has limited to kMaxXmlBytes.
///
/// Refuses more than kMaxXmlDepth levels of elements, more than kMaxXmlNodes elements, attributes, comments, CDATA
/// sections and processing instructions, and documents that declare entities, a few lines of which can expand to
/// gigabytes. Bytes are decoded as their byte order mark or XML declaration says, otherwise as UTF-8. If std::bad_alloc
/// is thrown, the memory of the parse leaks.
XmlDocument ReadXml(const QByteArray &text);
XmlDocument ReadXml(const QString &text);
