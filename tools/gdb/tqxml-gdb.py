# Printers of gdb for libtqxml. gdb loads them with the library, when they are installed; they need
# its debug symbols, and those of QtXml for what a document holds. They read memory only, and call
# nothing in the program.

import sys
from xml.sax.saxutils import escape, quoteattr

import gdb
import gdb.printing


def pointer_of(unique_ptr):
    return find_pointer(unique_ptr["_M_t"]["_M_t"])


def find_pointer(tuple_part):
    """The pointer in a tuple of a pointer and its deleter."""
    for field in tuple_part.type.fields():
        is_head = field.name == "_M_head_impl"
        if is_head and "_Head_base<0" in str(tuple_part.type):
            return tuple_part[field]
        if field.is_base_class:
            found = find_pointer(tuple_part[field])
            if found is not None:
                return found
    return None


def text_of_string(string):
    start = string["_M_dataplus"]["_M_p"]
    return start.string("utf-8", "replace", length=int(string["_M_string_length"]))


def text_of_qstring(string):
    data = string["d"]
    if data.type.code == gdb.TYPE_CODE_PTR:  # Qt 5: the characters follow a head
        head = data.dereference()
        start = data.cast(gdb.lookup_type("char").pointer()) + int(head["offset"])
        size = int(head["size"])
    else:
        start = data["ptr"]
        size = int(data["size"])
    if size == 0:
        return ""
    characters = gdb.selected_inferior().read_memory(int(start), 2 * size)
    return bytes(characters).decode("utf-16", "replace")


def elements_of(vector):
    start = vector["_M_impl"]["_M_start"]
    for index in range(int(vector["_M_impl"]["_M_finish"] - start)):
        yield (start + index).dereference()


def agent(optional):
    payload = optional["_M_payload"]
    return str(int(payload["_M_payload"]["_M_value"])) if payload["_M_engaged"] else "nobody"


def state(value):
    """What an object has of its element."""
    if not value["m_isBuilt"]:
        return "not built"
    node = value["m_element"]["impl"]
    return xml_of(node) or "with an element" if int(node) else "without an element"


# --- Documents of QtXml ---


def values_of_hash(hash_map):
    """The QDomNodePrivate pointers of a QMultiHash with one value a key, in any order."""
    data = hash_map["d"]
    if data.type.target().name == "QHashData":  # Qt 5: lists that end at the head
        node_type = gdb.lookup_type("QHashNode<QString, QDomNodePrivate*>").pointer()
        for index in range(int(data["numBuckets"])):
            node = data["buckets"][index]
            while int(node) != int(data):
                yield node.cast(node_type)["value"]
                node = node["next"]
    elif int(data):  # Qt 6: spans of 128 buckets
        node_type = gdb.lookup_type("QHashPrivate::MultiNode<QString, QDomNodePrivate*>").pointer()
        for index in range(int(data["numBuckets"])):
            span = data["spans"][index // 128]
            entry = int(span["offsets"][index % 128])
            if entry != 255:  # 255 stands for an empty bucket
                yield span["entries"][entry].address.cast(node_type)["value"]["value"]


def attributes_of(element):
    """Names and values of an element's attributes, by name."""
    attributes = element["m_attr"]
    if not int(attributes):
        return []
    return sorted(
        (text_of_qstring(node["name"]), text_of_qstring(node["value"]))
        for node in values_of_hash(attributes["map"])
    )


def pieces_of(node):
    """The XML of a node and what is below it, piece by piece."""
    name = text_of_qstring(node["name"])
    if name == "#text":
        yield escape(text_of_qstring(node["value"]))
        return
    child = node["first"]
    is_element = not name.startswith("#")
    if is_element:
        yield "<" + name
        for attribute in attributes_of(node.cast(gdb.lookup_type("QDomElementPrivate").pointer())):
            yield " %s=%s" % (attribute[0], quoteattr(attribute[1]))
        yield ">" if int(child) else "/>"
    has_children = int(child) != 0
    while int(child):
        yield from pieces_of(child)
        child = child["next"]
    if is_element and has_children:
        yield "</%s>" % name


def xml_of(node):
    """The XML of a node, as much of it as "set print elements" allows; None without the debug
    symbols of QtXml."""
    try:
        node_type = gdb.lookup_type("QDomNodePrivate")
        node_type.fields()
    except (gdb.error, TypeError):
        return None
    limit = gdb.parameter("print elements") or sys.maxsize
    text = ""
    for piece in pieces_of(node.cast(node_type.pointer())):
        text += piece
        if len(text) > limit:
            return text[:limit] + "..."
    return text


# --- Printers ---


class PacketItem:
    """A server item that a packet holds as packet text."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        key = self.value["m_key"]
        return 'item of type %x, key %x:%x, "%s"' % (
            int(self.value["m_type"]),
            int(key["key"]),
            int(key["hkey"]),
            text_of_string(self.value["m_name"]),
        )

    def children(self):
        text = pointer_of(self.value["m_text"])
        if int(text):
            length = int(self.value["m_length"])
            yield "text", text.string("utf-8", "replace", length=length).rstrip("\0")


class Draft:
    """An element that nobody has looked at."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        return "element " + text_of_qstring(self.value["m_name"])

    def children(self):
        for attribute in elements_of(self.value["m_attributes"]):
            yield text_of_qstring(attribute["first"]), text_of_qstring(attribute["second"])


def content_of(body_item):
    """The item or the draft in a std::variant of both."""
    content = body_item["m_content"]
    kinds = ["PacketItem", "Draft"]
    kind = gdb.lookup_type("TQXmlInternal::" + kinds[int(content["_M_index"])])
    return content.address.cast(kind.pointer()).dereference()


class Packet:
    """Ids and items of a packet of which nobody has asked for a node."""

    def __init__(self, value):
        self.value = value
        self.items = [content_of(item) for item in elements_of(value["m_items"])]
        self.is_built = int(pointer_of(value["m_tree"])) != 0

    def to_string(self):
        if self.is_built:
            root = pointer_of(self.value["m_tree"])["root"]["impl"]
            return "XMLPacket, built: " + (xml_of(root) or "its print() shows the document")
        return "XMLPacket from %s to %s, not built, items: %d" % (
            agent(self.value["m_source"]),
            agent(self.value["m_destination"]),
            len(self.items),
        )

    def children(self):
        for index, item in enumerate(self.items):
            yield "[%d]" % index, item


class Packetable:
    """A server item as XML."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        server_item = "with" if int(self.value["m_packetable"]) else "without"
        return "XMLPacketable %s, %s a server item" % (state(self.value), server_item)


class Action:
    """An action of the user interface."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        group = "in" if int(self.value["m_actionGroup"]) else "in no"
        return "XMLAction %s, %s group" % (state(self.value), group)


printers = gdb.printing.RegexpCollectionPrettyPrinter("tqxml")
printers.add_printer("PacketItem", "^TQXmlInternal::PacketItem$", PacketItem)
printers.add_printer("Draft", "^TQXmlInternal::Draft$", Draft)
printers.add_printer("XMLPacket", "^XMLPacket$", Packet)
printers.add_printer("XMLPacketable", "^XMLPacketable$", Packetable)
printers.add_printer("XMLAction", "^XMLAction$", Action)
gdb.printing.register_pretty_printer(gdb.current_objfile(), printers, replace=True)
