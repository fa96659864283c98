"""Parses an XML file with xml.etree and prints its element tree as one JSON object.

{"root": tag, "rows": [{"tag": tag, "cells": [[tag, text, number of children], ...]}, ...]}
"""
import json
import sys
import xml.etree.ElementTree as ET


def main(path):
    root = ET.parse(path).getroot()
    rows = [{"tag": row.tag, "cells": [[c.tag, c.text or "", len(c)] for c in row]}
            for row in root]
    json.dump({"root": root.tag, "rows": rows}, sys.stdout)


if __name__ == "__main__":
    main(sys.argv[1])
