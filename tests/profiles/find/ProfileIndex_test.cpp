// Tests of ProfileIndex.h: fields of a profile's head, the cache between runs, and damaged files.
#include "Case.h"
#include "ProfileIndex.h"

#include "InputLimits.h"
#include "PictureFit.h"

#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QThread>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

const char kFrame[] = "<x:xmpmeta xmlns:x='adobe:ns:meta/'><r:RDF xmlns:r='http://www.w3.org/1999/02/22-rdf-syntax-ns#'"
                      " xmlns:p='http://ns.adobe.com/photoshop/1.0/'"
                      " xmlns:c='http://ns.adobe.com/photoshop/1.0/camera-profile'><r:Description><p:CameraProfiles>"
                      "<r:Seq>%1</r:Seq></p:CameraProfiles></r:Description></r:RDF></x:xmpmeta>";

const char kElements[] =
    "<r:li r:parseType='Resource'><c:Make>Canon</c:Make><c:Model>EOS 60D</c:Model><c:Lens>EF50mm f/1.8 II</c:Lens>"
    "<c:LensInfo>50/1 55/1 18/10 2/1</c:LensInfo><c:ImageWidth>5202</c:ImageWidth><c:ImageLength>3465</c:ImageLength>"
    "<c:SensorFormatFactor>1.6</c:SensorFormatFactor><c:CameraRawProfile>True</c:CameraRawProfile>"
    "<c:AlternateLensNames><r:Bag><r:li>Nifty fifty 50mm</r:li></r:Bag></c:AlternateLensNames>"
    "<c:AlternateLensIDs><r:Bag><r:li>7</r:li></r:Bag></c:AlternateLensIDs><c:LensID>6</"
    "c:LensID><c:UniqueCameraModel>U</c:UniqueCameraModel>"
    "<c:LensPrettyName>Pretty</c:LensPrettyName></r:li>"
    "<r:li r:parseType='Resource'><c:Model>another</c:Model></r:li>";

const char kAttributes[] =
    "<r:li><r:Description c:Make='Canon' c:Model='EOS 60D' c:Lens='EF50mm f/1.8 II' c:LensInfo='50/1 55/1 18/10 2/1'"
    " c:ImageWidth='5202' c:ImageLength='3465' c:SensorFormatFactor='1.6' c:CameraRawProfile='True' c:LensID='6'"
    " c:UniqueCameraModel='U' c:LensPrettyName='Pretty'>"
    "<c:AlternateLensNames><r:Bag><r:li>Nifty fifty 50mm</r:li></r:Bag></c:AlternateLensNames>"
    "<c:AlternateLensIDs><r:Bag><r:li>7</r:li></r:Bag></c:AlternateLensIDs></r:Description></r:li>";

QByteArray Profile(const char *entries)
{
    return QString::fromLatin1(kFrame).arg(QLatin1String(entries)).toUtf8();
}

QByteArray ProfileOf(const QString &lens)
{
    return Profile(qPrintable(
        QStringLiteral("<r:li c:Make='Maker' c:Model='M' c:Lens='%1' c:LensID='7' c:LensInfo='0/0 0/0 18/10 2'"
                       " c:SensorFormatFactor='1.6' c:CameraRawProfile='1'/>")
            .arg(lens)));
}

void Write(const QString &path, const QByteArray &content)
{
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly), qPrintable(path));
    file.write(content);
}

QString Text(const ProfileHead &head)
{
    QString numbers;
    for (double value : {head.minFocalMm, head.maxFocalMm, head.minAperture, head.maxAperture, head.sensorFormatFactor,
                         double(head.raw)})
        numbers += QStringLiteral(" %1").arg(value);
    return (QStringList{head.make, head.model} + head.lensNames + head.lensIds).join(QLatin1Char('|')) + numbers;
}

QStringList Lenses(const ProfileIndex &index)
{
    QStringList lenses;
    for (const IndexedProfile &profile : index.Profiles())
        lenses.append(profile.error.isEmpty() ? profile.head.lensNames.join(QLatin1Char('|')) : profile.error);
    return lenses;
}

} // namespace

