#ifndef VERBS_H
#define VERBS_H

#include <string>
#include <vector>

/// \file
/// What can be typed: the one description from which command lines are parsed, and help, manual
/// page and completions are made.

/// What an argument or the value of an option may be.
enum class Form { Text, Words, Files, ColumnNames };

struct Argument
{
    const char *name;  ///< as in help: "KIND"
    Form form;
    std::vector<const char *> words;  ///< all that it may be, when the form is Words
    bool isRepeated = false;  ///< only the last one
};

struct Option
{
    const char *name;  ///< without dashes
    const char *letter;  ///< the short form, or null
    const char *value;  ///< what the value is called in help; null for none
    Form form;
    std::vector<const char *> words;  ///< all values, when the form is Words
    /// One or more sentences. "%" stands for the words.
    const char *help;
    const char *brief;  ///< a few words for completions
};

struct Verb
{
    const char *name;
    const char *synopsis;  ///< the arguments, as in the usage line
    const char *brief;  ///< a few words for overviews
    const char *help;  ///< what it does: sentences
    std::vector<Argument> arguments;
    std::vector<const Option *> options;
};

/// All verbs, in the order of the help.
const std::vector<Verb> &verbs();
/// What can be typed with every verb, or without one.
const std::vector<const Option *> &generalOptions();

/// What can come before the verb: the store, and what every verb has.
std::vector<const Option *> optionsBeforeVerb();

/// The words of a list in a sentence: "a, b or c".
std::string sentenceOf(const std::vector<const char *> &words);
/// The help of an option, with its words.
std::string helpOf(const Option &option);
/// An option with its value, as in help: "--format FORMAT".
std::string spelling(const Option &option);

#endif
