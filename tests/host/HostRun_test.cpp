// Tests of the program as a host: the order of calls, recorded by a plug-in that can also misbehave; outputs;
// interruptions; a terminal; odd file names; unusual environments, such as no display, home folder or locale.
#include "Case.h"
#include "ProgramTest.h"
#include "Table.h"

#include <QDir>
#include <QRegularExpression>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace {

const QString kProbe = "correct --plain --profile p.lcp --plugin "_s + QStringLiteral(PROBE_PLUGIN " ");
const QString kOutput = "a_corrected.tiff"_s;

struct Call {
    unsigned number, error;
    unsigned flags = 0; // only calls with all these bits in the third argument fail
};

/// Makes a system call fail in this process from now on.
void Refuse(const Call &call)
{
    sock_filter filter[] = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                            BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call.number, 0, 4),
                            BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, args[2])),
                            BPF_STMT(BPF_ALU | BPF_AND | BPF_K, call.flags),
                            BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, call.flags, 0, 1),
                            BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | call.error),
                            BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
    const sock_fprog program = {7, filter};
    prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0);
    prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program);
}

} // namespace

class HostRunTest : public ProgramTest {
    Q_OBJECT
private Q_SLOTS:
    void callsInOrder();
    void recordHasChosenCorrections();
    void failsWithOneLine();
    void existingOutput();
    void replacedFile();
    void refusedCalls();
    void parallelRunsGiveTheSameFiles();
    void rivalsForOneOutput();
    void interruptionLeavesNothing();
    void firstInterruptFinishesThePicture();
    void removesWorkFoldersOfKilledRuns();
    void standardStreams();
    void notification();
    void environment();
    void names();
    void progressOnTerminal();
    void failuresPrintOneLine_data();
    void failuresPrintOneLine();

private:
    ProgramResult RunProbe(const char *manner, const QString &line)
    {
        m_run->Set("VITRELUX_PROBE", QString::fromLatin1(manner));
        m_run->Set("VITRELUX_PROBE_NOTES", Path("notes"_s));
        m_run->Set("VITRELUX_PROBE_RIVAL", Path(kOutput));
        return Run(kProbe + line);
    }
    QStringList Notes() const { return QString::fromUtf8(ReadFile(Path("notes"_s))).split(QLatin1Char('\n')); }
    /// Returns the names in the folder except the initial ones and the notes.
    QStringList Made() const
    {
        QStringList names = Names(m_dir->path());
        for (const QString &name : {"a.jpg"_s, "b.jpg"_s, "p.lcp"_s, "notes"_s})
            names.removeAll(name);
        return names;
    }
};

void HostRunTest::callsInOrder()
{
    const ProgramResult result = RunProbe("", "a.jpg b.jpg"_s);
    QCOMPARE(result.exitCode, 0);
    const QString record = "AllocParameters 1 1 1 "_s + Path("p.lcp"_s), process = "Process %1 %2 7 2"_s;
    QCOMPARE(Notes(),
             QStringList({"Library with kernels"_s, "Plugins 1"_s, record, process.arg("a.jpg"_s, Path("a.jpg"_s)),
                          "FreeParameters 7"_s, record, process.arg("b.jpg"_s, Path("b.jpg"_s)), "FreeParameters 7"_s,
                          "~Library"_s, QString()}));
    QCOMPARE(ReadFile(Path(kOutput)), QByteArray("probe"));
    QCOMPARE(QString::fromUtf8(result.output), Path("a_corrected.tiff\n"_s) + Path("b_corrected.tiff\n"_s));
    QCOMPARE(Made(), QStringList({kOutput, "b_corrected.tiff"_s}));
    const ProgramResult none = RunProbe("no process", "a.jpg"_s);
    QCOMPARE(none.exitCode, 1);
    QVERIFY2(none.error.endsWith("ProbePlugin.so\": offers no process \"KIPluginOne2One\"\n"), none.error);
}

