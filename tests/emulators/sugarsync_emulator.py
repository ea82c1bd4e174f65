#!/usr/bin/python3
"""An emulator of the SugarSync REST interface (XML bodies) for the tests, on 127.0.0.1.

It serves the API host's paths (/app-authorization, /authorization, /user, /folder/...,
/file/...) on one port, and hands out references (whole URLs on that port) as the service
does. Written from the published pages:

- Refresh token: https://www.sugarsync.com/dev/api/method/create-refresh-token.html and
  http://www1.sugarsync.com/developer/api/refresh-resource/ (POST appAuthorization with
  username, password, application, accessKeyId, privateAccessKey; 201 and the token in
  Location, under /app-authorization/).
- Access token: https://www.sugarsync.com/dev/api/method/create-auth-token.html and
  https://www2.sugarsync.com/developer/api/auth-resource/ (POST tokenAuthRequest with
  accessKeyId, privateAccessKey, refreshToken; 201, the token in Location, body
  authorization with expiration and user; about an hour of life:
  https://www.sugarsync.com/dev/get-auth-token-example.html). The earlier form, authRequest
  with username, password, accessKeyId, privateAccessKey posted to the same address, with the
  same answer: https://metacpan.org/module/SugarSync::API and
  http://search.cpan.org/dist/SugarSync-API/lib/SugarSync/API/Data.pm
- The token is the whole "Authorization" header of every other request:
  https://www2.sugarsync.com/developer/api/method/get-user-info/
- User: https://www1.sugarsync.com/developer/api/user-resource/ (quota with limit and usage,
  magicBriefcase, the other collections); GET /user as the earlier form has it.
- Folders: https://www2.sugarsync.com/developer/api/folder-resource/,
  https://www.sugarsync.com/dev/api/method/get-folder-contents.html (type, start, max with
  500 by default, order; collectionContents with start, hasMore, end),
  https://www2.sugarsync.com/developer/api/method/create-folder/ (POST folder with
  displayName to the containing folder; Content-Type application/xml in UTF-8; 201 and
  Location), https://www2.sugarsync.com/developer/api/method/update-folder-info/ (PUT with
  displayName and parent), https://www2.sugarsync.com/developer/api/method/delete-folder/
  (a folder's DELETE leaves its contents orphaned),
  https://www1.sugarsync.com/developer/api/syncfolders-list-resources/ (Magic Briefcase and
  the other sync folders).
- Files: https://www2.sugarsync.com/developer/api/file-resource/,
  https://www.sugarsync.com/dev/api/method/create-file.html (POST file with displayName and
  mediaType, nothing else), https://www.sugarsync.com/dev/api/method/put-file-data.html (PUT
  to the file's reference + /data, Content-Length or chunked),
  http://www1.sugarsync.com/developer/api/method/get-file-data/ (GET the fileData URL),
  https://www2.sugarsync.com/developer/api/method/delete-file/,
  https://www1.sugarsync.com/developer/api/method/update-file-info/
- Practices (persistent references, XML input in UTF-8):
  https://www.sugarsync.com/dev/best-practices.html

What the client must send:
- Hosts: everything on this one port; references handed out are "http://127.0.0.1:PORT/...".
  Use them as given, never rebuilt: a reference spelt otherwise (percent-encoded) is unknown.
- Login: POST /authorization, Content-Type application/xml (charset, if any, UTF-8),
  Content-Length, body <authRequest> with username, password, accessKeyId, privateAccessKey
  (text or CDATA); or POST /app-authorization with <appAuthorization> (the same and
  application) for a refresh token, then <tokenAuthRequest> with accessKeyId,
  privateAccessKey, refreshToken to /authorization. 201 with Location (the token) and
  <authorization><expiration>2016-01-02T03:04:05.678-08:00</expiration><user>URL</user>.
  Wrong credentials or keys: 401. The token lives --token-seconds (3600 by default).
- Every other request: header "Authorization: <the token URL>", nothing else in it; 401
  without it or when it has expired.
- GET /user (or the user's URL): <user> with quota/limit, quota/usage, magicBriefcase.
- GET <folder ref>/contents[?type=folder|file&start=N&max=N&order=name|last_modified|size|
  extension]: <collectionContents start hasMore end> of <collection type="folder"> (displayName,
  ref, contents) then <file> (displayName, ref, size, lastModified, mediaType,
  presentOnServer, fileData).
- POST <folder ref> with <folder><displayName>NAME</displayName></folder>, or <file> with
  displayName and mediaType: 201, Location the new reference. displayName is stored as sent.
- PUT <file ref>/data with the bytes (Content-Length or chunked): 204; 413 over the quota.
- GET <fileData>: 200 with the bytes (Range gives 206, or 416); 404 before any data.
- PUT <folder or file ref> with <folder>/<file> and displayName or parent: 204.
- DELETE <folder or file ref>: 204. A sync folder can't be renamed or deleted (403).
- Refusals: 400 for a body that is not the expected XML (a DTD included), 404 for an unknown
  reference, 405 for a method the resource doesn't take, 406 for an Accept header without XML,
  411 without a length (XML bodies can't come chunked), 413 for an XML body over 64 KiB or
  data over the quota, 415 for a body that is not application/xml in UTF-8; bodies are short
  HTML pages, as the service's server writes them.

Started as `sugarsync_emulator.py --folder DIR --port 0 --access-key K --private-key P --user
NAME --password PW [--application ID] [--token-seconds S] [--quota BYTES]`. Prints
"LISTENING <port>" once it listens, then "<METHOD> <path>" as each request arrives.

Test controls on the same port (never printed):
- POST /_emulator/fault?name=N&count=C[&path=PREFIX]: the next C requests (whose path starts
  with PREFIX) get fault N; C=0 clears it. See FAULTS.
- POST /_emulator/token: a live access token as after a login, in JSON (authorization,
  expiration, user, refreshToken).
- POST /_emulator/expire_access_token: every access token issued so far expires now.
- POST /_emulator/folder?path=/Magic%20Briefcase/A/B: makes the folders missing (the first name
  is a sync folder's); answers the ref.
- POST /_emulator/file?path=/Magic%20Briefcase/A/name: makes the file (body: its bytes).
- GET /_emulator/tree: every item by path (null for an orphan), in JSON.
"""

