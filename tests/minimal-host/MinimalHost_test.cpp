// The installed files, used by a host that has nothing else, and by the program from a place it was moved to.
#include "ProgramTest.h"
#include "TiffRaster.h"

#include <QDir>

class MinimalHost_test : public ProgramTest {
    Q_OBJECT

private Q_SLOTS:
    void sameFileAsTheProgram_data();
    void sameFileAsTheProgram();
    void failsWithAMessage_data();
    void failsWithAMessage();
    void partsAreFoundBesideTheProgram_data();
    void partsAreFoundBesideTheProgram();

private:
    ProgramResult RunIn(const QString &program, const QString &line)
    {
        m_run->program = program;
        m_run->Set("HOME", Path("home"_s)); // where the kernels of a host keep settings and data
        return Run(line);
    }
};

void MinimalHost_test::sameFileAsTheProgram_data()
{
    QTest::addColumn<bool>("same");
    QTest::newRow("--distortion --vignetting") << true;
    // What the equality would miss if all of them wrote the same picture:
    QTest::newRow("--distortion") << false;
    QTest::newRow("--vignetting") << false;
}

void MinimalHost_test::sameFileAsTheProgram()
{
    QFETCH(bool, same);
    const ProgramResult host = RunIn(QStringLiteral(MINIMAL_HOST), "a.jpg p.lcp"_s);
    QVERIFY2(host.exitCode == 0, host.error);
    // The last line: the tool kernel prints what it finds odd about processors before.
    QCOMPARE(QString::fromUtf8(host.output).trimmed().split(QLatin1Char('\n')).last(), Path("a_corrected.tiff"_s));
    const TiffRaster picture = ReadTiff(Path("a_corrected.tiff"_s));
    QCOMPARE(QSize(picture.width, picture.height), QSize(60, 40));
    QCOMPARE(picture.bits, 8);

    const ProgramResult program =
        RunIn(QStringLiteral(VITRELUX_PROGRAM),
              "correct --profile p.lcp -o program a.jpg "_s + QLatin1String(QTest::currentDataTag()));
    QVERIFY2(program.exitCode == 0, program.error);
    QCOMPARE(picture.values == ReadTiff(Path("program/a_corrected.tiff"_s)).values, same);
    QCOMPARE(ReadBytes(Path("a_corrected.tiff"_s)) == ReadBytes(Path("program/a_corrected.tiff"_s)), same);
}

void MinimalHost_test::failsWithAMessage_data()
{
    QTest::addColumn<QString>("message");
    QTest::newRow("") << "Usage"_s;
    QTest::newRow("none.jpg p.lcp") << "none.jpg\" cannot be loaded"_s;
    QTest::newRow("p.lcp p.lcp") << "p.lcp\" cannot be loaded"_s;
    QTest::newRow(". p.lcp") << "cannot be loaded"_s;
    QTest::newRow("a.jpg none.lcp") << "none.lcp is not a readable profile"_s;
    QTest::newRow("a.jpg a.jpg") << "a.jpg is not a readable profile"_s;
}

void MinimalHost_test::failsWithAMessage()
{
    QFETCH(QString, message);
    const ProgramResult result = RunIn(QStringLiteral(MINIMAL_HOST), QString::fromLatin1(QTest::currentDataTag()));
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(QString::fromUtf8(result.error).contains(message), result.error);
    QCOMPARE(Names(m_dir->path()).filter("tiff"_s), QStringList());
}

void MinimalHost_test::partsAreFoundBesideTheProgram_data()
{
    QTest::addColumn<QStringList>("parts"); // that are there, below the prefix
    QTest::addColumn<QString>("missed");
    const QString layer = "libvitrelux-imagefile.so"_s, plugin = "libKVitrelux.so"_s;
    QTest::newRow("plug-in alone") << QStringList{plugin} << layer;
    QTest::newRow("image-file layer alone") << QStringList{layer} << plugin;
    QTest::newRow("both") << QStringList{layer, plugin} << QString();
}

/// Those of the build folder would do as well, if anything remembered them.
void MinimalHost_test::partsAreFoundBesideTheProgram()
{
    QFETCH(QStringList, parts);
    QFETCH(QString, missed);
    QVERIFY(QDir().mkpath(Path("bin"_s)) && QDir().mkpath(Path("lib/vitrelux"_s)));
    QVERIFY(QFile::copy(QStringLiteral(VITRELUX_PROGRAM), Path("bin/vitrelux"_s)));
    for (const QString &part : qAsConst(parts))
        QVERIFY(QFile::copy(QStringLiteral(VITRELUX_PREFIX "/lib/vitrelux/") + part, Path("lib/vitrelux/"_s + part)));
    const ProgramResult result = RunIn(Path("bin/vitrelux"_s), "correct --profile p.lcp a.jpg"_s);

    QVERIFY2((result.exitCode == 0) == missed.isEmpty(), result.error);
    QVERIFY2(QString::fromUtf8(result.error).contains(missed), result.error);
    QCOMPARE(QFile::exists(Path("a_corrected.tiff"_s)), missed.isEmpty());
}

QTEST_GUILESS_MAIN(MinimalHost_test)
#include "MinimalHost_test.moc"
