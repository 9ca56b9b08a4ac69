#include "util.h"

#include <QProcess>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTemporaryDir>

#include <csignal>

namespace {

constexpr int TIMEOUT = 120000;  // milliseconds

struct Outcome
{
    int code = -1;  // -1 for a crash
    QByteArray out;
    QByteArray err;
};

QStringList words(const char *text)
{
    return str(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

Outcome finish(QProcess &process, const QByteArray &input = QByteArray())
{
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(TIMEOUT)) {
        return {};
    }
    return { process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
        process.readAllStandardOutput(), process.readAllStandardError() };
}

// In the plainest locale, and with a random hash seed unless it is given.
Outcome run(const QStringList &arguments, const QByteArray &input = QByteArray(),
    const char *hashSeed = nullptr)
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(str("QT_HASH_SEED"));
    environment.insert(str("LC_ALL"), str("C"));
    if (hashSeed) {
        environment.insert(str("QT_HASH_SEED"), str(hashSeed));
    }
    process.setProcessEnvironment(environment);
    process.start(str(TQXML_COMMAND), arguments);
    return finish(process, input);
}

// A shell line in which "$0" is the command and "$1" the argument.
Outcome shell(const char *line, const QString &argument = QString())
{
    QProcess process;
    process.start(str("/bin/sh"), { str("-c"), str(line), str(TQXML_COMMAND), argument });
    return finish(process);
}

// Takes off what packet text does not carry.
void strip(QDomElement e)
{
    const bool isItem = e.tagName() == str("packetable");
    for (const char *name :
        { "agent_id", isItem ? "name" : "", isItem ? "key" : "", isItem ? "hkey" : "" }) {
        e.removeAttribute(str(name));
    }
    if (e.tagName().startsWith(QLatin1Char('_'))) {
        e.removeChild(e.firstChildElement(str("packetable")));  // an inlined item
    }
    for (e = e.firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        strip(e);
    }
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

}  // namespace

class tst_Command : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanupTestCase();
    void complaints_data();
    void complaints();
    void help();
    void contents_data();
    void contents();
    void tables();
    void outputs();
    void raw();
    void profiles();
    void interrupted();
    void streams_data();
    void streams();

private:
    QString path(const char *name) const { return m_folder.filePath(str(name)); }
    QStringList query(const QString &sql) const;
    QStringList keys(const char *table, const char *hkey) const;

    QTemporaryDir m_folder;
    QString m_store;  // the sample
    QString m_job;  // key of one that refers to a book, a profile and an output
};

void tst_Command::initTestCase()
{
    m_store = path("store with blanks é.db");
    const Outcome made = run({ str("init"), m_store });
    QCOMPARE(made.err, QByteArray());
    QCOMPARE(made.code, 0);
    QSqlDatabase database = QSqlDatabase::addDatabase(str("QSQLITE"));
    database.setDatabaseName(m_store);
    QVERIFY(database.open());  // beside the command
    m_job = keys("tq_job WHERE book_id > 0 AND profile_id > 0", "15").value(0);
}

void tst_Command::cleanupTestCase() { QSqlDatabase::database().close(); }

QStringList tst_Command::query(const QString &sql) const
{
    QStringList values;
    QSqlQuery query(sql);
    while (query.next()) {
        values << query.value(0).toString();
    }
    return values;
}

QStringList tst_Command::keys(const char *table, const char *hkey) const
{
    QStringList keys = query(QStringLiteral("SELECT id FROM %1").arg(str(table)));
    for (QString &key : keys) {
        key = QStringLiteral("%1:%2").arg(key.toUInt(), 0, 16).arg(str(hkey));
    }
    return keys;
}

