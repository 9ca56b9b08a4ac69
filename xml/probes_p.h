#ifndef TQXML_PROBES_P_H
#define TQXML_PROBES_P_H

#include <QtGlobal>

#include <cstddef>

class XMLPacket;
class XMLRouterObserver;

// Static probes of the provider "tqxml", for bpftrace, perf, stap and gdb. A listener raises the
// semaphore of a probe. A probe whose semaphore is 0 costs a test of it; its arguments are not
// worked out.

#pragma GCC visibility push(hidden)  // read without a detour
extern "C" {
extern volatile unsigned short tqxml_packet_sent_semaphore;
extern volatile unsigned short tqxml_packet_dropped_semaphore;
extern volatile unsigned short tqxml_packet_delivered_semaphore;
extern volatile unsigned short tqxml_packet_lost_semaphore;
extern volatile unsigned short tqxml_agent_added_semaphore;
extern volatile unsigned short tqxml_agent_removed_semaphore;
extern volatile unsigned short tqxml_agent_supplied_semaphore;
extern volatile unsigned short tqxml_text_to_dom_begin_semaphore;
extern volatile unsigned short tqxml_text_to_dom_end_semaphore;
extern volatile unsigned short tqxml_dom_to_text_begin_semaphore;
extern volatile unsigned short tqxml_dom_to_text_end_semaphore;
extern volatile unsigned short tqxml_text_to_xml_begin_semaphore;
extern volatile unsigned short tqxml_text_to_xml_end_semaphore;
}
#pragma GCC visibility pop

namespace TQXmlInternal {

#ifdef TQXML_UNWATCHED  // bench/ measures what looking for listeners costs
constexpr bool MAY_BE_WATCHED = false;
#else
constexpr bool MAY_BE_WATCHED = true;
#endif

// Whether a probe has listeners.
inline bool isHeard(const volatile unsigned short &semaphore)
{
    return MAY_BE_WATCHED && Q_UNLIKELY(semaphore != 0);
}

// Whether there is an observer, or a probe has listeners.
inline bool isWatched(const XMLRouterObserver *observer, const volatile unsigned short &semaphore)
{
    return MAY_BE_WATCHED && (Q_UNLIKELY(observer != nullptr) || isHeard(semaphore));
}

namespace Probe {

// One function for each probe.

void packetSent(const XMLPacket &packet);
void packetDropped(const XMLPacket &packet, int reason);
void packetDelivered(const XMLPacket &packet);
void packetLost(const XMLPacket &packet);
void agentAdded(int agentID, int agentType);
void agentRemoved(int agentID, int agentType);
void agentSupplied(int agentID, int agentType);

// Conversions of packet text to elements, of elements to packet text, and of packet text to XML.
// Begin and end are in the same thread, and no conversion of a kind runs within another. The size
// is 0 for a text that was given as lines.
void textToDomBegin(size_t bytes);
void textToDomEnd();
void domToTextBegin();
void domToTextEnd(size_t characters);
void textToXmlBegin(size_t bytes);
void textToXmlEnd();

}  // namespace Probe

}  // namespace TQXmlInternal

#endif
