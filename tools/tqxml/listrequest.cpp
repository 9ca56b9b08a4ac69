#include "listrequest.h"

#include "command.h"
#include "commandline.h"
#include "nearest.h"
#include "values.h"

#include "tqcommserver.h"
#include "tqstore.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace {

constexpr QLatin1Char COMMA(',');
constexpr QLatin1Char COLON(':');
constexpr QLatin1String ALL_COLUMNS("all");
const QString ASCENDING = QStringLiteral("asc");
const QString DESCENDING = QStringLiteral("desc");
constexpr QLatin1String XML("xml");

// Fields of jobs.
constexpr unsigned BOOK_TAG = 0x3;
constexpr unsigned STATE_TAG = 0x7;

QString noColumn(const QString &name, const Columns &columns)
{
    return noSuch(QStringLiteral("column"), name, namesOf(columns));
}

// The position of a field of the listing in the rows.
int useField(ListRequest &request, unsigned tag)
{
    const Columns all = columnsOf(*request.query.listing);
    const auto column = std::find_if(
        all.begin(), all.end(), [tag](const Column &candidate) { return candidate.tag == tag; });
    Q_ASSERT(column != all.end());
    return request.use(*column);
}

// The functions below read a part of the command line each. They return what is wrong with it, or
// an empty text.

QString readLayout(const CommandLine &line, ListRequest &request)
{
    const Listing &listing = *request.query.listing;
    const Columns all = columnsOf(listing);
    request.layout = layoutOf(line);
    request.layout.columns = usualColumnsOf(listing);
    if (request.layout.areChosen) {
        QStringList names = line.values("columns").join(COMMA).split(COMMA);
        for (QString &name : names) {
            name = name.trimmed();
        }
        request.layout.columns = names.contains(ALL_COLUMNS) ? all : Columns();
        for (const QString &name : std::as_const(names)) {
            const int index = indexOf(all, name);
            if (index < 0 && name != ALL_COLUMNS) {
                return noColumn(name, all);
            }
            if (index >= 0 && indexOf(request.layout.columns, name) < 0) {
                request.layout.columns.push_back(all[size_t(index)]);
            }
        }
    }
    request.read = request.layout.columns;
    return QString();
}

QString readOrders(const CommandLine &line, ListRequest &request)
{
    const Columns all = columnsOf(*request.query.listing);
    const QStringList texts = line.values("sort");
    for (const QString &text : texts) {
        const QString name = text.section(COLON, 0, 0);
        const QString direction = text.section(COLON, 1);
        if (text.contains(COLON) && direction != ASCENDING && direction != DESCENDING) {
            return noSuch(QStringLiteral("direction"), direction, { DESCENDING, ASCENDING });
        }
        const int index = indexOf(all, name);
        if (index < 0) {
            return noColumn(name, all);
        }
        const Column &column = all[size_t(index)];
        request.orders.push_back({ request.use(column), column.kind, direction == DESCENDING });
    }
    request.isSortedAsWhole = !texts.isEmpty();
    return QString();
}

// Unless rows are sorted otherwise. A packet has its items in the order in which the bridge
// replies.
QString readNaturalOrder(const CommandLine &, ListRequest &request)
{
    if (!request.isSortedAsWhole && request.layout.format != XML) {
        for (const unsigned tag : request.query.listing->order) {
            request.orders.push_back({ useField(request, tag), Kind::Text, false });
        }
    }
    return QString();
}

QString readLimit(const CommandLine &line, ListRequest &request)
{
    if (!line.isSet("limit")) {
        return QString();
    }
    bool isNumber = false;
    request.limit = line.value("limit").toUInt(&isNumber);
    return isNumber ? QString()
                    : QStringLiteral("\"%1\" is no number of rows").arg(line.value("limit"));
}

QString readFilters(const CommandLine &line, ListRequest &request)
{
    const Listing &listing = *request.query.listing;
    for (const char *option : { "state", "book", "output" }) {
        if (line.isSet(option) && listing.type != PACKETDATATYPE_JOB) {
            return QStringLiteral("only jobs and publications have a --%1")
                .arg(QLatin1String(option));
        }
    }
    if (line.isSet("name")) {
        request.filters.push_back({ useField(request, listing.nameTag), {}, line.values("name") });
    }
    if (line.isSet("state")) {
        QStringList states = line.values("state");
        std::transform(states.begin(), states.end(), states.begin(), stateNumber);
        request.filters.push_back({ useField(request, STATE_TAG), states, {} });
    }
    return QString();
}

