#ifndef VALUES_H
#define VALUES_H

#include "tqtypes.h"

#include <QString>

#include <optional>

/// A key from "KEY:HKEY", both words hexadecimal; nothing for any other text.
std::optional<TQKEY_ELEMENT> readKey(const QString &text);
/// What is wrong with a text that is none.
QString noKey(const QString &text);
/// What is wrong with a key for an item of that type; empty when nothing is.
QString wrongKey(const TQKEY_ELEMENT &key, PACKETDATATYPES type);
/// "KEY:HKEY", as readKey() takes it.
QString keyText(const TQKEY_ELEMENT &key);
QString keyText(const QString &key, const QString &hkey);

/// A data type from its name ("job", "book", ...) or its hexadecimal number; nothing otherwise.
std::optional<PACKETDATATYPES> readType(const QString &text);
/// The name of a data type; its hexadecimal number when it has none.
QString typeText(PACKETDATATYPES type);

/// URL of the store that a DATABASE argument means: a path, or a URL already.
QByteArray databaseUrl(const QString &database);
/// URL of the sample in memory.
QByteArray sampleUrl();

/// The message without the passwords that an argument has in it, which may be a URL, or what was
/// meant to be one: "USER:PASSWORD@HOST/DB", "...?password=PASSWORD".
QString withoutPassword(QString message, const QString &argument);

/// The text with every control character replaced, so that it is one line and safe to show.
QString printable(const QString &text);

#endif
