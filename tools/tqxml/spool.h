#ifndef SPOOL_H
#define SPOOL_H

#include <QByteArray>
#include <QString>
#include <QTemporaryFile>

/// Output that is held back until it is complete: the beginning in memory, the rest in a temporary
/// file.
class Spool
{
public:
    /// Returns false if it cannot be stored; error() says why.
    bool write(const QByteArray &bytes);
    QString error() const { return m_error; }
    bool isEmpty() const { return m_bytes.isEmpty() && !m_file.isOpen(); }
    /// Writes everything to standard output; returns the exit code.
    int print();

private:
    int printFile();
    bool open();
    bool flush();

    QByteArray m_bytes;  // behind those in the file
    QTemporaryFile m_file;
    QString m_error;
};

#endif
