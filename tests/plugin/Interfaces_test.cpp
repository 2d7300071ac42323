// Hosts are compiled separately and call functions by their position in the virtual table; these tests check every
// position.
#include "KIApplication.h"
#include "KIImageDef.h"
#include "KIPluginLibrary.h"
#include "KIPluginOne2One.h"

#include <QtTest>

namespace {

QString s_called; // the function that ran last

template <typename T = void> T Note(const char *name)
{
    s_called = QString::fromLatin1(name);
    return T();
}

class TestLibrary : public KIPluginLibrary {
public:
    ~TestLibrary() override { Note("destructor"); }
    QList<QPointer<QObject>> Plugins(MGX) override { return Note<QList<QPointer<QObject>>>("Plugins"); }
};

class TestProcess : public KIPluginOne2One {
public:
    ~TestProcess() override { Note("destructor"); }
    QString Name() const override { return Note<QString>("Name"); }
    QString Author() const override { return Note<QString>("Author"); }
    QString Company() const override { return Note<QString>("Company"); }
    QString Comment() const override { return Note<QString>("Comment"); }
    QString Version() const override { return Note<QString>("Version"); }
    QIcon Icon() const override { return Note<QIcon>("Icon"); }
    QString UID() const override { return Note<QString>("UID"); }
    QWizardPage *WizardPage() override { return Note<QWizardPage *>("WizardPage"); }
    void *AllocParameters(QDomElement) override { return Note<void *>("AllocParameters"); }
    QDomElement GetXmlParameters(void *) override { return Note<QDomElement>("GetXmlParameters"); }
    void FreeParameters(void *) override { Note("FreeParameters"); }
    QIcon BeforeAfter() const override { return Note<QIcon>("BeforeAfter"); }
    void Process(QString, void *, QString &) override { Note("Process"); }
    void SetFiles(QStringList) override { Note("SetFiles"); }
    QDomElement GetFileXmlParams(QString) override { return Note<QDomElement>("GetFileXmlParams"); }
};

class Def : public KIImageDef {
public:
    ~Def() override { Note("destructor"); }
    QPixmap *GetThumbnail() const override { return Note<QPixmap *>("GetThumbnail"); }
    QString FileName() const override { return Note<QString>("FileName"); }
    QString ShortFileName() const override { return Note<QString>("ShortFileName"); }
    QString PathName() const override { return Note<QString>("PathName"); }
    int nRows() const override { return Note<int>("nRows"); }
    int nCols() const override { return Note<int>("nCols"); }
    int nBands() const override { return Note<int>("nBands"); }
    int nDepth() const override { return Note<int>("nDepth"); }
    bool HasExif() const override { return Note<bool>("HasExif"); }
    bool HasICC() const override { return Note<bool>("HasICC"); }
    bool IsRaw() const override { return Note<bool>("IsRaw"); }
    float GetFocal() const override { return Note<float>("GetFocal"); }
    int Model() const override { return Note<int>("Model"); }
    qint64 GetTimestamp() const override { return Note<qint64>("GetTimestamp"); }
    float GetEV() const override { return Note<float>("GetEV"); }
    KImage *Lock(int, int, bool) override { return Note<KImage *>("Lock"); }
    void Unlock(int, int, bool) override { Note("Unlock"); }
    KImage *LockFullSize(bool) override { return Note<KImage *>("LockFullSize"); }
    void UnlockFullSize(bool) override { Note("UnlockFullSize"); }
};

class Application : public KIApplication {
public:
    ~Application() override { Note("destructor"); }
    QVariant GetPluginSetting(QString, QString, QVariant) override { return Note<QVariant>("GetPluginSetting"); }
    void SetPluginSetting(QString, QString, QVariant) override { Note("SetPluginSetting"); }
    QLocale Locale() override { return Note<QLocale>("Locale"); }
    void LoadTranslator(QString) override { Note("LoadTranslator"); }
    KIImageDef *ImageDefOf(QString) override { return Note<KIImageDef *>("ImageDefOf"); }
    KImageInstances *ImageInstances() override { return Note<KImageInstances *>("ImageInstances"); }
    KUIInstances *UIInstances() override { return Note<KUIInstances *>("UIInstances"); }
};

/// Calls entry @p slot of an object's virtual table. The first two entries are the complete and the deleting
/// destructor. Under the platform's C++ ABI, a member function takes the object as its first argument, and objects of
/// Qt's classes by reference.
template <typename Result, typename... Arguments> Result CallSlot(void *object, int slot, Arguments... arguments)
{
    void **table = *static_cast<void ***>(object);
    const auto function = reinterpret_cast<Result (*)(void *, Arguments...)>(table[slot]);
    return function(object, arguments...);
}

/// @p name is empty for functions whose default, which does nothing, isn't overridden: their neighbors fix their
/// places.
void Expect(const char *name)
{
    QCOMPARE(s_called, QString::fromLatin1(name));
    s_called.clear();
}

} // namespace

