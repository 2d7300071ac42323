// The one wizard page of the plug-in.
#pragma once

#include "UIImageDefListWizard.h"

class KVitreluxOne2One;
class UIVitreluxPreview;

/// Edits the process's records in place. The process outlives the page.
class UIVitreluxPage : public UIImageDefListWizard {
    Q_OBJECT
public:
    UIVitreluxPage(KVitreluxOne2One *process, QWidget *parent);

    void SetImage(KIImageDef *def, void *params) override;
    /// The current image's record for all images and as default of the next job.
    void ApplyAll() override;
    /// Lets go of the job's images and records, before they end.
    void Clear();

private:
    KVitreluxOne2One *m_process;
    UIVitreluxPreview *m_preview;
};
