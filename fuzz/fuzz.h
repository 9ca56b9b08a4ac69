#ifndef TQXML_FUZZ_H
#define TQXML_FUZZ_H

#include "tqtypes.h"

#include <QDomElement>
#include <QString>
#include <QStringList>

#include <cstddef>
#include <cstdint>

// What several fuzz targets need. Each target defines the one function that libFuzzer calls; the
// replay programs call it for every file of a corpus.

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

/// Ends the process, so that the input is kept, unless the property holds.
void require(bool holds, const char *property);

/// Makes the application object, once; it is never destroyed.
void makeApplication();

/// Hands out an input piece by piece; behind its end everything is zero or empty.
class Bytes
{
public:
    Bytes(const uint8_t *data, size_t size) : m_data(data), m_left(size) {}

    bool isEmpty() const { return m_left == 0; }
    unsigned take();
    /// A number from 0 up to, but not including, end.
    unsigned below(unsigned end) { return take() % end; }
    bool flag() { return (take() & 1) != 0; }
    /// Four bytes, the lowest first.
    unsigned word();
    /// The next bytes, up to that many or to a zero, which is taken too.
    QByteArray raw(size_t most);
    QString text(size_t most) { return QString::fromUtf8(raw(most)); }

private:
    const uint8_t *m_data;
    size_t m_left;
};

/// The lines of a packet text, without the empty ones.
QStringList linesOf(const QString &text);
/// Data type of the first item in a packet text; none without an item.
PACKETDATATYPES typeOf(const QStringList &lines);

/// Whether two elements have the same children, with all below; names and attributes of the
/// elements themselves do not count.
bool haveSameContent(const QDomNode &a, const QDomNode &b);

#endif
