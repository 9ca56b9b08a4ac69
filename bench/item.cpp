#include "item.h"

#include "server.h"

#include <QByteArrayList>
#include <QStringList>

namespace {

constexpr int ITEM_TYPE = BENCH_TYPE;

// A field of the item: its tag and the value as the server library writes it.
struct Simple
{
    const char *name;
    const char *value;
};
constexpr Simple SIMPLE[] = {
    { "_1", "Middlemarch, sheet 12" },
    { "_2", "1871" },
    { "_3", "ready for output" },
    { "_4", "2026-11-22" },
    { "_5", "595.276" },
    { "_6", "841.89" },
    { "_7", "Blackwood & Sons" },
    { "_8", "1" },
    { "_9", "CTP 1" },
    { "_a", "0" },
    { "_b", "a note of some length, as people write them" },
    { "_c", "ff00ff" },
};
struct Key
{
    const char *name;
    const char *key;
    const char *hkey;
};
constexpr Key KEYS[] = { { "_d", "1f4", "56" }, { "_e", "7", "30" }, { "_f", "a2c", "8" } };
constexpr const char *NUMBER_ARRAYS[] = { "_10", "_11" };
constexpr const char *NUMBERS[] = { "0", "11", "255", "4096", "-7", "18", "3", "100000" };
constexpr const char *STRING_ARRAY = "_12";
constexpr const char *STRINGS[] = { "cyan", "magenta", "yellow", "black" };
constexpr const char *BINARY = "_13";
constexpr int BINARY_SIZE = 150;  // bytes; 200 characters of base64
constexpr Simple NESTED[] = { { "_1", "trap" }, { "_2", "0.25" }, { "_3", "both sides" } };
constexpr int NESTED_ITEMS = 2;

QByteArray binaryText() { return QByteArray(BINARY_SIZE, '\x5a').toBase64(); }

QByteArray line(const char *name, const QByteArray &value)
{
    return QByteArray(name + 1) + ' ' + value + '\n';
}

QByteArray lines(const Simple *fields, size_t count)
{
    QByteArray text;
    for (size_t i = 0; i < count; ++i) {
        text += line(fields[i].name, fields[i].value);
    }
    return text;
}

QByteArray oneItem()
{
    const QByteArray type = QByteArray::number(ITEM_TYPE, 16);
    QByteArray text = "SI " + type + '\n' + lines(SIMPLE, std::size(SIMPLE));
    for (const Key &key : KEYS) {
        text += line(key.name, QByteArray(key.key) + ' ' + key.hkey);
    }
    for (const char *name : NUMBER_ARRAYS) {
        QByteArray value = QByteArray::number(int(std::size(NUMBERS)), 16);
        for (const char *number : NUMBERS) {
            value += ' ' + QByteArray(number);
        }
        text += line(name, value);
    }
    QByteArrayList strings;
    for (const char *string : STRINGS) {
        strings += string;
    }
    text +=
        line(STRING_ARRAY, QByteArray::number(int(strings.size()), 16) + ' ' + strings.join('\r'));
    text += line(BINARY, QByteArray::number(BINARY_SIZE, 16) + ' ' + binaryText());
    text += "SL " + QByteArray::number(NESTED_ITEMS, 16) + '\n';
    for (int i = 0; i < NESTED_ITEMS; ++i) {
        text += "SI " + type + '\n' + lines(NESTED, std::size(NESTED)) + "TI 0\n";
    }
    return text + "TL 0\nTI 0\n";
}

// The names that a program that calls QtXml directly would keep.
struct Names
{
    const QString item = QStringLiteral("item");
    const QString list = QStringLiteral("list");
    const QString datatype = QStringLiteral("datatype");
    const QString size = QStringLiteral("size");
    const QString value = QStringLiteral("value");
    const QString key = QStringLiteral("key");
    const QString hkey = QStringLiteral("hkey");
    const QString type = QString::number(ITEM_TYPE, 16);
    QStringList simple;
    QStringList keys;
    QStringList numberArrays;
    const QString stringArray = QString::fromLatin1(STRING_ARRAY);
    const QString binary = QString::fromLatin1(BINARY);
    const QByteArray binaryData = binaryText();

