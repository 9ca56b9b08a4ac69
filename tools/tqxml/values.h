#ifndef VALUES_H
#define VALUES_H

#include "tqtypes.h"

#include <QString>

#include <optional>

/// Reads a key, "KEY:HKEY", both words hexadecimal; none for any other text.
std::optional<TQKEY_ELEMENT> readKey(const QString &text);
/// The error message for a text that is not a key.
QString noKey(const QString &text);
/// What is wrong with a key for an item of that type, and which kinds of keys there are; empty if
/// nothing is wrong.
QString wrongKey(const TQKEY_ELEMENT &key, PACKETDATATYPES type);
/// A key as readKey() reads it, "KEY:HKEY".
QString keyText(const TQKEY_ELEMENT &key);
QString keyText(const QString &key, const QString &hkey);

/// Reads a data type: a name ("job", "book", ...) or a hexadecimal number; none for any other text.
std::optional<PACKETDATATYPES> readType(const QString &text);
/// The name of a data type, or its hexadecimal number if it has none.
QString typeText(PACKETDATATYPES type);

/// The environment variable with the DATABASE that is read when none is given.
constexpr char DATABASE_VARIABLE[] = "TQXML_DATABASE";
/// The URL for a DATABASE argument, which is a path or a URL.
QByteArray databaseUrl(const QString &database);
/// The URL of the sample in memory.
QByteArray sampleUrl();

/// Removes passwords from a message that quotes an argument. The argument is a URL or looks like
/// one: "USER:PASSWORD@HOST/DB", "...?password=PASSWORD".
QString withoutPassword(QString message, const QString &argument);

/// Replaces every control character, so that the text is one line and safe to show.
QString printable(const QString &text);

#endif
