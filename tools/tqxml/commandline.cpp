#include "commandline.h"

#include "columns.h"
#include "nearest.h"
#include "values.h"

#include <QCommandLineParser>

#include <algorithm>

namespace {

constexpr char DATABASE[] = "database";
constexpr QLatin1Char EQUALS('=');

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

const Verb *findVerb(const QString &name)
{
    const auto found = std::find_if(verbs().begin(), verbs().end(),
        [&name](const Verb &verb) { return name == QLatin1String(verb.name); });
    return found == verbs().end() ? nullptr : &*found;
}

QStringList verbNames()
{
    QStringList names;
    for (const Verb &verb : verbs()) {
        names << text(verb.name);
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

// States may be given as machine formats print them.
bool isStateNumber(const Option &option, const QString &word)
{
    return qstrcmp(option.name, "state") == 0 && !stateNumber(word).isEmpty();
}

// Without a verb, what may come before it is listed unless another option is near.
QString noOption(const Verb *verb, const QString &name)
{
    const QString dashes(name.size() == 1 ? 1 : 2, QLatin1Char('-'));
    QStringList known = spellings(optionsOf(verb));
    if (!verb && nearest(dashes + name, known).isNull()) {
        known = spellings(optionsBeforeVerb());
    }
    return noSuch(QStringLiteral("option"), dashes + name, known);
}

// Which option has no value, or one that it does not take.
QString wrongValue(const QStringList &arguments)
{
    for (const Option *option : allOptions()) {
        for (const QString &name : namesOf(*option)) {
            const QString typed = QLatin1String(name.size() == 1 ? "-" : "--") + name;
            const bool hasValue = std::any_of(arguments.begin(), arguments.end(),
                [&typed](const QString &word) { return word.startsWith(typed + EQUALS); });
            if (!option->value && hasValue) {
                return QStringLiteral("%1 takes no value").arg(typed);
            }
        }
    }
    return QStringLiteral("%1 needs a value").arg(arguments.last());
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
    const QString name = m_arguments.isEmpty() ? QString() : m_arguments.takeFirst();
    m_verb = findVerb(name);
    const QStringList unknown = parser.unknownOptionNames();
    if (!unknown.isEmpty()) {
        refuse(noOption(m_verb, unknown.first()));
    } else if (!isParsed) {
        refuse(wrongValue(arguments));
    } else if (!m_verb && !name.isNull()) {
        refuse(noSuch(QStringLiteral("verb"), name, verbNames()));
    }
    for (const Option *option : allOptions()) {
        if (parser.isSet(text(option->name))) {
            m_options[text(option->name)] =
                option->value ? parser.values(text(option->name)) : QStringList();
        }
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
            const bool isKnown = words.contains(value) || isStateNumber(*option, value);
            if (option->form == Form::Words && !isKnown) {
                refuse(noSuch(text(option->value).toLower(), value, words));
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