void HostRunTest::recordHasChosenCorrections()
{
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_TABLES "/plain-corrections.tsv"))) {
        const Case named(row);
        const auto has = [&](char model) { return row[1].contains(QLatin1Char(model)); };
        QByteArray profile = ProfileText({has('d'), has('c'), has('v')}, 60, 40);
        QVERIFY(profile.contains(row[3].toUtf8()));
        if (!row[3].isEmpty())
            profile.replace(row[3].toUtf8(), row[4].toUtf8());
        WriteFile(Path("p.lcp"_s), profile);
        WriteFile(Path("notes"_s), {});
        const ProgramResult result = RunProbe("", "--overwrite a.jpg "_s + row[0]);
        const bool fails = row[2].size() > 5;
        if (fails)
            QVERIFY2(result.error == "vitrelux: a.jpg: profile \"p.lcp\": " + row[2].toUtf8() + '\n', result.error);
        QVERIFY(result.exitCode == int(fails)
                && Notes().contains("AllocParameters %1 %2"_s.arg(row[2], Path("p.lcp"_s))) != fails);
        if (fails || !row[0].isEmpty())
            continue;
        const char *const names[] = {"distortion", "chromatic aberration", "vignetting"};
        QByteArrayList made;
        for (int i = 0; i < 3; ++i)
            if (row[2][2 * i] == QLatin1Char('1'))
                made << names[i];
        const QByteArray report = Run("profile --plain p.lcp"_s).output;
        QVERIFY2(report.contains("  Corrects              " + made.join(", ") + '\n'), report);
    }
}

void HostRunTest::failsWithOneLine()
{
    const std::pair<const char *, QString> rows[] = {
        {"kernel exception", "first line second line about \"%1\""_s.arg(Path(kOutput))}, // not the work folder's path
        {"out of memory", "not enough memory"_s},
        {"standard exception", "ran into something"_s},
        {"other exception", "failed for an unknown reason"_s},
    };
    WriteFile(Path(kOutput), "old");
    for (const auto &[manner, text] : rows) {
        const Case named(manner);
        WriteFile(Path("notes"_s), {});
        const ProgramResult result = RunProbe(manner, "--overwrite a.jpg"_s);
        QCOMPARE(result.exitCode, 1);
        QVERIFY(result.output.isEmpty());
        QCOMPARE(result.errorLines, QStringList("vitrelux: a.jpg: "_s + text));
        QVERIFY2(Notes().contains("FreeParameters 7"_s), manner);
        QCOMPARE(ReadFile(Path(kOutput)), QByteArray("old"));
        QCOMPARE(Made(), QStringList(kOutput));
    }
}

void HostRunTest::existingOutput()
{
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_TABLES "/existing-outputs.tsv"))) {
        const Case named(row);
        init();
        const int exitCode = row[2].toInt();
        const bool rival = row[1] == "rival"_s;
        if (!rival)
            WriteFile(Path(kOutput), "old");
        const ProgramResult result = RunProbe(qPrintable(row[1]), "a.jpg b.jpg "_s + row[0]);
        QVERIFY2(result.exitCode == exitCode && result.errorLines.size() == exitCode, result.error);
        QCOMPARE(QString::fromUtf8(ReadFile(Path(kOutput))), row[1]);
        QCOMPARE(ReadFile(Path("b_corrected.tiff"_s)), QByteArray("probe"));
        QCOMPARE(Made().size(), 2);
    }
}

/// --overwrite replaces the file that a link points to, keeps its permissions, and refuses protected files.
void HostRunTest::replacedFile()
{
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_TABLES "/replaced-files.tsv"))) {
        const Case named(row);
        init();
        WriteFile(Path(kOutput), "old");
        const QString program = std::exchange(m_run->program, "sh"_s);
        QCOMPARE(m_run->Run({"-c"_s, row[1]}).exitCode, 0);
        m_run->program = program;
        const QFileInfo before(Path(kOutput));
        const bool wasLink = before.isSymLink();
        const QFile::Permissions rights = before.permissions();
        m_run->beforeStart = RespectPermissions;
        const ProgramResult result = RunProbe("", "--overwrite a.jpg"_s);
        const bool replaced = row[2].isEmpty();
        QVERIFY2(result.exitCode == int(!replaced) && result.error.contains(row[2].toUtf8()), result.error);
        const QFileInfo after(Path(kOutput));
        QVERIFY(after.isSymLink() == wasLink && after.permissions() == rights);
        if (after.isFile())
            QVERIFY(ReadFile(Path(kOutput)) == (replaced ? "probe" : "old"));
    }
}

