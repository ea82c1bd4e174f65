#!/usr/bin/python3
"""An emulator of Box's content API 2.0 and its OAuth 2.0 login, for the tests.

It serves the three hosts of the service on one port of 127.0.0.1: the API host (/2.0/...
and /oauth2/token), the upload host (/api/2.0/files/content) and the authorisation host
(/api/oauth2/authorize), plus the download addresses it hands out itself. It follows the
published reference, not any client of ours:

- Authorisation: https://developer.box.com/reference/get-authorize/ (302 to the redirect URI
  with code and state; a refused grant comes back as error=access_denied); codes live 30
  seconds: https://developer.box.com/guides/tooling/postman/access-token/
- Tokens: https://developer.box.com/reference/post-oauth2-token/ (form-encoded;
  authorization_code and refresh_token grants),
  https://developer.box.com/guides/authentication/tokens/access-tokens/ (the token object),
  https://developer.box.com/guides/authentication/tokens/refresh (a refresh token is good for
  one use: each refresh hands a new pair), https://developer.box.com/reference/resources/oauth2-error
- Bearer tokens: https://developer.box.com/guides/authentication/access-tokens/api-calls (401
  without one); the WWW-Authenticate header of an invalid or expired token as the service
  sends it: https://github.com/box/box-node-sdk/issues/157; RFC 6750 section 3.1 for a
  request without credentials.
- Users: https://developer.box.com/reference/get-users-me/, https://developer.box.com/reference/users-resources
- Folders: https://developer.box.com/reference/get-folders-id-items/ (offset paging: entries,
  total_count, offset, limit, order by type then name; "fields" gives the mini representation
  and the fields asked for), https://developer.box.com/reference/resources/items,
  https://developer.box.com/guides/folders/single/create/ (name rules),
  https://developer.box.com/guides/folders/single/delete (a non-empty folder needs recursive)
- Uploads: https://developer.box.com/reference/post-files-content/ and
  https://developer.box.com/guides/uploads/direct/file-version (multipart/form-data, the
  "attributes" part before the "file" part, else 400 metadata_after_file_contents; 201 with
  a collection of one file)
- Downloads: https://developer.box.com/guides/downloads/file and
  https://developer.box.com/guides/downloads/get-url (302 to a download URL that needs no token)
- Errors: https://developer.box.com/guides/api-calls/permissions-and-errors/common-errors/
  (the client error object; bad_request, item_name_invalid, item_name_too_long,
  metadata_after_file_contents, folder_not_empty, not_found, method_not_allowed,
  item_name_in_use, length_required, rate_limit_exceeded, unavailable, bad_digest),
  https://developer.box.com/reference/resources/conflict-error/ (context_info.conflicts)

The account lives in FOLDER: the tree in FOLDER/index.json, each file's bytes in
FOLDER/files/<id>, nothing anywhere else. Tokens live in memory only.

Prints "LISTENING <port>" once it listens, then "<METHOD> <path>" as each request to the
service arrives (before its body is read). Tests steer it through /_emulator/...:
  POST /_emulator/fault?name=N&count=C[&path=PREFIX]  the next C requests it can affect (whose
       path starts with PREFIX, when given) get fault N; count 0 clears it.
  POST /_emulator/token                a token pair, as after a login.
  POST /_emulator/expire_access_token  every access token issued so far expires now.
  POST /_emulator/folder?path=/A/B     makes the folders that are missing; answers the id.
  POST /_emulator/file?path=/A/B/name  makes the file (body: its bytes) and its folders.
  GET  /_emulator/tree                 every item by path, for the tests to look at.
"""

import hashlib
import json
import os
import re
import threading
import time
import urllib.parse

from emulator_support import Faults, Reply, ServiceHandler, arguments, random_text, serve

ROOT_ID = "0"
ACCESS_TOKEN_SECONDS = 3600
AUTHORIZATION_CODE_SECONDS = 30
DOWNLOAD_URL_SECONDS = 15 * 60
DEFAULT_LIMIT = 100
LARGEST_LIMIT = 1000
LARGEST_OFFSET = 300000
LONGEST_NAME = 255
HELP_URL = "https://developer.box.com/guides/api-calls/permissions-and-errors/common-errors/"
ORDER = [{"by": "type", "direction": "ASC"}, {"by": "name", "direction": "ASC"}]
INVALID_TOKEN = ('Bearer realm="Service", error="invalid_token", '
                 'error_description="The access token provided is invalid."')
