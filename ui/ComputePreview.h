// The worker that renders the preview: the real correction, on a reduced copy of the picture.
#pragma once

#include "KImage.h"
#include "KOmp.h"
#include "KVitreluxOne2One.h"

#include <QMutex>
#include <QThread>

/// Holds one request and one result. start() begins a render of the newest request; a request that comes while a render
/// is under way replaces the one that waits, and needs a start() of its own after finished().
///
/// setImage, getPreview and IsCurrent are for the GUI thread and never wait for a render.
class ComputePreview : public QThread {
    Q_OBJECT
public:
    ComputePreview(KVitreluxOne2One *process, QObject *parent);
    /// Waits for a render under way, as long as it takes.
    ~ComputePreview() override;

    /// Replaces the request. @p image, four float channels, stays alive and unchanged until the next setImage or the
    /// end of this object; the record is copied.
    void setImage(KIImageDef *def, KImage *image, KVitreluxOne2One::Params *params);
    /// Whether the picture of getPreview answers the newest request.
    bool IsCurrent();
    /// The last rendered picture. Leaves @p out as it is while a render is under way, or with too little memory.
    void getPreview(QImage &out);
    /// What the last render of a fitted record tells of itself; none before the first, and for plain records.
    std::optional<FitReport> Report();

protected:
    void run() override;

private:
    void Render();

    KVitreluxOne2One *m_process;
    QMutex m_mutex; // guards the request and the numbers, and the work image while no render is under way

    KIImageDef *m_workImageDef = nullptr;
    KImage m_workImage;
    KVitreluxOne2One::Params m_workParams;
    int m_workNumber = 0;     // of the request that is being rendered
    int m_renderedNumber = 0; // ... that was rendered last
    std::optional<FitReport> m_renderedReport;

    KIImageDef *m_requestImageDef = nullptr;
    KImage *m_requestImage = nullptr;
    KVitreluxOne2One::Params m_requestParams;
    int m_requestNumber = 0;

    KOmpMutex m_runLock; // held as long as a render is under way
};
