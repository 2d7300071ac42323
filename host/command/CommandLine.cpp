#include "CommandLine.h"

#include "gfl.h"

#include <QCommandLineParser>
#include <QFileInfo>

namespace {

enum class Verb { Correct, Info, Profile, Lenses, Wizard };

struct VerbRow {
    Verb verb;
    const char *name;
    const char *usage;
    const char *summary;
    const char *details;
};

constexpr VerbRow kVerbs[] = {
    {Verb::Correct, "correct", "correct [OPTION]... PICTURE...", "correct pictures by a lens profile",
     "Corrects each PICTURE (%1) by a lens profile and writes\n"
     "NAME_corrected.tiff beside it, in the depth of the picture and with its color profile, EXIF and IPTC data. "
     "Without --distortion, --ca and --vignetting every\n"
     "correction that the profile holds is applied; one that is asked for and that the profile does not hold is a\n"
     "failure. An output appears only when it is whole, and none is ever replaced unless --overwrite says so.\n"
     "\n"
     "The profile is fitted to the picture: any size, crop, focal length, aperture and distance. Without --profile it\n"
     "is found by the picture's camera and lens, in the folder of profiles at any depth; where none fits, in "
     "lensfun's\n"
     "database. A line on standard error says which profile was used, what was assumed and what was left out.\n"
     "Pictures that their camera or another program corrected before are skipped.\n"
     "\n"
     "With --plain a profile corrects pictures of its own size, by its first entry, as other programs with this "
     "plug-in\n"
     "do; without --profile it is looked up as FOLDER/BRAND/*.lcp.\n"
     "\n"
     "Prints the name of each file written on standard output, one a line. A picture that fails is told in one line "
     "on\n"
     "standard error, and the others go on.\n"},
    {Verb::Info, "info", "info [OPTION]... PICTURE...", "show what is known of pictures",
     "Prints size, depth and format of each PICTURE, what its metadata tell of camera, lens, exposure, date and "
     "place,\n"
     "and which lens profile goes with it, or why none is found.\n"},
    {Verb::Profile, "profile", "profile [OPTION]... FILE...", "show what lens profiles hold",
     "Prints what each lens profile (.lcp) holds: camera, lens and frame, and its entries as a grid of focal lengths,\n"
     "distances, apertures and models. A profile that can't be used is a failure. With --for, so is one that does\n"
     "nothing to PICTURE.\n"
     "\n"
     "--check prints one line for each oddity, FILE:LINE: warning or error: fields that contradict each other, models\n"
     "without coefficients, missing frames, distortion that folds back within the frame, light that falls to 0.\n"
     "\n"
     "--plot draws distortion, color shift and light over the radius: one thin line per entry and, with --for, a bold\n"
     "one for what is applied to PICTURE. Distortion is how much farther out, in percent, the light of a radius lies "
     "in\n"
     "the picture as taken; of fisheyes, against the equidistant projection. Color shift counts from green. Prints "
     "the\n"
     "name of the file written.\n"},
    {Verb::Lenses, "lenses", "lenses [OPTION]... [WORD]...", "show which lenses can be corrected",
     "Prints the places in which profiles are searched, how many files each holds and how many lenses they serve, and\n"
     "which files can't be read. With WORDs, prints the lenses whose names hold all of them, in any case, with their\n"
     "profiles; lensfun:MAKER/LENS is of lensfun's database. --lens takes such a name.\n"},
    {Verb::Wizard, "wizard", "wizard [OPTION]... [PICTURE]...", "correct pictures in a window, with a preview",
     "Shows a window in which pictures are chosen, corrections tried out, and the pictures corrected. Each corrected\n"
     "picture is written beside its original, as NAME_corrected.tiff. A picture for which no lens profile is chosen "
     "is\n"
     "corrected by the one of its camera and lens, if the folder of profiles has it, as FOLDER/BRAND/*.lcp.\n"},
};

struct OptionRow {
    Verb verb;
    const char *names[2]; // as on the command line, without dashes; the second may be null
    const char *value;    // null: a switch
    const char *help;
};

constexpr OptionRow kOptions[] = {
    {Verb::Correct, {"profile", nullptr}, "FILE", "the lens profile (.lcp) of all pictures"},
    {Verb::Correct,
     {"lens-path", nullptr},
     "DIR",
     "find profiles in DIR, not in the folder last used or the usual ones"},
    {Verb::Correct, {"distortion", nullptr}, nullptr, "straighten bent lines"},
    {Verb::Correct, {"ca", nullptr}, nullptr, "remove colour fringes (chromatic aberration)"},
    {Verb::Correct, {"vignetting", nullptr}, nullptr, "brighten dark corners"},
    {Verb::Correct, {"o", "output"}, "DIR", "write into DIR, which is made if it does not exist"},
    {Verb::Correct, {"overwrite", nullptr}, nullptr, "replace outputs that exist; without it they are refused"},
    {Verb::Correct, {"skip-existing", nullptr}, nullptr, "pass over pictures whose output exists; not a failure"},
    {Verb::Correct, {"j", "jobs"}, "N", "correct N pictures at once; default: as processors and memory allow"},
    {Verb::Correct, {"plugin", nullptr}, "FILE", "use this plug-in instead of the installed one"},
    {Verb::Correct, {"v", "verbose"}, nullptr, "show what is known of each picture, and from where"},
    {Verb::Correct, {"plain", nullptr}, nullptr, "don't fit the profile; excludes all options below"},
    {Verb::Info, {"json", nullptr}, nullptr, "print one JSON object a picture, on a line of its own"},
    {Verb::Info, {"exif", nullptr}, nullptr, "print all EXIF entries too"},
    {Verb::Info,
     {"plain", nullptr},
     nullptr,
     "the profile of plain corrections, looked up as FOLDER/BRAND/*.lcp; excludes --lens to --body"},
    {Verb::Info, {"lens-path", nullptr}, "DIR", "find profiles in DIR, not in the folder last used or the usual ones"},
    {Verb::Info, {"plugin", nullptr}, "FILE", "use this plug-in instead of the installed one"},
    {Verb::Lenses, {"json", nullptr}, nullptr, "print one JSON object per place or lens, on a line of its own"},
    {Verb::Lenses, {"lens-path", nullptr}, "DIR", "search DIR, not the folder last used or the usual ones"},
    {Verb::Lenses, {"plugin", nullptr}, "FILE", "use this plug-in instead of the installed one"},
    {Verb::Profile, {"check", nullptr}, nullptr, "print what is odd, line by line, and nothing else"},
    {Verb::Profile, {"for", nullptr}, "PICTURE", "print what is applied to PICTURE too"},
    {Verb::Profile, {"json", nullptr}, nullptr, "print one JSON object per profile, on a line of its own"},
    {Verb::Profile, {"plot", nullptr}, "FILE", "draw curves into FILE, .svg or .png, of one profile"},
    {Verb::Profile, {"overwrite", nullptr}, nullptr, "replace the plot if it exists; without it that is a failure"},
    {Verb::Profile, {"plain", nullptr}, nullptr, "print what the plain correction uses: the first entry"},
    {Verb::Wizard, {"lens-path", nullptr}, "DIR", "look profiles up in DIR, which is then the folder last used"},
    {Verb::Wizard, {"plugin", nullptr}, "FILE", "use this plug-in instead of the installed one"},
};

constexpr char kExitCodes[] = "Exit code: 0 all done, 1 at least one failed, 2 wrong usage.\n";

QString Latin(const char *text)
{
    return QString::fromLatin1(text);
}

/// Options of a verb that only fitted corrections have; `info` has those on the picture.
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

/// All options of a verb, in the order of its help.
QVector<OptionRow> OptionsOf(Verb verb)
{
    QVector<OptionRow> rows;
    for (const OptionRow &row : kOptions) {
        if (row.verb == verb)
            rows.append(row);
    }
    return rows + FittedRows(verb);
}

/// "-o, --output DIR"
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
                                  "Removes lens distortion, colour fringes and dark corners from photographs.\n\n");
    for (const VerbRow &verb : kVerbs)
        text += HelpLine(Latin(verb.name), verb.summary);
    text += HelpLine(QStringLiteral("--version"), "print the version");
    text += HelpLine(QStringLiteral("--help"), "print this; COMMAND --help tells more of a command");
    return text + QLatin1Char('\n') + Latin(kExitCodes);
}

