// The installed files, used by a host that has nothing else, and by the program from a place it was moved to.
#include "ProgramRun.h"
#include "TiffRaster.h"

#include <QDir>
#include <QTemporaryDir>
#include <QtTest>

namespace {

QString Text(const char *text)
{
    return QString::fromLatin1(text);
}

} // namespace

class MinimalHost_test : public QObject {
    Q_OBJECT

private Q_SLOTS:
    void init();
    void sameFileAsTheProgram_data();
    void sameFileAsTheProgram();
    void failsWithAMessage_data();
    void failsWithAMessage();
    void partsAreFoundBesideTheProgram_data();
    void partsAreFoundBesideTheProgram();

private:
    QString Path(const char *name) const { return m_dir->filePath(Text(name)); }
    QByteArray Content(const char *name) const;
    ProgramResult Run(const QString &program, const QStringList &arguments) const;

    std::unique_ptr<QTemporaryDir> m_dir; // holds photo.jpg, lens.lcp and a home folder
};

void MinimalHost_test::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(QFile::copy(Text(VITRELUX_SAMPLES "/facade.jpg"), Path("photo.jpg")));
    QVERIFY(QFile::copy(Text(VITRELUX_SAMPLES "/facade.lcp"), Path("lens.lcp")));
    QVERIFY(QDir(m_dir->path()).mkdir(Text("home")));
}

QByteArray MinimalHost_test::Content(const char *name) const
{
    QFile file(Path(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

ProgramResult MinimalHost_test::Run(const QString &program, const QStringList &arguments) const
{
    ProgramRun run;
    run.program = program;
    run.Set("HOME", Path("home")); // where the kernels of a host keep settings and data
    return run.Run(arguments);
}

void MinimalHost_test::sameFileAsTheProgram_data()
{
    QTest::addColumn<QStringList>("programSwitches");
    QTest::addColumn<bool>("same");
    QTest::newRow("both corrections") << QStringList{Text("--distortion"), Text("--vignetting")} << true;
    // What the equality would miss if all of them wrote the same picture:
    QTest::newRow("distortion alone") << QStringList{Text("--distortion")} << false;
    QTest::newRow("vignetting alone") << QStringList{Text("--vignetting")} << false;
}

void MinimalHost_test::sameFileAsTheProgram()
{
    QFETCH(QStringList, programSwitches);
    QFETCH(bool, same);

    const ProgramResult host = Run(Text(MINIMAL_HOST), {Path("photo.jpg"), Path("lens.lcp")});
    QVERIFY2(host.exitCode == 0, host.error);
    // The last line: the tool kernel prints what it finds odd about processors before.
    QCOMPARE(QString::fromUtf8(host.output).trimmed().split(Text("\n")).last(), Path("photo_corrected.tiff"));
    const TiffRaster picture = ReadTiff(Path("photo_corrected.tiff"));
    QCOMPARE(picture.width, 2400);
    QCOMPARE(picture.height, 1600);
    QCOMPARE(picture.bits, 8);

    QVERIFY(QDir(m_dir->path()).mkdir(Text("program")));
    const ProgramResult program =
        Run(Text(VITRELUX_PROGRAM),
            QStringList{Text("correct")} + programSwitches
                + QStringList{Text("--profile"), Path("lens.lcp"), Text("-o"), Path("program"), Path("photo.jpg")});
    QVERIFY2(program.exitCode == 0, program.error);
    const TiffRaster other = ReadTiff(Path("program/photo_corrected.tiff"));
    QCOMPARE(picture.values == other.values, same);
    QCOMPARE(Content("photo_corrected.tiff") == Content("program/photo_corrected.tiff"), same);
}

void MinimalHost_test::failsWithAMessage_data()
{
    QTest::addColumn<QStringList>("names"); // of the arguments, in the folder
    QTest::addColumn<QString>("message");
    const QString photo = Text("photo.jpg"), profile = Text("lens.lcp");
    QTest::newRow("no arguments") << QStringList() << Text("Usage");
    QTest::newRow("no such picture") << QStringList{Text("none.jpg"), profile} << Text("none.jpg\" cannot be loaded");
    QTest::newRow("picture is none") << QStringList{profile, profile} << Text("lens.lcp\" cannot be loaded");
    QTest::newRow("picture is a folder") << QStringList{Text("."), profile} << Text("cannot be loaded");
    QTest::newRow("no such profile") << QStringList{photo, Text("none.lcp")}
                                     << Text("none.lcp is not a readable profile");
    QTest::newRow("profile is none") << QStringList{photo, photo} << Text("photo.jpg is not a readable profile");
}

void MinimalHost_test::failsWithAMessage()
{
    QFETCH(QStringList, names);
    QFETCH(QString, message);

    QStringList arguments;
    for (const QString &name : qAsConst(names))
        arguments << m_dir->filePath(name);
    const ProgramResult result = Run(Text(MINIMAL_HOST), arguments);

    QCOMPARE(result.exitCode, 1);
    QVERIFY2(QString::fromUtf8(result.error).contains(message), result.error);
    QCOMPARE(QDir(m_dir->path()).entryList(QDir::Files), (QStringList{Text("lens.lcp"), Text("photo.jpg")}));
}

void MinimalHost_test::partsAreFoundBesideTheProgram_data()
{
    QTest::addColumn<QStringList>("parts"); // that are there, below the prefix
    QTest::addColumn<QString>("missed");
    const QString layer = Text("libvitrelux-imagefile.so"), plugin = Text("libKVitrelux.so");
    QTest::newRow("nothing") << QStringList() << layer;
    QTest::newRow("plug-in alone") << QStringList{plugin} << layer;
    QTest::newRow("image-file layer alone") << QStringList{layer} << plugin;
    QTest::newRow("both") << QStringList{layer, plugin} << QString();
}

/// Those of the build folder would do as well, if anything remembered them.
void MinimalHost_test::partsAreFoundBesideTheProgram()
{
    QFETCH(QStringList, parts);
    QFETCH(QString, missed);

    QDir home(m_dir->path());
    QVERIFY(home.mkpath(Text("bin")) && home.mkpath(Text("lib/vitrelux")));
    QVERIFY(QFile::copy(Text(VITRELUX_PROGRAM), Path("bin/vitrelux")));
    for (const QString &part : qAsConst(parts)) {
        const QString place = Text("/lib/vitrelux/") + part;
        QVERIFY(QFile::copy(Text(VITRELUX_PREFIX) + place, m_dir->path() + place));
    }
    const ProgramResult result =
        Run(Path("bin/vitrelux"), {Text("correct"), Text("--profile"), Path("lens.lcp"), Path("photo.jpg")});

    QVERIFY2((result.exitCode == 0) == missed.isEmpty(), result.error);
    QVERIFY2(QString::fromUtf8(result.error).contains(missed), result.error);
    QCOMPARE(QFile::exists(Path("photo_corrected.tiff")), missed.isEmpty());
}

QTEST_GUILESS_MAIN(MinimalHost_test)
#include "MinimalHost_test.moc"
