// The tables of cameras and lenses: how rows are read and found, and whether each of the real ones can be.
#include "CameraProperties.h"
#include "KImage.h"
#include "LensIDProperties.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

#include <thread>
#include <vector>

namespace {

/// Stands in the place of the real tables while it lives.
class OwnTable {
public:
    OwnTable(const char *name, const QByteArray &text)
    {
        QFile file(m_folder.filePath(QLatin1String(name)));
        if (file.open(QIODevice::WriteOnly))
            file.write(text);
        QDir::setSearchPaths(QStringLiteral("Data"), {m_folder.path()});
    }
    ~OwnTable() { QDir::setSearchPaths(QStringLiteral("Data"), {QStringLiteral(":/Data")}); }

private:
    QTemporaryDir m_folder;
};

/// The rows of a real table, read here by other means.
QVector<QStringList> RowsOf(const char *name)
{
    QFile file{QString::fromLatin1(name)};
    QVector<QStringList> rows;
    for (const QByteArray &line : file.open(QIODevice::ReadOnly) ? file.readAll().split('\n') : QList<QByteArray>()) {
        const QString row = QString::fromUtf8(line).section(QLatin1Char('#'), 0, 0);
        if (!row.isEmpty())
            rows.append(row.split(QLatin1Char(';')));
    }
    return rows;
}

} // namespace

class DataTablesTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { KImage::init(nullptr); }
    void cleanupTestCase() { KImage::exit(); }
    void camera_data();
    void camera();
    void lens_data();
    void lens();
    void missingTables();
    void firstUseByManyThreads();
    void everyCameraIsFound();
    void everyLensIsFound();
};

void DataTablesTest::camera_data()
{
    QTest::addColumn<QString>("make");
    QTest::addColumn<QString>("model");
    QTest::addColumn<float>("scale");
    const auto row = [](const char *name, const char *make, const char *model, float scale) {
        QTest::newRow(name) << QString::fromLatin1(make) << QString::fromLatin1(model) << scale;
    };
    row("longer name first", "Canon", "Canon PowerShot A400", 7.0F);
    row("shorter name", "CANON INC.", "powershot a40", 6.0F);
    row("another maker's", "Nikon", "A400", -1.0F);
    row("no such camera", "Canon", "PowerShot G1", -1.0F);
    row("picture's name shorter than the row's", "Canon", "A4", -1.0F);
    row("comment behind the cells", "Eyedeas", "S1", 5.5F);
    row("four cells", "Four", "F1", -1.0F);
    row("two cells", "Samsung SM-G920F", "6.511", -1.0F);
    row("scale that is no number", "Bad", "B1", -1.0F);
    row("nothing known", "", "", -1.0F);
}

void DataTablesTest::camera()
{
    QFETCH(QString, make);
    QFETCH(QString, model);
    const OwnTable table("cameras.txt",
                         "stray text # of a line\n\n# comment\nCanon;A400;7\r\nCanon;A40;6\nEyedeas;S1;5.5   # each\n"
                         "Four;F1;2;3\nSamsung SM-G920F;6.511\nBad;B1;abc\nCommented#;C1;2");
    CameraProperties cameras;
    QTEST(cameras.GetSensorSize(make, model), "scale");
}

void DataTablesTest::lens_data()
{
    QTest::addColumn<QString>("make");
    QTest::addColumn<QString>("lensId");
    QTest::addColumn<QString>("names");
    QTest::addColumn<int>("type");
    const auto row = [](const char *name, const char *make, const char *lensId, const char *names, int type) {
        QTest::newRow(name) << QString::fromLatin1(make) << QString::fromLatin1(lensId) << QString::fromLatin1(names)
                            << type;
    };
    row("fisheye, blank behind the type", "NIKON CORPORATION", "8 8 121 3.6 3.6", "Fish", 1);
    row("type cut to its whole part", "canon", "24 24 95", "Shift", 2);
    row("no type", "Canon", "50 50 1", "Plain", 0);
    row("type that is no number", "Canon", "60 60 2", "Odd", 0);
    row("part of several, in the table's order", "Canon", "10 2", "Wide,Wider", -1);
    row("two fisheyes of one identifier", "Canon", "15 15 13", "A,B", -1);
    row("nothing fits", "Canon", "99 99", "", -1);
    row("all of the brand", "Nikon", "", "Fish", 1);
    row("five cells, two cells", "Many", "", "", -1);
    row("cells as they stand", " Padded ", " 1 ", " Blank ", 0);
}

