// EXIF texts into the shooting record, and as a table.
#include "ExifTags.h"
#include "ImageDef.h"
#include "KImage.h"

#include <QtTest>

#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

namespace {

struct Entry {
    quint32 flag;
    quint32 tag;
    QByteArray name;
    QByteArray value;
};
using Entries = QVector<Entry>;

Entry Camera(quint32 tag, const char *value)
{
    return {GFL_EXIF_CAMERA, tag, "any", value};
}

/// An image whose EXIF is these entries; they need not be terminated lists of the layer's.
std::unique_ptr<ImageDef> Analyse(Entries entries, GFL_EXIF_DATAEX *raw = nullptr)
{
    std::vector<GFL_EXIF_ENTRY> items;
    for (Entry &entry : entries)
        items.push_back({entry.flag, entry.tag, entry.name.data(), entry.value.data()});
    GFL_EXIF_DATA list = {static_cast<quint32>(items.size()), items.data()};
    auto image = std::make_unique<ImageDef>();
    image->AnalyseExif(&list, raw);
    return image;
}

constexpr double kInfinity = std::numeric_limits<double>::infinity();

} // namespace
Q_DECLARE_METATYPE(Entries)

class ExifTest : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { KImage::init(nullptr); }
    void cleanupTestCase() { KImage::exit(); }
    void number_data();
    void number();
    void tagMeanings();
    void focalLength_data();
    void focalLength();
    void field_data();
    void field();
    void gps_data();
    void gps();
    void date();
    void comment_data();
    void comment();
    void privateRecord_data();
    void privateRecord();
    void summary();
    void secondAnalysisStartsAfresh();
};

void ExifTest::number_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<float>("number");
    const auto row = [](const char *text, float number) { QTest::newRow(text) << QByteArray(text) << number; };
    row("1/250", 0.004F);
    row("-1/3", -1.0F / 3.0F);
    row("0.5/2", 0.25F);
    row("0/0", 0.0F);
    row("5/0", 5.0F); // no fraction, so the whole number at its start
    row("4294967295/1000", 4294967.295F);
    row("5.6", 5.6F);
    row("5,6", 5.0F);
    row("800", 800.0F);
    row("5000000000", 5e9F);
    row("F5", 0.0F);
    row("", 0.0F);
    row("/", 0.0F);
    row("1e99.", 0.0F);
    row("nan.", 0.0F);
}

void ExifTest::number()
{
    QFETCH(QByteArray, text);
    QTEST(ExifParseString(text), "number");
}

void ExifTest::tagMeanings()
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

void ExifTest::focalLength_data()
{
    QTest::addColumn<Entries>("entries");
    QTest::addColumn<bool>("trusted");
    QTest::addColumn<double>("focal35mm");
    QTest::addColumn<double>("ratio");
    const Entries canon{{GFL_EXIF_MAIN, 271, "", "Canon"}, {GFL_EXIF_MAIN, 272, "", "Canon EOS 5D"}};
    const Entries plane{Camera(40962, "4000"), Camera(40963, "3000"), Camera(41486, "500"), Camera(41487, "500")};
    // A sensor of 203.2 x 152.4 mm.
    const double inchRatio = std::hypot(36.0, 24.0) / 254.0;
    const auto row = [](const char *name, const Entries &entries, bool trusted, double focal, double ratio) {
        QTest::newRow(name) << entries << trusted << focal << ratio;
    };
    row("nothing", {}, false, 50, 1);
    row("camera only", canon, false, 50, 1);
    row("real and equivalent", {Camera(37386, "50.0 mm"), Camera(41989, "75")}, true, 75, 1.5);
    row("equivalent alone", {Camera(41989, "75")}, true, 75, kInfinity);
    row("known camera", canon + Entries{Camera(37386, "50")}, true, 50, 1);
    row("known camera before its plane", canon + plane + Entries{Camera(37386, "50"), Camera(41488, "Inch")}, true, 50,
        1);
    row("plane in inches", plane + Entries{Camera(37386, "50"), Camera(41488, "Inch (2)")}, true, 50 * inchRatio,
        inchRatio);
    row("plane in centimetres", plane + Entries{Camera(37386, "50"), Camera(41488, "cm")}, true, 50 * inchRatio * 2.54,
        inchRatio * 2.54);
    row("plane in an unknown unit", plane + Entries{Camera(37386, "50"), Camera(41488, "inch")}, true,
        50 * inchRatio * 25.4, inchRatio * 25.4);
    row("plane without unit", plane + Entries{Camera(37386, "50")}, false, 50, 1);
    row("plane of zero", plane + Entries{Camera(37386, "50"), Camera(41488, "cm"), Camera(41487, "0")}, false, 50, 1);
    row("focal length that is none", {Camera(37386, "inf"), Camera(41989, "nan")}, false, 50, 1);
}

