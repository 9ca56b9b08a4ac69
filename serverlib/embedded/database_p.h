#ifndef DATABASE_P_H
#define DATABASE_P_H

#include "storeaddress_p.h"
#include "watchdog_p.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QVariant>

#include <map>
#include <memory>
#include <optional>
#include <string>

class QSqlError;

namespace TQServerInternal {

// An open store: a QtSql connection of its own, and its statements, each prepared once.
//
// It is for the thread that opened it. Several threads may each have databases of their own.
class Database
{
public:
    Database() = default;
    ~Database() { close(); }
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;

    // Opens what is there, or for create a new and empty one; false with a text for people when
    // that fails.
    bool open(const StoreAddress &address, bool create);
    bool hasSchema();
    // After a failure opens the store anew, since the connection may be lost.
    bool recover();
    const StoreAddress &address() const { return m_address; }
    const Dialect &dialect() const { return *m_address.dialect; }

    // Runs a prepared statement; null when it fails. The query is the database's, valid until the
    // statement runs again.
    QSqlQuery *run(const QString &statement, const QVariantList &values = {});
    // Goes to the next row of a query; false at the end and on failure.
    bool next(QSqlQuery &query);
    // Ends a query; false when it failed among its rows.
    bool finish(QSqlQuery &query);
    // The first column of the first row, null without a row; none when the statement failed.
    std::optional<QVariant> ask(const QString &statement, const QVariantList &values = {});
    // The same, and null when the statement failed.
    QVariant valueOf(const QString &statement, const QVariantList &values = {});
    // Runs a statement as it is.
    bool execute(const QString &statement);

    // A transaction whose queries all see one state of the store and hold no writer up.
    bool beginReading();
    // Begins a transaction that makes tables or gives ids; waits for others of that kind.
    bool beginWriting();
    bool commit();
    void rollback();

    // False when the content of a file contradicts itself. SQLite finds damage where it comes
    // across it, but an index that lacks entries only gives fewer rows.
    bool isWhole();

    // What failed last, one line.
    const QString &error() const { return m_error; }
    bool fail(const QString &error);

    // The server that the store is on.
    struct Server
    {
        std::string host;
        int port;  // 0 for a store that no server has
    };
    const Server &server() const { return m_server; }

private:
    struct Statement
    {
        QSqlQuery query;
        QString name;  // that a server knows it by
    };

    bool connect(const QString &databaseName);
    bool openFile(bool create);
    bool openServer();
    void close();
    bool prepare(const QString &text, Statement &statement);
    bool isUntouched();
    bool failed(const QSqlError &error);

    StoreAddress m_address;
    Server m_server { {}, 0 };
    bool m_suspect = false;  // a statement failed
    QString m_connection;  // name of the QtSql connection; null when there is none
    QSqlDatabase m_sql;
    std::map<QString, Statement> m_statements;
    std::unique_ptr<Watchdog> m_watchdog;  // null for a store that no server has
    QString m_stamp;  // of a file that is read without locks, when it was opened; null otherwise
    QString m_error;
};

}  // namespace TQServerInternal

#endif
