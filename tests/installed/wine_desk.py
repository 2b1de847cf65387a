"""Operates Windows programs under Wine as a person does: keys and clicks on a screen of their own.

There is no accessibility tree there. What a program shows is read from the captions of its windows, and from message
boxes and lists, which copy their text (Ctrl+C).
"""

import json
import os
import re
import subprocess
import time

PATIENCE = 240.0  # seconds; a busy machine takes its time
AFTER_KEYS = 0.6  # seconds, until what they did can be read
BOX = "QUORVEL"  # caption of message boxes


def until(condition, what, patience=PATIENCE):
    """Waits until condition() gives something true, and gives it."""
    end = time.monotonic() + patience
    while time.monotonic() < end:
        found = condition()
        if found:
            return found
        time.sleep(0.2)
    raise AssertionError("waited in vain for " + what)


def output(*command):
    return subprocess.run(command, capture_output=True, text=True, check=False).stdout


def keys(*names):
    """Strikes keys, by the names that xdotool has for them."""
    for name in names:
        subprocess.run(["xdotool", "key", "--delay", "60", name], check=True)
    time.sleep(AFTER_KEYS)


def type_text(text):
    subprocess.run(["xdotool", "type", "--delay", "40", "--", text], check=True)
    time.sleep(AFTER_KEYS)


def set_text(text):
    """Replaces the text of the field that has the focus."""
    keys("ctrl+a")
    type_text(text)


def copied():
    """What the focused box or list copies."""
    subprocess.run(["xclip", "-selection", "clipboard", "-in", "/dev/null"], check=True)
    keys("ctrl+c")
    return output("xclip", "-selection", "clipboard", "-out").replace("\r\n", "\n")


class Window:
    """A visible window, found by its whole caption."""

    def __init__(self, caption, patience=PATIENCE):
        self.caption = caption
        self.number = until(lambda: self._numbers(caption), f'the window "{caption}"', patience)[-1]
        subprocess.run(["xdotool", "windowactivate", "--sync", self.number], check=True)
        # keys before it has taken the focus are lost
        until(lambda: output("xdotool", "getwindowfocus", "-f").strip() == self.number, f'the focus of "{caption}"')
        time.sleep(AFTER_KEYS)

    @staticmethod
    def _numbers(caption):
        found = output("xdotool", "search", "--onlyvisible", "--name", f"^{re.escape(caption)}$").split()
        return [number for number in found if output("xdotool", "getwindowname", number).strip() == caption]

    @classmethod
    def is_there(cls, caption):
        return bool(cls._numbers(caption))

    def closes(self):
        until(lambda: self.number not in self._numbers(self.caption), f'the end of "{self.caption}"')


def answer_box(key="Return"):
    """Answers a message box, and gives its text."""
    box = Window(BOX)
    text = copied().split("---------------------------\n")
    keys(key)
    box.closes()
    return text[2].strip() if len(text) > 2 else "\n".join(text)


def picture(path, window):
    """Saves what a window shows, without its frame."""
    subprocess.run(["import", "-window", window.number, "-strip", path], check=True)


class Bus:
    """The simulated bus of this machine on a pseudo-terminal that has a lasting name."""

    def __init__(self, simulator, link, *options):
        self.process = subprocess.Popen([simulator, *options], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        if os.path.islink(link):
            os.unlink(link)
        os.symlink(self.process.stdout.readline().strip(), link)

    def tell(self, line):
        self.process.stdin.write(line + "\n")
        self.process.stdin.flush()
        answer = json.loads(self.process.stdout.readline())
        assert "error" not in answer, f"{line}: {answer}"
        return answer

    def state(self, address):
        return self.tell(f"state {address}")

    def close(self):
        self.process.stdin.close()
        self.process.wait(timeout=PATIENCE)
        self.process.stdout.close()


class Program:
    """A running Windows program."""

    def __init__(self, path, *arguments):
        # Wine complains of drive Z: again and again
        self.process = subprocess.Popen(["wine", path, *arguments], stdin=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def ends(self):
        return self.process.wait(timeout=PATIENCE)

    def kill(self):
        if self.process.poll() is None:
            self.process.kill()
            self.process.wait()


def windows_path(path):
    return "Z:" + os.path.abspath(path)
