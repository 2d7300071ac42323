// Tests of the camera and lens tables: parsing, looking up rows, and finding each row of the real tables.
#include "CameraProperties.h"
#include "Case.h"
#include "Files.h"
#include "KImage.h"
#include "LensIDProperties.h"
#include "Table.h"
#include "Threads.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

namespace {

/// Table that replaces the real ones during its lifetime.
class TestTable {
public:
    TestTable(const char *name, const QByteArray &text)
    {
        WriteFile(m_folder.filePath(QLatin1String(name)), text);
        QDir::setSearchPaths(QStringLiteral("Data"), {m_folder.path()});
    }
    ~TestTable() { QDir::setSearchPaths(QStringLiteral("Data"), {QStringLiteral(":/Data")}); }

private:
    QTemporaryDir m_folder;
};

/// Returns the rows of a real table, parsed independently.
QVector<QStringList> RowsOf(const char *name)
{
    QVector<QStringList> rows;
    for (const QByteArray &line : ReadFile(QString::fromLatin1(name)).split('\n')) {
        const QString row = QString::fromUtf8(line).section(QLatin1Char('#'), 0, 0);
        if (!row.isEmpty())
            rows.append(row.split(QLatin1Char(';')));
    }
    return rows;
}

} // namespace

class tst_DataTables : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { KImage::init(nullptr); }
    void cleanupTestCase() { KImage::exit(); }
    void camera();
    void lens();
    void missingTables();
    void firstUseByManyThreads();
    void everyCameraIsFound();
    void everyLensIsFound();
};

void tst_DataTables::camera()
{
    const TestTable table("cameras.txt",
                          "stray text # of a line\n\n# comment\nCanon;A400;7\r\nCanon;A40;6\nEyedeas;S1;5.5   # each\n"
                          "Four;F1;2;3\nSamsung SM-G920F;6.511\nBad;B1;abc\nCommented#;C1;2");
    CameraProperties cameras;
    for (const QStringList &row : ReadTable(QStringLiteral(CAMERA_LOOKUPS))) {
        const Case named(row);
        QCOMPARE(cameras.GetSensorSize(row[0], row[1]), row[2].toFloat());
    }
}

void tst_DataTables::lens()
{
    const TestTable table("lensid.txt",
                          "8 8 121 3.6 3.6;Nikon;Fish;1 \n24 24 95;Canon;Shift;2.9\n50 50 1;Canon;Plain\n"
                          "60 60 2;Canon;Odd;x\n10 20 137;Canon;Wide;0\n10 22 235;Canon;Wider;0 # widest\n"
                          "15 15 13;Canon;A;1\n15 15 13;Canon;B;1\n1;Many;C;0;0\n1;Many\n 1 ; Padded ; Blank ;0\n");
    LensIDProperties read;
    read.Initialize();
    LensIDProperties lenses(read); // lookups use copies
    for (const QStringList &row : ReadTable(QStringLiteral(LENS_LOOKUPS))) {
        const Case named(row);
        QCOMPARE(lenses.findLensList(row[0], row[1]).join(QLatin1Char(',')), row[2]);
        QCOMPARE(lenses.isFisheyLens(row[0], row[1]), row[3].toInt());
    }
}

void tst_DataTables::missingTables()
{
    const TestTable none("other.txt", QByteArray());
    CameraProperties cameras;
    QCOMPARE(cameras.GetSensorSize(QStringLiteral("Canon"), QStringLiteral("A400")), -1.0F);
    LensIDProperties lenses;
    lenses.Initialize();
    QCOMPARE(lenses.isFisheyLens(QStringLiteral("Canon"), QString()), -1);
}

void tst_DataTables::firstUseByManyThreads()
{
    const TestTable table("lensid.txt", QByteArray("1;Canon;One;1\n") + QByteArray(200000, '#'));
    LensIDProperties lenses;
    InThreads(4, [&lenses](int) { lenses.Initialize(); });
    QCOMPARE(lenses.isFisheyLens(QStringLiteral("Canon"), QStringLiteral("1")), 1); // reading twice would give two rows
}

void tst_DataTables::everyCameraIsFound()
{
    const QVector<QStringList> rows = RowsOf("Data:cameras.txt");
    QVERIFY(rows.size() >= 2000);
    CameraProperties cameras;
    for (const QStringList &row : rows) {
        const QByteArray what = row.join(QLatin1Char(';')).toUtf8();
        QVERIFY2(row.size() == 3 && !row[0].isEmpty() && !row[1].isEmpty(), what);
        const float scale = row[2].toFloat();
        QVERIFY2(scale > 0.3F && scale < 20.0F, what); // from medium format to phones
        QVERIFY2(cameras.GetSensorSize(row[0], row[1]) == scale, what);
    }
    QCOMPARE(cameras.GetSensorSize(QStringLiteral("Apple"), QStringLiteral("iPhone 7")), 6.9F);
    QCOMPARE(cameras.GetSensorSize(QStringLiteral("Apple"), QStringLiteral("iPhone 4")), 5.9F);
    // Sensors of 23.7 x 15.6 and 22.2 x 14.8 mm.
    QVERIFY(qAbs(cameras.GetSensorSize(QStringLiteral("NIKON CORPORATION"), QStringLiteral("NIKON D70")) - 1.525F)
            < 0.01F);
    QVERIFY(qAbs(cameras.GetSensorSize(QStringLiteral("Canon"), QStringLiteral("Canon EOS 40D")) - 1.62F) < 0.01F);
}

void tst_DataTables::everyLensIsFound()
{
    const QVector<QStringList> rows = RowsOf("Data:lensid.txt");
    QVERIFY(rows.size() >= 500);
    LensIDProperties lenses;
    lenses.Initialize();
    int fisheyes = 0, shifts = 0, alone = 0;
    for (const QStringList &row : rows) {
        const Case named(row);
        const bool isNikon = row.value(1) == QLatin1String("Nikon");
        QVERIFY(row.size() == 4 && (isNikon || row[1] == QLatin1String("Canon")));
        const int numbers = row[0].split(QLatin1Char(' ')).size();
        QVERIFY(isNikon ? numbers == 5 : numbers == 2 || numbers == 3);
        QCOMPARE(lenses.findLensList(row[1], row[0]).count(row[2]), 1);
        const int type = lenses.isFisheyLens(row[1], row[0]);
        QVERIFY(type == row[3].toInt() || type == -1); // an identifier may be part of another
        alone += type != -1;
        fisheyes += type == 1;
        shifts += type == 2;
    }
    QVERIFY(alone > rows.size() * 9 / 10);
    QVERIFY2(fisheyes >= 20 && shifts >= 10, qPrintable(QStringLiteral("%1 %2").arg(fisheyes).arg(shifts)));
}

QTEST_GUILESS_MAIN(tst_DataTables)
#include "DataTables_test.moc"