void ExifTest::focalLength()
{
    QFETCH(Entries, entries);
    QFETCH(double, focal35mm);
    QFETCH(double, ratio);
    const auto image = Analyse(entries);
    QTEST(image->HasExif(), "trusted");
    QVERIFY(qAbs(image->m_shooting.focal35mm - focal35mm) < 1e-4 * focal35mm);
    QVERIFY(image->m_shooting.focalRatio == ratio || qAbs(image->m_shooting.focalRatio - ratio) < 1e-5);
}

void ExifTest::field_data()
{
    QTest::addColumn<Entries>("entries");
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("text"); // numbers to six digits
    const auto row = [](const char *name, const Entries &entries, const char *field, const char *text) {
        QTest::newRow(name) << entries << QString::fromLatin1(field) << QString::fromUtf8(text);
    };
    row("orientation", {Camera(274, "Top-left (1)")}, "orientation", "1");
    row("orientation without brackets", {Camera(274, "6")}, "orientation", "0");
    row("orientation of two words", {Camera(274, "Top left (1)")}, "orientation", "0");
    row("exposure", {Camera(33434, "1/250"), Camera(37377, "8")}, "exposureTime", "0.004");
    row("shutter speed in its place", {Camera(37377, "8")}, "exposureTime", "8");
    row("aperture with its letter", {Camera(33437, "f/2.8")}, "fNumber", "0");
    row("exposure value", {Camera(33434, "1/4"), Camera(33437, "2")}, "exposureValue", "2.77259"); // ln 16
    row("exposure value without aperture", {Camera(33434, "1/4")}, "exposureValue", "0");
    row("exposure value of a negative time", {Camera(33434, "-1/4"), Camera(33437, "2")}, "exposureValue", "0");
    row("sensitivity", {Camera(34855, "400 200")}, "isoSpeed", "400");
    row("sensitivity beyond 32 bits", {Camera(34855, "99999999999")}, "isoSpeed", "2147483647");
    row("bias", {Camera(37380, "-1/3")}, "exposureBias", "-0.333333");
    row("width", {Camera(40962, "4000 px")}, "validWidth", "4000");
    row("lens", {{GFL_EXIF_OWN, 0, "LensID", "  10 22 235 "}}, "lensId", "10 22 235");
    row("lens, longer name", {{GFL_EXIF_OWN, 0, "LensIDNumber", "7"}}, "lensId", "7");
    row("lens of the file's own", {{GFL_EXIF_CAMERA, 0, "LensID", "7"}}, "lensId", "");
    row("lens under a known tag", {{GFL_EXIF_OWN, 271, "LensID", "7"}}, "lensId", "");
    row("zenith", {{GFL_EXIF_OWN, 0, "ZenithEs", "1.5 2.5"}}, "zenithSecond", "2.5");
    row("software without a private record", {Camera(305, "Editor 3")}, "software", "");
    row("maker beyond ASCII", {Camera(271, "Z\xc3\xb6rn")}, "makerName", "Zörn");
}

