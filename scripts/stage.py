"""A container, a back end and pushes: what the scripts that put the program under stress share."""
import json
import os
import subprocess
import threading

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..")
MODULE = "quorixEngagement"


class Backend:
    """`qx backend`, and the messages whose receipts it was sent, with how often."""

    def __init__(self, qx, *options):
        self.process = subprocess.Popen([qx, "backend", *options], stdout=subprocess.PIPE, text=True)
        self.url = json.loads(self.process.stdout.readline())["listening"]
        self.receipts = {}
        self.reader = threading.Thread(target=self._read, daemon=True)
        self.reader.start()

    def _read(self):
        for line in self.process.stdout:
            for node in (json.loads(line).get("body") or {}).get("nodes", []):
                for item in node["items"]:
                    message = item["event"]["messageId"]
                    self.receipts[message] = self.receipts.get(message, 0) + 1

    def close(self):
        self.process.terminate()
        self.process.wait()
        self.reader.join()
        self.process.stdout.close()


class Stage:
    """The host's side of one container, with delivery receipts switched on."""

    def __init__(self, qx, directory, url):
        self.qx = qx
        self.environment = dict(os.environ, QX_APP_GROUPS_ROOT=f"{directory}/groups", TMPDIR=directory,
                                QX_BUNDLE=os.path.join(ROOT, "tools", "qx", "Simulator.bundle"))
        self.run("host", "init")
        self.use_backend(url)
        self.run("host", "receipts", "on")
        for module in (MODULE, "mobileAppMessaging"):
            self.run("host", "map-app", module, "A")

    def use_backend(self, url):
        self.run("host", "set-device", "--base-url", url, "--application-id", "A", "--device-id", "D",
                 "--access-token", "secret", "--sdk-version", "1", "--subscriber-token", "S", "--session-id", "S")

    def run(self, *arguments):
        return subprocess.run([self.qx, *arguments], env=self.environment, check=True, capture_output=True,
                              text=True).stdout

    def stored(self):
        """The messages whose receipts are in the container, in its order."""
        return [json.loads(line)["messageId"] for line in self.run("host", "pending", MODULE).splitlines()]


def push(message, **more):
    return json.dumps({"aps": {"alert": {"title": "Hello"}}, "_sid": "VTQX", "_m": message, "_mt": "t", "_r": "r",
                       "_pb": "b", **more})
