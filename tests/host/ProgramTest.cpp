#include "ProgramTest.h"

void ProgramTest::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    m_run = std::make_unique<ProgramRun>();
    m_run->setWorkingDirectory(m_dir->path());
    for (const QString &name : {"a.jpg"_s, "b.jpg"_s})
        WriteJpeg(Path(name), 60, 40);
    WriteFile(Path("p.lcp"_s), ProfileText({true, true, true}, 60, 40));
}
