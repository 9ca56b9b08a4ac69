#ifndef TQXML_TESTS_STORES_H
#define TQXML_TESTS_STORES_H

#include "postgres.h"
#include "tqcommserver.h"
#include "tqitems.h"
#include "tqstore.h"

// What the tests of the embedded server library need.

/// A connection, and its queries by the names of what they list.
class Client
{
public:
    explicit Client(const QByteArray &url) : server(url.constData()) {}

    QByteArrayList jobsOf(const QByteArray &output)
    {
        TQJOB *jobs = server.getJobqueue(
            m_command, m_message, TQQUEUE_ALL, SORTTYPE_NAME, SORTORDER_ASCENDING, output.toInt());
        return each(jobs, PACKETDATATYPE_JOB, [](TQJOB *job) { return QByteArray(job->name); });
    }
    /// Page, and number and name of the publication, of jobs.
    QByteArrayList pagesOf(const QByteArray &output, int queue, int sort, SORTORDER order)
    {
        TQJOB *jobs = server.getJobqueue(m_command, m_message, static_cast<TQQUEUE>(queue),
            static_cast<SORTTYPE>(sort), order, output.toInt());
        return each(jobs, PACKETDATATYPE_JOB, [](TQJOB *job) {
            const char *publication = job->publicationName ? job->publicationName : "none";
            return QByteArray::number(TQJOB_CC::pageNumber(job)) + ' ' +
                QByteArray::number(job->publicationId) + ' ' + publication;
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
    /// The packet text of an item; empty when there is none.
    QByteArray item(PACKETDATATYPES type, unsigned id)
    {
        const auto node = archive(type, id);
        return node ? packetOf(*node->packetable) : QByteArray();
    }
    /// The packet text of an ICC profile when its bytes have been loaded.
    QByteArray loaded(ICCPROFILEDATA_CC &profile) const
    {
        std::string host = server.getConnectedHostname();
        profile.load(host, static_cast<unsigned short>(server.getConnectedPortnum()));
        return packetOf(profile);
    }
    QByteArray profile(unsigned id)
    {
        const auto node = archive(PACKETDATATYPE_ICCPROFILE, id);
        return loaded(*dynamic_cast<ICCPROFILEDATA_CC *>(node->packetable));
    }
    bool failed() { return server.iserror(m_command); }
    QByteArray error() const { return server.errorText(); }

    TQCommServer server;

private:
    template<typename Record, typename Text>
    static QByteArrayList each(Record *records, PACKETDATATYPES family, Text text)
    {
        QByteArrayList list;
        auto *head = reinterpret_cast<TQLISTRECORD *>(records);
        for (TQLISTRECORD *record = head; record; record = record->next) {
            list += text(reinterpret_cast<Record *>(record));
        }
        TQPacketFreeList(&head, family);
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

/// What goes wrong as the sample is put into a new store; empty when nothing does.
inline QString createError(const QByteArray &url, const TQPROGRESS &progress = {})
{
    std::string error;
    TQCreateSampleStore(url.constData(), progress, error);
    return QString::fromStdString(error);
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
    /// Starts the server where one is installed. Nothing may be printed from then on.
    bool start()
    {
        const bool isStarted = !postgres.isInstalled() || postgres.start();
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &text) {
            qFatal("nothing is printed, but: %s", qPrintable(text));
        });
        return isStarted;
    }
    /// Leaves out the rows that this machine has no server for.
    static bool isSkipped(bool isPostgres)
    {
        if (isPostgres && !PostgresServer::isInstalled()) {
            QTest::qSkip("PostgreSQL is not installed", __FILE__, __LINE__);
            return true;
        }
        return false;
    }
    QString path(const QString &name) const { return folder.filePath(name); }
    /// The URL of a file, or of a database that is made when there is none of that name.
    QByteArray url(const char *name, bool isPostgres = false) const
    {
        return isPostgres ? postgres.url(name) : "sqlite:" + path(str(name)).toUtf8();
    }
    /// A store with the sample, made when there is none; its URL.
    QByteArray sample(const char *name, bool isPostgres = false) const
    {
        const QByteArray store = url(name, isPostgres);
        const QString error = createError(store);
        if (!error.isEmpty() && !error.endsWith(str(" already"))) {
            qFatal("no sample: %s", qPrintable(error));
        }
        return store;
    }

    QTemporaryDir folder;
    PostgresServer postgres;
};

#endif
