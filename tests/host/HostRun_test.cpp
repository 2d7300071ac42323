// The program and a plug-in that notes how it is called and misbehaves: order of calls, outputs, interruptions.
#include "ProgramRun.h"
#include "TestFiles.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <csignal>

class HostRunTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void callsInOrder();
    void recordHolds_data();
    void recordHolds();
    void failsWithOneLine_data();
    void failsWithOneLine();
    void outputFolderIsMade();
    void existingOutput_data();
    void existingOutput();
    void picturesAtOnceAreThoseOneByOne();
    void outputThatAppearsMeanwhileStays();
    void rivalsForOneOutput();
    void interruptionLeavesNothing_data();
    void interruptionLeavesNothing();
    void ignoredSignalStaysIgnored();
    void pluginThatIsNone_data();
    void pluginThatIsNone();

private:
    QString Path(const char *name) const { return m_dir->filePath(QString::fromUtf8(name)); }
    QStringList Arguments(const QStringList &more) const;
    ProgramResult RunProbe(const char *manner, const QStringList &arguments);
    QStringList Notes() const;

    QScopedPointer<QTemporaryDir> m_dir;
};

void HostRunTest::init()
{
    m_dir.reset(new QTemporaryDir);
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("in")));
    WriteJpeg(Path("in/a.jpg"), 12, 8);
    WriteBytes(Path("p.lcp"), ProfileText({true, true, true}, 12, 8));
}

QStringList HostRunTest::Arguments(const QStringList &more) const
{
    return QStringList{QStringLiteral("correct"), QStringLiteral("--plugin"), QStringLiteral(PROBE_PLUGIN),
                       QStringLiteral("--profile"), Path("p.lcp")}
    + more;
}

ProgramResult HostRunTest::RunProbe(const char *manner, const QStringList &arguments)
{
    ProgramRun run;
    run.Set("VITRELUX_PROBE", QString::fromLatin1(manner));
    run.Set("VITRELUX_PROBE_NOTES", Path("notes"));
    run.Set("VITRELUX_PROBE_RIVAL", Path("in/a_corrected.tiff"));
    return run.Run(Arguments(arguments));
}

QStringList HostRunTest::Notes() const
{
    return QString::fromUtf8(ReadBytes(Path("notes"))).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

void HostRunTest::callsInOrder()
{
    WriteJpeg(Path("in/b.jpg"), 8, 12);
    const ProgramResult result = RunProbe("", {Path("in/a.jpg"), Path("in/b.jpg")});
    QCOMPARE(result.exitCode, 0);
    const QString record = QStringLiteral("AllocParameters 1 1 1 ") + Path("p.lcp");
    QCOMPARE(
        Notes(),
        (QStringList{QStringLiteral("Library with kernels"), QStringLiteral("Plugins 1"), record,
                     QStringLiteral("Process a.jpg %1 7").arg(Path("in/a.jpg")), QStringLiteral("FreeParameters 7"),
                     record, QStringLiteral("Process b.jpg %1 7").arg(Path("in/b.jpg")),
                     QStringLiteral("FreeParameters 7"), QStringLiteral("~Library")}));
    QCOMPARE(ReadBytes(Path("in/a_corrected.tiff")), QByteArray("probe"));
    QCOMPARE(
        result.output,
        (Path("in/a_corrected.tiff") + QLatin1Char('\n') + Path("in/b_corrected.tiff") + QLatin1Char('\n')).toUtf8());
    QCOMPARE(Names(Path("in")),
             (QStringList{QStringLiteral("a.jpg"), QStringLiteral("a_corrected.tiff"), QStringLiteral("b.jpg"),
                          QStringLiteral("b_corrected.tiff")}));
}

void HostRunTest::recordHolds_data()
{
    QTest::addColumn<QStringList>("switches");
    QTest::addColumn<QString>("models"); // in the profile: d, c, v
    QTest::addColumn<QString>("flags");  // Disto CA Falloff; empty: the picture fails
    const struct {
        const char *name, *switches, *models, *flags;
    } rows[] = {
        {"everything there is", "", "dcv", "1 1 1"},
        {"all but colour", "", "dv", "1 0 1"},
        {"distortion is there", "", "d", "1 0 0"},
        {"distortion of all", "--distortion", "dcv", "1 0 0"},
        {"colour of all", "--ca", "dcv", "0 1 0"},
        {"vignetting of all", "--vignetting", "dcv", "0 0 1"},
        {"two of all", "--ca --vignetting", "dcv", "0 1 1"},
        {"colour is lacking", "--ca", "dv", ""},
        {"one of two is lacking", "--distortion --vignetting", "dc", ""},
    };
    for (const auto &row : rows)
        QTest::newRow(row.name) << QString::fromLatin1(row.switches).split(QLatin1Char(' '), Qt::SkipEmptyParts)
                                << QString::fromLatin1(row.models) << QString::fromLatin1(row.flags);
}

void HostRunTest::recordHolds()
{
    QFETCH(QStringList, switches);
    QFETCH(QString, models);
    QFETCH(QString, flags);
    const auto has = [&](char model) { return models.contains(QLatin1Char(model)); };
    WriteBytes(Path("p.lcp"), ProfileText({has('d'), has('c'), has('v')}, 12, 8));
    const ProgramResult result = RunProbe("", switches + QStringList(Path("in/a.jpg")));
    QCOMPARE(result.exitCode, flags.isEmpty() ? 1 : 0);
    QCOMPARE(result.errorLines.size(), flags.isEmpty() ? 1 : 0);
    if (!flags.isEmpty())
        QVERIFY(Notes().contains(QStringLiteral("AllocParameters %1 %2").arg(flags, Path("p.lcp"))));
}

void HostRunTest::failsWithOneLine_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("kernel exception") << QStringLiteral("first line second line about \"%1\"");
    QTest::newRow("out of memory") << QStringLiteral("not enough memory");
    QTest::newRow("standard exception") << QStringLiteral("ran into something");
    QTest::newRow("other exception") << QStringLiteral("failed without telling a reason");
}

