// List records, and the functions on lists of them.

#include "records_p.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

namespace TQServerInternal {

namespace {

// What the reserved bytes of a declared part hold: the address of its record, and a seal made from
// the declared part's own address. A copy or a foreign record does not have the right seal.
struct Mark
{
    std::uint64_t record;
    std::uint64_t seal;
};
static_assert(sizeof(Mark) == sizeof(TQLISTRECORD::reserved), "fits the reserved bytes");

std::uint64_t sealOf(const void *declared)
{
    constexpr std::uint64_t SECRET = 0x5451524543f0e1d2;
    return SECRET ^ reinterpret_cast<std::uintptr_t>(declared);
}

}  // namespace

ListRecord *ListRecord::create(PACKETDATATYPES type, std::uint64_t store)
{
    return new ListRecord { {}, type, store, TQKEY_CC::getNullKey(), {}, {}, 0, 0, {} };
}

ListRecord *ListRecord::of(const void *declared)
{
    Mark mark = {};
    if (declared) {
        std::memcpy(&mark, declared, sizeof(mark));
    }
    if (!declared || mark.seal != sealOf(declared)) {
        return nullptr;
    }
    return reinterpret_cast<ListRecord *>(static_cast<std::uintptr_t>(mark.record));
}

void ListRecord::destroy(ListRecord *record) { delete record; }

void ListRecord::fillDeclaredPart()
{
    if (type == PACKETDATATYPE_JOB) {
        const auto job = new (storage) TQJOB {};
        job->name = name.data();
        job->publicationName = publicationId != 0 ? publication.data() : nullptr;
        job->publicationId = publicationId;
    } else if (type == PACKETDATATYPE_BOOK) {
        const auto book = new (storage) TQBOOK {};
        book->name = name.data();
    } else {
        const auto owner = new (storage) TQOWNER {};
        owner->key = key.key;
        owner->hkey = key.hkey;
    }
    const Mark mark { reinterpret_cast<std::uintptr_t>(this), sealOf(storage) };
    std::memcpy(storage, &mark, sizeof(mark));
}

}  // namespace TQServerInternal

using namespace TQServerInternal;

void AddListList(TQLISTRECORD **head, TQLISTRECORD *list)
{
    if (!head || !list) {
        return;
    }
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
    if (!head || !*head || !record) {
        return;
    }
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
    TQLISTRECORD *record = head ? *head : nullptr;
    while (record) {
        TQLISTRECORD *next = record->next;
        TQPacketFreeItem(record, type);
        record = next;
    }
    if (head) {
        *head = nullptr;
    }
}

// A record knows its data type itself.
void TQPacketFreeItem(TQLISTRECORD *record, PACKETDATATYPES)
{
    ListRecord::destroy(ListRecord::of(record));
}
