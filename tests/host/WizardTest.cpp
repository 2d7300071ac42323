#include "WizardTest.h"

#include "ExpectedText.h"

#include <QApplication>
#include <QDropEvent>
#include <QHeaderView>
#include <QMetaProperty>
#include <QMimeData>
#include <QRegularExpression>

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

void WizardTest::CheckLooks(const QWidget &window, const char *section)
{
    QString seen = window.windowTitle() + QLatin1Char('\n');
    for (const QWidget *widget : window.findChildren<QWidget *>()) {
        QString line;
        for (const char *name :
             {"text", "toolTip", "placeholderText", "currentText", "value", "maximum", "alignment", "selectionMode",
              "selectionBehavior", "textElideMode", "editTriggers", "checked", "wordWrap", "rootIsDecorated",
              "uniformRowHeights", "showGrid", "tabKeyNavigation", "acceptDrops", "clearButtonEnabled"}) {
            const QMetaProperty property = widget->metaObject()->property(widget->metaObject()->indexOfProperty(name));
            const QVariant value = property.read(widget);
            const QString text = value.type() == QVariant::Bool ? QLatin1String(value.toBool() ? name : "")
                : property.isEnumType() ? QString::fromLatin1(property.enumerator().valueToKeys(value.toInt()))
                                        : QString(value.toString()).replace(QRegularExpression("(.+)"_s), "\"\\1\""_s);
            if (!text.isEmpty() && !text.startsWith("AlignL"_s)) // the default
                line += QLatin1Char(' ') + text;
        }
        if (widget->isVisible() && !line.isEmpty() && !qobject_cast<const QHeaderView *>(widget))
            seen += QLatin1String(widget->metaObject()->className()) + line
                + QLatin1String(widget->isEnabled() ? "\n" : " disabled\n");
    }
    for (const auto *header : window.findChildren<QHeaderView *>())
        for (int i = 0; header->isVisible() && i < header->count(); ++i)
            seen += "column "_s + header->model()->headerData(i, Qt::Horizontal).toString() + QLatin1Char('\n');
    QVERIFY2(seen.toUtf8() == ExpectedText(section), qPrintable(seen));
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
