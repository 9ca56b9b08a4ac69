// A planner's view of a print shop's jobs.

#include "look.h"
#include "mainwindow.h"

#include "tqcommserver.h"

#include <QApplication>
#include <QCommandLineParser>

#include <cstdio>

namespace {

// Anything that is not a URL is the path of a file.
QByteArray databaseUrl(const QString &database)
{
    const bool isUrl =
        database.startsWith(QLatin1String("sqlite:")) || database.contains(QLatin1String("://"));
    return isUrl ? database.toUtf8() : QByteArrayLiteral("sqlite:") + database.toUtf8();
}

}  // namespace

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("jobboard"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Shows the jobs of a print shop."));
    const QCommandLineOption database(QStringLiteral("database"),
        QStringLiteral("The store: its path, sqlite:PATH or postgresql://USER@HOST:PORT/DB; by "
                       "default the sample, in memory."),
        QStringLiteral("DATABASE"), QStringLiteral("sqlite::memory:"));
    parser.addOption(database);
    parser.addHelpOption();
    parser.process(application);
    if (!parser.positionalArguments().isEmpty()) {
        std::fputs("jobboard: only options are taken; a store is named by --database\n", stderr);
        return 2;
    }

    TQCommServer server(databaseUrl(parser.value(database)).constData());
    if (server.failures() > 0) {
        std::fprintf(stderr, "jobboard: %s\n", server.errorText());
        return 1;
    }
    setUpLook();
    MainWindow window(server);
    window.show();
    return QApplication::exec();
}
