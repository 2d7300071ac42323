// Which picture goes where, and which pictures of a run want the same output.
#include "OutputPlan.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

class OutputPlanTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void names_data();
    void names();
    void rivals_data();
    void rivals();
};

void OutputPlanTest::names_data()
{
    QTest::addColumn<QString>("picture");
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("output");
    const struct {
        const char *name, *picture, *folder, *output;
    } rows[] = {
        {"beside", "/none/a.jpg", "", "/none/a_corrected.tiff"},
        {"dots in the name", "/none/a.b.jpg", "", "/none/a.b_corrected.tiff"},
        {"no suffix", "/none/a", "", "/none/a_corrected.tiff"},
        {"another folder", "/none/a.jpg", "/out/", "/out/a_corrected.tiff"},
        {"detours", "/none/./x/../a.jpg", "/out/../done", "/done/a_corrected.tiff"},
        {"root", "/a.jpg", "", "/a_corrected.tiff"},
    };
    for (const auto &row : rows)
        QTest::newRow(row.name) << QString::fromLatin1(row.picture) << QString::fromLatin1(row.folder)
                                << QString::fromLatin1(row.output);
}

void OutputPlanTest::names()
{
    QFETCH(QString, picture);
    QFETCH(QString, folder);
    QFETCH(QString, output);
    const QVector<PlannedPicture> plan = PlanOutputs({picture}, folder);
    QCOMPARE(plan.size(), 1);
    QCOMPARE(plan.first().output, output);
    QCOMPARE(plan.first().asNamed, picture);
    QVERIFY(plan.first().rival.isEmpty());
}

void OutputPlanTest::rivals_data()
{
    QTest::addColumn<QStringList>("files"); // below a folder, see rivals()
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("rival"); // of the last file
    QTest::addColumn<bool>("repeated");
    using Files = QStringList;
    const QString ajpg = QStringLiteral("a/x.jpg"), apng = QStringLiteral("a/x.png"), bjpg = QStringLiteral("b/x.jpg");
    const QString linked = QStringLiteral("also/x.jpg"), none = QString(), out = QStringLiteral("out");
    QTest::newRow("other folders") << Files{ajpg, bjpg} << none << none << false;
    QTest::newRow("other folders, one output folder") << Files{ajpg, bjpg} << out << ajpg << false;
    QTest::newRow("other suffixes") << Files{ajpg, apng} << none << ajpg << false;
    QTest::newRow("third") << Files{ajpg, bjpg, apng} << none << ajpg << false;
    QTest::newRow("named twice") << Files{ajpg, ajpg} << none << ajpg << true;
    QTest::newRow("by another way") << Files{ajpg, QStringLiteral("b/../a/x.jpg")} << none << ajpg << true;
    QTest::newRow("through a link") << Files{ajpg, linked} << none << ajpg << true;
    QTest::newRow("up from a link") << Files{QStringLiteral("b/x.jpg"), QStringLiteral("a/in/../x.jpg")} << none
                                    << QStringLiteral("b/x.jpg") << true;
    QTest::newRow("through a link, other suffix") << Files{apng, linked} << none << apng << false;
    QTest::newRow("missing files") << Files{QStringLiteral("a/y.jpg"), QStringLiteral("a/y.png")} << none
                                   << QStringLiteral("a/y.jpg") << false;
}

void OutputPlanTest::rivals()
{
    QFETCH(QStringList, files);
    QFETCH(QString, folder);
    QFETCH(QString, rival);
    QFETCH(bool, repeated);
    QTemporaryDir scene; // a/x.jpg, a/x.png, b/x.jpg, and two links: also to a, a/in to b/deep
    const QDir dir(scene.path());
    for (const char *name : {"a/x.jpg", "a/x.png", "b/x.jpg"}) {
        QVERIFY(dir.mkpath(QFileInfo(QString::fromLatin1(name)).path()));
        QFile file(dir.filePath(QString::fromLatin1(name)));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }
    QVERIFY(QFile::link(dir.filePath(QStringLiteral("a")), dir.filePath(QStringLiteral("also"))));
    QVERIFY(dir.mkpath(QStringLiteral("b/deep")));
    QVERIFY(QFile::link(dir.filePath(QStringLiteral("b/deep")), dir.filePath(QStringLiteral("a/in"))));

    QStringList named;
    for (const QString &file : qAsConst(files))
        named << dir.path() + QLatin1Char('/') + file;
    const QVector<PlannedPicture> plan = PlanOutputs(named, folder.isEmpty() ? folder : dir.filePath(folder));
    QCOMPARE(plan.last().rival, rival.isEmpty() ? rival : dir.path() + QLatin1Char('/') + rival);
    QCOMPARE(plan.last().repeated, repeated);
    QVERIFY(plan.first().rival.isEmpty());
}

QTEST_APPLESS_MAIN(OutputPlanTest)
#include "OutputPlan_test.moc"
