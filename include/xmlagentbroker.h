#ifndef XMLAGENTBROKER_H
#define XMLAGENTBROKER_H

#include "tqxml_export.h"

class XMLRouter;

/// Makes agents on demand for a router. XMLRouter::setAgentBroker() installs it and makes the
/// router its owner.
class TQXML_EXPORT XMLAgentBroker
{
public:
    XMLAgentBroker();
    virtual ~XMLAgentBroker();
    XMLAgentBroker(const XMLAgentBroker &) = delete;
    XMLAgentBroker &operator=(const XMLAgentBroker &) = delete;

    /// Returns the id of a registered agent of that type, and registers a new one if there is none.
    /// 0 when it cannot supply one.
    virtual int supplyAgent(int agentType) = 0;

    /// The router calls it when the broker is installed. It only stores the value.
    void setRouter(XMLRouter *router);

protected:
    XMLRouter *router = nullptr;  ///< not owned; null until installed
};

#endif