/// If the file system doesn't support a call, the program falls back to another one. If the run fails nevertheless, the
/// message gives the reason.
void HostRunTest::refusedCalls()
{
#ifdef __x86_64__ // elsewhere, the C library makes other calls
    const QStringList names = "renameat2 rename link symlink mkdir openat utimensat fchmod fsync "
                              "EINVAL EPERM ENOSYS EIO EDQUOT EROFS O_EXCL"_s.split(QLatin1Char(' '));
    const std::vector<unsigned> values = {SYS_renameat2, SYS_rename, SYS_link,  SYS_symlink, SYS_mkdir, SYS_openat,
                                          SYS_utimensat, SYS_fchmod, SYS_fsync, EINVAL,      EPERM,     ENOSYS,
                                          EIO,           EDQUOT,     EROFS,     O_EXCL};
    const auto number = [&](const QString &name) { return values.at(std::size_t(names.indexOf(name))); };
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_TABLES "/refused-calls.tsv"))) {
        const Case named(row);
        init();
        if (row[2] == "--overwrite"_s)
            WriteFile(Path(kOutput), "old");
        QVector<Call> refused;
        for (const QString &call : row[3].split(QLatin1Char(';'))) {
            const QStringList words = call.split(QLatin1Char(' '));
            refused.append({number(words[0]), number(words[1]), words.size() > 2 ? number(words[2]) : 0});
        }
        m_run->beforeStart = [&refused] { std::for_each(refused.begin(), refused.end(), Refuse); };
        const ProgramResult result = RunProbe(qPrintable(row[1]), "a.jpg "_s + row[2]);
        QString line = "vitrelux: a.jpg: "_s + row[5];
        line.replace("%1"_s, Path(kOutput)).replace("%2"_s, m_dir->path());
        QCOMPARE(result.errorLines, row[5].isEmpty() ? QStringList() : QStringList(line));
        QCOMPARE(result.exitCode, int(!row[5].isEmpty()));
        QCOMPARE(Made(), row[4].isEmpty() ? QStringList() : QStringList(kOutput));
        QVERIFY(row[4].isEmpty() || ReadFile(Path(kOutput)) == row[4].toUtf8());
        QCOMPARE(Notes().filter("Process a.jpg "_s), Notes().filter("Process "_s)); // even if a copy replaces the link
    }
#endif
}

/// Uses the real plug-in, which makes one process object per thread. One of the pictures fails.
void HostRunTest::parallelRunsGiveTheSameFiles()
{
    QString pictures;
    for (int i = 0; i < 6; ++i) {
        const QString name = "%1.jpg"_s.arg(i);
        WriteJpeg(Path(name), 300 + 50 * i, 260);
        pictures += QLatin1Char(' ') + name;
    }
    WriteFile(Path("3.jpg"_s), "no picture");
    const ProgramResult alone = Run("correct --plain --profile p.lcp -o alone -j 1"_s + pictures);
    const ProgramResult together = Run("correct --plain --profile p.lcp -o together -j 3"_s + pictures);
    QCOMPARE(alone.exitCode, 1);
    QCOMPARE(together.exitCode, 1);
    QCOMPARE(together.output.count('\n'), 5);
    QVERIFY2(together.summary.startsWith("5 corrected, 0 skipped, 1 failed in "_s), together.error);
    const QStringList names = Names(Path("alone"_s));
    QCOMPARE(names.size(), 5);
    QCOMPARE(Names(Path("together"_s)), names); // and no work folder is left
    for (const QString &name : names)
        QVERIFY2(ReadFile(Path("together/"_s + name)) == ReadFile(Path("alone/"_s + name)), qPrintable(name));
}

