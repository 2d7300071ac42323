// Facts read from pictures that Exiv2 wrote: values, units and sources.
#include "FitOptions.h"
#include "PictureFacts.h"

#include "Case.h"
#include "KImage.h"
#include "Table.h"
#include "TestFiles.h"

#include <QTemporaryDir>
#include <QtTest>

#include <exiv2/exiv2.hpp>

namespace {

using Values = QByteArray; // "KEY=VALUE|KEY=VALUE|"; values of maker notes are raw numbers

/// Writes a 60 x 40 JPEG with EXIF and XMP values.
void Write(const QString &path, const Values &values)
{
    WriteJpeg(path, 60, 40);
    const auto image = Exiv2::ImageFactory::open(path.toStdString());
    Exiv2::ExifData exif;
    Exiv2::XmpData xmp;
    for (const QByteArray &pair : values.split('|')) {
        const std::string key = pair.left(pair.indexOf('=')).toStdString(),
                          value = pair.mid(pair.indexOf('=') + 1).toStdString();
        if (pair.startsWith("Xmp"))
            xmp[key] = value;
        else if (!pair.isEmpty())
            exif[key].setValue(value);
    }
    image->setExifData(exif);
    image->setXmpData(xmp);
    image->writeMetadata();
}

/// Returns all facts of a rendered picture that is neither cropped nor already corrected; "-" for unknown ones.
QString Text(const PictureFacts &facts)
{
    QStringList text;
    const auto add = [&text](const QString &value, const QString &source) {
        text << (source.isEmpty() ? QStringLiteral("-") : QStringLiteral("%1: %2").arg(value, source));
    };
    for (const auto &one :
         QVector<Fact<QString>>{facts.make, facts.model, facts.lensMake} + facts.lensNames + facts.lensIds)
        add(one.value, one.source);
    for (const auto &one :
         {facts.lensMinFocalMm, facts.lensMaxFocalMm, facts.lensMinApertureAtMin, facts.lensMinApertureAtMax,
          facts.focalMm, facts.focal35Mm, facts.digitalZoom, facts.aperture, facts.distanceM, facts.focalPlaneWidthMm})
        add(QString::number(one.value), one.source);
    const QSize size = facts.original.value;
    add(QStringLiteral("%1 x %2").arg(size.width()).arg(size.height()), facts.original.source);
    add(QStringLiteral("encoding %1").arg(int(facts.encoding.value)), facts.encoding.source);
    text << QStringLiteral("orientation %1, turn %2").arg(facts.orientation).arg(facts.readerTurn);
    return text.join(QLatin1Char('|'));
}

} // namespace

class tst_PictureFacts : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase() { KImage::init(nullptr); }
    void cleanupTestCase() { KImage::exit(); }
    void facts();
    void crop();
    void doneBefore();
    void notAPicture();

private:
    PictureFacts Facts(const Values &values)
    {
        const QString path = m_folder.filePath(QStringLiteral("a.jpg"));
        Write(path, values);
        return ReadPictureFacts(path, nullptr);
    }

    QTemporaryDir m_folder;
};

void tst_PictureFacts::facts()
{
    for (const QStringList &row : ReadTable(QStringLiteral(FACTS))) {
        const Case named(row[0]);
        const PictureFacts facts = Facts(row[1].toUtf8());
        QCOMPARE(Text(facts), row[2]);
        QCOMPARE(facts.pixels, QSize(60, 40));
        QVERIFY(!facts.raw && !facts.crop.Known());
    }
}

void tst_PictureFacts::crop()
{
    const Values cropped = "Xmp.crs.HasCrop=True|Xmp.crs.CropLeft=0.25|Xmp.crs.CropTop=0.125|Xmp.crs.CropRight=0.75|"
                           "Xmp.crs.CropBottom=1|";
    QVERIFY(!Facts(cropped).crop.Known()); // the crop is set, but not applied yet
    const Values applied = cropped + "Xmp.crs.AlreadyApplied=True|";
    QCOMPARE(Facts(applied).crop.value, QRectF(0.25, 0.125, 0.5, 0.875));
    QVERIFY(!Facts(applied).cropTurned);
    QVERIFY(!Facts(applied).cropLost);
    QVERIFY(Facts(applied + "Xmp.crs.CropAngle=-1.5|").cropTurned);
    // CropRight is 0.75. Rounded values up to 0.001 outside count as the edge.
    for (const char *value :
         {"Left=0.8", "Left=0.75", "Left=-0.1", "Left=x", "Left=nan", "Right=1.5", "Top=1", "Bottom=1.002"}) {
        const PictureFacts lost = Facts(applied + "Xmp.crs.Crop" + value);
        QVERIFY2(lost.cropLost && !lost.crop.Known(), value);
    }
    const Values rounded = applied + "Xmp.crs.CropLeft=-0.0009|Xmp.crs.CropBottom=1.0009|";
    QCOMPARE(Facts(rounded).crop.value, QRectF(0.0, 0.125, 0.75, 0.875));
}

void tst_PictureFacts::doneBefore()
{
    for (const QStringList &row : ReadTable(QStringLiteral(DONE_BEFORE))) {
        const Case named(row[0]);
        const PictureFacts facts = Facts(row[1].toUtf8());
        QString text;
        for (const auto &[done, name] :
             {std::pair(facts.distortionDone, "d"), {facts.chromaticDone, "c"}, {facts.vignettingDone, "v"}})
            text += done.value || done.Known() ? QStringLiteral("%1: %2; ").arg(QLatin1String(name), done.source)
                                               : QString();
        for (const auto &[tried, name] :
             {std::pair(facts.distortionTried, "D"), {facts.chromaticTried, "C"}, {facts.vignettingTried, "V"}})
            text += QLatin1String(tried ? name : "");
        FitOptions options;
        text += QLatin1String(WasDoneBefore(facts, options) ? "!" : "");
        options.chromatic = options.vignetting = false;
        text += QLatin1String(WasDoneBefore(facts, options) ? "+" : "");
        QCOMPARE(text.trimmed(), row[2]);
        options.distortion = false; // nothing is requested
        QVERIFY(WasDoneBefore(facts, options));
        options.again = true;
        QVERIFY(!WasDoneBefore(facts, options));
    }
}

void tst_PictureFacts::notAPicture()
{
    const QString path = m_folder.filePath(QStringLiteral("a.txt"));
    WriteFile(path, "text");
    QString error;
    QVERIFY(ReadPictureFacts(path, &error).pixels.isEmpty() && !error.isEmpty());
    QVERIFY(ReadPictureFacts(m_folder.filePath(QStringLiteral("none.jpg")), &error).pixels.isEmpty());
}

QTEST_GUILESS_MAIN(tst_PictureFacts)
#include "PictureFacts_test.moc"
