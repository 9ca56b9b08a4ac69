#ifndef COMMAND_H
#define COMMAND_H

#include <QString>

class QCommandLineParser;

/// Exit codes.
constexpr int DONE = 0;
constexpr int FAILED = 1;
constexpr int MISUSED = 2;

/// A command of tqxml, such as "list".
struct Command
{
    const char *name;
    const char *synopsis;  ///< arguments, as in the usage line
    const char *help;  ///< what it does, and its options
    void (*declareOptions)(QCommandLineParser &parser);
    int (*run)(const Command &command, const QCommandLineParser &parser);
};

extern const Command LIST_COMMAND;
extern const Command SHOW_COMMAND;
extern const Command CONVERT_COMMAND;
extern const Command INIT_COMMAND;
extern const Command IMPORT_ICC_COMMAND;

/// The usage line of a command, without a line feed.
QString usageOf(const Command &command);

/// Prints a message and the usage to standard error; returns the exit code.
int misuse(const Command &command, const QString &message);

#endif
