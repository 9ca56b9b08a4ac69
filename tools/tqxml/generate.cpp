// Makes the completions and the manual page from the description of the command line.
//
//     tqxml_generate FILE bash|zsh|fish      writes a completion
//     tqxml_generate FILE man TEMPLATE       writes the template, with the synopsis and the options
//                                            in place of the comments that ask for them

#include "listings.h"
#include "verbs.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <fstream>
#include <iostream>

namespace {

std::string replaced(std::string text, const std::string &old, const std::string &replacement)
{
    for (size_t at = text.find(old); at != std::string::npos;
         at = text.find(old, at + replacement.size())) {
        text.replace(at, old.size(), replacement);
    }
    return text;
}

template<typename Words>
std::string joined(const Words &words, const std::string &separator)
{
    std::string text;
    for (const auto &word : words) {
        text += (text.empty() ? "" : separator) + std::string(word);
    }
    return text;
}

// "--format" and "-f".
std::vector<std::string> spellings(const Option &option)
{
    std::vector<std::string> all { std::string("--") + option.name };
    if (option.letter) {
        all.push_back(std::string("-") + option.letter);
    }
    return all;
}

std::vector<const Option *> optionsOf(const Verb &verb)
{
    std::vector<const Option *> options = verb.options;
    options.insert(options.end(), generalOptions().begin(), generalOptions().end());
    return options;
}

std::vector<std::string> longNames(const std::vector<const Option *> &options)
{
    std::vector<std::string> names;
    names.reserve(options.size());
    for (const Option *option : options) {
        names.push_back(spellings(*option).front());
    }
    return names;
}

// The options with a value, each once, in the order of the verbs.
std::vector<const Option *> optionsWithValue()
{
    std::vector<const Option *> found;
    for (const Verb &verb : verbs()) {
        for (const Option *option : verb.options) {
            const auto isSame = [option](const Option *other) {
                return std::strcmp(option->name, other->name) == 0;
            };
            if (option->value && std::none_of(found.begin(), found.end(), isSame)) {
                found.push_back(option);
            }
        }
    }
    return found;
}

// "--format|-f|--to": the options with a value, as a pattern of a shell.
std::string patternOfValues(const std::string &separator)
{
    std::vector<std::string> all;
    for (const Option *option : optionsWithValue()) {
        const std::vector<std::string> names = spellings(*option);
        all.insert(all.end(), names.begin(), names.end());
    }
    return joined(all, separator);
}

std::vector<std::string> verbNames()
{
    std::vector<std::string> names;
    for (const Verb &verb : verbs()) {
        names.emplace_back(verb.name);
    }
    return names;
}

// The kinds of items that have columns: what "tqxml list", the first verb, accepts.
const std::vector<const char *> &kinds() { return verbs().front().arguments.front().words; }

// The columns of all kinds.
std::vector<std::string> allColumns()
{
    std::vector<std::string> all;
    for (const char *kind : kinds()) {
        for (const std::string &name : columnNamesOf(kind)) {
            if (std::find(all.begin(), all.end(), name) == all.end()) {
                all.push_back(name);
            }
        }
    }
    return all;
}

// --- bash ---
//
// The function _tqxml, which bash calls, first looks for the verb, the kind of items (the argument
// after it) and the count of words before the cursor. Then it sets what is offered: words, and in a
// list with commas the prefix that is typed already; or files=1.

// What is offered for an argument or a value.
std::string bashOffer(Form form, const std::vector<const char *> &words)
{
    switch (form) {
    case Form::Words:
        return " words='" + joined(words, " ") + "'";
    case Form::Files:
        return " files=1";
    case Form::ColumnNames:
        return " words=$(_tqxml_columns \"$kind\") prefix=${word%\"${word##*,}\"}";
    case Form::Text:
        break;
    }
    return "";
}

std::string bashValues()
{
    std::string cases;
    for (const Option *option : optionsWithValue()) {
        cases += "    " + joined(spellings(*option), " | ") + ")" +
            bashOffer(option->form, option->words) + " ;;\n";
    }
    return cases;
}

std::string bashOptions()
{
    std::string cases =
        "        '') words='" + joined(longNames(optionsBeforeVerb()), " ") + "' ;;\n";
    for (const Verb &verb : verbs()) {
        cases += std::string("        ") + verb.name + ") words='" +
            joined(longNames(optionsOf(verb)), " ") + "' ;;\n";
    }
    return cases;
}

std::string bashArguments()
{
    std::string cases = "        0,) words='" + joined(verbNames(), " ") + "' ;;\n";
    for (const Verb &verb : verbs()) {
        for (size_t i = 0; i < verb.arguments.size(); ++i) {
            const Argument &argument = verb.arguments[i];
            cases += "        " + (argument.isRepeated ? "*" : std::to_string(i + 1)) + ',' +
                verb.name + ")" + bashOffer(argument.form, argument.words) + " ;;\n";
        }
    }
    return cases;
}

std::string bashColumns()
{
    std::string text = R"(# _tqxml_columns KIND: the columns of that kind of items, or of all.
_tqxml_columns()
{
    case $1 in
)";
    for (const char *kind : kinds()) {
        text +=
            std::string("    ") + kind + ") echo '" + joined(columnNamesOf(kind), " ") + "' ;;\n";
    }
    return text + "    *) echo '" + joined(allColumns(), " ") + "' ;;\n    esac\n}\n";
}

// Lines that begin with 8 blanks, with 12.
std::string indented(const std::string &lines)
{
    return replaced(lines, "        ", "            ");
}

std::string bash()
{
    return R"(# bash completion for tqxml; made from the description of its options

)" + bashColumns() +
        R"(
_tqxml()
{
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]}
    local verb="" kind="" words="" files="" prefix="" count=0 i
    for ((i = 1; i < COMP_CWORD; i++)); do
        case ${COMP_WORDS[i]} in
        )" +
        patternOfValues(" | ") + R"() ((i++)) ;;
        -?*) ;;
        *)
            ((count != 0)) || verb=${COMP_WORDS[i]}
            ((count != 1)) || kind=${COMP_WORDS[i]}
            ((++count))
            ;;
        esac
    done
    case $before in
)" + bashValues() +
        R"(    *)
        if [[ $word == -* ]]; then
            case $verb in
)" + indented(bashOptions()) +
        R"(            esac
        else
            case $count,$verb in
)" + indented(bashArguments()) +
        R"(            esac
        fi
        ;;
    esac
    if [[ $files ]]; then
        compopt -o filenames 2>/dev/null # quotes names, and puts a slash behind folders
        mapfile -t COMPREPLY < <(compgen -f -- "$word")
    else
        mapfile -t COMPREPLY < <(compgen -W "$words" -P "$prefix" -- "${word#"$prefix"}")
    fi
}
complete -F _tqxml tqxml
)";
}

