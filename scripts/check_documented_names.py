#!/usr/bin/env python3
"""Prints each name in doxygen's XML that has no description, and fails when there is one.

usage: check_documented_names.py FOLDER
"""
import pathlib
import sys
import xml.etree.ElementTree as tree

DESCRIPTIONS = ("briefdescription", "detaileddescription")
NAMED = ("memberdef", "enumvalue", "compounddef")
UNNAMED_KINDS = ("dir", "page", "namespace")


def is_described(element):
    return any(text.strip() for tag in DESCRIPTIONS for part in element.findall(tag) for text in part.itertext())


def name_of(element):
    return element.findtext("qualifiedname") or element.findtext("compoundname") or element.findtext("name")


def main():
    names = {}
    for file in pathlib.Path(sys.argv[1]).glob("*.xml"):
        for element in tree.parse(file).iter():
            if element.tag in NAMED and element.get("kind") not in UNNAMED_KINDS and element.get("prot") != "private":
                names[element.get("id")] = (name_of(element), is_described(element))
    missing = sorted({name for name, described in names.values() if not described})
    for name in missing:
        print(f"{name} has no comment", file=sys.stderr)
    if not names:
        print(f"no names in {sys.argv[1]}", file=sys.stderr)
    return 1 if missing or not names else 0


sys.exit(main())
