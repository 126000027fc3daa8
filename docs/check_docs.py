#!/usr/bin/env python3
"""Builds the API reference and fails when an export or a record of the
public headers has no documentation, or an export is not in its family's
group.

    check_docs.py DOXYGEN DOXYFILE XML_DIR EXPORTS_INC ZANCORE_MAP HEADER...
"""
import re
import subprocess
import sys
import xml.etree.ElementTree as ET


def text_of(node):
    return "" if node is None else " ".join("".join(node.itertext()).split())


def main():
    doxygen, doxyfile, xml_dir, exports_inc, core_map = sys.argv[1:6]
    headers = sys.argv[6:]
    run = subprocess.run([doxygen, doxyfile], capture_output=True, text=True)
    if run.returncode != 0:
        print(run.stdout + run.stderr)
        sys.exit("doxygen failed")

    # name -> (group, documented)
    members = {}
    index = ET.parse(xml_dir + "/index.xml").getroot()
    groups = [c.get("refid") for c in index.findall("compound") if c.get("kind") == "group"]
    for refid in groups:
        root = ET.parse("%s/%s.xml" % (xml_dir, refid)).getroot()
        compound = root.find("compounddef")
        group = text_of(compound.find("compoundname"))
        for m in compound.iter("memberdef"):
            name = text_of(m.find("name"))
            doc = text_of(m.find("briefdescription")) or text_of(m.find("detaileddescription"))
            members[name] = (group, bool(doc))

    # Records are compounds of their own (struct or union).
    for c in index.findall("compound"):
        if c.get("kind") in ("struct", "union"):
            root = ET.parse("%s/%s.xml" % (xml_dir, c.get("refid"))).getroot().find("compounddef")
            doc = text_of(root.find("briefdescription")) or text_of(root.find("detaileddescription"))
            members[text_of(root.find("compoundname"))] = ("", bool(doc))

    problems = []
    wanted = re.findall(r"^ZAN_EXPORT\(\s*(\w+)\s*,\s*(\w+)\s*\)", open(exports_inc).read(), re.M)
    core = open(core_map).read().split("global:", 1)[1].split("local:", 1)[0]
    wanted += [("zancore", n) for n in re.findall(r"(\w+)\s*;", core)]
    families = set()
    for family, name in wanted:
        families.add(family)
        if name not in members:
            problems.append("%s (%s): not in the reference (no comment above it?)" % (name, family))
        elif not members[name][1]:
            problems.append("%s (%s): no documentation" % (name, family))
        elif members[name][0] != family:
            problems.append("%s: in group %s, not in its family %s" % (name, members[name][0], family))

    records = []
    for h in headers:
        text = re.sub(r"/\*.*?\*/", "", open(h).read(), flags=re.S)
        text = re.sub(r'#ifdef __cplusplus\s*(extern "C" \{|\})\s*#endif', "", text)
        # Outermost records only: a nested record is part of its parent.
        depth, start = 0, 0
        for m in re.finditer(r"[{}]|typedef", text):
            if m.group() == "typedef" and depth == 0:
                start = m.start()
            elif m.group() == "{":
                depth += 1
            elif m.group() == "}":
                depth -= 1
                if depth == 0:
                    tail = re.match(r"\s*(\w+)\s*;", text[m.end():])
                    if tail and re.match(r"typedef\s+(struct|union|enum)\b", text[start:]):
                        records.append(tail.group(1))
    for r in records:
        if r not in members or not members[r][1]:
            problems.append("record %s: no documentation" % r)

    for p in problems:
        print("UNDOCUMENTED " + p)
    print("%d exports in %d families and %d records checked; %d problems"
          % (len(wanted), len(families), len(records), len(problems)))
    sys.exit(1 if problems else 0)


main()