void HostRunTest::rivalsForOneOutput()
{
    QVERIFY(QDir(m_dir->path()).mkdir("other"_s));
    WriteJpeg(Path("other/a.jpg"_s), 12, 8);
    // The third picture is the first one again, which isn't a failure.
    const ProgramResult result = RunProbe("", "--overwrite -o out a.jpg other/a.jpg other/../a.jpg"_s);
    QCOMPARE(result.exitCode, 1);
    QCOMPARE(result.errorLines.size(), 1);
    QVERIFY(result.errorLines.first().startsWith("vitrelux: other/a.jpg: "_s));
    QVERIFY(result.errorLines.first().contains("a.jpg"_s));
    WriteJpeg(Path("c.tiff"_s), 12, 8);
    const ProgramResult lost = RunProbe("", "--overwrite --output-name {name}.tiff c.tiff"_s);
    QVERIFY2(lost.exitCode == 1 && lost.error.contains(" would replace the picture \"c.tiff\""), lost.error);
    QCOMPARE(Notes().filter("Process"_s).size(), 1);
    const ProgramResult plan = Run("correct -n -j 1 --plain --skip-existing --profile p.lcp -o out a.jpg b.jpg"_s);
    QCOMPARE(plan.errorLines.size(), 2);
    QVERIFY2(plan.errorLines[0].startsWith("vitrelux: a.jpg: note: would be skipped: output \""_s), plan.error);
    const QString would = "vitrelux: b.jpg: note: would correct distortion, lateral color, vignetting"_s;
    QCOMPARE(plan.errorLines[1], would);
    // Shards divide the sorted list.
    const ProgramResult shard = Run("correct -n --plain --profile p.lcp --shard 2/2 b.jpg c.tiff a.jpg"_s);
    QCOMPARE(shard.errorLines, QStringList(would));
}

void HostRunTest::interruptionLeavesNothing()
{
    for (const int number : {SIGINT, SIGTERM, SIGHUP, -SIGHUP}) { // the last one is ignored, as under nohup
        const Case named("signal", number);
        init();
        WriteFile(Path(kOutput), "old");
        m_run->Set("VITRELUX_PROBE", "block"_s);
        m_run->Set("VITRELUX_PROBE_NOTES", Path("notes"_s));
        m_run->beforeStart = [number] { // even if the test's parent process ignores it
            std::signal(qAbs(number), number > 0 ? SIG_DFL : SIG_IGN);
            std::signal(SIGTERM, SIG_DFL);
        };
        m_run->Begin((kProbe + "--overwrite a.jpg"_s).split(QLatin1Char(' ')));
        const auto halfDone = [this] {
            const QStringList work = Names(m_dir->path()).filter(".vitrelux-"_s);
            return work.size() == 1 && QFile::exists(Path(work.first() + "/"_s + kOutput));
        };
        QTRY_VERIFY_WITH_TIMEOUT(halfDone(), 60000);
        const auto process = static_cast<pid_t>(m_run->processId());
        ::kill(process, qAbs(number));
        if (number < 0) {
            QVERIFY(!m_run->waitForFinished(500) && halfDone()); // a reaction would take a few milliseconds
            ::kill(process, SIGTERM);
        }
        const ProgramResult result = m_run->Wait();
        QCOMPARE(result.signal, number < 0 ? SIGTERM : number); // so that a shell loop ends too
        QCOMPARE(result.error, QByteArray());
        QCOMPARE(Made(), QStringList(kOutput));
        QCOMPARE(ReadFile(Path(kOutput)), QByteArray("old"));
    }
}

