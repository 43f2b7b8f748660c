"""Drives a headless Chromium over its debugging pipe."""
import base64
import json
import os
import shutil
import subprocess
import tempfile

NAMES = ("chromium", "chromium-browser", "google-chrome")
MM = 1 / 25.4  # in inches


def find():
    """The browser's path; None where there is none."""
    return next(filter(None, map(shutil.which, NAMES)), None)


class Chromium:
    """A browser with one page, until it is closed."""

    def __init__(self):
        self._profile = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        to_browser, self._to = os.pipe()
        self._from, from_browser = os.pipe()

        def move_pipes():  # clear of 3 and 4 first, where the browser looks for them
            ends = [os.dup(os.dup(os.dup(end))) for end in (to_browser, from_browser)]
            os.dup2(ends[0], 3)
            os.dup2(ends[1], 4)

        self._process = subprocess.Popen(
            [find(), "--headless", "--no-sandbox", "--disable-gpu", "--disable-quic",
             "--no-first-run", "--disable-background-networking", "--disable-component-update",
             "--disable-sync", "--hide-scrollbars", "--remote-debugging-pipe",
             "--user-data-dir=" + self._profile.name, "about:blank"],
            pass_fds=(3, 4), preexec_fn=move_pipes,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(to_browser)
        os.close(from_browser)
        self._read = b""
        self._last_id = 0
        self._session = None
        self._events = []
        target = next(target for target in self.call("Target.getTargets")["targetInfos"]
                      if target["type"] == "page")
        self._session = self.call("Target.attachToTarget", targetId=target["targetId"],
                                  flatten=True)["sessionId"]
        self.call("Page.enable")
        self._frame = self.call("Page.getFrameTree")["frameTree"]["frame"]["id"]

    def close(self):
        self._process.kill()
        self._process.wait()
        self._profile.cleanup()

    def _receive(self):
        while b"\0" not in self._read:
            some = os.read(self._from, 1 << 20)
            if not some:
                raise RuntimeError("the browser ended")
            self._read += some
        message, self._read = self._read.split(b"\0", 1)
        return json.loads(message)

    def call(self, method, **params):
        """Calls a method of the protocol; gives its result."""
        self._last_id += 1
        message = {"id": self._last_id, "method": method, "params": params}
        if self._session:
            message["sessionId"] = self._session
        data = json.dumps(message).encode() + b"\0"
        while data:
            data = data[os.write(self._to, data):]
        while True:
            answer = self._receive()
            if answer.get("id") == self._last_id:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']}")
                return answer["result"]

    def show(self, html, width=1280, height=900):
        """Lays the page out in a window of this many pixels."""
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height,
                  deviceScaleFactor=1, mobile=False)
        self.call("Page.setDocumentContent", frameId=self._frame, html=html)

    def run(self, script):
        """The value of a script's expression."""
        result = self.call("Runtime.evaluate", expression=script, returnByValue=True,
                           awaitPromise=True)
        if "exceptionDetails" in result:
            raise RuntimeError(result["exceptionDetails"]["exception"]["description"])
        return result["result"].get("value")

    def screenshot(self):
        """The whole page as PNG."""
        return base64.b64decode(self.call("Page.captureScreenshot", captureBeyondViewport=True)["data"])

    def pdf(self, width, height):
        """The page printed on paper of this many millimetres, with margins of its own alone."""
        return base64.b64decode(self.call(
            "Page.printToPDF", paperWidth=width * MM, paperHeight=height * MM, marginTop=0.4,
            preferCSSPageSize=False, printBackground=False)["data"])
