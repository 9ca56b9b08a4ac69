// A planner's view of a print shop's jobs.

#include "look.h"
#include "mainwindow.h"

#include "tqcommserver.h"

#include <QApplication>
#include <QCommandLineParser>

#include <cstdio>

int main(int argc, char *argv[])
{
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("jobboard"));
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Shows the jobs of a print shop."));
    const QCommandLineOption database(QStringLiteral("database"),
        QStringLiteral("The store: sqlite:PATH or postgresql://USER@HOST:PORT/DB; by default the "
                       "sample, in memory."),
        QStringLiteral("URL"), QStringLiteral("sqlite::memory:"));
    parser.addOption(database);
    parser.addHelpOption();
    parser.process(application);

    TQCommServer server(parser.value(database).toUtf8().constData());
    if (*server.errorText()) {
        std::fprintf(stderr, "jobboard: %s\n", server.errorText());
        return 1;
    }
    setUpLook();
    MainWindow window(server);
    window.show();
    return QApplication::exec();
}