void tst_Command::complaints_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("input");
    QTest::addColumn<int>("code");
    QTest::addColumn<QString>("message");
    const auto row = [](const char *arguments, int code, const char *message) {
        QTest::newRow(arguments) << words(arguments) << QByteArray() << code << str(message);
    };
    row("", 2, "no command");
    row("frobnicate", 2, "frobnicate");
    row("--frobnicate", 2, "frobnicate");
    row("list", 2, "list");
    row("list jobs books", 2, "list");
    row("list owners", 2, "list");
    row("list jobs --frobnicate", 2, "frobnicate");
    row("list jobs --key", 2, "--key");
    row("list jobs --format html", 2, "html");
    row("list outputs --key 1:8", 2, "key");
    row("show job", 2, "key");
    row("show rose 1:15", 2, "rose");
    row("convert", 2, "--to");
    row("convert --to html", 2, "--to");
    row("convert --to xml a b", 2, "one file");
    row("init", 2, "database");
    row("init a.db --jobs many", 2, "many");
    row("import-icc a.db", 2, "files");
    row("list jobs --key 1f", 1, "1f");
    row("list jobs --key 1f:g", 1, "1f:g");
    row("list jobs --key 1f:123456789", 1, "1f:123456789");
    row("list jobs --key 0x1:8", 1, "0x1:8");
    row("show job :15", 1, ":15");
    row("show job fffff:15", 1, "fffff:15");
    row("show 99 1:99", 1, "99");
    row("list jobs --database /nowhere/a.db", 1, "/nowhere/a.db");
    row("list jobs --database /etc/passwd", 1, "not a database");
    row("list jobs --database elsewhere://a/b", 1, "elsewhere://a/b");
    row("show job 1:15 --database /nowhere/a.db", 1, "/nowhere/a.db");
    row("convert --to xml /nowhere/a", 1, "/nowhere/a");
    row("convert --to packet /", 1, "directory");
    row("init /nowhere/a.db", 1, "/nowhere/a.db");
    row("import-icc /nowhere/a.db /usr/share/color/icc/sRGB.icc", 1, "/nowhere/a.db");

    const auto convert = [](const char *name, const char *to, const QByteArray &input,
                             const char *message) {
        QTest::newRow(name) << QStringList { str("convert"), str("--to"), str(to) } << input << 1
                            << str(message);
    };
    const auto item = [](const char *fields) {
        return QByteArray("<item datatype=\"15\">") + fields + "</item>";
    };
    const auto nested = [](int levels) {
        return "SI 15\n" + QByteArray("SL 1\nSI 15\n").repeated(levels / 2) +
            QByteArray("TI 0\nTL 0\n").repeated(levels / 2) + "TI 0\n";
    };
    convert("nothing", "xml", "", "no item");
    convert("other text", "xml", "SI 15\n1 a\nhello world\nTI 0\n", "line 3:");
    convert("unknown field", "xml", "SI 15\nff a\nTI 0\n", "line 2:");
    convert("no line feed at the end", "xml", "SI 15\n1 a\nTI 0", "line 3:");
    convert("not closed", "xml", "SI 15\n1 a\n", "line 3:");
    convert("closed twice", "xml", "SI 15\nTI 0\nTI 0\n", "line 3:");
    convert("wrong count", "xml", "SI 15\nc 2 a\nTI 0\n", "line 2:");
    convert("blank at the end", "xml", "SI 15\n1 a \nTI 0\n", "line 2:");
    convert("not UTF-8", "xml", "SI 15\n1 \xff\nTI 0\n", "line 2:");
    convert("no XML character", "xml", "SI 15\n1 \x01\nTI 0\n", "U+0001");
    convert("deep text", "xml", nested(256), "line 257: items are nested deeper than 256");
    convert("no document", "packet", "", "line 1,");
    convert("no XML", "packet", "<a>\n<b></a>", "line 2, column ");
    convert("no item", "packet", "<tqxml><body><action/></body></tqxml>", "no item");
    convert("line feed in a value", "packet", item("<_1 value=\"a&#10;2 b\"/>"), "\"1\"");
    convert("line feed in a key", "packet", item("<_3 key=\"1&#10;\" hkey=\"2\"/>"), "\"3\"");
    convert("line feed in an entry", "packet", item("<_c><value>a\nb</value></_c>"), "\"c\"");
    convert("line feed in a type", "packet", "<item datatype=\"15&#10;1 a\"/>", "\"SI\"");
    convert("return in an entry", "packet", item("<_c><value>a&#13;b</value></_c>"), "\"c\"");
    convert(
        "deep elements", "packet", QByteArray("<a>").repeated(100000), "nested deeper than 1000");
    convert("deep items", "packet",
        QByteArray("<item datatype=\"15\"><list size=\"1\">").repeated(129), "deeper than 256");
}

