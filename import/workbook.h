#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "import/csv_reader.h"

namespace vantlo {

/// A workbook of a spreadsheet (.xlsx), read from memory. Rows are read as they are asked for: memory holds the texts that
/// cells share and a few rows.
/// Source   ECMA-376, parts 1 and 2.
class Workbook {
public:
    struct Sheet {
        std::string name;
        bool is_hidden;
        std::string part;  ///< its name in the archive
    };

    /// Opens a workbook; `bytes` is the whole file and must live as long as the workbook.
    /// Errors   TaskError with Reason::bad_input, whose text names `file`, for whatever is no workbook that can be read:
    ///          another format, a damaged or encrypted one, one that would fill the memory.
    Workbook(std::string file, std::string_view bytes, Language language);
    Workbook(const Workbook&) = delete;
    Workbook& operator=(const Workbook&) = delete;
    ~Workbook();

    [[nodiscard]] const std::vector<Sheet>& sheets() const;

    /// Whether serial numbers of dates count from 1904.
    [[nodiscard]] bool counts_from_1904() const;

    /// The rows of a sheet from the first, one a call; `source` is the sheet, for the places of cells.
    /// Errors   of a cell: added to `errors`. Of the file: TaskError, as the constructor.
    NextRow rows(const Sheet& sheet, const SourceText& source, InputErrors& errors);

    /// Whether bytes are those of an archive, as a workbook is, or of the older container for workbooks and encryption.
    static bool looks_like(std::string_view bytes);

    struct Contents;

private:
    std::unique_ptr<Contents> contents_;
};

/// Whether a number format shows a date or a time.
/// Example  `yyyy"年"m"月"d"日"` -> true; `[Red]0.00` -> false
bool is_date_format(std::string_view code);

}  // namespace vantlo
