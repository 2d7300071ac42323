#include "Case.h"
#include "ImageDatas.h"

#include "Files.h"
#include "KSettingsManager.h"
#include "KernelSettingsReader.h"

#include <QTemporaryDir>
#include <QtTest>

#include <variant>

namespace {

using Pairs = QVector<QPair<QString, QVariant>>;

/// Writer that records settings in the order in which they are written.
class Recorder : public KernelSettingsWriter {
public:
    void Set(const QString &key, const QVariant &value) override { pairs.append({key, value}); }
    Pairs pairs;
};

Pairs Written(ImageDatas datas)
{
    Recorder recorder;
    datas.SaveSettings(recorder);
    return recorder.pairs;
}

using Member = std::variant<int ImageDatas::*, float ImageDatas::*, bool ImageDatas::*>;

/// All stored settings, in the order in which they are written. Except for bools, each value differs from its default
/// and from the others.
const struct {
    const char *name;
    Member member;
    QVariant value;
} kUnusual[] = {{"exifMode", &ImageDatas::exifMode, 2},
                {"exifDefaultFocal35mm", &ImageDatas::exifDefaultFocal35mm, 15.1F},
                {"exifDefaultLensModel", &ImageDatas::exifDefaultLensModel, 1},
                {"exifForcedFocal35mm", &ImageDatas::exifForcedFocal35mm, 1.0F / 3},
                {"exifForcedK1", &ImageDatas::exifForcedK1, -1.17e-38F}, // needs all digits of a float
                {"exifForcedK2", &ImageDatas::exifForcedK2, 3.4e38F},
                {"exifForcedK3", &ImageDatas::exifForcedK3, 0.1F},
                {"exifForcedLensModel", &ImageDatas::exifForcedLensModel, 3},
                {"rawUseAutomaticBalance", &ImageDatas::rawUseAutomaticBalance, true},
                {"rawUseCameraBalance", &ImageDatas::rawUseCameraBalance, false},
                {"rawHighlight", &ImageDatas::rawHighlight, -300},
                {"rawAutoBright", &ImageDatas::rawAutoBright, true},
                {"rawGamma", &ImageDatas::rawGamma, 1.8F},
                {"rawBrightness", &ImageDatas::rawBrightness, 16777217.0F},
                {"rawRedScaling", &ImageDatas::rawRedScaling, 0.7F},
                {"rawBlueScaling", &ImageDatas::rawBlueScaling, 1e-10F}};

ImageDatas Unusual()
{
    ImageDatas datas;
    datas.thumbnailSize = QSize(64, 32);
    datas.thumbnailExtensions = QStringList{QStringLiteral(".a"), QStringLiteral(".b")};
    for (const auto &row : kUnusual) {
        const auto set = [&](auto member) { datas.*member = row.value.value<std::decay_t<decltype(datas.*member)>>(); };
        std::visit(set, row.member);
    }
    return datas;
}

/// Returns the pairs that SaveSettings must write for Unusual().
Pairs UnusualPairs()
{
    Pairs pairs;
    for (const auto &row : kUnusual)
        pairs.append({QLatin1String("image/") + QLatin1String(row.name), row.value});
    return pairs;
}

/// Returns the settings as an XML file, with one level of elements per part of a key.
QByteArray Xml(const Pairs &pairs)
{
    QByteArray values;
    for (const auto &pair : pairs) {
        const QByteArray name = pair.first.section(QLatin1Char('/'), 1).toUtf8();
        values += "<" + name + ">" + pair.second.toString().toUtf8() + "</" + name + ">\n";
    }
    return "<preferences><image>" + values + "</image></preferences>";
}

} // namespace

class tst_ImageDatas : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_dir.path()); }
    void cleanup() { ImageDatas::settings = nullptr; }

    void defaults();
    void settingsSurvive();
    void missingKeysComeFromTheSharedRecord();

private:
    QTemporaryDir m_dir;
    ImageDatas m_shared;
};

