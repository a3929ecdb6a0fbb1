#!/usr/bin/python3
"""From a sealed push to the opened app, with real parts: a bus, a distributor, the agent, the example app and its
extensions, a notification server, a pointer that clicks.

    QX_PROGRAMS=build/release/bin tests/agent/endtoend_test.py [EndToEndTest.test_...]
"""
import functools
import json
import os
import signal
import socket
import subprocess
import time
import unittest
import urllib.request

import dbus

from desktop import HERE, SHOP, Desktop

PROGRAMS = os.environ.get("QX_PROGRAMS", "build/release/bin")


def on_desktop(test):
    @functools.wraps(test)
    def run(self):
        with Desktop(PROGRAMS) as self.desktop:
            test(self)
    return run


def plain(title, **more):
    return {"aps": {"alert": {"title": title, "body": "1 < 2 & more"}, "mutable-content": 1}, "_sid": "VTQX", **more}


def carousel(images, *panels):
    items = [{"id": panel, "md": {"ul": f"{images}/files/{panel}.png"}, "ti": {"tx": panel},
              "ac": [{"t": "2", "ul": f"https://shop.example/{panel}"}]} for panel in panels]
    return plain("To the sea", _m="m17", _mt="marketing", _r="r4", _rf={"vt": {"t": "0", "it": items}})


