"""A headless Chromium to try a page in, over the DevTools protocol on a pair of pipes."""

import base64
import itertools
import json
import os
import select
import subprocess
import tempfile
import time

SECONDS = 60  # until an answer is given up


class Browser:
    """with Browser() as browser: browser.open(path); browser.value("document.title")"""

    def __enter__(self):
        self._profile = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        their_input, self._to = os.pipe()
        self._from, their_output = os.pipe()
        command = ["chromium", "--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                   "--disable-extensions", "--no-first-run", "--hide-scrollbars", "--window-size=1440,900",
                   "--remote-debugging-pipe", f"--user-data-dir={self._profile.name}", "about:blank"]
        # The browser reads commands from descriptor 3 and answers on 4.
        redirect = ["sh", "-c", f'exec "$@" 3<&{their_input} 4>&{their_output}', "sh", *command]
        self._process = subprocess.Popen(redirect, pass_fds=[their_input, their_output], stdin=subprocess.DEVNULL,
                                         stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(their_input)
        os.close(their_output)
        self._numbers = itertools.count(1)
        self._buffer = b""
        self._session = None
        self.events = []
        targets = self.call("Target.getTargets")["targetInfos"]
        page = next(target["targetId"] for target in targets if target["type"] == "page")
        self._session = self.call("Target.attachToTarget", targetId=page, flatten=True)["sessionId"]
        for domain in ["Page", "Runtime", "Network", "Log"]:
            self.call(f"{domain}.enable")
        return self

    def __exit__(self, *_):
        self._session = None
        try:
            self.call("Browser.close")
            self._process.wait(SECONDS)
        finally:
            self._process.kill()
            self._process.wait()
            os.close(self._to)
            os.close(self._from)
            self._profile.cleanup()

    def _message(self):
        deadline = time.monotonic() + SECONDS
        while b"\0" not in self._buffer:
            if not select.select([self._from], [], [], max(0, deadline - time.monotonic()))[0]:
                raise TimeoutError("the browser does not answer")
            part = os.read(self._from, 1 << 16)
            if not part:
                raise EOFError("the browser has ended")
            self._buffer += part
        message, _, self._buffer = self._buffer.partition(b"\0")
        return json.loads(message)

    def call(self, method, **parameters):
        number = next(self._numbers)
        command = {"id": number, "method": method, "params": parameters}
        if self._session:
            command["sessionId"] = self._session
        os.write(self._to, json.dumps(command).encode() + b"\0")
        while True:
            message = self._message()
            if message.get("id") == number:
                if "error" in message:
                    raise RuntimeError(f"{method}: {message['error']}")
                return message["result"]
            self.events.append(message)

    def open(self, path, fragment=""):
        """Opens a file anew and waits until it is loaded and has drawn a frame."""
        self.call("Page.navigate", url="about:blank")
        self.events.clear()
        self.call("Page.navigate", url=path.absolute().as_uri() + fragment)
        self.value("new Promise(done => document.readyState === 'complete' ? done() : addEventListener('load', done))")
        self.settle()

    def value(self, expression):
        """What a JavaScript expression gives, a promise's value included."""
        answer = self.call("Runtime.evaluate", expression=expression, returnByValue=True, awaitPromise=True)
        if "exceptionDetails" in answer:
            raise RuntimeError(f"{expression}: {answer['exceptionDetails']}")
        return answer["result"].get("value")

    def settle(self):
        """Waits until the page has drawn what it was told to."""
        self.value("new Promise(done => requestAnimationFrame(() => requestAnimationFrame(() => setTimeout(done))))")

    def click(self, selector):
        """Clicks the middle of an element with the mouse."""
        x, y = self.value(f"""(() => {{
            const box = document.querySelector({json.dumps(selector)}).getBoundingClientRect();
            return [box.left + box.width / 2, box.top + box.height / 2];
        }})()""")
        for event in ["mousePressed", "mouseReleased"]:
            self.call("Input.dispatchMouseEvent", type=event, x=x, y=y, button="left", clickCount=1)
        self.settle()

    def press(self, key, code=0, text=""):
        self.call("Input.dispatchKeyEvent", type="keyDown", key=key, windowsVirtualKeyCode=code, text=text)
        self.call("Input.dispatchKeyEvent", type="keyUp", key=key, windowsVirtualKeyCode=code)
        self.settle()

    def write(self, selector, text):
        """Replaces a field's content as a user does."""
        self.value(f"document.querySelector({json.dumps(selector)}).select()")
        if text:
            self.call("Input.insertText", text=text)
        else:
            self.press("Delete", 46)
        self.settle()

    def picture(self, path):
        path.write_bytes(base64.b64decode(self.call("Page.captureScreenshot", format="png")["data"]))

    def complaints(self):
        """What the page did wrong: exceptions, entries of the console, requests for anything but itself."""
        out = [e["params"] for e in self.events if e["method"] in ("Runtime.exceptionThrown", "Log.entryAdded")]
        asked = [e["params"]["request"]["url"] for e in self.events if e["method"] == "Network.requestWillBeSent"]
        return out + asked[1:]
