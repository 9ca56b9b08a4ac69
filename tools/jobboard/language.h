#ifndef LANGUAGE_H
#define LANGUAGE_H

#include <QLocale>
#include <QTranslator>

/// Shows the texts of the program, of the packet monitor and of Qt in the first language of a
/// locale that there is a translation for. Ends with the object.
class Language
{
public:
    /// The application object must exist.
    explicit Language(const QLocale &locale = QLocale());

private:
    void load(const QString &language);

    QTranslator m_own;
    QTranslator m_qt;
};

#endif
