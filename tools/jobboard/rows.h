#ifndef ROWS_H
#define ROWS_H

#include "tqtypes.h"

#include <QMetaType>
#include <QString>

#include <limits>
#include <vector>

// Plain values, which the reading thread hands to the window's thread.

inline bool operator==(const TQKEY_ELEMENT &a, const TQKEY_ELEMENT &b)
{
    return a.key == b.key && a.hkey == b.hkey;
}
/// A key as one number, for hashes.
inline quint64 number(const TQKEY_ELEMENT &key) { return quint64(key.hkey) << 32 | key.key; }

/// What jobs are listed for: an output, a publication or a book, or a group of them.
struct Source
{
    enum Kind { All, Publications, Books, Output, Publication, Book };

    Kind kind = All;
    QString name = {};  ///< of the output, publication or book
    TQKEY_ELEMENT key = {};  ///< of the output or book
};
using Sources = std::vector<Source>;

/// One job, as the table shows it.
struct JobRow
{
    static constexpr int ABSENT = std::numeric_limits<int>::min();

    TQKEY_ELEMENT key = {};
    TQKEY_ELEMENT book = {};  ///< the null key outside any book
    QString name = {};
    QString output = {};
    QString publication = {};  ///< empty outside any publication
    QString colours = {};
    QString created = {};
    int state = ABSENT;
    int copies = ABSENT;
    int priority = ABSENT;
};
using JobRows = std::vector<JobRow>;

/// A field of an item. A field that refers to another item has that item's fields.
struct Field
{
    QString heading = {};
    QString text = {};
    std::vector<Field> fields = {};
};

/// An item with everything that it refers to; or, with an error, only its key.
struct Item
{
    TQKEY_ELEMENT key = {};
    QString error = {};  ///< why the item could not be read; empty if it was
    std::vector<Field> fields = {};
    QString xml = {};
};

Q_DECLARE_METATYPE(TQKEY_ELEMENT)
Q_DECLARE_METATYPE(Source)
Q_DECLARE_METATYPE(Sources)
Q_DECLARE_METATYPE(JobRows)
Q_DECLARE_METATYPE(Item)

#endif
