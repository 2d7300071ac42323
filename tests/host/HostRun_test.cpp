// The program as a host: order of calls on a plug-in that notes them and misbehaves, outputs, interruptions, and
// wherever it may be called: without display, home folder or locale, on a terminal, with odd file names.
#include "ProgramTest.h"

#include <QDir>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace {

const QString kProbe = "correct --profile p.lcp --plugin "_s + QStringLiteral(PROBE_PLUGIN " ");
const QString kOutput = "a_corrected.tiff"_s;

/// A terminal of our own, for the program to write to.
class Terminal {
public:
    Terminal() : m_master(posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK))
    {
        grantpt(m_master);
        unlockpt(m_master);
        m_keepOpen = open(ptsname(m_master), O_RDWR | O_NOCTTY); // what was written stays readable after the end
    }
    ~Terminal()
    {
        close(m_keepOpen);
        close(m_master);
    }
    QString Name() const { return QString::fromUtf8(ptsname(m_master)); }
    QByteArray ReadAll() const
    {
        char all[4096];
        return QByteArray(all, qMax(0, static_cast<int>(read(m_master, all, sizeof all))));
    }

private:
    int m_master;
    int m_keepOpen;
};

} // namespace

class HostRunTest : public ProgramTest {
    Q_OBJECT
private Q_SLOTS:
    void callsInOrder();
    void recordHolds_data();
    void recordHolds();
    void failsWithOneLine_data();
    void failsWithOneLine();
    void existingOutput_data();
    void existingOutput();
    void picturesAtOnceAreThoseOneByOne();
    void rivalsForOneOutput();
    void interruptionLeavesNothing_data();
    void interruptionLeavesNothing();
    void environment_data();
    void environment();
    void names_data();
    void names();
    void progressOnTerminal_data();
    void progressOnTerminal();
    void oneLine_data();
    void oneLine();

private:
    ProgramResult RunProbe(const char *manner, const QString &line)
    {
        m_run->Set("VITRELUX_PROBE", QString::fromLatin1(manner));
        m_run->Set("VITRELUX_PROBE_NOTES", Path("notes"_s));
        m_run->Set("VITRELUX_PROBE_RIVAL", Path(kOutput));
        return Run(kProbe + line);
    }
    QStringList Notes() const { return QString::fromUtf8(ReadBytes(Path("notes"_s))).split(QLatin1Char('\n')); }
    /// Names in the folder without those that were there at first, and without the notes.
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
    const QString record = "AllocParameters 1 1 1 "_s + Path("p.lcp"_s), process = "Process %1 %2 7"_s;
    QCOMPARE(Notes(),
             QStringList({"Library with kernels"_s, "Plugins 1"_s, record, process.arg("a.jpg"_s, Path("a.jpg"_s)),
                          "FreeParameters 7"_s, record, process.arg("b.jpg"_s, Path("b.jpg"_s)), "FreeParameters 7"_s,
                          "~Library"_s, QString()}));
    QCOMPARE(ReadBytes(Path(kOutput)), QByteArray("probe"));
    QCOMPARE(QString::fromUtf8(result.output), Path("a_corrected.tiff\n"_s) + Path("b_corrected.tiff\n"_s));
    QCOMPARE(Made(), QStringList({kOutput, "b_corrected.tiff"_s}));
}

void HostRunTest::recordHolds_data()
{
    QTest::addColumn<QString>("switches");
    QTest::addColumn<QString>("models"); // in the profile: d, c, v
    QTest::addColumn<QString>("flags");  // Disto CA Falloff; empty: the picture fails
    QTest::addColumn<QByteArray>("cut"); // a piece of the profile, and what is put in its place
    QTest::addColumn<QByteArray>("patch");
    const struct {
        const char *name, *switches, *models, *flags, *cut, *patch;
    } rows[] = {
        {"everything there is", "", "dcv", "1 1 1", "", ""},
        {"all but colour", "", "dv", "1 0 1", "", ""},
        {"distortion is there", "", "d", "1 0 0", "", ""},
        {"no distortion", "", "v", "0 0 1", "", ""},
        {"nothing", "", "", "", "", ""},
        {"distortion of all", "--distortion", "dcv", "1 0 0", "", ""},
        {"two of all", "--ca --vignetting", "dcv", "0 1 1", "", ""},
        {"colour is lacking", "--ca", "dv", "", "", ""},
        {"one of two is lacking", "--distortion --vignetting", "dc", "", "", ""},
        {"no focal length at all", "", "dcv", "", "FocalLengthX", "Other"},
        {"red is missing", "", "dcv", "1 0 1", "ChromaticRedGreenModel", "Other"},
        {"green is missing", "", "dcv", "1 0 1", "ChromaticGreenModel", "Other"},
        {"value that is no number", "", "dcv", "1 0 1", "0.001</stCamera:R", "nan</stCamera:R"},
        {"fisheye without coefficients", "", "v", "0 0 1", "Perspective", "Fisheye"},
    };
    for (const auto &row : rows)
        QTest::newRow(row.name) << QString::fromLatin1(row.switches) << QString::fromLatin1(row.models)
                                << QString::fromLatin1(row.flags) << QByteArray(row.cut) << QByteArray(row.patch);
}

