// Base class of the wizard's tests, which operate its window as a user would.
#pragma once

#include "FittedFiles.h"
#include "StandInProcess.h"
#include "app/FittedCorrection.h"
#include "app/InterruptGuard.h"
#include "wizard/CorrectionWizard.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QTemporaryDir>
#include <QtTest>

#include <memory>

/// Each test function gets a new folder with a profile, a process whose page is empty, and default settings.
class WizardTest : public QObject {
    Q_OBJECT
public:
    /// Runs the tests; called by main(). Returns the exit code.
    template <typename Test> static int RunAll(int argc, char **argv)
    {
        QTemporaryDir settings; // instead of the user's
        for (const char *variable : {"XDG_CONFIG_HOME", "XDG_CACHE_HOME"})
            qputenv(variable, QFile::encodeName(settings.path()));
        InterruptGuard guard;
        s_guard = &guard;
        ChooseDisplayless();
        HostApplication application(argc, argv);
        application.TranslateWindows();
        application.MakeThumbnails();
        Test test;
        return QTest::qExec(&test, argc, argv);
    }

protected Q_SLOTS:
    void init();
    void cleanup();

protected:
    QString Path(const char *name) const { return m_dir->filePath(QString::fromUtf8(name)); }
    template <typename Widget> Widget *Find(const char *name) const
    {
        return m_wizard->findChild<Widget *>(QLatin1String(name));
    }
    void Click(const char *name) const { Find<QAbstractButton>(name)->click(); }
    void Next() const
    {
        QTRY_VERIFY(CanGoOn()); // waits until the pictures are described, or the preview is rendered
        m_wizard->button(QWizard::NextButton)->click();
    }
    bool CanGoOn() const { return m_wizard->button(QWizard::NextButton)->isEnabled(); }
    /// Returns the rows of a list, each with its columns joined by '|'.
    QStringList Rows(const char *list, int columns = 2) const
    {
        QStringList rows;
        const QAbstractItemModel *model = Find<QAbstractItemView>(list)->model();
        for (int i = 0; i < model->rowCount(); ++i) {
            QStringList texts;
            for (int column = 0; column < columns; ++column)
                texts << model->index(i, column).data().toString();
            rows << texts.join(QLatin1Char('|'));
        }
        return rows;
    }
    /// Opens the wizard with pictures of these names; creates missing ones.
    void Show(const std::vector<KIPluginOne2One *> &processes, const QString &names,
              FittedCorrection *correction = nullptr);
    void Show(const QString &names) { Show({m_process.get()}, names); }
    void Drop(const QList<QUrl> &urls) const;
    /// Compares a window with a section of windows.txt, which has a line per visible widget: its class, texts, values
    /// and states.
    static void CheckLooks(const QWidget &window, const char *section);
    bool Close() const { return m_wizard->button(QWizard::FinishButton)->isEnabled() && m_wizard->close(); }

    static inline InterruptGuard *s_guard = nullptr;
    HostApplication *m_host = static_cast<HostApplication *>(qApp);
    std::unique_ptr<QTemporaryDir> m_dir;
    std::unique_ptr<StandInProcess> m_process;
    FittedCorrection m_correction{{}, m_host, s_guard};
    std::unique_ptr<CorrectionWizard> m_wizard;
};
