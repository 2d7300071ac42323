// The command line read into plain values: what each option does, and what is refused.
#include "CommandLine.h"

#include <QtTest>

class CommandLineTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void correct_data();
    void correct();
    void refused_data();
    void refused();
    void printed_data();
    void printed();
    void helpNamesEveryOption();
    void otherCommandsTakeFiles();
};

namespace {

QStringList Words(const char *line)
{
    return QString::fromLatin1(line).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

/// The options as text, so that a table can compare them whole.
QString Describe(const CorrectOptions &options)
{
    QStringList words;
    if (!options.profile.isEmpty())
        words << QLatin1String("profile=") + options.profile;
    if (!options.outputFolder.isEmpty())
        words << QLatin1String("folder=") + options.outputFolder;
    if (!options.plugin.isEmpty())
        words << QLatin1String("plugin=") + options.plugin;
    if (options.asked.distortion)
        words << QStringLiteral("distortion");
    if (options.asked.chromatic)
        words << QStringLiteral("chromatic");
    if (options.asked.vignetting)
        words << QStringLiteral("vignetting");
    if (options.existing != ExistingOutput::Refuse)
        words << (options.existing == ExistingOutput::Skip ? QStringLiteral("skip") : QStringLiteral("overwrite"));
    if (options.jobs > 0)
        words << QStringLiteral("jobs=%1").arg(options.jobs);
    return (words << options.files).join(QLatin1Char(' '));
}

} // namespace

void CommandLineTest::correct_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("expected");
    const struct {
        const char *name, *line, *expected;
    } rows[] = {
        {"no options", "correct a.jpg b.tif", "a.jpg b.tif"},
        {"options between files", "correct a.jpg --profile p.lcp b.tif --ca", "profile=p.lcp chromatic a.jpg b.tif"},
        {"value behind =", "correct --profile=p.lcp a.jpg", "profile=p.lcp a.jpg"},
        {"every switch", "correct --distortion --ca --vignetting a.jpg", "distortion chromatic vignetting a.jpg"},
        {"-o", "correct -o out a.jpg", "folder=out a.jpg"},
        {"-o without blank", "correct -oout a.jpg", "folder=out a.jpg"},
        {"--output", "correct --output out a.jpg", "folder=out a.jpg"},
        {"overwrite", "correct --overwrite a.jpg", "overwrite a.jpg"},
        {"skip", "correct a.jpg --skip-existing", "skip a.jpg"},
        {"pictures at once", "correct -j 4 a.jpg", "jobs=4 a.jpg"},
        {"plug-in", "correct --plugin x.so a.jpg", "plugin=x.so a.jpg"},
        {"the last value holds", "correct --profile p.lcp --profile q.lcp a.jpg", "profile=q.lcp a.jpg"},
        {"names like options behind --", "correct --ca -- --overwrite -o", "chromatic --overwrite -o"},
    };
    for (const auto &row : rows)
        QTest::newRow(row.name) << QString::fromLatin1(row.line) << QString::fromLatin1(row.expected);
}

void CommandLineTest::correct()
{
    QFETCH(QString, line);
    QFETCH(QString, expected);
    const CommandLine parsed = ParseCommandLine(Words(line.toLatin1().constData()));
    QVERIFY2(parsed.action == CommandLine::Action::Correct, qPrintable(parsed.text));
    QCOMPARE(Describe(parsed.correct), expected);
}

