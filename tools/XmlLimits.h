// How large an XML document may be before a tree of it is built.
#pragma once

#include <QString>

class QXmlInputSource;

/// Far above what profiles and settings need: an entry of a profile takes some 5 KB, 8 levels and 70 nodes. A tree is
/// torn down recursively, a level a stack frame, and takes some 300 bytes a node, so an unlimited file could exhaust
/// stack or memory.
constexpr qint64 kMaxXmlBytes = qint64(16) << 20;
constexpr int kMaxXmlDepth = 256;
constexpr int kMaxXmlNodes = 500000;

/// The reason not to build a QDomDocument (without namespace processing) of this document, in plain English, no full
/// stop; empty if there is none. Walks the document once, up to the first fault of its XML, and rewinds the source.
///
/// Refused are more than kMaxXmlDepth levels of elements, more than kMaxXmlNodes elements, attributes and comments, and
/// documents that declare entities: a few lines of those expand to gigabytes. kMaxXmlBytes is the caller's to keep when
/// it reads the file.
QString WhyXmlRefused(QXmlInputSource &source);
