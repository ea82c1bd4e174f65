"""The state of the Drive emulator: the account's items by id on disk, the search language
and the partial-response "fields" selection as the service has them, and the login's grants.

Items are kept by id in FOLDER/index.json and their bytes in FOLDER/blobs/<id>; names are data
and never reach a path. Ids are made of letters, digits, "-" and "_" only, and an id from a
request is checked against that alphabet before any lookup.
"""

import base64
import hashlib
import json
import os
import re
import string
import time

from emulator_support import random_text

FOLDER_TYPE = "application/vnd.google-apps.folder"
ID_PATTERN = re.compile(r"[A-Za-z0-9_-]{1,100}")
FILE_KEYS = {"kind", "id", "name", "mimeType", "parents", "trashed", "size", "md5Checksum", "createdTime",
             "modifiedTime", "webContentLink", "webViewLink", "ownedByMe", "version", "description",
             "starred", "explicitlyTrashed", "spaces", "quotaBytesUsed"}
DEFAULT_FILE_KEYS = ("kind", "id", "name", "mimeType")
SCOPE_ROOT = "https://www.googleapis.com/auth/"
DRIVE_SCOPES = {SCOPE_ROOT + "drive", SCOPE_ROOT + "drive.file"}
KNOWN_SCOPES = DRIVE_SCOPES | {"openid", "email", "profile", SCOPE_ROOT + "userinfo.email",
                               SCOPE_ROOT + "userinfo.profile"}
CODE_SECONDS = 600
REALM = 'Bearer realm="https://accounts.google.com/"'


class DriveError(Exception):
    """A refusal in the service's error object: {"error": {"code", "message", "errors": [...]}}."""

    def __init__(self, status, reason, message, location=None, location_type="parameter", headers=()):
        super().__init__(message)
        self.status, self.reason, self.message = status, reason, message
        self.location, self.location_type, self.headers = location, location_type, list(headers)

    def body(self):
        detail = {"domain": "global", "reason": self.reason, "message": self.message}
        if self.location is not None:
            detail.update(locationType=self.location_type, location=self.location)
        return {"error": {"code": self.status, "message": self.message, "errors": [detail]}}


def not_found(file_id):
    return DriveError(404, "notFound", f"File not found: {file_id}.", "fileId")


def invalid(location, message="Invalid Value"):
    return DriveError(400, "invalid", message, location)


def new_id(length=33):
    return "1" + random_text(length - 1, string.ascii_letters + string.digits + "-_")


def rfc3339(seconds):
    return time.strftime("%Y-%m-%dT%H:%M:%S", time.gmtime(seconds)) + f".{int(seconds * 1000) % 1000:03d}Z"


