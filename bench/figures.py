"""The figures: what each one measures, over which floor, and its limits.

A ratio is instructions over those of the floor, which is what a good engineer would write by hand
for the same. Where no floor is named, the figure is in bytes or whatever its text begins with.
Limits are for Qt 6 and for Qt 5.15.
"""

from typing import NamedTuple


class Figure(NamedTuple):
    name: str
    floor: str
    limit_qt6: float = 0  # of the ratio; 0 for a figure that is for information
    limit_qt5: float = 0
    is_quick: bool = False  # among those that CI runs
    time_limit: float = 0  # of the ratio of the best times; 0 where time is not looked at

    def limit(self, qt):
        return self.limit_qt5 if qt == 5 else self.limit_qt6


QUICK = True

FIGURES = [
    # Items and their texts
    Figure("text_to_dom", "direct calls of QtXml", 1.06, 1.10, QUICK),
    Figure("item_to_packet", "the same document, built only", 1.15, 1.18, QUICK),
    Figure("item_to_packet_unseen", "toPacket() and one copy of its text", 3, 3, QUICK),
    Figure("dom_to_text", "a plain walk over the tree", 1.45, 1.45, QUICK),
    Figure("text_to_xml", "QXmlStreamWriter, from the same text", 0.3, 0.3, QUICK),
    Figure("heap_per_item", "the same tree, bytes", 1.02, 1.02, QUICK),
    # Equality
    Figure("equal_same", "a structural comparison of both trees", 1.05, 1.4, QUICK, 1.0),
    Figure("equal_same_unbuilt", "memcmp() of texts; ids, keys, names", 3, 3, QUICK),
    Figure("equal_differs", "10 in place of 10,000 items", 1.1, 1.1),
    Figure("equal_first_item_differs", "10 in place of 10,000 items", 1.1, 1.1),
    # Packets on their way
    Figure("send_deliver", "as many events, posted and delivered", 0.6, 0.6, QUICK, 0.2),
    # Each item differs from the one before in the end of its text only
    Figure("send_deliver_texts", "as many events, posted and delivered"),
    Figure("packet_life", "the same document, built and deleted", 1.6, 1.6, QUICK),
    Figure("packet_life_empty", "as many events, posted and delivered", 2.5, 2.5, QUICK),
    Figure("burst", "the documents, built, read and deleted", 1.2, 1.2, QUICK),
    Figure("request_life", "the documents, built, read and deleted", 1.3, 1.4, QUICK),
    Figure("watching_nobody", "instructions a packet, to find that nobody watches", 12, 12, QUICK),
    Figure("queue_empty", "bytes per packet", 320, 320, QUICK),
    Figure("queue_item", "bytes per packet without its text", 400, 400, QUICK),
    # Listings
    Figure("gather", "a plain walk over the lists", 1.2, 1.2, QUICK),
    Figure("publications", "10,000 in place of 40,000 jobs", 5, 5),
    # Ten times as much, over ten times the smaller
    Figure("growth_text_to_dom", "10 times a tenth", 1.15, 1.15),
    Figure("growth_lines_to_dom", "10 times a tenth", 1.15, 1.15),
    Figure("growth_dom_to_text", "10 times a tenth", 1.15, 1.15),
    Figure("growth_page_edit", "10 times a tenth", 1.15, 1.15),
    Figure("growth_inlining", "10 times a tenth", 1.15, 1.15),
    Figure("growth_equal", "10 times a tenth", 1.15, 1.15),
    Figure("growth_queue", "10 times a tenth", 1.15, 1.15),
    Figure("growth_gather", "10 times a tenth", 1.15, 1.15),
    # The command, over stores of up to a million jobs; see commands.py
    Figure("list_jobs_xml", "the rows written by pugixml", 3, 3),
    Figure("list_jobs_xml_over_stream", "the rows written by QXmlStreamWriter", 0.85, 0.85),
    Figure("list_jobs_memory_xml", "MiB, 250 of 10^6 jobs an output", 64, 64),
    Figure("list_jobs_memory_table", "MiB, the same as a table", 64, 64),
    Figure("list_jobs_memory_one_output", "KiB a job, 10^6 of one output", 2.5, 2.5),
    Figure("list_publications_memory", "MiB, less 1 KiB a publication", 64, 64),
    Figure("list_jobs_growth", "per job, 10^3 in place of 10^6", 1.1, 1.1),
    Figure("list_jobs_again", "ns after a listing of 4,000 outputs, and before", 1.1, 1.1),
    Figure("read_records", "thousand instructions a job, store only", 42, 42),
    Figure("init_jobs", "per job, .import of sqlite3", 1.7, 1.7),
    Figure("import_icc", "into 10^3 in place of 10^6 jobs", 1.2, 1.2),
    Figure("list_jobs_round_trips", "trips to PostgreSQL, less one an output", 8, 8),
    Figure("list_jobs_waiting", "ms an output, by 1 ms of delay", 1.5, 1.5),
    # What QtXml costs over a library that is made for speed
    Figure("text_to_dom_over_pugixml", "a copy of the tree by pugixml"),
    Figure("to_string_over_pugixml", "the tree written by pugixml"),
]
