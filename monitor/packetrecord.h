#ifndef TQXML_MONITOR_PACKETRECORD_H
#define TQXML_MONITOR_PACKETRECORD_H

#include <QByteArray>
#include <QString>

namespace TQXmlInternal {

// One line of a packet log: a packet that was given to send(), or an agent that came or went.
struct PacketRecord
{
    enum State : quint8 {
        Waiting,  // in the router's queue
        Delivered,
        Lost,
        SourceUnknown,  // this and the next two: dropped by send()
        EqualsLast,
        SentAlready,
        AgentAdded,
        AgentRemoved,
        AgentSupplied,
        StateCount
    };
    enum Kind : quint8 { Agent, Empty, Action, Page, Image, Message, Items, Other, NotKept };

    bool isPacket() const { return state < AgentAdded; }
    bool isUndelivered() const { return state >= Lost && isPacket(); }
    bool isCut() const { return text.size() < size; }
    // What the body begins with. Reads only the beginning of the text.
    static Kind kindOf(const QByteArray &text);
    // What the packet holds, in a few words: the name of an action or page, the text of a message,
    // or the number of items.
    QString summary() const;

    qint64 time = 0;  // microseconds since 1970
    qint64 delivery = -1;  // microseconds from sending to delivery; -1 for not delivered
    qint64 partner = -1;  // number of the reply to this request, or of the request; -1 for none
    qint64 answer = -1;  // microseconds from the request to the reply, in both of them
    qint64 size = 0;  // bytes of the whole text
    QByteArray text;  // as XMLPacket::write() gives it; of a long one, the beginning
    // Ids of the agents. The record of an agent that came or went has its id in source and, to save
    // a member, its type in destination.
    int source = 0;
    int destination = 0;
    State state = Waiting;
    Kind kind = Empty;
    bool isReply = false;
};

}  // namespace TQXmlInternal

#endif
