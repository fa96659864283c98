"""Reads an .xls workbook with xlrd and prints what it holds as one JSON object.

{"sheets": [{"name": ..., "nrows": n, "ncols": n,
             "cells": [[text, ...], ...],          # "" for an empty or blank cell; a number cell
                                                   # as the text it shows ("12", "-3", "2.5")
             "numbers": [[row, col], ...],         # cells stored as numbers
             "others": [[row, col, type], ...],    # cells that are neither text nor number
             "merged": [[rlo, rhi, clo, chi], ...],  # hi ends exclusive, as xlrd gives them
             "widths": [w, ...],                     # column width in 1/256 character, 0: default
             "centered": [[row, col], ...]}],        # cells whose format centres them
 "log": "warnings xlrd printed while reading"}
"""
import io
import json
import sys

import xlrd


def main(path):
    log = io.StringIO()
    book = xlrd.open_workbook(path, formatting_info=True, logfile=log, verbosity=0)
    sheets = []
    for sh in book.sheets():
        cells, numbers, others, centered = [], [], [], []
        for r in range(sh.nrows):
            row = []
            for c in range(sh.ncols):
                kind = sh.cell_type(r, c)
                xf = sh.cell_xf_index(r, c)  # negative for a cell that is not in the file
                if xf >= 0 and book.xf_list[xf].alignment.hor_align == 2:
                    centered.append([r, c])
                if kind == xlrd.XL_CELL_TEXT:
                    row.append(sh.cell_value(r, c))
                elif kind == xlrd.XL_CELL_NUMBER:
                    v = sh.cell_value(r, c)
                    row.append(str(int(v)) if v == int(v) else repr(v))
                    numbers.append([r, c])
                else:
                    row.append("")
                    if kind not in (xlrd.XL_CELL_EMPTY, xlrd.XL_CELL_BLANK):
                        others.append([r, c, kind])
            cells.append(row)
        sheets.append({"name": sh.name, "nrows": sh.nrows, "ncols": sh.ncols, "cells": cells,
                       "numbers": numbers, "others": others, "merged": [list(m) for m in sh.merged_cells],
                       "widths": [sh.colinfo_map[c].width if c in sh.colinfo_map else 0
                                  for c in range(sh.ncols)],
                       "centered": centered})
    json.dump({"sheets": sheets, "log": log.getvalue()}, sys.stdout)


if __name__ == "__main__":
    main(sys.argv[1])
