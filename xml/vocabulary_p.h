#ifndef TQXML_VOCABULARY_P_H
#define TQXML_VOCABULARY_P_H

#include "tqtypes.h"

#include <QString>

// The words of packet text and of its XML form, and the limits of depth. Applications find the
// words as constants of the public classes.

namespace TQXmlInternal {

// Elements of an item.
inline const QString PACKETABLE = QStringLiteral("packetable");
inline const QString ITEM = QStringLiteral("item");
inline const QString LIST = QStringLiteral("list");
inline const QString VALUE = QStringLiteral("value");  // also the attribute of a simple field

// Attributes of items, lists and fields.
inline const QString DATATYPE = QStringLiteral("datatype");
inline const QString NAME = QStringLiteral("name");
inline const QString KEY = QStringLiteral("key");
inline const QString HKEY = QStringLiteral("hkey");
inline const QString SIZE = QStringLiteral("size");
inline const QString IS_CURRENT = QStringLiteral("is_current");
inline const QString IS_REPLACEMENT = QStringLiteral("is_replacement");

// First words of the lines that open and close lists and items.
inline const QString START_LIST = QStringLiteral("SL");
inline const QString END_LIST = QStringLiteral("TL");
inline const QString START_ITEM = QStringLiteral("SI");
inline const QString END_ITEM = QStringLiteral("TI");

// Separators of packet text.
constexpr char16_t LINE_FEED = u'\n';
constexpr char16_t BLANK = u' ';  // between the word and the value of a line, and between numbers
constexpr char16_t STRING_SEPARATOR = u'\r';  // between texts

// How many levels below a node are copied and written. QtXml recurses for each, and its writer
// needs 2 KB of stack per level.
constexpr int MAX_TREE_DEPTH = TQMAX_NESTING + 128;

}  // namespace TQXmlInternal

#endif
