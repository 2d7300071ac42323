#include "Target.h"

#include "KImage.h"

#include <sys/mman.h>
#include <unistd.h>

void StartKernel()
{
    static const bool started = [] {
        qInstallMessageHandler(
            [](QtMsgType, const QMessageLogContext &, const QString &) {}); // discards messages about damaged input
        qputenv("XDG_DATA_HOME", "/dev/null"); // otherwise all fuzzers would share one event file
        KImage::init(nullptr);
        return true;
    }();
    Require(started);
}

MemoryFile::MemoryFile(const QByteArray &content) : m_file(memfd_create("input", 0))
{
    Require(m_file >= 0
            && write(m_file, content.constData(), static_cast<std::size_t>(content.size())) == content.size());
}

MemoryFile::~MemoryFile()
{
    close(m_file);
}
