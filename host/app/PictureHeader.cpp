#include "PictureHeader.h"

#include "PictureProblem.h"

PictureHeader::PictureHeader(const QString &path) : m_problem(FileProblem(path))
{
    if (!m_problem.isEmpty())
        return;
    constexpr std::int32_t kAnyFormat = -1;
    constexpr std::uint32_t kFlags = 4; // the customary value; it has no effect
    if (gflGetFileInformationExUTF8(path.toUtf8().constData(), kAnyFormat, &m_information, kFlags) != GFL_NO_ERROR)
        m_problem = WithoutFileName(QString::fromUtf8(gflLastErrorText()), path);
}

PictureHeader::~PictureHeader()
{
    gflFreeFileInformation(&m_information);
}
