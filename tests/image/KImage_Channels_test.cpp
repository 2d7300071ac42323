// Tests of channels, blending, arithmetic, and conversions from and to Qt.
#include "KImage.h"

#include "Case.h"
#include "KOmp.h"
#include "Table.h"
#include "TestImages.h"

#include <QImage>
#include <QPixmap>
#include <QtTest>

#include <cmath>

namespace {

double Rescaled(double value, const TestForm &from, const TestForm &to)
{
    const double share = value / from.Full();
    return to.IsFloat() ? share : std::clamp(share, 0.0, 1.0) * to.Full();
}

double RoundingOf(const TestForm &from, const TestForm &to)
{
    return from.bits == to.bits ? 0 : to.IsFloat() ? 1e-6 : from.bits == 16 ? 1 : 0.505;
}

constexpr FormIndex kGrayForms[] = {k8uGray, k16uGray, k32fGray};

} // namespace

class tst_KImageChannels : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void extractOntoItself();
    void setAndExtract();
    void blend();
    void blendOntoItself();
    void blendWithoutAlphaOverwrites();
    void operators();
    void factors();
    void guards();
    void fromQImage();
    void toQImage();
};

void tst_KImageChannels::extractOntoItself()
{
    KImage image(3, 2, GFL_RGBA, 16, /*clear=*/true, nullptr, 0);
    reinterpret_cast<quint16 *>(image.getData(2, 1))[3] = 0x8080;
    image.ExtractAlpha(image, 8);
    QCOMPARE(int(image.type()), int(GFL_GREY));
    QCOMPARE(*image.getData(2, 1), quint8(0x80));
}

void tst_KImageChannels::setAndExtract()
{
    for (const TestForm &form : kForms) {
        const Case named(form.name);
        for (int i = 0; i < 3 * form.channels; ++i) {
            const TestForm &planeForm = kForms[kGrayForms[i % 3]];
            TestImage plane(planeForm, 521, 2), target(form, 521, 2, 3), wanted(form, 521, 2, 3);
            plane.FillWithNoise(1);
            target.FillWithNoise(2); // rows are not aligned and longer than the pieces that are converted at a time
            wanted.FillWithNoise(2);
            KImage before;
            target.image.ExtractChannel(before, planeForm.bits, i / 3);
            QVERIFY(before.type() == GFL_GREY && before.bitsPerComponent() == planeForm.bits);
            const auto extracted = [&](int x, int y, int) {
                return Rescaled(wanted.Sample(x, y, i / 3), form, planeForm);
            };
            QCOMPARE(Difference(TestImage(planeForm, before), extracted, RoundingOf(form, planeForm)), QString());
            target.image.SetChannel(plane.image, i / 3);
            const auto replaced = [&](int x, int y, int c) {
                return c == i / 3 ? Rescaled(plane.Sample(x, y, 0), planeForm, form) : wanted.Sample(x, y, c);
            };
            QCOMPARE(Difference(target, replaced, RoundingOf(planeForm, form)), QString());
            QVERIFY(target.HasGapsOf(wanted));
        }
    }
}

void tst_KImageChannels::blend()
{
    for (int pair = 0; pair < 3 * kFormCount; ++pair) {
        const TestForm &form = kForms[3 * (pair % 3) + 2], &targetForm = kForms[pair / 3]; // forms with alpha
        TestImage source(form, 40, 30), target(targetForm, 37, 23, 8), wanted(targetForm, 37, 23, 8);
        source.FillWithNoise(1, 0.0, 1.0);
        target.FillWithNoise(2, 0.0, 1.0);
        wanted.FillWithNoise(2, 0.0, 1.0);
        KImage converted;
        source.image.Convert(converted, targetForm.type, targetForm.bits); // tested separately
        const TestImage colors(targetForm, converted);
        constexpr int kX = 5, kY = 7; // clipped at the right and at the bottom
        komp_num_threads = 1 + pair % 2;
        source.image.BlendTo(target.image, kX, kY);
        komp_num_threads = 1;
        const auto blended = [&](int x, int y, int c) {
            const double old = wanted.Sample(x, y, c);
            if (x < kX || y < kY || (targetForm.channels == 4 && c == 3))
                return old;
            const double share = source.Sample(x - kX, y - kY, 3) / form.Full();
            return old - (old - colors.Sample(x - kX, y - kY, c)) * share - (targetForm.IsFloat() ? 0 : 0.5);
        };
        // Integers are truncated; a product close to an integer may fall on either side.
        QCOMPARE(Difference(target, blended, targetForm.IsFloat() ? 1e-6 : 0.52), QString());
        QVERIFY(target.HasGapsOf(wanted));
    }
}

