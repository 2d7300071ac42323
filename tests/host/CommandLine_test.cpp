// The command line read into plain values, what is refused, and which pictures of a run want the same output.
#include "CommandLine.h"
#include "OutputPlan.h"
#include "TestFiles.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

class CommandLineTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void read_data();
    void read();
    void helpNamesEveryOption();
    void rivals_data();
    void rivals();
};

namespace {

/// A blank between words; "''" is an empty one.
QStringList Words(const QString &line)
{
    return line.split(QLatin1Char(' '), Qt::SkipEmptyParts).replaceInStrings("''"_s, QString());
}

/// What was read as text, so that a table can compare it whole.
QString Describe(const CommandLine &line)
{
    const CorrectOptions &options = line.correct;
    switch (line.action) {
    case CommandLine::Action::RefuseUsage:
    case CommandLine::Action::PrintText:
        return line.text;
    case CommandLine::Action::ShowProfiles:
        return "show "_s + line.profiles.join(QLatin1Char(' '));
    case CommandLine::Action::ShowWizard:
        return "wizard "_s
            + (line.wizard.files + QStringList{line.wizard.lensPath, line.wizard.plugin}).join(QLatin1Char(' '));
    case CommandLine::Action::ShowInfo:
        return "info %1 %2 "_s.arg(line.info.json).arg(line.info.exif)
            + (line.info.files + QStringList(line.info.lensPath)).join(QLatin1Char(' '));
    case CommandLine::Action::Correct:
        break;
    }
    const std::pair<bool, QString> words[] = {
        {!options.profile.isEmpty(), "profile="_s + options.profile},
        {!options.outputFolder.isEmpty(), "folder="_s + options.outputFolder},
        {!options.plugin.isEmpty(), "plugin="_s + options.plugin},
        {options.asked.distortion, "distortion"_s},
        {options.asked.chromatic, "chromatic"_s},
        {options.asked.vignetting, "vignetting"_s},
        {options.existing == ExistingOutput::Skip, "skip"_s},
        {options.existing == ExistingOutput::Overwrite, "overwrite"_s},
        {options.jobs > 0, "jobs=%1"_s.arg(options.jobs)},
    };
    QStringList said;
    for (const auto &[there, word] : words) {
        if (there)
            said << word;
    }
    return (said << options.files).join(QLatin1Char(' '));
}

} // namespace

void CommandLineTest::read_data()
{
    QTest::addColumn<QString>("expected"); // "!": refused, with this in the first line; "?": printed, starting so
    const char *const rows[][2] = {
        {"correct a.jpg b.tif", "a.jpg b.tif"},
        {"correct a.jpg --profile p.lcp b.tif --ca", "profile=p.lcp chromatic a.jpg b.tif"},
        {"correct --profile=p.lcp a.jpg", "profile=p.lcp a.jpg"},
        {"correct --distortion --ca --vignetting a.jpg", "distortion chromatic vignetting a.jpg"},
        {"correct -o out a.jpg", "folder=out a.jpg"},
        {"correct -oout a.jpg", "folder=out a.jpg"},
        {"correct --output out a.jpg", "folder=out a.jpg"},
        {"correct --overwrite a.jpg", "overwrite a.jpg"},
        {"correct a.jpg --skip-existing", "skip a.jpg"},
        {"correct -j 4 a.jpg", "jobs=4 a.jpg"},
        {"correct --plugin x.so a.jpg", "plugin=x.so a.jpg"},
        {"correct --profile p.lcp --profile q.lcp a.jpg", "profile=q.lcp a.jpg"},
        {"correct --ca -- --overwrite -o", "chromatic --overwrite -o"},
        {"profile a.lcp b.lcp", "show a.lcp b.lcp"},
        {"wizard --plugin x.so --lens-path d a.jpg", "wizard a.jpg d x.so"},
        {"wizard", "wizard  "}, // pictures are chosen there
        {"info --exif --lens-path d a.jpg", "info 0 1 a.jpg d"},
        {"", "!no command"},
        {"corect a.jpg", "!corect"},
        {"--profile p.lcp correct a.jpg", "!--profile"},
        {"correct --profil p.lcp a.jpg", "!profil"},
        {"correct -x a.jpg", "!x"},
        {"profile --overwrite p.lcp", "!overwrite"},
        {"correct -j 0 a.jpg", "!-j N"},
        {"correct --jobs=two a.jpg", "!-j N"},
        {"correct a.jpg --profile", "!profile"},
        {"correct --ca=yes a.jpg", "!ca"},
        {"correct --profile p.lcp", "!no file"},
        {"profile", "!no file"},
        {"correct --overwrite --skip-existing a.jpg", "!exclude"},
        {"correct --profile p.lcp --lens-path d a.jpg", "!exclude"},
        {"profile ''", "!is empty"},
        {"correct -o '' a.jpg", "!not empty"},
        {"--version", "?vitrelux 3."},
        {"--help", "?Usage: vitrelux COMMAND"},
        {"-h", "?Usage: vitrelux COMMAND"},
        {"correct a.jpg -h", "?Usage: vitrelux correct "},
        {"profile --help", "?Usage: vitrelux profile "},
    };
    for (const auto &[line, expected] : rows)
        QTest::newRow(line) << QString::fromLatin1(expected);
}

