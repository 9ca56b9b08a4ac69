#include "help.h"

#include "listings.h"

#include <algorithm>
#include <sstream>

namespace {

constexpr size_t LINE_WIDTH = 79;
constexpr size_t TEXT_COLUMN = 27;  // where explanations start

// The text broken into lines, all but the first with that indentation.
std::string wrapped(const std::string &text, size_t indentation)
{
    std::istringstream words(text);
    std::string lines;
    size_t column = indentation;
    for (std::string word; words >> word;) {
        if (column != indentation && column + 1 + word.size() > LINE_WIDTH) {
            lines += '\n' + std::string(indentation, ' ');
            column = indentation;
        }
        lines += (column == indentation ? "" : " ") + word;
        column += word.size() + (column == indentation ? 0 : 1);
    }
    return lines + '\n';
}

// "  TERM      explanation"; a long term has a line of its own.
std::string entry(const std::string &term, const std::string &explanation)
{
    std::string start = "  " + term;
    if (start.size() + 1 > TEXT_COLUMN) {
        start += '\n' + std::string(TEXT_COLUMN, ' ');
    } else {
        start.resize(TEXT_COLUMN, ' ');
    }
    return start + wrapped(explanation, TEXT_COLUMN);
}

std::string entry(const Option &option)
{
    const std::string letter = option.letter ? std::string("-") + option.letter + ", " : "";
    return entry(letter + spelling(option), helpOf(option));
}

std::string entries(const std::vector<const Option *> &options)
{
    std::string text;
    for (const Option *option : options) {
        text += entry(*option);
    }
    return text;
}

// The columns of each kind, for a verb that has options for columns.
std::string columnsOf(const Verb &verb)
{
    const auto hasColumns = [](const Option *option) { return option->form == Form::ColumnNames; };
    if (std::none_of(verb.options.begin(), verb.options.end(), hasColumns)) {
        return "";
    }
    std::string text = "\nThe columns of each kind; \"--columns all\" prints all of them:\n";
    for (const char *kind : verb.arguments.front().words) {
        std::string names;
        for (const std::string &name : columnNamesOf(kind)) {
            names += (names.empty() ? "" : ", ") + name;
        }
        text += entry(kind, names);
    }
    return text;
}

}  // namespace

std::string generalHelp()
{
    std::string text = "usage: tqxml VERB [ARGUMENT]...\n\n"
                       "Looks into stores of publishing data, and converts items of them.\n\n";
    for (const Verb &verb : verbs()) {
        text += entry(verb.name, verb.brief);
    }
    return text + '\n' + entries(generalOptions()) +
        "\nA DATABASE is the path of a store, sqlite:PATH or\n"
        "postgresql://USER@HOST:PORT/DB. Exit codes: 0 done, 1 failed, 2 misused.\n"
        "For more, see \"tqxml help VERB\" and the manual page tqxml(1).\n";
}

std::string helpOn(const Verb &verb)
{
    std::string text = usageOf(verb) + "\n\n" + wrapped(verb.help, 0) + '\n';
    for (const Argument &argument : verb.arguments) {
        if (argument.form == Form::Words) {
            text += entry(argument.name, sentenceOf(argument.words));
        }
    }
    return text + entries(verb.options) + entries(generalOptions()) + columnsOf(verb);
}

std::string usageOf(const Verb &verb)
{
    return std::string("usage: tqxml ") + verb.name + ' ' + verb.synopsis;
}
