// Words of lens names: spellings, makers, and the marks that distinguish versions.
#pragma once

#include <QRegularExpression>
#include <QSet>
#include <QString>

#include <new>

/// Like QRegularExpression::match, but throws std::bad_alloc where that would return no match for lack of memory.
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
    Circle,
    Line,
    Series,
    Formula,
    Design,
    Purpose
};

/// Comparison rule for the marks of a group.
enum class Rule {
    Same,       // both names have the same marks of the group, or they contradict
    SameIfFull, // as Same, but a picture's name of mount and numbers, or of only numbers, matches either
    NotOther    // contradict only if both names have marks and they differ
};

struct GroupRule {
    Group group;
    Rule rule;
    const char *name;
};

constexpr GroupRule kGroupRules[] = {
    {Group::Generation, Rule::Same, "generation"},   {Group::Stabilizer, Rule::Same, "stabilizer"},
    {Group::Motor, Rule::NotOther, "focus motor"},   {Group::Mount, Rule::NotOther, "mount"},
    {Group::Format, Rule::SameIfFull, "format"},     {Group::Letter, Rule::NotOther, "type"},
    {Group::Circle, Rule::NotOther, "image circle"}, {Group::Line, Rule::NotOther, "line"},
    {Group::Series, Rule::Same, "series"},           {Group::Formula, Rule::NotOther, "optical design"},
    {Group::Design, Rule::SameIfFull, "design"},     {Group::Purpose, Rule::Same, "kind"},
};

struct Mark {
    const char *word;
    Group group;
    const char *canonical; // shared by synonyms; null: the word
};

/// Words that distinguish versions only in names with another word, or of one maker. There they are the mark
/// "WITH-WORD".
struct OwnMark {
    const char *with, *word;
};

constexpr OwnMark kOwnMarks[] = {
    {"nikon", "e"},          // the aperture type; elsewhere Sony's mount
    {"samyang", "af"},       // elsewhere part of many names; its lenses without it have the same numbers
    {"olympus", "r"},        // elsewhere an aperture ring
    {"leicam", "asph"},      // lenses for other mounts often omit it
    {"hsm", "contemporary"}, // followed older lenses with the same numbers
};

/// Returns @p text with its case folded and its spellings unified, ready to be split into words.
QString FoldedLensName(const QString &text);

/// Returns the mark that a word of a folded name is; null if none.
const Mark *FindMark(const QString &word);
/// Returns the canonical marks of a group that are among @p marks.
QSet<QString> MarksOfGroup(const QSet<QString> &marks, Group group);

/// Returns the maker that a word names or implies, by its name or a family of lenses that only it makes; else empty.
QString FindMaker(const QString &word);
/// Whether other makers also name a mount by this family: it identifies the maker only if nothing else does.
bool IsMountFamily(const QString &word);
/// Returns the maker whose cameras have the mount among @p marks if only other makers' names leave it out; else empty.
QString MakerOfMount(const QSet<QString> &marks);
/// Whether a word describes glass, coatings or equipment. Many makers use it, and spellings of one lens omit it.
bool IsDescription(const QString &word);
/// Whether a word doesn't help to identify a lens.
bool IsIdleWord(const QString &word);
