"""A desktop of its own to try the agent on: a private bus, a screen (Xvfb), a notification server, a pointer.

    with Desktop(programs="build/release/bin") as desktop:
        desktop.start_dunst()                                 # a real server ...
        server = desktop.start_mock(capabilities=["body"])    # ... or one that can little, or misbehaves
        distributor = desktop.start_distributor("--state", file)
        desktop.install_shop()                                # the app of examples/Shop, known to bus and agent
        desktop.run("qx-agent", "status", "--app", SHOP)      # ends; gives its JSON lines
        agent = desktop.start("qx-agent", "run", "--app", SHOP)   # goes on; agent.lines grows
        desktop.wait_for(lambda: server.notifications())
        desktop.click(desktop.notification_window())
        desktop.screenshot("shown.png")

Home, XDG directories and TMPDIR lie below desktop.root, which goes at the end; the bus starts services that are
installed there. What programs write to standard error is in desktop.root/logs and, when a test fails, printed.
"""
import collections
import json
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from pathlib import Path

import dbus
import dbus.bus

NOTIFICATIONS = "org.freedesktop.Notifications"
SHOP = "com.example.Shop"
HERE = Path(__file__).parent

BUS_CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:dir={root}</listen>
  <servicedir>{root}/data/dbus-1/services</servicedir>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""

# A click on a notification is its default action, as on most desktops.
DUNST_CONFIGURATION = """[global]
    width = 360
    height = 300
    origin = top-right
    offset = 20x20
    frame_width = 1
    frame_color = "#c8c8d0"
    separator_height = 1
    corner_radius = 10
    padding = 14
    horizontal_padding = 16
    text_icon_padding = 14
    font = Inter 11
    markup = full
    format = "<b>%s</b>\\n%b"
    icon_position = left
    max_icon_size = 96
    show_indicators = no
    mouse_left_click = do_action, close_current
    mouse_right_click = close_current
[urgency_low]
    background = "#ffffff"
    foreground = "#2b2b33"
    timeout = 0
[urgency_normal]
    background = "#ffffff"
    foreground = "#2b2b33"
    timeout = 0
[urgency_critical]
    background = "#ffffff"
    foreground = "#2b2b33"
    timeout = 0
"""


OPENBOX_CONFIGURATION = """<openbox_config xmlns="http://openbox.org/3.4/rc">
  <placement><policy>Smart</policy><center>yes</center></placement>
  <theme><name>Breeze-ob</name><titleLayout>LC</titleLayout></theme>
  <desktops><number>1</number></desktops>
</openbox_config>
"""

Window = collections.namedtuple("Window", "id width height")


class Program:
    """A program that runs until the desktop goes, or is killed."""

    def __init__(self, desktop, arguments, name, **options):
        self.log = desktop.root / "logs" / f"{name}.{time.monotonic_ns()}.log"
        self.out = self.log.with_suffix(".out")
        with open(self.log, "wb") as errors, open(self.out, "wb") as output:
            self.process = subprocess.Popen(arguments, env=desktop.environment, stdout=output, stderr=errors,
                                            start_new_session=True, **options)

    @property
    def lines(self):
        return [json.loads(line) for line in self.out.read_text().splitlines()]

    def running(self):
        return self.process.poll() is None

    def kill(self, number=signal.SIGKILL):
        if self.running():
            self.process.send_signal(number)
        return self.process.wait(timeout=20)

    def end(self):
        """With everything it has started."""
        try:
            os.killpg(self.process.pid, signal.SIGKILL)
        except ProcessLookupError:
            pass
        self.process.wait()


class MockServer:
    """A notification server by python3-dbusmock: it shows nothing and does as it is told."""

    def __init__(self, desktop, program):
        self.program = program
        self.object = desktop.bus.get_object(NOTIFICATIONS, "/org/freedesktop/Notifications")

    def notifications(self):
        """What was asked to be shown, as dictionaries."""
        names = ("app_name", "replaces_id", "app_icon", "summary", "body", "actions", "hints", "expire_timeout")
        return [dict(zip(names, arguments)) for _, arguments in self._mock().GetMethodCalls("Notify")]

    def closed(self):
        return [int(arguments[0]) for _, arguments in self._mock().GetMethodCalls("CloseNotification")]

    def invoke(self, notification, action="default", token="mock-token"):
        self._emit("ActivationToken", "us", notification, token)
        self._emit("ActionInvoked", "us", notification, action)

    def close(self, notification, reason=2):
        self._emit("NotificationClosed", "uu", notification, reason)

    def answer(self, notify):
        """From now on Notify gives what Python `notify` sets as `ret`: 'time.sleep(60)' hangs."""
        self._mock().AddMethod(NOTIFICATIONS, "Notify", "susssasa{sv}i", "u", notify)

    def answer_nonsense(self):
        self._mock().AddMethod(NOTIFICATIONS, "Notify", "susssasa{sv}i", "as", "ret = ['what', 'number?']")
        self._mock().AddMethod(NOTIFICATIONS, "GetCapabilities", "", "i", "ret = -1")

    def _emit(self, name, signature, *arguments):
        self._mock().EmitSignal(NOTIFICATIONS, name, signature, dbus.Array(arguments, signature="v"))

    def _mock(self):
        return dbus.Interface(self.object, "org.freedesktop.DBus.Mock")


