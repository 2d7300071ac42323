// Profile lookup by camera and lens, with various names of folders and files.
#include "KVitreluxOne2One.h"

#include "FakeHost.h"
#include "Files.h"
#include "ImageDef.h"
#include "KImage.h"
#include "UIVitreluxPage.h"

#include <QDir>
#include <QLabel>
#include <QTemporaryDir>
#include <QtTest>

class tst_Lookup : public QObject {
    Q_OBJECT
private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase() { KImage::exit(); }
    void init() { m_dir.reset(new QTemporaryDir); }
    void profile_data();
    void profile();
    void emptyDescriptions();
    void recordIsFilledByRunAndPage();

private:
    void Touch(const QString &file) const;
    QString Relative(const QStringList &paths) const;

    QScopedPointer<QTemporaryDir> m_dir;
    QTemporaryDir m_tables;
};

namespace {

/// Image description that returns a single pixel for any size.
class OnePixelImage : public ImageDef {
public:
    OnePixelImage() : m_pixel(1, 1, GFL_RGBA, 32, /*clear=*/true, nullptr, 0) { m_rows = m_cols = 1; }
    KImage *Lock(int, int, bool) override { return &m_pixel; }
    void Unlock(int, int, bool) override { }

private:
    KImage m_pixel;
};

const QString kUntouched = QStringLiteral("untouched");

/// Fills a picture's description as the kernel does; the file need not exist.
ImageDef *Picture(ImageDef *image, const QString &maker, const QString &model, const QString &lensId)
{
    image->m_fileName = QStringLiteral("/none/picture.jpg");
    image->m_hasExif = true;
    image->m_shooting.makerName = maker;
    image->m_shooting.modelName = model;
    image->m_shooting.lensId = lensId;
    return image;
}

} // namespace

void tst_Lookup::initTestCase()
{
    KImage::init(nullptr);
    WriteFile(m_tables.filePath(QStringLiteral("lensid.txt")),
              "8 8 1;Nikon;Sigma 8mm f/3.5 Fisheye;1\n"
              "10 20 2;Nikon;Sigma 10-20mm f/4 EX\n"
              "10 22 3;Canon;Canon EF-S 10-22mm USM\n"
              "24 70 4;Canon;Canon EF 24-70mm L\n24 70 4;Canon;Tamron 24-70mm VC\n"
              "50 50 5;Canon;Canon Compact Macro\n"
              "60 60 6;Canon;Canon 50mm and 60mm Macro\n"
              "70 70 7;Canon;mm\n");
    QDir::setSearchPaths(QStringLiteral("Data"), {m_tables.path()});
}

void tst_Lookup::Touch(const QString &file) const
{
    const QString path = m_dir->filePath(file);
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    WriteFile(path);
}

/// Joins paths, relative to the test's folder, one per line.
QString tst_Lookup::Relative(const QStringList &paths) const
{
    return paths.join(QLatin1Char('\n')).remove(m_dir->path() + QLatin1Char('/'));
}

