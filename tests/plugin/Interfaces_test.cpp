// Hosts are compiled separately and call functions by their position in the virtual table; this test checks every
// position.
#include "KIApplication.h"
#include "KIImageDef.h"
#include "KIPluginLibrary.h"
#include "KIPluginOne2One.h"

#include <QtTest>

#include <cstring>

namespace {

/// Returns a virtual function's position in the table of its class. Under the platform's C++ ABI, a pointer to such a
/// member starts with the position in bytes, plus 1 on x86-64. The destructor takes the first two positions.
template <typename Function> int Position(Function function)
{
    std::size_t bytes = 0;
    std::memcpy(&bytes, &function, sizeof bytes);
    return int(bytes / sizeof(void *));
}

template <typename... Functions> QList<int> Positions(Functions... functions)
{
    return {Position(functions)...};
}

QList<int> FromTwoTo(int last)
{
    QList<int> numbers;
    for (int number = 2; number <= last; ++number)
        numbers << number;
    return numbers;
}

} // namespace

class tst_Interfaces : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void order();
};

void tst_Interfaces::order()
{
    using Process = KIPluginOne2One;
    QCOMPARE(Positions(&Process::Name, &Process::Author, &Process::Company, &Process::Comment, &Process::Version,
                       &Process::Icon, &Process::UID, &Process::WizardPage, &Process::OnValidatePage,
                       &Process::AllocParameters, &Process::GetXmlParameters, &Process::CopyParameters,
                       &Process::FreeParameters, &Process::BeforeAfter, &Process::Process, &Process::SetFiles,
                       &Process::GetFileXmlParams),
             FromTwoTo(18));
    QCOMPARE(Positions(&KIPluginLibrary::Plugins), FromTwoTo(2));
    using Def = KIImageDef;
    QCOMPARE(Positions(&Def::GetThumbnail, &Def::FileName, &Def::ShortFileName, &Def::PathName, &Def::nRows,
                       &Def::nCols, &Def::nBands, &Def::nDepth, &Def::HasExif, &Def::HasICC, &Def::IsRaw,
                       &Def::GetFocal, &Def::Model, &Def::GetTimestamp, &Def::GetEV, &Def::Lock, &Def::Unlock,
                       &Def::LockFullSize, &Def::UnlockFullSize),
             FromTwoTo(20));
    using Host = KIApplication;
    QCOMPARE(Positions(&Host::Reserved1, &Host::GetPluginSetting, &Host::SetPluginSetting, &Host::Reserved2,
                       &Host::Locale, &Host::Reserved3, &Host::LoadTranslator, &Host::ImageDefOf, &Host::Reserved4,
                       &Host::ImageInstances, &Host::UIInstances),
             FromTwoTo(12));
}

QTEST_APPLESS_MAIN(tst_Interfaces)
#include "Interfaces_test.moc"
