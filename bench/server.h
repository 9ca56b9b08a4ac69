#ifndef SERVER_H
#define SERVER_H

#include "tqcommserver.h"
#include "tqitems.h"
#include "tqpacketable.h"
#include "tqstorageclass.h"

#include <string>

// A server library that costs next to nothing, so that what is measured is the XML library alone:
// its items write a ready text and accept any, its queries hand out ready lists.

// Data type of the measured item.
constexpr unsigned int BENCH_TYPE = 0x30a;

// An item that writes a ready text and, when asked for references, a ready chain.
class TextItem : public TQPacketable
{
public:
    explicit TextItem(std::string text);
    ~TextItem() override;
    char *toPacket(unsigned int &length) const override;
    void getReferences(int, TQDB_REFERENCE **head, int) override;

private:
    std::string m_text;
};

// What the next queries hand out, one list for each owner. Records are not freed by the server
// functions: they stay where the measurement has them.
struct ReadyLists
{
    TQJOB *(*jobsOf)(int owner);
};
extern ReadyLists readyLists;

// The references of every item made by PacketableUtil; null for none.
extern TQDB_REFERENCE *readyReferences;

// The node that every reference leads to.
extern ArchiveNode *(*readyNode)(const TQDB_REFERENCE *reference);

#endif
