#include "server.h"

#include <cstdlib>
#include <cstring>
#include <utility>

ReadyLists readyLists = { nullptr };
TQDB_REFERENCE *readyReferences = nullptr;
ArchiveNode *(*readyNode)(const TQDB_REFERENCE *) = nullptr;

namespace {

enum { SIMPLE = 1, REFERENCE = 9, KEY = 14, NUMBERS = 15, STRINGS = 22, BINARY = 23 };

// The fields of the measured item, then many fields for references.
constexpr unsigned int TYPES[] = { SIMPLE, SIMPLE, SIMPLE, SIMPLE, SIMPLE, SIMPLE, SIMPLE, SIMPLE,
    REFERENCE, SIMPLE, SIMPLE, SIMPLE, KEY, KEY, KEY, NUMBERS, NUMBERS, STRINGS, BINARY };

struct Table
{
    CONVERTSTRUCTELEMENTINFO fields[std::size(TYPES) + 1] = {};

    Table()
    {
        for (unsigned int i = 0; i < std::size(TYPES); ++i) {
            fields[i].type = TYPES[i];
            fields[i].tag = i + 1;
            fields[i].width = 4;
        }
    }
};

void freeText(char *text) { std::free(text); }
char *copyText(const char *text) { return text ? strdup(text) : nullptr; }

}  // namespace

struct TQPacketable::Fields
{
};
struct ArchiveNode::Children
{
};
struct TQCommServer::Connection
{
};

TQKEY_ELEMENT TQKEY_CC::getNullKey() { return { 0, 0 }; }
bool TQKEY_CC::isValid(const TQKEY_ELEMENT &key) { return key.key != 0 && key.hkey != 0; }
void TQ_free(void *buffer) { std::free(buffer); }

void AddListList(TQLISTRECORD **head, TQLISTRECORD *list)
{
    if (!*head) {
        *head = list;
        return;
    }
    TQLISTRECORD *last = *head;
    while (last->next) {
        last = last->next;
    }
    last->next = list;
}

void RemoveItemFromList(TQLISTRECORD **head, TQLISTRECORD *record)
{
    if (*head == record) {
        *head = record->next;
        record->next = nullptr;
        return;
    }
    for (TQLISTRECORD *at = *head; at; at = at->next) {
        if (at->next == record) {
            at->next = record->next;
            record->next = nullptr;
            return;
        }
    }
}

void TQPacketFreeList(TQLISTRECORD **head, PACKETDATATYPES) { *head = nullptr; }
void TQPacketFreeItem(TQLISTRECORD *, PACKETDATATYPES) {}

CONVERTSTRUCTELEMENTINFO *TQGetSystemStorageClassConv(PACKETDATATYPES type)
{
    static Table table;
    return type == BENCH_TYPE ? table.fields : nullptr;
}

TQPacketable::TQPacketable(PACKETDATATYPES type)
    : subrecord(nullptr), datatype(type), dbkey { 0, 0 }, name(nullptr), m_fields(nullptr)
{
}
TQPacketable::TQPacketable(const TQPacketable &other) : TQPacketable(other.datatype) {}
TQPacketable::~TQPacketable() { freeText(name); }
char *TQPacketable::toPacket(unsigned int &length) const
{
    length = 0;
    return nullptr;
}
bool TQPacketable::fromPacket(char *, unsigned int, bool, bool) { return true; }
void TQPacketable::loadRecord(unsigned char *) {}
void TQPacketable::getReferences(int, TQDB_REFERENCE **head, int) { *head = readyReferences; }
TQPacketable &TQPacketable::operator=(const TQPacketable &) { return *this; }
void TQPacketable::setName(const char *text)
{
    freeText(name);
    name = copyText(text);
}
void TQPacketable::setData(unsigned char *) {}

TQPacketable *PacketableUtil::getPacketable(PACKETDATATYPES type) { return new TQPacketable(type); }

BOOK_CC::BOOK_CC() : TQPacketable(PACKETDATATYPE_BOOK) {}
BOOK_CC::~BOOK_CC() = default;
TQJOB_CC::TQJOB_CC() : TQPacketable(PACKETDATATYPE_JOB) {}
TQJOB_CC::~TQJOB_CC() = default;
int TQJOB_CC::pageNumber(const TQJOB *job) { return job->reserved1[0]; }
void TQJOB_CC::trimLists(TQJOB *) {}
ICCPROFILEDATA_CC::ICCPROFILEDATA_CC() : TQPacketable(PACKETDATATYPE_ICCPROFILE) {}
ICCPROFILEDATA_CC::~ICCPROFILEDATA_CC() = default;
void ICCPROFILEDATA_CC::load(std::string &, unsigned short) {}

ArchiveNode::ArchiveNode(TQPacketable *item) : packetable(item), m_children(nullptr) {}
ArchiveNode::~ArchiveNode() { delete packetable; }
void ArchiveNode::add(ArchiveNode *) {}
ArchiveNode *ArchiveNode::findNode(const TQDB_REFERENCE *reference) const
{
    return readyNode(reference);
}

TQCommServer::TQCommServer(const char *) : m_connection(nullptr) {}
TQCommServer::~TQCommServer() = default;
TQLISTRECORD *TQCommServer::getDBList(TQLPCOMMANDS &, ZQ_MESSAGE_ID &, PACKETDATATYPES)
{
    return nullptr;
}
TQJOB *TQCommServer::getJobqueue(
    TQLPCOMMANDS &, ZQ_MESSAGE_ID &, TQQUEUE, SORTTYPE, SORTORDER, int owner)
{
    return readyLists.jobsOf(owner);
}
TQBOOK *TQCommServer::getBooks(
    TQLPCOMMANDS &, ZQ_MESSAGE_ID &, SORTTYPE, SORTORDER, const TQKEY_ELEMENT &)
{
    return nullptr;
}
int TQCommServer::getidfromtqkey(const TQKEY_ELEMENT &key) { return int(key.key); }
bool TQCommServer::iserror(TQLPCOMMANDS &) { return false; }
const char *TQCommServer::getConnectedHostname() const { return "localhost"; }
int TQCommServer::getConnectedPortnum() const { return 0; }
ArchiveNode *TQCommServer::getArchiveNode(
    TQLPCOMMANDS &, ZQ_MESSAGE_ID &, PACKETDATATYPES, const TQKEY_ELEMENT &)
{
    return nullptr;
}
const char *TQCommServer::errorText() const { return ""; }

TextItem::TextItem(std::string packetText)
    : TQPacketable(PACKETDATATYPES(BENCH_TYPE)), text(std::move(packetText))
{
}
TextItem::~TextItem() = default;
char *TextItem::toPacket(unsigned int &length) const
{
    char *buffer = static_cast<char *>(std::malloc(text.size() + 1));
    std::memcpy(buffer, text.data(), text.size());
    length = unsigned(text.size());
    return buffer;
}
void TextItem::getReferences(int, TQDB_REFERENCE **head, int) { *head = readyReferences; }
