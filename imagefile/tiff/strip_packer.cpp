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

/// Number of strips that a thread may be ahead of the writer: enough that no thread waits while a strip is written to
/// disk or packed by the calling thread.
constexpr int kSlotsPerThread = 3;

/// A compressor with its buffer for unpacked bytes; one per thread.
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

    /// @p packed has room for Bound() bytes, so that every strip fits.
    std::size_t Pack(int strip, const std::uint8_t *rows, std::uint8_t *packed)
    {
        const std::size_t bytes = m_job.fill(strip, rows, m_unpacked.data());
        return libdeflate_zlib_compress(m_compressor.get(), m_unpacked.data(), bytes, packed, Bound());
    }

private:
    const StripJob &m_job;
    std::unique_ptr<libdeflate_compressor, void (*)(libdeflate_compressor *)> m_compressor;
    std::vector<std::uint8_t> m_unpacked;
};

/// The calling thread makes strips ahead in a ring of slots and writes the packed ones in order; the others pack them,
/// and so does the calling thread when it has nothing else to do. With one thread it does everything in turn.
class Ring {
public:
    explicit Ring(const StripJob &job);
    ~Ring();
    Ring(const Ring &) = delete;
    Ring &operator=(const Ring &) = delete;

    Status Run();

private:
    struct Slot {
        std::vector<std::uint8_t> rows, packed;
        std::size_t bytes = 0;
        int strip = -1; // the packed strip
    };
    using Lock = std::unique_lock<std::mutex>;

    void StartThreads();
    void Work(Packer *packer);
    void PackNext(Packer *packer, Lock *lock);
    Status MakeNext(Lock *lock);
    Status WriteNext(Lock *lock);
    Slot &SlotOf(int strip) { return m_slots[static_cast<std::size_t>(strip) % m_slots.size()]; }
    bool HasSlotToMake() const
    {
        return m_made < m_job.strips && m_made < m_written + static_cast<int>(m_slots.size());
    }
    bool HasPacked(int strip) { return SlotOf(strip).strip == strip; }

    const StripJob &m_job;
    std::vector<std::unique_ptr<Packer>> m_packers; // the first is the calling thread's
    std::vector<Slot> m_slots;
    std::vector<std::thread> m_threads;
    std::mutex m_mutex; // guards all below, and the strip numbers of the slots
    std::condition_variable m_strips, m_packed;
    // Counts of strips made, taken for packing, and written: each at most the one before.
    int m_made = 0, m_taken = 0, m_written = 0;
    bool m_stop = false;
};

Ring::Ring(const StripJob &job) : m_job(job)
{
    const int threads = std::min(job.threads, job.strips);
    for (int i = 0; i < threads; ++i) // allocate all memory here, so that a thread can't fail
        m_packers.push_back(std::make_unique<Packer>(job));
    m_slots.resize(static_cast<std::size_t>(threads > 1 ? threads * kSlotsPerThread : 1));
    for (Slot &slot : m_slots) {
        slot.packed.resize(m_packers[0]->Bound());
        if (job.make)
            slot.rows.resize(job.maxStripBytes);
    }
    m_threads.reserve(static_cast<std::size_t>(threads));
}

Ring::~Ring()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stop = true;
    }
    m_strips.notify_all();
    for (std::thread &thread : m_threads)
        thread.join();
}

void Ring::StartThreads()
{
    try {
        for (std::size_t i = 1; i < m_packers.size(); ++i)
            m_threads.emplace_back(&Ring::Work, this, m_packers[i].get());
    } catch (const std::system_error &) { // continue with the threads that started
    }
}

void Ring::Work(Packer *packer)
{
    Lock lock(m_mutex);
    for (;;) {
        m_strips.wait(lock, [&] { return m_stop || m_taken < m_made; });
        if (m_stop)
            return;
        PackNext(packer, &lock);
    }
}

void Ring::PackNext(Packer *packer, Lock *lock)
{
    const int strip = m_taken++;
    Slot &slot = SlotOf(strip);
    lock->unlock();
    slot.bytes = packer->Pack(strip, m_job.make ? slot.rows.data() : nullptr, slot.packed.data());
    lock->lock();
    slot.strip = strip;
    m_packed.notify_one();
}

Status Ring::MakeNext(Lock *lock)
{
    if (m_job.make) {
        const int strip = m_made;
        lock->unlock();
        if (Status status = m_job.make(strip, SlotOf(strip).rows.data()); !status)
            return status;
        lock->lock();
    }
    ++m_made;
    m_strips.notify_one();
    return Status::Ok();
}

Status Ring::WriteNext(Lock *lock)
{
    const int strip = m_written;
    Slot &slot = SlotOf(strip);
    lock->unlock();
    if (Status status = m_job.write(strip, slot.packed.data(), slot.bytes); !status)
        return status;
    lock->lock();
    ++m_written;
    return Status::Ok();
}

Status Ring::Run()
{
    StartThreads();
    Lock lock(m_mutex);
    while (m_written < m_job.strips) {
        Status status = Status::Ok();
        if (HasPacked(m_written))
            status = WriteNext(&lock);
        else if (HasSlotToMake())
            status = MakeNext(&lock);
        else if (m_taken < m_made)
            PackNext(m_packers[0].get(), &lock);
        else
            m_packed.wait(lock, [&] { return HasPacked(m_written); });
        if (!status)
            return status;
    }
    return Status::Ok();
}

} // namespace

Status PackStrips(const StripJob &job)
{
    return Ring(job).Run();
}

} // namespace imagefile