void ExifTest::field()
{
    QFETCH(Entries, entries);
    QFETCH(QString, field);
    const auto image = Analyse(entries);
    const ShootingInformation &shooting = image->m_shooting;
    const QMap<QString, QVariant> fields{{QStringLiteral("orientation"), shooting.orientation},
                                         {QStringLiteral("exposureTime"), shooting.exposureTime},
                                         {QStringLiteral("fNumber"), shooting.fNumber},
                                         {QStringLiteral("exposureValue"), shooting.exposureValue},
                                         {QStringLiteral("isoSpeed"), shooting.isoSpeed},
                                         {QStringLiteral("exposureBias"), double(shooting.exposureBias)},
                                         {QStringLiteral("validWidth"), shooting.validWidth},
                                         {QStringLiteral("lensId"), shooting.lensId},
                                         {QStringLiteral("zenithSecond"), shooting.zenithSecond},
                                         {QStringLiteral("software"), shooting.software},
                                         {QStringLiteral("makerName"), shooting.makerName}};
    QVERIFY(fields.contains(field));
    const QVariant value = fields[field];
    QTEST(value.type() == QVariant::Double ? QString::number(value.toDouble(), 'g', 6) : value.toString(), "text");
}

void ExifTest::gps_data()
{
    QTest::addColumn<quint32>("tag");
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<double>("number");
    const auto row = [](const char *name, quint32 tag, const char *value, double number) {
        QTest::newRow(name) << tag << QByteArray(value) << number;
    };
    row("latitude", 2, "45\xc2\xb0 30' 15\"", 45.0 + 30.0 / 60 + 15.0 / 3600);
    row("fractions", 2, "45\xc2\xb0 30/1' 15/2\"", 45.0 + 30.0 / 60 + 7.5 / 3600);
    row("decimal comma", 4, "11\xc2\xb0 30' 7,5\"", 11.5);
    row("zero under the fraction", 4, "11\xc2\xb0 30/0' 7\"", -9999.0);
    row("no seconds", 4, "11\xc2\xb0 30'", -9999.0);
    row("altitude, whatever it says", 6, "123.4", 0.0);
    row("direction", 17, "254.5", 254.5);
    row("direction as a fraction", 17, "509/2", 254.5);
    row("direction over zero", 17, "509/0", -9999.0);
    row("direction in words", 17, "north", -9999.0);
}

void ExifTest::gps()
{
    QFETCH(quint32, tag);
    QFETCH(QByteArray, value);
    const auto at = [tag](const ShootingInformation &shooting) {
        return tag == 2 ? shooting.gpsLatitude
            : tag == 4  ? shooting.gpsLongitude
            : tag == 6  ? shooting.gpsAltitude
                        : shooting.gpsDirection;
    };
    const auto image = Analyse({{GFL_EXIF_GPS, tag, "", value}});
    QTEST(at(image->m_shooting), "number");
    QCOMPARE(at(Analyse({{GFL_EXIF_MAIN, tag, "", value}})->m_shooting), -9999.0); // the block counts
    QCOMPARE(image->m_shooting.gpsLatitudeRef, QStringLiteral("North"));
}

void ExifTest::date()
{
    // The camera's clock is local time, without daylight saving.
    std::tm time = {};
    time.tm_year = 110;
    time.tm_mon = 6;
    time.tm_mday = 3;
    time.tm_hour = 18;
    const qint64 evening = std::mktime(&time);
    const auto stamp = [](const char *value) { return Analyse({Camera(36867, value)})->m_shooting.timestamp; };
    QCOMPARE(stamp("2010:07:03 18:00:00"), evening);
    QCOMPARE(stamp("2010:07:03 18"), evening);
    QCOMPARE(stamp("    :  :     :  :  "), 0);
    QCOMPARE(stamp("today"), 0);
    QVERIFY(stamp("999999999999:1:1 0:0:0") >= 0); // nine digits of a year at most: no overflow
}

void ExifTest::comment_data()
{
    QTest::addColumn<QByteArray>("comment");
    QTest::addColumn<QVector<double>>("angles");
    using Angles = QVector<double>;
    QTest::newRow("three") << QByteArray("ASCII\0\0\0FOV: 73.7 x 53.1 ~ 84.0", 32) << Angles{73.7, 53.1, 84.0};
    QTest::newRow("another sign") << QByteArray("FOV: 73.7 x 53.1 = 84.0") << Angles{73.7, 53.1, 0};
    QTest::newRow("ends early") << QByteArray("FOV: 73.7") << Angles{73.7, 0, 0};
    QTest::newRow("ends at once") << QByteArray("FOV:") << Angles{0, 0, 0};
    QTest::newRow("small letters") << QByteArray("fov: 73.7 x 53.1 ~ 84.0") << Angles{0, 0, 0};
}