class tst_ProfileIndex : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void head_data();
    void head();
    void unusable_data();
    void unusable();
    void readsOnlyWhatChanged();
    void readsAgainWhatFailedToOpen();
    void ignoresRelativeDataFolders();
    void typedFacts();
    void rebuildsDamagedCache();
    void survivesKilledPrograms();
};

void tst_ProfileIndex::head_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::newRow("elements") << Profile(kElements);
    QTest::newRow("attributes") << Profile(kAttributes);
}

void tst_ProfileIndex::head()
{
    QFETCH(QByteArray, content);
    QBuffer device(&content);
    QVERIFY(device.open(QIODevice::ReadOnly));
    ProfileHead head;
    QString error;
    QVERIFY2(ReadProfileHead(&device, &head, &error), qPrintable(error));
    head.lensNames.sort();
    head.lensIds.sort();
    QCOMPARE(Text(head), // only of the first entry
             QStringLiteral("Canon|EOS 60D|EF50mm f/1.8 II|Nifty fifty 50mm|Pretty|6|7 50 55 1.8 2 1.6 1"));
}

void tst_ProfileIndex::unusable_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("why");
    QTest::newRow("empty") << QByteArray() << QStringLiteral("line 1: Premature end of document.");
    QTest::newRow("cut off") << Profile(kElements).left(400) << QStringLiteral("line 1: Premature end of document.");
    QTest::newRow("no entry") << Profile("")
                              << QStringLiteral("no profile entry: expected rdf:li in photoshop:CameraProfiles");
    QTest::newRow("nameless") << Profile("<r:li c:ImageWidth='1'/>")
                              << QStringLiteral("its first entry names neither camera nor lens");
    QTest::newRow("as deep as allowed") << Profile(
        QByteArray("<r:li>" + QByteArray("<a>").repeated(kMaxHeadDepth - 6)).constData())
                                        << QStringLiteral("line 1: Opening and ending tag mismatch.");
    QTest::newRow("too deep") << Profile(
        QByteArray("<r:li>" + QByteArray("<a>").repeated(kMaxHeadDepth - 5)).constData())
                              << QStringLiteral("elements nested more than 64 deep");
}

void tst_ProfileIndex::unusable()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, why);
    QBuffer device(&content);
    QVERIFY(device.open(QIODevice::ReadOnly));
    ProfileHead head;
    QString error;
    QVERIFY(!ReadProfileHead(&device, &head, &error));
    QCOMPARE(error, why);
}

