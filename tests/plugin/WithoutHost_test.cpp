// The plug-in's objects without a host: without an application, and with one that isn't a host.
#include "Case.h"
#include "ImageDatas.h"
#include "KImage.h"
#include "KUI.h"
#include "KVitreluxOne2One.h"
#include "Library.h"
#include "TestFiles.h"
#include "Thrown.h"

#include <QCoreApplication>
#include <QtTest>

#include <memory>
#include <optional>

class tst_WithoutHost : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void defaultsAndRefusals();
};

void tst_WithoutHost::defaultsAndRefusals()
{
    for (const bool hasApplication : {false, true}) { // the application is not a host
        const Case named("application", hasApplication);
        int argumentCount = 1;
        char name[] = "test";
        char *arguments[] = {name, nullptr};
        std::optional<QCoreApplication> noHost;
        if (hasApplication)
            noHost.emplace(argumentCount, arguments);
        KVitreluxOne2One process;
        QVERIFY(!process.WizardPage()); // no widgets without a QApplication
        auto *params = static_cast<KVitreluxOne2One::Params *>(process.AllocParameters(QDomElement()));
        QVERIFY(!params->disto && !params->ca && !params->falloff && params->lcpFilename.isEmpty());
        params->ca = true;
        process.SaveDefaultSettings(params);
        process.OnValidatePage(); // stores nothing, calls nothing
        QCOMPARE(process.GetXmlParameters(params).attribute("CA"_s), "1"_s);

        QString output;
        const QString file = "/a.jpg"_s, message = "No host application"_s;
        QCOMPARE(Thrown([&] { process.Process(file, params, output); }), message);
        QCOMPARE(Thrown([&] { process.SetFiles({file}); }), message);
        QCOMPARE(Thrown([&] { process.GetFileXmlParams(file); }), message);
        process.FreeParameters(params);
        process.FreeParameters(nullptr);

        auto library = std::make_unique<Library>();
        QVERIFY(library->Plugins(KIPluginLibrary::None).isEmpty());
        const QPointer<QObject> plugin = library->Plugins(KIPluginLibrary::All).value(0);
        QVERIFY(plugin);
        QCOMPARE(ImageDatas::settings, nullptr); // nothing was started
        KImage::init(nullptr);
        KUI::init(nullptr);
        library.reset(); // stops the modules, whoever started them
        QVERIFY(!plugin && !ImageDatas::settings && !KUI::ms_instances.state);
    }
}

QTEST_APPLESS_MAIN(tst_WithoutHost)
#include "WithoutHost_test.moc"