void tst_KImageChannels::blendOntoItself()
{
    TestImage image(kForms[k8uRgba], 1, 4);
    for (int y = 0; y < 4; ++y) {
        image.SetSample(0, y, 0, 10 * (y + 1));
        image.SetSample(0, y, 3, 255);
    }
    image.image.BlendTo(image.image, 0, 1);
    for (int y = 0; y < 4; ++y) { // the previous content, one row further down
        const Case named("row", y);
        QCOMPARE(image.Sample(0, y, 0), y == 0 ? 10.0 : 10.0 * y);
    }
}

void tst_KImageChannels::blendWithoutAlphaOverwrites()
{
    TestImage source(kForms[k8uRgb], 2, 2), target(kForms[k8uRgba], 3, 3);
    source.FillWithNoise(1);
    source.image.BlendTo(target.image, 2, 2);
    QCOMPARE(target.Sample(2, 2, 1), source.Sample(0, 0, 1));
    QCOMPARE(target.Sample(2, 2, 3), 255.0);
    QCOMPARE(target.Sample(1, 2, 3), 0.0);
}

void tst_KImageChannels::operators()
{
    for (const FormIndex index : {k8uGray, k8uRgb, k8uRgba, k32fGray, k32fRgb, k32fRgba}) {
        const Case named(index);
        for (const char operation : {'-', '+', '*'}) {
            const TestForm &form = kForms[index];
            // The operands have different strides.
            TestImage image(form, 523, 2, 4), other(form, 523, 2, 12), before(form, 523, 2, 4);
            image.FillWithNoise(1);
            before.FillWithNoise(1);
            other.FillWithNoise(2);
            KImage &result = operation == '-' ? image.image -= other.image
                : operation == '+'            ? image.image += other.image
                                              : image.image *= other.image;
            QCOMPARE(&result, &image.image);
            const auto wanted = [&](int x, int y, int c) {
                const double a = before.Sample(x, y, c), b = other.Sample(x, y, c);
                const double exact = operation == '-' ? a - b : operation == '+' ? a + b : a * b;
                return form.IsFloat() ? exact : std::max(exact / (operation == '*' ? 256 : 2), 0.0); // 8 bits: scaled
            };
            QCOMPARE(Difference(image, wanted, form.IsFloat() ? 1e-6 : 0.5), QString());
            QVERIFY(image.HasGapsOf(before));
        }
    }
}

void tst_KImageChannels::factors()
{
    for (const QStringList &row : ReadTable(QStringLiteral(FACTORS))) {
        const Case named(row);
        const auto *form = std::find_if(std::begin(kForms), std::end(kForms),
                                        [&row](const TestForm &f) { return row[0] == QLatin1String(f.name); });
        QVERIFY(form != std::end(kForms));
        TestImage image(*form, 11, 2, 8);
        image.Fill([&](int, int, int) { return row[2].toDouble(); });
        image.image *= row[1].toFloat();
        QCOMPARE(Difference(image, [&](int, int, int c) { return row[c == 3 ? 4 : 3].toDouble(); }), QString());
    }
}

