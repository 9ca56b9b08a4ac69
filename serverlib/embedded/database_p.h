#ifndef DATABASE_P_H
#define DATABASE_P_H

#include "storeaddress_p.h"

#include <QVariant>

#include <map>
#include <memory>
#include <optional>
#include <string>

namespace TQServerInternal {

// A statement of a connection, and the rows that it finds. It is prepared when it first runs.
class Statement
{
public:
    Statement() = default;
    virtual ~Statement() = default;
    Statement(const Statement &) = delete;
    Statement &operator=(const Statement &) = delete;

    // Runs it with the values in place of its "?". Rows that an earlier run has left are gone.
    virtual bool run(const QVariantList &values) = 0;
    // Goes to the next row, at first to the first; false at the end and on failure.
    virtual bool next() = 0;
    // Of the row.
    virtual QVariant value(int column) const = 0;
    // How many rows it has inserted, updated or deleted.
    virtual int changedRows() const = 0;
    // Releases what the run has left.
    virtual void finish() = 0;
    // What the database system says of the last failure; empty when there was none since run().
    virtual QString error() const = 0;

protected:
    // The text with prefix and 1, 2 ... in place of its "?". Statements contain no other "?".
    static QString numbered(const QString &text, const char *prefix);
};

// A connection to a store, and its statements, each prepared once. What differs between the
// database systems is in the classes derived from it.
//
// It is for the thread that opened it. Several threads may each have databases of their own.
class Database
{
public:
    explicit Database(const StoreAddress &address) : m_address(address) {}
    virtual ~Database() = default;
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

    // Runs a prepared statement; null when it fails. It is the database's, and valid until it runs
    // again.
    Statement *run(const QString &text, const QVariantList &values = {});
    // Ends a statement; false when it failed among its rows.
    bool finish(Statement &statement);
    // The first column of the first row, null without a row; none when the statement failed.
    std::optional<QVariant> ask(const QString &text, const QVariantList &values = {});
    // The same, and null when the statement failed.
    QVariant valueOf(const QString &text, const QVariantList &values = {});
    // Runs a statement once.
    bool execute(const QString &text);

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
    // Opens the connection and sets the server.
    virtual bool connect(bool create) = 0;
    // Ends the connection, if there is one, and its statements before. The destructor of the class
    // that defines it calls it, too.
    virtual void disconnect() = 0;
    virtual bool isConnected() const = 0;
    // The server may know the statement by the name, which is empty for one that runs once.
    virtual std::unique_ptr<Statement> makeStatement(const QString &text, const QString &name) = 0;
    // Whether what a query has found may be believed.
    virtual bool isTrustworthy() { return true; }

    void setServer(const Server &server) { m_server = server; }
    void forgetStatements();
    // Lets recover() open the store again.
    void suspect() { m_isSuspect = true; }
    // Notes what the database system says of a failure, and returns false.
    bool failed(const QString &message);

private:
    // The cause alone of a database system's message, in one line.
    static QString causeOf(const QString &message);

    const StoreAddress m_address;
    Server m_server { {}, 0 };
    bool m_isSuspect = false;  // a statement failed
    std::map<QString, std::unique_ptr<Statement>> m_statements;
    QString m_error;
};

}  // namespace TQServerInternal

#endif
