#!/usr/bin/python3
"""Makes input.xlsx with openpyxl: a first sheet that is not read, and the sheet "Orders" with
dates, times, numbers, booleans, a link, a hidden row, a hidden column and an empty row."""
import datetime
import openpyxl

wb = openpyxl.Workbook()
wb.active.title = "Notes"
wb.active["A1"] = "not this sheet"
ws = wb.create_sheet("Orders")
ws.append(["order", "placed", "at", "amount", "paid", "internal", "site"])
ws.append(["A-1", datetime.date(2024, 2, 29), datetime.datetime(2024, 2, 29, 9, 15), 12.5, True,
           "x", "shop"])
ws.append(["A-2", datetime.date(1999, 12, 31), datetime.datetime(1999, 12, 31, 23, 59), 3, False,
           "y", None])
ws.append(["hidden", datetime.date(2000, 1, 1), None, 1, True, "z", None])
ws.append([None] * 7)
ws.append(["A-3", datetime.date(2024, 1, 2), datetime.datetime(2024, 1, 2, 0, 0), 0.1, None,
           "w", None])
ws["G2"].hyperlink = "https://example.com/shop"
ws.row_dimensions[4].hidden = True
ws.column_dimensions["F"].hidden = True
wb.save("input.xlsx")
