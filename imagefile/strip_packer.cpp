#include "strip_packer.h"

#include <algorithm>
#include <condition_variable>
#include <libdeflate.h>
#include <memory>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

namespace imagefile {

namespace {

/// Packed strips a thread may be ahead of the writer: enough that nobody waits while the disk takes a strip.
constexpr int kSlotsPerThread = 3;

/// A compressor with its buffer for unpacked bytes; one for each thread.
class Packer {
public:
    explicit Packer(const StripJob &job)
        : m_job(job),
          m_compressor(libdeflate_alloc_compressor(job.level), libdeflate_free_compressor),
          m_unpacked(job.maxStripBytes)
    {
        if (!m_compressor)
            throw std::bad_alloc();
    }

    std::size_t Bound() const { return libdeflate_zlib_compress_bound(m_compressor.get(), m_job.maxStripBytes); }

    /// @p packed holds Bound() bytes, so that every strip fits.
    std::size_t Pack(int strip, std::uint8_t *packed)
    {
        const std::size_t bytes = m_job.fill(strip, m_unpacked.data());
        return libdeflate_zlib_compress(m_compressor.get(), m_unpacked.data(), bytes, packed, Bound());
    }

private:
    const StripJob &m_job;
    std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor *)> m_compressor;
    std::vector<std::uint8_t> m_unpacked;
};

/// The plain way, and the definition of what comes out.
Status PackAlone(const StripJob &job)
{
    Packer packer(job);
    std::vector<std::uint8_t> packed(packer.Bound());
    for (int strip = 0; strip < job.strips; ++strip) {
        const std::size_t bytes = packer.Pack(strip, packed.data());
        if (Status status = job.write(strip, packed.data(), bytes); !status)
            return status;
    }
    return Status::Ok();
}

/// Threads take strips in turn and pack each into a slot of a ring; the calling thread writes the slots in order.
class Ring {
public:
    Ring(const StripJob &job, int threads);
    ~Ring();
    Ring(const Ring &) = delete;
    Ring &operator=(const Ring &) = delete;

    bool Start(); // false: no thread could be started
    Status WriteAll();

private:
    struct Slot {
        std::vector<std::uint8_t> packed;
        std::size_t bytes = 0;
        int strip = -1; // that lies packed here
    };

    void Work(Packer *packer);
    Slot &SlotOf(int strip) { return m_slots[static_cast<std::size_t>(strip) % m_slots.size()]; }

    const StripJob &m_job;
    std::vector<std::unique_ptr<Packer>> m_packers;
    std::vector<Slot> m_slots;
    std::vector<std::thread> m_threads;
    std::mutex m_mutex; // guards all below, and the strip numbers of the slots
    std::condition_variable m_packed, m_written;
    int m_next = 0; // to be packed
    int m_done = 0; // strips written
    bool m_stop = false;
};

Ring::Ring(const StripJob &job, int threads) : m_job(job), m_slots(static_cast<std::size_t>(threads) * kSlotsPerThread)
{
    for (int i = 0; i < threads; ++i) // all memory is taken here, so that a thread can't fail
        m_packers.push_back(std::make_unique<Packer>(job));
    for (Slot &slot : m_slots)
        slot.packed.resize(m_packers[0]->Bound());
    m_threads.reserve(static_cast<std::size_t>(threads));
}

Ring::~Ring()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stop = true;
    }
    m_written.notify_all();
    for (std::thread &thread : m_threads)
        thread.join();
}

bool Ring::Start()
{
    try {
        for (const auto &packer : m_packers)
            m_threads.emplace_back(&Ring::Work, this, packer.get());
    } catch (const std::system_error &) { // the ones that run will do
    }
    return !m_threads.empty();
}

void Ring::Work(Packer *packer)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    const int slots = static_cast<int>(m_slots.size());
    while (!m_stop && m_next < m_job.strips) {
        const int strip = m_next++;
        m_written.wait(lock, [&] { return m_stop || strip < m_done + slots; });
        if (m_stop)
            return;
        Slot &slot = SlotOf(strip);
        lock.unlock();
        slot.bytes = packer->Pack(strip, slot.packed.data());
        lock.lock();
        slot.strip = strip;
        m_packed.notify_one();
    }
}

Status Ring::WriteAll()
{
    for (int strip = 0; strip < m_job.strips; ++strip) {
        Slot &slot = SlotOf(strip);
        {
            std::unique_lock<std::mutex> lock(m_mutex);
            m_packed.wait(lock, [&] { return slot.strip == strip; });
        }
        if (Status status = m_job.write(strip, slot.packed.data(), slot.bytes); !status)
            return status;
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_done = strip + 1;
        }
        m_written.notify_all();
    }
    return Status::Ok();
}

} // namespace

Status PackStrips(const StripJob &job)
{
    const int threads = std::min(job.threads, job.strips);
    if (threads > 1) {
        Ring ring(job, threads);
        if (ring.Start())
            return ring.WriteAll();
    }
    return PackAlone(job);
}

} // namespace imagefile