void tst_Command::complaints()
{
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, input);
    QFETCH(int, code);
    QFETCH(QString, message);
    const Outcome outcome = run(arguments, input);
    QCOMPARE(outcome.code, code);
    QCOMPARE(outcome.out, QByteArray());
    const QStringList lines = QString::fromUtf8(outcome.err).split(QLatin1Char('\n'));
    QCOMPARE(int(lines.size()), code + 1);  // misuse tells the usage, too
    QVERIFY2(lines.first().startsWith(str("tqxml: ")) && lines.first().contains(message),
        outcome.err.constData());
    QCOMPARE(lines.at(1).startsWith(str("usage: tqxml ")), code == 2);
}

void tst_Command::help()
{
    for (const char *command : { "", "list ", "show ", "convert ", "init ", "import-icc " }) {
        const Outcome outcome = run(words(command) << str("--help"));
        QCOMPARE(outcome.code, 0);
        QCOMPARE(outcome.err, QByteArray());
        QVERIFY(outcome.out.contains(QByteArray("usage: tqxml ") + command));
    }
    QVERIFY(run({ str("--version") }).out.startsWith("tqxml 1."));
}

void tst_Command::contents_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("sql");
    const auto row = [](const char *arguments, const char *sql) {
        QTest::newRow(arguments) << words(arguments) << str(sql);
    };
    const char *owner = "SELECT b.name FROM tq_book b WHERE owner_id = 12 ORDER BY name, id";
    const char *alone = "SELECT j.name FROM tq_job j JOIN tq_output o ON o.id = output_id "
                        "WHERE publication_id IS NULL ORDER BY o.name, o.id, j.name, j.id";
    const char *all = "SELECT j.name FROM tq_job j JOIN tq_output o ON o.id = output_id "
                      "ORDER BY o.name, o.id, j.name, j.id";
    row("outputs", "SELECT name FROM tq_output ORDER BY name, id");
    row("books",
        "SELECT b.name FROM tq_book b JOIN tq_book_owner w ON w.id = owner_id "
        "ORDER BY w.name, w.id, b.name, b.id");
    row("books --key c:55", owner);
    row("jobs", alone);
    row("jobs --include-publications", all);
    row("jobs --include-publications --key 3:8",
        "SELECT name FROM tq_job WHERE output_id = 3 ORDER BY name, id");
    row("publications",
        "SELECT name FROM tq_publication WHERE id IN "
        "(SELECT publication_id FROM tq_job) ORDER BY id");
}

void tst_Command::contents()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, sql);
    const Outcome listed =
        run(QStringList { str("list"), str("--database"), m_store, str("--format"), str("xml") } +
            arguments);
    QStringList names;
    const Xml document(QString::fromUtf8(listed.out));
    for (QDomElement e = document.root.lastChildElement().firstChildElement(); !e.isNull();
         e = e.nextSiblingElement()) {
        names << e.attribute(str("name"));
    }
    QVERIFY(names.size() > 2);
    QCOMPARE(names, query(sql));
}

