#ifndef SQLDATABASE_P_H
#define SQLDATABASE_P_H

#include "database_p.h"

#include <QSqlDatabase>

namespace TQServerInternal {

// A connection to a store by a driver of QtSql's.
class SqlDatabase : public Database
{
public:
    using Database::Database;
    ~SqlDatabase() override { disconnect(); }

protected:
    std::unique_ptr<Statement> makeStatement(const QString &text, const QString &name) override;
    void disconnect() override;
    bool isConnected() const override { return m_sql.isOpen(); }

    // Opens the QtSql connection with the address's options.
    bool openSql(const char *driver, const QString &databaseName);

private:
    QString m_connection;  // name of the QtSql connection; null when there is none
    QSqlDatabase m_sql;
};

}  // namespace TQServerInternal

#endif