/// "Camera raw, TIFF, JPEG ..."
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

/// @param command  "vitrelux", or with the verb behind it: whose help is named.
CommandLine Refuse(const QString &command, const QString &why)
{
    CommandLine line;
    line.action = CommandLine::Action::RefuseUsage;
    line.text = QStringLiteral("%1: %2\nTry '%1 --help'.\n").arg(command, why);
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

/// The first option that was given an empty value, as it is spelled: an empty name is a slip in a script, never meant.
/// Empty if there is none.
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

CorrectOptions ReadCorrect(const QCommandLineParser &parser)
{
    CorrectOptions options;
    options.files = parser.positionalArguments();
    options.profile = parser.value(QStringLiteral("profile"));
    options.lensPath = parser.value(QStringLiteral("lens-path"));
    options.outputFolder = parser.value(QStringLiteral("o"));
    options.plugin = parser.value(QStringLiteral("plugin"));
    options.jobs = parser.value(QStringLiteral("j")).toInt();
    options.plain = parser.isSet(QStringLiteral("plain"));
    options.verbose = parser.isSet(QStringLiteral("verbose"));
    options.asked.distortion = parser.isSet(QStringLiteral("distortion"));
    options.asked.chromatic = parser.isSet(QStringLiteral("ca"));
    options.asked.vignetting = parser.isSet(QStringLiteral("vignetting"));
    if (parser.isSet(QStringLiteral("overwrite")))
        options.existing = ExistingOutput::Overwrite;
    else if (parser.isSet(QStringLiteral("skip-existing")))
        options.existing = ExistingOutput::Skip;
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

/// The options of `correct` or `info` that can't stand together; empty: they can.
QString FindExclusion(const QCommandLineParser &parser, Verb verb)
{
    using Pair = std::pair<const char *, const char *>;
    QVector<Pair> exclusions;
    if (verb == Verb::Correct)
        exclusions = {
            {"overwrite", "skip-existing"}, {"profile", "lens-path"}, {"profile", "source"}, {"plain", "verbose"}};
    const QVector<OptionRow> fitted = FittedRows(verb);
    for (const OptionRow &row : fitted)
        exclusions.append(Pair("plain", row.names[0]));
    for (const auto &[one, other] : qAsConst(exclusions)) {
        if (parser.isSet(Latin(one)) && parser.isSet(Latin(other)))
            return QStringLiteral("--%1 and --%2 exclude each other.").arg(Latin(one), Latin(other));
    }
    return QString();
}

/// Reads the options of fitted corrections; what is wrong with one, or empty.
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

/// What is wrong with the options of `profile`; empty: nothing.
QString FindProfileFault(const QCommandLineParser &parser)
{
    constexpr const char *kExclusions[][2] = {{"plain", "json"}, {"plain", "check"}, {"plain", "for"},
                                              {"plain", "plot"}, {"check", "json"},  {"check", "for"},
                                              {"check", "plot"}, {"json", "plot"}};
    for (const auto &pair : kExclusions) {
        if (parser.isSet(Latin(pair[0])) && parser.isSet(Latin(pair[1])))
            return QStringLiteral("--%1 and --%2 exclude each other.").arg(Latin(pair[0]), Latin(pair[1]));
    }
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

/// For a picture whose name was taken for options.
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
    if (parser.positionalArguments().isEmpty() && verb.verb != Verb::Wizard && verb.verb != Verb::Lenses)
        return Refuse(command, QStringLiteral("no file named."));
    if (parser.positionalArguments().contains(QString()))
        return Refuse(command, QStringLiteral("the name of a file is empty."));

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
    const QString exclusion = FindExclusion(parser, verb.verb);
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
    line.action = CommandLine::Action::Correct;
    line.correct = ReadCorrect(parser);
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
        return ParseVerb(*verb, arguments); // the verb stands where the parser expects the program's name
    if (first.startsWith(QLatin1Char('-')))
        return Refuse(program, QStringLiteral("unknown option '%1' where a command was expected.").arg(first));
    return Refuse(program, QStringLiteral("unknown command '%1'.").arg(first));
}
