// Tests of unusable pictures, profiles and folders: one message per bad picture, and no other effect.
#include "Case.h"
#include "ExpectedText.h"
#include "ProgramTest.h"
#include "Table.h"

#include <QImage>

#include <sys/resource.h>
#include <utility>

class BadInputTest : public ProgramTest {
    Q_OBJECT
private Q_SLOTS:
    void refused_data();
    void refused();
    void hugeClaims();
    void fileSizeLimit();
    void otherSizeIsNoted();
};

void BadInputTest::refused_data()
{
    for (const char *column : {"line", "bad", "message", "command"}) // see the table
        QTest::addColumn<QString>(column);
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_TABLES "/bad-input.tsv")))
        QTest::newRow(qPrintable(row[0])) << row[1] << row[2] << row[3] << row[4];
}

void BadInputTest::refused()
{
    QFETCH(QString, line);
    QFETCH(QString, bad);
    QFETCH(QString, message);
    QFETCH(QString, command);
    QCOMPARE(Run("correct --plain --profile p.lcp b.jpg"_s).exitCode, 0); // its output is used below
    WriteFile(Path("whole.lcp"_s), ProfileText({true, false, false}, 60, 40));
    QVERIFY(QImage(60, 40, QImage::Format_Grayscale8).save(Path("gray.jpg"_s)));
    QVERIFY(QImage(1001, 1000, QImage::Format_RGB32).save(Path("large.jpg"_s)));
    const QString program = std::exchange(m_run->program, "sh"_s);
    QCOMPARE(m_run->Run({"-c"_s, command}).exitCode, 0);
    m_run->program = program;
    m_run->beforeStart = RespectPermissions;
    const QStringList before = Names(m_dir->path());
    const QByteArray output = ReadFile(Path("b_corrected.tiff"_s));

    const ProgramResult result = Run("correct --plain -j 1 --overwrite "_s + line);
    QCOMPARE(result.exitCode, 1);
    const QStringList names = bad.split(QLatin1Char(' '));
    QVERIFY2(result.errorLines.size() == names.size(), result.error);
    for (int i = 0; i < names.size(); ++i) {
        const QString &reported = result.errorLines.at(i);
        QVERIFY2(reported.startsWith("vitrelux: %1: "_s.arg(names[i])), qPrintable(reported));
        QVERIFY2(reported.contains(message) && !reported.contains("GFL"_s), qPrintable(reported));
        QVERIFY2(reported.count(m_dir->path()) <= 1, qPrintable(reported)); // the folder's path at most once
    }
    const bool othersDone = names.size() == 1;
    QCOMPARE(QString::fromUtf8(result.output),
             othersDone ? Path("a_corrected.tiff\n"_s) + Path("b_corrected.tiff\n"_s) : QString());
    const QStringList made(othersDone ? QStringList("a_corrected.tiff"_s) : QStringList());
    QCOMPARE(Names(m_dir->path()).toSet(), (before + made).toSet());
    QCOMPARE(ReadFile(Path("b_corrected.tiff"_s)), output);
    if (line.contains("--profile m"_s)) // the command `profile` reports it as unusable too
        QCOMPARE(Run("profile --plain m"_s).exitCode, 1);
}

/// Files of a few kilobytes that claim 30,000 x 30,000 pixels (other large squares for WebP and PNG) are refused when
/// memory is limited to 1 GiB.
void BadInputTest::hugeClaims()
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    QSKIP("sanitizers need the address space");
#endif
    QStringList names;
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_TABLES "/huge-claims.tsv"))) {
        QByteArray bytes = ReadFile(QStringLiteral(VITRELUX_SEEDS "/") + row[0]);
        const QByteArray found = QByteArray::fromHex(row[1].toLatin1()), sides = QByteArray::fromHex(row[3].toLatin1());
        QVERIFY2(bytes.contains(found), qPrintable(row[0]));
        for (int at = bytes.indexOf(found); at >= 0; at = bytes.indexOf(found, at + 1))
            bytes.replace(at + row[2].toInt(), sides.size(), sides);
        names << row[0].left(4) + QString::number(names.size()) + row[0].section(QLatin1Char('.'), 1);
        WriteFile(Path(names.last()), bytes);
    }
    m_run->beforeStart = [] {
        const rlimit limit = {rlim_t(1) << 30, rlim_t(1) << 30};
        setrlimit(RLIMIT_AS, &limit);
    };
    const ProgramResult result = Run("correct --plain -j 2 --profile p.lcp a.jpg "_s + names.join(QLatin1Char(' ')));
    QVERIFY2(result.exitCode == 1 && result.errorLines.size() == names.size(), result.error);
    for (const QString &name : names) {
        const QStringList reported = result.errorLines.filter("vitrelux: %1: "_s.arg(name));
        QVERIFY2(reported.size() == 1 && reported[0].contains(": the file "_s),
                 qPrintable(name + QString::fromUtf8(result.error)));
    }
    QCOMPARE(Names(m_dir->path()).filter("tiff"_s), QStringList("a_corrected.tiff"_s));
}

void BadInputTest::fileSizeLimit()
{
    WriteFile(Path("b_corrected.tiff"_s), "old");
    WriteJpeg(Path("tiny.jpg"_s), 4, 3);
    m_run->beforeStart = [] {
        const rlimit limit = {4096, 4096}; // the output of a.jpg is over 6 kB, that of tiny.jpg under 1 kB
        setrlimit(RLIMIT_FSIZE, &limit);
    };
    m_run->Set("GCOV_PREFIX", Path("counts"_s)); // the limit would damage the counts of a coverage build
    const ProgramResult result = Run("correct --plain --overwrite --profile p.lcp a.jpg b.jpg tiny.jpg"_s);
    QCOMPARE(result.exitCode, 1);
    // A note: tiny.jpg doesn't have the profile's size.
    QVERIFY2(result.errorLines.filter("note: "_s).size() == 1, result.error);
    QVERIFY2(result.errorLines.size() == 3 && !result.error.contains(".vitrelux-"), result.error);
    QCOMPARE(ReadFile(Path("b_corrected.tiff"_s)), QByteArray("old"));
    QCOMPARE(Names(m_dir->path()).filter("tiff"_s), QStringList({"b_corrected.tiff"_s, "tiny_corrected.tiff"_s}));
}

/// Portrait pictures are rotated to landscape, portrait profiles aren't.
void BadInputTest::otherSizeIsNoted()
{
    for (const QByteArray &text : ExpectedText("width and height of a picture and a profile").trimmed().split('\n')) {
        const Case named(text);
        const QByteArrayList sizes = text.split(' ');
        WriteJpeg(Path("a.jpg"_s), sizes[0].toInt(), sizes[1].toInt());
        WriteFile(Path("p.lcp"_s), ProfileText({}, sizes[2].toInt(), sizes[3].toInt()));
        const ProgramResult result = Run("correct --plain --overwrite --profile p.lcp a.jpg"_s);
        QCOMPARE(result.exitCode, 0);
        const int at = text.indexOf("has ");
        QCOMPARE(result.errorLines,
                 at < 0 ? QStringList() : QStringList("vitrelux: a.jpg: note: "_s + QString::fromLatin1(text.mid(at))));
    }
}

QTEST_GUILESS_MAIN(BadInputTest)
#include "BadInput_test.moc"
