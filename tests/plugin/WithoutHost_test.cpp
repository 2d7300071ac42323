// The plug-in's objects where no host is: without an application, and with one that is no host.
#include "ImageDatas.h"
#include "KVitreluxOne2One.h"
#include "Library.h"
#include "Thrown.h"

#include <QCoreApplication>
#include <QtTest>

#include <memory>

class tst_WithoutHost : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void processWorksOnDefaults_data() { Applications(); }
    void processWorksOnDefaults();
    void jobNeedsAHost_data() { Applications(); }
    void jobNeedsAHost();
    void libraryStartsNothing_data() { Applications(); }
    void libraryStartsNothing();

    void init();
    void cleanup() { m_application.reset(); }

private:
    void Applications()
    {
        QTest::addColumn<bool>("hasApplication");
        QTest::newRow("no application") << false;
        QTest::newRow("an application that is no host") << true;
    }

    int m_argumentCount = 1;
    char m_name[5] = "test";
    char *m_arguments[2] = {m_name, nullptr};
    std::unique_ptr<QCoreApplication> m_application;
};

void tst_WithoutHost::init()
{
    QFETCH(bool, hasApplication);
    if (hasApplication)
        m_application = std::make_unique<QCoreApplication>(m_argumentCount, m_arguments);
}

void tst_WithoutHost::processWorksOnDefaults()
{
    KVitreluxOne2One process;
    QVERIFY(!process.WizardPage()); // no QApplication, no widgets
    auto *params = static_cast<KVitreluxOne2One::Params *>(process.AllocParameters(QDomElement()));
    QVERIFY(!params->disto && !params->ca && !params->falloff);
    QVERIFY(params->lcpFilename.isEmpty());
    params->ca = true;
    process.SaveDefaultSettings(params);
    process.OnValidatePage(); // stores nothing, asks nobody
    const QDomElement element = process.GetXmlParameters(params);
    QCOMPARE(element.attribute(QStringLiteral("CA")), QStringLiteral("1"));
    QCOMPARE(element.attributes().count(), 4);
    process.FreeParameters(params);
    process.FreeParameters(nullptr);
}

void tst_WithoutHost::jobNeedsAHost()
{
    KVitreluxOne2One process;
    KVitreluxOne2One::Params params;
    QString output;
    const QString file = QStringLiteral("/a.jpg"), message = QStringLiteral("No host application");
    QCOMPARE(Thrown([&] { process.Process(file, &params, output); }), message);
    QCOMPARE(Thrown([&] { process.SetFiles({file}); }), message);
    QCOMPARE(Thrown([&] { process.GetFileXmlParams(file); }), message);
}

void tst_WithoutHost::libraryStartsNothing()
{
    {
        Library library;
        QVERIFY(library.Plugins(KIPluginLibrary::None).isEmpty());
        QVERIFY(library.Plugins(KIPluginLibrary::All).value(0));
        QCOMPARE(ImageDatas::settings, nullptr);
    }
    QCOMPARE(ImageDatas::settings, nullptr);
}

QTEST_APPLESS_MAIN(tst_WithoutHost)
#include "WithoutHost_test.moc"
