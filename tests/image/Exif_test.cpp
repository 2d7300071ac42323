// Tests of EXIF: conversion of its texts to the shooting information and to a summary.
#include "Case.h"
#include "ExifTags.h"
#include "ImageDef.h"
#include "KImage.h"
#include "Table.h"

#include <QtTest>

#include <memory>
#include <vector>

namespace {

/// Returns an image with these EXIF entries, "TAG=VALUE" or "TAG NAME=VALUE", separated by "|". An entry belongs to
/// the camera's block; with "g" before the tag, to the GPS block; with "o", to the block of the image-file layer.
std::unique_ptr<ImageDef> Analyze(const QByteArray &text, GFL_EXIF_DATAEX *raw = nullptr)
{
    QByteArrayList names, values;
    std::vector<GFL_EXIF_ENTRY> items;
    for (const QByteArray &entry : text.isEmpty() ? QByteArrayList() : text.split('|')) {
        const QByteArrayList head = entry.left(entry.indexOf('=')).split(' ');
        const quint32 flag = entry[0] == 'g' ? GFL_EXIF_GPS : entry[0] == 'o' ? GFL_EXIF_OWN : GFL_EXIF_CAMERA;
        names << head.value(1);
        values << entry.mid(entry.indexOf('=') + 1);
        items.push_back(
            {flag, head[0].mid(flag != GFL_EXIF_CAMERA).toUInt(), names.last().data(), values.last().data()});
    }
    GFL_EXIF_DATA list = {static_cast<quint32>(items.size()), items.data()};
    auto image = std::make_unique<ImageDef>();
    image->AnalyseExif(&list, raw);
    return image;
}

/// Returns all fields that entries can fill, as "NAME=VALUE", with numbers to six digits.
QStringList TextOf(const ImageDef &image)
{
    const ShootingInformation &from = image.m_shooting;
    const QString names = QStringLiteral(
        "trusted focal35mm ratio maker model orientation time fNumber value iso bias width height timestamp lens "
        "zenithFirst zenithSecond software latitudeRef latitude longitudeRef longitude altitude directionRef "
        "direction");
    const QVariantList values = QVariantList()
        << int(image.HasExif()) << from.focal35mm << from.focalRatio << from.makerName << from.modelName
        << from.orientation << from.exposureTime << from.fNumber << from.exposureValue << from.isoSpeed
        << double(from.exposureBias) << from.validWidth << from.validHeight << from.timestamp << from.lensId
        << from.zenithFirst << from.zenithSecond << from.software << from.gpsLatitudeRef << from.gpsLatitude
        << from.gpsLongitudeRef << from.gpsLongitude << from.gpsAltitude << from.gpsDirectionRef << from.gpsDirection;
    QStringList texts = names.split(QLatin1Char(' '));
    for (int i = 0; i < texts.size(); ++i) {
        const bool isNumber = values[i].type() == QVariant::Double;
        texts[i] +=
            QLatin1Char('=') + (isNumber ? QString::number(values[i].toDouble(), 'g', 6) : values[i].toString());
    }
    return texts;
}

} // namespace

class tst_Exif : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { KImage::init(nullptr); }
    void cleanupTestCase() { KImage::exit(); }
    void number();
    void tagMeanings();
    void fields();
    void date();
    void comment();
    void privateRecord();
    void summary();
    void secondAnalysisResets();
};

void tst_Exif::number()
{
    // "5,6" and "5/0" are not valid fractions, so the integer at their start is used.
    const QString rows = QStringLiteral("1/250=0.004 -1/3=-0.33333334 0.5/2=0.25 0/0=0 4294967295/1000=4294967.295 "
                                        "5.6=5.6 800=800 5000000000=5e9 5,6=5 5/0=5 "
                                        "F5=0 =0 /=0 1e99.=0 nan.=0");
    const locale_t before = uselocale(locale_t(0));
    for (const QString &row : rows.split(QLatin1Char(' '))) {
        const float number = ExifParseString(row.section(QLatin1Char('='), 0, 0).toLatin1().constData());
        QVERIFY2(number == row.section(QLatin1Char('='), 1).toFloat(), qPrintable(row));
    }
    QCOMPARE(uselocale(locale_t(0)), before); // the host's
}

