// Tests that the installed files work after they were moved: for a host that was built with only these files, and for
// the program.
#include "Case.h"
#include "FittedFiles.h"
#include "ProgramTest.h"
#include "TiffRaster.h"

#include <QDir>

class MinimalHost_test : public ProgramTest {
    Q_OBJECT

private Q_SLOTS:
    void sameFileAsTheProgram();
    void fitted();
    void failsWithAMessage();
    void partsAreFoundNextToTheProgram();

private:
    ProgramResult RunIn(const QString &program, const QString &line)
    {
        m_run->program = program;
        m_run->Set("HOME", Path("home"_s)); // where the kernels of a host keep settings and data
        return Run(line);
    }
};

void MinimalHost_test::sameFileAsTheProgram()
{
    const ProgramResult host = RunIn(QStringLiteral(MINIMAL_HOST), "a.jpg p.lcp"_s);
    QVERIFY2(host.exitCode == 0, host.error);
    // Only the last line is compared, because the tool kernel may print notes about the CPU before it.
    QCOMPARE(QString::fromUtf8(host.output).trimmed().split(QLatin1Char('\n')).last(), Path("a_corrected.tiff"_s));
    const TiffRaster picture = ReadTiff(Path("a_corrected.tiff"_s));
    QCOMPARE(QSize(picture.width, picture.height), QSize(60, 40));
    QCOMPARE(picture.bits, 8);

    // With only one of the corrections, the pictures must differ; otherwise equality would prove nothing.
    for (const QString &switches : {"--distortion --vignetting"_s, "--distortion"_s, "--vignetting"_s}) {
        const Case named(switches);
        const ProgramResult program =
            RunIn(QStringLiteral(VITRELUX_PROGRAM),
                  "correct --plain --overwrite --profile p.lcp -o program a.jpg "_s + switches);
        QVERIFY2(program.exitCode == 0, program.error);
        const bool same = ReadFile(Path("a_corrected.tiff"_s)) == ReadFile(Path("program/a_corrected.tiff"_s));
        QCOMPARE(same, switches.count(QLatin1Char(' ')) == 1);
        QCOMPARE(picture.values == ReadTiff(Path("program/a_corrected.tiff"_s)).values, same);
    }
}

/// A profile with one entry corrects a picture of any size. If the host can't choose a profile, it prints the reason
/// and writes nothing.
void MinimalHost_test::fitted()
{
    WriteJpeg(Path("b.jpg"_s), 45, 30);
    const ProgramResult none = RunIn(QStringLiteral(MINIMAL_HOST), "--fitted b.jpg"_s);
    QVERIFY2(none.exitCode == 1 && none.error.contains("the picture doesn't say which camera and lens took it"),
             none.error);
    QVERIFY(!QFile::exists(Path("b_corrected.tiff"_s)));

    WriteMetadata(Path("b.jpg"_s), {kLens, "50/1", "8/1"});
    WriteFile(Path("q.lcp"_s), Profile(kLens));
    const ProgramResult fitted = RunIn(QStringLiteral(MINIMAL_HOST), "--fitted b.jpg q.lcp"_s);
    QVERIFY2(fitted.exitCode == 0, fitted.error);
    QVERIFY2(fitted.output.contains("Profile: " + Path("q.lcp"_s).toUtf8() + '\n'), fitted.output);
    QVERIFY2(fitted.output.contains("\nDone: distortion"), fitted.output);
    QCOMPARE(ReadTiff(Path("b_corrected.tiff"_s)).channels, 3);
}

void MinimalHost_test::failsWithAMessage()
{
    const char *const rows[][2] = {{"", "Usage"},
                                   {"a.jpg", "Usage"},
                                   {"--fitted a.jpg none.lcp", "none.lcp is not a readable profile"},
                                   {"none.jpg p.lcp", "none.jpg\" cannot be loaded"},
                                   {"p.lcp p.lcp", "p.lcp\" cannot be loaded"},
                                   {". p.lcp", "cannot be loaded"},
                                   {"a.jpg none.lcp", "none.lcp is not a readable profile"},
                                   {"a.jpg a.jpg", "a.jpg is not a readable profile"}};
    for (const auto &[line, message] : rows) {
        const Case named(line);
        const ProgramResult result = RunIn(QStringLiteral(MINIMAL_HOST), QString::fromLatin1(line));
        QCOMPARE(result.exitCode, 1);
        QVERIFY2(result.error.contains(message), result.error);
        QCOMPARE(Names(m_dir->path()).filter("tiff"_s), QStringList());
    }
}

/// If a library is missing, the program must not load the copy in the build folder instead.
void MinimalHost_test::partsAreFoundNextToTheProgram()
{
    const QString layer = "libvitrelux-imagefile.so"_s, plugin = "libKVitrelux.so"_s;
    const std::pair<QStringList, QString> rows[] = {{{plugin}, layer}, {{layer}, plugin}, {{layer, plugin}, {}}};
    for (const auto &[parts, missed] : rows) {
        const Case named(parts);
        init();
        QVERIFY(QDir().mkpath(Path("bin"_s)) && QDir().mkpath(Path("lib/vitrelux"_s)));
        QVERIFY(QFile::copy(QStringLiteral(VITRELUX_PROGRAM), Path("bin/vitrelux"_s)));
        for (const QString &part : parts)
            QVERIFY(
                QFile::copy(QStringLiteral(VITRELUX_PREFIX "/lib/vitrelux/") + part, Path("lib/vitrelux/"_s + part)));
        const ProgramResult result = RunIn(Path("bin/vitrelux"_s), "correct --plain --profile p.lcp a.jpg"_s);
        QVERIFY2((result.exitCode == 0) == missed.isEmpty(), result.error);
        QVERIFY2(QString::fromUtf8(result.error).contains(missed), result.error);
        QCOMPARE(QFile::exists(Path("a_corrected.tiff"_s)), missed.isEmpty());
    }
}

QTEST_GUILESS_MAIN(MinimalHost_test)
#include "MinimalHost_test.moc"
