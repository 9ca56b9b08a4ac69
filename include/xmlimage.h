#ifndef XMLIMAGE_H
#define XMLIMAGE_H

#include "xmlobject.h"

/// A reference to an image: an element "img" with its location and name. It holds no image data.
///
/// Both values are attributes. Setting an empty text changes nothing; an absent value reads as a
/// null string.
class TQXML_EXPORT XMLImage : public XMLObject
{
public:
    /// @{
    /// An image without a location, with that name or without one.
    XMLImage();
    explicit XMLImage(const QString &name);
    /// @}
    ~XMLImage() override;

    /// @{
    /// Attribute "url": the location. It is not checked.
    void setURL(const QString &url);
    QString getURL() const;
    /// @}
    /// @{
    /// Attribute "name".
    void setName(const QString &name);
    QString getName() const;
    /// @}
};

#endif
