// What the plain correction takes from a lens profile, its first entry alone, for people.
#pragma once

#include <QString>

struct ProfileReport;

/// The lines about a profile. @p file is its name as the user wrote it; @p report must be usable.
QString PlainProfileText(const QString &file, const ProfileReport &report);

/// Why the plain correction can't use the profile, in one line; empty if it can. A profile that can be read and
/// corrects nothing is of no use either.
QString WhyPlainlyUseless(const QString &file, const ProfileReport &report);
