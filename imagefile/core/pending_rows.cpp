#include "pending_rows.h"

#include <atomic>
#include <condition_variable>
#include <exception>
#include <map>
#include <mutex>
#include <system_error>
#include <thread>

namespace imagefile {

namespace {

/// Thrown by Done to stop the decoder when the bitmap is being freed; caught by Run.
struct Unwanted { };

// Rows between two announcements: few enough that nobody waits long, but enough that locking costs little.
constexpr int kAnnouncedRows = 16;

/// Sink that counts finished rows, and the thread that fills it.
class PendingRows : public RowSink {
public:
    explicit PendingRows(const GFL_LOAD_PARAMS &params) : m_params(params), m_rows(m_params) { }
    ~PendingRows() override;
    PendingRows(const PendingRows &) = delete;
    PendingRows &operator=(const PendingRows &) = delete;

    void Begin(std::function<Status(RowSink *)> decode);
    /// Waits until there is a bitmap, which the sink still owns.
    Status WaitForStart(GFL_BITMAP **bitmap);
    Status Wait(int rows, int *ready);
    /// Ends decoding early, because the rest of a large file may take seconds, and gives up ownership of the bitmap.
    GFL_BITMAP *Take();

    Status Start(int width, int height, const PixelForm &form) override;
    std::uint8_t *Row(int y) override { return m_rows.Row(y); }
    bool KeepsRows() const override { return m_rows.KeepsRows(); }
    void Done(int y) override;

private:
    void Run(const std::function<Status(RowSink *)> &decode) noexcept;
    void End();
    Status Outcome();

    const GFL_LOAD_PARAMS m_params;
    BitmapRows m_rows;
    std::thread m_thread;
    std::atomic<bool> m_isUnwanted{false};
    std::mutex m_mutex; // guards everything below
    std::condition_variable m_changed;
    GFL_BITMAP *m_bitmap = nullptr;
    int m_ready = 0; // the last row counts only after a success, because damage may be found at the end
    bool m_isFinished = false;
    Status m_status = Status::Ok();
    std::exception_ptr m_exception;
};

PendingRows::~PendingRows()
{
    End();
}

void PendingRows::Begin(std::function<Status(RowSink *)> decode)
{
    try {
        m_thread = std::thread([this, decode] { Run(decode); });
    } catch (const std::system_error &) { // no thread can start
        Run(decode);
    }
}

void PendingRows::Run(const std::function<Status(RowSink *)> &decode) noexcept
{
    Status status = Status::Ok();
    std::exception_ptr exception;
    try {
        status = decode(this);
    } catch (...) {
        exception = std::current_exception();
    }
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_status = std::move(status);
    m_exception = exception;
    m_isFinished = true;
    if (m_bitmap && m_status && !m_exception)
        m_ready = m_bitmap->Height;
    m_changed.notify_all();
}

Status PendingRows::Start(int width, int height, const PixelForm &form)
{
    if (Status status = m_rows.Start(width, height, form); !status)
        return status;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_bitmap = m_rows.Bitmap();
    m_changed.notify_all();
    return Status::Ok();
}

void PendingRows::Done(int y)
{
    m_rows.Done(y);
    if (m_isUnwanted)
        throw Unwanted();
    if ((y + 1) % kAnnouncedRows != 0 || y + 1 >= m_rows.Bitmap()->Height)
        return;
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_ready = y + 1;
    m_changed.notify_all();
}

Status PendingRows::Outcome()
{
    if (m_exception)
        std::rethrow_exception(m_exception);
    return m_status;
}

Status PendingRows::WaitForStart(GFL_BITMAP **bitmap)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_bitmap || m_isFinished; });
    *bitmap = m_bitmap;
    return m_isFinished ? Outcome() : Status::Ok();
}

Status PendingRows::Wait(int rows, int *ready)
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [=] { return m_ready >= rows || m_isFinished; });
    *ready = m_ready;
    return m_isFinished ? Outcome() : Status::Ok();
}

void PendingRows::End()
{
    m_isUnwanted = true;
    if (m_thread.joinable())
        m_thread.join();
}

GFL_BITMAP *PendingRows::Take()
{
    End();
    return m_rows.Take();
}

using Registry = std::map<const GFL_BITMAP *, std::unique_ptr<PendingRows>>;

std::mutex registryMutex;
std::atomic<int> registered{0}; // 0 in most programs, which then take no lock

/// Never destroyed: bitmaps may be freed while the process ends.
Registry &Registered()
{
    static auto *const bitmaps = new Registry;
    return *bitmaps;
}

PendingRows *Find(const GFL_BITMAP *bitmap)
{
    const std::lock_guard<std::mutex> lock(registryMutex);
    const auto found = Registered().find(bitmap);
    return found == Registered().end() ? nullptr : found->second.get();
}

} // namespace

Status StartPending(const GFL_LOAD_PARAMS &params, std::function<Status(RowSink *)> decode, Owned<GFL_BITMAP> *bitmap)
{
    auto rows = std::make_unique<PendingRows>(params);
    rows->Begin(std::move(decode));
    GFL_BITMAP *started = nullptr;
    if (Status status = rows->WaitForStart(&started); !status)
        return status;
    const std::lock_guard<std::mutex> lock(registryMutex);
    Registered().emplace(started, std::move(rows));
    ++registered;
    bitmap->reset(started);
    return Status::Ok();
}

Status WaitForRows(const GFL_BITMAP &bitmap, int rows, int *ready)
{
    *ready = bitmap.Height;
    PendingRows *const pending = registered > 0 ? Find(&bitmap) : nullptr;
    return pending ? pending->Wait(rows, ready) : Status::Ok();
}

void ForgetPending(const GFL_BITMAP *bitmap) noexcept
{
    if (registered == 0)
        return;
    std::unique_ptr<PendingRows> rows;
    {
        const std::lock_guard<std::mutex> lock(registryMutex);
        const auto found = Registered().find(bitmap);
        if (found == Registered().end())
            return;
        rows = std::move(found->second);
        Registered().erase(found);
        --registered;
    }
    rows->Take(); // the caller frees the bitmap
}

} // namespace imagefile