    Names()
    {
        for (const Simple &field : SIMPLE) {
            simple += QString::fromLatin1(field.name);
        }
        for (const Key &field : KEYS) {
            keys += QString::fromLatin1(field.name);
        }
        for (const char *name : NUMBER_ARRAYS) {
            numberArrays += QString::fromLatin1(name);
        }
    }
};

void buildSimple(QDomDocument &document, QDomElement &parent, const Names &names,
    const Simple *fields, size_t count)
{
    for (size_t i = 0; i < count; ++i) {
        QDomElement e = document.createElement(names.simple.at(int(i)));
        e.setAttribute(names.value, QString::fromUtf8(fields[i].value));
        parent.appendChild(e);
    }
}

template<size_t N>
void buildArray(QDomDocument &document, QDomElement &parent, const Names &names,
    const QString &name, const char *const (&values)[N])
{
    QDomElement e = document.createElement(name);
    e.setAttribute(names.size, QString::number(N, 16));
    for (const char *text : values) {
        QDomElement value = document.createElement(names.value);
        value.appendChild(document.createTextNode(QString::fromUtf8(text)));
        e.appendChild(value);
    }
    parent.appendChild(e);
}

QDomElement startItem(QDomDocument &document, QDomElement &parent, const Names &names)
{
    QDomElement item = document.createElement(names.item);
    item.setAttribute(names.datatype, names.type);
    parent.appendChild(item);
    return item;
}

// An element with children has a size, or is an item or a value; one without has a key or a value.
qint64 readAttributes(const QDomElement &e, const QString &name, const Names &names)
{
    if (name == names.value) {
        return 0;
    }
    if (name == names.item) {
        return e.attribute(names.datatype).size();
    }
    if (e.hasChildNodes()) {
        return e.attribute(names.size).size();
    }
    if (names.keys.contains(name)) {
        return e.attribute(names.key).size() + e.attribute(names.hkey).size();
    }
    return e.attribute(names.value).size();
}

}  // namespace

QByteArray Item::text(int items) { return oneItem().repeated(items); }

std::string Item::textEndingWith(const std::string &value)
{
    const std::string whole = text().toStdString();
    const std::string end = "TI 0\n";
    return whole.substr(0, whole.size() - end.size()) + "1 " + value + '\n' + end;
}

void Item::build(QDomDocument &document, QDomElement &parent)
{
    static const Names names;
    QDomElement item = startItem(document, parent, names);
    buildSimple(document, item, names, SIMPLE, std::size(SIMPLE));
    for (size_t i = 0; i < std::size(KEYS); ++i) {
        QDomElement e = document.createElement(names.keys.at(int(i)));
        e.setAttribute(names.key, QString::fromUtf8(KEYS[i].key));
        e.setAttribute(names.hkey, QString::fromUtf8(KEYS[i].hkey));
        item.appendChild(e);
    }
    for (const QString &name : names.numberArrays) {
        buildArray(document, item, names, name, NUMBERS);
    }
    buildArray(document, item, names, names.stringArray, STRINGS);
    QDomElement binary = document.createElement(names.binary);
    binary.setAttribute(names.size, QString::number(BINARY_SIZE, 16));
    binary.appendChild(document.createTextNode(QString::fromUtf8(names.binaryData)));
    item.appendChild(binary);
    QDomElement list = document.createElement(names.list);
    list.setAttribute(names.size, QString::number(NESTED_ITEMS, 16));
    item.appendChild(list);
    for (int i = 0; i < NESTED_ITEMS; ++i) {
        QDomElement nested = startItem(document, list, names);
        buildSimple(document, nested, names, NESTED, std::size(NESTED));
    }
}

void Item::buildPacketable(QDomDocument &document, QDomElement &parent)
{
    QDomElement packetable = document.createElement(QStringLiteral("packetable"));
    packetable.setAttribute(QStringLiteral("datatype"), QString::number(ITEM_TYPE, 16));
    packetable.setAttribute(QStringLiteral("key"), QString::number(0, 16));
    packetable.setAttribute(QStringLiteral("hkey"), QString::number(0, 16));
    parent.appendChild(packetable);
    build(document, packetable);
}

Item::Form Item::formOf(unsigned int tag)
{
    if (tag <= std::size(SIMPLE)) {
        return Simple;
    }
    constexpr Form OTHERS[] = { Key, Key, Key, Numbers, Numbers, Strings, Binary };
    return OTHERS[tag - std::size(SIMPLE) - 1];
}

std::unique_ptr<TextItem> Item::serverItem()
{
    return std::make_unique<TextItem>(text().toStdString());
}

// Reads the attributes by the names that an element of that kind has.
qint64 Item::walk(const QDomNode &parent)
{
    static const Names names;
    qint64 read = 0;
    for (QDomNode node = parent.firstChild(); !node.isNull(); node = node.nextSibling()) {
        if (node.isText()) {
            read += node.nodeValue().size();
            continue;
        }
        const QDomElement e = node.toElement();
        const QString name = e.tagName();
        read += name.size() + readAttributes(e, name, names) + walk(e);
    }
    return read;
}
