#include "CommandTable.h"

#include "FittedOptions.h"

#include <QStringList>

#include <iterator>

namespace {

constexpr VerbRow kVerbs[] = {
    {Verb::Correct,
     "correct",
     "PICTURE...",
     "correct pictures with a lens profile",
     "Corrects each PICTURE with a lens profile or lensfun's database, and writes NAME_corrected.tiff next to it.\n\n"
     "Reads %1. The output keeps the bit depth, color profile, EXIF, IPTC and XMP data of the picture. Other formats "
     "store less: --format jpeg keeps 8 bits, exr stores linear light; a message says what is lost. The output appears "
     "only when it is complete, and replaces an existing file only with --overwrite.\n\n"
     "Without --distortion, --ca and --vignetting, every correction that the profile has is applied. A picture fails "
     "if the profile lacks a requested correction.\n\n"
     "The profile is fitted to the picture's size, crop, focal length, aperture and distance. Without --profile it "
     "is found by the picture's camera and lens, at any depth below the profile folder; if none fits, lensfun's "
     "database is used. A line on standard error names the profile, the assumptions and anything left out. Pictures "
     "that the camera, another program or an earlier run already corrected are skipped.\n\n"
     "With --plain a profile's first entry corrects pictures of the profile's size, as in other programs with this "
     "plug-in; without --profile it is looked up as FOLDER/BRAND/*.lcp.\n\n"
     "Prints the name of each output file to standard output, one per line. A picture that fails gets one line on "
     "standard error, and the run continues with the others. After the first interrupt (Ctrl-C), the pictures in "
     "progress are finished; a second interrupt ends the run at once. A run with --skip-existing resumes. A run over "
     "several pictures ends with a summary on standard error.",
     {"vitrelux correct photo.jpg", "vitrelux correct -r Pictures -o Corrected --skip-existing"}},
    {Verb::Info,
     "info",
     "PICTURE...",
     "show facts about pictures",
     "Prints size, depth and format of each PICTURE, what its metadata says about camera, lens, exposure, date and "
     "place, and which lens profile fits it or why none was found.",
     {"vitrelux info photo.jpg", "vitrelux info --json *.jpg > pictures.jsonl"}},
    {Verb::Profile,
     "profile",
     "FILE...",
     "show the content of lens profiles",
     "Prints the content of each lens profile (.lcp): camera, lens and frame, and its entries as a grid of focal "
     "lengths, distances, apertures and models.\n\n"
     "An unusable profile counts as a failure; with --for, so does one that has no effect on PICTURE.\n\n"
     "--check prints one line per problem, FILE:LINE: warning or error: contradictory fields, models without "
     "coefficients, missing frames, distortion that folds back within the frame, light that falls to 0.\n\n"
     "--plot draws distortion, color shift and light against the radius: one thin line per entry and, with --for, a "
     "bold one for what is applied to PICTURE. Distortion is how much farther from the center, in percent, a point "
     "lies in the picture as taken; for fisheyes, relative to the equidistant projection. Color shift is relative to "
     "green. Prints the name of the plot file.",
     {"vitrelux profile lens.lcp", "vitrelux profile --for photo.jpg --plot curves.svg lens.lcp"}},
    {Verb::Lenses,
     "lenses",
     "[WORD]...",
     "show which lenses can be corrected",
     "Prints the folders searched for profiles, the number of files and of lenses in each, and the files that can't "
     "be read. With WORDs, prints the lenses whose names contain all of them, ignoring case, with their profiles.\n\n"
     "lensfun:MAKER/LENS is an entry of lensfun's database. The --lens option of other commands accepts such a name.",
     {"vitrelux lenses", "vitrelux lenses canon 50mm"}},
    {Verb::Report,
     "report",
     "FILE...",
     "summarize the records of several runs",
     "Summarizes the lines that 'correct --json' printed into each FILE (- is standard input): how many pictures were "
     "corrected, skipped or failed, why they failed, the results for each lens, and the slowest pictures.\n\n"
     "A picture with several records counts once, by its last one.",
     {"vitrelux report run-1.jsonl run-2.jsonl", "vitrelux correct -n --json *.jpg | vitrelux report -"}},
    {Verb::Wizard,
     "wizard",
     "[PICTURE]...",
     "correct pictures in a window, with a preview",
     "Shows a window for choosing pictures, trying corrections and applying them. Each corrected picture is written "
     "next to its original, as NAME_corrected.tiff, unless you choose another folder or format.\n\n"
     "Lens profiles are found and fitted as in the correct command. The window shows which one was found, and you can "
     "choose a different one.",
     {"vitrelux wizard photo.jpg", "vitrelux wizard --lens-path Profiles photo.jpg"}},
    {Verb::Help,
     "help",
     "[COMMAND]",
     "describe a command in full",
     "Prints everything about COMMAND: what it does, all options, and examples. Without COMMAND, describes the "
     "program.",
     {"vitrelux help correct", "vitrelux help --man correct > vitrelux-correct.1"}},
};

// A row without names starts a group; its help is the group's title.
constexpr OptionRow kOptions[] = {
    {Verb::Correct, {}, nullptr, "Pictures"},
    {Verb::Correct, {"r", "recursive"}, nullptr, "correct the pictures in folders, at any depth"},
    {Verb::Correct, {"files-from", nullptr}, "FILE", "read names from FILE (- is stdin), split at LF or NUL"},
    {Verb::Correct, {"shard", nullptr}, "I/N", "every N-th picture of the sorted list, from the I-th"},
    {Verb::Correct, {"convert", nullptr}, nullptr, "also correct CMYK and Lab pictures, as sRGB", nullptr, true},
    {Verb::Correct, {}, nullptr, "Profile"},
    {Verb::Correct, {"profile", nullptr}, "FILE", "use this lens profile (.lcp) for all pictures"},
    {Verb::Correct, {"lens-path", nullptr}, "DIR", "search DIR instead of the stored or default folders"},
    {Verb::Correct, {}, nullptr, "Corrections (default: all that the profile has)"},
    {Verb::Correct, {"distortion", nullptr}, nullptr, "straighten bent lines", nullptr, true},
    {Verb::Correct, {"ca", nullptr}, nullptr, "remove color fringes (chromatic aberration)", nullptr, true},
    {Verb::Correct, {"vignetting", nullptr}, nullptr, "brighten dark corners", nullptr, true},
    {Verb::Correct, {"plain", nullptr}, nullptr, "apply the profile's first entry, without fitting it"},
    {Verb::Correct, {}, nullptr, "Output"},
    {Verb::Correct, {"o", "output"}, "DIR", "write to DIR, which is created if missing"},
    {Verb::Correct, {"suffix", nullptr}, "TEXT", "name outputs NAMETEXT.tiff, not NAME_corrected.tiff", nullptr, true},
    {Verb::Correct, {"output-name", nullptr}, "PATTERN", "name outputs, as in {name}-{ext}.tif; also {folder}"},
    {Verb::Correct, {"keep-time", nullptr}, nullptr, "copy each picture's file time to its output", nullptr, true},
    {Verb::Correct, {"overwrite", nullptr}, nullptr, "replace existing outputs instead of failing"},
    {Verb::Correct, {"skip-existing", nullptr}, nullptr, "skip pictures whose output exists; not a failure"},
    {Verb::Correct, {}, nullptr, "Run"},
    {Verb::Correct, {"max-megapixels", nullptr}, "N", "refuse larger pictures; default: 2000", nullptr, true},
    {Verb::Correct, {"n", "dry-run"}, nullptr, "print what would be done, and write nothing"},
    {Verb::Correct, {"j", "jobs"}, "N", "correct N at once; default: by CPU count and memory"},
    {Verb::Correct, {"json", nullptr}, nullptr, "print one JSON object per picture, one per line"},
    {Verb::Correct, {"v", "verbose"}, nullptr, "print the facts about each picture, with their sources", nullptr, true},
    {Verb::Correct, {"q", "quiet"}, nullptr, "print only failures, no notes, progress or summary", nullptr, true},
    {Verb::Correct, {"notify", nullptr}, nullptr, "show the result as a desktop notification", nullptr, true},
    {Verb::Correct, {"plugin", nullptr}, "FILE", "use this plug-in instead of the installed one", nullptr, true},
    {Verb::Info, {}, nullptr, "Output"},
    {Verb::Info, {"max-megapixels", nullptr}, "N", "refuse larger pictures; default: 2000", nullptr, true},
    {Verb::Info, {"json", nullptr}, nullptr, "print one JSON object per picture, one per line"},
    {Verb::Info, {"exif", nullptr}, nullptr, "print all EXIF entries too"},
    {Verb::Info, {}, nullptr, "Profile"},
    {Verb::Info, {"plain", nullptr}, nullptr, "look the profile up as correct --plain does"},
    {Verb::Info, {"lens-path", nullptr}, "DIR", "search DIR instead of the stored or default folders"},
    {Verb::Info, {"plugin", nullptr}, "FILE", "use this plug-in instead of the installed one"},
    {Verb::Profile, {}, nullptr, "Output"},
    {Verb::Profile, {"check", nullptr}, nullptr, "print only the problems, one per line"},
    {Verb::Profile, {"for", nullptr}, "PICTURE", "also print what is applied to PICTURE"},
    {Verb::Profile, {"json", nullptr}, nullptr, "print one JSON object per profile, one per line"},
    {Verb::Profile, {"plain", nullptr}, nullptr, "print what the plain correction uses: the first entry"},
    {Verb::Profile, {}, nullptr, "Drawing"},
    {Verb::Profile, {"plot", nullptr}, "FILE", "draw the curves of one profile to FILE, .svg or .png"},
    {Verb::Profile, {"overwrite", nullptr}, nullptr, "replace an existing plot instead of failing"},
    {Verb::Lenses, {}, nullptr, "Options"},
    {Verb::Lenses, {"json", nullptr}, nullptr, "print one JSON object per folder or lens, one per line"},
    {Verb::Lenses, {"lens-path", nullptr}, "DIR", "search DIR instead of the stored or default folders"},
    {Verb::Lenses, {"plugin", nullptr}, "FILE", "use this plug-in instead of the installed one"},
    {Verb::Wizard, {}, nullptr, "Options"},
    {Verb::Wizard, {"lens-path", nullptr}, "DIR", "find profiles in DIR, which becomes the stored folder"},
    {Verb::Wizard, {"plugin", nullptr}, "FILE", "use this plug-in instead of the installed one"},
    {Verb::Help, {}, nullptr, "Other forms"},
    {Verb::Help, {"man", nullptr}, nullptr, "print the man page"},
    {Verb::Help, {"completion", nullptr}, "SHELL", "print completions for bash, zsh or fish", "bash zsh fish"},
    {Verb::Help, {"names", nullptr}, nullptr, "print the names of all commands, one per line"},
};

/// Returns the fitted options that are facts about the picture if @p facts, otherwise the other ones.
QVector<OptionRow> FittedRows(Verb verb, bool facts)
{
    QVector<OptionRow> rows;
    const QVector<FittedOptionRow> fitted = FittedOptionRows();
    for (const FittedOptionRow &row : fitted) {
        if (row.isFact == facts)
            rows.append({verb, {row.name, nullptr}, row.value, row.help, row.words, row.isBrief});
    }
    return rows;
}

} // namespace