NO_TOKEN = 'Bearer realm="Service"'
HUGE_BYTES = 8 * 1024 * 1024
DEEP_LEVELS = 10000
HOSTILE_BYTES = b"hostile\n"

SWITCHES = {"expire_token", "status_429", "status_503", "drop_mid_body", "malformed_json", "refuse_grant",
            "invalid_grant", "hostile_listing", "huge_json", "deep_json"}

MINI_FIELDS = {"folder": ("type", "id", "sequence_id", "etag", "name"),
               "file": ("type", "id", "sequence_id", "etag", "name", "sha1", "file_version")}


def now_text():
    return time.strftime("%Y-%m-%dT%H:%M:%S+00:00", time.gmtime())


class ApiError(Exception):
    """A refusal in the service's client error object."""

    def __init__(self, status, code, message, context=None, headers=()):
        super().__init__(message)
        self.status, self.code, self.message, self.context, self.headers = status, code, message, context, headers

    def reply(self):
        body = {"type": "error", "status": self.status, "code": self.code, "help_url": HELP_URL,
                "message": self.message, "request_id": random_text(16).lower()}
        if self.context is not None:
            body["context_info"] = self.context
        return Reply.json(self.status, body, self.headers)


class OAuthError(Exception):
    """A refusal of the token endpoint, in the OAuth 2.0 error object."""

    def __init__(self, error, description):
        super().__init__(description)
        self.error, self.description = error, description

    def reply(self):
        return Reply.json(400, {"error": self.error, "error_description": self.description})


class Unauthorized(Exception):
    def __init__(self, challenge):
        super().__init__(challenge)
        self.challenge = challenge

    def reply(self):
        return Reply(401, headers=[("WWW-Authenticate", self.challenge)])


def bad_parameter(name, value):
    return ApiError(400, "bad_request", "Bad Request",
                    {"errors": [{"reason": "invalid_parameter", "name": name, "message": f"Invalid value '{value}'."}]})


def check_name(name):
    """Refuses a name the service refuses, as it does."""
    if not isinstance(name, str) or name == "":
        raise ApiError(400, "bad_request", "Bad Request",
                       {"errors": [{"reason": "missing_parameter", "name": "name", "message": "'name' is required"}]})
    if len(name.encode()) > LONGEST_NAME:
        raise ApiError(400, "item_name_too_long", "Item name too long")
    if (name in (".", "..") or "/" in name or "\\" in name or name != name.strip(" ")
            or any(ord(c) < 32 or ord(c) == 127 for c in name)):
        raise ApiError(400, "item_name_invalid", "Item name invalid")


