#include "audit/shop_proposal.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <optional>
#include <vector>

#include "audit/column_types.h"
#include "automation/message.h"
#include "bills/bill_kinds.h"
#include "bills/schema.h"
#include "bookkeeping/identifiers.h"
#include "dataaccess/sql_literals.h"

namespace vantlo {

namespace words {

constexpr Message bills_of_value = {"{} 张单据{}", "{:bill|bills}{}"};
constexpr Message perhaps = {"；可能是 {}", "; perhaps {}"};

}  // namespace words

namespace {

using json = nlohmann::ordered_json;
using Names = std::vector<std::string>;

constexpr auto to_be_filled_in = "?";
constexpr std::size_t most_kinds = 40;

/// What a column of this system is called elsewhere, in small letters; the earlier name is the better sign.
struct Likeness {
    std::string_view columns;  ///< of this system, between blanks
    std::vector<std::string_view> names;
};

// clang-format off
const Likeness likenesses[] = {
    {" Id BillId ",                       {"billid", "billno", "docno", "docid", "orderno", "orderid", "单据编号", "单据号", "单号", "编号"}},
    {" ItemNo ",                          {"itemno", "lineno", "line_no", "rowno", "seq", "行号", "序号"}},
    {" BillDate ",                        {"billdate", "docdate", "orderdate", "date", "单据日期", "日期"}},
    {" Gid ",                             {"gid", "goodsid", "goods", "itemcode", "productid", "product", "sku", "商品编号", "商品", "货号", "物料"}},
    {" Actualqty Qty UQty ",              {"actualqty", "qty", "quantity", "amount", "数量"}},
    {" Unit ",                            {"unit", "uom", "单位"}},
    {" Receiver ",                        {"receiver", "towarehouse", "to_warehouse", "收货仓", "入库仓", "调入仓"}},
    {" Supplier ",                        {"supplier", "fromwarehouse", "from_warehouse", "发货仓", "出库仓", "调出仓"}},
    {" WID WareHouseID ",                 {"warehouseid", "warehouse", "whs", "wid", "仓库"}},
    {" Model1 ",                          {"model1", "colour", "color", "颜色", "规格"}},
    {" Model2 ",                          {"model2", "size", "尺码", "尺寸"}},
    {" Class ",                           {"class", "category", "类别"}},
    {" ReferFlag Goodstutas GoodsStatus ", {"referflag", "goodstutas", "goodsstatus", "status", "状态"}},
    {" Remarks SpRemarks ",               {"remarks", "remark", "memo", "note", "备注"}},
};
const std::vector<std::string_view> kind_names = {"kind", "billtype", "doctype", "type", "单据类型", "单据种类", "类型", "种类"};
const std::vector<std::string_view> not_bills = {
    "Inventory", "Warehouse", "Goods", "GoodsUnit", "StockMovement", "CurrentPosting", "LedgerWithoutMovement"};
/// Words in the name of a header's table, by which its bills are of other kinds than stock bills.
constexpr std::pair<std::string_view, std::string_view> families[] = {
    {"rgstock", "return-repair"}, {"repair", "return-repair"}, {"返修", "return-repair"}, {"borrow", "borrow-out"},
    {"借", "borrow-out"},         {"goodsbill", "assembly"},   {"assembl", "assembly"},   {"组装", "assembly"},
};
// clang-format on

/// The one name among those there that is, or failing that contains, the earliest of the names looked for; nothing if
/// several could be meant.
std::optional<std::string> find_like(const Names& there, const std::vector<std::string_view>& looked_for) {
    for (const bool whole : {true, false}) {
        for (const std::string_view name : looked_for) {
            Names found;
            std::ranges::copy_if(there, std::back_inserter(found), [&](const std::string& candidate) {
                return whole ? in_small_letters(candidate) == name
                             : in_small_letters(candidate).find(name) != std::string::npos;
            });
            if (found.size() == 1) return found.front();
            if (found.size() > 1) return std::nullopt;
        }
    }
    return std::nullopt;
}

/// The column that is called as this system's is, or like it.
std::optional<std::string> find_column(const Names& there, const std::string& column) {
    if (const auto same = find_like(there, {in_small_letters(column)});
        same && in_small_letters(*same) == in_small_letters(column))
        return same;
    for (const Likeness& likeness : likenesses) {
        if (likeness.columns.find(" " + column + " ") == std::string_view::npos) continue;
        return find_like(there, likeness.names);
    }
    return std::nullopt;
}

json column_or_question(const Names& there, const std::string& column) {
    return find_column(there, column).value_or(to_be_filled_in);
}

struct ShopTable {
    std::string name;
    Names columns;
};

std::vector<ShopTable> shop_tables(NativeConnection& database) {
    std::vector<ShopTable> tables;
    std::vector<std::string> own(not_bills.begin(), not_bills.end());
    for (const OwnTable& table : own_tables_for(database.dialect().name)) own.push_back(table.name);
    for (const ColumnDescription& column : read_columns(database)) {
        const auto is_called = [&](const std::string& name) {
            return in_small_letters(name) == in_small_letters(column.table);
        };
        if (std::ranges::any_of(own, is_called)) continue;
        auto table = std::ranges::find(tables, column.table, &ShopTable::name);
        if (table == tables.end()) table = tables.insert(tables.end(), {column.table, {}});
        table->columns.push_back(column.column);
    }
    return tables;
}

class Proposal {
public:
    Proposal(NativeConnection& database, Language language)
        : database_(database), language_(language), tables_(shop_tables(database)) {}

