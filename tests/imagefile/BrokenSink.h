// Sinks for tests of failing writes.
#pragma once

#include "core/codec.h"

#include <QByteArray>

/// Sink of which one call fails, as on a broken disk.
class BrokenSink : public imagefile::MemorySink {
public:
    explicit BrokenSink(int call) : m_left(call) { }
    bool HasFailed() const { return m_left <= 0; }
    imagefile::Status WriteAt(std::uint64_t offset, const void *data, std::size_t length) override
    {
        return --m_left == 0 ? Failure() : MemorySink::WriteAt(offset, data, length);
    }
    imagefile::Status ReadAt(std::uint64_t offset, void *buffer, std::size_t length, std::size_t *count) override
    {
        return --m_left == 0 ? Failure() : MemorySink::ReadAt(offset, buffer, length, count);
    }

private:
    static imagefile::Status Failure() { return imagefile::Status::Fail(GFL_ERROR_FILE_WRITE, "the disk is broken"); }

    int m_left;
};

/// Writes a file again and again, so that each call to the sink fails once. Returns the complete file; an empty one if
/// a failure isn't reported.
inline QByteArray Written(const imagefile::Codec &codec, const GFL_BITMAP &bitmap,
                          const imagefile::SaveOptions &options)
{
    for (int call = 1;; ++call) {
        BrokenSink sink(call);
        const imagefile::Status status = codec.Write(bitmap, options, &sink);
        if (QByteArray(status.Why().c_str()).contains("the disk is broken") != sink.HasFailed())
            return QByteArray();
        if (sink.HasFailed())
            continue;
        QByteArray file(int(sink.Size()), '\0');
        std::size_t count = 0;
        return status && sink.imagefile::MemorySink::ReadAt(0, file.data(), sink.Size(), &count) ? file.left(int(count))
                                                                                                 : QByteArray();
    }
}
