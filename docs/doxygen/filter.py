#!/usr/bin/env python3
# Part of libQXRecordSet. MIT licence, see LICENSE.
#
# Doxygen's input filter: filter.py FILE writes the file as Doxygen wants it. The public headers keep
# plain comments, and the pages plain Markdown.
#
# Of a header:
#   the comment that opens it           describes the file, and a class that has no words of its own
#   a comment above declarations        describes each of them, up to the next blank line
#   a comment at the end of a line      describes what the line declares
#   a banner  // ---- Reading ----      opens a group; text below it describes what in the group has
#                                       no comment of its own
# Of a page: headings get names by which links find them, and links to files that are not part of the
# reference become plain text.
"""Turns plain comments and Markdown into what Doxygen reads."""

import re
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
PUBLIC_HEADERS = re.findall(r"\S+\.h\b", (ROOT / "docs/doxygen/Doxyfile").read_text(encoding="utf-8"))

BANNER = re.compile(r"^-{4} (.*?)(?: -+)?$")
ENDS_GROUP = re.compile(r"^ *(private:|protected:|\};)|^(\}|#|namespace )")
# Copying, destroying and the like needs no words where it is the usual thing.
SPECIAL_MEMBER = re.compile(r"^ *(explicit |virtual )*(~?(\w+)\(|\S* ?&? ?operator=\()")
DECLARES_NOTHING = re.compile(r"^ *(using ::|friend |template |public:|namespace |extern \"C\"|#|\})")


def escaped(text):
    """Words of a comment, without what Doxygen takes for commands."""
    code = re.split(r"(`[^`]*`)", text)
    for i in range(0, len(code), 2):
        code[i] = re.sub(r"([\\@&<>#%$*_~|])", r"\\\1", code[i])
        code[i] = re.sub(r"\b(\d{6,})\.", r"\1\\.", code[i])  # no item of a list
        code[i] = code[i].replace(r"\_", "_").replace(r"\*", "&lowast;").replace(r"\~", "&#126;")
    return "".join(code)


def documented(lines):
    """The lines of a comment as Doxygen's: code, which is indented, as a block of its own."""
    result, in_code = [], False
    for line in lines:
        is_code = line.startswith("   ") and not re.match(r" {3,}(-|\d\.) ", line) and \
            (in_code or not result or not result[-1].strip())
        if is_code != in_code and (is_code or line.strip()):
            result.append("@code{.cpp}" if is_code else "@endcode")
            in_code = is_code
        result.append(line if in_code else escaped(line))
    return result + (["@endcode"] if in_code else [])


def as_comment(lines, command=None):
    body = ([command] if command else []) + documented(lines)
    return "\n".join("/// " + line for line in body) + "\n" if any(body) else ""


def comment_of(lines, at):
    """The comment that begins at line `at`: its text by lines, and the number of the line behind."""
    if lines[at].lstrip().startswith("//"):
        end = at
        while end < len(lines) and lines[end].lstrip().startswith("//"):
            end += 1
        return [re.sub(r"^ *// ?", "", line) for line in lines[at:end]], end
    end = at
    while "*/" not in lines[end]:
        end += 1
    text = [re.sub(r"^ *(/\*+|\*(?!/)) ?|\s*\*/.*$", "", line) for line in lines[at:end + 1]]
    return text, end + 1


