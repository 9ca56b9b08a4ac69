// Reads the URLs of stores: finds the database system whose URL it is, which reads the rest.

#include "storeaddress_p.h"

#include "urlparts_p.h"

#include <QStringList>

#include <algorithm>
#include <iterator>

namespace TQServerInternal {

namespace {

// The database systems that there are.
constexpr const Dialect *DIALECTS[] = { &SQLITE, &POSTGRESQL };

// The forms of all URLs: "A, B or C".
QString knownForms()
{
    QStringList forms;
    for (const Dialect *dialect : DIALECTS) {
        forms += QLatin1String(dialect->form);
    }
    const QString last = forms.takeLast();
    return forms.join(QLatin1String(", ")) + QLatin1String(" or ") + last;
}

}  // namespace

std::optional<StoreAddress> StoreAddress::parse(const char *url, QString &error)
{
    const QString text = QString::fromUtf8(url);
    const auto dialect = std::find_if(std::begin(DIALECTS), std::end(DIALECTS),
        [&text](const Dialect *known) { return known->isUrl(text); });
    if (dialect == std::end(DIALECTS)) {
        error =
            QStringLiteral("%1: not a database URL (%2)").arg(withoutPassword(text), knownForms());
        return {};
    }
    return (*dialect)->parse(text, error);
}

}  // namespace TQServerInternal