QVector<VerbRow> AllVerbs()
{
    return QVector<VerbRow>(std::begin(kVerbs), std::end(kVerbs));
}

const VerbRow *FindVerb(const QString &name)
{
    for (const VerbRow &verb : kVerbs) {
        if (name == QLatin1String(verb.name))
            return &verb;
    }
    return nullptr;
}

QVector<OptionGroup> GroupsOf(Verb verb)
{
    QVector<OptionGroup> groups;
    for (const OptionRow &row : kOptions) {
        if (row.verb != verb)
            continue;
        if (!row.names[0])
            groups.append({QLatin1String(row.help), {}});
        else
            groups.last().rows.append(row);
    }
    if (verb == Verb::Correct)
        groups.append({QStringLiteral("Result, not with --plain"), FittedRows(verb, false)});
    if (verb == Verb::Correct || verb == Verb::Info)
        groups.append({QStringLiteral("Facts missing from the metadata, not with --plain"), FittedRows(verb, true)});
    return groups;
}

QVector<OptionRow> OptionsOf(Verb verb)
{
    QVector<OptionRow> rows;
    const QVector<OptionGroup> groups = GroupsOf(verb);
    for (const OptionGroup &group : groups)
        rows += group.rows;
    return rows;
}

QVector<OptionRow> FittedRows(Verb verb)
{
    if (verb == Verb::Info)
        return FittedRows(verb, true);
    return verb == Verb::Correct ? FittedRows(verb, false) + FittedRows(verb, true) : QVector<OptionRow>();
}

QStringList SpelledNames(const OptionRow &row)
{
    QStringList names;
    for (const char *name : row.names) {
        if (name)
            names << (qstrlen(name) == 1 ? QLatin1String("-") : QLatin1String("--")) + QLatin1String(name);
    }
    return names;
}

QString Spelling(const OptionRow &row)
{
    const QString all = SpelledNames(row).join(QLatin1String(", "));
    return row.value ? all + QLatin1Char(' ') + QLatin1String(row.value) : all;
}
