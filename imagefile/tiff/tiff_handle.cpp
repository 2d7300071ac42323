#include "tiff_handle.h"

#include "core/image_limits.h"
#include "core/memory_check.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <new>

namespace imagefile {

struct TiffHandle::Client {
    const Source *source = nullptr; // either source or sink is set
    Sink *sink = nullptr;
    std::uint64_t position = 0;
    Status sinkFailure = Status::Ok();
    char firstError[256] = ""; // of fixed size, so that storing an error allocates nothing
    bool requiresMemory = false;
    bool isUnusable = false;

    static Client *Of(thandle_t handle) { return static_cast<Client *>(handle); }
    static tmsize_t Read(thandle_t handle, void *buffer, tmsize_t length);
    static tmsize_t Write(thandle_t handle, void *buffer, tmsize_t length);
    static toff_t Seek(thandle_t handle, toff_t offset, int whence);
    static toff_t Size(thandle_t handle);
    static int NoteError(TIFF *, void *client, const char *module, const char *format, va_list arguments);
};

tmsize_t TiffHandle::Client::Read(thandle_t handle, void *buffer, tmsize_t length)
{
    Client *client = Of(handle);
    if (!client->source)
        return 0; // nothing is read back: a file being written has one directory, which is written last
    const std::size_t count = client->source->ReadAt(client->position, buffer, static_cast<std::size_t>(length));
    client->position += count;
    return static_cast<tmsize_t>(count);
}

tmsize_t TiffHandle::Client::Write(thandle_t handle, void *buffer, tmsize_t length)
{
    Client *client = Of(handle);
    if (!client->sink || !client->sinkFailure)
        return 0;
    client->sinkFailure = client->sink->WriteAt(client->position, buffer, static_cast<std::size_t>(length));
    if (!client->sinkFailure)
        return 0;
    client->position += static_cast<std::uint64_t>(length);
    return length;
}

toff_t TiffHandle::Client::Seek(thandle_t handle, toff_t offset, int whence)
{
    Client *client = Of(handle);
    const std::uint64_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? client->position : Size(handle);
    return client->position = base + offset;
}

toff_t TiffHandle::Client::Size(thandle_t handle)
{
    const Client *client = Of(handle);
    return client->source ? client->source->Size() : client->sink->Size();
}

// Stores the first error.
//
// If libtiff 4.5 can't enlarge its list of known or custom fields, it keeps the new count but the old list or none, and
// later reads beyond the list's end, even in TIFFClose. So libtiff must not continue, which only an exception prevents,
// and the file must not be closed.
int TiffHandle::Client::NoteError(TIFF *, void *data, const char *, const char *format, va_list arguments)
{
    const bool isMemoryShort = errno == ENOMEM; // from malloc()
    auto *client = static_cast<Client *>(data);
    if (client->firstError[0] == '\0')
        std::vsnprintf(client->firstError, sizeof client->firstError, format, arguments);
    if (client->requiresMemory && isMemoryShort) {
        client->isUnusable = true;
        throw std::bad_alloc();
    }
    return 1; // handled: libtiff's global handler, which prints, is not called
}

TiffHandle::TiffHandle() : m_client(std::make_unique<Client>()) { }

TiffHandle::~TiffHandle()
{
    if (m_tiff && !m_client->isUnusable)
        TIFFClose(m_tiff);
}

bool TiffHandle::RequireMemory(const std::function<bool()> &step) const
{
    m_client->requiresMemory = true;
    const MemoryCheck memory;
    const bool result = step();
    m_client->requiresMemory = false;
    memory.Require();
    return result;
}

Status TiffHandle::OpenForReading(const Source &source)
{
    m_client->source = &source;
    return Open("rm"); // m: no memory mapping; a mapped file that shrinks would crash the process
}

Status TiffHandle::OpenForWriting(Sink *sink, bool big)
{
    m_client->sink = sink;
    return Open(big ? "wl8" : "wl");
}

Status TiffHandle::Open(const char *mode)
{
    const std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions *)> options(TIFFOpenOptionsAlloc(),
                                                                                TIFFOpenOptionsFree);
    if (!options)
        return Status::Fail(GFL_ERROR_NO_MEMORY, "no memory to open a TIFF");
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), kMaxCodecAllocation);
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), Client::NoteError, m_client.get());
    // Ignore warnings: libtiff warns about many harmless things.
    TIFFOpenOptionsSetWarningHandlerExtR(
        options.get(), [](TIFF *, void *, const char *, const char *, va_list) { return 1; }, nullptr);
    RequireMemory([&] {
        m_tiff = TIFFClientOpenExt(
            "TIFF", mode, m_client.get(), Client::Read, Client::Write, Client::Seek, [](thandle_t) { return 0; },
            Client::Size, nullptr, nullptr, options.get());
        return m_tiff != nullptr;
    });
    return m_tiff ? Status::Ok() : Failure(m_client->sink ? GFL_ERROR_FILE_WRITE : GFL_ERROR_FILE_READ);
}

const Status &TiffHandle::SinkStatus() const
{
    return m_client->sinkFailure;
}

Status TiffHandle::Failure(GflError error) const
{
    if (!m_client->sinkFailure)
        return m_client->sinkFailure;
    std::string why = m_client->firstError[0] == '\0' ? "damaged" : m_client->firstError;
    if (why.rfind("TIFF: ", 0) == 0) // some libtiff messages begin with the name passed to TIFFClientOpenExt
        return Status::Fail(error, std::move(why));
    return Status::Fail(error, "TIFF: " + why);
}

} // namespace imagefile
