#ifndef TQXML_LINKEDLIST_P_H
#define TQXML_LINKEDLIST_P_H

namespace TQXmlInternal {

// How many records are walked over before the list is checked for a cycle, and how many of them
// are counted as one: a walk that counts each record takes half as long again.
constexpr int PLAIN_WALK = 4096;
constexpr int BLOCK = 16;

// The last record of a list: the one without a next record. If the list links back to itself, the
// last record before the walk meets one for the second time. Null for an empty list.
template<typename Record>
Record *lastOf(Record *head)
{
    // Most lists end here.
    Record *last = head;
    for (int blocks = PLAIN_WALK / BLOCK; blocks > 0 && last; --blocks) {
        for (int i = 0; i < BLOCK; ++i) {
            if (!last->next) {
                return last;
            }
            last = last->next;
        }
    }
    // One pointer walks, the other waits at every power of two: they meet only in a cycle.
    Record *waiting = head;
    Record *walking = head;
    unsigned long apart = 0;
    unsigned long limit = 1;
    while (walking && walking->next && walking->next != waiting) {
        walking = walking->next;
        if (++apart == limit) {
            waiting = walking;
            apart = 0;
            limit *= 2;
        }
    }
    if (!walking || !walking->next) {
        return walking;
    }
    // The cycle has apart + 1 records: a pointer that far ahead is its last one when the other
    // comes to where it is entered.
    Record *entry = head;
    Record *ahead = head;
    for (; apart > 0; --apart) {
        ahead = ahead->next;
    }
    while (ahead->next != entry) {
        entry = entry->next;
        ahead = ahead->next;
    }
    return ahead;
}

}  // namespace TQXmlInternal

#endif