void HostRunTest::recordHolds()
{
    QFETCH(QString, models);
    QFETCH(QString, flags);
    QFETCH(QByteArray, cut);
    const auto has = [&](char model) { return models.contains(QLatin1Char(model)); };
    QByteArray profile = ProfileText({has('d'), has('c'), has('v')}, 60, 40);
    QVERIFY(profile.contains(cut));
    if (!cut.isEmpty())
        profile.replace(cut, *static_cast<QByteArray *>(QTest::qData("patch", QMetaType::QByteArray)));
    WriteBytes(Path("p.lcp"_s), profile);
    QFETCH(QString, switches);
    const ProgramResult result = RunProbe("", switches + " a.jpg"_s);
    QCOMPARE(result.exitCode, flags.isEmpty() ? 1 : 0);
    QCOMPARE(Notes().contains("AllocParameters %1 %2"_s.arg(flags, Path("p.lcp"_s))), !flags.isEmpty());
    QVERIFY2(!flags.isEmpty() || result.errorLines.size() == 1, result.error);
}

void HostRunTest::failsWithOneLine_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("kernel exception") << "first line second line about \"%1\""_s;
    QTest::newRow("out of memory") << "not enough memory"_s;
    QTest::newRow("standard exception") << "ran into something"_s;
    QTest::newRow("other exception") << "failed without telling a reason"_s;
}

void HostRunTest::failsWithOneLine()
{
    QFETCH(QString, text);
    WriteBytes(Path(kOutput), "old");
    const ProgramResult result = RunProbe(QTest::currentDataTag(), "--overwrite a.jpg"_s);
    QCOMPARE(result.exitCode, 1);
    QVERIFY(result.output.isEmpty());
    text.replace("%1"_s, Path(kOutput)); // not the private folder's name
    QCOMPARE(result.errorLines, QStringList("vitrelux: a.jpg: "_s + text));
    QVERIFY(Notes().contains("FreeParameters 7"_s));
    QCOMPARE(ReadBytes(Path(kOutput)), QByteArray("old"));
    QCOMPARE(Made(), QStringList(kOutput));
}

void HostRunTest::existingOutput_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("exitCode");
    QTest::newRow("") << QByteArray("old") << 1;
    QTest::newRow("--skip-existing") << QByteArray("old") << 0;
    QTest::newRow("--overwrite") << QByteArray("probe") << 0;
    QTest::newRow("rival") << QByteArray("rival") << 1; // made while the picture is corrected
}

void HostRunTest::existingOutput()
{
    QFETCH(QByteArray, content);
    QFETCH(int, exitCode);
    const bool rival = content == "rival";
    if (!rival)
        WriteBytes(Path(kOutput), "old");
    const ProgramResult result =
        RunProbe(content, "a.jpg b.jpg "_s + QLatin1String(rival ? "" : QTest::currentDataTag()));
    QCOMPARE(result.exitCode, exitCode);
    QCOMPARE(result.errorLines.size(), exitCode);
    QCOMPARE(ReadBytes(Path(kOutput)), content);
    QCOMPARE(ReadBytes(Path("b_corrected.tiff"_s)), QByteArray("probe"));
    QCOMPARE(Made().size(), 2);
}

