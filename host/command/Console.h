// Output of the program: results on standard output, everything else on standard error.
#pragma once

#include "PictureReport.h"

#include <QElapsedTimer>
#include <QMap>
#include <QString>

/// Returns @p text with line feeds and other control characters replaced by spaces: a message is one line, and a file
/// name can't control the terminal.
QString OneLine(const QString &text);
/// Returns "  LABEL   VALUE", with the label padded to @p width and the value on one line; nothing for an empty value.
QString LabeledLine(const QString &label, int width, const QString &value);

/// Returns the time left at the speed so far, such as "about 3 min left"; empty before the first picture is done.
/// @param seconds    since the start.
/// @param done       pictures that took work; skipped ones don't affect the estimate.
/// @param remaining  pictures not finished, each of which may take work.
QString TimeLeft(double seconds, int done, int remaining);

/// Returns each line of @p text indented, without control characters.
QString Indented(const QString &text);

/// Writer of the program's output, unbuffered and in UTF-8. On a terminal, a progress line below the messages shows a
/// picture in progress. Only one thread at a time may use it.
class Console {
public:
    Console();

    /// Prints text unchanged on standard output.
    void Print(const QString &text);
    /// Prints a file name on a separate line; on a terminal its control characters are escaped.
    void PrintName(const QString &file);
    void PrintError(const QString &text);

    /// Prints one line on standard error: "vitrelux: FILE: TEXT". An empty @p file is left out.
    void Failure(const QString &file, const QString &text);
    void Note(const QString &file, const QString &text);

    /// Shows "[2/7] name.jpg ... about 3 min left" until EndProgress() for that number. If several pictures are in
    /// progress, the latest one is shown. Only on a terminal.
    void BeginProgress(int number, int count, const QString &file);
    /// @param tookWork  false for a picture that was skipped or failed.
    void EndProgress(int number, bool tookWork);
    /// Prints the last line of a run on standard error.
    void Summary(const QMap<PictureReport::Outcome, int> &counts);

private:
    void ClearProgress();
    void ShowProgress();

    bool m_terminal;
    QElapsedTimer m_sinceStart;
    QMap<int, QString> m_progress; // of the pictures in progress, by number
    int m_count = 0, m_begun = 0;  // pictures in the run, and the number of the one begun last
    int m_worked = 0;              // finished pictures that took work
};
