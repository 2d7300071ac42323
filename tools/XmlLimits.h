// Limits for XML documents, checked before a tree is built.
#pragma once

#include <QtGlobal>

/// Far above the needs of profiles and settings: a profile entry takes about 5 KB, 8 levels and 70 nodes. A tree is
/// destroyed recursively, one stack frame per level, and takes about 300 bytes per node, so an unlimited file could
/// exhaust stack or memory.
constexpr qint64 kMaxXmlBytes = qint64(16) << 20;
constexpr int kMaxXmlDepth = 256;
constexpr int kMaxXmlNodes = 500000;
