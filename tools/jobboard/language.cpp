#include "language.h"

#include "qtcompat_p.h"

#include <QCoreApplication>

namespace {

// The texts in the sources are English.
bool isEnglish(const QString &language)
{
    return language == QLatin1String("C") || language.startsWith(QLatin1String("en"));
}

}  // namespace

Language::Language(const QLocale &locale)
{
    Q_INIT_RESOURCE(jobboard);
    for (const QString &language : locale.uiLanguages()) {
        if (isEnglish(language) || !m_own.isEmpty()) {
            return;
        }
        load(QString(language).replace(QLatin1Char('-'), QLatin1Char('_')));
    }
}

// Of "de_AT" without a file of its own, "de" is taken.
void Language::load(const QString &language)
{
    if (!m_own.load(QStringLiteral("jobboard_") + language, QStringLiteral(":/jobboard"))) {
        return;
    }
    QCoreApplication::installTranslator(&m_own);
    if (m_qt.load(QStringLiteral("qtbase_") + language, TQXmlInternal::qtTranslations())) {
        QCoreApplication::installTranslator(&m_qt);
    }
}
