#ifndef COMMANDLINE_H
#define COMMANDLINE_H

#include "verbs.h"

#include <QMap>
#include <QStringList>

/// A command line that fits the description of its verb.
class CommandLine
{
public:
    /// Reads the arguments after the program's name. Options may come before the verb, too.
    explicit CommandLine(const QStringList &arguments);

    /// What is wrong with it; empty if nothing.
    QString error() const { return m_error; }
    /// Null when none is given, or none of that name exists.
    const Verb *verb() const { return m_verb; }
    /// What is not an option, after the verb.
    const QStringList &arguments() const { return m_arguments; }

    bool isSet(const char *option) const;
    /// The last value; empty when the option is not set.
    QString value(const char *option) const;
    QStringList values(const char *option) const;

    /// The URL of the store to read: --database, or what is the default.
    QByteArray store() const;
    /// The arguments, with the value of --database as the first.
    QStringList argumentsWithDatabase() const;

private:
    void parse(const QStringList &arguments);
    void checkOptions();
    void checkArguments();
    void refuse(const QString &error);

    const Verb *m_verb = nullptr;
    QStringList m_arguments;
    QMap<QString, QStringList> m_options;  // values by name; a flag has none
    QString m_error;
};

#endif
