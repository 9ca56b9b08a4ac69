#include "command.h"
#include "streams.h"

#include "tqxml_version.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFile>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <iterator>
#include <new>

namespace {

constexpr const Command *COMMANDS[] = {
    &LIST_COMMAND,
    &SHOW_COMMAND,
    &CONVERT_COMMAND,
    &INIT_COMMAND,
    &IMPORT_ICC_COMMAND,
};

constexpr char PURPOSE[] = "Looks into stores of publishing data, and converts items of them.";
constexpr char CLOSING[] =
    "\nA DATABASE is the path of a store, sqlite:PATH or\n"
    "postgresql://USER@HOST:PORT/DB. Exit codes: 0 done, 1 failed, 2 misused.\n"
    "For more, see \"tqxml COMMAND --help\" and the manual page tqxml(1).\n";

const QString HELP = QStringLiteral("help");
const QString VERSION = QStringLiteral("version");

QString generalUsage()
{
    QString usage = QStringLiteral("usage: tqxml ");
    for (const Command *command : COMMANDS) {
        usage += QLatin1String(command->name) + QLatin1Char('|');
    }
    usage.chop(1);
    return usage + QLatin1String(" ... | --help | --version");
}

int misuse(const QString &message) { return complain(MISUSED, message, generalUsage()); }

int printHelp()
{
    QString text = QLatin1String(PURPOSE) + QLatin1String("\n\n");
    for (const Command *command : COMMANDS) {
        text += usageOf(*command) + QLatin1Char('\n');
    }
    return writeOutput((text + QLatin1String(CLOSING)).toUtf8());
}

int printHelp(const Command &command)
{
    const QString text = usageOf(command) + QLatin1String("\n\n") + QLatin1String(command.help) +
        QLatin1String("  -h, --help             Print this and stop.\n");
    return writeOutput(text.toUtf8());
}

void declareHelp(QCommandLineParser &parser)
{
    parser.addOption({ { QStringLiteral("h"), HELP }, QString() });
}

int run(const Command &command, const QStringList &arguments)
{
    QCommandLineParser parser;
    declareHelp(parser);
    command.declareOptions(parser);
    if (!parser.parse(arguments)) {
        return misuse(command, parser.errorText());
    }
    return parser.isSet(HELP) ? printHelp(command) : command.run(command, parser);
}

// Runs a command line without a command, such as "tqxml --help".
int runWithout(const QStringList &arguments)
{
    QCommandLineParser parser;
    declareHelp(parser);
    parser.addOption({ { QStringLiteral("v"), VERSION }, QString() });
    if (!parser.parse(arguments)) {
        return misuse(parser.errorText());
    }
    if (parser.isSet(HELP)) {
        return printHelp();
    }
    if (parser.isSet(VERSION)) {
        return writeOutput(QByteArrayLiteral("tqxml " TQXML_VERSION "\n"));
    }
    return misuse(QStringLiteral("no command is given"));
}

int run(const QStringList &arguments)
{
    if (arguments.size() < 2 || arguments.at(1).startsWith(QLatin1Char('-'))) {
        return runWithout(arguments);
    }
    const QString &name = arguments.at(1);
    const auto found = std::find_if(std::begin(COMMANDS), std::end(COMMANDS),
        [&name](const Command *command) { return name == QLatin1String(command->name); });
    if (found == std::end(COMMANDS)) {
        return misuse(QStringLiteral("there is no command \"%1\"").arg(name));
    }
    return run(**found, arguments.mid(1));
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

QString usageOf(const Command &command)
{
    return QStringLiteral("usage: tqxml ") + QLatin1String(command.name) + QLatin1Char(' ') +
        QLatin1String(command.synopsis);
}

int misuse(const Command &command, const QString &message)
{
    return complain(MISUSED, message, usageOf(command));
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
            return misuse(
                QStringLiteral("an argument is not UTF-8: \"%1\"").arg(QString::fromUtf8(argv[i])));
        }
    }
    return run(QCoreApplication::arguments());
}
