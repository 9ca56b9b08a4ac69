#include "command.h"
#include "commandline.h"
#include "rowwriter.h"
#include "streams.h"
#include "values.h"

#include "tqstore.h"

#include <QFile>

#include <csignal>

#include <unistd.h>

namespace {

int finish(bool ok, const std::string &error)
{
    return ok ? DONE : fail(QString::fromStdString(error));
}

constexpr unsigned PATIENCE = 2;  // seconds from a signal to the end

volatile std::sig_atomic_t isStopped = 0;

void stop(int)
{
    if (isStopped == 0) {
        isStopped = 1;
        ::alarm(PATIENCE);
    }
}

// Handles SIGALRM: the work did not stop, perhaps because a database client blocks.
void giveUp(int)
{
    const bool hasBar = ::isatty(STDERR_FILENO) != 0;
    endNow(hasBar ? "\r\033[Ktqxml: interrupted\n" : "tqxml: interrupted\n");
}

// Leaves alone what is ignored already, as under nohup. Signals interrupt blocking calls.
void handleSignals()
{
    struct sigaction action = {};
    struct sigaction before = {};
    action.sa_handler = stop;
    for (const int signal : { SIGINT, SIGTERM, SIGHUP }) {
        if (::sigaction(signal, nullptr, &before) == 0 && before.sa_handler != SIG_IGN) {
            ::sigaction(signal, &action, nullptr);
        }
    }
    action.sa_handler = giveUp;
    ::sigaction(SIGALRM, &action, nullptr);
    sigset_t alarms;
    ::sigemptyset(&alarms);
    ::sigaddset(&alarms, SIGALRM);
    ::sigprocmask(SIG_UNBLOCK, &alarms, nullptr);
}

// Shows the progress of the work, and stops it after a signal.
TQPROGRESS progressOf(ProgressBar &bar)
{
    handleSignals();
    return [&bar](size_t done, size_t total) {
        bar.show(done, total);
        return isStopped == 0;
    };
}

}  // namespace

int runInit(const CommandLine &line)
{
    const QStringList arguments = line.argumentsWithDatabase();
    if (arguments.size() != 1) {
        return misuse(line, QStringLiteral("give one database"));
    }
    bool isNumber = true;
    const QString jobs = line.value("jobs");
    const unsigned count = line.isSet("jobs") ? jobs.toUInt(&isNumber) : 0;
    if (!isNumber) {
        return misuse(line, QStringLiteral("\"%1\" is no number of jobs").arg(jobs));
    }
    const QByteArray url = databaseUrl(arguments.first());
    std::string error;
    bool ok = false;
    {
        ProgressBar bar(QStringLiteral("creating"));
        ok = line.isSet("jobs")
            ? TQCreateGeneratedStore(url.constData(), count, progressOf(bar), error)
            : TQCreateSampleStore(url.constData(), progressOf(bar), error);
    }
    return finish(ok, error);
}

int runImport(const CommandLine &line)
{
    const QStringList arguments = line.argumentsWithDatabase();
    if (arguments.size() < 2) {
        return misuse(line, QStringLiteral("give a database and files"));
    }
    std::vector<std::string> files;
    for (const QString &file : arguments.mid(1)) {
        files.push_back(QFile::encodeName(file).toStdString());
    }
    std::string error;
    std::vector<TQKEY_ELEMENT> keys;
    bool ok = false;
    {
        ProgressBar bar(QStringLiteral("importing"));
        ok = TQImportProfiles(
            databaseUrl(arguments.first()).constData(), files, progressOf(bar), error, &keys);
    }
    if (!ok) {
        return finish(ok, error);
    }
    std::vector<QStringList> rows;
    for (size_t i = 0; i < keys.size(); ++i) {
        rows.push_back({ keyText(keys[i]), arguments.at(int(i) + 1) });
    }
    Layout layout = layoutOf(line);
    layout.columns = { plainColumn(QStringLiteral("Key"), Kind::Key),
        plainColumn(QStringLiteral("File")) };
    return printRows(layout, rows);
}
