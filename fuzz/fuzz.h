#ifndef TQXML_FUZZ_H
#define TQXML_FUZZ_H

#include "tqpacketable.h"

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
    template<typename T, size_t N>
    T oneOf(const T (&list)[N])
    {
        return list[below(unsigned(N))];
    }
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

/// An input as a program: each step is a call, and what calls back makes the next steps inside of
/// it.
class Program
{
public:
    Program(const uint8_t *data, size_t size) : bytes(data, size) {}
    virtual ~Program() = default;
    void run();

protected:
    virtual void step() = 0;
    /// Makes up to three steps; none where calls are too deep inside one another.
    void callBack();
    bool isAtTop() const { return m_depth == 0; }
    /// Makes a call, and returns whether it made no steps.
    template<typename Call>
    bool runsAlone(Call call)
    {
        const unsigned steps = m_steps;
        call();
        return m_steps == steps;
    }

    Bytes bytes;

private:
    unsigned m_depth = 0;
    unsigned m_steps = 0;
};

/// A server item that has any packet text; with a null one it has none.
struct TextItem : TQPacketable
{
    using TQPacketable::TQPacketable;
    char *toPacket(unsigned int &length) const override;
    QByteArray text;
};

/// The lines of a packet text, without the empty ones.
QStringList linesOf(const QString &text);

/// @{
/// Whether two nodes, or the children of both, say the same with all below.
bool areSame(const QDomNode &a, const QDomNode &b);
bool haveSameContent(const QDomNode &a, const QDomNode &b);
/// @}

#endif