void ExifTest::comment()
{
    QFETCH(QByteArray, comment);
    auto bytes = std::make_unique<quint8[]>(static_cast<size_t>(comment.size())); // of its very size, no zero behind
    std::memcpy(bytes.get(), comment.constData(), static_cast<size_t>(comment.size()));
    GFL_EXIF_ENTRYEX empty = {37510, 7, GFL_EXIF_CAMERA, 0, 0, 0, nullptr, nullptr};
    GFL_EXIF_ENTRYEX node = {37510,       7,     GFL_EXIF_CAMERA, 0, 0, static_cast<quint32>(comment.size()),
                             bytes.get(), &empty};
    GFL_EXIF_DATAEX raw = {&node, 0};
    const auto image = Analyse({}, &raw);
    const ShootingInformation &shooting = image->m_shooting;
    QTEST((QVector<double>{shooting.fovFirst, shooting.fovSecond, shooting.fovThird}), "angles");
}

void ExifTest::privateRecord_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("length");
    QTest::addColumn<quint32>("block");
    QTest::addColumn<int>("foundKind");
    QTest::addColumn<int>("subKind");
    QTest::newRow("sub-kind") << 9 << 128 << quint32(GFL_EXIF_OWN) << 9 << 5;
    QTest::newRow("kind without") << 7 << 130 << quint32(GFL_EXIF_OWN) << 7 << 0;
    QTest::newRow("too short") << 9 << 127 << quint32(GFL_EXIF_OWN) << 0 << 0;
    QTest::newRow("of the file") << 9 << 128 << quint32(GFL_EXIF_CAMERA) << 0 << 0;
}

void ExifTest::privateRecord()
{
    QFETCH(int, kind);
    QFETCH(int, length);
    QFETCH(quint32, block);
    QFETCH(int, foundKind);
    std::vector<quint8> bytes(static_cast<size_t>(length));
    bytes[0] = static_cast<quint8>(kind);
    bytes[6] = 0xA5;
    bytes[96] = 1;
    bytes[static_cast<size_t>(qMin(length, 128) - 1)] = 32;
    GFL_EXIF_ENTRYEX node = {65535, 7, block, 0, 0, static_cast<quint32>(length), bytes.data(), nullptr};
    GFL_EXIF_DATAEX raw = {&node, 0};
    const auto image = Analyse({Camera(305, "Stitcher")}, &raw);
    const ShootingInformation &shooting = image->m_shooting;
    QCOMPARE(int(shooting.privateKind), foundKind);
    QTEST(int(shooting.privateSubKind), "subKind");
    QCOMPARE(int(shooting.privateData[0]) + shooting.privateData[31], foundKind ? 33 : 0);
    QCOMPARE(shooting.software, foundKind ? QStringLiteral("Stitcher") : QString());
}

void ExifTest::summary()
{
    const auto image = Analyse({Camera(271, "%1 \"A\""), Camera(274, "Top-left (1)"), Camera(41488, "Inch (2)"),
                                Camera(41488, "furlong"), Camera(33437, "2.8")});
    QCOMPARE(image->m_exifSummary, QStringLiteral("Maker: \"%1 \"A\"\";Focal plan res. unit inch;F Number: \"2.8\";"));
}

void ExifTest::secondAnalysisStartsAfresh()
{
    auto image = Analyse({Camera(271, "Canon"), Camera(41989, "75"), Camera(33434, "1/4"), Camera(305, "Editor")});
    image->AnalyseExif(nullptr, nullptr);
    QVERIFY(!image->HasExif() && image->m_exifSummary.isEmpty() && image->m_shooting.makerName.isEmpty());
    QCOMPARE(image->m_shooting.focal35mm, 0.0);
    QCOMPARE(image->m_shooting.exposureTime, 0.0);
}

QTEST_GUILESS_MAIN(ExifTest)
#include "Exif_test.moc"