void DataTablesTest::lens()
{
    QFETCH(QString, make);
    QFETCH(QString, lensId);
    QFETCH(QString, names);
    const OwnTable table("lensid.txt",
                         "8 8 121 3.6 3.6;Nikon;Fish;1 \n24 24 95;Canon;Shift;2.9\n50 50 1;Canon;Plain\n"
                         "60 60 2;Canon;Odd;x\n10 20 137;Canon;Wide;0\n10 22 235;Canon;Wider;0 # widest\n"
                         "15 15 13;Canon;A;1\n15 15 13;Canon;B;1\n1;Many;C;0;0\n1;Many\n 1 ; Padded ; Blank ;0\n");
    LensIDProperties read;
    read.Initialize();
    LensIDProperties lenses(read); // as lookups do
    QCOMPARE(lenses.findLensList(make, lensId).join(QLatin1Char(',')), names);
    QTEST(lenses.isFisheyLens(make, lensId), "type");
}

void DataTablesTest::missingTables()
{
    const OwnTable none("other.txt", QByteArray());
    CameraProperties cameras;
    QCOMPARE(cameras.GetSensorSize(QStringLiteral("Canon"), QStringLiteral("A400")), -1.0F);
    LensIDProperties lenses;
    lenses.Initialize();
    QCOMPARE(lenses.isFisheyLens(QStringLiteral("Canon"), QString()), -1);
}

void DataTablesTest::firstUseByManyThreads()
{
    const OwnTable table("lensid.txt", QByteArray("1;Canon;One;1\n") + QByteArray(200000, '#'));
    LensIDProperties lenses;
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i)
        threads.emplace_back([&lenses] { lenses.Initialize(); });
    for (std::thread &thread : threads)
        thread.join();
    QCOMPARE(lenses.isFisheyLens(QStringLiteral("Canon"), QStringLiteral("1")), 1); // two readings would give two rows
}

void DataTablesTest::everyCameraIsFound()
{
    const QVector<QStringList> rows = RowsOf("Data:cameras.txt");
    QVERIFY(rows.size() >= 2000);
    CameraProperties cameras;
    for (const QStringList &row : rows) {
        const QByteArray what = row.join(QLatin1Char(';')).toUtf8();
        QVERIFY2(row.size() == 3 && !row[0].isEmpty() && !row[1].isEmpty(), what);
        const float scale = row[2].toFloat();
        QVERIFY2(scale > 0.3F && scale < 20.0F, what); // medium format to telephones
        QVERIFY2(cameras.GetSensorSize(row[0], row[1]) == scale, what);
    }
    QCOMPARE(cameras.GetSensorSize(QStringLiteral("Apple"), QStringLiteral("iPhone 7")), 6.9F);
    QCOMPARE(cameras.GetSensorSize(QStringLiteral("Apple"), QStringLiteral("iPhone 4")), 5.9F);
    // Sensors of 23.7 x 15.6 and 22.2 x 14.8 mm.
    QVERIFY(qAbs(cameras.GetSensorSize(QStringLiteral("NIKON CORPORATION"), QStringLiteral("NIKON D70")) - 1.525F)
            < 0.01F);
    QVERIFY(qAbs(cameras.GetSensorSize(QStringLiteral("Canon"), QStringLiteral("Canon EOS 40D")) - 1.62F) < 0.01F);
}

void DataTablesTest::everyLensIsFound()
{
    const QVector<QStringList> rows = RowsOf("Data:lensid.txt");
    QVERIFY(rows.size() >= 500);
    LensIDProperties lenses;
    lenses.Initialize();
    int fisheyes = 0, shifts = 0, alone = 0;
    for (const QStringList &row : rows) {
        const QByteArray what = row.join(QLatin1Char(';')).toUtf8();
        const bool isNikon = row.value(1) == QLatin1String("Nikon");
        QVERIFY2(row.size() == 4 && (isNikon || row[1] == QLatin1String("Canon")), what);
        const int numbers = row[0].split(QLatin1Char(' ')).size();
        QVERIFY2(isNikon ? numbers == 5 : numbers == 2 || numbers == 3, what);
        QCOMPARE(lenses.findLensList(row[1], row[0]).count(row[2]), 1);
        const int type = lenses.isFisheyLens(row[1], row[0]);
        QVERIFY2(type == row[3].toInt() || type == -1, what); // an identifier may be a part of another
        alone += type != -1;
        fisheyes += type == 1;
        shifts += type == 2;
    }
    QVERIFY(alone > rows.size() * 9 / 10);
    QVERIFY2(fisheyes >= 20 && shifts >= 10, qPrintable(QStringLiteral("%1 %2").arg(fisheyes).arg(shifts)));
}

QTEST_GUILESS_MAIN(DataTablesTest)
#include "DataTables_test.moc"
