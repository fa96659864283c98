"""Reads an .xlsx workbook with openpyxl (Debian's python3-openpyxl) and prints what it holds as
one JSON object.

{"sheets": [{"name": ...,
             "cells": [[{"value": v, "number": bool, "format": ..., "bold": bool}, ...], ...],
                                                # value: the text, or the number; None if empty
             "merged": ["C1:K1", ...],
             "freeze": "C4" or null,
             "landscape": bool, "fit_width": n, "fit_height": n, "fit_to_page": bool,
             "widths": {"A": w, ...}}]}
"""
import json
import sys

import openpyxl


def default(value, otherwise):
    return otherwise if value is None else int(value)


def main(path):
    book = openpyxl.load_workbook(path)
    sheets = []
    for sh in book.worksheets:
        rows = []
        for row in sh.iter_rows():
            cells = []
            for c in row:
                number = isinstance(c.value, (int, float)) and not isinstance(c.value, bool)
                cells.append({"value": c.value, "number": number, "format": c.number_format,
                              "bold": bool(c.font and c.font.b)})
            rows.append(cells)
        sheets.append({
            "name": sh.title,
            "cells": rows,
            "merged": sorted(str(m) for m in sh.merged_cells.ranges),
            "freeze": sh.freeze_panes,
            "landscape": sh.page_setup.orientation == "landscape",
            # An absent attribute has the format's default, 1.
            "fit_width": default(sh.page_setup.fitToWidth, 1),
            "fit_height": default(sh.page_setup.fitToHeight, 1),
            "fit_to_page": bool(sh.sheet_properties.pageSetUpPr and
                                sh.sheet_properties.pageSetUpPr.fitToPage),
            "widths": {k: v.width for k, v in sh.column_dimensions.items()},
        })
    json.dump({"sheets": sheets}, sys.stdout)


if __name__ == "__main__":
    main(sys.argv[1])
