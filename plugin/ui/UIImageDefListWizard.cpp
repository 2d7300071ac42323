#include "UIImageDefListWizard.h"

#include "KIImageDef.h"
#include "ui_UIImageDefListWizard.h"

#include <QSignalBlocker>

UIImageDefListWizard::UIImageDefListWizard(QWidget *parent)
    : QWizardPage(parent), ui(std::make_unique<Ui_UIImageDefListWizardClass>())
{
    ui->setupUi(this);
    // Rename the buttons after setupUi, which connects slots by the old names. Host style sheets use the new names.
    ui->toolButtonPrev->setObjectName(QStringLiteral("QToolButton_Prev"));
    ui->toolButtonNext->setObjectName(QStringLiteral("QToolButton_Next"));
    ui->toolButtonPrev->setToolTip(tr("Prev"));
    ui->toolButtonNext->setToolTip(tr("Next"));
}

UIImageDefListWizard::~UIImageDefListWizard() = default;

void UIImageDefListWizard::SetChild(QWidget *child)
{
    m_child = child;
    ui->gridLayout->addWidget(child, 0, 0, 1, -1);
    setWindowTitle(child->windowTitle());
}

void UIImageDefListWizard::SetImages(const QMap<KIImageDef *, void *> &images)
{
    m_images = images;
    m_images.remove(nullptr); // a file that the host cannot describe
    {
        const QSignalBlocker quiet(ui->comboBoxImageDef);
        ui->comboBoxImageDef->clear();
        for (auto image = m_images.constBegin(); image != m_images.constEnd(); ++image)
            ui->comboBoxImageDef->addItem(image.key()->ShortFileName(),
                                          QVariant::fromValue(static_cast<void *>(image.key())));
    }
    on_comboBoxImageDef_currentIndexChanged(ui->comboBoxImageDef->currentIndex());
}

bool UIImageDefListWizard::isComplete() const
{
    const QVariant complete = m_child ? m_child->property("isComplete") : QVariant();
    return !complete.isValid() || complete.toBool();
}

KIImageDef *UIImageDefListWizard::CurrentImage() const
{
    return static_cast<KIImageDef *>(ui->comboBoxImageDef->currentData().value<void *>());
}

void UIImageDefListWizard::on_comboBoxImageDef_currentIndexChanged(int index)
{
    KIImageDef *def = index == -1 ? nullptr : CurrentImage();
    if (def)
        SetImage(def, m_images[def]);
}

void UIImageDefListWizard::Step(int rows)
{
    const int row = ui->comboBoxImageDef->currentIndex();
    const int count = m_images.size();
    if (row != -1)
        ui->comboBoxImageDef->setCurrentIndex((count + row + rows) % count);
}

void UIImageDefListWizard::on_toolButtonPrev_clicked()
{
    Step(-1);
}

void UIImageDefListWizard::on_toolButtonNext_clicked()
{
    Step(+1);
}

void UIImageDefListWizard::on_pushButtonApplyAll_clicked()
{
    ApplyAll();
}