class Account:
    """The items of one user's Drive, by id, with the root folder "My Drive"."""

    def __init__(self, folder, quota_limit):
        self.blobs = os.path.join(folder, "blobs")
        self.uploads = os.path.join(folder, "uploads")
        self.index_path = os.path.join(folder, "index.json")
        self.quota_limit = quota_limit
        os.makedirs(self.blobs, exist_ok=True)
        os.makedirs(self.uploads, exist_ok=True)
        if os.path.exists(self.index_path):
            with open(self.index_path, encoding="utf-8") as index:
                saved = json.load(index)
            self.items, self.root_id, self.sequence = saved["items"], saved["root"], saved["sequence"]
        else:
            self.root_id, self.sequence = "0A" + new_id(18)[1:] + "Uk9PVA", 0
            self.items = {self.root_id: self.record(self.root_id, "My Drive", FOLDER_TYPE, None, True)}
            self.save()

    def record(self, item_id, name, mime_type, parent, by_app):
        self.sequence += 1
        moment = time.time()
        return {"id": item_id, "name": name, "mimeType": mime_type, "parent": parent, "trashed": False,
                "createdTime": moment, "modifiedTime": moment, "order": self.sequence, "app": by_app,
                "version": 1}

    def save(self):
        temporary = self.index_path + ".new"
        with open(temporary, "w", encoding="utf-8") as index:
            json.dump({"items": self.items, "root": self.root_id, "sequence": self.sequence}, index)
        os.replace(temporary, self.index_path)

    # Lookup, as seen by a token: the scope drive.file sees only what the app made.

    def resolve(self, file_id):
        return self.root_id if file_id == "root" else file_id

    def get(self, file_id, full_scope):
        item_id = self.resolve(file_id)
        item = self.items.get(item_id) if ID_PATTERN.fullmatch(item_id or "") else None
        if item is None or not (item["app"] or full_scope):
            raise not_found(file_id)
        return item

    def folder(self, file_id, full_scope):
        item = self.get(file_id, full_scope)
        if item["mimeType"] != FOLDER_TYPE:
            raise DriveError(400, "badRequest", "The specified parent is not a folder.", "parents")
        return item

    def visible(self, full_scope):
        return [item for item in self.items.values()
                if item["id"] != self.root_id and (item["app"] or full_scope)]

    def children(self, folder_id):
        return [item for item in self.items.values() if item["parent"] == folder_id]

    def path_of(self, item):
        names = []
        while item["parent"] is not None:
            names.insert(0, item["name"])
            item = self.items[item["parent"]]
        return "/" + "/".join(names)

    # Changes.

    def usage(self, trashed=None):
        return sum(item.get("size", 0) for item in self.items.values()
                   if trashed is None or item["trashed"] == trashed)

    def add(self, parent_id, name, mime_type, data=None, by_app=True):
        if data is not None and self.quota_limit and self.usage() + len(data) > self.quota_limit:
            raise DriveError(403, "storageQuotaExceeded", "The user's Drive storage quota has been exceeded.")
        item = self.record(new_id(), name, mime_type, parent_id, by_app)
        if data is not None:
            item.update(size=len(data), md5Checksum=hashlib.md5(data).hexdigest())
            with open(os.path.join(self.blobs, item["id"]), "wb") as stored:
                stored.write(data)
        self.items[item["id"]] = item
        self.save()
        return item

    def touch(self, item):
        self.sequence += 1
        item.update(modifiedTime=time.time(), order=self.sequence, version=item["version"] + 1)
        self.save()

    def remove(self, item):
        for child in self.children(item["id"]):
            self.remove(child)
        if "size" in item:
            os.remove(os.path.join(self.blobs, item["id"]))
        del self.items[item["id"]]

    def read(self, item):
        with open(os.path.join(self.blobs, item["id"]), "rb") as stored:
            return stored.read()

    def resource(self, item, base_url):
        """The full file resource of ITEM."""
        shown = {"kind": "drive#file", "id": item["id"], "name": item["name"], "mimeType": item["mimeType"],
                 "parents": [item["parent"]] if item["parent"] else [], "trashed": item["trashed"],
                 "explicitlyTrashed": item["trashed"], "starred": False, "spaces": ["drive"],
                 "createdTime": rfc3339(item["createdTime"]), "modifiedTime": rfc3339(item["modifiedTime"]),
                 "ownedByMe": True, "version": str(item["version"]), "description": "",
                 "webViewLink": f"{base_url}/file/d/{item['id']}/view", "quotaBytesUsed": str(item.get("size", 0))}
        if "size" in item:
            shown.update(size=str(item["size"]), md5Checksum=item["md5Checksum"],
                         webContentLink=f"{base_url}/uc?id={item['id']}&export=download")
        return shown


# The search language: terms joined by and, or, not and parentheses.

TOKEN = re.compile(r"\s*(?:(?P<string>'(?:[^'\\]|\\.)*')|(?P<word>[A-Za-z]+)|(?P<op>!=|<=|>=|=|<|>|\(|\)))")


def tokens_of(text):
    position, found = 0, []
    while position < len(text):
        if not text[position:].strip():
            break
        match = TOKEN.match(text, position)
        if not match:
            raise invalid("q")
        position = match.end()
        if match.group("string") is not None:
            found.append(("string", re.sub(r"\\(.)", r"\1", match.group("string")[1:-1])))
        elif match.group("word") is not None:
            found.append(("word", match.group("word")))
        else:
            found.append(("op", match.group("op")))
    return found