void tst_KImageChannels::guards()
{
    QImage picture(2, 2, QImage::Format_RGB888);
    KImage().ToQImage(picture); // unchanged
    QCOMPARE(picture.format(), QImage::Format_RGB888);
    const QMap<QByteArray, unsigned short> types = {
        {"gray", GFL_GREY}, {"RGB", GFL_RGB}, {"RGBA", GFL_RGBA}, {"palette", GFL_COLORS}};
    using Call = void (*)(KImage &, KImage &, int, int);
    const QMap<QByteArray, Call> calls = {
        {"ExtractChannel", [](KImage &i, KImage &to, int bits, int n) { i.ExtractChannel(to, bits, n); }},
        {"ExtractAlpha", [](KImage &i, KImage &to, int bits, int) { i.ExtractAlpha(to, bits); }},
        {"SetChannel", [](KImage &i, KImage &from, int n, int) { i.SetChannel(from, n); }},
        {"SetAlpha", [](KImage &i, KImage &from, int, int) { i.SetAlpha(from); }},
        {"BlendTo", [](KImage &i, KImage &to, int x, int y) { i.BlendTo(to, x, y); }},
        {"ToQImage",
         [](KImage &i, KImage &, int, int) {
             QImage to;
             i.ToQImage(to);
         }},
        {"scale", [](KImage &i, KImage &, int, int) { i *= 0.5f; }},
        {"add", [](KImage &i, KImage &other, int, int) { i += other; }},
        {"subtract", [](KImage &i, KImage &other, int, int) { i -= other; }},
        {"multiply", [](KImage &i, KImage &other, int, int) { i *= other; }}};
    for (const QStringList &row : ReadTable(QStringLiteral(CHANNEL_CALLS))) {
        const Case named(row);
        KImage images[2];
        for (const int n : {0, 1}) {
            const QStringList form = row[n + 1].split(QLatin1Char(' '));
            if (form.size() == 4)
                images[n].AllocBitmap(form[1].toInt(), form[2].toInt(), types[form[0].toLatin1()], form[3].toInt(),
                                      true, nullptr, 0);
        }
        KImage &other = images[row[2] == QLatin1String("itself") ? 0 : 1];
        const QStringList arguments = row[3].split(QLatin1Char(' '));
        const Call call = calls[row[0].toLatin1()];
        QCOMPARE(Thrown([&] { call(images[0], other, arguments[0].toInt(), arguments[1].toInt()); }), row[4]);
    }
}

void tst_KImageChannels::fromQImage()
{
    for (const QImage::Format format :
         {QImage::Format_RGB888, QImage::Format_ARGB32_Premultiplied, QImage::Format_Invalid}) {
        const Case named(format);
        KImage image;
        QCOMPARE(Thrown([&] { image.FromQImage(QImage(3, 2, format)); }), QStringLiteral("Invalid Parameter"));
    }
    for (const QImage::Format format : {QImage::Format_ARGB32, QImage::Format_RGB32}) {
        const Case named(format);
        QImage picture(3, 2, format);
        picture.fill(0);
        reinterpret_cast<QRgb *>(picture.scanLine(1))[2] = qRgba(11, 22, 33, 44);
        const KImage image(picture);
        QCOMPARE(int(image.type()), int(GFL_RGBA));
        const unsigned char wanted[] = {11, 22, 33, 44}; // even from RGB32, whose fourth byte is unused
        QVERIFY(std::equal(wanted, wanted + 4, image.getData(2, 1)));
    }
}

void tst_KImageChannels::toQImage()
{
    TestImage source(kForms[k32fRgb], 3, 2);
    source.SetSample(2, 1, 0, 1.7); // clipped
    source.SetSample(2, 1, 1, 0.2);
    source.SetSample(2, 1, 2, -1);
    QImage picture;
    source.image.ToQImage(picture);
    QCOMPARE(picture.format(), QImage::Format_ARGB32);
    QCOMPARE(picture.size(), QSize(3, 2));
    QCOMPARE(picture.pixel(2, 1), qRgba(255, 51, 0, 255));
    QPixmap pixmap;
    source.image.ToQPixmap(pixmap);
    QCOMPARE(pixmap.toImage().pixelColor(2, 1), QColor(255, 51, 0));
}

QTEST_MAIN(tst_KImageChannels)
#include "KImage_Channels_test.moc"
