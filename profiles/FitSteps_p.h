// What every fit does, whatever the corrections come from.
#pragma once

#include "Fit.h"
#include "PictureFrame.h"
#include "ProfileGrid.h"

#include <array>

/// The picture's setting: what the user typed, or else what the file says.
Setting SettingOf(const PictureFacts &facts, const TypedFacts &typed);
PictureBody BodyOf(const PictureFacts &facts, const TypedFacts &typed);

/// One of the three corrections, as asked for.
struct FitTask {
    Quantity quantity;
    const char *name; // for people
    bool isWanted;
    double amount;
    Fact<bool> done;
};
using FitTasks = std::array<FitTask, 3>; // distortion, color, light

FitTasks TasksOf(const PictureFacts &facts, const FitOptions &options);

/// Corrections that are wanted and not made, with the reasons.
class LeftOut {
public:
    /// Whether the correction is wanted and may be made; a reason is kept where one is owed.
    bool Allows(const FitTask &task, const FitOptions &options);
    void Add(const FitTask &task, const QString &why);
    /// "distortion, vignetting: corrected before (...)" in one line; empty if nothing was left out.
    QString Text() const;

private:
    QVector<QPair<QString, QString>> m_reasons; // names, and why
};

/// Frames the result's correction and says what that does to the field.
void FrameResult(const FitOptions &options, FitResult *result);