void tst_ProfileIndex::readsOnlyWhatChanged()
{
    const QTemporaryDir folder, cache;
    const QString file = cache.filePath(QStringLiteral("sub/profiles.index"));
    Write(folder.filePath(QStringLiteral("a.lcp")), ProfileOf(QStringLiteral("one 50mm")));
    Write(folder.filePath(QStringLiteral("deep/er/b.LCP")), ProfileOf(QStringLiteral("two 85mm")));
    Write(folder.filePath(QStringLiteral("broken.lcp")), "no XML");
    Write(folder.filePath(QStringLiteral("other.xml")), ProfileOf(QStringLiteral("not a profile, by its suffix")));
    const QTemporaryDir elsewhere; // linked from the folder, with a link back
    Write(elsewhere.filePath(QStringLiteral("c.lcp")), ProfileOf(QStringLiteral("linked 35mm or 50mm")));
    QVERIFY(QFile::link(folder.path(), elsewhere.filePath(QStringLiteral("back"))));
    const auto scan = [&](int filesRead, const QStringList &lenses) {
        ProfileIndex index(file);
        QVERIFY(index.Scan({folder.path(), folder.path() + QStringLiteral("/deep/..")}));
        QCOMPARE(index.FilesRead(), filesRead);
        QCOMPARE(Lenses(index), lenses);
        const IndexedProfile &first = index.Profiles().first();
        QCOMPARE(Text(first.head), QStringLiteral("Maker|M|") + lenses[0] + QStringLiteral("|7 50 50 1.8 2 1.6 1"));
        QCOMPARE(first.path, folder.filePath(QStringLiteral("a.lcp")));
    };
    QFile large(folder.filePath(QStringLiteral("large.lcp")));
    QVERIFY(large.open(QIODevice::WriteOnly) && large.resize(kMaxXmlBytes + 1));
    const QString error = QStringLiteral("line 1: Start tag expected."),
                  tooLarge = QStringLiteral("larger than 16 MiB"), one = QStringLiteral("one 50mm"),
                  two = QStringLiteral("two 85mm");
    scan(4, {one, error, two, tooLarge});
    scan(0, {one, error, two, tooLarge});
    Write(folder.filePath(QStringLiteral("a.lcp")), ProfileOf(QStringLiteral("another 50mm")));
    scan(1, {QStringLiteral("another 50mm"), error, two, tooLarge});
    QFile::remove(folder.filePath(QStringLiteral("broken.lcp")));
    scan(0, {QStringLiteral("another 50mm"), two, tooLarge});
    QVERIFY(large.remove());
    const QString deep = QStringLiteral("d/").repeated(kMaxFolderDepth); // as deep as allowed, and one folder deeper
    Write(folder.filePath(deep + QStringLiteral("in.lcp")), ProfileOf(QStringLiteral("deep 24mm")));
    Write(folder.filePath(deep + QStringLiteral("d/out.lcp")), ProfileOf(QStringLiteral("deeper 24mm")));
    QVERIFY(QFile::link(elsewhere.path(), folder.filePath(QStringLiteral("link"))));
    ProfileIndex index(file);
    QVERIFY(index.Scan({folder.path()}));
    QStringList lenses = Lenses(index);
    lenses.sort();
    QCOMPARE(lenses,
             (QStringList{QStringLiteral("another 50mm"), QStringLiteral("deep 24mm"),
                          QStringLiteral("linked 35mm or 50mm"), two}));
    for (const IndexedProfile &profile : index.Profiles()) // a name of two lenses gives no focal lengths
        if (profile.path.endsWith(QLatin1String("c.lcp")))
            QCOMPARE(Text(profile.head), QStringLiteral("Maker|M|linked 35mm or 50mm|7 0 0 1.8 2 1.6 1"));
}

/// Two operations fail even for root: opening a file whose name is not UTF-8, and a folder while no file descriptor is
/// free.
void tst_ProfileIndex::readsAgainWhatFailedToOpen()
{
    const QTemporaryDir folder, cache;
    const QString file = cache.filePath(QStringLiteral("profiles.index"));
    const QByteArray path = QFile::encodeName(folder.path()), latin1 = path + "/f\xe9.lcp";
    Write(folder.filePath(QStringLiteral("a.lcp")), ProfileOf(QStringLiteral("one 50mm")));
    QCOMPARE(::rename((path + "/a.lcp").constData(), latin1.constData()), 0);
    for (int scan = 0; scan < 2; ++scan) {
        const Case named("scan", scan);
        ProfileIndex index(file);
        QVERIFY(index.Scan({folder.path()}));
        QCOMPARE(Lenses(index), QStringList{QStringLiteral("its name is not UTF-8")});
        QCOMPARE(index.FilesRead(), 1);
        QVERIFY(index.UnreadFolders().isEmpty());
    }
    QCOMPARE(::mkdir((path + "/d\xe9").constData(), 0700), 0);
    ProfileIndex index(file);
    QVERIFY(index.Scan({folder.path()}));
    QCOMPARE(index.UnreadFolders().size(), 1);
    QCOMPARE(index.UnreadFolders()[0].error, QStringLiteral("its name is not UTF-8"));
    rlimit files{};
    QCOMPARE(::getrlimit(RLIMIT_NOFILE, &files), 0);
    const rlimit none{0, files.rlim_max};
    QCOMPARE(::setrlimit(RLIMIT_NOFILE, &none), 0);
    index.Scan({folder.path()});
    QCOMPARE(::setrlimit(RLIMIT_NOFILE, &files), 0);
    QCOMPARE(index.UnreadFolders().size(), 1);
    QCOMPARE(index.UnreadFolders()[0].path, QFileInfo(folder.path()).canonicalFilePath());
    QCOMPARE(index.UnreadFolders()[0].error, QString::fromLocal8Bit(std::strerror(EMFILE)));
    QCOMPARE(::rmdir((path + "/d\xe9").constData()), 0); // QTemporaryDir can't remove it
    QCOMPARE(::unlink(latin1.constData()), 0);
}

