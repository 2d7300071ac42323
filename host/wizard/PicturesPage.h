// The wizard's first page: choice of pictures, and options for all of them.
#pragma once

#include <QWizardPage>

class HostApplication;
class QCheckBox;
class QComboBox;
class QLabel;
class QPushButton;
class QTreeWidget;

/// Pictures are added by a file dialog, by drag and drop (a folder adds the pictures in it), or by Add(). Each is
/// listed once, with facts from its file or the reason why it can't be used. GUI thread.
class PicturesPage : public QWizardPage {
    Q_OBJECT
public:
    explicit PicturesPage(HostApplication *application);

    void Add(const QStringList &files);
    /// Absolute, in the order of the list.
    QStringList Files() const;
    /// Whether existing corrected pictures may be replaced.
    bool MayReplace() const;
    /// Returns the chosen framing, as the attribute "Framing" of a record. The choice is stored.
    QString Framing() const;

    /// True once all files of the list are described: the next page needs all descriptions at once.
    bool isComplete() const override;

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void SetUpList();
    void SetUpFraming();
    void Choose();
    void RemoveSelected();
    int NextToDescribe() const;
    void DescribeNext();
    void ListChanged();

    HostApplication *m_application;
    QTreeWidget *m_list;
    QLabel *m_hint;
    QPushButton *m_remove;
    QComboBox *m_framing;
    QCheckBox *m_replace;
};
