// The content of the plug-in's page: a lens profile, three switches, and the picture as it will be.
#pragma once

#include "ComputePreview.h"
#include "Corrections.h"

#include <QHash>
#include <QImage>
#include <QPixmap>
#include <QWidget>

#include <memory>

class QMovie;
class Ui_UIVitreluxPreviewClass;

/// Edits the record of one image in place and shows that image, reduced and rendered by a worker thread. GUI thread.
///
///   | state                    | "isComplete" | wait label | painted                                   |
///   |--------------------------|--------------|------------|-------------------------------------------|
///   | no image yet             | unset        | shown      | nothing                                   |
///   | rendering                | false        | shown      | the uncorrected picture                   |
///   | up to date               | true         | hidden     | the corrected one, or both side by side   |
///
/// A change during a render replaces the request that waits; the end of the render then starts the next one. The
/// dynamic property "isComplete" tells the parent page whether to go on; the parent's completeChanged() is fired with
/// it.
///
/// A fitted record without a chosen profile stays without: what its render found, or why nothing was, stands in the
/// profile's row as a placeholder.
class UIVitreluxPreview : public QWidget {
    Q_OBJECT
public:
    UIVitreluxPreview(KVitreluxOne2One *process, QWidget *parent);
    /// Waits for a render under way.
    ~UIVitreluxPreview() override;

    /// Shows @p def, whose record @p params (a KVitreluxOne2One::Params) is edited from then on; both stay the caller's
    /// and alive until the next call or clearImage. If the pixels can't be had, all stays as it was, without a word.
    void setImage(KIImageDef *def, void *params);
    /// Forgets image and record: back to the state without an image.
    void clearImage();

    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    /// In the frame: the uncorrected picture, on it the corrected one, or its right half under "Split preview".
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private Q_SLOTS:
    void on_toolButtonLensPath_clicked();
    void on_toolButtonLensFile_clicked();
    void on_comboBoxLensProfile_currentIndexChanged(int index);
    void on_m_cbDistortion_stateChanged(int state);
    void on_m_cbCA_stateChanged(int state);
    void on_m_cbVignetting_stateChanged(int state);
    void on_m_cbPreview_stateChanged(int state);
    void computePreview();
    void updatePreview();
    void updateLCPfilename();
    void renderEnded();

private:
    using Params = KVitreluxOne2One::Params;

    void StartWaitAnimation();
    void ShowImage(KIImageDef *def, Params *params);
    void SetFlag(bool Params::*flag, int state);
    void UseProfile(const QString &fileName);
    void ShowReport(const std::optional<FitReport> &report);
    void EnableBoxes(const Corrections &held);
    void SetComplete(const QVariant &complete);
    void FitPictures();
    QPixmap FittedToFrame(const QImage &image) const;
    QRect PlaceInFrame(const QPixmap &pixmap) const;

    std::unique_ptr<Ui_UIVitreluxPreviewClass> ui;
    bool m_updating = false; // the widgets are being filled: nothing is to be rendered
    KVitreluxOne2One *m_process;
    ComputePreview m_computePreview;
    KIImageDef *m_imageDef = nullptr;
    std::unique_ptr<KImage> m_image; // reduced, four float channels; never changed, the worker copies it
    Params *m_params = nullptr;
    QHash<QString, Corrections> m_held; // by profiles that were chosen here; those of others lock no box
    QImage m_sourceImage;
    QImage m_resultImage;
    QPixmap m_sourcePixmap; // fitted to the frame
    QPixmap m_resultPixmap;
    std::unique_ptr<QMovie> m_waitMovie;
    QString m_stateText; // for whoever looks at the object; no widget shows it
};