void tst_ProfileIndex::ignoresRelativeDataFolders()
{
    const QTemporaryDir home;
    const QStringList folders = {
        QStringLiteral("/.local/share/vitrelux/profiles"),
        QStringLiteral("/.wine/drive_c/ProgramData/Adobe/CameraRaw/LensProfiles"),
        QStringLiteral("/Games/a/drive_c/users/b/AppData/Roaming/Adobe/CameraRaw/LensProfiles"),
        QStringLiteral("/relative/vitrelux/profiles")};
    for (const QString &folder : folders)
        QVERIFY(QDir().mkpath(home.path() + folder));
    const QString before = QDir::currentPath();
    const QByteArray oldHome = qgetenv("HOME");
    QVERIFY(QDir::setCurrent(home.path()));
    qputenv("HOME", QFile::encodeName(home.path()));
    qputenv("XDG_DATA_HOME", "relative");
    const QStringList found = DefaultProfileFolders();
    qunsetenv("XDG_DATA_HOME");
    qputenv("HOME", oldHome);
    QVERIFY(QDir::setCurrent(before));
    QStringList own = found.filter(home.path()); // the system may have others
    QCOMPARE(own.replaceInStrings(home.path(), QString()), folders.mid(0, 3));
}

/// Finds a profile by what the user types, for a picture without metadata.
void tst_ProfileIndex::typedFacts()
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("a.lcp"));
    Write(
        path,
        Profile("<r:li c:Model='M' c:Make='Canon' c:Lens='EF24-70mm f/2.8L USM' c:FocalLength='35' c:FocusDistance='2'"
                " c:ImageWidth='6000' c:ImageLength='4000' c:SensorFormatFactor='1' c:ApertureValue='4'>"
                "<c:PerspectiveModel c:RadialDistortParam1='-0.1'/></r:li>"));
    PictureFacts facts;
    facts.pixels = QSize(600, 400);
    FitOptions options;
    options.source = ProfileSource::Lcp;
    options.typed = {QStringLiteral("EF24-70mm f/2.8L USM"), QStringLiteral("Canon M"), 35.0, 4.0, 2.0};
    const auto fit = [&] {
        const FitResult result = PictureFitter({folder.path()}, QString()).Fit(facts, options);
        return (QStringList{result.profile, result.entries, result.reason, result.why} + result.assumed
                + result.nearest)
            .join(QLatin1Char('\n'));
    };
    const QString found = path + QStringLiteral("\n35 mm f/4 2 m 100 %\nmade for the lens \"EF24-70mm f/2.8L USM\"\n");
    const QString left = QStringLiteral("lateral color, vignetting: the profile has no model for it");
    QCOMPARE(fit(), found + left);
    // A second profile, whose corners differ by 2.9 or 3.1 px: 137 px times the difference of the coefficients.
    const QString second = folder.filePath(QStringLiteral("b.lcp"));
    for (const char *coefficient : {"-0.1212", "-0.1226"}) {
        QFile first(path);
        QVERIFY(first.open(QIODevice::ReadOnly));
        Write(second, first.readAll().replace("-0.1", coefficient));
        QVERIFY(fit() == found + left || qstrcmp(coefficient, "-0.1226") == 0);
    }
    QVERIFY2(fit().startsWith(QLatin1String("\n\n\ntwo profiles fit equally well: ")), qPrintable(fit()));
    QVERIFY(QFile::remove(second));
    options.typed.focalMm = 99.0;
    for (const char *more : {"; lensfun doesn't know the camera \"Canon M\"", ""}) {
        options.source = *more ? ProfileSource::Auto : ProfileSource::Lcp;
        QCOMPARE(
            fit(),
            QStringLiteral("\n\n\nno profile for the lens \"EF24-70mm f/2.8L USM\"%1\n\"EF24-70mm f/2.8L USM\" on M "
                           "(%2): its lens has no 99 mm")
                .arg(QLatin1String(more), path));
    }
    options.typed = {};
    QCOMPARE(fit(), QStringLiteral("\n\n\nthe picture doesn't say which camera and lens took it"));
    options.profile = path;
    QCOMPARE(fit(),
             path + QStringLiteral("\n\nchosen\ndistortion: the picture doesn't name its camera; name it with --body; ")
                 + left);

    // A profile that is replaced by one with the same time but another size is read again.
    PictureFitter fitter({folder.path()}, QString());
    QCOMPARE(fitter.Fit(facts, options).profile, path);
    const QDateTime time = QFileInfo(path).lastModified();
    Write(path, "not a profile");
    QFile replaced(path);
    QVERIFY(replaced.open(QIODevice::Append) && replaced.setFileTime(time, QFileDevice::FileModificationTime));
    QVERIFY2(fitter.Fit(facts, options).why.startsWith(path), qPrintable(fitter.Fit(facts, options).why));
}

