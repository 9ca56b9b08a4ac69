// What gdb prints in the test "gdb": it stops in lookHere().

#include "xmlaction.h"
#include "xmlmessage.h"
#include "xmlpacket.h"
#include "xmlpacketable.h"

#include "tqitems.h"

#include <cstring>

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
    XMLAction part;
    built.append(part);
    XMLPacketable item;
    item.getNodeConst();
    XMLAction action;
    action.getNodeConst();
    lookHere(unbuilt, built, item, action);
    return 0;
}
