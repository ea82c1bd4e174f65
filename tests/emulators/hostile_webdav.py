#!/usr/bin/python3
"""A hostile WebDAV server for the tests, on 127.0.0.1 and a port the system picks.

It follows the wire format of RFC 4918 (PROPFIND answered by "207 Multi-Status", section
9.1) and RFC 7617 (Basic authentication), and then misbehaves as a test asks: every
PROPFIND gets the bytes of REPLY_FILE as its body (207), whatever it asked for, and so
does every GET (200); --cut-short
announces a longer body than it sends and closes the connection; --redirect answers every
request with "302 Found" to the given URL; --read-limit reads the body of a PUT that many
bytes a second and then throws it away. A request without the expected credentials gets
401, as a real share would answer. Prints "port N" once it listens, and "PUT /path" when an
upload's body starts.
"""

import argparse
import base64
import http.server
import sys
import time


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

        def read_body(self):
            length = int(self.headers.get("Content-Length") or 0)
            if self.command == "PUT" and self.headers.get("Authorization") == expected:
                sys.stdout.write(f"PUT {self.path}\n")
                sys.stdout.flush()
            chunk = options.read_limit or length
            while length > 0:
                data = self.rfile.read(min(chunk, length))
                if not data:
                    return False
                length -= len(data)
                if options.read_limit:
                    time.sleep(1)
            return True

        def handle_any(self):
            if not self.read_body():
                self.close_connection = True
                return
            if self.headers.get("Authorization") != expected:
                self.answer(401, b"", [("WWW-Authenticate", 'Basic realm="share"')])
            elif options.redirect:
                self.answer(302, b"", [("Location", options.redirect)])
            elif self.command in ("PROPFIND", "GET"):
                with open(options.reply_file, "rb") as reply:
                    body = reply.read()
                status = 207 if self.command == "PROPFIND" else 200
                self.answer(status, body, [("Content-Type", 'application/xml; charset="utf-8"')])
            elif self.command == "PUT":
                self.answer(201)
            else:
                self.answer(405)

        do_PROPFIND = do_GET = do_PUT = do_MKCOL = do_MOVE = do_DELETE = handle_any

    return Handler


class Server(http.server.ThreadingHTTPServer):
    def handle_error(self, request, client_address):
        # A client that refuses a reply and hangs up is what the tests are about.
        if not isinstance(sys.exc_info()[1], ConnectionError):
            super().handle_error(request, client_address)


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("reply_file")
    parser.add_argument("--user", required=True)
    parser.add_argument("--password", required=True)
    parser.add_argument("--cut-short", action="store_true")
    parser.add_argument("--redirect")
    parser.add_argument("--read-limit", type=int, default=0)
    options = parser.parse_args()
    server = Server(("127.0.0.1", 0), handler_class(options))
    sys.stdout.write(f"port {server.server_address[1]}\n")
    sys.stdout.flush()
    server.serve_forever()


if __name__ == "__main__":
    main()
