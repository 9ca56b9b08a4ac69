#include "streams.h"

#include "command.h"
#include "values.h"

#include <QCoreApplication>
#include <QFile>

#include <cerrno>
#include <cstring>

#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace {

constexpr int BAR_WIDTH = 40;
constexpr char CLEAR_LINE[] = "\r\033[K";
constexpr int PATIENCE = 1000;  // milliseconds without a progress bar
constexpr int BUFFER_SIZE = 1 << 16;

bool isQuiet = false;

QString line(QString message)
{
    const QStringList arguments = QCoreApplication::arguments()
        << qEnvironmentVariable(DATABASE_VARIABLE);
    for (const QString &argument : arguments) {
        message = withoutPassword(message, argument);
    }
    return QStringLiteral("tqxml: ") + printable(message) + QLatin1Char('\n');
}

}  // namespace

void claimStandardStreams()
{
    // Opened for the wrong direction, so that using the stream still fails.
    constexpr int MODES[] = { O_WRONLY, O_RDONLY, O_RDONLY };
    for (int descriptor = STDIN_FILENO; descriptor <= STDERR_FILENO; ++descriptor) {
        if (::fcntl(descriptor, F_GETFD) < 0) {
            ::open("/dev/null", MODES[descriptor]);  // takes the lowest free number
        }
    }
}

int writeTo(int descriptor, const QByteArray &bytes)
{
    const char *next = bytes.constData();
    const char *const end = next + bytes.size();
    while (next < end) {
        const ssize_t written = ::write(descriptor, next, size_t(end - next));
        if (written < 0 && errno != EINTR) {
            return errno;
        }
        next += qMax<ssize_t>(written, 0);
    }
    return 0;
}

QString reasonOf(int error) { return QString::fromUtf8(std::strerror(error)); }

int writeOutput(const QByteArray &bytes)
{
    Output output;
    output.write(bytes);
    output.flush();
    return output.code();
}

void Output::write(const QByteArray &bytes)
{
    m_buffer += bytes;
    if (m_buffer.size() >= BUFFER_SIZE) {
        flush();
    }
}

void Output::flush()
{
    const int error = m_isOpen ? writeTo(STDOUT_FILENO, m_buffer) : 0;
    m_buffer.resize(0);  // keeps the memory
    if (error != 0) {
        m_isOpen = false;
        m_code = error == EPIPE ? DONE
                                : fail(QStringLiteral("standard output: %1").arg(reasonOf(error)));
    }
}

int terminalWidth()
{
    winsize size = {};
    return ::isatty(STDOUT_FILENO) != 0 && ::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0
        ? int(size.ws_col)
        : 0;
}

void beQuiet() { isQuiet = true; }

void remark(const QString &message)
{
    if (!isQuiet) {
        note(message);
    }
}

void note(const QString &message) { writeTo(STDERR_FILENO, line(message).toUtf8()); }

int fail(const QString &message)
{
    note(message);
    return FAILED;
}

void endNow(const char *line)
{
    const ssize_t written = ::write(STDERR_FILENO, line, std::strlen(line));
    static_cast<void>(written);  // nowhere left to report an error
    ::_exit(FAILED);
}

int complain(int exitCode, const QString &message, const QString &help)
{
    writeTo(STDERR_FILENO, (line(message) + help + QLatin1Char('\n')).toUtf8());
    return exitCode;
}

ProgressBar::ProgressBar(const QString &label)
    : m_label(label), m_isVisible(!isQuiet && ::isatty(STDERR_FILENO) != 0)
{
    m_timer.start();
}

ProgressBar::~ProgressBar()
{
    if (m_percent >= 0) {
        writeTo(STDERR_FILENO, CLEAR_LINE);
    }
}

void ProgressBar::show(size_t done, size_t total)
{
    const int percent = total == 0 ? 100 : int(100.0 * double(done) / double(total));
    if (!m_isVisible || percent == m_percent || m_timer.elapsed() < PATIENCE) {
        return;
    }
    m_percent = percent;
    const int filled = BAR_WIDTH * percent / 100;
    const QString bar =
        QString(filled, QLatin1Char('#')) + QString(BAR_WIDTH - filled, QLatin1Char('.'));
    const QString text = QStringLiteral("%1 [%2] %3 %").arg(m_label, bar).arg(percent, 3);
    writeTo(STDERR_FILENO, QByteArray(CLEAR_LINE) + text.toUtf8());
}
