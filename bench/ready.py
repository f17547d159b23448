#!/usr/bin/env python3
"""Milliseconds from a keeper's start until it calls its room ready, at a stand-in for the SDK server of
Agones on this machine: bench/ready.py [DRENCH_KEEPER [STARTS]]"""
import http.server
import os
import statistics
import subprocess
import sys
import threading
import time

PORT = "5099"


class SdkStandIn(http.server.BaseHTTPRequestHandler):
    ready = threading.Event()

    def answer(self):
        self.rfile.read(int(self.headers.get("Content-Length", 0)))
        if self.path == "/ready":
            self.ready.set()
        self.send_response(200)
        self.send_header("Content-Length", "2")
        self.end_headers()
        self.wfile.write(b"{}")

    do_GET = do_PATCH = do_POST = do_PUT = answer

    def log_message(self, *_):
        pass


keeper = sys.argv[1] if len(sys.argv) > 1 else "build/release/drench-keeper"
starts = int(sys.argv[2]) if len(sys.argv) > 2 else 20
server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), SdkStandIn)
server.handle_error = lambda *_: None
threading.Thread(target=server.serve_forever, daemon=True).start()
environment = {**os.environ, "AGONES_SDK_HTTP_PORT": str(server.server_address[1])}
taken = []
for _ in range(starts):
    SdkStandIn.ready.clear()
    start = time.monotonic()
    process = subprocess.Popen([keeper, PORT], env=environment, stdout=subprocess.DEVNULL)
    if not SdkStandIn.ready.wait(20):
        sys.exit(f"{keeper} never became ready")
    taken.append((time.monotonic() - start) * 1000)
    process.terminate()
    process.wait()
taken.sort()
print(f"{starts} starts: median {statistics.median(taken):.0f} ms, longest {taken[-1]:.0f} ms")
