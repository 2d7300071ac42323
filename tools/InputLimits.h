// Limits on input files other than pictures, with their reasons. Those for pictures are in
// imagefile/core/limits.h, because that layer depends on no other.
#pragma once

#include <QtGlobal>

// ---- XML: profiles and settings. Checked before a tree is built. ----

/// Far above the needs of profiles and settings: a profile entry takes about 5 KB, 8 levels and 70 nodes. A tree is
/// destroyed recursively, one stack frame per level, and takes about 300 bytes per node, so an unlimited file could
/// exhaust stack or memory.
constexpr qint64 kMaxXmlBytes = qint64(16) << 20;
constexpr int kMaxXmlDepth = 256;
constexpr int kMaxXmlNodes = 500000;

/// Maximum number of notes about one profile; the last one reports that the limit was reached. A damaged file may yield
/// one note per value.
constexpr int kMaxProfileNotes = 1000;

// ---- Profile heads: names, frame and flags of a profile's first entry, which the index reads from every file ----

constexpr int kMaxHeadDepth = 64;       // nested elements; profiles have 12
constexpr int kMaxHeadAlternates = 100; // alternate names and IDs of one lens
constexpr int kMaxHeadText = 4096;      // characters of one field

// ---- Profile folders and their index ----

constexpr int kMaxIndexedProfiles = 100'000; // an index of 60 MB; the largest known collection has 6,000
constexpr int kMaxFolderDepth = 32;          // nested folders; the scan is recursive
constexpr qint64 kMaxIndexCacheBytes = qint64(256) << 20;

// ---- User files ----

constexpr qint64 kMaxSettingsBytes = qint64(1) << 20; // ours are a few kilobytes

/// A picture list: room for a million names of 256 bytes. Without a limit, reading /dev/zero would never end.
constexpr qint64 kMaxListBytes = qint64(256) << 20;

/// One line of a report, which is a JSON object of a few kilobytes in practice.
constexpr qint64 kMaxRecordBytes = qint64(16) << 20;