void tst_Exif::tagMeanings()
{
    QCOMPARE(DecodeExifTag(0), QStringLiteral("NA"));
    QCOMPARE(DecodeExifTag(254), QStringLiteral("A general indication of the kind of data contained in this subfile"));
    QCOMPARE(DecodeExifTag(37386), QStringLiteral("Lens focal length"));
    QCOMPARE(DecodeExifTag(42016), QStringLiteral("Unique image ID"));
    int known = 0;
    for (int tag = -1; tag <= 70000; ++tag)
        known += DecodeExifTag(tag) != QLatin1String("NA");
    QCOMPARE(known, 103);
}

void tst_Exif::fields()
{
    const QStringList neutral = TextOf(*Analyze(""));
    QCOMPARE(neutral.mid(0, 3), QStringLiteral("trusted=0 focal35mm=50 ratio=1").split(QLatin1Char(' ')));
    for (const QStringList &row : ReadTable(QStringLiteral(EXIF_FIELDS))) {
        const Case named(row);
        QStringList texts = TextOf(*Analyze(row.value(0).toUtf8()));
        for (const QString &field : neutral)
            texts.removeOne(field);
        QCOMPARE(texts.join(QLatin1Char(' ')), row.value(1));
    }
    const QByteArray digits(60000, '1'); // parsing them takes quadratic time: minutes, unless they are truncated
    QCOMPARE(TextOf(*Analyze("g2=" + digits + "|g4=" + digits + "|g17=" + digits)), neutral);
}

void tst_Exif::date()
{
    // The camera's clock is interpreted as local time without daylight saving time.
    std::tm time = {};
    time.tm_year = 110;
    time.tm_mon = 6;
    time.tm_mday = 3;
    const qint64 midnight = std::mktime(&time);
    time.tm_hour = 18;
    const qint64 evening = std::mktime(&time);
    const auto stamp = [](const char *value) { return Analyze(QByteArray("36867=") + value)->m_shooting.timestamp; };
    QCOMPARE(stamp("2010:07:03 18:00:00"), evening);
    QCOMPARE(stamp("2010:07:03 18"), evening);
    QCOMPARE(stamp("2010:07:03 18:30:15"), evening + 1815);
    QCOMPARE(stamp("2010:07:03"), midnight);
    QCOMPARE(stamp("2010:07"), 0);
    QCOMPARE(stamp("    :  :     :  :  "), 0);
    QCOMPARE(stamp("today"), 0);
    const std::time_t before1970 = -1; // also what the C library returns for a date that it can't represent
    time = *std::localtime(&before1970);
    time.tm_hour -= time.tm_isdst > 0;
    char text[20];
    std::strftime(text, sizeof text, "%Y:%m:%d %H:%M:%S", &time);
    QCOMPARE(stamp(text), 0);
    QVERIFY(stamp("999999999999:1:1 0:0:0") >= 0); // at most nine digits of the year are used: no overflow
}

void tst_Exif::comment()
{
    using Angles = QVector<double>;
    const std::pair<QByteArray, Angles> rows[] = {
        {QByteArray("ASCII\0\0\0FOV: 73.7 x 53.1 ~ 84.0", 32), {73.7, 53.1, 84.0}},
        {"FOV: 73.7 x 53.1 = 84.0", {73.7, 53.1, 0}},
        {"FOV: 73.7", {73.7, 0, 0}},
        {"FOV:", {0, 0, 0}},
        {"FOV: nan x inf ~ nan", {0, 0, 0}},
        {"fov: 73.7 x 53.1 ~ 84.0", {0, 0, 0}}};
    for (const auto &[comment, angles] : rows) {
        const Case named(comment);
        std::vector<quint8> bytes(comment.cbegin(), comment.cend()); // exact size, no terminating zero
        GFL_EXIF_ENTRYEX empty = {37510, 7, GFL_EXIF_CAMERA, 0, 0, 0, nullptr, nullptr};
        GFL_EXIF_ENTRYEX node = {37510, 7, GFL_EXIF_CAMERA, 0, 0, quint32(bytes.size()), bytes.data(), &empty};
        GFL_EXIF_DATAEX raw = {&node, 0};
        const auto image = Analyze("", &raw);
        const ShootingInformation &shooting = image->m_shooting;
        QCOMPARE(Angles({shooting.fovFirst, shooting.fovSecond, shooting.fovThird}), angles);
    }
}

