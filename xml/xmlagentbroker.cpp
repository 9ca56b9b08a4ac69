#include "xmlagentbroker.h"

XMLAgentBroker::XMLAgentBroker() = default;

XMLAgentBroker::~XMLAgentBroker() = default;

void XMLAgentBroker::setRouter(XMLRouter *newRouter) { router = newRouter; }
