// The worker that renders the preview: the real correction on a reduced copy of the picture.
#pragma once

#include "KImage.h"
#include "KOmp.h"
#include "KVitreluxOne2One.h"

#include <QMutex>
#include <QThread>

/// Worker with one request and one result. start() renders the newest request. A request made during a render replaces
/// the pending one, and needs another start() after finished().
///
/// Call setImage, getPreview, IsCurrent and Report on the GUI thread; they never wait for a render.
class ComputePreview : public QThread {
    Q_OBJECT
public:
    ComputePreview(KVitreluxOne2One *process, QObject *parent);
    /// Waits for a running render, without a time limit.
    ~ComputePreview() override;

    /// Replaces the request. @p image, four float channels, must stay alive and unchanged until the next setImage or
    /// the end of this object; the record is copied.
    void setImage(KIImageDef *def, KImage *image, KVitreluxOne2One::Params *params);
    /// Returns whether getPreview gives the result of the newest request.
    bool IsCurrent();
    /// Copies the last rendered picture to @p out, which is unchanged during a render or if memory is insufficient.
    void getPreview(QImage &out);
    /// Returns the report of the last render; nullopt before the first one and for plain records.
    std::optional<FitReport> Report();

protected:
    void run() override;

private:
    void Render();

    KVitreluxOne2One *m_process;
    QMutex m_mutex; // guards the request, the numbers, the report and, while no render is running, the work image

    KIImageDef *m_workImageDef = nullptr;
    KImage m_workImage;
    KVitreluxOne2One::Params m_workParams;
    int m_workNumber = 0;     // of the request being rendered
    int m_renderedNumber = 0; // of the last rendered request
    std::optional<FitReport> m_renderedReport;

    KIImageDef *m_requestImageDef = nullptr;
    KImage *m_requestImage = nullptr;
    KVitreluxOne2One::Params m_requestParams;
    int m_requestNumber = 0;

    KOmpMutex m_runLock; // held during a render
};