void tst_Lookup::profile_data()
{
    QTest::addColumn<QString>("maker");
    QTest::addColumn<QString>("lensId");
    QTest::addColumn<QStringList>("files"); // "L" is the profile folder, "L\\Canon" that of a brand
    QTest::addColumn<QString>("found");
    QTest::addColumn<QString>("message"); // if null, that of the found file
    const auto row = [](const char *name, const char *maker, const char *lensId, const QStringList &files,
                        const QString &found, const char *message = nullptr) {
        const QString file = QLatin1String("Fichier correspondant : ") + found.section(QLatin1Char('/'), -1);
        QTest::newRow(name) << QString::fromLatin1(maker) << QString::fromLatin1(lensId) << files << found
                            << (message ? QString::fromLatin1(message) : file);
    };
    const auto canon = [](const char *file) { return QStringLiteral("L\\Canon/X1 (%1).lcp").arg(QLatin1String(file)); };
    const QString brand = QStringLiteral("L/Canon/any"); // makes "Canon" a brand; its profiles are looked up in L\Canon
    const QString nikon = QStringLiteral("L/Nikon/any"), sigma = QStringLiteral("L\\Nikon/X1 (Sigma 8mm).lcp");

    row("found", "Canon", "10 22 3", {brand, canon("Canon EF-S 10-22mm")}, canon("Canon EF-S 10-22mm"));
    row("best of three, ignoring case", "CANON INC.", "10 22 3",
        {brand, canon("CANON 10-22"), canon("canon ef-s 10-22MM"), canon("Canon EF-S 10-22mm f4 USM")},
        canon("Canon EF-S 10-22mm f4 USM"));
    row("first of equally good files", "Canon", "10 22 3", {brand, canon("b Canon 10-22mm"), canon("a Canon 10-22mm")},
        canon("a Canon 10-22mm"));
    row("focal length and maker alone", "Canon", "10 22 3", {brand, canon("Canon 10-22")}, {}, "untouched");
    row("other focal length", "Canon", "10 22 3", {brand, canon("Canon EF-S 18-55mm USM")}, {}, "untouched");
    row("lens by another maker", "NIKON CORPORATION", "10 20 2",
        {nikon, QStringLiteral("L\\Nikon/X1 (Nikon 10-20mm EX)")}, {}, "untouched");
    row("long name of the maker", "NIKON CORPORATION", "8 8 1", {nikon, sigma}, sigma);
    row("no focal length in the lens's name", "Canon", "50 50 5", {brand, canon("Canon Compact 50")},
        canon("Canon Compact 50"));
    row("last focal length in the name", "Canon", "60 60 6", {brand, canon("Canon 50mm Macro"), canon("Canon 60mm")},
        canon("Canon 60mm"));
    row("name with only the word mm", "Canon", "70 70 7", {brand, canon("mm mm")}, {}, "untouched");
    row("several lenses", "Canon", "24 70 4", {brand, canon("Canon EF 24-70mm L")},
        QStringLiteral("L\\Canon/Canon EF 24-70mm L\nL\\Canon/Tamron 24-70mm VC"), "untouched");
    row("unknown lens", "Canon", "1 2 3", {brand, canon("Canon EF")}, {},
        "This camera-lens couple does not seem to be in database");
    row("no file for the camera", "Canon", "10 22 3", {brand, QStringLiteral("L\\Canon/X2 (Canon EF-S 10-22mm)")}, {},
        "No matching LensID");
    row("folder joined with a slash", "Canon", "10 22 3", {QStringLiteral("L/Canon/X1 (Canon EF-S 10-22mm)")}, {},
        "No matching LensID");
    row("current folder if no folder fits the brand", "Canon", "10 22 3",
        {QStringLiteral("L/Pentax/any"), QStringLiteral("X1 (Canon EF-S 10-22mm).lcp")},
        QStringLiteral("X1 (Canon EF-S 10-22mm).lcp"));
    row("first folder whose name the brand contains", "Canon", "10 22 3",
        {QStringLiteral("L/An/any"), brand, QStringLiteral("L\\An/X1 Canon 10-22mm"), canon("Canon 10-22mm")},
        QStringLiteral("L\\An/X1 Canon 10-22mm"));
    row("brand after another word", "The Canon", "10 22 3", {brand, canon("Canon EF-S 10-22mm")}, {},
        "Sorry: Thecameras are not yet in LensId.txt");
}

void tst_Lookup::profile()
{
    QFETCH(QString, maker);
    QFETCH(QString, lensId);
    QFETCH(QStringList, files);
    for (const QString &file : files)
        Touch(file);
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_dir->path()));
    KVitreluxOne2One process;
    process.SetLensPath(m_dir->filePath(QStringLiteral("L")));
    ImageDef image;
    QString message = kUntouched;
    const QStringList found = process.GetLCPfilename(Picture(&image, maker, QStringLiteral("x1"), lensId), message);
    QDir::setCurrent(before);
    QTEST(Relative(found), "found");
    QTEST(message, "message");
}

void tst_Lookup::emptyDescriptions()
{
    KVitreluxOne2One process;
    ImageDef bare;
    Picture(&bare, QStringLiteral("SONY"), QString(), QString())->m_hasExif = false;
    FakeImageDef foreign(QStringLiteral("/none.jpg"));
    QString message = kUntouched;
    const std::pair<const char *, KIImageDef *> rows[] = {{"no EXIF", &bare}, {"foreign", &foreign}, {"null", nullptr}};
    for (const auto &[name, image] : rows) {
        QVERIFY2(process.GetLCPfilename(image, message).isEmpty(), name);
        QVERIFY2(message == kUntouched, name);
    }
}

void tst_Lookup::recordIsFilledByRunAndPage()
{
    Touch(QStringLiteral("L/Canon/any"));
    Touch(QStringLiteral("L\\Canon/X1 (Canon EF-S 10-22mm).lcp"));
    KVitreluxOne2One process;
    process.SetLensPath(m_dir->filePath(QStringLiteral("L")));
    OnePixelImage image;
    KVitreluxOne2One::Params params;
    params.disto = true;
    process.Process(qMakePair<KIImageDef *, KImage *>(
                        Picture(&image, QStringLiteral("Canon"), QStringLiteral("X1"), QStringLiteral("10 22 3")),
                        nullptr), // pixels aren't touched
                    &params);
    const QString found = QStringLiteral("L\\Canon/X1 (Canon EF-S 10-22mm).lcp");
    QCOMPARE(Relative({params.lcpFilename}), found);

    params.lcpFilename.clear(); // the page also looks up the profile
    auto *page = static_cast<UIVitreluxPage *>(process.WizardPage());
    page->SetImage(&image, &params);
    QCOMPARE(Relative({params.lcpFilename}), found);
    QCOMPARE(page->findChild<QLabel *>(QStringLiteral("labelLensMessage"))->text(),
             QStringLiteral("Fichier correspondant : X1 (Canon EF-S 10-22mm).lcp"));
}

QTEST_MAIN(tst_Lookup)
#include "Lookup_test.moc"
