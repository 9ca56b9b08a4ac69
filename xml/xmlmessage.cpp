#include "xmlmessage.h"

namespace {

const QString MESSAGE = QStringLiteral("msg");

}  // namespace

XMLMessage::XMLMessage() : XMLObject(XMLOBJECT_MSG) {}

XMLMessage::XMLMessage(const QString &text) : XMLMessage() { setMessage(text); }

XMLMessage::~XMLMessage() = default;

void XMLMessage::setMessage(const QString &text) { setOwnAttribute(MESSAGE, text); }
QString XMLMessage::getMessage() const { return getAttribute(element(), MESSAGE); }
