// The program on pictures, profiles and folders that are of no use: one line each, and nothing else happens.
#include "ProgramRun.h"
#include "TestFiles.h"

#include <QDir>
#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

#include <sys/resource.h>
#include <sys/stat.h>

namespace {

using Prepare = std::function<void(const QString &path)>;

QByteArray Half(const QByteArray &bytes)
{
    return bytes.left(bytes.size() / 2);
}

Prepare Bytes(const QByteArray &bytes)
{
    return [bytes](const QString &path) { WriteBytes(path, bytes); };
}

void MakeFolder(const QString &path)
{
    QDir().mkpath(path);
}

void MakeUnreadable(const QString &path)
{
    QVERIFY(QFile::setPermissions(path, QFileDevice::Permissions()));
}

const ProfileModels kDistortionOnly = {true, false, false};
constexpr int kWidth = 60, kHeight = 40;

QString Text(const char *text)
{
    return QString::fromUtf8(text);
}

} // namespace

Q_DECLARE_METATYPE(Prepare)

class BadInputTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void init();
    void badPicture_data();
    void badPicture();
    void badProfile_data();
    void badProfile();
    void noProfile();
    void badFolder_data();
    void badFolder();
    void fileSizeLimit();
    void fullDisk();
    void otherSizeIsNoted_data();
    void otherSizeIsNoted();

private:
    QString Path(const char *name) const { return m_dir->filePath(QString::fromUtf8(name)); }
    QStringList Correct(const QStringList &more) const
    {
        return QStringList{Text("correct"), Text("--profile"), Path("p.lcp")} + more;
    }

    QScopedPointer<QTemporaryDir> m_dir;
};

void BadInputTest::init()
{
    m_dir.reset(new QTemporaryDir);
    WriteJpeg(Path("a.jpg"), kWidth, kHeight);
    WriteJpeg(Path("z.jpg"), kWidth, kHeight);
    WriteBytes(Path("p.lcp"), ProfileText(kDistortionOnly, kWidth, kHeight));
}

void BadInputTest::badPicture_data()
{
    QTest::addColumn<Prepare>("prepare");
    QTest::addColumn<QString>("said");
    const auto copyOf = [](const QString &path, const char *name) {
        return ReadBytes(QFileInfo(path).dir().filePath(Text(name)));
    };
    QTest::newRow("missing") << Prepare([](const QString &) {}) << Text("no such file");
    QTest::newRow("link to nowhere") << Prepare([](const QString &path) { QFile::link(Text("nowhere"), path); })
                                     << Text("link");
    QTest::newRow("folder") << Prepare(MakeFolder) << Text("is a folder");
    QTest::newRow("empty") << Bytes({}) << Text("empty");
    QTest::newRow("text") << Bytes("Dear diary, today I took no picture.") << Text("is of no known format; known are ");
    QTest::newRow("profile") << Bytes(ProfileText(kDistortionOnly, 60, 40))
                             << Text("is of no known format; known are ");
    QTest::newRow("gray") << Prepare([](const QString &path) { QImage(60, 40, QImage::Format_Grayscale8).save(path); })
                          << Text("gray pictures are not supported");
    QTest::newRow("pipe") << Prepare([](const QString &path) { mkfifo(QFile::encodeName(path).constData(), 0600); })
                          << Text("not a regular file");
    QTest::newRow("unreadable") << Prepare([copyOf](const QString &path) {
        WriteBytes(path, copyOf(path, "a.jpg"));
        MakeUnreadable(path);
    }) << Text("cannot be read");
    QTest::newRow("half a JPEG") << Prepare([copyOf](const QString &path) {
        WriteBytes(path, Half(copyOf(path, "a.jpg")));
    }) << QString();
    QTest::newRow("head of a JPEG") << Prepare([copyOf](const QString &path) {
        WriteBytes(path, copyOf(path, "a.jpg").left(20));
    }) << QString();
    QTest::newRow("half a TIFF") << Prepare([copyOf](const QString &path) {
        WriteBytes(path, Half(copyOf(path, "z_corrected.tiff")));
    }) << QString();
}

void BadInputTest::badPicture()
{
    QFETCH(Prepare, prepare);
    QFETCH(QString, said);
    ProgramRun first;
    QCOMPARE(first.Run(Correct({Path("z.jpg")})).exitCode, 0); // gives us a TIFF
    prepare(Path("m.jpg"));
    const QStringList before = Names(m_dir->path());

    ProgramRun run;
    run.beforeStart = RespectPermissions;
    const ProgramResult result = run.Run(Correct({Text("--overwrite"), Path("a.jpg"), Path("m.jpg"), Path("z.jpg")}));
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.errorLines.size() == 1, result.error.constData());
    const QString line = result.errorLines.first();
    QVERIFY2(line.startsWith(Text("vitrelux: %1: ").arg(Path("m.jpg"))), qPrintable(line));
    QVERIFY2(line.contains(said) && !line.contains(Text("GFL")), qPrintable(line));
    QVERIFY2(line.count(m_dir->path()) == 1, qPrintable(line)); // the file is named once
    QCOMPARE(result.output, (Path("a_corrected.tiff") + Text("\n") + Path("z_corrected.tiff") + Text("\n")).toUtf8());
    QCOMPARE(Names(m_dir->path()).toSet(), (before + QStringList(Text("a_corrected.tiff"))).toSet());
}

