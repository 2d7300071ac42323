// Tests of the input and output of a run: lists of pictures, output names, summaries of records.
#include "Case.h"
#include "ExpectedText.h"
#include "KException.h"
#include "TestFiles.h"
#include "Thrown.h"
#include "app/OutputPlan.h"
#include "command/Console.h"
#include "command/ReportCommand.h"

#include <QDir>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QtTest>

#include <filesystem>
#include <fstream>

Q_DECLARE_METATYPE(PictureReport)
Q_DECLARE_METATYPE(PictureSources)

class tst_RunLists : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void namesInLists();
    void walks_data();
    void walks();
    void listThatCannotBeRead();
    void patterns();
    void lostPictures();
    void summaries_data();
    void summaries();
    void recordsOfOtherPrograms();
    void timeLeft();
};

void tst_RunLists::namesInLists()
{
    const std::pair<QByteArray, QStringList> rows[] = {
        {"a b.jpg\n\n-c.jpg\nlast", {"a b.jpg"_s, "-c.jpg"_s, "last"_s}},
        {"a.jpg\r\nb.jpg\r\n", {"a.jpg"_s, "b.jpg"_s}},
        {QByteArray("a\nb.jpg\0c.jpg\r\0", 15), {"a\nb.jpg"_s, "c.jpg\r"_s}},
        {"", {}}};
    for (const auto &[list, names] : rows) {
        const Case named(list);
        QCOMPARE(SplitNames(list), names);
    }
}

void tst_RunLists::walks_data()
{
    QTest::addColumn<PictureSources>("sources");
    QTest::addColumn<QStringList>("found"); // NAME|SUBPATH
    const QStringList all = {"in/B.TIF|"_s,
                             "in/a.jpg|"_s,
                             "in/a_corrected.tiff|"_s,
                             "in/gone.jpg|"_s,
                             QString::fromUtf8("in/deep/d\uFFFD|deep"),
                             "in/deep/er/x.dng|deep/er"_s,
                             QString::fromUtf8("in/deep/er/y\uFFFD.jpg|deep/er")};
    QTest::newRow("as named") << PictureSources{{"z.jpg"_s, "in"_s}, false, {}, {}, {}}
                              << QStringList{"z.jpg|"_s, "in|"_s};
    QTest::newRow("walked") << PictureSources{{"in"_s, "z.jpg"_s}, true, {}, {}, {}} << all + QStringList("z.jpg|"_s);
    QTest::newRow("without results")
        << PictureSources{{"in"_s}, true, {}, {"_corrected.jpg"_s, "_corrected.tiff"_s}, {}}
        << QStringList{all[0], all[1], all[3]} + all.mid(4);
    QTest::newRow("without the output folder")
        << PictureSources{{"in"_s}, true, {}, {}, "in/deep/../deep"_s} << QStringList(all.mid(0, 4));
    QTest::newRow("with a list") << PictureSources{{"in"_s}, false, "list"_s, {}, {}}
                                 << QStringList{"in|"_s, "in/a.jpg|"_s};
}

void tst_RunLists::walks()
{
    QFETCH(PictureSources, sources);
    const QTemporaryDir scene;
    const QDir dir(scene.path());
    QVERIFY(dir.mkpath("in/deep/er"_s) && dir.mkpath("in/.hidden"_s));
    for (const QString &name : {"in/a.jpg"_s, "in/a_corrected.tiff"_s, "in/B.TIF"_s, "in/notes.txt"_s, "in/.b.jpg"_s,
                                "in/.hidden/c.jpg"_s, "in/deep/er/x.dng"_s})
        WriteFile(dir.filePath(name), {});
    WriteFile(dir.filePath("list"_s), "in/a.jpg\n");
    // Names that aren't UTF-8 are found; their pictures fail later, with a reason.
    const std::string deep = dir.filePath("in/deep/"_s).toStdString();
    std::filesystem::create_directory(deep + "d\xe9");
    std::ofstream(deep + "er/y\xe9.jpg") << "picture";
    QVERIFY(QFile::link("nowhere.jpg"_s, dir.filePath("in/gone.jpg"_s)));        // fails later, with a reason
    QVERIFY(QFile::link(dir.filePath("in"_s), dir.filePath("in/deep/round"_s))); // following it would never end
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(scene.path()));
    QStringList found;
    for (const NamedPicture &picture : ListPictures(sources).pictures)
        found << picture.name + QLatin1Char('|') + picture.subpath;
    QVERIFY(QDir::setCurrent(before));
    QTEST(found, "found");
}

