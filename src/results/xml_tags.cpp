#include "results/xml_tags.h"

#include <string>
#include <string_view>

#include "foundation/escape.h"

namespace mnd {

bool xmlOutput = false;
bool htmlOutput = true;

my_string TXmlTag::time("not set yet");

const TXmlTag MndXmlTags::rootTag("Mendrake");
const TXmlTag MndXmlTags::refTag("reference");
const TXmlTag MndXmlTags::dataTag("data");
const TXmlTag MndXmlTags::headerTag("header");

namespace {

// Bytes of an attribute value that are shown. Longer ones are cut, so that the tag stays
// below the longest text of a `my_string`, which would drop it whole.
constexpr std::size_t kMaxAttributeValue = 10000;

std::string attribute_text(const TXmlTag& tag) {
    if (tag.attribute_name.is_null() || tag.attribute_value.is_null()) return {};
    const std::string_view value = tag.attribute_value.view().substr(0, kMaxAttributeValue);
    return std::string(" ") + tag.attribute_name.c_str() + "=\"" + escape_attribute(value) + "\"";
}

}  // namespace

my_string TXmlTag::write(const TXmlTag& tag) {
    return my_string("<") + tag.name + ">\n";
}

my_string TXmlTag::end(const TXmlTag& tag) {
    return my_string("</") + tag.name + ">\n";
}

my_string TXmlTag::open(const TXmlTag& tag) {
    return my_string("</data> <") + tag.name + attribute_text(tag).c_str() + " time=\"" + time + "\">\n";
}

my_string TXmlTag::close(const TXmlTag& tag) {
    return my_string("</") + tag.name + "> <data>\n";
}

void open_table(std::ostream& out, const TXmlTag& tag) {
    if (xmlOutput) out << TXmlTag::open(tag);
}

void close_table(std::ostream& out, const TXmlTag& tag) {
    if (xmlOutput) out << TXmlTag::close(tag);
}

std::ostream& operator<<(std::ostream& out, const html_anchor& anchor) {
    return out << "<A NAME=\"" << escape_attribute(anchor.name.view()) << "\"></A>" << '\n';
}

std::ostream& operator<<(std::ostream& out, const xml_anchor& anchor) {
    return out << TXmlTag::end(MndXmlTags::dataTag) << '\n'
               << " <A NAME=\"" << escape_attribute(anchor.name.view()) << "\"></A> " << '\n'
               << TXmlTag::write(MndXmlTags::dataTag) << '\n';
}

void write_anchor(std::ostream& out, const my_string& name) {
    if (xmlOutput) {
        out << xml_anchor{name};
    } else {
        out << html_anchor{name};
    }
}

std::ostream& operator<<(std::ostream& out, const THeader& header) {
    if (!xmlOutput) return out << '\n' << header.text << '\n';
    return out << '\n'
               << TXmlTag::end(MndXmlTags::dataTag) << "\n<header>\n"
               << header.text << "\n</header>" << '\n'
               << TXmlTag::write(MndXmlTags::dataTag) << '\n';
}

}  // namespace mnd
