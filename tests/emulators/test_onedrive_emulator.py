"""The OneDrive emulator refuses what the service refuses, and answers in the service's shapes."""

import http.client
import json
import os
import unittest
import urllib.parse

from emulator_testing import EmulatorTestCase

CLIENT_ID = "00000000A1B2C3D4"
CLIENT_SECRET = "aB3dE5fG7hJ9kL1mN3pQ5rS7tU9vW1xY"
SCOPES = "wl.signin%20wl.basic%20wl.skydrive%20wl.skydrive_update"


class OneDriveEmulatorTest(EmulatorTestCase):
    script = "onedrive_emulator.py"
    options = ("--client-id", CLIENT_ID, "--client-secret", CLIENT_SECRET)

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.desktop = f"http://127.0.0.1:{cls.port}/oauth20_desktop.srf"

    def call(self, method, path, body=None, headers=None, token=True):
        headers = dict(headers or {})
        if token is True:
            token = json.loads(self.call("POST", "/_emulator/token", token=None)[2])["access_token"]
        if token:
            headers["Authorization"] = "bearer " + token
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=10)
        try:
            connection.request(method, path, body=body, headers=headers)
            reply = connection.getresponse()
            return reply.status, reply, reply.read()
        finally:
            connection.close()

    def error_of(self, answer):
        status, _, body = answer
        return status, json.loads(body)["error"]["code"]

    def fault(self, name, count=1, path="", extra=""):
        self.call("POST", f"/_emulator/fault?name={name}&count={count}&path={path}{extra}", token=None)

    def new_folder(self, name, parent="me/skydrive"):
        status, _, body = self.call("POST", f"/v5.0/{parent}", json.dumps({"name": name, "description": "d"}),
                                    {"Content-Type": "application/json"})
        return status, json.loads(body)

    def login(self, scope=SCOPES, redirect=None):
        address = (f"/oauth20_authorize.srf?client_id={CLIENT_ID}&scope={scope}&redirect_uri="
                   f"{urllib.parse.quote(redirect or self.desktop, safe='')}&display=ios_phone&locale=en"
                   "&response_type=code")
        status, reply, _ = self.call("GET", address, token=None)
        return status, reply.getheader("Location")

    def token_request(self, query):
        status, _, body = self.call("GET", "/oauth20_token.srf?" + query, token=None)
        return status, json.loads(body)

    def test_the_desktop_login_hands_codes_once_and_refreshes(self):
        self.assertEqual(400, self.login(redirect="http://localhost/")[0], "only the desktop redirect is known")
        status, location = self.login()
        self.assertEqual(302, status)
        self.assertTrue(location.startswith(self.desktop + "?code="))
        code_query = urllib.parse.urlsplit(location).query
        common = f"client_id={CLIENT_ID}&redirect_uri={self.desktop}&client_secret={CLIENT_SECRET}"

        wrong_secret = common.replace(CLIENT_SECRET, "x")
        self.assertEqual("invalid_client",
                         self.token_request(f"{wrong_secret}&grant_type=authorization_code&{code_query}")[1]["error"])
        status, pair = self.token_request(f"{common}&grant_type=authorization_code&{code_query}")
        self.assertEqual((200, "bearer", 3600), (status, pair["token_type"], pair["expires_in"]))
        self.assertEqual((400, "invalid_grant"), (lambda r: (r[0], r[1]["error"]))(
            self.token_request(f"{common}&grant_type=authorization_code&{code_query}")), "a code serves once")
        status, fresh = self.token_request(f"{common}&refresh_token={pair['refresh_token']}&grant_type=refresh_token")
        self.assertEqual(200, status)
        self.assertNotEqual(pair["access_token"], fresh["access_token"])
        self.assertEqual(200, self.call("GET", "/v5.0/me/skydrive", token=fresh["access_token"])[0])

        self.fault("refuse_grant")
        location = self.login()[1]
        self.assertIn("error=access_denied", location)
        self.assertNotIn("code=", location)

    def test_calls_need_a_live_token_with_the_scope(self):
        self.assertEqual((401, "request_token_missing"), self.error_of(self.call("GET", "/v5.0/me", token=None)))
        self.assertEqual((401, "request_token_invalid"), self.error_of(self.call("GET", "/v5.0/me", token="nope")))
        token = json.loads(self.call("POST", "/_emulator/token", token=None)[2])["access_token"]
        status, _, body = self.call("GET", "/v5.0/me", token=token)
        self.assertEqual((200, "Stowhaven Tester"), (status, json.loads(body)["name"]))
        self.fault("expire_token")
        self.assertEqual((401, "request_token_expired"), self.error_of(self.call("GET", "/v5.0/me", token=token)))
        self.assertEqual(401, self.call("GET", "/v5.0/me", token=token)[0], "the token stays expired")

        signin_only = urllib.parse.urlsplit(self.login(scope="wl.signin")[1]).query
        _, pair = self.token_request(f"client_id={CLIENT_ID}&redirect_uri={self.desktop}&client_secret="
                                     f"{CLIENT_SECRET}&grant_type=authorization_code&{signin_only}")
        self.assertEqual((403, "request_token_unauthorized"),
                         self.error_of(self.call("GET", "/v5.0/me/skydrive/files", token=pair["access_token"])))

    def test_folders_uploads_and_downloads_go_by_id(self):
        self.assertEqual((415, "request_body_invalid"),
                         self.error_of(self.call("POST", "/v5.0/me/skydrive", json.dumps({"name": "x"}))))
        status, folder = self.new_folder("Transfers")
        self.assertEqual((201, "folder"), (status, folder["type"]))
        self.assertEqual(409, self.new_folder("TRANSFERS")[0], "names are unique whatever their case")
        self.assertEqual(400, self.new_folder("a:b", folder["id"])[0])
        self.assertEqual((404, "resource_not_found"), self.error_of(self.call("GET", "/v5.0/folder.x.X!1/files")))

        content = bytes(range(256)) * 64
        status, _, body = self.call("PUT", f"/v5.0/{folder['id']}/files/data.idx.pdf", content)
        created = json.loads(body)
        self.assertEqual((201, "data.idx.pdf"), (status, created["name"]))
        status, _, body = self.call("GET", f"/v5.0//{folder['id']}/files")
        listed = json.loads(body)["data"]
        self.assertEqual((200, [("data.idx.pdf", "file", len(content))]),
                         (status, [(entry["name"], entry["type"], entry["size"]) for entry in listed]))

        status, reply, _ = self.call("GET", f"/v5.0/{created['id']}/content")
        self.assertEqual(302, status)
        download = urllib.parse.urlsplit(reply.getheader("Location")).path
        self.assertEqual((200, content), (lambda r: (r[0], r[2]))(self.call("GET", download, token=None)))
        status, _, part = self.call("GET", download, headers={"Range": "bytes=10-19"}, token=None)
        self.assertEqual((206, content[10:20]), (status, part))

        self.assertEqual(204, self.call("DELETE", f"/v5.0/{folder['id']}")[0])
        self.assertEqual(404, self.call("GET", f"/v5.0/{created['id']}/content")[0])
        self.assertEqual([], os.listdir(os.path.join(self.folder.name, "files")))

    def test_switches_misbehave_as_asked(self):
        self.fault("status_429", path="/v5.0/me", extra="&seconds=30")
        status, _, body = self.call("GET", "/v5.0/me")
        self.assertEqual(420, status)
        self.assertTrue(json.loads(body)["error"]["message"].endswith(" after 30 seconds."))
        self.fault("status_503")
        status, reply, _ = self.call("GET", "/v5.0/me")
        self.assertEqual((503, "0"), (status, reply.getheader("Retry-After")))

        self.fault("drop_mid_body", path="/v5.0/")
        with self.assertRaises((ConnectionError, http.client.HTTPException)):
            self.call("PUT", "/v5.0/me/skydrive/files/cut.pdf", b"x" * 100000)
        names = [entry["name"] for entry in json.loads(self.call("GET", "/v5.0/me/skydrive/files")[2])["data"]]
        self.assertNotIn("cut.pdf", names)

        status, _, body = self.call("PUT", "/v5.0/me/skydrive/files/whole.pdf", b"whole")
        self.fault("foreign_redirect", path="/v5.0/")
        status, reply, _ = self.call("GET", f"/v5.0/{json.loads(body)['id']}/content")
        self.assertEqual(302, status)
        self.assertTrue(reply.getheader("Location").startswith("http://downloads.example.net/d/"))

        self.fault("hostile_listing", path="/v5.0/")
        names = [entry["name"] for entry in json.loads(self.call("GET", "/v5.0/me/skydrive/files")[2])["data"]]
        self.assertTrue({"..", "a/b", "$(touch pwned)"} <= set(names))
        self.fault("malformed_json", path="/v5.0/")
        with self.assertRaises(ValueError):
            json.loads(self.call("GET", "/v5.0/me/skydrive/files")[2])


if __name__ == "__main__":
    unittest.main()
