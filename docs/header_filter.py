#!/usr/bin/env python3
"""Doxygen input filter for the public headers.

The headers are written as plain C with ordinary comments; this filter turns
their layout into Doxygen's markup, so that the API reference follows the
headers without marking them up by hand:
  /* ==== fam: title ==== */ ... /* ==== end of fam ==== */
      a group (one per family);
  a comment directly above a declaration (no blank line between)
      the documentation of that declaration; when several declarations follow
      it without a blank line, each of them copies it;
  a comment followed by a blank line inside a group
      text of the group (rules common to the family);
  a comment after a record member or enumerator on the same line
      the documentation of that member.
The first comment of the file becomes the file's documentation.  Banner
comments (a title between dashes) stay plain comments."""
import re
import sys

MARK = re.compile(r"^/\* ==== (\w+): (.*) ==== \*/\s*$")
END = re.compile(r"^/\* ==== end of (\w+) ==== \*/\s*$")
BANNER = re.compile(r"^/\* -{5,}.*\*/\s*$")


def comment_end(lines, i):
    """Index of the line that closes the comment opened on line i."""
    j = i
    while "*/" not in (lines[j][lines[j].index("/*") + 2:] if j == i else lines[j]):
        j += 1
        if j >= len(lines):
            return len(lines) - 1
    return j


def is_decl_start(line):
    s = line.strip()
    return bool(s) and not s.startswith("/*") and not s.startswith("#") or s.startswith("#define")


def take_decls(lines, k):
    """The declarations from line k up to a blank line, a comment at the start
    of a line, or a preprocessor line other than #define; comments after
    record members and enumerators become their documentation.  Returns a
    list of (lines, name) per declaration and the index after them."""
    n = len(lines)
    e, depth, decls, cur = k, 0, [], []
    while e < n:
        t = lines[e].strip()
        if depth == 0 and (not t or t.startswith("/*") or (t.startswith("#") and not t.startswith("#define"))):
            break
        code = re.sub(r"/\*.*?\*/", "", lines[e])
        opened = depth
        depth += code.count("{") - code.count("}")
        line = lines[e]
        if opened > 0 or depth > 0:
            if re.match(r"^\s*/\*", line):
                line = line.replace("/*", "/**", 1)
            else:
                line = re.sub(r"/\*(?!\*)", "/**<", line, count=1)
        cur.append(line)
        if depth == 0 and (code.rstrip().endswith(";") or t.startswith("#define")):
            decls.append((cur, decl_name(cur)))
            cur = []
        e += 1
    if cur:
        decls.append((cur, decl_name(cur)))
    return decls, e


def decl_name(stmt):
    """The name a declaration declares: a function, a typedef or a macro."""
    code = re.sub(r"/\*.*?\*/", "", " ".join(stmt), flags=re.S)
    m = re.match(r"\s*#define\s+(\w+)", code)
    if m:
        return m.group(1)
    if code.lstrip().startswith("typedef"):
        m = re.search(r"(\w+)\s*;\s*$", code)
        return m.group(1) if m else None
    m = re.search(r"(\w+)\s*\(", code)
    return m.group(1) if m else None


def filter_text(text):
    lines = text.split("\n")
    out = []
    group = None
    group_text = {}
    texts = {}
    first_comment = True
    i = 0
    n = len(lines)
    while i < n:
        line = lines[i]
        s = line.strip()
        m = MARK.match(s)
        if m:
            group = m.group(1)
            out.append("/** @defgroup %s %s" % (group, m.group(2)))
            group_text[group] = len(out)  # the family's text goes here
            out.append(" *  @{ */")
            texts[group] = []
            i += 1
            continue
        if END.match(s):
            out.append("/** @} */")
            group = None
            i += 1
            continue
        if not s.startswith("/*"):
            if is_decl_start(line) and not s.startswith("#define") and not s.startswith('extern "C"') and s != "}":
                decls, e = take_decls(lines, i)
                for stmt, _ in decls:
                    out.extend(stmt)
                i = e
            else:
                out.append(line)
                i += 1
            continue
        if BANNER.match(s):
            out.append(line)
            i += 1
            continue
        j = comment_end(lines, i)
        comment = lines[i:j + 1]
        k = j + 1
        if first_comment:
            first_comment = False
            out.append(comment[0].replace("/*", "/** @file", 1))
            out.extend(comment[1:])
            i = k
            continue
        if not (k < n and is_decl_start(lines[k])):
            # Text of the family, or a plain comment outside any family.
            if group:
                # Moved into the group's own comment; blank lines keep the
                # line numbers of the rest.
                body = [comment[0].strip()[2:]] + [re.sub(r"^\s*\* ?", "", c) for c in comment[1:]]
                body[-1] = body[-1].rstrip()[:-2]
                texts[group].append("\n".join(" * " + b for b in body))
                out.extend([""] * len(comment))
            else:
                out.extend(comment)
            i = k
            continue
        decls, e = take_decls(lines, k)
        out.append(comment[0].replace("/*", "/**", 1))
        out.extend(comment[1:])
        # Declarations that share the comment copy it.
        first = decls[0][1] if decls else None
        for n_, (stmt, _) in enumerate(decls):
            if n_ > 0 and first:
                stmt = ["/** @copydoc %s */ " % first + stmt[0]] + stmt[1:]
            out.extend(stmt)
        i = e
    for g, at in group_text.items():
        if texts[g]:
            out[at] = "\n *\n".join(texts[g]) + "\n" + out[at]
    return "\n".join(out)


if __name__ == "__main__":
    with open(sys.argv[1]) as f:
        sys.stdout.write(filter_text(f.read()))
