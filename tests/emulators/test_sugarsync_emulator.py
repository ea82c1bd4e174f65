"""The SugarSync emulator refuses what the service refuses, and answers in the service's shapes."""

import http.client
import json
import unittest
import urllib.parse

from emulator_testing import EmulatorTestCase
import xml.etree.ElementTree as ElementTree

ACCESS_KEY = "QWNjZXNzS2V5T2ZUaGVBcHAxMj"
PRIVATE_KEY = "UHJpdmF0ZUtleU9mVGhlQXBwbGljYXRpb25Gb3JUZX"
USER = "owner@example.com"
PASSWORD = "pass word"
XML = {"Content-Type": "application/xml; charset=UTF-8"}


class SugarSyncEmulatorTest(EmulatorTestCase):
    script = "sugarsync_emulator.py"
    options = ("--access-key", ACCESS_KEY, "--private-key", PRIVATE_KEY, "--user", USER, "--password", PASSWORD,
               "--quota", "100000")

    def call(self, method, target, body=None, headers=None, token=True):
        """TARGET is a reference the emulator handed out or a path; answers status, reply, body."""
        headers = dict(headers or {})
        if token is True:
            token = self.control("POST", "/_emulator/token")["authorization"]
        if token:
            headers["Authorization"] = token
        path = urllib.parse.urlsplit(target)._replace(scheme="", netloc="").geturl()
        connection = http.client.HTTPConnection("127.0.0.1", self.port, timeout=10)
        try:
            connection.request(method, path, body=body, headers=headers)
            reply = connection.getresponse()
            return reply.status, reply, reply.read()
        finally:
            connection.close()

    def control(self, method, path, body=None):
        return json.loads(self.call(method, path, body, token=None)[2])

    def fault(self, name, path=""):
        self.control("POST", f"/_emulator/fault?name={name}&count=1&path={urllib.parse.quote(path)}")

    def login(self, username=USER, password=PASSWORD, access_key=ACCESS_KEY):
        body = (f"<?xml version=\"1.0\" encoding=\"UTF-8\" ?><authRequest><username><![CDATA[{username}]]></username>"
                f"<password><![CDATA[{password}]]></password><accessKeyId>{access_key}</accessKeyId>"
                f"<privateAccessKey>{PRIVATE_KEY}</privateAccessKey></authRequest>").encode()
        return self.call("POST", "/authorization", body, XML, token=None)

    def briefcase(self, token=True):
        status, _, body = self.call("GET", "/user", token=token)
        self.assertEqual(200, status)
        return ElementTree.fromstring(body).findtext("magicBriefcase")

    def create(self, folder, kind, name, token=True):
        media = "<mediaType>application/x-compressed</mediaType>" if kind == "file" else ""
        body = f"<{kind}><displayName>{name}</displayName>{media}</{kind}>".encode()
        status, reply, _ = self.call("POST", folder, body, XML, token)
        return status, reply.getheader("Location")

    def listing(self, folder):
        status, _, body = self.call("GET", folder + "/contents")
        self.assertEqual(200, status)
        return ElementTree.fromstring(body)

    def test_a_login_buys_an_expiring_token_that_every_request_must_carry(self):
        self.assertEqual(401, self.login(password="wrong")[0])
        self.assertEqual(401, self.login(access_key="x" * 27)[0])
        status, _, _ = self.call("POST", "/authorization", b"<authRequest><username>u</username>", XML, token=None)
        self.assertEqual(400, status, "malformed XML")
        status, reply, body = self.login()
        self.assertEqual(201, status)
        token = reply.getheader("Location")
        self.assertTrue(token.startswith(f"http://127.0.0.1:{self.port}/authorization/"))
        reply_xml = ElementTree.fromstring(body)
        self.assertRegex(reply_xml.findtext("expiration"), r"^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d\.\d{3}-08:00$")
        self.assertTrue(reply_xml.findtext("user").startswith(f"http://127.0.0.1:{self.port}/user/"))

        self.assertEqual(401, self.call("GET", "/user", token=None)[0])
        self.assertEqual(401, self.call("GET", "/user", token="Bearer " + token)[0])
        self.assertTrue(self.briefcase(token).endswith("/folder/:sc:566494:2"))
        self.control("POST", "/_emulator/expire_access_token")
        self.assertEqual(401, self.call("GET", "/user", token=token)[0])

        # The refresh-token form of the login.
        body = (f"<appAuthorization><username>{USER}</username><password>{PASSWORD}</password>"
                f"<application>/sc/566494/1_1</application><accessKeyId>{ACCESS_KEY}</accessKeyId>"
                f"<privateAccessKey>{PRIVATE_KEY}</privateAccessKey></appAuthorization>").encode()
        status, reply, _ = self.call("POST", "/app-authorization", body, XML, token=None)
        self.assertEqual(201, status)
        body = (f"<tokenAuthRequest><accessKeyId>{ACCESS_KEY}</accessKeyId><privateAccessKey>{PRIVATE_KEY}"
                f"</privateAccessKey><refreshToken>{reply.getheader('Location')}</refreshToken></tokenAuthRequest>")
        self.assertEqual(201, self.call("POST", "/authorization", body.encode(), XML, token=None)[0])
        self.assertEqual(415, self.call("POST", "/authorization", body.encode(), {"Content-Type": "text/plain"},
                                        token=None)[0])

    def test_references_are_the_only_way_in_and_sync_folders_stay(self):
        briefcase = self.briefcase()
        status, folder = self.create(briefcase, "folder", "Stowhaven%20Tests")
        self.assertEqual(201, status)
        self.assertEqual(404, self.create(briefcase.replace(":2", ":424242"), "folder", "x")[0])
        self.assertEqual(404, self.call("GET", folder.replace(":", "%3A") + "/contents")[0], "a rebuilt reference")
        self.assertEqual(400, self.create(folder, "folder", "")[0])
        self.assertEqual(400, self.call("POST", folder, b"<folder><displayName>x</displayName><size>1</size></folder>",
                                        XML)[0])
        self.assertEqual(405, self.call("POST", folder + "/contents", b"", XML)[0])
        chunked = iter([b"<folder><displayName>x</displayName></folder>"])
        self.assertEqual(411, self.call("POST", folder, chunked, XML)[0], "XML needs its length")
        self.assertEqual(403, self.call("DELETE", briefcase)[0])
        self.assertEqual(403, self.call("PUT", briefcase, b"<folder><displayName>x</displayName></folder>", XML)[0])

        self.assertEqual(204, self.call("PUT", folder, b"<folder><displayName>Renamed</displayName></folder>", XML)[0])
        names = [entry.findtext("displayName") for entry in self.listing(briefcase) if entry.findtext("ref") == folder]
        self.assertEqual(["Renamed"], names)

        # A folder's DELETE leaves what it held orphaned, as the service warns.
        _, inner = self.create(folder, "folder", "inner")
        self.assertEqual(204, self.call("DELETE", folder)[0])
        self.assertEqual(404, self.call("GET", inner + "/contents")[0])
        orphans = [entry for entry in self.control("GET", "/_emulator/tree")["entries"] if entry["path"] is None]
        self.assertEqual(["inner"], [entry["name"] for entry in orphans])

    def test_a_file_is_created_then_given_its_data_and_read_back(self):
        _, folder = self.create(self.briefcase(), "folder", "Uploads")
        status, file_ref = self.create(folder, "file", "2016-01-02_03~04~05.stowhvn")
        self.assertEqual((201, True), (status, "/file/" in file_ref))
        self.assertEqual("false", self.listing(folder).find("file").findtext("presentOnServer"), "no data yet")
        self.assertEqual(404, self.call("GET", file_ref + "/data")[0])

        content = bytes(range(256)) * 40
        self.assertEqual(204, self.call("PUT", file_ref + "/data", iter([content[:1000], content[1000:]]))[0],
                         "data may come in chunks")
        self.assertEqual(413, self.call("PUT", file_ref + "/data", content * 20)[0], "over the quota")
        entry = self.listing(folder).find("file")
        self.assertEqual(("true", str(len(content))), (entry.findtext("presentOnServer"), entry.findtext("size")))
        self.assertEqual("2016-01-02_03~04~05.stowhvn", entry.findtext("displayName"))
        status, _, body = self.call("GET", entry.findtext("fileData"))
        self.assertEqual((200, content), (status, body))
        status, reply, body = self.call("GET", entry.findtext("fileData"), headers={"Range": "bytes=100-"})
        self.assertEqual((206, content[100:]), (status, body))
        self.assertEqual(416, self.call("GET", entry.findtext("fileData"), headers={"Range": "bytes=999999-"})[0])
        self.assertEqual(204, self.call("DELETE", file_ref)[0])
        self.assertEqual(404, self.call("GET", file_ref + "/data")[0])

    def test_switches_misbehave_as_asked(self):
        briefcase = self.briefcase()
        path = urllib.parse.urlsplit(briefcase).path
        self.fault("status_503", path + "/contents")
        self.assertEqual(200, self.call("GET", "/user")[0], "another path is left alone")
        status, reply, _ = self.call("GET", briefcase + "/contents")
        self.assertEqual((503, "0"), (status, reply.getheader("Retry-After")))
        self.fault("expire_token", "/user")
        token = self.control("POST", "/_emulator/token")["authorization"]
        self.assertEqual(401, self.call("GET", "/user", token=token)[0])
        self.assertEqual(401, self.call("GET", "/user", token=token)[0], "the token stays expired")
        self.fault("drop_mid_body", path)
        with self.assertRaises(http.client.IncompleteRead):
            self.call("GET", briefcase + "/contents")
        self.fault("malformed_xml", "/user")
        with self.assertRaises(ElementTree.ParseError):
            ElementTree.fromstring(self.call("GET", "/user")[2])
        self.fault("hostile_listing", path)
        names = [entry.findtext("displayName") for entry in self.listing(briefcase)]
        self.assertTrue({"..", "a/b", "$(touch pwned)", "a%2Fb"} <= set(names))
        self.fault("refuse_grant", "/authorization")
        self.assertEqual(401, self.login()[0])
        self.fault("bad_expiration", "/authorization")
        self.assertEqual("soon", ElementTree.fromstring(self.login()[2]).findtext("expiration"))


if __name__ == "__main__":
    unittest.main()
