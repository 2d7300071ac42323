// Wizard page for a process with settings per image: the user steps through a list of the job's images.
#pragma once

#include <QMap>
#include <QWizardPage>

#include <memory>

class KIImageDef;
class Ui_UIImageDefListWizardClass;

/// Base class. Derived pages fill the free area with a child and edit the records, which are opaque here and owned by
/// the process. Call SetChild first, then SetImages once per job. GUI thread.
class UIImageDefListWizard : public QWizardPage {
    Q_OBJECT
public:
    explicit UIImageDefListWizard(QWidget *parent);
    ~UIImageDefListWizard() override;

    /// Replaces the list and shows its first image. The order is the map's, not the job's.
    void SetImages(const QMap<KIImageDef *, void *> &images);
    /// Adds @p child to the page, which takes ownership.
    void SetChild(QWidget *child);

    virtual void SetImage(KIImageDef *def, void *params) = 0;
    virtual void ApplyAll() = 0;
    /// Returns the child's property "isComplete"; true if it has none.
    bool isComplete() const override;

protected:
    /// Returns the image in the list's current row, null for an empty list.
    KIImageDef *CurrentImage() const;

    QMap<KIImageDef *, void *> m_images; // image to record

private Q_SLOTS:
    void on_pushButtonApplyAll_clicked();
    void on_toolButtonPrev_clicked();
    void on_toolButtonNext_clicked();
    void on_comboBoxImageDef_currentIndexChanged(int index);

private:
    void Step(int rows);

    std::unique_ptr<Ui_UIImageDefListWizardClass> ui;
    QWidget *m_child = nullptr;
};
