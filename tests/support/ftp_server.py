#!/usr/bin/python3
"""The FTP server of the tests: pyftpdlib on 127.0.0.1, on a port the system picks.

Prints "port N" once it listens and "STOR /path" when a store begins (both flushed), so
that a test can wait for either. One user with every right on ROOT. The options make it
a slow or a hostile server, or one that lists only with LIST.
"""

import argparse
import logging
import sys

from pyftpdlib.authorizers import DummyAuthorizer
from pyftpdlib.handlers import BufferedIteratorProducer, FTPHandler, ThrottledDTPHandler
from pyftpdlib.servers import FTPServer


def announce(line):
    sys.stdout.write(line + "\n")
    sys.stdout.flush()


def handler_class(options):
    class Handler(FTPHandler):
        def ftp_STOR(self, file, mode="w"):
            announce("STOR " + self.fs.fs2ftp(file))
            return super().ftp_STOR(file, mode)

        def ftp_MLSD(self, path):
            if options.cut_listing:
                # The transfer is announced, then the control connection goes without "226".
                self.respond("150 File status okay. About to open data connection.")
                self.close()
                return None
            if options.hostile_listing is not None:
                return self.send_hostile_listing(path, "MLSD")
            return super().ftp_MLSD(path)

        def ftp_LIST(self, path):
            if options.hostile_listing is not None:
                return self.send_hostile_listing(path, "LIST")
            return super().ftp_LIST(path)

        def send_hostile_listing(self, path, cmd):
            with open(options.hostile_listing, "rb") as listing:
                data = listing.read()
            self.push_dtp_data(BufferedIteratorProducer(iter([data])), isproducer=True, cmd=cmd)
            return path

    if options.no_mlsd:
        # As an older server: "500 Command not understood", and no MLST in FEAT.
        Handler.proto_cmds = {name: entry for name, entry in Handler.proto_cmds.items() if name not in ("MLSD", "MLST")}
    if options.read_limit:
        throttled = type("ThrottledReads", (ThrottledDTPHandler,), {"read_limit": options.read_limit})
        Handler.dtp_handler = throttled
    authorizer = DummyAuthorizer()
    authorizer.add_user(options.user, options.password, options.root, perm="elradfmwMT")
    Handler.authorizer = authorizer
    Handler.banner = "Test server ready."
    Handler.auth_failed_timeout = 0
    return Handler


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("root")
    parser.add_argument("--user", required=True)
    parser.add_argument("--password", required=True)
    parser.add_argument("--read-limit", type=int, default=0, help="bytes per second a data channel reads")
    parser.add_argument("--hostile-listing", help="a file whose bytes every MLSD and LIST sends")
    parser.add_argument("--cut-listing", action="store_true", help="MLSD closes the connection after 150")
    parser.add_argument("--no-mlsd", action="store_true", help="MLSD and MLST are unknown commands")
    options = parser.parse_args()

    logging.basicConfig(level=logging.ERROR, stream=sys.stderr)
    server = FTPServer(("127.0.0.1", 0), handler_class(options))
    announce("port %d" % server.socket.getsockname()[1])
    server.serve_forever(handle_exit=True)


if __name__ == "__main__":
    main()
