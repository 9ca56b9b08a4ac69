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
/// inside receive() and gets at most one reply packet. Errors are not reported to the requester: a
/// reply may be incomplete because a query failed. To find out, compare TQCommServer::failures()
/// before and after.
///
/// The server library may run an event loop during a query. If the router is deleted in that loop,
/// there is no reply.
class TQXML_EXPORT XMLCommServer : public XMLAgent
{
public:
    /// Request types: the type of the request's action.
    enum REQUEST : int {
        REQUEST_OUTPUTS = 1000,
        REQUEST_PUBLICATIONS = 1001,
        REQUEST_BOOKS = 1002,
        REQUEST_JOBS = 1003
    };

    /// The connection is not owned and must outlive the bridge. If it is null,
    /// nothing is found.
    explicit XMLCommServer(TQCommServer *server);
    ~XMLCommServer() override;

    void receive(XMLPacket *packet) override;

    /// @{
    /// Ask the server for records. The caller frees the list with TQPacketFreeList(). Null when
    /// nothing is found. With several keys, the results are joined in the order of the keys.
    TQLISTRECORD *getDBList(PACKETDATATYPES type) const;
    TQJOB *getTQJOBs(TQKEY_ELEMENT key) const;
    TQJOB *getTQJOBs(const QList<TQKEY_ELEMENT *> &keys) const;
    TQBOOK *getBooks(TQKEY_ELEMENT key) const;
    TQBOOK *getBooks(const QList<TQKEY_ELEMENT *> &keys) const;
    /// @}

    /// Sends one item per output, in list order; nothing when there are none.
    void sendOUTPUTs(int destinationAgentID) const;

    /// @{
    /// Send one item per record, for the owners in the request's key list. If that is missing or
    /// empty, for all owners. Without any record, sendBooks() and sendPublications() send nothing
    /// and sendTQJOBs() sends an empty reply.
    void sendBooks(int destinationAgentID, XMLAction *request) const;
    /// Leaves out the jobs of publications, unless the request sets exclude_publications to false.
    void sendTQJOBs(int destinationAgentID, XMLAction *request) const;
    /// One job for each publication: the one with the lowest page number, under the name of the
    /// publication. Sorted by ascending publication identifier. If there are jobs, but none of a
    /// publication, the reply is empty.
    void sendPublications(int destinationAgentID, XMLAction *request) const;
    /// @}

private:
    void serve(int source, XMLAction &request) const;

    TQCommServer *m_commServer;  // not owned; may be null
};

#endif
