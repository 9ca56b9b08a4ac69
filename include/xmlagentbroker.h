#ifndef XMLAGENTBROKER_H
#define XMLAGENTBROKER_H

#include "tqxml_export.h"

class XMLRouter;

/// Makes agents on demand for a router, which owns it once installed with
/// XMLRouter::setAgentBroker().
class TQXML_EXPORT XMLAgentBroker
{
public:
    XMLAgentBroker();
    virtual ~XMLAgentBroker();
    XMLAgentBroker(const XMLAgentBroker &) = delete;
    XMLAgentBroker &operator=(const XMLAgentBroker &) = delete;

    /// The id of a registered agent of that type, registered now if need be; 0 when none can be
    /// supplied.
    virtual int supplyAgent(int agentType) = 0;

    /// Called by the router when the broker is installed; it only stores.
    void setRouter(XMLRouter *router);

protected:
    XMLRouter *router = nullptr;  ///< not owned; null until installed
};

#endif