class Account:
    """The account's tree, an index of items by id saved as JSON, and its files' bytes."""

    def __init__(self, folder, login, space_amount, max_upload_size):
        self.files = os.path.join(folder, "files")
        self.index_path = os.path.join(folder, "index.json")
        self.login = login
        self.space_amount = space_amount
        self.max_upload_size = max_upload_size
        os.makedirs(self.files, exist_ok=True)
        if os.path.exists(self.index_path):
            with open(self.index_path, encoding="utf-8") as index:
                saved = json.load(index)
            self.items, self.next_id = saved["items"], saved["next_id"]
        else:
            self.next_id = 1000001
            self.items = {ROOT_ID: {"type": "folder", "id": ROOT_ID, "name": "All Files", "parent": None,
                                    "created_at": None, "modified_at": None, "sequence_id": None, "etag": None}}
            self.save()

    def save(self):
        temporary = self.index_path + ".new"
        with open(temporary, "w", encoding="utf-8") as index:
            json.dump({"items": self.items, "next_id": self.next_id}, index, separators=(",", ":"))
        os.replace(temporary, self.index_path)

    def new_id(self):
        self.next_id += 1
        return str(self.next_id)

    def folder(self, item_id):
        item = self.items.get(item_id)
        if item is None or item["type"] != "folder":
            raise ApiError(404, "not_found", "Not Found")
        return item

    def file(self, item_id):
        item = self.items.get(item_id)
        if item is None or item["type"] != "file":
            raise ApiError(404, "not_found", "Not Found")
        return item

    def children(self, folder_id):
        found = [item for item in self.items.values() if item["parent"] == folder_id]
        return sorted(found, key=lambda item: (item["type"] != "folder", item["name"].casefold(), item["name"]))

    def conflict(self, folder_id, name, moving=None):
        """Answers 409 when the folder holds another item of NAME, in any casing."""
        for item in self.items.values():
            if item["parent"] == folder_id and item["name"].casefold() == name.casefold() and item["id"] != moving:
                raise ApiError(409, "item_name_in_use", "Item with the same name already exists",
                               {"conflicts": [self.mini(item)]})

    def ancestors(self, item):
        chain = []
        parent = item["parent"]
        while parent is not None:
            chain.insert(0, self.items[parent])
            parent = self.items[parent]["parent"]
        return chain

    def size(self, item):
        if item["type"] == "file":
            return item.get("size", 0)
        return sum(file["size"] for file in self.items.values()
                   if file["type"] == "file" and self.holds(item["id"], file))

    def holds(self, folder_id, item):
        parent = item["parent"]
        while parent is not None and parent != folder_id:
            parent = self.items[parent]["parent"]
        return parent is not None

    def space_used(self):
        return sum(item["size"] for item in self.items.values() if item["type"] == "file")

    def touch(self, item):
        item["sequence_id"] = str(int(item["sequence_id"] or 0) + 1)
        item["etag"] = item["sequence_id"]
        item["modified_at"] = now_text()

    def add_folder(self, parent_id, name):
        self.folder(parent_id)
        check_name(name)
        self.conflict(parent_id, name)
        stamp = now_text()
        item = {"type": "folder", "id": self.new_id(), "name": name, "parent": parent_id, "created_at": stamp,
                "modified_at": stamp, "sequence_id": "0", "etag": "0"}
        self.items[item["id"]] = item
        self.save()
        return item

    def add_file(self, parent_id, name, data):
        self.folder(parent_id)
        check_name(name)
        self.conflict(parent_id, name)
        if len(data) > self.max_upload_size:
            raise ApiError(403, "file_size_limit_exceeded", "File size exceeds the folder owner's file size limit")
        if self.space_used() + len(data) > self.space_amount:
            raise ApiError(403, "storage_limit_exceeded", "Account storage limit reached")
        stamp = now_text()
        sha1 = hashlib.sha1(data).hexdigest()
        item = {"type": "file", "id": self.new_id(), "name": name, "parent": parent_id, "created_at": stamp,
                "modified_at": stamp, "sequence_id": "0", "etag": "0", "size": len(data), "sha1": sha1,
                "version": self.new_id()}
        with open(os.path.join(self.files, item["id"]), "wb") as stored:
            stored.write(data)
        self.items[item["id"]] = item
        self.save()
        return item

    def update_folder(self, item, name, parent_id):
        if item["id"] == ROOT_ID:
            raise ApiError(403, "access_denied_insufficient_permissions", "Access denied - insufficient permission")
        target = item["parent"] if parent_id is None else parent_id
        self.folder(target)
        if any(ancestor["id"] == item["id"] for ancestor in self.ancestors(self.items[target]) + [self.items[target]]):
            raise ApiError(400, "cyclical_folder_structure", "Folder move creates cyclical folder structure")
        new_name = item["name"] if name is None else name
        check_name(new_name)
        self.conflict(target, new_name, moving=item["id"])
        item["name"], item["parent"] = new_name, target
        self.touch(item)
        self.save()

    def delete(self, item, recursive):
        if item["id"] == ROOT_ID:
            raise ApiError(403, "access_denied_insufficient_permissions", "Access denied - insufficient permission")
        if item["type"] == "folder" and self.children(item["id"]) and not recursive:
            raise ApiError(400, "folder_not_empty", "Cannot delete \u2013 folder not empty")
        self.remove(item)
        self.save()

    def remove(self, item):
        for child in self.children(item["id"]):
            self.remove(child)
        if item["type"] == "file":
            os.remove(os.path.join(self.files, item["id"]))
        del self.items[item["id"]]

    def read(self, item):
        with open(os.path.join(self.files, item["id"]), "rb") as stored:
            return stored.read()

    # Representations.

    def mini(self, item):
        shown = {"type": item["type"], "id": item["id"], "sequence_id": item["sequence_id"], "etag": item["etag"],
                 "name": item["name"]}
        if item["type"] == "file":
            shown.update(sha1=item["sha1"], file_version={"type": "file_version", "id": item["version"],
                                                          "sha1": item["sha1"]})
        return shown

    def full(self, item):
        ancestors = self.ancestors(item)
        shown = dict(self.mini(item), created_at=item["created_at"], modified_at=item["modified_at"],
                     description="", size=self.size(item),
                     path_collection={"total_count": len(ancestors), "entries": [self.mini(a) for a in ancestors]},
                     created_by=self.user_mini(), modified_by=self.user_mini(), owned_by=self.user_mini(),
                     parent=self.mini(self.items[item["parent"]]) if item["parent"] is not None else None,
                     item_status="active")
        if item["type"] == "file":
            shown.update(content_created_at=item["created_at"], content_modified_at=item["modified_at"])
        else:
            children = self.children(item["id"])
            shown["item_collection"] = {"total_count": len(children), "offset": 0, "limit": DEFAULT_LIMIT,
                                        "order": ORDER, "entries": [self.mini(c) for c in children[:DEFAULT_LIMIT]]}
        return shown

    def user_mini(self):
        return {"type": "user", "id": "11446498", "name": "Stowhaven Tester", "login": self.login}

    def user(self):
        return dict(self.user_mini(), created_at="2012-03-26T15:43:07-07:00", modified_at=now_text(), language="en",
                    timezone="UTC", space_amount=self.space_amount, space_used=self.space_used(),
                    max_upload_size=self.max_upload_size, status="active", job_title="", phone="", address="",
                    avatar_url="")

    def path_of(self, item):
        return "/" + "/".join(a["name"] for a in self.ancestors(item)[1:] + [item])


