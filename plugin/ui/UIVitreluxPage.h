// The plug-in's wizard page.
#pragma once

#include "UIImageDefListWizard.h"

class KVitreluxOne2One;
class UIVitreluxPreview;

/// Page that edits the process's records in place. The process must outlive it.
class UIVitreluxPage : public UIImageDefListWizard {
    Q_OBJECT
public:
    UIVitreluxPage(KVitreluxOne2One *process, QWidget *parent);

    void SetImage(KIImageDef *def, void *params) override;
    /// Copies the current image's record to all images and to the defaults of the next job.
    void ApplyAll() override;
    /// Drops the pointers to the job's images and records. Call it before they are freed.
    void Clear();

private:
    KVitreluxOne2One *m_process;
    UIVitreluxPreview *m_preview;
};
