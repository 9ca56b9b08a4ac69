// A server library of one's own: a connection to two books of one owner. What libtqxml does not
// call, like the archive of a store, is left out.

#include <cstdlib>
#include <tqcommserver.h>
#include <tqitems.h>
#include <tqstorageclass.h>

namespace {

CONVERTSTRUCTELEMENTINFO TABLE[] = { { 1, 1, 0, 1, {} }, {} };  // field 1, a text

// A new record in front of a list; it ends where the longest kind of record does.
TQLISTRECORD *newRecord(const char *title, TQLISTRECORD *next)
{
    auto *record = static_cast<TQBOOK *>(std::calloc(1, sizeof(TQJOB)));
    record->list.next = next;
    record->name = const_cast<char *>(title);
    return &record->list;
}

}  // namespace

CONVERTSTRUCTELEMENTINFO *TQGetSystemStorageClassConv(PACKETDATATYPES) { return TABLE; }
TQPacketable *PacketableUtil::getPacketable(PACKETDATATYPES type) { return new TQPacketable(type); }

BOOK_CC::BOOK_CC() : TQPacketable(PACKETDATATYPE_BOOK) {}
BOOK_CC::~BOOK_CC() = default;
TQJOB_CC::TQJOB_CC() : TQPacketable(PACKETDATATYPE_JOB) {}
TQJOB_CC::~TQJOB_CC() = default;
int TQJOB_CC::pageNumber(const TQJOB *) { return 0; }
void TQJOB_CC::trimLists(TQJOB *) {}
ICCPROFILEDATA_CC::~ICCPROFILEDATA_CC() = default;
void ICCPROFILEDATA_CC::load(std::string &, unsigned short) {}
ArchiveNode *ArchiveNode::findNode(const TQDB_REFERENCE *) const { return nullptr; }

TQCommServer::TQCommServer(const char *) : m_connection(nullptr) {}
TQCommServer::~TQCommServer() = default;
bool TQCommServer::iserror(TQLPCOMMANDS &) { return false; }
const char *TQCommServer::getConnectedHostname() const { return "localhost"; }
int TQCommServer::getConnectedPortnum() const { return 0; }
int TQCommServer::getidfromtqkey(const TQKEY_ELEMENT &key) { return static_cast<int>(key.key); }
TQJOB *TQCommServer::getJobqueue(TQLPCOMMANDS &, ZQ_MESSAGE_ID &, TQQUEUE, SORTTYPE, SORTORDER, int)
{
    return nullptr;
}
TQLISTRECORD *TQCommServer::getDBList(TQLPCOMMANDS &, ZQ_MESSAGE_ID &, PACKETDATATYPES type)
{
    return type == PACKETDATATYPE_BOOKOWNER ? newRecord("Owner", nullptr) : nullptr;
}
TQBOOK *TQCommServer::getBooks(
    TQLPCOMMANDS &, ZQ_MESSAGE_ID &, SORTTYPE, SORTORDER, const TQKEY_ELEMENT &)
{
    TQLISTRECORD *books = newRecord("Moby-Dick", newRecord("Walden", nullptr));
    return reinterpret_cast<TQBOOK *>(books);
}