void HostRunTest::failsWithOneLine()
{
    QFETCH(QString, text);
    const QByteArray old = "an older result";
    WriteBytes(Path("in/a_corrected.tiff"), old);
    const ProgramResult result = RunProbe(QTest::currentDataTag(), {QStringLiteral("--overwrite"), Path("in/a.jpg")});
    QCOMPARE(result.exitCode, 1);
    QVERIFY(result.output.isEmpty());
    text.replace(QLatin1String("%1"), Path("in/a_corrected.tiff")); // not the private folder's name
    QCOMPARE(result.errorLines, QStringList(QStringLiteral("vitrelux: %1: %2").arg(Path("in/a.jpg"), text)));
    QVERIFY(Notes().contains(QLatin1String("FreeParameters 7")));
    QCOMPARE(ReadBytes(Path("in/a_corrected.tiff")), old);
    QCOMPARE(Names(Path("in")), (QStringList{QStringLiteral("a.jpg"), QStringLiteral("a_corrected.tiff")}));
}

void HostRunTest::outputFolderIsMade()
{
    const ProgramResult result = RunProbe("", {QStringLiteral("-o"), Path("new/deep"), Path("in/a.jpg")});
    QCOMPARE(result.exitCode, 0);
    QCOMPARE(Names(Path("new/deep")), QStringList(QStringLiteral("a_corrected.tiff")));
    QCOMPARE(Names(Path("in")), QStringList(QStringLiteral("a.jpg")));
}

void HostRunTest::existingOutput_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<int>("errorLines");
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("refused") << QStringList() << 1 << 1 << QByteArray("old");
    QTest::newRow("skipped") << QStringList(QStringLiteral("--skip-existing")) << 0 << 0 << QByteArray("old");
    QTest::newRow("overwritten") << QStringList(QStringLiteral("--overwrite")) << 0 << 0 << QByteArray("probe");
}

void HostRunTest::existingOutput()
{
    QFETCH(QStringList, options);
    QFETCH(int, exitCode);
    QFETCH(int, errorLines);
    QFETCH(QByteArray, content);
    WriteBytes(Path("in/a_corrected.tiff"), "old");
    WriteJpeg(Path("in/b.jpg"), 12, 8);
    const ProgramResult result = RunProbe("", options + QStringList{Path("in/a.jpg"), Path("in/b.jpg")});
    QCOMPARE(result.exitCode, exitCode);
    QCOMPARE(result.errorLines.size(), errorLines);
    QCOMPARE(ReadBytes(Path("in/a_corrected.tiff")), content);
    QCOMPARE(ReadBytes(Path("in/b_corrected.tiff")), QByteArray("probe"));
}

/// With the real plug-in, which makes a process for each thread; one picture in between fails.
void HostRunTest::picturesAtOnceAreThoseOneByOne()
{
    QStringList pictures;
    for (int i = 0; i < 6; ++i) {
        pictures << Path("in/%1.jpg").arg(i);
        i == 3 ? WriteBytes(pictures.last(), "no picture") : WriteJpeg(pictures.last(), 300 + 50 * i, 260);
    }
    const QStringList options = {QStringLiteral("correct"), QStringLiteral("--profile"), Path("p.lcp")};
    const auto run = [&](const char *folder, const char *jobs) {
        return ProgramRun().Run(
            options + QStringList{QStringLiteral("-o"), Path(folder), QLatin1String("-j"), QString::fromLatin1(jobs)}
            + pictures);
    };
    const ProgramResult alone = run("alone", "1"), together = run("together", "3");
    QCOMPARE(alone.exitCode, 1);
    QCOMPARE(together.exitCode, 1);
    QCOMPARE(together.output.count('\n'), 5);
    const QStringList names = Names(Path("alone"));
    QCOMPARE(names.size(), 5);
    QCOMPARE(Names(Path("together")), names); // and no private folder left
    for (const QString &name : names)
        QCOMPARE(ReadBytes(Path("together/") + name), ReadBytes(Path("alone/") + name));
}

