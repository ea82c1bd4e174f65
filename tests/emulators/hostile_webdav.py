#!/usr/bin/python3
"""A hostile WebDAV server for the tests, on 127.0.0.1 and a port the system picks.

It follows the wire format of RFC 4918 (PROPFIND answered by "207 Multi-Status", section
9.1) and RFC 7617 (Basic authentication), and then misbehaves as a test asks: every
PROPFIND gets the bytes of REPLY_FILE as its body, whatever it asked for; --cut-short
announces a longer body than it sends and closes the connection; --redirect answers every
request with "302 Found" to the given URL. A request without the expected credentials gets
401, as a real share would answer. Prints "port N" once it listens.
"""

import argparse
import base64
import http.server
import sys


def handler_class(options):
    expected = "Basic " + base64.b64encode(f"{options.user}:{options.password}".encode()).decode()

    class Handler(http.server.BaseHTTPRequestHandler):
        protocol_version = "HTTP/1.1"

        def log_message(self, format, *args):
            pass

        def answer(self, status, body=b"", headers=()):
            self.send_response(status)
            for name, value in headers:
                self.send_header(name, value)
            declared = len(body) + (4096 if options.cut_short else 0)
            self.send_header("Content-Length", str(declared))
            self.end_headers()
            self.wfile.write(body[: len(body) // 2] if options.cut_short else body)
            self.wfile.flush()
            if options.cut_short:
                self.close_connection = True

        def handle_any(self):
            length = int(self.headers.get("Content-Length") or 0)
            if length:
                self.rfile.read(length)
            if self.headers.get("Authorization") != expected:
                self.answer(401, b"", [("WWW-Authenticate", 'Basic realm="share"')])
            elif options.redirect:
                self.answer(302, b"", [("Location", options.redirect)])
            elif self.command == "PROPFIND":
                with open(options.reply_file, "rb") as reply:
                    body = reply.read()
                self.answer(207, body, [("Content-Type", 'application/xml; charset="utf-8"')])
            else:
                self.answer(405)

        do_PROPFIND = do_GET = do_PUT = do_MKCOL = do_MOVE = do_DELETE = handle_any

    return Handler


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("reply_file")
    parser.add_argument("--user", required=True)
    parser.add_argument("--password", required=True)
    parser.add_argument("--cut-short", action="store_true")
    parser.add_argument("--redirect")
    options = parser.parse_args()
    server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), handler_class(options))
    sys.stdout.write(f"port {server.server_address[1]}\n")
    sys.stdout.flush()
    server.serve_forever()


if __name__ == "__main__":
    main()
