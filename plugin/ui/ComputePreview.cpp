#include "ComputePreview.h"

#include <QImage>

ComputePreview::ComputePreview(KVitreluxOne2One *process, QObject *parent) : QThread(parent), m_process(process) { }

ComputePreview::~ComputePreview()
{
    wait();
}

void ComputePreview::setImage(KIImageDef *def, KImage *image, KVitreluxOne2One::Params *params)
{
    const QMutexLocker locker(&m_mutex);
    m_requestImageDef = def;
    m_requestImage = image;
    m_requestParams = *params;
    ++m_requestNumber;
}

bool ComputePreview::IsCurrent()
{
    const QMutexLocker locker(&m_mutex);
    return m_renderedNumber == m_requestNumber;
}

void ComputePreview::getPreview(QImage &out)
{
    const QMutexLocker locker(&m_mutex);
    if (!omp_test_lock(m_runLock.Lock()))
        return;
    try {
        m_workImage.ToQImage(out);
    } catch (const KException &) {
    }
    omp_unset_lock(m_runLock.Lock());
}

std::optional<FitReport> ComputePreview::Report()
{
    const QMutexLocker locker(&m_mutex);
    return m_renderedReport;
}

void ComputePreview::Render()
{
    {
        const QMutexLocker locker(&m_mutex);
        m_workNumber = m_requestNumber; // set before anything can throw: a failed request is not repeated
        m_workImageDef = m_requestImageDef;
        m_workParams = m_requestParams;
        m_requestImage->Convert(m_workImage, GFL_RGBA, 32); // a copy, into the same memory if the size is unchanged
    }
    // A plain record without a profile corrects nothing; running it would only start a useless lookup in parallel with
    // the GUI thread.
    if (m_workParams.fitted || !m_workParams.lcpFilename.isEmpty())
        m_process->Process(qMakePair(m_workImageDef, &m_workImage), &m_workParams);
}

void ComputePreview::run()
{
    const KOmpMutexLocker running(m_runLock.Lock());
    try {
        Render();
    } catch (...) { // ends only this render; whatever the work image holds is shown
    }
    const QMutexLocker locker(&m_mutex);
    m_renderedNumber = m_workNumber;
    m_renderedReport = m_workParams.fitted ? m_workParams.fitted->report : std::nullopt;
}
