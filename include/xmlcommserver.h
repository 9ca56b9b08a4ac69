#ifndef XMLCOMMSERVER_H
#define XMLCOMMSERVER_H

#include "xmlagent.h"

#include "tqrecords.h"

#include <QList>

class TQCommServer;
class XMLAction;

/// The server bridge: the agent (id -1, type 0) that answers requests for server data.
///
/// A request is a packet whose first action has one of the REQUEST types. Each is served at once
/// inside receive() and gets at most one reply packet; errors are never reported to the requester.
/// The server library may run an event loop meanwhile. When the router is deleted in it, a listing
/// ends without a reply.
/// A reply may be short when a query failed: compare TQCommServer::failures() before and after.
class TQXML_EXPORT XMLCommServer : public XMLAgent
{
public:
    /// Request types, the type of the request's action.
    enum REQUEST : int {
        REQUEST_OUTPUTS = 1000,
        REQUEST_PUBLICATIONS = 1001,
        REQUEST_BOOKS = 1002,
        REQUEST_JOBS = 1003
    };

    /// The connection is not owned and must outlive the bridge; with null nothing is found.
    explicit XMLCommServer(TQCommServer *server);
    ~XMLCommServer() override;

    void receive(XMLPacket *packet) override;

    /// @{
    /// Asks the server for records. The caller frees the list with TQPacketFreeList(); null when
    /// nothing is found. The list forms join the results in the order of the keys.
    TQLISTRECORD *getDBList(PACKETDATATYPES type) const;
    TQJOB *getTQJOBs(TQKEY_ELEMENT key) const;
    TQJOB *getTQJOBs(const QList<TQKEY_ELEMENT *> &keys) const;
    TQBOOK *getBooks(TQKEY_ELEMENT key) const;
    TQBOOK *getBooks(const QList<TQKEY_ELEMENT *> &keys) const;
    /// @}

    /// Sends one item per output, in list order; nothing when there are none.
    void sendOUTPUTs(int destinationAgentID) const;

    /// @{
    /// Send one item per record, for the owners in the request's key list or, without one, for
    /// all owners. Without any record the books and the publications send nothing, and the jobs an
    /// empty reply.
    void sendBooks(int destinationAgentID, XMLAction *request) const;
    /// Leaves out the jobs of publications unless the request's exclude_publications is false.
    void sendTQJOBs(int destinationAgentID, XMLAction *request) const;
    /// One job for each publication, that with the lowest page number, under the publication's
    /// name; by ascending publication identifier. Where jobs are found, but none that belongs to a
    /// publication, the reply is empty.
    void sendPublications(int destinationAgentID, XMLAction *request) const;
    /// @}

private:
    void serve(int source, XMLAction &request) const;

    TQCommServer *m_commServer;  // not owned; may be null
};

#endif