void tst_ProfileIndex::rebuildsDamagedCache()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("profiles.index"));
    Write(folder.filePath(QStringLiteral("a.lcp")), ProfileOf(QStringLiteral("one 50mm")));
    QVERIFY(ProfileIndex(file).Scan({folder.path()}));
    QFile cache(file);
    QVERIFY(cache.open(QIODevice::ReadOnly));
    const QByteArray whole = cache.readAll();
    cache.close();
    for (int i = 0; i < whole.size(); i += 7) { // one byte changed, and the file cut off there
        QByteArray changed = whole;
        changed[i] = static_cast<char>(changed[i] ^ 0x55);
        for (const QByteArray &content : {changed, whole.left(i)}) {
            Write(file, content);
            ProfileIndex index(file);
            QVERIFY2(index.Scan({folder.path()}), qPrintable(QString::number(i)));
            QVERIFY2(Lenses(index) == QStringList{QStringLiteral("one 50mm")}, qPrintable(QString::number(i)));
        }
    }
}

/// Two processes at a time repeatedly rebuild the same cache until they are killed, some of them while writing it.
void tst_ProfileIndex::survivesKilledPrograms()
{
    const QTemporaryDir folder, cache;
    const QString file = cache.filePath(QStringLiteral("profiles.index"));
    QStringList lenses;
    for (int i = 100; i < 140; ++i) {
        lenses << QStringLiteral("lens %1mm").arg(i);
        Write(folder.filePath(QString::number(i) + QStringLiteral(".lcp")), ProfileOf(lenses.last()));
    }
    const auto rebuild = [&] {
        QFile::remove(file);
        ProfileIndex index(file);
        return index.Scan({folder.path()}) && Lenses(index) == lenses;
    };
    for (int round = 0; round < 20; ++round) {
        const Case named("round", round);
        pid_t programs[2];
        for (pid_t &program : programs) {
            program = fork();
            QVERIFY(program >= 0);
            if (program == 0)
                alarm(60); // ends the process even if the test fails
            while (program == 0)
                if (!rebuild())
                    _exit(1); // it read an invalid cache that another process wrote
        }
        QThread::usleep(2000 + 700 * static_cast<unsigned long>(round));
        for (pid_t program : programs) {
            int status = 0;
            kill(program, SIGKILL);
            QCOMPARE(waitpid(program, &status, 0), program);
            QVERIFY(WIFSIGNALED(status));
        }
        ProfileIndex index(file);
        QVERIFY(index.Scan({folder.path()}));
        QCOMPARE(Lenses(index), lenses);
    }
    // Leftover files are removed once they are too old for any process to be still writing them.
    const QString fresh = file + QStringLiteral(".fresh1"), old = file + QStringLiteral(".old123");
    for (const QString &path : {fresh, old})
        Write(path, "unfinished");
    QFile left(old);
    QVERIFY(left.open(QIODevice::Append));
    QVERIFY(left.setFileTime(QDateTime::currentDateTime().addDays(-1), QFileDevice::FileModificationTime));
    left.close();
    QVERIFY(rebuild());
    QVERIFY(QFile::exists(fresh) && !QFile::exists(old));
}

QTEST_GUILESS_MAIN(tst_ProfileIndex)
#include "ProfileIndex_test.moc"