// --- zsh ---
//
// The functions call _arguments, which takes one text for each option and argument:
// 'NAME[DESCRIPTION]:VALUE:ACTION'. The action says what is offered; a blank is nothing.

std::string zshAction(Form form, const std::vector<const char *> &words)
{
    switch (form) {
    case Form::Words:
        return '(' + joined(words, " ") + ')';
    case Form::Files:
        return "_files";
    case Form::ColumnNames:
        return "_tqxml_columns";
    case Form::Text:
        break;
    }
    return " ";
}

// "'*--format[how rows are printed]:FORMAT:(table xml)'", for each form of the option.
std::string zshOptions(const std::vector<const Option *> &options, const std::string &indentation)
{
    std::string lines;
    for (const Option *option : options) {
        for (const std::string &spelling : spellings(*option)) {
            const std::string mayBeRepeated = option->value ? "*" : "";
            std::string line = mayBeRepeated + spelling + '[' + option->brief + ']';
            if (option->value) {
                line += ':' + replaced(option->value, ":", "\\:") + ':' +
                    zshAction(option->form, option->words);
            }
            lines += " \\\n" + indentation;
            lines += '\'' + line + '\'';
        }
    }
    return lines;
}

std::string zshArguments(const Verb &verb)
{
    std::string lines;
    for (size_t i = 0; i < verb.arguments.size(); ++i) {
        const Argument &argument = verb.arguments[i];
        lines += " \\\n                '" + (argument.isRepeated ? "*" : std::to_string(i + 1)) +
            ':' + replaced(argument.name, ":", "\\:") + ':' +
            zshAction(argument.form, argument.words) + '\'';
    }
    return lines;
}

