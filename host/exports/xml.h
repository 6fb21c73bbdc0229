// Making XML with the library's tree.
#pragma once

#include <pugixml.hpp>
#include <string>

namespace vornel::exports {

// An element with a text, below `parent`.
inline pugi::xml_node AddText(pugi::xml_node parent, const char* name, const std::string& text) {
    pugi::xml_node node = parent.append_child(name);
    node.text().set(text.c_str());
    return node;
}

inline void AddAttribute(pugi::xml_node node, const char* name, const std::string& value) {
    node.append_attribute(name).set_value(value.c_str());
}

// A document with the declaration of UTF-8.
pugi::xml_document NewDocument();

// Two hyphens in a row end a comment in the eyes of many a reader: they get a blank between them.
void AddComment(pugi::xml_node parent, std::string text);

std::string XmlBytes(const pugi::xml_document& document);

}  // namespace vornel::exports
