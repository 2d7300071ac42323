// XML document of an .lcp file, and its first entry; for the profile reader and the profile report.
#pragma once

#include <QDomDocument>
#include <QString>

/// Reason why a file could not be parsed completely.
enum class ProfileFault {
    None,
    NotOpened,     ///< can't be opened or read to its end
    Refused,       ///< exceeds the limits of InputLimits.h or declares entities; no document
    NotWellFormed, ///< the document holds the part before the error, possibly nothing
};

/// Parsed .lcp file.
struct ProfileDocument {
    ProfileFault fault = ProfileFault::None;
    QString why;      ///< in plain English, no final period; empty without a fault
    qint64 bytes = 0; ///< bytes read from the file
    int line = 0;     ///< position of a NotWellFormed fault, from 1
    int column = 0;
    QDomDocument document;
};

/// Reads and parses a file, once, without namespace processing.
///
/// Refuses documents beyond the limits of InputLimits.h and those that declare entities, which profiles never do.
ProfileDocument ReadProfileDocument(const QString &fileName);

/// Returns the first element named "rdf:li" on the path of first child elements down from @p root, null if there is
/// none.
QDomElement FirstEntry(const QDomElement &root);
/// Returns whether the element has rdf:parseType="Resource": its values are child elements.
bool IsResource(const QDomElement &element);
/// Returns the first child of the entry that is a resource, null if there is none.
QDomElement ModelElement(const QDomElement &entry);
