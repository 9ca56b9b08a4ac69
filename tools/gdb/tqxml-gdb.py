# Printers of gdb for libtqxml. gdb loads them with the library, when they are installed; they need
# its debug symbols. They read memory only, and call nothing in the program.

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
    has_node = int(value["m_element"]["impl"]) != 0
    return "with an element" if has_node else "without an element"


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
            return "XMLPacket, built as a document; its print() shows it"
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