class Header:
    def __init__(self, lines):
        self.lines = lines
        self.out = []
        self.file_words = []
        self.group_words = []
        self.in_group = False
        self.words = []  # what describes the declarations up to the next blank line
        self.is_hidden = False
        self.depth = 0   # of round brackets: a declaration goes on

    def close_group(self):
        if self.in_group:
            self.out.append("/// @}")
        self.in_group, self.group_words = False, []

    def take_comment(self, text, is_above):
        title = BANNER.match(text[0])
        if title:
            self.close_group()
            rest = [line for line in text[1:] if not set(line) <= {"-"} or not line]
            self.group_words = rest if any(rest) else []
            self.out += ["/// @name " + title[1].replace("-", " ").strip(), "/// @{"]
            self.in_group = True
        elif text[0].startswith("Part of libQXRecordSet"):
            self.file_words = text[2:]
            self.out.append(as_comment(self.file_words, "@file"))
        elif is_above:
            self.words = text

    def take_code(self, line):
        if ENDS_GROUP.match(line):
            self.close_group()
        # What is protected serves the library's own classes.
        self.is_hidden = line.strip() == "protected:" or \
            self.is_hidden and line.strip() not in ("public:", "private:") and line != "};"
        if self.is_hidden:
            return
        is_start = self.depth == 0 and line.strip() and not DECLARES_NOTHING.match(line) and \
            not re.match(r"^ *(\{|:|,)", line)
        is_class = re.match(r"^(class|struct)\b[^;]*$", line)
        trailing = re.match(r"^( *[^/ ].*?[;,{]) *(?://|/\*) (.*?)(?: \*/)?$", line)
        words = self.words or (self.file_words if is_class else self.group_words)
        if not words and SPECIAL_MEMBER.match(line):
            words = ["See the description of the class."]
        if trailing and "NOLINT" in trailing[2]:
            line, trailing = trailing[1], None
        if trailing and not self.words:
            self.out.append(f"{trailing[1]} ///< {escaped(trailing[2])}")
        else:
            if is_start and words:
                self.out.append(as_comment(words))
            self.out.append(trailing[1] if trailing else line)
        self.depth += line.count("(") - line.count(")")
        if is_class or line.rstrip().endswith("{"):
            self.words = []

    def filtered(self):
        at = 0
        while at < len(self.lines):
            line = self.lines[at]
            if line.lstrip().startswith(("//", "/*")):
                text, at = comment_of(self.lines, at)
                self.take_comment(text, at < len(self.lines) and self.lines[at].strip() != "")
                continue
            if not line.strip():
                self.words = []
            self.take_code(line)
            at += 1
        return "\n".join(self.out) + "\n"


# ---- Pages ----


def label_of(page, anchor):
    if page == ROOT / "README.md" and anchor == "page":
        return "mainpage"
    return re.sub(r"\W", "_", f"{page.relative_to(ROOT)}_{anchor}").lower()


def anchor_of(heading):
    return re.sub(r"[^\w\- ]", "", heading.lower()).replace(" ", "-")


def filtered_link(page, match):
    text, target = match[1], match[2]
    if re.match(r"[a-z]+:", target):
        return match[0]
    name, _, anchor = target.partition("#")
    linked = (page.parent / name).resolve() if name else page
    if linked.suffix == ".md" and (linked.parent == ROOT / "docs" or linked.parent == ROOT):
        if anchor:
            return f"[{text}](@ref {label_of(linked, anchor)})"
        return f"[{text}](@ref {label_of(linked, 'page')})"
    if linked.suffix == ".h" and str(linked.relative_to(ROOT)) in PUBLIC_HEADERS:
        return f"[{text}](@ref {linked.relative_to(ROOT)})"
    return text


def filtered_page(page, lines):
    out, in_code = [], False
    for line in lines:
        if line.startswith("```"):
            in_code = not in_code
            line = {"```cpp": "```{.cpp}", "```c": "```{.c}", "```python": "```{.py}"}.get(line, line)
            line = re.sub(r"^```(text|sh|cmake)$", "```{.unparsed}", line)
        elif not in_code:
            heading = re.match(r"^(#+) (.*)$", line)
            if heading:
                anchor = "page" if heading[1] == "#" else anchor_of(heading[2])
                line = f"{heading[1]} {heading[2].replace('`', '')} {{#{label_of(page, anchor)}}}"
            else:
                line = re.sub(r"(?<!`)`([^`]+)`(?!`)",
                              lambda m: f"`{m[0]}`" if "'" in m[1] else m[0], line)
                line = re.sub(r"(!\[[^\]]*\]\()[^)\s]*/", r"\1", line)  # pictures are found by name
                line = re.sub(r"(?<!!)\[([^\]]*)\]\(([^)\s]+)\)", lambda m: filtered_link(page, m), line)
        out.append(line)
    return "\n".join(out) + "\n"


def main():
    path = Path(sys.argv[1]).resolve()
    text = path.read_text(encoding="utf-8")
    if path.suffix == ".md":
        # A link may be broken over two lines.
        text = re.sub(r"\[([^\]\n]*)\n([^\]\n]*)\]\(", r"\n[\1 \2](", text)
        sys.stdout.write(filtered_page(path, text.splitlines()))
    else:
        sys.stdout.write(Header(text.splitlines()).filtered())


if __name__ == "__main__":
    main()
