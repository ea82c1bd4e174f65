// SugarSync replies as the service writes them: an authorisation, the user record, a
// folder's contents with one entry and with many, and hostile ones.

#include "seeds/Seeds.h"

namespace stowhaven::fuzz {

namespace {

constexpr std::string_view kAuthorization =
    R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>)"
    "\n<authorization><expiration>2016-01-02T03:04:05.678-08:00</expiration>"
    "<user>https://api.sugarsync.com/user/566494</user></authorization>";

constexpr std::string_view kUser =
    R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>)"
    "\n<user><username>jo@example.com</username><nickname>jo</nickname><quota><limit>5368709120</limit>"
    "<usage>52428800</usage></quota><workspaces>https://api.sugarsync.com/user/566494/workspaces/contents"
    "</workspaces><magicBriefcase>https://api.sugarsync.com/folder/:sc:566494:2</magicBriefcase>"
    "<maximumPublicLinkSize>25</maximumPublicLinkSize></user>";

// A lone folder: the one-element shape.
constexpr std::string_view kOneFolder =
    R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>)"
    "\n<collectionContents start=\"0\" hasMore=\"false\" end=\"1\"><collection type=\"folder\">"
    "<displayName>Stowhaven</displayName><ref>https://api.sugarsync.com/folder/:sc:566494:6552993_1001</ref>"
    "<contents>https://api.sugarsync.com/folder/:sc:566494:6552993_1001/contents</contents></collection>"
    "</collectionContents>";

constexpr std::string_view kContents =
    R"(<?xml version="1.0" encoding="UTF-8" standalone="yes"?>)"
    "\n<collectionContents start=\"0\" hasMore=\"false\" end=\"4\"><collection type=\"folder\">"
    "<displayName>2026-11-24_10~00~00</displayName><ref>https://api.sugarsync.com/folder/:sc:566494:6552993_1003"
    "</ref></collection><collection type=\"syncFolder\"><displayName>Magic%20Briefcase</displayName>"
    "<ref>https://api.sugarsync.com/folder/:sc:566494:2</ref></collection><file>"
    "<displayName>2026-11-24_10~00~00.stowhvn</displayName><ref>https://api.sugarsync.com/file/:sc:566494:6552993_1004"
    "</ref><size>2048</size><lastModified>2026-11-24T02:00:00.000-08:00</lastModified><mediaType>"
    "application/x-compressed</mediaType><presentOnServer>true</presentOnServer><fileData>"
    "https://api.sugarsync.com/file/:sc:566494:6552993_1004/data</fileData></file><file><displayName>iPhone%20of%20Jo"
    "</displayName><ref>https://api.sugarsync.com/file/:sc:566494:6552993_1005</ref><presentOnServer>false"
    "</presentOnServer><fileData>https://api.sugarsync.com/file/:sc:566494:6552993_1005/data</fileData></file>"
    "</collectionContents>";

constexpr std::string_view kHostile =
    "<?xml version=\"1.0\"?>\n<!DOCTYPE c [<!ENTITY x \"..\">]><collectionContents><collection type=\"folder\">"
    "<displayName>%2E%2E</displayName><ref>file:///etc</ref></collection><file><displayName>a%2Fb</displayName>"
    "<ref>http://evil.example/x</ref><presentOnServer>true</presentOnServer><fileData>file:///etc/passwd"
    "</fileData></file><file><displayName>%24(touch%20pwned)</displayName><presentOnServer>true</presentOnServer>"
    "</file><file><displayName>bad%zzescape</displayName></file></collectionContents>";

constexpr std::string_view kErrorPage =
    "<html><head><title>Status page</title></head><body><h3>Not Found</h3>"
    "<p>The server has not found anything matching the request URI</p></body></html>";

}  // namespace

void writeSugarSyncSeeds(const std::filesystem::path& folder) {
    const SeedCorpus corpus(folder, "sugarsync_reply");
    corpus.add("authorization.xml", kAuthorization);
    corpus.add("user.xml", kUser);
    corpus.add("one-folder.xml", kOneFolder);
    corpus.add("contents.xml", kContents);
    corpus.add("hostile.xml", kHostile);
    corpus.add("error-page.html", kErrorPage);
}

}  // namespace stowhaven::fuzz