/// With the real plug-in, which makes a process for each thread; one picture in between fails.
void HostRunTest::picturesAtOnceAreThoseOneByOne()
{
    QString pictures;
    for (int i = 0; i < 6; ++i) {
        const QString name = "%1.jpg"_s.arg(i);
        i == 3 ? WriteBytes(Path(name), "no picture") : WriteJpeg(Path(name), 300 + 50 * i, 260);
        pictures += QLatin1Char(' ') + name;
    }
    const ProgramResult alone = Run("correct --profile p.lcp -o alone -j 1"_s + pictures);
    const ProgramResult together = Run("correct --profile p.lcp -o together -j 3"_s + pictures);
    QCOMPARE(alone.exitCode, 1);
    QCOMPARE(together.exitCode, 1);
    QCOMPARE(together.output.count('\n'), 5);
    const QStringList names = Names(Path("alone"_s));
    QCOMPARE(names.size(), 5);
    QCOMPARE(Names(Path("together"_s)), names); // and no private folder left
    for (const QString &name : names)
        QCOMPARE(ReadBytes(Path("together/"_s + name)), ReadBytes(Path("alone/"_s + name)));
}

void HostRunTest::rivalsForOneOutput()
{
    QVERIFY(QDir(m_dir->path()).mkdir("other"_s));
    WriteJpeg(Path("other/a.jpg"_s), 12, 8);
    // The third is the first once more: done already, no failure.
    const ProgramResult result = RunProbe("", "--overwrite -o out a.jpg other/a.jpg other/../a.jpg"_s);
    QCOMPARE(result.exitCode, 1);
    QCOMPARE(result.errorLines.size(), 1);
    QVERIFY(result.errorLines.first().startsWith("vitrelux: other/a.jpg: "_s));
    QVERIFY(result.errorLines.first().contains("a.jpg"_s));
    QCOMPARE(Notes().filter("Process"_s).size(), 1);
}

void HostRunTest::interruptionLeavesNothing_data()
{
    QTest::addColumn<QVector<int>>("sent"); // the last one ends it
    QTest::newRow("SIGINT") << QVector<int>{SIGINT};
    QTest::newRow("SIGTERM") << QVector<int>{SIGTERM};
    QTest::newRow("SIGHUP") << QVector<int>{SIGHUP};
    QTest::newRow("SIGHUP ignored, as by nohup") << QVector<int>{SIGHUP, SIGTERM};
}

void HostRunTest::interruptionLeavesNothing()
{
    QFETCH(QVector<int>, sent);
    WriteBytes(Path(kOutput), "old");
    m_run->Set("VITRELUX_PROBE", "block"_s);
    m_run->beforeStart = [sent] { // whatever the test's own parent ignores
        for (int number : sent)
            std::signal(number, number == sent.last() ? SIG_DFL : SIG_IGN);
    };
    m_run->Begin((kProbe + "--overwrite a.jpg"_s).split(QLatin1Char(' ')));
    const auto halfDone = [this] {
        const QStringList work = Names(m_dir->path()).filter(".vitrelux-"_s);
        return work.size() == 1 && QFile::exists(Path(work.first() + "/"_s + kOutput));
    };
    QTRY_VERIFY_WITH_TIMEOUT(halfDone(), 60000);
    for (int number : sent)
        ::kill(static_cast<pid_t>(m_run->processId()), number);
    QCOMPARE(m_run->Wait().signal, sent.last()); // so that a shell's loop ends as well
    QCOMPARE(Made(), QStringList(kOutput));
    QCOMPARE(ReadBytes(Path(kOutput)), QByteArray("old"));
}

void HostRunTest::environment_data()
{
    QTest::addColumn<QString>("value");  // of a variable, on top of an environment with next to nothing
    QTest::addColumn<QString>("wizard"); // the variable needs the desktop wizard to matter; why it can't be shown
    const QString unreachable = "the display cannot be reached"_s;
    QTest::newRow("HOME") << "/none"_s
                          << "there is no display"_s;
    QTest::newRow("DISPLAY") << "none:17"_s << unreachable;
    QTest::newRow("QT_QPA_PLATFORM") << "no-such-platform"_s << unreachable;
    QTest::newRow("QT_QPA_PLATFORMTHEME") << "gtk3"_s << QString();
    QTest::newRow("QT_STYLE_OVERRIDE") << "no-such-style"_s << QString();
    QTest::newRow("QT_IM_MODULE") << "ibus"_s << QString();
    QTest::newRow("LC_ALL") << "xx_YY.ISO-8859-1"_s << QString();
}

