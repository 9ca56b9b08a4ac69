#ifndef INPUT_H
#define INPUT_H

#include <QByteArray>
#include <QFile>
#include <QIODevice>
#include <QString>

#include <limits>

/// Limits of one item: bytes of text, which suffice for the largest ICC profiles, and values, which
/// take up to 500 MB of memory.
constexpr qint64 MAX_ITEM_BYTES = 16 << 20;
constexpr qint64 MAX_ITEM_VALUES = 200000;

/// The error message for an item that starts in that line and exceeds a limit.
QString tooLarge(qint64 line);

/// A file, or standard input for "-". It is read once, from start to end.
class Input : public QIODevice
{
public:
    explicit Input(const QString &file) : m_name(file), m_file(file) {}

    /// Returns false on failure; errorString() says why.
    bool openFile();
    /// Its name in messages.
    QString label() const;
    /// Why reading stopped before the end of the file; empty if it did not.
    QString readError() const { return m_readError; }

    /// The first line that is not UTF-8 in what was read so far; 0 if there is none.
    qint64 lineNotInUtf8() const { return m_lineNotInUtf8; }

    /// Ends the input after this many more bytes.
    void allow(qint64 bytes) { m_allowed = bytes; }
    /// Whether that limit ended it.
    bool isOverLimit() const { return m_allowed < 0; }

    bool isSequential() const override { return true; }

protected:
    qint64 readData(char *data, qint64 size) override;
    qint64 writeData(const char *, qint64) override { return -1; }

private:
    bool isStandardInput() const;
    void look(const char *data, qint64 size);

    const QString m_name;
    QFile m_file;
    QString m_readError;
    qint64 m_lines = 1;  // those that were begun
    int m_following = 0;  // bytes of the open UTF-8 character to come
    qint64 m_lineNotInUtf8 = 0;
    qint64 m_allowed = std::numeric_limits<qint64>::max();
};

/// The lines of an input.
class LineReader
{
public:
    explicit LineReader(Input &input) : m_input(input) {}

    /// The next line with its line feed; empty at the end. A line much longer than this many bytes
    /// is cut, and the rest counts as another line.
    QByteArray take(qint64 most);
    /// The number of the line that was taken last; the first line is 1.
    qint64 number() const { return m_number; }

private:
    bool fill();

    Input &m_input;
    QByteArray m_bytes;
    int m_at = 0;  // the next byte in them
    qint64 m_number = 0;
};

#endif
