#!/usr/bin/python3
"""An emulator of the Dropbox version 1 REST interface for the tests, on 127.0.0.1.

It serves the API host (/1/account/info, /1/metadata, /1/fileops/...), the content host
(/1/files, /1/chunked_upload, /1/commit_chunked_upload) and the web host's sign-in page
(/1/connect_login) on one port, the paths not clashing. Written from the published pages:

- OAuth 1.0 with the PLAINTEXT signature, in the Authorization header or as query
  parameters: https://dropbox.tech/developers/using-oauth-1-0-with-the-plaintext-signature-method
  and https://www.dropbox.com/developers/blog/20/using-oauth-in-plaintext-mode
- Statuses: 400 bad input, 401 bad or expired token, 403 bad OAuth request (wrong consumer
  key...) and, for file operations, a conflict at the destination, 404 not found, 405
  method not expected, 406 too many files, 411 chunked encoding refused, 429 rate limited,
  503 retry (Retry-After), 507 over quota; bodies {"error": "text"}:
  https://www.ocaml.org/p/dropbox/0.1~772c4a6/doc/Dropbox/index.html (the v1 error list) and
  https://gist.github.com/santosh79/ea97edc1c926b204c1f6
- Metadata fields (size, bytes, rev, modified, path, is_dir, icon, root, contents, hash) and
  the account's (uid, display_name, email, quota_info with quota, normal and shared):
  https://www.ocaml.org/p/dropbox/0.1~772c4a6/doc/Dropbox_t/index.html and
  https://dropbox.github.io/dropbox-sdk-java/api-docs/v5.1.0/com/dropbox/core/v1/package-summary.html
- Listing limits (file_limit, 10000 by default, 25000 at most, else 406; hash gives 304):
  https://www.rdocumentation.org/packages/rdrop2/versions/0.7.0/topics/drop_dir
- create_folder answers 403 for a folder that exists:
  https://rubydoc.info/gems/dropbox-sdk/1.6.4/DropboxClient:file_create_folder
- Chunked upload: chunks of at most 150 MB, a wrong offset refused with 400 and the offset
  the server holds, uploads expiring after 48 hours; the commit makes the destination's
  missing folders and, without overwrite, renames beside a taken name:
  https://gist.github.com/Vaporizd/da14d07d936cf3aacf6c and
  https://dropbox.github.io/dropbox-sdk-ruby/api-docs/v1.6.4/DropboxClient/ChunkedUploader.html

Started as `dropbox_emulator.py --folder DIR --port 0 [--app-key K --app-secret S]`; the
account's files live under DIR/files, uploads in progress under DIR/uploads. Prints
"LISTENING <port>" once it listens, then "<METHOD> <path>" as each request arrives.

Test controls on the same port (never printed):
- POST /_emulator/fault?name=N&count=C[&path=P][&skip=K]: the next C requests (whose path
  starts with P, after K of them pass) get fault N; C=0 clears it. See FAULTS.
- POST /_emulator/token: a new token pair, {"oauth_token","oauth_token_secret","uid"}.
- POST /_emulator/quota?bytes=N: the account's quota.
"""

import hashlib
import http.server
import json
import re
import socket
import string
import threading
import urllib.parse

from dropbox_files import CHUNK_LIMIT, AccountFiles, ApiError, split_path
from emulator_support import Faults, arguments, print_line, random_text, serve

FAULTS = {
    "expire_token": "401 with the service's body, as for a revoked token",
    "status_429": "429 with Retry-After: 0",
    "status_503": "503 with Retry-After: 0",
    "drop_mid_body": "the connection closed half way through the request's body or the reply's",
    "malformed_json": "a 200 whose JSON is cut in the middle",
    "refuse_grant": "the sign-in page answers with the cancel address",
    "hostile_listing": "a folder listing with names '..', 'a/b', shell text, paths outside it",
    "huge_json": "a 200 whose JSON is over 5 MiB",
    "deep_json": "a 200 whose JSON nests 10000 deep",
}
UID = 12345678
DEFAULT_QUOTA = 2 * 1024 * 1024 * 1024
# The largest body of a request that isn't an upload.
SMALL_BODY_LIMIT = 64 * 1024
LONGEST_FILE_LIMIT = 25000
DEFAULT_FILE_LIMIT = 10000
# What a request target may hold unescaped (RFC 3986), and a "%" not followed by two hex digits.
TARGET_CHARACTERS = re.compile(r"[A-Za-z0-9\-._~!$&'()*+,;=:@/?%]*")
BAD_ESCAPE = re.compile(r"%(?![0-9A-Fa-f]{2})")
OAUTH_PARAMETER = re.compile(r'\s*([A-Za-z_]+)="([^"]*)"\s*(?:,|$)')