void HostRunTest::environment()
{
    QFETCH(QString, value);
    QFETCH(QString, wizard);
    QVERIFY(QDir(m_dir->path()).mkdir("home"_s));
    QVERIFY(QFile::rename(Path("a.jpg"_s), Path(u8"\u00fcber\u65e5\u672c.jpg"_s)));
    m_run->Set("HOME", Path("home"_s));
    m_run->Set(QTest::currentDataTag(), value);
    const ProgramResult result = Run(u8"correct --profile p.lcp \u00fcber\u65e5\u672c.jpg"_s);
    QCOMPARE(result.error, QByteArray());
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(QString::fromUtf8(result.output), Path(u8"\u00fcber\u65e5\u672c_corrected.tiff\n"_s));
    QCOMPARE(Names(Path("home"_s)), QStringList()); // choices on a command line are nobody's new defaults
    if (wizard.isEmpty())
        return;
    const ProgramResult window = Run("wizard b.jpg"_s);
    QCOMPARE(window.exitCode, 1); // not a crash
    QVERIFY2(window.errorLines.last().startsWith("vitrelux: cannot show a window: "_s + wizard), window.error);
}

void HostRunTest::names_data()
{
    QTest::addColumn<QString>("folder"); // option
    QTest::addColumn<QString>("output");
    QTest::newRow("-o.jpg") << QString() << "-o_corrected.tiff"_s;
    QTest::newRow("a.b.c.jpg") << QString() << "a.b.c_corrected.tiff"_s;
    QTest::newRow("no suffix") << QString() << "no suffix_corrected.tiff"_s;
    QTest::newRow("%1 \"'$(x).jpg") << "new/deep"_s
                                    << "new/deep/%1 \"'$(x)_corrected.tiff"_s;
    QTest::newRow("a\nb.jpg") << "./x/../new"_s
                              << "new/a\nb_corrected.tiff"_s;
}

void HostRunTest::names()
{
    QFETCH(QString, folder);
    QFETCH(QString, output);
    const QString picture = QString::fromLatin1(QTest::currentDataTag());
    QVERIFY(QFile::rename(Path("a.jpg"_s), Path(picture)));
    QStringList arguments{"correct"_s, "--profile"_s, "p.lcp"_s};
    if (!folder.isEmpty())
        arguments << "-o"_s << folder;
    const ProgramResult result = m_run->Run(arguments << "--"_s << picture);
    QVERIFY2(result.exitCode == 0, result.error);
    QVERIFY(QFile::exists(Path(output)));
}

void HostRunTest::progressOnTerminal_data()
{
    QTest::addColumn<bool>("shown");
    QTest::newRow("xterm") << true;
    QTest::newRow("dumb") << false;
}

void HostRunTest::progressOnTerminal()
{
    QFETCH(bool, shown);
    const Terminal terminal;
    m_run->Set("TERM", QString::fromLatin1(QTest::currentDataTag()));
    m_run->setStandardErrorFile(terminal.Name());
    QCOMPARE(Run("correct -j 1 --profile p.lcp a.jpg none.jpg"_s).exitCode, 1);
    const QByteArray seen = terminal.ReadAll();
    QVERIFY2(seen.contains("none.jpg: no such file"), seen);
    for (const char *progress : {"[1/2] a.jpg", "[2/2] none.jpg", "\r\033[K", "1 corrected, 0 skipped, 1 failed"})
        QVERIFY2(seen.contains(progress) == shown, seen);
}

void HostRunTest::oneLine_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("said");
    const QString plugin = "correct --profile p.lcp a.jpg --plugin "_s, why = "plug-in \"%1\": "_s;
    for (const QString &file :
         {"/none/libKVitrelux.so"_s, "/etc/passwd"_s, QStringLiteral(PLAIN_LIBRARY), QStringLiteral(FOREIGN_PLUGIN)})
        QTest::newRow(qPrintable(file)) << plugin + file << why.arg(file);
    QTest::newRow("no profile") << "correct a.jpg"_s
                                << "a.jpg: "_s;
    QTest::newRow("file name with controls") << "correct --profile p.lcp no\n\033[2Jsuch.jpg"_s
                                             << "no"_s;
    QTest::newRow("full output") << "profile p.lcp"_s
                                 << "cannot write to standard output"_s;
}

void HostRunTest::oneLine()
{
    QFETCH(QString, line);
    QFETCH(QString, said);
    if (line.startsWith("profile"_s))
        m_run->setStandardOutputFile("/dev/full"_s);
    const ProgramResult result = Run(line);
    QCOMPARE(result.exitCode, 1);
    QCOMPARE(result.error.count('\n'), 1);
    QVERIFY2(result.errorLines.first().startsWith("vitrelux: "_s + said), result.error);
    QVERIFY(!result.error.contains('\033'));
}

QTEST_GUILESS_MAIN(HostRunTest)
#include "HostRun_test.moc"
