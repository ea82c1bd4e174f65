#include "storage/sugarsync/SugarSyncXml.h"

#include "core/Text.h"

#include <sstream>

namespace stowhaven::SugarSyncXml {

namespace {

// The deepest element of the document; the walk is pugixml's, which doesn't recurse.
unsigned depthOf(pugi::xml_document& document) {
    struct Walker final : pugi::xml_tree_walker {
        unsigned deepest = 0;
        bool for_each(pugi::xml_node&) override {
            deepest = std::max(deepest, static_cast<unsigned>(depth()) + 1);
            return deepest <= kDeepest;
        }
    } walker;
    document.traverse(walker);
    return walker.deepest;
}

pugi::xml_document withDeclaration() {
    pugi::xml_document document;
    auto declaration = document.append_child(pugi::node_declaration);
    declaration.append_attribute("version") = "1.0";
    declaration.append_attribute("encoding") = "UTF-8";
    return document;
}

void addText(pugi::xml_node& parent, const char* name, const std::string& text) {
    parent.append_child(name).append_child(pugi::node_pcdata).set_value(text.c_str());
}

// pugixml splits a "]]>" of the text over two sections, so no value can close one early.
void addCdata(pugi::xml_node& parent, const char* name, const std::string& text) {
    parent.append_child(name).append_child(pugi::node_cdata).set_value(text.c_str());
}

std::string saved(const pugi::xml_document& document) {
    std::ostringstream out;
    document.save(out, "", pugi::format_raw, pugi::encoding_utf8);
    return out.str();
}

}  // namespace

bool parse(std::string_view body, pugi::xml_document& document, std::string& error) {
    if (body.size() > kLongest) {
        error = "The reply is larger than " + std::to_string(kLongest) + " bytes";
        return false;
    }
    const auto result = document.load_buffer(body.data(), body.size(), pugi::parse_default | pugi::parse_doctype,
                                             pugi::encoding_utf8);
    if (!result) {
        error = std::string("The reply is no XML: ") + result.description();
        return false;
    }
    for (const auto& node : document.children()) {
        if (node.type() == pugi::node_doctype) {
            error = "The reply declares a document type";
            return false;
        }
    }
    if (depthOf(document) > kDeepest) {
        error = "The reply is nested too deep";
        return false;
    }
    if (!document.document_element()) {
        error = "The reply is no XML: it holds no element";
        return false;
    }
    return true;
}

std::vector<pugi::xml_node> elements(const pugi::xml_node& parent, const char* name) {
    std::vector<pugi::xml_node> found;
    for (const auto& child : parent.children(name)) {
        if (child.type() == pugi::node_element) found.push_back(child);
    }
    return found;
}

std::string childText(const pugi::xml_node& parent, const char* name) {
    return parent.child(name).text().get();
}

std::string authRequest(const std::string& user, const std::string& password, const std::string& accessKey,
                        const std::string& privateKey) {
    pugi::xml_document document = withDeclaration();
    auto request = document.append_child("authRequest");
    addCdata(request, "username", user);
    addCdata(request, "password", password);
    addCdata(request, "accessKeyId", accessKey);
    addCdata(request, "privateAccessKey", privateKey);
    return saved(document);
}

std::string folder(const std::string& name) {
    pugi::xml_document document = withDeclaration();
    auto folder = document.append_child("folder");
    addText(folder, "displayName", textutil::percentEncoded(name));
    return saved(document);
}

std::string file(const std::string& name, const std::string& mediaType) {
    pugi::xml_document document = withDeclaration();
    auto file = document.append_child("file");
    addText(file, "displayName", textutil::percentEncoded(name));
    addText(file, "mediaType", mediaType);
    return saved(document);
}

}  // namespace stowhaven::SugarSyncXml
