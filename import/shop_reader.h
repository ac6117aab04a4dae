#pragma once

#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "bills/field_use.h"
#include "import/cell_values.h"
#include "import/column_limits.h"
#include "import/csv_reader.h"
#include "import/encoding.h"
#include "import/input_errors.h"
#include "import/input_value.h"
#include "import/shop_file.h"
#include "import/table_records.h"
#include "import/workbook.h"

namespace vantlo {

enum class FileFormat { csv, json, json_lines, workbook };

/// What a user says about a file; what he leaves out its name says, or it is detected.
struct FileOptions {
    std::optional<FileFormat> format = {};
    Encoding encoding = Encoding::detect;
    CsvOptions csv = {};
    std::string table = {};  ///< of tables with master data; if empty, the file is named after it: `goods.csv`
    std::string sheet = {};  ///< of a workbook; if empty, those that have bills or are named after a table
    std::optional<char> decimal = {};  ///< the mark of decimals in tables
    DateOrder date_order = DateOrder::unknown;
};

/// Reads files of master data and bills, and checks all that can be known without the database.
///
/// Shape    JSON: {"warehouses": [...], "goods": [...], "units": [...], "bills": [{"kind", "id", ..., "lines": [...]}]},
///          every part optional. JSON Lines: a bill a line, or {"table": "goods", ...}. CSV: a row a line of a bill,
///          whose own fields are in columns `bill.kind`, `bill.id`, ...; or a row of one master table.
///          Fields are those of the bill's kind; texts left out are empty, numbers 0, dates null.
class ShopReader {
public:
    /// `language` is that of the error messages.
    explicit ShopReader(Language language) : errors_(language) {}

    /// Reads one more file. Errors: whatever is wrong is added to errors().
    void read(const std::string& path, const FileOptions& options = {});

    [[nodiscard]] InputErrors& errors() { return errors_; }

    /// What the files hold; meaningless if there are errors.
    [[nodiscard]] ShopFile& shop() { return shop_; }

    /// What was detected about files, a line each; files of the plain kind, UTF-8 with commas, have none.
    [[nodiscard]] const std::vector<std::string>& detected() const { return detected_; }

    /// Where something stands.
    struct Origin {
        const SourceText* source;
        std::size_t offset;
    };

    /// The bills' places, in the order of the bills.
    [[nodiscard]] const std::vector<Origin>& bill_origins() const { return bill_origins_; }

private:
    /// Makes the file's text the source; returns false, reported, if the system cannot convert it.
    bool decode_file(const std::string& path, std::string_view bytes, Encoding said);
    void explain_faults(std::string_view bytes);
    void note_detected(const EncodingGuess& guess);
    void read_text_file(FileFormat format, const FileOptions& options);
    void read_csv(const FileOptions& options);
    void read_workbook(const std::string& path, std::string_view bytes, const FileOptions& options);
    std::vector<const Workbook::Sheet*> sheets_to_read(Workbook& workbook, const std::string& path,
                                                       const FileOptions& options);
    void note_sheets(const Workbook& workbook, const std::vector<const Workbook::Sheet*>& chosen);
    void read_rows(const NextRow& next, const std::string& table);
    [[nodiscard]] std::string listed(const std::vector<std::string>& names) const;
    void read_document();
    void take_json_line(InputValue& document);
    void take_row(const MasterTable& table, const InputValue& row);
    void take_bill(const InputValue& object);

    Record read_record(const InputValue& object, TextView table, std::span<const BillColumn> columns,
                       std::initializer_list<std::string_view> others);
    /// Reports warehouses that the kind posts to and that are missing, and fields that it ignores.
    void check_use(const InputValue& object, const BillKind& kind, BillPart part, const Record& record);
    void check_needed(const InputValue& object, std::span<const BillColumn> columns);
    void tell_missing(const InputValue& object, std::string_view field);
    Variant read_value(const InputValue& value, const BillColumn& column, const ColumnLimits::Limit& limit);
    Variant read_date(const InputValue& value, std::string_view field);
    /// A value that stands for a number, as from_chars reads it; nothing, reported, if it is none.
    std::optional<std::string> plain_number(const InputValue& value, std::string_view field, const Message& expected);
    Text read_text(const InputValue& value, std::string_view field, const ColumnLimits::Limit& limit);
    Variant read_single(const InputValue& value, std::string_view field);
    Variant read_whole_number(const InputValue& value, std::string_view field, const ColumnLimits::Limit& limit);
    bool expect_object(const InputValue& value);
    bool is_given(const InputValue& object, std::string_view field);
    bool is_new(const std::string& key, const std::string& what, std::size_t offset);
    [[nodiscard]] std::string shown(const InputValue& value) const;

    /// Reports what stands at `offset` of the file that is being read.
    template <typename... Values>
    void tell(std::size_t offset, const Message& reason, const Values&... values) {
        errors_.add(*source_, offset, reason, values...);
    }

    const ColumnLimits limits_;
    InputErrors errors_;
    ShopFile shop_;
    std::vector<Origin> bill_origins_;
    std::vector<std::unique_ptr<const SourceText>> sources_;
    std::vector<std::string> detected_;
    std::vector<std::string> detected_here_;                  ///< about the file that is being read
    CellRules rules_;                                         ///< of its cells
    const SourceText* source_ = nullptr;                      ///< the file that is being read
    std::unordered_map<std::string, Origin> seen_;            ///< keys of rows and bills
    std::unordered_map<std::string, const BillKind*> kinds_;  ///< of the bills, by their keys
};

}  // namespace vantlo
