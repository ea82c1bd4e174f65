#!/usr/bin/python3
"""An emulator of OneDrive's Live REST interface 5.0 and its OAuth 2.0 login, for the tests.

It serves the service's two hosts on one port of 127.0.0.1: the API host (/v5.0/...) and the
login host (/oauth20_authorize.srf, /oauth20_token.srf, /oauth20_desktop.srf), plus the
download addresses it hands out itself. It follows the published reference, not any client:

- REST reference, verbs, status codes (420 is throttling, 507 a full account):
  https://learn.microsoft.com/en-us/previous-versions/office/developer/onedrive-live-sdk-reference/dn631844(v=office.15)
  and http://msdn.microsoft.com/en-us/library/hh243648.aspx (objects: user, folder, file, error;
  the access token in the query or as a bearer header; Range on downloads)
- Using the REST API, files and folders, quota, friendly names (me/skydrive, me/skydrive/quota):
  https://learn.microsoft.com/en-us/previous-versions/office/developer/onedrive-live-sdk/dn659752(v=office.15),
  https://learn.microsoft.com/en-us/previous-versions/office/developer/onedrive-live-sdk/dn659731(v=office.15)
- Working with folders and files (POST a folder with a JSON name and description, PUT to
  FOLDER/files/NAME to upload with "overwrite", GET FILE/content answers a redirect, DELETE):
  http://msdn.microsoft.com/en-us/library/windows/apps/hh826531.aspx; upload sizes up to
  100 MB: https://learn.microsoft.com/en-us/previous-versions/office/developer/onedrive-live-sdk/dn659728(v=office.15)
- OAuth 2.0 code flow, the desktop redirect https://login.live.com/oauth20_desktop.srf, the
  token endpoint and refresh: http://msdn.microsoft.com/en-us/library/hh243647.aspx,
  https://docs.microsoft.com/en-us/previous-versions/office/developer/onedrive-live-sdk/dn631817(v=office.15),
  http://msdn.microsoft.com/en-us/library/hh826529; RFC 6749 sections 4.1 and 5.2 for the
  error answers of the authorisation page and of the token endpoint.

What the client must send
- Login page: GET /oauth20_authorize.srf?client_id=ID&scope=wl.signin%20wl.basic%20wl.skydrive
  %20wl.skydrive_update&redirect_uri=R&display=ios_phone&locale=en&response_type=code, where R
  is this host's /oauth20_desktop.srf (http://127.0.0.1:PORT/oauth20_desktop.srf, or what
  --redirect-uri says). The page answers, as a signed-in user who agrees, 302 to
  R?code=CODE&lc=1033 (plus the state when one was sent). A code serves once, for 5 minutes.
- Tokens: GET /oauth20_token.srf?client_id=ID&redirect_uri=R&client_secret=S&grant_type=
  authorization_code&code=CODE (the same keys in a POSTed form body work too), or with
  grant_type=refresh_token&refresh_token=T. The answer: token_type, expires_in (--token-seconds),
  scope, access_token, refresh_token, user_id. A refresh hands a new pair; refresh tokens stay good.
- API calls: "Authorization: bearer TOKEN" (or ?access_token=TOKEN); reads need the scope
  wl.skydrive, changes wl.skydrive_update, the user record wl.basic.
  GET /v5.0/me (name), GET /v5.0/me/skydrive (top folder), GET /v5.0/me/skydrive/quota
  (quota, available), GET /v5.0/ID/files and /v5.0/me/skydrive/files ({"data": [...]}),
  POST /v5.0/ID with Content-Type application/json {"name": N, "description": D} (201, the
  folder), PUT /v5.0/ID/files/NAME with the bytes and a Content-Length (201 {"id","name",
  "source"}; an existing file of that name is replaced unless overwrite=false), GET
  /v5.0/ID/content (302 to a download address that needs no token), PUT /v5.0/ID with JSON
  (rename, 200), DELETE /v5.0/ID (204). MOVE and COPY are not served (405). A doubled slash
  after /v5.0/ is taken as one; each path segment is percent-decoded on its own. Ids
  look like "folder.UID.UID!123" and "file.UID.UID!124"; names are unique in a folder whatever
  their case; a folder is deleted with its contents.
- Errors: {"error": {"code": C, "message": M}}; 401 request_token_missing, request_token_invalid,
  request_token_expired; 403 request_token_unauthorized (a scope not granted); 404
  resource_not_found; 405 request_method_invalid; 409 resource_already_exists; 400
  request_parameter_invalid, request_body_invalid, request_url_invalid; 411; 413
  request_entity_too_large; 415 request_body_invalid; 420 request_throttled ("... retry after
  N seconds."); 503 service_unavailable; 507 resource_quota_exceeded. The token endpoint answers
  400 {"error": E, "error_description": D} with invalid_request, invalid_client, invalid_grant,
  unsupported_grant_type.

The account lives in FOLDER (see onedrive_files.py), nothing anywhere else; --quota sets its
size. Tokens live in memory only; --token-seconds sets how long an access token lives.

Prints "LISTENING <port>" once it listens, then "<METHOD> <path>" as each request to the
service arrives (before its body is read). Tests steer it through /_emulator/...:
  POST /_emulator/fault?name=N&count=C[&path=PREFIX][&seconds=S]  the next C requests it can
       affect (whose path starts with PREFIX, when given) get fault N; count 0 clears it.
       status_429 answers the service's throttling status 420, saying to retry after S seconds;
       foreign_redirect sends a file's content to plain http on a host that isn't this one.
  POST /_emulator/token                a token pair, as after a login.
  POST /_emulator/expire_access_token  every access token issued so far expires now.
  POST /_emulator/folder?path=/A/B     makes the folders that are missing; answers the id.
  POST /_emulator/file?path=/A/B/name  makes the file (body: its bytes) and its folders.
  GET  /_emulator/tree                 every item by path, for the tests to look at.
"""

