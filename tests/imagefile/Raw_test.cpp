// Tests of camera raw files: development, settings, and recognition.
#include "Bitmaps.h"
#include "Case.h"
#include "DngFile.h"
#include "Files.h"
#include "MetadataFiles.h"
#include "Table.h"

#include <QtTest>

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

/// The camera's neutral gray is 0.5, 1, 0.75: its balance multiplies by 2, 1, 4 / 3.
void tst_Raw::settings()
{
    for (const QStringList &row : ReadTable(QStringLiteral(VITRELUX_RAW_SETTINGS)))
        for (unsigned flags : {0u, unsigned(GFL_LOAD_ORIGINAL_DEPTH)}) {
            const Case named(row[0], "flags", flags);
            const auto numbers = [&row](int cell) {
                QVector<float> values;
                for (const QString &number : row[cell].split(QLatin1Char(' ')))
                    values.append(number.toFloat());
                return values;
            };
            const QVector<float> settings = numbers(1), sensor = numbers(2), expected = numbers(3);
            GFL_LOAD_PARAMS params = LoadParams(flags);
            std::uint8_t *const choices[] = {&params.RawUseAutomaticBalance, &params.RawUseCameraBalance,
                                             &params.RawHighlight, &params.RawAutoBright};
            float *const factors[] = {&params.RawGamma, &params.RawBrightness, &params.RawRedScaling,
                                      &params.RawBlueScaling};
            for (int i = 0; i < 4; ++i) {
                *choices[i] = static_cast<std::uint8_t>(settings[i]);
                *factors[i] = settings[4 + i];
            }
            const BitmapPtr got =
                LoadFromMemory(DngFile({130, 98}, {sensor[0], sensor[1], sensor[2]}), nullptr, params);
            QVERIFY2(got && got->Width == 130 && got->Height == 98 && got->Type == GFL_RGB, gflLastErrorText());
            QCOMPARE(int(got->BitsPerComponent), flags == 0 ? 8 : 16);
            const auto want = [&](int, int, int c) { return double(expected[c]); };
            QCOMPARE(Difference(*got, want, 0.005), QString());
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
        GFL_FILE_INFORMATION info;
        const BitmapPtr picture =
            Load(m_folder("a.raw"), nullptr, LoadParams(), &info); // stays as the camera stored it
        QVERIFY2(picture && QSize(picture->Width, picture->Height) == QSize(64, 48), gflLastErrorText());
        QCOMPARE(QSize(info.Width, info.Height), QSize(64, 48));
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
