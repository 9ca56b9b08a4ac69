// What gdb prints in the test "gdb": it stops in lookHere(). QtXml's private header stands for the
// debug symbols of QtXml: with it, this program's own symbols describe the nodes of documents.

#include "xmlaction.h"
#include "xmlmessage.h"
#include "xmlpacket.h"
#include "xmlpacketable.h"

#include "tqitems.h"

#include <QtXml/private/qdom_p.h>

#include <cstring>

// What it describes is what is used.
const QDomElementPrivate *usedElement = nullptr;
template class QMultiHash<QString, QDomNodePrivate *>;

namespace {

[[gnu::noinline]] void lookHere(
    XMLPacket &unbuilt, XMLPacket &built, XMLPacketable &item, XMLAction &action)
{
    asm volatile("" : : "r"(&unbuilt), "r"(&built), "r"(&item), "r"(&action) : "memory");
}

}  // namespace

int main()
{
    TQJOB_CC job;
    char text[] = "SI 15\n1 Page one\nTI 0\n";
    job.fromPacket(text, static_cast<unsigned int>(std::strlen(text)), false, false);
    XMLPacket unbuilt;
    unbuilt.setSourceAgentID(3);
    unbuilt.appendV(job, true);
    XMLMessage message;
    message.setMessage(QStringLiteral("gr\u00fcn"));
    unbuilt.appendV(message);
    XMLPacket built;
    XMLAction part(QStringLiteral("show \"all\""), 1000, 7);
    QDomElement element = built.append(part).toElement();
    element.appendChild(element.ownerDocument().createTextNode(QStringLiteral("a < b")));
    XMLPacketable item;
    item.getNodeConst();
    XMLAction action;
    action.getNodeConst();
    lookHere(unbuilt, built, item, action);
    return 0;
}
