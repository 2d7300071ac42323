// Input and output of a run: lists of pictures, names of outputs, summaries of records.
#include "KException.h"
#include "TestFiles.h"
#include "app/OutputPlan.h"
#include "command/ReportCommand.h"

#include <QDir>
#include <QJsonDocument>
#include <QTemporaryDir>
#include <QtTest>

Q_DECLARE_METATYPE(PictureReport)
Q_DECLARE_METATYPE(PictureSources)

class tst_RunLists : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void namesInLists_data();
    void namesInLists();
    void walks_data();
    void walks();
    void listThatCannotBeRead();
    void patterns_data();
    void patterns();
    void sums_data();
    void sums();
    void recordsOfOtherPrograms();
};

void tst_RunLists::namesInLists_data()
{
    QTest::addColumn<QByteArray>("list");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("lines") << QByteArray("a b.jpg\n\n-c.jpg\nlast") << QStringList{"a b.jpg"_s, "-c.jpg"_s, "last"_s};
    QTest::newRow("lines of Windows") << QByteArray("a.jpg\r\nb.jpg\r\n") << QStringList{"a.jpg"_s, "b.jpg"_s};
    QTest::newRow("NUL, one name with a line feed")
        << QByteArray("a\nb.jpg\0c.jpg\r\0", 15) << QStringList{"a\nb.jpg"_s, "c.jpg\r"_s};
    QTest::newRow("nothing") << QByteArray() << QStringList();
}

void tst_RunLists::namesInLists()
{
    QFETCH(QByteArray, list);
    QTEST(SplitNames(list), "names");
}

void tst_RunLists::walks_data()
{
    QTest::addColumn<PictureSources>("sources");
    QTest::addColumn<QStringList>("found"); // NAME or NAME|SUBPATH
    const QStringList all = {"in/B.TIF|"_s, "in/a.jpg|"_s, "in/a_corrected.tiff|"_s, "in/gone.jpg|"_s,
                             "in/deep/er/x.dng|deep/er"_s};
    QTest::newRow("as named") << PictureSources{{"z.jpg"_s, "in"_s}, false, {}, {}, {}}
                              << QStringList{"z.jpg|"_s, "in|"_s};
    QTest::newRow("walked") << PictureSources{{"in"_s, "z.jpg"_s}, true, {}, {}, {}} << all + QStringList("z.jpg|"_s);
    QTest::newRow("without results")
        << PictureSources{{"in"_s}, true, {}, {"_corrected.jpg"_s, "_corrected.tiff"_s}, {}}
        << QStringList{all[0], all[1], all[3], all[4]};
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
    QVERIFY(QFile::link("nowhere.jpg"_s, dir.filePath("in/gone.jpg"_s)));        // fails later, with a reason
    QVERIFY(QFile::link(dir.filePath("in"_s), dir.filePath("in/deep/round"_s))); // would never end
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
    QVERIFY_EXCEPTION_THROWN(ListPictures({{}, false, "/nowhere/list"_s, {}, {}}), KException);
}

void tst_RunLists::patterns_data()
{
    QTest::addColumn<QString>("output"); // of "in/a.b.jpg" with subpath "s"; "?": refused, with this text
    QTest::newRow("{name}_corrected.tiff") << "out/s/a.b_corrected.tiff";
    QTest::newRow("{folder}-{name}.{ext}.TIF") << "out/s/in-a.b.jpg.TIF";
    QTest::newRow("{name}{name}.tif") << "out/s/a.ba.b.tif";
    QTest::newRow("}{{name}}{.tif") << "out/s/}{a.b}{.tif";
    QTest::newRow("{date}{name}.tif") << "?{date}";
    QTest::newRow("x.tif") << "?{name}";
    QTest::newRow("x/{name}.tif") << "?slash";
    QTest::newRow("{name}.jpg") << "?.tif";
}

void tst_RunLists::patterns()
{
    QFETCH(QString, output);
    const QString pattern = QString::fromLatin1(QTest::currentDataTag());
    const QString fault = FaultOfOutputPattern(pattern, {"tiff"_s, "tif"_s});
    if (output.startsWith(QLatin1Char('?'))) {
        QVERIFY2(fault.contains(output.mid(1)), qPrintable(fault));
        return;
    }
    QCOMPARE(fault, QString());
    const auto plan = PlanOutputs({{"/in/a.b.jpg"_s, "s"_s}, {"/in/a.b.jpg"_s, "s"_s}}, {"/out"_s, pattern});
    QCOMPARE(plan[0].output, "/"_s + output);
    QVERIFY(plan[1].repeated);
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

void tst_RunLists::sums_data()
{
    using Outcome = PictureReport::Outcome;
    QTest::addColumn<QVector<PictureReport>>("reports");
    QTest::addColumn<QStringList>("lines"); // some of the text
    const PictureReport done = Made("a", Outcome::Corrected), skipped = Made("a", Outcome::Skipped, "exists", 0.0);
    const PictureReport failed = Made("a", Outcome::Failed, "\"a\" is bad");
    QTest::newRow("no records") << QVector<PictureReport>() << QStringList{"0 pictures"_s};
    QTest::newRow("skipped after it was corrected")
        << QVector{done, skipped} << QStringList{"1 pictures: 1 corrected"_s};
    QTest::newRow("corrected after it failed")
        << QVector{failed, done} << QStringList{"1 pictures: 1 corrected"_s, "       1  50mm: 1 corrected"_s};
    QTest::newRow("one reason with two names")
        << QVector{failed, Made("b", Outcome::Failed, "\"b\" is bad", 2.5)}
        << QStringList{"2 pictures: 2 failed; 3.5 s of work"_s, QString::fromUtf8("       2  \"…\" is bad"),
                       "    2.50 s  b"_s};
}

void tst_RunLists::sums()
{
    QFETCH(QVector<PictureReport>, reports);
    QFETCH(QStringList, lines);
    const QString sum = SumOfReports(reports);
    for (const QString &line : qAsConst(lines))
        QVERIFY2(sum.contains(line), qPrintable(line + " in\n"_s + sum));
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
}

QTEST_APPLESS_MAIN(tst_RunLists)
#include "RunLists_test.moc"
