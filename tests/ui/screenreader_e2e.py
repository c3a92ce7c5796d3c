#!/usr/bin/python3
# The real tock as a screen reader sees it: on a virtual display with its own message bus and
# accessibility bus, an AT-SPI client finds each row's buttons by role and name, presses
# "Start" on the second row through the accessibility action and sees that timer run, reads the
# row names, and hears the toast after a reset; then finds the time mask's spin boxes and follows
# its focus and values, and the prompt's characters on screen. timers.json tells what the window
# did.
# Usage: screenreader_e2e.py TOCK_BINARY (run under dbus-run-session). Exit 77: skipped.
import json
import warnings
import os
import shutil
import subprocess
import sys
import tempfile
import time

SKIP = 77
warnings.filterwarnings("ignore", category=DeprecationWarning)  # the action-name call has no other spelling here


def skip(why):
    print("SKIP: " + why)
    sys.exit(SKIP)


try:
    import gi

    gi.require_version("Atspi", "2.0")
    from gi.repository import Atspi
except (ImportError, ValueError):
    skip("needs python3-pyatspi (scripts/deps installs it)")

LAUNCHER = "/usr/libexec/at-spi-bus-launcher"
if not shutil.which("Xvfb") or not shutil.which("xdotool") or not os.path.exists(LAUNCHER):
    skip("needs Xvfb, xdotool and at-spi2-core")
if not os.environ.get("DBUS_SESSION_BUS_ADDRESS"):
    skip("needs a session bus (run under dbus-run-session)")


def wait_for(what, check, seconds=40):
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        value = check()
        if value:
            return value
        pump(0.05)
    raise AssertionError("timed out waiting for " + what)


def pump(seconds):
    from gi.repository import GLib

    context = GLib.MainContext.default()
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        while context.pending():
            context.iteration(False)
        time.sleep(0.01)


def saved(folder):
    try:
        with open(os.path.join(folder, "timers.json")) as f:
            timers = json.load(f)["timers"]
    except (OSError, ValueError, KeyError):
        return []
    return [(t["name"], bool(t.get("wasRunning"))) for t in timers]


def descendants(node):
    for i in range(node.get_child_count()):
        child = node.get_child_at_index(i)
        if child is None:
            continue
        yield child
        yield from descendants(child)


def role(node):
    return node.get_role_name()


