// Process of the plug-in: one image in, one lens-corrected image out.
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

/// Lens correction process, which belongs to the host's GUI thread. Other threads may call Process on an image in
/// memory, with a record and an image that no other thread uses, and Process on a file while the GUI thread doesn't use
/// this object.
///
/// While the dynamic property "Correction" has the value "fitted", new records are fitted; a record never changes its
/// mode. For plain records, nothing of FittedRecord is read, written or stored.
///
/// The code is in KVitreluxOne2One.cpp (records, settings, job), _Process.cpp (plain processing of pixels), _Fitted.cpp
/// (processing of fitted records) and _Lookup.cpp (search for a profile).
class KVitreluxOne2One : public QObject, public KIPluginOne2One {
    Q_OBJECT
    Q_INTERFACES(KIPluginOne2One:KIPluginProcess : KIAbout)
public:
    /// Parameter record of one image; `void *parameters` points to it.
    struct Params {
        bool disto = false;   // correct geometric distortion
        bool ca = false;      // correct chromatic aberration
        bool falloff = false; // correct vignetting
        float scale = 1.0f;   // size of the working image / full size; set only by previews, never stored
        QString lcpFilename;  // path of the profile; empty: not yet looked up or, if fitted, found automatically

        std::optional<FittedRecord> fitted; // nullopt in a plain record

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

    /// Returns the page, which the first call creates without a parent. A host may add it to a wizard and delete it
    /// with the wizard; the next call then creates a page that is empty until the next SetFiles. Null without a
    /// QApplication.
    QWizardPage *WizardPage() override;
    /// Stores the defaults and, if there is a page, the profile folder.
    void OnValidatePage() override;
    /// Allocates a record with the stored settings if @p element is null. Otherwise, the element sets the corrections
    /// and the profile, clearing those whose attributes are missing, and the options of a fitted record.
    void *AllocParameters(QDomElement element) override;
    QDomElement GetXmlParameters(void *parameters) override;
    /// Copies everything except mode, typed facts, "Again", result file and report, which belong to one picture.
    void CopyParameters(void *destination, void *source) override;
    void FreeParameters(void *parameters) override;
    QIcon BeforeAfter() const override;

    /// Corrects the image in @p fileName at full size and writes it to "<base>_corrected.tiff" in the same folder: a
    /// deflate-compressed TIFF of the source's depth, with four channels of 8 or 16 bits or three float channels, and
    /// with the source's ICC profile, IPTC and EXIF. A fitted record's ResultFile may choose another format, with its
    /// suffix. Throws KException; an existing file of that name is then unchanged.
    void Process(QString fileName, void *parameters, QString &outputFileName) override;
    void SetFiles(QStringList files) override;
    QDomElement GetFileXmlParams(QString file) override;

    /// Copies @p parameters to the record that OnValidatePage stores.
    virtual void SaveDefaultSettings(void *parameters);

    /// Corrects item.second, an image of four float channels, in place; item.first describes it. If a plain record has
    /// no profile, looks one up and leaves the pixels unchanged; a second run corrects them. Square and portrait images
    /// are treated as rotated, because a profile describes a landscape frame. Throws KException.
    void Process(QPair<KIImageDef *, KImage *> item, void *parameters);

    /// Returns the path of the profile that fits the image's camera and lens best; empty if there is none. If the lens
    /// ID belongs to several lenses, returns their names instead, as if they were files in the maker's folder. May set
    /// @p message to a text for the user.
    QStringList GetLCPfilename(KIImageDef *image, QString &message);

    /// Returns the folder that is searched for profiles.
    QString LensPath() const { return m_lensPath; }
    void SetLensPath(const QString &folder) { m_lensPath = folder; }

    /// Returns the icon of both the library and the process.
    static QIcon ProcessIcon();

private:
    QStringList ProfileFolders() const;
    FittedPlan PlanFor(KIImageDef *def, const QString &fileName, const QSize &pixels, Params &params) const;
    void ProcessFitted(const QString &fileName, KIImageDef *def, Params &params, const QString &outputFileName);
    void ProcessFitted(KIImageDef *def, KImage &image, Params &params);
    std::optional<newLCP> ProfileOf(KIImageDef *def, Params &params);

    QMap<KIImageDef *, void *> m_params; // record of each image of the job
    QPointer<UIVitreluxPage> m_page;     // null before WizardPage, and after its wizard has deleted it
    Params *m_defaults;                  // stored by OnValidatePage
    QString m_lensPath;
};
