// Parser of the command line: the user's request as plain values.
#pragma once

#include "Corrections.h"
#include "FittedOptions.h"
#include "app/OutputPlan.h"

#include <QString>
#include <QStringList>

/// Exit codes of the program.
enum ExitCode { kAllDone = 0, kSomeFailed = 1, kUsageError = 2 };

/// Part of a sorted list: every `count`-th element, beginning with element number `index`.
struct Shard {
    int index = 1, count = 1; // 1 <= index <= count
};

struct CorrectOptions {
    PictureSources pictures;
    OutputNaming outputs;
    Shard shard;
    QString profile;      // empty: looked up for each picture
    QString lensPath;     // profile folder; empty: the stored one or, if fitted, those of SearchedFolders
    QString plugin;       // empty: the installed one
    Corrections asked;    // none: all that the profile has
    bool plain = false;   // plain corrections instead of fitted ones
    bool convert = false; // accept CMYK and Lab pictures, as sRGB
    FittedOptions fitted; // unused if plain
    bool verbose = false; // print the facts about each picture
    bool quiet = false;   // print only failures on standard error
    bool dryRun = false;  // print what would be done
    bool json = false;    // print records as in docs/correct.schema.json
    bool notify = false;  // show a desktop notification at the end
    OutputRules rules;
    int jobs = 0; // pictures in parallel; 0: as many as processors and memory allow
};

struct InfoOptions {
    QStringList files;
    QString lensPath; // as in CorrectOptions
    QString plugin;
    bool json = false;  // one object per picture, one per line
    bool exif = false;  // print all entries
    bool plain = false; // look up the profile that plain corrections would use
    FitOptions fit;     // unless plain: facts typed by the user
};

struct LensesOptions {
    QStringList words; // none: list the folders that are searched
    QString lensPath;  // as in CorrectOptions
    QString plugin;
    bool json = false; // one object per folder or lens, one per line
};

struct ProfileOptions {
    QStringList files;
    bool plain = false; // print what the plain correction uses
    bool json = false;  // one object per profile, one per line
    bool check = false; // print only problems
    QString picture;    // also print what is applied to this picture; empty: none
    QString plot;       // .svg or .png file to write, for a single profile; empty: none
    bool overwrite = false;
};

struct ReportOptions {
    QStringList files; // records of `correct --json`
};

struct WizardOptions {
    QStringList files; // may be empty
    QString lensPath;  // as in CorrectOptions
    QString plugin;    // empty: the installed one
};

struct CommandLine {
    enum class Action { Correct, ShowInfo, ShowProfiles, ShowLenses, ShowReport, ShowWizard, PrintText, RefuseUsage };

    Action action = Action::RefuseUsage;
    QString text;           // PrintText: help or version; RefuseUsage: what is wrong, and how to get help
    CorrectOptions correct; // Correct
    InfoOptions info;       // ShowInfo
    ProfileOptions profile; // ShowProfiles
    LensesOptions lenses;   // ShowLenses
    ReportOptions report;   // ShowReport
    WizardOptions wizard;   // ShowWizard
    qint64 maxPixels = 0;   // Correct, ShowInfo: larger pictures are refused; 0: no limit
};

/// Parses the arguments after the program's name. Needs no application object.
CommandLine ParseCommandLine(const QStringList &arguments);