void CommandLineTest::read()
{
    QFETCH(QString, expected);
    const CommandLine parsed = ParseCommandLine(Words(QString::fromLatin1(QTest::currentDataTag())));
    const QString told = Describe(parsed);
    const bool refused = expected.startsWith(QLatin1Char('!')), printed = expected.startsWith(QLatin1Char('?'));
    QCOMPARE(parsed.action == CommandLine::Action::RefuseUsage, refused);
    QCOMPARE(parsed.action == CommandLine::Action::PrintText, printed);
    if (!refused && !printed)
        QCOMPARE(told, expected);
    QVERIFY2(!printed || told.startsWith(expected.mid(1)), qPrintable(told));
    QVERIFY2(!refused || told.section(QLatin1Char('\n'), 0, 0).contains(expected.mid(1)), qPrintable(told));
    QVERIFY2(!refused || told.contains("--help'.\n"_s), qPrintable(told));
}

void CommandLineTest::helpNamesEveryOption()
{
    const QString help = ParseCommandLine(Words("correct --help"_s)).text;
    for (const char *option : {"--profile FILE", "--lens-path DIR", "--distortion", "--ca", "--vignetting",
                               "-o, --output DIR", "--overwrite", "--skip-existing", "--plugin FILE", "Exit code"})
        QVERIFY2(help.contains(QString::fromLatin1(option)), option);
}

void CommandLineTest::rivals_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("rival"); // of the last file
    QTest::addColumn<bool>("repeated");
    // The files, below a folder; see rivals().
    QTest::newRow("a/x.jpg b/x.jpg") << QString() << QString() << false;
    QTest::newRow("a/x.jpg  b/x.jpg") << "out"_s
                                      << "a/x.jpg"_s << false;
    QTest::newRow("a/x.jpg b/x.jpg a/x.png") << QString() << "a/x.jpg"_s << false;
    QTest::newRow("a/x.jpg b/../a/x.jpg") << QString() << "a/x.jpg"_s << true;
    QTest::newRow("a/x.jpg also/x.jpg") << QString() << "a/x.jpg"_s << true;
    QTest::newRow("b/x.jpg a/in/../x.jpg") << QString() << "b/x.jpg"_s << true; // up from a link
    QTest::newRow("a/x.png also/x.jpg") << QString() << "a/x.png"_s << false;
    QTest::newRow("a/y.jpg a/y.png") << QString() << "a/y.jpg"_s << false; // there are none
}

void CommandLineTest::rivals()
{
    QFETCH(QString, folder);
    QFETCH(QString, rival);
    QFETCH(bool, repeated);
    const QTemporaryDir scene; // a/x.jpg, a/x.png, b/x.jpg, and two links: also to a, a/in to b/deep
    const QDir dir(scene.path());
    QVERIFY(dir.mkpath("a"_s) && dir.mkpath("b/deep"_s));
    for (const QString &name : {"a/x.jpg"_s, "a/x.png"_s, "b/x.jpg"_s})
        WriteBytes(dir.filePath(name), {});
    QVERIFY(QFile::link(dir.filePath("a"_s), dir.filePath("also"_s)));
    QVERIFY(QFile::link(dir.filePath("b/deep"_s), dir.filePath("a/in"_s)));

    const QString below = dir.path() + QLatin1Char('/');
    const QStringList files =
        Words(QString::fromLatin1(QTest::currentDataTag())).replaceInStrings(QRegExp("^"_s), below);
    const QVector<PlannedPicture> plan = PlanOutputs(files, folder.isEmpty() ? folder : dir.filePath(folder));
    QCOMPARE(plan.last().rival, rival.isEmpty() ? rival : below + rival);
    QCOMPARE(plan.last().repeated, repeated);
    QVERIFY(plan.first().rival.isEmpty());
}

QTEST_APPLESS_MAIN(CommandLineTest)
#include "CommandLine_test.moc"
