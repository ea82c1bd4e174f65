"""The Box emulator refuses what the service refuses, and answers in the service's shapes."""

import http.client
import json
import os
import unittest
import urllib.parse

from emulator_testing import EmulatorTestCase

CLIENT_ID = "a" * 32
CLIENT_SECRET = "B" * 32


class BoxEmulatorTest(EmulatorTestCase):
    script = "box_emulator.py"
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

    def tokens(self):
        return json.loads(self.call("POST", "/_emulator/token", token=None)[2])

    def fault(self, name, count=1, path=""):
        self.call("POST", f"/_emulator/fault?name={name}&count={count}&path={path}", token=None)

    def new_folder(self, name, parent="0"):
        status, _, body = self.call("POST", "/2.0/folders", json.dumps({"name": name, "parent": {"id": parent}}),
                                    {"Content-Type": "application/json"})
        return status, json.loads(body)

    def upload(self, parts, token=True):
        boundary = "----emulator-test"
        body = b"".join(f'--{boundary}\r\nContent-Disposition: form-data; name="{name}"{extra}\r\n\r\n'.encode()
                        + data + b"\r\n" for name, extra, data in parts) + f"--{boundary}--\r\n".encode()
        status, _, reply = self.call("POST", "/api/2.0/files/content", body,
                                     {"Content-Type": f"multipart/form-data; boundary={boundary}"}, token)
        return status, json.loads(reply)

    def test_the_login_hands_single_use_codes_and_refresh_tokens(self):
        address = ("/api/oauth2/authorize?response_type=code&client_id=" + CLIENT_ID
                   + "&redirect_uri=http%3A%2F%2Flocalhost&state=n%201")
        status, reply, _ = self.call("GET", address, token=None)
        self.assertEqual(302, status)
        location = reply.getheader("Location")
        self.assertTrue(location.startswith("http://localhost?"))
        answer = urllib.parse.parse_qs(urllib.parse.urlsplit(location).query)
        self.assertEqual(["n 1"], answer["state"])

        def token_request(form, content_type="application/x-www-form-urlencoded"):
            status, _, body = self.call("POST", "/oauth2/token", urllib.parse.urlencode(form),
                                        {"Content-Type": content_type}, token=None)
            return status, json.loads(body)

        code = {"grant_type": "authorization_code", "code": answer["code"][0], "client_id": CLIENT_ID,
                "client_secret": CLIENT_SECRET}
        self.assertEqual("invalid_client", token_request(dict(code, client_secret="x"))[1]["error"])
        self.assertEqual("invalid_request", token_request(code, "application/json")[1]["error"])
        status, pair = token_request(code)
        self.assertEqual((200, "bearer", 3600), (status, pair["token_type"], pair["expires_in"]))
        self.assertEqual((400, "invalid_grant"), (lambda r: (r[0], r[1]["error"]))(token_request(code)))
        refresh = {"grant_type": "refresh_token", "refresh_token": pair["refresh_token"], "client_id": CLIENT_ID,
                   "client_secret": CLIENT_SECRET}
        self.assertNotEqual(pair["refresh_token"], token_request(refresh)[1]["refresh_token"])
        self.assertEqual("invalid_grant", token_request(refresh)[1]["error"])

        self.fault("refuse_grant")
        location = self.call("GET", address, token=None)[1].getheader("Location")
        self.assertIn("error=access_denied", location)
        self.assertNotIn("code=", location)

    def test_api_calls_need_a_live_bearer_token(self):
        status, reply, _ = self.call("GET", "/2.0/users/me", token=None)
        self.assertEqual((401, 'Bearer realm="Service"'), (status, reply.getheader("WWW-Authenticate")))
        token = self.tokens()["access_token"]
        self.assertEqual(200, self.call("GET", "/2.0/folders/0", token=token)[0])
        self.fault("expire_token")
        status, reply, _ = self.call("GET", "/2.0/folders/0", token=token)
        self.assertEqual(401, status)
        self.assertIn('error="invalid_token"', reply.getheader("WWW-Authenticate"))
        self.assertEqual(401, self.call("GET", "/2.0/folders/0", token=token)[0], "the token stays expired")

    def test_names_are_checked_and_unique_ignoring_case(self):
        status, folder = self.new_folder("Names")
        self.assertEqual((201, "folder", "0"), (status, folder["type"], folder["parent"]["id"]))
        self.assertEqual((409, "item_name_in_use"), (lambda r: (r[0], r[1]["code"]))(self.new_folder("NAMES")))
        for name in (".", "..", "a/b", "a\\b", "trailing ", "x" * 256):
            status, error = self.new_folder(name, folder["id"])
            self.assertEqual(400, status, name)
            self.assertIn(error["code"], ("item_name_invalid", "item_name_too_long"), name)
        self.assertEqual((404, "not_found"), (lambda r: (r[0], r[1]["code"]))(self.new_folder("x", "424242")))
        status, _, body = self.call("POST", "/2.0/folders", b"{", {"Content-Type": "application/json"})
        self.assertEqual((400, "bad_request"), (status, json.loads(body)["code"]))

    def test_uploads_take_attributes_first_and_downloads_redirect(self):
        _, folder = self.new_folder("Uploads")
        attributes = json.dumps({"name": "data.bin", "parent": {"id": folder["id"]}}).encode()
        content = bytes(range(256)) * 64
        file_part = ("file", '; filename="data.bin"', content)
        status, error = self.upload([file_part, ("attributes", "", attributes)])
        self.assertEqual((400, "metadata_after_file_contents"), (status, error["code"]))
        status, created = self.upload([("attributes", "", attributes), file_part])
        self.assertEqual((201, 1), (status, created["total_count"]))
        stored = created["entries"][0]
        self.assertEqual(("data.bin", len(content)), (stored["name"], stored["size"]))
        self.assertEqual(409, self.upload([("attributes", "", attributes.replace(b"data", b"DATA")), file_part])[0])
        with open(os.path.join(self.folder.name, "files", stored["id"]), "rb") as kept:
            self.assertEqual(content, kept.read())

        status, _, _ = self.call("POST", "/api/2.0/files/content", b"1\r\nx\r\n0\r\n\r\n",
                                 {"Content-Type": "multipart/form-data; boundary=b", "Transfer-Encoding": "chunked"})
        self.assertEqual(411, status, "a chunked body without a length")
        status, reply, _ = self.call("GET", f"/2.0/files/{stored['id']}/content")
        self.assertEqual(302, status)
        download = urllib.parse.urlsplit(reply.getheader("Location"))
        self.assertEqual(("127.0.0.1", self.port), (download.hostname, download.port))
        self.assertEqual((200, content), (lambda r: (r[0], r[2]))(self.call("GET", download.path, token=None)))

    def test_listings_page_and_folders_need_recursive_to_go(self):
        _, folder = self.new_folder("Paged")
        for name in ("b", "a", "C"):
            self.new_folder(name, folder["id"])
        status, _, body = self.call("GET", f"/2.0/folders/{folder['id']}/items?limit=2&offset=1&fields=size")
        page = json.loads(body)
        self.assertEqual((200, 3, 1, 2), (status, page["total_count"], page["offset"], page["limit"]))
        self.assertEqual(["b", "C"], [entry["name"] for entry in page["entries"]])
        self.assertEqual({"type", "id", "sequence_id", "etag", "name", "size"}, set(page["entries"][0]))
        self.assertEqual(400, self.call("GET", f"/2.0/folders/{folder['id']}/items?limit=x")[0])

        status, _, body = self.call("DELETE", f"/2.0/folders/{folder['id']}")
        self.assertEqual((400, "folder_not_empty"), (status, json.loads(body)["code"]))
        self.assertEqual(204, self.call("DELETE", f"/2.0/folders/{folder['id']}?recursive=true")[0])
        self.assertEqual(404, self.call("GET", f"/2.0/folders/{folder['id']}/items")[0])

    def test_switches_misbehave_as_asked(self):
        self.fault("status_503", path="/2.0/users/me")
        self.assertEqual(200, self.call("GET", "/2.0/folders/0")[0], "another path is left alone")
        status, reply, _ = self.call("GET", "/2.0/users/me")
        self.assertEqual((503, "0"), (status, reply.getheader("Retry-After")))
        self.fault("drop_mid_body", path="/2.0/folders")
        with self.assertRaises(http.client.IncompleteRead):
            self.call("GET", "/2.0/folders/0/items")
        self.fault("hostile_listing", path="/2.0/folders")
        names = [entry["name"] for entry in json.loads(self.call("GET", "/2.0/folders/0/items")[2])["entries"]]
        self.assertTrue({"..", "a/b", "$(touch pwned)"} <= set(names))
        self.fault("deep_json", path="/2.0/folders")
        with self.assertRaises(RecursionError):
            json.loads(self.call("GET", "/2.0/folders/0/items")[2])


if __name__ == "__main__":
    unittest.main()
