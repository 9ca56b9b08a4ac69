#ifndef SERVER_H
#define SERVER_H

#include "tqcommserver.h"
#include "tqitems.h"
#include "tqpacketable.h"
#include "tqstorageclass.h"

#include <string>

// A server library that costs almost nothing, so that the XML library alone is measured. Its items
// write a prepared text and accept any text. Its queries return prepared lists.

// Data type of the measured item.
constexpr unsigned int BENCH_TYPE = 0x30a;

// An item that returns a prepared text and a prepared chain of references.
class TextItem : public TQPacketable
{
public:
    explicit TextItem(std::string packetText);
    ~TextItem() override;
    char *toPacket(unsigned int &length) const override;
    void getReferences(int, TQDB_REFERENCE **head, int) override;

    std::string text;
};

// What the next queries return, one list for each owner. The server functions do not free records;
// the measurement owns them.
struct ReadyLists
{
    TQJOB *(*jobsOf)(int owner);
};
extern ReadyLists readyLists;

// The references of every item made by PacketableUtil; null for none.
extern TQDB_REFERENCE *readyReferences;

// The node of every reference.
extern ArchiveNode *(*readyNode)(const TQDB_REFERENCE *reference);

#endif