class Emulator:
    """What the handler threads share: the account, its tokens, the faults armed."""

    def __init__(self, folder, app_key, app_secret):
        self.files = AccountFiles(f"{folder}/files", f"{folder}/uploads")
        self.app_key = app_key
        self.app_secret = app_secret
        self.tokens = {}
        self.tokens_lock = threading.Lock()
        self.faults = Faults()
        self.quota = DEFAULT_QUOTA

    def issue_token(self):
        token = random_text(16, string.ascii_lowercase + string.digits)
        secret = random_text(15, string.ascii_lowercase + string.digits)
        with self.tokens_lock:
            self.tokens[token] = secret
        return {"oauth_token": token, "oauth_token_secret": secret, "uid": str(UID)}

    def check_oauth(self, values):
        """Refuses what the service refuses in the OAuth values of a request."""
        if not values:
            raise ApiError(401, "Authentication failed")
        if values.get("oauth_version", "1.0") != "1.0" or values.get("oauth_signature_method") != "PLAINTEXT":
            raise ApiError(403, "Bad OAuth request: only OAuth 1.0 with the PLAINTEXT signature is accepted")
        app_part, ampersand, token_part = values.get("oauth_signature", "").partition("&")
        if values.get("oauth_consumer_key") != self.app_key or not ampersand or app_part != self.app_secret:
            raise ApiError(403, "Bad OAuth request: unknown consumer key or wrong signature")
        with self.tokens_lock:
            secret = self.tokens.get(values.get("oauth_token", ""))
        if secret is None or token_part != secret:
            raise ApiError(401, "Token is disabled or invalid")


def oauth_header_values(header):
    scheme, _, rest = header.partition(" ")
    if scheme.lower() != "oauth":
        raise ApiError(401, "Authentication failed")
    values = {}
    position = 0
    while position < len(rest):
        match = OAUTH_PARAMETER.match(rest, position)
        if match is None or match.end() == position or match.group(1) in values:
            raise ApiError(403, "Bad OAuth request: the Authorization header can't be read")
        values[match.group(1)] = urllib.parse.unquote(match.group(2))
        position = match.end()
    return values


def required(params, name):
    value = params.get(name)
    if not value:
        raise ApiError(400, f"Missing parameter: {name}")
    return value


def boolean(params, name, default):
    value = params.get(name)
    if value is None:
        return default
    if value not in ("true", "false"):
        raise ApiError(400, f"Invalid value for {name}: {value}")
    return value == "true"


def integer(params, name):
    value = params.get(name)
    if value is None:
        return None
    if not value.isdigit():
        raise ApiError(400, f"Invalid value for {name}: {value}")
    return int(value)


def check_root(root):
    if root not in ("dropbox", "auto"):
        raise ApiError(400, f"Invalid root: {root}")


def names_after(path, prefix):
    """The names of PATH after PREFIX and the root ("/1/metadata/" then "dropbox/a/b")."""
    root, _, rest = path[len(prefix):].partition("/")
    check_root(root)
    return split_path(rest)


def deep_json(text):
    return text[:-1] + ', "nested": ' + "[" * 10000 + "]" * 10000 + "}"


def hostile_entries(folder_entry):
    """Entries no folder can hold: names that climb, hold a slash or shell text, and paths
    outside the folder listed."""
    template = {key: value for key, value in folder_entry.items() if key not in ("contents", "hash")}

    def entry(path, is_dir):
        icon = "folder" if is_dir else "page_white"
        return dict(template, path=path, is_dir=is_dir, bytes=0 if is_dir else 1, icon=icon)

    folder = folder_entry["path"].rstrip("/")
    return [
        entry(folder + "/..", True),
        entry(folder + "/a/b", True),
        entry(folder + "/$(touch pwned)", True),
        entry(folder + "/$(touch pwned).stowhvn", False),
        entry(folder + "/../../outside.stowhvn", False),
        entry("/elsewhere/outside.stowhvn", False),
    ]


