#include "com/line_interfaces.h"

#include <corvane.h>  // made from com/idl/corvane.idl

#include <span>

#include "ado/com/automation_value.h"
#include "ado/com/hresult.h"

namespace vantlo {

namespace {

/// Where a getter puts its value, in a variant of its type.
BSTR* place_for(const BSTR*, VARIANT& value) {
    value.vt = VT_BSTR;
    return &value.bstrVal;
}
float* place_for(const float*, VARIANT& value) {
    value.vt = VT_R4;
    return &value.fltVal;
}
LONG* place_for(const LONG*, VARIANT& value) {
    value.vt = VT_I4;
    return &value.lVal;
}

template <typename Getter>
struct Form;
template <typename Interface, typename Type>
struct Form<HRESULT (STDMETHODCALLTYPE Interface::*)(Type*)> {
    using Line = Interface;
    using Value = Type;
};

template <auto getter>
Variant read(IDispatch& line) {
    using Getter = Form<decltype(getter)>;
    AutomationValue value;
    const HRESULT result = value.receive_from([&](VARIANT* received) {
        *received = {};
        auto* const place = place_for(static_cast<const typename Getter::Value*>(nullptr), *received);
        return (static_cast<typename Getter::Line&>(line).*getter)(place);
    });
    check(result, "a property of the line object");
    return variant_of(value.get());
}

struct GetterRow {
    const char16_t* name;
    Variant (*read)(IDispatch& line);
};

#define GETTER(interface, name) \
    { u## #name, read<&interface::get_##name> }

// clang-format off
constexpr GetterRow stock_bill_item[] = {
    GETTER(_StockBillItemObject, Receiver),   GETTER(_StockBillItemObject, Supplier),
    GETTER(_StockBillItemObject, Gid),        GETTER(_StockBillItemObject, Model1),
    GETTER(_StockBillItemObject, Model2),     GETTER(_StockBillItemObject, Class),
    GETTER(_StockBillItemObject, Unit),       GETTER(_StockBillItemObject, Actualqty),
    GETTER(_StockBillItemObject, Qty),        GETTER(_StockBillItemObject, Goodstutas),
    GETTER(_StockBillItemObject, Remarks),
};
constexpr GetterRow loss_over_item[] = {
    GETTER(_LossOverItemObject, WarehouseId), GETTER(_LossOverItemObject, Gid),
    GETTER(_LossOverItemObject, Model1),      GETTER(_LossOverItemObject, Model2),
    GETTER(_LossOverItemObject, Class),       GETTER(_LossOverItemObject, Unit),
    GETTER(_LossOverItemObject, Actualqty),   GETTER(_LossOverItemObject, Remarks),
};
constexpr GetterRow rg_stock_item[] = {
    GETTER(_RGStockItemObject, WID),          GETTER(_RGStockItemObject, StatusWID),
    GETTER(_RGStockItemObject, Gid),          GETTER(_RGStockItemObject, Model1),
    GETTER(_RGStockItemObject, Model2),       GETTER(_RGStockItemObject, Class),
    GETTER(_RGStockItemObject, Unit),         GETTER(_RGStockItemObject, Qty),
    GETTER(_RGStockItemObject, GoodsStatus),  GETTER(_RGStockItemObject, SpRemarks),
};
constexpr GetterRow borrow_item[] = {
    GETTER(_BorrowItemObject, Supplier),      GETTER(_BorrowItemObject, Receiver),
    GETTER(_BorrowItemObject, Gid),           GETTER(_BorrowItemObject, Model1),
    GETTER(_BorrowItemObject, Model2),        GETTER(_BorrowItemObject, Goodstutas),
    GETTER(_BorrowItemObject, UQty),          GETTER(_BorrowItemObject, Unit),
    GETTER(_BorrowItemObject, Class),         GETTER(_BorrowItemObject, Remarks),
};
// clang-format on

#undef GETTER

std::span<const GetterRow> getters_of(LineType type) {
    switch (type) {
        case LineType::StockBillItemObject: return stock_bill_item;
        case LineType::LossOverItemObject: return loss_over_item;
        case LineType::RGStockItemObject: return rg_stock_item;
        case LineType::BorrowItemObject: return borrow_item;
        default: return {};
    }
}

}  // namespace

const IID* declared_interface(LineType type) {
    switch (type) {
        case LineType::StockBillItemObject: return &IID__StockBillItemObject;
        case LineType::LossOverItemObject: return &IID__LossOverItemObject;
        case LineType::RGStockItemObject: return &IID__RGStockItemObject;
        case LineType::BorrowItemObject: return &IID__BorrowItemObject;
        default: return nullptr;
    }
}

bool read_declared(LineType type, IDispatch& line, TextView name, Variant& value) {
    for (const GetterRow& getter : getters_of(type)) {
        if (name != getter.name) continue;
        value = getter.read(line);
        return true;
    }
    return false;
}

}  // namespace vantlo
