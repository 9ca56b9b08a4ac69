#include "tqcommserver.h"

#include "script.h"

#include <utility>

static_assert(offsetof(TQBOOK, name) == offsetof(TQJOB, name), "one name for both");

namespace {

// Answers a query: fails, or makes a list of records.
template<typename Key>
TQLISTRECORD *query(TQLPCOMMANDS &command, const char *call, PACKETDATATYPES type,
    std::map<Key, Script::Records> &lists, Key key)
{
    command.status = script().isFaulty(call, "error") ? 1 : 0;
    TQLISTRECORD *head = nullptr;
    TQLISTRECORD *last = nullptr;
    TQLISTRECORD *cycle = nullptr;
    for (size_t i = 0; i < lists[key].size() && !script().isFaulty(call); ++i) {
        auto record = new Record { {}, lists[key][i], type };
        script().records.insert(record);
        ScriptRecord &data = record->data;
        record->job = {};
        record->job.name =
            i == 0 && script().isFaulty(call, "null name") ? nullptr : data.name.data();
        record->job.publicationName = data.publication.empty() ? nullptr : data.publication.data();
        record->job.publicationId = data.publicationId;
        record->owner.key = data.key.key;
        record->owner.hkey = data.key.hkey;
        (last ? last->next : head) = &record->list;
        last = &record->list;
        cycle = script().isFaulty(call, "cycle " + std::to_string(i)) ? last : cycle;
    }
    if (last) {
        last->next = cycle;
    }
    return head;
}

}  // namespace

Script &script()
{
    static Script current;
    return current;
}

TQCommServer::TQCommServer(const char *) : m_connection(nullptr) {}
TQCommServer::~TQCommServer() = default;

TQLISTRECORD *TQCommServer::getDBList(TQLPCOMMANDS &command, ZQ_MESSAGE_ID &, PACKETDATATYPES type)
{
    script().record("getDBList", type);
    return query(command, "getDBList", PACKETDATATYPE_OUTPUT, script().owners, unsigned(type));
}

TQJOB *TQCommServer::getJobqueue(TQLPCOMMANDS &command, ZQ_MESSAGE_ID &, TQQUEUE queue,
    SORTTYPE sortType, SORTORDER sortOrder, int owner)
{
    script().record("getJobqueue", queue, sortType, sortOrder, owner);
    return reinterpret_cast<TQJOB *>(
        query(command, "getJobqueue", PACKETDATATYPE_JOB, script().jobs, owner));
}

TQBOOK *TQCommServer::getBooks(TQLPCOMMANDS &command, ZQ_MESSAGE_ID &, SORTTYPE sortType,
    SORTORDER sortOrder, const TQKEY_ELEMENT &owner)
{
    script().record("getBooks", sortType, sortOrder, owner.key, owner.hkey);
    return reinterpret_cast<TQBOOK *>(
        query(command, "getBooks", PACKETDATATYPE_BOOK, script().books, owner.key));
}

int TQCommServer::getidfromtqkey(const TQKEY_ELEMENT &key)
{
    script().record("getidfromtqkey", key.key, key.hkey);
    return script().isFaulty("getidfromtqkey") ? 0 : 1000 + int(key.key);
}

bool TQCommServer::iserror(TQLPCOMMANDS &command)
{
    script().record("iserror");
    return command.status != 0;
}

const char *TQCommServer::getConnectedHostname() const
{
    return script().isFaulty("getConnectedHostname") ? nullptr : "press.example";
}

int TQCommServer::getConnectedPortnum() const { return 0x12345; }

void AddListList(TQLISTRECORD **head, TQLISTRECORD *list)
{
    TQLISTRECORD *last = *head;
    while (last && last->next) {
        last = last->next;
    }
    (last ? last->next : *head) = list;
}

void RemoveItemFromList(TQLISTRECORD **head, TQLISTRECORD *record)
{
    script().record("RemoveItemFromList", Record::of(record)->data.name);
    TQLISTRECORD *before = nullptr;
    TQLISTRECORD *found = *head;
    while (found && found != record) {
        before = std::exchange(found, found->next);
    }
    if (found) {
        (before ? before->next : *head) = std::exchange(found->next, nullptr);
    }
}

void TQPacketFreeList(TQLISTRECORD **head, PACKETDATATYPES type)
{
    script().record("TQPacketFreeList", type);
    while (TQLISTRECORD *record = *head) {
        *head = record->next;
        TQPacketFreeItem(record, type);
    }
}

void TQPacketFreeItem(TQLISTRECORD *record, PACKETDATATYPES type)
{
    if (record && (script().records.erase(record) == 0 || Record::of(record)->type != type)) {
        ++script().wrongFrees;
    } else {
        delete Record::of(record);
    }
}
