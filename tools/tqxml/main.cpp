#include "command.h"
#include "commandline.h"
#include "help.h"
#include "rowwriter.h"
#include "streams.h"

#include "tqxml_version.h"

#include <QCoreApplication>
#include <QFile>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iterator>
#include <new>

namespace {

constexpr QLatin1String HELP("help");

int runHelp(const CommandLine &line);

struct Runner
{
    const char *verb;
    int (*run)(const CommandLine &line);
};
constexpr Runner RUNNERS[] = {
    { "list", runList },
    { "show", runShow },
    { "convert", runConvert },
    { "init", runInit },
    { "import-icc", runImport },
    { "help", runHelp },
};

int print(const std::string &text) { return writeOutput(QByteArray::fromStdString(text)); }

int runHelp(const CommandLine &line)
{
    const QString name = line.arguments().value(0);
    for (const Verb &verb : verbs()) {
        if (name == QLatin1String(verb.name)) {
            return print(helpOn(verb));
        }
    }
    return print(generalHelp());
}

int run(const QStringList &arguments)
{
    const CommandLine line(arguments);
    if (!line.error().isEmpty()) {
        return misuse(line, line.error());
    }
    if (line.isSet("help")) {
        return print(line.verb() ? helpOn(*line.verb()) : generalHelp());
    }
    if (line.isSet("version")) {
        return writeOutput(QByteArrayLiteral("tqxml " TQXML_VERSION "\n"));
    }
    if (!line.verb()) {
        return misuse(line, QStringLiteral("no verb is given"));
    }
    if (line.isSet("quiet")) {
        beQuiet();
    }
    const auto found =
        std::find_if(std::begin(RUNNERS), std::end(RUNNERS), [&line](const Runner &candidate) {
            return qstrcmp(line.verb()->name, candidate.verb) == 0;
        });
    Q_ASSERT(found != std::end(RUNNERS));
    return found->run(line);
}

// Called by operator new: an exception must not cross the event loop.
[[noreturn]] void endWithoutMemory() { endNow("tqxml: out of memory\n"); }

// Qt's containers allocate with malloc(), and throw std::bad_alloc themselves.
[[noreturn]] void endOnException()
{
    if (!std::current_exception()) {
        std::abort();
    }
    try {
        std::rethrow_exception(std::current_exception());
    } catch (const std::bad_alloc &) {
        endWithoutMemory();
    } catch (...) {
        std::abort();
    }
}

void discardMessage(QtMsgType, const QMessageLogContext &, const QString &) {}

}  // namespace

int misuse(const CommandLine &line, const QString &message)
{
    const QLatin1String name = line.verb() ? QLatin1String(line.verb()->name) : HELP;
    const QString verb = name == HELP ? QString() : QLatin1Char(' ') + name;
    return complain(MISUSED, message, QStringLiteral("See \"tqxml help%1\".").arg(verb));
}

Layout layoutOf(const CommandLine &line)
{
    Layout layout;
    layout.format = line.isSet("format") ? line.value("format") : QStringLiteral("table");
    layout.hasHeaders = !line.isSet("no-headers");
    layout.areChosen = line.isSet("columns");
    return layout;
}

int main(int argc, char **argv)
{
    std::set_new_handler(endWithoutMemory);
    std::set_terminate(endOnException);
    claimStandardStreams();
    std::signal(SIGPIPE, SIG_IGN);  // writing to a closed pipe fails instead
    qputenv("LC_ALL", "C.UTF-8");  // output and file names are UTF-8 in every locale
    qInstallMessageHandler(discardMessage);  // the command reports errors itself
    const QCoreApplication application(argc, argv);
    for (int i = 1; i < argc; ++i) {
        if (QFile::encodeName(QFile::decodeName(argv[i])) != argv[i]) {
            return misuse(CommandLine({}),
                QStringLiteral("an argument is not UTF-8: \"%1\"").arg(QString::fromUtf8(argv[i])));
        }
    }
    return run(QCoreApplication::arguments().mid(1));
}
