#include "values.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr int BASE = 16;
constexpr int MAX_DIGITS = 8;  // of a 32-bit word
constexpr QLatin1Char COLON(':');

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

// Digits alone: no sign, no prefix, no blanks.
std::optional<unsigned> readWord(const QString &text)
{
    if (text.isEmpty() || text.size() > MAX_DIGITS ||
        !std::all_of(text.begin(), text.end(), isHexDigit)) {
        return std::nullopt;
    }
    return text.toUInt(nullptr, BASE);
}

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
    const bool isUrl =
        database.startsWith(QLatin1String("sqlite:")) || database.contains(QLatin1String("://"));
    return isUrl ? database.toUtf8() : QByteArrayLiteral("sqlite:") + database.toUtf8();
}

QByteArray sampleUrl() { return QByteArrayLiteral("sqlite::memory:"); }

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
