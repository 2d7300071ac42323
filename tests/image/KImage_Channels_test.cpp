// Channels, blending, arithmetic and the bridges to Qt.
#include "KImage.h"

#include "KOmp.h"
#include "TestImages.h"

#include <QImage>
#include <QPixmap>
#include <QtTest>

#include <cmath>

namespace {

/// Share of the full range of a sample, as integers of another depth round it.
double Rescaled(double value, const TestForm &from, const TestForm &to)
{
    const double share = value / from.Full();
    return to.IsFloat() ? share : std::clamp(share, 0.0, 1.0) * to.Full();
}

} // namespace

class tst_KImageChannels : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void extract_data();
    void extract();
    void extractOntoItself();
    void setChannel_data();
    void setChannel();
    void blend_data();
    void blend();
    void blendOntoItself();
    void blendWithoutAlphaOverwrites();
    void operators_data();
    void operators();
    void factors();
    void guards();
    void fromQImage();
    void toQImage();
};

void tst_KImageChannels::extract_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    for (int from = 0; from < kFormCount; ++from)
        for (int to : {k8uGrey, k16uGrey, k32fGrey})
            QTest::addRow("%s to %d bits", kForms[from].name, kForms[to].bits) << from << to;
}

void tst_KImageChannels::extract()
{
    QFETCH(int, from);
    QFETCH(int, to);
    const TestForm &form = kForms[from], &planeForm = kForms[to];
    TestImage source(form, 521, 3, 4 * 3 + 1); // longer than a run, rows not aligned
    source.FillWithNoise(1);
    for (int channel = 0; channel < form.channels; ++channel) {
        KImage plane;
        source.image.ExtractChannel(plane, planeForm.bits, channel);
        QCOMPARE(int(plane.type()), int(GFL_GREY));
        QCOMPARE(int(plane.bitsPerComponent()), planeForm.bits);
        TestImage got(planeForm, 521, 3);
        plane.CopyTo(got.image, 0, 0);
        for (int i = 0; i < 521 * 3; ++i) {
            const double wanted = Rescaled(source.Sample(i % 521, i / 521, channel), form, planeForm);
            QVERIFY(std::fabs(got.Sample(i % 521, i / 521, 0) - wanted) <= (form.bits == planeForm.bits ? 0
                                                                                : planeForm.IsFloat()   ? 1e-6
                                                                                : form.bits == 16       ? 1
                                                                                                        : 0.505));
        }
    }
}

void tst_KImageChannels::extractOntoItself()
{
    KImage image(3, 2, GFL_RGBA, 16, /*clear=*/true, nullptr, 0);
    reinterpret_cast<quint16 *>(image.getData(2, 1))[3] = 0x8080;
    image.ExtractAlpha(image, 8);
    QCOMPARE(int(image.type()), int(GFL_GREY));
    QCOMPARE(*image.getData(2, 1), quint8(0x80));
}

void tst_KImageChannels::setChannel_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    for (int from : {k8uGrey, k16uGrey, k32fGrey})
        for (int to = 0; to < kFormCount; ++to)
            QTest::addRow("%d bits into %s", kForms[from].bits, kForms[to].name) << from << to;
}

void tst_KImageChannels::setChannel()
{
    QFETCH(int, from);
    QFETCH(int, to);
    const TestForm &planeForm = kForms[from], &form = kForms[to];
    for (int channel = 0; channel < form.channels; ++channel) {
        TestImage plane(planeForm, 521, 2), target(form, 521, 2, 3), wanted(form, 521, 2, 3);
        plane.FillWithNoise(1);
        target.FillWithNoise(2);
        wanted.FillWithNoise(2);
        target.image.SetChannel(plane.image, channel);
        for (int i = 0; i < 521 * 2; ++i) {
            const double got = target.Sample(i % 521, i / 521, channel);
            const double exact = Rescaled(plane.Sample(i % 521, i / 521, 0), planeForm, form);
            QVERIFY(std::fabs(got - exact) <= (form.bits == planeForm.bits ? 0
                                                   : form.IsFloat()        ? 1e-6
                                                   : planeForm.bits == 16  ? 1
                                                                           : 0.505));
            wanted.SetSample(i % 521, i / 521, channel, got);
        }
        QVERIFY2(target.Bytes() == wanted.Bytes(), "another channel or a gap was written");
    }
}