void CommandLineTest::refused_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("named"); // what the message must name
    const struct {
        const char *name, *line, *named;
    } rows[] = {
        {"nothing", "", "no command"},
        {"unknown command", "corect a.jpg", "corect"},
        {"option ahead of the command", "--profile p.lcp correct a.jpg", "--profile"},
        {"unknown long option", "correct --profil p.lcp a.jpg", "profil"},
        {"unknown short option", "correct -x a.jpg", "x"},
        {"an option of another command", "profile --overwrite p.lcp", "overwrite"},
        {"no picture at once", "correct -j 0 a.jpg", "-j N"},
        {"pictures at once in words", "correct --jobs=two a.jpg", "-j N"},
        {"no value", "correct a.jpg --profile", "profile"},
        {"a value for a switch", "correct --ca=yes a.jpg", "ca"},
        {"no picture", "correct --profile p.lcp", "no file"},
        {"no profile", "profile", "no file"},
        {"overwrite and skip", "correct --overwrite --skip-existing a.jpg", "exclude"},
        {"profile named and looked up", "correct --profile p.lcp --lens-path d a.jpg", "exclude"},
    };
    for (const auto &row : rows)
        QTest::newRow(row.name) << Words(row.line) << QString::fromLatin1(row.named);
    QTest::newRow("empty name") << QStringList{QStringLiteral("profile"), QString()} << QStringLiteral("is empty");
    QTest::newRow("empty folder") << QStringList{QStringLiteral("correct"), QStringLiteral("-o"), QString(),
                                                 QStringLiteral("a.jpg")}
                                  << QStringLiteral("not empty");
}

void CommandLineTest::refused()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, named);
    const CommandLine parsed = ParseCommandLine(arguments);
    QVERIFY(parsed.action == CommandLine::Action::RefuseUsage);
    QVERIFY2(parsed.text.section(QLatin1Char('\n'), 0, 0).contains(named), qPrintable(parsed.text));
    QVERIFY2(parsed.text.contains(QLatin1String("--help'.\n")), qPrintable(parsed.text));
}

void CommandLineTest::printed_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("start");
    QTest::newRow("version") << QStringLiteral("--version") << QStringLiteral("vitrelux 3.");
    QTest::newRow("help") << QStringLiteral("--help") << QStringLiteral("Usage: vitrelux COMMAND");
    QTest::newRow("-h") << QStringLiteral("-h") << QStringLiteral("Usage: vitrelux COMMAND");
    QTest::newRow("correct") << QStringLiteral("correct --help") << QStringLiteral("Usage: vitrelux correct ");
    QTest::newRow("correct, late") << QStringLiteral("correct a.jpg -h") << QStringLiteral("Usage: vitrelux correct ");
    QTest::newRow("profile") << QStringLiteral("profile --help") << QStringLiteral("Usage: vitrelux profile ");
}

void CommandLineTest::printed()
{
    QFETCH(QString, line);
    QFETCH(QString, start);
    const CommandLine parsed = ParseCommandLine(Words(line.toLatin1().constData()));
    QVERIFY(parsed.action == CommandLine::Action::PrintText);
    QVERIFY2(parsed.text.startsWith(start), qPrintable(parsed.text));
}

void CommandLineTest::helpNamesEveryOption()
{
    const QString help = ParseCommandLine(Words("correct --help")).text;
    for (const char *option : {"--profile FILE", "--distortion", "--ca", "--vignetting", "-o, --output DIR",
                               "--overwrite", "--skip-existing", "--plugin FILE", "Exit code"})
        QVERIFY2(help.contains(QString::fromLatin1(option)), option);
    const QStringList lines = help.split(QLatin1Char('\n'));
    for (const QString &line : lines)
        QVERIFY2(line.size() <= 118, qPrintable(line));
}

void CommandLineTest::otherCommandsTakeFiles()
{
    const CommandLine parsed = ParseCommandLine(Words("profile a.lcp b.lcp"));
    QVERIFY(parsed.action == CommandLine::Action::ShowProfiles);
    QCOMPARE(parsed.profiles, Words("a.lcp b.lcp"));
    const CommandLine wizard = ParseCommandLine(Words("wizard --plugin x.so a.jpg"));
    QVERIFY(wizard.action == CommandLine::Action::ShowWizard);
    QCOMPARE(wizard.wizard.files + QStringList(wizard.wizard.plugin), Words("a.jpg x.so"));
    QVERIFY(ParseCommandLine(Words("wizard")).action == CommandLine::Action::ShowWizard); // they are chosen there
}

QTEST_APPLESS_MAIN(CommandLineTest)
#include "CommandLine_test.moc"
