// Tests of the wizard with the real plug-in: choices for pictures, fitted profiles, languages, and the keyboard.
#include "Case.h"
#include "KOmp.h"
#include "Table.h"
#include "TiffRaster.h"
#include "WizardTest.h"
#include "app/PluginLoader.h"
#include "wizard/CompareDialog.h"
#include "wizard/WizardPlugin.h"

#include <QCheckBox>
#include <QColorSpace>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>

#include <cmath>
#include <exiv2/exiv2.hpp>
#include <functional>

void DoubleClick(QWidget *widget, const QPoint &place)
{
    QTest::mouseClick(widget, Qt::LeftButton, {}, place);
    QTest::mouseDClick(widget, Qt::LeftButton, {}, place);
}

class tst_WizardPlugin : public WizardTest {
    Q_OBJECT
private Q_SLOTS:
    void choicesStayWithTheirPictures();
    void realPluginFits();
    void comparesFloatsAsLight();
    void usesTheUsersLanguage();

private:
    void compareFirstResult();
    void checkKeyboard() const;
};

void tst_WizardPlugin::choicesStayWithTheirPictures()
{
    const PluginLoader plugin(QStringLiteral(VITRELUX_PLUGIN), CorrectionMode::Fitted);
    QVERIFY2(plugin.Process(), qPrintable(plugin.Problem()));
    const auto choices = [&](const char *name) {
        return ReadParameters(plugin.Process()->GetFileXmlParams(Path(name)));
    };
    m_host->SetPluginSetting(plugin.Process()->UID(), "Disto"_s, false);
    Show({plugin.Process()}, "gone.jpg a.jpg"_s);
    Next();
    auto *list = Find<QComboBox>("comboBoxImageDef");
    list->setCurrentText("a.jpg"_s);
    Click("m_cbDistortion");
    list->setCurrentText("gone.jpg"_s);
    Click("m_cbCA");
    QTRY_VERIFY(CanGoOn());
    m_wizard->back();
    auto *pictures = Find<QAbstractItemView>("pictures");
    pictures->setCurrentIndex(pictures->model()->index(0, 0));
    Click("remove");
    WriteJpeg(Path("b.jpg"), 60, 40);
    m_wizard->Add({Path("b.jpg")});
    Next();
    QVERIFY(choices("a.jpg").corrections.distortion);
    QVERIFY(!choices("a.jpg").corrections.chromatic);
    QVERIFY2(!choices("b.jpg").corrections.Any(), "a new picture doesn't have the stored settings");
    list->setCurrentText("a.jpg"_s);
    QVERIFY(Find<QCheckBox>("m_cbDistortion")->isChecked());
    QTRY_VERIFY(CanGoOn());
    m_wizard->close();
    m_wizard.reset(); // must be deleted before the plug-in
}