class Handler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    # A client that stops sending for this long loses the connection.
    timeout = 60

    def log_message(self, format, *args):
        pass

    def version_string(self):
        return "nginx"

    emulator = None

    def do_GET(self):
        self.dispatch()

    do_POST = do_PUT = do_DELETE = do_PATCH = do_OPTIONS = do_GET

    # -- the request --

    def dispatch(self):
        raw_path, _, raw_query = self.path.partition("?")
        if not raw_path.startswith("/_emulator/"):
            print_line(f"{self.command} {raw_path}")
        self.request_path = raw_path
        self.params = {}
        self.body_left = 0
        self.cut_reply = False
        try:
            if "Transfer-Encoding" in self.headers:
                self.close_connection = True
                raise ApiError(411, "Chunked encoding was attempted for this request, but is not supported")
            self.body_left = self.content_length()
            if not TARGET_CHARACTERS.fullmatch(self.path) or BAD_ESCAPE.search(self.path):
                raise ApiError(400, "The request's address has characters that must be percent-encoded")
            self.request_path = urllib.parse.unquote(raw_path, errors="strict")
            handler, methods = self.route(self.request_path)
            if self.command not in methods:
                raise ApiError(405, "Request method not expected", headers=[("Allow", ", ".join(methods))])
            self.params = self.query_params(raw_query)
            handler()
        except UnicodeDecodeError:
            self.refuse(ApiError(400, "The request's address is not UTF-8 once decoded"))
        except ApiError as error:
            self.refuse(error)
        except ConnectionError:
            self.close_connection = True
        except OSError as error:
            self.refuse(ApiError(500, f"Internal server error: {error.strerror}"))

    def route(self, path):
        exact = {
            "/1/account/info": (self.account_info, ["GET"]),
            "/1/fileops/create_folder": (self.create_folder, ["POST"]),
            "/1/fileops/delete": (self.delete, ["POST"]),
            "/1/fileops/copy": (lambda: self.copy_or_move(False), ["POST"]),
            "/1/fileops/move": (lambda: self.copy_or_move(True), ["POST"]),
            "/1/chunked_upload": (self.chunked_upload, ["PUT", "POST"]),
            "/1/connect_login": (self.connect_login, ["GET"]),
            "/_emulator/fault": (self.arm_fault, ["POST"]),
            "/_emulator/token": (self.issue_token, ["POST"]),
            "/_emulator/quota": (self.set_quota, ["POST"]),
        }
        if path in exact:
            return exact[path]
        for prefix, handler, methods in (
            ("/1/metadata/", self.metadata, ["GET"]),
            ("/1/files/", self.download, ["GET"]),
            ("/1/commit_chunked_upload/", self.commit, ["POST"]),
        ):
            if path.startswith(prefix):
                return (lambda: handler(prefix)), methods
        raise ApiError(404, f"No such endpoint: {path}")

    def content_length(self):
        text = self.headers.get("Content-Length")
        if text is None:
            return 0
        if not text.isdigit():
            self.close_connection = True
            raise ApiError(400, "Invalid Content-Length")
        return int(text)

    def query_params(self, raw_query):
        params = {}
        pairs = urllib.parse.parse_qsl(raw_query, keep_blank_values=True, errors="strict")
        content_type = self.headers.get("Content-Type", "").split(";")[0].strip().lower()
        if self.command == "POST" and content_type == "application/x-www-form-urlencoded" and self.body_left:
            pairs += urllib.parse.parse_qsl(self.read_small_body().decode(), keep_blank_values=True)
        for name, value in pairs:
            if name in params:
                raise ApiError(400, f"Parameter given twice: {name}")
            params[name] = value
        return params

    def read_small_body(self):
        if self.body_left > SMALL_BODY_LIMIT:
            raise ApiError(400, "The request's body is too large")
        body = self.rfile.read(self.body_left)
        self.body_left = 0
        return body

    def drain(self):
        """Reads what is left of the body, so that the client reads the reply; too much closes."""
        if self.body_left > CHUNK_LIMIT:
            self.close_connection = True
            return
        while self.body_left > 0:
            data = self.rfile.read(min(self.body_left, 1 << 20))
            if not data:
                self.close_connection = True
                return
            self.body_left -= len(data)

    def cut_connection(self):
        self.close_connection = True
        try:
            self.wfile.flush()
            self.connection.shutdown(socket.SHUT_RDWR)
        except OSError:
            pass

    def api_request(self):
        """The faults and the OAuth check every call of the API and content hosts goes through;
        false when a fault has already ended the request."""
        faults = self.emulator.faults
        path = self.request_path
        if faults.take("drop_mid_body", path):
            if self.body_left == 0:
                self.cut_reply = True
            else:
                self.rfile.read(self.body_left // 2)
                self.cut_connection()
                return False
        for name, status in (("status_503", 503), ("status_429", 429)):
            if faults.take(name, path):
                raise ApiError(status, "Too many requests, retry later", headers=[("Retry-After", "0")])
        if faults.take("expire_token", path):
            raise ApiError(401, "Token is disabled or invalid")
        self.emulator.check_oauth(self.oauth_values())
        return True

    def oauth_values(self):
        header = self.headers.get("Authorization")
        in_query = {name: value for name, value in self.params.items() if name.startswith("oauth_")}
        if header and in_query:
            raise ApiError(400, "OAuth values given both in the Authorization header and in the query")
        return oauth_header_values(header) if header else in_query

    # -- the reply --

    def reply(self, status, body, content_type, headers=()):
        self.send_response(status)
        for name, value in headers:
            self.send_header(name, value)
        self.send_header("Content-Type", content_type)
        self.send_header("Content-Length", str(len(body)))
        if self.close_connection:
            self.send_header("Connection", "close")
        self.end_headers()
        if self.cut_reply:
            self.wfile.write(body[: len(body) // 2])
            self.cut_connection()
            return
        self.wfile.write(body)

    def reply_json(self, value, status=200, headers=()):
        text = json.dumps(value)
        faults = self.emulator.faults
        if status == 200 and not self.request_path.startswith("/_emulator/"):
            if faults.take("huge_json", self.request_path):
                text = json.dumps(dict(value, filler="x" * (5 << 20)))
            elif faults.take("deep_json", self.request_path):
                text = deep_json(text)
            elif faults.take("malformed_json", self.request_path):
                text = text[: len(text) // 2]
        self.reply(status, text.encode(), "application/json", headers)

    def refuse(self, error):
        self.drain()
        self.reply_json(error.body, error.status, error.headers)

    # -- the API host --

    def account_info(self):
        if not self.api_request():
            return
        files = self.emulator.files
        self.reply_json({
            "referral_link": "https://db.tt/emulated",
            "display_name": "Zo\u00eb Emulated",
            "uid": UID,
            "country": "GB",
            "email": "owner@example.com",
            "quota_info": {"shared": 0, "quota": self.emulator.quota, "normal": files.bytes_used()},
        })

    def metadata(self, prefix):
        if not self.api_request():
            return
        names = names_after(self.request_path, prefix)
        listing = boolean(self.params, "list", True)
        file_limit = integer(self.params, "file_limit") or DEFAULT_FILE_LIMIT
        if file_limit > LONGEST_FILE_LIMIT:
            raise ApiError(400, f"file_limit must be at most {LONGEST_FILE_LIMIT}")
        files = self.emulator.files
        with files.lock:
            found = files.require(names)
            is_folder = listing and files.metadata(found)["is_dir"]
            if is_folder and len(files.children(found)) > file_limit:
                raise ApiError(406, "Too many files would be listed")
            entry = files.metadata(found, with_contents=is_folder)
        if is_folder and self.params.get("hash") == entry["hash"]:
            self.reply(304, b"", "application/json")
            return
        if is_folder and self.emulator.faults.take("hostile_listing", self.request_path):
            entry["contents"] += hostile_entries(entry)
        self.reply_json(entry)

    def create_folder(self):
        if not self.api_request():
            return
        check_root(required(self.params, "root"))
        self.reply_json(self.emulator.files.create_folder(split_path(required(self.params, "path"))))

    def delete(self):
        if not self.api_request():
            return
        check_root(required(self.params, "root"))
        self.reply_json(self.emulator.files.delete(split_path(required(self.params, "path"))))

    def copy_or_move(self, move):
        if not self.api_request():
            return
        check_root(required(self.params, "root"))
        source = split_path(required(self.params, "from_path"))
        target = split_path(required(self.params, "to_path"))
        self.reply_json(self.emulator.files.copy_or_move(source, target, move))

    # -- the content host --

    def download(self, prefix):
        if not self.api_request():
            return
        names = names_after(self.request_path, prefix)
        files = self.emulator.files
        with files.lock:
            found = files.require(names)
            entry = files.metadata(found)
            if entry["is_dir"]:
                raise ApiError(404, f"Path '{entry['path']}' is a folder, not a file")
            source = open(found, "rb")
        with source:
            size = entry["bytes"]
            start, end, status = self.byte_range(size)
            headers = [("x-dropbox-metadata", json.dumps(entry)), ("Accept-Ranges", "bytes")]
            if status == 206:
                headers.append(("Content-Range", f"bytes {start}-{end - 1}/{size}"))
            self.send_response(status)
            for name, value in headers + [("Content-Type", "application/octet-stream"),
                                          ("Content-Length", str(end - start))]:
                self.send_header(name, value)
            self.end_headers()
            source.seek(start)
            left = (end - start) // 2 if self.cut_reply else end - start
            while left > 0:
                data = source.read(min(left, 1 << 16))
                if not data:
                    break
                self.wfile.write(data)
                left -= len(data)
        if self.cut_reply:
            self.cut_connection()

    def byte_range(self, size):
        """The bytes a Range header asks for ("bytes=A-" or "bytes=A-B"): start, end, status."""
        text = self.headers.get("Range")
        if text is None:
            return 0, size, 200
        match = re.fullmatch(r"bytes=(\d+)-(\d*)", text.strip())
        if match is None or int(match.group(1)) >= size:
            raise ApiError(416, "The range asked for can't be satisfied",
                           headers=[("Content-Range", f"bytes */{size}")])
        end = min(int(match.group(2)) + 1, size) if match.group(2) else size
        return int(match.group(1)), end, 206

    def chunked_upload(self):
        if self.headers.get("Content-Length") is None:
            raise ApiError(411, "Content-Length is required")
        if self.body_left > CHUNK_LIMIT:
            self.close_connection = True
            raise ApiError(400, "A chunk can't be over 150 MB")
        if not self.api_request():
            return
        content_type = self.headers.get("Content-Type", "").split(";")[0].strip().lower()
        if content_type != "application/octet-stream":
            raise ApiError(400, "A chunk is sent as application/octet-stream")
        files = self.emulator.files
        upload_id = files.begin_chunk(self.params.get("upload_id") or None, integer(self.params, "offset"))
        length = self.body_left
        self.body_left = 0
        if not files.receive_chunk(upload_id, self.rfile.read, length):
            self.cut_connection()
            return
        self.reply_json(files.upload_reply(upload_id))

    def commit(self, prefix):
        if not self.api_request():
            return
        names = names_after(self.request_path, prefix)
        upload_id = required(self.params, "upload_id")
        overwrite = boolean(self.params, "overwrite", True)
        self.drain()
        self.reply_json(self.emulator.files.commit(upload_id, names, overwrite, self.emulator.quota))

    # -- the web host --

    def connect_login(self):
        emulator = self.emulator
        key = self.params.get("k")
        if key != emulator.app_key:
            raise ApiError(400, "Invalid app key")
        if self.params.get("s") != hashlib.sha1(emulator.app_secret.encode()).hexdigest():
            raise ApiError(400, "The app secret's digest doesn't match the app key")
        state = required(self.params, "state")
        if emulator.faults.take("refuse_grant", self.request_path):
            query = {"state": state}
            location = f"db-{key}://1/cancel?" + urllib.parse.urlencode(query)
        else:
            query = dict(emulator.issue_token(), state=state)
            location = f"db-{key}://1/connect?" + urllib.parse.urlencode(query)
        self.reply(302, b"<html><body>Redirecting</body></html>", "text/html", [("Location", location)])

    # -- test controls --

    def arm_fault(self):
        name = required(self.params, "name")
        if name not in FAULTS:
            raise ApiError(400, f"Unknown fault {name}; known: {', '.join(sorted(FAULTS))}")
        count = integer(self.params, "count")
        skip = integer(self.params, "skip") or 0
        self.emulator.faults.set(name, 1 if count is None else count, self.params.get("path", ""), skip)
        self.reply_json({"name": name, "count": count})

    def issue_token(self):
        self.reply_json(self.emulator.issue_token())

    def set_quota(self):
        quota = integer(self.params, "bytes")
        if quota is None:
            raise ApiError(400, "Missing parameter: bytes")
        self.emulator.quota = quota
        self.reply_json({"quota": quota})


def main():
    parser = arguments(__doc__)
    parser.add_argument("--app-key", default="emulatorkey0001")
    parser.add_argument("--app-secret", default="emulatorsecret1")
    options = parser.parse_args()
    Handler.emulator = Emulator(options.folder, options.app_key, options.app_secret)
    serve(options.port, Handler)


if __name__ == "__main__":
    main()
