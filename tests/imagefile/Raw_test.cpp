// Camera raw files: development and its settings, what counts as raw.
#include "Bitmaps.h"
#include "DngFile.h"

#include <QTemporaryDir>
#include <QtTest>

#include <cmath>
#include <limits>

namespace {

QString WriteFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() ? path : QString();
}

} // namespace

class tst_Raw : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void settings_data();
    void settings();
    void whatIsRaw_data();
    void whatIsRaw();
    void damagedFiles();
};

struct Settings {
    int automatic = 0, camera = 1, highlight = 0, autoBright = 0;
    float gamma = 1, brightness = 1, red = 1, blue = 1;
};
Q_DECLARE_METATYPE(Settings)
Q_DECLARE_METATYPE(SensorColour)

void tst_Raw::settings_data()
{
    QTest::addColumn<Settings>("settings");
    QTest::addColumn<SensorColour>("sensor");
    QTest::addColumn<SensorColour>("expected");
    const SensorColour field = {0.1, 0.25, 0.15}, white = {1, 1, 1};
    const float nan = std::numeric_limits<float>::quiet_NaN();
    const auto row = [](const char *name, const Settings &settings, const SensorColour &sensor,
                        const SensorColour &expected) { QTest::newRow(name) << settings << sensor << expected; };
    // The camera's neutral is 0.5, 1, 0.75: its balance multiplies by 2, 1, 4 / 3.
    row("camera balance", {}, field, {0.2, 0.25, 0.2});
    row("no balance: daylight", {0, 0}, field, field);
    row("automatic balance, before the camera's", {1, 1}, field, {0.25, 0.25, 0.25});
    row("brightness", {0, 1, 0, 0, 1, 2}, field, {0.4, 0.5, 0.4});
    row("gamma", {0, 1, 0, 0, 2}, field, {std::sqrt(0.2), 0.5, std::sqrt(0.2)});
    row("brightness before gamma", {0, 1, 0, 0, 2, 2}, field, {std::sqrt(0.4), std::sqrt(0.5), std::sqrt(0.4)});
    row("red scaling", {0, 1, 0, 0, 1, 1, 1.5f}, field, {0.3, 0.25, 0.2});
    row("blue scaling", {0, 1, 0, 0, 1, 1, 1, 1.5f}, field, {0.2, 0.25, 0.3});
    row("scaling in daylight", {0, 0, 0, 0, 1, 1, 2, 3}, field, {0.2, 0.25, 0.45});
    row("scaling beside automatic balance", {1, 0, 0, 0, 1, 1, 2, 0.5f}, field, {0.5, 0.25, 0.125});
    row("auto brightness: white is reached", {0, 1, 0, 1}, field, {0.8, 1, 0.8});
    row("highlights clipped", {}, white, {1, 1, 1});
    row("highlights as they are", {0, 1, 1}, white, {1, 0.5, 2.0 / 3});
    row("highlights blended", {0, 1, 2}, white, {13.0 / 18, 13.0 / 18, 13.0 / 18});
    row("senseless numbers count as 1", {0, 1, 0, 0, nan, -3, 0, nan}, field, {0.2, 0.25, 0.2});
}

void tst_Raw::settings()
{
    QFETCH(Settings, settings);
    QFETCH(SensorColour, sensor);
    QFETCH(SensorColour, expected);
    const QByteArray file = DngFile({64, 48}, sensor);
    for (unsigned flags : {0u, unsigned(GFL_LOAD_ORIGINAL_DEPTH)}) {
        GFL_LOAD_PARAMS params = LoadParams(flags);
        params.RawUseAutomaticBalance = static_cast<std::uint8_t>(settings.automatic);
        params.RawUseCameraBalance = static_cast<std::uint8_t>(settings.camera);
        params.RawHighlight = static_cast<std::uint8_t>(settings.highlight);
        params.RawAutoBright = static_cast<std::uint8_t>(settings.autoBright);
        params.RawGamma = settings.gamma;
        params.RawBrightness = settings.brightness;
        params.RawRedScaling = settings.red;
        params.RawBlueScaling = settings.blue;
        int error = 0;
        const BitmapPtr got = LoadFromMemory(file, &error, params);
        QVERIFY2(got, gflLastErrorText());
        QCOMPARE(QSize(got->Width, got->Height), QSize(64, 48));
        QCOMPARE(int(got->Type), int(GFL_RGB));
        QCOMPARE(int(got->BitsPerComponent), flags == 0 ? 8 : 16);
        const double want[] = {expected.red, expected.green, expected.blue};
        for (int c = 0; c < 3; ++c) {
            const double is = SampleAt(*got, 30, 20, c);
            QVERIFY2(std::abs(is - want[c]) < 0.005, qPrintable(QStringLiteral("%1: %2").arg(c).arg(is)));
        }
    }
}