// Keys of a table can be given back to the command.
void tst_Command::tables()
{
    for (const char *what : { "jobs", "books", "publications" }) {
        const Outcome outcome = run({ str("list"), str(what), str("--key"), str("fffff:8") });
        QCOMPARE(outcome.code, 0);
        QCOMPARE(outcome.out, QByteArray());
        QCOMPARE(outcome.err, QByteArray("tqxml: no ") + what + " found\n");
    }
    const QList<QByteArray> lines = run(words("list books --key 7:55")).out.split('\n');
    QVERIFY(lines.first().startsWith("Key") && lines.first().contains("Author"));
    QVERIFY(lines.size() > 4);
    const QString key = QString::fromUtf8(lines.at(2).left(lines.at(2).indexOf(' ')));
    const Outcome book = run({ str("show"), str("book"), key });
    const Xml shown(QString::fromUtf8(book.out));
    QVERIFY(lines.at(2).contains(shown.root.attribute(str("name")).toUtf8()));
    QVERIFY(
        run({ str("show"), str("56"), key, str("--references") }).out.contains("\n7:55  owner"));
    QCOMPARE(
        int(run({ str("show"), str("job"), m_job, str("--references") }).out.count('\n')), 2 + 3);
}

// What is printed is the same in every run, and comes back the same from packet text.
void tst_Command::outputs()
{
    QList<QStringList> commands { { str("show"), str("job"), m_job } };
    for (const char *list : { "outputs", "publications", "books", "jobs --include-publications" }) {
        commands << words("list --format xml") + words(list);
    }
    for (const QString &key : keys("tq_book_owner", "55") + keys("tq_icc_profile", "30")) {
        commands << QStringList { str("show"), key.section(QLatin1Char(':'), 1), key };
    }
    const QStringList toPacket = words("convert --to packet");
    const QStringList toXml = words("convert --to xml");
    for (const QStringList &command : commands) {
        const QByteArray document = run(command).out;
        QCOMPARE(run(command, QByteArray(), "0").out, document);
        QCOMPARE(run(command + QStringList { str("--database"), m_store }).out, document);
        const Outcome packet = run(toPacket, document);
        QCOMPARE(packet.err, QByteArray());
        QVERIFY(packet.out.startsWith("SI ") && packet.out.endsWith("\nTI 0\n"));
        const QByteArray xml = run(toXml, packet.out).out;
        QCOMPARE(run(toPacket, xml).out, packet.out);
        QCOMPARE(run(toXml, run(toPacket, xml).out).out, xml);
        Xml before(QString::fromUtf8(document));
        Xml after(QString::fromUtf8(xml));
        strip(before.root);
        strip(after.root);
        const bool isItem = before.root.tagName() == str("packetable");
        QCOMPARE(canonical(isItem ? after.root.lastChildElement().firstChild() : after.root),
            canonical(before.root));
    }
}

void tst_Command::raw()
{
    const QByteArray xml("<item datatype=\"15\"><_1 value=\"a&#10;2 b\"/></item>");
    QCOMPARE(
        run(words("convert --raw --to packet"), xml).out, QByteArray("SI 15\n1 a\n2 b\nTI 0\n"));
    QCOMPARE(run(words("convert --to packet"),
                 "<item datatype='15'>\n<_c><value> </value><value>a</value></_c></item>")
                 .out,
        QByteArray("SI 15\nc 2  \ra\nTI 0\n"));
    const QByteArray damaged("SI 15\nff a\n1 b \nTI 0\nTI 0\nSI 8\n1 c\n");
    const QByteArray document = run(words("convert --raw --to xml"), damaged).out;
    QCOMPARE(run(words("convert --to packet"), document).out,
        QByteArray("SI 15\n1 b\nTI 0\nSI 8\n1 c\nTI 0\n"));
}

