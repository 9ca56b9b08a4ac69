#include "values.h"

#include <QRegularExpression>
#include <QUrl>

#include <algorithm>
#include <iterator>

namespace {

constexpr int BASE = 16;
constexpr int MAX_DIGITS = 8;  // of a 32-bit word
constexpr QLatin1Char COLON(':');
constexpr QLatin1Char AT('@');

struct TypeName
{
    PACKETDATATYPES type;
    const char *name;
};
constexpr TypeName TYPE_NAMES[] = {
    { PACKETDATATYPE_OUTPUT, "output" },
    { PACKETDATATYPE_JOB, "job" },
    { PACKETDATATYPE_ICCPROFILE, "profile" },
    { PACKETDATATYPE_BOOKOWNER, "owner" },
    { PACKETDATATYPE_BOOK, "book" },
};

bool isHexDigit(QChar c)
{
    return (c >= QLatin1Char('0') && c <= QLatin1Char('9')) ||
        (c >= QLatin1Char('a') && c <= QLatin1Char('f')) ||
        (c >= QLatin1Char('A') && c <= QLatin1Char('F'));
}

// Accepts digits only: no sign, prefix or blanks.
std::optional<unsigned> readWord(const QString &text)
{
    if (text.isEmpty() || text.size() > MAX_DIGITS ||
        !std::all_of(text.begin(), text.end(), isHexDigit)) {
        return std::nullopt;
    }
    return text.toUInt(nullptr, BASE);
}

// Escapes a path for a URL, where "%" starts an escape and "?" the options.
QString escaped(QString path)
{
    return path.replace(QLatin1Char('%'), QLatin1String("%25"))
        .replace(QLatin1Char('?'), QLatin1String("%3F"));
}

QString unescaped(const QString &text) { return QUrl::fromPercentEncoding(text.toUtf8()); }

}  // namespace

std::optional<TQKEY_ELEMENT> readKey(const QString &text)
{
    const auto colon = text.indexOf(COLON);
    if (colon < 0) {
        return std::nullopt;
    }
    const std::optional<unsigned> key = readWord(text.left(colon));
    const std::optional<unsigned> hkey = readWord(text.mid(colon + 1));
    if (!key || !hkey) {
        return std::nullopt;
    }
    return TQKEY_ELEMENT { *key, *hkey };
}

QString noKey(const QString &text)
{
    return QStringLiteral("\"%1\" is no key: write KEY:HKEY, like 1f:56").arg(text);
}

QString wrongKey(const TQKEY_ELEMENT &key, PACKETDATATYPES type)
{
    const auto other = PACKETDATATYPES(key.hkey);
    if (other == type) {
        return QString();
    }
    QStringList kinds;
    for (const TypeName &known : TYPE_NAMES) {
        const QString number = QString::number(unsigned(known.type), BASE);
        kinds << QStringLiteral("%1 KEY:%2").arg(QLatin1String(known.name), number);
    }
    return QStringLiteral("%1 is a key of type %2, not %3; there are %4")
        .arg(keyText(key), typeText(other), typeText(type), kinds.join(QStringLiteral(", ")));
}

QString keyText(const TQKEY_ELEMENT &key)
{
    return keyText(QString::number(key.key, BASE), QString::number(key.hkey, BASE));
}

QString keyText(const QString &key, const QString &hkey) { return key + COLON + hkey; }

std::optional<PACKETDATATYPES> readType(const QString &text)
{
    const auto named = std::find_if(std::begin(TYPE_NAMES), std::end(TYPE_NAMES),
        [&text](const TypeName &name) { return text == QLatin1String(name.name); });
    if (named != std::end(TYPE_NAMES)) {
        return named->type;
    }
    const std::optional<unsigned> number = readWord(text);
    return number ? std::make_optional(PACKETDATATYPES(*number)) : std::nullopt;
}

QString typeText(PACKETDATATYPES type)
{
    const auto named = std::find_if(std::begin(TYPE_NAMES), std::end(TYPE_NAMES),
        [type](const TypeName &name) { return name.type == type; });
    return named == std::end(TYPE_NAMES) ? QString::number(unsigned(type), BASE)
                                         : QLatin1String(named->name);
}

QByteArray databaseUrl(const QString &database)
{
    if (database.startsWith(QLatin1String("sqlite:")) || database.contains(QLatin1String("://"))) {
        return database.toUtf8();
    }
    // To Qt, a path that starts with a colon is a resource.
    const QLatin1String folder(database.startsWith(COLON) ? "./" : "");
    return (QLatin1String("sqlite:") + folder + escaped(database)).toUtf8();
}

QByteArray sampleUrl() { return QByteArrayLiteral("sqlite::memory:"); }

QString withoutPassword(QString message, const QString &argument)
{
    static const QRegularExpression user(
        QStringLiteral("^(?:--database=)?(?:[^/]*://|sqlite:)?+[^/:@]*:(.+)@"),
        QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression option(QStringLiteral("(?<=pass|\\?)\\w*\\s*=.*$"),
        QRegularExpression::DotMatchesEverythingOption | QRegularExpression::CaseInsensitiveOption);
    const QString hidden = QStringLiteral("...");
    const QString password = user.match(argument).captured(1);
    for (const QString &form : { password, escaped(password), unescaped(password) }) {
        // An "@" in the password: the text after it may have been read as the host.
        for (QString rest = form; !rest.isEmpty(); rest = rest.section(AT, 1)) {
            message.replace(rest + AT, hidden + AT);
        }
    }
    const QString set = option.match(argument).captured();
    return set.isEmpty() ? message : message.replace(set, hidden);
}

QString printable(const QString &text)
{
    QString shown = text;
    for (QChar &c : shown) {
        if (c.category() == QChar::Other_Control || c == QChar::LineSeparator ||
            c == QChar::ParagraphSeparator) {
            c = c.isSpace() ? QChar(QLatin1Char(' ')) : QChar(QChar::ReplacementCharacter);
        }
    }
    return shown;
}
