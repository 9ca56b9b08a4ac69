// The URLs of PostgreSQL stores. libpq reads them, but three parameters are not libpq's: those are
// taken out first and reach the server as settings. Limits of time that the URL leaves out get a
// default, because libpq would wait for ever.

#include "postgresqlurl_p.h"

#include "urlparts_p.h"

#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <iterator>
#include <memory>

#include <libpq-fe.h>

namespace TQServerInternal {

namespace {

using std::chrono::milliseconds;

constexpr const char *SCHEMES[] = { "postgresql://", "postgres://" };

// A statement that takes longer, or waits longer for a lock, is ended by the server.
constexpr const char *STATEMENT_TIMEOUT = "30s";
constexpr const char *LOCK_TIMEOUT = "10s";
// What the server gets beyond a statement's time before it counts as silent.
constexpr milliseconds GRACE { 10000 };
// What libpq gets unless the URL says otherwise. A peer that has gone is noticed within a minute.
constexpr const char *DEFAULTS[][2] = { { "connect_timeout", "5" }, { "keepalives_idle", "30" },
    { "keepalives_interval", "10" }, { "keepalives_count", "3" } };

using Settings = QList<QPair<QString, QString>>;  // keyword and value

// A time as PostgreSQL writes it: a number and a unit; without a unit, milliseconds.
std::optional<milliseconds> readTime(const QString &text)
{
    struct Unit
    {
        const char *name;
        milliseconds length;
    };
    constexpr Unit UNITS[] = { { "", milliseconds(1) }, { "ms", milliseconds(1) },
        { "s", std::chrono::seconds(1) }, { "min", std::chrono::minutes(1) },
        { "h", std::chrono::hours(1) } };
    static const QRegularExpression form(QStringLiteral("^(\\d{1,9})([a-z]*)$"));
    const QRegularExpressionMatch match = form.match(text);
    const QString name = match.captured(2);
    const auto unit = std::find_if(std::begin(UNITS), std::end(UNITS),
        [&name](const Unit &known) { return name == QLatin1String(known.name); });
    if (!match.hasMatch() || unit == std::end(UNITS)) {
        return {};
    }
    return match.captured(1).toInt() * unit->length;
}

// The parameters that are not libpq's: limits of time.
struct Limits
{
    QString statement;
    QString lock;
    milliseconds response;

    // What makes the server keep them, as an option of libpq's. Notices would go to standard error.
    QString serverOptions() const
    {
        return QStringLiteral("-c client_min_messages=error -c statement_timeout=%1 "
                              "-c lock_timeout=%2")
            .arg(statement, lock);
    }
};

QString takeOr(UrlParameters &parameters, const char *name, const char *otherwise)
{
    const QString value = parameters.take(name);
    return value.isNull() ? QString::fromLatin1(otherwise) : value;
}

// Takes the limits out of a URL; none when one of them is not a time.
std::optional<Limits> takeLimits(UrlParameters &parameters)
{
    Limits limits { takeOr(parameters, "statement_timeout", STATEMENT_TIMEOUT),
        takeOr(parameters, "lock_timeout", LOCK_TIMEOUT), milliseconds(0) };
    const QString response = takeOr(parameters, "response_timeout", "");
    const auto statementTime = readTime(limits.statement);
    if (!statementTime || !readTime(limits.lock)) {
        return {};
    }
    if (response.isEmpty()) {
        limits.response = statementTime->count() > 0 ? *statementTime + GRACE : milliseconds(0);
        return limits;
    }
    const auto responseTime = readTime(response + QLatin1Char('s'));
    if (!responseTime) {
        return {};
    }
    limits.response = *responseTime;
    return limits;
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
    Settings others() const
    {
        constexpr const char *OWN[] = { "host", "user", "dbname", "options" };
        Settings list;
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
QString joined(const Settings &settings)
{
    QStringList list;
    for (const auto &[keyword, value] : settings) {
        list += setting(keyword, value);
    }
    return list.join(QLatin1Char(';'));
}

// Whether libpq has understood a URL as it is meant. A password without its "@", or with a "/" in
// it, is a port or a name to libpq.
bool isUnderstood(const QString &url, const Conninfo &known)
{
    static const QRegularExpression ports(QStringLiteral("^[0-9,]*$"));
    const bool isCut = url.section(QLatin1Char('/'), 3).contains(QLatin1Char('@'));
    return known.isValid() && !isCut && ports.match(known.value("port")).hasMatch();
}

// What goes to libpq beside the keywords that have a place of their own.
Settings settingsOf(const Conninfo &known, const QString &serverOptions)
{
    Settings settings = known.others();
    const QString options = serverOptions + QLatin1Char(' ') + known.value("options");
    settings.append({ QStringLiteral("options"), options.trimmed() });
    for (const auto &[keyword, value] : DEFAULTS) {
        if (known.value(keyword).isNull()) {
            settings.append({ QString::fromLatin1(keyword), QString::fromLatin1(value) });
        }
    }
    return settings;
}

QString labelOf(const StoreAddress &address)
{
    if (!address.database.isEmpty()) {
        return address.database;
    }
    return address.host.isEmpty() ? QStringLiteral("database") : address.host;
}

}  // namespace

bool isPostgresqlUrl(const QString &url)
{
    return std::any_of(std::begin(SCHEMES), std::end(SCHEMES),
        [&url](const char *scheme) { return url.startsWith(QLatin1String(scheme)); });
}

std::optional<StoreAddress> parsePostgresqlUrl(const QString &url, QString &error)
{
    UrlParts parts(url);
    const auto limits = takeLimits(parts.parameters);
    if (!limits) {
        error = QStringLiteral("statement_timeout and lock_timeout are times such as 500ms or 30s, "
                               "response_timeout is a number of seconds");
        return {};
    }
    const QString rest = parts.parameters.rest();
    const Conninfo known(rest.isEmpty() ? parts.address : parts.address + QLatin1Char('?') + rest);
    if (!isUnderstood(parts.address, known)) {
        error = notOfTheForm(
            QStringLiteral("postgresql://..."), QStringLiteral("postgresql://USER@HOST:PORT/DB"));
        return {};
    }
    if (!known.value("password").isEmpty() || !known.value("sslpassword").isEmpty()) {
        error = QStringLiteral("no password in a database URL, please: set PGPASSWORD, or use a "
                               "password file");
        return {};
    }
    const Settings settings = settingsOf(known, limits->serverOptions());
    for (const auto &[keyword, value] : settings) {
        if (value.contains(QLatin1Char(';'))) {
            error = QStringLiteral("%1: a parameter of a database URL cannot hold a semicolon")
                        .arg(keyword);
            return {};
        }
    }
    StoreAddress address;
    address.dialect = &POSTGRESQL;
    address.place = StoreAddress::Place::Server;
    address.host = known.value("host");
    address.user = known.value("user");
    address.database = known.value("dbname");
    address.options = joined(settings);
    address.responseTimeout = limits->response;
    address.label = labelOf(address);
    return address;
}

QByteArray conninfo(const StoreAddress &address)
{
    QString text = QString(address.options).replace(QLatin1Char(';'), QLatin1Char(' '));
    const QPair<const char *, QString> places[] = { { "host", address.host },
        { "user", address.user }, { "dbname", address.database } };
    for (const auto &[keyword, value] : places) {
        if (!value.isEmpty()) {
            text += QLatin1Char(' ') + setting(QString::fromLatin1(keyword), value);
        }
    }
    return text.toUtf8();
}

}  // namespace TQServerInternal