class Query:
    """A parsed q: a predicate on items, given the account's root id."""

    def __init__(self, text, root_id):
        self.tokens, self.position, self.root_id = tokens_of(text), 0, root_id
        self.test = self.either() if self.tokens else (lambda item: True)
        if self.position != len(self.tokens):
            raise invalid("q")

    def peek(self, kind=None, value=None):
        if self.position >= len(self.tokens):
            return None
        token = self.tokens[self.position]
        if (kind and token[0] != kind) or (value and token[1].lower() != value.lower()):
            return None
        return token

    def take(self, kind=None, value=None):
        token = self.peek(kind, value)
        if token is None:
            raise invalid("q")
        self.position += 1
        return token[1]

    def either(self):
        tests = [self.both()]
        while self.peek("word", "or"):
            self.take()
            tests.append(self.both())
        return lambda item: any(test(item) for test in tests)

    def both(self):
        tests = [self.single()]
        while self.peek("word", "and"):
            self.take()
            tests.append(self.single())
        return lambda item: all(test(item) for test in tests)

    def single(self):
        if self.peek("word", "not"):
            self.take()
            inner = self.single()
            return lambda item: not inner(item)
        if self.peek("op", "("):
            self.take()
            inner = self.either()
            self.take("op", ")")
            return inner
        if self.peek("string"):
            value = self.take()
            self.take("word", "in")
            if self.take("word") != "parents":
                raise invalid("q")
            parent = self.root_id if value == "root" else value
            return lambda item: item["parent"] == parent
        field, operator = self.take("word"), self.take()
        if field == "trashed" and operator in ("=", "!="):
            wanted = self.take("word").lower()
            if wanted not in ("true", "false"):
                raise invalid("q")
            return lambda item: (item["trashed"] == (wanted == "true")) == (operator == "=")
        if field in ("name", "mimeType") and operator in ("=", "!=", "contains"):
            value = self.take("string")
            if operator == "contains":
                return lambda item: value.lower() in item[field].lower()
            return lambda item: (item[field] == value) == (operator == "=")
        raise invalid("q")


# Partial responses: "kind,files(id,name)", "files/id", "*".

def parse_fields(text):
    """The selection as a tree {name: subtree or None (all of it)}; "*" selects everything."""
    tree, position = {}, 0
    text = text.replace(" ", "")

    def selection(position, into):
        while True:
            match = re.compile(r"[A-Za-z*]+(?:/[A-Za-z*]+)*").match(text, position)
            if not match:
                raise invalid("fields", f"Invalid field selection {text}")
            names, position = match.group(0).split("/"), match.end()
            node = into
            for name in names[:-1]:
                node = node.setdefault(name, {}) or {}
            if position < len(text) and text[position] == "(":
                sub = node.setdefault(names[-1], {}) or {}
                node[names[-1]] = sub
                position = selection(position + 1, sub)
                if position >= len(text) or text[position] != ")":
                    raise invalid("fields", f"Invalid field selection {text}")
                position += 1
            else:
                node[names[-1]] = None
            if position < len(text) and text[position] == ",":
                position += 1
                continue
            return position

    if selection(position, tree) != len(text):
        raise invalid("fields", f"Invalid field selection {text}")
    return tree


def select(value, tree, schema):
    """VALUE cut to TREE; SCHEMA names the fields that exist ({name: sub-schema or None})."""
    if tree is None or "*" in tree:
        return value
    if isinstance(value, list):
        return [select(each, tree, schema) for each in value]
    chosen = {}
    for name, sub in tree.items():
        if name not in schema:
            raise invalid("fields", f"Invalid field selection {name}")
        if name in value:
            chosen[name] = select(value[name], sub, schema[name] or {}) if sub is not None else value[name]
    return chosen


FILE_SCHEMA = {name: None for name in FILE_KEYS}
LIST_SCHEMA = {"kind": None, "nextPageToken": None, "incompleteSearch": None, "files": FILE_SCHEMA}
ABOUT_SCHEMA = {"kind": None, "user": {name: None for name in ("kind", "displayName", "photoLink", "me",
                                                                 "permissionId", "emailAddress")},
                "storageQuota": {name: None for name in ("limit", "usage", "usageInDrive", "usageInDriveTrash")},
                "maxUploadSize": None, "appInstalled": None}


# The login: codes, access tokens and refresh tokens.

