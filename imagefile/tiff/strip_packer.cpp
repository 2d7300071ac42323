#include "strip_packer.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>
#include <vector>

namespace imagefile {

namespace {

/// Number of groups of strips that a thread may be ahead of the writer: enough that no thread waits while a group is
/// written to disk or packed by the calling thread.
constexpr int kSlotsPerThread = 3;

/// Uninitialized memory: pages that are never used cost nothing.
using Block = std::unique_ptr<std::uint8_t[]>;

Block NewBlock(std::size_t bytes)
{
    return Block(new std::uint8_t[bytes]);
}

/// Consecutive strips that one thread packs.
struct Group {
    int first, count;
};

/// Place of a group between the threads.
struct Slot {
    Block rows;                     // made by the calling thread
    Block packed;                   // the strips, without gaps
    std::vector<std::size_t> bytes; // of each packed strip
    int group = -1;                 // the packed group
};

/// A compressor with its buffers; one per thread.
class Packer {
public:
    explicit Packer(const StripJob &job)
        : m_job(job),
          m_compressor(MakeDeflate(job.compressor)),
          m_rows(NewBlock(job.make ? job.maxStripBytes * static_cast<std::size_t>(job.stripsAtOnce) : 0)),
          m_unpacked(NewBlock(job.maxStripBytes))
    {
    }

    std::size_t Bound() const { return m_compressor->Bound(m_job.maxStripBytes); }

    /// Packs the group, after making it unless the slot has its rows.
    Status Pack(const Group &group, Slot *slot)
    {
        const std::uint8_t *rows = slot->rows.get();
        if (m_job.make && m_job.stripsAtOnce > 0) {
            if (Status status = m_job.make(group.first, group.count, m_rows.get()); !status)
                return status;
            rows = m_rows.get();
        }
        std::uint8_t *packed = slot->packed.get();
        for (int i = 0; i < group.count; ++i) {
            const std::size_t bytes = m_job.fill(group.first + i, rows, m_unpacked.get());
            slot->bytes[static_cast<std::size_t>(i)] = m_compressor->Pack(m_unpacked.get(), bytes, packed);
            packed += slot->bytes[static_cast<std::size_t>(i)];
            rows = rows ? rows + m_job.maxStripBytes : nullptr;
        }
        return Status::Ok();
    }

private:
    const StripJob &m_job;
    std::unique_ptr<Deflate> m_compressor;
    Block m_rows, m_unpacked;
};

/// The calling thread makes groups ahead in a ring of slots and writes the packed ones in order; the others pack them,
/// and so does the calling thread when it has nothing else to do. With one thread it does everything in turn.
class Ring {
public:
    explicit Ring(const StripJob &job);
    ~Ring();
    Ring(const Ring &) = delete;
    Ring &operator=(const Ring &) = delete;

    Status Run();

private:
    using Lock = std::unique_lock<std::mutex>;

    void StartThreads();
    void Work(Packer *packer);
    void PackNext(Packer *packer, Lock *lock);
    Status MakeNext(Lock *lock);
    Status WriteNext(Lock *lock);
    Group GroupAt(int index) const
    {
        const int first = index * m_groupStrips;
        return {first, std::min(m_groupStrips, m_job.strips - first)};
    }
    Slot &SlotOf(int group) { return m_slots[static_cast<std::size_t>(group) % m_slots.size()]; }
    bool HasSlotToMake() const { return m_made < m_groups && m_made < m_written + static_cast<int>(m_slots.size()); }
    bool HasPacked(int group) { return SlotOf(group).group == group; }
    bool MakesInOrder() const { return m_job.make && m_job.stripsAtOnce == 0; }

    const StripJob &m_job;
    const int m_groupStrips, m_groups;
    std::vector<std::unique_ptr<Packer>> m_packers; // the first is the calling thread's
    std::vector<Slot> m_slots;
    std::vector<std::thread> m_threads;
    std::mutex m_mutex; // guards all below, and the group numbers of the slots
    std::condition_variable m_groupsMade, m_packed;
    // Counts of groups made, taken for packing, and written: each at most the one before. Groups that are made by the
    // thread that packs them count as made.
    int m_made = 0, m_taken = 0, m_written = 0;
    Status m_failure = Status::Ok(); // of packing
    bool m_stop = false;
};

Ring::Ring(const StripJob &job)
    : m_job(job), m_groupStrips(std::max(1, job.stripsAtOnce)), m_groups((job.strips - 1) / m_groupStrips + 1)
{
    const int threads = std::min(job.threads, m_groups);
    for (int i = 0; i < threads; ++i) // allocate all memory here, so that a thread can't fail
        m_packers.push_back(std::make_unique<Packer>(job));
    m_slots.resize(static_cast<std::size_t>(threads > 1 ? threads * kSlotsPerThread : 1));
    for (Slot &slot : m_slots) {
        slot.packed = NewBlock(m_packers[0]->Bound() * static_cast<std::size_t>(m_groupStrips));
        slot.bytes.resize(static_cast<std::size_t>(m_groupStrips));
        if (MakesInOrder())
            slot.rows = NewBlock(job.maxStripBytes);
    }
    m_threads.reserve(static_cast<std::size_t>(threads));
}

Ring::~Ring()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_stop = true;
    }
    m_groupsMade.notify_all();
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
        m_groupsMade.wait(lock, [&] { return m_stop || m_taken < m_made; });
        if (m_stop)
            return;
        PackNext(packer, &lock);
    }
}

void Ring::PackNext(Packer *packer, Lock *lock)
{
    const int group = m_taken++;
    Slot &slot = SlotOf(group);
    lock->unlock();
    Status status = Status::Ok();
    try {
        status = packer->Pack(GroupAt(group), &slot);
    } catch (const std::bad_alloc &) { // no exception may leave a thread; the text below needs no memory
        status = Status::Fail(GFL_ERROR_NO_MEMORY, std::string());
    }
    lock->lock();
    slot.group = group;
    if (!status && m_failure)
        m_failure = std::move(status);
    m_packed.notify_one();
}

Status Ring::MakeNext(Lock *lock)
{
    if (MakesInOrder()) {
        const int strip = m_made;
        lock->unlock();
        if (Status status = m_job.make(strip, 1, SlotOf(strip).rows.get()); !status)
            return status;
        lock->lock();
    }
    ++m_made;
    m_groupsMade.notify_one();
    return Status::Ok();
}

Status Ring::WriteNext(Lock *lock)
{
    const Group group = GroupAt(m_written);
    const Slot &slot = SlotOf(m_written);
    lock->unlock();
    const std::uint8_t *packed = slot.packed.get();
    for (int i = 0; i < group.count; ++i) {
        const std::size_t bytes = slot.bytes[static_cast<std::size_t>(i)];
        if (Status status = m_job.write(group.first + i, packed, bytes); !status)
            return status;
        packed += bytes;
    }
    lock->lock();
    ++m_written;
    return Status::Ok();
}

Status Ring::Run()
{
    StartThreads();
    Lock lock(m_mutex);
    while (m_written < m_groups) {
        Status status = Status::Ok();
        if (!m_failure)
            return m_failure;
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
