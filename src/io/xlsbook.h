#pragma once

#include "io/excelbook.h"

// The Excel 97-2003 workbook (.xls): read through FreeXL, written by our own BIFF8 writer in a
// compound-document container. Null while the format is not available.
std::unique_ptr<ExcelBook> createXlsBook();
