#!/usr/bin/python3
"""An emulator of the Drive v3 interface and its OAuth 2.0 login, for the tests, on 127.0.0.1.

It serves on one port the API host (/drive/v3/..., /batch/drive/v3), the upload host
(/upload/drive/v3/files) and the OAuth hosts (/o/oauth2/auth, /o/oauth2/v2/auth, /token,
/o/oauth2/token), the paths not clashing. Written from the published reference:

- Files: https://developers.google.com/drive/api/reference/rest/v3/files/list (q, pageSize 1 to
  1000, default 100, pageToken, orderBy; trashed items listed unless q says trashed=false),
  .../v3/files/create, .../v3/files/get (alt=media gives the bytes; Docs Editors files and
  folders are not downloadable: 403 fileNotDownloadable), .../v3/files/update (PATCH; parents
  are changed with addParents and removeParents only), .../v3/files/delete (204, a folder goes
  with everything under it), .../v3/about/get (the fields parameter is required),
  https://developers.google.com/drive/api/reference/rest/v3/files (the resource; int64 values
  such as size are JSON strings; folders have no size)
- Search: https://developers.google.com/drive/api/guides/search-files and
  https://developers.google.com/drive/api/guides/ref-search-terms (name, mimeType, trashed,
  'ID' in parents; and, or, not; strings in single quotes, \\' and \\\\ escaped)
- Partial responses: https://developers.google.com/drive/api/guides/fields-parameter
  (default fields of a file: kind, id, name, mimeType)
- Uploads: https://developers.google.com/drive/api/guides/manage-uploads (uploadType media,
  multipart with multipart/related, resumable: the session URI in Location, PUT of the
  bytes, Content-Range "bytes A-B/T" or "bytes */T" to ask, 308 with Range, chunks in
  multiples of 256 KiB but the last, 404 for a session that is gone)
- Batches: https://developers.google.com/drive/api/guides/performance#batch-requests
  (multipart/mixed of application/http parts, at most 100, no media in a batch)
- Errors: https://developers.google.com/drive/api/guides/handle-errors (the error object,
  notFound, rateLimitExceeded 429, userRateLimitExceeded, storageQuotaExceeded,
  fileNotDownloadable, authError "Invalid Credentials", backendError)
- Login: https://developers.google.com/identity/protocols/oauth2/native-app (loopback or
  reversed-client-id redirect, response_type=code, scope, state, PKCE code_challenge S256 or
  plain; token endpoint with grant_type authorization_code or refresh_token, form-encoded,
  client_secret; the refresh reply has no new refresh token; invalid_grant, invalid_client,
  redirect_uri_mismatch, unsupported_grant_type); scopes:
  https://developers.google.com/drive/api/guides/api-specific-auth (drive.file sees only the
  files the app made)

What the client must send:
- Login: a browser GET of /o/oauth2/auth (or /o/oauth2/v2/auth) with client_id,
  redirect_uri (http://127.0.0.1[:port][/path], http://localhost..., or the reversed client id
  "com.googleusercontent.apps.<project>:/path"), response_type=code, scope (space-separated:
  https://www.googleapis.com/auth/drive.file, .../auth/drive, openid, email, profile,
  .../auth/userinfo.email), state, optionally code_challenge[_method]. The user agrees at once:
  302 to redirect_uri?code=...&scope=...&state=... Then POST /token, application/
  x-www-form-urlencoded: grant_type=authorization_code, code, client_id, client_secret,
  redirect_uri (the same), code_verifier when a challenge was sent. Reply: access_token,
  expires_in (3599, or --token-seconds), refresh_token, scope, token_type "Bearer". Refresh:
  grant_type=refresh_token, refresh_token, client_id, client_secret; the refresh token stays.
- API calls: "Authorization: Bearer TOKEN" (a token in the query is not taken), a token of a
  Drive scope. Bodies with Content-Length (no chunked bodies), JSON as application/json.
- GET /drive/v3/about?fields=user,storageQuota ; GET /drive/v3/files?q=...&fields=... ;
  POST /drive/v3/files {name, mimeType, parents: [one id]} (no parents, or [""], is My Drive);
  GET /drive/v3/files/ID?alt=media ; DELETE /drive/v3/files/ID ; PATCH /drive/v3/files/ID {name}.
- Upload: POST /upload/drive/v3/files?uploadType=resumable with the metadata as JSON
  (optionally X-Upload-Content-Type, X-Upload-Content-Length), then PUT of the bytes to the
  Location it answers (/upload/drive/v3/files?uploadType=resumable&upload_id=...), whole or
  in chunks with Content-Range; or uploadType=multipart (metadata part, then media part).
- Lists come newest first (the last changed item first); ids are [A-Za-z0-9_-].

The account lives in FOLDER (index.json, blobs/<id>, uploads/<upload id>), nothing elsewhere;
tokens in memory. Prints "LISTENING <port>" once it listens, then "<METHOD> <path>" as each
request to the service arrives (a batch's inner requests too). Test controls (never printed):
  POST /_emulator/fault?name=N&count=C[&path=PREFIX][&skip=K]  the next C requests (whose path
       starts with PREFIX, after K of them pass) get fault N (see SWITCHES); count 0 clears it.
  POST /_emulator/token                a token pair, as after a login.
  POST /_emulator/expire_access_token  every access token issued so far expires now.
  POST /_emulator/folder?path=/A/B[&foreign=1]     the missing folders; answers the last id.
  POST /_emulator/file?path=/A/B/name[&foreign=1]  a file (body: its bytes) and its folders;
       foreign items were not made by the app, so a drive.file token doesn't see them.
  POST /_emulator/quota?limit=BYTES    the quota; 0 means none.
  GET  /_emulator/tree                 every item by path.
"""