void tst_WizardPlugin::realPluginFits()
{
    QVERIFY(QDir(m_dir->path()).mkdir("lenses"_s));
    WriteFile(Path("lenses/x.lcp"), Profile("Canon EF 24-105mm f/4L IS USM"));
    const std::pair<const char *, PictureMetadata> pictures[] = {
        {"found.jpg", {kLens, "50/1", "8/1"}},
        {"none.jpg", {"EF24-105mm f/4L IS III USM", "50/1", "8/1"}},
        {"before.jpg", {kLens, "50/1", "8/1", true}},
        {"known.jpg", {"EF135mm f/2L USM", "135/1", "8/1"}}, // a lens in lensfun's database
    };
    for (const auto &[name, metadata] : pictures) {
        WriteJpeg(Path(name), 60, 40);
        WriteMetadata(Path(name), metadata);
    }
    const QByteArray xmp("\xFF\xE1\0\x21http://ns.adobe.com/xap/1.0/\0<x", 35); // damaged
    WriteFile(Path("found.jpg"), ReadFile(Path("found.jpg")).insert(2, xmp));
    QVERIFY(WizardPlugin(m_host, QStringLiteral(VITRELUX_PLUGIN), Path("gone"), s_guard).Problem().contains("gone"_s));
    m_host->Settings().clear(); // otherwise the defaults below could be those of the previous object
    WizardPlugin plugin(m_host, QStringLiteral(VITRELUX_PLUGIN), Path("lenses"), s_guard);
    QCOMPARE(plugin.Problem(), QString());
    QCOMPARE(plugin.Processes().size(), std::size_t(komp_num_threads));
    KIPluginOne2One *process = plugin.Processes().front();
    process->OnValidatePage(); // stores the defaults with which it was created
    for (const char *name : {"Disto", "CA", "Falloff"})
        QVERIFY2(m_host->GetPluginSetting(process->UID(), QLatin1String(name), false).toBool(), name);
    Show({process}, "found.jpg none.jpg before.jpg known.jpg"_s, plugin.Correction());
    QVERIFY(!m_wizard->windowIcon().isNull() && m_wizard->pixmap(QWizard::LogoPixmap).width() == 48);
    Find<QComboBox>("framing")->setCurrentIndex(1);
    Next();
    Find<QComboBox>("comboBoxImageDef")->setCurrentText("found.jpg"_s);
    QTRY_COMPARE(Find<QLineEdit>("lineEditLensFile")->placeholderText(), "Found: x.lcp"_s);
    Click("pushButtonApplyAll");
    Next();
    QTRY_VERIFY(m_wizard->button(QWizard::FinishButton)->isEnabled());
    const QStringList rows = Rows("results");
    QVERIFY2(rows[0].startsWith("found.jpg|Corrected: profile \"x.lcp\"; entries: 50 mm f/8 10 m 100 %; "_s)
                 && rows[0].contains("damaged metadata"_s),
             qPrintable(rows[0]));
    QVERIFY2(rows[1].startsWith("none.jpg|Failed: No lens profile"_s) && rows[1].contains("; nearest: "_s),
             qPrintable(rows[1]));
    QVERIFY2(rows[2].startsWith("before.jpg|Skipped, corrected before: distortion"_s), qPrintable(rows[2]));
    QVERIFY2(rows[3].startsWith("known.jpg|Corrected: profile \"lensfun: Canon/Canon EF 135mm"_s)
                 && !rows[3].contains("damaged"_s), // unlike the first picture
             qPrintable(rows[3]));
    QCOMPARE(Find<QLabel>("state")->text(), "2 pictures corrected, 1 corrected before, 1 failed"_s);
    compareFirstResult();
    for (const auto &[name, metadata] : pictures) {
        const QDomElement record = process->GetFileXmlParams(Path(name));
        QVERIFY2(record.attribute("LCPfilename"_s).isEmpty(), name); // a profile that was found isn't a choice
        QVERIFY2(record.attribute("Framing"_s) == "keep"_s, name);
        const Corrections on = ReadParameters(record).corrections; // the defaults, because nothing else was stored
        QVERIFY2(on.distortion && on.chromatic && on.vignetting, name);
    }
    m_wizard.reset(); // must be deleted before the plug-in
    QVERIFY(QFile::remove(Path("found_corrected.tiff")));
    QString problem; // of a run on an interrupted thread
    const std::unique_ptr<QThread> thread(QThread::create([&] {
        QThread::currentThread()->requestInterruption();
        const ParameterRecord record(process, DescribeParameters(process->Name(), {{true, false, false}, QString()}));
        try {
            QString output;
            process->Process(Path("found.jpg"), record.Get(), output);
        } catch (const KException &e) {
            problem = e.what();
        }
    }));
    thread->start();
    thread->wait();
    QCOMPARE(problem, "interrupted"_s);
    QVERIFY(!QFile::exists(Path("found_corrected.tiff")));
}

/// Opens the first result in each way and closes the dialog with Escape; Tab leaves the list.
void tst_WizardPlugin::compareFirstResult()
{
    auto *results = Find<QAbstractItemView>("results");
    const QModelIndex first = results->model()->index(0, 0);
    const QPoint place = results->visualRect(first).center();
    const std::function<void()> ways[] = {[=] { QTest::keyClick(results, Qt::Key_Return); },
                                          [=] { QTest::keyClick(results, Qt::Key_Enter); },
                                          [=] { DoubleClick(results->viewport(), place); }, [=] { Click("compare"); }};
    results->setCurrentIndex(first);
    int opened = 0, closed = 0;
    for (const auto &open : ways) {
        m_wizard->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_wizard.get()));
        results->setFocus();
        QTimer::singleShot(0, m_wizard.get(), [&closed] {
            auto *dialog = qobject_cast<CompareDialog *>(QApplication::activeModalWidget());
            QVERIFY(dialog);
            QCOMPARE(dialog->windowTitle(), "found.jpg: before and after"_s);
            auto *before = dialog->findChild<ComparedView *>("before"_s),
                 *after = dialog->findChild<ComparedView *>("after"_s);
            QTRY_COMPARE(after->Image().size(), QSize(60, 40));
            QVERIFY(before->Image().size() == after->Image().size() && before->Image() != after->Image());
            QTest::keyClick(after, Qt::Key_Plus);
            QCOMPARE(before->PictureRect(), after->PictureRect());
            ++closed;
            QTest::keyClick(dialog, Qt::Key_Escape);
        });
        open();
        QVERIFY2(closed == ++opened && m_wizard->isVisible(), qPrintable("way "_s + QString::number(opened)));
    }
    results->setCurrentIndex(results->model()->index(1, 0));
    QVERIFY(!Find<QAbstractButton>("compare")->isEnabled()); // a failed picture
    results->setFocus();
    QTest::keyClick(results, Qt::Key_Tab);
    QVERIFY(m_wizard->focusWidget() != results);
    m_wizard->close();
}

