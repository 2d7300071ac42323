// Tests of the command line: invalid arguments, printed texts, and pictures of one run with the same output. The tests
// of the whole program check the effect of options.
#include "Case.h"
#include "ExpectedText.h"
#include "PictureFacts.h"
#include "TestFiles.h"
#include "app/FactLines.h"
#include "app/OutputPlan.h"
#include "command/CommandLine.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

class tst_CommandLine : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void refusesAndPrints_data();
    void refusesAndPrints();
    void printedLines();
    void lastOneWins();
    void fittedOptions();
    void facts();
    void helpFitsOnAScreen();
    void rivals();
};

namespace {

/// Splits a line at spaces; "''" is an empty word.
QStringList Words(const QString &line)
{
    return line.split(QLatin1Char(' '), Qt::SkipEmptyParts).replaceInStrings("''"_s, QString());
}

} // namespace

void tst_CommandLine::refusesAndPrints_data()
{
    // The first line of the error, or "?" and the start of the printed text.
    QTest::addColumn<QString>("message");
    for (const QByteArray &row : ExpectedText("refused and printed").split('\n'))
        if (const int at = row.indexOf(" => "); at >= 0)
            QTest::newRow(row.left(at)) << QString::fromLatin1(row.mid(at + 4));
}

void tst_CommandLine::refusesAndPrints()
{
    QFETCH(QString, message);
    const CommandLine line = ParseCommandLine(Words(QString::fromLatin1(QTest::currentDataTag())));
    const bool printed = message.startsWith(QLatin1Char('?'));
    QCOMPARE(line.action, printed ? CommandLine::Action::PrintText : CommandLine::Action::RefuseUsage);
    if (printed)
        QVERIFY2(line.text.startsWith(message.mid(1)), qPrintable(line.text));
    else
        QCOMPARE(line.text, message + "\nTry '%1 --help'.\n"_s.arg(message.section(": "_s, 0, 0)));
}

/// Help, man pages and completions contain the expected lines, among others, in the given order.
void tst_CommandLine::printedLines()
{
    for (const char *line :
         {"help", "help lenses", "help correct", "correct -h", "help --man", "help --man help", "help --man lenses",
          "help --completion bash", "help --completion zsh", "help --completion fish"}) {
        const CommandLine parsed = ParseCommandLine(Words(QString::fromLatin1(line)));
        QCOMPARE(parsed.action, CommandLine::Action::PrintText);
        QStringList left = QString::fromLatin1(ExpectedText(QByteArray("vitrelux ") + line)).split(QLatin1Char('\n'));
        for (const QString &printed : parsed.text.split(QLatin1Char('\n')))
            if (!left.isEmpty() && printed == left.first())
                left.removeFirst();
        QVERIFY2(left.size() < 2, qPrintable(QLatin1String(line) + ": missing "_s + left.value(0))); // "" is left
    }
}

void tst_CommandLine::lastOneWins()
{
    const CorrectOptions options =
        ParseCommandLine(Words("correct --profile p --profile=q -j 4 --shard 1/2 -- -o"_s)).correct;
    QCOMPARE(options.profile, "q"_s);
    QVERIFY(options.jobs == 4 && options.shard.index == 1 && options.shard.count == 2);
    QCOMPARE(options.pictures.named, QStringList("-o"_s));
}

/// Options become attributes in the XML form of the plug-in's records, and decide the program's fit; missing options
/// add none. The expected options of the fit are those that differ from the defaults.
void tst_CommandLine::fittedOptions()
{
    for (const QString &row : QString::fromLatin1(ExpectedText("fitted options").trimmed()).split(QLatin1Char('\n'))) {
        const CommandLine line = ParseCommandLine(Words("correct a.jpg "_s + row.section(" =>"_s, 0, 0)));
        QCOMPARE(line.action, CommandLine::Action::Correct);
        QStringList printed(row.section(" =>"_s, 0, 0) + " =>"_s);
        for (const auto &[name, value] : line.correct.fitted.attributes)
            printed << name + QLatin1Char('=') + value;
        const FitOptions &options = line.correct.fitted.fit;
        const TypedFacts &typed = options.typed;
        for (const auto &[name, value, usual] : {std::tuple("framing", double(options.framing), 0.0),
                                                 {"zoom", options.framingFactor, 1.0},
                                                 {"disto", options.amountDistortion, 1.0},
                                                 {"color", options.amountChromatic, 1.0},
                                                 {"light", options.amountVignetting, 1.0},
                                                 {"projection", double(options.projection), 0.0},
                                                 {"source", double(options.source), 0.0},
                                                 {"again", double(options.again), 0.0},
                                                 {"focal", typed.focalMm.value_or(0.0), 0.0},
                                                 {"aperture", typed.aperture.value_or(0.0), 0.0},
                                                 {"distance", typed.distanceM.value_or(0.0), 0.0}})
            if (value != usual)
                printed << QLatin1String(name) + QLatin1Char('=') + QString::number(value);
        for (const auto &[name, text] : {std::pair("lens=", typed.lens), {"body=", typed.body}})
            if (!text.isEmpty())
                printed << QLatin1String(name) + text;
        QCOMPARE(printed.join(QLatin1Char(' ')), row);
    }
}

