#ifndef RECORDS_P_H
#define RECORDS_P_H

#include "script.h"
#include "tqrecords.h"

/// A record that was handed out; its declared part comes first.
struct Record
{
    alignas(8) unsigned char shown[256];
    ScriptRecord data;
    PACKETDATATYPES family;

    static Record *of(const void *shown)
    {
        return static_cast<Record *>(const_cast<void *>(shown));
    }
    /// The record's list, null when there are none or the call is to fail so.
    static TQLISTRECORD *makeList(
        const std::string &call, PACKETDATATYPES family, const Script::Records &records);
    /// Frees a record, which must belong to that family.
    static void destroy(const void *shown, PACKETDATATYPES family);
};

#endif
