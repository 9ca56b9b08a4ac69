#ifndef TQITEMS_H
#define TQITEMS_H

#include "tqpacketable.h"
#include "tqrecords.h"

#include <string>

/// \file
/// The item classes that libtqxml knows by name. PacketableUtil::getPacketable() makes them for
/// their data types.

/// A book (data type 86). libtqxml makes one for a listing and gives it one record after the other.
class TQSERVER_EXPORT BOOK_CC : public TQPacketable
{
public:
    BOOK_CC();
    ~BOOK_CC() override;
};

/// A page job (data type 21). libtqxml makes one for a listing and gives it one record after the
/// other.
class TQSERVER_EXPORT TQJOB_CC : public TQPacketable
{
public:
    TQJOB_CC();
    ~TQJOB_CC() override;

    /// The job's page number; 0 for null. Of the jobs of one publication the bridge sends that with
    /// the lowest one.
    static int pageNumber(const TQJOB *job);
    /// Releases what the lists inside the record hold beyond their used length; null is ignored.
    /// The record stays where it is. libtqxml calls it before an item takes the record over; it may
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
    /// by its name, and puts them into the field of the type code ::TQELEMENT_BYTES, in place of
    /// what it holds.
    ///
    /// Host and port are what getConnectedHostname() (an empty text for null) and
    /// getConnectedPortnum() (cut to 16 bits) answer for the connection that the application passed
    /// to XMLPacketable::fromArchiveNode(). The bytes come from that connection's data and from no
    /// other. Two open connections to two databases of one server would answer the same host and
    /// port: so answer another one for the second, for example a number of your own as the port,
    /// or let items remember their connection. The host may be changed; it is a copy.
    ///
    /// When the bytes cannot be fetched the item stays as it is, and the connection counts a
    /// failure (TQCommServer::failures()). A profile that the server does not have is no failure.
    void load(std::string &host, unsigned short port);
};

#endif
