#!/usr/bin/python3
"""Measures the page of quillbox-set report in Chromium: how soon it shows 100,000 items, and how fast it searches, sorts and
changes to another set.

    bench/report.py [--items 100000] [--sets 2] [--rounds 5]

"open" is the time from the start of the navigation to the end of the first frame with rows. "search" is the longest time after
one letter of a word. The figures are medians of the rounds.
"""
import argparse
import pathlib
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]
sys.path.insert(0, str(ROOT / "tests/tools"))

from browser import Browser  # noqa: E402
from independent_set import FILE, entry_bytes, pack_stream, Set  # noqa: E402

FRAME = """addEventListener("load", () => requestAnimationFrame(() => setTimeout(() => {
  if (document.querySelector("#items-table tr[data-at]")) window.opened = performance.now();
})));"""
LETTERS = """const input = document.querySelector("#items-table input");
return [...arguments[0]].map((_, at) => {
  const start = performance.now();
  input.value = arguments[0].slice(0, at + 1);
  input.dispatchEvent(new Event("input"));
  document.body.offsetHeight;
  return performance.now() - start;
})"""
CLICK = """const start = performance.now();
document.querySelector(arguments[0]).click();
document.body.offsetHeight;
return performance.now() - start"""


def write_set(folder, number, items):
    """Writes a set. Every fiftieth file has another content in each set. The pieces are joined only once, because the
    time of Set.add grows with the size of the set."""
    made = Set(f"Backup date:{13 + number:02}/11/2025 (10:00)")
    listed, data, end = [made.listed], [], 0
    for item in range(items):
        stream = pack_stream(b"%d" % (number if item % 50 == 0 else 0) * (item % 60))
        name = f"\\My Documents\\Folder {item % 97}\\Part {item % 1000}\\Document number {item}.txt"
        listed.append(entry_bytes(FILE, name, end, end + len(stream)))
        data.append(stream)
        end += len(stream)
    made.listed, made.data = b"".join(listed), b"".join(data)
    made.write(folder, number + 1)


def measure(browser, page):
    browser.open(page)
    figures = {"open": browser.wait("return window.opened") / 1000}
    figures["search"] = max(browser.run(LETTERS, "document 4711")) / 1000
    figures["sort"] = browser.run(CLICK, "#items-table th button") / 1000
    figures["other set"] = browser.run(CLICK, "#older") / 1000
    return figures


def main():
    options = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    options.add_argument("--items", type=int, default=100_000)
    options.add_argument("--sets", type=int, default=2)
    options.add_argument("--rounds", type=int, default=5)
    asked = options.parse_args()
    folder = pathlib.Path(tempfile.mkdtemp(prefix="quillbox-bench-", dir="/dev/shm"))
    browser = Browser()
    browser.driver.execute_cdp_cmd("Page.addScriptToEvaluateOnNewDocument", {"source": FRAME})
    try:
        for number in range(asked.sets):
            write_set(folder / "QUILBOX", number, asked.items)
        start = time.monotonic()
        subprocess.run([ROOT / "build/bin/quillbox-set", "report", folder, "--output", folder / "report.html"], check=True)
        print(f"written in {time.monotonic() - start:.2f} s, {(folder / 'report.html').stat().st_size:,} bytes")
        rounds = [measure(browser, folder / "report.html") for _ in range(asked.rounds)]
        for name in rounds[0]:
            print(f"{name:10} {statistics.median(figures[name] for figures in rounds):.3f} s")
    finally:
        browser.quit()
        shutil.rmtree(folder)


main()