void tst_RunLists::listThatCannotBeRead()
{
    const QTemporaryDir scene;
    const QString file = scene.filePath("list"_s), why = "cannot read the list of pictures \"%1\": "_s;
    const auto message = [](const QString &list) { return Thrown([&] { ListPictures({{}, false, list, {}, {}}); }); };
    QCOMPARE(message("/nowhere/list"_s), why.arg("/nowhere/list"_s) + "No such file or directory"_s);
    WriteFile(file, {});
    QCOMPARE(message(file), "none"_s);
    QVERIFY(QFile::resize(file, (256 << 20) + 1));
    QCOMPARE(message(file), why.arg(file) + "more than 268435456 bytes, the maximum for a list"_s);
    QCOMPARE(PictureNamePatterns().filter(QRegularExpression("^\\*\\.(jpg|tiff|dng)$"_s)).size(), 3);
}

/// Output for "in/a.b.jpg" with subpath "s", or "?" and the error.
void tst_RunLists::patterns()
{
    const QVector<NamedPicture> pictures(2, {"/in/a.b.jpg"_s, "s"_s});
    for (const QByteArray &text : ExpectedText("output patterns").trimmed().split('\n')) {
        const QString pattern = QString::fromLatin1(text).section(" => "_s, 0, 0);
        const QString fault = FaultOfOutputNames({{}, pattern}, {"tiff"_s, "tif"_s});
        const auto plan = PlanOutputs(pictures, {"/out"_s, pattern});
        QCOMPARE(pattern + " => "_s + (fault.isEmpty() ? plan[0].output.mid(1) : "?"_s + fault),
                 QString::fromLatin1(text));
        QVERIFY(plan[1].repeated && PlanOutputs(pictures, {{}, pattern})[0].outputFolder == "/in"_s);
    }
}

void tst_RunLists::lostPictures()
{
    const QTemporaryDir scene;
    const QString picture = scene.filePath("a.jpg"_s), link = scene.filePath("a-link.jpg"_s);
    WriteFile(picture, {});
    QVERIFY(QFile::link(picture, link));
    for (const QByteArray &text : ExpectedText("folder, pattern, pictures, and those replaced").trimmed().split('\n')) {
        const Case named(text);
        const QStringList row = QString::fromLatin1(text).replace("%1"_s, scene.path()).split(QLatin1Char('|'));
        QCOMPARE(row.size(), 4);
        QStringList lost; // per picture, the one that its output would replace
        for (const PlannedPicture &planned : PlanOutputs(Named(row[2].split(QLatin1Char(','))), {row[0], row[1]}))
            lost << planned.lost;
        QCOMPARE(lost.join(QLatin1Char(',')), row[3]);
    }
}

namespace {

PictureReport Made(const char *picture, PictureReport::Outcome outcome, const char *why = "", double seconds = 1.0)
{
    PictureReport report;
    report.picture = QString::fromLatin1(picture);
    report.outcome = outcome;
    report.why = QString::fromLatin1(why);
    report.lens = "50mm"_s;
    report.seconds = seconds;
    return report;
}

} // namespace

