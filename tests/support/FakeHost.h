// A host for tests: settings in a map, and image descriptions with the test's pictures.
#pragma once

#include "KIApplication.h"
#include "KIImageDef.h"
#include "KImage.h"
#include "gfl.h"

#include <QApplication>
#include <QFileInfo>
#include <QMap>

#include <map>
#include <memory>

/// Image description that returns `pixels` when locked at full size, otherwise a reduced copy, and counts the locks.
class FakeImageDef : public KIImageDef {
public:
    explicit FakeImageDef(const QString &fileName) : m_fileName(fileName) { }
    QPixmap *GetThumbnail() const override { return nullptr; }
    QString FileName() const override { return m_fileName; }
    QString ShortFileName() const override { return QFileInfo(m_fileName).fileName(); }
    QString PathName() const override { return QFileInfo(m_fileName).path(); }
    int nRows() const override { return pixels.m_bitmap ? pixels.height() : 0; }
    int nCols() const override { return pixels.m_bitmap ? pixels.width() : 0; }
    int nBands() const override { return pixels.m_bitmap->ComponentsPerPixel; }
    int nDepth() const override { return pixels.bitsPerComponent(); }
    bool HasExif() const override { return false; }
    bool HasICC() const override { return false; }
    bool IsRaw() const override { return false; }
    float GetFocal() const override { return 0; }
    int Model() const override { return 0; }
    qint64 GetTimestamp() const override { return 0; }
    float GetEV() const override { return 0; }
    KImage *Lock(int width, int height, bool nativeDepth) override
    {
        if (gone)
            KThrow("gone");
        pixels.Resize(m_reduced, width, height);
        reducedSizes.append(QSize(width, height));
        locks += nativeDepth ? 1 : 1000;
        return &m_reduced;
    }
    void Unlock(int width, int height, bool nativeDepth) override
    {
        locks -= nativeDepth && QSize(width, height) == reducedSizes.last() ? 1 : 1000;
    }
    KImage *LockFullSize(bool nativeDepth) override
    {
        if (!pixels.m_bitmap)
            return nullptr;
        locks += nativeDepth ? 1 : 1000;
        acceptedPending = gflAcceptsPendingRows();
        return &pixels;
    }
    void UnlockFullSize(bool nativeDepth) override { locks -= nativeDepth ? 1 : 1000; }

    KImage pixels;                // empty if the description has none
    int locks = 0;                // locks held; one that isn't at the native depth counts as 1,000
    bool gone = false;            // the file was deleted after it was described: Lock throws
    QList<QSize> reducedSizes;    // sizes passed to Lock, in order
    bool acceptedPending = false; // at the last full-size lock, the caller accepted pending rows

private:
    KImage m_reduced;
    QString m_fileName;
};

/// Application that is a host. It starts and stops the image kernel, so the test must be destroyed first.
class FakeHost : public QApplication, public KIApplication {
    Q_OBJECT
    Q_INTERFACES(KIApplication)
public:
    FakeHost(int &argc, char **argv) : QApplication(argc, argv) { KImage::init(nullptr); }
    ~FakeHost() override
    {
        Clear(); // the pictures' pixels belong to the kernel
        KImage::exit();
    }

    QVariant GetPluginSetting(QString uid, QString key, QVariant defaultValue) override
    {
        calls.append(QLatin1String("get ") + key);
        return settings.value(uid + QLatin1Char('/') + key, defaultValue);
    }
    void SetPluginSetting(QString uid, QString key, QVariant value) override
    {
        settings.insert(uid + QLatin1Char('/') + key, value);
        calls.append(QLatin1String("set ") + key);
    }
    QLocale Locale() override
    {
        calls.append(QStringLiteral("locale"));
        return QLocale(QLocale::German, QLocale::Germany);
    }
    void LoadTranslator(QString fileName) override { calls.append(QLatin1String("translator ") + fileName); }
    KIImageDef *ImageDefOf(QString fileName) override
    {
        calls.append(QLatin1String("image ") + fileName);
        return missing.contains(fileName) ? nullptr : Def(fileName);
    }
    KImageInstances *ImageInstances() override
    {
        calls.append(QStringLiteral("image kernel"));
        return &KImage::ms_instances;
    }
    KUIInstances *UIInstances() override
    {
        calls.append(QStringLiteral("interface kernel"));
        return interfaceKernel;
    }

    FakeImageDef *Def(const QString &fileName)
    {
        auto &def = m_defs[fileName];
        if (!def)
            def = std::make_unique<FakeImageDef>(fileName);
        return def.get();
    }
    /// Makes @p def the description of its file.
    template <typename Def> Def *Describe(std::unique_ptr<Def> def)
    {
        Def *described = def.get();
        m_defs[def->FileName()] = std::move(def);
        return described;
    }
    void Clear()
    {
        settings.clear();
        calls.clear();
        m_defs.clear();
    }

    QMap<QString, QVariant> settings;
    QStringList missing;                     // files without a description
    QStringList calls;                       // in order, for example "set Disto"; must come from the GUI thread
    KUIInstances *interfaceKernel = nullptr; // shared with plug-ins

private:
    std::map<QString, std::unique_ptr<FakeImageDef>> m_defs;
};

/// Returns the test's host, which must exist.
inline FakeHost &Host()
{
    return *static_cast<FakeHost *>(QCoreApplication::instance());
}