/// The same light, 1/8, looks the same in float TIFFs with and without a color profile and in a Radiance picture: sRGB
/// 0.3886.
void tst_WizardPlugin::comparesFloatsAsLight()
{
    TiffRaster raster = BlankRaster(2, 1, 3, 32);
    for (int i = 0; i < 6; ++i)
        raster.At(i / 3, 0, i % 3) = 0.125F;
    WriteTiff(Path("float.tif"), raster);
    const QByteArray pixel("\x80\x80\x80\x7E"); // mantissas and exponent: 128/256 * 2^(126 - 128)
    WriteFile(Path("light.hdr"), "#?RADIANCE\nFORMAT=32-bit_rle_rgbe\n\n-Y 1 +X 2\n" + pixel + pixel);
    std::fill(raster.values.begin(), raster.values.end(), float(std::pow(0.125, 1 / 1.8)));
    WriteTiff(Path("gamma.tif"), raster);
    const QByteArray icc = QColorSpace(QColorSpace::Primaries::SRgb, 1.8F).iccProfile();
    const auto gamma = Exiv2::ImageFactory::open(Path("gamma.tif").toStdString());
    gamma->readMetadata();
    Exiv2::DataBuf profile(reinterpret_cast<const Exiv2::byte *>(icc.constData()), icc.size());
    gamma->setIccProfile(profile);
    gamma->writeMetadata();
    for (const char *name : {"light.hdr", "gamma.tif"}) {
        CompareDialog dialog(m_host, Path("float.tif"), Path(name), nullptr);
        for (const auto *view : dialog.findChildren<ComparedView *>()) {
            QTRY_COMPARE(view->Image().size(), QSize(2, 1));
            QVERIFY2(view->Image().pixel(0, 0) == qRgb(99, 99, 99), name);
        }
    }
}

/// Tab visits the widgets of the page in reading order; no two buttons or labels have the same shortcut key.
void tst_WizardPlugin::checkKeyboard() const
{
    QMap<QString, QString> texts; // by key
    for (const QWidget *widget : m_wizard->findChildren<QWidget *>()) {
        const QString text = widget->property("text").toString();
        const QString key = QKeySequence::mnemonic(text).toString();
        if (!widget->isVisible() || key.isEmpty())
            continue;
        QVERIFY2(!texts.contains(key), qPrintable(text + " and "_s + texts[key]));
        texts[key] = text;
        QVERIFY2(widget->width() >= widget->sizeHint().width(), qPrintable(text)); // not cut off
    }
    QPoint last;
    const QWidget *page = m_wizard->currentPage();
    for (const QWidget *widget = page->nextInFocusChain(); widget != page; widget = widget->nextInFocusChain()) {
        if (!page->isAncestorOf(widget) || !widget->isVisible() || widget->focusPolicy() == Qt::NoFocus
            || (widget->parent() != page && !widget->property("text").isValid()))
            continue;
        const QPoint place = widget->mapTo(page, QPoint());
        QVERIFY2(place.y() > last.y() + 4 || place.x() > last.x(), qPrintable(widget->objectName()));
        last = place;
    }
}

void tst_WizardPlugin::usesTheUsersLanguage()
{
    for (const QStringList &row : ReadTable(QStringLiteral(LOCALES))) {
        const Case named(row);
        QLocale::setDefault(QLocale(row[0]));
        m_host->TranslateWindows();
        const PluginLoader plugin(QStringLiteral(VITRELUX_PLUGIN), CorrectionMode::Fitted);
        QVERIFY2(plugin.Process()->Comment().contains(row[1]), qPrintable(plugin.Process()->Comment()));
        m_host->SetPluginSetting(plugin.Process()->UID(), "Disto"_s, true);
        m_host->SetPluginSetting(plugin.Process()->UID(), "LCPfilename"_s, m_process->profile);
        Show({plugin.Process()}, QString());
        QVERIFY2(m_wizard->windowTitle().contains(row[2], Qt::CaseInsensitive), qPrintable(m_wizard->windowTitle()));

        m_wizard->resize(1, 1); // the description on the plug-in's page must be fully visible even in a narrow window
        WriteJpeg(Path("cut.jpg"), 60, 40);
        WriteMetadata(Path("cut.jpg"), {kLens, "50/1", "8/1"});
        WriteFile(Path("cut.jpg"), ReadFile(Path("cut.jpg")).chopped(500));
        m_wizard->Add({Path("cut.jpg")});
        QTRY_VERIFY(CanGoOn());
        checkKeyboard();
        Next();
        QApplication::processEvents();
        const QList<QLabel *> labels = m_wizard->findChildren<QLabel *>();
        const auto header = std::find_if(labels.begin(), labels.end(), [this](const QLabel *label) {
            return label->text() == m_wizard->currentPage()->subTitle();
        });
        QVERIFY(header != labels.end());
        QVERIFY((*header)->heightForWidth((*header)->width()) <= (*header)->height());
        Next();
        checkKeyboard();
        QTRY_VERIFY(Close());
        QVERIFY2(Rows("results")[0].contains("the file ends early"_s), qPrintable(Rows("results")[0]));
        m_wizard.reset(); // must be deleted before the plug-in
    }
}

int main(int argc, char **argv)
{
    return WizardTest::RunAll<tst_WizardPlugin>(argc, argv);
}
#include "WizardPlugin_test.moc"
