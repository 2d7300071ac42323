// Profile lookup by camera and lens, with various names of folders and files.
#include "KVitreluxOne2One.h"

#include "FakeHost.h"
#include "Files.h"
#include "ImageDef.h"
#include "KImage.h"
#include "Table.h"
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
    for (const char *column : {"maker", "lensId", "files", "found", "message"})
        QTest::addColumn<QString>(column);
    for (const QStringList &row : ReadTable(QStringLiteral(LOOKUPS))) {
        const QString file = QStringLiteral("Fichier correspondant : ") + row[4].section(QLatin1Char('/'), -1);
        QTest::newRow(qPrintable(row[0])) << row[1] << row[2] << row[3] << row[4] << (row[5].isEmpty() ? file : row[5]);
    }
}

void tst_Lookup::profile()
{
    QFETCH(QString, maker);
    QFETCH(QString, lensId);
    QFETCH(QString, files);
    for (const QString &file : files.split(QLatin1Char('|')))
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
