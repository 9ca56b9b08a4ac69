// Takes the URLs of stores apart, and keeps passwords that stand in them out of messages.

#include "urlparts_p.h"

#include <QRegularExpression>
#include <QUrl>

namespace TQServerInternal {

UrlParameters::UrlParameters(const QString &query)
    : m_items(query.isEmpty() ? QStringList() : query.split(QLatin1Char('&')))
{
}

QString UrlParameters::take(const char *name)
{
    const QString start = QLatin1String(name) + QLatin1Char('=');
    QString value;
    for (int i = int(m_items.size()) - 1; i >= 0; --i) {
        if (m_items.at(i).startsWith(start)) {
            value = m_items.takeAt(i).mid(start.size());
        }
    }
    return value;
}

UrlParts::UrlParts(const QString &url)
    : address(url.section(QLatin1Char('?'), 0, 0)), parameters(url.section(QLatin1Char('?'), 1))
{
}

QString decoded(const QString &text, QString &error)
{
    static const QRegularExpression bad(QStringLiteral("%(?![0-9A-Fa-f]{2})"));
    if (text.contains(bad)) {
        error = QStringLiteral("%1: a \"%\" is written %25 in a URL").arg(withoutPassword(text));
        return QString();
    }
    const QString plain = QUrl::fromPercentEncoding(text.toUtf8());
    if (plain.contains(QChar(0))) {
        error = QStringLiteral("a database URL cannot hold a NUL character");
        return QString();
    }
    return plain;
}

QString withoutPassword(QString text)
{
    static const QRegularExpression user(QStringLiteral("((?:^|/)[^:/@]*:)(?!//).*@"),
        QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression parameters(QStringLiteral("(\\?|pass\\w*\\s*=).*$"),
        QRegularExpression::DotMatchesEverythingOption | QRegularExpression::CaseInsensitiveOption);
    return text.replace(user, QStringLiteral("\\1...@"))
        .replace(parameters, QStringLiteral("\\1..."));
}

QString notOfTheForm(const QString &url, const QString &form)
{
    return QStringLiteral("%1: not of the form %2").arg(withoutPassword(url), form);
}

}  // namespace TQServerInternal
