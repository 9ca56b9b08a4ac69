#include "fieldbuilders_p.h"

#include "text_p.h"
#include "xmlpacketable.h"

#include <iterator>

namespace {

constexpr char16_t BLANK = u' ';
constexpr char16_t STRING_SEPARATOR = u'\r';

unsigned int countParts(QStringView text, char16_t separator)
{
    unsigned int count = 0;
    forEachPart(text, separator, [&](QStringView) { ++count; });
    return count;
}

// The first part of a text cut at blanks.
QStringView firstPart(QStringView text)
{
    while (text.startsWith(QChar(BLANK))) {
        text = text.mid(1);
    }
    const qsizetype end = indexOf(text, BLANK);
    return end < 0 ? text : text.left(end);
}

void setText(QDomElement &e, const QString &attribute, QStringView value)
{
    if (!value.isEmpty()) {
        e.setAttribute(attribute, value.toString());
    }
}

void setSize(QDomElement &e, unsigned int size)
{
    e.setAttribute(XMLPacketable::SIZE, numberText(size, 16));
}

void appendValue(QDomDocument &document, QDomElement &array, QStringView text)
{
    QDomElement value = document.createElement(XMLPacketable::VALUE);
    value.appendChild(document.createTextNode(text.toString()));
    array.appendChild(value);
}

void fillSimple(QDomDocument &, QDomElement &e, QStringView text)
{
    setText(e, XMLPacketable::VALUE, text);
}

void fillKey(QDomDocument &, QDomElement &e, QStringView text)
{
    if (countParts(text, BLANK) != 2) {
        return;
    }
    const QString *attribute = &XMLPacketable::KEY;
    forEachPart(text, BLANK, [&](QStringView part) {
        setText(e, *attribute, part);
        attribute = &XMLPacketable::HKEY;
    });
}

// The size is written only when it agrees with the numbers.
void fillNumberArray(QDomDocument &document, QDomElement &e, QStringView text)
{
    unsigned int size = 0;
    const unsigned int parts = countParts(text, BLANK);
    if (!readNumber(firstPart(text), 16, size) || size != parts - 1) {
        return;
    }
    setSize(e, size);
    bool isCount = true;
    forEachPart(text, BLANK, [&](QStringView part) {
        if (!isCount) {
            appendValue(document, e, part);
        }
        isCount = false;
    });
}

// The size is written as soon as it can be read, the strings only when it agrees with them.
void fillStringArray(QDomDocument &document, QDomElement &e, QStringView text)
{
    unsigned int size = 0;
    if (!readNumber(firstPart(text), 16, size)) {
        return;
    }
    setSize(e, size);
    // All behind the first blank, also where that leads the text: then the count is a string.
    const QStringView strings = text.mid(indexOf(text, BLANK) + 1);
    if (size != 0 && countParts(strings, STRING_SEPARATOR) == size) {
        forEachPart(
            strings, STRING_SEPARATOR, [&](QStringView part) { appendValue(document, e, part); });
    }
}

// Without a blank the whole text is both the size and the data.
void fillBinary(QDomDocument &document, QDomElement &e, QStringView text)
{
    const qsizetype blank = indexOf(text, BLANK);
    setText(e, XMLPacketable::SIZE, blank < 0 ? text : text.left(blank));
    e.appendChild(document.createTextNode(text.mid(blank + 1).toString()));
}

void fillNothing(QDomDocument &, QDomElement &, QStringView) {}

// By shape.
using Filler = void (*)(QDomDocument &document, QDomElement &e, QStringView text);
constexpr Filler FILLERS[] = {
    fillNothing,
    fillSimple,
    fillKey,
    fillNumberArray,
    fillStringArray,
    fillBinary,
};
static_assert(std::size(FILLERS) == Binary + 1, "one filler for each shape");

}  // namespace

QDomElement buildField(
    Shape shape, QDomDocument &document, QDomElement &parent, const QString &name, QStringView text)
{
    if (parent.isNull() || name.isEmpty()) {
        return QDomElement();
    }
    QDomElement e = document.createElement(name);
    FILLERS[shape](document, e, text);
    parent.appendChild(e);
    return e;
}

QDomElement makeElement(
    QDomDocument &document, const QString &name, const QString &attribute, QStringView value)
{
    QDomElement e = document.createElement(name);
    setText(e, attribute, value);
    return e;
}
