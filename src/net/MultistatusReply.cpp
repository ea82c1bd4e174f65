#include "net/MultistatusReply.h"

#include "core/Text.h"
#include "net/WebDavPaths.h"
#include "platform/FileNames.h"

#include <pugixml.hpp>

#include <charconv>

namespace stowhaven::MultistatusReply {

namespace {

constexpr std::string_view kDav = "DAV:";

// Whether the elements of TEXT nest deeper than kDeepestNesting, counted without parsing:
// every start tag that doesn't close itself opens a level, every end tag closes one. A
// comment or CDATA holding "<" only makes the count larger, never smaller.
bool nestsTooDeep(std::string_view text) {
    int depth = 0;
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] != '<' || at + 1 >= text.size()) continue;
        const char next = text[at + 1];
        if (next == '/') {
            --depth;
            continue;
        }
        if (next == '!' || next == '?') continue;
        char quote = 0;
        std::size_t end = at + 1;
        for (; end < text.size(); ++end) {
            const char c = text[end];
            if (quote != 0) {
                if (c == quote) quote = 0;
            } else if (c == '"' || c == '\'') {
                quote = c;
            } else if (c == '>') {
                break;
            }
        }
        if (end >= text.size() || text[end - 1] != '/') {
            if (++depth > kDeepestNesting) return true;
        }
        at = end;
    }
    return false;
}

std::string_view localName(const pugi::xml_node& node) {
    const std::string_view name = node.name();
    const auto colon = name.find(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

// The namespace URI of NODE's name, from the nearest declaration of its prefix.
std::string_view namespaceOf(const pugi::xml_node& node) {
    const std::string_view name = node.name();
    const auto colon = name.find(':');
    const std::string declaration =
        colon == std::string_view::npos ? "xmlns" : "xmlns:" + std::string(name.substr(0, colon));
    for (auto scope = node; scope; scope = scope.parent()) {
        if (const auto attribute = scope.attribute(declaration.c_str())) return attribute.value();
    }
    return "";
}

bool isDav(const pugi::xml_node& node, std::string_view local) {
    return node.type() == pugi::node_element && localName(node) == local && namespaceOf(node) == kDav;
}

pugi::xml_node davChild(const pugi::xml_node& parent, std::string_view local) {
    for (const auto& child : parent.children()) {
        if (isDav(child, local)) return child;
    }
    return {};
}

std::string_view trimmed(std::string_view text) {
    const auto first = text.find_first_not_of(" \t\r\n");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

// The path of an href, which may be a whole URL.
std::string_view pathOf(std::string_view href) {
    const auto scheme = href.find("://");
    if (scheme == std::string_view::npos || href.find('/') < scheme) return href;
    const auto path = href.find('/', scheme + 3);
    return path == std::string_view::npos ? "/" : href.substr(path);
}

// Reads one response into ENTRY and its decoded NAMES; false with PROBLEM.
bool readResponse(const pugi::xml_node& response, WebDavEntry& entry, std::vector<std::string>& names,
                  std::string& problem) {
    const std::string href(trimmed(davChild(response, "href").child_value()));
    if (href.empty()) {
        problem = "an entry of the reply has no href";
        return false;
    }
    for (const auto& raw : WebDavPaths::names(std::string(pathOf(href)))) {
        const auto name = textutil::percentDecoded(raw);
        if (!name) {
            problem = "an href of the reply has a broken escape";
            return false;
        }
        names.push_back(*name);
    }
    for (const auto& propstat : response.children()) {
        if (!isDav(propstat, "propstat")) continue;
        const std::string_view status = davChild(propstat, "status").child_value();
        if (!status.empty() && status.find(" 200") == std::string_view::npos) continue;
        const auto prop = davChild(propstat, "prop");
        if (davChild(davChild(prop, "resourcetype"), "collection")) entry.isDirectory = true;
        const std::string_view length = trimmed(davChild(prop, "getcontentlength").child_value());
        if (length.empty()) continue;
        const auto [end, error] = std::from_chars(length.data(), length.data() + length.size(), entry.size);
        if (error != std::errc() || end != length.data() + length.size() || entry.size < 0) {
            problem = "an entry of the reply has a size that is no count of bytes";
            return false;
        }
    }
    return true;
}

}  // namespace

const std::string& propertyRequest() {
    static const std::string body =
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<D:propfind xmlns:D=\"DAV:\"><D:prop>"
        "<D:resourcetype/><D:getlastmodified/><size xmlns=\"http://owncloud.org/ns\"/><D:creationdate/>"
        "<id xmlns=\"http://owncloud.org/ns\"/><D:getcontentlength/><D:displayname/><D:quota-available-bytes/>"
        "<D:getetag/><permissions xmlns=\"http://owncloud.org/ns\"/><D:quota-used-bytes/><D:getcontenttype/>"
        "</D:prop></D:propfind>\n";
    return body;
}

std::optional<Multistatus> parse(std::string_view reply, const std::string& listedPath, std::string& problem) {
    if (reply.size() > kLargestReply) {
        problem = "the reply is larger than 16 MiB";
        return std::nullopt;
    }
    if (nestsTooDeep(reply)) {
        problem = "the reply nests its elements too deep";
        return std::nullopt;
    }
    pugi::xml_document document;
    if (!document.load_buffer(reply.data(), reply.size(), pugi::parse_default)) {
        problem = "the reply is not XML";
        return std::nullopt;
    }
    const auto root = document.document_element();
    if (!isDav(root, "multistatus")) {
        problem = "the reply is not a multistatus";
        return std::nullopt;
    }
    const auto listed = WebDavPaths::names(listedPath);
    Multistatus result;
    for (const auto& response : root.children()) {
        if (!isDav(response, "response")) continue;
        WebDavEntry entry;
        std::vector<std::string> names;
        if (!readResponse(response, entry, names, problem)) return std::nullopt;
        if (names == listed) {
            entry.name = listed.empty() ? "" : listed.back();
            result.listed = entry;
            continue;
        }
        const bool underListed =
            names.size() == listed.size() + 1 && std::equal(listed.begin(), listed.end(), names.begin());
        if (!underListed || !isOneFileName(names.back())) {
            problem = "the reply names an entry that is not one clean name in " + listedPath;
            return std::nullopt;
        }
        entry.name = names.back();
        result.entries.push_back(std::move(entry));
    }
    return result;
}

}  // namespace stowhaven::MultistatusReply
