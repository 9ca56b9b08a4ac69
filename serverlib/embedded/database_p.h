#ifndef DATABASE_P_H
#define DATABASE_P_H

#include "schema_p.h"
#include "tqtypes.h"

#include <QSqlDatabase>
#include <QSqlQuery>
#include <QVariant>

#include <map>
#include <optional>
#include <string>

// Where a store is.
struct StoreAddress
{
    // None when the URL is not of a known form; error says why.
    static std::optional<StoreAddress> parse(const char *url, QString &error);
    bool isFile() const { return dialect == &SQLITE && !path.isEmpty(); }
    bool isMemory() const { return dialect == &SQLITE && path.isEmpty(); }
    // What messages call it.
    const QString &label() const { return path.isEmpty() ? database : path; }

    const Dialect *dialect = nullptr;
    QString path;  // of a file; empty for a store in memory
    QString host;
    int port = 0;
    QString user;
    QString database;
};

// An open store: a QtSql connection of its own, and its statements, each prepared once.
class Database
{
public:
    Database() = default;
    ~Database();
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
    // Ends a query; false when it failed among its rows.
    bool finish(QSqlQuery &query);
    // The first column of the first row; null when there is none or the statement failed.
    QVariant valueOf(const QString &statement, const QVariantList &values = {});
    // Runs a statement as it is.
    bool execute(const QString &statement);
    bool begin();
    // Begins a transaction that makes tables or gives ids; waits for others of that kind.
    bool beginWriting();
    bool commit();

    // What failed last, one line.
    const QString &error() const { return m_error; }
    bool fail(const QString &error);

    // Makes the store known under a host and port that no other open store has, as far as it can
    // choose them.
    void publish();
    const std::string &host() const { return m_host; }
    int port() const { return m_port; }

    // The field that holds the bytes of the ICC profile with that key, or without a key with that
    // name, from the store known under that host and port; none when there is no such store,
    // profile, or byte.
    struct FieldValue
    {
        unsigned tag;
        std::string value;
    };
    static std::optional<FieldValue> profileBytes(
        const std::string &host, int port, const TQKEY_ELEMENT &key, const char *name);

private:
    void close();
    bool failed(const QSqlError &error);

    StoreAddress m_address;
    bool m_suspect = false;  // a statement failed
    QString m_connection;  // name of the QtSql connection; null when there is none
    QSqlDatabase m_sql;
    std::map<QString, QSqlQuery> m_queries;
    QString m_error;
    std::string m_host;
    int m_port = 0;
};

#endif
