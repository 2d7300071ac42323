// The program wherever it may be called: without display, home folder or locale, on a terminal, with odd file names.
#include "ProgramRun.h"
#include "TestFiles.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

namespace {

QString Text(const char *text)
{
    return QString::fromUtf8(text);
}

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
    QString Name() const { return Text(ptsname(m_master)); }
    QByteArray ReadAll() const
    {
        QByteArray all;
        char part[4096];
        for (ssize_t count; (count = read(m_master, part, sizeof part)) > 0;)
            all.append(part, static_cast<int>(count));
        return all;
    }

private:
    int m_master;
    int m_keepOpen;
};

} // namespace

class SurroundingsTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void environment_data();
    void environment();
    void storesNothing();
    void relativeNames();
    void oddNames_data();
    void oddNames();
    void messageIsOneLine();
    void progressOnTerminal_data();
    void progressOnTerminal();
    void fullStandardOutput();
    void usageError();
    void helpNeedsNothing();
    void wizardNeedsDisplay_data();
    void wizardNeedsDisplay();

private:
    QString Path(const char *name) const { return m_dir->filePath(QString::fromUtf8(name)); }
    QStringList Correct(const QStringList &more) const
    {
        return QStringList{Text("correct"), Text("--profile"), Path("p.lcp")} + more;
    }

    QScopedPointer<QTemporaryDir> m_dir;
};

void SurroundingsTest::init()
{
    m_dir.reset(new QTemporaryDir);
    WriteJpeg(Path("a.jpg"), 60, 40);
    WriteBytes(Path("p.lcp"), ProfileText({true, true, true}, 60, 40));
}

void SurroundingsTest::environment_data()
{
    QTest::addColumn<QString>("variable"); // on top of an environment with next to nothing
    QTest::addColumn<QString>("value");
    QTest::newRow("nothing set") << QString() << QString();
    QTest::newRow("no home") << Text("HOME") << Text("/none");
    QTest::newRow("home is a file") << Text("HOME") << Text("/etc/passwd");
    QTest::newRow("a display that can't be reached") << Text("DISPLAY") << Text("none:17");
    QTest::newRow("a platform that needs one") << Text("QT_QPA_PLATFORM") << Text("xcb");
    QTest::newRow("desktop theme") << Text("QT_QPA_PLATFORMTHEME") << Text("gtk3");
    QTest::newRow("unknown style") << Text("QT_STYLE_OVERRIDE") << Text("no-such-style");
    QTest::newRow("input method") << Text("QT_IM_MODULE") << Text("ibus");
    QTest::newRow("C locale") << Text("LC_ALL") << Text("C");
    QTest::newRow("unknown locale") << Text("LC_ALL") << Text("xx_YY.ISO-8859-1");
}

void SurroundingsTest::environment()
{
    QFETCH(QString, variable);
    QFETCH(QString, value);
    const QString picture = Path("\u00fcber \u65e5\u672c.jpg");
    QVERIFY(QFile::rename(Path("a.jpg"), picture));
    ProgramRun run;
    if (!variable.isEmpty())
        run.Set(variable.toLatin1().constData(), value);
    const ProgramResult result = run.Run(Correct({picture}));
    QVERIFY2(result.exitCode == 0, result.error.constData());
    QCOMPARE(result.error, QByteArray());
    QCOMPARE(result.output, Path("\u00fcber \u65e5\u672c_corrected.tiff").toUtf8() + '\n');
}

void SurroundingsTest::storesNothing()
{
    QVERIFY(QDir(m_dir->path()).mkdir(Text("home")));
    ProgramRun run;
    run.Set("HOME", Path("home"));
    QCOMPARE(run.Run(Correct({Path("a.jpg")})).exitCode, 0);
    QCOMPARE(Names(Path("home")), QStringList()); // choices on a command line are nobody's new defaults
}

void SurroundingsTest::relativeNames()
{
    QVERIFY(QDir(m_dir->path()).mkdir(Text("sub")));
    ProgramRun run;
    run.setWorkingDirectory(Path("sub"));
    const ProgramResult result =
        run.Run({Text("correct"), Text("--profile"), Text("../p.lcp"), Text("-o"), Text("out"), Text("../a.jpg")});
    QVERIFY2(result.exitCode == 0, result.error.constData());
    QCOMPARE(Names(Path("sub/out")), QStringList(Text("a_corrected.tiff")));
}

