#!/usr/bin/python3
"""A UnifiedPush distributor with the push server behind it, on the loopback, that misbehaves when told to.

    distributor.py [--name NAME] [--version 1|2] [--state FILE] [--port PORT] [--register ANSWER]

It owns the bus name org.unifiedpush.Distributor.NAME and prints what happens, one JSON object a line:

    {"event": "listening", "url": "http://127.0.0.1:40123"}
    {"event": "registered", "service", "token", "endpoint", "vapid"?}    {"event": "unregistered", "token"}
    {"event": "acknowledged", "id"}                                      {"event": "failed", "id", "error"}

A POST to an endpoint is a push: taken (201) and delivered until the connector answers, every half second, in order.
The endpoint's query makes its delivery go wrong:

    ?token=TEXT   it bears another token             ?anonymous   it bears no id
    ?stranger     another connection than the distributor's delivers it
    ?repeat=N     it is delivered N times over       ?forget      its acknowledgement is, and a restart delivers it again

--state keeps registrations and what is not acknowledged for the next start (with --port, under the same endpoints).
--register answers every registration with that reason of failure, or, `hang`, never.
"""
import argparse
import base64
import json
import os
import signal
import uuid
from concurrent.futures import Future
from http.server import BaseHTTPRequestHandler, ThreadingHTTPServer
from threading import Thread
from urllib.parse import parse_qs, urlparse

import dbus
import dbus.service
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

INTERFACE = "org.unifiedpush.Distributor"
CONNECTOR = "org.unifiedpush.Connector"
CONNECTOR_PATH = "/org/unifiedpush/Connector"
MOST_BYTES = 4096


def say(event, **details):
    print(json.dumps({"event": event, **details}), flush=True)


class Distributor:
    def __init__(self, bus, options):
        self.bus, self.options, self.url = bus, options, None
        self.stranger = None
        self.registrations = {}  # token -> {service, path}
        self.pending = []  # {id, token, message, query}, in order of arrival
        self.under_way = set()
        if options.state and os.path.exists(options.state):
            with open(options.state, encoding="utf-8") as file:
                self.registrations, self.pending = json.load(file)

    def save(self):
        if not self.options.state:
            return
        with open(self.options.state + "~", "w", encoding="utf-8") as file:
            json.dump([self.registrations, self.pending], file)
        os.replace(self.options.state + "~", self.options.state)

    # --- The connector's calls

    def register(self, service, token, vapid=None):
        path = self.registrations.get(token, {}).get("path") or f"/push/{uuid.uuid4()}"
        self.registrations[token] = {"service": service, "path": path}
        self.save()
        say("registered", service=service, token=token, endpoint=self.url + path, **({"vapid": vapid} if vapid else {}))
        GLib.idle_add(self.send_endpoint, token)

    def send_endpoint(self, token):
        registration, endpoint = self.registrations[token], self.url + self.registrations[token]["path"]
        v2 = dbus.Dictionary({"token": token, "endpoint": endpoint}, signature="sv")
        self.call(self.bus, registration["service"], "NewEndpoint", (token, endpoint), "ss", v2)

    def unregister(self, token):
        registration = self.registrations.pop(token, None)
        self.save()
        say("unregistered", token=token)
        if registration:
            v2 = dbus.Dictionary({"token": token}, signature="sv")
            self.call(self.bus, registration["service"], "Unregistered", (token,), "s", v2)

    def call(self, bus, service, method, v1, v1_signature, v2, done=lambda *_: None, failed=lambda *_: None):
        version, signature = self.options.version, v1_signature if self.options.version == "1" else "a{sv}"
        bus.call_async(service, CONNECTOR_PATH, CONNECTOR + version, method, signature, v1 if version == "1" else (v2,),
                       done, failed, timeout=60)

    # --- Pushes

    def accept(self, path, query, body):
        """The push server's answer to a POST."""
        tokens = [token for token, registration in self.registrations.items() if registration["path"] == path]
        if not tokens:
            return 404
        if not 0 < len(body) <= MOST_BYTES:
            return 413
        message = base64.b64encode(body).decode()
        self.pending.append({"id": str(uuid.uuid4()), "token": tokens[0], "message": message, "query": query})
        self.save()
        self.deliver_pending()
        return 201

    def deliver_pending(self):
        for push in list(self.pending):
            if push["id"] not in self.under_way and push["token"] in self.registrations:
                self.under_way.add(push["id"])
                for _ in range(int(push["query"].get("repeat", ["1"])[0])):
                    self.deliver(push)
        return True

    def deliver(self, push):
        query = push["query"]
        token = query.get("token", [push["token"]])[0]
        message = dbus.ByteArray(base64.b64decode(push["message"]))
        v2 = dbus.Dictionary({"token": token, "message": message}, signature="sv")
        if "anonymous" not in query:
            v2["id"] = push["id"]
        if "stranger" in query and self.stranger is None:
            self.stranger = dbus.bus.BusConnection(os.environ["DBUS_SESSION_BUS_ADDRESS"])
        self.call(self.stranger if "stranger" in query else self.bus, self.registrations[push["token"]]["service"],
                  "Message", (token, message, v2.get("id", "")), "says", v2,
                  lambda *_: self.acknowledged(push), lambda error: self.failed(push, error))

    def acknowledged(self, push):
        say("acknowledged", id=push["id"])
        if push in self.pending and "forget" not in push["query"]:
            self.pending.remove(push)
            self.save()

    def failed(self, push, error):
        say("failed", id=push["id"], error=error.get_dbus_name())
        if {"token", "stranger"} & set(push["query"]):  # nobody takes these, however often
            self.acknowledged(push)
        self.under_way.discard(push["id"])