// The columns of the kind that is typed, after those that are typed.
std::string zshColumns()
{
    std::string text = "_tqxml_columns() {\n    local -a names\n";
    text += "    case ${words[(r)(" + joined(kinds(), "|") + ")]} in\n";
    for (const char *kind : kinds()) {
        text +=
            std::string("    ") + kind + ") names=(" + joined(columnNamesOf(kind), " ") + ") ;;\n";
    }
    return text + "    *) names=(" + joined(allColumns(), " ") + R"() ;;
    esac
    compset -P '*,'
    compadd -a names
}
)";
}

std::string zsh()
{
    std::string text = R"(#compdef tqxml
# zsh completion for tqxml; made from the description of its options
)" + zshColumns() +
        R"(_tqxml() {
    local curcontext=$curcontext state line
    typeset -A opt_args
    local -a verbs
    _arguments -C)" +
        zshOptions(optionsBeforeVerb(), "        ") + R"( \
        '1:verb:->verb' \
        '*::argument:->arguments'
    case $state in
    verb)
        verbs=(
)";
    for (const Verb &verb : verbs()) {
        text += std::string("            '") + verb.name + ':' + verb.brief + "'\n";
    }
    text += R"(        )
        _describe verb verbs
        ;;
    arguments)
        case $words[1] in
)";
    for (const Verb &verb : verbs()) {
        text += std::string("        ") + verb.name + ")\n            _arguments" +
            zshOptions(optionsOf(verb), "                ") + zshArguments(verb) +
            "\n            ;;\n";
    }
    return text + R"(        esac
        ;;
    esac
}
[[ $funcstack[1] != _tqxml ]] || _tqxml "$@"
)";
}

// --- fish ---
//
// One line for each verb, argument and option, with the condition under which it is offered.

std::string fishOption(const Option &option, const std::string &condition)
{
    std::string line = "complete -c tqxml -n '" + condition + "' -l " + option.name;
    line += option.letter ? std::string(" -s ") + option.letter : "";
    if (option.value) {
        line += option.form == Form::Files ? " -r -F" : " -x";
        line += option.form == Form::ColumnNames ? " -a '(__tqxml_columns)'" : "";
        line += option.form == Form::Words ? " -a '" + joined(option.words, " ") + '\'' : "";
    }
    return line + " -d '" + option.brief + "'\n";
}

std::string fishVerb(const Verb &verb)
{
    const std::string condition = std::string("__tqxml_is ") + verb.name;
    std::string lines;
    for (size_t i = 0; i < verb.arguments.size(); ++i) {
        const Argument &argument = verb.arguments[i];
        const bool isFile = argument.form == Form::Files;
        const std::string place = argument.isRepeated ? "" : ' ' + std::to_string(i + 1);
        if (argument.form != Form::Text) {
            lines += "complete -c tqxml -n '" + condition;
            lines +=
                place + "' " + (isFile ? "-F" : "-a '" + joined(argument.words, " ") + '\'') + '\n';
        }
    }
    for (const Option *option : optionsOf(verb)) {
        lines += fishOption(*option, condition);
    }
    return lines;
}

std::string fishColumns()
{
    std::string text = R"(# The columns of the kind that is typed, after those that are typed.
function __tqxml_columns
    set -l words (__tqxml_words)
    set -l names
    switch "$words[2]"
)";
    for (const char *kind : kinds()) {
        text += std::string("        case ") + kind + "\n            set names " +
            joined(columnNamesOf(kind), " ") + '\n';
    }
    return text + "        case '*'\n            set names " + joined(allColumns(), " ") + R"(
    end
    set -l typed (commandline -ct | string replace -r '[^,]*$' '')
    string join \n -- "$typed"$names
end
)";
}

