#ifndef XMLMESSAGE_H
#define XMLMESSAGE_H

#include "xmlobject.h"

/// A free text for another agent: an element "msg" whose attribute "msg" holds the text.
class TQXML_EXPORT XMLMessage : public XMLObject
{
public:
    /// @{
    /// A message without a text, or with that one.
    XMLMessage();
    explicit XMLMessage(const QString &text);
    /// @}
    ~XMLMessage() override;

    /// An empty text leaves the earlier one in place.
    void setMessage(const QString &text);
    /// The text; a null string when none was set.
    QString getMessage() const;
};

#endif