def with_fields(full, mini_names, fields):
    """The standard representation, or with "fields" the mini one and the fields asked for."""
    if fields is None:
        return full
    return {name: value for name, value in full.items() if name in mini_names or name in fields}


class Grants:
    """Authorisation codes, access tokens and refresh tokens, in memory."""

    def __init__(self, client_id, client_secret, redirect_uri):
        self.client_id, self.client_secret, self.redirect_uri = client_id, client_secret, redirect_uri
        self.codes = {}
        self.access = {}
        self.refresh = set()

    def new_code(self):
        code = random_text(32)
        self.codes[code] = time.monotonic() + AUTHORIZATION_CODE_SECONDS
        return code

    def pair(self):
        access, refresh = random_text(32), random_text(64)
        self.access[access] = time.monotonic() + ACCESS_TOKEN_SECONDS
        self.refresh.add(refresh)
        return {"access_token": access, "expires_in": ACCESS_TOKEN_SECONDS, "restricted_to": [],
                "refresh_token": refresh, "token_type": "bearer"}

    def redeem_code(self, code):
        expiry = self.codes.pop(code, None)
        if expiry is None:
            raise OAuthError("invalid_grant", "Auth code doesn't exist or is invalid for the client")
        if time.monotonic() > expiry:
            raise OAuthError("invalid_grant", "The authorization code has expired")
        return self.pair()

    def redeem_refresh(self, token):
        if token not in self.refresh:
            raise OAuthError("invalid_grant", "Invalid refresh token")
        self.refresh.discard(token)
        return self.pair()

    def check(self, header):
        """The token of an Authorization header, if it is a live access token."""
        scheme, _, token = (header or "").partition(" ")
        if scheme.lower() != "bearer" or not token.strip():
            raise Unauthorized(NO_TOKEN)
        expiry = self.access.get(token.strip())
        if expiry is None or time.monotonic() > expiry:
            raise Unauthorized(INVALID_TOKEN)
        return token.strip()

    def expire(self, token=None):
        expired = [token] if token is not None else list(self.access)
        for each in expired:
            self.access.pop(each, None)
        return len(expired)


