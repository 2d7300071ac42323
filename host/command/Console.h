// What the program says: results on standard output, everything else on standard error.
#pragma once

#include <QElapsedTimer>
#include <QMap>
#include <QString>

/// @p text with control characters, line feeds above all, turned into blanks: a message is one line, and a file's name
/// can't steer the terminal.
QString OneLine(const QString &text);
/// "  LABEL   VALUE", with the label padded to @p width and the value on one line; nothing for an empty value.
QString LabeledLine(const QString &label, int width, const QString &value);

/// Each line of @p text as OneLine has it, indented.
QString Indented(const QString &text);

/// Writes at once, in UTF-8. On a terminal a progress line stands below the messages while pictures are worked on; in a
/// pipe or a file there is none. One thread at a time.
class Console {
public:
    Console();

    /// Plain text, as it stands.
    void Print(const QString &text);
    /// The name of a file, on a line of its own; on a terminal its control characters are escaped.
    void PrintName(const QString &file);
    void PrintError(const QString &text);

    /// One line on standard error: "vitrelux: FILE: TEXT". An empty @p file is left out.
    void Failure(const QString &file, const QString &text);
    void Note(const QString &file, const QString &text);

    /// Shows "[2/7] name.jpg ..." until EndProgress() for that number, on a terminal only. Of several it is the last.
    void BeginProgress(int number, int count, const QString &file);
    void EndProgress(int number);
    /// The last line of a run, on a terminal only.
    void Summary(int corrected, int skipped, int correctedBefore, int failed);

private:
    void ClearProgress();
    void ShowProgress();

    bool m_terminal;
    QElapsedTimer m_sinceStart;
    QMap<int, QString> m_progress; // of the pictures under way, by number
};
