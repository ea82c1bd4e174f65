"""What the service emulators share: the loopback server and its announcement, replies, the
fault switches that tests turn on, and random tokens."""

import http.server
import json
import secrets
import string
import sys
import threading


def random_text(length, alphabet=string.ascii_letters + string.digits):
    return "".join(secrets.choice(alphabet) for _ in range(length))


class Reply:
    def __init__(self, status, body=b"", content_type=None, headers=()):
        self.status = status
        self.body = body
        self.content_type = content_type
        self.headers = list(headers)

    @classmethod
    def json(cls, status, value, headers=()):
        return cls(status, json.dumps(value).encode(), "application/json", headers)


class Faults:
    """The switches tests turn on: each serves COUNT requests whose path starts with PREFIX,
    after letting the first SKIP of them pass."""

    def __init__(self):
        self.lock = threading.Lock()
        self.pending = {}

    def set(self, name, count, prefix="", skip=0):
        with self.lock:
            if count > 0:
                self.pending[name] = [count, prefix, skip]
            else:
                self.pending.pop(name, None)

    def take(self, name, path):
        """Whether this request gets switch NAME, counting it."""
        with self.lock:
            pending = self.pending.get(name)
            if pending is None or (pending[1] and not path.startswith(pending[1])):
                return False
            if pending[2] > 0:
                pending[2] -= 1
                return False
            pending[0] -= 1
            if pending[0] <= 0:
                del self.pending[name]
            return True


class Server(http.server.ThreadingHTTPServer):
    daemon_threads = True

    def handle_error(self, request, client_address):
        # A client that goes away mid-reply (a test's cancel) is no fault of the emulator's.
        if not isinstance(sys.exc_info()[1], ConnectionError):
            super().handle_error(request, client_address)


def serve(port, handler, on_port=None):
    """Serves HANDLER on 127.0.0.1:PORT (0: one the system picks) after telling the port as
    "LISTENING <port>", once ON_PORT has been given it."""
    server = Server(("127.0.0.1", port), handler)
    chosen = server.server_address[1]
    if on_port:
        on_port(chosen)
    sys.stdout.write(f"LISTENING {chosen}\n")
    sys.stdout.flush()
    server.serve_forever()
