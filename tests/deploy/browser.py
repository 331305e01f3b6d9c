"""A browser without a window, as the tests of pages need it: driven through its own driver and its debugging protocol."""
import base64
import json
import pathlib

from selenium import webdriver
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service


class Browser:
    def __init__(self, profile):
        options = Options()
        options.binary_location = "/usr/bin/chromium"
        # Whoever runs the tests in a container is root, and has little shared memory.
        for argument in ("--headless=new", "--no-sandbox", "--disable-dev-shm-usage", "--disable-gpu",
                         f"--user-data-dir={profile}"):
            options.add_argument(argument)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        self.driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.driver.quit()

    def command(self, name, **parameters):
        return self.driver.execute_cdp_cmd(name, parameters)

    def run(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def show(self, page, width=1280, scheme="light", media="screen"):
        """Loads a file as a screen of that width or paper shows it."""
        self.command("Emulation.setDeviceMetricsOverride", width=width, height=800, deviceScaleFactor=1,
                     mobile=width < 600)
        self.command("Emulation.setEmulatedMedia", media=media,
                     features=[{"name": "prefers-color-scheme", "value": scheme}])
        self.driver.get(pathlib.Path(page).resolve().as_uri())

    def console(self):
        """What the pages have written since the last question, errors of the browser included."""
        return [entry["message"] for entry in self.driver.get_log("browser")]

    def requests(self):
        """The addresses that were asked for since the last question."""
        events = [json.loads(entry["message"])["message"] for entry in self.driver.get_log("performance")]
        return [event["params"]["request"]["url"] for event in events if event["method"] == "Network.requestWillBeSent"]

    def accessible(self):
        """What assistive programs are given: a list of (role, name)."""
        nodes = self.command("Accessibility.getFullAXTree")["nodes"]
        return [(node["role"]["value"], node.get("name", {}).get("value", "")) for node in nodes
                if not node["ignored"]]

    def picture(self, file):
        size = self.command("Page.getLayoutMetrics")["cssContentSize"]
        taken = self.command("Page.captureScreenshot", captureBeyondViewport=True,
                             clip={"x": 0, "y": 0, "width": size["width"], "height": size["height"], "scale": 1})
        pathlib.Path(file).write_bytes(base64.b64decode(taken["data"]))

    def print(self, file):
        """As PDF on A4."""
        self.command("Emulation.setEmulatedMedia", media="", features=[])
        printed = self.command("Page.printToPDF", paperWidth=8.27, paperHeight=11.69, preferCSSPageSize=True)
        pathlib.Path(file).write_bytes(base64.b64decode(printed["data"]))
