// A minimal host: corrects one picture with a given profile or, on request, with one found automatically.
// docs/host-guide.md documents the order of calls.
#include "KException.h"
#include "KIApplication.h"
#include "KIImageDef.h"
#include "KIPluginLibrary.h"
#include "KIPluginOne2One.h"
#include "KImage.h"

#include <QApplication>
#include <QDomDocument>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QPluginLoader>
#include <QXmlStreamReader>

#include <iostream>
#include <map>
#include <memory>

/// A picture, read when constructed. A host with many pictures would read the pixels in LockFullSize and free them in
/// UnlockFullSize.
class Picture final : public KIImageDef {
public:
    /// Throws KException if the file cannot be read.
    explicit Picture(const QString &file) : m_file(file) { m_pixels.ID_Read(FileName(), true); }

    // Used by the correction.
    QString FileName() const override { return m_file.absoluteFilePath(); }
    int nDepth() const override { return m_pixels.bitsPerComponent(); }
    int nBands() const override { return m_pixels.type() == GFL_GREY ? 1 : m_pixels.type() == GFL_RGB ? 3 : 4; }
    bool HasExif() const override { return false; }
    KImage *LockFullSize(bool /*nativeDepth*/) override { return &m_pixels; }
    void UnlockFullSize(bool /*nativeDepth*/) override { }

    // Used only by wizard pages and lists.
    QString ShortFileName() const override { return m_file.fileName(); }
    QString PathName() const override { return m_file.absolutePath(); }
    int nRows() const override { return m_pixels.height(); }
    int nCols() const override { return m_pixels.width(); }
    bool HasICC() const override { return false; }
    bool IsRaw() const override { return false; }
    float GetFocal() const override { return 0; }
    int Model() const override { return 0; }
    qint64 GetTimestamp() const override { return 0; }
    float GetEV() const override { return 0; }
    QPixmap *GetThumbnail() const override { return nullptr; }
    KImage *Lock(int, int, bool) override { return nullptr; }
    void Unlock(int, int, bool) override { }

private:
    QFileInfo m_file;
    KImage m_pixels;
};

/// The application as the plug-in sees it. The image kernel starts after the QApplication is constructed and stops
/// before it is destroyed.
class Host final : public QApplication, public KIApplication {
    Q_OBJECT
    Q_INTERFACES(KIApplication)

public:
    Host(int &argc, char **argv) : QApplication(argc, argv) { KImage::init(nullptr); }
    ~Host() override
    {
        m_plugin.unload();  // deletes the plug-in's objects
        m_pictures.clear(); // their pixels belong to the image kernel
        KImage::exit();
    }

    /// Returns the process object, which the plug-in owns, set up for fitted or plain corrections. Throws KException if
    /// the plug-in can't be loaded.
    KIPluginOne2One *Process(bool isFitted)
    {
        QObject *object = m_plugin.instance();
        if (!object)
            throw KException(m_plugin.errorString(), KPlace());
        auto *library = static_cast<KIPluginLibrary *>(object->qt_metacast("KIPluginLibrary"));
        QObject *process = library->Plugins(KIPluginLibrary::All).last();
        if (isFitted)
            process->setProperty("Correction", QStringLiteral("fitted"));
        return static_cast<KIPluginOne2One *>(process->qt_metacast("KIPluginOne2One"));
    }

    // A real host keeps the settings in a file.
    QVariant GetPluginSetting(QString uid, QString key, QVariant unset) override
    {
        return m_settings.value({uid, key}, unset);
    }
    void SetPluginSetting(QString uid, QString key, QVariant value) override { m_settings[{uid, key}] = value; }
    QLocale Locale() override { return QLocale(); }
    void LoadTranslator(QString) override { }

    KIImageDef *ImageDefOf(QString file) override
    try {
        return &m_pictures.try_emplace(file, file).first->second; // read once and kept
    } catch (const KException &error) {
        std::cerr << qPrintable(error.what()) << std::endl;
        return nullptr;
    }
    KImageInstances *ImageInstances() override { return &KImage::ms_instances; }
    KUIInstances *UIInstances() override { return nullptr; }

private:
    QPluginLoader m_plugin{QStringLiteral(PLUGIN_FILE)};
    std::map<QString, Picture> m_pictures;
    QHash<QPair<QString, QString>, QVariant> m_settings;
};

/// Returns whether a profile is well-formed XML: with one that isn't, a plain run corrects nothing and reports no
/// error.
static bool IsWellFormed(const QString &profile)
{
    QFile file(profile);
    QXmlStreamReader reader(file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray());
    while (!reader.atEnd())
        reader.readNext();
    return !reader.hasError();
}

struct Task {
    bool isFitted;
    QString picture;
    QString profile; // empty: fitted, with a profile found automatically
};

static QDomElement ChoiceOf(const Task &task, QDomDocument &document)
{
    QDomElement choice = document.createElement(QStringLiteral("Lens correction"));
    choice.setAttribute(QStringLiteral("Disto"), 1);
    choice.setAttribute(QStringLiteral("Falloff"), 1);
    if (task.isFitted)
        choice.setAttribute(QStringLiteral("CA"), 1);
    if (!task.profile.isEmpty())
        choice.setAttribute(QStringLiteral("LCPfilename"), QFileInfo(task.profile).absoluteFilePath());
    return choice;
}

/// Prints the report of a fitted run, which is empty after a plain one.
static void Report(const QDomElement &results)
{
    for (const char *name : {"Profile", "Entries", "Assumed", "Done", "Why"}) {
        const QString value = results.attribute(QLatin1String(name));
        if (!value.isEmpty())
            std::cout << name << ": " << qPrintable(value) << '\n';
    }
}

/// Writes the corrected picture next to its source, replacing an older one, and returns its path. Throws KException.
static QString Correct(Host &host, const Task &task)
{
    if (!task.profile.isEmpty() && !IsWellFormed(task.profile))
        throw KException(QStringLiteral("%1 is not a readable profile").arg(task.profile), KPlace());
    QDomDocument document; // must outlive its elements
    KIPluginOne2One *process = host.Process(task.isFitted);
    const auto free = [process](void *parameters) { process->FreeParameters(parameters); };
    const std::unique_ptr<void, decltype(free)> record(process->AllocParameters(ChoiceOf(task, document)), free);
    QString corrected;
    process->Process(QFileInfo(task.picture).absoluteFilePath(), record.get(), corrected);
    Report(process->GetXmlParameters(record.get()));
    return corrected;
}

int main(int argc, char *argv[])
try {
    qputenv("QT_QPA_PLATFORM", "offscreen"); // shows no window, so it needs no display
    Host host(argc, argv);
    QStringList arguments = host.arguments().mid(1);
    const bool isFitted = arguments.removeAll(QStringLiteral("--fitted")) > 0;
    if (arguments.size() != 2 && !(isFitted && arguments.size() == 1))
        throw KException(QStringLiteral("Usage: minimal-host PICTURE PROFILE, or --fitted PICTURE [PROFILE]"),
                         KPlace());
    std::cout << qPrintable(Correct(host, {isFitted, arguments[0], arguments.value(1)})) << std::endl;
    return 0;
} catch (const KException &error) {
    std::cerr << qPrintable(error.what()) << std::endl;
    return 1;
}

#include "main.moc"