// A damaged file among good ones leaves the store as it was, byte for byte.
void tst_Command::profiles()
{
    const QString good = path("Küche 1.icc");
    QVERIFY(QFile::copy(str("/usr/share/color/icc/Gray.icc"), good));
    const QByteArray profile = contentOf(good);
    const QByteArray store = contentOf(m_store);
    const QByteArray unsignedProfile = QByteArray(profile).replace(36, 4, "pcsa");
    for (const QByteArray &content :
        { QByteArray(), profile.left(100), profile.left(300), profile + 'x', unsignedProfile }) {
        QFile bad(path("bad.icc"));
        QVERIFY(bad.open(QIODevice::WriteOnly) && bad.write(content) == content.size());
        bad.close();
        const Outcome outcome = run({ str("import-icc"), m_store, good, bad.fileName() });
        QCOMPARE(outcome.code, 1);
        QVERIFY(outcome.err.startsWith("tqxml: " + bad.fileName().toUtf8()));
        QCOMPARE(int(outcome.err.count('\n')), 1);
    }
    QVERIFY(run({ str("init"), m_store }).err.contains("exists"));
    QCOMPARE(contentOf(m_store), store);

    QCOMPARE(run({ str("import-icc"), m_store, good }).code, 0);
    const QString key = keys("tq_icc_profile WHERE name = 'Küche 1'", "30").value(0);
    const Outcome shown = run({ str("show"), str("profile"), key, str("--database"), m_store });
    QVERIFY(shown.out.contains('>' + profile.toBase64() + '<'));
}

void tst_Command::interrupted()
{
    QVERIFY(QDir(m_folder.path()).mkdir(str("cut off")));
    const QString store = path("cut off/a.db");
    const auto files = [this] { return QDir(path("cut off")).entryList(QDir::Files); };
    for (const int signal : { SIGKILL, SIGTERM, SIGINT }) {
        const QStringList before = files();
        QProcess process;
        process.start(str(TQXML_COMMAND), { str("init"), store, str("--jobs"), str("1000000") });
        QVERIFY(process.waitForStarted() && process.processId() > 0);
        QTRY_VERIFY_WITH_TIMEOUT(!files().isEmpty() && files() != before, TIMEOUT);
        ::kill(pid_t(process.processId()), signal);
        QVERIFY(process.waitForFinished(TIMEOUT));
        QVERIFY(process.exitStatus() == QProcess::CrashExit || process.exitCode() != 0);
        QVERIFY(!QFile::exists(store));
    }
    QCOMPARE(run({ str("init"), store, str("--jobs"), str("10") }).code, 0);
    QCOMPARE(files(), QStringList { str("a.db") });
    const Outcome listed = run(words("list jobs --include-publications --database") << store);
    QCOMPARE(int(listed.out.count('\n')), 2 + 10);
}

void tst_Command::streams_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<int>("code");
    QTest::addColumn<QByteArray>("message");
    const auto row = [](const char *line, int code, const char *message) {
        QTest::newRow(line) << QByteArray(line) << code << QByteArray(message);
    };
    row("\"$0\" list jobs >/dev/full", 1, "tqxml: standard output: No space left on device\n");
    row("\"$0\" --help >/dev/full", 1, "tqxml: standard output: No space left on device\n");
    row("\"$0\" list jobs >&-", 1, "tqxml: standard output: Bad file descriptor\n");
    row("\"$0\" convert --to xml <&-", 1, "tqxml: standard input: Bad file descriptor\n");
    row("\"$0\" list jobs --key bad 2>&-", 1, "");
    row("{ \"$0\" list jobs --format xml; echo $? >&2; } | head -c 1 >/dev/null", 0, "0\n");
    row("\"$0\" init \"$1\" <&- >&- 2>&-", 0, "");
    row("\"$0\" list jobs --database \"$1\" <&- >/dev/null", 0, "");
    row("script -qec \"'$0' init '$1.2' --jobs 3000\" /dev/null | grep -q 'creating .####.*100 %'",
        0, "");
    row("\"$0\" init \"$1.3\" --jobs 3000", 0, "");
}

void tst_Command::streams()
{
    QFETCH(QByteArray, line);
    const Outcome outcome = shell(line.constData(), path("closed.db"));
    QTEST(outcome.code, "code");
    QTEST(outcome.err, "message");
}

QTEST_GUILESS_MAIN(tst_Command)
#include "tst_command.moc"