class EndToEndTest(unittest.TestCase):
    # --- The pieces of the stories

    def subscribe(self, *arguments):
        """A distributor, the app, and where its pushes are to be sent."""
        self.arguments = ["--state", self.desktop.root / "distributor", *arguments]
        self.distributor = self.desktop.start_distributor(*self.arguments)
        self.desktop.install_shop()
        [self.subscription] = self.desktop.run("qx-agent", "endpoint", "--app", SHOP)

    def send(self, push, query=""):
        file = self.desktop.root / "subscription.json"
        file.write_text(json.dumps({**self.subscription, "endpoint": self.subscription["endpoint"] + query}))
        [answer] = self.desktop.run("qx", "send", "--subscription", file, "-", input=json.dumps(push) + "\n")
        self.assertEqual(answer["status"], 201)

    def send_unsealed(self, body):
        request = urllib.request.Request(self.subscription["endpoint"], data=body, headers={"TTL": "60"})
        with urllib.request.urlopen(request, timeout=20) as answer:
            self.assertEqual(answer.status, 201)

    def status(self):
        [status] = self.desktop.run("qx-agent", "status", "--app", SHOP)
        return status

    def wait_for_status(self, **counts):
        self.desktop.wait_for(lambda: counts.items() <= self.status().items(), what=f"{counts}, not {self.status()}")

    def wait_for_titles(self, server, *titles):
        self.desktop.wait_for(lambda: [str(shown["summary"]) for shown in server.notifications()] == list(titles),
                              what=f"{titles}, not {[str(shown['summary']) for shown in server.notifications()]}")

    def colours_of(self, window):
        counted = subprocess.run(["import", "-window", window.id, "-format", "%k", "info:"], check=True, timeout=20,
                                 env=self.desktop.environment, capture_output=True)
        return int(counted.stdout)

    # --- The stories

    @on_desktop
    def test_a_click_leads_through_the_carousel_to_the_app(self):
        desktop = self.desktop
        desktop.start_dunst()
        self.subscribe()
        desktop.start_shop_once()
        images = desktop.start("qx", "backend")
        desktop.wait_for(lambda: images.lines)
        self.send(carousel(images.lines[0]["listening"], "ocean", "forest"))

        notification = desktop.notification_window()
        self.assertGreater(self.colours_of(notification), 500, "a picture is in it")
        desktop.click(notification)
        window = desktop.window("^To the sea$")
        desktop.wait_for(lambda: self.colours_of(window) > 500, what="the panel's picture")
        desktop.click(window)

        desktop.window("Shop – notification m17:r4")
        desktop.wait_for(lambda: not desktop.has_window("^To the sea$"), what="the carousel to close")
        [click] = desktop.root.glob("data/app-groups/*/*.carousel.*")
        self.assertEqual(json.loads(click.read_text())["panelId"], "ocean")
        self.wait_for_status(received=1, shown=1, waiting=0)

    @on_desktop
    def test_takes_pushes_from_nobody_but_the_distributor_and_each_once(self):
        server = self.desktop.start_mock()
        self.subscribe()
        self.send(plain("wrong token"), "?token=guessed")
        self.send(plain("another sender"), "?stranger")
        self.send_unsealed(b"not sealed at all")
        self.send(plain("repeated"), "?repeat=3")
        self.send(plain("repeated without id"), "?repeat=3&anonymous")
        self.send(plain("the acknowledgement is forgotten"), "?forget")
        self.wait_for_titles(server, "repeated", "repeated without id", "the acknowledgement is forgotten")
        self.distributor.kill(signal.SIGTERM)
        self.distributor = self.desktop.start_distributor(*self.arguments)
        self.desktop.wait_for(lambda: self.distributor.lines[-1]["event"] == "acknowledged")
        self.wait_for_status(received=3, shown=3, waiting=0, refused=3)
        self.assertEqual(len(server.notifications()), 3)

    @on_desktop
    def test_says_no_more_than_the_server_can_show(self):
        server = self.desktop.start_mock(capabilities=["body"])
        self.subscribe()
        self.send(plain("<b>Plain</b>"))
        [shown] = self.desktop.wait_for(server.notifications)
        self.assertEqual((shown["summary"], shown["body"]), ("<b>Plain</b>", "1 < 2 & more"))
        self.assertEqual(list(shown["actions"]), [])

        server.program.kill()
        server = self.desktop.start_mock(capabilities=["body", "body-markup", "actions"])
        self.send(plain("<b>Markup</b>"))
        [shown] = self.desktop.wait_for(server.notifications)
        self.assertEqual((shown["summary"], shown["body"]), ("<b>Markup</b>", "1 &lt; 2 &amp; more"))
        self.assertEqual(list(shown["actions"])[0], "default")

    @on_desktop
    def test_no_push_is_lost_to_a_server_that_is_away_or_talks_nonsense(self):
        self.subscribe()
        self.send(plain("nobody shows anything"))
        self.wait_for_status(received=1, shown=0, waiting=1)
        server = self.desktop.start_mock()
        self.wait_for_titles(server, "nobody shows anything")
        server.answer_nonsense()
        self.send(plain("nonsense"))
        self.wait_for_status(received=2, shown=1, waiting=1)
        server.program.kill()
        server = self.desktop.start_mock()
        self.wait_for_titles(server, "nonsense")
        server.answer("time.sleep(3600)")
        self.send(plain("hangs"))
        self.wait_for_status(received=3, waiting=1)
        server.program.kill()
        server = self.desktop.start_mock()
        self.wait_for_titles(server, "hangs")
        self.wait_for_status(received=3, shown=3, waiting=0)

    @on_desktop
    def test_a_killed_agent_is_started_again_by_the_next_push(self):
        server = self.desktop.start_mock()
        self.subscribe("--version", "1")
        self.send(plain("before", _m="m", _r="r"))
        self.wait_for_titles(server, "before")
        self.kill(SHOP + ".Push")
        self.send(plain("after", _m="m", _r="r"))
        self.wait_for_titles(server, "before", "after")
        self.assertEqual(server.notifications()[1]["replaces_id"], 1, "it is the same message, said anew")
        self.kill(SHOP + ".Push")
        server.invoke(1)  # nobody hears it
        self.send(plain("last"))
        self.wait_for_titles(server, "before", "after", "last")
        server.invoke(1)
        self.desktop.window("Shop – notification m:r")
        self.kill(SHOP)
        self.send(plain("the app is gone", _m="n", _r="s"))
        self.wait_for_titles(server, "before", "after", "last", "the app is gone")
        server.invoke(3)
        self.desktop.window("Shop – notification n:s")
        self.wait_for_status(received=4, shown=4, waiting=0)

    def kill(self, name):
        os.kill(self.desktop.process_of(name), signal.SIGKILL)
        self.desktop.wait_for(lambda: not self.desktop.bus.name_has_owner(name))

    def start_agent(self, *arguments):
        agent = self.desktop.start("qx-agent", "run", "--app", SHOP, *arguments)
        self.desktop.wait_for(lambda: self.desktop.bus.name_has_owner(SHOP + ".Push"))
        return agent

    def deliver(self, push):
        """By lines: handed to the agent that runs, else shown by one that then ends."""
        self.desktop.run("qx-agent", "run", "--app", SHOP, "--source", "lines", input=json.dumps(push) + "\n")

    @on_desktop
    def test_keeps_the_extension_in_a_unit_where_it_can(self):
        server = self.desktop.start_mock()
        for result, title in (("done", "in a unit"), ("failed", "without one")):
            manager = self.desktop.start(HERE / "usermanager.py", "--result", result)
            self.desktop.wait_for(lambda: self.desktop.bus.name_has_owner("org.freedesktop.systemd1"))
            self.desktop.install_shop()
            self.deliver(plain(title))
            reloaded, started, *_ = manager.lines
            self.assertEqual(reloaded["event"], "reloaded")
            unit = started["properties"]
            self.assertEqual((unit["NoNewPrivileges"], unit["PrivateTmp"], unit["ProtectSystem"]), (True, True, "strict"))
            self.assertGreaterEqual(unit["MemoryMax"], 24 << 20)
            self.assertEqual(len(unit["ReadWritePaths"]), 2, "the agent's temporary directory and the container")
            manager.kill()
        self.wait_for_titles(server, "in a unit", "without one")
        self.wait_for_status(received=2, shown=2)
        self.assertNotIn("lastError", self.status())

    @on_desktop
    def test_presents_through_the_portal_in_a_sandbox(self):
        name, path, interface = ("org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
                                 "org.freedesktop.portal.Notification")
        self.desktop.start("/usr/bin/python3", "-m", "dbusmock", name, path, interface)
        self.desktop.wait_for(lambda: self.desktop.bus.name_has_owner(name))
        portal = dbus.Interface(self.desktop.bus.get_object(name, path), "org.freedesktop.DBus.Mock")
        portal.AddMethods(interface, [("AddNotification", "sa{sv}", "", ""), ("RemoveNotification", "s", "", "")])
        self.desktop.environment["SNAP"] = "shop"
        self.desktop.install_shop()
        agent = self.start_agent("--idle", "1")
        self.deliver(plain("<Sandboxed>", _m="m17", _r="r4"))
        [(_, (number, shown))] = self.desktop.wait_for(lambda: portal.GetMethodCalls("AddNotification"))
        self.assertEqual((shown["title"], shown["body"]), ("<Sandboxed>", "1 < 2 & more"))
        portal.EmitSignal(interface, "ActionInvoked", "ssav", [number, "default", dbus.Array([], "v")])
        self.desktop.window("Shop – notification m17:r4")
        self.desktop.wait_for(lambda: not agent.running(), what="the end of an agent that shows nothing any more")

    @on_desktop
    def test_show_more_opens_the_carousel_and_a_click_runs_an_app_that_the_bus_does_not_know(self):
        server = self.desktop.start_mock()
        self.desktop.install_shop()
        said = self.desktop.root / "said"
        script = self.desktop.root / "run shop"
        script.write_text(f"#!/bin/sh\necho \"$1 $XDG_ACTIVATION_TOKEN\" >'{said}'\n")
        script.chmod(0o700)
        (self.desktop.root / "data/applications" / f"{SHOP}.desktop").write_text(
            f'[Desktop Entry]\nType=Application\nName=Shop\nExec="{script}" --open %U\n')
        self.start_agent()
        self.deliver(carousel("http://127.0.0.1:9", "ocean"))
        self.deliver(plain("plain"))
        self.wait_for_titles(server, "To the sea", "plain")
        self.assertEqual(list(server.notifications()[0]["actions"])[2:], ["expand", "Show more"])
        server.invoke(1, "expand")
        self.desktop.window("^To the sea$")
        self.desktop.press("Escape")
        self.desktop.wait_for(lambda: not self.desktop.has_window("^To the sea$"), what="the carousel to close")
        self.assertFalse(said.exists() or server.closed(), "closing the carousel is no tap")
        server.invoke(2, token="front")
        self.desktop.wait_for(lambda: said.exists() and said.read_text())
        self.assertEqual(said.read_text(), "--open front\n")

    @on_desktop
    def test_takes_lines_from_a_broker_and_leaves_out_what_is_no_push(self):
        server = self.desktop.start_mock()
        self.desktop.install_shop()
        with socket.create_server(("127.0.0.1", 0)) as free:
            port = str(free.getsockname()[1])
        self.desktop.start("mosquitto", "-p", port)
        publish = functools.partial(subprocess.run, timeout=20, env=self.desktop.environment)
        self.desktop.wait_for(lambda: publish(["mosquitto_pub", "-p", port, "-t", "any", "-n"],
                                              stderr=subprocess.DEVNULL).returncode == 0)
        self.desktop.start("sh", "-c", f"mosquitto_sub -p {port} -q 1 -c -i shop -t shop/pushes |"
                                       f" qx-agent run --app {SHOP} --source lines")
        self.desktop.wait_for(lambda: self.desktop.bus.name_has_owner(SHOP + ".Push"))
        publish(["mosquitto_pub", "-p", port, "-q", "1", "-t", "shop/pushes", "-l"], check=True,
                input="\n".join(map(json.dumps, (plain("one"), plain("two")))).encode() + b"\n")
        self.wait_for_titles(server, "one", "two")
        lines = [json.dumps(plain("three")), "no push", "x" * (5 << 20), json.dumps(plain("four"))]
        self.assertIn("4 MiB", self.desktop.run("qx-agent", "run", "--app", SHOP, "--source", "lines", fails=True,
                                                input="\n".join(lines)))
        self.wait_for_titles(server, "one", "two", "three", "four")
        self.wait_for_status(received=4, shown=4, putAside=1)

    @on_desktop
    def test_a_push_on_its_way_to_an_agent_that_ends_is_shown(self):
        server = self.desktop.start_mock()
        self.desktop.install_shop()
        agent = self.start_agent("--idle", "1")
        agent.process.send_signal(signal.SIGSTOP)
        push = ",".join(str(byte) for byte in json.dumps(plain("late")).encode())
        subprocess.run(["dbus-send", "--session", "--type=method_call", f"--dest={SHOP}.Push", "/push",
                        "com.veltro.quorix.Push1.Deliver", f"array:byte:{push}"], check=True, timeout=20,
                       env=self.desktop.environment)
        time.sleep(1.5)  # until its time is up
        agent.process.send_signal(signal.SIGCONT)
        self.wait_for_titles(server, "late")

    @on_desktop
    def test_says_why_there_is_no_endpoint(self):
        self.desktop.install_shop()
        endpoint = functools.partial(self.desktop.run, "qx-agent", "endpoint", "--app", SHOP, fails=True)
        self.assertIn("no distributor", endpoint().lower())
        self.desktop.start_distributor("--register", "NETWORK")
        other = self.desktop.start_distributor("--name", "Other")
        self.assertIn("org.unifiedpush.Distributor.Other", endpoint())
        other.kill()
        self.assertIn("NETWORK", endpoint())
        other = self.desktop.start_distributor("--name", "Other")
        self.desktop.install_shop("--distributor", "org.unifiedpush.Distributor.Other")
        [subscription] = self.desktop.run("qx-agent", "endpoint", "--app", SHOP)
        self.assertTrue(subscription["endpoint"].startswith(other.lines[0]["url"]), "it reaches the agent that runs")

    @on_desktop
    def test_starts_with_the_session_until_it_is_uninstalled(self):
        self.desktop.install_shop()
        wanted = self.desktop.root / "config/systemd/user/default.target.wants" / f"{SHOP}.Push.service"
        self.assertIn("Restart=on-failure", wanted.read_text())
        self.desktop.run("qx-agent", "uninstall", "--app", SHOP)
        self.assertEqual(list(self.desktop.root.glob("*/**/*.Push*")), [])


if __name__ == "__main__":
    unittest.main()