void HostRunTest::firstInterruptFinishesThePicture()
{
    m_run->beforeStart = [] { std::signal(SIGINT, SIG_DFL); };
    const ProgramResult result = RunProbe("interrupt", "-j 1 a.jpg b.jpg"_s);
    QCOMPARE(result.signal, SIGINT);
    QCOMPARE(result.errorLines.size(), 2);
    QVERIFY2(result.errorLines[1].contains("1 of 2 pictures left"_s), result.error.constData());
    QCOMPARE(Made(), QStringList(kOutput));
}

/// The next start removes a killed run's work folder, but not that of a running one.
void HostRunTest::removesWorkFoldersOfKilledRuns()
{
    const auto folders = [this] { return Names(m_dir->path()).filter(".vitrelux-"_s); };
    // Of folders without a lock, only empty ones with a name of the right length are removed.
    for (const char *name : {".vitrelux-empty6", ".vitrelux-filled/deep", ".vitrelux-longer7"})
        QVERIFY(QDir().mkpath(Path(QLatin1String(name))));
    m_run->Set("VITRELUX_PROBE", "block"_s);
    m_run->Begin((kProbe + "a.jpg"_s).split(QLatin1Char(' ')));
    QTRY_COMPARE_WITH_TIMEOUT(folders().size() + folders().filter("empty"_s).size(), 3, 60000);
    for (const int left : {1, 0}) {
        const Case named("folders left", left);
        ProgramRun next;
        next.setWorkingDirectory(m_dir->path());
        next.Set("VITRELUX_PROBE_NOTES", Path("notes"_s));
        QCOMPARE(next.Run((kProbe + "--overwrite b.jpg"_s).split(QLatin1Char(' '))).exitCode, 0);
        QVERIFY(Notes().filter("Process b.jpg"_s).last().endsWith(" 7 2"_s)); // no lock is left open
        QCOMPARE(folders().size(), left + 2);
        m_run->kill();
        m_run->waitForFinished();
    }
    QCOMPARE(folders(), QStringList({".vitrelux-filled"_s, ".vitrelux-longer7"_s}));
}

void HostRunTest::standardStreams()
{
    m_run->beforeStart = [] {
        for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
            close(stream);
    };
    QCOMPARE(RunProbe("descriptors", "a.jpg"_s).exitCode, 1); // the output's name could not be printed
    QCOMPARE(Notes().first(), "/dev/null/dev/null/dev/null"_s);
    QCOMPARE(ReadFile(Path(kOutput)), QByteArray("probe"));

    // Nothing reads the output: SIGPIPE arrives while another picture is in progress.
    init();
    WriteJpeg(Path("b.jpg"_s), 3000, 2000);
    const QString line =
        "(%1 correct --plain -j 2 --profile p.lcp a.jpg b.jpg; echo $? > code) | true"_s.arg(m_run->program);
    m_run->program = "sh"_s;
    m_run->beforeStart = [] { std::signal(SIGPIPE, SIG_DFL); }; // even if the test's parent process ignores it
    m_run->Run({"-c"_s, line});
    QCOMPARE(Names(m_dir->path()).filter(".vitrelux-"_s), QStringList());
    QCOMPARE(ReadFile(Path("code"_s)).trimmed().toInt(), 128 + SIGPIPE);
}

void HostRunTest::notification()
{
    const QString arguments = Path("arguments"_s), command = Path("notify-send"_s);
    WriteFile(command,
              "#!/bin/sh\nprintf '%s\\n' \"$@\" >" + arguments.toUtf8() + ".new && /bin/mv " + arguments.toUtf8()
                  + ".new " + arguments.toUtf8() + '\n');
    QVERIFY(QFile::setPermissions(command, QFile::ReadOwner | QFile::ExeOwner));
    WriteFile(Path(kOutput), "old");
    m_run->Set("PATH", m_dir->path());
    QCOMPARE(RunProbe("", "--notify --skip-existing a.jpg n<o>.jpg"_s).exitCode, 1);
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(arguments), 60000); // the program doesn't wait for it
    QCOMPARE(ReadFile(arguments),
             QByteArray("--icon=vitrelux\n--app-name=Vitrelux\n--\n"
                        "Vitrelux: 1 skipped, 1 failed\nn&lt;o&gt;.jpg: no such file\n"));
}