import json
import re
import secrets
import threading
import time
import urllib.parse
import xml.etree.ElementTree as ElementTree
from xml.sax.saxutils import escape

import emulator_support
from emulator_support import Faults, ServiceHandler, arguments, random_text, serve

from sugarsync_account import MAGIC_BRIEFCASE, SYNC_FOLDERS, USER_ID, Account, ServiceError, not_found, timestamp

FAULTS = {
    "expire_token": "401, and the request's token is dead from then on",
    "status_429": "429 with Retry-After: 0",
    "status_503": "503 with Retry-After: 0",
    "drop_mid_body": "the connection closed half way through the request's body or the reply's",
    "malformed_xml": "a success whose XML is cut in the middle",
    "huge_xml": "a success whose XML is over 8 MiB",
    "deep_xml": "a success whose XML nests 10000 deep",
    "hostile_listing": "a folder listing led by names '..', 'a/b', '$(touch pwned)' (plain and "
                       "percent-encoded) and references outside the emulator",
    "refuse_grant": "the login answers 401 as for a wrong password",
    "bad_expiration": "the login's reply carries an expiration that is no date",
}
DEFAULT_TOKEN_SECONDS = 3600
DEFAULT_QUOTA = 5 * 1024 ** 3
LISTING_DEFAULT_MAX = 500
SMALL_BODY_LIMIT = 64 * 1024
HUGE_BYTES = 8 * 1024 * 1024
DEEP_LEVELS = 10000
HOSTILE_BYTES = b"hostile\n"
ORDERS = {"name": lambda entry: entry[1]["name"], "last_modified": lambda entry: entry[1].get("modified", ""),
          "size": lambda entry: entry[1].get("size", 0),
          "extension": lambda entry: entry[1]["name"].rpartition(".")[2] if "." in entry[1]["name"] else ""}


class Reply(emulator_support.Reply):
    @classmethod
    def xml(cls, status, element_text, headers=()):
        body = '<?xml version="1.0" encoding="UTF-8" standalone="yes"?>\n' + element_text
        return cls(status, body.encode(), "application/xml; charset=UTF-8", headers)

    @classmethod
    def error(cls, refusal):
        page = (f"<html><head><title>Status page</title></head><body><h3>{escape(refusal.reason)}</h3>"
                f"<p>The server has not found anything matching the request URI</p></body></html>"
                if refusal.status == 404 else
                f"<html><head><title>Status page</title></head><body><h3>{escape(refusal.reason)}</h3></body></html>")
        return cls(refusal.status, page.encode(), "text/html; charset=UTF-8", refusal.headers)


