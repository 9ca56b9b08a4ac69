#include "commandline.h"

#include "nearest.h"
#include "values.h"

#include <QCommandLineParser>

#include <algorithm>

namespace {

constexpr char DATABASE[] = "database";

QString text(const char *utf8) { return QString::fromUtf8(utf8); }

QStringList texts(const std::vector<const char *> &words)
{
    QStringList list;
    std::transform(words.begin(), words.end(), std::back_inserter(list), text);
    return list;
}

bool contains(const std::vector<const Option *> &options, const Option &wanted)
{
    return std::any_of(options.begin(), options.end(),
        [&wanted](const Option *option) { return qstrcmp(option->name, wanted.name) == 0; });
}

// One option of each name: verbs only differ in what an option is for.
std::vector<const Option *> allOptions()
{
    std::vector<const Option *> all = generalOptions();
    for (const Verb &verb : verbs()) {
        for (const Option *option : verb.options) {
            if (!contains(all, *option)) {
                all.push_back(option);
            }
        }
    }
    return all;
}

// The options of a verb; without a verb, those of all.
std::vector<const Option *> optionsOf(const Verb *verb)
{
    if (!verb) {
        return allOptions();
    }
    std::vector<const Option *> options = verb->options;
    const std::vector<const Option *> &general = generalOptions();
    options.insert(options.end(), general.begin(), general.end());
    return options;
}

QStringList spellings(const std::vector<const Option *> &options)
{
    QStringList names;
    for (const Option *option : options) {
        names << QStringLiteral("--") + text(option->name);
    }
    return names;
}

QStringList namesOf(const Option &option)
{
    return option.letter ? QStringList { text(option.letter), text(option.name) }
                         : QStringList { text(option.name) };
}

// Which data types have a hexadecimal number for a name, as "show" takes it.
bool isTypeNumber(const Verb &verb, const QString &word)
{
    return qstrcmp(verb.name, "show") == 0 && readType(word);
}

}  // namespace

CommandLine::CommandLine(const QStringList &arguments)
{
    parse(arguments);
    if (!m_options.contains(QStringLiteral("help"))) {
        checkOptions();
        checkArguments();
    }
}

void CommandLine::refuse(const QString &error)
{
    if (m_error.isEmpty()) {
        m_error = error;
    }
}

void CommandLine::parse(const QStringList &arguments)
{
    QCommandLineParser parser;
    for (const Option *option : allOptions()) {
        parser.addOption({ namesOf(*option), QString(), text(option->value) });
    }
    const bool isParsed = parser.parse(QStringList { QString() } + arguments);
    m_arguments = parser.positionalArguments();
    if (!m_arguments.isEmpty()) {
        findVerb(m_arguments.takeFirst());
    }
    const QStringList unknown = parser.unknownOptionNames();
    if (!unknown.isEmpty()) {
        const QString dashes(unknown.first().size() == 1 ? 1 : 2, QLatin1Char('-'));
        const QStringList known = spellings(optionsOf(m_verb));
        refuse(noSuch(QStringLiteral("option"), dashes + unknown.first(), known));
    } else if (!isParsed) {
        const QString &last = arguments.last();
        refuse(last.startsWith(QLatin1Char('-')) && !last.contains(QLatin1Char('='))
                ? QStringLiteral("%1 needs a value").arg(last)
                : parser.errorText());
    }
    for (const Option *option : allOptions()) {
        if (parser.isSet(text(option->name))) {
            m_options[text(option->name)] =
                option->value ? parser.values(text(option->name)) : QStringList();
        }
    }
}

void CommandLine::findVerb(const QString &name)
{
    QStringList names;
    for (const Verb &verb : verbs()) {
        names << text(verb.name);
        if (name == names.last()) {
            m_verb = &verb;
        }
    }
    if (!m_verb) {
        refuse(noSuch(QStringLiteral("verb"), name, names));
    }
}

void CommandLine::checkOptions()
{
    const std::vector<const Option *> allowed = optionsOf(m_verb);
    for (const Option *option : allOptions()) {
        const QString name = text(option->name);
        if (isSet(option->name) && !contains(allowed, *option)) {
            refuse(QStringLiteral("%1 has no option --%2").arg(text(m_verb->name), name));
        }
        const QStringList given = values(option->name);
        const QStringList words = texts(option->words);
        for (const QString &value : given) {
            if (option->form == Form::Words && !words.contains(value)) {
                refuse(noSuch(name, value, words));
            }
        }
    }
}

void CommandLine::checkArguments()
{
    if (!m_verb || m_arguments.isEmpty()) {
        return;
    }
    const int most = int(m_verb->arguments.size());
    if (m_arguments.size() > most && !m_verb->arguments.back().isRepeated) {
        refuse(QStringLiteral("\"%1\" is one argument too many").arg(m_arguments.at(most)));
    }
    const Argument &first = m_verb->arguments.front();
    const QString &word = m_arguments.first();
    const QStringList words = texts(first.words);
    if (first.form != Form::Words || words.contains(word) || isTypeNumber(*m_verb, word)) {
        return;
    }
    // "there is no list "job""
    const QString name = text(m_verb->name);
    const QString kind = text(first.name).toLower();
    refuse(noSuch(kind == QLatin1String("kind") ? name : kind, word, words));
}

bool CommandLine::isSet(const char *option) const { return m_options.contains(text(option)); }

QString CommandLine::value(const char *option) const
{
    const QStringList given = values(option);
    return given.isEmpty() ? QString() : given.last();
}

QStringList CommandLine::values(const char *option) const { return m_options.value(text(option)); }

QByteArray CommandLine::store() const
{
    if (isSet(DATABASE)) {
        return databaseUrl(value(DATABASE));
    }
    const QString preset = qEnvironmentVariable(DATABASE_VARIABLE);
    return preset.isEmpty() ? sampleUrl() : databaseUrl(preset);
}

QStringList CommandLine::argumentsWithDatabase() const
{
    return isSet(DATABASE) ? QStringList { value(DATABASE) } + m_arguments : m_arguments;
}