import email.message
import http.server
import json
import os
import re
import threading
import urllib.parse

from emulator_support import Faults, Reply, ServiceHandler, arguments, print_line, random_text, serve
from gdrive_drive import (ABOUT_SCHEMA, DEFAULT_FILE_KEYS, FILE_SCHEMA, FOLDER_TYPE, ID_PATTERN, KNOWN_SCOPES,
                          LIST_SCHEMA, SCOPE_ROOT, Account, DriveError, Grants, OAuthError, Query, expired, invalid,
                          new_id, not_found, parse_fields, select)

SWITCHES = {
    "expire_token": "the access token of the request expires: 401 Invalid Credentials",
    "status_429": "429 rateLimitExceeded with Retry-After: 0",
    "status_503": "503 backendError with Retry-After: 0",
    "drop_mid_body": "the connection closed half way through the request's body or the reply's",
    "malformed_json": "a 200 whose JSON is cut in the middle",
    "huge_json": "a 200 whose JSON carries 8 MiB more",
    "deep_json": "a 200 whose JSON nests 10000 deep",
    "hostile_listing": "a listing with the names '..', 'a/b', '$(touch pwned)' and an id '../../x'",
    "refuse_grant": "the consent page answers error=access_denied",
    "invalid_grant": "the token endpoint refuses the code or refresh token",
}
CHUNK_UNIT = 256 * 1024
BATCH_LIMIT = 100
HUGE_BYTES = 8 * 1024 * 1024
DEEP_LEVELS = 10000
HOSTILE_BYTES = b"hostile\n"
LOOPBACK = re.compile(r"http://(127\.0\.0\.1|\[::1\]|localhost)(:\d{1,5})?(/[^?#]*)?")
UPLOAD_PATH = "/upload/drive/v3/files"


def json_reply(status, value, headers=()):
    """A JSON reply as the service prints it: indented, with its charset."""
    return Reply(status, json.dumps(value, indent=1).encode(), "application/json; charset=UTF-8", headers)


def error_reply(refusal):
    return json_reply(refusal.status, refusal.body(), refusal.headers)


def page(status, text):
    return Reply(status, f"<html><body><p>Error {status}: {text}</p></body></html>".encode(), "text/html")


def form_of(request):
    if not (request.content_type or "").lower().startswith("application/x-www-form-urlencoded"):
        raise OAuthError(400, "invalid_request", "Required parameter is missing: grant_type")
    return {name: values[0] for name, values in
            urllib.parse.parse_qs(request.body.decode("utf-8", "replace"), keep_blank_values=True).items()}


def json_body(body, content_type, required=True):
    if not body and not required:
        return {}
    if not (content_type or "").lower().startswith("application/json"):
        raise DriveError(400, "badContent", f"Media type '{content_type}' is not supported. "
                         "Valid media types: [application/json]", "Content-Type", "header")
    try:
        value = json.loads(body)
    except ValueError:
        raise DriveError(400, "parseError", "Parse Error") from None
    if not isinstance(value, dict):
        raise DriveError(400, "parseError", "Parse Error")
    return value


def whole(query, name, default, low, high):
    text = query.get(name)
    if text is None:
        return default
    if not text.isdigit() or not low <= int(text) <= high:
        raise invalid(name)
    return int(text)


