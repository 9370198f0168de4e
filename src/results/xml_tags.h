// Form of the result document, and the tags that wrap its tables under XML output.
//
// An XML document alternates text inside "data" elements with tables in named elements, each
// with the time of its run, so that a style sheet can pick out any table of any run.
#pragma once

#include <ostream>

#include "foundation/my_string.h"

namespace mnd {

// The document is XML; otherwise HTML. Set at the start of each run.
extern bool xmlOutput;

// Entries of the tree and their anchors are written; off while an analysis runs on simulated
// data that nobody will browse.
extern bool htmlOutput;

// One element name with an optional attribute. The operations only build text; the caller
// writes it, under XML output only (`open_table` and `close_table` do both).
class TXmlTag {
public:
    TXmlTag() = default;
    explicit TXmlTag(const my_string& element_name) : name(element_name) {}
    TXmlTag(const my_string& element_name, const my_string& attribute, const my_string& value)
        : name(element_name), attribute_name(attribute), attribute_value(value) {}

    // "<name>" and a line end.
    static my_string write(const TXmlTag& tag);

    // "</name>" and a line end.
    static my_string end(const TXmlTag& tag);

    // Closes the running text element and opens the element of a table, with its attribute,
    // when both parts of it are given, and the time of the run. The value is a user's text and
    // is escaped here.
    static my_string open(const TXmlTag& tag);

    // Closes the element of a table and opens a text element again.
    static my_string close(const TXmlTag& tag);

    my_string name;
    my_string attribute_name;
    my_string attribute_value;

    static my_string time;  // when the run began; "not set yet" before the first run
};

// The elements of the document's frame.
struct MndXmlTags {
    static const TXmlTag rootTag;
    static const TXmlTag refTag;
    static const TXmlTag dataTag;
    static const TXmlTag headerTag;
};

// Write `TXmlTag::open` before, and `TXmlTag::close` after a table; nothing under HTML.
void open_table(std::ostream& out, const TXmlTag& tag);
void close_table(std::ostream& out, const TXmlTag& tag);

// A place in an HTML document that the tree can point to.
struct html_anchor {
    my_string name;  // as it is; escaped on output
};
std::ostream& operator<<(std::ostream& out, const html_anchor& anchor);

// The same in an XML document: outside of the text element, which is closed and opened again.
struct xml_anchor {
    my_string name;
};
std::ostream& operator<<(std::ostream& out, const xml_anchor& anchor);

// The anchor in the form of the running document.
void write_anchor(std::ostream& out, const my_string& name);

// A heading of the document: a "header" element under XML output, a line of text in HTML.
struct THeader {
    my_string text;  // the program's own words, not escaped
};
std::ostream& operator<<(std::ostream& out, const THeader& header);

}  // namespace mnd
