#ifndef TQXML_LINKEDLIST_P_H
#define TQXML_LINKEDLIST_P_H

namespace TQXmlInternal {

// How many records are walked over before a list is checked for a cycle, and how many of them are
// counted as one: a walk that counts each record takes half as long again.
constexpr int PLAIN_WALK = 4096;
constexpr int BLOCK = 16;

// The last record if the list ends within PLAIN_WALK records; else null.
template<typename Record>
Record *nearEnd(Record *head)
{
    Record *last = head;
    for (int blocks = PLAIN_WALK / BLOCK; blocks > 0; --blocks) {
        for (int i = 0; i < BLOCK; ++i) {
            if (!last->next) {
                return last;
            }
            last = last->next;
        }
    }
    return nullptr;
}

// The length of the cycle in the list; 0 if it has none, and then last is its last record.
template<typename Record>
unsigned long cycleLength(Record *head, Record *&last)
{
    // One pointer walks, the other waits at every power of two: they meet only in a cycle.
    Record *waiting = head;
    unsigned long apart = 0;
    unsigned long limit = 1;
    for (last = head; last->next; last = last->next) {
        ++apart;
        if (last->next == waiting) {
            return apart;
        }
        if (apart == limit) {
            waiting = last->next;
            apart = 0;
            limit *= 2;
        }
    }
    return 0;
}

// The last record of a list: the one without a next record. If the list links back to itself, the
// last record before the walk meets one for the second time. Null for an empty list.
template<typename Record>
Record *lastOf(Record *head)
{
    Record *last = head ? nearEnd(head) : nullptr;
    if (last || !head) {
        return last;
    }
    unsigned long length = cycleLength(head, last);
    if (length == 0) {
        return last;
    }
    // A pointer that is one cycle ahead of another is its last record when the other comes to the
    // first record of the cycle.
    Record *first = head;
    Record *ahead = head;
    for (; length > 1; --length) {
        ahead = ahead->next;
    }
    while (ahead->next != first) {
        first = first->next;
        ahead = ahead->next;
    }
    return ahead;
}

}  // namespace TQXmlInternal

#endif
