#ifndef INPUT_H
#define INPUT_H

#include <QByteArray>
#include <QFile>
#include <QIODevice>
#include <QString>

#include <limits>

/// What one item may have where items are limited: as many bytes of text as the largest ICC
/// profiles take, and as many values as 500 MB of memory hold.
constexpr qint64 MAX_ITEM_BYTES = 16 << 20;
constexpr qint64 MAX_ITEM_VALUES = 200000;

/// What is wrong with an item that starts in that line and has more.
QString tooLarge(qint64 line);

/// A file, or standard input for "-", that is read only once and from the front.
class Input : public QIODevice
{
public:
    explicit Input(const QString &file) : m_name(file), m_file(file) {}

    /// False when that fails; errorString() says why.
    bool openFile();
    /// What messages call it.
    QString label() const;
    /// Why reading ended before the file did; empty while it did not.
    QString readError() const { return m_readError; }

    /// Ends the input as soon as this many bytes more were read.
    void allow(qint64 bytes) { m_allowed = bytes; }
    /// True when it ended so.
    bool isOverLimit() const { return m_allowed < 0; }

    bool isSequential() const override { return true; }

protected:
    qint64 readData(char *data, qint64 size) override;
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    bool isStandardInput() const;

    const QString m_name;
    QFile m_file;
    QString m_readError;
    qint64 m_allowed = std::numeric_limits<qint64>::max();
};

/// The lines of an input.
class LineReader
{
public:
    explicit LineReader(Input &input) : m_input(input) {}

    /// The next line, with its line feed if it has one; empty at the end. No more than that many
    /// bytes of it, and a few thousand: what follows counts as a further line.
    QByteArray take(qint64 most);
    /// Number of the line that was taken last, from 1 on.
    qint64 number() const { return m_number; }

private:
    bool fill();

    Input &m_input;
    QByteArray m_bytes;
    int m_at = 0;  // the next byte in them
    qint64 m_number = 0;
};

#endif
