// Finds out what is wrong with a line of packet text: a list of questions, from the coding of the
// file to the value of the field, of which the first that is answered with yes names the fault.

#include "packetfaults.h"

#include "conversion.h"

#include "xmlpacketable.h"

#include <QList>

namespace {

constexpr char BLANK = ' ';

// The line in question, and where it stands.
struct Line
{
    QByteArray text;  // without its line feed
    bool hasLineFeed = false;
    bool isStart = false;  // of the file
    QList<QByteArray> open;  // the first lines of the items and lists around it

    QByteArray word() const { return text.split(BLANK).first(); }
    bool isInItem() const { return !open.isEmpty() && open.last().startsWith("SI "); }
    QString type() const { return QString::fromUtf8(open.last().mid(3)); }
    CONVERTSTRUCTELEMENTINFO *fields() const
    {
        return fieldsOfType(PACKETDATATYPES(type().toUInt(nullptr, 16)));
    }
    unsigned tag() const { return word().toUInt(nullptr, 16); }
    bool hasField() const { return XMLPacketable::getConvStructFromDataTag(fields(), tag()); }
};

// Reads up to that line.
Line lineOf(const QByteArray &text, qint64 number, bool isStart)
{
    Line line;
    line.isStart = isStart && number == 1;
    const QList<QByteArray> lines = text.split('\n');  // the last one has no line feed
    for (int i = 0; i < number - 1 && i < lines.size(); ++i) {
        const QByteArray word = lines[i].left(3);
        if (word == "SI " || word == "SL ") {
            line.open.append(lines[i]);
        } else if ((word == "TI " || word == "TL ") && !line.open.isEmpty()) {
            line.open.removeLast();
        }
    }
    line.text = lines.value(int(number - 1));
    line.hasLineFeed = number < lines.size();
    return line;
}

QString byteOrderMark(const Line &line)
{
    return line.isStart && line.text.startsWith("\xef\xbb\xbf")
        ? QStringLiteral("the file starts with a byte order mark; packet text is UTF-8 without one")
        : QString();
}

QString otherEncoding(const Line &line)
{
    const bool isUtf16 =
        line.isStart && (line.text.startsWith("\xff\xfe") || line.text.startsWith("\xfe\xff"));
    if (isUtf16 || line.text.contains('\0')) {
        return QStringLiteral("this is UTF-16, or not a text; packet text is UTF-8");
    }
    return QString::fromUtf8(line.text).toUtf8() != line.text
        ? QStringLiteral("this is not UTF-8; iconv(1) converts other encodings")
        : QString();
}

QString otherLineEnd(const Line &line)
{
    return line.text.endsWith('\r')
        ? QStringLiteral("the line ends with a carriage return; lines of packet text end with "
                         "a line feed alone")
        : QString();
}

QString missingEnd(const Line &line)
{
    if (line.text.isEmpty() && !line.hasLineFeed) {
        return QStringLiteral("the text ends before \"%1\" is closed")
            .arg(QString::fromUtf8(line.open.value(line.open.size() - 1)));
    }
    return line.hasLineFeed ? QString() : QStringLiteral("the last line has no line feed");
}

QString emptyLine(const Line &line)
{
    return line.text.trimmed().isEmpty() ? QStringLiteral("the line is empty") : QString();
}

QString xml(const Line &line)
{
    return line.isStart && line.text.startsWith('<')
        ? QStringLiteral("this looks like XML, which --to packet reads")
        : QString();
}

QString blanksAround(const Line &line)
{
    return line.text != line.text.trimmed()
        ? QStringLiteral("blanks at the start or end of a line do not come back")
        : QString();
}

QString noItem(const Line &line)
{
    return line.isInItem() ? QString()
                           : QStringLiteral("an item is missing here: \"SI\" and a data type");
}

QString unknownType(const Line &line)
{
    return line.fields() ? QString()
                         : QStringLiteral("the data type %1 is unknown, and with it the form of "
                                          "its fields")
                               .arg(line.type());
}

QString noTag(const Line &line)
{
    bool isNumber = false;
    line.word().toUInt(&isNumber, 16);
    return isNumber ? QString()
                    : QStringLiteral("\"%1\" is no data tag").arg(QString::fromUtf8(line.word()));
}

QString unknownField(const Line &line)
{
    return line.hasField() ? QString()
                           : QStringLiteral("the data type %1 has no field %2")
                                 .arg(line.type(), QString::fromUtf8(line.word()));
}

QString otherTag(const Line &line)
{
    const QString tag = QString::number(line.tag(), 16);
    return tag == QString::fromUtf8(line.word())
        ? QString()
        : QStringLiteral("write the data tag as %1").arg(tag);
}

QString missingValue(const Line &line)
{
    return line.text.contains(BLANK) ? QString()
                                     : QStringLiteral("the field has no value, not even a blank");
}

QString otherValue(const Line &line)
{
    return QStringLiteral("the value of field %1 of the data type %2 would not come back the same")
        .arg(QString::fromUtf8(line.word()), line.type());
}

}  // namespace

QString faultOf(const QByteArray &text, qint64 number, bool isStart)
{
    const Line line = lineOf(text, number, isStart);
    QString fault;
    for (const auto question :
        { byteOrderMark, otherEncoding, otherLineEnd, xml, missingEnd, emptyLine, blanksAround,
            noItem, unknownType, noTag, unknownField, otherTag, missingValue, otherValue }) {
        fault = fault.isEmpty() ? question(line) : fault;
    }
    return fault;
}