void SurroundingsTest::oddNames_data()
{
    QTest::addColumn<QString>("picture");
    QTest::addColumn<QString>("output");
    QTest::newRow("like an option") << Text("-o.jpg") << Text("-o_corrected.tiff");
    QTest::newRow("dots") << Text("a.b.c.jpg") << Text("a.b.c_corrected.tiff");
    QTest::newRow("no suffix") << Text("picture") << Text("picture_corrected.tiff");
    QTest::newRow("percent and quotes") << Text("%1 \"'$(x).jpg") << Text("%1 \"'$(x)_corrected.tiff");
    QTest::newRow("line feed") << Text("a\nb.jpg") << Text("a\nb_corrected.tiff");
}

void SurroundingsTest::oddNames()
{
    QFETCH(QString, picture);
    QFETCH(QString, output);
    QVERIFY(QFile::rename(Path("a.jpg"), m_dir->filePath(picture)));
    ProgramRun run;
    run.setWorkingDirectory(m_dir->path());
    const ProgramResult result = run.Run(Correct({Text("--"), picture}));
    QVERIFY2(result.exitCode == 0, result.error.constData());
    QVERIFY(QFile::exists(m_dir->filePath(output)));
}

void SurroundingsTest::messageIsOneLine()
{
    const ProgramResult result = ProgramRun().Run(Correct({Path("no\n\033[2Jsuch.jpg")}));
    QCOMPARE(result.exitCode, 1);
    QCOMPARE(result.error.count('\n'), 1);
    QVERIFY(!result.error.contains('\033'));
}

void SurroundingsTest::progressOnTerminal_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<bool>("shown");
    QTest::newRow("xterm") << Text("xterm") << true;
    QTest::newRow("dumb") << Text("dumb") << false;
}

void SurroundingsTest::progressOnTerminal()
{
    QFETCH(QString, kind);
    QFETCH(bool, shown);
    const Terminal terminal;
    ProgramRun run;
    run.Set("TERM", kind);
    run.setStandardErrorFile(terminal.Name());
    QCOMPARE(run.Run(Correct({Path("a.jpg"), Path("none.jpg")})).exitCode, 1);
    const QByteArray seen = terminal.ReadAll();
    QVERIFY2(seen.contains("none.jpg: no such file"), seen.constData());
    for (const char *progress : {"[1/2] a.jpg", "[2/2] none.jpg", "\r\033[K", "1 corrected, 0 skipped, 1 failed"})
        QVERIFY2(seen.contains(progress) == shown, seen.constData());
}

void SurroundingsTest::fullStandardOutput()
{
    ProgramRun run;
    run.setStandardOutputFile(Text("/dev/full"));
    const ProgramResult result = run.Run({Text("profile"), Path("p.lcp")});
    QCOMPARE(result.exitCode, 1);
    QCOMPARE(result.errorLines, QStringList(Text("vitrelux: cannot write to standard output")));
}

void SurroundingsTest::usageError()
{
    const ProgramResult result = ProgramRun().Run(Correct({Text("--profil"), Path("a.jpg")}));
    QCOMPARE(result.exitCode, 2);
    QVERIFY(result.output.isEmpty());
    QVERIFY(result.error.contains("profil") && result.error.contains("--help"));
    QVERIFY(!QFile::exists(Path("a_corrected.tiff")));
}

void SurroundingsTest::helpNeedsNothing()
{
    for (const QStringList &arguments :
         {QStringList{Text("--help")}, QStringList{Text("--version")}, QStringList{Text("correct"), Text("--help")}}) {
        const ProgramResult result = ProgramRun().Run(arguments);
        QCOMPARE(result.exitCode, 0);
        QVERIFY(!result.output.isEmpty() && result.error.isEmpty());
    }
}

void SurroundingsTest::wizardNeedsDisplay_data()
{
    QTest::addColumn<QString>("variable");
    QTest::addColumn<QString>("value");
    QTest::newRow("none named") << Text("HOME") << Text("/none");
    QTest::newRow("can't be reached") << Text("DISPLAY") << Text("none:17");
    QTest::newRow("unknown platform") << Text("QT_QPA_PLATFORM") << Text("no-such-platform");
}

void SurroundingsTest::wizardNeedsDisplay()
{
    QFETCH(QString, variable);
    QFETCH(QString, value);
    ProgramRun run;
    run.Set(variable.toLatin1().constData(), value);
    const ProgramResult result = run.Run({Text("wizard"), Path("a.jpg")});
    QCOMPARE(result.exitCode, 1); // not a crash
    QVERIFY2(result.errorLines.last().startsWith(Text("vitrelux: cannot show a window")), result.error.constData());
}

QTEST_GUILESS_MAIN(SurroundingsTest)
#include "Surroundings_test.moc"
