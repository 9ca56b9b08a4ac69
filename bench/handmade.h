#ifndef HANDMADE_H
#define HANDMADE_H

#include <QDomDocument>
#include <QString>

// A packet's document, made by direct calls of QtXml.
struct HandmadePacket
{
    QDomDocument document;
    QDomElement body;

    // Without any ids.
    HandmadePacket();
    HandmadePacket(int source, int destination);

    // The element is in the body.
    QDomElement append(const QString &name);

private:
    QDomElement source;
    QDomElement destination;
};

#endif