import json
import re
import threading
import time
import urllib.parse

from emulator_support import Faults, Reply, ServiceHandler, arguments, random_text, serve
from onedrive_files import ROOT_ID, USER_ID, Account, LiveError, json_reply, time_text

USER_NAME = "Stowhaven Tester"
SCOPES = ("wl.signin", "wl.basic", "wl.skydrive", "wl.skydrive_update", "wl.offline_access", "wl.emails")
CODE_SECONDS = 300
LARGEST_UPLOAD = 100 * 1024 * 1024
DISPLAYS = {"page", "popup", "touch", "none", "ios_phone", "android_phone", "android_tablet", "windows_desktop"}
HUGE_BYTES = 8 * 1024 * 1024
DEEP_LEVELS = 10000
HOSTILE_BYTES = b"hostile\n"

SWITCHES = {"expire_token", "status_429", "status_503", "drop_mid_body", "malformed_json", "refuse_grant",
            "invalid_grant", "hostile_listing", "huge_json", "deep_json", "foreign_redirect"}
FOREIGN_DOWNLOADS = "http://downloads.example.net/d/"


class OAuthError(Exception):
    """A refusal of the token endpoint, in the OAuth 2.0 error object."""

    def __init__(self, error, description):
        super().__init__(description)
        self.error, self.description = error, description

    def reply(self):
        return Reply.json(400, {"error": self.error, "error_description": self.description})


