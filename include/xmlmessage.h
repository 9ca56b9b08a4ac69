#ifndef XMLMESSAGE_H
#define XMLMESSAGE_H

#include "xmlobject.h"

/// A free text for another agent: an element "msg" whose attribute "msg" holds the text.
class TQXML_EXPORT XMLMessage : public XMLObject
{
public:
    /// @{
    /// A message with that text, or without one.
    XMLMessage();
    explicit XMLMessage(const QString &text);
    /// @}
    ~XMLMessage() override;

    /// Setting an empty text changes nothing.
    void setMessage(const QString &text);
    /// The text; a null string when none was set.
    QString getMessage() const;
};

#endif