void tst_Exif::privateRecord()
{
    const struct {
        quint8 kind;
        std::size_t length;
        quint32 block;
        int foundKind, subKind;
    } rows[] = {{8, 128, GFL_EXIF_OWN, 8, 5},   {10, 128, GFL_EXIF_OWN, 10, 5},
                {7, 130, GFL_EXIF_OWN, 7, 0},                                 // kinds without subkinds
                {11, 128, GFL_EXIF_OWN, 11, 0}, {9, 127, GFL_EXIF_OWN, 0, 0}, // too short
                {9, 128, GFL_EXIF_CAMERA, 0, 0}};
    for (const auto &row : rows) {
        const Case named("row", &row - &*std::begin(rows));
        std::vector<quint8> bytes(row.length);
        bytes[0] = row.kind;
        bytes[6] = 0xA5;
        bytes[96] = 1;
        bytes[qMin(row.length, std::size_t(128)) - 1] = 32;
        GFL_EXIF_ENTRYEX node = {65535, 7, row.block, 0, 0, quint32(row.length), bytes.data(), nullptr};
        GFL_EXIF_DATAEX raw = {&node, 0};
        const auto image = Analyze("305=Stitcher", &raw);
        const ShootingInformation &shooting = image->m_shooting;
        QCOMPARE(int(shooting.privateKind), row.foundKind);
        QCOMPARE(int(shooting.privateSubKind), row.subKind);
        QCOMPARE(int(shooting.privateData[0]) + shooting.privateData[31], row.foundKind ? 33 : 0);
        QCOMPARE(shooting.software, row.foundKind ? QStringLiteral("Stitcher") : QString());
    }
}

void tst_Exif::summary()
{
    const auto image =
        Analyze("271=%1 \"A\"|274=Top-left (1)|41488=Inch (2)|41488=furlong|33437=2.8|272=b|37386=c|41989=d|"
                "33434=e|37377=f|36867=g|34855=h|37380=i|40962=j|40963=k|41486=l|41487=m|41488=cm|41488=um|"
                "305=n|g1=o|o0 LensID=p");
    QCOMPARE(image->m_exifSummary,
             QString::fromUtf8(
                 "Maker: \"%1 \"A\"\";Focal plan res. unit inch;F Number: \"2.8\";Model: \"b\";Real focal length: "
                 "\"c\";35mm f.length: \"d\";Exposure time: \"e\";Shutter speed: \"f\";Date Time: \"g\";ISO: \"h\";"
                 "Exposure bias value: \"i\";Width: \"j\";Height: \"k\";Focal plane res X: \"l\";"
                 "Focal plane res Y: \"m\";Focal plan res. unit cm;Focal plan res. unit \u00B5m;"));
}

void tst_Exif::secondAnalysisResets()
{
    const QByteArray camera = "271=Maker|272=Model|274=Top-left (1)|36867=2010:07:03 18:00:00|305=Editor";
    auto image = Analyze(camera + "|41989=75|33434=1/4|33437=2|34855=400|37380=1|40962=4000|40963=3000");
    image->AnalyseExif(nullptr, nullptr);
    QStringList texts = TextOf(*image) + QStringList(image->m_exifSummary);
    for (const QString &field : TextOf(ImageDef()))
        texts.removeOne(field);
    QCOMPARE(texts.join(QLatin1Char(' ')), QStringLiteral("bias=1 width=4000 height=3000 ")); // only these three stay
}

QTEST_GUILESS_MAIN(tst_Exif)
#include "Exif_test.moc"
