"""Writes manual pages in the macros of man(7), also from the Markdown of docs/."""
import re

WIDTH = 78


def escaped(text):
    return text.replace("\\", "\\e").replace("-", "\\-").replace("'", "\\(aq").replace("`", "\\(ga")


def bold(text):
    return f"\\fB{escaped(text)}\\fP"


def italic(text):
    return f"\\fI{escaped(text)}\\fP"


def spans(text):
    """Markdown within a line: code, bold, emphasis and links to other pages."""
    made = []
    for part in re.split(r"(`[^`]+`|\*\*.+?\*\*|\*[^*\s][^*]*\*|\[[^]]+\]\([^)]+\))", text):
        if len(part) > 2 and part[0] == part[-1] == "`":
            made.append(bold(part[1:-1].replace("build/bin/", "")))
        elif part.startswith("**") and len(part) > 4:
            made.append(bold(part[2:-2].replace("`", "")))
        elif part.startswith("*") and len(part) > 2:
            made.append(italic(part[1:-1]))
        elif part.startswith("["):
            made.append(escaped(part[1:part.index("]")]))
        else:
            made.append(escaped(part))
    return "".join(made)


def filled(text):
    """Lines for text that is filled: a new one for each sentence, and none that is long or looks like a macro."""
    lines = []
    for sentence in re.split(r"(?<=[a-z)\"0-9][.?!])\s+(?=[A-Z\"\\(])|(?<=\.\\fP)\s+(?=[A-Z])", " ".join(text.split())):
        line = ""
        for word in sentence.split(" "):
            if line and len(line.encode()) + len(word.encode()) >= WIDTH:
                lines.append(line)
                line = word
            else:
                line = f"{line} {word}" if line else word
        lines.append(line)
    return ["\\&" + line if line[:1] in (".", "'") else line for line in lines if line]


class ManPage:
    def __init__(self, name, section, what, version, date):
        self.lines = [f'.TH {name.upper()} {section} {date} "Quillbox {version}"']
        self.section("NAME")
        self.lines.append(f"{escaped(name)} \\- {escaped(what)}")

    def section(self, title):
        self._heading(".SH", title.upper())

    def subsection(self, title):
        self._heading(".SS", title)

    def _heading(self, macro, title):
        self.fresh = True  # a paragraph needs no macro
        self.lines.append(f'{macro} "{escaped(title.replace(chr(96), ""))}"' if title else macro)

    def paragraph(self, marked):
        if not self.fresh:
            self.lines.append(".PP")
        self.fresh = False
        self.lines += filled(marked)

    def item(self, tag, marked):
        """A tag of a list, and its text."""
        self.lines += [".TP", tag or "\\(bu", *(filled(marked) or ["\\&"])]
        self.fresh = False

    def bullet(self, sign, marked):
        self.lines += [f'.IP "{sign}" 4', *filled(marked)]
        self.fresh = False

    def code(self, lines):
        while lines and not lines[-1].strip():
            lines.pop()
        if not self.fresh:
            self.lines.append(".PP")
        self.fresh = False
        # Blanks at the end are of no use, and an empty line is one with nothing in it.
        shown = [escaped(line.replace("build/bin/", "").rstrip()) for line in lines]
        self.lines += [".RS 4", ".nf", *("\\&" + line if line[:1] in (".", "\\", "") else line for line in shown), ".fi", ".RE"]

    def text(self):
        return "\n".join(self.lines) + "\n"


def _table(page, rows):
    cells = [[cell.replace("\0", "|").strip() for cell in row.replace("\\|", "\0").strip().strip("|").split("|")] for row in rows]
    titles = cells[0]
    if titles[0] == "Option":
        return  # the page lists the options of the programs themselves
    has_tags = max(len(row[0]) for row in cells[2:]) <= WIDTH - 20
    for row in cells[2:]:
        said = [spans(cell) if len(titles) == 2 and has_tags or not title else f"{spans(title)}: {spans(cell)}."
                for title, cell in zip(titles, row) if cell]
        joined = " ".join(one.replace("..", ".") for one in said[1 if has_tags else 0:])
        if has_tags:
            page.item(spans(row[0]), joined)
        else:
            page.bullet("\\(bu", joined)


def add_markdown(page, text, skipped=()):
    """The sections below the title of a page of docs/, apart from some. What comes before them is left out, too."""
    lines = text.split("\n")
    at, level, using = 0, 0, False
    while at < len(lines):
        line = lines[at]
        block = [line]
        at += 1
        if match := re.match(r"(#+) (.*)", line):
            level = len(match[1])
            if level == 2:
                using = match[2] not in skipped
                if using:
                    page.section(match[2])
            elif level > 2 and using:
                page.subsection(match[2])
        elif not using or not line.strip() or line.startswith("!["):
            continue
        elif line.startswith("```"):
            end = lines.index("```", at)
            page.code(lines[at:end])
            at = end + 1
        elif line.startswith("    "):
            while at < len(lines) and (lines[at].startswith("    ") or not lines[at].strip()):
                block.append(lines[at])
                at += 1
            page.code([one[4:] for one in block])
        elif line.startswith("|"):
            while at < len(lines) and lines[at].startswith("|"):
                block.append(lines[at])
                at += 1
            _table(page, block)
        else:
            mark = re.match(r"(- |\d+\. )", line)
            while at < len(lines) and lines[at].strip() and not re.match(r"(- |\d+\. |#|\||```)", lines[at]):
                block.append(lines[at])
                at += 1
            joined = " ".join(one.strip() for one in block)
            if mark:
                page.bullet("\\(bu" if mark[0] == "- " else mark[0].strip(), spans(joined[len(mark[0]):]))
            else:
                page.paragraph(spans(joined))
