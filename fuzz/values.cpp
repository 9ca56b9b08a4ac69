#include "fuzz.h"

#include "xmlaction.h"

#include <QDomDocument>

#include <cmath>

// Typed values: what was stored reads back, and any text reads as something.

namespace {

constexpr const char *PROPERTIES[] = { "visible", "enabled", "colour", "pagenum", "channel_id", "x",
    "x_double", "sort_type", "tqkey_key", "tqkey_hkey", "tqkey_key_list", "tqkey_hkey_list",
    "jobids", "tqjobids", "org_name" };
constexpr size_t TEXT = 64;

int base(Bytes &bytes) { return int(bytes.below(35)) + 2; }

void checkNumbers(QDomElement &e, Bytes &bytes)
{
    const QString name = QStringLiteral("number");
    const unsigned word = bytes.word();
    const int radix = base(bytes);
    XMLObject::setAttribute(e, name, int(word));
    require(XMLObject::getAttributeInt(e, name) == int(word), "a number reads back");
    XMLObject::setProperty(e, name, word, radix);
    require(XMLObject::getPropertyUInt(e, name, radix) == word, "a word reads back");
    const double real = std::ldexp(double(int(word)), int(bytes.take()) - 128);
    XMLObject::setProperty(e, name, real);
    const double stored = XMLObject::getPropertyDouble(e, name);
    require(std::abs(stored - real) <= std::abs(real) * 1e-5, "a real number nearly reads back");
    XMLObject::setProperty(e, name, stored);
    require(XMLObject::getPropertyDouble(e, name) == stored, "a stored one stays as it is");
}

// Any text as a list, in any base: what can be read is written and read back.
void checkList(Bytes &bytes)
{
    bool ok = true;
    const QString text = bytes.text(TEXT);
    XMLObject::toLongList(text, &ok, int(bytes.below(44)) - 3);
    const int radix = base(bytes);
    const QList<int> numbers = XMLObject::toLongList(text, nullptr, radix);
    const QList<unsigned int> words = XMLObject::toULongList(text, nullptr, radix);
    require(XMLObject::toLongList(XMLObject::toString(numbers, radix), &ok, radix) == numbers,
        "a list of numbers reads back");
    require(XMLObject::toULongList(XMLObject::toString(words, radix), &ok, radix) == words,
        "a list of words reads back");
}

// Any text, also one that no setter writes, among any other nodes.
void spoil(QDomElement &e, Bytes &bytes)
{
    const QString name = QString::fromLatin1(bytes.oneOf(PROPERTIES));
    const unsigned kind = bytes.below(4);
    const QString text = bytes.text(TEXT);
    if (kind == 0) {
        e.appendChild(e.ownerDocument().createProcessingInstruction(name, text));
    } else if (kind == 1) {
        QDomElement property = XMLObject::createElement(e, name);
        property.appendChild(e.ownerDocument().createCDATASection(text));
    } else {
        XMLObject::setProperty(e, name, text);
    }
}

// Typed values of an action, whatever its element holds.
void readAction(const XMLAction &action)
{
    const QList<TQKEY_ELEMENT *> keys = action.getTQKEYList();
    require(keys.isEmpty() || action.hasTQKEYList(), "keys are there");
    qDeleteAll(keys);
    require(action.hasTQKEY() || action.getTQKEY().key == 0 || action.getTQKEY().hkey == 0,
        "no key unless both words are there");
    require(action.getJobIDs().isEmpty() || action.getJobID() == action.getJobIDs().first(),
        "the job is the first one");
    action.getPageNumber();
    action.getChannelID();
    action.getXDouble();
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    Bytes bytes(data, size);
    XMLAction action;
    QDomElement e = action.getNode();
    while (!bytes.isEmpty()) {
        switch (bytes.below(4)) {
        case 0:
            checkNumbers(e, bytes);
            break;
        case 1:
            checkList(bytes);
            break;
        default:
            spoil(e, bytes);
            break;
        }
    }
    action.setNode(e);
    readAction(action);
    return 0;
}