void tst_KImageChannels::blend_data()
{
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("to");
    QTest::addColumn<int>("threads");
    for (int from : {k8uRgba, k16uRgba, k32fRgba})
        for (int to = 0; to < kFormCount; ++to)
            QTest::addRow("%s onto %s", kForms[from].name, kForms[to].name) << from << to << 1 + to % 2;
}

void tst_KImageChannels::blend()
{
    QFETCH(int, from);
    QFETCH(int, to);
    QFETCH(int, threads);
    const TestForm &form = kForms[from], &targetForm = kForms[to];
    TestImage source(form, 40, 30), target(targetForm, 37, 23, 8), wanted(targetForm, 37, 23, 8);
    source.FillWithNoise(1, 0.0, 1.0);
    target.FillWithNoise(2, 0.0, 1.0);
    wanted.FillWithNoise(2, 0.0, 1.0);
    KImage converted;
    source.image.Convert(converted, targetForm.type, targetForm.bits); // tested on its own
    TestImage colors(targetForm, 40, 30);
    converted.CopyTo(colors.image, 0, 0);

    constexpr int kX = 5, kY = 7; // clipped at the right and below
    komp_num_threads = threads;
    source.image.BlendTo(target.image, kX, kY);
    komp_num_threads = 1;
    const int blended = targetForm.channels == 4 ? 3 : targetForm.channels;
    for (int y = kY; y < 23; ++y) {
        for (int x = kX; x < 37; ++x) {
            const double alpha = source.Sample(x - kX, y - kY, 3) / form.Full();
            for (int c = 0; c < blended; ++c) {
                const double t = wanted.Sample(x, y, c), s = colors.Sample(x - kX, y - kY, c);
                const double exact = t - (t - s) * alpha, got = target.Sample(x, y, c);
                // Integers are cut off; a product that comes out as a whole number may fall to either side.
                const bool isRight =
                    targetForm.IsFloat() ? std::fabs(got - exact) < 1e-6 : got <= exact + 0.02 && got > exact - 1.02;
                QVERIFY2(isRight, qPrintable(QStringLiteral("%1 instead of %2").arg(got).arg(exact)));
                wanted.SetSample(x, y, c, got);
            }
        }
    }
    QVERIFY2(target.Bytes() == wanted.Bytes(), "alpha or the surroundings were written");
}

