// Limits that an XML document must keep before a tree of it is built.
#pragma once

#include <QString>

class QXmlInputSource;

/// Far above the needs of profiles and settings: a profile entry takes some 5 KB, 8 levels and 70 nodes. A tree is
/// destroyed recursively, one stack frame per level, and takes some 300 bytes per node, so an unlimited file could
/// exhaust stack or memory.
constexpr qint64 kMaxXmlBytes = qint64(16) << 20;
constexpr int kMaxXmlDepth = 256;
constexpr int kMaxXmlNodes = 500000;

/// Returns why no QDomDocument (without namespace processing) may be built of this document, in plain English without
/// full stop; empty if it may. Parses the document once, up to its first XML error, and rewinds the source.
///
/// Refuses more than kMaxXmlDepth levels of elements, more than kMaxXmlNodes elements, attributes and comments, and
/// documents that declare entities, a few lines of which can expand to gigabytes. The caller enforces kMaxXmlBytes when
/// it reads the file.
QString WhyXmlRefused(QXmlInputSource &source);
