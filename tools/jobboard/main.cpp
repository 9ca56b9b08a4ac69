// A planner's view of a print shop's jobs.

#include "board.h"
#include "language.h"
#include "look.h"
#include "mainwindow.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QIcon>
#include <QSettings>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

const QString DATABASE = QStringLiteral("database");

// Anything that is not a URL is the path of a file.
QByteArray databaseUrl(const QString &database)
{
    const bool isUrl =
        database.startsWith(QLatin1String("sqlite:")) || database.contains(QLatin1String("://"));
    return isUrl ? database.toUtf8() : QByteArrayLiteral("sqlite:") + database.toUtf8();
}

QString translated(const char *text) { return QCoreApplication::translate("main", text); }

void setUp(QCommandLineParser &parser)
{
    QCoreApplication::setApplicationName(QStringLiteral("jobboard"));
    QCoreApplication::setOrganizationName(QStringLiteral("tqxml"));
    QCoreApplication::setApplicationVersion(QStringLiteral(TQXML_VERSION));
    parser.setApplicationDescription(
        translated(QT_TRANSLATE_NOOP("main", "Shows the jobs of a print shop.")));
    parser.addOption({ DATABASE,
        translated(QT_TRANSLATE_NOOP("main",
            "The store: its path, sqlite:PATH or postgresql://USER@HOST:PORT/DB; by default what "
            "TQXML_DATABASE names, or the sample, in memory.")),
        translated(QT_TRANSLATE_NOOP("main", "DATABASE")),
        qEnvironmentVariable("TQXML_DATABASE", QStringLiteral("sqlite::memory:")) });
    parser.addHelpOption();
    parser.addVersionOption();
}

// Answers --help and --version without a display; ends the program then.
void answerQuestions(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const Language language;
    QCommandLineParser parser;
    setUp(parser);
    parser.parse(QCoreApplication::arguments());
    if (parser.isSet(QStringLiteral("help"))) {
        parser.showHelp();
    } else if (parser.isSet(QStringLiteral("version"))) {
        parser.showVersion();
    }
}

}  // namespace

int main(int argc, char *argv[])
{
    answerQuestions(argc, argv);
    QApplication application(argc, argv);
    const Language language;
    QApplication::setDesktopFileName(QStringLiteral("example.tqxml.jobboard"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/jobboard/jobboard.png")));
    QCommandLineParser parser;
    setUp(parser);
    parser.process(application);
    if (!parser.positionalArguments().isEmpty()) {
        const QString complaint = translated(QT_TRANSLATE_NOOP(
            "main", "jobboard: only options are taken; a store is named by --database"));
        std::fprintf(stderr, "%s\n", qPrintable(complaint));
        return 2;
    }

    setUpLook();
    QSettings settings;
    auto window = std::make_unique<MainWindow>(databaseUrl(parser.value(DATABASE)), settings);
    window->show();
    const int code = QApplication::exec();
    window.reset();
    settings.sync();
    if (Board::hasLeftThreads()) {
        std::_Exit(code);  // the server does not answer, and nothing is left to do
    }
    return code;
}
