#ifndef TQXML_QTCOMPAT_P_H
#define TQXML_QTCOMPAT_P_H

#include <QDomDocument>
#include <QLibraryInfo>

namespace TQXmlInternal {

// The differences between Qt 5.15 and Qt 6.

#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
using TextSize = int;
#else
using TextSize = qsizetype;
#endif

// For QDomDocument::setContent(): reads prefixes and namespaces.
#if QT_VERSION < QT_VERSION_CHECK(6, 5, 0)
constexpr bool WITH_NAMESPACES = true;
#else
constexpr auto WITH_NAMESPACES = QDomDocument::ParseOption::UseNamespaceProcessing;
#endif

// The folder of Qt's own translations.
inline QString qtTranslations()
{
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    return QLibraryInfo::location(QLibraryInfo::TranslationsPath);
#else
    return QLibraryInfo::path(QLibraryInfo::TranslationsPath);
#endif
}

}  // namespace TQXmlInternal

#endif
