#ifndef TQXML_TESTS_UTIL_H
#define TQXML_TESTS_UTIL_H

#include "tqpacketable.h"
#include "xmlagent.h"
#include "xmlmessage.h"
#include "xmlpacket.h"

#include <QDomDocument>
#include <QMetaMethod>
#include <QStringList>
#include <QTextStream>
#include <QThread>
#include <QtTest>

#include <ctime>
#include <functional>
#include <iterator>
#include <memory>
#include <random>
#include <utility>

// What several tests need.

inline QString str(const char *utf8) { return QString::fromUtf8(utf8); }

/// An element made from text, and the document it lives in. Bad XML ends the test.
struct Xml
{
    explicit Xml(const QString &text)
    {
        if (!document.setContent(text)) {
            qFatal("no XML: %s", qPrintable(text));
        }
        root = document.documentElement();
    }
    explicit Xml(const char *utf8) : Xml(str(utf8)) {}

    QDomDocument document;
    QDomElement root;
};

/// A node as XML, the attributes of each element in the order of their names.
inline QString xmlOf(const QDomNode &node)
{
    if (node.isText() && !node.isCDATASection()) {
        return node.nodeValue().toHtmlEscaped();
    }
    if (!node.isElement()) {
        QString text;
        QTextStream stream(&text);
        stream << node;
        return text.trimmed();
    }
    QStringList attributes;
    for (int i = 0; i < node.attributes().count(); ++i) {
        const QDomNode attribute = node.attributes().item(i);
        const QString value = attribute.nodeValue().toHtmlEscaped();
        attributes += QStringLiteral(" %1='%2'").arg(attribute.nodeName(), value);
    }
    attributes.sort();
    const QString tag = node.nodeName() + attributes.join(QString());
    if (!node.hasChildNodes()) {
        return QStringLiteral("<%1/>").arg(tag);
    }
    QString below;
    for (QDomNode child = node.firstChild(); !child.isNull(); child = child.nextSibling()) {
        below += xmlOf(child);
    }
    return QStringLiteral("<%1>%2</%3>").arg(tag, below, node.nodeName());
}

/// Random input. The seed is printed; the environment variable TQXML_SEED sets another one.
class Random
{
public:
    Random() : m_engine(seed()) {}

    int below(int end) { return int(m_engine() % static_cast<unsigned int>(end)); }
    bool onceIn(int times) { return below(times) == 0; }
    template<typename List>
    auto oneOf(const List &list)
    {
        return *(std::begin(list) + below(int(std::size(list))));
    }

private:
    static unsigned int seed()
    {
        const auto value = unsigned(qEnvironmentVariableIntValue("TQXML_SEED"));
        qInfo("TQXML_SEED=%u", value);
        return value;
    }
    std::mt19937 m_engine;
};

/// Whether the time of the work grows with the count, and not with its square: for count it may be
/// 40 times that for count / 10, where 10 times is linear and 100 times quadratic.
inline bool isLinear(int count, const std::function<void(int)> &work)
{
    const auto timeOf = [&work](int size) {
        const std::clock_t start = std::clock();
        work(size);
        return std::clock() - start;
    };
    const std::clock_t few = timeOf(count / 10);
    return timeOf(count) < 40 * qMax<std::clock_t>(few, CLOCKS_PER_SEC / 50);
}

/// A chain of that many elements, the innermost made first: asking an element for its document
/// costs its depth. The handle is of the outermost one, which has no parent.
inline QDomElement deepTree(QDomDocument &document, const QString &name, int levels)
{
    QDomElement tree = document.createElement(name);
    while (--levels > 0) {
        const QDomElement inner = std::exchange(tree, document.createElement(name));
        tree.appendChild(inner);
    }
    return tree;
}

/// Runs the work in a thread with a stack of 1 MiB, which unbounded recursion overflows.
inline void runOnSmallStack(const std::function<void()> &work)
{
    const std::unique_ptr<QThread> thread(QThread::create(work));
    thread->setStackSize(1024 * 1024);
    thread->start();
    thread->wait();
}

/// A class's own signals and slots in order, as "signal toggled(bool) checked".
inline QStringList methodsOf(const QMetaObject &meta)
{
    QStringList methods;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        const char *kind = method.methodType() == QMetaMethod::Signal ? "signal" : "slot";
        const QByteArrayList words { kind, method.methodSignature(),
            method.parameterNames().join(' ') };
        methods += str(words.join(' ').trimmed().constData());
    }
    return methods;
}

/// What most tables of cases hold.
struct Case
{
    const char *name;
    const char *given;
    const char *expected;
};

// @{
/// Data rows from a table of structures that start with their name, and the row of a test.
template<typename Row, size_t N>
void addRows(const Row (&table)[N])
{
    QTest::addColumn<quintptr>("row");
    for (const Row &row : table) {
        QTest::newRow(row.name) << quintptr(&row);
    }
}
template<typename Row>
const Row &currentRow()
{
    QFETCH(quintptr, row);
    return *reinterpret_cast<const Row *>(row);
}
// @}

/// Packet text of a server item.
inline QByteArray packetOf(const TQPacketable &item)
{
    unsigned int length = 1;
    char *text = item.toPacket(length);
    const QByteArray copy(text, int(length));
    TQ_free(text);
    return copy;
}

/// Handles all events that wait, deferred deletions too.
inline void runEvents()
{
    for (int i = 0; i < 3; ++i) {
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

/// A packet with one text message; the caller's.
inline XMLPacket *makePacket(int from, int to, const QString &text)
{
    auto packet = new XMLPacket;
    packet->setSourceAgentID(from);
    packet->setDestinationAgentID(to);
    XMLMessage message(text);
    packet->append(message);
    return packet;
}

/// Text of the first message of a packet; empty without one.
inline QString messageOf(const XMLPacket &packet)
{
    std::list<QDomNode> nodes;
    packet.getNodesOfType(XMLObject::XMLOBJECT_MSG, nodes);
    return nodes.empty() ? QString() : nodes.front().toElement().attribute(str("msg"));
}

/// An agent that keeps the packets it gets, and logs what it receives, as "1 got hello", and the
/// removals it hears of, as "1 lost 2".
class RecordingAgent : public XMLAgent
{
public:
    RecordingAgent(int type, QStringList *log, bool wantsRemovals = true)
        : XMLAgent(type), m_log(log)
    {
        wantRemovalNotifications = wantsRemovals;
    }
    ~RecordingAgent() override { qDeleteAll(packets); }

    void receive(XMLPacket *packet) override
    {
        packets.append(packet);
        *m_log +=
            QStringLiteral("%1 got %2").arg(QString::number(getAgentID()), messageOf(*packet));
        if (const auto reaction = onReceive) {  // a copy, as it may delete this agent
            reaction(packet);
        }
    }
    void agentRemoved(int agentID) override
    {
        *m_log += QStringLiteral("%1 lost %2").arg(getAgentID()).arg(agentID);
        if (const auto reaction = onRemoved) {
            reaction(agentID);
        }
    }

    QList<XMLPacket *> packets;  // owned
    std::function<void(XMLPacket *)> onReceive;
    std::function<void(int)> onRemoved;
    using XMLAgent::wantRemovalNotifications;

private:
    QStringList *m_log;
};

#endif
