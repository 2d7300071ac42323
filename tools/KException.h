// The exceptions that kernels throw, with a message for the user and the source position of the throw.
#pragma once

#include <QString>

/// Base of all exceptions, thrown by value. Exported so that a host can catch exceptions thrown in the plug-in.
class __attribute__((visibility("default"))) KException {
public:
    /// @param what   the message, ready to be shown.
    /// @param where  the place, usually from KPlace().
    KException(const QString &what, const QString &where);
    ~KException();

    QString what() const { return m_what; }

private:
    QString m_where;
    QString m_what;
};

/// A failure reported by the image-file layer. The message contains only the error number or the result of a disk
/// check.
class __attribute__((visibility("default"))) KFileException : public KException {
public:
    /// @param reason  the layer's message, in English: what was read, expected and found.
    KFileException(const QString &what, const QString &where, const QString &reason);
    ~KFileException();

    QString Reason() const { return m_reason; }

private:
    QString m_reason;
};

/// Returns the place of a throw, such as `File: "KImage" Line: 262`. The file name has no folder or suffix. The default
/// place is that of the call.
QString KPlace(const char *file = __builtin_FILE(), int line = __builtin_LINE());

/// Throws a KException with an untranslated message and the place of the call.
[[noreturn]] void KThrow(const char *what, const char *file = __builtin_FILE(), int line = __builtin_LINE());