    std::string make() {
        json groups = json::array();
        for (const ShopTable& lines : tables_) {
            if (!find_column(lines.columns, "Gid") || !has_quantity(lines)) continue;
            const ShopTable* const header = header_of(lines);
            if (header == nullptr) continue;
            json group = group_of(*header, lines);
            if (!group["kinds"].empty()) groups.push_back(std::move(group));  // else there is no bill
        }
        if (groups.empty()) return {};
        return json{{"bills", std::move(groups)}}.dump(2) + "\n";
    }

private:
    static bool has_quantity(const ShopTable& table) {
        return find_column(table.columns, "Qty") || find_column(table.columns, "Actualqty");
    }

    /// The table with a date whose name begins most like that of the lines; null if none begins alike.
    const ShopTable* header_of(const ShopTable& lines) {
        const ShopTable* found = nullptr;
        std::size_t best = 0;
        for (const ShopTable& table : tables_) {
            if (&table == &lines || !find_column(table.columns, "BillDate")) continue;
            const std::size_t same = common_prefix(in_small_letters(table.name), in_small_letters(lines.name));
            if (same > best) {
                best = same;
                found = &table;
            }
        }
        return found;
    }

    static std::size_t common_prefix(const std::string& left, const std::string& right) {
        return static_cast<std::size_t>(std::ranges::mismatch(left, right).in1 - left.begin());
    }

    static const BillKind& family_of(const ShopTable& header) {
        for (const auto& [word, kind] : families) {
            if (in_small_letters(header.name).find(word) != std::string::npos) return *find_bill_kind(kind);
        }
        return *find_bill_kind("stock");
    }

    json group_of(const ShopTable& header, const ShopTable& lines) {
        const BillKind& family = family_of(header);
        json group;
        group["kinds"] = kinds_of(header, family);
        group["header"] = {{"table", header.name}, {"columns", columns_of(header, *family.header)}};
        group["lines"] = {{"table", lines.name}, {"columns", columns_of(lines, *family.lines)}};
        return group;
    }

    static json columns_of(const ShopTable& there, const BillTable& table) {
        json columns;
        const std::string id = to_utf8(table.id_column);
        columns[id] = column_or_question(there.columns, id == "id" ? "Id" : id);
        if (id == "BillId") columns["ItemNo"] = column_or_question(there.columns, "ItemNo");
        for (const BillColumn& column : table.columns) {
            const std::string name = to_utf8(column.column);
            columns[name] = column_or_question(there.columns, name);
        }
        return columns;
    }

    json kinds_of(const ShopTable& header, const BillKind& family) {
        json kinds = json::array();
        const std::optional<std::string> column = find_like(header.columns, kind_names);
        if (!column) return json::array({{{"kind", to_be_filled_in}, {"where", to_be_filled_in}}});
        const auto quoted = [&](const std::string& name) { return quoted_identifier(name, database_.dialect()); };
        const RecordsetVariable rows =
            database_.execute(u"select " + quoted(*column) + u" as V,count(*) as N from " + quoted(header.name) +
                              u" group by " + quoted(*column) + u" order by 2 desc");
        for (; !rows->eof() && kinds.size() < most_kinds; rows->move_next()) {
            const Variant value = rows->field(u"V");
            const Text condition =
                value.is<Null>() ? Text(u" is null") : u" = " + (value.is<Other>() ? to_text(value) : GetSqlVal(value));
            const std::string like = value.is<Null>() ? std::string() : kind_like(to_utf8(to_text(value)), family);
            const auto bills = static_cast<std::int64_t>(to_double(rows->field(u"N")));
            kinds.push_back({{"kind", to_be_filled_in},
                             {"where", to_utf8(quoted(*column) + condition)},
                             {"note", say(language_, words::bills_of_value, Count(bills),
                                          like.empty() ? like : say(language_, words::perhaps, like))}});
        }
        return kinds;
    }

    /// The kinds of that family whose name is like a value, with commas between.
    static std::string kind_like(const std::string& value, const BillKind& family) {
        std::string names;
        for (const BillKind& kind : bill_kinds()) {
            if (kind.header != family.header || value.empty()) continue;
            const bool is_like =
                in_small_letters(value) == kind.name || kind.chinese_name.find(value) != std::string_view::npos;
            if (is_like) names += (names.empty() ? "" : ", ") + std::string(kind.name);
        }
        return names;
    }

    NativeConnection& database_;
    Language language_;
    std::vector<ShopTable> tables_;
};

}  // namespace

std::string propose_description(NativeConnection& database, Language language) {
    return Proposal(database, language).make();
}

}  // namespace vantlo
