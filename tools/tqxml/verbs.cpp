#include "verbs.h"

namespace {

const std::vector<const char *> FORMATS { "table", "xml", "json", "jsonl", "csv", "tsv" };
const std::vector<const char *> KINDS { "outputs", "publications", "books", "jobs", "owners",
    "profiles" };
const std::vector<const char *> TYPES { "output", "publication", "book", "job", "owner",
    "profile" };

const Option HELP { "help", "h", nullptr, Form::Text, {}, "Print help and stop.",
    "print help and stop" };
const Option VERSION { "version", "v", nullptr, Form::Text, {}, "Print the version and stop.",
    "print the version and stop" };
const Option QUIET { "quiet", "q", nullptr, Form::Text, {},
    "Print no remarks, such as \"no jobs found\", and no progress. Errors are still printed.",
    "no remarks, no progress" };
const Option DATABASE { "database", nullptr, "DATABASE", Form::Files, {},
    "The store; otherwise the one that the environment variable TQXML_DATABASE names, or the "
    "sample that comes with tqxml.",
    "the store" };
const Option DATABASE_ARGUMENT { "database", nullptr, "DATABASE", Form::Files, {},
    "The store, in place of the argument DATABASE.", "the store" };

const Option FORMAT { "format", "f", "FORMAT", Form::Words, FORMATS,
    "How rows are printed: %. The default is table.", "how rows are printed" };
const Option ITEM_FORMAT { "format", "f", "FORMAT", Form::Words, FORMATS,
    "How the item is printed: %. The default is xml. References are not printed as XML; their "
    "default is table.",
    "how the item is printed" };
const Option COLUMNS { "columns", "c", "COLUMN,...", Form::ColumnNames, {},
    "Only these columns, in this order; \"all\" stands for all that there are.",
    "only these columns" };
const Option NO_HEADERS { "no-headers", nullptr, nullptr, Form::Text, {},
    "No line with the names of the columns.", "no names of columns" };
const Option SORT { "sort", "s", "COLUMN[:desc]", Form::ColumnNames, {},
    "Sort by a column, as people would: \"p. 12\" comes before \"p. 116\". Rows without a value "
    "come last. Repeated, it sorts rows that are equal in the first column by the next.",
    "sort by a column" };
const Option LIMIT { "limit", "n", "N", Form::Text, {}, "Print no more than N rows.",
    "no more rows than that" };

const Option STATE { "state", nullptr, "STATE", Form::Words, { "waiting", "in-progress", "done" },
    "Only jobs in this state: %, or its number. Repeated, in one of these states.",
    "only jobs in this state" };
const Option NAME { "name", nullptr, "TEXT", Form::Text, {},
    "Only what has this text in its name, in upper or lower case. Repeated, one of these texts.",
    "only with this in the name" };
const Option BOOK { "book", nullptr, "BOOK", Form::Text, {},
    "Only jobs of this book: its title, or its key. Repeated, of one of these books.",
    "only jobs of this book" };
const Option OUTPUT { "output", nullptr, "OUTPUT", Form::Text, {},
    "Only jobs and publications of this output: its name, or its key. Repeated, of one of these "
    "outputs.",
    "only of this output" };
const Option KEY { "key", nullptr, "KEY:HKEY", Form::Text, {},
    "Only jobs and publications of the output with this key (:8), or books of this owner (:55). "
    "Repeated, of one of these.",
    "only of the owner with this key" };
const Option INCLUDE_PUBLICATIONS { "include-publications", nullptr, nullptr, Form::Text, {},
    "List the jobs of publications, too.", "list jobs of publications, too" };
const Option REFERENCES { "references", nullptr, nullptr, Form::Text, {},
    "Instead, list what the item itself refers to.", "list what it refers to" };

const Option TO { "to", nullptr, "FORM", Form::Words, { "xml", "packet" }, "What to make: %.",
    "what to make" };
const Option RAW { "raw", nullptr, nullptr, Form::Text, {},
    "Convert what can be converted, and leave out the rest.",
    "leave out what cannot be converted" };
const Option FIELDS_ONLY { "fields-only", nullptr, nullptr, Form::Text, {},
    "To packet text, convert the fields of items and leave out what packet text has no place for: "
    "the names, keys and flags of items, items inside of fields, agent ids, and everything else in "
    "a packet.",
    "convert the fields of items only" };
const Option NO_LIMIT { "no-limit", nullptr, nullptr, Form::Text, {},
    "Convert items of more than 16 MiB or 200,000 values, too, which may take gigabytes of memory.",
    "convert items of any size" };
const Option JOBS { "jobs", nullptr, "N", Form::Text, {},
    "Generated content with that many jobs instead of the sample.", "generated jobs" };

const Argument FILE { "FILE", Form::Files, {} };
const Argument FILES { "FILE", Form::Files, {}, true };

const std::vector<Verb> VERBS {
    { "list", "KIND [OPTION]...", "list what a store holds",
        "Lists what a store holds, by name; jobs and publications by output before that, and books "
        "by owner.",
        { { "KIND", Form::Words, KINDS } },
        { &FORMAT, &COLUMNS, &NO_HEADERS, &SORT, &LIMIT, &STATE, &NAME, &BOOK, &OUTPUT, &KEY,
            &INCLUDE_PUBLICATIONS, &DATABASE } },
    { "show", "TYPE KEY:HKEY [OPTION]...", "print an item with all that it refers to",
        "Prints an item as XML, with everything that it refers to inside, or as a row in another "
        "format. A publication is shown by one of its jobs, such as the one that \"list "
        "publications\" names. TYPE may also be the hexadecimal number of a data type.",
        { { "TYPE", Form::Words, TYPES }, { "KEY:HKEY", Form::Text, {} } },
        { &REFERENCES, &ITEM_FORMAT, &NO_HEADERS, &DATABASE } },
    { "convert", "--to xml|packet [OPTION]... [FILE]", "convert items between XML and packet text",
        "Turns packet text into a packet document and back, from FILE or standard input. Back from "
        "XML, a packet document, a packetable or an item will do. What would not come back the "
        "same is refused, with the line and the reason.",
        { FILE }, { &TO, &RAW, &FIELDS_ONLY, &NO_LIMIT } },
    { "init", "DATABASE [OPTION]...", "create a store",
        "Creates a store with the sample. A store that is there already is left alone, and an "
        "interrupted run leaves none.",
        { { "DATABASE", Form::Files, {} } }, { &JOBS, &DATABASE_ARGUMENT } },
    { "import-icc", "DATABASE FILE...", "store ICC profiles",
        "Stores ICC profiles, each under the name of its file without the extension, in place of "
        "one that has this name, and prints their keys. A file that is no whole profile leaves the "
        "store as it was, like an interrupted run.",
        { { "DATABASE", Form::Files, {} }, FILES }, { &DATABASE_ARGUMENT } },
    { "help", "[VERB]", "print help", "Prints help, in general or on a verb.",
        { { "VERB", Form::Words, { "list", "show", "convert", "init", "import-icc", "help" } } },
        {} },
};

const std::vector<const Option *> GENERAL { &QUIET, &HELP, &VERSION };

}  // namespace

const std::vector<Verb> &verbs() { return VERBS; }

const std::vector<const Option *> &generalOptions() { return GENERAL; }

std::vector<const Option *> optionsBeforeVerb()
{
    std::vector<const Option *> options = GENERAL;
    options.push_back(&DATABASE);
    return options;
}

std::string sentenceOf(const std::vector<const char *> &words)
{
    std::string text;
    for (size_t i = 0; i < words.size(); ++i) {
        const char *separator = i + 1 == words.size() ? " or " : ", ";
        text += (i == 0 ? "" : separator) + std::string(words[i]);
    }
    return text;
}

std::string helpOf(const Option &option)
{
    std::string text = option.help;
    const size_t place = text.find('%');
    return place == std::string::npos ? text : text.replace(place, 1, sentenceOf(option.words));
}

std::string spelling(const Option &option)
{
    const std::string value = option.value ? std::string(" ") + option.value : std::string();
    return std::string("--") + option.name + value;
}
