#include "UIVitreluxPage.h"

#include "KVitreluxOne2One.h"
#include "UIVitreluxPreview.h"

UIVitreluxPage::UIVitreluxPage(KVitreluxOne2One *process, QWidget *parent)
    : UIImageDefListWizard(parent), m_process(process), m_preview(new UIVitreluxPreview(process, this))
{
    SetChild(m_preview);
    setTitle(process->Name());
    setSubTitle(process->Comment());
}

void UIVitreluxPage::SetImage(KIImageDef *def, void *params)
{
    m_preview->setImage(def, params);
}

void UIVitreluxPage::ApplyAll()
{
    void *current = m_images.value(CurrentImage());
    if (!current)
        return; // an empty job
    for (void *record : qAsConst(m_images))
        m_process->CopyParameters(record, current);
    m_process->SaveDefaultSettings(current);
}

void UIVitreluxPage::Clear()
{
    SetImages({});
    m_preview->clearImage();
}