void tst_KImageChannels::blendOntoItself()
{
    TestImage image(kForms[k8uRgba], 1, 4);
    for (int y = 0; y < 4; ++y) {
        image.SetSample(0, y, 0, 10 * (y + 1));
        image.SetSample(0, y, 3, 255);
    }
    image.image.BlendTo(image.image, 0, 1);
    for (int y = 0; y < 4; ++y) // what it was before, one row down
        QCOMPARE(image.Sample(0, y, 0), y == 0 ? 10.0 : 10.0 * y);
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

void tst_KImageChannels::operators_data()
{
    QTest::addColumn<int>("form");
    QTest::addColumn<int>("operation");
    const char *names[] = {"-=", "+=", "*="};
    for (int form : {k8uGrey, k8uRgb, k8uRgba, k32fGrey, k32fRgb, k32fRgba})
        for (int operation = 0; operation < 3; ++operation)
            QTest::addRow("%s %s", kForms[form].name, names[operation]) << form << operation;
}

void tst_KImageChannels::operators()
{
    QFETCH(int, form);
    QFETCH(int, operation);
    // Different strides: each operand has its own.
    TestImage image(kForms[form], 523, 2, 4), other(kForms[form], 523, 2, 12), before(kForms[form], 523, 2, 4);
    image.FillWithNoise(1);
    before.FillWithNoise(1);
    other.FillWithNoise(2);
    if (kForms[form].bits == 8) { // the ends of the range
        const double ends[][2] = {{255, 255}, {200, 100}, {0, 255}, {255, 0}};
        for (int i = 0; i < 4; ++i) {
            image.SetSample(i, 0, 0, ends[i][0]);
            before.SetSample(i, 0, 0, ends[i][0]);
            other.SetSample(i, 0, 0, ends[i][1]);
        }
    }
    KImage &result = operation == 0 ? image.image -= other.image
        : operation == 1            ? image.image += other.image
                                    : image.image *= other.image;
    QCOMPARE(&result, &image.image);
    const bool halves = kForms[form].bits == 8;
    for (int i = 0; i < 523 * 2 * kForms[form].channels; ++i) {
        const int x = i / kForms[form].channels % 523, y = i / kForms[form].channels / 523,
                  c = i % kForms[form].channels;
        const double a = before.Sample(x, y, c), b = other.Sample(x, y, c);
        const double exact = operation == 0 ? (a - b) / (halves ? 2 : 1)
            : operation == 1                ? (a + b) / (halves ? 2 : 1)
                                            : a * b / (halves ? 256 : 1);
        const double wanted = halves ? std::max(exact, 0.0) : exact;
        QVERIFY(std::fabs(image.Sample(x, y, c) - wanted) <= (halves ? 0.5 : 1e-6));
        before.SetSample(x, y, c, image.Sample(x, y, c));
    }
    QVERIFY(image.Bytes() == before.Bytes());
}

void tst_KImageChannels::factors()
{
    const struct {
        FormIndex form;
        float factor;
        double in, colors, alpha;
    } rows[] = {
        {k32fRgba, 0.5f, 0.5, 0.25, 0.5},                                  // alpha of floats stays
        {k32fRgb, -2.0f, 0.5, -1.0, 0.0},  {k8uRgba, 1.0f, 255, 254, 254}, // a part in 256 less
        {k8uRgb, 0.5f, 200, 99, 0},                                        // 200 * 127 / 256
        {k8uGrey, 2.0f, 200, 255, 0},                                      // saturated
        {k8uRgba, 2.0f, 100, 199, 100},                                    // 100 * 510 / 256
        {k8uGrey, -1.0f, 200, 0, 0},       {k16uRgba, 0.5f, 60000, 29999, 59999},
        {k16uRgb, 1e30f, 60000, 65535, 0}, {k16uGrey, std::nanf(""), 60000, 0, 0},
    };
    for (const auto &row : rows) {
        const TestForm &form = kForms[row.form];
        TestImage image(form, 11, 2, 8);
        for (int i = 0; i < 22 * form.channels; ++i)
            image.SetSample(i / form.channels % 11, i / form.channels / 11, i % form.channels, row.in);
        image.image *= row.factor;
        for (int c = 0; c < form.channels; ++c)
            QCOMPARE(image.Sample(10, 1, c), c == 3 ? row.alpha : row.colors);
    }
}

void tst_KImageChannels::guards()
{
    const QString bitmap = QStringLiteral("Invalid Bitmap"), parameter = QStringLiteral("Invalid Parameter");
    const auto make = [](int width, int height, int type, int bits) {
        return KImage(width, height, static_cast<unsigned short>(type), bits, /*clear=*/true, nullptr, 0);
    };
    KImage empty, target, rgb = make(4, 3, GFL_RGB, 8), words = make(4, 3, GFL_RGB, 16),
                          plane = make(4, 3, GFL_GREY, 8);
    KImage palette = make(4, 3, GFL_COLORS, 8), deep = make(4, 3, GFL_RGBA, 24), seeThrough = make(2, 2, GFL_RGBA, 8);
    KImage high = make(4, 4, GFL_GREY, 8), narrow = make(3, 3, GFL_RGB, 8), rgba = make(4, 3, GFL_RGBA, 8);
    QImage image(2, 2, QImage::Format_RGB888);
    empty.ToQImage(image); // leaves it
    QCOMPARE(image.format(), QImage::Format_RGB888);

    QCOMPARE(Thrown([&] { empty.ExtractChannel(target, 8, 0); }), bitmap);
    QCOMPARE(Thrown([&] { rgb.ExtractAlpha(target, 8); }), parameter);
    QCOMPARE(Thrown([&] { rgb.ExtractChannel(target, 8, -1); }), parameter);
    QCOMPARE(Thrown([&] { rgb.ExtractChannel(target, 12, 0); }), parameter);
    QCOMPARE(Thrown([&] { empty.SetChannel(plane, 0); }), bitmap);
    QCOMPARE(Thrown([&] { rgb.SetAlpha(words); }), parameter);
    QCOMPARE(Thrown([&] { rgb.SetChannel(words, 0); }), bitmap);
    QCOMPARE(Thrown([&] { rgb.SetChannel(empty, 0); }), bitmap);
    QCOMPARE(Thrown([&] { rgb.SetChannel(high, 0); }), parameter);
    QCOMPARE(Thrown([&] { rgb.SetChannel(plane, -1); }), parameter);

    QCOMPARE(Thrown([&] { empty.BlendTo(rgb, 0, 0); }), bitmap);
    QCOMPARE(Thrown([&] { rgb.BlendTo(empty, 0, 0); }), parameter);
    for (const QPoint at : {QPoint(-1, 0), QPoint(0, -1), QPoint(4, 0), QPoint(0, 3)}) {
        QCOMPARE(Thrown([&] { rgb.BlendTo(words, at.x(), at.y()); }), parameter);
        QCOMPARE(Thrown([&] { seeThrough.BlendTo(words, at.x(), at.y()); }), parameter); // a path of its own
    }
    QCOMPARE(Thrown([&] { palette.BlendTo(rgb, 0, 0); }), parameter);
    QCOMPARE(Thrown([&] { deep.BlendTo(rgb, 0, 0); }), bitmap);
    QCOMPARE(Thrown([&] { seeThrough.BlendTo(deep, 0, 0); }), parameter);
    QCOMPARE(Thrown([&] { palette.ToQImage(image); }), bitmap);

    for (KImage *bad : {&deep, &empty, &palette})
        QCOMPARE(Thrown([&] { *bad *= 0.5f; }), bitmap);
    for (KImage *bad : {&palette, &empty})
        QCOMPARE(Thrown([&] { *bad += rgb; }), bitmap);
    QCOMPARE(Thrown([&] { words += words; }), bitmap);
    QCOMPARE(Thrown([&] { rgb -= empty; }), parameter);
    QCOMPARE(Thrown([&] { rgb -= words; }), parameter);
    QCOMPARE(Thrown([&] { rgb *= narrow; }), parameter);
    QCOMPARE(Thrown([&] { rgb += rgba; }), parameter);
}

void tst_KImageChannels::fromQImage()
{
    for (const QImage::Format format :
         {QImage::Format_RGB888, QImage::Format_ARGB32_Premultiplied, QImage::Format_Invalid}) {
        KImage image;
        QCOMPARE(Thrown([&] { image.FromQImage(QImage(3, 2, format)); }), QStringLiteral("Invalid Parameter"));
    }
    for (const QImage::Format format : {QImage::Format_ARGB32, QImage::Format_RGB32}) {
        QImage picture(3, 2, format);
        picture.fill(0);
        reinterpret_cast<QRgb *>(picture.scanLine(1))[2] = qRgba(11, 22, 33, 44);
        const KImage image(picture);
        QCOMPARE(int(image.type()), int(GFL_RGBA));
        const unsigned char wanted[] = {11, 22, 33, 44}; // also of RGB32, whose fourth byte means nothing
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
