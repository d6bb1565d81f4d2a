#!/usr/bin/env python3
"""Puts the page of a report together from the files in page/.

embed_page.py PAGE_FOLDER OUTPUT_FOLDER

Writes report_head.html and report_tail.html. A report consists of the first file, its data and the second file. The content
security policy of the page contains the digests of its style and its script. So a browser applies no other style and runs no
other script.
"""
import base64
import hashlib
import pathlib
import sys

# The page's script consists of these files, in this order.
SCRIPTS = ("elements", "model", "row_table", "timeline", "treemap", "changes", "records", "page")


def source_of(text):
    return "'sha256-" + base64.b64encode(hashlib.sha256(text.encode()).digest()).decode() + "'"


def main(page, output):
    style = "\n" + (page / "style.css").read_text(encoding="utf-8")
    script = "\n\"use strict\";\n(() => {\n" + "\n".join((page / f"{name}.js").read_text(encoding="utf-8") for name in SCRIPTS) + "})();\n"
    policy = f"default-src 'none'; script-src {source_of(script)}; style-src {source_of(style)}; base-uri 'none'; form-action 'none'"
    text = (page / "page.html").read_text(encoding="utf-8")
    for mark, content in (("@POLICY@", policy), ("@STYLE@", style), ("@SCRIPT@", script)):
        if text.count(mark) != 1:
            raise SystemExit(f"page.html must have {mark} once")
        text = text.replace(mark, content)
    head, tail = text.split("@DATA@")
    (output / "report_head.html").write_text(head, encoding="utf-8")
    (output / "report_tail.html").write_text(tail, encoding="utf-8")


main(*map(pathlib.Path, sys.argv[1:]))
