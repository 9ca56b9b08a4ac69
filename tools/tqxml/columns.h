#ifndef COLUMNS_H
#define COLUMNS_H

#include "tqtypes.h"

#include <QString>
#include <QStringList>

#include <vector>

/// What the values of a column are.
enum class Kind { Text, Number, Date, Key, State };

/// One column of a listing. A cell is the text of its values as they are stored, with a line feed
/// between several; it is empty when there is none.
struct Column
{
    QString name;  ///< as people type it, and programs read it
    QString heading;  ///< as tables show it
    Kind kind = Kind::Text;
    bool isList = false;
    unsigned tag = 0;  ///< the field's; 0 for the item's own key
};

using Columns = std::vector<Column>;

/// The columns of items of a data type: the key, the field that is the item's name, and all other
/// fields.
Columns columnsOf(PACKETDATATYPES type, unsigned nameTag);
/// A column that no field has.
Column plainColumn(const QString &heading, Kind kind = Kind::Text);

/// The position of the column with that name; -1 if there is none.
int indexOf(const Columns &columns, const QString &name);
QStringList namesOf(const Columns &columns);

/// A cell as people read it: states as words, the values of a list on one line.
QString shownCell(const Column &column, const QString &cell);
/// A cell as programs read it: the values of a list on one line.
QString plainCell(const Column &column, const QString &cell);
/// The stored value of a state that is given as a word or as that value; empty if it is neither.
QString stateNumber(const QString &state);

#endif
