#include "KImage.h"

#include "Case.h"
#include "Thrown.h"

#include <QtTest>

#include <cmath>
#include <cstring>
#include <vector>

#include <malloc.h>

namespace {

const QString kInvalidBitmap = QStringLiteral("Invalid Bitmap");
const QString kInvalidParameter = QStringLiteral("Invalid Parameter");

} // namespace

class tst_KImage : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { mallopt(M_PERTURB, 0x5A); } // new memory isn't zero
    void record();
    void refusedShapes();
    void sameShapeKeepsItsBlock();
    void wrappedBlockSurvives();
    void copyOwnsItsPixels();
    void logAndDpi();
    void integrity();
};

void tst_KImage::record()
{
    const struct {
        int type, width, bits;
        const char *record; // channels, bytes per pixel and per row, number of colors, whether there is a color map
    } rows[] = {{GFL_GREY, 1, 8, "1 1 4 256 false"},  {GFL_RGB, 801, 8, "3 3 2404 0 false"},
                {GFL_RGB, 3, 16, "3 6 20 0 false"},   {GFL_RGBA, 10, 32, "4 16 160 0 false"},
                {GFL_COLORS, 5, 8, "1 1 8 256 true"}, {0x0040, 4, 8, "3 3 12 0 false"},
                {0x2000, 4, 8, "4 4 16 0 false"}};
    for (const auto &[type, width, bits, record] : rows) {
        const Case named(type, width, bits);
        const KImage image(width, 2, static_cast<unsigned short>(type), bits, /*clear=*/true, nullptr, 0);
        const GFL_BITMAP &bitmap = *image.m_bitmap;
        QString text;
        QDebug(&text) << bitmap.Type << bitmap.ComponentsPerPixel << bitmap.BytesPerPixel << bitmap.BytesPerLine
                      << bitmap.ColorUsed << (bitmap.ColorMap != nullptr) << bitmap.LinePadding
                      << bitmap.TransparentIndex << bitmap.Origin << bitmap.Xdpi << bitmap.Ydpi << bitmap.XOffset
                      << bitmap.YOffset;
        QCOMPARE(text, QStringLiteral("%1 %2 4 -1 0 0 0 0 0 ").arg(type).arg(QLatin1String(record)));
        if (bitmap.ColorMap)
            QCOMPARE(QByteArray(reinterpret_cast<const char *>(bitmap.ColorMap), 1024), QByteArray(1024, 0));
        QVERIFY(!bitmap.Comment && !bitmap.MetaData && !bitmap.Name);
        const std::vector<unsigned char> zeros(2 * bitmap.BytesPerLine, 0);
        QCOMPARE(std::memcmp(bitmap.Data, zeros.data(), zeros.size()), 0);
        QCOMPARE(image.getData(width - 1, 1), bitmap.Data + bitmap.BytesPerLine + (width - 1) * bitmap.BytesPerPixel);
    }
}

void tst_KImage::refusedShapes()
{
    const QString memory = QStringLiteral("Not enough memory");
    const struct {
        int width, height, type, bits;
        QString message;
    } rows[] = {{4, 4, 0x0008, 32, kInvalidParameter},         {4, 4, 0, 32, kInvalidParameter},
                {-4, 4, GFL_RGB, 32, kInvalidParameter},       {4, -1, GFL_RGB, 32, kInvalidParameter},
                {4, 4, GFL_RGB, -1, kInvalidParameter},        {4, 4, GFL_RGB, 33, kInvalidParameter},
                {0x10000001, 1, GFL_RGBA, 32, memory}, // the row size exceeds 32 bits
                {0x0FFFFFFF, 0x7FFFFFFF, GFL_RGBA, 32, memory}};
    for (const auto &row : rows) {
        const Case named("row", &row - &*std::begin(rows));
        KImage image(2, 2, GFL_GREY, 8, /*clear=*/true, nullptr, 0);
        for (int attempt = 0; attempt < 2; ++attempt) { // the first attempt must leave no image of that shape
            QCOMPARE(Thrown([&] {
                         image.AllocBitmap(row.width, row.height, static_cast<unsigned short>(row.type), row.bits,
                                           /*clear=*/false, nullptr, 0);
                     }),
                     row.message);
            QVERIFY(!image.m_bitmap || !image.m_bitmap->Data); // the old content is freed
        }
        image.AllocBitmap(2, 2, GFL_GREY, 8, /*clear=*/true, nullptr, 0);
        QCOMPARE(int(*image.getData(1, 1)), 0);
    }
}

void tst_KImage::sameShapeKeepsItsBlock()
{
    KImage image(5, 3, GFL_RGB, 8, /*clear=*/true, nullptr, 0);
    *image.getData(4, 2) = 77;
    const unsigned char *block = image.m_bitmap->Data;
    image.AllocBitmap(5, 3, GFL_RGB, 8, /*clear=*/false, nullptr, 0);
    QCOMPARE(image.m_bitmap->Data, block);
    QCOMPARE(int(*image.getData(4, 2)), 77);
    image.AllocBitmap(5, 3, GFL_RGB, 8, /*clear=*/true, nullptr, 0);
    QCOMPARE(int(*image.getData(4, 2)), 0);
    for (const QSize size : {QSize(5, 3), QSize(4, 3), QSize(4, 2)}) { // form, width and height differ in turn
        const Case named(size);
        image.AllocBitmap(size.width(), size.height(), GFL_RGBA, 16, /*clear=*/false, nullptr, 0);
        QCOMPARE(QSize(image.width(), image.height()), size);
        QCOMPARE(int(image.m_bitmap->BytesPerPixel), 8);
    }
}