void tst_Raw::whatIsRaw_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("isDng"); // or an ordinary TIFF
    QTest::addColumn<QByteArray>("expected");
    QTest::newRow("DNG") << QStringLiteral("a.DNG") << true << QByteArray("raw");
    QTest::newRow("DNG under the name of a TIFF") << QStringLiteral("a.tif") << true << QByteArray("raw");
    QTest::newRow("DNG as a camera's own file") << QStringLiteral("a.nef") << true << QByteArray("raw");
    QTest::newRow("TIFF") << QStringLiteral("a.tif") << false << QByteArray("tiff");
    QTest::newRow("TIFF under the name of a DNG") << QStringLiteral("a.dng") << false << QByteArray("tiff");
    QTest::newRow("no camera's file") << QStringLiteral("a.nef") << false << QByteArray();
}

void tst_Raw::whatIsRaw()
{
    QFETCH(QString, name);
    QFETCH(bool, isDng);
    QFETCH(QByteArray, expected);
    QTemporaryDir folder;
    const QByteArray bytes =
        isDng ? DngFile({64, 48}, {0.1, 0.2, 0.3}) : SavedBytes(*SmoothBitmap(64, 48, GFL_RGB, 16), SaveParams("tiff"));
    const QByteArray path = WriteFile(folder.filePath(name), bytes).toUtf8();
    GFL_FILE_INFORMATION info;
    const int error = gflGetFileInformationExUTF8(path.constData(), -1, &info, 4);
    QCOMPARE(error, int(expected.isEmpty() ? GFL_ERROR_UNKNOWN_FORMAT : GFL_NO_ERROR));
    QCOMPARE(QByteArray(info.FormatName), expected);
    if (expected.isEmpty())
        return;
    QCOMPARE(QByteArray(info.Description), QByteArray(isDng ? "Camera raw" : "TIFF"));
    QCOMPARE(QSize(info.Width, info.Height), QSize(64, 48));
    QCOMPARE(int(info.BitsPerComponent), 16);
    QCOMPARE(int(info.ComponentsPerPixel), 3);
}

void tst_Raw::damagedFiles()
{
    const QByteArray good = DngFile({64, 48}, {0.1, 0.2, 0.3});
    int error = 0;
    for (int size = 1; size < good.size(); size += size < 7000 && size > 6000 ? 1 : 37)
        QVERIFY(!LoadFromMemory(good.left(size), &error) || size > good.size() - 60);
    const int directory = 8 + 64 * 48 * 2;
    for (int at = directory; at < good.size(); at += 3) // an error or a picture
        LoadFromMemory(QByteArray(good).replace(at, 1, QByteArray(1, static_cast<char>(~good[at]))), &error);
    QByteArray canon = SavedBytes(*SmoothBitmap(64, 48, GFL_RGB, 16), SaveParams("tiff"));
    canon.replace(8, 4, QByteArray("CR\x02\0", 4)); // the mark of a CR2, known without its suffix: no TIFF
    QVERIFY(!LoadFromMemory(canon, &error));
    QCOMPARE(error, int(GFL_ERROR_UNKNOWN_FORMAT));
    QByteArray huge = good; // 20,000 pixels wide and high, in a file of 7 KB
    for (int tag : {256, 257}) {
        const char field[] = {static_cast<char>(tag & 255), static_cast<char>(tag >> 8), 4, 0, 1, 0, 0, 0};
        huge.replace(huge.indexOf(QByteArray(field, 8)) + 8, 4, QByteArray("\x20\x4E\0\0", 4));
    }
    QVERIFY(!LoadFromMemory(huge, &error));
    QVERIFY2(error == GFL_ERROR_FILE_READ || error == GFL_ERROR_NO_MEMORY, gflLastErrorText());
}

QTEST_GUILESS_MAIN(tst_Raw)
#include "Raw_test.moc"
