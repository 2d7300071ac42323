#include "KPoolMemManager.h"

#include "KException.h"

#include <limits>
#include <new>

namespace {

constexpr int kLargestBlockMo = std::numeric_limits<qint32>::max() >> 20;

QString FailureText(int memoryMo, int threads, int blockMo)
{
    return QStringLiteral("Can not allocate pool memory manager:"
                          "\nmemory to allocate: %1 mo | thread: %2 | bloc: %3 mo\n"
                          "Try to restart application or contact support if detected memory seems wrong")
        .arg(memoryMo)
        .arg(threads)
        .arg(blockMo);
}

} // namespace

KPoolMemManager *KPoolMemManager::ms_instance = nullptr;

void KPoolMemManager::init(KPoolMemManager *instance)
{
    if (instance)
        ms_instance = instance;
    else if (!ms_instance)
        ms_instance = new KPoolMemManager;
}

void KPoolMemManager::exit()
{
    delete ms_instance;
    ms_instance = nullptr;
}

int KPoolMemManager::computeBlockSize(int memoryMo, int threads)
{
    const qint64 wanted = qMax(qint64(threads) * 10, qint64(150));
    int size = 8;
    qint64 count = memoryMo / size;
    if (count < 1)
        return 1; // otherwise the loop would double 0 forever
    for (; count < wanted; count *= 2)
        size >>= 1;
    return qMax(size, 1);
}

void KPoolMemManager::init(int memoryMo, int threads, int blockMo)
{
    Free();
    try {
        const int block = blockMo ? blockMo : computeBlockSize(memoryMo, threads);
        if (block < 1 || block > kLargestBlockMo)
            throw std::bad_alloc(); // a block's size must be positive and fit in 32 bits
        m_blockCount = memoryMo / block;
        m_blockSize = block * (1 << 20);
        m_totalSize = qint64(memoryMo) * (1 << 20);
        Alloc();
    } catch (...) {
        throw KException(FailureText(memoryMo, threads, blockMo), KPlace());
    }
}

void KPoolMemManager::Alloc()
{
    Free();
    if (m_blockCount < 1)
        return;
    m_blocks = new KPoolMemBloc[static_cast<size_t>(m_blockCount)];
    for (qint32 i = 0; i < m_blockCount; ++i) {
        m_blocks[i].m_data = new (std::nothrow) char[static_cast<size_t>(m_blockSize)];
        if (!m_blocks[i].m_data)
            throw KException(QStringLiteral("Not enough memory"), KPlace());
        m_freeBlocks.push(&m_blocks[i]);
    }
}

void KPoolMemManager::Free()
{
    for (qint32 i = 0; m_blocks && i < m_blockCount; ++i)
        delete[] m_blocks[i].m_data;
    delete[] m_blocks;
    m_blocks = nullptr;
    m_freeBlocks.clear();
}

KPoolMemBloc *KPoolMemManager::getFreeBloc()
{
    KPoolMemBloc *bloc = nullptr;
    return m_freeBlocks.try_pop(bloc) ? bloc : nullptr;
}

void KPoolMemManager::addFreeBloc(KPoolMemBloc *bloc)
{
    bloc->m_users = KPoolMemBloc::kFree;
    m_freeBlocks.push(bloc);
}

KPoolMemBloc *KPoolMemManager::OldestIdle()
{
    KPoolMemBloc *oldest = nullptr;
    for (qint32 i = 0; m_blocks && i < m_blockCount; ++i) {
        if (m_blocks[i].m_users == 0 && (!oldest || m_blocks[i].m_lastUse < oldest->m_lastUse))
            oldest = &m_blocks[i];
    }
    return oldest;
}

KPoolMemBloc *KPoolMemManager::getFreeableBloc()
{
    while (KPoolMemBloc *bloc = OldestIdle()) {
        int idle = 0;
        if (bloc->m_users.compare_exchange_strong(idle, KPoolMemBloc::kFree))
            return bloc;
    }
    return nullptr;
}
