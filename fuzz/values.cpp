#include "fuzz.h"

#include "xmlaction.h"
#include "xmlpacketable.h"

#include <QDomDocument>

#include <cmath>

// Typed values: what was stored reads back, and any text reads as something.

namespace {

constexpr const char *PROPERTIES[] = { "visible", "enabled", "checked", "selected", "colour",
    "pagenum", "channel_id", "index", "x", "x_double", "y_double", "sort_type", "tqkey_key",
    "tqkey_hkey", "tqkey_key_list", "tqkey_hkey_list", "jobids", "tqjobids", "org_name" };
constexpr const char *ATTRIBUTES[] = { "name", "type", "originator", "key", "hkey", "datatype",
    "is_current", "is_replacement" };
constexpr size_t TEXT = 64;

template<size_t N>
QString oneOf(const char *const (&texts)[N], Bytes &bytes)
{
    return QString::fromLatin1(texts[bytes.below(N)]);
}

int anyBase(Bytes &bytes) { return int(bytes.below(44)) - 3; }
int base(Bytes &bytes) { return int(bytes.below(35)) + 2; }

template<typename T>
QList<T> anyList(Bytes &bytes)
{
    QList<T> list;
    for (unsigned count = bytes.below(8); count > 0; --count) {
        list.append(T(bytes.word()));
    }
    return list;
}

void checkLists(Bytes &bytes)
{
    const int radix = base(bytes);
    const QList<int> numbers = anyList<int>(bytes);
    const QList<unsigned int> words = anyList<unsigned int>(bytes);
    bool ok = true;
    require(XMLObject::toLongList(XMLObject::toString(numbers, radix), &ok, radix) == numbers && ok,
        "a list of numbers reads back");
    require(XMLObject::toULongList(XMLObject::toString(words, radix), &ok, radix) == words && ok,
        "a list of words reads back");
}

void checkListText(Bytes &bytes)
{
    const int any = anyBase(bytes);
    const int radix = base(bytes);
    const QString text = bytes.text(TEXT);
    bool ok = true;
    const QList<int> numbers = XMLObject::toLongList(text, &ok, radix);
    require(!ok || text.isEmpty() || !numbers.isEmpty() || text.trimmed().isEmpty(),
        "a list that reads well has members");
    require(XMLObject::toLongList(XMLObject::toString(numbers, radix), nullptr, radix) == numbers,
        "what was read is written and read back");
    XMLObject::toLongList(text, &ok, any);
    XMLObject::toULongList(text, &ok, any);
}

// Any text, also one that no setter writes, among any other nodes.
void spoil(QDomElement &e, Bytes &bytes)
{
    const QString name = oneOf(PROPERTIES, bytes);
    const unsigned kind = bytes.below(5);
    const QString text = bytes.text(TEXT);
    if (kind == 0) {
        e.appendChild(e.ownerDocument().createProcessingInstruction(name, text));
    } else if (kind == 1) {
        XMLObject::createElementV(e, name);
        QDomElement property = XMLObject::getElement(e, name);
        property.appendChild(e.ownerDocument().createCDATASection(text));
    } else if (kind == 2) {
        e.setAttribute(oneOf(ATTRIBUTES, bytes), text);
    } else {
        XMLObject::setProperty(e, name, text);
    }
}

// An own element, as far as the properties of an action go.
class Shelf : public XMLObject
{
public:
    Shelf() : XMLObject(XMLOBJECT_ACTION) {}
    QDomElement &element() { return XMLObject::element(); }
};

void checkProperties(QDomElement &e, Bytes &bytes)
{
    const QString name = QStringLiteral("new") + oneOf(PROPERTIES, bytes);
    const unsigned word = bytes.word();
    const int radix = base(bytes);
    XMLObject::setProperty(e, name, int(word));
    require(XMLObject::getPropertyInt(e, name) == int(word), "a number reads back");
    require(XMLObject::getPropertyLong(e, name) == long(int(word)), "a long reads back");
    XMLObject::setProperty(e, name, word, radix);
    require(XMLObject::getPropertyUInt(e, name, radix) == word, "a word reads back");
    require(XMLObject::getPropertyULong(e, name, radix) == word, "a long word reads back");
    XMLObject::setProperty(e, name, (word & 1) != 0);
    require(XMLObject::getPropertyBool(e, name) == ((word & 1) != 0), "a switch reads back");
    const QList<int> numbers = anyList<int>(bytes);
    XMLObject::setProperty(e, name, numbers, radix);
    require(XMLObject::getPropertyLongList(e, name, radix) == numbers, "numbers read back");
    const double real = std::ldexp(double(int(word)), int(bytes.take()) - 128);
    XMLObject::setProperty(e, name, real);
    const double stored = XMLObject::getPropertyDouble(e, name);
    require(std::abs(stored - real) <= std::abs(real) * 1e-5, "a real number nearly reads back");
    XMLObject::setProperty(e, name, stored);
    require(XMLObject::getPropertyDouble(e, name) == stored, "a stored one stays as it is");
}

void checkAttributes(QDomElement &e, Bytes &bytes)
{
    const QString name = oneOf(ATTRIBUTES, bytes);
    const unsigned word = bytes.word();
    const int radix = base(bytes);
    XMLObject::setAttribute(e, name, int(word));
    require(XMLObject::getAttributeInt(e, name) == int(word), "a number reads back");
    XMLObject::setAttribute(e, name, word, radix);
    require(XMLObject::getAttributeUInt(e, name, radix) == word, "a word reads back");
    const QString text = bytes.text(TEXT);
    XMLObject::setAttribute(e, name, text);
    require(text.isEmpty() || XMLObject::getAttribute(e, name) == text, "a text reads back");
    XMLObject::removeAttribute(e, name);
    require(XMLObject::getAttribute(e, name).isNull(), "an attribute that was removed is absent");
}

// Every getter of an action, whatever its element holds.
void readAction(const XMLAction &action)
{
    const QList<TQKEY_ELEMENT *> keys = action.getTQKEYList();
    require(keys.isEmpty() || action.hasTQKEYList(), "keys are there");
    qDeleteAll(keys);
    require(action.getVisible() || action.hasVisible(), "visible unless it says otherwise");
    require(action.isEnabled() || action.hasEnabled(), "enabled unless it says otherwise");
    require(action.hasColour() || action.getColour() == 0xffffff, "white unless it says otherwise");
    require(action.hasTQKEY() || action.getTQKEY().key == 0 || action.getTQKEY().hkey == 0,
        "no key unless both words are there");
    require(action.getJobIDs().isEmpty() ? action.getJobID() == 0
                                         : action.getJobID() == action.getJobIDs().first(),
        "the job is the first one");
    action.getTQJobIDs();
    action.getPageNumber();
    action.getChannelID();
    action.getSortType();
    action.getXDouble();
    action.getOrgName();
}

// A pair is the line that it was cut from.
void checkLine(QString line)
{
    const QString before = QStringLiteral("tag value");
    QStringRef tag(&before, 0, 3);
    QStringRef value(&before, 4, 5);
    XMLPacketable::getTagValuePair(line, tag, value);
    require(tag.string() == &before || tag.toString() + QLatin1Char(' ') + value.toString() == line,
        "a pair is its line");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Bytes bytes(data, size);
    Shelf shelf;
    while (!bytes.isEmpty()) {
        switch (bytes.below(7)) {
        case 0:
            checkLists(bytes);
            break;
        case 1:
            checkListText(bytes);
            break;
        case 2:
            checkProperties(shelf.element(), bytes);
            break;
        case 3:
            checkAttributes(shelf.element(), bytes);
            break;
        case 6:
            checkLine(bytes.text(TEXT));
            break;
        default:
            spoil(shelf.element(), bytes);
            break;
        }
    }
    XMLAction action;
    action.setNode(shelf.element());
    readAction(action);
    return 0;
}
