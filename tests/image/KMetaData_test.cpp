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
    GFL_EXIF_ENTRYEX middle = {306, 7, 2, 5, 6, 1, number, &last};
    GFL_EXIF_ENTRYEX first = {274, 3, 1, 3, 4, 2, number, &middle};
    GFL_EXIF_DATAEX exifBlock = {&first, 9};

    void Fill(KMetaData *to)
    {
        to->SetIccProfile(&iccBlock);
        to->SetXmp(&xmpBlock);
        to->SetIptc(&iptcBlock);
        to->SetExifex(&exifBlock);
    }
};

/// Returns all fields of all blocks as text.
QString TextOf(const KMetaData &data)
{
    const auto bytes = [](const quint8 *from, quint32 length) {
        return QByteArray(reinterpret_cast<const char *>(from), int(length));
    };
    QString text;
    QDebug out(&text);
    out << bytes(data.IccProfile()->Data, data.IccProfile()->Length) << bytes(data.Xmp()->Data, data.Xmp()->Length);
    for (quint32 i = 0; i < data.Iptc()->NumberOfItems; ++i) {
        const GFL_IPTC_ENTRY &entry = data.Iptc()->ItemsList[i];
        out << "|" << entry.Id << QByteArray(entry.Name) << QByteArray(entry.Value);
    }
    out << "| flags" << data.Exifex()->Flags;
    for (const GFL_EXIF_ENTRYEX *entry = data.Exifex()->Root; entry; entry = entry->Next)
        out << "|" << entry->Tag << entry->Format << entry->Block << entry->Reserved1 << entry->Reserved2
            << bytes(entry->Data, entry->Length);
    return text;
}

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
    QCOMPARE(TextOf(assigned),
             QStringLiteral(
                 "\"\\x01\\x00\\x03\" \"<x:m a:b='1'><c>text</c></x:m>\" | 632 \"Caption\" \"Sea\" "
                 "| 537 \"\" \"Sea\" | flags 9 | 274 3 1 3 4 \"*\\x00\" | 306 7 2 5 6 \"*\" | 305 2 1 7 8 \"\" "));
    QVERIFY(!assigned.Iptc()->ItemsList[1].Name && !assigned.Exifex()->Root->Next->Next->Data);
}

void tst_KMetaData::ownBlockAsSource()
{
    Blocks blocks;
    KMetaData data;
    blocks.Fill(&data);
    data.SetXmp(data.Xmp());
    KMetaData &itself = data;
    data = itself;
    KMetaData other;
    blocks.Fill(&other);
    QCOMPARE(TextOf(data), TextOf(other));
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
