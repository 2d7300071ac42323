// The wizard's first page: which pictures.
#pragma once

#include <QWizardPage>

class HostApplication;
class QCheckBox;
class QLabel;
class QPushButton;
class QTreeWidget;

/// Pictures come by a file dialog, by drag and drop (a folder gives the pictures in it), or by Add(). Each stands in
/// the list once, with what its file tells, or why it can't be used. GUI thread.
class PicturesPage : public QWizardPage {
    Q_OBJECT
public:
    explicit PicturesPage(HostApplication *application);

    void Add(const QStringList &files);
    /// Absolute, in the order of the list.
    QStringList Files() const;
    /// Whether corrected pictures that exist may be replaced.
    bool MayReplace() const;

    /// Once every file of the list was looked at: what comes next needs all that is known of them, at once.
    bool isComplete() const override;

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void SetUpList();
    void Choose();
    void RemoveSelected();
    int NextToDescribe() const;
    void DescribeNext();
    void ListChanged();

    HostApplication *m_application;
    QTreeWidget *m_list;
    QLabel *m_hint;
    QPushButton *m_remove;
    QCheckBox *m_replace;
};
