#include "MemoryBudget.h"

#include "ImageDef.h"
#include "KOmp.h"

#include <QDomElement>
#include <QFile>
#include <QFileInfo>

namespace {

/// Returns the bytes per pixel that a decoder holds in addition to its result.
qint64 DecoderBytes(const QString &fileName, qint64 stored)
{
    constexpr qint64 kCoefficients = 3 * 2; // of a progressive JPEG, at full color resolution
    constexpr qint64 kSamples = 3 * 4;      // of 32 bits, in JPEG 2000 and JPEG XL; camera raw needs 10 bytes
    const QString suffix = QFileInfo(fileName).suffix().toLower();
    if (suffix == QLatin1String("tif") || suffix == QLatin1String("tiff") || suffix == QLatin1String("png"))
        return 0;
    return suffix == QLatin1String("jpg") || suffix == QLatin1String("jpeg") ? kCoefficients : kSamples + stored;
}

} // namespace

qint64 BytesToCorrect(const ImageDef &image, Corrector corrector)
{
    constexpr qint64 kProgramBytes = qint64(80) << 20;
    constexpr qint64 kFloatPixel = 4 * 4;
    constexpr qint64 kWindow = kFloatPixel / 4; // per thread: a quarter of all rows; 64 output rows need up to a fifth
    const qint64 stored = qint64(image.nBands()) * image.nDepth() / 8;
    const qint64 decoder = DecoderBytes(image.FileName(), stored);
    const bool isStoredRgb = image.nBands() == 3 && image.nDepth() <= 16;
    qint64 pixel = stored + decoder;
    if (corrector == Corrector::Plain)
        pixel = stored + qMax(decoder, stored + kFloatPixel);
    else if (corrector == Corrector::FittedByFloats || !isStoredRgb)
        pixel += kWindow * komp_num_threads;
    return kProgramBytes + pixel * image.nCols() * image.nRows();
}

Corrector CorrectorOf(const QDomElement &parameters)
{
    const bool isBilinear = parameters.attribute(QStringLiteral("Sampling")) == QLatin1String("bilinear");
    return isBilinear ? Corrector::FittedByFloats : Corrector::Fitted;
}

qint64 AvailableBytes()
{
    QFile file(QStringLiteral("/proc/meminfo"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    for (QByteArray line = file.readLine(); !line.isEmpty(); line = file.readLine()) {
        if (line.startsWith("MemAvailable:"))
            return line.simplified().split(' ').value(1).toLongLong() * 1024;
    }
    return 0;
}

MemoryBudget::Share::Share(MemoryBudget *budget, qint64 bytes) : m_budget(budget), m_bytes(bytes)
{
    std::unique_lock<std::mutex> lock(budget->m_mutex);
    budget->m_freed.wait(lock, [&] {
        return budget->m_usedBytes == 0 || budget->m_limitBytes == 0
            || budget->m_usedBytes + bytes <= budget->m_limitBytes;
    });
    budget->m_usedBytes += bytes;
}

MemoryBudget::Share::~Share()
{
    {
        const std::lock_guard<std::mutex> lock(m_budget->m_mutex);
        m_budget->m_usedBytes -= m_bytes;
    }
    m_budget->m_freed.notify_all();
}
