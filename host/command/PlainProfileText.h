// Readable text about the part of a lens profile that plain corrections use: its first entry.
#pragma once

#include <QString>

struct ProfileReport;

/// Returns the lines about a profile. @p file is its name as the user wrote it; @p report must be usable.
QString PlainProfileText(const QString &file, const ProfileReport &report);

/// Returns why plain corrections can't use the profile, in one line; empty if they can. A readable profile that
/// corrects nothing also counts as unusable.
QString WhyNoPlainCorrection(const QString &file, const ProfileReport &report);
