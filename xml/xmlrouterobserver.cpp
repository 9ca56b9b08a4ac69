#include "xmlrouterobserver.h"

XMLRouterObserver::XMLRouterObserver() = default;
XMLRouterObserver::~XMLRouterObserver() = default;

void XMLRouterObserver::packetSent(const XMLPacket &) {}
void XMLRouterObserver::packetDropped(const XMLPacket &, DROP) {}
void XMLRouterObserver::packetDelivered(const XMLPacket &, const XMLAgent &) {}
void XMLRouterObserver::packetLost(const XMLPacket &) {}
void XMLRouterObserver::agentAdded(int, int) {}
void XMLRouterObserver::agentRemoved(int, int) {}
void XMLRouterObserver::agentSupplied(int, int) {}