class Version2(dbus.service.Object):
    def __init__(self, bus, distributor):
        super().__init__(bus, "/org/unifiedpush/Distributor")
        self.distributor = distributor

    @dbus.service.method(INTERFACE + "2", "a{sv}", "a{sv}", async_callbacks=("done", "_failed"))
    def Register(self, fields, done, _failed):
        refusal = self.distributor.options.register
        if refusal == "hang":
            return
        if refusal:
            done({"success": "REGISTRATION_FAILED", "reason": refusal})
            return
        self.distributor.register(str(fields["service"]), str(fields["token"]), str(fields.get("vapid", "")))
        done({"success": "REGISTRATION_SUCCEEDED"})

    @dbus.service.method(INTERFACE + "2", "a{sv}", "a{sv}")
    def Unregister(self, fields):
        self.distributor.unregister(str(fields["token"]))
        return dbus.Dictionary({}, signature="sv")


class Version1(dbus.service.Object):
    def __init__(self, bus, distributor):
        super().__init__(bus, "/org/unifiedpush/Distributor")
        self.distributor = distributor

    @dbus.service.method(INTERFACE + "1", "sss", "ss")
    def Register(self, service, token, _description):
        if self.distributor.options.register:
            return "REGISTRATION_FAILED", self.distributor.options.register
        self.distributor.register(str(service), str(token))
        return "REGISTRATION_SUCCEEDED", ""

    @dbus.service.method(INTERFACE + "1", "s", "")
    def Unregister(self, token):
        self.distributor.unregister(str(token))


def serve(distributor, port):
    class Handler(BaseHTTPRequestHandler):
        def do_POST(self):
            target = urlparse(self.path)
            body = self.rfile.read(int(self.headers.get("Content-Length", 0)))
            status = on_main_loop(lambda: distributor.accept(
                target.path, parse_qs(target.query, keep_blank_values=True), body)) if "TTL" in self.headers else 400
            self.send_response(status)
            self.send_header("Content-Length", "0")
            self.end_headers()

        def log_message(self, *_):
            pass

    server = ThreadingHTTPServer(("127.0.0.1", port), Handler)
    Thread(target=server.serve_forever, daemon=True).start()
    return f"http://127.0.0.1:{server.server_port}"


def on_main_loop(function):
    future = Future()
    GLib.idle_add(lambda: future.set_result(function()))
    return future.result()


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--name", default="Test")
    parser.add_argument("--version", default="2", choices=["1", "2"])
    parser.add_argument("--state")
    parser.add_argument("--port", type=int, default=0)
    parser.add_argument("--register")
    options = parser.parse_args()
    DBusGMainLoop(set_as_default=True)
    bus = dbus.SessionBus()
    distributor = Distributor(bus, options)
    distributor.url = serve(distributor, options.port)
    _calls = {"1": Version1, "2": Version2}[options.version](bus, distributor)
    name = dbus.service.BusName(f"{INTERFACE}.{options.name}", bus)
    say("listening", url=distributor.url, name=name.get_name())
    for token in distributor.registrations:
        distributor.send_endpoint(token)
    GLib.timeout_add(500, distributor.deliver_pending)
    loop = GLib.MainLoop()
    GLib.unix_signal_add(GLib.PRIORITY_DEFAULT, signal.SIGTERM, loop.quit)
    loop.run()


if __name__ == "__main__":
    main()
