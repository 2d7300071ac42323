// Tests of camera raw files: development, settings, and recognition.
#include "Bitmaps.h"
#include "Case.h"
#include "DngFile.h"
#include "Files.h"

#include <QtTest>

#include <cmath>
#include <limits>

class tst_Raw : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void settings();
    void recognition();
    void damagedFiles();

private:
    Folder m_folder;
};

struct Settings {
    int automatic = 0, camera = 1, highlight = 0, autoBright = 0;
    float gamma = 1, brightness = 1, red = 1, blue = 1;
};

void tst_Raw::settings()
{
    const SensorColor field = {0.1, 0.25, 0.15}, white = {1, 1, 1};
    const float nan = std::numeric_limits<float>::quiet_NaN();
    // The camera's neutral gray is 0.5, 1, 0.75: its balance multiplies by 2, 1, 4 / 3.
    const struct {
        const char *name;
        Settings settings;
        SensorColor sensor, expected;
    } rows[] = {
        {"camera balance", {}, field, {0.2, 0.25, 0.2}},
        {"no balance: daylight", {0, 0}, field, field},
        {"automatic balance overrides the camera's", {1, 1}, field, {0.25, 0.25, 0.25}},
        {"brightness", {0, 1, 0, 0, 1, 2}, field, {0.4, 0.5, 0.4}},
        {"brightness before gamma", {0, 1, 0, 0, 2, 2}, field, {std::sqrt(0.4), std::sqrt(0.5), std::sqrt(0.4)}},
        {"red scaling", {0, 1, 0, 0, 1, 1, 1.5f}, field, {0.3, 0.25, 0.2}},
        {"blue scaling", {0, 1, 0, 0, 1, 1, 1, 1.5f}, field, {0.2, 0.25, 0.3}},
        {"red and blue scaling with automatic balance", {1, 0, 0, 0, 1, 1, 2, 0.5f}, field, {0.5, 0.25, 0.125}},
        {"auto brightness", {0, 1, 0, 1}, field, {0.8, 1, 0.8}},
        {"highlights clipped", {}, white, {1, 1, 1}},
        {"highlights kept", {0, 1, 1}, white, {1, 0.5, 2.0 / 3}},
        {"highlights blended", {0, 1, 2}, white, {13.0 / 18, 13.0 / 18, 13.0 / 18}},
        {"invalid numbers count as 1", {0, 1, 0, 0, nan, -3, 0, nan}, field, {0.2, 0.25, 0.2}},
    };
    for (const auto &row : rows)
        for (unsigned flags : {0u, unsigned(GFL_LOAD_ORIGINAL_DEPTH)}) {
            const Case named(row.name, "flags", flags);
            GFL_LOAD_PARAMS params = LoadParams(flags);
            params.RawUseAutomaticBalance = static_cast<std::uint8_t>(row.settings.automatic);
            params.RawUseCameraBalance = static_cast<std::uint8_t>(row.settings.camera);
            params.RawHighlight = static_cast<std::uint8_t>(row.settings.highlight);
            params.RawAutoBright = static_cast<std::uint8_t>(row.settings.autoBright);
            params.RawGamma = row.settings.gamma;
            params.RawBrightness = row.settings.brightness;
            params.RawRedScaling = row.settings.red;
            params.RawBlueScaling = row.settings.blue;
            const BitmapPtr got = LoadFromMemory(DngFile({64, 48}, row.sensor), nullptr, params);
            QVERIFY2(got && got->Width == 64 && got->Height == 48 && got->Type == GFL_RGB, row.name);
            QCOMPARE(int(got->BitsPerComponent), flags == 0 ? 8 : 16);
            const double want[] = {row.expected.red, row.expected.green, row.expected.blue};
            for (int c = 0; c < 3; ++c)
                QVERIFY2(std::abs(SampleAt(*got, 30, 20, c) - want[c]) < 0.005, row.name);
        }
}

void tst_Raw::recognition()
{
    const QByteArray dng = DngFile({64, 48}, {0.1, 0.2, 0.3}),
                     tiff = SavedBytes(*SmoothBitmap(64, 48, GFL_RGB, 16), SaveParams("tiff"));
    const struct {
        const char *name;
        QByteArray bytes, format, description;
    } files[] = {{"a.tif", dng, "raw", "Camera raw"}, {"a.dng", tiff, "tiff", "TIFF"}, {"a.nef", tiff, "", ""}};
    for (const auto &file : files) {
        const Case named(file.name);
        const QString path = m_folder(file.name);
        WriteFile(path, file.bytes);
        GFL_FILE_INFORMATION info;
        QCOMPARE(Describe(path, &info), int(file.format.isEmpty() ? GFL_ERROR_UNKNOWN_FORMAT : GFL_NO_ERROR));
        QCOMPARE(QByteArray(info.FormatName), file.format);
        QCOMPARE(QByteArray(info.Description), file.description);
        if (file.format.isEmpty())
            continue;
        QCOMPARE(QSize(info.Width, info.Height), QSize(64, 48));
        QCOMPARE(info.BitsPerComponent * 10 + info.ComponentsPerPixel, 163);
    }
}

void tst_Raw::damagedFiles()
{
    const QByteArray good = DngFile({64, 48}, {0.1, 0.2, 0.3});
    int error = 0;
    for (int size = 1; size < good.size(); size += size < 7000 && size > 6000 ? 1 : 37) {
        const Case named("truncated to", size);
        QVERIFY(!LoadFromMemory(good.left(size), &error) || size > good.size() - 60);
    }
    const int directory = 8 + 64 * 48 * 2;
    for (int at = directory; at < good.size(); at += 3) // must give an error or a picture
        LoadFromMemory(QByteArray(good).replace(at, 1, QByteArray(1, static_cast<char>(~good[at]))), &error);
    QByteArray canon = SavedBytes(*SmoothBitmap(64, 48, GFL_RGB, 16), SaveParams("tiff"));
    canon.replace(8, 4, QByteArray("CR\x02\0", 4)); // a CR2's signature, recognized without the suffix: not a TIFF
    QVERIFY(!LoadFromMemory(canon, &error));
    QCOMPARE(error, int(GFL_ERROR_UNKNOWN_FORMAT));
    QByteArray huge = good; // 20,000 pixels wide and high, in a file of 7 KB
    for (int tag : {256, 257}) {
        const char field[] = {static_cast<char>(tag & 255), static_cast<char>(tag >> 8), 3, 0, 1, 0, 0, 0};
        const int at = huge.indexOf(QByteArray(field, 8));
        QVERIFY(at > 0);
        huge.replace(at + 8, 2, "\x20\x4E");
    }
    QVERIFY(!LoadFromMemory(huge, &error));
    QCOMPARE(error, int(GFL_ERROR_FILE_READ));
    QVERIFY2(QByteArray(gflLastErrorText()).contains("claims 800000000 bytes"), gflLastErrorText());
}

QTEST_GUILESS_MAIN(tst_Raw)
#include "Raw_test.moc"