class OAuthError(Exception):
    def __init__(self, status, error, description):
        super().__init__(description)
        self.status, self.error, self.description = status, error, description


class Grants:
    """Codes, access tokens (each with its scopes) and refresh tokens, in memory."""

    def __init__(self, client_id, client_secret, token_seconds):
        self.client_id, self.client_secret, self.token_seconds = client_id, client_secret, token_seconds
        self.codes, self.access, self.refresh = {}, {}, {}

    def new_code(self, redirect, scopes, challenge, method):
        code = "4/0A" + random_text(60)
        self.codes[code] = (time.monotonic() + CODE_SECONDS, redirect, scopes, challenge, method)
        return code

    def access_token(self, scopes):
        token = "ya29." + random_text(120)
        self.access[token] = (time.monotonic() + self.token_seconds, scopes)
        return token

    def pair(self, scopes=(SCOPE_ROOT + "drive.file",)):
        refresh = "1//0" + random_text(100)
        self.refresh[refresh] = tuple(scopes)
        return {"access_token": self.access_token(tuple(scopes)), "expires_in": self.token_seconds,
                "refresh_token": refresh, "scope": " ".join(scopes), "token_type": "Bearer"}

    def redeem(self, form):
        client = form.get("client_id")
        if not client:
            raise OAuthError(400, "invalid_request", "Could not determine client ID from request.")
        if client != self.client_id:
            raise OAuthError(401, "invalid_client", "The OAuth client was not found.")
        if "client_secret" not in form:
            raise OAuthError(400, "invalid_request", "client_secret is missing.")
        if form["client_secret"] != self.client_secret:
            raise OAuthError(401, "invalid_client", "Unauthorized")
        grant = form.get("grant_type")
        if grant == "authorization_code":
            return self.redeem_code(form)
        if grant == "refresh_token":
            scopes = self.refresh.get(form.get("refresh_token"))
            if scopes is None:
                raise OAuthError(400, "invalid_grant", "Token has been expired or revoked.")
            return {"access_token": self.access_token(scopes), "expires_in": self.token_seconds,
                    "scope": " ".join(scopes), "token_type": "Bearer"}
        raise OAuthError(400, "unsupported_grant_type", f"Invalid grant_type: {grant or ''}")

    def redeem_code(self, form):
        entry = self.codes.pop(form.get("code", ""), None)
        if entry is None or time.monotonic() > entry[0]:
            raise OAuthError(400, "invalid_grant", "Malformed auth code." if entry is None else "Bad Request")
        _, redirect, scopes, challenge, method = entry
        if form.get("redirect_uri") != redirect:
            raise OAuthError(400, "redirect_uri_mismatch", "Bad Request")
        if challenge is not None:
            verifier = form.get("code_verifier")
            if not verifier:
                raise OAuthError(400, "invalid_grant", "Missing code verifier.")
            if method == "S256":
                digest = hashlib.sha256(verifier.encode()).digest()
                verifier = base64.urlsafe_b64encode(digest).decode().rstrip("=")
            if verifier != challenge:
                raise OAuthError(400, "invalid_grant", "Invalid code verifier.")
        return self.pair(scopes)

    def check(self, header):
        """The scopes of a live bearer token in HEADER, and the token."""
        scheme, _, token = (header or "").partition(" ")
        token = token.strip()
        if scheme.lower() != "bearer" or not token:
            raise DriveError(401, "required", "Login Required", "Authorization", "header",
                             [("WWW-Authenticate", REALM)])
        entry = self.access.get(token)
        if entry is None or time.monotonic() > entry[0]:
            raise expired()
        if not DRIVE_SCOPES & set(entry[1]):
            raise DriveError(403, "insufficientPermissions",
                             "Insufficient Permission: Request had insufficient authentication scopes.")
        return entry[1], token

    def expire(self, token=None):
        expired_tokens = [token] if token is not None else list(self.access)
        for each in expired_tokens:
            self.access.pop(each, None)
        return len(expired_tokens)


def expired():
    return DriveError(401, "authError", "Invalid Credentials", "Authorization", "header",
                      [("WWW-Authenticate", REALM + ', error="invalid_token"')])
