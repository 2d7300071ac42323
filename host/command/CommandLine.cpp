#include "CommandLine.h"

#include "Console.h"
#include "gfl.h"

#include <QCommandLineParser>
#include <QFileInfo>

namespace {

enum class Verb { Correct, Info, Profile, Lenses, Report, Wizard };

struct VerbRow {
    Verb verb;
    const char *name;
    const char *usage;
    const char *summary;
    const char *details;
};

constexpr VerbRow kVerbs[] = {
    {Verb::Correct, "correct", "correct [OPTION]... PICTURE...", "correct pictures by a lens profile",
     "Corrects each PICTURE (%1) by a lens profile and\n"
     "writes NAME_corrected.tiff next to it, with the depth, color profile, EXIF, IPTC and XMP data of the picture.\n"
     "Other formats hold less: --format jpeg 8 bits, exr light instead of values; a line says what is lost.\n"
     "Without --distortion, --ca and --vignetting, every correction that the profile has is applied; one that is\n"
     "requested but missing from the profile is a failure. An output appears only when it is complete, and\n"
     "replaces an existing file only with --overwrite.\n"
     "\n"
     "The profile is fitted to the picture: any size, crop, focal length, aperture and distance. Without --profile it\n"
     "is found by the picture's camera and lens, at any depth of the profile folder; if none fits, lensfun's database\n"
     "is used. A line on standard error names the profile, the assumptions and anything left out. Pictures that the\n"
     "camera, another program or an earlier run already corrected are skipped.\n"
     "\n"
     "With --plain a profile's first entry corrects pictures of the profile's size, as other programs do with this\n"
     "plug-in; without --profile it is looked up as FOLDER/BRAND/*.lcp.\n"
     "\n"
     "Prints the name of each file written on standard output, one per line. A picture that fails gets one line on\n"
     "standard error, and the others continue.\n"},
    {Verb::Info, "info", "info [OPTION]... PICTURE...", "show facts about pictures",
     "Prints size, depth and format of each PICTURE, what its metadata says about camera, lens, exposure, date and\n"
     "place, and which lens profile fits it or why none was found.\n"},
    {Verb::Profile, "profile", "profile [OPTION]... FILE...", "show the content of lens profiles",
     "Prints the content of each lens profile (.lcp): camera, lens and frame, and its entries as a grid of focal\n"
     "lengths, distances, apertures and models. An unusable profile is a failure. With --for, so is one that does\n"
     "nothing to PICTURE.\n"
     "\n"
     "--check prints one line per problem, FILE:LINE: warning or error: contradictory fields, models without\n"
     "coefficients, missing frames, distortion that folds back within the frame, light that falls to 0.\n"
     "\n"
     "--plot draws distortion, color shift and light over the radius: one thin line per entry and, with --for, a bold\n"
     "one for what is applied to PICTURE. Distortion is how much farther out, in percent, the light of a radius lies\n"
     "in the picture as taken; for fisheyes, relative to the equidistant projection. Color shift is relative to\n"
     "green. Prints the name of the file written.\n"},
    {Verb::Lenses, "lenses", "lenses [OPTION]... [WORD]...", "show which lenses can be corrected",
     "Prints the folders searched for profiles, the number of files and of lenses in each, and the files that\n"
     "can't be read. With WORDs, prints the lenses whose names contain all of them, ignoring case, with their\n"
     "profiles; lensfun:MAKER/LENS is an entry of lensfun's database. --lens accepts such a name.\n"},
    {Verb::Report, "report", "report FILE...", "summarize the records of several runs",
     "Summarizes the lines that 'correct --json' printed into each FILE (- is standard input): how many pictures were\n"
     "corrected, skipped or failed, why they failed, by lens, and the slowest ones. A picture with several records\n"
     "counts once, by its last one.\n"},
    {Verb::Wizard, "wizard", "wizard [OPTION]... [PICTURE]...", "correct pictures in a window, with a preview",
     "Shows a window for choosing pictures, trying corrections and applying them. Each corrected picture is written\n"
     "next to its original, as NAME_corrected.tiff. Lens profiles are found and fitted as by the correct command; the\n"
     "window shows which one was found, and another one can be chosen.\n"},
};

struct OptionRow {
    Verb verb;
    const char *names[2]; // as on the command line, without dashes; the second may be null
    const char *value;    // null: a switch
    const char *help;
};

constexpr OptionRow kOptions[] = {
    {Verb::Correct, {"profile", nullptr}, "FILE", "use this lens profile (.lcp) for all pictures"},
    {Verb::Correct, {"lens-path", nullptr}, "DIR", "search DIR for profiles, not the stored or default folders"},
    {Verb::Correct, {"distortion", nullptr}, nullptr, "straighten bent lines"},
    {Verb::Correct, {"ca", nullptr}, nullptr, "remove color fringes (chromatic aberration)"},
    {Verb::Correct, {"vignetting", nullptr}, nullptr, "brighten dark corners"},
    {Verb::Correct, {"r", "recursive"}, nullptr, "correct the pictures in folders, at any depth"},
    {Verb::Correct, {"files-from", nullptr}, "FILE", "read names from FILE (-: standard input), one per line or NUL"},
    {Verb::Correct, {"shard", nullptr}, "I/N", "correct every N-th picture of the sorted list, from the I-th on"},
    {Verb::Correct, {"o", "output"}, "DIR", "write to DIR, which is created if missing"},
    {Verb::Correct, {"suffix", nullptr}, "TEXT", "name outputs NAMETEXT.tiff instead of NAME_corrected.tiff"},
    {Verb::Correct, {"output-name", nullptr}, "PATTERN", "name outputs such as {name}-{ext}.tif; also {folder}"},
    {Verb::Correct, {"keep-time", nullptr}, nullptr, "give each output the time of its picture"},
    {Verb::Correct, {"n", "dry-run"}, nullptr, "print what would be done, and write nothing"},
    {Verb::Correct, {"json", nullptr}, nullptr, "print one JSON object per picture, one per line"},
    {Verb::Correct, {"overwrite", nullptr}, nullptr, "replace existing outputs; without it they are failures"},
    {Verb::Correct, {"skip-existing", nullptr}, nullptr, "skip pictures whose output exists; not a failure"},
    {Verb::Correct, {"j", "jobs"}, "N", "correct N pictures in parallel; default: by processors and memory"},
    {Verb::Correct, {"plugin", nullptr}, "FILE", "use this plug-in instead of the installed one"},
    {Verb::Correct, {"v", "verbose"}, nullptr, "print the facts about each picture, with their sources"},
    {Verb::Correct, {"convert", nullptr}, nullptr, "also correct CMYK and Lab pictures, converted to sRGB"},
    {Verb::Correct, {"plain", nullptr}, nullptr, "don't fit the profile; excludes all options below"},
    {Verb::Info, {"json", nullptr}, nullptr, "print one JSON object per picture, one per line"},
    {Verb::Info, {"exif", nullptr}, nullptr, "print all EXIF entries too"},
    {Verb::Info,
     {"plain", nullptr},
     nullptr,
     "look the profile up as --plain does, as FOLDER/BRAND/*.lcp; excludes --lens to --body"},
    {Verb::Info, {"lens-path", nullptr}, "DIR", "search DIR for profiles, not the stored or default folders"},
    {Verb::Info, {"plugin", nullptr}, "FILE", "use this plug-in instead of the installed one"},
    {Verb::Lenses, {"json", nullptr}, nullptr, "print one JSON object per folder or lens, one per line"},
    {Verb::Lenses, {"lens-path", nullptr}, "DIR", "search DIR, not the stored or default folders"},
    {Verb::Lenses, {"plugin", nullptr}, "FILE", "use this plug-in instead of the installed one"},
    {Verb::Profile, {"check", nullptr}, nullptr, "print only the problems, one per line"},
    {Verb::Profile, {"for", nullptr}, "PICTURE", "also print what is applied to PICTURE"},
    {Verb::Profile, {"json", nullptr}, nullptr, "print one JSON object per profile, one per line"},
    {Verb::Profile, {"plot", nullptr}, "FILE", "draw the curves of one profile to FILE, .svg or .png"},
    {Verb::Profile, {"overwrite", nullptr}, nullptr, "replace an existing plot; without it that is a failure"},
    {Verb::Profile, {"plain", nullptr}, nullptr, "print what the plain correction uses: the first entry"},
    {Verb::Wizard, {"lens-path", nullptr}, "DIR", "find profiles in DIR, which becomes the stored folder"},
    {Verb::Wizard, {"plugin", nullptr}, "FILE", "use this plug-in instead of the installed one"},
};

constexpr char kExitCodes[] = "Exit code: 0 all done, 1 at least one failed, 2 wrong usage.\n";

QString Latin(const char *text)
{
    return QString::fromLatin1(text);
}

/// Returns the options of a verb that only fitted corrections have; those of `info` are about the picture.
QVector<OptionRow> FittedRows(Verb verb)
{
    QVector<OptionRow> rows;
    const QVector<FittedOptionRow> fitted = FittedOptionRows();
    for (const FittedOptionRow &row : fitted) {
        if (verb == Verb::Correct || (verb == Verb::Info && row.isFact))
            rows.append({verb, {row.name, nullptr}, row.value, row.help});
    }
    return rows;
}

/// Returns all options of a verb, in the order of its help.
QVector<OptionRow> OptionsOf(Verb verb)
{
    QVector<OptionRow> rows;
    for (const OptionRow &row : kOptions) {
        if (row.verb == verb)
            rows.append(row);
    }
    return rows + FittedRows(verb);
}

/// Returns the names of an option as in the help: "-o, --output DIR".
QString Spelling(const OptionRow &row)
{
    QStringList names;
    for (const char *name : row.names) {
        if (name)
            names << (qstrlen(name) == 1 ? QLatin1String("-") : QLatin1String("--")) + Latin(name);
    }
    const QString all = names.join(QLatin1String(", "));
    return row.value ? all + QLatin1Char(' ') + Latin(row.value) : all;
}

QString HelpLine(const QString &left, const char *right)
{
    return QStringLiteral("  %1  %2\n").arg(left, -18).arg(Latin(right));
}

QString ProgramHelp()
{
    QString text = QStringLiteral("Usage: vitrelux COMMAND [OPTION]... FILE...\n\n"
                                  "Removes lens distortion, color fringes and dark corners from photographs.\n\n");
    for (const VerbRow &verb : kVerbs)
        text += HelpLine(Latin(verb.name), verb.summary);
    text += HelpLine(QStringLiteral("--version"), "print the version");
    text += HelpLine(QStringLiteral("--help"), "print this; COMMAND --help describes a command");
    return text + QLatin1Char('\n') + Latin(kExitCodes);
}

/// Returns the formats that can be read: "Camera raw, TIFF, JPEG ...".
QString KnownFormats()
{
    QStringList names;
    for (std::int32_t i = 0; const GFL_FORMAT *format = gflGetFormat(i); ++i)
        names << Latin(format->Label);
    return names.join(QLatin1String(", "));
}

QString VerbHelp(const VerbRow &verb)
{
    const QString details = Latin(verb.details).replace(QLatin1String("%1"), KnownFormats());
    QString text = QStringLiteral("Usage: vitrelux %1\n\n%2\n").arg(Latin(verb.usage), details);
    const QVector<OptionRow> rows = OptionsOf(verb.verb);
    for (const OptionRow &row : rows)
        text += HelpLine(Spelling(row), row.help);
    text += HelpLine(QStringLiteral("-h, --help"), "print this");
    return text + QLatin1Char('\n') + Latin(kExitCodes);
}

CommandLine PrintText(const QString &text)
{
    CommandLine line;
    line.action = CommandLine::Action::PrintText;
    line.text = text;
    return line;
}

/// @param command  "vitrelux" or "vitrelux VERB": the command whose help is suggested.
CommandLine Refuse(const QString &command, const QString &why)
{
    CommandLine line;
    line.action = CommandLine::Action::RefuseUsage;
    line.text = QStringLiteral("%1: %2\nTry '%1 --help'.\n").arg(command, OneLine(why));
    return line;
}

const VerbRow *FindVerb(const QString &name)
{
    for (const VerbRow &verb : kVerbs) {
        if (name == QLatin1String(verb.name))
            return &verb;
    }
    return nullptr;
}

void AddOptions(QCommandLineParser *parser, Verb verb)
{
    const QVector<OptionRow> rows = OptionsOf(verb);
    for (const OptionRow &row : rows) {
        QStringList names(Latin(row.names[0]));
        if (row.names[1])
            names << Latin(row.names[1]);
        parser->addOption(QCommandLineOption(names, QString(), row.value ? Latin(row.value) : QString()));
    }
    parser->addOption(QCommandLineOption(QStringList{QStringLiteral("h"), QStringLiteral("help")}));
}

/// Returns the first option with an empty value, as spelled in the help; empty if there is none. An empty value is a
/// mistake in a script, never intended.
QString FindEmptyValue(const QCommandLineParser &parser, Verb verb)
{
    const QVector<OptionRow> rows = OptionsOf(verb);
    for (const OptionRow &row : rows) {
        const QString name = Latin(row.names[0]);
        if (row.value && parser.isSet(name) && parser.value(name).isEmpty())
            return Spelling(row);
    }
    return QString();
}

QString FormatOf(const QCommandLineParser &parser)
{
    return parser.isSet(QStringLiteral("format")) ? parser.value(QStringLiteral("format")) : QStringLiteral("tiff");
}

/// Reads the names of outputs, with the suffix of their format. Results of earlier runs are recognized by the default
/// or chosen ending, with the suffix of any format, unless a pattern was given.
void ReadOutputNames(const QCommandLineParser &parser, CorrectOptions *options)
{
    if (parser.isSet(QStringLiteral("output-name"))) {
        options->outputs.pattern = parser.value(QStringLiteral("output-name"));
        return;
    }
    const QString ending =
        parser.isSet(QStringLiteral("suffix")) ? parser.value(QStringLiteral("suffix")) : QStringLiteral("_corrected");
    const auto named = [&](const QString &format) {
        return ending + QLatin1Char('.') + SuffixesOfFormat(format).value(0);
    };
    options->outputs.pattern = QStringLiteral("{name}") + named(FormatOf(parser));
    for (const char *format : {"tiff", "jpeg", "png", "exr"})
        options->pictures.resultEndings << named(Latin(format));
}

CorrectOptions ReadCorrect(const QCommandLineParser &parser)
{
    CorrectOptions options;
    options.pictures.named = parser.positionalArguments();
    options.pictures.recursive = parser.isSet(QStringLiteral("recursive"));
    options.pictures.listFile = parser.value(QStringLiteral("files-from"));
    options.profile = parser.value(QStringLiteral("profile"));
    options.lensPath = parser.value(QStringLiteral("lens-path"));
    options.outputs.folder = parser.value(QStringLiteral("o"));
    options.pictures.outputFolder = options.outputs.folder;
    ReadOutputNames(parser, &options);
    options.plugin = parser.value(QStringLiteral("plugin"));
    options.jobs = parser.value(QStringLiteral("j")).toInt();
    options.plain = parser.isSet(QStringLiteral("plain"));
    options.convert = parser.isSet(QStringLiteral("convert"));
    options.dryRun = parser.isSet(QStringLiteral("dry-run"));
    options.json = parser.isSet(QStringLiteral("json"));
    options.rules.keepTime = parser.isSet(QStringLiteral("keep-time"));
    options.verbose = parser.isSet(QStringLiteral("verbose"));
    options.asked.distortion = parser.isSet(QStringLiteral("distortion"));
    options.asked.chromatic = parser.isSet(QStringLiteral("ca"));
    options.asked.vignetting = parser.isSet(QStringLiteral("vignetting"));
    if (parser.isSet(QStringLiteral("overwrite")))
        options.rules.existing = ExistingOutput::Overwrite;
    else if (parser.isSet(QStringLiteral("skip-existing")))
        options.rules.existing = ExistingOutput::Skip;
    return options;
}

InfoOptions ReadInfo(const QCommandLineParser &parser)
{
    InfoOptions options;
    options.files = parser.positionalArguments();
    options.lensPath = parser.value(QStringLiteral("lens-path"));
    options.plugin = parser.value(QStringLiteral("plugin"));
    options.json = parser.isSet(QStringLiteral("json"));
    options.exif = parser.isSet(QStringLiteral("exif"));
    options.plain = parser.isSet(QStringLiteral("plain"));
    return options;
}

/// Returns a message about an option that the format of outputs doesn't have; empty if there is none.
QString FindFormatFault(const QCommandLineParser &parser)
{
    const std::pair<const char *, const char *> needs[] = {{"quality", "jpeg"}, {"compression", "tiff"}};
    for (const auto &[option, format] : needs) {
        if (parser.isSet(Latin(option)) && FormatOf(parser) != Latin(format))
            return QStringLiteral("--%1 is for --format %2, but the outputs are of format %3.")
                .arg(Latin(option), Latin(format), FormatOf(parser));
    }
    return QString();
}

using Exclusions = QVector<std::pair<const char *, const char *>>;

/// Returns a message about two options that exclude each other; empty if there are none.
QString FindExclusion(const QCommandLineParser &parser, const Exclusions &exclusions)
{
    for (const auto &[one, other] : exclusions) {
        if (parser.isSet(Latin(one)) && parser.isSet(Latin(other)))
            return QStringLiteral("--%1 and --%2 exclude each other.").arg(Latin(one), Latin(other));
    }
    return QString();
}

/// Returns the pairs of options of `correct` or `info` that exclude each other.
Exclusions ExclusionsOf(Verb verb)
{
    Exclusions exclusions;
    if (verb == Verb::Correct)
        exclusions = {{"overwrite", "skip-existing"}, {"profile", "lens-path"}, {"profile", "source"},
                      {"plain", "verbose"},           {"plain", "convert"},     {"suffix", "output-name"}};
    const QVector<OptionRow> fitted = FittedRows(verb);
    for (const OptionRow &row : fitted)
        exclusions.append(std::make_pair("plain", row.names[0]));
    return exclusions;
}

/// Reads the options of fitted corrections. @return what is wrong with one; empty if nothing is.
QString ReadFitted(const QCommandLineParser &parser, Verb verb, FittedOptions *options)
{
    const QVector<OptionRow> rows = FittedRows(verb);
    for (const OptionRow &row : rows) {
        const QString name = Latin(row.names[0]);
        const QString problem = parser.isSet(name) ? TakeFittedOption(name, parser.value(name), options) : QString();
        if (!problem.isEmpty())
            return problem;
    }
    return QString();
}

/// Returns what is wrong with the options of `profile`; empty if nothing is.
QString FindProfileFault(const QCommandLineParser &parser)
{
    const QString exclusion = FindExclusion(parser,
                                            {{"plain", "json"},
                                             {"plain", "check"},
                                             {"plain", "for"},
                                             {"plain", "plot"},
                                             {"check", "json"},
                                             {"check", "for"},
                                             {"check", "plot"},
                                             {"json", "plot"}});
    if (!exclusion.isEmpty())
        return exclusion;
    if (!parser.isSet(QStringLiteral("plot")))
        return parser.isSet(QStringLiteral("overwrite")) ? QStringLiteral("--overwrite needs --plot.") : QString();
    const QString suffix = QFileInfo(parser.value(QStringLiteral("plot"))).suffix().toLower();
    if (suffix != QLatin1String("svg") && suffix != QLatin1String("png"))
        return QStringLiteral("'--plot FILE' needs a name that ends in .svg or .png.");
    return parser.positionalArguments().size() > 1 ? QStringLiteral("--plot draws one profile only.") : QString();
}

ProfileOptions ReadProfile(const QCommandLineParser &parser)
{
    ProfileOptions options;
    options.files = parser.positionalArguments();
    options.plain = parser.isSet(QStringLiteral("plain"));
    options.json = parser.isSet(QStringLiteral("json"));
    options.check = parser.isSet(QStringLiteral("check"));
    options.picture = parser.value(QStringLiteral("for"));
    options.plot = parser.value(QStringLiteral("plot"));
    options.overwrite = parser.isSet(QStringLiteral("overwrite"));
    return options;
}

bool IsJobCount(const QString &text)
{
    constexpr int kMostJobs = 256;
    bool ok = false;
    const int count = text.toInt(&ok);
    return ok && count >= 1 && count <= kMostJobs;
}

/// Reads "2/16".
bool ReadShard(const QString &text, Shard *shard)
{
    bool isIndex = false, isCount = false;
    shard->index = text.section(QLatin1Char('/'), 0, 0).toInt(&isIndex);
    shard->count = text.section(QLatin1Char('/'), 1).toInt(&isCount);
    return isIndex && isCount && shard->index >= 1 && shard->index <= shard->count;
}

/// Returns a hint about a picture whose name was parsed as an option; empty if there is none.
QString HintAtDashes(const QStringList &arguments)
{
    for (const QString &argument : arguments) {
        if (argument.startsWith(QLatin1Char('-')) && QFileInfo::exists(argument))
            return QStringLiteral(" There is a file \"%1\": names that begin with a dash go after '--'.").arg(argument);
    }
    return QString();
}

CommandLine ParseVerb(const VerbRow &verb, const QStringList &arguments)
{
    QCommandLineParser parser;
    AddOptions(&parser, verb.verb);
    const QString command = QLatin1String("vitrelux ") + Latin(verb.name);
    if (!parser.parse(arguments))
        return Refuse(command, parser.errorText() + HintAtDashes(arguments));
    if (parser.isSet(QStringLiteral("help")))
        return PrintText(VerbHelp(verb));
    if (const QString empty = FindEmptyValue(parser, verb.verb); !empty.isEmpty())
        return Refuse(command, QStringLiteral("'%1' needs a value that is not empty.").arg(empty));
    const bool isListed = verb.verb == Verb::Correct && parser.isSet(QStringLiteral("files-from"));
    if (parser.positionalArguments().isEmpty() && !isListed && verb.verb != Verb::Wizard && verb.verb != Verb::Lenses)
        return Refuse(command, QStringLiteral("no file given."));
    if (parser.positionalArguments().contains(QString()))
        return Refuse(command, QStringLiteral("a file name is empty."));

    CommandLine line;
    if (verb.verb == Verb::Profile) {
        const QString fault = FindProfileFault(parser);
        if (!fault.isEmpty())
            return Refuse(command, fault);
        line.action = CommandLine::Action::ShowProfiles;
        line.profile = ReadProfile(parser);
        return line;
    }
    if (verb.verb == Verb::Lenses) {
        line.action = CommandLine::Action::ShowLenses;
        line.lenses = {parser.positionalArguments(), parser.value(QStringLiteral("lens-path")),
                       parser.value(QStringLiteral("plugin")), parser.isSet(QStringLiteral("json"))};
        return line;
    }
    if (verb.verb == Verb::Wizard) {
        line.action = CommandLine::Action::ShowWizard;
        line.wizard = {parser.positionalArguments(), parser.value(QStringLiteral("lens-path")),
                       parser.value(QStringLiteral("plugin"))};
        return line;
    }
    if (verb.verb == Verb::Report) {
        line.action = CommandLine::Action::ShowReport;
        line.report = {parser.positionalArguments()};
        return line;
    }
    const QString exclusion = FindExclusion(parser, ExclusionsOf(verb.verb));
    if (!exclusion.isEmpty())
        return Refuse(command, exclusion);
    FittedOptions fitted;
    if (const QString problem = ReadFitted(parser, verb.verb, &fitted); !problem.isEmpty())
        return Refuse(command, problem);
    if (verb.verb == Verb::Info) {
        line.action = CommandLine::Action::ShowInfo;
        line.info = ReadInfo(parser);
        line.info.fit = fitted.fit;
        return line;
    }
    if (parser.isSet(QStringLiteral("j")) && !IsJobCount(parser.value(QStringLiteral("j"))))
        return Refuse(command, QStringLiteral("'-j N' needs a whole number from 1 to 256."));
    if (const QString fault = FindFormatFault(parser); !fault.isEmpty())
        return Refuse(command, fault);
    line.action = CommandLine::Action::Correct;
    line.correct = ReadCorrect(parser);
    if (const QString fault = FaultOfOutputPattern(line.correct.outputs.pattern, SuffixesOfFormat(FormatOf(parser)));
        !fault.isEmpty())
        return Refuse(command,
                      QStringLiteral("the name of outputs, '%1', %2.").arg(line.correct.outputs.pattern, fault));
    if (parser.isSet(QStringLiteral("shard")) && !ReadShard(parser.value(QStringLiteral("shard")), &line.correct.shard))
        return Refuse(command, QStringLiteral("'--shard I/N' needs whole numbers, I from 1 to N."));
    line.correct.fitted = fitted;
    return line;
}

} // namespace

CommandLine ParseCommandLine(const QStringList &arguments)
{
    const QString program = QStringLiteral("vitrelux");
    if (arguments.isEmpty())
        return Refuse(program, QStringLiteral("no command."));
    const QString &first = arguments.first();
    if (first == QLatin1String("--help") || first == QLatin1String("-h"))
        return PrintText(ProgramHelp());
    if (first == QLatin1String("--version"))
        return PrintText(QStringLiteral("vitrelux " VITRELUX_VERSION "\n"));
    if (const VerbRow *verb = FindVerb(first))
        return ParseVerb(*verb, arguments); // the parser expects the program's name in the place of the verb
    if (first.startsWith(QLatin1Char('-')))
        return Refuse(program, QStringLiteral("unknown option '%1' where a command was expected.").arg(first));
    return Refuse(program, QStringLiteral("unknown command '%1'.").arg(first));
}