// The keys among the values of --output, --book and --key are of the right type.
QString checkKeys(const CommandLine &line, ListRequest &request)
{
    const Listing &listing = *request.query.listing;
    const std::pair<const char *, PACKETDATATYPES> options[] = {
        { "output", PACKETDATATYPE_OUTPUT },
        { "book", PACKETDATATYPE_BOOK },
        { "key", listing.owner },
    };
    if (line.isSet("key") && listing.owner == PACKETDATATYPE_NONE) {
        return QStringLiteral("%1 are not listed by key").arg(QLatin1String(listing.name));
    }
    if (line.isSet("key") && line.isSet("output")) {
        return QStringLiteral("give --key or --output, not both");
    }
    for (const auto &[option, type] : options) {
        const QStringList texts = line.values(option);
        for (const QString &text : texts) {
            const std::optional<TQKEY_ELEMENT> key = readKey(text);
            const bool isKeyOnly = qstrcmp(option, "key") == 0;
            const QString wrong = key ? wrongKey(*key, type) : isKeyOnly ? noKey(text) : QString();
            if (!wrong.isEmpty()) {
                return wrong;
            }
        }
    }
    return QString();
}

using ReadPart = QString (*)(const CommandLine &line, ListRequest &request);
constexpr ReadPart PARTS[] = { readLayout, readOrders, readNaturalOrder, readLimit, readFilters,
    checkKeys };

bool isSame(const TQKEY_ELEMENT &a, const TQKEY_ELEMENT &b)
{
    return a.key == b.key && a.hkey == b.hkey;
}

// Adds a key unless it is there.
void add(std::vector<TQKEY_ELEMENT> &keys, const TQKEY_ELEMENT &key)
{
    const bool isThere = std::any_of(keys.begin(), keys.end(),
        [&key](const TQKEY_ELEMENT &other) { return isSame(key, other); });
    if (!isThere) {
        keys.push_back(key);
    }
}

// Adds the key of each item that the texts name, by a key or by a name. Returns which text names
// none.
QString findKeys(TQCommServer &server, PACKETDATATYPES type, const QStringList &texts,
    std::vector<TQKEY_ELEMENT> &keys)
{
    std::vector<TQNAMEDKEY> items;
    if (texts.isEmpty() || !TQListKeys(server, type, items)) {
        return QString();
    }
    QStringList names;
    for (const TQNAMEDKEY &item : items) {
        names << QString::fromStdString(item.name);
    }
    for (const QString &text : texts) {
        const std::optional<TQKEY_ELEMENT> key = readKey(text);
        bool isFound = false;
        for (size_t i = 0; i < items.size(); ++i) {
            const bool isMeant = key ? isSame(items[i].key, *key)
                                     : names.at(int(i)).compare(text, Qt::CaseInsensitive) == 0;
            if (isMeant) {
                add(keys, items[i].key);
                isFound = true;
            }
        }
        if (!isFound) {
            return noSuch(typeText(type), text, key ? QStringList() : names);
        }
    }
    return QString();
}

}  // namespace

bool Filter::matches(const QStringList &cells) const
{
    const QString &cell = cells.at(column);
    const bool hasPart = std::any_of(parts.begin(), parts.end(),
        [&cell](const QString &part) { return cell.contains(part, Qt::CaseInsensitive); });
    return (texts.isEmpty() || texts.contains(cell)) && (parts.isEmpty() || hasPart);
}

int ListRequest::use(const Column &column)
{
    if (indexOf(read, column.name) < 0) {
        read.push_back(column);
    }
    return indexOf(read, column.name);
}

QString readRequest(const CommandLine &line, ListRequest &request)
{
    request.query.listing = findListing(line.arguments().value(0));
    request.query.includesPublications = line.isSet("include-publications");
    if (line.arguments().size() != 1) {
        return QStringLiteral("name one thing to list: ") +
            QString::fromStdString(sentenceOf(line.verb()->arguments.front().words));
    }
    for (const ReadPart read : PARTS) {
        const QString wrong = read(line, request);
        if (!wrong.isEmpty()) {
            return wrong;
        }
    }
    return QString();
}

QString lookUp(TQCommServer &server, const CommandLine &line, ListRequest &request)
{
    const PACKETDATATYPES owner = request.query.listing->owner;
    QString wrong =
        findKeys(server, owner, line.values("key") + line.values("output"), request.query.keys);
    if (line.isSet("book") && wrong.isEmpty()) {
        std::vector<TQKEY_ELEMENT> books;
        wrong = findKeys(server, PACKETDATATYPE_BOOK, line.values("book"), books);
        QStringList keys;
        for (const TQKEY_ELEMENT &book : books) {
            keys << keyText(book);
        }
        request.filters.push_back({ useField(request, BOOK_TAG), keys, {} });
    }
    return wrong;
}
