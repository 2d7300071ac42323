// Steps shared by all fits, with a profile or with lensfun.
#pragma once

#include "Fit.h"
#include "PictureFrame.h"
#include "ProfileGrid.h"

#include <array>

/// Returns focal length, aperture and distance of the picture: typed by the user, otherwise read from the file.
Setting SettingOf(const PictureFacts &facts, const TypedFacts &typed);
/// Returns the picture's body: typed by the user, with or without its maker, otherwise read from the file.
PictureBody BodyOf(const PictureFacts &facts, const TypedFacts &typed);

/// Returns why no profile can be fitted to the picture; empty if one can.
QString WhyRefused(const PictureFacts &facts);

/// A request for one of the three corrections.
struct FitTask {
    Quantity quantity;
    const char *name; // for messages
    bool isWanted;
    double amount;
    Fact<bool> done;
    bool tried; // an earlier run failed to make this correction
};
using FitTasks = std::array<FitTask, 3>; // distortion, color, light

FitTasks TasksOf(const PictureFacts &facts, const FitOptions &options);

/// Requested corrections that were not made, with the reasons.
class LeftOut {
public:
    /// Returns whether the correction is requested and allowed; otherwise records the reason if it was requested.
    bool Allows(const FitTask &task, const FitOptions &options);
    void Add(const FitTask &task, const QString &why);
    /// Returns one line such as "distortion, vignetting: corrected before (...)"; empty if nothing was left out.
    QString Text() const;

private:
    QVector<QPair<QString, QString>> m_reasons; // names of corrections, and the reason
};

/// Notes the corrections that were made although the picture had been corrected before.
void NoteAgain(const FitTasks &tasks, FitResult *result);

/// Returns why a map that leaves nearly all of the picture empty can't be used; an empty string for usable maps.
QString WhyUseless(const RadialMap &map, const QSize &pixels);

/// Sets the zoom of the result's correction and fills in its effect on the field of view. Adds a note if the
/// rectilinear picture of a fisheye lens ends before the photograph does.
void FrameResult(const FitOptions &options, bool isFisheye, FitResult *result);
