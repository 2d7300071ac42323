#include "MemoryBudget.h"

#include <QFile>

qint64 BytesToCorrect(int width, int height)
{
    constexpr qint64 kBytesPerPixel = 48, kProgramBytes = qint64(80) << 20;
    return qint64(width) * height * kBytesPerPixel + kProgramBytes;
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
