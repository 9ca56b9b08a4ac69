#ifndef XMLIMAGE_H
#define XMLIMAGE_H

#include "xmlobject.h"

/// A reference to an image: an element "img" with its location and name. It holds no image data.
///
/// Both values are attributes: an empty text leaves the earlier one in place, and an absent one
/// reads as a null string.
class TQXML_EXPORT XMLImage : public XMLObject
{
public:
    /// @{
    /// An image without a location, and with no name or that one.
    XMLImage();
    explicit XMLImage(const QString &name);
    /// @}
    ~XMLImage() override;

    /// @{
    /// Attribute "url": the location, kept as it stands and never looked at.
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