void BadInputTest::badProfile_data()
{
    QTest::addColumn<Prepare>("prepare");
    const QByteArray whole = ProfileText(kDistortionOnly, kWidth, kHeight);
    const int model = whole.indexOf("<stCamera:PerspectiveModel");
    QByteArray entryless = whole, modelless = whole;
    entryless.replace("rdf:li", "rdf:other");
    modelless.remove(model, whole.indexOf("</rdf:li>") - model);
    const QByteArray attributes = whole.left(whole.indexOf("<rdf:li"))
        + "<rdf:li><rdf:Description stCamera:ImageWidth=\"60\" stCamera:ImageLength=\"40\">"
          "<stCamera:PerspectiveModel stCamera:FocalLengthX=\"1\" stCamera:RadialDistortParam1=\"0.05\"/>"
          "</rdf:Description></rdf:li>"
        + whole.mid(whole.indexOf("</rdf:Seq>"));

    QTest::newRow("missing") << Prepare([](const QString &) {});
    QTest::newRow("folder") << Prepare(MakeFolder);
    QTest::newRow("empty") << Bytes({});
    QTest::newRow("text") << Bytes("no profile\n");
    QTest::newRow("cut before the model") << Bytes(whole.left(model));
    QTest::newRow("cut in the model") << Bytes(whole.left(model + 120));
    QTest::newRow("attribute form") << Bytes(attributes);
    QTest::newRow("no entry") << Bytes(entryless);
    QTest::newRow("no model") << Bytes(modelless);
    QTest::newRow("picture") << Prepare(
        [](const QString &path) { WriteJpeg(path + Text(".jpg"), 8, 8), QFile::rename(path + Text(".jpg"), path); });
    QTest::newRow("unreadable") << Prepare([whole](const QString &path) {
        WriteBytes(path, whole);
        MakeUnreadable(path);
    });
}

void BadInputTest::badProfile()
{
    QFETCH(Prepare, prepare);
    prepare(Path("bad.lcp"));
    WriteBytes(Path("a_corrected.tiff"), "old");
    const QStringList before = Names(m_dir->path());

    ProgramRun run;
    run.beforeStart = RespectPermissions;
    const ProgramResult result = run.Run(
        {Text("correct"), Text("--overwrite"), Text("--profile"), Path("bad.lcp"), Path("a.jpg"), Path("z.jpg")});
    QCOMPARE(result.exitCode, 1);
    QVERIFY(result.output.isEmpty());
    QVERIFY2(result.errorLines.size() == 2, result.error.constData());
    QVERIFY2(result.errorLines.at(0).startsWith(Text("vitrelux: %1: ").arg(Path("a.jpg"))), result.error.constData());
    QVERIFY2(result.errorLines.at(1).startsWith(Text("vitrelux: %1: ").arg(Path("z.jpg"))), result.error.constData());
    QVERIFY2(result.errorLines.at(0).contains(Path("bad.lcp")), result.error.constData());
    QCOMPARE(Names(m_dir->path()), before);
    QCOMPARE(ReadBytes(Path("a_corrected.tiff")), QByteArray("old"));

    ProgramRun show; // the same file, looked at: told as unusable there too
    show.beforeStart = RespectPermissions;
    QCOMPARE(show.Run({Text("profile"), Path("bad.lcp")}).exitCode, 1);
}

void BadInputTest::noProfile()
{
    ProgramRun run;
    const ProgramResult result = run.Run({Text("correct"), Path("a.jpg")});
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.errorLines.size() == 1, result.error.constData());
    QVERIFY(result.errorLines.first().contains(Text("--profile")));
}

void BadInputTest::badFolder_data()
{
    QTest::addColumn<Prepare>("prepare");
    QTest::addColumn<QString>("folder");
    QTest::newRow("read-only") << Prepare([](const QString &path) {
        MakeFolder(path);
        QFile::setPermissions(path, QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    }) << QString();
    QTest::newRow("a file") << Bytes("file") << QString();
    QTest::newRow("below a file") << Bytes("file") << Text("/deeper");
}

void BadInputTest::badFolder()
{
    QFETCH(Prepare, prepare);
    QFETCH(QString, folder);
    prepare(Path("out"));
    const QStringList before = Names(m_dir->path());
    ProgramRun run;
    run.beforeStart = RespectPermissions;
    const ProgramResult result = run.Run(Correct({Text("-o"), Path("out") + folder, Path("a.jpg"), Path("z.jpg")}));
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.errorLines.size() == 2, result.error.constData());
    QVERIFY2(result.errorLines.first().contains(Path("out")), result.error.constData());
    QCOMPARE(Names(m_dir->path()), before);
    QVERIFY(Names(Path("out")).isEmpty());
}