void HostRunTest::environment()
{
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_TABLES "/environments.tsv"))) {
        const Case named(row);
        init();
        QVERIFY(QDir(m_dir->path()).mkdir("home"_s));
        QVERIFY(QFile::rename(Path("a.jpg"_s), Path(u8"\u00fcber\u65e5\u672c.jpg"_s)));
        m_run->Set("HOME", Path("home"_s));
        m_run->Set(qPrintable(row[0]), row[1]);
        const ProgramResult result = Run(u8"correct --plain --profile p.lcp \u00fcber\u65e5\u672c.jpg"_s);
        QVERIFY2(result.exitCode == 0 && result.error.isEmpty(), result.error);
        QCOMPARE(QString::fromUtf8(result.output), Path(u8"\u00fcber\u65e5\u672c_corrected.tiff\n"_s));
        QCOMPARE(Names(Path("home"_s)), QStringList()); // choices on a command line don't become defaults
        if (row[2].isEmpty())
            continue;
        const ProgramResult window = Run("wizard b.jpg"_s);
        QCOMPARE(window.exitCode, 1); // not a crash
        QVERIFY2(window.errorLines.last().startsWith("vitrelux: cannot show a window: "_s + row[2]), window.error);
    }
    m_run->Set("QT_QPA_PLATFORM", "offscreen"_s);
    for (const auto &[options, why] : {std::pair("--plugin none.so"_s, "plug-in \"%1/none.so\": "_s),
                                       {"--lens-path none"_s, "there is no profile folder \"%1/none\""_s}}) {
        const ProgramResult refused = Run("wizard a.jpg "_s + options);
        QVERIFY2(refused.exitCode == 1 && refused.errorLines.size() == 1, refused.error);
        QVERIFY2(refused.errorLines[0].startsWith("vitrelux: "_s + why.arg(m_dir->path())), refused.error);
    }
}

void HostRunTest::names()
{
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_TABLES "/odd-names.tsv"))) {
        const Case named(row);
        QVERIFY(QFile::copy(Path("a.jpg"_s), m_dir->path() + "/"_s + row[0]));
        QStringList arguments{"correct"_s, "--plain"_s, "--profile"_s, "p.lcp"_s};
        if (!row[1].isEmpty())
            arguments << "-o"_s << row[1];
        const ProgramResult result = m_run->Run(arguments << "--"_s << row[0]);
        QVERIFY2(result.exitCode == 0, result.error);
        QVERIFY2(QFileInfo::exists(m_dir->path() + "/"_s + row[2]), qPrintable(row[2]));
    }
    const QString tooLong = QString(246, QLatin1Char('x')) + ".jpg"_s; // its output's name is over 255 bytes long
    QVERIFY(QFile::copy(Path("a.jpg"_s), Path(tooLong)));
    QVERIFY(Run("correct --plain --profile p.lcp "_s + tooLong).error.contains("File name too long"));
    QVERIFY(QFile::copy(Path("a.jpg"_s), Path("-dash.jpg"_s)));
    QVERIFY(Run("correct --plain -dash.jpg"_s).error.contains("go after '--'"));
    for (const char *line : {"correct --plain -none.jpg", "correct --plain --none=1 a.jpg"}) // neither is a file
        QVERIFY2(!Run(QString::fromLatin1(line)).error.contains("go after '--'"), line);
    const QString gone = "mkdir gone; cd gone; rmdir ../gone; exec %1 correct --plain --profile %2 -o out %3"_s;
    const QString line = gone.arg(m_run->program, Path("p.lcp"_s), Path("a.jpg"_s));
    m_run->program = "sh"_s;
    const ProgramResult result = m_run->Run({"-c"_s, line});
    QCOMPARE(result.errorLines, QStringList("vitrelux: out: is in the current folder, which no longer exists"_s));
    QVERIFY(result.exitCode == 1 && result.output.isEmpty());
}

