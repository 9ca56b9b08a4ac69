// Records and lists of them, keys, and buffers.

#include "shop.h"

#include <cstdlib>
#include <tqitems.h>

Record *Record::make(const Row &row, TQLISTRECORD *next)
{
    auto *record = new Record { {}, row };
    record->shown.job = {};  // the longest, so that all is zero
    record->shown.list.next = next;
    std::vector<std::string> &values = record->row.values;
    values.resize(5);  // absent columns are empty
    switch (row.key.hkey) {
    case PACKETDATATYPE_JOB:
        record->shown.job.name = record->row.name.data();
        record->shown.job.publicationName = values[1].empty() ? nullptr : values[1].data();
        record->shown.job.publicationId = unsigned(std::strtoul(values[2].c_str(), nullptr, 10));
        break;
    case PACKETDATATYPE_BOOK:
        record->shown.book.name = record->row.name.data();
        break;
    default:
        record->shown.owner.key = row.key.key;
        record->shown.owner.hkey = row.key.hkey;
    }
    return record;
}

void AddListList(TQLISTRECORD **head, TQLISTRECORD *list)
{
    TQLISTRECORD *last = *head;
    while (last && last->next) {
        last = last->next;
    }
    if (last) {
        last->next = list;
    } else {
        *head = list;
    }
}

void RemoveItemFromList(TQLISTRECORD **head, TQLISTRECORD *record)
{
    TQLISTRECORD *before = nullptr;
    TQLISTRECORD *current = *head;
    while (current && current != record) {
        before = current;
        current = current->next;
    }
    if (!current) {
        return;
    }
    if (before) {
        before->next = record->next;
    } else {
        *head = record->next;
    }
    record->next = nullptr;
}

void TQPacketFreeList(TQLISTRECORD **head, PACKETDATATYPES type)
{
    while (*head) {
        TQLISTRECORD *const first = *head;
        *head = first->next;
        TQPacketFreeItem(first, type);
    }
}

void TQPacketFreeItem(TQLISTRECORD *record, PACKETDATATYPES) { delete Record::of(record); }

int TQJOB_CC::pageNumber(const TQJOB *job)
{
    const Record *record = reinterpret_cast<const Record *>(job);
    return record ? std::atoi(record->row.values[0].c_str()) : 0;
}
void TQJOB_CC::trimLists(TQJOB *) {}  // our records have no lists

TQKEY_ELEMENT TQKEY_CC::getNullKey() { return { 0, 0 }; }
bool TQKEY_CC::isValid(const TQKEY_ELEMENT &key) { return key.key != 0 && key.hkey != 0; }
void TQ_free(void *buffer) { std::free(buffer); }
