// PROPFIND replies as WebDAV shares write them: prefixed "D:" with "lp1:" live properties,
// the ownCloud "d:"/"oc:" style with whole URLs, a depth-0 reply, and a hostile one.

#include "seeds/Seeds.h"

namespace stowhaven::fuzz {

namespace {

constexpr std::string_view kPrefixed =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
    "<D:multistatus xmlns:D=\"DAV:\" xmlns:ns0=\"DAV:\">\n"
    "<D:response xmlns:lp1=\"DAV:\" xmlns:lp2=\"http://apache.org/dav/props/\">\n"
    "<D:href>/owncloud/remote.php/webdav/Stowhaven/</D:href>\n"
    "<D:propstat><D:prop><lp1:resourcetype><D:collection/></lp1:resourcetype>"
    "<lp1:getlastmodified>Tue, 24 Nov 2026 10:00:00 GMT</lp1:getlastmodified></D:prop>\n"
    "<D:status>HTTP/1.1 200 OK</D:status></D:propstat>\n"
    "<D:propstat><D:prop><ns1:size xmlns:ns1=\"http://owncloud.org/ns\"/><D:getcontentlength/></D:prop>\n"
    "<D:status>HTTP/1.1 404 Not Found</D:status></D:propstat></D:response>\n"
    "<D:response xmlns:lp1=\"DAV:\"><D:href>/owncloud/remote.php/webdav/Stowhaven/Jo%27s%20phone/</D:href>\n"
    "<D:propstat><D:prop><lp1:resourcetype><D:collection/></lp1:resourcetype></D:prop>\n"
    "<D:status>HTTP/1.1 200 OK</D:status></D:propstat></D:response>\n"
    "<D:response xmlns:lp1=\"DAV:\"><D:href>/owncloud/remote.php/webdav/Stowhaven/2026-11-24_10~00~00.stowhvn"
    "</D:href>\n<D:propstat><D:prop><lp1:resourcetype/><lp1:getcontentlength>4096</lp1:getcontentlength>"
    "</D:prop>\n<D:status>HTTP/1.1 200 OK</D:status></D:propstat></D:response>\n"
    "</D:multistatus>\n";

constexpr std::string_view kUnprefixed =
    "<?xml version=\"1.0\"?>\n"
    "<d:multistatus xmlns:d=\"DAV:\" xmlns:s=\"http://sabredav.org/ns\" xmlns:oc=\"http://owncloud.org/ns\">"
    "<d:response><d:href>https://cloud.example.net/owncloud/remote.php/webdav/Stowhaven/</d:href>"
    "<d:propstat><d:prop><d:resourcetype><d:collection/></d:resourcetype><oc:size>4096</oc:size>"
    "<oc:permissions>RDNVCK</oc:permissions></d:prop><d:status>HTTP/1.1 200 OK</d:status></d:propstat>"
    "</d:response><d:response><d:href>https://cloud.example.net/owncloud/remote.php/webdav/Stowhaven/"
    "iPad%20%232/</d:href><d:propstat><d:prop><d:resourcetype><d:collection/></d:resourcetype>"
    "<oc:id>00000042ocabc</oc:id></d:prop><d:status>HTTP/1.1 200 OK</d:status></d:propstat></d:response>"
    "</d:multistatus>";

constexpr std::string_view kDepthZero =
    "<multistatus xmlns=\"DAV:\"><response><href>/owncloud/remote.php/webdav/Stowhaven</href>"
    "<propstat><prop><resourcetype><collection/></resourcetype></prop>"
    "<status>HTTP/1.1 200 OK</status></propstat></response></multistatus>";

constexpr std::string_view kHostile =
    "<D:multistatus xmlns:D=\"DAV:\"><D:response><D:href>/owncloud/remote.php/webdav/Stowhaven/"
    "..%2F..%2Fetc%2Fpasswd</D:href><D:propstat><D:prop><D:getcontentlength>-1</D:getcontentlength>"
    "</D:prop></D:propstat></D:response><!-- <a><b><c> --><![CDATA[<x>]]></D:multistatus>";

}  // namespace

void writeMultistatusSeeds(const std::filesystem::path& folder) {
    const SeedCorpus corpus(folder, "multistatus");
    corpus.add("prefixed.xml", kPrefixed);
    corpus.add("unprefixed.xml", kUnprefixed);
    corpus.add("depth-zero.xml", kDepthZero);
    corpus.add("hostile.xml", kHostile);
}

}  // namespace stowhaven::fuzz
