// Tests of unusable pictures, profiles and folders: one message per bad picture, and no other effect.
#include "Case.h"
#include "ExpectedText.h"
#include "ProgramTest.h"
#include "Table.h"

#include <QDir>
#include <QImage>

#include <functional>
#include <sys/resource.h>
#include <sys/stat.h>

namespace {

using Prepare = std::function<void(const QString &path)>;

Prepare Bytes(const QByteArray &bytes)
{
    return [bytes](const QString &path) { WriteFile(path, bytes); };
}

/// Returns a function that copies the file @p name, truncated to @p size bytes, within its folder.
Prepare Copy(const char *name, int size, QFile::Permissions rights = QFile::ReadOwner)
{
    return [=](const QString &path) {
        WriteFile(path, ReadFile(QFileInfo(path).dir().filePath(QString::fromLatin1(name))).left(size));
        QFile::setPermissions(path, rights);
    };
}

void Nothing(const QString &) { }

void MakeFolder(const QString &path)
{
    QDir().mkpath(path);
}

constexpr int kWhole = 1 << 20;
const QFile::Permissions kNobody;

} // namespace

Q_DECLARE_METATYPE(Prepare)

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
    QTest::addColumn<QString>("line");    // arguments; m is the bad file
    QTest::addColumn<QStringList>("bad"); // pictures that fail
    QTest::addColumn<QString>("message");
    QTest::addColumn<Prepare>("prepare");
    const auto row = [](const char *kind, const char *name, const QString &line, const QStringList &bad,
                        const char *message, const Prepare &prepare) {
        QTest::addRow("%s: %s", kind, name) << line << bad << QString::fromLatin1(message) << prepare;
    };
    const auto picture = [&](const char *name, const char *message, const Prepare &prepare) {
        row("picture", name, "--profile p.lcp a.jpg m b.jpg"_s, {"m"_s}, message, prepare);
    };
    picture("missing", "no such file", Nothing);
    picture("dangling link", "link", [](const QString &path) { QFile::link("nowhere"_s, path); });
    picture("folder", "is a folder", MakeFolder);
    picture("empty", "empty", Bytes({}));
    picture("text", "has an unknown format; known formats: ", Bytes("Dear diary, today I took no picture."));
    picture("gray", "gray pictures are not supported",
            [](const QString &path) { QImage(60, 40, QImage::Format_Grayscale8).save(path, "JPG"); });
    picture("pipe", "is not a regular file, expected a picture",
            [](const QString &path) { mkfifo(QFile::encodeName(path), 0600); });
    picture("unreadable", "cannot be read", Copy("a.jpg", kWhole, kNobody));
    picture("half a JPEG", "the file ends early", Copy("a.jpg", 2500));
    picture("head of a JPEG", "", Copy("a.jpg", 20));
    picture("half a TIFF", "", Copy("b_corrected.tiff", 2500));

    row("picture", "companion", "--profile p.lcp a.jpg m.thm b.jpg"_s, {"m.thm"_s},
        "is not recognized as a picture: a companion file, or damaged",
        [](const QString &path) { QFile::copy(QFileInfo(path).path() + "/a.jpg"_s, path + ".thm"_s); });
    row("picture", "above --max-megapixels", "--max-megapixels 1 --profile p.lcp a.jpg m b.jpg"_s, {"m"_s},
        "1001 x 1000 pixels are 1.001 megapixels; at most 1 are allowed",
        [](const QString &path) { QImage(1001, 1000, QImage::Format_RGB32).save(path, "JPG"); });

    const auto profile = [&](const char *name, const Prepare &prepare) {
        row("profile", name, "--profile m a.jpg b.jpg"_s, {"a.jpg"_s, "b.jpg"_s}, "profile \"m\": ", prepare);
    };
    const QByteArray whole = ProfileText({true, false, false}, 60, 40);
    const int model = whole.indexOf("<stCamera:PerspectiveModel");
    QByteArray entryless = whole, modelless = whole;
    entryless.replace("rdf:li", "rdf:other");
    modelless.remove(model, whole.indexOf("</rdf:li>") - model);
    profile("missing", Nothing);
    profile("folder", MakeFolder);
    profile("empty", Bytes({}));
    profile("text", Bytes("no profile\n"));
    profile("truncated before the model", Bytes(whole.left(model)));
    profile("truncated inside the model", Bytes(whole.left(model + 120)));
    profile("attribute form",
            Bytes(whole.left(whole.indexOf("<rdf:li"))
                  + "<rdf:li><rdf:Description stCamera:ImageWidth=\"60\" stCamera:ImageLength=\"40\">"
                    "<stCamera:PerspectiveModel stCamera:FocalLengthX=\"1\" stCamera:RadialDistortParam1=\"0.05\"/>"
                    "</rdf:Description></rdf:li>"
                  + whole.mid(whole.indexOf("</rdf:Seq>"))));
    profile("no entry", Bytes(entryless));
    profile("no model", Bytes(modelless));
    profile("picture", Copy("a.jpg", kWhole));
    profile("unreadable", Copy("p.lcp", kWhole, kNobody));

    const auto folder = [&](const char *name, const char *deeper, const Prepare &prepare) {
        row("folder", name, "--profile p.lcp a.jpg b.jpg -o m"_s + QLatin1String(deeper), {"a.jpg"_s, "b.jpg"_s}, "/m",
            prepare);
    };
    folder("a file", "", Bytes("file"));
    folder("below a file", "/deeper", Bytes("file"));
    folder("read-only", "", [](const QString &path) {
        MakeFolder(path);
        QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    });
}

void BadInputTest::refused()
{
    QFETCH(QString, line);
    QFETCH(QStringList, bad);
    QFETCH(QString, message);
    QFETCH(Prepare, prepare);
    m_run->beforeStart = RespectPermissions;
    QCOMPARE(Run("correct --plain --profile p.lcp b.jpg"_s).exitCode, 0); // its output is used below
    prepare(Path("m"_s));
    const QStringList before = Names(m_dir->path());
    const QByteArray output = ReadFile(Path("b_corrected.tiff"_s));

    const ProgramResult result = Run("correct --plain -j 1 --overwrite "_s + line);
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.errorLines.size() == bad.size(), result.error);
    for (int i = 0; i < bad.size(); ++i) {
        const QString &reported = result.errorLines.at(i);
        QVERIFY2(reported.startsWith("vitrelux: %1: "_s.arg(bad[i])), qPrintable(reported));
        QVERIFY2(reported.contains(message) && !reported.contains("GFL"_s), qPrintable(reported));
        QVERIFY2(reported.count(m_dir->path()) <= 1, qPrintable(reported)); // the folder's path at most once
    }
    const bool othersDone = bad.size() == 1;
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
