// Channels, blending, arithmetic and the bridges to Qt.
#include "KImage.h"

#include "KOmp.h"
#include "TestImages.h"

#include <QImage>
#include <QPixmap>
#include <QtTest>

#include <cmath>
#include <functional>

Q_DECLARE_METATYPE(std::function<void()>)

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
    void blendOnceByHand();
    void blendOntoItself();
    void blendWithoutAlphaOverwrites();
    void operators_data();
    void operators();
    void factors_data();
    void factors();
    void guards_data();
    void guards();
    void fromQImage_data();
    void fromQImage();
    void toQImage();
    void emptyToQImage();
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

void tst_KImageChannels::blendOnceByHand()
{
    TestImage source(kForms[k32fRgba], 1, 1), target(kForms[k8uRgb], 1, 1);
    for (int c = 0; c < 3; ++c) {
        source.SetSample(0, 0, c, 201 / 255.0);
        target.SetSample(0, 0, c, 100);
    }
    source.SetSample(0, 0, 3, 0.5);
    source.image.BlendTo(target.image, 0, 0);
    QCOMPARE(target.Sample(0, 0, 1), 150.0); // 150.5, cut off
    source.SetSample(0, 0, 3, 100);          // a float alpha may be anything: the range of the target holds
    source.image.BlendTo(target.image, 0, 0);
    QCOMPARE(target.Sample(0, 0, 1), 255.0);
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

void tst_KImageChannels::factors_data()
{
    QTest::addColumn<int>("form");
    QTest::addColumn<float>("factor");
    QTest::addColumn<double>("in");
    QTest::addColumn<double>("colors");
    QTest::addColumn<double>("alpha");
    QTest::newRow("float, alpha stays") << int(k32fRgba) << 0.5f << 0.5 << 0.25 << 0.5;
    QTest::newRow("float, negative") << int(k32fRgb) << -2.0f << 0.5 << -1.0 << 0.0;
    QTest::newRow("8u by one: a part in 256 less") << int(k8uRgba) << 1.0f << 255.0 << 254.0 << 254.0;
    QTest::newRow("8u by a half") << int(k8uRgb) << 0.5f << 200.0 << 99.0 << 0.0; // 200 * 127 / 256
    QTest::newRow("8u by two, saturated") << int(k8uGrey) << 2.0f << 200.0 << 255.0 << 0.0;
    QTest::newRow("8u by two") << int(k8uRgba) << 2.0f << 100.0 << 199.0 << 100.0; // 100 * 510 / 256
    QTest::newRow("8u negative") << int(k8uGrey) << -1.0f << 200.0 << 0.0 << 0.0;
    QTest::newRow("16u by a half") << int(k16uRgba) << 0.5f << 60000.0 << 29999.0 << 59999.0;
    QTest::newRow("16u by far too much") << int(k16uRgb) << 1e30f << 60000.0 << 65535.0 << 0.0;
    QTest::newRow("16u by what is not a number") << int(k16uGrey) << std::nanf("") << 60000.0 << 0.0 << 0.0;
}

void tst_KImageChannels::factors()
{
    QFETCH(int, form);
    QFETCH(float, factor);
    QFETCH(double, in);
    QFETCH(double, colors);
    QFETCH(double, alpha);
    TestImage image(kForms[form], 11, 2, 8);
    for (int i = 0; i < 22 * kForms[form].channels; ++i)
        image.SetSample(i / kForms[form].channels % 11, i / kForms[form].channels / 11, i % kForms[form].channels, in);
    image.image *= factor;
    for (int c = 0; c < kForms[form].channels; ++c) {
        const double got = image.Sample(10, 1, c), wanted = c == 3 ? alpha : colors;
        QCOMPARE(got, wanted);
    }
}

void tst_KImageChannels::guards_data()
{
    QTest::addColumn<std::function<void()>>("call");
    QTest::addColumn<QString>("message");
    const QString bitmap = QStringLiteral("Invalid Bitmap"), parameter = QStringLiteral("Invalid Parameter");
    const auto row = [](const char *name, const QString &message,
                        const std::function<void(KImage &, KImage &, KImage &)> &call) {
        QTest::newRow(name) << std::function<void()>([call] {
            KImage empty;
            KImage rgb(4, 3, GFL_RGB, 8, /*clear=*/true, nullptr, 0);
            KImage words(4, 3, GFL_RGB, 16, /*clear=*/true, nullptr, 0);
            call(empty, rgb, words);
        }) << message;
    };
    row("extract from nothing", bitmap, [](KImage &e, KImage &i, KImage &) { e.ExtractChannel(i, 8, 0); });
    row("no such channel", parameter, [](KImage &e, KImage &i, KImage &) { i.ExtractAlpha(e, 8); });
    row("channel -1", parameter, [](KImage &e, KImage &i, KImage &) { i.ExtractChannel(e, 8, -1); });
    row("extract at 12 bits", parameter, [](KImage &e, KImage &i, KImage &) { i.ExtractChannel(e, 12, 0); });
    row("set in nothing", bitmap, [](KImage &e, KImage &i, KImage &) { e.SetChannel(i, 0); });
    row("set what isn't there", parameter, [](KImage &, KImage &i, KImage &w) { i.SetAlpha(w); });
    row("set from colours", bitmap, [](KImage &, KImage &i, KImage &w) { i.SetChannel(w, 0); });
    row("set from nothing", bitmap, [](KImage &e, KImage &i, KImage &) { i.SetChannel(e, 0); });
    row("set from another size", parameter, [](KImage &, KImage &i, KImage &) {
        KImage plane(4, 4, GFL_GREY, 8, /*clear=*/true, nullptr, 0);
        i.SetChannel(plane, 0);
    });
    row("blend nothing", bitmap, [](KImage &e, KImage &i, KImage &) { e.BlendTo(i, 0, 0); });
    row("blend onto nothing", parameter, [](KImage &e, KImage &i, KImage &) { i.BlendTo(e, 0, 0); });
    row("blend beside the target", parameter, [](KImage &, KImage &i, KImage &w) { i.BlendTo(w, 0, 3); });
    struct Place {
        const char *name;
        int x, y;
    };
    for (const Place place : {Place{"blend left of the target", -1, 0},
                              {"blend above", 0, -1},
                              {"blend right", 4, 0},
                              {"blend below", 0, 3}}) {
        row(place.name, parameter, [place](KImage &, KImage &i, KImage &) { // through an alpha: a path of its own
            KImage seeThrough(2, 2, GFL_RGBA, 8, /*clear=*/true, nullptr, 0);
            seeThrough.BlendTo(i, place.x, place.y);
        });
    }
    row("blend a palette", parameter, [](KImage &, KImage &i, KImage &) {
        KImage(2, 2, GFL_COLORS, 8, /*clear=*/true, nullptr, 0).BlendTo(i, 0, 0);
    });
    row("blend 24 bits", bitmap,
        [](KImage &, KImage &i, KImage &) { KImage(2, 2, GFL_RGBA, 24, /*clear=*/true, nullptr, 0).BlendTo(i, 0, 0); });
    row("blend onto 24 bits", parameter, [](KImage &, KImage &, KImage &) {
        KImage target(2, 2, GFL_RGB, 24, /*clear=*/true, nullptr, 0);
        KImage(2, 2, GFL_RGBA, 8, /*clear=*/true, nullptr, 0).BlendTo(target, 0, 0);
    });
    row("a palette as a QImage", bitmap, [](KImage &, KImage &, KImage &) {
        QImage image;
        KImage(2, 2, GFL_COLORS, 8, /*clear=*/true, nullptr, 0).ToQImage(image);
    });
    row("set channel -1", parameter, [](KImage &, KImage &i, KImage &) {
        KImage plane(4, 3, GFL_GREY, 8, /*clear=*/true, nullptr, 0);
        i.SetChannel(plane, -1);
    });
    row("24 bits have no factor", bitmap,
        [](KImage &, KImage &, KImage &) { KImage(2, 2, GFL_RGB, 24, /*clear=*/true, nullptr, 0) *= 0.5f; });
    row("palettes have no sum", bitmap, [](KImage &, KImage &i, KImage &) {
        KImage palette(4, 3, GFL_COLORS, 8, /*clear=*/true, nullptr, 0);
        palette += i;
    });
    row("add to nothing", bitmap, [](KImage &e, KImage &i, KImage &) { e += i; });
    row("16 bits have no sum", bitmap, [](KImage &, KImage &, KImage &w) { w += w; });
    row("subtract nothing", parameter, [](KImage &e, KImage &i, KImage &) { i -= e; });
    row("subtract another depth", parameter, [](KImage &, KImage &i, KImage &w) { i -= w; });
    row("multiply by another size", parameter,
        [](KImage &, KImage &i, KImage &) { i *= KImage(3, 3, GFL_RGB, 8, /*clear=*/true, nullptr, 0); });
    row("add another type", parameter,
        [](KImage &, KImage &i, KImage &) { i += KImage(4, 3, GFL_RGBA, 8, /*clear=*/true, nullptr, 0); });
    row("nothing times a factor", bitmap, [](KImage &e, KImage &, KImage &) { e *= 2.0f; });
    row("palette times a factor", bitmap, [](KImage &, KImage &, KImage &) {
        KImage palette(4, 4, GFL_COLORS, 8, /*clear=*/true, nullptr, 0);
        palette *= 2.0f;
    });
}

void tst_KImageChannels::guards()
{
    QFETCH(std::function<void()>, call);
    QFETCH(QString, message);
    QCOMPARE(Thrown(call), message);
}

void tst_KImageChannels::fromQImage_data()
{
    QTest::addColumn<int>("format");
    QTest::addColumn<QString>("message");
    QTest::newRow("ARGB32") << int(QImage::Format_ARGB32) << QStringLiteral("none");
    QTest::newRow("RGB32") << int(QImage::Format_RGB32) << QStringLiteral("none");
    QTest::newRow("RGB888") << int(QImage::Format_RGB888) << QStringLiteral("Invalid Parameter");
    QTest::newRow("premultiplied") << int(QImage::Format_ARGB32_Premultiplied) << QStringLiteral("Invalid Parameter");
    QTest::newRow("null image") << int(QImage::Format_Invalid) << QStringLiteral("Invalid Parameter");
}

void tst_KImageChannels::fromQImage()
{
    QFETCH(int, format);
    QFETCH(QString, message);
    QImage picture(3, 2, QImage::Format(format));
    if (!picture.isNull())
        picture.fill(0);
    if (message == QStringLiteral("none"))
        reinterpret_cast<QRgb *>(picture.scanLine(1))[2] = qRgba(11, 22, 33, 44);
    KImage image;
    QCOMPARE(Thrown([&] { image.FromQImage(picture); }), message);
    if (message != QStringLiteral("none"))
        return;
    QCOMPARE(int(image.type()), int(GFL_RGBA));
    const unsigned char wanted[] = {11, 22, 33, 44}; // also of RGB32, whose fourth byte means nothing
    QVERIFY(std::equal(wanted, wanted + 4, image.getData(2, 1)));
    QVERIFY(std::equal(wanted, wanted + 4, KImage(picture).getData(2, 1)));
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

void tst_KImageChannels::emptyToQImage()
{
    QImage picture(2, 2, QImage::Format_RGB888);
    KImage().ToQImage(picture);
    QCOMPARE(picture.format(), QImage::Format_RGB888);
}

QTEST_MAIN(tst_KImageChannels)
#include "KImage_Channels_test.moc"
