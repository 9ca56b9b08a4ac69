#ifndef BRIDGE_H
#define BRIDGE_H

#include "xmlcommserver.h"

#include <QString>

/// The window's server bridge, beside the router's own: it answers each request from one moment of
/// the store, and tells whether the reply is whole.
class Bridge : public XMLCommServer
{
public:
    /// Registers itself. Neither the connection nor the router is owned; both must outlive it.
    Bridge(TQCommServer &server, XMLRouter &to);
    ~Bridge() override;

    void receive(XMLPacket *packet) override;

    /// Why the reply to the last request may be short; empty when it is whole.
    const QString &error() const { return m_error; }

private:
    TQCommServer &m_server;
    QString m_error;
};

#endif
