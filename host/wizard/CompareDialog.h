// Window that shows a picture before and after its correction.
#pragma once

#include "ComparedView.h"

#include <QDialog>
#include <QThread>

#include <memory>

class HostApplication;
class QHBoxLayout;

/// Dialog with both pictures side by side, at the same position and zoom. The mouse, the +, -, 0 and arrow keys, and
/// buttons change position and zoom. A thread reads the pictures. The window's size is stored. GUI thread.
class CompareDialog : public QDialog {
    Q_OBJECT
public:
    /// @param before, after  absolute paths
    CompareDialog(HostApplication *application, const QString &before, const QString &after, QWidget *parent);
    /// Waits for the thread that reads the pictures.
    ~CompareDialog() override;

    void done(int result) override;

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    struct Loaded {
        QImage image;
        QString problem; // why there is no image
    };

    static Loaded Load(HostApplication *application, const QString &path);
    QWidget *Pane(const QString &title, ComparedView *view) const;
    QHBoxLayout *Buttons();
    void ShowLoaded();

    HostApplication *m_application;
    SharedPlace m_place;
    ComparedView *m_before;
    ComparedView *m_after;
    Loaded m_loaded[2]; // written by the thread
    std::unique_ptr<QThread> m_thread;
};
