// The built library, as a host loads it.
#include "FakeHost.h"
#include "KIPluginLibrary.h"
#include "KIPluginOne2One.h"
#include "KUI.h"

#include <QAbstractButton>
#include <QFileDialog>
#include <QJsonObject>
#include <QMovie>
#include <QPluginLoader>
#include <QWizardPage>
#include <QtTest>

namespace {

template <typename Interface> Interface *Cast(QObject *object, const char *name)
{
    return static_cast<Interface *>(object->qt_metacast(name));
}

QString About(const KIAbout &about)
{
    return QStringList{about.Name(), about.Author(), about.Company(), about.Version(), about.UID()}.join(
        QLatin1Char(';'));
}

} // namespace

class tst_Library : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void libraryDescription();
    void eachCallAddsAProcess();
    void pictures();

private:
    QPluginLoader m_loader;
    QObject *m_object = nullptr;
    bool m_usesSystemFileDialog = false; // the only state that interface kernels share
    KUIInstances m_interfaceKernel = {reinterpret_cast<KUIState *>(&m_usesSystemFileDialog)};
};

void tst_Library::initTestCase()
{
    Host().interfaceKernel = &m_interfaceKernel;
    m_loader.setFileName(QStringLiteral(VITRELUX_PLUGIN));
    m_object = m_loader.instance();
    QVERIFY2(m_object, qPrintable(m_loader.errorString()));
}

void tst_Library::libraryDescription()
{
    QPluginLoader second(QStringLiteral(VITRELUX_PLUGIN));
    QCOMPARE(second.instance(), m_object); // one object per loaded library
    QCOMPARE(m_object->objectName(), QStringLiteral("KVitrelux"));
    QCOMPARE(m_loader.metaData().value(QStringLiteral("IID")).toString(), QStringLiteral("com.brelt.vitrelux"));
    const auto *about = Cast<KIAbout>(m_object, "KIAbout");
    QCOMPARE(About(*about), QStringLiteral("KVitrelux;Ilse Tarn;Brelt;3.0.0.400;6E8A21D4-93B7-4C05-A1F6-3FB4810CD762"));
    QCOMPARE(about->Comment(), QStringLiteral("Comment"));
    QCOMPARE(Host().calls.join(QLatin1Char(' ')),
             QStringLiteral("locale translator KVitrelux_de_DE.qm image kernel interface kernel"));
}

void tst_Library::eachCallAddsAProcess()
{
    auto *library = Cast<KIPluginLibrary>(m_object, "KIPluginLibrary");
    QVERIFY(library->Plugins(KIPluginLibrary::None).isEmpty());
    QCOMPARE(library->Plugins(KIPluginLibrary::All).size(), 1);
    const auto plugins = library->Plugins(KIPluginLibrary::All);
    QCOMPARE(plugins.size(), 2);
    QVERIFY(plugins[0] != plugins[1]);
    QCOMPARE(library->Plugins(KIPluginLibrary::None).size(), 2);

    auto *process = Cast<KIPluginOne2One>(plugins[0], "KIPluginOne2One");
    QVERIFY(process);
    QCOMPARE(About(*process),
             QStringLiteral("Lens correction;Ilse Tarn;Brelt;3.0.0.400;6E8A21D4-93B7-4C05-A1F6-70C3D2E95B18"));
    auto *lensPath = process->WizardPage()->findChild<QAbstractButton *>(QStringLiteral("toolButtonLensPath"));
    QString options; // of the file dialogs that opened
    for (const bool system : {false, true}) {
        m_usesSystemFileDialog = system;
        QTimer::singleShot(0, this, [&options] {
            auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
            options += dialog->testOption(QFileDialog::DontUseNativeDialog) ? QLatin1String("Qt's ")
                                                                            : QLatin1String("the system's");
            dialog->reject();
        });
        lensPath->click();
    }
    QCOMPARE(options, QStringLiteral("Qt's the system's"));
    QVERIFY(process->Comment().startsWith(QStringLiteral("Adobe(r) released a free tool")));
    delete plugins[0].data(); // hosts may do this; the library's pointer becomes null
}

void tst_Library::pictures()
{
    const QString folder = QStringLiteral(":/6E8A21D4-93B7-4C05-A1F6-70C3D2E95B18/Resources/");
    for (int i = 1; i <= 12; ++i) {
        const QImage frame(folder + QStringLiteral("iconwait_%1.png").arg(i, 2, 10, QLatin1Char('0')));
        const QByteArray name = "frame " + QByteArray::number(i);
        QVERIFY2(frame.pixelColor(0, 0).alpha() == 0, name); // the frames are round, with transparent corners
        QVERIFY2(frame.size().width() >= 32, name);
    }
    QMovie movie(folder + QStringLiteral("icon_wait.gif"));
    QCOMPARE(movie.frameCount(), 12);
    auto *process = Cast<KIPluginOne2One>(
        Cast<KIPluginLibrary>(m_object, "KIPluginLibrary")->Plugins(KIPluginLibrary::All).last(), "KIPluginOne2One");
    const QImage icon = process->Icon().pixmap(64).toImage();
    QCOMPARE(icon.size(), QSize(64, 64));
    QCOMPARE(Cast<KIAbout>(m_object, "KIAbout")->Icon().pixmap(64).toImage(), icon);
    QVERIFY(!process->BeforeAfter().isNull() && process->BeforeAfter().pixmap(64).toImage() != icon);
}

int main(int argc, char **argv)
{
    const FakeHost host(argc, argv);
    tst_Library test;
    return QTest::qExec(&test, argc, argv);
}

#include "Library_test.moc"
