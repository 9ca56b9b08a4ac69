#include "storeaddress_p.h"

#include <QDir>
#include <QRegularExpression>
#include <QStringList>
#include <QUrl>

#include <algorithm>
#include <iterator>
#include <memory>

#include <libpq-fe.h>

namespace TQServerInternal {

namespace {

using std::chrono::milliseconds;

constexpr const char *FILE_SCHEME = "sqlite:";
constexpr const char *NETWORK_SCHEMES[] = { "postgresql://", "postgres://" };
constexpr const char *FORMS = "sqlite:PATH, sqlite::memory: or postgresql://USER@HOST:PORT/DB";

// A statement that takes longer, or waits longer for a lock, is ended by the server.
constexpr const char *STATEMENT_TIMEOUT = "30s";
constexpr const char *LOCK_TIMEOUT = "10s";
// What the server gets beyond a statement's time before it counts as silent.
constexpr milliseconds GRACE { 10000 };
constexpr const char *CONNECT_TIMEOUT = "5";  // seconds
// A peer that has gone is noticed within a minute.
constexpr const char *KEEPALIVES[][2] = { { "keepalives_idle", "30" },
    { "keepalives_interval", "10" }, { "keepalives_count", "3" } };

// What messages say of a text that may hold a password: "u:...@h" for "u:p@ss@h", and nothing
// of parameters.
QString withoutPassword(QString text)
{
    static const QRegularExpression user(QStringLiteral("((?:^|/)[^:/@]*:)(?!//).*@"),
        QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression parameters(QStringLiteral("(\\?|pass\\w*\\s*=).*$"),
        QRegularExpression::DotMatchesEverythingOption | QRegularExpression::CaseInsensitiveOption);
    return text.replace(user, QStringLiteral("\\1...@"))
        .replace(parameters, QStringLiteral("\\1..."));
}

QString notOfTheForm(const QString &url, const QString &form)
{
    return QStringLiteral("%1: not of the form %2").arg(withoutPassword(url), form);
}

// A time as PostgreSQL writes it: a number and ms, s, min or h; without a unit, milliseconds.
std::optional<milliseconds> readTime(const QString &text)
{
    static const QRegularExpression form(QStringLiteral("^(\\d{1,9})(ms|s|min|h|)$"));
    const QRegularExpressionMatch match = form.match(text);
    if (!match.hasMatch()) {
        return {};
    }
    const milliseconds::rep number = match.captured(1).toLongLong();
    const QString unit = match.captured(2);
    const int factor = unit == QLatin1String("s") ? 1000
        : unit == QLatin1String("min")            ? 60 * 1000
        : unit == QLatin1String("h")              ? 60 * 60 * 1000
                                                  : 1;
    return milliseconds(number * factor);
}

// The part of a URL behind its "?", and parameters taken out of it.
class Parameters
{
public:
    explicit Parameters(const QString &query)
        : m_items(query.isEmpty() ? QStringList() : query.split(QLatin1Char('&')))
    {
    }

    // Takes out a parameter; a null string when it is not there.
    QString take(const char *name)
    {
        const QString start = QLatin1String(name) + QLatin1Char('=');
        QString value;
        for (int i = int(m_items.size()) - 1; i >= 0; --i) {
            if (m_items.at(i).startsWith(start)) {
                value = m_items.takeAt(i).mid(start.size());
            }
        }
        return value;
    }
    QString rest() const { return m_items.join(QLatin1Char('&')); }

private:
    QStringList m_items;
};

// The URL before its "?", and the parameters behind it.
struct SplitUrl
{
    explicit SplitUrl(const QString &url)
        : address(url.section(QLatin1Char('?'), 0, 0)), parameters(url.section(QLatin1Char('?'), 1))
    {
    }

    QString address;
    Parameters parameters;
};

// Undoes percent-encoding; null with an error for what is not encoded right.
QString decoded(const QString &text, QString &error)
{
    static const QRegularExpression bad(QStringLiteral("%(?![0-9A-Fa-f]{2})"));
    if (text.contains(bad)) {
        error = QStringLiteral("%1: a \"%\" is written %25 in a URL").arg(withoutPassword(text));
        return QString();
    }
    const QString plain = QUrl::fromPercentEncoding(text.toUtf8());
    if (plain.contains(QChar(0))) {
        error = QStringLiteral("a database URL cannot hold a NUL character");
        return QString();
    }
    return plain;
}

std::optional<StoreAddress> parseFile(const QString &url, QString &error)
{
    StoreAddress address;
    address.dialect = &SQLITE;
    const QString rest = url.mid(int(qstrlen(FILE_SCHEME)));
    if (rest == QLatin1String(":memory:")) {
        return address;
    }
    SplitUrl parts(rest);
    const QString busyTimeout = parts.parameters.take("busy_timeout");
    bool isNumber = true;
    if (!busyTimeout.isNull()) {
        address.busyTimeout = busyTimeout.toInt(&isNumber);
    }
    address.shownPath = decoded(parts.address, error);
    if (!error.isEmpty()) {
        return {};
    }
    if (!isNumber || address.busyTimeout < 0 || !parts.parameters.rest().isEmpty()) {
        error = notOfTheForm(url, QStringLiteral("sqlite:PATH?busy_timeout=MILLISECONDS"));
    } else if (address.shownPath.isEmpty()) {
        error = QStringLiteral("no database is named");
    } else {
        // Not by QFileInfo, which takes ":a" for one of the program's resources.
        address.path = address.shownPath.startsWith(QLatin1Char('/'))
            ? address.shownPath
            : QDir::currentPath() + QLatin1Char('/') + address.shownPath;
        return address;
    }
    return {};
}

// Takes the parameters that are not libpq's out of a URL: limits of time, set by libpq's
// "options".
bool takeLimits(Parameters &parameters, StoreAddress &address, QString &options, QString &error)
{
    const auto take = [&parameters](const char *name, const char *otherwise) {
        const QString value = parameters.take(name);
        return value.isNull() ? QString::fromLatin1(otherwise) : value;
    };
    const QString statement = take("statement_timeout", STATEMENT_TIMEOUT);
    const QString lock = take("lock_timeout", LOCK_TIMEOUT);
    const QString response = take("response_timeout", "");
    const auto statementTime = readTime(statement);
    const auto responseTime =
        readTime(response.isEmpty() ? QStringLiteral("0") : response + QLatin1Char('s'));
    if (!statementTime || !readTime(lock) || !responseTime) {
        error = QStringLiteral("statement_timeout and lock_timeout are times such as 500ms or 30s, "
                               "response_timeout is a number of seconds");
        return false;
    }
    address.responseTimeout = *responseTime;
    if (response.isEmpty() && statementTime->count() > 0) {
        address.responseTimeout = *statementTime + GRACE;
    }
    // Notices would go to standard error.
    options = QStringLiteral("-c client_min_messages=error -c statement_timeout=%1 "
                             "-c lock_timeout=%2")
                  .arg(statement, lock);
    return true;
}

// What libpq makes of a URL: values by keyword.
class Conninfo
{
public:
    explicit Conninfo(const QString &url)
        : m_options(PQconninfoParse(url.toUtf8().constData(), nullptr))
    {
    }

    bool isValid() const { return m_options != nullptr; }
    // A null string when the URL does not say.
    QString value(const char *keyword) const
    {
        for (const PQconninfoOption *o = m_options.get(); o->keyword; ++o) {
            if (qstrcmp(o->keyword, keyword) == 0) {
                return QString::fromUtf8(o->val);
            }
        }
        return QString();
    }
    // Everything said but the keywords that have a place of their own.
    QList<QPair<QString, QString>> others() const
    {
        constexpr const char *OWN[] = { "host", "user", "dbname", "options" };
        QList<QPair<QString, QString>> list;
        for (const PQconninfoOption *o = m_options.get(); o->keyword; ++o) {
            const bool isOwn = std::any_of(std::begin(OWN), std::end(OWN),
                [o](const char *own) { return qstrcmp(o->keyword, own) == 0; });
            if (o->val && !isOwn) {
                list.append({ QString::fromUtf8(o->keyword), QString::fromUtf8(o->val) });
            }
        }
        return list;
    }

private:
    struct Free
    {
        void operator()(PQconninfoOption *options) const { PQconninfoFree(options); }
    };
    std::unique_ptr<PQconninfoOption, Free> m_options;
};

// "keyword='value'".
QString setting(const QString &keyword, QString value)
{
    value.replace(QLatin1Char('\\'), QLatin1String("\\\\"))
        .replace(QLatin1Char('\''), QLatin1String("\\'"));
    return keyword + QLatin1String("='") + value + QLatin1Char('\'');
}

// The settings with a semicolon between them, which QtSql makes a blank.
QString joined(const QList<QPair<QString, QString>> &options)
{
    QStringList list;
    for (const auto &[keyword, value] : options) {
        list += setting(keyword, value);
    }
    return list.join(QLatin1Char(';'));
}

std::optional<StoreAddress> parseNetwork(const QString &url, QString &error)
{
    StoreAddress address;
    address.dialect = &POSTGRESQL;
    SplitUrl parts(url);
    QString options;
    if (!takeLimits(parts.parameters, address, options, error)) {
        return {};
    }
    const QString rest = parts.parameters.rest();
    const Conninfo known(rest.isEmpty() ? parts.address : parts.address + QLatin1Char('?') + rest);
    // A password without its "@", or with a "/" in it, is a port or a name to libpq.
    static const QRegularExpression ports(QStringLiteral("^[0-9,]*$"));
    const bool isCut = parts.address.section(QLatin1Char('/'), 3).contains(QLatin1Char('@'));
    if (!known.isValid() || isCut || !ports.match(known.value("port")).hasMatch()) {
        error = notOfTheForm(
            QStringLiteral("postgresql://..."), QStringLiteral("postgresql://USER@HOST:PORT/DB"));
        return {};
    }
    if (!known.value("password").isEmpty() || !known.value("sslpassword").isEmpty()) {
        error = QStringLiteral("no password in a database URL, please: set PGPASSWORD, or use a "
                               "password file");
        return {};
    }
    address.host = known.value("host");
    address.user = known.value("user");
    address.database = known.value("dbname");
    QList<QPair<QString, QString>> others = known.others();
    others.append({ QStringLiteral("options"),
        (options + QLatin1Char(' ') + known.value("options")).trimmed() });
    const auto addUnlessSaid = [&](const char *keyword, const char *value) {
        if (known.value(keyword).isNull()) {
            others.append({ QString::fromLatin1(keyword), QString::fromLatin1(value) });
        }
    };
    addUnlessSaid("connect_timeout", CONNECT_TIMEOUT);
    for (const auto &[keyword, value] : KEEPALIVES) {
        addUnlessSaid(keyword, value);
    }
    for (const auto &other : others) {
        if (other.second.contains(QLatin1Char(';'))) {
            error = QStringLiteral("%1: a parameter of a database URL cannot hold a semicolon")
                        .arg(other.first);
            return {};
        }
    }
    address.options = joined(others);
    return address;
}

}  // namespace

std::optional<StoreAddress> StoreAddress::parse(const char *url, QString &error)
{
    const QString text = QString::fromUtf8(url);
    if (std::any_of(std::begin(NETWORK_SCHEMES), std::end(NETWORK_SCHEMES),
            [&text](const char *scheme) { return text.startsWith(QLatin1String(scheme)); })) {
        return parseNetwork(text, error);
    }
    // A path with "://" is a URL of another kind, which the command takes for a path.
    const QString file = QLatin1String(FILE_SCHEME);
    if (text.startsWith(file) && text.indexOf(QLatin1String("://"), file.size()) < 0) {
        return parseFile(text, error);
    }
    error = QStringLiteral("%1: not a database URL (%2)")
                .arg(withoutPassword(text), QLatin1String(FORMS));
    return {};
}

QByteArray StoreAddress::conninfo() const
{
    QString text = QString(options).replace(QLatin1Char(';'), QLatin1Char(' '));
    const QPair<const char *, QString> places[] = { { "host", host }, { "user", user },
        { "dbname", database } };
    for (const auto &[keyword, value] : places) {
        if (!value.isEmpty()) {
            text += QLatin1Char(' ') + setting(QString::fromLatin1(keyword), value);
        }
    }
    return text.toUtf8();
}

QString StoreAddress::label() const
{
    if (dialect == &SQLITE) {
        return isMemory() ? QStringLiteral("memory") : withoutPassword(shownPath);
    }
    return !database.isEmpty() ? database : !host.isEmpty() ? host : QStringLiteral("database");
}

}  // namespace TQServerInternal
