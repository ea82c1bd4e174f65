#pragma once

#include <pugixml.hpp>

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace stowhaven {

// The XML that SugarSync speaks: its replies read as data, and the bodies of its requests
// built as documents, never by pasting text, so that a name or a password can't change
// their shape.
namespace SugarSyncXml {

constexpr std::size_t kLongest = 4 * 1024 * 1024;
constexpr unsigned kDeepest = 32;

// The reply's document; false, with ERROR, for a body that is longer than kLongest, is no
// XML, declares a document type (entities stay out) or nests deeper than kDeepest.
bool parse(std::string_view body, pugi::xml_document& document, std::string& error);

// The children of PARENT named NAME, in order: a lone one as much as many.
std::vector<pugi::xml_node> elements(const pugi::xml_node& parent, const char* name);
// The text of PARENT's child NAME; empty without one.
std::string childText(const pugi::xml_node& parent, const char* name);

// The bodies of the requests, with the XML declaration. Credentials go as CDATA sections;
// names go as the service keeps them, percent-encoded.
std::string authRequest(const std::string& user, const std::string& password, const std::string& accessKey,
                        const std::string& privateKey);
std::string folder(const std::string& name);
std::string file(const std::string& name, const std::string& mediaType);

}  // namespace SugarSyncXml

}  // namespace stowhaven