// What the conditions of fish call.
std::string fishFunctions()
{
    return R"(# fish completion for tqxml; made from the description of its options

# The words before the cursor that are no options, nor values of options.
function __tqxml_words
    set -l isValue 0
    for word in (commandline -opc)[2..-1]
        if test $isValue = 1
            set isValue 0
            continue
        end
        switch $word
            case )" +
        patternOfValues(" ") + R"(
                set isValue 1
            case - # standard input
                echo $word
            case '-*'
            case '*'
                echo $word
        end
    end
end

# __tqxml_is VERB [COUNT]: whether that is the verb, and so many words are there.
function __tqxml_is
    set -l words (__tqxml_words)
    test "$words[1]" = $argv[1]; or return 1
    test (count $argv) = 1; or test (count $words) = $argv[2]
end

)" + fishColumns() +
        "\ncomplete -c tqxml -f\n";
}

std::string fish()
{
    std::string text = fishFunctions();
    const std::string isFirst = "test (count (__tqxml_words)) = 0";
    for (const Verb &verb : verbs()) {
        text +=
            "complete -c tqxml -n '" + isFirst + "' -a " + verb.name + " -d '" + verb.brief + "'\n";
    }
    for (const Option *option : optionsBeforeVerb()) {
        text += fishOption(*option, isFirst);
    }
    for (const Verb &verb : verbs()) {
        text += fishVerb(verb);
    }
    return text;
}

// --- The manual page ---

std::string roff(const std::string &text) { return replaced(text, "--", "\\-\\-"); }

// Names of arguments, which are in capitals, in italics.
std::string withItalics(const std::string &text)
{
    std::string marked;
    bool isItalic = false;
    for (const char c : text) {
        const bool isCapital = std::isupper(static_cast<unsigned char>(c)) != 0;
        if (isCapital != isItalic) {
            marked += isCapital ? "\\fI" : "\\fR";
            isItalic = isCapital;
        }
        marked += c;
    }
    return roff(marked) + (isItalic ? "\\fR" : "");
}

std::string synopsis()
{
    std::string text;
    for (const Verb &verb : verbs()) {
        text += (text.empty() ? "" : ".br\n") + std::string(".B tqxml ") +
            replaced(verb.name, "-", "\\-") + '\n' + withItalics(verb.synopsis) + '\n';
    }
    return text;
}

std::string manOptions(const std::vector<const Option *> &options)
{
    std::string text;
    for (const Option *option : options) {
        text += ".TP\n";
        text += option->letter ? std::string("\\fB\\-") + option->letter + "\\fR, " : "";
        text += "\\fB\\-\\-" + replaced(option->name, "-", "\\-") + "\\fR";
        text += option->value ? ' ' + withItalics(option->value) : "";
        text += '\n' + roff(helpOf(*option)) + '\n';
    }
    return text;
}

// What a comment of the template stands for; the line itself if it is none that asks.
std::string expanded(const std::string &line)
{
    if (line == ".\\\" SYNOPSIS") {
        return synopsis();
    }
    if (line == ".\\\" OPTIONS") {
        return manOptions(generalOptions());
    }
    for (const Verb &verb : verbs()) {
        if (line == ".\\\" OPTIONS " + replaced(verb.name, "-", "\\-")) {
            return manOptions(verb.options);
        }
    }
    return line + '\n';
}

std::string manual(std::istream &pattern)
{
    std::string text;
    for (std::string line; std::getline(pattern, line);) {
        text += expanded(line);
    }
    return text;
}

}  // namespace

int main(int argc, char **argv)
{
    if (argc < 3) {
        std::cerr << "usage: tqxml_generate FILE bash|zsh|fish|man [TEMPLATE]\n";
        return 2;
    }
    const std::string kind = argv[2];
    std::ofstream file(argv[1]);
    if (kind == "man" && argc > 3) {
        std::ifstream pattern(argv[3]);
        file << manual(pattern);
        return file.good() && pattern.eof() ? 0 : 1;
    }
    file << (kind == "bash" ? bash() : kind == "zsh" ? zsh() : fish());
    return file.good() ? 0 : 1;
}
