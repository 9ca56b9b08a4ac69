#ifndef STREAMS_H
#define STREAMS_H

#include <QByteArray>
#include <QString>

/// Fills the place of closed standard streams, so that no file opened later is taken for one.
void claimStandardStreams();

/// Writes everything; 0, or the number of the error.
int writeTo(int descriptor, const QByteArray &bytes);
/// What an error of that number is.
QString reasonOf(int error);

/// Writes everything to standard output, and returns the exit code. A reader that has gone is no
/// failure; all other errors are reported.
int writeOutput(const QByteArray &bytes);

/// Writes "tqxml: " and the message to standard error, as one line. Passwords that are part of an
/// argument of the command are left out.
void note(const QString &message);

/// Reports an error and returns the exit code for it.
int fail(const QString &message);

/// Ends the process as failed, with that line on standard error. Uses no memory, and may be called
/// by a signal handler.
[[noreturn]] void endNow(const char *line);

/// Reports an error with a further line that helps, and returns that exit code.
int complain(int exitCode, const QString &message, const QString &help);

/// How much of a long operation is done, on standard error when that is a terminal.
class ProgressBar
{
public:
    explicit ProgressBar(const QString &label);
    /// Takes the bar off the screen.
    ~ProgressBar();
    ProgressBar(const ProgressBar &) = delete;
    ProgressBar &operator=(const ProgressBar &) = delete;

    void show(size_t done, size_t total);

private:
    const QString m_label;
    const bool m_isVisible;
    int m_percent = -1;  // as shown; negative before the first
};

#endif
