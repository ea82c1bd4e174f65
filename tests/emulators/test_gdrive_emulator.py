"""The Drive emulator refuses what the service refuses, and answers in the service's shapes."""

import base64
import hashlib
import http.client
import json
import os
import unittest
import urllib.parse

from emulator_testing import EmulatorTestCase

CLIENT_ID = "1234567890123-abcdefghijklmnopqrstuvwxyz012345.apps.googleusercontent.com"
CLIENT_SECRET = "AbCdEfGhIjKlMnOpQrStUv12"
FOLDER = "application/vnd.google-apps.folder"


class GDriveEmulatorTest(EmulatorTestCase):
    script = "gdrive_emulator.py"
    options = ("--client-id", CLIENT_ID, "--client-secret", CLIENT_SECRET)

    def call(self, method, path, body=None, headers=None, token=True):
        headers = dict(headers or {})
        if token is True:
            token = self.tokens()["access_token"]
        if token:
            headers["Authorization"] = "Bearer " + token
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=10)
        try:
            connection.request(method, path, body=body, headers=headers)
            reply = connection.getresponse()
            return reply.status, reply, reply.read()
        finally:
            connection.close()

    def json_call(self, method, path, value=None, token=True):
        body = None if value is None else json.dumps(value)
        status, _, reply = self.call(method, path, body, {"Content-Type": "application/json; charset=UTF-8"}, token)
        return status, json.loads(reply) if reply else None

    def tokens(self):
        return json.loads(self.call("POST", "/_emulator/token", token=None)[2])

    def fault(self, name, count=1, path=""):
        self.call("POST", f"/_emulator/fault?name={name}&count={count}&path={path}", token=None)

    def new_folder(self, name, parent=None):
        metadata = {"name": name, "mimeType": FOLDER, "parents": [parent] if parent else []}
        return self.json_call("POST", "/drive/v3/files", metadata)

    def listing(self, q, fields="kind,files(id,name,mimeType,size)"):
        query = urllib.parse.urlencode({"q": q, "fields": fields})
        return self.json_call("GET", "/drive/v3/files?" + query)

    def consent(self, ask):
        """Where the consent page sends the browser, and the answer it carries."""
        status, reply, _ = self.call("GET", "/o/oauth2/auth?" + urllib.parse.urlencode(ask), token=None)
        self.assertEqual(302, status)
        location = urllib.parse.urlsplit(reply.getheader("Location"))
        return location, {name: values[0] for name, values in urllib.parse.parse_qs(location.query).items()}

    def test_the_login_checks_the_redirect_the_verifier_and_keeps_the_refresh_token(self):
        verifier = "v" * 50
        challenge = base64.urlsafe_b64encode(hashlib.sha256(verifier.encode()).digest()).decode().rstrip("=")
        redirect = "http://127.0.0.1:8123/cb"
        ask = {"client_id": CLIENT_ID, "redirect_uri": redirect, "response_type": "code", "state": "s 1",
               "scope": "https://www.googleapis.com/auth/drive.file", "code_challenge": challenge,
               "code_challenge_method": "S256"}
        elsewhere = urllib.parse.urlencode(dict(ask, redirect_uri="http://evil.example/cb"))
        self.assertEqual(400, self.call("GET", "/o/oauth2/auth?" + elsewhere, token=None)[0])
        location, answer = self.consent(ask)
        self.assertEqual(("127.0.0.1", 8123, "s 1"), (location.hostname, location.port, answer["state"]))

        def token_request(form):
            status, _, body = self.call("POST", "/token", urllib.parse.urlencode(form),
                                        {"Content-Type": "application/x-www-form-urlencoded"}, token=None)
            return status, json.loads(body)

        code = {"grant_type": "authorization_code", "code": answer["code"], "client_id": CLIENT_ID,
                "client_secret": CLIENT_SECRET, "redirect_uri": redirect, "code_verifier": verifier}
        self.assertEqual("invalid_grant", token_request(dict(code, code_verifier="w" * 50))[1]["error"])
        elsewhere = dict(code, code=self.consent(ask)[1]["code"], redirect_uri="http://localhost")
        self.assertEqual("redirect_uri_mismatch", token_request(elsewhere)[1]["error"])
        fresh = self.consent(ask)[1]["code"]
        status, pair = token_request(dict(code, code=fresh))
        self.assertEqual((200, "Bearer"), (status, pair["token_type"]))
        self.assertEqual("invalid_grant", token_request(dict(code, code=fresh))[1]["error"], "a code serves once")
        self.assertEqual(200, self.call("GET", "/drive/v3/about?fields=user", token=pair["access_token"])[0])
        refresh = {"grant_type": "refresh_token", "refresh_token": pair["refresh_token"], "client_id": CLIENT_ID,
                   "client_secret": CLIENT_SECRET}
        self.call("POST", "/_emulator/expire_access_token", token=None)
        self.assertEqual(401, self.call("GET", "/drive/v3/about?fields=user", token=pair["access_token"])[0])
        for _ in range(2):
            status, renewed = token_request(refresh)
            self.assertEqual(200, status, "the refresh token stays good")
            self.assertNotIn("refresh_token", renewed)
        self.assertEqual("invalid_client", token_request(dict(refresh, client_secret="x"))[1]["error"])

        self.fault("refuse_grant")
        answer = self.consent(ask)[1]
        self.assertEqual(("access_denied", None), (answer.get("error"), answer.get("code")))

    def test_api_calls_need_a_live_token_and_name_their_errors(self):
        status, reply, body = self.call("GET", "/drive/v3/files", token=None)
        self.assertEqual((401, "required"), (status, json.loads(body)["error"]["errors"][0]["reason"]))
        token = self.tokens()["access_token"]
        self.assertEqual(401, self.call("GET", "/drive/v3/files?access_token=" + token, token=None)[0])
        status, error = self.json_call("GET", "/drive/v3/about", token=token)
        self.assertEqual((400, "The 'fields' parameter is required for this method."),
                         (status, error["error"]["message"]))
        status, about = self.json_call("GET", "/drive/v3/about?fields=user,%20storageQuota", token=token)
        self.assertEqual((200, "owner@example.com"), (status, about["user"]["emailAddress"]))
        self.assertIsInstance(about["storageQuota"]["limit"], str)
        self.assertEqual(400, self.json_call("GET", "/drive/v3/files?fields=files(bogus)", token=token)[0])
        self.assertEqual(400, self.listing("name = unquoted")[0])
        status, error = self.json_call("GET", "/drive/v3/files/nosuchid", token=token)
        self.assertEqual((404, "notFound"), (status, error["error"]["errors"][0]["reason"]))
        self.assertEqual(404, self.new_folder("orphan", "nosuchparent")[0])
        self.fault("expire_token")
        status, reply, _ = self.call("GET", "/drive/v3/files", token=token)
        self.assertEqual(401, status)
        self.assertIn('error="invalid_token"', reply.getheader("WWW-Authenticate"))
        self.assertEqual(401, self.call("GET", "/drive/v3/files", token=token)[0], "the token stays expired")

    def test_queries_and_fields_select_as_the_service_does(self):
        _, root = self.new_folder("Stowhaven", "")
        _, device = self.new_folder("iPad", root["id"])
        self.new_folder("it's", root["id"])
        _, trashed = self.new_folder("old", root["id"])
        self.json_call("PATCH", f"/drive/v3/files/{trashed['id']}", {"trashed": True})
        self.call("POST", "/_emulator/folder?path=/Stowhaven2/foreign&foreign=1", token=None)
        status, found = self.listing(f"trashed=false and mimeType = '{FOLDER}' and name = 'Stowhaven'",
                                     "kind,files(id,name)")
        self.assertEqual((200, [{"id": root["id"], "name": "Stowhaven"}]), (status, found["files"]))
        _, found = self.listing(f"trashed=false and '{root['id']}' in parents")
        self.assertEqual(["it's", "iPad"], [entry["name"] for entry in found["files"]], "newest first, no trash")
        _, found = self.listing("name = 'it\\'s' or name contains 'PA'")
        self.assertEqual({"it's", "iPad"}, {entry["name"] for entry in found["files"]})
        _, found = self.listing("name contains 'foreign' or name = 'Stowhaven2'")
        self.assertEqual([], found["files"], "drive.file sees only the app's own files")
        status, moved = self.json_call("PATCH", f"/drive/v3/files/{device['id']}", {"name": "iPad 2"})
        self.assertEqual((200, {"kind", "id", "name", "mimeType"}), (status, set(moved)))
        self.assertEqual(403, self.json_call("PATCH", f"/drive/v3/files/{device['id']}", {"parents": ["x"]})[0])

    def test_a_resumable_upload_goes_by_chunks_and_downloads_whole(self):
        _, folder = self.new_folder("Up")
        content = os.urandom(256 * 1024 + 1000)
        token = self.tokens()["access_token"]
        status, reply, _ = self.call("POST", "/upload/drive/v3/files?uploadType=resumable",
                                     json.dumps({"name": "2024.stowhvn", "parents": [folder["id"]]}),
                                     {"Content-Type": "application/json; charset=UTF-8",
                                      "X-Upload-Content-Type": "binary/octet-stream",
                                      "X-Upload-Content-Length": str(len(content))}, token)
        self.assertEqual(200, status)
        session = urllib.parse.urlsplit(reply.getheader("Location"))
        target = f"{session.path}?{session.query}"

        def put(data, content_range):
            return self.call("PUT", target, data, {"Content-Range": content_range}, token=None)

        self.assertEqual(400, put(content[:1000], f"bytes 0-999/{len(content)}")[0], "a short non-final chunk")
        self.assertEqual(400, put(content[:10], f"bytes 5-14/{len(content)}")[0], "past what the server holds")
        status, reply, _ = put(content[:262144], f"bytes 0-262143/{len(content)}")
        self.assertEqual((308, "bytes=0-262143"), (status, reply.getheader("Range")))
        self.fault("drop_mid_body", path="/upload/")
        with self.assertRaises((ConnectionError, http.client.HTTPException)):
            put(content[262144:], f"bytes 262144-{len(content) - 1}/{len(content)}")
        status, reply, _ = put(b"", f"bytes */{len(content)}")
        self.assertEqual((308, "bytes=0-262143"), (status, reply.getheader("Range")))
        status, _, body = put(content[262144:], f"bytes 262144-{len(content) - 1}/{len(content)}")
        created = json.loads(body)
        self.assertEqual((200, "2024.stowhvn"), (status, created["name"]))
        self.assertEqual(404, self.call("PUT", target.replace("upload_id=", "upload_id=x"), b"", token=None)[0])

        status, _, data = self.call("GET", f"/drive/v3/files/{created['id']}?alt=media", token=token)
        self.assertEqual((200, content), (status, data))
        inner = b"x--bb--\n--bb"
        body = (b'--bb\r\nContent-Type: application/json; charset=UTF-8\r\n\r\n{"name": "m", "parents": ["'
                + folder["id"].encode() + b'"]}\r\n--bb\r\nContent-Type: binary/octet-stream\r\n\r\n' + inner
                + b"\r\n--bb--\r\n")
        status, _, reply = self.call("POST", "/upload/drive/v3/files?uploadType=multipart&fields=id,size", body,
                                     {"Content-Type": "multipart/related; boundary=bb"}, token)
        self.assertEqual((200, str(len(inner))), (status, json.loads(reply)["size"]))
        self.assertEqual(403, self.call("GET", f"/drive/v3/files/{folder['id']}?alt=media", token=token)[0])
        _, found = self.listing(f"'{folder['id']}' in parents")
        self.assertEqual(["m", "2024.stowhvn"], [entry["name"] for entry in found["files"]], "newest first")
        self.assertEqual(str(len(content)), found["files"][1]["size"])
        self.assertEqual(204, self.call("DELETE", f"/drive/v3/files/{folder['id']}", token=token)[0])
        self.assertEqual(404, self.call("GET", f"/drive/v3/files/{created['id']}?alt=media", token=token)[0])
        self.assertEqual([], os.listdir(os.path.join(self.folder.name, "blobs")))

    def test_a_batch_answers_each_part_and_switches_misbehave(self):
        _, folder = self.new_folder("Batch")
        inner = f"GET /drive/v3/files?fields=files(id,name)&q=%27{folder['id']}%27+in+parents HTTP/1.1\r\n\r\n"
        body = ("--b\r\nContent-Type: application/http\r\nContent-ID: <1>\r\n\r\n" + inner + "\r\n"
                "--b\r\nContent-Type: application/http\r\nContent-ID: <2>\r\n\r\n"
                "GET /drive/v3/files/none HTTP/1.1\r\n\r\n\r\n"
                "--b--\r\n")
        status, _, answer = self.call("POST", "/batch/drive/v3", body,
                                      {"Content-Type": "multipart/mixed; boundary=b"})
        self.assertEqual(200, status)
        self.assertIn(b"Content-ID: <response-1>", answer)
        self.assertIn(b"HTTP/1.1 200 OK", answer)
        self.assertIn(b"HTTP/1.1 404 Not Found", answer)

        self.fault("status_503", path="/drive/v3/about")
        self.assertEqual(200, self.call("GET", "/drive/v3/files")[0], "another path is left alone")
        status, reply, _ = self.call("GET", "/drive/v3/about?fields=user")
        self.assertEqual((503, "0"), (status, reply.getheader("Retry-After")))
        self.fault("hostile_listing", path="/drive/v3/files")
        names = [entry["name"] for entry in self.listing("trashed=false")[1]["files"]]
        self.assertTrue({"..", "a/b", "$(touch pwned)"} <= set(names))
        self.assertEqual(b"hostile\n", self.call("GET", "/drive/v3/files/hostile1?alt=media")[2])
        self.fault("malformed_json", path="/drive/v3/files")
        with self.assertRaises(ValueError):
            json.loads(self.call("GET", "/drive/v3/files")[2])


if __name__ == "__main__":
    unittest.main()