void HostRunTest::outputThatAppearsMeanwhileStays()
{
    const ProgramResult result = RunProbe("rival", {Path("in/a.jpg")});
    QCOMPARE(result.exitCode, 1);
    QCOMPARE(result.errorLines.size(), 1);
    QCOMPARE(ReadBytes(Path("in/a_corrected.tiff")), QByteArray("rival"));
    QCOMPARE(Names(Path("in")), (QStringList{QStringLiteral("a.jpg"), QStringLiteral("a_corrected.tiff")}));
}

void HostRunTest::rivalsForOneOutput()
{
    QVERIFY(QDir(m_dir->path()).mkdir(QStringLiteral("other")));
    WriteJpeg(Path("other/a.jpg"), 12, 8);
    // The third is the first once more: done already, no failure.
    const ProgramResult result = RunProbe("",
                                          {QStringLiteral("--overwrite"), QStringLiteral("-o"), Path("out"),
                                           Path("in/a.jpg"), Path("other/a.jpg"), Path("in/../in/a.jpg")});
    QCOMPARE(result.exitCode, 1);
    QCOMPARE(result.errorLines.size(), 1);
    QVERIFY(result.errorLines.first().startsWith(QStringLiteral("vitrelux: %1: ").arg(Path("other/a.jpg"))));
    QVERIFY(result.errorLines.first().contains(Path("in/a.jpg")));
    QCOMPARE(Notes().filter(QStringLiteral("Process")).size(), 1);
}

void HostRunTest::interruptionLeavesNothing_data()
{
    QTest::addColumn<int>("number");
    QTest::newRow("SIGINT") << SIGINT;
    QTest::newRow("SIGTERM") << SIGTERM;
    QTest::newRow("SIGHUP") << SIGHUP;
}

void HostRunTest::interruptionLeavesNothing()
{
    QFETCH(int, number);
    WriteBytes(Path("in/a_corrected.tiff"), "old");
    ProgramRun run;
    run.Set("VITRELUX_PROBE", QStringLiteral("block"));
    run.beforeStart = [number] { std::signal(number, SIG_DFL); }; // whatever the test's own parent ignores
    run.Begin(Arguments({QStringLiteral("--overwrite"), Path("in/a.jpg")}));
    const QDir in(Path("in"));
    const auto halfDone = [&in] {
        for (const QString &name : in.entryList({QStringLiteral(".vitrelux-*")}, QDir::AllEntries | QDir::Hidden)) {
            if (in.exists(name + QLatin1String("/a_corrected.tiff")))
                return true;
        }
        return false;
    };
    QTRY_VERIFY_WITH_TIMEOUT(halfDone(), 60000);
    ::kill(static_cast<pid_t>(run.processId()), number);
    const ProgramResult result = run.Wait();
    QCOMPARE(result.signal, number); // so that a shell's loop ends as well
    QCOMPARE(Names(Path("in")), (QStringList{QStringLiteral("a.jpg"), QStringLiteral("a_corrected.tiff")}));
    QCOMPARE(ReadBytes(Path("in/a_corrected.tiff")), QByteArray("old"));
}

void HostRunTest::ignoredSignalStaysIgnored()
{
    ProgramRun run;
    run.Set("VITRELUX_PROBE", QStringLiteral("block"));
    run.Set("VITRELUX_PROBE_NOTES", Path("notes"));
    run.beforeStart = [] {
        std::signal(SIGHUP, SIG_IGN); // as nohup does
        std::signal(SIGTERM, SIG_DFL);
    };
    run.Begin(Arguments({Path("in/a.jpg")}));
    QTRY_VERIFY_WITH_TIMEOUT(Notes().filter(QStringLiteral("Process")).size() == 1, 60000);
    ::kill(static_cast<pid_t>(run.processId()), SIGHUP);
    ::kill(static_cast<pid_t>(run.processId()), SIGTERM);
    QCOMPARE(run.Wait().signal, int(SIGTERM));
}

void HostRunTest::pluginThatIsNone_data()
{
    QTest::addColumn<QString>("plugin");
    QTest::newRow("missing") << QStringLiteral("/none/libKVitrelux.so");
    QTest::newRow("no library") << QStringLiteral("/etc/passwd");
    QTest::newRow("a library without plug-in") << QStringLiteral(PLAIN_LIBRARY);
    QTest::newRow("another plug-in") << QStringLiteral(FOREIGN_PLUGIN);
}

void HostRunTest::pluginThatIsNone()
{
    QFETCH(QString, plugin);
    ProgramRun run;
    const ProgramResult result = run.Run({QStringLiteral("correct"), QStringLiteral("--plugin"), plugin,
                                          QStringLiteral("--profile"), Path("p.lcp"), Path("in/a.jpg")});
    QCOMPARE(result.exitCode, 1);
    QCOMPARE(result.errorLines.size(), 1);
    QVERIFY2(result.errorLines.first().startsWith(QStringLiteral("vitrelux: plug-in \"%1\": ").arg(plugin)),
             result.error.constData());
}

QTEST_GUILESS_MAIN(HostRunTest)
#include "HostRun_test.moc"
