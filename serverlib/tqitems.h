#ifndef TQITEMS_H
#define TQITEMS_H

#include "tqpacketable.h"
#include "tqrecords.h"

#include <string>

/// A book (data type 86).
class TQSERVER_EXPORT BOOK_CC : public TQPacketable
{
public:
    BOOK_CC();
    ~BOOK_CC() override;
};

/// A page job (data type 21).
class TQSERVER_EXPORT TQJOB_CC : public TQPacketable
{
public:
    TQJOB_CC();
    ~TQJOB_CC() override;

    /// The job's page number; 0 for null.
    static int pageNumber(const TQJOB *job);
    /// Releases what the lists inside the record hold beyond their used length; null is ignored.
    static void trimLists(TQJOB *job);
};

/// An ICC profile (data type 48). Its bytes stay on the server until they are loaded.
class TQSERVER_EXPORT ICCPROFILEDATA_CC : public TQPacketable
{
public:
    ICCPROFILEDATA_CC();
    ~ICCPROFILEDATA_CC() override;

    /// Fetches the profile's bytes by the item's key, or without one by its name, from the server
    /// under that host and port.
    /// When that fails the item stays without bytes.
    void load(std::string &host, unsigned short port);
};

#endif
