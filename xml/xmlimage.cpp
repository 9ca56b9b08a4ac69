#include "xmlimage.h"

namespace {

const QString URL = QStringLiteral("url");
const QString NAME = QStringLiteral("name");

}  // namespace

XMLImage::XMLImage() : XMLObject(XMLOBJECT_IMAGE) {}

XMLImage::XMLImage(const QString &name) : XMLImage() { setName(name); }

XMLImage::~XMLImage() = default;

void XMLImage::setURL(const QString &url) { setOwnAttribute(URL, url); }
QString XMLImage::getURL() const { return getAttribute(element(), URL); }
void XMLImage::setName(const QString &name) { setOwnAttribute(NAME, name); }
QString XMLImage::getName() const { return getAttribute(element(), NAME); }
