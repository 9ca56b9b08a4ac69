#ifndef TQITEMS_H
#define TQITEMS_H

#include "tqpacketable.h"
#include "tqrecords.h"

#include <string>

/// \file
/// The item classes that libtqxml knows by name. PacketableUtil::getPacketable() makes them for
/// their data types.

/// A book (data type 86). For a listing libtqxml makes one item and loads one record after another.
class TQSERVER_EXPORT BOOK_CC : public TQPacketable
{
public:
    BOOK_CC();
    ~BOOK_CC() override;
};

/// A page job (data type 21). For a listing libtqxml makes one item and loads one record after
/// another.
class TQSERVER_EXPORT TQJOB_CC : public TQPacketable
{
public:
    TQJOB_CC();
    ~TQJOB_CC() override;

    /// The job's page number; 0 for null. Of all jobs of a publication the bridge sends the one
    /// with the lowest page number.
    static int pageNumber(const TQJOB *job);
    /// Releases memory that lists inside the record have reserved but do not use; null is ignored.
    /// The record stays where it is. libtqxml calls it before an item takes the record over. It may
    /// do nothing.
    static void trimLists(TQJOB *job);
};

/// An ICC profile (data type 48). Its bytes stay on the server until they are loaded.
class TQSERVER_EXPORT ICCPROFILEDATA_CC : public TQPacketable
{
public:
    ICCPROFILEDATA_CC();
    ~ICCPROFILEDATA_CC() override;

    /// Fetches the profile's bytes from the server, by the item's key or, when that is not valid,
    /// by its name, and puts them into the field of the type code ::TQELEMENT_BYTES, whose value
    /// they replace.
    ///
    /// Host and port are those of the connection that the application passed to
    /// XMLPacketable::fromArchiveNode(): what getConnectedHostname() and getConnectedPortnum()
    /// return, with an empty text for null, and the port cut to 16 bits. The host is a copy that
    /// load() may change. The bytes must come from that connection and from no other. Two open
    /// connections to two databases of one server have the same host and port, so make the answers
    /// differ, for example by a port number of your own, or let items remember their connection.
    ///
    /// When the bytes cannot be fetched, the item stays as it is and the connection counts a
    /// failure (TQCommServer::failures()). A profile that the server does not have is no failure.
    void load(std::string &host, unsigned short port);
};

#endif