def element(name, children, attributes=""):
    inner = "".join(f"<{key}>{escape(str(value))}</{key}>" for key, value in children)
    return f"<{name}{attributes}>{inner}</{name}>"


def bad_request():
    return ServiceError(400, "Bad Request")


def parse_body(body, content_type, root_names):
    """The root and its children's texts of an XML request body, refused as the service refuses it."""
    media, _, parameters = (content_type or "").partition(";")
    charset = re.search(r"charset\s*=\s*\"?([^\";\s]+)", parameters, re.IGNORECASE)
    if media.strip().lower() != "application/xml" or (charset and charset.group(1).lower() not in ("utf-8", "utf8")):
        raise ServiceError(415, "Unsupported Media Type")
    if b"<!DOCTYPE" in body.upper() or b"<!ENTITY" in body.upper():
        raise bad_request()
    try:
        root = ElementTree.fromstring(body.decode("utf-8"))
    except (ElementTree.ParseError, UnicodeDecodeError):
        raise bad_request() from None
    if root.tag not in root_names:
        raise bad_request()
    fields = {}
    for child in root:
        if len(child) or child.tag in fields:
            raise bad_request()
        fields[child.tag] = child.text or ""
    return root.tag, fields


class Grants:
    """Refresh tokens and access tokens, in memory."""

    def __init__(self, options, base):
        self.options, self.base = options, base
        self.refresh = set()
        self.access = {}

    def keys_match(self, fields):
        return (fields.get("accessKeyId") == self.options.access_key
                and fields.get("privateAccessKey") == self.options.private_key)

    def user_matches(self, fields):
        return fields.get("username") == self.options.user and fields.get("password") == self.options.password

    def new_refresh(self):
        token = f"{self.base}/app-authorization/A{secrets.token_hex(16)}"
        self.refresh.add(token)
        return token

    def new_access(self):
        token = f"{self.base}/authorization/{random_text(40)}"
        expiry = time.time() + self.options.token_seconds
        self.access[token] = expiry
        return token, expiry

    def check(self, header):
        expiry = self.access.get(header or "")
        if expiry is None or time.time() >= expiry:
            raise ServiceError(401, "Unauthorized")
        return header

    def expire(self, token=None):
        expired = [token] if token is not None else list(self.access)
        for each in expired:
            self.access[each] = 0
        return len(expired)