class Desktop:
    def __init__(self, programs, screen="1280x800", running=False):
        """`running`: no bus and no screen of its own but those of the session in which it is used."""
        self.programs, self.screen, self.is_own = Path(programs).resolve(), screen, not running
        self.running = []

    def __enter__(self):
        self.root = Path(tempfile.mkdtemp(prefix="qx-desktop-"))
        for folder in ("logs", "home", "data/dbus-1/services", "config", "state", "cache", "tmp"):
            (self.root / folder).mkdir(parents=True)
        (self.root / "run").mkdir(mode=0o700)
        self.environment = {
            **os.environ,
            "PATH": f"{self.programs}:{os.environ['PATH']}",
            "HOME": str(self.root / "home"), "TMPDIR": str(self.root / "tmp"),
            "XDG_DATA_HOME": str(self.root / "data"), "XDG_CONFIG_HOME": str(self.root / "config"),
            "XDG_STATE_HOME": str(self.root / "state"), "XDG_CACHE_HOME": str(self.root / "cache"),
        }
        for variable in ("QX_APP_GROUPS_ROOT", "QX_BUNDLE", "JOURNAL_STREAM"):
            self.environment.pop(variable, None)
        try:
            if self.is_own:
                self._start_own()
            self.bus = dbus.bus.BusConnection(self.environment["DBUS_SESSION_BUS_ADDRESS"])
        except BaseException:
            self.__exit__(*sys.exc_info())
            raise
        return self

    def __exit__(self, kind, *_):
        for program in reversed(self.running):
            program.end()
        if kind is not None:
            for log in sorted((self.root / "logs").glob("*.log")):
                if log.stat().st_size:
                    print(f"--- {log.name}\n{log.read_text(errors='replace')}", file=sys.stderr)
        shutil.rmtree(self.root, ignore_errors=True)

    def _start_own(self):
        self.environment |= {"XDG_RUNTIME_DIR": str(self.root / "run"), "LANG": "C.UTF-8", "NO_AT_BRIDGE": "1"}
        for variable in ("WAYLAND_DISPLAY", "QT_QPA_PLATFORM"):
            self.environment.pop(variable, None)
        self._start_screen()
        self._start_bus()
        self._start_window_manager()

    def _start_screen(self):
        reader, writer = os.pipe()
        self.start("Xvfb", "-displayfd", str(writer), "-screen", "0", self.screen + "x24", "-nolisten", "tcp",
                   pass_fds=[writer])
        os.close(writer)
        with os.fdopen(reader) as number:
            self.environment["DISPLAY"] = ":" + number.readline().strip()

    def _start_bus(self):
        configuration = self.root / "bus.conf"
        configuration.write_text(BUS_CONFIGURATION.format(root=self.root))
        daemon = self.start("dbus-daemon", f"--config-file={configuration}", "--nofork", "--print-address")
        self.wait_for(lambda: daemon.out.read_text().endswith("\n"))
        self.environment["DBUS_SESSION_BUS_ADDRESS"] = daemon.out.read_text().strip()

    def _start_window_manager(self):
        configuration = self.root / "openbox.xml"
        configuration.write_text(OPENBOX_CONFIGURATION)
        self.start("openbox", "--sm-disable", "--config-file", configuration)
        # A window that is mapped before somebody manages it keeps without a frame.
        self.wait_for(lambda: self._xdotool("get_num_desktops"))

    # --- Programs

    def start(self, name, *arguments, **options):
        path = self.programs / name
        command = [str(path) if path.exists() else name, *map(str, arguments)]
        program = Program(self, command, Path(name).name, **options)
        self.running.append(program)
        return program

    def run(self, name, *arguments, input=None, fails=False, seconds=60):
        """Runs a program to its end. Its JSON lines; with `fails`, what it wrote to standard error."""
        path = self.programs / name
        ended = subprocess.run([str(path) if path.exists() else name, *map(str, arguments)], env=self.environment,
                               input=input, capture_output=True, timeout=seconds, text=True)
        if (ended.returncode != 0) != fails:
            raise AssertionError(f"{name} {arguments}: exit code {ended.returncode}\n{ended.stdout}{ended.stderr}")
        return ended.stderr if fails else [json.loads(line) for line in ended.stdout.splitlines()]

    def start_distributor(self, *arguments):
        distributor = self.start(HERE / "distributor.py", *arguments)
        self.wait_for(lambda: distributor.lines)
        return distributor

    def install_shop(self, *more):
        bundle = self.programs / "Shop.bundle"
        for file, folder in ((f"{SHOP}.service", "dbus-1/services"), (f"{SHOP}.desktop", "applications")):
            (self.root / "data" / folder).mkdir(parents=True, exist_ok=True)
            shutil.copy(bundle / file, self.root / "data" / folder)
        self.run("qx-agent", "install", "--app", SHOP, "--name", "Shop", "--bundle", bundle,
                 "--service-extension", bundle / "shop-service-extension",
                 "--content-extension", bundle / "shop-content-extension", *more)
        if not self.is_own:  # where the bus does not look for services
            self.start("Shop.bundle/shop")
            self.start("qx-agent", "run", "--app", SHOP)
            self.wait_for(lambda: self.bus.name_has_owner(SHOP) and self.bus.name_has_owner(SHOP + ".Push"))

    def start_shop_once(self):
        """So that it has told its extensions who it is, without which they record nothing."""
        shop = self.start("Shop.bundle/shop")
        self.window("^Shop$")
        shop.kill(signal.SIGTERM)

    def start_dunst(self):
        configuration = self.root / "dunstrc"
        configuration.write_text(DUNST_CONFIGURATION)
        return self._start_server("dunst", "-conf", configuration)

    def start_mock(self, capabilities=("actions", "body", "body-markup", "icon-static", "persistence")):
        program = self._start_server("/usr/bin/python3", "-m", "dbusmock", "--template", "notification_daemon",
                                     "--parameters", json.dumps({"capabilities": " ".join(capabilities)}))
        return MockServer(self, program)

    def _start_server(self, *command):
        program = self.start(*command)
        self.wait_for(lambda: self.bus.name_has_owner(NOTIFICATIONS))
        return program

    def process_of(self, name):
        return int(self.bus.call_blocking("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                          "GetConnectionUnixProcessID", "s", (name,)))

    # --- Waiting

    def wait_for(self, condition, seconds=20, what=None):
        """What `condition` gives, once that is true; it never waits for ever."""
        end = time.monotonic() + seconds
        while True:
            result = condition()
            if result:
                return result
            if time.monotonic() > end:
                raise AssertionError(f"waited {seconds} s for {what or 'a condition'}")
            time.sleep(0.02)

    # --- The screen

    def window(self, title, seconds=20):
        """The window of that title, a regular expression, once it is there."""
        return self.wait_for(lambda: self._find_window("--name", title), seconds, f"the window {title!r}")

    def notification_window(self, seconds=20):
        return self.wait_for(lambda: self._find_window("--class", "Dunst"), seconds, "a notification on the screen")

    def has_window(self, title):
        return self._find_window("--name", title) is not None

    def _find_window(self, *criterion):
        found = self._xdotool("search", "--onlyvisible", *criterion)
        if not found:
            return None
        window = found.split()[-1]
        shell = dict(line.split("=") for line in self._xdotool("getwindowgeometry", "--shell", window).split())
        return Window(window, *(int(shell[key]) for key in ("WIDTH", "HEIGHT"))) if shell else None

    def click(self, window):
        """In its middle."""
        self._xdotool("mousemove", "--window", window.id, window.width // 2, window.height // 2, "click", 1)

    def press(self, key):
        """In the window that has the focus."""
        self._xdotool("key", "--clearmodifiers", key)

    def screenshot(self, file, window="root"):
        subprocess.run(["import", "-window", window, str(file)], env=self.environment, check=True, timeout=20)

    def _xdotool(self, *arguments):
        return subprocess.run(["xdotool", *map(str, arguments)], env=self.environment, capture_output=True, timeout=20,
                              text=True).stdout