def related_parts(body, content_type):
    """The parts of a multipart/related or multipart/mixed body, as (headers dict, bytes)."""
    match = re.match(r'multipart/(related|mixed)\s*;.*boundary=("?)([^";]+)\2', content_type or "", re.I)
    if not match:
        raise DriveError(400, "badContent", "Invalid multipart request with 0 mime parts.")
    delimiter = b"\r\n--" + match.group(3).encode()
    malformed = DriveError(400, "badContent", "Malformed multipart body.")
    # Each delimiter follows a line break, so a body that merely holds the boundary's text is whole.
    chunks = (b"\r\n" + body).split(delimiter)
    if not body.startswith(delimiter[2:]) or len(chunks) < 3 or not chunks[-1].startswith(b"--"):
        raise malformed
    parts = []
    for chunk in chunks[1:-1]:
        if not chunk.startswith(b"\r\n"):
            raise malformed
        if chunk.startswith(b"\r\n\r\n"):
            head, data = b"", chunk[4:]
        else:
            head, separator, data = chunk[2:].partition(b"\r\n\r\n")
            if not separator:
                raise malformed
        headers = {}
        for line in head.decode("utf-8", "replace").split("\r\n"):
            name, colon, value = line.partition(":")
            if colon:
                headers[name.strip().lower()] = value.strip()
        parts.append((headers, data))
    return parts