def corrupted(reply, faults, path):
    """An XML success as the XML switches make it."""
    if not (reply.content_type or "").startswith("application/xml") or not 200 <= reply.status < 300:
        return reply
    if faults.take("malformed_xml", path):
        reply.body = reply.body[: len(reply.body) // 2] + b"</<&"
    elif faults.take("huge_xml", path):
        closing = reply.body.rindex(b"</")
        reply.body = reply.body[:closing] + b"<padding>" + b"x" * HUGE_BYTES + b"</padding>" + reply.body[closing:]
    elif faults.take("deep_xml", path):
        reply.body = b'<?xml version="1.0"?>\n' + b"<a>" * DEEP_LEVELS + b"</a>" * DEEP_LEVELS
    return reply


class Emulator:
    def __init__(self, options):
        self.options = options
        self.account = Account(options.folder, options.quota)
        self.faults = Faults()
        self.lock = threading.Lock()
        self.base = ""
        self.grants = None

    def listen_on(self, port):
        self.base = f"http://127.0.0.1:{port}"
        self.grants = Grants(self.options, self.base)

    def ref(self, kind, item_id):
        return f"{self.base}/{kind}/{item_id}"

    # Logins.

    def app_authorization(self, request, _):
        _, fields = parse_body(request.body, request.content_type, ("appAuthorization",))
        if any(name not in fields for name in ("username", "password", "application", "accessKeyId",
                                                "privateAccessKey")):
            raise bad_request()
        if (not self.grants.keys_match(fields) or not self.grants.user_matches(fields)
                or fields["application"] != self.options.application
                or self.faults.take("refuse_grant", request.route_path)):
            raise ServiceError(401, "Unauthorized")
        return Reply(201, headers=[("Location", self.grants.new_refresh())])

    def authorization(self, request, _):
        kind, fields = parse_body(request.body, request.content_type, ("authRequest", "tokenAuthRequest"))
        needed = (("username", "password") if kind == "authRequest" else ("refreshToken",))
        if any(name not in fields for name in needed + ("accessKeyId", "privateAccessKey")):
            raise bad_request()
        granted = (self.grants.user_matches(fields) if kind == "authRequest"
                   else fields["refreshToken"] in self.grants.refresh)
        if not self.grants.keys_match(fields) or not granted or self.faults.take("refuse_grant", request.route_path):
            raise ServiceError(401, "Unauthorized")
        token, expiry = self.grants.new_access()
        expiration = "soon" if self.faults.take("bad_expiration", request.route_path) else timestamp(expiry)
        return Reply.xml(201, element("authorization", [("expiration", expiration),
                                                        ("user", f"{self.base}/user/{USER_ID}")]),
                         [("Location", token)])

    # Resources.

    def user(self, _request, _match):
        account = self.account
        quota = f"<quota><limit>{account.limit}</limit><usage>{account.usage()}</usage></quota>"
        user_url = f"{self.base}/user/{USER_ID}"
        links = [("workspaces", f"{user_url}/workspaces/contents"), ("syncfolders", f"{user_url}/folders/contents"),
                 ("deleted", self.ref("folder", f":sc:{USER_ID}:9")),
                 ("magicBriefcase", self.ref("folder", MAGIC_BRIEFCASE)),
                 ("webArchive", self.ref("folder", f":sc:{USER_ID}:1")),
                 ("mobilePhotos", self.ref("folder", f":sc:{USER_ID}:3")),
                 ("albums", f"{user_url}/albums/contents"),
                 ("recentActivities", f"{user_url}/recentActivities/contents"),
                 ("receivedShares", f"{user_url}/receivedShares/contents"),
                 ("publicLinks", f"{user_url}/publicLinks/contents"), ("maximumPublicLinkSize", "25")]
        names = (f"<username>{escape(self.options.user)}</username>"
                 f"<nickname>{escape(self.options.user.split('@')[0])}</nickname>")
        return Reply.xml(200, f"<user>{names}{quota}"
                              + "".join(f"<{key}>{escape(value)}</{key}>" for key, value in links) + "</user>")

    def sync_folders(self, _request, _match):
        entries = "".join(
            f'<collection type="syncFolder"><displayName>{escape(name)}</displayName>'
            f"<ref>{self.ref('folder', f':sc:{USER_ID}:{number}')}</ref>"
            f"<contents>{self.ref('folder', f':sc:{USER_ID}:{number}')}/contents</contents></collection>"
            for number, name in SYNC_FOLDERS.items())
        return Reply.xml(200, f'<collectionContents start="0" hasMore="false" end="{len(SYNC_FOLDERS)}">'
                              f"{entries}</collectionContents>")

    def folder_info(self, _request, match):
        item = self.account.get(match.group(1), "folder")
        ref = self.ref("folder", match.group(1))
        parent = self.ref("folder", item["parent"]) if item["parent"] else f"{self.base}/user/{USER_ID}"
        return Reply.xml(200, element("folder", [
            ("displayName", item["name"]), ("dsid", "/" + match.group(1).strip(":").replace(":", "/")),
            ("timeCreated", item["created"]), ("parent", parent), ("collections", f"{ref}/contents?type=folder"),
            ("files", f"{ref}/contents?type=file"), ("contents", f"{ref}/contents")]))

    def folder_contents(self, request, match):
        folder_id = match.group(1)
        self.account.get(folder_id, "folder")
        query = request.query
        kind = query.get("type")
        start, most = whole(query, "start", 0, 0), whole(query, "max", LISTING_DEFAULT_MAX, 1)
        if kind not in (None, "folder", "file") or query.get("order", "name") not in ORDERS:
            raise bad_request()
        children = self.account.children(folder_id)
        if "order" in query:
            children.sort(key=ORDERS[query["order"]])
        ordered = [child for child in children if child[1]["kind"] == "folder"] + \
                  [child for child in children if child[1]["kind"] == "file"]
        entries = [self.entry(item_id, item) for item_id, item in ordered if kind in (None, item["kind"])]
        if self.faults.take("hostile_listing", request.route_path):
            entries = self.hostile_entries() + entries
        shown = entries[start:start + most]
        more = "true" if start + most < len(entries) else "false"
        return Reply.xml(200, f'<collectionContents start="{start}" hasMore="{more}" end="{start + len(shown)}">'
                              + "".join(shown) + "</collectionContents>")

    def entry(self, item_id, item):
        if item["kind"] == "folder":
            ref = self.ref("folder", item_id)
            return element("collection", [("displayName", item["name"]), ("ref", ref), ("contents", f"{ref}/contents")],
                           ' type="folder"')
        ref = self.ref("file", item_id)
        return element("file", [("displayName", item["name"]), ("ref", ref), ("size", item["size"]),
                                ("lastModified", item["modified"]), ("mediaType", item["mediaType"]),
                                ("presentOnServer", "true" if item["present"] else "false"),
                                ("fileData", f"{ref}/data")])

    def hostile_entries(self):
        folder = self.ref("folder", f":sc:{USER_ID}:9000000001")
        entries = [element("collection", [("displayName", name), ("ref", folder), ("contents", f"{folder}/contents")],
                           ' type="folder"') for name in ("..", "%2E%2E")]
        names = ("..", "a/b", "$(touch pwned)", "a%2Fb", "%24(touch%20pwned)", "%2E%2E%2F%2E%2E")
        for number, name in enumerate(names):
            ref = self.ref("file", f":sc:{USER_ID}:9000000{number + 10}")
            entries.append(element("file", [("displayName", name), ("ref", ref), ("size", len(HOSTILE_BYTES)),
                                            ("lastModified", timestamp()), ("mediaType", "application/x-compressed"),
                                            ("presentOnServer", "true"), ("fileData", f"{ref}/data")]))
        entries.append(element("file", [("displayName", "passwd"), ("ref", "file:///etc/passwd"), ("size", 1),
                                        ("lastModified", timestamp()), ("mediaType", "text/plain"),
                                        ("presentOnServer", "true"), ("fileData", "file:///etc/passwd")]))
        return entries

    def create_in_folder(self, request, match):
        kind, fields = parse_body(request.body, request.content_type, ("folder", "file"))
        allowed = {"displayName"} if kind == "folder" else {"displayName", "mediaType"}
        if set(fields) != allowed or not fields["displayName"] or (kind == "file" and not fields["mediaType"]):
            raise bad_request()
        item_id = self.account.create(match.group(1), kind, fields["displayName"], fields.get("mediaType"))
        return Reply(201, headers=[("Location", self.ref(kind, item_id))])

    def update(self, request, match, kind):
        _, fields = parse_body(request.body, request.content_type, (kind,))
        allowed = {"displayName", "parent"} | ({"mediaType"} if kind == "file" else set())
        if not fields or not set(fields) <= allowed or fields.get("displayName", "x") == "":
            raise bad_request()
        parent = None
        if "parent" in fields:
            prefix = f"{self.base}/folder/"
            if not fields["parent"].startswith(prefix):
                raise bad_request()
            parent = fields["parent"][len(prefix):]
        self.account.update(match.group(1), kind, fields.get("displayName"), parent, fields.get("mediaType"))
        return Reply(204)

    def folder_update(self, request, match):
        return self.update(request, match, "folder")

    def file_update(self, request, match):
        return self.update(request, match, "file")

    def folder_delete(self, _request, match):
        self.account.delete(match.group(1), "folder")
        return Reply(204)

    def file_delete(self, _request, match):
        self.account.delete(match.group(1), "file")
        return Reply(204)

    def file_info(self, _request, match):
        item = self.account.get(match.group(1), "file")
        ref = self.ref("file", match.group(1))
        return Reply.xml(200, element("file", [
            ("displayName", item["name"]), ("dsid", "/" + match.group(1).strip(":").replace(":", "/")),
            ("timeCreated", item["created"]), ("parent", self.ref("folder", item["parent"])), ("size", item["size"]),
            ("lastModified", item["modified"]), ("mediaType", item["mediaType"]),
            ("presentOnServer", "true" if item["present"] else "false"), ("fileData", f"{ref}/data"),
            ("versions", f"{ref}/version")]))

    def file_data_put(self, request, match):
        self.account.store(match.group(1), request.body)
        return Reply(204)

    def file_data_get(self, request, match):
        if match.group(1).startswith(f":sc:{USER_ID}:9000000"):
            data, media = HOSTILE_BYTES, "application/x-compressed"
        else:
            data, media = self.account.read(match.group(1)), self.account.get(match.group(1), "file")["mediaType"]
        wanted = request.headers.get("Range")
        if wanted is None:
            return Reply(200, data, media, [("Accept-Ranges", "bytes")])
        found = re.fullmatch(r"bytes=(\d*)-(\d*)", wanted.strip())
        if not found or found.groups() == ("", ""):
            raise ServiceError(416, "Requested Range Not Satisfiable", [("Content-Range", f"bytes */{len(data)}")])
        first, last = found.groups()
        if first == "":
            first, last = max(0, len(data) - int(last)), len(data) - 1
        else:
            first, last = int(first), min(int(last), len(data) - 1) if last else len(data) - 1
        if first >= len(data) or first > last:
            raise ServiceError(416, "Requested Range Not Satisfiable", [("Content-Range", f"bytes */{len(data)}")])
        return Reply(206, data[first:last + 1], media, [("Content-Range", f"bytes {first}-{last}/{len(data)}")])

    def hostile_folder(self, request, _match):
        return Reply.xml(200, '<collectionContents start="0" hasMore="false" end="0"></collectionContents>')

    # The tests' control paths.

    def control(self, request):
        query = request.query
        if request.command == "POST" and request.route_path == "/_emulator/fault":
            if query.get("name") not in FAULTS or not query.get("count", "1").isdigit():
                return Reply(400, b'{"error": "unknown switch or count"}', "application/json")
            self.faults.set(query["name"], int(query.get("count", "1")), query.get("path"))
            return json_reply({"name": query["name"], "count": int(query.get("count", "1"))})
        if request.command == "POST" and request.route_path == "/_emulator/token":
            token, expiry = self.grants.new_access()
            return json_reply({"authorization": token, "expiration": timestamp(expiry),
                               "user": f"{self.base}/user/{USER_ID}", "refreshToken": self.grants.new_refresh()})
        if request.command == "POST" and request.route_path == "/_emulator/expire_access_token":
            return json_reply({"expired": self.grants.expire()})
        if request.command == "GET" and request.route_path == "/_emulator/tree":
            return json_reply({"entries": self.account.tree()})
        if request.command == "POST" and request.route_path in ("/_emulator/folder", "/_emulator/file"):
            names = [name for name in query.get("path", "").split("/") if name]
            making_file = request.route_path == "/_emulator/file"
            if len(names) < (2 if making_file else 1):
                return Reply(400, b'{"error": "no path"}', "application/json")
            item_id = self.account.make_path(names, request.body if making_file else None)
            return json_reply({"ref": self.ref("file" if making_file else "folder", item_id)})
        return Reply(404, b'{"error": "no such control path"}', "application/json")


def json_reply(value):
    return Reply(200, json.dumps(value).encode(), "application/json")


def whole(query, name, default, least):
    text = query.get(name)
    if text is None:
        return default
    if not text.isdigit() or int(text) < least:
        raise bad_request()
    return int(text)


ITEM = r"(:sc:\d+:[0-9_]+)"
# Method, raw path (never decoded: references are used as handed out), endpoint, whether it takes a token.
ROUTES = [
    ("POST", r"/app-authorization", "app_authorization", False),
    ("POST", r"/authorization", "authorization", False),
    ("GET", r"/user", "user", True),
    ("GET", rf"/user/{USER_ID}", "user", True),
    ("GET", rf"/user/{USER_ID}/folders/contents", "sync_folders", True),
    ("GET", r"/folder/(:sc:\d+:9000000001)/contents", "hostile_folder", True),
    ("GET", rf"/folder/{ITEM}/contents", "folder_contents", True),
    ("GET", rf"/folder/{ITEM}", "folder_info", True),
    ("POST", rf"/folder/{ITEM}", "create_in_folder", True),
    ("PUT", rf"/folder/{ITEM}", "folder_update", True),
    ("DELETE", rf"/folder/{ITEM}", "folder_delete", True),
    ("GET", rf"/file/{ITEM}/data", "file_data_get", True),
    ("PUT", rf"/file/{ITEM}/data", "file_data_put", True),
    ("GET", rf"/file/{ITEM}", "file_info", True),
    ("PUT", rf"/file/{ITEM}", "file_update", True),
    ("DELETE", rf"/file/{ITEM}", "file_delete", True),
]


def route(method, path):
    """The endpoint, its match and whether it takes a token; 405 or 404 when there is none."""
    allowed = []
    for route_method, pattern, endpoint, bearer in ROUTES:
        match = re.fullmatch(pattern, path)
        if match:
            if route_method == method:
                return endpoint, match, bearer
            allowed.append(route_method)
    if allowed:
        raise ServiceError(405, "Method Not Allowed", [("Allow", ", ".join(sorted(set(allowed))))])
    raise not_found()


def accepts_xml(accept):
    if accept is None:
        return True
    kinds = [part.split(";")[0].strip().lower() for part in accept.split(",")]
    return any(kind in ("*/*", "application/*", "application/xml", "text/xml", "text/*") for kind in kinds)


def handler_class(emulator):
    class Handler(ServiceHandler, methods=("GET", "POST", "PUT", "DELETE", "HEAD")):
        refusals = (ServiceError,)

        def take_target(self):
            split = urllib.parse.urlsplit(self.path)
            self.route_path = split.path
            if self.route_path.startswith("/_emulator/"):
                self.route_path = urllib.parse.unquote(self.route_path)
            self.query = {name: values[0] for name, values in
                          urllib.parse.parse_qs(split.query, keep_blank_values=True).items()}
            self.content_type = self.headers.get("Content-Type")

        def refusal_reply(self, refusal):
            return Reply.error(refusal)

        def throttled_reply(self, switch):
            reason = "Too Many Requests" if switch == "status_429" else "Service Unavailable"
            return Reply.error(ServiceError(int(switch[-3:]), reason, [("Retry-After", "0")]))

        def answer(self, path):
            with emulator.lock:
                try:
                    endpoint, match, bearer = route(self.command, path)
                    if bearer:
                        token = emulator.grants.check(self.headers.get("Authorization"))
                        if emulator.faults.take("expire_token", path):
                            emulator.grants.expire(token)
                            raise ServiceError(401, "Unauthorized")
                    if not accepts_xml(self.headers.get("Accept")) and not path.endswith("/data"):
                        raise ServiceError(406, "Not Acceptable")
                    reply = getattr(emulator, endpoint)(self, match)
                except ServiceError as refusal:
                    reply = Reply.error(refusal)
                return corrupted(reply, emulator.faults, path)

        def is_data(self):
            return self.command == "PUT" and self.route_path.endswith("/data")

        def read_body(self, half=False, required=True):
            """Reads the body whole (or half of it); answers 411, 413 or 400 and false when it can't."""
            if self.is_data() and self.headers.get("Transfer-Encoding", "").lower() == "chunked":
                return self.read_chunked()
            return super().read_body(half, required)

        def read_chunked(self):
            chunks = []
            while True:
                size_line = self.rfile.readline(1024).split(b";")[0].strip()
                if not re.fullmatch(rb"[0-9A-Fa-f]{1,16}", size_line):
                    return self.refuse(Reply.error(ServiceError(400, "Bad Request")))
                size = int(size_line, 16)
                if size == 0:
                    while self.rfile.readline(1024) not in (b"\r\n", b"\n", b""):
                        pass
                    self.body = b"".join(chunks)
                    return True
                chunk = self.rfile.read(size)
                if len(chunk) < size or self.rfile.readline(1024) not in (b"\r\n", b"\n"):
                    self.close_connection = True
                    return False
                chunks.append(chunk)

        def length_required_reply(self):
            return Reply.error(ServiceError(411, "Length Required"))

        def size_refusal(self, length):
            if not self.is_data() and length > SMALL_BODY_LIMIT:
                return Reply.error(ServiceError(413, "Request Entity Too Large"))
            return None

        def reply_headers(self):
            return [("Server", "Noelios-Restlet-Engine/1.1.5")]

    Handler.emulator = emulator
    return Handler


def main():
    parser = arguments(__doc__)
    parser.add_argument("--access-key", required=True)
    parser.add_argument("--private-key", required=True)
    parser.add_argument("--user", required=True)
    parser.add_argument("--password", required=True)
    parser.add_argument("--application", default="/sc/566494/1_1")
    parser.add_argument("--token-seconds", type=float, default=DEFAULT_TOKEN_SECONDS)
    parser.add_argument("--quota", type=int, default=DEFAULT_QUOTA)
    options = parser.parse_args()

    emulator = Emulator(options)
    serve(options.port, handler_class(emulator), emulator.listen_on)


if __name__ == "__main__":
    main()
