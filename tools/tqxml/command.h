#ifndef COMMAND_H
#define COMMAND_H

#include <QString>

class QCommandLineParser;

/// Exit codes.
constexpr int DONE = 0;
constexpr int FAILED = 1;
constexpr int MISUSED = 2;

/// One of the things that tqxml does.
struct Command
{
    const char *name;
    const char *synopsis;  ///< arguments, as in the usage line
    const char *help;  ///< what it does and its options, in lines
    void (*declareOptions)(QCommandLineParser &parser);
    int (*run)(const Command &command, const QCommandLineParser &parser);
};

extern const Command LIST_COMMAND;
extern const Command SHOW_COMMAND;
extern const Command CONVERT_COMMAND;
extern const Command INIT_COMMAND;
extern const Command IMPORT_ICC_COMMAND;

/// Usage of one command, one line without its end.
QString usageOf(const Command &command);

/// Reports a wrong command line, with the usage; returns the exit code.
int misuse(const Command &command, const QString &message);

#endif
