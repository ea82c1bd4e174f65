"""The Dropbox emulator refuses what the service refuses, so that it catches a client's faults."""

import hashlib
import http.client
import json
import os
import unittest
import urllib.parse

from emulator_testing import EmulatorTestCase

APP_KEY = "k3yk3yk3yk3yk3y"
APP_SECRET = "s3cr3ts3cr3ts3c"


def encoded(path):
    return urllib.parse.quote(path, safe="")


class DropboxEmulatorTest(EmulatorTestCase):
    script = "dropbox_emulator.py"
    options = ("--app-key", APP_KEY, "--app-secret", APP_SECRET)

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.token = json.loads(cls.control("/_emulator/token")[2])

    @classmethod
    def request(cls, method, target, body=None, headers=None):
        connection = http.client.HTTPConnection("127.0.0.1", cls.port, timeout=30)
        try:
            connection.request(method, target, body=body, headers=headers or {})
            reply = connection.getresponse()
            return reply.status, reply, reply.read()
        finally:
            connection.close()

    @classmethod
    def control(cls, target):
        return cls.request("POST", target)

    def oauth(self, key=APP_KEY, secret=APP_SECRET, token=None, token_secret=None):
        token = token or self.token["oauth_token"]
        token_secret = token_secret or self.token["oauth_token_secret"]
        return {"Authorization": 'OAuth oauth_version="1.0", oauth_signature_method="PLAINTEXT", '
                                 f'oauth_consumer_key="{key}", oauth_signature="{secret}&{token_secret}", '
                                 f'oauth_token="{token}"'}

    def api(self, method, target, body=None, headers=None):
        status, reply, data = self.request(method, target, body, dict(self.oauth(), **(headers or {})))
        return status, reply, json.loads(data) if data else None

    def chunk(self, data, query="", headers=None):
        headers = dict({"Content-Type": "application/octet-stream"}, **(headers or {}))
        return self.api("POST", "/1/chunked_upload" + query, data, headers)

    def test_credentials_methods_and_addresses_are_checked(self):
        self.assertEqual(self.request("GET", "/1/account/info")[0], 401)
        self.assertEqual(self.request("GET", "/1/account/info", headers=self.oauth(key="wrongkeywrongke"))[0], 403)
        self.assertEqual(self.request("GET", "/1/account/info", headers=self.oauth(token_secret="wrong"))[0], 401)
        self.assertEqual(self.request("GET", "/1/account/info", headers=self.oauth(token="unknown"))[0], 401)
        status, _, account = self.api("GET", "/1/account/info")
        self.assertEqual((status, account["uid"]), (200, 12345678))
        self.assertEqual(self.api("GET", "/1/fileops/delete?root=dropbox&path=%2Fx")[0], 405)
        self.assertEqual(self.api("POST", "/1/fileops/create_folder?path=%2Fx")[0], 400)
        self.assertEqual(self.api("GET", '/1/metadata/dropbox/"quoted"')[0], 400)
        self.assertEqual(self.api("GET", "/1/metadata/dropbox/%ZZ")[0], 400)
        self.assertEqual(self.api("GET", "/1/metadata/dropbox/" + encoded("/missing"))[0], 404)

    def test_paths_that_climb_or_hold_nul_never_reach_the_disk(self):
        for path in ("/../escape", "/a/../../escape", "/a\0b", "/a/./b"):
            status, _, _ = self.api("POST", "/1/fileops/create_folder?root=dropbox&path=" + encoded(path))
            self.assertEqual(status, 400, path)
        self.assertEqual(sorted(os.listdir(self.folder.name)), ["files", "uploads"])
        self.assertNotIn("escape", os.listdir(os.path.join(self.folder.name, "files")))

    def test_folders_keep_their_first_case_and_are_found_in_any(self):
        create = "/1/fileops/create_folder?root=dropbox&path="
        self.assertEqual(self.api("POST", create + encoded("/Cased/Device One"))[0], 200)
        self.assertEqual(self.api("POST", create + encoded("/cased/DEVICE ONE"))[0], 403)
        status, _, listing = self.api("GET", "/1/metadata/dropbox/" + encoded("/CASED"))
        self.assertEqual((status, [entry["path"] for entry in listing["contents"]]), (200, ["/Cased/Device One"]))
        delete = "/1/fileops/delete?root=dropbox&path=" + encoded("/cased/device one")
        self.assertTrue(self.api("POST", delete)[2]["is_deleted"])
        self.assertEqual(self.api("POST", delete)[0], 404)

    def test_chunked_upload_checks_its_offsets_and_the_commit_makes_folders(self):
        self.assertEqual(self.chunk(b"abc", "?upload_id=unknown&offset=0")[0], 404)
        self.assertEqual(self.api("POST", "/1/chunked_upload", b"abc", {"Content-Type": "text/plain"})[0], 400)
        # Refused before the body is read: a chunk over 150 MB, and one of no stated length.
        self.assertEqual(self.chunk(None, "", {"Content-Length": str(151 << 20)})[0], 400)
        self.assertEqual(self.chunk(iter([b"abc"]), "", {"Transfer-Encoding": "chunked"})[0], 411)
        status, _, first = self.chunk(b"0123456789")
        upload = first["upload_id"]
        self.assertEqual((status, first["offset"]), (200, 10))
        status, _, wrong = self.chunk(b"abc", f"?upload_id={upload}&offset=3")
        self.assertEqual((status, wrong["offset"]), (400, 10))
        # A chunk cut off half way leaves the upload where it was.
        self.control("/_emulator/fault?name=drop_mid_body&count=1&path=/1/chunked_upload")
        with self.assertRaises((http.client.HTTPException, ConnectionError)):
            self.chunk(b"x" * 100000, f"?upload_id={upload}&offset=10")
        self.assertEqual(self.chunk(b"abc", f"?upload_id={upload}&offset=10")[2]["offset"], 13)
        commit = "/1/commit_chunked_upload/dropbox/" + encoded("/New/Folder/a.stowhvn") + "?overwrite=false&locale=en"
        status, _, entry = self.api("POST", commit + f"&upload_id={upload}")
        self.assertEqual((status, entry["path"], entry["bytes"]), (200, "/New/Folder/a.stowhvn", 13))
        with open(os.path.join(self.folder.name, "files", "New", "Folder", "a.stowhvn"), "rb") as file:
            self.assertEqual(file.read(), b"0123456789abc")
        second = self.chunk(b"second")[2]["upload_id"]
        self.assertEqual(self.api("POST", commit + f"&upload_id={second}")[2]["path"], "/New/Folder/a (1).stowhvn")
        self.assertEqual(self.api("POST", commit + f"&upload_id={second}")[0], 404)

    def test_oauth_values_in_the_query_stand_for_the_header(self):
        query = urllib.parse.urlencode({
            "oauth_consumer_key": APP_KEY, "oauth_signature": f"{APP_SECRET}&{self.token['oauth_token_secret']}",
            "oauth_signature_method": "PLAINTEXT", "oauth_token": self.token["oauth_token"], "oauth_version": "1.0"})
        status, _, _ = self.request("POST", "/1/chunked_upload?" + query, b"abc",
                                    {"Content-Type": "application/octet-stream"})
        self.assertEqual(status, 200)
        status, _, _ = self.request("POST", "/1/chunked_upload?" + query, b"abc",
                                    dict(self.oauth(), **{"Content-Type": "application/octet-stream"}))
        self.assertEqual(status, 400)

    def test_sign_in_page_answers_the_app_address(self):
        digest = hashlib.sha1(APP_SECRET.encode()).hexdigest()
        page = f"/1/connect_login?k={APP_KEY}&s={digest}&state=0F1E2D3C&easl=1"
        status, reply, _ = self.request("GET", page)
        location = urllib.parse.urlsplit(reply.getheader("Location"))
        answer = dict(urllib.parse.parse_qsl(location.query))
        self.assertEqual((status, location.scheme, location.path, answer["state"]),
                         (302, f"db-{APP_KEY}", "/connect", "0F1E2D3C"))
        granted = self.oauth(token=answer["oauth_token"], token_secret=answer["oauth_token_secret"])
        self.assertEqual(self.request("GET", "/1/account/info", headers=granted)[0], 200)
        self.control("/_emulator/fault?name=refuse_grant&count=1")
        self.assertEqual(self.request("GET", page)[1].getheader("Location"), f"db-{APP_KEY}://1/cancel?state=0F1E2D3C")
        self.assertEqual(self.request("GET", page.replace(digest, "0" * 40))[0], 400)

    def test_faults_reply_as_asked_then_stop(self):
        self.control("/_emulator/fault?name=status_503&count=1")
        status, reply, _ = self.api("GET", "/1/account/info")
        self.assertEqual((status, reply.getheader("Retry-After")), (503, "0"))
        self.assertEqual(self.api("GET", "/1/account/info")[0], 200)
        self.control("/_emulator/fault?name=deep_json&count=1")
        body = self.request("GET", "/1/account/info", headers=self.oauth())[2]
        self.assertIn(b"[" * 10000, body)
        self.control("/_emulator/fault?name=huge_json&count=1")
        self.assertGreater(len(self.request("GET", "/1/account/info", headers=self.oauth())[2]), 4 << 20)


if __name__ == "__main__":
    unittest.main()
