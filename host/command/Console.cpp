#include "Console.h"

#include <QFileInfo>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <csignal>
#include <cstdio>
#include <unistd.h>

namespace {

void Write(std::FILE *stream, const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    const auto length = static_cast<std::size_t>(bytes.size());
    if (std::fwrite(bytes.constData(), 1, length, stream) == length && std::fflush(stream) == 0)
        return;
    if (errno == EPIPE) // the reader closed the pipe: let InterruptGuard end the program with SIGPIPE
        kill(getpid(), SIGPIPE);
}

bool IsControl(QChar c)
{
    return c.category() == QChar::Other_Control || c == QChar::LineSeparator || c == QChar::ParagraphSeparator;
}

/// Escapes control characters, as in "a\x1b[2J.jpg".
QString Escaped(const QString &name)
{
    QString text;
    for (const QChar c : name)
        text += IsControl(c) ? QStringLiteral("\\x%1").arg(c.unicode(), 2, 16, QLatin1Char('0')) : QString(c);
    return text;
}

/// Leaves out the middle of a long name, so that the time left fits on the same line.
QString Shortened(const QString &name)
{
    constexpr int kHalf = 20;
    return name.size() <= 2 * kHalf ? name : name.left(kHalf) + QChar(0x2026) + name.right(kHalf);
}

/// Returns whether standard error is a terminal that can erase a line; a "dumb" one can't.
bool IsLiveTerminal()
{
    const QByteArray kind = qgetenv("TERM");
    return isatty(STDERR_FILENO) && !kind.isEmpty() && kind != "dumb";
}

} // namespace

QString OneLine(const QString &text)
{
    QString line = text.trimmed();
    for (QChar &c : line) {
        if (IsControl(c))
            c = QLatin1Char(' ');
    }
    return line;
}

QString Indented(const QString &text)
{
    QString result;
    const QStringList lines = text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString &line : lines)
        result += QLatin1String("  ") + OneLine(line) + QLatin1Char('\n');
    return result;
}

QString LabeledLine(const QString &label, int width, const QString &value)
{
    return value.isEmpty() ? QString() : QStringLiteral("  %1%2\n").arg(label, -width).arg(OneLine(value));
}

QString TimeLeft(double seconds, int done, int remaining)
{
    if (done < 1 || remaining < 1)
        return QString();
    constexpr double kMinute = 60.0, kMaxInSeconds = 90.0;
    constexpr int kMinutesPerHour = 60;
    const double left = seconds / done * remaining;
    if (left < kMaxInSeconds)
        return QStringLiteral("about %1 s left").arg(std::ceil(left), 0, 'f', 0);
    const auto minutes = static_cast<qint64>(std::min(std::ceil(left / kMinute), 1e9));
    if (minutes < kMinutesPerHour)
        return QStringLiteral("about %1 min left").arg(minutes);
    return QStringLiteral("about %1 h %2 min left").arg(minutes / kMinutesPerHour).arg(minutes % kMinutesPerHour);
}

Console::Console() : m_terminal(IsLiveTerminal())
{
    m_sinceStart.start();
}

void Console::Print(const QString &text)
{
    ClearProgress(); // standard output is often on the same terminal
    Write(stdout, text);
    ShowProgress();
}

void Console::PrintName(const QString &file)
{
    Print((isatty(STDOUT_FILENO) ? Escaped(file) : file) + QLatin1Char('\n'));
}

void Console::PrintError(const QString &text)
{
    ClearProgress();
    Write(stderr, text);
    ShowProgress();
}

void Console::Failure(const QString &file, const QString &text)
{
    const QString subject = file.isEmpty() ? QString() : OneLine(file) + QLatin1String(": ");
    PrintError(QLatin1String("vitrelux: ") + subject + OneLine(text) + QLatin1Char('\n'));
}

void Console::Note(const QString &file, const QString &text)
{
    Failure(file, QLatin1String("note: ") + text);
}

void Console::BeginProgress(int number, int count, const QString &file)
{
    if (!m_terminal)
        return;
    const QString name = Shortened(OneLine(QFileInfo(file).fileName()));
    ClearProgress();
    m_count = count;
    m_begun = number;
    m_progress[number] = QStringLiteral("[%1/%2] ").arg(number).arg(count) + name + QStringLiteral(" \u2026");
    ShowProgress();
}

void Console::EndProgress(int number, bool tookWork)
{
    ClearProgress();
    m_worked += tookWork ? 1 : 0;
    m_progress.remove(number);
    ShowProgress();
}

void Console::Summary(const QMap<PictureReport::Outcome, int> &counts)
{
    const double seconds = static_cast<double>(m_sinceStart.elapsed()) / 1000.0;
    QStringList parts;
    for (const auto outcome :
         {PictureReport::Outcome::Corrected, PictureReport::Outcome::Planned, PictureReport::Outcome::Skipped,
          PictureReport::Outcome::CorrectedBefore, PictureReport::Outcome::Failed}) {
        const bool isRare =
            outcome == PictureReport::Outcome::Planned || outcome == PictureReport::Outcome::CorrectedBefore;
        if (!isRare || counts.value(outcome) > 0)
            parts << QStringLiteral("%1 %2").arg(counts.value(outcome)).arg(NameOf(outcome));
    }
    QString text = QStringLiteral("%1 in %2 s").arg(parts.join(QLatin1String(", "))).arg(seconds, 0, 'f', 1);
    if (const int corrected = counts.value(PictureReport::Outcome::Corrected); corrected > 1)
        text += QStringLiteral(", %1 pictures per minute").arg(60.0 * corrected / qMax(seconds, 0.001), 0, 'f', 0);
    PrintError(text + QLatin1Char('\n'));
}

void Console::ClearProgress()
{
    if (!m_progress.isEmpty())
        Write(stderr, QStringLiteral("\r\033[K"));
}

void Console::ShowProgress()
{
    if (m_progress.isEmpty())
        return;
    const double seconds = static_cast<double>(m_sinceStart.elapsed()) / 1000.0;
    const int remaining = m_count - m_begun + m_progress.size();
    // Let the terminal cut off what doesn't fit: only the last part of a wrapped line could be erased.
    const QLatin1String kNoWrap("\033[?7l"), kWrap("\033[?7h");
    Write(stderr, kNoWrap + m_progress.last() + QLatin1Char(' ') + TimeLeft(seconds, m_worked, remaining) + kWrap);
}
