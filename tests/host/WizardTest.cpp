#include "WizardTest.h"

#include <QApplication>
#include <QDropEvent>
#include <QMimeData>

void WizardTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_process = std::make_unique<StandInProcess>();
    m_process->page = std::make_unique<QWizardPage>();
    m_process->profile = Path("p.lcp");
    WriteFile(m_process->profile, Profile(kLens));
    m_host->Settings().clear();
}

void WizardTest::cleanup()
{
    m_wizard.reset();
    m_process->go.acquire(m_process->go.available());
    m_process->began.acquire(m_process->began.available());
    QCOMPARE(m_process->records.load(), 0);
    QVERIFY(!m_process->page || !m_process->page->parent()); // must be returned, or it would be deleted twice
    for (const QWidget *window : QApplication::topLevelWidgets())
        QVERIFY2(!window->isVisible(), window->metaObject()->className());
}

void WizardTest::Show(const std::vector<KIPluginOne2One *> &processes, const QString &names,
                      FittedCorrection *correction)
{
    m_wizard.reset(); // returns the page
    m_wizard = std::make_unique<CorrectionWizard>(m_host, processes, correction ? correction : &m_correction, s_guard);
    for (const QString &name : names.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        const QString path = m_dir->filePath(name);
        if (!QFile::exists(path))
            WriteJpeg(path, 60, 40);
        m_wizard->Add({path});
    }
    m_wizard->show();
}

void WizardTest::Drop(const QList<QUrl> &urls) const
{
    QMimeData files;
    files.setUrls(urls);
    QWidget *page = m_wizard->currentPage();
    QDragEnterEvent enter(QPoint(5, 5), Qt::CopyAction, &files, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(page, &enter);
    QVERIFY(enter.isAccepted());
    QDropEvent drop(QPoint(5, 5), Qt::CopyAction, &files, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(page, &drop);
}
