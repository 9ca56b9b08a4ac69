#ifndef COMMAND_H
#define COMMAND_H

#include <QString>

class CommandLine;
struct Layout;

/// Exit codes.
constexpr int DONE = 0;
constexpr int FAILED = 1;
constexpr int MISUSED = 2;

/// @{
/// The verbs. They return the exit code.
int runList(const CommandLine &line);
int runShow(const CommandLine &line);
int runConvert(const CommandLine &line);
int runInit(const CommandLine &line);
int runImport(const CommandLine &line);
/// @}

/// Prints to standard error what is wrong and where there is help; returns the exit code.
int misuse(const CommandLine &line, const QString &message);

/// The layout that the options ask for, without columns.
Layout layoutOf(const CommandLine &line);

#endif
