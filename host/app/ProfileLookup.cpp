#include "ProfileLookup.h"

#include "HostApplication.h"
#include "ImageDef.h"
#include "KException.h"
#include "KImage.h"
#include "PictureRun.h"
#include "WorkFolder.h"

#include <QDir>
#include <QFileInfo>
#include <QScopeGuard>

namespace {

/// A picture that gives the plug-in its description and a single pixel instead of its pixels.
class PixellessImage : public ImageDef {
public:
    explicit PixellessImage(const ImageDef &described)
        : ImageDef(described), m_pixel(1, 1, GFL_RGBA, 32, /*clear=*/true, nullptr, 0)
    {
    }
    KImage *LockFullSize(bool) override { return &m_pixel; }
    void UnlockFullSize(bool) override { }

private:
    KImage m_pixel;
};

bool IsSupportedMaker(const QString &maker)
{
    return CameraProperties::isBrand(maker, QStringLiteral("Nikon"))
        || CameraProperties::isBrand(maker, QStringLiteral("Canon"));
}

/// Returns why nothing was found, if the picture's data is incomplete; otherwise empty.
QString MissingInPicture(const ImageDef &image)
{
    const ShootingInformation &shooting = image.m_shooting;
    if (!image.HasExif())
        return QStringLiteral("neither its metadata nor the table of cameras gives its 35 mm equivalent focal length");
    if (!IsSupportedMaker(shooting.makerName)) {
        return QStringLiteral("profiles are found only for Nikon and Canon cameras, but this one is from \"%1\"")
            .arg(shooting.makerName);
    }
    if (shooting.lensId.isEmpty())
        return QStringLiteral("its metadata doesn't name the lens");
    const QStringList lenses = ImageDef::g_Lenses.findLensList(shooting.makerName, shooting.lensId);
    if (lenses.isEmpty())
        return QStringLiteral("the lens \"%1\" isn't in the table of lenses").arg(shooting.lensId);
    if (lenses.size() > 1) {
        return QStringLiteral("several lenses identify themselves as \"%1\": %2")
            .arg(shooting.lensId, lenses.join(QLatin1String("; ")));
    }
    return QString();
}

} // namespace

const QLatin1String ProfileLookup::kLensPath("LensPath");

QString ProfileLookup::UsableFolder(const QString &stored)
{
    return QDir::isAbsolutePath(stored) ? stored : QLatin1Char('/') + stored;
}

ProfileLookup::ProfileLookup(HostApplication *application, const QString &folder, InterruptGuard *guard)
    : m_application(application), m_guard(guard), m_given(folder)
{
    m_application->AdaptPluginSettings([this](const QString &key, const QVariant &stored) {
        if (key != kLensPath)
            return stored;
        m_folder = std::make_unique<LensFolder>(m_given.isEmpty() ? UsableFolder(stored.toString()) : m_given, m_guard);
        return QVariant(m_folder->Place());
    });
}

ProfileLookup::~ProfileLookup()
{
    m_application->AdaptPluginSettings(nullptr);
}

ProfileLookup::Answer ProfileLookup::Find(KIPluginOne2One *process, const QString &picture)
{
    const QString problem = m_application->ProblemOf(picture);
    if (!problem.isEmpty())
        return {QString(), problem};
    if (!m_given.isEmpty() && !QFileInfo(m_given).isDir())
        return {QString(), QStringLiteral("there is no profile folder \"%1\"").arg(m_given)};
    if (!m_folder || !QFileInfo(m_folder->Folder()).isDir())
        return {QString(), QStringLiteral("no profile folder is known; name one with --lens-path")};
    if (!m_folder->Problem().isEmpty())
        return {QString(), m_folder->Problem()};
    const ImageDef &image = *m_application->ImageOf(picture);
    try {
        return Judge(LookUpInPlugin(process, image), image);
    } catch (const KException &e) { // the temporary folder cannot be used
        return {QString(), QStringLiteral("profiles cannot be looked up: %1").arg(e.what())};
    }
}

/// Runs the plug-in. @return the record's profile after the run.
QString ProfileLookup::LookUpInPlugin(KIPluginOne2One *process, const ImageDef &image)
{
    const ParameterRecord record(process, DescribeParameters(process->Name(), PictureParameters()));
    PixellessImage pixelless(image);
    WorkFolder work(m_folder->Scratch(), m_guard);
    const QString name = work.Admit(image.FileName());
    const auto takeBack = qScopeGuard([&] { m_application->UseInstead(name, nullptr); });
    m_application->UseInstead(name, &pixelless);
    try {
        QString output;
        process->Process(name, record.Get(), output);
    } catch (...) { // thrown while the pixel is written, after the lookup
    }
    return ReadParameters(process->GetXmlParameters(record.Get())).profile;
}

ProfileLookup::Answer ProfileLookup::Judge(const QString &found, const ImageDef &image) const
{
    const QString real = QFileInfo(found).canonicalFilePath(); // empty if it doesn't exist
    if (!found.isEmpty() && !real.isEmpty())
        return {real, QString()};
    const QString missing = MissingInPicture(image);
    if (!missing.isEmpty())
        return {QString(), missing};
    const ShootingInformation &shooting = image.m_shooting;
    return {QString(),
            QStringLiteral("no profile of the camera \"%1\" with the lens \"%2\" in \"%3\"")
                .arg(shooting.modelName, ImageDef::g_Lenses.findLensList(shooting.makerName, shooting.lensId).value(0),
                     m_folder->Folder())};
}
