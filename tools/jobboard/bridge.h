#ifndef BRIDGE_H
#define BRIDGE_H

#include "xmlcommserver.h"

#include <QString>

/// The window's server bridge, used instead of the router's own. It answers each request from one
/// state of the store, and knows whether the reply is complete.
class Bridge : public XMLCommServer
{
public:
    /// Registers itself. Neither the connection nor the router is owned; both must outlive it.
    Bridge(TQCommServer &server, XMLRouter &to);
    ~Bridge() override;

    void receive(XMLPacket *packet) override;

    /// Why the reply to the last request may be short; empty if it is complete.
    const QString &error() const { return m_error; }

private:
    TQCommServer &m_server;
    QString m_error;
};

#endif
