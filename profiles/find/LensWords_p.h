// Words of lens names: spellings, makers, and the marks that distinguish versions.
#pragma once

#include <QRegularExpression>
#include <QSet>
#include <QString>

#include <new>

/// Like QRegularExpression::match, but throws std::bad_alloc if memory runs out; match() would return no match.
inline QRegularExpressionMatch Matched(const QRegularExpression &pattern, const QString &text)
{
    QRegularExpressionMatch match = pattern.match(text);
    if (!match.isValid())
        throw std::bad_alloc();
    return match;
}

enum class Group {
    Generation,
    Stabilizer,
    Motor,
    Mount,
    Format,
    Letter,
    Distance, // not compared: names often omit it
    Circle,
    Line,
    Series,
    Formula,
    Design,
    Purpose
};

/// Comparison rule for the marks of a group.
enum class Rule {
    Same,       // names conflict unless they have the same marks of the group
    SameIfFull, // like Same, but a picture's lens name with only numbers, or a mount and numbers, matches all
    NotOther    // names conflict only if both have marks of the group and these differ
};

struct GroupRule {
    Group group;
    Rule rule;
    const char *name;
};

constexpr GroupRule kGroupRules[] = {
    {Group::Generation, Rule::Same, "generation"},
    {Group::Stabilizer, Rule::Same, "stabilizer"},
    {Group::Motor, Rule::NotOther, "focus motor"},
    {Group::Mount, Rule::NotOther, "mount"},
    {Group::Format, Rule::SameIfFull, "format"},
    {Group::Letter, Rule::SameIfFull, "type"},
    {Group::Circle, Rule::SameIfFull, "image circle"},
    {Group::Line, Rule::NotOther, "line"},
    {Group::Series, Rule::Same, "series"},
    {Group::Formula, Rule::NotOther, "optical design"},
    {Group::Design, Rule::Same, "design"},
    {Group::Purpose, Rule::Same, "kind"},
};

struct Mark {
    const char *word;
    Group group;
    const char *canonical; // common form of synonyms; null: the word itself
};

/// A word that distinguishes versions only in names that also contain another word, or in names of one maker. There it
/// becomes the mark "WITH-WORD".
struct ConditionalMark {
    const char *with, *word;
};

constexpr ConditionalMark kConditionalMarks[] = {
    {"nikon", "e"},          // electromagnetic aperture; elsewhere Sony's mount
    {"samyang", "af"},       // part of many other names; Samyang's lenses without it have the same numbers
    {"olympus", "r"},        // elsewhere an aperture ring
    {"leicam", "asph"},      // lenses for other mounts often omit it
    {"hsm", "contemporary"}, // newer than other lenses with the same numbers
    {"rf", "z"},             // power zoom; elsewhere Nikon's mount
};

/// Returns @p text with its case folded and its spellings unified, ready to be split into words.
QString FoldedLensName(const QString &text);

/// Returns the mark for a word of a folded name; null if the word is not a mark.
const Mark *FindMark(const QString &word);
/// Returns the members of @p marks, in canonical spelling, that belong to the group.
QSet<QString> MarksOfGroup(const QSet<QString> &marks, Group group);

/// Returns the maker identified by a word: its name, or a lens family that only it makes. Empty if there is none.
QString FindMaker(const QString &word);
/// Returns whether a word is a lens family's name that other makers use for the family's mount. Such a word identifies
/// the maker only if nothing else in the lens name does.
bool IsMountFamily(const QString &word);
/// Returns the maker of the mount among @p marks if other makers' lens names include that mark too ("E", "Z"); empty
/// otherwise.
QString MakerOfMount(const QSet<QString> &marks);
/// Returns whether a word describes glass, coatings or equipment. Many makers use such words, and other spellings of
/// the same lens may omit them.
bool IsDescription(const QString &word);
/// Returns whether a word doesn't help to identify a lens.
bool IsIdleWord(const QString &word);
