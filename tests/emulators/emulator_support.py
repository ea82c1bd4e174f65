"""What the service emulators share: the loopback server and its announcement, the shape of a
request's handling, replies, the fault switches that tests turn on, and random tokens."""

import argparse
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


print_lock = threading.Lock()


def print_line(text):
    """Tells TEXT on its own line; lines from concurrent requests never interleave."""
    with print_lock:
        sys.stdout.write(text + "\n")
        sys.stdout.flush()


class ServiceHandler(http.server.BaseHTTPRequestHandler):
    """One request to a service: a control request under /_emulator/ goes to the emulator's
    control(); any other is told as "<METHOD> <target>" before its body is read, then meets
    the throttling and dropping switches, then gets the service's answer.

    A service's handler gives: EMULATOR (with lock, faults and control()), take_target()
    (sets route_path and what its endpoints read of the target), REFUSALS and refusal_reply()
    for what control() raises, throttled_reply(switch), answer(path), length_required_reply(),
    and where its service differs: SENDING_METHODS, size_refusal(length), half_body_read(path),
    reply_headers(). Class keyword METHODS names the HTTP methods it serves."""

    protocol_version = "HTTP/1.1"
    emulator = None
    refusals = ()
    sending_methods = ("POST", "PUT")

    def __init_subclass__(cls, methods=(), **kwargs):
        super().__init_subclass__(**kwargs)
        for method in methods:
            setattr(cls, "do_" + method, cls.do_any)

    def log_message(self, format, *args):
        pass

    def do_any(self):
        self.take_target()
        self.body = b""
        if self.route_path.startswith("/_emulator/"):
            if self.read_body(required=False):
                with self.emulator.lock:
                    try:
                        self.send(self.control())
                    except self.refusals as refusal:
                        self.send(self.refusal_reply(refusal))
            return
        print_line(f"{self.command} {self.path}")
        self.serve()

    def control(self):
        return self.emulator.control(self)

    def refusal_reply(self, refusal):
        return refusal.reply()

    def serve(self):
        path = self.route_path
        faults = self.emulator.faults
        with self.emulator.lock:
            throttled = next((code for code in ("status_429", "status_503") if faults.take(code, path)), None)
            sending = self.command in self.sending_methods and "Content-Length" in self.headers
            cut_short = sending and faults.take("drop_mid_body", path)
        if cut_short:
            if self.read_body(half=True):
                self.half_body_read(path)
            self.close_connection = True
            return
        if not self.read_body():
            return
        reply = self.throttled_reply(throttled) if throttled else self.answer(path)
        with self.emulator.lock:
            cut = bool(reply.body) and faults.take("drop_mid_body", path)
        self.send(reply, cut=cut)

    def half_body_read(self, path):
        """What the service keeps of a body cut half way (by default nothing)."""

    def read_body(self, half=False, required=True):
        """Reads the body whole (or half of it); answers the service's refusal and false when
        the length is missing or refused."""
        if self.command not in self.sending_methods:
            return True
        length = self.headers.get("Content-Length", None if required else "0")
        if length is None or not length.isdigit():
            return self.refuse(self.length_required_reply())
        refusal = self.size_refusal(int(length))
        if refusal:
            return self.refuse(refusal)
        wanted = int(length) // 2 if half else int(length)
        chunks = []
        while wanted > 0:
            chunk = self.rfile.read(min(wanted, 1 << 20))
            if not chunk:
                self.close_connection = True
                return False
            chunks.append(chunk)
            wanted -= len(chunk)
        self.body = b"".join(chunks)
        return True

    def size_refusal(self, length):
        """The reply refusing a body of LENGTH bytes, or None to take it."""
        return None

    def refuse(self, reply):
        self.send(reply)
        self.close_connection = True
        return False

    def reply_headers(self):
        """Headers the service puts on every reply."""
        return []

    def send(self, reply, cut=False):
        self.send_response(reply.status)
        for name, value in reply.headers:
            self.send_header(name, value)
        if reply.content_type:
            self.send_header("Content-Type", reply.content_type)
        if reply.status != 204:
            self.send_header("Content-Length", str(len(reply.body)))
        for name, value in self.reply_headers():
            self.send_header(name, value)
        self.end_headers()
        if self.command != "HEAD":
            self.wfile.write(reply.body[: len(reply.body) // 2] if cut else reply.body)
        self.wfile.flush()
        if cut:
            self.close_connection = True


class Server(http.server.ThreadingHTTPServer):
    daemon_threads = True

    def handle_error(self, request, client_address):
        # A client that goes away mid-reply (a test's cancel) is no fault of the emulator's.
        if not isinstance(sys.exc_info()[1], ConnectionError):
            super().handle_error(request, client_address)


def arguments(doc):
    """The command line every emulator takes, to which it adds its own: the folder holding the
    account, and the port."""
    parser = argparse.ArgumentParser(description=doc.splitlines()[0])
    parser.add_argument("--folder", required=True, help="where the account's index and files live")
    parser.add_argument("--port", type=int, default=0)
    return parser


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
