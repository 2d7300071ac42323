// The host as a plug-in meets it: found by name, settings, descriptions of pictures and the lending of their pixels.
#include "HostApplication.h"

#include "KImage.h"
#include "KTools.h"
#include "TestFiles.h"
#include "analytics/KAnalyticsManager.h"

#include <QTemporaryDir>
#include <QtTest>

class HostApplicationTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void isFoundByName();
    void settingsPerPlugin();
    void translationThatIsMissing();
    void sameFileSamePointer();
    void describesPicture();
    void lendsPixels();
    void failedLockLendsNothing();
    void sharesToolsWithoutAnalytics();

private:
    static KIApplication *Host()
    {
        return static_cast<KIApplication *>(QCoreApplication::instance()->qt_metacast("KIApplication"));
    }
    QString Path(const char *name) const { return m_dir.filePath(QString::fromLatin1(name)); }

    QTemporaryDir m_dir;
};

void HostApplicationTest::isFoundByName()
{
    QVERIFY(Host());
    QCOMPARE(Host()->ImageInstances(), &KImage::ms_instances);
    QVERIFY(KImage::ms_instances.settings); // the kernel is started
    QVERIFY(!Host()->UIInstances());
}

void HostApplicationTest::settingsPerPlugin()
{
    const QString one = QStringLiteral("UID-1"), other = QStringLiteral("UID-2"), key = QStringLiteral("Key");
    const QVariant standard = QStringLiteral("standard");
    QCOMPARE(Host()->GetPluginSetting(one, key, standard), standard);
    Host()->SetPluginSetting(one, key, true);
    QCOMPARE(Host()->GetPluginSetting(one, key, standard).toBool(), true);
    QCOMPARE(Host()->GetPluginSetting(other, key, standard), standard);
}

void HostApplicationTest::translationThatIsMissing()
{
    Host()->LoadTranslator(QStringLiteral("None_xx.qm")); // says nothing: a warning would fail the test
}

void HostApplicationTest::sameFileSamePointer()
{
    const QString path = Path("same.jpg");
    KIImageDef *def = Host()->ImageDefOf(path);
    QVERIFY(def);
    QCOMPARE(Host()->ImageDefOf(m_dir.path() + QStringLiteral("/./x/../same.jpg")), def);
    QVERIFY(Host()->ImageDefOf(Path("other.jpg")) != def);
    QCOMPARE(def->FileName(), path);
    QCOMPARE(def->ShortFileName(), QStringLiteral("same.jpg"));
    QCOMPARE(def->PathName(), m_dir.path());
}

void HostApplicationTest::describesPicture()
{
    WriteJpeg(Path("d.jpg"), 60, 40);
    KIImageDef *def = Host()->ImageDefOf(Path("d.jpg"));
    QCOMPARE(def->nCols(), 60);
    QCOMPARE(def->nRows(), 40);
    QCOMPARE(def->nBands(), 3);
    QCOMPARE(def->nDepth(), 8);
}

void HostApplicationTest::lendsPixels()
{
    WriteJpeg(Path("l.jpg"), 7, 5);
    KIImageDef *def = Host()->ImageDefOf(Path("l.jpg"));
    KImage *image = def->LockFullSize(true);
    QCOMPARE(image->width(), 7);
    QCOMPARE(image->height(), 5);
    QCOMPARE(def->LockFullSize(true), image); // the same pixels, counted
    def->UnlockFullSize(true);
    def->UnlockFullSize(true);
    const QString problem = QStringLiteral("no such file");
    auto *application = static_cast<HostApplication *>(QCoreApplication::instance());
    QCOMPARE(application->ProblemOf(Path("l.jpg")), QString());
    QCOMPARE(application->ProblemOf(Path("none.jpg")), problem);
    ImageDef::Delete(Path("l.jpg")); // by whoever shares the kernel: described again
    QCOMPARE(Host()->ImageDefOf(Path("l.jpg"))->nCols(), 7);
}

void HostApplicationTest::failedLockLendsNothing()
{
    WriteBytes(Path("f.jpg"), "no picture");
    KIImageDef *def = Host()->ImageDefOf(Path("f.jpg"));
    QCOMPARE(def->nDepth(), 0);
    QVERIFY_EXCEPTION_THROWN(def->LockFullSize(true), KException);
    QVERIFY_EXCEPTION_THROWN(def->LockFullSize(true), KException); // and the next try is a new one
}

void HostApplicationTest::sharesToolsWithoutAnalytics()
{
    const KToolsInstances *tools = Host()->ImageInstances()->tools;
    QVERIFY(tools && tools->log && tools->systemInfo && tools->poolMem && tools->cacheDisk);
    QVERIFY(*tools->numThreads >= *tools->numCores && *tools->numCores >= 1);
    QVERIFY(!tools->analytics->isActive());
    QCOMPARE(tools->analytics->userId(), QString());
}

int main(int argc, char **argv)
{
    QTemporaryDir settings; // not the user's
    qputenv("XDG_CONFIG_HOME", QFile::encodeName(settings.path()));
    ChooseDisplayless();
    HostApplication application(argc, argv);
    HostApplicationTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "HostApplication_test.moc"
