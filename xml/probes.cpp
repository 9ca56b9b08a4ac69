#include "probes_p.h"

#include "xmlpacket.h"

#ifdef TQXML_PROBES
#ifdef __clang__
#pragma clang diagnostic ignored "-Wgnu-zero-variadic-macro-arguments"
#endif
#define _SDT_HAS_SEMAPHORES 1
#include <sys/sdt.h>
#else
// Nobody raises the semaphores, so nothing below is called.
#define STAP_PROBE(provider, name)
#define STAP_PROBE1(provider, name, a) (void)(a)
#define STAP_PROBE2(provider, name, a, b) (void)(a), (void)(b)
#define STAP_PROBE3(provider, name, a, b, c) (void)(a), (void)(b), (void)(c)
#define STAP_PROBE4(provider, name, a, b, c, d) (void)(a), (void)(b), (void)(c), (void)(d)
#endif

// The notes that sys/sdt.h makes refer to the semaphores by these names, and listeners look for
// them in this section.
extern "C" {
[[gnu::section(".probes")]] volatile unsigned short tqxml_packet_sent_semaphore = 0;
[[gnu::section(".probes")]] volatile unsigned short tqxml_packet_dropped_semaphore = 0;
[[gnu::section(".probes")]] volatile unsigned short tqxml_packet_delivered_semaphore = 0;
[[gnu::section(".probes")]] volatile unsigned short tqxml_packet_lost_semaphore = 0;
[[gnu::section(".probes")]] volatile unsigned short tqxml_agent_added_semaphore = 0;
[[gnu::section(".probes")]] volatile unsigned short tqxml_agent_removed_semaphore = 0;
[[gnu::section(".probes")]] volatile unsigned short tqxml_agent_supplied_semaphore = 0;
[[gnu::section(".probes")]] volatile unsigned short tqxml_text_to_dom_begin_semaphore = 0;
[[gnu::section(".probes")]] volatile unsigned short tqxml_text_to_dom_end_semaphore = 0;
[[gnu::section(".probes")]] volatile unsigned short tqxml_dom_to_text_begin_semaphore = 0;
[[gnu::section(".probes")]] volatile unsigned short tqxml_dom_to_text_end_semaphore = 0;
[[gnu::section(".probes")]] volatile unsigned short tqxml_text_to_xml_begin_semaphore = 0;
[[gnu::section(".probes")]] volatile unsigned short tqxml_text_to_xml_end_semaphore = 0;
}

namespace TQXmlInternal::Probe {

// The first arguments of a packet's probes are its address and the ids of source and destination.

void packetSent(const XMLPacket &packet)
{
    STAP_PROBE3(
        tqxml, packet_sent, &packet, packet.getSourceAgentID(), packet.getDestinationAgentID());
}

void packetDropped(const XMLPacket &packet, int reason)
{
    STAP_PROBE4(tqxml, packet_dropped, &packet, packet.getSourceAgentID(),
        packet.getDestinationAgentID(), reason);
}

void packetDelivered(const XMLPacket &packet)
{
    STAP_PROBE3(tqxml, packet_delivered, &packet, packet.getSourceAgentID(),
        packet.getDestinationAgentID());
}

void packetLost(const XMLPacket &packet)
{
    STAP_PROBE3(
        tqxml, packet_lost, &packet, packet.getSourceAgentID(), packet.getDestinationAgentID());
}

void agentAdded(int agentID, int agentType) { STAP_PROBE2(tqxml, agent_added, agentID, agentType); }

void agentRemoved(int agentID, int agentType)
{
    STAP_PROBE2(tqxml, agent_removed, agentID, agentType);
}

void agentSupplied(int agentID, int agentType)
{
    STAP_PROBE2(tqxml, agent_supplied, agentID, agentType);
}

void textToDomBegin(size_t bytes) { STAP_PROBE1(tqxml, text_to_dom_begin, bytes); }

void textToDomEnd() { STAP_PROBE(tqxml, text_to_dom_end); }

void domToTextBegin() { STAP_PROBE(tqxml, dom_to_text_begin); }

void domToTextEnd(size_t characters) { STAP_PROBE1(tqxml, dom_to_text_end, characters); }

void textToXmlBegin(size_t bytes) { STAP_PROBE1(tqxml, text_to_xml_begin, bytes); }

void textToXmlEnd() { STAP_PROBE(tqxml, text_to_xml_end); }

}  // namespace TQXmlInternal::Probe