void tst_KImage::wrappedBlockSurvives()
{
    std::vector<unsigned char> block(1002 * 2, 9);
    {
        KImage image(5, 2, GFL_RGB, 8, /*clear=*/true, nullptr, 0);
        image.AllocBitmap(5, 2, GFL_RGB, 8, /*clear=*/false, block.data(), 1002);
        QCOMPARE(image.m_bitmap->Data, block.data());
        QCOMPARE(int(image.m_bitmap->LinePadding), 2);
        QVERIFY(!image.m_ownsData);
        *image.getData(1, 1) = 5;
        image.AllocBitmap(5, 2, GFL_RGB, 8, /*clear=*/false, nullptr, 0); // same shape: keeps the wrapped block
        QCOMPARE(image.m_bitmap->Data, block.data());
        image.FreeBitmap();
        QVERIFY(image.m_ownsData && !image.m_bitmap);
    }
    QCOMPARE(int(block[1002 + 3]), 5);
    QCOMPARE(int(block[1002 + 4]), 9);
    const KImage cleared(334, 2, GFL_RGB, 8, /*clear=*/true, block.data(), 1002);
    QCOMPARE(int(block[1002 + 4]), 0);
}

void tst_KImage::copyOwnsItsPixels()
{
    std::vector<unsigned char> block(12 * 2, 9);
    KImage copy;
    {
        KImage wrapping(4, 2, GFL_RGB, 8, /*clear=*/false, block.data(), 12);
        wrapping.SetDPI(300);
        wrapping.m_spareFlag = true;
        wrapping.m_bitmap->XOffset = 7;
        wrapping.m_bitmap->Name = strdup("name");
        wrapping.m_bitmap->Comment = strdup("comment");
        wrapping.m_bitmap->MetaData = &wrapping;
        copy = wrapping;
        wrapping.m_bitmap->MetaData = nullptr;
    }
    block.assign(block.size(), 0);
    QVERIFY(copy.m_ownsData && copy.m_spareFlag);
    QCOMPARE(int(*copy.getData(3, 1)), 9);
    QCOMPARE(int(copy.m_bitmap->Xdpi), 300);
    QCOMPARE(copy.m_bitmap->XOffset, 7);
    QCOMPARE(QByteArray(copy.m_bitmap->Name), QByteArray("name"));
    QVERIFY(!copy.m_bitmap->Comment && !copy.m_bitmap->MetaData); // not copied
    KImage &same = copy;
    copy = same; // self-assignment empties it
    QVERIFY(!copy.m_bitmap);
    KImage palette(1, 1, GFL_COLORS, 8, /*clear=*/true, nullptr, 0);
    palette.m_bitmap->ColorMap[1023] = 5;
    copy = palette;
    palette.m_bitmap->ColorMap[1023] = 6;
    QCOMPARE(int(copy.m_bitmap->ColorMap[1023]), 5);
}

void tst_KImage::logAndDpi()
{
    std::string lines;
    KImage::SetLog([](const std::string &text, void *to) { *static_cast<std::string *>(to) += text; }, &lines);
    KImage::Log("one line");
    KImage::SetLog(nullptr, nullptr);
    KImage::Log("nowhere");
    QCOMPARE(lines.c_str(), "one line");
    KImage image;
    QCOMPARE(Thrown([&] { image.SetDPI(300); }), kInvalidBitmap);
    QCOMPARE(Thrown([&] { image.ClearBitmap(); }), kInvalidBitmap);
    QCOMPARE(Thrown([&] { image.IntegrityValidation(); }), kInvalidBitmap);
    image.AllocBitmap(1, 1, GFL_GREY, 8, /*clear=*/true, nullptr, 0);
    image.SetDPI(0x10000 + 240);
    QCOMPARE(int(image.m_bitmap->Xdpi), 240);
    QCOMPARE(int(image.m_bitmap->Ydpi), 240);
}

void tst_KImage::integrity()
{
    const struct {
        float early, late;
        int result;
    } rows[] = {{0, 1, 0}, {0.5f, -0.5f, -1}, {float(NAN), -0.5f, 2}, {2e9f, float(NAN), 1}, {1e9f, 0, 0}};
    for (const auto &row : rows) {
        const Case named("row", &row - &*std::begin(rows));
        KImage image(3, 2, GFL_RGBA, 32, /*clear=*/true, nullptr, 0);
        std::memcpy(image.getData(0, 0), &row.early, sizeof row.early);
        std::memcpy(image.getData(2, 1) + 12, &row.late, sizeof row.late);
        QCOMPARE(image.IntegrityValidation(), row.result);
    }
    float samples[] = {0.5f, 0.25f, 0.75f, -1};
    KImage wrapped(1, 1, GFL_RGB, 32, /*clear=*/false, samples, 16); // the last sample is in the gap after the row
    QCOMPARE(wrapped.IntegrityValidation(), 0);
}

QTEST_GUILESS_MAIN(tst_KImage)
#include "KImage_test.moc"
