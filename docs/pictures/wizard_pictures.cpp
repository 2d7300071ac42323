// Steps through the wizard as a user would, and saves screenshots for the documentation in the current folder.
// Usage: wizard-pictures PROFILE_FOLDER PICTURE... ENDING. LC_ALL and QT_SCALE_FACTOR set language and scale.
#include "app/HostApplication.h"
#include "app/InterruptGuard.h"
#include "wizard/CompareDialog.h"
#include "wizard/CorrectionWizard.h"
#include "wizard/RunPage.h"
#include "wizard/WizardPlugin.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QComboBox>
#include <QElapsedTimer>
#include <QFontDatabase>
#include <QPushButton>
#include <QStyleFactory>
#include <QTimer>
#include <QTreeWidget>

#include <cstdio>
#include <cstdlib>
#include <functional>

namespace {

constexpr int kWaitMs = 60000;
constexpr int kSettleMs = 300; // for queued layouts and repaints

void Require(bool condition, const char *what)
{
    if (condition)
        return;
    std::fprintf(stderr, "wizard-pictures: %s\n", what);
    std::exit(1);
}

void WaitUntil(const std::function<bool()> &condition, const char *what)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition() && !timer.hasExpired(kWaitMs))
        QApplication::processEvents(QEventLoop::AllEvents, 10);
    Require(condition(), what);
}

void Settle()
{
    QElapsedTimer timer;
    timer.start();
    while (!timer.hasExpired(kSettleMs))
        QApplication::processEvents(QEventLoop::AllEvents, 10);
}

class Tour : public QObject {
public:
    Tour(CorrectionWizard *wizard, const QString &ending) : m_wizard(wizard), m_ending(ending) { }

    void Go()
    {
        WaitUntil([this] { return CanGoOn(); }, "the pictures are not described");
        auto *list = m_wizard->findChild<QTreeWidget *>(QStringLiteral("pictures"));
        constexpr int kFolder = 2;
        for (int i = 0; i < list->topLevelItemCount(); ++i) // hides this machine's folder
            list->topLevelItem(i)->setText(kFolder, QStringLiteral("/home/user/Pictures"));
        Settle();
        Shot("pictures");
        Next();
        auto *images = m_wizard->findChild<QComboBox *>(QStringLiteral("comboBoxImageDef"));
        Require(images, "the page has no list of images");
        images->setCurrentText(QStringLiteral("facade.jpg"));
        WaitUntil([this] { return CanGoOn(); }, "the preview doesn't finish");
        Settle();
        Shot("page");
        Box("m_cbPreview")->click();
        Shot("split");
        Box("m_cbPreview")->click();
        Box("m_cbVignetting")->click();
        Shot("rendering");
        Box("m_cbVignetting")->click();
        WaitUntil([this] { return CanGoOn(); }, "the second preview doesn't finish");
        Next();
        WaitUntil([this] { return !m_wizard->findChild<RunPage *>()->IsRunning(); }, "the run doesn't end");
        Settle();
        Shot("results");
        QTimer::singleShot(0, this, &Tour::ShootComparison);
        m_wizard->findChild<QPushButton *>(QStringLiteral("compare"))->click();
        m_wizard->close();
    }

private:
    void Next() const { m_wizard->button(QWizard::NextButton)->click(); }
    void ShootComparison()
    {
        auto *dialog = m_wizard->findChild<CompareDialog *>();
        auto *after = dialog ? dialog->findChild<ComparedView *>(QStringLiteral("after")) : nullptr;
        Require(after, "the comparison doesn't open");
        WaitUntil([after] { return !after->Image().isNull(); }, "the compared pictures don't appear");
        Settle();
        Shot("compare", dialog);
        dialog->close();
    }
    bool CanGoOn() const { return m_wizard->button(QWizard::NextButton)->isEnabled(); }
    QCheckBox *Box(const char *name) const
    {
        auto *box = m_wizard->findChild<QCheckBox *>(QLatin1String(name));
        Require(box && box->isEnabled(), name);
        return box;
    }
    void Shot(const char *name) const { Shot(name, m_wizard); }
    void Shot(const char *name, QWidget *window) const
    {
        const QString file = QStringLiteral("wizard-%1%2.png").arg(QLatin1String(name), m_ending);
        Require(window->grab().save(file), "cannot write a picture");
    }

    CorrectionWizard *m_wizard;
    QString m_ending;
};

} // namespace

int main(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    Require(arguments.size() >= 3, "needs PROFILE_FOLDER PICTURE... ENDING");
    const QString profiles = arguments.takeFirst();
    const QString ending = arguments.takeLast();

    InterruptGuard guard;
    ChooseDisplay();
    HostApplication application(argc, argv);
    QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
    QApplication::setFont(QFont(QStringLiteral("DejaVu Sans"), 9));
    application.TranslateWindows();
    application.MakeThumbnails();
    WizardPlugin plugin(&application, QString(), profiles, &guard);
    Require(plugin.Problem().isEmpty(), qPrintable(plugin.Problem()));
    CorrectionWizard wizard(&application, plugin.Processes(), plugin.Correction(), &guard);
    wizard.Add(arguments);
    wizard.resize(wizard.minimumWidth(), 640);
    wizard.show();
    Tour(&wizard, ending).Go();
    return 0;
}
