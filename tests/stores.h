#ifndef TQXML_TESTS_STORES_H
#define TQXML_TESTS_STORES_H

#include "postgres.h"
#include "tqcommserver.h"
#include "tqitems.h"
#include "tqstore.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

// What the tests of the embedded server library need.

/// A connection, and its queries by the names of what they list.
class Client
{
public:
    explicit Client(const QByteArray &url) : server(url.constData()) {}

    /// Of each job its name and page, and number and name of its publication.
    QByteArrayList jobsOf(int output, TQQUEUE queue = TQQUEUE_ALL, SORTTYPE type = SORTTYPE_NAME,
        SORTORDER order = SORTORDER_ASCENDING)
    {
        TQJOB *jobs = server.getJobqueue(m_command, m_message, queue, type, order, output);
        return each(jobs, PACKETDATATYPE_JOB, [](TQJOB *job) {
            const QByteArrayList words { job->name, QByteArray::number(TQJOB_CC::pageNumber(job)),
                QByteArray::number(job->publicationId), job->publicationName };
            return words.join(' ');
        });
    }
    QByteArrayList booksOf(const TQKEY_ELEMENT &owner)
    {
        TQBOOK *books =
            server.getBooks(m_command, m_message, SORTTYPE_NAME, SORTORDER_ASCENDING, owner);
        return each(
            books, PACKETDATATYPE_BOOK, [](TQBOOK *book) { return QByteArray(book->name); });
    }
    TQLISTRECORD *list(PACKETDATATYPES type)
    {
        return server.getDBList(m_command, m_message, type);
    }
    /// The tree of an item; null when there is none.
    std::unique_ptr<ArchiveNode> archive(PACKETDATATYPES type, unsigned id)
    {
        return std::unique_ptr<ArchiveNode>(
            server.getArchiveNode(m_command, m_message, type, { id, type }));
    }
    /// The packet text of an ICC profile when its bytes have been loaded.
    QByteArray loaded(ICCPROFILEDATA_CC &profile) const
    {
        const char *connected = server.getConnectedHostname();
        std::string host = connected ? connected : "";
        profile.load(host, static_cast<unsigned short>(server.getConnectedPortnum()));
        return packetOf(profile);
    }
    QByteArray profile(unsigned id)
    {
        const auto node = archive(PACKETDATATYPE_ICCPROFILE, id);
        return node ? loaded(*dynamic_cast<ICCPROFILEDATA_CC *>(node->packetable)) : QByteArray();
    }
    bool failed() { return server.iserror(m_command); }
    QByteArray error() const { return server.errorText(); }

    TQCommServer server;

private:
    template<typename Record, typename Text>
    static QByteArrayList each(Record *records, PACKETDATATYPES type, Text text)
    {
        QByteArrayList list;
        auto *head = reinterpret_cast<TQLISTRECORD *>(records);
        for (TQLISTRECORD *record = head; record; record = record->next) {
            list += text(reinterpret_cast<Record *>(record));
        }
        TQPacketFreeList(&head, type);
        return list;
    }

    TQLPCOMMANDS m_command;
    ZQ_MESSAGE_ID m_message;
};

inline QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

inline void write(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), qint64(content.size()));
}

/// The first column of the rows, asked of the database of a store itself, and what that says
/// against the statement.
inline QByteArrayList sql(
    const QByteArray &url, const QByteArray &statement, QString *error = nullptr)
{
    QByteArrayList values;
    {
        const bool isFile = url.startsWith("sqlite:");
        auto db = QSqlDatabase::addDatabase(str(isFile ? "QSQLITE" : "QPSQL"), str("sql"));
        db.setDatabaseName(str(isFile ? url.mid(7) : url.mid(url.lastIndexOf('/') + 1)));
        db.open();
        QSqlQuery query(QString::fromUtf8(statement), db);
        if (error) {
            *error = query.lastError().text().trimmed();
        }
        while (query.next()) {
            values += query.value(0).toString().toUtf8();
        }
    }
    QSqlDatabase::removeDatabase(str("sql"));
    return values;
}

/// Stores of both kinds: files in a folder, and the databases of a PostgreSQL server.
struct Stores
{
    /// Rows of a test, or of all, for both kinds.
    static void addDatabases()
    {
        QTest::addColumn<bool>("isPostgres");
        QTest::newRow("SQLite") << false;
        QTest::newRow("PostgreSQL") << true;
    }
    /// Leaves out the rows that this machine has no server for.
    static bool isSkipped(bool isPostgres)
    {
        const bool isMissing = isPostgres && !PostgresServer::isInstalled();
        if (isMissing) {
            QTest::qSkip("PostgreSQL is not installed", __FILE__, __LINE__);
        }
        return isMissing;
    }
    /// Starts the server where one is installed. Nothing may be printed from then on.
    bool start()
    {
        const bool isStarted = !postgres.isInstalled() || postgres.start();
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &text) {
            qFatal("nothing is printed, but: %s", qPrintable(text));
        });
        return isStarted;
    }
    QString path(const char *name) const { return folder.filePath(str(name)); }
    /// The URL of a new store with the sample.
    QByteArray sample(const char *name, bool isPostgres = false) const
    {
        const QByteArray url = isPostgres ? postgres.url(name) : "sqlite:" + path(name).toUtf8();
        std::string error;
        if (!TQCreateSampleStore(url.constData(), {}, error)) {
            qFatal("no sample: %s", error.c_str());
        }
        return url;
    }

    QTemporaryDir folder;
    PostgresServer postgres;
};

#endif
