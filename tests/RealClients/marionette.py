"""A small client of Marionette, the remote control built into the Mozilla applications."""
import json
import os
import pathlib
import socket
import subprocess
import time


def free_port():
    with socket.socket() as listener:
        listener.bind(("127.0.0.1", 0))
        return listener.getsockname()[1]


class Application:
    """A headless Mozilla application with a home of its own, driven by scripts with full rights."""

    def __init__(self, command, home, log, profile=None, preferences=None):
        """Without a profile the application makes its own, as on a user's first start, and listens on the
        remote control's usual port."""
        self.port = 2828
        choice = []
        if profile is not None:
            self.port = free_port()
            choice = ["--profile", str(profile)]
            profile = pathlib.Path(profile)
            profile.mkdir(parents=True, exist_ok=True)
            with open(profile / "user.js", "w", encoding="utf-8") as prefs:
                for name, value in {"marionette.port": self.port, **(preferences or {})}.items():
                    prefs.write(f"user_pref({json.dumps(name)}, {json.dumps(value)});\n")
        environment = {**os.environ, "HOME": str(home), "MOZ_HEADLESS": "1", "TZ": "Europe/Berlin"}
        environment.pop("XDG_CONFIG_HOME", None)
        self.log = open(log, "ab")
        self.process = subprocess.Popen(
            [*command, "--headless", "--marionette", "--remote-allow-system-access", "--no-remote", *choice],
            env=environment, stdin=subprocess.DEVNULL, stdout=self.log, stderr=self.log)
        self.socket = self._connect()
        self.buffer = b""
        self.sequence = 0
        self._receive()
        self.call("WebDriver:NewSession", {"capabilities": {"alwaysMatch": {}}})
        self.call("Marionette:SetContext", {"value": "chrome"})

    def _connect(self):
        for _ in range(300):
            if self.process.poll() is not None:
                raise RuntimeError(f"the application ended with {self.process.returncode}")
            try:
                return socket.create_connection(("127.0.0.1", self.port), timeout=90)
            except OSError:
                time.sleep(0.2)
        raise RuntimeError("the application doesn't listen")

    def _receive(self):
        while b":" not in self.buffer:
            self.buffer += self._more()
        length, _, rest = self.buffer.partition(b":")
        while len(rest) < int(length):
            rest += self._more()
        self.buffer = rest[int(length):]
        return json.loads(rest[:int(length)])

    def _more(self):
        data = self.socket.recv(65536)
        if not data:
            raise RuntimeError("the application closed the connection")
        return data

    def call(self, name, parameters):
        self.sequence += 1
        message = json.dumps([0, self.sequence, name, parameters]).encode()
        self.socket.sendall(str(len(message)).encode() + b":" + message)
        while True:
            kind, number, error, result = self._receive()
            if kind == 1 and number == self.sequence:
                if error:
                    raise RuntimeError(f"{name}: {error.get('message')}")
                return result

    def run(self, script, *arguments):
        """Runs an asynchronous script body; it must return the result."""
        body = ("const done = arguments[arguments.length - 1]; const given = [...arguments].slice(0, -1);"
                "(async (arguments) => {" + script + "})(given)"
                ".then(value => done({value}), error => done({error: String(error)}));")
        answer = self.call("WebDriver:ExecuteAsyncScript",
                           {"script": body, "args": list(arguments), "scriptTimeout": 60000})["value"]
        if "error" in answer:
            raise RuntimeError(answer["error"])
        return answer.get("value")

    def quit(self):
        try:
            self.call("Marionette:Quit", {"flags": ["eForceQuit"]})
        except (RuntimeError, OSError):
            pass
        self.socket.close()
        try:
            self.process.wait(30)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
        self.log.close()
