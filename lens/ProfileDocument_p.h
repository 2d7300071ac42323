// An .lcp file as an XML document, and the way to its first entry; for the profile reader and the profile report.
#pragma once

#include <QDomDocument>
#include <QString>

/// What became of a file on its way to a document.
enum class ProfileFault {
    None,
    NotOpened,     ///< or not read to its end
    Refused,       ///< larger, deeper or fuller than any profile, or with entity declarations; no document
    NotWellFormed, ///< the document holds what stands before the fault, perhaps nothing
};

/// An .lcp file after parsing.
struct ProfileDocument {
    ProfileFault fault = ProfileFault::None;
    QString why;      ///< in plain English, no full stop; empty without a fault
    qint64 bytes = 0; ///< size of the file as far as it was read
    int line = 0;     ///< of a NotWellFormed fault, from 1
    int column = 0;
    QDomDocument document;
};

/// Reads and parses a file, once, without namespace processing.
///
/// Documents beyond the limits of XmlLimits.h are refused, those that declare entities too; profiles have none.
ProfileDocument ReadProfileDocument(const QString &fileName);

/// The first element named "rdf:li" on the path of first child elements down from @p root, null if there is none.
QDomElement FirstEntry(const QDomElement &root);
/// Whether the element has rdf:parseType="Resource": its values stand in child elements.
bool IsResource(const QDomElement &element);
/// The first child of the entry that is a resource, null if there is none.
QDomElement ModelElement(const QDomElement &entry);