class tst_Interfaces : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void processAndLibraryOrder();
    void imageDefOrder();
    void applicationOrder();
};

void tst_Interfaces::processAndLibraryOrder()
{
    KIPluginOne2One *process = new TestProcess;
    int slot = 2;
    for (const char *name : {"Name", "Author", "Company", "Comment", "Version"}) {
        CallSlot<QString>(process, slot++);
        Expect(name);
    }
    CallSlot<QIcon>(process, slot++), Expect("Icon");
    CallSlot<QString>(process, slot++), Expect("UID");
    CallSlot<QWizardPage *>(process, slot++), Expect("WizardPage");
    CallSlot<void>(process, slot++), Expect("");
    QDomElement element;
    CallSlot<void *, QDomElement &>(process, slot++, element), Expect("AllocParameters");
    CallSlot<QDomElement, void *>(process, slot++, nullptr), Expect("GetXmlParameters");
    CallSlot<void, void *, void *>(process, slot++, nullptr, nullptr), Expect("");
    CallSlot<void, void *>(process, slot++, nullptr), Expect("FreeParameters");
    CallSlot<QIcon>(process, slot++), Expect("BeforeAfter");
    QString name, output;
    CallSlot<void, QString &, void *, QString &>(process, slot++, name, nullptr, output), Expect("Process");
    QStringList files;
    CallSlot<void, QStringList &>(process, slot++, files), Expect("SetFiles");
    CallSlot<QDomElement, QString &>(process, slot++, name), Expect("GetFileXmlParams");
    CallSlot<void>(process, 1), Expect("destructor"); // the deleting one
    KIPluginLibrary *library = new TestLibrary;
    CallSlot<QList<QPointer<QObject>>, KIPluginLibrary::MGX>(library, 2, KIPluginLibrary::All), Expect("Plugins");
    CallSlot<void>(library, 1), Expect("destructor");
}

void tst_Interfaces::imageDefOrder()
{
    KIImageDef *def = new Def;
    int slot = 2;
    CallSlot<QPixmap *>(def, slot++), Expect("GetThumbnail");
    for (const char *name : {"FileName", "ShortFileName", "PathName"}) {
        CallSlot<QString>(def, slot++);
        Expect(name);
    }
    for (const char *name : {"nRows", "nCols", "nBands", "nDepth"}) {
        CallSlot<int>(def, slot++);
        Expect(name);
    }
    for (const char *name : {"HasExif", "HasICC", "IsRaw"}) {
        CallSlot<bool>(def, slot++);
        Expect(name);
    }
    CallSlot<float>(def, slot++), Expect("GetFocal");
    CallSlot<int>(def, slot++), Expect("Model");
    CallSlot<qint64>(def, slot++), Expect("GetTimestamp");
    CallSlot<float>(def, slot++), Expect("GetEV");
    CallSlot<KImage *, int, int, bool>(def, slot++, 1, 1, true), Expect("Lock");
    CallSlot<void, int, int, bool>(def, slot++, 1, 1, true), Expect("Unlock");
    CallSlot<KImage *, bool>(def, slot++, true), Expect("LockFullSize");
    CallSlot<void, bool>(def, slot++, true), Expect("UnlockFullSize");
    CallSlot<void>(def, 1), Expect("destructor");
}

void tst_Interfaces::applicationOrder()
{
    KIApplication *application = new Application;
    int slot = 2;
    QString uid, key;
    QVariant value;
    CallSlot<void>(application, slot++), Expect("");
    CallSlot<QVariant, QString &, QString &, QVariant &>(application, slot++, uid, key, value);
    Expect("GetPluginSetting");
    CallSlot<void, QString &, QString &, QVariant &>(application, slot++, uid, key, value);
    Expect("SetPluginSetting");
    CallSlot<void>(application, slot++), Expect("");
    CallSlot<QLocale>(application, slot++), Expect("Locale");
    CallSlot<void>(application, slot++), Expect("");
    CallSlot<void, QString &>(application, slot++, uid), Expect("LoadTranslator");
    CallSlot<KIImageDef *, QString &>(application, slot++, uid), Expect("ImageDefOf");
    CallSlot<void>(application, slot++), Expect("");
    CallSlot<KImageInstances *>(application, slot++), Expect("ImageInstances");
    CallSlot<KUIInstances *>(application, slot++), Expect("UIInstances");
    CallSlot<void>(application, 1), Expect("destructor");
}

QTEST_MAIN(tst_Interfaces)
#include "Interfaces_test.moc"
