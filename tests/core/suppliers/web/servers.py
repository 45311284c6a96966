#!/usr/bin/env python3
"""Web servers of the tests, on the loopback:  servers.py start FOLDER | stop FOLDER

start  leaves two servers running and returns when both answer; their ports are in FOLDER/ports.txt. nginx serves
       files as in life, the scripted one what nginx cannot be made to do. Whatever happens, both end after a quarter
       of an hour.
stop   ends them.
"""
import http.server
import os
import pathlib
import shutil
import signal
import socket
import socketserver
import struct
import subprocess
import sys
import threading
import time

LIFE_SECONDS = 900


def pattern(size):
    """The tests' bytes: see WebTest.cpp."""
    state, out = 1, bytearray()
    for _ in range(size):
        state = (state * 1664525 + 1013904223) & 0xFFFFFFFF
        out.append(state >> 24)
    return bytes(out)


BODY = pattern(100000)


class Scripted(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def log_message(self, *_):
        pass

    def reply(self, body, *, length=None, wait=0.0, split=None, headers=()):
        self.send_response(200)
        self.send_header("Connection", "close")
        if length is not None:
            self.send_header("Content-Length", str(length))
        for name, value in headers:
            self.send_header(name, value)
        self.end_headers()
        split = len(body) if split is None else split
        self.wfile.write(body[:split])
        self.wfile.flush()
        time.sleep(wait)
        self.wfile.write(body[split:])

    def do_HEAD(self):
        self.reply(b"", length=0)

    def do_GET(self):
        self.close_connection = True
        path = self.path.split("?")[0]
        if path == "/nolength":
            self.reply(BODY)
        elif path == "/chunked":
            chunks = b"".join(b"%x\r\n%s\r\n" % (len(c), c) for c in (BODY[:70000], BODY[70000:])) + b"0\r\n\r\n"
            self.reply(chunks, headers=[("Transfer-Encoding", "chunked")])
        elif path == "/short":
            self.reply(BODY[:60000], length=len(BODY))
        elif path == "/reset":
            self.reply(BODY[:60000], length=len(BODY))
            time.sleep(0.2)
            self.connection.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
            self.connection.close()
        elif path == "/stall":
            self.reply(BODY, length=len(BODY), wait=1.5, split=1000)
        elif path == "/longer":
            self.reply(BODY + b"surplus" * 1000, length=len(BODY))
        elif path == "/circle":
            self.send_response(302)
            self.send_header("Location", "/circle")
            self.send_header("Content-Length", "0")
            self.end_headers()
        elif path == "/never":
            time.sleep(60)
        elif path == "/half":
            self.reply(BODY, length=len(BODY), wait=60, split=60000)
        elif path == "/huge":
            self.reply(BODY, length=5000000000)
        elif path == "/negative":
            self.reply(BODY, length=-5)
        elif path == "/garbage":
            self.wfile.write(b"\0\xff" * 5000)
        elif path == "/silent":
            pass
        elif path == "/echo":
            text = f"{self.requestline}\nUser-Agent: {self.headers['User-Agent']}\n".encode()
            self.reply(text, length=len(text))
        else:
            self.send_error(404)

    def handle_one_request(self):
        try:
            super().handle_one_request()
        except OSError:
            self.close_connection = True


class Server(socketserver.ThreadingMixIn, http.server.HTTPServer):
    daemon_threads = True

    def handle_error(self, *_):
        pass


NGINX = """
daemon off;
%(user)s
worker_processes 1;
pid nginx.pid;
error_log error.log;
events { worker_connections 64; }
http {
  access_log off;
  client_body_temp_path temp; proxy_temp_path temp; fastcgi_temp_path temp; uwsgi_temp_path temp; scgi_temp_path temp;
  default_type application/octet-stream;
  server {
    listen 127.0.0.1:%(port)d;
    root www;
    location = /moved { return 302 /known.bin; }
    location = /once.bin { rewrite ^ /known.bin break; keepalive_timeout 0; }
  }
}
"""


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def answers(port):
    try:
        socket.create_connection(("127.0.0.1", port), 1).close()
        return True
    except OSError:
        return False


def start_nginx(folder):
    program = shutil.which("nginx", path=os.environ["PATH"] + ":/usr/sbin")
    if not program:
        sys.exit("nginx is missing: run make setup")
    www = folder / "www"
    www.mkdir(exist_ok=True)
    (folder / "temp").mkdir(exist_ok=True)
    (www / "known.bin").write_bytes(BODY)
    (www / "empty.bin").write_bytes(b"")
    (www / "a b.txt").write_bytes(b"a blank in the name")
    for _ in range(5):  # somebody else may take the port in between
        port = free_port()
        user = "user root;" if os.geteuid() == 0 else ""
        (folder / "nginx.conf").write_text(NGINX % {"port": port, "user": user})
        nginx = subprocess.Popen([program, "-p", str(folder), "-c", "nginx.conf", "-e", "error.log"],
                                 stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        for _ in range(100):
            if answers(port):
                return nginx, port
            if nginx.poll() is not None:
                break
            time.sleep(0.05)
        nginx.terminate()
        nginx.wait()
    sys.exit(f"nginx does not start: see {folder}/error.log")


def serve(folder):
    nginx, nginx_port = start_nginx(folder)
    scripted = Server(("127.0.0.1", 0), Scripted)
    threading.Thread(target=scripted.serve_forever, daemon=True).start()
    ports = f"{nginx_port} {scripted.server_address[1]} {free_port()}\n"  # nobody listens on the last
    (folder / "ports.new").write_text(ports)
    (folder / "ports.new").rename(folder / "ports.txt")
    signal.signal(signal.SIGTERM, lambda *_: sys.exit(0))
    try:
        time.sleep(LIFE_SECONDS)
    finally:
        (folder / "ports.txt").unlink(missing_ok=True)
        nginx.terminate()
        nginx.wait()
        (folder / "pid.txt").unlink(missing_ok=True)


def start(folder):
    stop(folder)
    folder.mkdir(parents=True, exist_ok=True)
    (folder / "ports.txt").unlink(missing_ok=True)
    log = open(folder / "servers.log", "w", encoding="utf-8")
    child = subprocess.Popen([sys.executable, __file__, "serve", str(folder)], stdin=subprocess.DEVNULL, stdout=log,
                             stderr=log, start_new_session=True)
    (folder / "pid.txt").write_text(str(child.pid))
    for _ in range(300):
        if (folder / "ports.txt").exists():
            return
        if child.poll() is not None:
            break
        time.sleep(0.05)
    sys.exit(f"the servers do not start: {(folder / 'servers.log').read_text()}")


def stop(folder):
    try:
        pid = int((folder / "pid.txt").read_text())
        # The number may be somebody else's by now.
        if str(folder) not in pathlib.Path(f"/proc/{pid}/cmdline").read_text(encoding="utf-8"):
            return
        os.kill(pid, signal.SIGTERM)
    except (OSError, ValueError):
        return
    for _ in range(100):
        if not pathlib.Path(f"/proc/{pid}").exists() or not (folder / "pid.txt").exists():
            return
        time.sleep(0.05)


if __name__ == "__main__":
    {"start": start, "stop": stop, "serve": serve}[sys.argv[1]](pathlib.Path(sys.argv[2]).resolve())
