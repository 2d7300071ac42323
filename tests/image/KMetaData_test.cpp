// Tests of the copies of metadata blocks that an image keeps.
#include "KMetaData.h"

#include "Case.h"

#include <QtTest>

#include <cstring>

namespace {

/// One block of each kind, on the stack, in buffers of exact size.
struct Blocks {
    quint8 icc[3] = {1, 0, 3};
    char xmp[32] = "<x:m a:b='1'><c>text</c></x:m>";
    char name[8] = "Caption";
    char value[4] = "Sea";
    quint8 number[2] = {42, 0};
    GFL_ICCPROFILE_DATA iccBlock = {icc, 3};
    GFL_XMP_DATA xmpBlock = {reinterpret_cast<quint8 *>(xmp), quint32(std::strlen(xmp))};
    GFL_IPTC_ENTRY entries[2] = {{0x278, name, value}, {0x219, nullptr, value}};
    GFL_IPTC_DATA iptcBlock = {2, entries};
    GFL_EXIF_ENTRYEX last = {305, 2, 1, 7, 8, 0, nullptr, nullptr};
    GFL_EXIF_ENTRYEX first = {274, 3, 1, 0, 0, 2, number, &last};
    GFL_EXIF_DATAEX exifBlock = {&first, 9};

    void Fill(KMetaData *to)
    {
        to->SetIccProfile(&iccBlock);
        to->SetXmp(&xmpBlock);
        to->SetIptc(&iptcBlock);
        to->SetExifex(&exifBlock);
    }
};

} // namespace

class tst_KMetaData : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void copiesAreDeep();
    void ownBlockAsSource();
    void emptyBlocks();
    void xmpTree();
};

void tst_KMetaData::copiesAreDeep()
{
    KMetaData assigned;
    {
        Blocks blocks;
        KMetaData original;
        blocks.Fill(&original);
        const KMetaData copy(original);
        QVERIFY(copy.IccProfile()->Data != original.IccProfile()->Data && copy.Exifex() != original.Exifex());
        assigned = copy;
        std::memset(static_cast<void *>(blocks.icc), 0, sizeof blocks.icc);
    }
    QCOMPARE(QByteArray(reinterpret_cast<char *>(assigned.IccProfile()->Data), 3), QByteArray("\1\0\3", 3));
    QCOMPARE(assigned.Iptc()->NumberOfItems, 2u);
    QCOMPARE(assigned.Iptc()->ItemsList[0].Id, 0x278u);
    QCOMPARE(assigned.Iptc()->ItemsList[0].Name, "Caption");
    QCOMPARE(assigned.Iptc()->ItemsList[1].Value, "Sea");
    QVERIFY(!assigned.Iptc()->ItemsList[1].Name);
    const GFL_EXIF_ENTRYEX *first = assigned.Exifex()->Root;
    QVERIFY(assigned.Exifex()->Flags == 9 && first->Tag == 274 && first->Format == 3 && first->Block == 1);
    QVERIFY(first->Length == 2 && first->Data[0] == 42);
    const GFL_EXIF_ENTRYEX *last = first->Next;
    QVERIFY(last->Tag == 305 && last->Reserved1 == 7 && last->Reserved2 == 8 && last->Length == 0 && !last->Data);
    QVERIFY(!last->Next);
}

void tst_KMetaData::ownBlockAsSource()
{
    Blocks blocks;
    KMetaData data;
    blocks.Fill(&data);
    data.SetXmp(data.Xmp());
    KMetaData &itself = data;
    data = itself;
    QCOMPARE(data.Xmp()->Length, blocks.xmpBlock.Length);
    QCOMPARE(data.Exifex()->Root->Data[0], quint8(42));
    data.SetIptc(nullptr); // removes only this block
    QVERIFY(!data.Iptc() && data.Exifex() && data.IccProfile() && data.Xmp());
}

void tst_KMetaData::emptyBlocks()
{
    GFL_EXIF_DATAEX exif = {nullptr, 5};
    GFL_IPTC_DATA iptc = {0, nullptr};
    GFL_ICCPROFILE_DATA icc = {nullptr, 12}; // a length without bytes
    GFL_IPTC_ENTRY entry = {};
    GFL_IPTC_DATA endless = {0xFFFFFFFF, &entry}, withoutList = {2, nullptr};
    KMetaData data;
    data.SetIptc(&endless); // the size exceeds 32 bits
    QVERIFY(!data.Iptc());
    data.SetExifex(&exif);
    data.SetIptc(&iptc);
    data.SetIccProfile(&icc);
    QVERIFY(data.Iptc() && data.Iptc()->NumberOfItems == 0);
    data.SetIptc(&withoutList);
    QVERIFY(data.Exifex() && !data.Exifex()->Root && data.Exifex()->Flags == 5);
    QVERIFY(data.Iptc() && data.Iptc()->NumberOfItems == 0);
    QCOMPARE(data.IccProfile()->Length, 0u);
}

void tst_KMetaData::xmpTree()
{
    Blocks blocks;
    KMetaData data;
    QVERIFY(data.DomXmp().isNull());
    blocks.Fill(&data);
    const QDomElement root = data.DomXmp();          // outlives its document
    QCOMPARE(root.tagName(), QStringLiteral("x:m")); // including the prefix
    QCOMPARE(root.attribute(QStringLiteral("a:b")), QStringLiteral("1"));
    QCOMPARE(root.elementsByTagName(QStringLiteral("c")).at(0).toElement().text(), QStringLiteral("text"));
    for (const QByteArray &bad : {QByteArray("<x"), QByteArray("\0\xff", 2), QByteArray("<a>").repeated(100000)}) {
        const Case named(bad.left(20));
        GFL_XMP_DATA block = {reinterpret_cast<quint8 *>(const_cast<char *>(bad.constData())), quint32(bad.size())};
        data.SetXmp(&block);
        QVERIFY(data.DomXmp().isNull());
    }
}

QTEST_GUILESS_MAIN(tst_KMetaData)
#include "KMetaData_test.moc"