def corrupted(reply, faults, path):
    """A JSON reply as the JSON switches make it."""
    if reply.content_type != "application/json" or not 200 <= reply.status < 300:
        return reply
    if faults.take("malformed_json", path):
        reply.body = reply.body[: len(reply.body) // 2] + b'",]}{'
    elif faults.take("huge_json", path):
        value = json.loads(reply.body)
        value["padding"] = "x" * HUGE_BYTES
        reply.body = json.dumps(value).encode()
    elif faults.take("deep_json", path):
        reply.body = b'{"entries":' + b"[" * DEEP_LEVELS + b"]" * DEEP_LEVELS + b',"total_count":0}'
    return reply


def disposition_name(headers):
    """The "name" of a part's Content-Disposition header."""
    for line in headers.split("\r\n"):
        field, _, value = line.partition(":")
        if field.strip().lower() == "content-disposition":
            match = re.search(r'(?:^|;)\s*name="([^"]*)"', value)
            return match.group(1) if match else None
    return None


def parse_form(body, content_type):
    """The parts of a multipart/form-data body, in order, as (name, bytes)."""
    match = re.match(r'multipart/form-data\s*;.*boundary=("?)([^";]+)\1', content_type or "", re.IGNORECASE)
    if not match:
        raise ApiError(400, "bad_request", "Bad Request",
                       {"errors": [{"reason": "invalid_parameter", "name": "content-type",
                                    "message": "The request must be multipart/form-data with a boundary"}]})
    delimiter = b"--" + match.group(2).encode()
    malformed = ApiError(400, "bad_request", "Bad Request", {"message": "Malformed multipart body"})
    if not body.startswith(delimiter):
        raise malformed
    parts, position = [], len(delimiter)
    while body[position:position + 2] != b"--":
        if body[position:position + 2] != b"\r\n":
            raise malformed
        headers_end = body.find(b"\r\n\r\n", position + 2)
        end = body.find(b"\r\n" + delimiter, headers_end)
        if headers_end < 0 or end < 0:
            raise malformed
        headers = body[position + 2:headers_end].decode("utf-8", "replace")
        parts.append((disposition_name(headers), body[headers_end + 4:end]))
        position = end + 2 + len(delimiter)
    return parts


def json_body(body, content_type):
    if not (content_type or "").lower().startswith("application/json"):
        raise ApiError(400, "bad_request", "Bad Request", {"message": "The body must be application/json"})
    try:
        value = json.loads(body)
    except ValueError:
        raise ApiError(400, "bad_request", "Bad Request", {"message": "Invalid JSON body"}) from None
    if not isinstance(value, dict):
        raise ApiError(400, "bad_request", "Bad Request", {"message": "The body must be a JSON object"})
    return value


def parent_id(value):
    if not isinstance(value, dict) or not isinstance(value.get("id"), str):
        raise ApiError(400, "bad_request", "Bad Request",
                       {"errors": [{"reason": "missing_parameter", "name": "parent",
                                    "message": "'parent.id' is required"}]})
    return value["id"]


def fields_of(query):
    value = query.get("fields")
    return None if value is None else {name.strip() for name in value.split(",") if name.strip()}


def whole_number(query, name, default):
    text = query.get(name)
    if text is None:
        return default
    if not text.isdigit():
        raise bad_parameter(name, text)
    return int(text)


class Emulator:
    def __init__(self, options):
        self.account = Account(options.folder, options.login, options.space_amount, options.max_upload_size)
        self.grants = Grants(options.client_id, options.client_secret, options.redirect_uri)
        self.faults = Faults()
        self.downloads = {}
        self.hostile = self.hostile_items()
        self.lock = threading.Lock()
        self.port = 0

    def hostile_items(self):
        stamp = now_text()
        items = {}
        for item_id, kind, name in (("../../x", "folder", "STOWHAVEN"), ("9000000001", "file", ".."),
                                    ("9000000002", "file", "a/b"), ("9000000003", "file", "$(touch pwned)")):
            items[item_id] = {"type": kind, "id": item_id, "name": name, "parent": ROOT_ID, "created_at": stamp,
                              "modified_at": stamp, "sequence_id": "0", "etag": "0"}
            if kind == "file":
                sha1 = hashlib.sha1(HOSTILE_BYTES).hexdigest()
                items[item_id].update({"size": len(HOSTILE_BYTES), "sha1": sha1, "version": item_id})
        return items

    # The service's endpoints: each takes (request, match) and answers a Reply.

    def authorize(self, request, _):
        query = request.query
        if query.get("client_id") != self.grants.client_id:
            return Reply(400, b"<html><body>invalid_client: the client_id is not valid</body></html>", "text/html")
        redirect = query.get("redirect_uri", self.grants.redirect_uri)
        if redirect != self.grants.redirect_uri:
            return Reply(400, b"<html><body>redirect_uri_mismatch</body></html>", "text/html")
        answer = {}
        if query.get("response_type") != "code":
            answer["error"] = "unsupported_response_type"
        elif self.faults.take("refuse_grant", request.route_path):
            answer.update(error="access_denied", error_description="The user denied access to your application")
        else:
            answer["code"] = self.grants.new_code()
        if "state" in query:
            answer["state"] = query["state"]
        separator = "&" if "?" in redirect else "?"
        return Reply(302, headers=[("Location", redirect + separator + urllib.parse.urlencode(answer))])

    def token(self, request, _):
        if not (request.content_type or "").lower().startswith("application/x-www-form-urlencoded"):
            raise OAuthError("invalid_request", "Invalid grant_type parameter or parameter missing")
        form = {name: values[0] for name, values in
                urllib.parse.parse_qs(request.body.decode("utf-8", "replace"), keep_blank_values=True).items()}
        grant = form.get("grant_type")
        if grant not in ("authorization_code", "refresh_token"):
            raise OAuthError("invalid_request" if not grant else "unsupported_grant_type",
                             "Invalid grant_type parameter or parameter missing")
        if form.get("client_id") != self.grants.client_id or form.get("client_secret") != self.grants.client_secret:
            raise OAuthError("invalid_client", "The client credentials are invalid")
        if self.faults.take("invalid_grant", request.route_path):
            raise OAuthError("invalid_grant", "Invalid refresh token" if grant == "refresh_token"
                             else "The authorization code has expired")
        if grant == "authorization_code":
            if "redirect_uri" in form and form["redirect_uri"] != self.grants.redirect_uri:
                raise OAuthError("invalid_grant", "The redirect_uri does not match the authorization request")
            pair = self.grants.redeem_code(form.get("code", ""))
        else:
            pair = self.grants.redeem_refresh(form.get("refresh_token", ""))
        return Reply.json(200, pair, [("Cache-Control", "no-store")])

    def users_me(self, request, _):
        user = self.account.user()
        return Reply.json(200, with_fields(user, ("type", "id", "name", "login"), fields_of(request.query)))

    def folder_info(self, request, match):
        folder = self.account.folder(match.group(1))
        return Reply.json(200, with_fields(self.account.full(folder), MINI_FIELDS["folder"], fields_of(request.query)))

    def folder_items(self, request, match):
        folder = self.account.folder(match.group(1))
        limit = min(whole_number(request.query, "limit", DEFAULT_LIMIT), LARGEST_LIMIT)
        offset = whole_number(request.query, "offset", 0)
        if limit == 0:
            raise bad_parameter("limit", limit)
        if offset > LARGEST_OFFSET:
            raise bad_parameter("offset", offset)
        items = self.account.children(folder["id"])
        if self.faults.take("hostile_listing", request.route_path):
            items = list(self.hostile.values()) + items
        fields = fields_of(request.query)
        entries = [self.entry(item, fields) for item in items[offset:offset + limit]]
        return Reply.json(200, {"total_count": len(items), "entries": entries, "offset": offset, "limit": limit,
                                "order": ORDER})

    def entry(self, item, fields):
        if fields is None:
            return self.account.mini(item)
        return with_fields(self.account.full(item), MINI_FIELDS[item["type"]], fields)

    def folder_create(self, request, _):
        body = json_body(request.body, request.content_type)
        folder = self.account.add_folder(parent_id(body.get("parent")), body.get("name"))
        return Reply.json(201, with_fields(self.account.full(folder), MINI_FIELDS["folder"], fields_of(request.query)))

    def folder_update(self, request, match):
        folder = self.account.folder(match.group(1))
        body = json_body(request.body, request.content_type)
        new_parent = parent_id(body["parent"]) if "parent" in body else None
        if "name" in body and not isinstance(body["name"], str):
            raise bad_parameter("name", body["name"])
        self.account.update_folder(folder, body.get("name"), new_parent)
        return Reply.json(200, with_fields(self.account.full(folder), MINI_FIELDS["folder"], fields_of(request.query)))

    def folder_delete(self, request, match):
        folder = self.account.folder(match.group(1))
        recursive = request.query.get("recursive", "false")
        if recursive not in ("true", "false"):
            raise bad_parameter("recursive", recursive)
        self.account.delete(folder, recursive == "true")
        return Reply(204)

    def file_info(self, request, match):
        item = self.account.file(match.group(1))
        return Reply.json(200, with_fields(self.account.full(item), MINI_FIELDS["file"], fields_of(request.query)))

    def file_delete(self, _, match):
        self.account.delete(self.account.file(match.group(1)), False)
        return Reply(204)

    def file_content(self, _, match):
        item_id = match.group(1)
        if self.hostile.get(item_id, {}).get("type") != "file":
            self.account.file(item_id)
        key = random_text(40)
        self.downloads[key] = (item_id, time.monotonic() + DOWNLOAD_URL_SECONDS)
        return Reply(302, headers=[("Location", f"http://127.0.0.1:{self.port}/d/1/{key}/download")])

    def download(self, _, match):
        item_id, expiry = self.downloads.get(match.group(1), (None, 0))
        if item_id in self.hostile:
            return Reply(200, HOSTILE_BYTES, "application/octet-stream")
        item = self.account.items.get(item_id) if time.monotonic() < expiry else None
        if item is None or item["type"] != "file":
            return Reply(404, b"Not Found", "text/plain")
        return Reply(200, self.account.read(item), "application/octet-stream")

    def upload(self, request, _):
        parts = parse_form(request.body, request.content_type)
        names = [part[0] for part in parts]
        if "file" not in names:
            raise ApiError(400, "bad_request", "Bad Request",
                           {"errors": [{"reason": "missing_parameter", "name": "file", "message": "'file' is required"}]})
        if "attributes" not in names or names.index("attributes") > names.index("file"):
            raise ApiError(400, "metadata_after_file_contents",
                           "Metadata is included after file contents in a file upload request.")
        attributes = json_body(parts[names.index("attributes")][1], "application/json")
        data = parts[names.index("file")][1]
        digest = request.headers.get("content-md5")
        if digest is not None and digest.lower() != hashlib.sha1(data).hexdigest():
            raise ApiError(400, "bad_digest", "The specified content-md5 did not match what we received")
        item = self.account.add_file(parent_id(attributes.get("parent")), attributes.get("name"), data)
        return Reply.json(201, {"total_count": 1, "entries": [self.account.full(item)]})

    # The tests' control paths.

    def control(self, request):
        query = request.query
        if request.command == "POST" and request.route_path == "/_emulator/fault":
            if query.get("name") not in SWITCHES or not query.get("count", "1").isdigit():
                return Reply.json(400, {"error": "unknown switch or count"})
            self.faults.set(query["name"], int(query.get("count", "1")), query.get("path"))
            return Reply.json(200, {"name": query["name"], "count": int(query.get("count", "1"))})
        if request.command == "POST" and request.route_path == "/_emulator/token":
            return Reply.json(200, self.grants.pair())
        if request.command == "POST" and request.route_path == "/_emulator/expire_access_token":
            return Reply.json(200, {"expired": self.grants.expire()})
        if request.command == "GET" and request.route_path == "/_emulator/tree":
            entries = [{"path": self.account.path_of(item), "type": item["type"], "id": item["id"],
                        "size": self.account.size(item)}
                       for item in self.account.items.values() if item["id"] != ROOT_ID]
            return Reply.json(200, {"entries": sorted(entries, key=lambda entry: entry["path"])})
        if request.command == "POST" and request.route_path in ("/_emulator/folder", "/_emulator/file"):
            names = [name for name in query.get("path", "").split("/") if name]
            if not names:
                return Reply.json(400, {"error": "no path"})
            folder_names = names if request.route_path == "/_emulator/folder" else names[:-1]
            folder_id = ROOT_ID
            for name in folder_names:
                existing = [item for item in self.account.children(folder_id)
                            if item["name"] == name and item["type"] == "folder"]
                folder_id = existing[0]["id"] if existing else self.account.add_folder(folder_id, name)["id"]
            if request.route_path == "/_emulator/folder":
                return Reply.json(200, {"id": folder_id})
            return Reply.json(200, {"id": self.account.add_file(folder_id, names[-1], request.body)["id"]})
        return Reply.json(404, {"error": "no such control path"})


ROUTES = [
    ("GET", r"/api/oauth2/authorize", "authorize", False),
    ("POST", r"/oauth2/token", "token", False),
    ("GET", r"/2\.0/users/me", "users_me", True),
    ("GET", r"/2\.0/folders/([^/]+)/items", "folder_items", True),
    ("POST", r"/2\.0/folders", "folder_create", True),
    ("GET", r"/2\.0/folders/([^/]+)", "folder_info", True),
    ("PUT", r"/2\.0/folders/([^/]+)", "folder_update", True),
    ("DELETE", r"/2\.0/folders/([^/]+)", "folder_delete", True),
    ("GET", r"/2\.0/files/([^/]+)/content", "file_content", True),
    ("GET", r"/2\.0/files/([^/]+)", "file_info", True),
    ("DELETE", r"/2\.0/files/([^/]+)", "file_delete", True),
    ("POST", r"/api/2\.0/files/content", "upload", True),
    ("GET", r"/d/1/([^/]+)/download", "download", False),
]


def route(method, path):
    """The endpoint, its match and whether it takes a token; 405 or 404 when there is none."""
    known_path = False
    for route_method, pattern, endpoint, bearer in ROUTES:
        match = re.fullmatch(pattern, path)
        if match:
            known_path = True
            if route_method == method:
                return endpoint, match, bearer
    if known_path:
        raise ApiError(405, "method_not_allowed", "Method Not Allowed")
    raise ApiError(404, "not_found", "Not Found")


def handler_class(emulator):
    class Handler(ServiceHandler, methods=("GET", "POST", "PUT", "DELETE", "HEAD")):
        refusals = (ApiError,)

        def take_target(self):
            split = urllib.parse.urlsplit(self.path)
            self.route_path = urllib.parse.unquote(split.path)
            self.query = {name: values[0] for name, values in
                          urllib.parse.parse_qs(split.query, keep_blank_values=True).items()}
            self.content_type = self.headers.get("Content-Type")

        def throttled_reply(self, switch):
            if switch == "status_429":
                return ApiError(429, "rate_limit_exceeded", "Request rate limit exceeded, try again later.",
                                headers=[("Retry-After", "0")]).reply()
            return ApiError(503, "unavailable", "Unavailable", headers=[("Retry-After", "0")]).reply()

        def answer(self, path):
            with emulator.lock:
                try:
                    endpoint, match, bearer = route(self.command, path)
                    if bearer:
                        token = emulator.grants.check(self.headers.get("Authorization"))
                        if emulator.faults.take("expire_token", path):
                            emulator.grants.expire(token)
                            raise Unauthorized(INVALID_TOKEN)
                    reply = getattr(emulator, endpoint)(self, match)
                except (ApiError, OAuthError, Unauthorized) as refusal:
                    reply = refusal.reply()
                return corrupted(reply, emulator.faults, path)

        def length_required_reply(self):
            return ApiError(411, "length_required", "content-length header was required, but not provided.").reply()

        def reply_headers(self):
            return [("BOX-REQUEST-ID", random_text(24).lower())]

    Handler.emulator = emulator
    return Handler


def main():
    parser = arguments(__doc__)
    parser.add_argument("--client-id", required=True)
    parser.add_argument("--client-secret", required=True)
    parser.add_argument("--redirect-uri", default="http://localhost")
    parser.add_argument("--login", default="owner@example.com")
    parser.add_argument("--space-amount", type=int, default=10 * 1024 ** 3)
    parser.add_argument("--max-upload-size", type=int, default=262144000)
    options = parser.parse_args()

    emulator = Emulator(options)
    serve(options.port, handler_class(emulator), lambda port: setattr(emulator, "port", port))


if __name__ == "__main__":
    main()
