// The one exception type of the kernels: a message for the user and the place it was thrown from.
#pragma once

#include <QString>

/// Thrown by value. Visible outside the library, so that an exception of the plug-in can be caught by its host.
class __attribute__((visibility("default"))) KException {
public:
    /// @param what   the message, ready to be shown.
    /// @param where  the place, by custom what KPlace() gives.
    KException(const QString &what, const QString &where);
    ~KException();

    QString what() const { return m_what; }

private:
    QString m_where;
    QString m_what;
};

/// A failure that the image-file layer reported. Its message names only the error number, or what a check of the disk
/// found.
class __attribute__((visibility("default"))) KFileException : public KException {
public:
    /// @param reason  the layer's own words, in English: what was read, expected, found.
    KFileException(const QString &what, const QString &where, const QString &reason);
    ~KFileException();

    QString Reason() const { return m_reason; }

private:
    QString m_reason;
};

/// The place of a throw: `File: "KImage" Line: 262`, with the source file's name without folder and suffix.
/// Without arguments it names the line of the call.
QString KPlace(const char *file = __builtin_FILE(), int line = __builtin_LINE());

/// Throws a KException with an untranslated message and the place of the call.
[[noreturn]] void KThrow(const char *what, const char *file = __builtin_FILE(), int line = __builtin_LINE());
