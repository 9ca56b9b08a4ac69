#ifndef TQXML_TESTS_POSTGRES_H
#define TQXML_TESTS_POSTGRES_H

#include "util.h"

#include <QDir>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <csignal>

#include <netinet/in.h>

/// A PostgreSQL server of the test's own on a free port of the loopback interface, for the user
/// "tester" with the password "secret". It ends with the test, however that ends.
class PostgresServer
{
public:
    PostgresServer()
    {
        sockaddr_in address = { AF_INET, 0, { htonl(INADDR_LOOPBACK) }, {} };
        socklen_t size = sizeof(address);
        const int probe = socket(AF_INET, SOCK_STREAM, 0);
        bind(probe, reinterpret_cast<sockaddr *>(&address), size);
        getsockname(probe, reinterpret_cast<sockaddr *>(&address), &size);
        close(probe);
        const QString version = QDir(str("/usr/lib/postgresql"), str("1*")).entryList().value(0);
        qputenv("PATH", "/usr/lib/postgresql/" + version.toUtf8() + "/bin:" + qgetenv("PATH"));
        qputenv("PGHOST", "127.0.0.1");
        qputenv("PGPORT", QByteArray::number(ntohs(address.sin_port)));
        qputenv("PGUSER", "tester");
        qputenv("PGPASSWORD", "secret");
    }
    ~PostgresServer() { stop(); }
    /// Ends at once; what was committed is kept.
    void stop()
    {
        if (m_process.processId() > 0) {
            ::kill(pid_t(m_process.processId()), SIGQUIT);
        }
        m_process.waitForFinished();
    }
    /// Starts, also again; false when that fails.
    bool start()
    {
        // It refuses to run as root.
        const char *script = R"(cd "$0" && exec >log 2>&1; own="setpriv --pdeathsig=QUIT"
            [ $(id -u) != 0 ] || { chown postgres . && own="$own --clear-groups \
                --reuid=postgres --regid=postgres"; }
            [ -d data ] || { echo $PGPASSWORD >password && $own initdb -D data -U $PGUSER -N -E UTF8 --no-locale \
                -A scram-sha-256 --pwfile=password; } || exit 1
            exec $own postgres -D data -F -h $PGHOST -c unix_socket_directories=)";
        m_process.start(str("sh"), { str("-c"), str(script), m_folder.path() });
        while (m_process.waitForStarted() && !m_process.waitForFinished(100) &&
            QProcess::execute(str("pg_isready"), { str("-q") }) != 0) {}
        return m_process.state() == QProcess::Running;
    }
    /// Stops those who serve a database in the middle of what they do, or lets them continue.
    static void pause(const char *database) { signal("STOP", database); }
    static void resume(const char *database) { signal("CONT", database); }
    static bool isInstalled()
    {
        return !QStandardPaths::findExecutable(str("initdb")).isEmpty() ||
            qgetenv("CI") == "true";  // where nothing is skipped
    }
    /// The URL of a database, which is made when there is none of that name.
    static QByteArray url(const char *name)
    {
        QProcess::execute(str("sh"), { str("-c"), str("createdb $0 2>/dev/null"), str(name) });
        return "postgresql://tester@127.0.0.1:" + qgetenv("PGPORT") + '/' + name;
    }

private:
    static void signal(const char *what, const char *database)
    {
        const char *script = R"(kill -s $0 $(psql -At -d postgres -c \
            "SELECT pid FROM pg_stat_activity WHERE datname = '$1'"))";
        QProcess::execute(str("sh"), { str("-c"), str(script), str(what), str(database) });
    }

    QTemporaryDir m_folder;
    QProcess m_process;
};

#endif
