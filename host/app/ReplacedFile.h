// The rule for output files that replace others, the same as in the image-file layer.
#pragma once

#include <QString>

#include <optional>
#include <sys/types.h>

/// Where an output goes if it may replace what stands at @p path: links are followed, so that the file they lead to is
/// replaced and the links stay. The file need not exist.
class ReplacedFile {
public:
    explicit ReplacedFile(const QString &path);

    QString Path() const { return m_path; }
    /// Returns why the file must not be replaced: it is write-protected, or not a regular file. Empty if it may be, or
    /// if there is none.
    QString Problem() const;
    /// Moves the file @p from, which lies on the same file system, into place, with the permissions of the file that it
    /// replaces, and then only once it is on the disk. @return why that failed, or empty.
    QString ReplaceBy(const QString &from) const;

private:
    QString m_path;
};
