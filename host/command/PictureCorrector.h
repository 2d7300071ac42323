// Correction of one picture for `vitrelux correct`, plain or fitted.
#pragma once

#include "CommandLine.h"
#include "PictureReport.h"
#include "app/MemoryBudget.h"
#include "app/ProfileUse.h"

#include <QHash>

#include <memory>
#include <mutex>

class FittedCorrection;
class HostApplication;
class InterruptGuard;
class KIPluginOne2One;
class ProfileLookup;
class SearchedFolders;
struct FittedRequest;

/// Corrector that follows the options; in a dry run it only reports what it would do. Any thread may call it, each with
/// a separate process object.
class PictureCorrector {
public:
    /// @param lookup   null if the user named a profile, and for fitted corrections
    /// @param folders  null for plain corrections
    PictureCorrector(const CorrectOptions &options, HostApplication *application, ProfileLookup *lookup,
                     const SearchedFolders *folders, InterruptGuard *guard);
    ~PictureCorrector();

    /// Call it after the plug-in is loaded.
    /// @param lookupProcess  the process object made last. ProfileLookup uses it to find profiles for plain correction.
    void Begin(KIPluginOne2One *lookupProcess);

    /// Corrects a picture and fills in the outcome, reason, profile and notes. Throws KException with a message that
    /// omits the picture's name, or any exception from the plug-in; earlier notes stay.
    void Correct(KIPluginOne2One *process, const PlannedPicture &planned, PictureReport *report);

private:
    void CorrectPlain(KIPluginOne2One *process, const PlannedPicture &planned, PictureReport *report);
    void CorrectFitted(KIPluginOne2One *process, const PlannedPicture &planned, PictureReport *report);
    FittedRequest RequestFor(KIPluginOne2One *process) const;
    QString ProfileFor(const PlannedPicture &planned, PictureReport *report);
    const ProfileUse &JudgedProfile(const QString &profile);
    Corrections UsableCorrections(const QString &name, const ProfileUse &profile) const;
    void NoteMismatch(const PlannedPicture &planned, const QString &name, const ProfileUse &profile,
                      PictureReport *report) const;

    const CorrectOptions &m_options;
    HostApplication *m_application;
    ProfileLookup *m_lookup;
    const SearchedFolders *m_folders;
    std::unique_ptr<FittedCorrection> m_fitted; // null: plain
    InterruptGuard *m_guard;
    MemoryBudget m_memory;
    std::mutex m_mutex; // guards the lookup and all members below
    KIPluginOne2One *m_lookupProcess = nullptr;
    QHash<QString, ProfileUse> m_profiles; // by name, so that each is read once
};
