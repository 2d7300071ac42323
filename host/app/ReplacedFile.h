// The rule for replacing output files, the same as in the image-file layer.
#pragma once

#include <QString>

/// The file that an output named @p path replaces: links are followed, so the file that they point to is replaced and
/// the links stay. The file need not exist.
class ReplacedFile {
public:
    explicit ReplacedFile(const QString &path);

    QString Path() const { return m_path; }
    /// Returns why the file must not be replaced: it is write-protected, or not a regular file. Empty if it may be
    /// replaced or doesn't exist.
    QString Problem() const;
    /// Moves the file @p from, which must be on the same file system, into place. If @p from replaces a file, it first
    /// gets that file's permissions and is flushed to disk. @return why that failed; empty if it succeeded.
    QString ReplaceBy(const QString &from) const;

private:
    QString m_path;
};