/// `correct -v` prints each fact and its source.
void tst_CommandLine::facts()
{
    PictureFacts facts;
    facts.make = {"M"_s, "a"_s}, facts.model = {"N"_s, "b"_s}, facts.lensMake = {"O"_s, "c"_s};
    facts.lensNames = {{"P"_s, "d"_s}, {"Q"_s, "e"_s}};
    facts.lensIds = {{"7"_s, "f"_s}};
    double number = 0.5;
    for (auto *fact :
         {&facts.lensMinFocalMm, &facts.lensMaxFocalMm, &facts.lensMinApertureAtMin, &facts.lensMinApertureAtMax,
          &facts.focalMm, &facts.focal35Mm, &facts.digitalZoom, &facts.aperture, &facts.focalPlaneWidthMm})
        *fact = {++number, "g"_s};
    facts.distanceM = {HUGE_VAL, "h"_s};
    facts.pixels = {60, 40}, facts.original.value = {70, 50}, facts.original.source = "i"_s;
    facts.raw = true, facts.orientation = 6, facts.readerTurn = 3;
    facts.crop = {QRectF(0.125, 0.25, 0.5, 0.625), "j"_s};
    facts.distortionDone = facts.chromaticDone = {true, "k"_s}, facts.vignettingDone = {true, "l"_s};
    QCOMPARE(FactLines(facts), QString::fromLatin1(ExpectedText("facts, as correct -v prints them")));
    facts.chromaticDone = {}, facts.vignettingDone.source = "k"_s;
    QCOMPARE(DoneBeforeText(facts), "distortion (k), vignetting (k)"_s);
    QCOMPARE(FactLines({}), "Pixels            -1 x -1\nOrientation       1\n"_s);
}

/// The short help fits a terminal of 80 x 40 characters.
void tst_CommandLine::helpFitsOnAScreen()
{
    const QStringList names =
        ParseCommandLine({"help"_s, "--names"_s}).text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QVERIFY(names.contains("correct"_s));
    for (const QString &name : names) {
        const Case named(name);
        const QString screen = ParseCommandLine({name, "--help"_s}).text;
        QVERIFY2(screen.count(QLatin1Char('\n')) <= 40, qPrintable(screen));
        for (const QString &line : screen.split(QLatin1Char('\n')))
            QVERIFY2(line.size() <= 80, qPrintable(line));
        QCOMPARE(screen.count("\n  vitrelux "_s), 2); // examples
    }
}

void tst_CommandLine::rivals()
{
    const QTemporaryDir scene; // a/x.jpg, a/x.png, b/x.jpg, and two links: "also" to a, a/in to b/deep
    const QDir dir(scene.path());
    QVERIFY(dir.mkpath("a"_s) && dir.mkpath("b/deep"_s));
    for (const QString &name : {"a/x.jpg"_s, "a/x.png"_s, "b/x.jpg"_s})
        WriteFile(dir.filePath(name), {});
    QVERIFY(QFile::link(dir.filePath("a"_s), dir.filePath("also"_s)));
    QVERIFY(QFile::link(dir.filePath("b/deep"_s), dir.filePath("a/in"_s)));
    const QString below = dir.path() + QLatin1Char('/');
    for (const QByteArray &text : ExpectedText("files, output folder, rival of the last file").trimmed().split('\n')) {
        const QStringList row =
            QString::fromLatin1(text).replace("%1"_s, below).replace("none"_s, QString()).split(" => "_s);
        const Case named(text);
        const QVector<PlannedPicture> plan = PlanOutputs(Named(Words(row[0])), {row[1]});
        QCOMPARE(plan.last().rival, row[2]);
        QCOMPARE(plan.last().repeated, row.value(3) == "the same file"_s);
        QVERIFY(plan.first().rival.isEmpty());
    }
}

QTEST_APPLESS_MAIN(tst_CommandLine)
#include "CommandLine_test.moc"
