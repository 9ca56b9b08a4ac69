#include "fuzz.h"

#include <QCoreApplication>
#include <QDomNamedNodeMap>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

void require(bool holds, const char *property)
{
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", property);
        std::abort();
    }
}

void makeApplication()
{
    static int argc = 1;
    static char name[] = "fuzz";
    static char *argv[] = { name, nullptr };
    static const QCoreApplication *const application = new QCoreApplication(argc, argv);
    require(application != nullptr, "there is an application object");
}

unsigned Bytes::take()
{
    if (m_left == 0) {
        return 0;
    }
    --m_left;
    return *m_data++;
}

unsigned Bytes::word()
{
    unsigned number = 0;
    for (unsigned shift = 0; shift < 32; shift += 8) {
        number |= take() << shift;
    }
    return number;
}

QByteArray Bytes::raw(size_t most)
{
    QByteArray bytes;
    for (size_t i = 0; i < most && m_left > 0; ++i) {
        const auto byte = static_cast<char>(take());
        if (byte == '\0') {
            break;
        }
        bytes.append(byte);
    }
    return bytes;
}

void Program::run()
{
    while (!bytes.isEmpty()) {
        ++m_steps;
        step();
    }
}

void Program::callBack()
{
    constexpr unsigned DEPTH = 12;
    for (unsigned steps = m_depth < DEPTH ? bytes.below(4) : 0; steps > 0; --steps) {
        ++m_depth;
        ++m_steps;
        step();
        --m_depth;
    }
}

char *TextItem::toPacket(unsigned int &length) const
{
    length = unsigned(text.size());
    auto *const buffer = text.isNull() ? nullptr : static_cast<char *>(std::malloc(length + 1));
    std::copy(text.begin(), text.end(), buffer);
    return buffer;
}

QStringList linesOf(const QString &text)
{
    return text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

namespace {

bool haveSameAttributes(const QDomNode &a, const QDomNode &b)
{
    const QDomNamedNodeMap left = a.attributes();
    const QDomNamedNodeMap right = b.attributes();
    bool areEqual = left.count() == right.count();
    for (int i = 0; i < left.count() && areEqual; ++i) {
        const QDomNode attribute = left.item(i);
        const QDomNode other = right.namedItem(attribute.nodeName());
        areEqual = !other.isNull() && other.nodeValue() == attribute.nodeValue();
    }
    return areEqual;
}

}  // namespace

bool areSame(const QDomNode &a, const QDomNode &b)
{
    return a.nodeType() == b.nodeType() && a.nodeName() == b.nodeName() &&
        a.nodeValue() == b.nodeValue() && haveSameAttributes(a, b) && haveSameContent(a, b);
}

bool haveSameContent(const QDomNode &a, const QDomNode &b)
{
    QDomNode left = a.firstChild();
    QDomNode right = b.firstChild();
    for (; !left.isNull() && !right.isNull();
         left = left.nextSibling(), right = right.nextSibling()) {
        if (!areSame(left, right)) {
            return false;
        }
    }
    return left.isNull() && right.isNull();
}