def main():
    tock = sys.argv[1]
    home = tempfile.mkdtemp(prefix="tock-a11y-")
    # The server picks a free display and prints its number once it takes connections.
    xvfb = subprocess.Popen(["Xvfb", "-displayfd", "1", "-screen", "0", "1024x768x24", "-nolisten", "tcp"],
                            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    launcher = None
    app = None
    try:
        number = xvfb.stdout.readline().strip()
        if not number.isdigit():
            raise AssertionError("Xvfb did not start")
        display = ":" + number.decode()
        env = dict(os.environ, DISPLAY=display)
        env.pop("QT_QPA_PLATFORM", None)
        launcher = subprocess.Popen([LAUNCHER, "--launch-immediately"], env=env,
                                    stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        data = os.path.join(home, "data")
        run = os.path.join(home, "run")
        os.makedirs(run, mode=0o700)
        env.update(TOCK_DATA_DIR=data, XDG_CONFIG_HOME=os.path.join(home, "config"), XDG_RUNTIME_DIR=run,
                   QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1", QT_ACCESSIBILITY="1")
        # The accessibility bus and its registry answer before tock looks for them.
        Atspi.init()
        desktop = Atspi.get_desktop(0)
        desktop.get_child_count()
        app = subprocess.Popen([tock], env=env)

        def find_app():
            for i in range(desktop.get_child_count()):
                a = desktop.get_child_at_index(i)
                if a is not None and a.get_name() in ("tock", "Tock"):
                    return a
            return None

        tock_app = wait_for("tock on the accessibility bus", find_app)

        def rows():
            return [n for n in descendants(tock_app) if role(n) == "list item"]

        listed = wait_for("three rows", lambda: (lambda r: r if len(r) == 3 else None)(rows()))
        names = [r.get_name() for r in listed]
        assert [n.split(",")[0] for n in names] == ["Timer 1", "Timer 2", "Timer 3"], names

        def buttons(row):
            return {n.get_name(): n for n in descendants(row) if role(n) == "push button"}

        second = buttons(listed[1])
        for wanted in ("Start", "Reset"):
            assert wanted in second, "row 2 has no %r button: %s" % (wanted, sorted(second))
        assert any(n.get_name().startswith("Elapsed time ") for n in descendants(listed[1])), "no time"

        # Pressing Start through the interface runs the second timer, and the button says Pause.
        start = second["Start"]
        action = start.get_action_iface()
        assert action.get_action_name(0).lower() == "press", action.get_action_name(0)
        action.do_action(0)
        wait_for("timer 2 running", lambda: saved(data)[1:2] == [("Timer 2", True)])
        wait_for("the button to say Pause", lambda: "Pause" in buttons(rows()[1]))

        # A reset shows the toast, which is announced.
        heard = []

        def listener(event):
            try:
                if event.source is not None and role(event.source) in ("alert", "notification", "spin button"):
                    heard.append(event.source.get_name())
            except Exception:
                pass

        ears = Atspi.EventListener.new(listener)
        ears.register("object:state-changed:showing")
        ears.register("object:property-change:accessible-name")
        buttons(rows()[1])["Reset"].get_action_iface().do_action(0)
        wait_for("the toast announced", lambda: any("Timer 2" in h for h in heard))
        wait_for("timer 2 reset", lambda: saved(data)[1:2] == [("Timer 2", False)])

        # The time mask opened from the reader: three spin boxes with their values and ranges,
        # the keys' field focused; Right moves the focus, Up changes a value, and both are heard.
        def xdo(*args):
            subprocess.run(["xdotool"] + list(args), env=env, check=True)

        window = subprocess.run(["xdotool", "search", "--sync", "--onlyvisible", "--name", "^Tock$"], env=env,
                                capture_output=True, text=True).stdout.split()[0]
        xdo("windowfocus", "--sync", window)
        next(n for n in descendants(rows()[0]) if n.get_name().startswith("Elapsed time ")).get_action_iface().do_action(0)

        def spins():
            return [n for n in descendants(rows()[0]) if role(n) == "spin button"]

        fields = wait_for("the mask's spin boxes", lambda: (lambda s: s if len(s) == 3 else None)(spins()))
        assert [f.get_name() for f in fields] == ["Hours", "Minutes", "Seconds"], [f.get_name() for f in fields]
        values = [(f.get_value_iface().get_current_value(), f.get_value_iface().get_maximum_value()) for f in fields]
        assert values == [(0, 999), (0, 59), (0, 59)], values
        assert all(role(f.get_parent()) == "panel" for f in fields)

        def focused():
            return [f.get_name() for f in spins() if f.get_state_set().contains(Atspi.StateType.FOCUSED)]

        wait_for("hours focused", lambda: focused() == ["Hours"])
        heard.clear()
        ears.register("focus:")
        ears.register("object:property-change:accessible-value")
        xdo("key", "--delay", "60", "Right", "Up")
        wait_for("minutes focused", lambda: focused() == ["Minutes"])
        wait_for("the focus and the value heard", lambda: heard.count("Minutes") >= 2)
        assert spins()[1].get_value_iface().get_current_value() == 1
        xdo("key", "Escape", "ctrl+7")

        # The Shell style's prompt: each typed character has its box on screen, in a row, and
        # is found again from its middle; the caret stands after the last one.
        def prompt():
            return next((n for n in descendants(tock_app) if role(n) == "text" and n.get_name() == "Command prompt"), None)

        wait_for("the prompt", prompt)
        xdo("type", "--delay", "40", "help")
        text = prompt().get_text_iface()
        wait_for("the typed line", lambda: text.get_text(0, -1) == "help")
        assert text.get_caret_offset() == 4, text.get_caret_offset()
        boxes = [text.get_character_extents(i, Atspi.CoordType.SCREEN) for i in range(5)]
        assert all(b.width > 0 and b.height > 0 and b.y == boxes[0].y for b in boxes), boxes
        assert all(boxes[i].x < boxes[i + 1].x for i in range(4)), [b.x for b in boxes]
        found = [text.get_offset_at_point(b.x + b.width // 2, b.y + b.height // 2, Atspi.CoordType.SCREEN)
                 for b in boxes[:4]]
        assert found == [0, 1, 2, 3], found
        print("screen reader checks passed")
        return 0
    finally:
        for p in (app, launcher, xvfb):
            if p is not None and p.poll() is None:
                p.terminate()
                try:
                    p.wait(5)
                except subprocess.TimeoutExpired:
                    p.kill()
        shutil.rmtree(home, ignore_errors=True)


if __name__ == "__main__":
    sys.exit(main())
