// What the user asked for on the command line, as plain values.
#pragma once

#include "Corrections.h"
#include "FittedOptions.h"
#include "app/OutputPlan.h"

#include <QString>
#include <QStringList>

/// Exit codes of the program.
enum ExitCode { kAllDone = 0, kSomeFailed = 1, kUsageError = 2 };

struct CorrectOptions {
    QStringList files;
    QString profile;      // empty: each picture's is looked up
    QString lensPath;     // folder to look in; empty: the stored one; fitted: SearchedFolders
    QString outputFolder; // empty: beside each picture
    QString plugin;       // empty: the installed one
    Corrections asked;    // none: everything that the profile holds
    bool plain = false;   // not fitted
    FittedOptions fitted; // unless plain
    bool verbose = false; // shows the facts of each picture
    ExistingOutput existing = ExistingOutput::Refuse;
    int jobs = 0; // pictures at once; 0: as many as processors and memory allow
};

struct InfoOptions {
    QStringList files;
    QString lensPath; // as above
    QString plugin;
    bool json = false;  // one object a picture and line
    bool exif = false;  // all entries
    bool plain = false; // the profile of plain corrections
    FitOptions fit;     // unless plain: facts typed by the user
};

struct LensesOptions {
    QStringList words; // none: the places that are searched
    QString lensPath;  // as above
    QString plugin;
    bool json = false; // one object per place or lens, and line
};

struct ProfileOptions {
    QStringList files;
    bool plain = false; // what the plain correction takes from it
    bool json = false;  // one object per profile and line
    bool check = false; // only what is odd
    QString picture;    // whose correction is shown; empty: none
    QString plot;       // .svg or .png to write; empty: none. Of one profile
    bool overwrite = false;
};

struct WizardOptions {
    QStringList files; // may be empty
    QString lensPath;  // as above
    QString plugin;    // empty: the installed one
};

struct CommandLine {
    enum class Action { Correct, ShowInfo, ShowProfiles, ShowLenses, ShowWizard, PrintText, RefuseUsage };

    Action action = Action::RefuseUsage;
    QString text;           // PrintText: help or version; RefuseUsage: what is wrong, and where help is
    CorrectOptions correct; // Correct
    InfoOptions info;       // ShowInfo
    ProfileOptions profile; // ShowProfiles
    LensesOptions lenses;   // ShowLenses
    WizardOptions wizard;   // ShowWizard
};

/// Reads the arguments that follow the program's name. Needs no application object.
CommandLine ParseCommandLine(const QStringList &arguments);
