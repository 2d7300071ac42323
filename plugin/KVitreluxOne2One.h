// The process that the plug-in offers: one image in, one lens-corrected image out.
#pragma once

#include "Corrections.h"
#include "FittedRecord.h"
#include "KIPluginOne2One.h"

#include <QMap>
#include <QObject>
#include <QPair>
#include <QPointer>
#include <QSize>

#include <optional>

class KIImageDef;
class KImage;
class UIVitreluxPage;
class newLCP;
struct FittedPlan;

/// Lives on the host's GUI thread. For other threads are: Process on an image in memory, with a record and an image of
/// that thread's own; and Process on a file, while the GUI thread leaves this object alone.
///
/// The dynamic property "Correction" with the value "fitted" makes records that are allocated from then on fitted ones;
/// a record keeps its mode for life. Without it nothing of FittedRecord is read, asked for, written or stored.
///
/// The sources: KVitreluxOne2One.cpp has records, settings and job, _Process.cpp the way of the pixels, _Fitted.cpp
/// that of fitted records, _Lookup.cpp the search for a profile.
class KVitreluxOne2One : public QObject, public KIPluginOne2One {
    Q_OBJECT
    Q_INTERFACES(KIPluginOne2One:KIPluginProcess : KIAbout)
public:
    /// The record behind every opaque pointer: what is to be done to one image.
    struct Params {
        bool disto = false;   // correct geometric distortion
        bool ca = false;      // correct chromatic aberration
        bool falloff = false; // correct vignetting
        float scale = 1.0f;   // working image to full image; only a preview sets another value, and it is never stored
        QString lcpFilename;  // whole path of the profile; empty: not yet looked up, if fitted: found automatically

        std::optional<FittedRecord> fitted; // none: a plain record, of which all of the above is the whole

        Corrections Chosen() const { return {disto, ca, falloff}; }
    };

    Q_INVOKABLE explicit KVitreluxOne2One(QObject *parent = nullptr);
    /// Deletes the page, which waits for its render, and all records.
    ~KVitreluxOne2One() override;

    QString Name() const override;
    QString Author() const override;
    QString Company() const override;
    QString Comment() const override;
    QString Version() const override;
    QIcon Icon() const override;
    QString UID() const override;

    /// Made by the first call, without a parent. A host may put it into a wizard and delete it with that; the next call
    /// then makes a new one, for the next SetFiles. Null without a QApplication.
    QWizardPage *WizardPage() override;
    /// Stores the defaults, and with a page the profile folder too.
    void OnValidatePage() override;
    /// The stored settings for a null element. An element overrides all four fields: an attribute that is missing
    /// clears what the settings gave. Fitted, it states the options too, and without it the stored lasting ones count.
    void *AllocParameters(QDomElement element) override;
    QDomElement GetXmlParameters(void *parameters) override;
    /// All but mode, typed facts, "Again" and report, which each record keeps for itself.
    void CopyParameters(void *destination, void *source) override;
    void FreeParameters(void *parameters) override;
    QIcon BeforeAfter() const override;

    /// Corrects the image of @p fileName at full size into "<base>_corrected.tiff" beside it: deflate, four channels at
    /// 8 or 16 bits, or three float channels, as deep as the source; ICC profile, IPTC and EXIF of the source carried
    /// over. Throws KException; an existing file of that name is then as it was.
    void Process(QString fileName, void *parameters, QString &outputFileName) override;
    void SetFiles(QStringList files) override;
    QDomElement GetFileXmlParams(QString file) override;

    /// Makes @p parameters the record that OnValidatePage stores.
    virtual void SaveDefaultSettings(void *parameters);

    /// Corrects item.second, four float channels, in place; item.first describes it. A record without a profile gets
    /// one looked up and the pixels stay as they are: a second run corrects. Square and upright images are turned,
    /// since a profile describes a landscape frame. Throws KException.
    void Process(QPair<KIImageDef *, KImage *> item, void *parameters);

    /// Whole paths of the profiles that fit the image's camera and lens, best first. @p message gets a text for the
    /// user or stays as it was.
    QStringList GetLCPfilename(KIImageDef *image, QString &message);

    /// Folder in which profiles are sought.
    QString LensPath() const { return m_lensPath; }
    void SetLensPath(const QString &folder) { m_lensPath = folder; }

    /// The icon that the library and the process share.
    static QIcon ProcessIcon();

private:
    QStringList ProfileFolders() const;
    FittedPlan PlanFor(KIImageDef *def, const QString &fileName, const QSize &pixels, Params &params) const;
    void ProcessFitted(const QString &fileName, KIImageDef *def, Params &params, const QString &outputFileName);
    void ProcessFitted(KIImageDef *def, KImage &image, Params &params);
    std::optional<newLCP> ProfileOf(KIImageDef *def, Params &params);

    QMap<KIImageDef *, void *> m_params; // the record of each image of the job
    QPointer<UIVitreluxPage> m_page;     // null until WizardPage, and after its wizard deleted it
    Params *m_defaults;                  // what OnValidatePage stores
    QString m_lensPath;
};