def corrupted(reply, faults, path):
    """A JSON reply as the JSON switches make it."""
    if not (reply.content_type or "").startswith("application/json") or not 200 <= reply.status < 300:
        return reply
    if faults.take("malformed_json", path):
        reply.body = reply.body[: len(reply.body) // 2] + b'",]}{'
    elif faults.take("huge_json", path):
        value = json.loads(reply.body)
        value["padding"] = "x" * HUGE_BYTES
        reply.body = json.dumps(value).encode()
    elif faults.take("deep_json", path):
        reply.body = b'{"files":' + b"[" * DEEP_LEVELS + b"]" * DEEP_LEVELS + b',"kind":"drive#fileList"}'
    return reply


class Emulator:
    def __init__(self, options):
        self.account = Account(options.folder, options.quota_limit)
        self.grants = Grants(options.client_id, options.client_secret, options.token_seconds)
        self.email = options.email
        self.faults = Faults()
        self.sessions = {}
        self.page_tokens = {}
        self.lock = threading.RLock()
        self.port = 0

    def base(self):
        return f"http://127.0.0.1:{self.port}"

    def resource(self, item, query, default=DEFAULT_FILE_KEYS):
        full = self.account.resource(item, self.base())
        fields = query.get("fields")
        tree = parse_fields(fields) if fields is not None else {name: None for name in default}
        return select(full, tree, FILE_SCHEMA)

    def hostile_items(self):
        items = [(f"hostile{number}", name, "application/octet-stream") for number, name in
                 ((1, ".."), (2, "a/b"), (3, "$(touch pwned)"))] + [("../../x", "STOWHAVEN", FOLDER_TYPE)]
        return [{"kind": "drive#file", "id": item_id, "name": name, "mimeType": mime, "parents": ["root"],
                 "trashed": False, "size": str(len(HOSTILE_BYTES)), "modifiedTime": "2020-01-01T00:00:00.000Z",
                 "createdTime": "2020-01-01T00:00:00.000Z"}
                for item_id, name, mime in items]

    # OAuth.

    def authorize(self, request, _):
        query = request.query
        if query.get("client_id") != self.grants.client_id:
            return page(401, "invalid_client: The OAuth client was not found.")
        redirect = query.get("redirect_uri", "")
        reversed_id = ".".join(reversed(self.grants.client_id.split(".")))
        if not (LOOPBACK.fullmatch(redirect) or redirect.startswith(reversed_id + ":")):
            return page(400, "redirect_uri_mismatch")
        scopes = query.get("scope", "").split()
        if not scopes:
            return page(400, "invalid_request: Missing required parameter: scope")
        if not set(scopes) <= KNOWN_SCOPES:
            return page(400, "invalid_scope: Some requested scopes were invalid.")
        challenge, method = query.get("code_challenge"), query.get("code_challenge_method", "plain")
        if challenge is not None and method not in ("S256", "plain"):
            return page(400, "invalid_request: Invalid code_challenge_method")
        answer = {}
        if query.get("response_type") != "code":
            answer["error"] = "unsupported_response_type"
        elif self.faults.take("refuse_grant", request.route_path):
            answer["error"] = "access_denied"
        else:
            answer.update(code=self.grants.new_code(redirect, tuple(scopes), challenge, method),
                          scope=" ".join(scopes))
        if "state" in query:
            answer["state"] = query["state"]
        separator = "&" if "?" in redirect else "?"
        return Reply(302, headers=[("Location", redirect + separator + urllib.parse.urlencode(answer))])

    def token(self, request, _):
        try:
            form = form_of(request)
            if self.faults.take("invalid_grant", request.route_path):
                raise OAuthError(400, "invalid_grant", "Token has been expired or revoked.")
            return json_reply(200, self.grants.redeem(form), [("Cache-Control", "no-cache, no-store")])
        except OAuthError as refusal:
            return json_reply(refusal.status, {"error": refusal.error, "error_description": refusal.description})

    # Drive.

    def about(self, request, _):
        if request.query.get("fields") is None:
            raise DriveError(400, "required", "The 'fields' parameter is required for this method.", "fields")
        quota = {"usage": str(self.account.usage()), "usageInDrive": str(self.account.usage()),
                 "usageInDriveTrash": str(self.account.usage(trashed=True))}
        if self.account.quota_limit:
            quota["limit"] = str(self.account.quota_limit)
        about = {"kind": "drive#about", "storageQuota": quota, "maxUploadSize": "5242880000000",
                 "appInstalled": True,
                 "user": {"kind": "drive#user", "displayName": "Stowhaven Tester", "me": True,
                          "permissionId": "01234567890123456789", "emailAddress": self.email,
                          "photoLink": f"{self.base()}/photo.jpg"}}
        return json_reply(200, select(about, parse_fields(request.query["fields"]), ABOUT_SCHEMA))

    def files_list(self, request, _):
        query = request.query
        size = whole(query, "pageSize", 100, 1, 1000)
        for name, allowed in (("spaces", ("drive",)), ("corpora", ("user",))):
            if query.get(name, allowed[0]) not in allowed:
                raise invalid(name)
        order = query.get("orderBy")
        if order is not None and not re.fullmatch(r"(name|folder|createdTime|modifiedTime)( desc)?", order):
            raise invalid("orderBy")
        text = query.get("q", "")
        token = query.get("pageToken")
        offset = 0
        if token is not None:
            if self.page_tokens.get(token, (None,))[0] != (text, order):
                raise invalid("pageToken")
            offset = self.page_tokens[token][1]
        test = Query(text, self.account.root_id).test
        items = sorted((item for item in self.account.visible(request.full_scope) if test(item)),
                       key=lambda item: -item["order"])
        if order:
            key, descending = order.split(" ")[0], order.endswith(" desc")
            items.sort(key=lambda item: item["mimeType"] != FOLDER_TYPE if key == "folder" else item[key],
                       reverse=descending)
        found = [self.account.resource(item, self.base()) for item in items[offset:offset + size]]
        if self.faults.take("hostile_listing", request.route_path):
            found = self.hostile_items() + found
        listing = {"kind": "drive#fileList", "incompleteSearch": False, "files": found}
        if offset + size < len(items):
            listing["nextPageToken"] = random_text(40)
            self.page_tokens[listing["nextPageToken"]] = ((text, order), offset + size)
        fields = query.get("fields")
        tree = parse_fields(fields) if fields is not None else {"kind": None, "nextPageToken": None,
                                                              "incompleteSearch": None,
                                                              "files": dict.fromkeys(DEFAULT_FILE_KEYS)}
        return json_reply(200, select(listing, tree, LIST_SCHEMA))

    def parent_of(self, metadata, full_scope):
        parents = metadata.get("parents", [])
        if not isinstance(parents, list) or not all(isinstance(each, str) for each in parents):
            raise invalid("parents")
        if len(parents) > 1:
            raise DriveError(403, "cannotAddParent", "Increasing the number of parents is not allowed.")
        if not parents or parents[0] == "":
            return self.account.root_id
        return self.account.folder(parents[0], full_scope)["id"]

    def checked_metadata(self, metadata, full_scope):
        name = metadata.get("name", "Untitled")
        mime = metadata.get("mimeType")
        if not isinstance(name, str) or not (mime is None or isinstance(mime, str)):
            raise invalid("name" if not isinstance(name, str) else "mimeType")
        if "id" in metadata and not (isinstance(metadata["id"], str) and ID_PATTERN.fullmatch(metadata["id"])):
            raise invalid("id")
        return name, mime, self.parent_of(metadata, full_scope)

    def files_create(self, request, _):
        metadata = json_body(request.body, request.content_type, required=False)
        name, mime, parent = self.checked_metadata(metadata, request.full_scope)
        if mime != FOLDER_TYPE:
            mime, data = mime or "application/octet-stream", b""
        else:
            data = None
        item = self.account.add(parent, name, mime, data)
        return json_reply(200, self.resource(item, request.query))

    def files_get(self, request, match):
        alt = request.query.get("alt", "json")
        if alt == "media" and match.group(1).startswith("hostile"):
            return Reply(200, HOSTILE_BYTES, "application/octet-stream")
        item = self.account.get(match.group(1), request.full_scope)
        if alt == "json":
            return json_reply(200, self.resource(item, request.query))
        if alt != "media":
            raise invalid("alt")
        if "size" not in item:
            raise DriveError(403, "fileNotDownloadable", "Only files with binary content can be downloaded. "
                             "Use Export with Docs Editors files.", "alt")
        return self.ranged(self.account.read(item), item["mimeType"], request.headers.get("Range"))

    def ranged(self, data, mime, wanted):
        match = re.fullmatch(r"bytes=(\d*)-(\d*)", wanted or "")
        if not match or not (match.group(1) or match.group(2)):
            return Reply(200, data, mime)
        if match.group(1):
            first = int(match.group(1))
            last = min(int(match.group(2)), len(data) - 1) if match.group(2) else len(data) - 1
        else:
            first, last = max(len(data) - int(match.group(2)), 0), len(data) - 1
        if first >= len(data) or first > last:
            return Reply(416, b"", None, [("Content-Range", f"bytes */{len(data)}")])
        return Reply(206, data[first:last + 1], mime, [("Content-Range", f"bytes {first}-{last}/{len(data)}")])

    def files_update(self, request, match):
        item = self.account.get(match.group(1), request.full_scope)
        metadata = json_body(request.body, request.content_type, required=False)
        if "parents" in metadata:
            raise DriveError(403, "fieldNotWritable", "The resource body includes fields which are not "
                             "directly writable. Use the addParents and removeParents parameters instead.")
        if item["id"] == self.account.root_id:
            raise DriveError(403, "insufficientFilePermissions",
                             "The user does not have sufficient permissions for this file.")
        if "name" in metadata and not isinstance(metadata["name"], str):
            raise invalid("name")
        if "trashed" in metadata and not isinstance(metadata["trashed"], bool):
            raise invalid("trashed")
        add, remove = request.query.get("addParents"), request.query.get("removeParents")
        if add is not None:
            if remove != item["parent"] and not (remove == "root" and item["parent"] == self.account.root_id):
                raise DriveError(403, "cannotAddParent", "Increasing the number of parents is not allowed.")
            target = self.account.folder(add, request.full_scope)
            climber = target
            while climber is not None:
                if climber["id"] == item["id"]:
                    raise DriveError(400, "badRequest", "The parent would make a cycle in the folder tree.")
                climber = self.account.items.get(climber["parent"])
            item["parent"] = target["id"]
        item["name"] = metadata.get("name", item["name"])
        item["trashed"] = metadata.get("trashed", item["trashed"])
        self.account.touch(item)
        return json_reply(200, self.resource(item, request.query))

    def files_delete(self, request, match):
        item = self.account.get(match.group(1), request.full_scope)
        if item["id"] == self.account.root_id:
            raise DriveError(403, "insufficientFilePermissions",
                             "The user does not have sufficient permissions for this file.")
        self.account.remove(item)
        self.account.save()
        return Reply(204)

    # Uploads.

    def upload_start(self, request, _):
        kind = request.query.get("uploadType")
        if kind == "media":
            mime = request.content_type or "application/octet-stream"
            item = self.account.add(self.account.root_id, "Untitled", mime, request.body)
            return json_reply(200, self.resource(item, request.query))
        if kind == "multipart":
            parts = related_parts(request.body, request.content_type)
            if len(parts) != 2:
                raise DriveError(400, "badContent", f"Invalid multipart request with {len(parts)} mime parts.")
            metadata = json_body(parts[0][1], parts[0][0].get("content-type"))
            name, mime, parent = self.checked_metadata(metadata, request.full_scope)
            mime = mime or parts[1][0].get("content-type") or "application/octet-stream"
            item = self.account.add(parent, name, mime, parts[1][1])
            return json_reply(200, self.resource(item, request.query))
        if kind == "resumable":
            if "upload_id" in request.query:
                raise DriveError(400, "badRequest", "A session is continued with PUT.")
            metadata = json_body(request.body, request.content_type, required=False)
            name, mime, parent = self.checked_metadata(metadata, request.full_scope)
            length = request.headers.get("X-Upload-Content-Length")
            if length is not None and not length.isdigit():
                raise invalid("X-Upload-Content-Length")
            upload_id = "AJ" + new_id(70)[1:]
            self.sessions[upload_id] = {"name": name, "parent": parent, "full": request.full_scope,
                                        "mime": mime or request.headers.get("X-Upload-Content-Type")
                                        or "application/octet-stream",
                                        "length": int(length) if length is not None else None,
                                        "received": 0, "done": None, "query": dict(request.query)}
            open(os.path.join(self.account.uploads, upload_id), "wb").close()
            location = f"{self.base()}{UPLOAD_PATH}?uploadType=resumable&upload_id={upload_id}"
            return Reply(200, b"", None, [("Location", location), ("X-GUploader-UploadID", upload_id)])
        raise DriveError(400, "badRequest", "Upload requests must include an uploadType URL parameter and a URL "
                         "path beginning with /upload/", "uploadType")

    def session_of(self, request):
        upload_id = request.query.get("upload_id", "")
        session = self.sessions.get(upload_id) if ID_PATTERN.fullmatch(upload_id) else None
        if session is None or request.query.get("uploadType") != "resumable":
            raise DriveError(404, "notFound", "Not Found: the upload session is unknown or has expired.")
        return upload_id, session

    def upload_continue(self, request, _, partial=False):
        upload_id, session = self.session_of(request)
        if session["done"] is not None:
            return json_reply(200, self.resource(self.account.items[session["done"]], session["query"]))
        wanted = request.headers.get("Content-Range")
        body = request.body
        if wanted is None:
            first, last, total = 0, len(body) - 1, None if partial else len(body)
        else:
            match = re.fullmatch(r"bytes (?:(\d+)-(\d+)|\*)/(\d+|\*)", wanted.strip())
            if not match:
                raise DriveError(400, "badRequest", f"Failed to parse Content-Range header: {wanted}")
            total = int(match.group(3)) if match.group(3) != "*" else None
            if match.group(1) is None:
                if body:
                    raise DriveError(400, "badRequest", "A status query must have no body.")
                return self.finish(upload_id, session, total) if total == session["received"] else self.resume(session)
            first, last = int(match.group(1)), int(match.group(2))
            if partial:
                last = first + len(body) - 1
            elif last - first + 1 != len(body):
                raise DriveError(400, "badRequest", "Invalid request. The Content-Range header does not match "
                                 f"the {len(body)} byte(s) of the body.")
        if session["length"] is not None and total is not None and total != session["length"]:
            raise DriveError(400, "badRequest", f"Invalid request. According to the Content-Range header, the final "
                             f"size of the upload is {total} byte(s). This does not match the expected size of "
                             f"{session['length']} byte(s), which was specified in an earlier request.")
        if first > session["received"]:
            raise DriveError(400, "badRequest", f"Invalid request. According to the Content-Range header, the upload "
                             f"offset is {first} byte(s), which exceeds already uploaded size of "
                             f"{session['received']} byte(s).")
        final = total is not None and last + 1 == total
        if partial:
            last = first + (len(body) // CHUNK_UNIT) * CHUNK_UNIT - 1
            final = False
        elif not final and len(body) % CHUNK_UNIT:
            raise DriveError(400, "badRequest", "Invalid request. The number of bytes uploaded is required to be "
                             f"equal or greater than {CHUNK_UNIT}, except for the final request (it's recommended "
                             f"to be the exact multiple of {CHUNK_UNIT}). The received request contained "
                             f"{len(body)} bytes, which does not meet this requirement.")
        fresh = body[session["received"] - first:last - first + 1]
        with open(os.path.join(self.account.uploads, upload_id), "ab") as stored:
            stored.write(fresh)
        session["received"] += len(fresh)
        if final:
            return self.finish(upload_id, session, total)
        return self.resume(session)

    def resume(self, session):
        headers = [("Range", f"bytes=0-{session['received'] - 1}")] if session["received"] else []
        return Reply(308, b"", None, headers)

    def finish(self, upload_id, session, total):
        if total != session["received"]:
            return self.resume(session)
        stored = os.path.join(self.account.uploads, upload_id)
        with open(stored, "rb") as received:
            data = received.read()
        if session["parent"] not in self.account.items:
            raise not_found(session["parent"])
        item = self.account.add(session["parent"], session["name"], session["mime"], data)
        os.remove(stored)
        session["done"] = item["id"]
        return json_reply(200, self.resource(item, session["query"]))

    # Batches.

    def batch(self, request, _, serve_inner):
        parts = related_parts(request.body, request.content_type)
        if len(parts) > BATCH_LIMIT:
            raise DriveError(400, "badRequest", f"A batch request cannot contain more than {BATCH_LIMIT} requests.")
        boundary = "batch_" + random_text(20)
        out = []
        for number, (headers, data) in enumerate(parts, 1):
            if headers.get("content-type", "").lower() != "application/http":
                raise DriveError(400, "badContent", "Each part of a batch must be application/http.")
            head, _, inner_body = data.partition(b"\r\n\r\n")
            lines = head.decode("utf-8", "replace").split("\r\n")
            request_line = lines[0].split(" ")
            if len(request_line) < 2:
                raise DriveError(400, "badContent", "Malformed inner request line.")
            inner_headers = email.message.Message()
            for line in lines[1:]:
                name, colon, value = line.partition(":")
                if colon:
                    inner_headers[name.strip()] = value.strip()
            if "Authorization" not in inner_headers and request.headers.get("Authorization"):
                inner_headers["Authorization"] = request.headers.get("Authorization")
            reply = serve_inner(request_line[0], request_line[1], inner_headers, inner_body)
            phrase = http.server.BaseHTTPRequestHandler.responses.get(reply.status, ("",))[0]
            inner = [f"HTTP/1.1 {reply.status} {phrase}"]
            inner += [f"{name}: {value}" for name, value in reply.headers]
            if reply.content_type:
                inner.append(f"Content-Type: {reply.content_type}")
            inner.append(f"Content-Length: {len(reply.body)}")
            content_id = headers.get("content-id", f"<item{number}>").strip("<>")
            out.append(f"--{boundary}\r\nContent-Type: application/http\r\nContent-ID: <response-{content_id}>\r\n\r\n"
                       .encode() + "\r\n".join(inner).encode() + b"\r\n\r\n" + reply.body + b"\r\n")
        return Reply(200, b"".join(out) + f"--{boundary}--\r\n".encode(), f"multipart/mixed; boundary={boundary}")

    # The tests' control paths.

    def control(self, request):
        query, path = request.query, request.route_path
        if request.command == "POST" and path == "/_emulator/fault":
            if query.get("name") not in SWITCHES or not query.get("count", "1").isdigit():
                return json_reply(400, {"error": "unknown switch or count"})
            if not query.get("skip", "0").isdigit():
                return json_reply(400, {"error": "bad skip"})
            self.faults.set(query["name"], int(query.get("count", "1")), query.get("path", ""),
                            int(query.get("skip", "0")))
            return json_reply(200, {"name": query["name"], "count": int(query.get("count", "1"))})
        if request.command == "POST" and path == "/_emulator/token":
            return json_reply(200, self.grants.pair())
        if request.command == "POST" and path == "/_emulator/expire_access_token":
            return json_reply(200, {"expired": self.grants.expire()})
        if request.command == "POST" and path == "/_emulator/quota" and query.get("limit", "").isdigit():
            self.account.quota_limit = int(query["limit"])
            return json_reply(200, {"limit": self.account.quota_limit})
        if request.command == "GET" and path == "/_emulator/tree":
            entries = [{"path": self.account.path_of(item), "id": item["id"], "mimeType": item["mimeType"],
                        "size": item.get("size"), "app": item["app"], "trashed": item["trashed"]}
                       for item in self.account.items.values() if item["id"] != self.account.root_id]
            return json_reply(200, {"entries": sorted(entries, key=lambda entry: entry["path"])})
        if request.command == "POST" and path in ("/_emulator/folder", "/_emulator/file"):
            names = [name for name in query.get("path", "").split("/") if name]
            if not names:
                return json_reply(400, {"error": "no path"})
            by_app = query.get("foreign") != "1"
            folder_names = names if path == "/_emulator/folder" else names[:-1]
            folder_id = self.account.root_id
            for name in folder_names:
                existing = [item for item in self.account.children(folder_id)
                            if item["name"] == name and item["mimeType"] == FOLDER_TYPE]
                folder_id = (existing[0] if existing else self.account.add(folder_id, name, FOLDER_TYPE,
                                                                            by_app=by_app))["id"]
            if path == "/_emulator/folder":
                return json_reply(200, {"id": folder_id})
            item = self.account.add(folder_id, names[-1], "application/octet-stream", request.body, by_app)
            return json_reply(200, {"id": item["id"]})
        return json_reply(404, {"error": "no such control path"})


ROUTES = [
    ("GET", r"/o/oauth2/(?:v2/)?auth", "authorize", False),
    ("POST", r"/(?:o/oauth2/)?token", "token", False),
    ("GET", r"/drive/v3/about", "about", True),
    ("GET", r"/drive/v3/files", "files_list", True),
    ("POST", r"/drive/v3/files", "files_create", True),
    ("GET", r"/drive/v3/files/([^/]+)", "files_get", True),
    ("PATCH", r"/drive/v3/files/([^/]+)", "files_update", True),
    ("DELETE", r"/drive/v3/files/([^/]+)", "files_delete", True),
    ("POST", r"/upload/drive/v3/files", "upload_start", True),
    ("PUT", r"/upload/drive/v3/files", "upload_continue", False),
    ("POST", r"/batch/drive/v3", "batch", True),
]


def route(method, path):
    """The endpoint, its match and whether it takes a token; 405 or 404 when there is none."""
    known = False
    for route_method, pattern, endpoint, bearer in ROUTES:
        match = re.fullmatch(pattern, path)
        if match:
            known = True
            if route_method == method:
                return endpoint, match, bearer
    if known:
        raise DriveError(405, "httpMethodNotAllowed", f"The method {method} is not allowed for this path.")
    raise DriveError(404, "notFound", "Not Found")


class Request:
    """What an endpoint reads of a request, outer or inside a batch."""

    def __init__(self, command, target, headers, body):
        split = urllib.parse.urlsplit(target)
        self.command, self.target, self.headers, self.body = command, target, headers, body
        self.route_path = urllib.parse.unquote(split.path)
        self.query = {name: values[0] for name, values in
                      urllib.parse.parse_qs(split.query, keep_blank_values=True).items()}
        self.content_type = headers.get("Content-Type")
        self.full_scope = False


def answer(emulator, request, in_batch=False):
    """The reply of the service to REQUEST (no transport faults)."""
    path = request.route_path
    with emulator.lock:
        try:
            endpoint, match, bearer = route(request.command, path)
            if in_batch and (endpoint not in ("files_list", "files_create", "files_get", "files_update",
                                              "files_delete", "about") or request.query.get("alt") == "media"):
                raise DriveError(400, "badRequest", "Media and upload requests are not supported in a batch.")
            if bearer:
                scopes, token = emulator.grants.check(request.headers.get("Authorization"))
                request.full_scope = SCOPE_ROOT + "drive" in scopes
                if emulator.faults.take("expire_token", path):
                    emulator.grants.expire(token)
                    raise expired()
            if endpoint == "batch":
                def serve_inner(method, target, headers, body):
                    emulator.print_line(f"{method} {target}")
                    return answer(emulator, Request(method, target, headers, body), in_batch=True)
                reply = emulator.batch(request, match, serve_inner)
            else:
                reply = getattr(emulator, endpoint)(request, match)
        except DriveError as refusal:
            reply = error_reply(refusal)
        return corrupted(reply, emulator.faults, path)


def handler_class(emulator):
    emulator.print_line = print_line

    class Handler(ServiceHandler, methods=("GET", "POST", "PUT", "PATCH", "DELETE", "HEAD")):
        sending_methods = ("POST", "PUT", "PATCH")

        def take_target(self):
            self.request_view = Request(self.command, self.path, self.headers, b"")
            self.route_path = self.request_view.route_path

        # The endpoints read the body from the request's view, as they do inside a batch.
        @property
        def body(self):
            return self.request_view.body

        @body.setter
        def body(self, value):
            self.request_view.body = value

        def control(self):
            return emulator.control(self.request_view)

        def throttled_reply(self, switch):
            if switch == "status_429":
                return error_reply(DriveError(429, "rateLimitExceeded", "Rate Limit Exceeded",
                                              headers=[("Retry-After", "0")]))
            return error_reply(DriveError(503, "backendError", "Backend Error", headers=[("Retry-After", "0")]))

        def answer(self, path):
            return answer(emulator, self.request_view)

        def half_body_read(self, path):
            if self.command == "PUT" and path == UPLOAD_PATH:
                with emulator.lock:
                    try:
                        emulator.upload_continue(self.request_view, None, partial=True)
                    except DriveError:
                        pass

        def length_required_reply(self):
            return Reply(411, b"<html><body>Error 411 (Length Required)</body></html>", "text/html")

    Handler.emulator = emulator
    return Handler


def main():
    parser = arguments(__doc__)
    parser.add_argument("--client-id", required=True)
    parser.add_argument("--client-secret", required=True)
    parser.add_argument("--email", default="owner@example.com")
    parser.add_argument("--token-seconds", type=int, default=3599, help="how long an access token lives")
    parser.add_argument("--quota-limit", type=int, default=15 * 1024 ** 3, help="bytes; 0 means no limit")
    options = parser.parse_args()

    emulator = Emulator(options)
    serve(options.port, handler_class(emulator), lambda port: setattr(emulator, "port", port))


if __name__ == "__main__":
    main()