class Grants:
    """Authorisation codes, access tokens with their scopes, and refresh tokens, in memory."""

    def __init__(self, options):
        self.client_id, self.client_secret = options.client_id, options.client_secret
        self.token_seconds = options.token_seconds
        self.redirect_uri = options.redirect_uri
        self.codes = {}
        self.access = {}
        self.refresh = {}

    def new_code(self, scopes):
        code = "M" + random_text(8) + "-" + random_text(4) + "-" + random_text(12)
        self.codes[code] = (time.monotonic() + CODE_SECONDS, scopes)
        return code

    def pair(self, scopes=SCOPES):
        access, refresh = "EwB" + random_text(60), "MCt" + random_text(80)
        self.access[access] = (time.monotonic() + self.token_seconds, frozenset(scopes))
        self.refresh[refresh] = frozenset(scopes)
        return {"token_type": "bearer", "expires_in": self.token_seconds, "scope": " ".join(scopes),
                "access_token": access, "refresh_token": refresh, "user_id": USER_ID}

    def redeem_code(self, code):
        expiry, scopes = self.codes.pop(code, (0, None))
        if scopes is None or time.monotonic() > expiry:
            raise OAuthError("invalid_grant", "The provided value for the 'code' parameter is not valid.")
        return self.pair(scopes)

    def redeem_refresh(self, token):
        scopes = self.refresh.get(token)
        if scopes is None:
            raise OAuthError("invalid_grant", "The provided value for the input parameter 'refresh_token' "
                                              "or 'assertion' is not valid.")
        return self.pair(sorted(scopes, key=SCOPES.index))

    def check(self, token):
        """The scopes of a live access token; the service's 401 otherwise."""
        if not token:
            raise LiveError(401, "request_token_missing",
                            "The request doesn't include an access token. Please sign in again.")
        expiry, scopes = self.access.get(token, (None, None))
        if expiry is None:
            raise LiveError(401, "request_token_invalid", "The access token isn't valid.")
        if time.monotonic() > expiry:
            raise LiveError(401, "request_token_expired", "The provided access token has expired.")
        return scopes

    def expire(self, token=None):
        expired = [token] if token is not None else list(self.access)
        for each in expired:
            self.access[each] = (0, self.access[each][1])
        return len(expired)


