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

// A connection to a store: a QtSql connection of its own, and its statements, each prepared once.
// What differs between the database systems is in the classes derived from it.
//
// It is for the thread that opened it. Several threads may each have databases of their own.
class Database
{
public:
    explicit Database(const StoreAddress &address) : m_address(address) {}
    virtual ~Database() { close(); }
    Database(const Database &) = delete;
    Database &operator=(const Database &) = delete;

    // Opens what is there, or for create a new and empty file; false when that fails.
    bool open(bool create);
    bool hasSchema();
    // Whether an open store has the tables that this library knows, and nothing else that could run
    // or answer in their place. Asks the store for nothing before that is certain.
    virtual bool checkSchema() = 0;
    // After a failure opens the store again, since the connection may be lost.
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

    // Called before and after a new store gets its content, which fails when one of them fails.
    virtual bool beginFilling() { return true; }
    virtual bool endFilling() { return true; }

    // False when the content contradicts itself in a way that statements do not notice.
    virtual bool isWhole() { return true; }

    // What failed last, one line for people.
    const QString &error() const { return m_error; }
    // Both set the error and return false; refuse() puts the store's name in front.
    bool fail(const QString &error);
    bool refuse(const QString &reason);

    // Where the store is.
    struct Server
    {
        std::string host;
        int port;  // 0 for a store that no server has
    };
    const Server &server() const { return m_server; }

protected:
    struct Statement
    {
        QSqlQuery query;
        QString name;  // that a server knows it by
    };

    // Opens the connection, by openSql(), and sets the server, and the watchdog if there is one.
    virtual bool connect(bool create) = 0;
    virtual bool prepareStatement(Statement &statement, const QString &text) = 0;
    virtual bool runStatement(Statement &statement, const QVariantList &values) = 0;
    // Whether what a query has found may be believed.
    virtual bool isTrustworthy() { return true; }

    // Opens the QtSql connection with the address's options.
    bool openSql(const QString &databaseName);
    const QSqlDatabase &sql() const { return m_sql; }
    void setServer(const Server &server) { m_server = server; }
    void setWatchdog(std::unique_ptr<Watchdog> watchdog) { m_watchdog = std::move(watchdog); }
    // Lets recover() open the store again.
    void suspect() { m_isSuspect = true; }
    // The statement with prefix and 1, 2 ... in place of its "?". Statements contain no other "?".
    static QString numbered(const QString &statement, const char *prefix);
    // The cause alone of a database system's message, in one line.
    static QString causeOf(const QString &message);

private:
    void close();
    bool failed(const QSqlError &error);

    const StoreAddress m_address;
    Server m_server { {}, 0 };
    bool m_isSuspect = false;  // a statement failed
    QString m_connection;  // name of the QtSql connection; null when there is none
    QSqlDatabase m_sql;
    std::map<QString, Statement> m_statements;
    std::unique_ptr<Watchdog> m_watchdog;  // null for a store that no server has
    QString m_error;
};

}  // namespace TQServerInternal

#endif