void tst_RunLists::summaries_data()
{
    using Outcome = PictureReport::Outcome;
    QTest::addColumn<QVector<PictureReport>>("reports");
    QTest::addColumn<QString>("text");
    const PictureReport done = Made("a", Outcome::Corrected), skipped = Made("a", Outcome::Skipped, "exists", 0.0);
    const PictureReport failed = Made("a", Outcome::Failed, "\"a\" is bad");
    PictureReport unnamed = Made("e", Outcome::Planned);
    unnamed.lens.clear();
    const std::pair<const char *, QVector<PictureReport>> rows[] = {
        {"no records", {}},
        {"skipped after it was corrected", {done, skipped}},
        {"listed twice, and failed", {failed, skipped}},
        {"corrected after it failed", {failed, done}},
        {"one reason with two names, and the five slowest",
         {Made("f", Outcome::Failed, "a b", 0.5), failed, Made("b", Outcome::Failed, "\"b\" is bad", 2.5),
          Made("c", Outcome::Corrected), Made("d", Outcome::CorrectedBefore), unnamed}}};
    for (const auto &[name, reports] : rows)
        QTest::newRow(name) << reports << QString::fromUtf8(ExpectedText(QByteArray("vitrelux report, ") + name));
    for (const int count : {20, 21}) { // 20 lines fit
        QVector<PictureReport> many;
        QString lines;
        for (int i = 0; i < count; ++i) {
            many.append(
                Made(qPrintable(QString::number(i)), Outcome::Failed, qPrintable(QString::number(10 + i)), 0.0));
            lines += i < 20 ? "       1  %1\n"_s.arg(10 + i) : "  and 1 more\n"_s;
        }
        QTest::addRow("%d reasons", count)
            << many
            << "%1 pictures: %1 failed; 0.0 s of work\n\nFailed\n%2\nLenses\n      %1  50mm: %1 failed\n"_s.arg(count)
                   .arg(lines);
    }
}

void tst_RunLists::summaries()
{
    QFETCH(QVector<PictureReport>, reports);
    QTEST(SummaryOfReports(reports), "text");
}

void tst_RunLists::recordsOfOtherPrograms()
{
    const QTemporaryDir scene;
    const QString file = scene.filePath("log"_s);
    PictureReport report = Made("a", PictureReport::Outcome::CorrectedBefore, "by its camera", 0.25);
    report.assumed = QStringList{"x"_s, "y"_s};
    WriteFile(file, "{\"path\":\"a\"}\n\n" + QJsonDocument(ToJson(report)).toJson(QJsonDocument::Compact) + "\n{\"pic");
    QStringList problems;
    const QVector<PictureReport> read = ReadReports(file, &problems);
    QCOMPARE(problems.size(), 2);
    QVERIFY2(problems[0].contains("line 1"_s) && problems[1].contains("line 4"_s),
             qPrintable(problems.join(QLatin1Char(' '))));
    QCOMPARE(read.size(), 1);
    QCOMPARE(ToJson(read[0]), ToJson(report));
    QCOMPARE(read[0].assumed, report.assumed);
    problems.clear();
    QVERIFY(ReadReports(scene.filePath("gone"_s), &problems).isEmpty());
    WriteFile(file, QByteArray(16 << 20, ' ') + "{}");
    QVERIFY(ReadReports(file, &problems).isEmpty());
    QCOMPARE(problems,
             QStringList({"cannot be read: No such file or directory"_s,
                          "line 1 is longer than 16777216 bytes; the rest is left out"_s}));
    problems = QStringList({{}, {}});
    WriteFile(file, QByteArray(22, '\n').replace("\n", "{}\n"));
    ReadReports(file, &problems);
    QCOMPARE(problems.mid(21),
             QStringList({"line 20 is not a record of 'correct --json'"_s, "2 more lines are not records"_s}));
}

void tst_RunLists::timeLeft()
{
    const QByteArray expected = ExpectedText("time left: seconds, pictures done, and open");
    QByteArray printed;
    for (const QByteArray &line : expected.trimmed().split('\n')) {
        const QByteArrayList numbers = line.left(line.indexOf(':')).split(' ');
        const QString left = TimeLeft(numbers[0].toDouble(), numbers.value(1).toInt(), numbers.value(2).toInt());
        printed += numbers.join(' ') + ':' + left.toUtf8() + '\n';
    }
    QCOMPARE(printed, expected);
}

QTEST_APPLESS_MAIN(tst_RunLists)
#include "RunLists_test.moc"
