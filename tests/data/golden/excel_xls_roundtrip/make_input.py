# Makes input.xls with xlwt, the independent writer of .xls files. Run once with Debian's
# python3 (python3-xlwt) from this folder; the book is committed beside this script.
import datetime
import xlwt

day = xlwt.easyxf(num_format_str='yyyy-mm-dd')
minute = xlwt.easyxf(num_format_str='yyyy-mm-dd hh:mm')
bold = xlwt.easyxf('font: bold on')

book = xlwt.Workbook(encoding='utf-8')
book.add_sheet('Notes').write(0, 0, 'The orders are on the next sheet.')
sheet = book.add_sheet('Orders')
for col, title in enumerate(['Customer', 'Ordered', 'Shipped', 'Amount', 'Paid', 'Note']):
    sheet.write(0, col, title, bold)
rows = [
    ['Åsa Öberg', datetime.date(2024, 2, 29), datetime.datetime(2024, 3, 1, 9, 30), 1250.5, True,
     '  spaces around  '],
    ['Zoë Ünal', datetime.date(1999, 12, 31), datetime.datetime(2000, 1, 3, 17, 5), 3, False,
     'two\nlines'],
    ['hidden customer', datetime.date(2024, 1, 1), None, 99, True, 'left out'],
    [],
    ['李雷', datetime.date(2150, 6, 1), datetime.datetime(2150, 6, 2, 0, 0), -0.1, True, ''],
]
for r, values in enumerate(rows, start=1):
    for col, value in enumerate(values):
        if value is None or value == '':
            continue
        style = day if col == 1 else minute if col == 2 else xlwt.Style.default_style
        sheet.write(r, col, value, style)
sheet.row(3).hidden = True
book.save('input.xls')