void BadInputTest::fileSizeLimit()
{
    WriteBytes(Path("z_corrected.tiff"), "old");
    WriteJpeg(Path("tiny.jpg"), 4, 3);
    ProgramRun run;
    run.beforeStart = [] {
        const rlimit limit = {4096, 4096}; // the output of a.jpg has over 6 kB, that of tiny.jpg under 1 kB
        setrlimit(RLIMIT_FSIZE, &limit);
    };
    const ProgramResult result =
        run.Run(Correct({Text("--overwrite"), Path("a.jpg"), Path("z.jpg"), Path("tiny.jpg")}));
    QCOMPARE(result.exitCode, 1);
    QVERIFY2(result.errorLines.filter(Text("note: ")).size() == 1, result.error.constData()); // tiny: another size
    QVERIFY2(result.errorLines.size() == 3, result.error.constData());
    QVERIFY2(!result.error.contains(".vitrelux-"), result.error.constData());
    QCOMPARE(ReadBytes(Path("z_corrected.tiff")), QByteArray("old"));
    QCOMPARE(Names(m_dir->path()),
             (QStringList{Text("a.jpg"), Text("p.lcp"), Text("tiny.jpg"), Text("tiny_corrected.tiff"), Text("z.jpg"),
                          Text("z_corrected.tiff")}));
}

/// A file system of 128 KiB, mounted where only the run itself sees it; needs the right to do so, as root or in a user
/// namespace.
void BadInputTest::fullDisk()
{
    QDir(m_dir->path()).mkdir(Text("disk"));
    WriteJpeg(Path("big.jpg"), 400, 300); // its output has over 200 kB
    WriteBytes(Path("p.lcp"), ProfileText(kDistortionOnly, 400, 300));
    const auto inNamespace = [this](const QString &script) {
        ProgramRun shell;
        shell.program = Text("unshare");
        const QString mount = Text("mount -t tmpfs -o size=128k none '%1' || exit 99; ").arg(Path("disk"));
        return shell.Run({Text("-rm"), Text("sh"), Text("-c"), mount + script});
    };
    if (inNamespace(Text("true")).exitCode != 0)
        QSKIP("mounting a small file system is not allowed here");
    const ProgramResult result =
        inNamespace(Text("'%1' correct --profile '%2' -o '%3' '%4' 2>&1; echo exit $?; ls -A '%3'")
                        .arg(Text(VITRELUX_PROGRAM), Path("p.lcp"), Path("disk"), Path("big.jpg")));
    const QStringList lines = QString::fromUtf8(result.output).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    QVERIFY2(lines.size() == 2, result.output.constData()); // the failure, exit: no file
    QVERIFY2(lines.at(0).startsWith(Text("vitrelux: %1: ").arg(Path("big.jpg"))), result.output.constData());
    QVERIFY2(lines.at(0).contains(Path("disk")) && !lines.at(0).contains(Text(".vitrelux-")),
             result.output.constData());
    QCOMPARE(lines.at(1), Text("exit 1"));
}

void BadInputTest::otherSizeIsNoted_data()
{
    QTest::addColumn<QSize>("picture");
    QTest::addColumn<QSize>("profile");
    QTest::addColumn<bool>("noted");
    QTest::newRow("same") << QSize(60, 40) << QSize(60, 40) << false;
    QTest::newRow("upright") << QSize(40, 60) << QSize(60, 40) << false;
    QTest::newRow("square") << QSize(50, 50) << QSize(50, 50) << false;
    QTest::newRow("larger") << QSize(120, 80) << QSize(60, 40) << true;
    QTest::newRow("one column less") << QSize(59, 40) << QSize(60, 40) << true;
    QTest::newRow("upright, larger") << QSize(80, 120) << QSize(60, 40) << true;
    QTest::newRow("upright profile") << QSize(40, 60) << QSize(40, 60) << true; // the picture is turned, it isn't
}

void BadInputTest::otherSizeIsNoted()
{
    QFETCH(QSize, picture);
    QFETCH(QSize, profile);
    QFETCH(bool, noted);
    WriteJpeg(Path("x.jpg"), picture.width(), picture.height());
    WriteBytes(Path("p.lcp"), ProfileText(kDistortionOnly, profile.width(), profile.height()));
    ProgramRun run;
    const ProgramResult result = run.Run(Correct({Path("x.jpg")}));
    QCOMPARE(result.exitCode, 0);
    QVERIFY2(result.errorLines.size() == int(noted), result.error.constData());
    if (noted) {
        const QString line = result.errorLines.first();
        QVERIFY2(line.startsWith(Text("vitrelux: %1: note: ").arg(Path("x.jpg"))), qPrintable(line));
        for (int side : {picture.width(), picture.height(), profile.width(), profile.height()})
            QVERIFY2(line.contains(QString::number(side)), qPrintable(line));
    }
    QVERIFY(QFile::exists(Path("x_corrected.tiff")));
}

QTEST_GUILESS_MAIN(BadInputTest)
#include "BadInput_test.moc"