void HostRunTest::progressOnTerminal()
{
    QVERIFY(QDir(m_dir->path()).mkdir("\x1b[2J"_s));
    const QString name = QString(41, QLatin1Char('x')), shown = QString(20, QLatin1Char('x'));
    WriteJpeg(Path(name), 60, 40);
    const QString line =
        m_run->program + " correct --plain --overwrite -j %1 --profile p.lcp -o '\x1b[2J' a.jpg none.jpg "_s + name;
    m_run->program = "script"_s; // runs its command in a pseudo-terminal and copies the output
    for (const QString &terminal : {"xterm"_s, "dumb"_s}) {
        const Case named(terminal);
        m_run->Set("TERM", terminal);
        const ProgramResult result = m_run->Run({"-qec"_s, line.arg(1), "/dev/null"_s});
        QCOMPARE(result.exitCode, 1);
        const auto progress = [&](const QString &text) {
            return terminal == "xterm"_s ? "\x1b[?7l["_s + text + "\x1b[?7h\r\x1b[K"_s : QString();
        };
        const QString output = Path(u8"\\x1b[2J/%1_corrected.tiff\r\n"_s);
        QCOMPARE(QString::fromUtf8(result.output).replace(QRegularExpression("\\d+(\\.\\d)?( s\\b| pict)"_s), "N\\2"_s),
                 progress(u8"1/3] a.jpg \u2026 "_s) + output.arg("a"_s)
                     + progress(u8"2/3] none.jpg \u2026 about N s left"_s) + "vitrelux: none.jpg: no such file\r\n"_s
                     + progress("3/3] "_s + shown + u8"\u2026"_s + shown + u8" \u2026 about N s left"_s)
                     + output.arg(name) + "2 corrected, 0 skipped, 1 failed in N s, N pictures per minute\r\n"_s);
    }
    WriteJpeg(Path(name), 3000, 2000); // still in progress when the others end
    m_run->Set("TERM", "xterm"_s);
    const ProgramResult both = m_run->Run({"-qec"_s, line.arg(2), "/dev/null"_s});
    QVERIFY2(!both.output.contains("\033[?7h\033[?7l"), both.output);       // only one progress line at a time
    QCOMPARE(both.output.count("\033[?7h"), both.output.count("\r\033[K")); // and each is erased
}

void HostRunTest::failuresPrintOneLine_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("message");
    const QString plugin = "correct --plain --profile p.lcp a.jpg --plugin "_s, why = "plug-in \"%1\": "_s;
    for (const QString &file :
         {"/none/libKVitrelux.so"_s, "/etc/passwd"_s, QStringLiteral(PLAIN_LIBRARY), QStringLiteral(FOREIGN_PLUGIN)})
        QTest::newRow(qPrintable(file)) << plugin + file << why.arg(file);
    const QString rows[][2] = {{"correct --plain a.jpg"_s, "a.jpg: "_s},
                               {"correct --plain --profile p.lcp no\n\033[2Jsuch.jpg"_s, "no"_s},
                               {"profile p.lcp"_s, "cannot write to standard output"_s}}; // the output is a full device
    for (const auto &[line, message] : rows)
        QTest::newRow(qPrintable(message)) << line << message;
}

void HostRunTest::failuresPrintOneLine()
{
    QFETCH(QString, line);
    QFETCH(QString, message);
    if (line.startsWith("profile"_s))
        m_run->setStandardOutputFile("/dev/full"_s);
    const ProgramResult result = Run(line);
    QCOMPARE(result.exitCode, 1);
    QCOMPARE(result.error.count('\n'), 1);
    QVERIFY2(result.errorLines.first().startsWith("vitrelux: "_s + message), result.error);
    QVERIFY(!result.error.contains('\033'));
}

QTEST_GUILESS_MAIN(HostRunTest)
#include "HostRun_test.moc"
