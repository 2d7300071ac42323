// A wizard page for a process that has settings for each image: the images of the job in a list to walk through.
#pragma once

#include <QMap>
#include <QWizardPage>

#include <memory>

class KIImageDef;
class Ui_UIImageDefListWizardClass;

/// The concrete page fills the free area with a child and knows what the records hold; here they are opaque and belong
/// to the process. First SetChild, then SetImages once a job. GUI thread.
class UIImageDefListWizard : public QWizardPage {
    Q_OBJECT
public:
    explicit UIImageDefListWizard(QWidget *parent);
    ~UIImageDefListWizard() override;

    /// Replaces the list and shows its first image. The order is that of the map, not that of the job.
    void SetImages(const QMap<KIImageDef *, void *> &images);
    /// Takes @p child into the layout, which owns it from then on.
    void SetChild(QWidget *child);

    virtual void SetImage(KIImageDef *def, void *params) = 0;
    virtual void ApplyAll() = 0;
    /// The property "isComplete" of the child; true as long as it has none.
    bool isComplete() const override;

protected:
    /// The image in the list's current row, null for an empty list.
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
