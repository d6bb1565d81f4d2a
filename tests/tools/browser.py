"""A browser without a window. It opens pages from the disk, and records actions that a page isn't allowed."""
import json
import os
import pathlib

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import WebDriverWait

SECONDS = 120  # the limit for a condition on a busy machine
AXE = pathlib.Path("/usr/local/share/quillbox-check/axe.min.js")  # installed by packaging/install-axe

WATCH = """window.violations = [];
document.addEventListener("securitypolicyviolation", event => violations.push(event.violatedDirective + " " + event.blockedURI));
addEventListener("error", event => violations.push(event.message));"""


class Browser:
    def __init__(self):
        options = webdriver.ChromeOptions()
        options.binary_location = "/usr/bin/chromium"
        for argument in ("--headless=new", "--disable-dev-shm-usage", "--window-size=1280,1000", "--force-color-profile=srgb", "--disable-gpu"):
            options.add_argument(argument)
        if os.geteuid() == 0:
            options.add_argument("--no-sandbox")
        options.set_capability("goog:loggingPrefs", {"performance": "ALL", "browser": "ALL"})
        self.driver = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
        self.driver.set_page_load_timeout(SECONDS)
        self.driver.set_script_timeout(SECONDS)
        self.driver.execute_cdp_cmd("Page.addScriptToEvaluateOnNewDocument", {"source": WATCH})

    def quit(self):
        self.driver.quit()

    def show(self, dark=False, width=1280, height=1000):
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [{"name": "prefers-color-scheme", "value": "dark" if dark else "light"}]})
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})

    def open(self, path):
        self.driver.get_log("performance")
        self.driver.get_log("browser")
        self.driver.get(path.as_uri())

    def run(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def find(self, selector):
        return self.driver.find_element(By.CSS_SELECTOR, selector)

    def text(self, selector):
        return self.run("return document.querySelector(arguments[0]).textContent", selector)

    def wait(self, script, *arguments):
        """Runs the script until it returns a true value, and returns this value."""
        return WebDriverWait(self.driver, SECONDS, poll_frequency=.05).until(lambda _: self.run(script, *arguments))

    def faults(self):
        """Returns the page's violations of its policy, its errors, and each request other than that for the page
        itself."""
        found = self.run("return violations") + [entry["message"] for entry in self.driver.get_log("browser")]
        messages = [json.loads(entry["message"])["message"] for entry in self.driver.get_log("performance")]
        requests = [message["params"]["request"]["url"] for message in messages if message["method"] == "Network.requestWillBeSent"]
        return found + [url for url in requests if url != self.driver.current_url.split("#")[0]]

    def barriers(self):
        """Returns what axe-core reports as a barrier for people with disabilities. Needs axe-core."""
        self.run(AXE.read_text(encoding="utf-8") + "; window.axe = axe")
        found = self.driver.execute_async_script("axe.run(document, { resultTypes: ['violations'] }).then(arguments[0])")
        return [(fault["id"], fault["impact"], [node["html"][:200] for node in fault["nodes"][:3]]) for fault in found["violations"]]
