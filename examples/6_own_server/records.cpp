// A server library of one's own: keys, names, buffers and lists of records.

#include <cstdlib>
#include <cstring>
#include <tqpacketable.h>
#include <tqrecords.h>

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
    TQLISTRECORD *before = *head;
    while (before && before != record && before->next != record) {
        before = before->next;
    }
    if (before) {
        TQLISTRECORD *&link = before == record ? *head : before->next;
        link = record->next;
        record->next = nullptr;
    }
}

void TQPacketFreeList(TQLISTRECORD **head, PACKETDATATYPES type)
{
    while (*head) {
        TQLISTRECORD *const first = *head;
        RemoveItemFromList(head, first);
        TQPacketFreeItem(first, type);
    }
}

void TQPacketFreeItem(TQLISTRECORD *record, PACKETDATATYPES) { std::free(record); }

void TQ_free(void *buffer) { std::free(buffer); }
TQKEY_ELEMENT TQKEY_CC::getNullKey() { return { 0, 0 }; }
bool TQKEY_CC::isValid(const TQKEY_ELEMENT &key) { return key.key && key.hkey; }

void TQPacketable::setName(const char *text)
{
    char *const copy = text ? strdup(text) : nullptr;
    std::free(name);
    name = copy;
}
