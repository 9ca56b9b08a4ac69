#include "records_p.h"

#include <new>
#include <utility>

namespace {

void show(Record &record, bool hasName)
{
    char *name = hasName ? record.data.name.data() : nullptr;
    if (record.family == PACKETDATATYPE_JOB) {
        auto job = new (record.shown) TQJOB {};
        job->name = name;
        job->publicationName =
            record.data.publication.empty() ? nullptr : record.data.publication.data();
        job->publicationId = record.data.publicationId;
    } else if (record.family == PACKETDATATYPE_BOOK) {
        auto book = new (record.shown) TQBOOK {};
        book->name = name;
    } else {
        auto owner = new (record.shown) TQOWNER {};
        owner->key = record.data.key.key;
        owner->hkey = record.data.key.hkey;
    }
}

TQLISTRECORD *listRecord(Record *record) { return reinterpret_cast<TQLISTRECORD *>(record->shown); }

std::string nameOf(const TQLISTRECORD *record)
{
    return script().records.count(record) > 0 ? Record::of(record)->data.name : "?";
}

}  // namespace

TQLISTRECORD *Record::makeList(
    const std::string &call, PACKETDATATYPES family, const Script::Records &records)
{
    std::vector<TQLISTRECORD *> made;
    for (const ScriptRecord &data : records) {
        if (script().isFaulty(call)) {
            return nullptr;
        }
        auto record = new Record { {}, data, family };
        script().records.insert(record->shown);
        show(*record, !made.empty() || !script().isFaulty(call, "null name"));
        if (!made.empty()) {
            made.back()->next = listRecord(record);
        }
        made.push_back(listRecord(record));
    }
    for (size_t i = 0; i < made.size(); ++i) {
        if (script().isFaulty(call, "cycle " + std::to_string(i))) {
            made.back()->next = made[i];
        }
    }
    return made.empty() ? nullptr : made.front();
}

void Record::destroy(const void *shown, PACKETDATATYPES family)
{
    if (script().records.erase(shown) == 0 || Record::of(shown)->family != family) {
        ++script().wrongFrees;
        return;
    }
    delete Record::of(shown);
}

void AddListList(TQLISTRECORD **head, TQLISTRECORD *list)
{
    script().record("AddListList " + nameOf(list));
    TQLISTRECORD *last = *head;
    while (last && last->next) {
        last = last->next;
        ++script().steps;
    }
    (last ? last->next : *head) = list;
}

void RemoveItemFromList(TQLISTRECORD **head, TQLISTRECORD *record)
{
    script().record("RemoveItemFromList " + nameOf(record));
    TQLISTRECORD *before = nullptr;
    TQLISTRECORD *found = *head;
    while (found && found != record) {
        before = std::exchange(found, found->next);
        ++script().steps;
    }
    if (found) {
        (before ? before->next : *head) = found->next;
        found->next = nullptr;
    }
}

void TQPacketFreeList(TQLISTRECORD **head, PACKETDATATYPES type)
{
    std::string names;
    for (TQLISTRECORD *record = *head; record;) {
        TQLISTRECORD *const next = record->next;
        names += ' ' + nameOf(record);
        Record::destroy(record, type);
        record = next;
    }
    script().record("TQPacketFreeList " + std::to_string(type) + names);
    *head = nullptr;
}

void TQPacketFreeItem(TQLISTRECORD *record, PACKETDATATYPES type)
{
    if (record) {
        script().record("TQPacketFreeItem " + std::to_string(type) + ' ' + nameOf(record));
        Record::destroy(record, type);
    }
}
