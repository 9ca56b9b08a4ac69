#ifndef URLPARTS_P_H
#define URLPARTS_P_H

#include <QString>
#include <QStringList>

namespace TQServerInternal {

// The part of a URL after its "?": NAME=VALUE, with "&" between them.
class UrlParameters
{
public:
    explicit UrlParameters(const QString &query);

    // Takes out a parameter; a null string when it is not there.
    QString take(const char *name);
    // What has not been taken.
    QString rest() const { return m_items.join(QLatin1Char('&')); }

private:
    QStringList m_items;
};

// A URL before its "?", and the parameters after it.
struct UrlParts
{
    explicit UrlParts(const QString &url);

    QString address;
    UrlParameters parameters;
};

// Undoes percent-encoding. Leaves an error when something is not encoded right.
QString decoded(const QString &text, QString &error);

// What messages say of a text that may hold a password: "u:...@h" for "u:p@ss@h", and nothing of
// parameters.
QString withoutPassword(QString text);

// The error of a URL that has not the form of its kind.
QString notOfTheForm(const QString &url, const QString &form);

}  // namespace TQServerInternal

#endif
