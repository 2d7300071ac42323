// The content of the plug-in's page: a lens profile, three switches, and a preview of the result.
#pragma once

#include "ComputePreview.h"
#include "Corrections.h"

#include <QHash>
#include <QImage>
#include <QPixmap>
#include <QWidget>

#include <memory>

class QAction;
class QMovie;
class Ui_UIVitreluxPreviewClass;

/// Editor that changes one image's record in place, with a reduced preview rendered by a worker thread. GUI thread.
///
///   | state                    | "isComplete" | wait label | painted                                   |
///   |--------------------------|--------------|------------|-------------------------------------------|
///   | no image yet             | unset        | shown      | nothing                                   |
///   | rendering                | false        | shown      | the uncorrected picture                   |
///   | up to date               | true         | hidden     | the corrected picture, or half of each    |
///
/// A change during a render replaces the pending request, which starts when the render ends. The dynamic property
/// "isComplete" tells the parent page whether the user may continue; each change emits the parent's completeChanged().
///
/// Rendering never sets the profile of a fitted record. Without a chosen profile, the profile's row shows a
/// placeholder: the profile found, or why none was found. A chosen profile can be cleared there.
class UIVitreluxPreview : public QWidget {
    Q_OBJECT
public:
    UIVitreluxPreview(KVitreluxOne2One *process, QWidget *parent);
    /// Waits for a running render.
    ~UIVitreluxPreview() override;

    /// Shows @p def and edits its record @p params (a KVitreluxOne2One::Params) from then on. The caller owns both and
    /// keeps them alive until the next call or clearImage. Does nothing if the pixels are not available.
    void setImage(KIImageDef *def, void *params);
    /// Drops the pointers to image and record, and returns to the state without an image.
    void clearImage();

    bool eventFilter(QObject *watched, QEvent *event) override;

protected:
    /// Paints into the frame: the uncorrected picture, and over it the corrected one or, with "Split preview", its
    /// right half.
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
    void FindProfileAgain();
    void ShowProfile(const QString &fileName);
    void ShowReport(const std::optional<FitReport> &report);
    void EnableBoxes(const Corrections &supported);
    void SetComplete(const QVariant &complete);
    void FitPictures();
    QPixmap FittedToFrame(const QImage &image) const;
    QRect PlaceInFrame(const QPixmap &pixmap) const;

    std::unique_ptr<Ui_UIVitreluxPreviewClass> ui;
    bool m_updating = false; // the widgets are being filled: don't render
    KVitreluxOne2One *m_process;
    ComputePreview m_computePreview;
    QAction *m_clearProfile = nullptr; // in the profile's row; null until a profile can be cleared
    KIImageDef *m_imageDef = nullptr;
    std::unique_ptr<KImage> m_image; // reduced, four float channels; never changed, the worker copies it
    Params *m_params = nullptr;
    QHash<QString, Corrections> m_supported; // keys: profiles chosen here; other profiles disable no box
    QImage m_sourceImage;
    QImage m_resultImage;
    QPixmap m_sourcePixmap; // fitted to the frame
    QPixmap m_resultPixmap;
    std::unique_ptr<QMovie> m_waitMovie;
    QString m_stateText; // not shown by any widget
};
