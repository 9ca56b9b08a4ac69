#ifndef STREAMS_H
#define STREAMS_H

#include <QByteArray>
#include <QElapsedTimer>
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

/// Standard output, through a buffer.
class Output
{
public:
    void write(const QByteArray &bytes);
    void flush();
    /// False once the reader has closed its pipe, or writing has failed.
    bool isOpen() const { return m_isOpen; }
    /// The exit code: a closed pipe is no failure.
    int code() const { return m_code; }

private:
    QByteArray m_buffer;
    bool m_isOpen = true;
    int m_code = 0;
};

/// How many columns the terminal has that standard output is; 0 if it is none.
int terminalWidth();

/// Leaves out remarks and progress from now on.
void beQuiet();
/// Writes a remark, as note() does, unless there shall be none.
void remark(const QString &message);

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

/// A progress bar on standard error. It is shown only on a terminal, and only once the work has
/// taken a second.
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
    QElapsedTimer m_timer;
    int m_percent = -1;  // as shown; negative before the first
};

#endif
