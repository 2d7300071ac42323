#include "CommandLine.h"

#include "CommandTable.h"
#include "Console.h"
#include "HelpText.h"

#include <QCommandLineParser>
#include <QFileInfo>

namespace {

QString Latin(const char *text)
{
    return QString::fromLatin1(text);
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
    CommandLine line; // its default action is RefuseUsage
    line.text = QStringLiteral("%1: %2\nTry '%1 --help'.\n").arg(command, OneLine(why));
    return line;
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

/// Returns the first option with an empty value, as spelled in the help; empty if there is none. An empty value is
/// usually a mistake in a script.
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

/// Reads the options that name outputs, and adds the suffix of the format. Results of earlier runs are recognized by
/// the default or chosen ending, with the suffix of any format, unless a pattern was given.
void ReadOutputNames(const QCommandLineParser &parser, CorrectOptions *options)
{
    if (parser.isSet(QStringLiteral("output-name"))) {
        options->outputs.pattern = parser.value(QStringLiteral("output-name"));
        return;
    }
    const QString ending =
        parser.isSet(QStringLiteral("suffix")) ? parser.value(QStringLiteral("suffix")) : QStringLiteral("_corrected");
    options->outputs.pattern = QStringLiteral("{name}");
    options->outputs.ending = OutputEnding(FormatOf(parser), ending);
    options->pictures.resultEndings = OutputEndings(ending);
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
    options.notify = parser.isSet(QStringLiteral("notify"));
    options.rules.keepTime = parser.isSet(QStringLiteral("keep-time"));
    options.verbose = parser.isSet(QStringLiteral("verbose"));
    options.quiet = parser.isSet(QStringLiteral("quiet"));
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

/// Returns a message about an option that the output format doesn't support; empty if there is none.
QString FindFormatFault(const QCommandLineParser &parser)
{
    const std::pair<const char *, const char *> needs[] = {{"quality", "jpeg"}, {"compression", "tiff"}};
    for (const auto &[option, format] : needs) {
        if (parser.isSet(Latin(option)) && FormatOf(parser) != Latin(format))
            return QStringLiteral("--%1 is only for --format %2, but the output format is %3.")
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
            return QStringLiteral("--%1 and --%2 cannot be used together.").arg(Latin(one), Latin(other));
    }
    return QString();
}

/// Returns the pairs of options of `correct` or `info` that exclude each other.
Exclusions ExclusionsOf(Verb verb)
{
    Exclusions exclusions;
    if (verb == Verb::Correct)
        exclusions = {
            {"overwrite", "skip-existing"}, {"profile", "lens-path"},  {"profile", "source"}, {"plain", "verbose"},
            {"plain", "convert"},           {"suffix", "output-name"}, {"quiet", "verbose"}};
    const QVector<OptionRow> fitted = FittedRows(verb);
    for (const OptionRow &row : fitted)
        exclusions.append(std::make_pair("plain", row.names[0]));
    return exclusions;
}

/// Reads the options of fitted corrections. @return a message about the first invalid one; empty if there is none.
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

/// Returns a message about invalid options of `profile`; empty if there are none.
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
    constexpr int kMaxJobs = 256;
    bool ok = false;
    const int count = text.toInt(&ok);
    return ok && count >= 1 && count <= kMaxJobs;
}

/// Reads the limit, typed in megapixels; the default if the option is missing. @return false if the value is invalid.
bool ReadMaxPixels(const QCommandLineParser &parser, qint64 *pixels)
{
    constexpr int kDefaultMegapixels = 2000; // 32 GB as float RGBA
    constexpr int kMaxMegapixels = 1'000'000;
    const QString name = QStringLiteral("max-megapixels");
    bool ok = true;
    const int megapixels = parser.isSet(name) ? parser.value(name).toInt(&ok) : kDefaultMegapixels;
    *pixels = qint64(1'000'000) * megapixels;
    return ok && megapixels >= 1 && megapixels <= kMaxMegapixels;
}

/// Reads a shard such as "2/16".
bool ReadShard(const QString &text, Shard *shard)
{
    bool isIndex = false, isCount = false;
    shard->index = text.section(QLatin1Char('/'), 0, 0).toInt(&isIndex);
    shard->count = text.section(QLatin1Char('/'), 1).toInt(&isCount);
    return isIndex && isCount && shard->index >= 1 && shard->index <= shard->count;
}

/// Returns a hint about a picture whose name was parsed as an option; empty if there is none.
QString HintAboutDashes(const QStringList &arguments)
{
    for (const QString &argument : arguments) {
        if (argument.startsWith(QLatin1Char('-')) && QFileInfo::exists(argument))
            return QStringLiteral(" There is a file \"%1\": names that begin with a dash go after '--'.").arg(argument);
    }
    return QString();
}

CommandLine ReadHelp(const QCommandLineParser &parser)
{
    const QString command = QStringLiteral("vitrelux help");
    const QStringList names = parser.positionalArguments();
    if (const QString exclusion =
            FindExclusion(parser, {{"man", "completion"}, {"man", "names"}, {"completion", "names"}});
        !exclusion.isEmpty())
        return Refuse(command, exclusion);
    if (parser.isSet(QStringLiteral("names")))
        return PrintText(NamesOfCommands());
    if (parser.isSet(QStringLiteral("completion"))) {
        const QString script = Completion(parser.value(QStringLiteral("completion")));
        return script.isEmpty() ? Refuse(command, QStringLiteral("'--completion SHELL' needs bash, zsh or fish."))
                                : PrintText(script);
    }
    const VerbRow *verb = names.isEmpty() ? nullptr : FindVerb(names.first());
    if (!names.isEmpty() && !verb)
        return Refuse(command, QStringLiteral("unknown command '%1'.").arg(names.first()));
    if (names.size() > 1)
        return Refuse(command, QStringLiteral("only one command can be described at a time."));
    if (parser.isSet(QStringLiteral("man")))
        return PrintText(ManPage(verb));
    return PrintText(verb ? VerbHelp(*verb, false) : ProgramHelp());
}

CommandLine ParseVerb(const VerbRow &verb, const QStringList &arguments)
{
    QCommandLineParser parser;
    AddOptions(&parser, verb.verb);
    const QString command = QLatin1String("vitrelux ") + Latin(verb.name);
    if (!parser.parse(arguments))
        return Refuse(command, parser.errorText() + HintAboutDashes(arguments));
    if (parser.isSet(QStringLiteral("help")))
        return PrintText(VerbHelp(verb, true));
    if (const QString empty = FindEmptyValue(parser, verb.verb); !empty.isEmpty())
        return Refuse(command, QStringLiteral("'%1' needs a non-empty value.").arg(empty));
    const bool isListed = verb.verb == Verb::Correct && parser.isSet(QStringLiteral("files-from"));
    const bool isOptional = verb.operand[0] == '[';
    if (parser.positionalArguments().isEmpty() && !isListed && !isOptional)
        return Refuse(command, QStringLiteral("no files given."));
    if (parser.positionalArguments().contains(QString()))
        return Refuse(command, QStringLiteral("a file name is empty."));

    if (verb.verb == Verb::Help)
        return ReadHelp(parser);
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
    if (!ReadMaxPixels(parser, &line.maxPixels))
        return Refuse(command, QStringLiteral("'--max-megapixels N' needs a whole number from 1 to 1000000."));
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
    const OutputNaming &naming = line.correct.outputs;
    if (const QString fault = FaultOfOutputNames(naming, SuffixesOfFormat(FormatOf(parser))); !fault.isEmpty())
        return Refuse(command, QStringLiteral("the output name '%1' %2.").arg(naming.pattern + naming.ending, fault));
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
        return ParseVerb(*verb, arguments); // the parser ignores the first argument, usually a program's name
    if (first.startsWith(QLatin1Char('-')))
        return Refuse(program, QStringLiteral("unknown option '%1' where a command was expected.").arg(first));
    return Refuse(program, QStringLiteral("unknown command '%1'.").arg(first));
}
