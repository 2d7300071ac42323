// Tests of camera raw files: development, settings, and recognition.
#include "Bitmaps.h"
#include "Case.h"
#include "DngFile.h"
#include "Files.h"
#include "MetadataFiles.h"

#include <QtTest>

#include <cmath>
#include <limits>

class tst_Raw : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void settings();
    void recognition();
    void facts();
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
            const BitmapPtr got = LoadFromMemory(DngFile({130, 98}, row.sensor), nullptr, params);
            QVERIFY2(got && got->Width == 130 && got->Height == 98 && got->Type == GFL_RGB, gflLastErrorText());
            QCOMPARE(int(got->BitsPerComponent), flags == 0 ? 8 : 16);
            const double want[] = {row.expected.red, row.expected.green, row.expected.blue};
            QCOMPARE(Difference(
                         *got, [&](int, int, int c) { return want[c]; }, 0.005),
                     QString());
        }
}

void tst_Raw::recognition()
{
    const QByteArray dng = DngFile({64, 48}, {0.1, 0.2, 0.3}),
                     tiff = SavedBytes(*SmoothBitmap(64, 48, GFL_RGB, 16), SaveParams("tiff"));
    const struct {
        const char *name;
        QByteArray bytes, expected;
    } files[] = {{"a.tif", dng, InfoText("raw", "Camera raw", {64, 48}, 3, 16, GFL_CM_RGB)},
                 {"a.dng", tiff, InfoText("tiff", "TIFF", {64, 48}, 3, 16, GFL_CM_RGB)},
                 {"a.nef", tiff, QByteArray()}};
    for (const auto &file : files) {
        const Case named(file.name);
        const QString path = m_folder(file.name);
        WriteFile(path, file.bytes);
        GFL_FILE_INFORMATION info;
        QCOMPARE(Describe(path, &info), int(file.expected.isEmpty() ? GFL_ERROR_UNKNOWN_FORMAT : GFL_NO_ERROR));
        QCOMPARE(info.Width > 0 ? InfoText(info) : QByteArray(), file.expected);
    }
}

/// Facts of files that LibRaw reads as TIFFs, but Exiv2 doesn't, because their magic number isn't 42.
void tst_Raw::facts()
{
    for (const QByteArray &line : ReadFile(QStringLiteral(VITRELUX_RAW_FACTS)).trimmed().split('\n')) {
        if (line.startsWith('#'))
            continue;
        const Case named(line);
        const QByteArrayList cells = line.split('\t'); // stored fields, EXIF, other fields
        const QByteArray dng = DngFile({64, 48}, {0.1, 0.2, 0.3});
        const auto image = OpenImage(dng);
        for (const QByteArray &field : cells[0].split(' '))
            image->exifData()["Exif." + field.left(field.indexOf('=')).toStdString()].setValue(
                QByteArray(field).replace('_', ' ').mid(field.indexOf('=') + 1).toStdString());
        WriteFile(m_folder("a.raw"), WrittenBy(*image).replace(2, 1, "X"));
        GFL_METADATA_LIST *list = nullptr;
        QCOMPARE(gflLoadMetadataListUTF8(m_folder("a.raw").toUtf8().constData(), &list), int(GFL_NO_ERROR));
        QByteArray text;
        for (std::uint32_t i = 0; i < list->NumberOfItems; ++i)
            text +=
                QByteArray(list->ItemsList[i].Key) + "=" + QByteArray(list->ItemsList[i].Raw).replace(' ', '_') + ' ';
        gflFreeMetadataList(list);
        QCOMPARE(text.replace("Exif.", "").replace("LibRaw.", ""), cells[1] + ' ' + cells[2] + ' ');
    }
}

void tst_Raw::damagedFiles()
{
    const QByteArray good = DngFile({64, 48}, {0.1, 0.2, 0.3});
    int error = 0;
    for (int size = 1; size < good.size(); size += size < 7000 && size > 6000 ? 1 : 37) {
        const Case named("truncated to", size);
        QVERIFY(!LoadFromMemory(good.left(size), &error)
                || size > good.size() - 130); // the texts at the end are not needed
    }
    const int directory = 8 + 64 * 48 * 2;
    for (int at = directory; at < good.size(); at += 3) // must neither crash nor hang
        LoadFromMemory(QByteArray(good).replace(at, 1, QByteArray(1, static_cast<char>(~good[at]))), &error);
    // A CR2 is recognized by its signature, without the suffix, and isn't read as a TIFF.
    QCOMPARE(BadFault("tiff", SavedBytes(*SmoothBitmap(64, 48, GFL_RGB, 16), SaveParams("tiff"))), QString());
    QCOMPARE(BadFault("raw", good), QString());
    gflSetMaxPixels(1000000);
    const QString limited = BadFault("raw limited", good);
    gflSetMaxPixels(0);
    QCOMPARE(limited, QString());
}

QTEST_GUILESS_MAIN(tst_Raw)
#include "Raw_test.moc"