void tst_ImageDatas::defaults()
{
    const ImageDatas datas;
    QCOMPARE(datas.thumbnailSize, QSize(128, 128));
    QCOMPARE(datas.thumbnailExtensions, QStringList(QStringLiteral(".THM")));
    QVariantList values;
    for (const auto &pair : Written(datas))
        values.append(pair.second);
    QCOMPARE(values,
             (QVariantList{0, 50.0F, 0, 50.0F, 0.0F, 0.0F, 0.0F, 0, false, true, 0, false, 2.2F, 2.5F, 1.0F, 1.0F}));
}

void tst_ImageDatas::settingsSurvive()
{
    QCOMPARE(Written(Unusual()), UnusualPairs()); // in order
    const QString xml = m_dir.filePath(QStringLiteral("all.xml")), organization = QStringLiteral("TestOrganization");
    WriteFile(xml, Xml(Written(Unusual())));
    {
        KSettingsManager manager(QSettings::UserScope, organization, organization);
        Unusual().SaveSettings(manager);
    }
    m_shared = ImageDatas();
    ImageDatas::settings = &m_shared;
    KSettingsManager manager(QSettings::UserScope, organization, organization);
    QHash<QString, QVariant> hash;
    for (const auto &pair : UnusualPairs())
        hash.insert(pair.first, pair.second);
    ImageDatas fromHash, fromXml, fromManager;
    fromHash.LoadSettings(hash);
    fromXml.LoadSettings(xml);
    fromManager.LoadSettings(manager);
    QCOMPARE(Written(m_shared), Written(ImageDatas())); // loading changes only the record itself
    m_shared.LoadSettings(hash);
    int number = 0;
    for (const ImageDatas &datas : {fromHash, fromXml, fromManager, m_shared}) {
        const Case named("record", ++number);
        QCOMPARE(Written(datas), UnusualPairs());
        QCOMPARE(datas.thumbnailSize, QSize(128, 128));
        QCOMPARE(datas.thumbnailExtensions, QStringList(QStringLiteral(".THM")));
    }
    GFL_LOAD_PARAMS params;
    ImageDatas::GetDefaultLoadParams(&params);
    QCOMPARE(int(params.RawUseAutomaticBalance) * 100 + params.RawUseCameraBalance * 10 + params.RawAutoBright, 101);
    QCOMPARE(int(params.RawHighlight), 212); // the low byte of -300
    QCOMPARE(params.RawGamma, 1.8F);
    QCOMPARE(params.RawBrightness, 16777216.0F);
    QCOMPARE(params.RawRedScaling, 0.7F);
    QCOMPARE(params.RawBlueScaling, 1e-10F);

    ImageDatas::settings = nullptr; // without a shared record, the record keeps its values
    GFL_LOAD_PARAMS ofLayer;
    gflGetDefaultLoadParams(&ofLayer);
    ImageDatas::GetDefaultLoadParams(&params);
    QCOMPARE(params.RawGamma + params.RawBrightness, ofLayer.RawGamma + ofLayer.RawBrightness);
    ImageDatas alone = Unusual();
    QHash<QString, QVariant> one{{QStringLiteral("image/exifMode"), 1}};
    alone.LoadSettings(one);
    Pairs expected = UnusualPairs();
    expected[0].second = 1;
    QCOMPARE(Written(alone), expected);
}

void tst_ImageDatas::missingKeysComeFromTheSharedRecord()
{
    m_shared = Unusual();
    ImageDatas::settings = &m_shared;
    ImageDatas datas;
    datas.rawGamma = 9.0F; // the record's old value has no effect
    KernelSettingsReader empty;
    datas.LoadSettings(empty);
    QCOMPARE(Written(datas), UnusualPairs());
    QCOMPARE(datas.thumbnailSize, m_shared.thumbnailSize);
    QCOMPARE(datas.thumbnailExtensions, m_shared.thumbnailExtensions);

    ImageDatas fromMissingFile;
    fromMissingFile.LoadSettings(m_dir.filePath(QStringLiteral("absent.xml")));
    QCOMPARE(Written(fromMissingFile), UnusualPairs());
}

QTEST_GUILESS_MAIN(tst_ImageDatas)
#include "ImageDatas_test.moc"
