// The wizard's first page: choice of pictures, and options for all of them.
#pragma once

#include "CorrectionJob.h"

#include <QWizardPage>

class HostApplication;
class QCheckBox;
class QComboBox;
class QGridLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QTreeWidget;

/// Page to which pictures are added by dialogs, by drag and drop, or by Add(). Adding a folder adds the pictures in it
/// and its subfolders, except results of earlier runs. Each picture is listed once, with facts from its file or the
/// reason why it can't be used. The options are stored, except the permission to replace files. GUI thread.
class PicturesPage : public QWizardPage {
    Q_OBJECT
public:
    explicit PicturesPage(HostApplication *application);

    /// @param files  pictures and folders
    void Add(const QStringList &files);
    /// Returns the pictures in the order of the list, with absolute paths.
    QVector<NamedPicture> Pictures() const;
    /// Returns the paths of the pictures.
    QStringList Files() const;
    JobOutput Output() const;
    /// Returns whether existing corrected pictures may be replaced.
    bool MayReplace() const;
    /// Returns the chosen framing, as the attribute "Framing" of a record.
    QString Framing() const;

    /// Returns whether the output folder is valid and the list has files, all of them described: the next page needs
    /// all descriptions at once.
    bool isComplete() const override;

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void SetUpList();
    QGridLayout *SetUpOptions();
    void SetUpChoice(QComboBox *box, const QLatin1String &setting);
    void Choose();
    void ChooseFolder();
    void ChooseOutputFolder();
    QString OutputFolder() const;
    QString OutputFolderFault() const;
    void OutputFolderChanged();
    void ShowNotice(const QString &text);
    void RemoveSelected();
    void DescribeNext();
    void ShowReading();
    void ListChanged();

    HostApplication *m_application;
    QTreeWidget *m_list;
    int m_described = 0; // number of leading rows whose files have been described
    QLabel *m_hint;
    QPushButton *m_remove;
    QLabel *m_reading; // how many files are described; empty if all are
    QLabel *m_notice;  // what is wrong with the last input; hidden if nothing is
    QLineEdit *m_outputFolder;
    QPushButton *m_chooseOutput;
    QComboBox *m_format;
    QComboBox *m_framing;
    QCheckBox *m_replace;
};