def corrupted(reply, faults, path):
    """A JSON reply as the JSON switches make it."""
    if reply.content_type != "application/json; charset=UTF-8" or not 200 <= reply.status < 300:
        return reply
    if faults.take("malformed_json", path):
        reply.body = reply.body[: len(reply.body) // 2] + b'",]}{'
    elif faults.take("huge_json", path):
        value = json.loads(reply.body)
        value["padding"] = "x" * HUGE_BYTES
        reply.body = json.dumps(value).encode()
    elif faults.take("deep_json", path):
        reply.body = b'{"data":' + b"[" * DEEP_LEVELS + b"]" * DEEP_LEVELS + b'}'
    return reply


def json_body(request):
    if (request.headers.get("Content-Type") or "").split(";")[0].strip().lower() != "application/json":
        raise LiveError(415, "request_body_invalid", "The request's Content-Type must be application/json.")
    try:
        value = json.loads(request.body)
    except ValueError:
        raise LiveError(400, "request_body_invalid", "The request body isn't valid JSON.") from None
    if not isinstance(value, dict):
        raise LiveError(400, "request_body_invalid", "The request body must be a JSON object.")
    for key in value:
        if key not in ("name", "description"):
            raise LiveError(400, "request_body_invalid", f"The property '{key}' can't be written.")
        if not isinstance(value[key], str):
            raise LiveError(400, "request_body_invalid", f"The value of '{key}' must be a string.")
    return value


class Emulator:
    def __init__(self, options):
        self.account = Account(options.folder, options.quota)
        self.grants = Grants(options)
        self.faults = Faults()
        self.throttle_seconds = 0
        self.downloads = {}
        self.lock = threading.Lock()
        self.port = 0

    def base(self, request):
        return "http://" + (request.headers.get("Host") or f"127.0.0.1:{self.port}")

    def desktop_uri(self):
        return self.grants.redirect_uri or f"http://127.0.0.1:{self.port}/oauth20_desktop.srf"

    # The login host.

    def authorize(self, request):
        query = request.query
        if query.get("client_id") != self.grants.client_id:
            return Reply(400, b"<html><body>Microsoft account is experiencing technical problems. "
                              b"The client_id is not valid.</body></html>", "text/html")
        redirect = query.get("redirect_uri")
        if redirect != self.desktop_uri():
            return Reply(400, b"<html><body>The provided value for the input parameter 'redirect_uri' is not "
                              b"valid.</body></html>", "text/html")
        scopes = [scope for scope in query.get("scope", "").replace(",", " ").split(" ") if scope]
        answer = {}
        if query.get("response_type") != "code":
            answer["error"] = "unsupported_response_type"
        elif not scopes or any(scope not in SCOPES for scope in scopes):
            answer.update(error="invalid_scope", error_description="The provided request must include a valid "
                                                                   "'scope' input parameter.")
        elif query.get("display", "page") not in DISPLAYS:
            answer.update(error="invalid_request", error_description="The 'display' parameter isn't valid.")
        elif self.faults.take("refuse_grant", request.route_path):
            answer.update(error="access_denied", error_description="The user has denied access to the scope "
                                                                   "requested by the client application.")
        else:
            answer["code"] = self.grants.new_code(scopes)
            answer["lc"] = "1033"
        if "state" in query:
            answer["state"] = query["state"]
        return Reply(302, headers=[("Location", redirect + "?" + urllib.parse.urlencode(answer))])

    def token(self, request):
        if request.command == "POST":
            if not (request.headers.get("Content-Type") or "").startswith("application/x-www-form-urlencoded"):
                raise OAuthError("invalid_request", "The request's Content-Type must be "
                                                    "application/x-www-form-urlencoded.")
            form = parse_query(request.body.decode("utf-8", "replace"))
        else:
            form = request.query
        grant = form.get("grant_type")
        if grant not in ("authorization_code", "refresh_token"):
            raise OAuthError("invalid_request" if not grant else "unsupported_grant_type",
                             "The provided value for the input parameter 'grant_type' is not valid.")
        if form.get("client_id") != self.grants.client_id or form.get("client_secret") != self.grants.client_secret:
            raise OAuthError("invalid_client", "The client does not exist or the client secret is not valid.")
        if form.get("redirect_uri") != self.desktop_uri():
            raise OAuthError("invalid_request", "The provided value for the input parameter 'redirect_uri' "
                                                "is not valid.")
        if self.faults.take("invalid_grant", request.route_path):
            raise OAuthError("invalid_grant", "The user could not be authenticated or the grant is expired.")
        if grant == "authorization_code":
            pair = self.grants.redeem_code(form.get("code", ""))
        else:
            pair = self.grants.redeem_refresh(form.get("refresh_token", ""))
        return json_reply(200, pair, [("Cache-Control", "no-store")])

    # The API host: each takes (request, item id, rest of the path).

    def user(self, request, _id, _rest):
        self.need(request, "wl.basic", "wl.signin")
        first, _, last = USER_NAME.partition(" ")
        return json_reply(200, {"id": USER_ID, "name": USER_NAME, "first_name": first, "last_name": last,
                                "link": "https://profile.live.com/", "gender": None, "locale": "en_US",
                                "updated_time": time_text()})

    def quota(self, request, _id, _rest):
        self.need(request, "wl.skydrive")
        return json_reply(200, {"quota": self.account.quota,
                                "available": self.account.quota - self.account.space_used()})

    def info(self, request, item_id, _rest):
        self.need(request, "wl.skydrive")
        return json_reply(200, self.shown(request, self.account.item(item_id)))

    def listing(self, request, item_id, _rest):
        self.need(request, "wl.skydrive")
        folder = self.account.item(item_id, "folder")
        entries = [self.shown(request, item) for item in self.account.children(folder["id"])]
        if self.faults.take("hostile_listing", request.route_path):
            entries = self.hostile(request, folder["id"]) + entries
        return json_reply(200, {"data": entries})

    def create_folder(self, request, item_id, _rest):
        self.need(request, "wl.skydrive_update")
        body = json_body(request)
        folder = self.account.add_folder(item_id, body.get("name"), body.get("description", ""))
        return json_reply(201, self.shown(request, folder))

    def rename(self, request, item_id, _rest):
        self.need(request, "wl.skydrive_update")
        item = self.account.item(item_id)
        self.account.update(item, json_body(request))
        return json_reply(200, self.shown(request, item))

    def delete(self, request, item_id, _rest):
        self.need(request, "wl.skydrive_update")
        self.account.delete(self.account.item(item_id))
        return Reply(204)

    def upload(self, request, item_id, rest):
        self.need(request, "wl.skydrive_update")
        overwrite = request.query.get("overwrite", "true")
        if overwrite not in ("true", "false", "ChooseNewName"):
            raise LiveError(400, "request_parameter_invalid",
                            f"The value '{overwrite}' of the parameter 'overwrite' isn't valid.")
        item, new = self.account.put_file(item_id, rest, request.body, overwrite)
        return json_reply(201 if new else 200, {"id": item["id"], "name": item["name"],
                                                "source": self.source(request, item["id"])})

    def content(self, request, item_id, _rest):
        self.need(request, "wl.skydrive")
        if not item_id.startswith("file.hostile."):
            self.account.item(item_id, "file")
        location = self.source(request, item_id)
        if self.faults.take("foreign_redirect", request.route_path):
            location = FOREIGN_DOWNLOADS + location.rpartition("/d/")[2]
        if request.query.get("suppress_redirects") == "true":
            return json_reply(200, {"location": location})
        return Reply(302, headers=[("Location", location)])

    def download(self, request, key):
        item_id = self.downloads.get(key)
        if item_id is not None and item_id.startswith("file.hostile."):
            return Reply(200, HOSTILE_BYTES, "application/octet-stream")
        item = self.account.items.get(item_id)
        if item is None or item["type"] != "file":
            return Reply(404, b"Not Found", "text/plain")
        return ranged(self.account.read(item), request.headers.get("Range"))

    # Helpers of the endpoints.

    def need(self, request, *scopes):
        if not set(scopes) & request.scopes:
            raise LiveError(403, "request_token_unauthorized",
                            f"The access token doesn't grant the scope '{scopes[0]}' this request needs.")

    def source(self, request, item_id):
        key = random_text(40)
        self.downloads[key] = item_id
        return f"{self.base(request)}/d/{key}"

    def shown(self, request, item):
        children = self.account.children(item["id"]) if item["type"] == "folder" else []
        shown = {"id": item["id"], "from": {"name": USER_NAME, "id": USER_ID}, "name": item["name"],
                 "description": item["description"], "parent_id": item["parent"], "size": self.account.size(item),
                 "comments_count": 0, "comments_enabled": False, "is_embeddable": True,
                 "link": f"https://onedrive.live.com/redir?resid={item['id']}", "type": item["type"],
                 "shared_with": {"access": "Just me"}, "created_time": item["created"],
                 "updated_time": item["updated"], "client_updated_time": item["updated"]}
        if item["type"] == "folder":
            shown.update(count=len(children), upload_location=f"{self.base(request)}/v5.0/{item['id']}/files/")
        else:
            shown.update(source=self.source(request, item["id"]),
                         upload_location=f"{self.base(request)}/v5.0/{item['id']}/content/")
        return shown

    def hostile(self, request, folder_id):
        stamp = time_text()
        entries = [{"id": "../../x", "type": "folder", "name": "Stowhaven", "parent_id": folder_id,
                    "created_time": stamp, "updated_time": stamp, "description": None, "size": 0, "count": 0}]
        for number, name in enumerate(("..", "a/b", "$(touch pwned)")):
            item_id = f"file.hostile.{number}"
            entries.append({"id": item_id, "type": "file", "name": name, "parent_id": folder_id,
                            "size": len(HOSTILE_BYTES), "source": self.source(request, item_id),
                            "created_time": stamp, "updated_time": stamp, "description": None})
        return entries

    # The tests' control paths.

    def control(self, request):
        query = request.query
        if request.command == "POST" and request.route_path == "/_emulator/fault":
            if query.get("name") not in SWITCHES or not query.get("count", "1").isdigit():
                return json_reply(400, {"error": "unknown switch or count"})
            self.faults.set(query["name"], int(query.get("count", "1")), query.get("path"))
            if query["name"] == "status_429":
                self.throttle_seconds = int(query.get("seconds", "0") or 0)
            return json_reply(200, {"name": query["name"], "count": int(query.get("count", "1"))})
        if request.command == "POST" and request.route_path == "/_emulator/token":
            return json_reply(200, self.grants.pair())
        if request.command == "POST" and request.route_path == "/_emulator/expire_access_token":
            return json_reply(200, {"expired": self.grants.expire()})
        if request.command == "GET" and request.route_path == "/_emulator/tree":
            entries = [{"path": self.account.path_of(item), "type": item["type"], "id": item["id"],
                        "size": self.account.size(item)}
                       for item in self.account.items.values() if item["id"] != ROOT_ID]
            return json_reply(200, {"entries": sorted(entries, key=lambda entry: entry["path"])})
        if request.command == "POST" and request.route_path in ("/_emulator/folder", "/_emulator/file"):
            names = [name for name in query.get("path", "").split("/") if name]
            if not names:
                return json_reply(400, {"error": "no path"})
            making_file = request.route_path == "/_emulator/file"
            folder_id = ROOT_ID
            for name in names[:-1] if making_file else names:
                existing = self.account.named(folder_id, name)
                folder_id = existing["id"] if existing else self.account.add_folder(folder_id, name)["id"]
            if making_file:
                folder_id = self.account.put_file(folder_id, names[-1], request.body, "true")[0]["id"]
            return json_reply(200, {"id": folder_id})
        return json_reply(404, {"error": "no such control path"})


def ranged(data, header):
    """The bytes, or the one range "bytes=A-B" asks for (206), or 416 for a range beyond them."""
    match = re.fullmatch(r"bytes=(\d*)-(\d*)", header or "")
    if not match or match.groups() == ("", ""):
        return Reply(200, data, "application/octet-stream")
    first, last = match.groups()
    if first == "":
        start, end = max(len(data) - int(last), 0), len(data) - 1
    else:
        start, end = int(first), min(int(last), len(data) - 1) if last else len(data) - 1
    if start >= len(data) or start > end:
        return Reply(416, b"", None, [("Content-Range", f"bytes */{len(data)}")])
    return Reply(206, data[start:end + 1], "application/octet-stream",
                 [("Content-Range", f"bytes {start}-{end}/{len(data)}")])


def parse_query(text):
    return {name: values[0] for name, values in urllib.parse.parse_qs(text, keep_blank_values=True).items()}


# The API's routes: method, the path's segments after /v5.0/ ("*" an item id, "+" a file name),
# the endpoint. me/skydrive stands for the top folder's id wherever an id goes.
API_ROUTES = [
    ("GET", ("me",), "user"),
    ("GET", ("me", "skydrive", "quota"), "quota"),
    ("GET", ("*",), "info"),
    ("POST", ("*",), "create_folder"),
    ("PUT", ("*",), "rename"),
    ("DELETE", ("*",), "delete"),
    ("GET", ("*", "files"), "listing"),
    ("PUT", ("*", "files", "+"), "upload"),
    ("GET", ("*", "content"), "content"),
]


def api_route(method, segments):
    """The endpoint, the item id and the file name of an API path; 405 or 400 when there is none."""
    if segments[:2] == ["me", "skydrive"] and segments[2:] != ["quota"]:
        segments = [ROOT_ID] + segments[2:]
    known_path = False
    for route_method, pattern, endpoint in API_ROUTES:
        if len(pattern) != len(segments):
            continue
        if all(p == s or (p in ("*", "+") and s and s not in ("me", "files", "content")) for p, s in
               zip(pattern, segments)):
            known_path = True
            if route_method == method:
                item_id = segments[0] if pattern[0] == "*" else None
                return endpoint, item_id, segments[-1] if pattern[-1] == "+" else None
    if known_path:
        raise LiveError(405, "request_method_invalid", f"The request method '{method}' isn't valid here.")
    raise LiveError(400, "request_url_invalid", "The URL contains the path segment that isn't supported.")


def handler_class(emulator):
    class Handler(ServiceHandler, methods=("GET", "POST", "PUT", "DELETE", "PATCH", "MOVE", "COPY")):
        refusals = (LiveError,)

        def take_target(self):
            split = urllib.parse.urlsplit(self.path)
            self.raw_path = split.path
            self.route_path = urllib.parse.unquote(split.path)
            self.query = parse_query(split.query)
            self.scopes = frozenset()

        def throttled_reply(self, switch):
            if switch == "status_429":
                return LiveError(420, "request_throttled", "The request has been throttled. Please retry after "
                                                           f"{emulator.throttle_seconds} seconds.").reply()
            return LiveError(503, "service_unavailable", "The service is temporarily unavailable.",
                             [("Retry-After", "0")]).reply()

        def answer(self, path):
            with emulator.lock:
                return corrupted(self.endpoint_reply(), emulator.faults, path)

        def endpoint_reply(self):
            try:
                if self.route_path == "/oauth20_authorize.srf" and self.command == "GET":
                    return emulator.authorize(self)
                if self.route_path == "/oauth20_token.srf" and self.command in ("GET", "POST"):
                    return emulator.token(self)
                if self.route_path == "/oauth20_desktop.srf" and self.command == "GET":
                    return Reply(200, b"<html><body></body></html>", "text/html")
                if self.route_path.startswith("/d/") and self.command == "GET":
                    return emulator.download(self, self.route_path[3:])
                if not self.raw_path.startswith("/v5.0/"):
                    return Reply(404, b"Not Found", "text/plain")
                # The service takes a doubled slash after the version as one.
                rest = self.raw_path[len("/v5.0/"):]
                rest = rest[1:] if rest.startswith("/") else rest
                segments = [urllib.parse.unquote(segment) for segment in rest.split("/")]
                endpoint, item_id, name = api_route(self.command, segments)
                self.scopes = emulator.grants.check(self.bearer())
                if emulator.faults.take("expire_token", self.route_path):
                    emulator.grants.expire(self.bearer())
                    emulator.grants.check(self.bearer())
                return getattr(emulator, endpoint)(self, item_id, name)
            except (LiveError, OAuthError) as refusal:
                return refusal.reply()

        def bearer(self):
            scheme, _, token = (self.headers.get("Authorization") or "").partition(" ")
            if scheme.lower() == "bearer" and token.strip():
                return token.strip()
            return self.query.get("access_token")

        def length_required_reply(self):
            return LiveError(411, "request_body_invalid", "The request needs a Content-Length.").reply()

        def size_refusal(self, length):
            if length > LARGEST_UPLOAD:
                return LiveError(413, "request_entity_too_large", "The request entity body is larger than "
                                                                  f"{LARGEST_UPLOAD} bytes.").reply()
            return None

    Handler.emulator = emulator
    return Handler


def main():
    parser = arguments(__doc__)
    parser.add_argument("--client-id", required=True)
    parser.add_argument("--client-secret", required=True)
    parser.add_argument("--redirect-uri", help="the desktop redirect; this host's /oauth20_desktop.srf if not given")
    parser.add_argument("--token-seconds", type=int, default=3600, help="how long an access token lives")
    parser.add_argument("--quota", type=int, default=25 * 1024 ** 3)
    options = parser.parse_args()

    emulator = Emulator(options)
    serve(options.port, handler_class(emulator), lambda port: setattr(emulator, "port", port))


if __name__ == "__main__":
    main()
