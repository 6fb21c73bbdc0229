#include "exports/xml.h"

#include <sstream>

namespace vornel::exports {

pugi::xml_document NewDocument() {
    pugi::xml_document document;
    pugi::xml_node declaration = document.append_child(pugi::node_declaration);
    declaration.append_attribute("version") = "1.0";
    declaration.append_attribute("encoding") = "UTF-8";
    return document;
}

void AddComment(pugi::xml_node parent, std::string text) {
    for (std::size_t at = 0; (at = text.find("--", at)) != std::string::npos;) {
        text.insert(at + 1, 1, ' ');
    }
    parent.append_child(pugi::node_comment).set_value((" " + text + " ").c_str());
}

std::string XmlBytes(const pugi::xml_document& document) {
    std::ostringstream bytes;
    document.save(bytes, " ", pugi::format_indent, pugi::encoding_utf8);
    return bytes.str();
}

}  // namespace vornel::exports
