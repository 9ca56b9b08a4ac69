#ifndef STREAMS_H
#define STREAMS_H

#include <QByteArray>
#include <QString>

/// Opens closed standard streams, so that no file opened later gets their descriptors.
void claimStandardStreams();

/// Writes everything; returns 0 or errno.
int writeTo(int descriptor, const QByteArray &bytes);
/// The text for such an error number.
QString reasonOf(int error);

/// Writes everything to standard output and returns the exit code. Reports errors, except that a
/// reader may close its pipe early.
int writeOutput(const QByteArray &bytes);

/// Writes "tqxml: " and the message to standard error, as one line, without passwords that are part
/// of an argument.
void note(const QString &message);

/// Reports an error and returns the exit code for it.
int fail(const QString &message);

/// Ends the process with exit code 1 and that line on standard error. Allocates no memory and may
/// be called in a signal handler.
[[noreturn]] void endNow(const char *line);

/// Reports an error with a second line that helps, and returns that exit code.
int complain(int exitCode, const QString &message, const QString &help);

/// A progress bar on standard error, shown only if that is a terminal.
class ProgressBar
{
public:
    explicit ProgressBar(const QString &label);
    /// Removes the bar.
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
